#include "screens/theme/member_avatar.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::screens::theme {
namespace {

TEST(Initials, areTheFirstCharactersOfTheFirstTwoWords) {
    struct Case {
        std::string name;
        std::string initials;
    };
    const std::vector<Case> cases{
        {"Ana Lind", "AL"},
        {"ana lind", "AL"},
        {"Ana Maria Lind", "AM"},
        {"Ana", "A"},
        {"", "?"},
        {"   ", "?"},
        {"  Ana   Lind ", "AL"},
        {" ana", "A"},
        {"Dr. Ana Lind", "DA"},
        {"(Ana) 2nd", "(2"},
        // A blank is the blank alone.
        {"Ana\tLind", "A"},
        {"Ana\u00A0Lind", "A"},
        {"\n", "\n"},
        // A mark makes another character of it.
        {"Ana \u0301Lind", "A"},
        // User-perceived characters.
        {"e\u0301lan o\u0308zil", "E\u0301O\u0308"},
        {"👩‍⚕️ Ana", "👩‍⚕️A"},
        {"🇩🇪🇦🇹 x", "🇩🇪X"},
        // One character may become two in upper case.
        {"ßen ﬁn", "SSFI"},
        {"אבי כהן", "אכ"},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(initials(each.name), each.initials) << '"' << each.name << '"';
    }
}

TEST(MemberAvatar, aMemberWithAColourHasADiscOfIt) {
    const MemberAvatar avatar{.name = "Ana Lind", .colorHex = "#336699", .diameter = 28};
    EXPECT_EQ(avatar.disc(), rgb(0x336699, 0.29));
    EXPECT_EQ(avatar.initials(), "AL");
}

TEST(MemberAvatar, aColourThatCannotBeReadIsADiscToo) {
    EXPECT_EQ((MemberAvatar{.name = "Ana", .colorHex = "#369"}.disc()), rgb(0xFF8C28, 0.29));
    EXPECT_EQ((MemberAvatar{.name = "Ana", .colorHex = ""}.disc()), rgb(0xFF8C28, 0.29));
}

TEST(MemberAvatar, aMemberWithoutAColourHasNone) {
    EXPECT_EQ((MemberAvatar{.name = "Ana", .colorHex = {}}.disc()), std::nullopt);
}

TEST(MemberAvatar, theRingHasThePagesColourUnlessToldOtherwise) {
    EXPECT_EQ((MemberAvatar{.name = "Ana", .colorHex = {}}.ringColor), pageBackground);
}

}  // namespace
}  // namespace zelkovanta::screens::theme
