#pragma once

#include "tests/simulation/simulation.h"

#include <cstdint>
#include <cstdio>
#include <optional>
#include <span>
#include <string_view>

namespace zelkovanta::simulation {

inline constexpr std::string_view usage =
    "simulate [--seeds N] [--first S] [--day] [--replays R] [--verbose] [--trace FILE]\n"
    "\n"
    "Runs a practice with its office and 1 to 12 computers in virtual time, once for each seed, over a network that\n"
    "fails in every way while people act, and checks what must hold. Exits with 1 at the first seed that fails.\n"
    "\n"
    "  --seeds N     how many seeds (200)\n"
    "  --first S     the first one (1)\n"
    "  --day         each seed is a full day with 12 computers\n"
    "  --replays R   run each seed R times and compare the traces\n"
    "  --verbose     a line for each seed\n"
    "  --trace FILE  write everything that happens to FILE\n";

struct Options {
    std::uint64_t seeds = 200;
    std::uint64_t first = 1;
    std::uint64_t replays = 1;
    bool isDay = false;
    bool isVerbose = false;
    const char* traceFile = nullptr;
};

/// What the words of a command ask for; nothing where they make no sense. The file's name points into the words.
[[nodiscard]] std::optional<Options> optionsFrom(std::span<const char* const> words);

/// Runs the seeds and prints what came of it, and at the first that fails how it is run again. The exit status.
/// `trace` gets a line for everything that happens, if it is given.
[[nodiscard]] int runSeeds(const Options& options, const Sabotage& sabotage = {}, std::FILE* trace = nullptr);

}  // namespace zelkovanta::simulation
