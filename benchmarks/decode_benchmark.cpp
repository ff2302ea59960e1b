#include "benchmarks/contest.h"
#include "benchmarks/decode_peers.h"
#include "benchmarks/results.h"
#include "benchmarks/sample_office.h"
#include "records/json_codec.h"
#include "server/server_message.h"

#include <iostream>
#include <string>
#include <vector>

namespace {

using namespace zelkovanta;

bool measureSnapshot(std::string_view name, benchmarks::SampleSize size, benchmarks::Results& results) {
    const records::StateSnapshot sample = benchmarks::sampleSnapshot(size);
    const std::string json = benchmarks::sampleSnapshotJson(sample);
    if (records::decodeJson<records::StateSnapshot>(json) != sample || benchmarks::decodeWithNlohmann(json) != sample ||
        benchmarks::decodeWithQt(json) != sample) {
        std::cerr << name << ": the contenders do not decode alike" << std::endl;
        return false;
    }
    const auto decode = [&json] { benchmarks::keep(records::decodeJson<records::StateSnapshot>(json)); };
    const auto rate = [&json](double seconds) { return static_cast<double>(json.size()) / 1e6 / seconds; };

    // Two contests, so that what other libraries leave behind in heap and caches does not weigh on the first.
    benchmarks::Contest limit;
    limit.join(decode);
    limit.join([decoded = *records::decodeJson<records::StateSnapshot>(json)] {
        const records::StateSnapshot copy = decoded;
        benchmarks::keep(copy);
    });
    const std::vector<double> beside = limit.run();
    results.add(name, rate(beside[0]), "MB/s", "copy", rate(beside[1]));

    benchmarks::Contest peers;
    peers.join(decode);
    peers.join([&json] { benchmarks::keep(benchmarks::decodeWithNlohmann(json)); });
    peers.join([&json] { benchmarks::keep(benchmarks::decodeWithQt(json)); });
    const std::vector<double> seconds = peers.run();
    results.add(name, rate(seconds[0]), "MB/s", "nlohmann", rate(seconds[1]));
    results.add(name, rate(seconds[0]), "MB/s", "qt", rate(seconds[2]));
    return true;
}

bool measureFrame(benchmarks::Results& results) {
    const std::string frame = benchmarks::sampleSignalFrame();
    const auto message = server::decodeServerMessage(frame);
    if (!message || !std::holds_alternative<server::server_message::SignalUpdated>(*message)) {
        std::cerr << "decode.frame: the frame is not understood" << std::endl;
        return false;
    }
    benchmarks::Contest contest;
    contest.join([&] { benchmarks::keep(server::decodeServerMessage(frame)); });
    results.add("decode.frame", contest.run().front() * 1e6, "µs");
    return true;
}

}  // namespace

/// Argument: the file of results.
int main(int count, char** arguments) {
    benchmarks::Results results(count > 1 ? arguments[1] : "");
    const bool measured = measureSnapshot("decode.snapshot.small", benchmarks::smallSample, results) &&
                          measureSnapshot("decode.snapshot.medium", benchmarks::mediumSample, results) &&
                          measureSnapshot("decode.snapshot.large", benchmarks::largeSample, results) &&
                          measureFrame(results);
    return measured && results.write() ? 0 : 1;
}
