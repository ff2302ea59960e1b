#include "platform/linux/beast_web_socket.h"

#include "platform/linux/http_syntax.h"
#include "platform/linux/server_connection.h"
#include "platform/linux/url_parts.h"

#include <array>
#include <charconv>
#include <mutex>
#include <random>
#include <utility>

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/error.hpp>
#include <boost/asio/steady_timer.hpp>
#include <boost/asio/use_awaitable.hpp>
#include <boost/beast/core/buffer_traits.hpp>
#include <boost/beast/websocket/stream.hpp>

namespace zelkovanta::platform::linux_host {

namespace asio = boost::asio;
namespace websocket = boost::beast::websocket;
using boost::system::error_code;

namespace {

constexpr auto token = asio::as_tuple(asio::use_awaitable_t<Executor>{});
constexpr std::chrono::seconds closingLimit{1};
/// What a close frame without a code counts as.
constexpr std::uint16_t noStatusReceived = 1005;

/// The connection as the protocol's library wants to see it. Its handlers are erased here, so that the library is
/// instantiated once for plain and secure connections together.
class UpgradedStream {
public:
    using executor_type = Executor;

    explicit UpgradedStream(std::shared_ptr<ServerConnection> connection) : connection_(std::move(connection)) {}

    [[nodiscard]] executor_type get_executor() const noexcept { return connection_->executor(); }
    [[nodiscard]] ServerConnection& connection() const { return *connection_; }
    /// Of the answer to the opening request, once its first line has come.
    [[nodiscard]] std::optional<int> httpStatus() const { return httpStatus_; }

    // NOLINTBEGIN(cppcoreguidelines-missing-std-forward): the library takes the handler as a name and moves from it.
    template <class Buffers, class Handler>
    auto async_read_some(const Buffers& buffers, Handler&& handler) {
        return asio::async_initiate<Handler, void(error_code, std::size_t)>(
            [this](auto&& whenDone, asio::mutable_buffer into) {
                readSome(into, std::forward<decltype(whenDone)>(whenDone));
            },
            handler, firstOf<asio::mutable_buffer>(buffers));
    }

    template <class Buffers, class Handler>
    auto async_write_some(const Buffers& buffers, Handler&& handler) {
        return asio::async_initiate<Handler, void(error_code, std::size_t)>(
            [this](auto&& whenDone, asio::const_buffer from) {
                connection_->writeSome(from, std::forward<decltype(whenDone)>(whenDone));
            },
            handler, firstOf<asio::const_buffer>(buffers));
    }
    // NOLINTEND(cppcoreguidelines-missing-std-forward)

private:
    template <class Buffer, class Buffers>
    static Buffer firstOf(const Buffers& buffers) {
        for (auto at = asio::buffer_sequence_begin(buffers); at != asio::buffer_sequence_end(buffers); ++at) {
            const Buffer buffer = *at;
            if (buffer.size() > 0) {
                return buffer;
            }
        }
        return {};
    }

    void readSome(asio::mutable_buffer into, ServerConnection::Done done) {
        // A refusal may have a body of any length; its status is all that matters.
        if (httpStatus_ && *httpStatus_ != 101) {
            asio::post(connection_->executor(), [done = std::move(done)]() mutable { done(asio::error::eof, 0); });
            return;
        }
        if (httpStatus_) {
            connection_->readSome(into, std::move(done));
            return;
        }
        connection_->readSome(
            into, [this, keep = connection_, into, done = std::move(done)](error_code error, std::size_t size) mutable {
                noteStatus({static_cast<const char*>(into.data()), size});
                done(error, size);
            });
    }

    void noteStatus(std::string_view received) {
        constexpr std::string_view protocol = "HTTP/1.1 ";
        head_.append(received.substr(0, protocol.size() + 3 - std::min(head_.size(), protocol.size() + 3)));
        if (head_.size() < protocol.size() + 3) {
            return;
        }
        int status = 0;
        std::from_chars(head_.data() + protocol.size(), head_.data() + head_.size(), status);
        httpStatus_ = status;
    }

