#include "office/server.h"

#include "office/real_time_channel.h"
#include "office/refusal.h"
#include "office/secrets.h"

#include <algorithm>
#include <map>
#include <set>
#include <string_view>

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/awaitable.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/http.hpp>

namespace zelkovanta::office {
namespace {

namespace asio = boost::asio;
namespace beast = boost::beast;
namespace http = boost::beast::http;
using asio::ip::tcp;
using std::chrono::milliseconds;
using std::chrono::seconds;

constexpr auto awaited = asio::as_tuple(asio::use_awaitable);
constexpr std::uint32_t largestHeader = 16 * 1024;
constexpr std::uint64_t largestBody = 64 * 1024;
constexpr std::uint64_t largestReportBody = 1024 * 1024;
constexpr std::size_t largestRefusedBody = 16U << 20U;
constexpr std::size_t mostConnections = 512;
constexpr seconds idleLimit{75};
constexpr seconds requestLimit{30};
constexpr std::uint16_t goingAway = 1001;
constexpr std::string_view socketPath = "/api/v1/ws";
constexpr std::string_view adminRoot = "/admin/";
constexpr std::string_view reportPath = "/api/v1/crash-reports";

using HttpRequest = http::request<http::string_body>;
using HttpResponse = http::response<http::string_body>;
using Parser = http::request_parser<http::string_body>;

std::string_view view(beast::string_view text) {
    return {text.data(), text.size()};
}

std::string_view pathOf(const HttpRequest& request) {
    const std::string_view target = view(request.target());
    return target.substr(0, target.find('?'));
}

std::string bearerOf(const HttpRequest& request) {
    constexpr std::string_view scheme = "Bearer ";
    const std::string_view header = view(request[http::field::authorization]);
    return header.size() > scheme.size() && beast::iequals(header.substr(0, scheme.size()), scheme)
               ? std::string(header.substr(scheme.size()))
               : std::string();
}

HttpResponse responseOf(const Answer& answer, unsigned version, bool keepAlive) {
    HttpResponse response(static_cast<http::status>(answer.status), version);
    response.set(http::field::content_type, "application/json");
    response.set(http::field::cache_control, "no-store");
    response.keep_alive(keepAlive);
    response.body() = answer.body;
    response.prepare_payload();
    return response;
}

Answer routed(Answer answer, std::string_view route) {
    answer.route = route;
    return answer;
}

/// What a request that could not be read gets to hear; nothing where nobody listens any more.
std::optional<Answer> answerToFault(boost::system::error_code error) {
    if (error == http::error::body_limit) {
        return refuse({413, "too_large", "The request is too large.", std::nullopt});
    }
    if (error == http::error::header_limit || error == http::error::buffer_overflow) {
        return refuse({431, "too_large", "The request's header is too large.", std::nullopt});
    }
    if (error.category() == http::make_error_code(http::error::bad_method).category() &&
        error != http::error::end_of_stream && error != http::error::partial_message) {
        return refuse(refusals::badRequest("This is no request that the office understands."));
    }
    return std::nullopt;
}

}  // namespace

class Server::Hall : public std::enable_shared_from_this<Hall> {
public:
    Hall(asio::io_context& context, Office& office, ServerOptions options)
        : office_(office), options_(std::move(options)), acceptor_(context), ticker_(context) {}

    [[nodiscard]] std::expected<void, std::string> listen() {
        boost::system::error_code error;
        const auto address = asio::ip::make_address(options_.address, error);
        if (error) {
            return std::unexpected("\"" + options_.address + "\" is no network address.");
        }
        const tcp::endpoint endpoint(address, options_.port);
        const std::string place = options_.address + " port " + std::to_string(options_.port);
        acceptor_.open(endpoint.protocol(), error);
        if (!error) {
            acceptor_.set_option(asio::socket_base::reuse_address(true), error);
            acceptor_.bind(endpoint, error);
        }
        if (!error) {
            acceptor_.listen(asio::socket_base::max_listen_connections, error);
        }
        if (error == asio::error::address_in_use) {
            return std::unexpected("Another program already listens on " + place + ".");
        }
        if (error) {
            return std::unexpected("The office cannot listen on " + place + ": " + error.message() + ".");
        }
        asio::co_spawn(acceptor_.get_executor(), acceptAll(shared_from_this()), asio::detached);
        asio::co_spawn(acceptor_.get_executor(), tickForEver(shared_from_this()), asio::detached);
        return {};
    }

    [[nodiscard]] std::uint16_t port() const {
        boost::system::error_code error;
        return acceptor_.local_endpoint(error).port();
    }

    void stop() {
        stopping_ = true;
        boost::system::error_code error;
        acceptor_.close(error);
        ticker_.cancel();
        carryOutPending();
        for (beast::tcp_stream* visitor : idle_) {
            visitor->cancel();
        }
        const auto channels = channels_;
        for (const auto& [deviceId, channel] : channels) {
            channel->close(goingAway);
        }
    }

private:
    using Self = std::shared_ptr<Hall>;

