#pragma once

#include "screens/theme/color.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace zelkovanta::screens::theme {

/// The contrast of two colours as WCAG 2.1 defines it, written down a second time, so that a slip in the product's own
/// formula cannot hide.
inline double wcagContrast(const Color& one, const Color& other) {
    const auto luminance = [](const Color& color) {
        constexpr std::array weights{0.2126, 0.7152, 0.0722};
        const std::array channels{color.red, color.green, color.blue};
        double sum = 0;
        for (std::size_t index = 0; index < channels.size(); ++index) {
            const double c = channels[index];
            const double light = c > 0.04045 ? std::exp(2.4 * std::log((c + 0.055) / 1.055)) : c / 12.92;
            sum += weights[index] * light;
        }
        return sum;
    };
    const double a = luminance(one) + 0.05;
    const double b = luminance(other) + 0.05;
    return a > b ? a / b : b / a;
}

}  // namespace zelkovanta::screens::theme
