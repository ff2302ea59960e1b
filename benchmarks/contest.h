#pragma once

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <functional>
#include <limits>
#include <utility>
#include <vector>

namespace zelkovanta::benchmarks {

/// Keeps the compiler from leaving out what made `value`.
template <class Value>
void keep(const Value& value) {
    asm volatile("" : : "r,m"(&value) : "memory");
}

/// Several ways of doing one thing, timed in turn, so that a busy moment of the machine meets them all.
class Contest {
public:
    /// The result's index is the order of joining. `body` does the thing once.
    void join(std::function<void()> body) { bodies_.push_back(std::move(body)); }

    /// Seconds for one run of each: the best of many slices of about a millisecond, which are short enough to fall
    /// between the turns of other programs. Takes about `length` for each.
    [[nodiscard]] std::vector<double> run(std::chrono::milliseconds length = std::chrono::milliseconds(1500)) const {
        std::vector<std::size_t> runs;
        for (const auto& body : bodies_)
            runs.push_back(runsInASlice(body));
        std::vector<double> best(bodies_.size(), std::numeric_limits<double>::infinity());
        const auto end = Clock::now() + length * static_cast<int>(bodies_.size());
        constexpr int leastRounds = 10;
        for (int round = 0; round < leastRounds || Clock::now() < end; ++round) {
            for (std::size_t index = 0; index < bodies_.size(); ++index)
                best[index] = std::min(best[index], slice(bodies_[index], runs[index]));
        }
        return best;
    }

private:
    using Clock = std::chrono::steady_clock;

    static std::size_t runsInASlice(const std::function<void()>& body) {
        constexpr double wanted = 0.001;
        for (std::size_t runs = 1;; runs *= 2) {
            if (slice(body, runs) * static_cast<double>(runs) >= wanted)
                return runs;
        }
    }

    static double slice(const std::function<void()>& body, std::size_t runs) {
        const auto start = Clock::now();
        for (std::size_t run = 0; run < runs; ++run)
            body();
        return std::chrono::duration<double>(Clock::now() - start).count() / static_cast<double>(runs);
    }

    std::vector<std::function<void()>> bodies_;
};

}  // namespace zelkovanta::benchmarks
