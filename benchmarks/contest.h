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

    /// Seconds for one run of each: the best of `rounds` slices of 15 to 30 ms.
    [[nodiscard]] std::vector<double> run(int rounds) const {
        std::vector<double> best(bodies_.size(), std::numeric_limits<double>::infinity());
        for (int round = 0; round < rounds; ++round) {
            for (std::size_t index = 0; index < bodies_.size(); ++index)
                best[index] = std::min(best[index], slice(bodies_[index]));
        }
        return best;
    }

private:
    static double slice(const std::function<void()>& body) {
        using Clock = std::chrono::steady_clock;
        constexpr std::chrono::milliseconds length(15);
        for (std::size_t runs = 1;; runs *= 2) {
            const auto start = Clock::now();
            for (std::size_t run = 0; run < runs; ++run)
                body();
            const auto taken = Clock::now() - start;
            if (taken >= length)
                return std::chrono::duration<double>(taken).count() / static_cast<double>(runs);
        }
    }

    std::vector<std::function<void()>> bodies_;
};

}  // namespace zelkovanta::benchmarks
