#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace zelkovanta::office {

/// A plain connection to a port of this machine, for sending whatever a test likes. Every wait is bounded; a wait that
/// comes to its bound throws.
class RawConnection {
public:
    explicit RawConnection(unsigned short port);
    ~RawConnection();
    RawConnection(RawConnection&&) noexcept;

    void send(std::string_view bytes);
    /// Everything until the other end closes.
    [[nodiscard]] std::string readAll();
    /// At least until this text has come.
    [[nodiscard]] std::string readUntil(std::string_view text);
    void close();

private:
    struct Socket;
    std::unique_ptr<Socket> socket_;
};

struct HttpReply {
    int status = 0;
    std::string body;
};

/// One request on a connection of its own.
[[nodiscard]] HttpReply ask(unsigned short port, std::string_view method, std::string_view path, std::string_view token,
                            std::string_view body = {});

/// A real-time connection of a computer.
class RealTimeConnection {
public:
    explicit RealTimeConnection(unsigned short port);
    ~RealTimeConnection();

    /// The status of the answer to the upgrade: 101 when it is open.
    [[nodiscard]] int open(std::string_view token);
    /// The same of a console, whose browser says that its page comes from `origin`.
    [[nodiscard]] int openConsole(const std::string& host, const std::string& origin);
    void send(std::string_view frame);
    /// The next frame; nothing when the connection is closed instead.
    [[nodiscard]] std::optional<std::string> next();
    /// The close code, once `next` gave nothing.
    [[nodiscard]] int closeCode() const;

private:
    [[nodiscard]] int shakeHands(const std::string& host, std::string_view path, std::string_view header,
                                 const std::string& value);

    struct Stream;
    std::unique_ptr<Stream> stream_;
};

}  // namespace zelkovanta::office
