#include "office/time_text.h"

namespace zelkovanta::office {

std::string isoText(Timestamp time) {
    const auto day = std::chrono::floor<std::chrono::days>(time);
    const std::chrono::year_month_day date{day};
    const std::chrono::hh_mm_ss clock{time - day};

    std::string text = "0000-00-00T00:00:00.000Z";
    const auto digits = [&text](std::size_t end, std::int64_t value, int count) {
        for (; count > 0; --count, value /= 10) {
            text[--end] = static_cast<char>('0' + value % 10);
        }
    };
    digits(4, static_cast<int>(date.year()), 4);
    digits(7, static_cast<unsigned>(date.month()), 2);
    digits(10, static_cast<unsigned>(date.day()), 2);
    digits(13, clock.hours().count(), 2);
    digits(16, clock.minutes().count(), 2);
    digits(19, clock.seconds().count(), 2);
    digits(23, clock.subseconds().count(), 3);
    return text;
}

}  // namespace zelkovanta::office
