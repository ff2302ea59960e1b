#include "tests/simulation/simulation.h"

#include <charconv>
#include <chrono>
#include <cinttypes>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <memory>
#include <string_view>

namespace {

using namespace zelkovanta::simulation;

constexpr std::string_view usage =
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

bool readNumber(const char* text, std::uint64_t& number) {
    const char* end = text + std::strlen(text);
    const auto read = std::from_chars(text, end, number);
    return read.ec == std::errc{} && read.ptr == end;
}

bool readOptions(int count, char** arguments, Options& options) {
    for (int index = 1; index < count; ++index) {
        const std::string_view word = arguments[index];
        const char* value = index + 1 < count ? arguments[index + 1] : nullptr;
        if (word == "--day") {
            options.isDay = true;
        } else if (word == "--verbose") {
            options.isVerbose = true;
        } else if (word == "--trace" && value != nullptr) {
            options.traceFile = value;
            ++index;
        } else {
            std::uint64_t* number = word == "--seeds"     ? &options.seeds
                                    : word == "--first"   ? &options.first
                                    : word == "--replays" ? &options.replays
                                                          : nullptr;
            if (number == nullptr || value == nullptr || !readNumber(value, *number) || *number == 0) {
                return false;
            }
            ++index;
        }
    }
    return true;
}

struct Totals {
    std::uint64_t seeds = 0;
    double simulatedSeconds = 0;
    FaultCounts faults;
    OvertakenReplies overtaken;
    std::uint64_t actions = 0;
    std::uint64_t accepted = 0;
    std::uint64_t looks = 0;
    std::uint64_t alertsSeen = 0;

    void add(const Report& report) {
        simulatedSeconds += std::chrono::duration<double>(report.simulated).count();
        faults += report.faults;
        overtaken += report.overtaken;
        actions += report.actions;
        accepted += report.accepted;
        looks += report.looks;
        alertsSeen += report.alertsSeen;
    }
};

void print(const Totals& totals, double realSeconds, double processorSeconds) {
    std::printf("%" PRIu64 " seeds, %.1f simulated hours in %.1f s: %.0f times real time, %.0f a core\n", totals.seeds,
                totals.simulatedSeconds / 3600, realSeconds, totals.simulatedSeconds / realSeconds,
                totals.simulatedSeconds / processorSeconds);
    std::printf("%" PRIu64 " actions, %" PRIu64 " signals accepted, %" PRIu64 " looks with %" PRIu64
                " notifications, %" PRIu64 " faults:\n",
                totals.actions, totals.accepted, totals.looks, totals.alertsSeen, totals.faults.total());
    for (std::size_t index = 0; index < faultCount; ++index) {
        const auto fault = static_cast<Fault>(index);
        const std::string_view text = name(fault);
        std::printf("  %-32.*s %10" PRIu64 "\n", static_cast<int>(text.size()), text.data(), totals.faults.of(fault));
    }
    const OvertakenReplies& overtaken = totals.overtaken;
    std::printf("REST replies overtaken by a newer event and merged as they arrived: %" PRIu64 " of %" PRIu64
                " (signals %" PRIu64 ", members %" PRIu64 ", states %" PRIu64 ", sign-outs %" PRIu64
                "); computers seen to differ for it: %" PRIu64 "\n",
                overtaken.total(), overtaken.merged, overtaken.signals, overtaken.members, overtaken.states,
                overtaken.signOuts, overtaken.diverged);
}

bool fails(const Options& options, std::uint64_t seed, const Report& report) {
    if (!report.violation) {
        return false;
    }
    const double when = std::chrono::duration<double>(report.violation->when.time_since_epoch()).count();
    std::printf("seed %" PRIu64 " fails at %.6f s, computer %d: %s\n", seed, when, report.violation->who,
                report.violation->what.c_str());
    std::printf(options.isDay ? "replay: simulate --seeds 1 --first %" PRIu64 " --day --verbose\n"
                              : "replay: ./dev simulate 1 %" PRIu64 "\n",
                seed);
    return true;
}

int run(const Options& options, std::FILE* trace) {
    const auto started = std::chrono::steady_clock::now();
    Totals totals;
    for (std::uint64_t seed = options.first; seed < options.first + options.seeds; ++seed) {
        const Scenario scenario = options.isDay ? dayOf(seed) : scenarioOf(seed);
        const Report report = runScenario(scenario, {}, trace);
        ++totals.seeds;
        totals.add(report);
        if (options.isVerbose) {
            std::printf("seed %" PRIu64 ": %d computers, %" PRIu64 " faults, trace %016" PRIx64 " of %" PRIu64
                        " entries\n",
                        seed, scenario.computers, report.faults.total(), report.traceHash, report.traceEntries);
        }
        if (fails(options, seed, report)) {
            return EXIT_FAILURE;
        }
        for (std::uint64_t replay = 1; replay < options.replays; ++replay) {
            const Report again = runScenario(scenario);
            totals.add(again);
            if (again.traceHash != report.traceHash || again.traceEntries != report.traceEntries) {
                std::printf("seed %" PRIu64 ": replay %" PRIu64 " has the trace %016" PRIx64 " and not %016" PRIx64
                            "\n",
                            seed, replay, again.traceHash, report.traceHash);
                return EXIT_FAILURE;
            }
        }
        if (options.replays > 1) {
            std::printf("seed %" PRIu64 ": %" PRIu64 " runs, one trace: %016" PRIx64 "\n", seed, options.replays,
                        report.traceHash);
        }
    }
    print(totals, std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count(),
          static_cast<double>(std::clock()) / CLOCKS_PER_SEC);
    return EXIT_SUCCESS;
}

}  // namespace

int main(int count, char** arguments) {
    Options options;
    if (!readOptions(count, arguments, options)) {
        std::fwrite(usage.data(), 1, usage.size(), stderr);
        return 2;
    }
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> trace{nullptr, std::fclose};
    if (options.traceFile != nullptr) {
        trace.reset(std::fopen(options.traceFile, "w"));
        if (!trace) {
            std::fprintf(stderr, "The trace cannot be written to %s.\n", options.traceFile);
            return 2;
        }
    }
    return run(options, trace.get());
}
