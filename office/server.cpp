#include "office/server.h"

#include "office/console_guard.h"
#include "office/http_forms.h"
#include "office/json_text.h"
#include "office/network_stream.h"
#include "office/real_time_channel.h"
#include "office/refusal.h"
#include "office/secrets.h"

#include <algorithm>
#include <map>
#include <optional>
#include <set>
#include <string_view>

#include <boost/asio/as_tuple.hpp>
#include <boost/asio/awaitable.hpp>
#include <boost/asio/co_spawn.hpp>
#include <boost/asio/detached.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/ssl/context.hpp>
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
constexpr std::size_t mostConnections = 512;
constexpr seconds idleLimit{75};
constexpr seconds requestLimit{30};
constexpr std::uint16_t goingAway = 1001;
constexpr std::string_view socketPath = "/api/v1/ws";
constexpr std::string_view adminRoot = "/admin/";
constexpr std::string_view adminOrders = "/admin/v1/";
constexpr std::string_view consoleOrders = "/console/v1/";
constexpr std::string_view consoleSocket = "/console/v1/live";
constexpr milliseconds consoleRhythm{25};
/// Channels without a computer: the consoles.
const std::string nobody;
constexpr std::string_view appCheckHeader = "X-ZVT-AppCheck-Token";
constexpr std::string_view reportPath = "/api/v1/crash-reports";

using Parser = http::request_parser<http::string_body>;

Answer routed(Answer answer, std::string_view route) {
    answer.route = route;
    return answer;
}

}  // namespace

class Server::Hall : public std::enable_shared_from_this<Hall> {
public:
    Hall(asio::io_context& context, Office& office, ServerOptions options)
        : office_(office), options_(std::move(options)), acceptor_(context), ticker_(context), consoleTimer_(context) {}

