#include "screens/theme/member_avatar.h"

#include "records/text.h"
#include "screens/theme/office_color.h"

#include <algorithm>

namespace zelkovanta::screens::theme {

namespace {

constexpr double discOpacity = 0.29;
constexpr int wordLimit = 2;

}  // namespace

std::string initials(std::string_view name) {
    std::string letters;
    for (int words = 0; words < wordLimit;) {
        const std::string_view word = name.substr(0, name.find(' '));
        name.remove_prefix(std::min(name.size(), word.size() + 1));
        if (!word.empty()) {
            letters += records::characterPrefix(1, word);
            ++words;
        } else if (name.empty()) {
            break;
        }
    }
    return letters.empty() ? "?" : records::uppercased(letters);
}

std::optional<Color> MemberAvatar::disc() const {
    if (!colorHex) {
        return std::nullopt;
    }
    return withOpacity(officeColor(*colorHex), discOpacity);
}

}  // namespace zelkovanta::screens::theme
