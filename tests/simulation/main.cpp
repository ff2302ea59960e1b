#include "tests/simulation/command_line.h"

#include <cstdio>
#include <memory>
#include <span>

int main(int count, char** arguments) {
    using namespace zelkovanta::simulation;
    const auto options =
        optionsFrom(std::span<const char* const>(arguments, static_cast<std::size_t>(count)).subspan(1));
    if (!options) {
        std::fwrite(usage.data(), 1, usage.size(), stderr);
        return 2;
    }
    std::unique_ptr<std::FILE, int (*)(std::FILE*)> trace{nullptr, std::fclose};
    if (options->traceFile != nullptr) {
        trace.reset(std::fopen(options->traceFile, "w"));
        if (!trace) {
            std::fprintf(stderr, "The trace cannot be written to %s.\n", options->traceFile);
            return 2;
        }
    }
    return runSeeds(*options, {}, trace.get());
}
