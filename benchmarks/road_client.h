#pragma once

#include <string>

namespace zelkovanta::benchmarks {

/// A computer without a window: the real store and clients against the office at `serverURL`, paired with `code`.
///
/// Reads commands from standard input: "send ROOM MEMBER" sends a signal of the type "ready", "done" ends every signal
/// that it holds. Writes to standard output "ready" after the first snapshot, and at each change of its signals
/// "signals COUNT TIME", the monotonic time at which its observers were told.
int runRoadClient(int argc, char** argv, const std::string& serverURL, const std::string& code);

}  // namespace zelkovanta::benchmarks
