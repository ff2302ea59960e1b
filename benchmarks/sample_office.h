#pragma once

#include "records/snapshot.h"

#include <cstddef>
#include <string>

/// An invented practice of a given size, the same at every call, with texts of the lengths that a server writes.
namespace zelkovanta::benchmarks {

struct SampleSize {
    std::size_t members = 0;
    std::size_t rooms = 0;
    std::size_t signals = 0;
};
inline constexpr SampleSize smallSample{40, 20, 60};
inline constexpr SampleSize mediumSample{200, 100, 500};
inline constexpr SampleSize largeSample{1000, 300, 5000};

[[nodiscard]] records::StateSnapshot sampleSnapshot(SampleSize size);

/// As a server writes it: the records' fields in their order, before each record's own a key that the client ignores.
[[nodiscard]] std::string sampleSnapshotJson(const records::StateSnapshot& snapshot);

/// A frame "signal.updated" of about 450 bytes.
[[nodiscard]] std::string sampleSignalFrame();

}  // namespace zelkovanta::benchmarks
