#include "tests/platform/linux/tls_server.h"

#include <array>
#include <netinet/in.h>
#include <netinet/tcp.h>
#include <stdexcept>
#include <sys/socket.h>
#include <utility>

#include <openssl/ssl.h>

namespace zelkovanta::platform::linux_host {

namespace {

using Context = std::shared_ptr<SSL_CTX>;
using Connection = std::shared_ptr<SSL>;

Context makeContext(const std::vector<TestCertificate>& chain) {
    Context context(SSL_CTX_new(TLS_server_method()), &SSL_CTX_free);
    if (SSL_CTX_use_certificate(context.get(), chain.front().certificate.get()) != 1 ||
        SSL_CTX_use_PrivateKey(context.get(), chain.front().key.get()) != 1) {
        throw std::runtime_error("a certificate that cannot be used");
    }
    for (std::size_t index = 1; index < chain.size(); ++index) {
        SSL_CTX_add1_chain_cert(context.get(), chain[index].certificate.get());
    }
    SSL_CTX_set_mode(context.get(), SSL_MODE_NO_AUTO_CHAIN);
    return context;
}

Context makeContext(const TlsServerSettings& settings) {
    Context context = makeContext(settings.chain);
    SSL_CTX_set_max_proto_version(context.get(), settings.highestVersion);
    constexpr std::array<unsigned char, 4> name{'t', 'e', 's', 't'};
    SSL_CTX_set_session_id_context(context.get(), name.data(), name.size());
    if (settings.askForCertificate != AskForCertificate::no) {
        const int must =
            settings.askForCertificate == AskForCertificate::insistently ? SSL_VERIFY_FAIL_IF_NO_PEER_CERT : 0;
        SSL_CTX_set_verify(context.get(), SSL_VERIFY_PEER | must, nullptr);
    }
    return context;
}

/// Reads what is left below a connection; gives the size of its records that are application data.
std::size_t readApplicationData(const SSL& tls) {
    std::string rest;
    std::array<char, 4096> chunk{};
    BIO* const below = SSL_get_rbio(&tls);
    for (int size = 0; (size = BIO_read(below, chunk.data(), static_cast<int>(chunk.size()))) > 0;) {
        rest.append(chunk.data(), static_cast<std::size_t>(size));
    }
    constexpr std::size_t headSize = 5;
    const auto byte = [&rest](std::size_t index) { return static_cast<unsigned char>(rest[index]); };
    std::size_t all = 0;
    for (std::size_t record = 0; record + headSize <= rest.size();) {
        const std::size_t size = byte(record + 3) * std::size_t{256} + byte(record + 4);
        all += byte(record) == SSL3_RT_APPLICATION_DATA ? size : 0;
        record += headSize + size;
    }
    return all;
}

bool write(SSL& tls, const std::string& text) {
    return SSL_write(&tls, text.data(), static_cast<int>(text.size())) > 0;
}

}  // namespace

TlsServer::TlsServer(TlsServerSettings settings)
    : settings_(std::move(settings)),
      context_(makeContext(settings_)),
      server_(std::make_unique<ScriptedServer>([this](ScriptedConnection& connection) { serve(connection); })) {}

TlsServer::~TlsServer() = default;

void TlsServer::show(std::vector<TestCertificate> chain) {
    const std::scoped_lock lock(mutex_);
    settings_.chain = std::move(chain);
    context_ = makeContext(settings_);
}

TlsServer::Account TlsServer::account() const {
    const std::scoped_lock lock(mutex_);
    return account_;
}

TlsServer::Account TlsServer::end() {
    server_.reset();
    return account();
}

void TlsServer::serve(ScriptedConnection& connection) {
    Context context;
    {
        const std::scoped_lock lock(mutex_);
        context = context_;
    }
    const int atOnce = 1;
    ::setsockopt(connection.descriptor(), IPPROTO_TCP, TCP_NODELAY, &atOnce, sizeof atOnce);
    const Connection tls(SSL_new(context.get()), &SSL_free);
    if (!settings_.proxy) {
        SSL_set_fd(tls.get(), connection.descriptor());
        serveTls(*tls);
        return;
    }
    const Context proxyContext = makeContext({*settings_.proxy});
    SSL_CTX_set_max_proto_version(proxyContext.get(), settings_.proxysHighestVersion);
    const Connection proxy(SSL_new(proxyContext.get()), &SSL_free);
    SSL_set_fd(proxy.get(), connection.descriptor());
    if (SSL_accept(proxy.get()) != 1) {
        return;
    }
    std::array<char, 4096> head{};
    if (SSL_read(proxy.get(), head.data(), static_cast<int>(head.size())) <= 0 ||
        !write(*proxy, "HTTP/1.1 200 Connection established\r\n\r\n")) {
        return;
    }
    BIO* const tunnel = BIO_new(BIO_f_ssl());
    BIO_set_ssl(tunnel, proxy.get(), BIO_NOCLOSE);
    SSL_set_bio(tls.get(), tunnel, tunnel);
    serveTls(*tls);
}

void TlsServer::serveTls(SSL& tls) {
    if (SSL_accept(&tls) != 1) {
        const std::size_t rest = readApplicationData(tls);
        const std::scoped_lock lock(mutex_);
        ++account_.failed;
        account_.applicationBytes += rest;
        return;
    }
    {
        const std::scoped_lock lock(mutex_);
        ++account_.accepted;
        account_.resumed += SSL_session_reused(&tls);
    }
    std::string buffered;
    std::array<char, 4096> chunk{};
    for (int size = 0; (size = SSL_read(&tls, chunk.data(), static_cast<int>(chunk.size()))) > 0;) {
        buffered.append(chunk.data(), static_cast<std::size_t>(size));
        const bool isWhole = buffered.ends_with("\r\n\r\n");
        {
            const std::scoped_lock lock(mutex_);
            account_.applicationBytes += static_cast<std::size_t>(size);
            account_.requests += isWhole ? 1 : 0;
        }
        if (!isWhole) {
            continue;
        }
        buffered.clear();
        const bool closes = settings_.afterAnswer == AfterAnswer::close;
        if (!write(tls, std::string{"HTTP/1.1 200 OK\r\nContent-Length: 6\r\n"} +
                            (closes ? "Connection: close\r\n" : "") + "\r\nsecret") ||
            closes) {
            SSL_shutdown(&tls);
            return;
        }
    }
}

}  // namespace zelkovanta::platform::linux_host
