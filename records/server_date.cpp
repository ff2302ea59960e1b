#include "records/server_date.h"

#include <cstdint>
#include <string>

namespace zelkovanta::records {
namespace {

class Reader {
public:
    explicit Reader(std::string_view text) : rest_(text) {}

    bool atEnd() const { return rest_.empty(); }

    bool skip(char expected) {
        if (rest_.empty() || rest_.front() != expected)
            return false;
        rest_.remove_prefix(1);
        return true;
    }

    /// Exactly `digits` digits with a value of at most `highest`.
    std::optional<int> number(std::size_t digits, int highest) {
        if (rest_.size() < digits)
            return std::nullopt;
        int value = 0;
        for (const char digit : rest_.substr(0, digits)) {
            if (digit < '0' || digit > '9')
                return std::nullopt;
            value = value * 10 + (digit - '0');
        }
        rest_.remove_prefix(digits);
        return value <= highest ? std::optional(value) : std::nullopt;
    }

    /// At least one digit behind the point; what is finer than a microsecond is cut off.
    std::optional<std::chrono::microseconds> fraction() {
        std::int64_t microseconds = 0;
        std::int64_t unit = 100'000;
        bool any = false;
        while (const auto digit = number(1, 9)) {
            microseconds += unit * *digit;
            unit /= 10;
            any = true;
        }
        return any ? std::optional(std::chrono::microseconds(microseconds)) : std::nullopt;
    }

    std::optional<std::chrono::minutes> zone() {
        if (skip('Z'))
            return std::chrono::minutes(0);
        const int sign = skip('+') ? 1 : skip('-') ? -1 : 0;
        if (sign == 0)
            return std::nullopt;
        const auto hours = number(2, 23);
        if (!hours || !skip(':'))
            return std::nullopt;
        const auto minutes = number(2, 59);
        if (!minutes)
            return std::nullopt;
        return std::chrono::minutes(sign * (*hours * 60 + *minutes));
    }

private:
    std::string_view rest_;
};

std::optional<std::chrono::sys_days> readDay(Reader& reader) {
    const auto year = reader.number(4, 9999);
    if (!year || !reader.skip('-'))
        return std::nullopt;
    const auto month = reader.number(2, 12);
    if (!month || !reader.skip('-'))
        return std::nullopt;
    const auto day = reader.number(2, 31);
    if (!day)
        return std::nullopt;
    const std::chrono::year_month_day date(std::chrono::year(*year), std::chrono::month(static_cast<unsigned>(*month)),
                                           std::chrono::day(static_cast<unsigned>(*day)));
    return date.ok() ? std::optional(std::chrono::sys_days(date)) : std::nullopt;
}

std::optional<std::chrono::seconds> readTimeOfDay(Reader& reader) {
    const auto hour = reader.number(2, 23);
    if (!hour || !reader.skip(':'))
        return std::nullopt;
    const auto minute = reader.number(2, 59);
    if (!minute || !reader.skip(':'))
        return std::nullopt;
    const auto second = reader.number(2, 59);
    if (!second)
        return std::nullopt;
    return std::chrono::hours(*hour) + std::chrono::minutes(*minute) + std::chrono::seconds(*second);
}

void appendPadded(std::string& text, std::int64_t value, std::size_t width) {
    const std::string digits = std::to_string(value < 0 ? -value : value);
    if (value < 0)
        text += '-';
    if (digits.size() < width)
        text.append(width - digits.size(), '0');
    text += digits;
}

}  // namespace

std::optional<std::chrono::sys_time<std::chrono::microseconds>> parseServerDate(std::string_view text) {
    Reader reader(text);
    const auto day = readDay(reader);
    if (!day || !reader.skip('T'))
        return std::nullopt;
    const auto time = readTimeOfDay(reader);
    if (!time)
        return std::nullopt;
    std::chrono::microseconds fraction(0);
    if (reader.skip('.')) {
        const auto written = reader.fraction();
        if (!written)
            return std::nullopt;
        fraction = *written;
    }
    const auto zone = reader.zone();
    if (!zone || !reader.atEnd())
        return std::nullopt;
    return *day + *time + fraction - *zone;
}

std::string formatServerDate(std::chrono::sys_time<std::chrono::microseconds> moment) {
    const auto seconds = std::chrono::floor<std::chrono::seconds>(moment);
    const auto day = std::chrono::floor<std::chrono::days>(seconds);
    const std::chrono::year_month_day date(day);
    const std::chrono::hh_mm_ss time(seconds - day);
    std::string text;
    appendPadded(text, static_cast<int>(date.year()), 4);
    text += '-';
    appendPadded(text, static_cast<unsigned>(date.month()), 2);
    text += '-';
    appendPadded(text, static_cast<unsigned>(date.day()), 2);
    text += 'T';
    appendPadded(text, time.hours().count(), 2);
    text += ':';
    appendPadded(text, time.minutes().count(), 2);
    text += ':';
    appendPadded(text, time.seconds().count(), 2);
    text += 'Z';
    return text;
}

}  // namespace zelkovanta::records
