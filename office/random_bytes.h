#pragma once

#include <cstddef>
#include <span>

namespace zelkovanta::office {

/// Where identifiers, codes and tokens come from.
class RandomBytes {
public:
    virtual ~RandomBytes() = default;
    virtual void fill(std::span<std::byte> bytes) = 0;
};

}  // namespace zelkovanta::office
