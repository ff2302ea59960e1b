#include "platform/linux/curl_url_session.h"

#include "platform/linux/callback_awaitable.h"
#include "platform/linux/curl_transport_cause.h"
#include "platform/linux/descriptor_watch.h"
#include "platform/linux/http_syntax.h"
#include "platform/linux/network_thread.h"
#include "platform/linux/tls_handshakes.h"
#include "platform/linux/url_parts.h"

#include <algorithm>
#include <mutex>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <unordered_map>
#include <utility>
#include <vector>

#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/steady_timer.hpp>
#include <curl/curl.h>

namespace zelkovanta::platform::linux_host {

namespace asio = boost::asio;

namespace {

using Result = std::expected<HttpResponse, TransportError>;

constexpr std::size_t maximumHeaderSize = std::size_t{256} * 1024;

std::unexpected<TransportError> failure(TransportCause cause) {
    return std::unexpected(TransportError{cause});
}

/// One request on its way. Lives on the network thread.
struct Exchange {
    explicit Exchange(asio::io_context& network) : idleTimer(network) {}
    ~Exchange() {
        curl_easy_cleanup(easy);
        curl_slist_free_all(headers);
    }
    Exchange(const Exchange&) = delete;
    Exchange& operator=(const Exchange&) = delete;

    CURL* easy = curl_easy_init();
    curl_slist* headers = nullptr;
    HttpRequest request;
    HttpResponse response;
    std::size_t maximumBodySize = 0;
    std::size_t headerSize = 0;
    bool isTooLarge = false;
    bool usesProxy = false;
    bool isAnsweredByProxy = false;  ///< not by the server at the end of its tunnel
    bool isSent = false;             ///< has been given a connection to go out on
    bool isRepeated = false;         ///< would have gone out on another one
    bool isOnStaleConnection = false;
    const TlsHandshakes* handshakes = nullptr;
    curl_off_t moved = 0;
    std::chrono::steady_clock::time_point lastMovement = std::chrono::steady_clock::now();
    asio::steady_timer idleTimer;
    Completion<Result> completion;

    void noteMovement() { lastMovement = std::chrono::steady_clock::now(); }

    static std::size_t takeBody(const char* data, std::size_t, std::size_t size, void* self) {
        auto& exchange = *static_cast<Exchange*>(self);
        if (size > exchange.maximumBodySize - exchange.response.body.size()) {
            exchange.isTooLarge = true;
            return 0;
        }
        exchange.noteMovement();
        exchange.response.body.append(data, size);
        return size;
    }

    static std::size_t takeHeader(const char*, std::size_t, std::size_t size, void* self) {
        auto& exchange = *static_cast<Exchange*>(self);
        exchange.noteMovement();
        exchange.headerSize += size;
        return exchange.headerSize > maximumHeaderSize ? 0 : size;
    }

    static int noteProgress(void* self, curl_off_t, curl_off_t downloaded, curl_off_t, curl_off_t uploaded) {
        auto& exchange = *static_cast<Exchange*>(self);
        if (std::exchange(exchange.moved, downloaded + uploaded) != downloaded + uploaded) {
            exchange.noteMovement();
        }
        return 0;
    }

    /// The library sends a request again when a connection that was used before ends without an answer. The server may
    /// have acted on it all the same.
    static int beforeRequest(void* self, char*, char*, int, int) {
        auto& exchange = *static_cast<Exchange*>(self);
        exchange.isRepeated = exchange.isSent;
        if (exchange.isRepeated) {
            return CURL_PREREQFUNC_ABORT;
        }
        exchange.isOnStaleConnection = !exchange.handshakes->stillConsents(exchange.easy);
        exchange.isSent = !exchange.isOnStaleConnection;
        return exchange.isOnStaleConnection ? CURL_PREREQFUNC_ABORT : CURL_PREREQFUNC_OK;
    }

    static curl_socket_t openSocket(void* self, curlsocktype, curl_sockaddr* address) {
        auto& exchange = *static_cast<Exchange*>(self);
        if (exchange.isSent) {
            exchange.isRepeated = true;
            return CURL_SOCKET_BAD;
        }
        return ::socket(address->family, address->socktype | SOCK_CLOEXEC, address->protocol);
    }

