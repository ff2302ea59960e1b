#pragma once

#include "platform/clock.h"

#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>

namespace zelkovanta::simulation {

/// What happened in a run, folded into one number; two runs of one seed give the same. Written out as lines on demand.
class Trace {
public:
    /// Lines go to `file`, if there is one; it must outlive the trace.
    explicit Trace(std::FILE* file = nullptr) : file_(file) {}

    /// `who` is a computer's number, or -1 for the office.
    void note(platform::SteadyTime when, int who, std::string_view what, std::string_view detail = {}) {
        mix(static_cast<std::uint64_t>(when.time_since_epoch().count()));
        mix(static_cast<std::uint64_t>(who));
        mix(what);
        mix(detail);
        ++entries_;
        if (file_ != nullptr) {
            write(when, who, what, detail);
        }
    }

    [[nodiscard]] std::uint64_t hash() const { return hash_; }
    [[nodiscard]] std::uint64_t entries() const { return entries_; }

private:
    void mix(std::uint64_t value) {
        hash_ = (hash_ ^ value) * 0x9FB21C651E98DF25U;
        hash_ ^= hash_ >> 32U;
    }
    void mix(std::string_view text);
    void write(platform::SteadyTime when, int who, std::string_view what, std::string_view detail);

    std::uint64_t hash_ = 0xCBF29CE484222325U;
    std::uint64_t entries_ = 0;
    std::FILE* file_;
};

}  // namespace zelkovanta::simulation
