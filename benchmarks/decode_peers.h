#pragma once

#include "records/snapshot.h"

#include <optional>
#include <string>

/// The same strict decoding of a snapshot, through other JSON libraries.
namespace zelkovanta::benchmarks {

[[nodiscard]] std::optional<records::StateSnapshot> decodeWithNlohmann(const std::string& json);
[[nodiscard]] std::optional<records::StateSnapshot> decodeWithQt(const std::string& json);

}  // namespace zelkovanta::benchmarks