    /// Data that the peer never acknowledges must not hold a pooled connection open for a quarter of an hour.
    static int prepareSocket(void* self, curl_socket_t socket, curlsocktype) {
        const auto idle = *static_cast<const unsigned int*>(self);
        ::setsockopt(socket, IPPROTO_TCP, TCP_USER_TIMEOUT, &idle, sizeof idle);
        return CURL_SOCKOPT_OK;
    }
};

/// The exchanges and connections of one session. Everything but construction happens on the network thread, its
/// destruction too; exchanges under way keep it alive.
class Connections : public std::enable_shared_from_this<Connections> {
public:
    static std::shared_ptr<Connections> make(NetworkThread& network, const TransportSettings& settings,
                                             const UrlSessionConfiguration& configuration) {
        return {new Connections(network.context(), settings, configuration),
                [executor = network.executor()](auto* self) {
                    asio::post(executor, [owner = std::unique_ptr<Connections>(self)] {});
                }};
    }

    ~Connections() {
        for (auto& [easy, exchange] : exchanges_) {
            curl_multi_remove_handle(multi_, easy);
        }
        exchanges_.clear();
        if (multi_ != nullptr) {
            curl_multi_setopt(multi_, CURLMOPT_SOCKETFUNCTION, nullptr);
            curl_multi_setopt(multi_, CURLMOPT_TIMERFUNCTION, nullptr);
            curl_multi_cleanup(multi_);
            curl_global_cleanup();
        }
    }
    Connections(const Connections&) = delete;
    Connections& operator=(const Connections&) = delete;

    void start(HttpRequest request, Completion<Result> completion) {
        if (isCancelled_) {
            completion(failure(TransportCause::cancelled));
            return;
        }
        const auto url = parseUrl(request.url);
        if (!url || !url->scheme.starts_with("http")) {
            completion(failure(TransportCause::nameNotFound));
            return;
        }
        if (!isHttpToken(request.method) || !areHttpHeaders(request.headers)) {
            completion(failure(TransportCause::unsendable));
            return;
        }
        const auto proxy = settings_.proxies.proxyFor(url->scheme, url->host);
        if (proxy && proxy->empty()) {
            completion(failure(TransportCause::proxyFailed));
            return;
        }
        openMulti();
        auto exchange = std::make_unique<Exchange>(network_);
        exchange->request = std::move(request);
        exchange->completion = std::move(completion);
        exchange->maximumBodySize = configuration_.maximumBodySize;
        if (!configure(*exchange, *url, proxy)) {
            exchange->completion(failure(TransportCause::certificateRefused));
            return;
        }
        CURL* const easy = exchange->easy;
        watchIdleness(*exchange);
        keepAlive_ = shared_from_this();
        exchanges_.emplace(easy, std::move(exchange));
        curl_multi_add_handle(multi_, easy);
    }

    void cancel() {
        isCancelled_ = true;
        const auto self = shared_from_this();
        while (!exchanges_.empty()) {
            finish(exchanges_.begin()->first, failure(TransportCause::cancelled));
        }
    }

private:
    Connections(asio::io_context& network, TransportSettings settings, UrlSessionConfiguration configuration)
        : network_(network),
          settings_(std::move(settings)),
          configuration_(std::move(configuration)),
          handshakes_(settings_, configuration_.delegate),
          timer_(network) {}

    // Only now, on the network thread: setting up the TLS library takes milliseconds that the start of the program
    // does not have.
    void openMulti() {
        if (multi_ != nullptr) {
            return;
        }
        curl_global_init(CURL_GLOBAL_DEFAULT);
        multi_ = curl_multi_init();
        curl_multi_setopt(multi_, CURLMOPT_SOCKETFUNCTION, &Connections::socketChanged);
        curl_multi_setopt(multi_, CURLMOPT_SOCKETDATA, this);
        curl_multi_setopt(multi_, CURLMOPT_TIMERFUNCTION, &Connections::timerChanged);
        curl_multi_setopt(multi_, CURLMOPT_TIMERDATA, this);
    }

