#pragma once

#include "office/command_line.h"

#include <iosfwd>

namespace zelkovanta::office {

/// Runs an office until the process is asked to end. Says on `output` where it listens, on `errors` what was asked of
/// it and, in one sentence, why it cannot run; gives the exit status.
[[nodiscard]] int serve(const Serve& order, std::ostream& output, std::ostream& errors);

}  // namespace zelkovanta::office
