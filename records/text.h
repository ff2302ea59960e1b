#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

/// Rules on texts, all without a locale. Texts are UTF-8. Texts compare exactly, by `==` and `<` on their bytes, which
/// is the order of their Unicode scalars; nothing is normalised.
namespace zelkovanta::records {

/// The text cut to its first `limit` Unicode scalars; unchanged if it has no more. Nothing is trimmed.
[[nodiscard]] std::string scalarPrefix(std::size_t limit, std::string_view text);

/// The text without white space and line ends at both ends.
[[nodiscard]] std::string trimmed(std::string_view text);

/// User-perceived characters: extended grapheme clusters (Unicode Standard Annex 29), in order.
[[nodiscard]] std::vector<std::string> characters(std::string_view text);

/// The first `limit` user-perceived characters.
[[nodiscard]] std::string characterPrefix(std::size_t limit, std::string_view text);

[[nodiscard]] std::string lowercased(std::string_view text);
[[nodiscard]] std::string uppercased(std::string_view text);

/// Each word with its first letter in title case and the rest in lower case. A letter begins a word unless the
/// nearest character before it that is not case-ignorable (an apostrophe is) is itself cased.
[[nodiscard]] std::string capitalized(std::string_view text);

/// The text as a part of a line: one with letters that are written from right to left keeps its direction to itself
/// (U+2068 and U+2069 round it), or it would turn its neighbours round.
[[nodiscard]] std::string isolated(std::string_view text);

/// Only the letters and numbers of a text, by Unicode general category (L* and N*).
[[nodiscard]] std::string alphanumericsOnly(std::string_view text);

}  // namespace zelkovanta::records