    /// False if nothing may be sent.
    [[nodiscard]] bool configure(Exchange& exchange, const UrlParts& url, const std::optional<std::string>& proxy) {
        CURL* const easy = exchange.easy;
        curl_easy_setopt(easy, CURLOPT_URL, exchange.request.url.c_str());
        curl_easy_setopt(easy, CURLOPT_PROTOCOLS_STR, "http,https");
        // A path is sent as it is written, dots included.
        curl_easy_setopt(easy, CURLOPT_PATH_AS_IS, 1L);
        // Exchanges that share a connection would keep each other's silence from being noticed.
        curl_easy_setopt(easy, CURLOPT_HTTP_VERSION, static_cast<long>(CURL_HTTP_VERSION_1_1));
        curl_easy_setopt(easy, CURLOPT_NOSIGNAL, 1L);
        // A name lookup that hangs must not hold the network thread when its exchange is given up.
        curl_easy_setopt(easy, CURLOPT_QUICK_EXIT, 1L);
        curl_easy_setopt(easy, CURLOPT_FOLLOWLOCATION, 0L);
        // A name and password within the URL are nobody's authorization here.
        curl_easy_setopt(easy, CURLOPT_HTTPAUTH, static_cast<long>(CURLAUTH_NONE));
        curl_easy_setopt(easy, CURLOPT_ACCEPT_ENCODING, "gzip, deflate");
        curl_easy_setopt(easy, CURLOPT_CONNECTTIMEOUT_MS, static_cast<long>(configuration_.idleTimeout.count()));
        curl_easy_setopt(easy, CURLOPT_MAXAGE_CONN, 60L);
        curl_easy_setopt(easy, CURLOPT_MAXFILESIZE_LARGE, static_cast<curl_off_t>(configuration_.maximumBodySize));
        curl_easy_setopt(easy, CURLOPT_OPENSOCKETFUNCTION, &Exchange::openSocket);
        curl_easy_setopt(easy, CURLOPT_OPENSOCKETDATA, &exchange);
        curl_easy_setopt(easy, CURLOPT_SOCKOPTFUNCTION, &Exchange::prepareSocket);
        curl_easy_setopt(easy, CURLOPT_SOCKOPTDATA, &idleMilliseconds_);
        curl_easy_setopt(easy, CURLOPT_WRITEFUNCTION, &Exchange::takeBody);
        curl_easy_setopt(easy, CURLOPT_WRITEDATA, &exchange);
        curl_easy_setopt(easy, CURLOPT_HEADERFUNCTION, &Exchange::takeHeader);
        curl_easy_setopt(easy, CURLOPT_HEADERDATA, &exchange);
        curl_easy_setopt(easy, CURLOPT_NOPROGRESS, 0L);
        curl_easy_setopt(easy, CURLOPT_XFERINFOFUNCTION, &Exchange::noteProgress);
        curl_easy_setopt(easy, CURLOPT_XFERINFODATA, &exchange);
        exchange.usesProxy = proxy.has_value();
        exchange.isAnsweredByProxy = exchange.usesProxy && url.scheme == "http";
        curl_easy_setopt(easy, CURLOPT_PROXY, proxy.value_or("").c_str());
        curl_easy_setopt(easy, CURLOPT_NOPROXY, "");
        exchange.handshakes = &handshakes_;
        curl_easy_setopt(easy, CURLOPT_PREREQFUNCTION, &Exchange::beforeRequest);
        curl_easy_setopt(easy, CURLOPT_PREREQDATA, &exchange);
        configureMethod(exchange);
        configureHeaders(exchange);
        // Connections are reused within the session only, so what is asked of one handshake holds for each.
        return handshakes_.setUp(easy, url, proxy);
    }

    static void configureMethod(const Exchange& exchange) {
        const auto& [method, url, headers, body] = exchange.request;
        if (method == "HEAD") {
            curl_easy_setopt(exchange.easy, CURLOPT_NOBODY, 1L);
            return;
        }
        const bool mayHaveBody = method == "POST" || method == "PUT" || method == "PATCH";
        if (body || mayHaveBody) {
            curl_easy_setopt(exchange.easy, CURLOPT_POSTFIELDSIZE_LARGE,
                             static_cast<curl_off_t>(body ? body->size() : 0));
            curl_easy_setopt(exchange.easy, CURLOPT_POSTFIELDS, body ? body->data() : "");
        }
        curl_easy_setopt(exchange.easy, CURLOPT_CUSTOMREQUEST, method.c_str());
    }

