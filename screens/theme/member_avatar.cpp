#include "screens/theme/member_avatar.h"

#include "records/text.h"
#include "screens/theme/office_color.h"

namespace zelkovanta::screens::theme {

namespace {

constexpr double discOpacity = 0.29;
constexpr int wordLimit = 2;

}  // namespace

std::string initials(std::string_view name) {
    std::string letters;
    int words = 0;
    bool inWord = false;
    for (const std::string& character : records::characters(name)) {
        const bool isBlank = character == " ";
        if (!isBlank && !inWord && words++ < wordLimit) {
            letters += character;
        }
        inWord = !isBlank;
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
