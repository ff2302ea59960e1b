#include "tests/simulation/command_line.h"

#include <cstdlib>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelkovanta::simulation {
namespace {

using ::testing::HasSubstr;

/// Lets waits be over too soon, so that clients hammer at the office.
class HastyClock final : public platform::Clock {
public:
    explicit HastyClock(platform::Clock& clock) : clock_(clock) {}
    platform::SteadyTime steadyNow() const override { return clock_.steadyNow(); }
    platform::WallTime wallNow() const override { return clock_.wallNow(); }
    platform::Timer callAfter(platform::Duration delay, platform::Executor executor,
                              std::move_only_function<void()> call) override {
        return clock_.callAfter(delay / 4, std::move(executor), std::move(call));
    }

private:
    platform::Clock& clock_;
};

Sabotage haste() {
    Sabotage sabotage;
    sabotage.clock = [](platform::Clock& clock) { return std::make_unique<HastyClock>(clock); };
    return sabotage;
}

struct Outcome {
    int status = 0;
    std::string printed;

    [[nodiscard]] std::string line(const std::string& beginning) const {
        std::istringstream lines(printed);
        std::string line;
        while (std::getline(lines, line)) {
            if (line.starts_with(beginning)) {
                return line;
            }
        }
        return "none";
    }
};

Outcome outcomeOf(const std::optional<Options>& options, const Sabotage& sabotage) {
    if (!options) {
        return {.status = 2, .printed = "the words make no sense"};
    }
    testing::internal::CaptureStdout();
    const int status = runSeeds(*options, sabotage);
    return {.status = status, .printed = testing::internal::GetCapturedStdout()};
}

/// What `./dev simulate SEEDS FIRST OPTIONS` makes of the words after it.
std::optional<Options> asDevReads(const std::string& line) {
    const std::string command = "replay: ./dev simulate ";
    if (!line.starts_with(command)) {
        return std::nullopt;
    }
    std::istringstream rest(line.substr(command.size()));
    std::vector<std::string> words{"--seeds", "", "--first", ""};
    rest >> words[1] >> words[3];
    for (std::string word; rest >> word;) {
        words.push_back(word);
    }
    std::vector<const char*> pointers;
    for (const std::string& word : words) {
        pointers.push_back(word.c_str());
    }
    return optionsFrom(pointers);
}

void expectThatTheReplayFailsAlike(const Options& options) {
    const Outcome outcome = outcomeOf(options, haste());
    ASSERT_EQ(outcome.status, EXIT_FAILURE) << outcome.printed;
    const std::string complaint = outcome.line("seed ");
    ASSERT_THAT(complaint, HasSubstr("fails at"));

    const auto replay = asDevReads(outcome.line("replay: "));
    ASSERT_TRUE(replay) << outcome.printed;
    EXPECT_EQ(replay->seeds, 1U);
    const Outcome again = outcomeOf(replay, haste());
    EXPECT_EQ(again.status, EXIT_FAILURE);
    EXPECT_EQ(again.line("seed "), complaint);
}

TEST(CommandLine, theReplayOfASeedThatFailsFailsAlike) {
    expectThatTheReplayFailsAlike({.seeds = 20, .first = 3});
}

TEST(CommandLine, theReplayOfADayThatFailsIsThatOfADay) {
    expectThatTheReplayFailsAlike({.first = 2, .isDay = true});
}

TEST(CommandLine, aSeedWhoseRunsDifferSaysHowToCompareThemAgain) {
    int runs = 0;
    Sabotage sabotage;
    sabotage.storage = [&runs](office::Storage&) -> std::unique_ptr<office::Storage> {
        ++runs;
        return nullptr;
    };
    sabotage.clock = [&runs](platform::Clock& clock) -> std::unique_ptr<platform::Clock> {
        return runs > 1 ? std::make_unique<HastyClock>(clock) : nullptr;
    };
    const Outcome outcome = outcomeOf(Options{.seeds = 1, .first = 5, .replays = 2}, sabotage);
    EXPECT_EQ(outcome.status, EXIT_FAILURE);
    EXPECT_THAT(outcome.printed, HasSubstr("seed 5: replay 1 has the trace"));
    EXPECT_EQ(outcome.line("replay: "), "replay: ./dev simulate 1 5 --replays 2");
    const auto replay = asDevReads(outcome.line("replay: "));
    ASSERT_TRUE(replay);
    EXPECT_EQ(replay->replays, 2U);
}

}  // namespace
}  // namespace zelkovanta::simulation
