// The road of one signal between two computers, over loopback: two processes with the real store and clients, and the
// office in this one. Measured from the moment at which the office has accepted (committed) a change to the moment at
// which the observers of the other computer's store are told.

#include "benchmarks/child_process.h"
#include "benchmarks/percentile.h"
#include "benchmarks/results.h"
#include "benchmarks/road_client.h"
#include "benchmarks/road_echo.h"
#include "benchmarks/road_office.h"

#include <array>
#include <cstddef>
#include <cstdio>
#include <vector>

namespace zelkovanta::benchmarks {
namespace {

constexpr std::size_t rounds = 120;
// How quick a wake-up is depends on where the scheduler has put two processes, and stays so while they live. So each
// road is measured with several pairs, in turns with its peers.
constexpr int pairs = 10;

// What opens connections and fills caches is no part of a road that is gone all day.
constexpr std::ptrdiff_t firstSteps = 40;

void append(std::vector<double>& all, const std::vector<double>& more) {
    all.insert(all.end(), more.begin() + firstSteps, more.end());
}

/// Reads the client's lines until it holds `count` signals; gives the time of that line.
std::int64_t timeWithSignals(ChildProcess& client, std::size_t count) {
    for (;;) {
        unsigned long seen = 0;
        long long time = 0;
        if (std::sscanf(client.readLine().c_str(), "signals %lu %lld", &seen, &time) == 2 && seen == count) {
            return time;
        }
    }
}

std::vector<double> measureRoad() {
    const RoadOffice office("zelkovanta-road-benchmark");
    std::vector<double> milliseconds;
    ChildProcess sender({"--client", office.url(), office.roomCode()});
    ChildProcess receiver({"--client", office.url(), office.memberCode()});
    for (ChildProcess* client : {&sender, &receiver}) {
        while (client->readLine() != "ready") {
        }
    }
    for (std::size_t round = 0; round < rounds; ++round) {
        sender.writeLine(office.sendOrder());
        const std::int64_t shown = timeWithSignals(receiver, 1);
        milliseconds.push_back(static_cast<double>(shown - office.acceptedAt()) / 1e6);
        static_cast<void>(timeWithSignals(sender, 1));
        receiver.writeLine("done");
        const std::int64_t gone = timeWithSignals(sender, 0);
        milliseconds.push_back(static_cast<double>(gone - office.acceptedAt()) / 1e6);
        static_cast<void>(timeWithSignals(receiver, 0));
    }
    return milliseconds;
}

int measure(const std::string& file) {
    constexpr std::array ends{EchoEnd::mainLoop, EchoEnd::socketThread};
    std::vector<double> road;
    std::array<std::vector<double>, ends.size()> echoes;
    for (int pair = 0; pair < pairs; ++pair) {
        append(road, measureRoad());
        for (std::size_t index = 0; index < ends.size(); ++index) {
            append(echoes.at(index), measureEcho(2 * rounds, ends.at(index)));
        }
    }
    Results results(file);
    for (std::size_t index = 0; index < ends.size(); ++index) {
        const std::vector<double>& echo = echoes.at(index);
        const char* const peer = ends.at(index) == EchoEnd::mainLoop ? "echo" : "echo_at_socket";
        results.add("road.store.p50", percentile(road, 0.50), "ms", peer, percentile(echo, 0.50));
        results.add("road.store.p99", percentile(road, 0.99), "ms", peer, percentile(echo, 0.99));
    }
    return results.write() ? 0 : 1;
}

}  // namespace
}  // namespace zelkovanta::benchmarks

int main(int argc, char** argv) {
    using namespace zelkovanta::benchmarks;
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 3 && arguments[0] == "--client") {
        return runRoadClient(argc, argv, arguments[1], arguments[2], Alerts::none);
    }
    if (arguments.size() == 2 && arguments[0] == "--echo-poster") {
        return runEchoPoster(arguments[1]);
    }
    for (const EchoEnd end : {EchoEnd::mainLoop, EchoEnd::socketThread}) {
        if (arguments.size() == 3 && arguments[0] == "--echo-listener" && arguments[2] == nameOf(end)) {
            return runEchoListener(argc, argv, arguments[1], end);
        }
    }
    return measure(arguments.empty() ? std::string() : arguments[0]);
}
