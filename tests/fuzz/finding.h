#pragma once

#include <source_location>
#include <stdexcept>
#include <string>

namespace zelkovanta::fuzz {

/// Ends a fuzzer's run where something that must hold does not.
inline void require(bool holds, std::source_location place = std::source_location::current()) {
    if (!holds)
        throw std::logic_error(std::string(place.file_name()) + ":" + std::to_string(place.line()));
}

}  // namespace zelkovanta::fuzz
