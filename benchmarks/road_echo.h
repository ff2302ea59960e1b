#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace zelkovanta::benchmarks {

/// Where a frame of the echo counts as arrived.
enum class EchoEnd : std::uint8_t {
    /// In Qt's loop on the main thread, where every program of these libraries has its windows.
    mainLoop,
    /// On the thread that reads the socket: half of what a program with windows has to do.
    socketThread,
};

/// The peer of the road: a body POSTed with libcurl by one process, forwarded by a bare server to a bare web socket in
/// another, over the same libraries. Milliseconds from the server having read the request to the frame's arrival in the
/// other process.
[[nodiscard]] std::vector<double> measureEcho(std::size_t rounds, EchoEnd end);

/// The two processes of it.
int runEchoPoster(const std::string& port);
int runEchoListener(int argc, char** argv, const std::string& port, EchoEnd end);

/// By which a listener's command line says where its echo ends.
[[nodiscard]] const char* nameOf(EchoEnd end);

}  // namespace zelkovanta::benchmarks
