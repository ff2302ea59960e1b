#pragma once

#include "office/command_line.h"

#include <iosfwd>

namespace zelkovanta::office {

/// Carries a command out at a running office. Prints what it gave, or one sentence to `errors`; gives the exit status.
[[nodiscard]] int control(const Control& order, std::ostream& output, std::ostream& errors);
[[nodiscard]] int approve(const Approve& order, std::ostream& output, std::ostream& errors);

}  // namespace zelkovanta::office
