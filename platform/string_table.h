#pragma once

#include <string>
#include <string_view>

namespace zelkovanta::platform {

/// The texts that a person reads, in the language of the session. From any thread.
class StringTable {
public:
    virtual ~StringTable() = default;
    /// The text of a key; the key itself if the table lacks it.
    [[nodiscard]] virtual std::string localized(std::string_view key) const = 0;
};

/// A table without entries: every text reads as its key, in English.
class KeysAsTexts final : public StringTable {
public:
    [[nodiscard]] std::string localized(std::string_view key) const override { return std::string{key}; }
};

}  // namespace zelkovanta::platform
