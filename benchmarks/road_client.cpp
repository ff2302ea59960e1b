#include "benchmarks/road_client.h"

#include "benchmarks/idle_collaborators.h"
#include "benchmarks/monotonic.h"
#include "benchmarks/road_alerts.h"
#include "platform/linux/beast_web_socket.h"
#include "platform/linux/boottime_clock.h"
#include "platform/linux/curl_url_session.h"
#include "platform/linux/network_thread.h"
#include "platform/linux/qt_main_thread.h"
#include "platform/simulated/fixed_information.h"
#include "platform/simulated/memory_stores.h"
#include "platform/simulated/scripted_random.h"
#include "platform/simulated/simulated_host.h"
#include "store/app_store.h"

#include <algorithm>
#include <cstdio>
#include <iostream>
#include <sstream>
#include <thread>
#include <utility>

#include <QCoreApplication>
#include <boost/asio/post.hpp>

namespace zelkovanta::benchmarks {

namespace {

namespace host = platform::linux_host;
namespace simulated = platform::simulated;

class RoadClient {
public:
    RoadClient(records::Url serverURL, std::string code, Alerts alerts) : serverURL_(std::move(serverURL)) {
        auto collaborators = collaborators_.all();
        if (alerts == Alerts::onDesktop) {
            alerts_ = std::make_unique<RoadAlerts>(main_, network_, clock_, random_, webSocketLoading_);
        }
        loginItem_.current = platform::LoginItemStatus::enabled;
        store_ = store::AppStore::start({.main = main_.executor(),
                                         .background = network_,
                                         .clock = clock_,
                                         .random = random_,
                                         .urlLoading = urlLoading_,
                                         .webSocketLoading = alerts_ ? alerts_->webSockets() : webSocketLoading_,
                                         .keyStore = keyStore_,
                                         .defaults = defaults_,
                                         .information = information_,
                                         .loginItem = loginItem_,
                                         .hostInfo = hostInfo_,
                                         .powerOff = powerOff_,
                                         .notificationCenter = notificationCenter_,
                                         .strings = strings_,
                                         .defaultServerURL = serverURL_},
                                        {.notifications = alerts_ ? alerts_->service() : collaborators.notifications,
                                         .notes = collaborators.notes,
                                         .crash = collaborators.crash,
                                         .updates = collaborators.updates,
                                         .beacon = collaborators.beacon,
                                         .mainWindow = collaborators.mainWindow});
        observation_ = store_->observe([this](const store::StoreChanges& changes) { tell(changes); });
        platform::startTask(main_.executor(), [this, code = std::move(code)]() -> platform::Awaitable<void> {
            const auto paired = co_await store_->redeemPairingCode(code);
            if (!paired) {
                std::puts("not paired");
                QCoreApplication::quit();
            }
        });
        std::thread([this] { readCommands(); }).detach();
    }

private:
    void tell(const store::StoreChanges& changes) {
        const std::int64_t now = monotonicNow();
        const auto& state = store_->state();
        if (!isReady_ && state.hasAuthenticatedSnapshot &&
            state.connectionState == server::ConnectionState::connected) {
            isReady_ = true;
            std::puts("ready");
        } else if (isReady_ && changes.contains(store::StoreField::signals)) {
            std::printf("signals %zu %lld\n", state.signals.size(), static_cast<long long>(now));
        }
        std::fflush(stdout);
    }

    void readCommands() {
        std::string line;
        while (std::getline(std::cin, line)) {
            boost::asio::post(main_.executor(), [this, line] { obey(line); });
        }
        std::_Exit(0);
    }

    void obey(const std::string& line) {
        if (line == "frame") {
            std::printf("frame %lld\n", static_cast<long long>(alerts_->callReadAt()));
            std::fflush(stdout);
            return;
        }
        if (line == "bare") {
            std::printf("bare %lld\n", static_cast<long long>(alerts_->callBare()));
            std::fflush(stdout);
            return;
        }
        std::istringstream words(line);
        std::string verb;
        std::string room;
        std::string member;
        words >> verb >> room >> member;
        platform::startTask(main_.executor(), [this, verb, room, member]() -> platform::Awaitable<void> {
            if (verb == "send") {
                std::vector<std::string> recipients{member};
                const auto& types = store_->state().signalTypes;
                const std::string typeId = std::ranges::find(types, "ready", &records::SignalType::key)->id;
                co_await store_->sendSignal(typeId, "", room, std::move(recipients), std::nullopt);
            } else {
                const std::vector<records::Signal> held = store_->state().signals;
                for (const records::Signal& signal : held) {
                    co_await store_->actOnSignal(signal, "done");
                }
            }
        });
    }

    const records::Url serverURL_;
    host::QtMainThread main_;
    host::NetworkThread network_;
    host::BoottimeClock clock_{network_.context()};
    host::CurlUrlLoading urlLoading_{network_, {}};
    host::BeastWebSocketLoading webSocketLoading_{{}};
    simulated::ScriptedRandom random_;
    simulated::MemoryKeyStore keyStore_;
    simulated::MemoryUserDefaults defaults_;
    simulated::FixedInformation information_;
    simulated::SimulatedLoginItem loginItem_;
    simulated::SimulatedHostInfo hostInfo_;
    simulated::SimulatedPowerOff powerOff_;
    platform::NotificationCenter notificationCenter_;
    platform::KeysAsTexts strings_;
    IdleCollaborators collaborators_;
    std::unique_ptr<RoadAlerts> alerts_;
    std::shared_ptr<store::AppStore> store_;
    std::shared_ptr<void> observation_;
    bool isReady_ = false;
};

}  // namespace

int runRoadClient(int argc, char** argv, const std::string& serverURL, const std::string& code, Alerts alerts) {
    QCoreApplication application(argc, argv);
    const auto url = records::Url::parse(serverURL);
    if (!url) {
        return 2;
    }
    RoadClient client(*url, code, alerts);
    // The parent ends this process; nothing here is worth an orderly end.
    std::_Exit(QCoreApplication::exec());
}

}  // namespace zelkovanta::benchmarks
