#include "tests/simulation/trace.h"

#include <cstring>

namespace zelkovanta::simulation {

void Trace::mix(std::string_view text) {
    mix(text.size());
    while (text.size() >= sizeof(std::uint64_t)) {
        std::uint64_t word = 0;
        std::memcpy(&word, text.data(), sizeof word);
        mix(word);
        text.remove_prefix(sizeof word);
    }
    std::uint64_t rest = 0;
    if (!text.empty()) {
        std::memcpy(&rest, text.data(), text.size());
    }
    mix(rest);
}

void Trace::write(platform::SteadyTime when, int who, std::string_view what, std::string_view detail) {
    const double seconds = std::chrono::duration<double>(when.time_since_epoch()).count();
    std::fprintf(file_, "%14.6f %3d %.*s %.*s\n", seconds, who, static_cast<int>(what.size()), what.data(),
                 static_cast<int>(detail.size()), detail.data());
}

}  // namespace zelkovanta::simulation
