#include "records/server_date.h"
#include "tests/fuzz/finding.h"
#include "tests/fuzz/targets.h"

#include <chrono>

namespace zelkovanta::fuzz {

void serverDate(std::string_view input) {
    const auto moment = records::parseServerDate(input);
    if (!moment)
        return;
    require(input.size() >= 20 && input[10] == 'T');
    const std::string written = records::formatServerDate(*moment);
    const auto again = records::parseServerDate(written);
    // An offset may lead out of the years of four digits.
    const auto year = std::chrono::year_month_day(std::chrono::floor<std::chrono::days>(*moment)).year();
    if (year < std::chrono::year(0) || year > std::chrono::year(9999))
        require(!again);
    else
        require(again == std::chrono::floor<std::chrono::seconds>(*moment));
}

}  // namespace zelkovanta::fuzz
