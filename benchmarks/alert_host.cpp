// The alerts over a real session bus: how long a call takes from the web socket to the notification daemon, beside one
// bare call of the same bus and daemon; and what the alerts add to a start.

#include "benchmarks/alert_daemon.h"
#include "benchmarks/alert_start.h"
#include "benchmarks/child_process.h"
#include "benchmarks/percentile.h"
#include "benchmarks/results.h"
#include "benchmarks/road_client.h"
#include "benchmarks/road_office.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace zelkovanta::benchmarks {
namespace {

constexpr std::size_t rounds = 400;
constexpr std::size_t starts = 41;

/// The rest of the next line that begins with `beginning`; what comes before is passed over.
std::string next(ChildProcess& process, std::string_view beginning) {
    for (;;) {
        const std::string line = process.readLine();
        if (line.starts_with(beginning)) {
            return line.substr(beginning.size());
        }
    }
}

double millisecondsBetween(const std::string& begin, const std::string& end) {
    return static_cast<double>(std::stoll(end) - std::stoll(begin)) / 1e6;
}

/// A call reaches the provider's computer, which shows it; the room ends it, which takes it back; then the same
/// computer makes its bare call.
void measureRoad(ChildProcess& daemon, Results& results) {
    const RoadOffice office("zelkovanta-alert-benchmark");
    ChildProcess sender({"--client", office.url(), office.roomCode()});
    ChildProcess receiver({"--alerting-client", office.url(), office.memberCode()});
    next(daemon, "asked");
    next(sender, "ready");
    next(receiver, "ready");
    std::vector<double> road;
    std::vector<double> bare;
    for (std::size_t round = 0; round < rounds; ++round) {
        sender.writeLine(office.sendOrder());
        const std::string shown = next(daemon, "notify ZelkoVanta ");
        receiver.writeLine("frame");
        road.push_back(millisecondsBetween(next(receiver, "frame "), shown));
        next(sender, "signals 1 ");
        sender.writeLine("done");
        next(sender, "signals 0 ");
        next(receiver, "signals 0 ");
        next(daemon, "close");
        receiver.writeLine("bare");
        const std::string begun = next(receiver, "bare ");
        bare.push_back(millisecondsBetween(begun, next(daemon, "notify bare ")));
    }
    results.add("alert.road.p50", percentile(road, 0.50), "ms", "bare_call", percentile(bare, 0.50));
    results.add("alert.road.p99", percentile(road, 0.99), "ms", "bare_call", percentile(bare, 0.99));
}

struct Started {
    std::vector<double> milliseconds;
    std::vector<double> megabytes;

    void add(const char* option) {
        ChildProcess process({"--start", option});
        const std::string figures = next(process, "started ");
        double time = 0;
        double memory = 0;
        if (std::sscanf(figures.c_str(), "%lf %lf", &time, &memory) != 2) {
            std::fprintf(stderr, "A start told no figures: %s\n", figures.c_str());
            std::exit(1);
        }
        milliseconds.push_back(time);
        megabytes.push_back(memory);
    }
};

/// Starts with alerts and starts without take turns; what lies between their medians is what the alerts add.
void measureStart(Results& results) {
    Started with;
    Started without;
    for (std::size_t start = 0; start < starts; ++start) {
        without.add("without");
        with.add("with");
    }
    results.add("start.alerts", percentile(with.milliseconds, 0.5) - percentile(without.milliseconds, 0.5), "ms");
    results.add("memory.alerts", percentile(with.megabytes, 0.5) - percentile(without.megabytes, 0.5), "MB");
}

int measure(const std::string& file) {
    Results results(file);
    ChildProcess daemon({"--daemon"});
    next(daemon, "ready");
    measureRoad(daemon, results);
    measureStart(results);
    return results.write() ? 0 : 1;
}

}  // namespace
}  // namespace zelkovanta::benchmarks

/// Argument: the file of results.
int main(int argc, char** argv) {
    using namespace zelkovanta::benchmarks;
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 3 && arguments[0] == "--client") {
        return runRoadClient(argc, argv, arguments[1], arguments[2], Alerts::none);
    }
    if (arguments.size() == 3 && arguments[0] == "--alerting-client") {
        return runRoadClient(argc, argv, arguments[1], arguments[2], Alerts::onDesktop);
    }
    if (arguments.size() == 1 && arguments[0] == "--daemon") {
        return runAlertDaemon(argc, argv);
    }
    if (arguments.size() == 2 && arguments[0] == "--start") {
        return runAlertStart(argc, argv, arguments[1] == "with" ? Alerts::onDesktop : Alerts::none);
    }
    return measure(arguments.empty() ? std::string() : arguments[0]);
}
