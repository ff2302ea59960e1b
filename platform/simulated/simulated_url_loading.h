#pragma once

#include "platform/clock.h"
#include "platform/url_session.h"

#include <deque>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zelkovanta::platform::simulated {

/// Exchanges without a network. Every request is recorded; it is answered by hand, in any order, or by a responder as
/// soon as it begins. Without either it fails with `timedOut` once the session's idle limit has passed.
///
/// Outlives the sessions made from it. One thread, that of the event loop; completions are posted to the callers.
class SimulatedUrlLoading final : public UrlLoading {
public:
    using Result = std::expected<HttpResponse, TransportError>;

    /// One request and, once there is one, its result. Belongs to the loading and stays where it is.
    class Exchange {
    public:
        Exchange(HttpRequest made, Clock& clock) : request(std::move(made)), clock_(clock) {}
        Exchange(const Exchange&) = delete;
        Exchange& operator=(const Exchange&) = delete;

        const HttpRequest request;

        /// The value of a header of the request, by its exact name.
        [[nodiscard]] std::optional<std::string> header(std::string_view name) const;
        [[nodiscard]] bool isPending() const { return !result_.has_value(); }
        [[nodiscard]] const std::optional<Result>& result() const { return result_; }

        /// Ends the exchange. Of several calls only the first counts.
        void answer(int status, std::string body = {});
        void fail(TransportCause cause);
        /// The same after a delay. What ends the exchange before, the idle limit too, makes it void.
        void answerAfter(Duration delay, int status, std::string body = {});
        void failAfter(Duration delay, TransportCause cause);

    private:
        friend class SimulatedUrlLoading;
        void finish(Result result);
        void finishAfter(Duration delay, Result result);

        Clock& clock_;
        Executor executor_;
        std::move_only_function<void(Result)> complete_;
        std::optional<Result> result_;
        Timer timeout_;
        Timer delayed_;
    };

    using Responder = std::function<void(Exchange&)>;

    explicit SimulatedUrlLoading(Clock& clock);
    ~SimulatedUrlLoading() override;

    [[nodiscard]] std::unique_ptr<UrlSession> makeSession(const UrlSessionConfiguration& configuration) override;

    /// Called with each exchange as it begins; it may end it at once, later or never.
    void setResponder(Responder responder);

    /// Every exchange so far, in the order in which they began.
    [[nodiscard]] std::vector<Exchange*> exchanges() const;
    /// Those that are waiting for their end.
    [[nodiscard]] std::vector<Exchange*> pending() const;
    /// The oldest one waiting with this method whose URL ends with `urlEnd`; null if there is none.
    [[nodiscard]] Exchange* pending(std::string_view method, std::string_view urlEnd) const;
    /// Method and URL of every exchange so far, such as "GET https://host/api/v1/state".
    [[nodiscard]] std::vector<std::string> requestLines() const;
    /// The configuration of each session made so far.
    [[nodiscard]] const std::vector<UrlSessionConfiguration>& sessions() const { return sessions_; }

private:
    class Session;
    struct Log {
        explicit Log(Clock& used) : clock(used) {}
        Clock& clock;
        Responder responder;
        std::deque<std::unique_ptr<Exchange>> exchanges;
    };
    static Awaitable<Result> perform(std::shared_ptr<Log> log, Duration idleLimit, HttpRequest request);

    std::shared_ptr<Log> log_;
    std::vector<UrlSessionConfiguration> sessions_;
};

}  // namespace zelkovanta::platform::simulated
