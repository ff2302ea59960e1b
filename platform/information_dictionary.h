#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace zelkovanta::platform {

/// The facts that a build of the product carries with it. Read afresh at each use, from any thread.
class InformationDictionary {
public:
    virtual ~InformationDictionary() = default;
    /// None if the entry is missing or not a string.
    [[nodiscard]] virtual std::optional<std::string> text(std::string_view key) const = 0;
};

}  // namespace zelkovanta::platform
