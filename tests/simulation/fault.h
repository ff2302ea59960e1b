#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace zelkovanta::simulation {

/// What goes wrong. Each is counted where it takes effect, not where it was planned.
enum class Fault : std::uint8_t {
    // One exchange.
    requestLost,
    replyLost,
    exchangeReset,
    refused401,
    refused429,
    refused500,
    garbageReply,
    cutReply,
    slowReply,
    // One socket.
    upgrade401,
    upgrade429,
    upgrade500,
    upgradeGarbage,
    silentUpgrade,
    frameCut,
    socketReset,
    socketClosed,
    halfOpen,
    pingUnsent,
    // One computer's link.
    linkDown,
    linkSilent,
    linkStalled,
    linkRough,
    // The office.
    officeRestart,
    storageRefuses,
    // One computer.
    suspended,
    mainThreadBusy,
    otherThreadsBusy,
    processKilled,
    powerOff,
    newLogin,
    keyStoreLocked,
    clockSet,
    // By people.
    revoked,
    unlinked,
    movedBySnapshot,
    movedByOfficeUpdate,
    // What must have no effect.
    poisonedFrame,
    poisonedReply,
};
inline constexpr std::size_t faultCount = static_cast<std::size_t>(Fault::poisonedReply) + 1;

[[nodiscard]] std::string_view name(Fault fault);

class FaultCounts {
public:
    void add(Fault fault) { ++counts_[static_cast<std::size_t>(fault)]; }
    [[nodiscard]] std::uint64_t of(Fault fault) const { return counts_[static_cast<std::size_t>(fault)]; }
    [[nodiscard]] std::uint64_t total() const {
        std::uint64_t sum = 0;
        for (const auto count : counts_) {
            sum += count;
        }
        return sum;
    }
    FaultCounts& operator+=(const FaultCounts& other) {
        for (std::size_t index = 0; index < faultCount; ++index) {
            counts_[index] += other.counts_[index];
        }
        return *this;
    }

private:
    std::array<std::uint64_t, faultCount> counts_{};
};

}  // namespace zelkovanta::simulation
