#pragma once

#include "alerts/notification_service.h"
#include "platform/simulated/fixed_information.h"
#include "platform/simulated/memory_stores.h"
#include "platform/simulated/simulated_host.h"
#include "platform/simulated/simulated_notification_center.h"
#include "store/app_store.h"
#include "tests/simulation/network.h"
#include "tests/simulation/quiet_collaborators.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace zelkovanta::simulation {

/// Puts something between a process and its host, to see whether the checks notice a broken client.
struct Sabotage {
    /// Gives a wrapper around the socket loading of a process, or null.
    std::function<std::unique_ptr<platform::WebSocketLoading>(platform::WebSocketLoading&)> webSockets;
    /// Gives a wrapper around the clock of a process, or null.
    std::function<std::unique_ptr<platform::Clock>(platform::Clock&)> clock;
    /// Gives a wrapper around the key store of a computer, or null.
    std::function<std::unique_ptr<platform::KeyStore>(platform::KeyStore&)> keyStore;
    /// Gives a wrapper around what a computer says of itself, or null.
    std::function<std::unique_ptr<platform::HostInfo>(platform::HostInfo&)> hostInfo;
    /// Gives a wrapper around the notification centre of a process, or null.
    std::function<std::unique_ptr<platform::UserNotificationCenter>(platform::UserNotificationCenter&)> notifications;
    /// Gives a wrapper around the office's storage, or null.
    std::function<std::unique_ptr<office::Storage>(office::Storage&)> storage;
};

struct ComputerSurroundings {
    platform::simulated::EventLoop& loop;
    Network& network;
    Verdict& verdict;
    OvertakenReplies& overtaken;
    const Sabotage& sabotage;
};

/// One run of the real program on a computer: the real store, on threads and ports of its own.
class Process {
public:
    using Observer = std::function<void(const store::StoreChanges&)>;

    struct Host {
        platform::KeyStore& keyStore;
        platform::UserDefaults& defaults;
        platform::HostInfo& hostInfo;
        platform::LoginItem& loginItem;
        platform::UserNotificationCenter& notifications;
        Link& link;
        Watch& watch;
        NotificationWatch& notificationWatch;
        std::chrono::microseconds wallOffset;
        int number;
        std::string peer;
    };
    Process(const ComputerSurroundings& surroundings, const Host& host, Chance chance, const Observer& observer);
    ~Process();

    [[nodiscard]] store::AppStore& store() { return *store_; }
    [[nodiscard]] const store::StoreState& state() const { return store_->state(); }
    [[nodiscard]] NetworkPort& port() { return port_; }
    [[nodiscard]] const NetworkPort& port() const { return port_; }
    [[nodiscard]] platform::simulated::ManualClock& clock() { return clock_; }
    /// Runs `task` on the main thread; it is dropped with the process.
    void start(std::function<platform::Awaitable<void>()> task);
    void announcePowerOff() { powerOff_.announce(); }

    void setMainHeld(bool held) { main_.setHeld(held); }
    void setOthersHeld(bool held) { background_.setHeld(held); }
    /// The process ends without a word. What is left of it stays until the loop is gone, since coroutines that it let
    /// go of unwind late.
    void kill();

private:
    /// Shows a sign-in code as long as the screen would.
    void showWhatIsNeeded(Watch& watch);

    platform::simulated::EventLoop::Thread& main_;
    platform::simulated::SimulatedBackground background_;
    NetworkPort port_;
    platform::simulated::ManualClock clock_;
    ChanceSource random_;
    ChanceSource alertRandom_;
    platform::simulated::FixedInformation information_;
    platform::simulated::SimulatedPowerOff powerOff_;
    platform::NotificationCenter notificationCenter_;
    platform::KeysAsTexts strings_;
    std::unique_ptr<platform::UserNotificationCenter> wrappedCenter_;
    std::shared_ptr<alerts::NotificationService> alerts_;
    WatchedNotifications notifications_;
    QuietCollaborators collaborators_;
    std::unique_ptr<platform::WebSocketLoading> webSockets_;
    std::unique_ptr<platform::Clock> wrappedClock_;
    std::shared_ptr<store::AppStore> store_;
    std::shared_ptr<void> observation_;
    std::shared_ptr<void> signInCodeViewer_;
};

