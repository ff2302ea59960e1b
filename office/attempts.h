#pragma once

#include "office/time_text.h"

#include <chrono>
#include <cstddef>
#include <deque>
#include <map>
#include <string>
#include <string_view>

namespace zelkovanta::office {

/// Counts what somebody tried within a span of time. Kept in memory only: a restart starts counting anew.
class Attempts {
public:
    Attempts(std::size_t most, std::chrono::seconds span) : most_(most), span_(span) {}

    [[nodiscard]] bool exhausted(std::string_view who, Timestamp now);
    void add(std::string_view who, Timestamp now);

private:
    void forget(Timestamp now);

    std::size_t most_;
    std::chrono::seconds span_;
    std::map<std::string, std::deque<Timestamp>, std::less<>> attempts_;
};

}  // namespace zelkovanta::office
