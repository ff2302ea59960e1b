#pragma once

#include <algorithm>
#include <cstddef>
#include <vector>

namespace zelkovanta::benchmarks {

/// `share` is from 0 to 1; there is at least one value.
[[nodiscard]] inline double percentile(std::vector<double> values, double share) {
    const auto index = static_cast<std::ptrdiff_t>(share * static_cast<double>(values.size() - 1));
    std::nth_element(values.begin(), values.begin() + index, values.end());
    return values[static_cast<std::size_t>(index)];
}

}  // namespace zelkovanta::benchmarks
