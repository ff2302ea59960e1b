#include "tests/platform/linux/scripted_web_socket.h"

#include <array>

#include <openssl/evp.h>
#include <openssl/sha.h>

namespace zelkovanta::platform::linux_host {

std::string upgradeReply(std::string_view request) {
    constexpr std::string_view name = "Sec-WebSocket-Key: ";
    const auto at = request.find(name);
    const std::string_view key = at == std::string_view::npos ? "" : request.substr(at + name.size(), 24);
    const std::string proof = std::string{key} + "258EAFA5-E914-47DA-95CA-C5AB0DC85B11";
    std::array<unsigned char, SHA_DIGEST_LENGTH> digest{};
    SHA1(reinterpret_cast<const unsigned char*>(proof.data()), proof.size(), digest.data());
    std::array<unsigned char, 64> accept{};
    EVP_EncodeBlock(accept.data(), digest.data(), digest.size());
    return "HTTP/1.1 101 Switching Protocols\r\nUpgrade: websocket\r\nConnection: Upgrade\r\n"
           "Sec-WebSocket-Accept: " +
           std::string(reinterpret_cast<const char*>(accept.data())) + "\r\n\r\n";
}

std::string acceptUpgrade(ScriptedConnection& connection) {
    std::string request = connection.readRequest();
    connection.send(upgradeReply(request));
    return request;
}

std::string serverFrame(Opcode opcode, std::string_view payload, bool isFinal) {
    std::string frame;
    const auto add = [&](std::uint64_t value, int bytes) {
        for (int shift = (bytes - 1) * 8; shift >= 0; shift -= 8) {
            frame += static_cast<char>((value >> shift) & 0xff);
        }
    };
    add(opcode | (isFinal ? 0x80U : 0U), 1);
    if (payload.size() < 126) {
        add(payload.size(), 1);
    } else if (payload.size() < 65536) {
        add(126, 1);
        add(payload.size(), 2);
    } else {
        add(127, 1);
        add(payload.size(), 8);
    }
    return frame.append(payload);
}

ClientFrame readClientFrame(ScriptedConnection& connection) {
    const std::string head = connection.read(2);
    if (head.size() < 2) {
        return {};
    }
    const auto byte = [](char c) { return static_cast<std::uint8_t>(c); };
    std::size_t size = byte(head[1]) & 0x7fU;
    if ((byte(head[1]) & 0x80U) == 0) {
        return {.opcode = 255, .payload = connection.read(size)};
    }
    if (size >= 126) {
        const std::string longer = connection.read(size == 126 ? 2 : 8);
        size = 0;
        for (const char c : longer) {
            size = size << 8U | byte(c);
        }
    }
    const std::string mask = connection.read(4);
    std::string payload = connection.read(size);
    for (std::size_t i = 0; i < payload.size(); ++i) {
        payload[i] = static_cast<char>(payload[i] ^ mask[i % 4]);
    }
    return {.opcode = static_cast<std::uint8_t>(byte(head[0]) & 0x0fU), .payload = std::move(payload)};
}

}  // namespace zelkovanta::platform::linux_host
