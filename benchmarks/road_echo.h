#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace zelkovanta::benchmarks {

/// The peer of the road: a body POSTed with libcurl by one process, forwarded by a bare server to a bare web socket in
/// another, over the same libraries. Milliseconds from the server having read the request to the other process having
/// read the frame.
[[nodiscard]] std::vector<double> measureEcho(std::size_t rounds);

/// The two processes of it.
int runEchoPoster(const std::string& port);
int runEchoListener(const std::string& port);

}  // namespace zelkovanta::benchmarks
