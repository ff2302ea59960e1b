#pragma once

#include <string_view>

#include <QString>

namespace zelkovanta::screens::qml {

/// A text as QML takes it.
[[nodiscard]] inline QString shown(std::string_view text) {
    return QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size()));
}

}  // namespace zelkovanta::screens::qml
