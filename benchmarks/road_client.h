#pragma once

#include <cstdint>
#include <string>

namespace zelkovanta::benchmarks {

enum class Alerts : std::uint8_t { none, onDesktop };

/// A computer without a window: the real store and clients against the office at `serverURL`, paired with `code`; with
/// `Alerts::onDesktop` also the real alerts over the session bus.
///
/// Reads commands from standard input: "send ROOM MEMBER" sends a signal of the type "ready", "done" ends every signal
/// that it holds. Writes to standard output "ready" after the first snapshot, and at each change of its signals
/// "signals COUNT TIME", the monotonic time at which its observers were told. With alerts it answers "frame" with
/// "frame TIME", when the latest new call was read from the web socket, and "bare" with "bare TIME", when it made a
/// call of the notification daemon that has nothing to do with the alerts.
int runRoadClient(int argc, char** argv, const std::string& serverURL, const std::string& code, Alerts alerts);

}  // namespace zelkovanta::benchmarks
