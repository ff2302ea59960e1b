#include "records/json_decoder.h"

#include <charconv>
#include <system_error>

namespace zelkovanta::records::json {
namespace {

constexpr std::size_t largestText = std::size_t{256} << 20U;
/// Memory for texts up to this size is kept for the next one; above it, it goes back to the system.
constexpr std::size_t largestKept = std::size_t{8} << 20U;

simdjson::dom::parser& threadParser() {
    thread_local simdjson::dom::parser parser(largestText);
    return parser;
}

std::size_t digitsAt(std::string_view text, std::size_t position) {
    const std::size_t end = text.find_first_not_of("0123456789", position);
    return (end == std::string_view::npos ? text.size() : end) - position;
}

/// Whether `token` is a number of the grammar that is no 64-bit integer.
bool isOtherNumber(std::string_view token) {
    std::size_t position = token.starts_with('-') ? 1 : 0;
    const std::size_t whole = digitsAt(token, position);
    if (whole == 0 || (whole > 1 && token[position] == '0'))
        return false;
    position += whole;
    if (position == token.size()) {
        std::int64_t value = 0;
        return std::from_chars(token.data(), token.data() + token.size(), value).ec == std::errc::result_out_of_range;
    }
    if (token[position] == '.') {
        const std::size_t fraction = digitsAt(token, position + 1);
        if (fraction == 0)
            return false;
        position += 1 + fraction;
    }
    if (position < token.size()) {
        if (token[position] != 'e' && token[position] != 'E')
            return false;
        ++position;
        if (position < token.size() && (token[position] == '+' || token[position] == '-'))
            ++position;
        const std::size_t exponent = digitsAt(token, position);
        if (exponent == 0)
            return false;
        position += exponent;
    }
    return position == token.size();
}

/// The parser refuses numbers beyond its own range, which JSON allows. No record has a field for them, but they may
/// stand behind a key that is ignored: each is replaced by a fraction of the same length.
void replaceOtherNumbers(std::string& text) {
    std::size_t position = 0;
    while (position < text.size()) {
        if (text[position] == '"') {
            for (++position; position < text.size() && text[position] != '"'; ++position) {
                if (text[position] == '\\')
                    ++position;
            }
            ++position;
            continue;
        }
        const std::size_t end = std::min(text.find_first_not_of("0123456789+-.eE", position), text.size());
        const std::size_t length = end - position;
        if (length == 0) {
            ++position;
            continue;
        }
        if (isOtherNumber(std::string_view(text).substr(position, length)))
            text.replace(position, length, "1." + std::string(length - 2, '0'));
        position = end;
    }
}

}  // namespace

Document::Document(std::string_view text) {
    if (text.empty())
        return;
    simdjson::dom::parser& parser = threadParser();
    error_ = parser.parse(text.data(), text.size()).get(root_);
    if (error_ == simdjson::NUMBER_ERROR) {
        std::string copy(text);
        replaceOtherNumbers(copy);
        error_ = parser.parse(copy.data(), copy.size()).get(root_);
    }
}

Document::~Document() {
    simdjson::dom::parser& parser = threadParser();
    if (parser.capacity() > largestKept)
        parser = simdjson::dom::parser(largestText);
}

}  // namespace zelkovanta::records::json
