#pragma once

namespace zelkovanta::benchmarks {

/// A notification daemon on the session bus that shows nothing. Writes to standard output "ready", "asked" when a
/// program asked what it is capable of, "notify PROGRAM TIME" with the monotonic time at which such a call had arrived,
/// and "close" for each notification that was taken back.
int runAlertDaemon(int argc, char** argv);

}  // namespace zelkovanta::benchmarks
