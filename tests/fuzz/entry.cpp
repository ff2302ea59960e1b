#include "tests/fuzz/targets.h"

#include <cstddef>
#include <cstdint>

/// One program for each target; the build says which.
// NOLINTNEXTLINE(readability-identifier-naming): the name that libFuzzer calls
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    zelkovanta::fuzz::ZELKOVANTA_FUZZ_TARGET({reinterpret_cast<const char*>(data), size});
    return 0;
}
