#include "benchmarks/contest.h"
#include "benchmarks/idle_collaborators.h"
#include "benchmarks/results.h"
#include "benchmarks/sample_office.h"
#include "platform/simulated/fixed_information.h"
#include "platform/simulated/memory_stores.h"
#include "platform/simulated/scripted_random.h"
#include "platform/simulated/simulated_host.h"
#include "platform/simulated/simulated_url_loading.h"
#include "platform/simulated/simulated_web_socket.h"
#include "records/json_encoder.h"
#include "server/server_message.h"
#include "store/app_store.h"
#include "store/queues.h"
#include "store/settings.h"

#include <algorithm>
#include <chrono>
#include <iostream>
#include <memory>
#include <span>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

namespace {

using namespace zelkovanta;
using namespace zelkovanta::platform::simulated;

/// Everything that a screen reads of the queues.
void recomputeEveryQueue(const store::StoreState& state) {
    benchmarks::keep(store::sortedActiveSignals(state.signalTypes, state.signals));
    benchmarks::keep(store::receivedSignals(state));
    benchmarks::keep(store::sentSignals(state));
    benchmarks::keep(store::activeQueueCount(state));
    benchmarks::keep(store::queuePosition(state, state.signals.back().id));
    benchmarks::keep(store::activeRooms(state));
    benchmarks::keep(store::onShiftMembers(state));
    benchmarks::keep(store::selectableRecipients(state));
    benchmarks::keep(store::activeSignalTypes(state));
}

/// One paired computer with a live connection, whose main thread is run by hand.
class Computer {
public:
    Computer() {
        keyStore_.write(store::deviceTokenItem(), "token");
        defaults_.setText("serverURL", "https://office.example");
        defaults_.setText("deviceRole", "member");
        defaults_.setBoolean("didApplyDesktopDefaultsV1", true);
        store_ = store::AppStore::start({.main = main_.executor(),
                                         .background = background_,
                                         .clock = clock_,
                                         .random = random_,
                                         .urlLoading = urlLoading_,
                                         .webSocketLoading = webSocketLoading_,
                                         .keyStore = keyStore_,
                                         .defaults = defaults_,
                                         .information = information_,
                                         .loginItem = loginItem_,
                                         .hostInfo = hostInfo_,
                                         .powerOff = powerOff_,
                                         .notificationCenter = notificationCenter_,
                                         .strings = strings_,
                                         .defaultServerURL = *records::Url::parse("https://default.example")},
                                        collaborators_.all());
        loop_.runReady();
    }

    [[nodiscard]] store::AppStore& store() { return *store_; }

