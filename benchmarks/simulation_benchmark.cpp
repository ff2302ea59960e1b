#include "benchmarks/results.h"
#include "tests/simulation/simulation.h"

#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <ctime>
#include <iostream>

using namespace zelkovanta;

namespace {

constexpr std::uint64_t days = 5;

/// Of this process, which has one thread: the time of one core.
double processorSeconds() {
    return static_cast<double>(std::clock()) / CLOCKS_PER_SEC;
}

}  // namespace

/// Argument: the file of results.
int main(int count, char** arguments) {
    benchmarks::Results results(count > 1 ? arguments[1] : "");
    double simulated = 0;
    const double began = processorSeconds();
    for (std::uint64_t seed = 1; seed <= days; ++seed) {
        const simulation::Report report = simulation::runScenario(simulation::dayOf(seed));
        if (report.violation) {
            std::cerr << "simulation.speed: day " << seed << " fails: " << report.violation->what << '\n';
            return EXIT_FAILURE;
        }
        simulated += std::chrono::duration<double>(report.simulated).count();
    }
    results.add("simulation.speed", simulated / (processorSeconds() - began), "x");
    return results.write() ? EXIT_SUCCESS : EXIT_FAILURE;
}
