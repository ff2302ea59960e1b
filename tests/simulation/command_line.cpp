#include "tests/simulation/command_line.h"

#include <charconv>
#include <chrono>
#include <cinttypes>
#include <cstdlib>
#include <cstring>
#include <ctime>

namespace zelkovanta::simulation {

namespace {

bool readNumber(const char* text, std::uint64_t& number) {
    const char* end = text + std::strlen(text);
    const auto read = std::from_chars(text, end, number);
    return read.ec == std::errc{} && read.ptr == end;
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

/// How `./dev` runs just this seed again.
void printReplay(const Options& options, std::uint64_t seed) {
    std::printf("replay: ./dev simulate 1 %" PRIu64 "%s", seed, options.isDay ? " --day" : "");
    if (options.replays > 1) {
        std::printf(" --replays %" PRIu64, options.replays);
    }
    std::printf("\n");
}

bool fails(const Options& options, std::uint64_t seed, const Report& report) {
    if (!report.violation) {
        return false;
    }
    const double when = std::chrono::duration<double>(report.violation->when.time_since_epoch()).count();
    std::printf("seed %" PRIu64 " fails at %.6f s, computer %d: %s\n", seed, when, report.violation->who,
                report.violation->what.c_str());
    printReplay(options, seed);
    return true;
}

}  // namespace

std::optional<Options> optionsFrom(std::span<const char* const> words) {
    Options options;
    for (std::size_t index = 0; index < words.size(); ++index) {
        const std::string_view word = words[index];
        const char* value = index + 1 < words.size() ? words[index + 1] : nullptr;
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
                return std::nullopt;
            }
            ++index;
        }
    }
    return options;
}

int runSeeds(const Options& options, const Sabotage& sabotage, std::FILE* trace) {
    const auto started = std::chrono::steady_clock::now();
    Totals totals;
    for (std::uint64_t seed = options.first; seed < options.first + options.seeds; ++seed) {
        const Scenario scenario = options.isDay ? dayOf(seed) : scenarioOf(seed);
        const Report report = runScenario(scenario, sabotage, trace);
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
            const Report again = runScenario(scenario, sabotage);
            totals.add(again);
            if (again.traceHash != report.traceHash || again.traceEntries != report.traceEntries) {
                std::printf("seed %" PRIu64 ": replay %" PRIu64 " has the trace %016" PRIx64 " and not %016" PRIx64
                            "\n",
                            seed, replay, again.traceHash, report.traceHash);
                printReplay(options, seed);
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

}  // namespace zelkovanta::simulation