    [[nodiscard]] std::expected<void, std::string> listen() {
        boost::system::error_code error;
        const auto address = asio::ip::make_address(options_.address, error);
        if (error) {
            return std::unexpected("\"" + options_.address + "\" is no network address.");
        }
        if (options_.certificate) {
            auto context = tlsContext(*options_.certificate);
            if (!context) {
                return std::unexpected(context.error());
            }
            tls_ = std::move(*context);
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
        consoleTimer_.cancel();
        carryOutPending();
        for (beast::tcp_stream* visitor : idle_) {
            visitor->cancel();
        }
        for (const auto& [deviceId, channel] : Channels(channels_)) {
            channel->close(goingAway);
        }
    }

private:
    using Self = std::shared_ptr<Hall>;
    enum class Next { request, goodbye, nothing };
    using Channels = std::multimap<std::string, std::shared_ptr<RealTimeChannel>>;

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
                asio::co_spawn(self->acceptor_.get_executor(),
                               converse(self, NetworkStream(std::move(socket), self->tls_.get())), asio::detached);
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
    static asio::awaitable<void> converse(Self self, NetworkStream stream) {
        ++self->connections_;
        beast::flat_buffer buffer;
        Next next = co_await shakeHands(self, stream) ? Next::request : Next::goodbye;
        while (next == Next::request && !self->stopping_) {
            Parser parser;
            parser.header_limit(largestHeader);
            parser.body_limit(largestReportBody);

            self->idle_.insert(&stream.next_layer());
            stream.next_layer().expires_after(idleLimit);
            auto [error, ignored] = co_await http::async_read_header(stream, buffer, parser, awaited);
            self->idle_.erase(&stream.next_layer());
            stream.next_layer().expires_after(requestLimit);
            if (!error) {
                error = limitBody(parser);
            }
            const std::string_view path = pathOf(parser.get());
            if (!error && beast::websocket::is_upgrade(parser.get()) && (path == socketPath || path == consoleSocket)) {
                next = co_await upgrade(self, stream, parser.release());
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
            next = co_await answer(self, stream, parser.release()) ? Next::request : Next::goodbye;
        }
        if (next != Next::nothing) {
            co_await sayGoodbye(stream);
        }
        --self->connections_;
    }

    static asio::awaitable<bool> shakeHands(Self self, NetworkStream& stream) {
        self->idle_.insert(&stream.next_layer());
        const bool done = co_await handshake(stream);
        self->idle_.erase(&stream.next_layer());
        co_return done;
    }

    /// Holds a body to the limit of its address.
    static boost::system::error_code limitBody(Parser& parser) {
        const std::uint64_t limit = pathOf(parser.get()) == reportPath ? largestReportBody : largestBody;
        const auto length = parser.content_length();
        parser.body_limit(limit);
        return length && *length > limit ? http::make_error_code(http::error::body_limit) : boost::system::error_code();
    }

    static asio::awaitable<bool> answer(Self self, NetworkStream& stream, HttpRequest request) {
        if (const ConsoleFile* file = self->consoleFileFor(stream, request)) {
            HttpResponse response = responseOf(*file, request.version(), request.keep_alive());
            const auto [error, written] = co_await http::async_write(stream, response, awaited);
            co_return !error && response.keep_alive();
        }
        Answer answer = self->decide(stream, request);
        self->log(view(request.method_string()), answer);
        // Queued, so that the one who asked has the answer before everybody hears of it.
        self->queue(std::move(answer.effects));
        HttpResponse response = responseOf(answer, request.version(), request.keep_alive());
        const auto [error, written] = co_await http::async_write(stream, response, awaited);
        co_return !error && response.keep_alive();
    }

    [[nodiscard]] std::optional<Refusal> refusedAtConsole(NetworkStream& stream, const HttpRequest& request,
                                                          bool reads) const {
        boost::system::error_code error;
        const auto peer = stream.next_layer().socket().remote_endpoint(error).address();
        return office::refusedAtConsole({.fromThisMachine = !error && peer.is_loopback(),
                                         .encrypted = tls_ != nullptr,
                                         .reads = reads,
                                         .hasBody = !request.body().empty(),
                                         .host = headerOf(request, "Host").value_or(std::string()),
                                         .origin = headerOf(request, "Origin"),
                                         .fetchSite = headerOf(request, "Sec-Fetch-Site"),
                                         .contentType = headerOf(request, "Content-Type")});
    }

    /// The page or a part of it, if that is asked for by somebody who may have it.
    [[nodiscard]] const ConsoleFile* consoleFileFor(NetworkStream& stream, const HttpRequest& request) const {
        if (!options_.console || request.method() != http::verb::get || refusedAtConsole(stream, request, true)) {
            return nullptr;
        }
        return consoleFileAt(pathOf(request));
    }

    [[nodiscard]] Answer obeyConsole(NetworkStream& stream, Request& asked, const HttpRequest& request) {
        if (const auto refusal = refusedAtConsole(stream, request, false)) {
            return routed(refuse(*refusal), consoleOrders);
        }
        asked.path.replace(0, consoleOrders.size(), adminOrders);
        Answer answer = office_.administer(asked, options_.now());
        answer.route.replace(0, adminOrders.size(), consoleOrders);
        return answer;
    }

    [[nodiscard]] Answer decide(NetworkStream& stream, HttpRequest& request) {
        boost::system::error_code error;
        const auto peer = stream.next_layer().socket().remote_endpoint(error).address();
        Request asked{.method = std::string(view(request.method_string())),
                      .path = std::string(pathOf(request)),
                      .token = bearerOf(request),
                      .body = request.body(),
                      .peer = peer.to_string(),
                      .appCheck = headerOf(request, appCheckHeader).value_or(std::string())};
        if (options_.console && asked.path.starts_with(consoleOrders)) {
            return obeyConsole(stream, asked, request);
        }
        if (!asked.path.starts_with(adminRoot)) {
            return office_.handle(asked, options_.now());
        }
        if (!sameSecret(asked.token, options_.adminToken)) {
            return routed(refuse({401, "not_an_admin", "Only the admin of this office may do that.", std::nullopt}),
                          adminRoot);
        }
        return office_.administer(asked, options_.now());
    }

    /// Leaves the stream empty when a channel has taken the connection over.
    static asio::awaitable<Next> upgrade(Self self, NetworkStream& stream, HttpRequest request) {
        // The snapshot must not be older than what this computer would hear next.
        self->carryOutPending();
        SocketAnswer opened = pathOf(request) == consoleSocket
                                  ? self->consoleOpened(stream, request)
                                  : self->office_.socketOpened(bearerOf(request), self->options_.now());
        Answer answer{
            .status = opened.status, .body = opened.body, .route = std::string(pathOf(request)), .effects = {}};
        self->log("GET", answer);
        if (opened.status != 101) {
            HttpResponse response = responseOf(answer, request.version(), request.keep_alive());
            const auto [error, written] = co_await http::async_write(stream, response, awaited);
            co_return !error && response.keep_alive() ? Next::request : Next::goodbye;
        }
        stream.next_layer().expires_never();
        auto channel = std::make_shared<RealTimeChannel>(std::move(stream), opened.deviceId,
                                                         [weak = std::weak_ptr(self)](RealTimeChannel& gone) {
                                                             if (const Self hall = weak.lock()) {
                                                                 hall->forget(gone);
                                                             }
                                                         });
        self->channels_.emplace(opened.deviceId, channel);
        channel->send(std::make_shared<const std::string>(std::move(opened.frame)));
        channel->accept(request);
        self->tellConsoles();
        co_return Next::nothing;
    }

    [[nodiscard]] SocketAnswer consoleOpened(NetworkStream& stream, const HttpRequest& request) {
        const auto refusal = options_.console ? refusedAtConsole(stream, request, false)
                                              : refusals::notFound("not_found", "This office has no console.");
        if (refusal) {
            return {.status = refusal->status, .body = refuse(*refusal).body, .deviceId = nobody, .frame = {}};
        }
        // What this one gets now, the others may not have yet.
        lastConsoleFrame_.clear();
        return {.status = 101, .body = {}, .deviceId = nobody, .frame = consoleFrame()};
    }

    /// Everything that the console shows. Small enough to be sent whole.
    [[nodiscard]] std::string consoleFrame() const {
        std::vector<std::string> connected;
        for (const auto& [deviceId, channel] : channels_) {
            if (deviceId != nobody && (connected.empty() || connected.back() != deviceId)) {
                connected.push_back(deviceId);
            }
        }
        JsonText json;
        json.object().field("connected", connected).key("office").raw(office_.overview(options_.now())).endObject();
        return json.take();
    }

    /// Something may have changed. Many changes in a short time are one frame.
    void tellConsoles() {
        if (!channels_.contains(nobody) || consoleDue_ || stopping_) {
            return;
        }
        consoleDue_ = true;
        consoleTimer_.expires_after(consoleRhythm);
        consoleTimer_.async_wait([self = shared_from_this()](boost::system::error_code error) {
            self->consoleDue_ = false;
            if (error) {
                return;
            }
            const auto frame = std::make_shared<const std::string>(self->consoleFrame());
            if (*frame != self->lastConsoleFrame_) {
                self->lastConsoleFrame_ = *frame;
                self->forEachOf(nobody, [&frame](RealTimeChannel& channel) { channel.send(frame); });
            }
        });
    }

    void forget(const RealTimeChannel& gone) {
        const auto [first, last] = channels_.equal_range(gone.deviceId());
        const auto found =
            std::find_if(first, last, [&gone](const auto& entry) { return entry.second.get() == &gone; });
        if (found != last) {
            channels_.erase(found);
        }
        tellConsoles();
    }

    void queue(std::vector<Effect> effects) {
        ticker_.cancel();  // deadlines may have changed
        tellConsoles();
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
    asio::steady_timer consoleTimer_;
    std::unique_ptr<asio::ssl::context> tls_;
    Channels channels_;
    std::set<beast::tcp_stream*> idle_;
    std::vector<Effect> pending_;
    std::string lastConsoleFrame_;
    std::size_t connections_ = 0;
    bool consoleDue_ = false;
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