    void configureHeaders(Exchange& exchange) const {
        const auto add = [&](const std::string& line) {
            exchange.headers = curl_slist_append(exchange.headers, line.c_str());
        };
        bool hasContentType = false;
        for (const auto& [name, value] : exchange.request.headers) {
            hasContentType = hasContentType || curl_strequal(name.c_str(), "Content-Type") != 0;
            add(value.empty() ? name + ";" : std::string{name}.append(": ").append(value));
        }
        if (!settings_.acceptLanguage.empty()) {
            add("Accept-Language: " + settings_.acceptLanguage);
        }
        // A name without a value leaves out what the library would add by itself.
        if (!hasContentType) {
            add("Content-Type:");
        }
        add("Expect:");
        curl_easy_setopt(exchange.easy, CURLOPT_HTTPHEADER, exchange.headers);
    }

    void watchIdleness(Exchange& exchange) {
        exchange.idleTimer.expires_at(exchange.lastMovement + configuration_.idleTimeout);
        exchange.idleTimer.async_wait([weak = weak_from_this(),
                                       easy = exchange.easy](boost::system::error_code withdrawn) {
            const auto self = weak.lock();
            if (withdrawn || !self) {
                return;
            }
            const auto found = self->exchanges_.find(easy);
            if (found == self->exchanges_.end()) {
                return;
            }
            if (std::chrono::steady_clock::now() - found->second->lastMovement >= self->configuration_.idleTimeout) {
                self->finish(easy, failure(TransportCause::timedOut));
            } else {
                self->watchIdleness(*found->second);
            }
        });
    }

    void finish(CURL* easy, Result result) {
        auto node = exchanges_.extract(easy);
        if (exchanges_.empty()) {
            // What called this holds the connections until it is done.
            keepAlive_.reset();
        }
        curl_multi_remove_handle(multi_, easy);
        node.mapped()->completion(std::move(result));
    }

    void act(curl_socket_t socket, int events) {
        const auto self = shared_from_this();
        int running = 0;
        curl_multi_socket_action(multi_, socket, events, &running);
        int waiting = 0;
        while (const CURLMsg* message = curl_multi_info_read(multi_, &waiting)) {
            if (message->msg == CURLMSG_DONE) {
                CURL* const easy = message->easy_handle;
                Exchange& exchange = *exchanges_.at(easy);
                if (std::exchange(exchange.isOnStaleConnection, false)) {
                    beginOnFreshConnection(easy);
                } else {
                    finish(easy, resultOf(exchange, message->data.result));
                }
            }
        }
    }

    // Nothing was sent yet. What the server shows in another handshake is what counts now.
    void beginOnFreshConnection(CURL* easy) {
        curl_multi_remove_handle(multi_, easy);
        curl_easy_setopt(easy, CURLOPT_FRESH_CONNECT, 1L);
        curl_multi_add_handle(multi_, easy);
    }

    static TransportCause causeOf(const Exchange& exchange, CURLcode code) {
        return exchange.isTooLarge ? TransportCause::tooLarge
                                   : transportCauseOf(code, exchange.easy, exchange.usesProxy);
    }

    static Result resultOf(Exchange& exchange, CURLcode code) {
        if (code != CURLE_OK) {
            return failure(exchange.isRepeated ? TransportCause::interrupted : causeOf(exchange, code));
        }
        long status = 0;
        curl_easy_getinfo(exchange.easy, CURLINFO_RESPONSE_CODE, &status);
        if (exchange.isAnsweredByProxy && status == 407) {
            return failure(TransportCause::proxyFailed);
        }
        if (status < 100) {
            return failure(TransportCause::badServerResponse);
        }
        exchange.response.status = static_cast<int>(status);
        return std::move(exchange.response);
    }

