#pragma once

#include "platform/peripheral_manager.h"

#include <memory>
#include <string>
#include <vector>

namespace zelkovanta::platform::simulated {

/// A radio whose state a test sets, and the managers over it. It must outlive them.
class SimulatedRadio final : public PeripheralManagers {
public:
    [[nodiscard]] std::unique_ptr<PeripheralManager> make(std::weak_ptr<PeripheralManagerDelegate> delegate) override;

    /// The managers' delegates are told.
    void setState(PeripheralManagerState state);

    /// While refusing it advertises nothing more, whoever asks.
    void setRefusing(bool refusing) { isRefusing_ = refusing; }

    /// What is in the air, one for each manager that advertises.
    [[nodiscard]] std::vector<Advertisement> advertisements() const;
    [[nodiscard]] std::size_t managersMade() const { return managersMade_; }
    [[nodiscard]] std::size_t managerCount() const { return managers_.size(); }
    /// Calls of `startAdvertising` so far.
    [[nodiscard]] std::size_t starts() const { return starts_; }
    /// Calls of `stopAdvertising` so far.
    [[nodiscard]] std::size_t stops() const { return stops_; }

private:
    class Manager;

    PeripheralManagerState state_ = PeripheralManagerState::unknown;
    std::vector<Manager*> managers_;
    std::size_t managersMade_ = 0;
    std::size_t starts_ = 0;
    std::size_t stops_ = 0;
    bool isRefusing_ = false;
};

}  // namespace zelkovanta::platform::simulated
