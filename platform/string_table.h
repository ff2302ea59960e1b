#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <variant>

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

/// Marks a literal that waits in a table or a constant before it is looked up, so that `tools/check_strings` can tell
/// whether every language has it. A literal that stands in the look-up itself needs no mark.
[[nodiscard]] consteval std::string_view textKey(std::string_view key) {
    return key;
}

/// What takes the place of one format word.
using FormatValue = std::variant<std::int64_t, std::string_view>;

/// The text with its format words filled: each "%lld" takes the next number, each "%@" the next text, so a translation
/// may name the number after the text where the key names it before. A format word that finds no value left stays, and
/// what is put in is never taken for a format word.
[[nodiscard]] std::string filled(std::string_view text, std::initializer_list<FormatValue> values);

}  // namespace zelkovanta::platform