    static int timerChanged(CURLM*, long milliseconds, void* context) {
        auto& self = *static_cast<Connections*>(context);
        if (milliseconds < 0) {
            self.timer_.cancel();
            return 0;
        }
        self.timer_.expires_after(std::chrono::milliseconds{milliseconds});
        self.timer_.async_wait([weak = self.weak_from_this()](boost::system::error_code withdrawn) {
            if (const auto held = weak.lock(); held && !withdrawn) {
                held->act(CURL_SOCKET_TIMEOUT, 0);
            }
        });
        return 0;
    }

    static int socketChanged(CURL* easy, curl_socket_t socket, int what, void* context, void*) {
        auto& self = *static_cast<Connections*>(context);
        if (what == CURL_POLL_REMOVE) {
            self.easyBySocket_.erase(socket);
            self.watch_.forget(socket);
            return 0;
        }
        self.easyBySocket_[socket] = easy;
        return self.watch_.watch(socket, (what & CURL_POLL_IN) != 0, (what & CURL_POLL_OUT) != 0) ? 0 : -1;
    }

    // Whatever arrives counts, half a header line and a step of a handshake too.
    void noteMovement(int socket) {
        if (const auto easy = easyBySocket_.find(socket); easy != easyBySocket_.end()) {
            if (const auto exchange = exchanges_.find(easy->second); exchange != exchanges_.end()) {
                exchange->second->noteMovement();
            }
        }
    }

    void socketReady(int socket, Readiness readiness) {
        switch (readiness) {
            case Readiness::readable:
                noteMovement(socket);
                act(socket, CURL_CSELECT_IN);
                break;
            case Readiness::writable:
                act(socket, CURL_CSELECT_OUT);
                break;
            case Readiness::failed:
                act(socket, CURL_CSELECT_ERR);
                break;
        }
    }

    asio::io_context& network_;
    const TransportSettings settings_;
    const UrlSessionConfiguration configuration_;
    TlsHandshakes handshakes_;
    unsigned int idleMilliseconds_ = static_cast<unsigned int>(configuration_.idleTimeout.count());
    CURLM* multi_ = nullptr;
    asio::steady_timer timer_;
    std::unordered_map<CURL*, std::unique_ptr<Exchange>> exchanges_;
    DescriptorWatch watch_{network_, [this](int socket, Readiness readiness) { socketReady(socket, readiness); }};
    std::unordered_map<int, CURL*> easyBySocket_;
    std::shared_ptr<Connections> keepAlive_;
    bool isCancelled_ = false;
};

class CurlUrlSession final : public UrlSession {
public:
    CurlUrlSession(Executor network, std::shared_ptr<Connections> connections)
        : network_(std::move(network)), connections_(std::move(connections)) {}

    Awaitable<Result> perform(HttpRequest request) override {
        return awaitCallback<Result>([network = network_, connections = connections_,
                                      request = std::move(request)](Completion<Result> resume) mutable {
            asio::post(network, [connections, request = std::move(request), resume = std::move(resume)]() mutable {
                connections->start(std::move(request), std::move(resume));
            });
        });
    }

private:
    Executor network_;
    std::shared_ptr<Connections> connections_;
};

}  // namespace

struct CurlUrlLoading::Sessions {
    std::mutex mutex;
    std::vector<std::weak_ptr<Connections>> open;
};

CurlUrlLoading::CurlUrlLoading(NetworkThread& network, TransportSettings settings)
    : network_(network), settings_(std::move(settings)), sessions_(std::make_shared<Sessions>()) {}

CurlUrlLoading::~CurlUrlLoading() = default;

std::unique_ptr<UrlSession> CurlUrlLoading::makeSession(const UrlSessionConfiguration& configuration) {
    auto connections = Connections::make(network_, settings_, configuration);
    {
        const std::scoped_lock lock(sessions_->mutex);
        std::erase_if(sessions_->open, [](const auto& weak) { return weak.expired(); });
        sessions_->open.push_back(connections);
    }
    return std::make_unique<CurlUrlSession>(network_.executor(), std::move(connections));
}

void CurlUrlLoading::cancelAll() {
    asio::post(network_.executor(), [sessions = sessions_] {
        const std::scoped_lock lock(sessions->mutex);
        for (const auto& weak : sessions->open) {
            if (const auto connections = weak.lock()) {
                connections->cancel();
            }
        }
    });
}

}  // namespace zelkovanta::platform::linux_host
