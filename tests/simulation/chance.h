#pragma once

#include "office/random_bytes.h"
#include "platform/clock.h"
#include "platform/random_source.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <span>

namespace zelkovanta::simulation {

/// Everything that happens by chance in one run, from one seed. The numbers are the same on every machine and with
/// every library, since nothing of the standard library's distributions is used.
class Chance {
public:
    explicit Chance(std::uint64_t seed) : state_(seed) {}

    std::uint64_t next() {
        std::uint64_t mixed = state_ += 0x9E3779B97F4A7C15U;
        mixed = (mixed ^ (mixed >> 30U)) * 0xBF58476D1CE4E5B9U;
        mixed = (mixed ^ (mixed >> 27U)) * 0x94D049BB133111EBU;
        return mixed ^ (mixed >> 31U);
    }

    /// In [0, 1).
    double unit() { return static_cast<double>(next() >> 11U) * 0x1.0p-53; }
    bool happens(double probability) { return unit() < probability; }
    /// In [0, count); `count` is not 0.
    std::size_t below(std::size_t count) { return static_cast<std::size_t>(next() % count); }

    platform::Duration between(platform::Duration lowest, platform::Duration highest) {
        const auto width = static_cast<std::uint64_t>((highest - lowest).count()) + 1;
        return lowest + platform::Duration{static_cast<platform::Duration::rep>(next() % width)};
    }
    /// The wait for the next of events that come independently of each other, at this mean distance.
    platform::Duration untilNext(platform::Duration mean) {
        return platform::Duration{
            static_cast<platform::Duration::rep>(static_cast<double>(mean.count()) * -std::log(1.0 - unit()))};
    }

    template <class List>
    auto& pick(List& list) {
        return list[below(list.size())];
    }

    /// A stream of its own, so that more draws here do not shift the draws there.
    Chance branch() { return Chance{next()}; }

private:
    std::uint64_t state_;
};

class ChanceSource final : public platform::RandomSource {
public:
    explicit ChanceSource(Chance chance) : chance_(chance) {}
    [[nodiscard]] double uniform(double lowest, double highest) override {
        return lowest + (highest - lowest) * chance_.unit();
    }

private:
    Chance chance_;
};

class ChanceBytes final : public office::RandomBytes {
public:
    explicit ChanceBytes(Chance chance) : chance_(chance) {}
    void fill(std::span<std::byte> bytes) override {
        for (std::byte& byte : bytes) {
            byte = static_cast<std::byte>(chance_.next());
        }
    }

private:
    Chance chance_;
};

}  // namespace zelkovanta::simulation
