// The road of one signal between two computers, over loopback: two processes with the real store and clients, and the
// office in this one. Measured from the moment at which the office has accepted (committed) a change to the moment at
// which the observers of the other computer's store are told.

#include "benchmarks/child_process.h"
#include "benchmarks/monotonic.h"
#include "benchmarks/results.h"
#include "benchmarks/road_client.h"
#include "benchmarks/road_echo.h"
#include "office/host.h"
#include "office/qr_picture.h"
#include "office/server.h"
#include "office/sqlite_storage.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include <boost/asio/post.hpp>
#include <boost/json/parse.hpp>

namespace zelkovanta::benchmarks {
namespace {

constexpr std::size_t rounds = 400;

template <class Value>
Value orGiveUp(std::expected<Value, auto> result, const char* sentence) {
    if (!result) {
        std::fprintf(stderr, "%s\n", sentence);
        std::exit(1);
    }
    return std::move(*result);
}

double percentile(std::vector<double> values, double share) {
    const auto index = static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + index, values.end());
    return values[static_cast<std::size_t>(index)];
}

std::string pairingCode(office::Office& office, const office::Placement& placement) {
    const office::Answer answer = office.makePairingCode(placement, office::wallNow());
    return boost::json::parse(answer.body).at("code").as_string().c_str();
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
    const std::filesystem::path folder = std::filesystem::temp_directory_path() / "zelkovanta-road-benchmark";
    std::filesystem::remove_all(folder);
    std::filesystem::create_directories(folder);
    auto storage = orGiveUp(office::SqliteStorage::open(folder / "office.sqlite"), "The office's file did not open.");
    office::SystemRandomBytes random;
    auto office = orGiveUp(office::Office::open(*storage, random, office::qrPicture), "The office did not open.");
    static_cast<void>(office->addSample("harbour", office::wallNow()));

    std::atomic<std::int64_t> acceptedAt = 0;
    boost::asio::io_context context;
    auto server = orGiveUp(office::Server::listen(context, *office,
                                                  {.address = "127.0.0.1",
                                                   .port = 0,
                                                   .adminToken = "none",
                                                   .now = office::wallNow,
                                                   .log = [&](const std::string&) { acceptedAt = monotonicNow(); }}),
                           "The office did not listen.");
    const std::string url = "http://127.0.0.1:" + std::to_string(server->port());

    const auto& rooms = office->state().all<office::Room>();
    const auto& room =
        std::ranges::find_if(rooms, [](const auto& entry) { return entry.second.name == "Room 3"; })->second;
    const auto& members = office->state().all<office::Member>();
    const std::string provider = std::ranges::find_if(members, [&](const auto& entry) {
                                     const office::Member& member = entry.second;
                                     return member.practiceId == room.practiceId && member.department == "provider" &&
                                            member.onShift.value_or(true);
                                 })->first;
    const std::string sendOrder = "send " + room.id + " " + provider;
    const std::string roomCode = pairingCode(*office, {.practice = room.practiceId,
                                                       .role = office::DeviceRole::room,
                                                       .room = room.id,
                                                       .member = {},
                                                       .computerName = {}});
    const std::string memberCode = pairingCode(*office, {.practice = room.practiceId,
                                                         .role = office::DeviceRole::member,
                                                         .room = {},
                                                         .member = provider,
                                                         .computerName = {}});
    std::thread thread([&] { context.run(); });

    std::vector<double> milliseconds;
    {
        ChildProcess sender({"--client", url, roomCode});
        ChildProcess receiver({"--client", url, memberCode});
        while (sender.readLine() != "ready") {
        }
        while (receiver.readLine() != "ready") {
        }
        for (std::size_t round = 0; round < rounds; ++round) {
            sender.writeLine(sendOrder);
            const std::int64_t shown = timeWithSignals(receiver, 1);
            milliseconds.push_back(static_cast<double>(shown - acceptedAt) / 1e6);
            static_cast<void>(timeWithSignals(sender, 1));
            receiver.writeLine("done");
            const std::int64_t gone = timeWithSignals(sender, 0);
            milliseconds.push_back(static_cast<double>(gone - acceptedAt) / 1e6);
            static_cast<void>(timeWithSignals(receiver, 0));
        }
    }
    boost::asio::post(context, [&] { server->stop(); });
    thread.join();
    server.reset();
    office.reset();
    storage.reset();
    std::filesystem::remove_all(folder);
    return milliseconds;
}

int measure(const std::string& file) {
    const std::vector<double> road = measureRoad();
    const std::vector<double> echo = measureEcho(2 * rounds);
    Results results(file);
    results.add("road.store.p50", percentile(road, 0.50), "ms", "echo", percentile(echo, 0.50));
    results.add("road.store.p99", percentile(road, 0.99), "ms", "echo", percentile(echo, 0.99));
    return results.write() ? 0 : 1;
}

}  // namespace
}  // namespace zelkovanta::benchmarks

int main(int argc, char** argv) {
    using namespace zelkovanta::benchmarks;
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.size() == 3 && arguments[0] == "--client") {
        return runRoadClient(argc, argv, arguments[1], arguments[2]);
    }
    if (arguments.size() == 2 && arguments[0] == "--echo-poster") {
        return runEchoPoster(arguments[1]);
    }
    if (arguments.size() == 2 && arguments[0] == "--echo-listener") {
        return runEchoListener(arguments[1]);
    }
    return measure(arguments.empty() ? std::string() : arguments[0]);
}