    std::shared_ptr<ServerConnection> connection_;
    std::string head_;
    std::optional<int> httpStatus_;
};

// What the library calls to end a connection. None of them waits for the peer.
// NOLINTBEGIN(readability-identifier-naming): the names that it calls.
void beast_close_socket(UpgradedStream& stream) {
    stream.connection().close();
}

template <class Handler>
void async_teardown(boost::beast::role_type, UpgradedStream& stream, Handler&& handler) {
    stream.connection().close();
    asio::post(stream.get_executor(), [handler = std::forward<Handler>(handler)]() mutable { handler(error_code{}); });
}
// NOLINTEND(readability-identifier-naming)

/// A client's close frame: final, masked, two bytes of code.
std::string closeFrame(std::uint16_t code) {
    std::random_device random;
    const std::array<std::uint8_t, 4> mask{static_cast<std::uint8_t>(random()), static_cast<std::uint8_t>(random()),
                                           static_cast<std::uint8_t>(random()), static_cast<std::uint8_t>(random())};
    std::string frame = "\x88\x82";
    for (const std::uint8_t byte : mask) {
        frame += static_cast<char>(byte);
    }
    frame += static_cast<char>((code >> 8) ^ mask[0]);
    frame += static_cast<char>((code & 0xff) ^ mask[1]);
    return frame;
}

class BeastTask final : public WebSocketTask, public std::enable_shared_from_this<BeastTask> {
public:
    BeastTask(const Executor& executor, WebSocketRequest request, const TransportSettings& settings,
              std::shared_ptr<TlsTrust> trust)
        : executor_(executor),
          request_(std::move(request)),
          connection_(std::make_shared<ServerConnection>(executor, settings, std::move(trust))),
          socket_(UpgradedStream{connection_}),
          opened_(executor, asio::steady_timer::time_point::max()),
          openingLimit_(executor) {}

    ~BeastTask() override { connection_->close(); }
    BeastTask(const BeastTask&) = delete;
    BeastTask& operator=(const BeastTask&) = delete;

    void resume() override {
        if (phase_ != Phase::made) {
            return;
        }
        phase_ = Phase::opening;
        openingLimit_.expires_after(request_.openingTimeout);
        openingLimit_.async_wait([weak = weak_from_this()](error_code withdrawn) {
            if (const auto self = weak.lock(); self && !withdrawn) {
                self->end(self->failureOfOpening());
            }
        });
        auto opening = [self = shared_from_this()] { return self->open(); };
        asio::co_spawn(executor_, std::move(opening), asio::detached);
    }

    Awaitable<std::expected<WebSocketFrame, WebSocketFailure>> receive() override {
        const auto self = shared_from_this();
        const bool isOpen = co_await waitForOpening();
        if (!isOpen) {
            co_return std::unexpected(failure_);
        }
        WebSocketFrame frame;
        auto buffer = asio::dynamic_buffer(frame.payload, maximumWebSocketFrameSize);
        const auto [error, size] = co_await socket_.async_read(buffer, token);
        if (error) {
            end(failureOfSocket());
        }
        if (phase_ == Phase::ended) {
            co_return std::unexpected(failure_);
        }
        frame.kind = socket_.got_text() ? WebSocketFrame::Kind::text : WebSocketFrame::Kind::binary;
        co_return frame;
    }

    Awaitable<bool> send(std::string text) override {
        const auto self = shared_from_this();
        const bool isOpen = co_await waitForOpening();
        if (!isOpen) {
            co_return false;
        }
        const auto [error, size] = co_await socket_.async_write(asio::buffer(text), token);
        if (error) {
            end(failureOfSocket());
        }
        co_return !error;
    }

    void cancel(std::uint16_t closeCode) override {
        if (phase_ == Phase::ended) {
            return;
        }
        const bool wasOpen = std::exchange(phase_, Phase::ended) == Phase::open;
        openingLimit_.cancel();
        opened_.cancel();
        if (wasOpen) {
            connection_->closeAfter(closeFrame(closeCode), closingLimit);
        } else {
            connection_->close();
        }
    }

private:
    enum class Phase : std::uint8_t { made, opening, open, ended };

    Awaitable<void> open() {
        const auto self = shared_from_this();
        const auto url = parseUrl(request_.url);
        const bool isUsable = url && url->scheme.starts_with("ws") && areHttpHeaders(request_.headers);
        const bool isConnected = isUsable && co_await connection_->open(*url);
        if (!isConnected) {
            end({});
            co_return;
        }
        configure();
        const auto [error] = co_await socket_.async_handshake(url->authority, url->target, token);
        if (error || phase_ != Phase::opening) {
            end(failureOfOpening());
            co_return;
        }
        limitClosing();
        phase_ = Phase::open;
        openingLimit_.cancel();
        opened_.cancel();
    }

    void configure() {
        socket_.set_option(websocket::stream_base::decorator([this](websocket::request_type& request) {
            for (const auto& [name, value] : request_.headers) {
                request.insert(name, value);
            }
        }));
        socket_.control_callback([this](websocket::frame_type kind, boost::beast::string_view) {
            wasClosedByPeer_ = wasClosedByPeer_ || kind == websocket::frame_type::close;
        });
        socket_.read_message_max(maximumWebSocketFrameSize);
        socket_.text(true);
    }

