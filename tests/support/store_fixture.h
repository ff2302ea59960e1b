#pragma once

#include "platform/simulated/fixed_information.h"
#include "platform/simulated/scripted_random.h"
#include "platform/simulated/simulated_host.h"
#include "platform/simulated/simulated_url_loading.h"
#include "platform/simulated/simulated_web_socket.h"
#include "platform/task.h"
#include "store/app_store.h"
#include "tests/support/office_records.h"
#include "tests/support/recording_collaborators.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zelkovanta::support {

/// One computer in virtual time: a real store over real clients, a host in memory, and a server played by the test.
///
/// The journal holds, in one order, what the store asked of its collaborators and of its host: requests as
/// "http GET /state", sockets as "socket.open".
class Computer {
public:
    static constexpr std::string_view defaultServerURL = "https://default.example";
    static constexpr std::string_view serverURL = "https://office.example";

    using Exchange = platform::simulated::SimulatedUrlLoading::Exchange;
    using SocketTask = platform::simulated::SimulatedWebSocketTask;

    Computer();
    ~Computer();
    Computer(const Computer&) = delete;
    Computer& operator=(const Computer&) = delete;

    // The way up.
    /// What an earlier launch left behind: a pairing with `serverURL`.
    void savePairing(std::string_view role, std::string_view token = "token-1");
    /// The desktop defaults were applied by an earlier launch, so that nothing of them is seen.
    void skipDesktopDefaults();
    /// Begins to start the store; nothing runs yet.
    void launch();
    /// Launches with a saved pairing and settles; the first request for the state stays open.
    void launchPaired(std::string_view role);
    /// The same, up to the state that shows this snapshot. The journal is empty afterwards.
    void launchWith(std::string_view role, const records::StateSnapshot& snapshot);
    /// Launches without a pairing and settles; the first request for a setup code stays open.
    void launchUnpaired();

    [[nodiscard]] const store::StoreState& state() const { return store->state(); }

    /// Runs what is due.
    void settle() { loop.runReady(); }
    /// Runs `operation` as a task of the main thread and settles.
    void run(std::function<platform::Awaitable<void>(store::AppStore&)> operation);

    // The server's side.
    [[nodiscard]] SocketTask& socket() const { return webSocketLoading.current(); }
    /// A frame over the current socket, or over another one.
    void deliver(std::string_view type, std::string_view data);
    static void deliverOver(SocketTask& task, std::string_view type, std::string_view data);
    template <class Record>
    void deliverRecord(std::string_view type, const Record& record) {
        deliver(type, toJson(record));
    }
    void deliverSnapshot(const records::StateSnapshot& snapshot) { deliverRecord("snapshot", snapshot); }
    void deliverCreated(const records::Signal& signal);
    void deliverUpdated(const records::Signal& signal);
    void deliverSessionStarted(const records::Device& device, const records::Member& member);

    /// The open request with this method and path (below "/api/v1"), or null.
    [[nodiscard]] Exchange* openRequest(std::string_view method, std::string_view path) const;
    /// Answers that request, which must be open, and settles.
    void answer(std::string_view method, std::string_view path, int status, std::string body = "{}");
    void fail(std::string_view method, std::string_view path, platform::TransportCause cause);
    template <class Record>
    void answerWith(std::string_view method, std::string_view path, const Record& record) {
        answer(method, path, 200, toJson(record));
    }
    /// Requests so far with this method and path.
    [[nodiscard]] std::size_t requestCount(std::string_view method, std::string_view path) const;

    Journal journal;

    platform::simulated::EventLoop loop;
    platform::simulated::EventLoop::Thread& main = loop.makeThread();
    platform::simulated::ManualClock clock{loop};
    platform::simulated::SimulatedBackground background{loop, main};
    platform::simulated::ScriptedRandom random;
    platform::simulated::SimulatedUrlLoading urlLoading{clock};
    platform::simulated::SimulatedWebSocketLoading webSocketLoading{clock};
    RecordingKeyStore keyStore{journal};
    RecordingDefaults defaults{journal};
    platform::simulated::FixedInformation information{{{"CFBundleShortVersionString", "2.3.4"}}};
    platform::simulated::SimulatedLoginItem loginItem;
    platform::simulated::SimulatedHostInfo hostInfo;
    platform::simulated::SimulatedPowerOff powerOff;
    platform::NotificationCenter notificationCenter;
    platform::KeysAsTexts strings;

    RecordingNotifications notifications{journal};
    /// Who hears of signals; a test may put the real alerts here before it launches.
    store::DesktopNotifications* alerts = &notifications;
    RecordingNotes notes{journal};
    RecordingCrashSession crash{journal};
    RecordingUpdates updates{journal};
    RecordingBeacon beacon{journal};
    RecordingMainWindow mainWindow{journal};

    std::shared_ptr<store::AppStore> store;

private:
    platform::Observation launchAtLoginObserver_;
};

}  // namespace zelkovanta::support
