#include "platform/simulated/simulated_peripheral_manager.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace zelkovanta::platform::simulated {

class SimulatedRadio::Manager final : public PeripheralManager {
public:
    Manager(SimulatedRadio& radio, std::weak_ptr<PeripheralManagerDelegate> delegate)
        : radio_(radio), delegate_(std::move(delegate)) {
        radio_.managers_.push_back(this);
    }
    ~Manager() override { std::erase(radio_.managers_, this); }
    Manager(const Manager&) = delete;
    Manager& operator=(const Manager&) = delete;

    [[nodiscard]] PeripheralManagerState state() const override { return radio_.state_; }
    [[nodiscard]] bool isAdvertising() const override { return advertisement_.has_value(); }
    void startAdvertising(Advertisement advertisement) override {
        ++radio_.starts_;
        if (state() == PeripheralManagerState::poweredOn && !radio_.isRefusing_) {
            advertisement_ = std::move(advertisement);
        }
    }
    void stopAdvertising() override {
        ++radio_.stops_;
        advertisement_.reset();
    }

    void tellState() {
        if (state() != PeripheralManagerState::poweredOn) {
            advertisement_.reset();
        }
        if (const auto delegate = delegate_.lock()) {
            delegate->peripheralManagerDidUpdateState(*this);
        }
    }
    [[nodiscard]] const std::optional<Advertisement>& advertisement() const { return advertisement_; }

private:
    SimulatedRadio& radio_;
    std::weak_ptr<PeripheralManagerDelegate> delegate_;
    std::optional<Advertisement> advertisement_;
};

std::unique_ptr<PeripheralManager> SimulatedRadio::make(std::weak_ptr<PeripheralManagerDelegate> delegate) {
    ++managersMade_;
    return std::make_unique<Manager>(*this, std::move(delegate));
}

void SimulatedRadio::setState(PeripheralManagerState state) {
    state_ = state;
    const auto managers = managers_;
    for (Manager* const manager : managers) {
        if (std::ranges::find(managers_, manager) != managers_.end()) {
            manager->tellState();
        }
    }
}

std::vector<Advertisement> SimulatedRadio::advertisements() const {
    std::vector<Advertisement> inTheAir;
    for (const Manager* const manager : managers_) {
        if (manager->advertisement()) {
            inTheAir.push_back(*manager->advertisement());
        }
    }
    return inTheAir;
}

}  // namespace zelkovanta::platform::simulated
