#pragma once

#include "office/certificate.h"
#include "office/office.h"

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include <boost/asio/io_context.hpp>

namespace zelkovanta::office {

struct ServerOptions {
    std::string address = "127.0.0.1";
    std::uint16_t port = 0;  ///< 0: any that is free
    std::string adminToken;
    std::optional<Certificate> certificate = {};  ///< without one nothing is encrypted
    bool console = true;                          ///< the web console, for browsers on this machine
    std::function<WallTime()> now;
    /// One line for each request that was answered; never a token, a note or a name in it.
    std::function<void(const std::string& line)> log;
};

/// The office on the network: HTTP with its requests, the real-time connections, and the web console. Runs on the one
/// thread that runs the context, which must outlive it.
class Server {
public:
    /// Listens at once. Fails with a sentence.
    [[nodiscard]] static std::expected<std::unique_ptr<Server>, std::string> listen(boost::asio::io_context& context,
                                                                                    Office& office,
                                                                                    ServerOptions options);
    ~Server();

    [[nodiscard]] std::uint16_t port() const;
    /// Takes no more connections, says goodbye on those that are open, and leaves the context without work.
    void stop();

private:
    class Hall;
    explicit Server(std::shared_ptr<Hall> hall);
    std::shared_ptr<Hall> hall_;
};

}  // namespace zelkovanta::office
