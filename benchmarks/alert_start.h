#pragma once

#include "benchmarks/road_client.h"

namespace zelkovanta::benchmarks {

/// A start as far as the alerts are concerned: the threads, the clock and the session bus that the program has anyway;
/// with `Alerts::onDesktop` also the string tables (German, with English behind it), the notification centre and its
/// service, until the daemon is known. Writes "started MILLISECONDS MEGABYTES" to standard output, from the beginning
/// of `main`, and of the process's share in what is resident, and ends.
int runAlertStart(int argc, char** argv, Alerts alerts);

}  // namespace zelkovanta::benchmarks
