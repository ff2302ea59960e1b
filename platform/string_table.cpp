#include "platform/string_table.h"

#include <algorithm>
#include <span>

namespace zelkovanta::platform {

namespace {

constexpr std::string_view numberWord = "%lld";
constexpr std::string_view textWord = "%@";

/// The next value of one kind; none if there is none left. Takes it away, with all that stand before it.
template <class Value>
const Value* takeNext(std::span<const FormatValue>& values) {
    while (!values.empty()) {
        const auto* const value = std::get_if<Value>(&values.front());
        values = values.subspan(1);
        if (value) {
            return value;
        }
    }
    return nullptr;
}

}  // namespace

std::string filled(std::string_view text, std::initializer_list<FormatValue> values) {
    std::span<const FormatValue> numbers{values.begin(), values.size()};
    std::span<const FormatValue> texts = numbers;
    std::string result;
    while (!text.empty()) {
        if (text.starts_with(numberWord)) {
            const auto* const number = takeNext<std::int64_t>(numbers);
            result += number ? std::to_string(*number) : std::string{numberWord};
            text.remove_prefix(numberWord.size());
        } else if (text.starts_with(textWord)) {
            const auto* const value = takeNext<std::string_view>(texts);
            result += value ? *value : textWord;
            text.remove_prefix(textWord.size());
        } else {
            const auto end = std::min(text.find('%', 1), text.size());
            result += text.substr(0, end);
            text.remove_prefix(end);
        }
    }
    return result;
}

}  // namespace zelkovanta::platform