    // Only for the answer to a close frame: silence is measured by whoever uses the socket.
    void limitClosing() {
        socket_.set_option(websocket::stream_base::timeout{.handshake_timeout = closingLimit,
                                                           .idle_timeout = websocket::stream_base::none(),
                                                           .keep_alive_pings = false});
    }

    Awaitable<bool> waitForOpening() {
        while (phase_ == Phase::made || phase_ == Phase::opening) {
            co_await opened_.async_wait(token);
        }
        co_return phase_ == Phase::open;
    }

    void end(WebSocketFailure failure) {
        if (std::exchange(phase_, Phase::ended) != Phase::ended) {
            failure_ = failure;
        }
        openingLimit_.cancel();
        opened_.cancel();
        connection_->close();
    }

    [[nodiscard]] WebSocketFailure failureOfOpening() const {
        return {.closeCode = std::nullopt, .httpStatus = socket_.next_layer().httpStatus()};
    }

    [[nodiscard]] WebSocketFailure failureOfSocket() const {
        if (!wasClosedByPeer_) {
            return {};
        }
        const auto code = socket_.reason().code;
        return {.closeCode = code == websocket::close_code::none ? noStatusReceived : code, .httpStatus = std::nullopt};
    }

    Executor executor_;
    WebSocketRequest request_;
    std::shared_ptr<ServerConnection> connection_;
    websocket::stream<UpgradedStream, false> socket_;
    asio::steady_timer opened_;
    asio::steady_timer openingLimit_;
    Phase phase_ = Phase::made;
    bool wasClosedByPeer_ = false;
    WebSocketFailure failure_;
};

class BeastSession final : public WebSocketSession {
public:
    struct Tasks {
        std::vector<std::weak_ptr<BeastTask>> open;
        bool isInvalid = false;

        void cancelAll() {
            isInvalid = true;
            for (const auto& weak : std::exchange(open, {})) {
                if (const auto task = weak.lock()) {
                    task->cancel(goingAway);
                }
            }
        }
    };

    BeastSession(Executor executor, TransportSettings settings, std::shared_ptr<Tasks> tasks)
        : executor_(std::move(executor)),
          settings_(std::move(settings)),
          trust_(std::make_shared<TlsTrust>(settings_)),
          tasks_(std::move(tasks)) {}

    std::shared_ptr<WebSocketTask> makeTask(WebSocketRequest request) override {
        auto task = std::make_shared<BeastTask>(executor_, std::move(request), settings_, trust_);
        std::erase_if(tasks_->open, [](const auto& weak) { return weak.expired(); });
        tasks_->open.push_back(task);
        if (tasks_->isInvalid) {
            task->cancel(goingAway);
        }
        return task;
    }

    void invalidateAndCancel() override { tasks_->cancelAll(); }

private:
    Executor executor_;
    TransportSettings settings_;
    std::shared_ptr<TlsTrust> trust_;
    std::shared_ptr<Tasks> tasks_;
};

}  // namespace

struct BeastWebSocketLoading::Sessions {
    struct Entry {
        Executor executor;
        std::weak_ptr<BeastSession::Tasks> tasks;
    };
    std::mutex mutex;
    std::vector<Entry> open;
};

BeastWebSocketLoading::BeastWebSocketLoading(TransportSettings settings)
    : settings_(std::move(settings)), sessions_(std::make_shared<Sessions>()) {}

BeastWebSocketLoading::~BeastWebSocketLoading() = default;

std::unique_ptr<WebSocketSession> BeastWebSocketLoading::makeSession(Executor executor) {
    auto tasks = std::make_shared<BeastSession::Tasks>();
    {
        const std::scoped_lock lock(sessions_->mutex);
        std::erase_if(sessions_->open, [](const auto& entry) { return entry.tasks.expired(); });
        sessions_->open.push_back({executor, tasks});
    }
    return std::make_unique<BeastSession>(std::move(executor), settings_, std::move(tasks));
}

void BeastWebSocketLoading::cancelAll() {
    const std::scoped_lock lock(sessions_->mutex);
    for (const auto& entry : sessions_->open) {
        asio::post(entry.executor, [weak = entry.tasks] {
            if (const auto tasks = weak.lock()) {
                tasks->cancelAll();
            }
        });
    }
}

}  // namespace zelkovanta::platform::linux_host