/// One computer of the practice: what outlives its processes, its link, and the process that runs.
class Computer {
public:
    Computer(const ComputerSurroundings& surroundings, int number, Chance chance);
    ~Computer();
    Computer(const Computer&) = delete;
    Computer& operator=(const Computer&) = delete;

    [[nodiscard]] int number() const { return number_; }
    [[nodiscard]] const std::string& name() const { return hostInfo_.name; }
    [[nodiscard]] Link& link() { return link_; }
    [[nodiscard]] const Watch& watch() const { return watch_; }
    [[nodiscard]] Watch& watch() { return watch_; }

    // The machine.
    void launch();
    void kill();
    void suspend();
    void resume();
    /// Holds threads for a while, as a busy machine does.
    void setMainBusy(bool busy);
    void setOthersBusy(bool busy);
    /// Announces the end to the program, waits for it as long as the program asks, then ends it. A later launch finds
    /// another boot time.
    void powerOff();
    /// The person logs out, which ends the program, and somebody logs in.
    void logOutAndIn();
    void setKeyStoreLocked(bool locked);
    [[nodiscard]] bool isKeyStoreLocked() const { return isKeyStoreLocked_; }
    /// Sets the time of day this far from the simulation's.
    void setWallOffset(platform::Duration offset);
    [[nodiscard]] double bootTime() const { return hostInfo_.boot; }

    // The person in the notification centre. Nothing happens where there is no such notification.
    void pressNotification(const std::string& identifier, std::string_view actionIdentifier);
    void dismissNotification(const std::string& identifier);
    [[nodiscard]] const platform::simulated::SimulatedNotificationCenter& notifications() const { return center_; }
    [[nodiscard]] NotificationWatch& notificationWatch() { return notificationWatch_; }

    [[nodiscard]] bool isRunning() const { return process_ != nullptr; }
    [[nodiscard]] bool isSuspended() const { return isSuspended_; }
    [[nodiscard]] bool isBusy() const { return isMainBusy_ || areOthersBusy_; }
    [[nodiscard]] bool isPoweringOff() const { return isPoweringOff_; }
    /// Runs, and nobody holds it.
    [[nodiscard]] bool isResponsive() const { return isRunning() && !isSuspended_ && !isBusy() && !isPoweringOff_; }
    [[nodiscard]] int login() const { return login_; }
    /// Time since which it has been running without being held.
    [[nodiscard]] platform::SteadyTime responsiveSince() const { return responsiveSince_; }
    /// Since when a request to send is under way; none if none is.
    [[nodiscard]] std::optional<platform::SteadyTime> sendingSince() const { return sendingSince_; }

    [[nodiscard]] Process& process() { return *process_; }
    [[nodiscard]] const Process& process() const { return *process_; }
    [[nodiscard]] const store::StoreState& state() const { return process_->state(); }
    /// The token that the key store holds.
    [[nodiscard]] std::optional<std::string> token() const;

    /// Called after each turn in which the store changed.
    std::function<void(Computer&, const store::StoreChanges&)> onChange;

private:
    void applyHolds();
    void endDesktopSession();

    ComputerSurroundings surroundings_;
    int number_;
    Chance chance_;
    platform::simulated::MemoryKeyStore keyStore_;
    std::unique_ptr<platform::KeyStore> wrappedKeyStore_;
    platform::simulated::MemoryUserDefaults defaults_;
    platform::simulated::SimulatedHostInfo hostInfo_;
    std::unique_ptr<platform::HostInfo> wrappedHostInfo_;
    platform::simulated::SimulatedLoginItem loginItem_;
    platform::simulated::SimulatedNotificationCenter center_;
    Link link_;
    Watch watch_;
    NotificationWatch notificationWatch_;
    std::chrono::microseconds wallOffset_{};
    int login_ = 0;
    bool isSuspended_ = false;
    bool isMainBusy_ = false;
    bool areOthersBusy_ = false;
    bool isPoweringOff_ = false;
    bool isKeyStoreLocked_ = false;
    platform::SteadyTime responsiveSince_{};
    std::optional<platform::SteadyTime> sendingSince_;
    std::unique_ptr<Process> process_;
    std::vector<std::unique_ptr<Process>> ended_;
};

}  // namespace zelkovanta::simulation
