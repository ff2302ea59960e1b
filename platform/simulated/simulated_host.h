#pragma once

#include "platform/background.h"
#include "platform/host_info.h"
#include "platform/login_item.h"
#include "platform/power_off.h"
#include "platform/simulated/event_loop.h"

#include <expected>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace zelkovanta::platform::simulated {

/// One computer's threads besides its main thread.
class SimulatedBackground final : public Background {
public:
    SimulatedBackground(EventLoop& loop, EventLoop::Thread& mainThread) : loop_(loop), mainThread_(mainThread) {}

    [[nodiscard]] Executor executor() override { return backgroundThread_.executor(); }
    [[nodiscard]] Executor makeSerialQueue() override;
    /// Runs the loop within the call while the main thread is held.
    void runAndWait(std::function<Awaitable<void>()> task, Duration limit) override;

    /// While held, the work of these threads waits; the main thread's does not. Queues made meanwhile are held too.
    void setHeld(bool held);
    /// The process of these threads is gone.
    void end();

private:
    EventLoop& loop_;
    EventLoop::Thread& mainThread_;
    EventLoop::Thread& backgroundThread_ = loop_.makeThread();
    std::vector<EventLoop::Thread*> queues_;
    bool held_ = false;
};

struct SimulatedHostInfo final : HostInfo {
    std::string name = "Front Desk";
    std::string model = "OptiPlex 7010";
    std::string locale = "en-US";
    double boot = 1'700'000'000.25;
    std::string session = "a1";

    [[nodiscard]] std::string localizedName() const override { return name; }
    [[nodiscard]] std::string hardwareModel() const override { return model; }
    [[nodiscard]] std::string localeIdentifier() const override { return locale; }
    [[nodiscard]] double bootTime() const override { return boot; }
    [[nodiscard]] std::string auditSessionId() const override { return session; }
};

/// A login item whose registrations can fail, or take effect only when a test says so.
struct SimulatedLoginItem final : LoginItem {
    enum class Registering { takesEffect, hasNoEffect, fails };
    Registering registering = Registering::takesEffect;
    LoginItemStatus current = LoginItemStatus::notRegistered;
    std::vector<RegistrationIntent> registrations;

    [[nodiscard]] LoginItemStatus status() const override { return current; }
    std::expected<void, std::string> registerItem(RegistrationIntent intent) override;
    std::expected<void, std::string> unregisterItem() override;
};

class SimulatedPowerOff final : public PowerOffNotifications {
public:
    [[nodiscard]] Observation observe(std::function<void()> handler) override {
        return observers_.add(std::move(handler));
    }
    /// Tells the observers, within the call.
    void announce() { observers_.tell(); }
    [[nodiscard]] std::size_t observerCount() const { return observers_.size(); }

private:
    ObserverList<> observers_;
};

}  // namespace zelkovanta::platform::simulated
