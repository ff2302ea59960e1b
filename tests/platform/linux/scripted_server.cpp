#include "tests/platform/linux/scripted_server.h"

#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <csignal>
#include <netinet/in.h>
#include <poll.h>
#include <stdexcept>
#include <sys/socket.h>
#include <unistd.h>
#include <utility>

#include <openssl/ssl.h>

namespace zelkovanta::platform::linux_host {

namespace {

std::pair<int, std::uint16_t> bindToLoopback() {
    const int descriptor = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t size = sizeof address;
    if (::bind(descriptor, reinterpret_cast<const sockaddr*>(&address), size) != 0 ||
        ::getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &size) != 0) {
        throw std::runtime_error("no port on loopback");
    }
    return {descriptor, ntohs(address.sin_port)};
}

std::size_t contentLength(std::string_view head) {
    constexpr std::string_view name = "Content-Length: ";
    const auto found = head.find(name);
    return found == std::string_view::npos ? 0 : std::stoul(std::string{head.substr(found + name.size(), 20)});
}

}  // namespace

ScriptedConnection::~ScriptedConnection() {
    tls_.reset();
    outerTls_.reset();
    ::close(descriptor_);
}

bool ScriptedConnection::startTls(const TestCertificate& certificate) {
    const std::shared_ptr<SSL_CTX> context(SSL_CTX_new(TLS_server_method()), &SSL_CTX_free);
    SSL_CTX_use_certificate(context.get(), certificate.certificate.get());
    SSL_CTX_use_PrivateKey(context.get(), certificate.key.get());
    outerTls_ = std::move(tls_);
    tls_.reset(SSL_new(context.get()), &SSL_free);
    if (outerTls_) {
        BIO* const within = BIO_new(BIO_f_ssl());
        BIO_set_ssl(within, outerTls_.get(), BIO_NOCLOSE);
        SSL_set_bio(tls_.get(), within, within);
    } else {
        SSL_set_fd(tls_.get(), descriptor_);
    }
    return SSL_accept(tls_.get()) == 1;
}

bool ScriptedConnection::readMore() {
    std::array<char, 65536> chunk{};
    const auto size =
        tls_ ? SSL_read(tls_.get(), chunk.data(), chunk.size()) : ::recv(descriptor_, chunk.data(), chunk.size(), 0);
    if (size <= 0) {
        return false;
    }
    buffer_.append(chunk.data(), static_cast<std::size_t>(size));
    return true;
}

std::string ScriptedConnection::readUntil(std::string_view end) {
    while (buffer_.find(end) == std::string::npos) {
        if (!readMore()) {
            return std::exchange(buffer_, {});
        }
    }
    return read(buffer_.find(end) + end.size());
}

std::string ScriptedConnection::read(std::size_t size) {
    while (buffer_.size() < size && readMore()) {
    }
    std::string taken = buffer_.substr(0, size);
    buffer_.erase(0, taken.size());
    return taken;
}

std::string ScriptedConnection::readRequest() {
    std::string request = readUntil("\r\n\r\n");
    return request + read(contentLength(request));
}

bool ScriptedConnection::send(std::string_view data) {
    while (!data.empty()) {
        const auto size = tls_ ? SSL_write(tls_.get(), data.data(), static_cast<int>(data.size()))
                               : ::send(descriptor_, data.data(), data.size(), MSG_NOSIGNAL);
        if (size <= 0) {
            return false;
        }
        data.remove_prefix(static_cast<std::size_t>(size));
    }
    return true;
}

void ScriptedConnection::waitForClose() {
    while (readMore()) {
    }
}

bool ScriptedConnection::stirsWithin(std::chrono::milliseconds time) {
    pollfd waiting{.fd = descriptor_, .events = POLLIN | POLLRDHUP, .revents = 0};
    return ::poll(&waiting, 1, static_cast<int>(time.count())) > 0;
}

void ScriptedConnection::closeNow() {
    ::shutdown(descriptor_, SHUT_RDWR);
}

ScriptedServer::ScriptedServer(Script script, std::optional<TestCertificate> certificate)
    : script_(std::move(script)), certificate_(std::move(certificate)) {
    // The TLS library writes to connections that a script's peer has cut.
    std::signal(SIGPIPE, SIG_IGN);
    std::tie(listener_, port_) = bindToLoopback();
    ::listen(listener_, 64);
    accepting_ = std::thread([this] { accept(); });
}

ScriptedServer::~ScriptedServer() {
    {
        const std::scoped_lock lock(mutex_);
        isEnding_ = true;
        for (const auto& weak : open_) {
            if (const auto connection = weak.lock()) {
                connection->closeNow();
            }
        }
    }
    ::shutdown(listener_, SHUT_RDWR);
    accepting_.join();
    for (auto& thread : threads_) {
        thread.join();
    }
    ::close(listener_);
}

void ScriptedServer::accept() {
    while (true) {
        const int descriptor = ::accept4(listener_, nullptr, nullptr, SOCK_CLOEXEC);
        if (descriptor < 0) {
            return;
        }
        const std::scoped_lock lock(mutex_);
        if (isEnding_) {
            ::close(descriptor);
            return;
        }
        ++connections_;
        auto connection = std::make_shared<ScriptedConnection>(descriptor);
        open_.push_back(connection);
        threads_.emplace_back([this, connection]() mutable {
            if (!certificate_ || connection->startTls(*certificate_)) {
                script_(*connection);
            }
            const std::scoped_lock ending(mutex_);
            connection->closeNow();
            connection.reset();
        });
    }
}

std::uint16_t unusedPort() {
    const auto [descriptor, port] = bindToLoopback();
    ::close(descriptor);
    return port;
}

}  // namespace zelkovanta::platform::linux_host
