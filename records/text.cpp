#include "records/text.h"

#include "records/utf8.h"

#include <algorithm>
#include <memory>

#include <unicode/brkiter.h>
#include <unicode/bytestream.h>
#include <unicode/casemap.h>
#include <unicode/locid.h>
#include <unicode/uchar.h>
#include <unicode/utext.h>
#include <unicode/utf8.h>

namespace zelkovanta::records {
namespace {

/// The scalar at the start of a text, which must not be empty; an ill-formed piece counts as U+FFFD.
struct Scalar {
    UChar32 value = 0;
    std::size_t length = 0;
};

Scalar scalarAt(std::string_view text) {
    const Utf8Step step = firstScalar(text);
    if (!step.wellFormed)
        return {0xFFFD, step.length};
    UChar32 value = 0;
    std::size_t position = 0;
    U8_NEXT_UNSAFE(text.data(), position, value);
    return {value, step.length};
}

bool isAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char character) { return static_cast<unsigned char>(character) < 0x80; });
}

/// Calls `take(piece)` with one user-perceived character after the other until it returns false.
template <class Take>
void forEachCharacter(std::string_view text, Take take) {
    if (isAscii(text)) {
        // CR LF is the only character of more than one ASCII scalar.
        while (!text.empty()) {
            const std::size_t length = text.starts_with("\r\n") ? 2 : 1;
            if (!take(text.substr(0, length)))
                return;
            text.remove_prefix(length);
        }
        return;
    }
    UErrorCode status = U_ZERO_ERROR;
    const std::unique_ptr<UText, decltype(&utext_close)> input(
        utext_openUTF8(nullptr, text.data(), static_cast<std::int64_t>(text.size()), &status), &utext_close);
    const std::unique_ptr<icu::BreakIterator> breaks(
        icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
    if (U_SUCCESS(status))
        breaks->setText(input.get(), status);
    if (U_FAILURE(status)) {
        // Without its data ICU knows no clusters; scalars are the next best.
        while (!text.empty()) {
            const std::size_t length = firstScalar(text).length;
            if (!take(text.substr(0, length)))
                return;
            text.remove_prefix(length);
        }
        return;
    }
    std::size_t start = 0;
    for (std::int32_t end = breaks->next(); end != icu::BreakIterator::DONE; end = breaks->next()) {
        const auto next = static_cast<std::size_t>(end);
        if (!take(text.substr(start, next - start)))
            return;
        start = next;
    }
}

icu::StringPiece pieceOf(std::string_view text) {
    return {text.data(), static_cast<std::int32_t>(text.size())};
}

std::string titlecased(std::string_view scalar) {
    std::string result;
    icu::StringByteSink<std::string> sink(&result);
    UErrorCode status = U_ZERO_ERROR;
    icu::CaseMap::utf8ToTitle("", U_TITLECASE_WHOLE_STRING | U_TITLECASE_NO_BREAK_ADJUSTMENT, nullptr, pieceOf(scalar),
                              sink, nullptr, status);
    return result;
}

/// A word in title case: a first letter and what follows up to the next one. It is lower-cased as a whole, for a letter
/// may depend on its neighbours, as the Greek sigma does at a word's end.
std::string capitalizedWord(std::string_view word) {
    const std::string_view first = word.substr(0, firstScalar(word).length);
    return titlecased(first) + lowercased(word).substr(lowercased(first).size());
}

}  // namespace

std::string scalarPrefix(std::size_t limit, std::string_view text) {
    std::size_t length = 0;
    for (std::size_t count = 0; count < limit && length < text.size(); ++count)
        length += firstScalar(text.substr(length)).length;
    return std::string(text.substr(0, length));
}

std::string trimmed(std::string_view text) {
    std::size_t start = text.size();
    std::size_t end = 0;
    for (std::size_t position = 0; position < text.size();) {
        const Scalar scalar = scalarAt(text.substr(position));
        if (!u_isUWhiteSpace(scalar.value)) {
            start = std::min(start, position);
            end = position + scalar.length;
        }
        position += scalar.length;
    }
    return start < end ? std::string(text.substr(start, end - start)) : std::string();
}

std::vector<std::string> characters(std::string_view text) {
    std::vector<std::string> pieces;
    forEachCharacter(text, [&pieces](std::string_view piece) {
        pieces.emplace_back(piece);
        return true;
    });
    return pieces;
}

std::string characterPrefix(std::size_t limit, std::string_view text) {
    std::string prefix;
    if (limit == 0)
        return prefix;
    forEachCharacter(text, [&prefix, limit, count = std::size_t{0}](std::string_view piece) mutable {
        prefix += piece;
        return ++count < limit;
    });
    return prefix;
}

std::string lowercased(std::string_view text) {
    std::string result;
    icu::StringByteSink<std::string> sink(&result);
    UErrorCode status = U_ZERO_ERROR;
    icu::CaseMap::utf8ToLower("", 0, pieceOf(text), sink, nullptr, status);
    return result;
}

std::string uppercased(std::string_view text) {
    std::string result;
    icu::StringByteSink<std::string> sink(&result);
    UErrorCode status = U_ZERO_ERROR;
    icu::CaseMap::utf8ToUpper("", 0, pieceOf(text), sink, nullptr, status);
    return result;
}

std::string capitalized(std::string_view text) {
    std::string result;
    std::size_t wordStart = 0;
    bool inWord = false;
    bool behindCased = false;
    const auto finish = [&](std::size_t end) {
        const std::string_view piece = text.substr(wordStart, end - wordStart);
        if (inWord)
            result += capitalizedWord(piece);
        else
            result += piece;
        wordStart = end;
    };
    for (std::size_t position = 0; position < text.size();) {
        const Scalar scalar = scalarAt(text.substr(position));
        if (!u_hasBinaryProperty(scalar.value, UCHAR_CASE_IGNORABLE)) {
            const bool cased = u_hasBinaryProperty(scalar.value, UCHAR_CASED) != 0;
            if (cased && !behindCased) {
                finish(position);
                inWord = true;
            }
            behindCased = cased;
        }
        position += scalar.length;
    }
    finish(text.size());
    return result;
}

std::string isolated(std::string_view text) {
    for (std::string_view rest = text; !rest.empty();) {
        const Scalar scalar = scalarAt(rest);
        const UCharDirection direction = u_charDirection(scalar.value);
        if (direction == U_RIGHT_TO_LEFT || direction == U_RIGHT_TO_LEFT_ARABIC) {
            return "\u2068" + std::string{text} + "\u2069";
        }
        rest.remove_prefix(scalar.length);
    }
    return std::string{text};
}

std::string alphanumericsOnly(std::string_view text) {
    std::string result;
    while (!text.empty()) {
        const Scalar scalar = scalarAt(text);
        if ((U_GET_GC_MASK(scalar.value) & (U_GC_L_MASK | U_GC_N_MASK)) != 0)
            result += text.substr(0, scalar.length);
        text.remove_prefix(scalar.length);
    }
    return result;
}

}  // namespace zelkovanta::records