    static asio::awaitable<void> acceptAll(Self self) {
        while (!self->stopping_) {
            auto [error, socket] = co_await self->acceptor_.async_accept(awaited);
            if (self->stopping_) {
                break;
            }
            if (error) {
                // Mostly out of descriptors: some will be given back.
                asio::steady_timer pause(self->acceptor_.get_executor(), milliseconds{100});
                co_await pause.async_wait(awaited);
            } else if (self->connections_ + self->channels_.size() < mostConnections) {
                socket.set_option(tcp::no_delay(true), error);
                asio::co_spawn(self->acceptor_.get_executor(), converse(self, beast::tcp_stream(std::move(socket))),
                               asio::detached);
            }
        }
    }

    static asio::awaitable<void> tickForEver(Self self) {
        while (!self->stopping_) {
            // The time of day may be set at any moment, so it is looked at now and then.
            milliseconds wait = seconds{20};
            if (const auto deadline = self->office_.nextDeadline()) {
                const auto left = *deadline - timestamp(self->options_.now());
                wait = std::clamp<milliseconds>(left, milliseconds{self->failedTick_ ? 1000 : 0}, wait);
            }
            self->ticker_.expires_after(wait);
            co_await self->ticker_.async_wait(awaited);
            if (self->stopping_) {
                break;
            }
            const WallTime now = self->options_.now();
            self->queue(self->office_.tick(now));
            const auto next = self->office_.nextDeadline();
            self->failedTick_ = next && *next <= timestamp(now);
        }
    }

    /// The requests of one connection, one after the other.
    static asio::awaitable<void> converse(Self self, beast::tcp_stream stream) {
        ++self->connections_;
        beast::flat_buffer buffer;
        bool goesOn = true;
        while (goesOn && !self->stopping_) {
            Parser parser;
            parser.header_limit(largestHeader);
            parser.body_limit(largestReportBody);

            self->idle_.insert(&stream);
            stream.expires_after(idleLimit);
            auto [error, ignored] = co_await http::async_read_header(stream, buffer, parser, awaited);
            self->idle_.erase(&stream);
            stream.expires_after(requestLimit);
            if (!error) {
                error = limitBody(parser);
            }
            if (!error && beast::websocket::is_upgrade(parser.get()) && pathOf(parser.get()) == socketPath) {
                goesOn = co_await upgrade(self, stream, parser.release());
                continue;
            }
            if (!error && beast::iequals(parser.get()[http::field::expect], "100-continue")) {
                http::response<http::empty_body> goAhead(http::status::continue_, parser.get().version());
                co_await http::async_write(stream, goAhead, awaited);
            }
            if (!error) {
                std::tie(error, ignored) = co_await http::async_read(stream, buffer, parser, awaited);
            }
            if (error) {
                if (const auto answer = answerToFault(error)) {
                    self->log("?", routed(*answer, "?"));
                    HttpResponse response = responseOf(*answer, 11, false);
                    co_await http::async_write(stream, response, awaited);
                    co_await drain(stream);
                }
                break;
            }
            goesOn = co_await answer(self, stream, parser.release());
        }
        boost::system::error_code ignored;
        stream.socket().shutdown(tcp::socket::shutdown_both, ignored);
        --self->connections_;
    }

    /// Holds a body to the limit of its address.
    static boost::system::error_code limitBody(Parser& parser) {
        const std::uint64_t limit = pathOf(parser.get()) == reportPath ? largestReportBody : largestBody;
        const auto length = parser.content_length();
        parser.body_limit(limit);
        return length && *length > limit ? http::make_error_code(http::error::body_limit) : boost::system::error_code();
    }

    /// Reads away what a refused visitor still sends: closing at once would take the answer back from him.
    static asio::awaitable<void> drain(beast::tcp_stream& stream) {
        boost::system::error_code error;
        stream.socket().shutdown(tcp::socket::shutdown_send, error);
        stream.expires_after(seconds{2});
        std::array<char, 16 * 1024> bytes{};
        for (std::size_t read = 0; read < largestRefusedBody && !error;) {
            std::size_t count = 0;
            std::tie(error, count) = co_await stream.async_read_some(asio::buffer(bytes), awaited);
            read += count;
        }
    }

    static asio::awaitable<bool> answer(Self self, beast::tcp_stream& stream, HttpRequest request) {
        Answer answer = self->decide(stream, request);
        self->log(view(request.method_string()), answer);
        // Queued, so that the one who asked has the answer before everybody hears of it.
        self->queue(std::move(answer.effects));
        HttpResponse response = responseOf(answer, request.version(), request.keep_alive());
        const auto [error, written] = co_await http::async_write(stream, response, awaited);
        co_return !error && response.keep_alive();
    }