    /// Seconds that the main thread takes from the message to the last observer. The frame is decoded before, on the
    /// connection's own thread, as in the program.
    double deliver(const std::string& frame) {
        main_.setHeld(true);
        webSocketLoading_.current().deliver(frame);
        loop_.runReady();
        main_.setHeld(false);
        const auto start = std::chrono::steady_clock::now();
        loop_.runReady();
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    }

private:
    EventLoop loop_;
    EventLoop::Thread& main_ = loop_.makeThread();
    ManualClock clock_{loop_};
    SimulatedBackground background_{loop_, main_};
    ScriptedRandom random_;
    SimulatedUrlLoading urlLoading_{clock_};
    SimulatedWebSocketLoading webSocketLoading_{clock_};
    MemoryKeyStore keyStore_;
    MemoryUserDefaults defaults_;
    FixedInformation information_;
    SimulatedLoginItem loginItem_;
    SimulatedHostInfo hostInfo_;
    SimulatedPowerOff powerOff_;
    platform::NotificationCenter notificationCenter_;
    platform::KeysAsTexts strings_;
    benchmarks::IdleCollaborators collaborators_;
    std::shared_ptr<store::AppStore> store_;
};

std::string snapshotFrame(const records::StateSnapshot& snapshot) {
    return R"({"type":"snapshot","data":)" + benchmarks::sampleSnapshotJson(snapshot) + "}";
}

std::string updateFrame(const records::Signal& signal) {
    std::string data;
    records::json::encode(server::server_message::SignalUpdated{signal}, data);
    return R"({"type":"signal.updated","data":)" + data + "}";
}

/// What most turns of the main thread take.
double median(std::vector<double> seconds) {
    const auto middle = seconds.begin() + static_cast<std::ptrdiff_t>(seconds.size() / 2);
    std::ranges::nth_element(seconds, middle);
    return *middle;
}

/// Applying the snapshot and telling an observer that reads every queue.
bool measureSnapshot(const records::StateSnapshot& snapshot, benchmarks::Results& results) {
    Computer computer;
    const std::string frame = snapshotFrame(snapshot);
    int told = 0;
    const auto observer = computer.store().observe([&](const store::StoreChanges&) {
        ++told;
        recomputeEveryQueue(computer.store().state());
    });
    computer.deliver(frame);
    told = 0;
    constexpr int rounds = 60;
    std::vector<double> seconds;
    for (int round = 0; round < rounds; ++round) {
        seconds.push_back(computer.deliver(frame));
    }
    if (told != rounds || computer.store().state().signals != snapshot.signals) {
        std::cerr << "apply.snapshot.large: the snapshot did not arrive" << std::endl;
        return false;
    }
    results.add("apply.snapshot.large", median(std::move(seconds)) * 1e3, "ms");
    return true;
}

/// One signal changes among all of them, all over the list, and an observer is told which part of the state changed.
bool measureSignal(const records::StateSnapshot& snapshot, benchmarks::Results& results) {
    Computer computer;
    computer.deliver(snapshotFrame(snapshot));
    int told = 0;
    const auto observer = computer.store().observe(
        [&](const store::StoreChanges& changes) { told += changes.contains(store::StoreField::signals) ? 1 : 0; });
    constexpr int rounds = 2000;
    std::vector<double> seconds;
    for (int round = 0; round < rounds; ++round) {
        records::Signal signal = snapshot.signals[static_cast<std::size_t>(round) * 7 % snapshot.signals.size()];
        signal.note = "Changed " + std::to_string(round);
        seconds.push_back(computer.deliver(updateFrame(signal)));
    }
    if (told != rounds) {
        std::cerr << "apply.signal: the updates did not arrive" << std::endl;
        return false;
    }
    results.add("apply.signal", median(std::move(seconds)) * 1e3, "ms");
    return true;
}

/// The keys by which signals are ordered, and nothing else.
struct BareKey {
    std::int64_t priority;
    std::string_view createdAt;
};

void measureSort(const records::StateSnapshot& snapshot, benchmarks::Results& results) {
    std::vector<BareKey> keys;
    for (const auto& signal : snapshot.signals) {
        const auto type = std::ranges::find(snapshot.signalTypes, signal.typeId, &records::SignalType::id);
        keys.push_back({type->priority, signal.createdAt});
    }
    benchmarks::Contest contest;
    contest.join([&] { benchmarks::keep(store::sortedActiveSignals(snapshot.signalTypes, snapshot.signals)); });
    contest.join([&] {
        std::vector<BareKey> sorted = keys;
        std::ranges::stable_sort(sorted, [](const BareKey& left, const BareKey& right) {
            return std::tie(right.priority, left.createdAt) < std::tie(left.priority, right.createdAt);
        });
        benchmarks::keep(sorted);
    });
    const std::vector<double> seconds = contest.run();
    results.add("queue.sort.5000", seconds[0] * 1e6, "µs", "stable_sort", seconds[1] * 1e6);
}

/// The same signals in portions of each size, one portion after the other: every size finds its records equally far
/// away in memory, and none is sorted so often that the processor learns its order. What grows is the work.
void measureScaling(benchmarks::Results& results) {
    constexpr std::size_t all = 50'000;
    const auto snapshot = benchmarks::sampleSnapshot({.members = 1000, .rooms = 300, .signals = all});
    const std::span<const records::Signal> signals = snapshot.signals;
    std::vector<double> microseconds;
    for (const std::size_t count : {std::size_t{50}, std::size_t{500}, std::size_t{5'000}, all}) {
        std::size_t turn = 0;
        benchmarks::Contest contest;
        contest.join([&] {
            const auto portion = signals.subspan(turn++ % (all / count) * count, count);
            benchmarks::keep(store::sortedActiveSignals(snapshot.signalTypes, portion));
        });
        microseconds.push_back(contest.run().front() * 1e6);
    }
    results.add("queue.scaling", microseconds, "µs");
}

}  // namespace

/// Argument: the file of results.
int main(int count, char** arguments) {
    benchmarks::Results results(count > 1 ? arguments[1] : "");
    const records::StateSnapshot snapshot = benchmarks::sampleSnapshot(benchmarks::largeSample);
    const bool measured = measureSnapshot(snapshot, results) && measureSignal(snapshot, results);
    measureSort(snapshot, results);
    measureScaling(results);
    return measured && results.write() ? 0 : 1;
}