    [[nodiscard]] Answer decide(beast::tcp_stream& stream, HttpRequest& request) {
        boost::system::error_code error;
        Request asked{.method = std::string(view(request.method_string())),
                      .path = std::string(pathOf(request)),
                      .token = bearerOf(request),
                      .body = std::move(request.body()),
                      .peer = stream.socket().remote_endpoint(error).address().to_string()};
        if (!asked.path.starts_with(adminRoot)) {
            return office_.handle(asked, options_.now());
        }
        if (!sameSecret(asked.token, options_.adminToken)) {
            return routed(refuse({401, "not_an_admin", "Only the admin of this office may do that.", std::nullopt}),
                          adminRoot);
        }
        return office_.administer(asked, options_.now());
    }

    /// True if the connection stays one of requests, because the upgrade was refused.
    static asio::awaitable<bool> upgrade(Self self, beast::tcp_stream& stream, HttpRequest request) {
        // The snapshot must not be older than what this computer would hear next.
        self->carryOutPending();
        SocketAnswer opened = self->office_.socketOpened(bearerOf(request), self->options_.now());
        Answer answer{.status = opened.status, .body = opened.body, .route = std::string(socketPath), .effects = {}};
        self->log("GET", answer);
        if (opened.status != 101) {
            HttpResponse response = responseOf(answer, request.version(), request.keep_alive());
            const auto [error, written] = co_await http::async_write(stream, response, awaited);
            co_return !error && response.keep_alive();
        }
        stream.expires_never();
        auto channel = std::make_shared<RealTimeChannel>(std::move(stream), opened.deviceId,
                                                         [weak = std::weak_ptr(self)](RealTimeChannel& gone) {
                                                             if (const Self hall = weak.lock()) {
                                                                 hall->forget(gone);
                                                             }
                                                         });
        self->channels_.emplace(opened.deviceId, channel);
        channel->send(std::make_shared<const std::string>(std::move(opened.frame)));
        channel->accept(request);
        co_return false;
    }

    void forget(const RealTimeChannel& gone) {
        const auto [first, last] = channels_.equal_range(gone.deviceId());
        const auto found =
            std::find_if(first, last, [&gone](const auto& entry) { return entry.second.get() == &gone; });
        if (found != last) {
            channels_.erase(found);
        }
    }

    void queue(std::vector<Effect> effects) {
        ticker_.cancel();  // deadlines may have changed
        if (effects.empty()) {
            return;
        }
        std::ranges::move(effects, std::back_inserter(pending_));
        asio::post(acceptor_.get_executor(), [self = shared_from_this()] { self->carryOutPending(); });
    }

    void carryOutPending() {
        for (const Effect& effect : std::exchange(pending_, {})) {
            if (const auto* send = std::get_if<SendFrame>(&effect)) {
                const auto frame = std::make_shared<const std::string>(send->frame);
                for (const std::string& deviceId : send->deviceIds) {
                    forEachOf(deviceId, [&frame](RealTimeChannel& channel) { channel.send(frame); });
                }
            } else {
                const auto& close = std::get<CloseSockets>(effect);
                forEachOf(close.deviceId, [&close](RealTimeChannel& channel) { channel.close(close.code); });
            }
        }
    }

    /// A channel may leave while it is served.
    template <class Work>
    void forEachOf(const std::string& deviceId, Work work) {
        const auto [first, last] = channels_.equal_range(deviceId);
        const std::vector<std::pair<const std::string, std::shared_ptr<RealTimeChannel>>> all(first, last);
        for (const auto& [id, channel] : all) {
            work(*channel);
        }
    }

    void log(std::string_view method, const Answer& answer) const {
        options_.log(std::string(method) + " " + answer.route + " " + std::to_string(answer.status));
    }

    Office& office_;
    ServerOptions options_;
    tcp::acceptor acceptor_;
    asio::steady_timer ticker_;
    std::multimap<std::string, std::shared_ptr<RealTimeChannel>> channels_;
    std::set<beast::tcp_stream*> idle_;
    std::vector<Effect> pending_;
    std::size_t connections_ = 0;
    bool stopping_ = false;
    bool failedTick_ = false;
};

std::expected<std::unique_ptr<Server>, std::string> Server::listen(asio::io_context& context, Office& office,
                                                                   ServerOptions options) {
    auto hall = std::make_shared<Hall>(context, office, std::move(options));
    if (const auto listening = hall->listen(); !listening) {
        return std::unexpected(listening.error());
    }
    return std::unique_ptr<Server>(new Server(std::move(hall)));
}

Server::Server(std::shared_ptr<Hall> hall) : hall_(std::move(hall)) {}
Server::~Server() = default;

std::uint16_t Server::port() const {
    return hall_->port();
}

void Server::stop() {
    hall_->stop();
}

}  // namespace zelkovanta::office
