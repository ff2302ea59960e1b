#include "records/text.h"

#include "tests/records/record_generators.h"

#include <algorithm>
#include <rapidcheck.h>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::records {
namespace {

using Texts = std::vector<std::string>;

rc::Gen<std::string> anyBytes() {
    return rc::gen::container<std::string>(rc::gen::arbitrary<char>());
}

std::size_t scalarCount(const std::string& utf8) {
    return static_cast<std::size_t>(
        std::ranges::count_if(utf8, [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; }));
}

TEST(ScalarPrefixTest, aTextWithinTheLimitIsUnchanged) {
    EXPECT_EQ(scalarPrefix(5, "abcde"), "abcde");
    EXPECT_EQ(scalarPrefix(6, "abcde"), "abcde");
    EXPECT_EQ(scalarPrefix(5, "  ab "), "  ab ");
    EXPECT_EQ(scalarPrefix(0, ""), "");
    EXPECT_EQ(scalarPrefix(200, std::string(200, 'a')), std::string(200, 'a'));
}

TEST(ScalarPrefixTest, aLongerTextIsCutWithoutTrimming) {
    EXPECT_EQ(scalarPrefix(3, "ab cd"), "ab ");
    EXPECT_EQ(scalarPrefix(0, "abc"), "");
    EXPECT_EQ(scalarPrefix(200, std::string(201, 'a')), std::string(200, 'a'));
}

TEST(ScalarPrefixTest, scalarsCountNotBytesAndNotUserPerceivedCharacters) {
    EXPECT_EQ(scalarPrefix(2, "äöü"), "äö");
    EXPECT_EQ(scalarPrefix(1, "😀😀"), "😀");
    EXPECT_EQ(scalarPrefix(1, "e\u0301"), "e");
    EXPECT_EQ(scalarPrefix(2, "👩\u200D🔬"), "👩\u200D");
    EXPECT_EQ(scalarPrefix(1, "\r\n"), "\r");
    EXPECT_EQ(scalarPrefix(1, std::string_view("\0a", 2)), std::string(1, '\0'));
}

TEST(ScalarPrefixTest, bytesThatAreNoUtf8CountByTheLongestIllFormedPiece) {
    EXPECT_EQ(scalarPrefix(1, "\xFF\xFE"), "\xFF");
    EXPECT_EQ(scalarPrefix(1, "\xC3"), "\xC3");
    EXPECT_EQ(scalarPrefix(1, "\xE2\x82z"), "\xE2\x82");
    EXPECT_EQ(scalarPrefix(1, "\xC0\xAF"), "\xC0");
    EXPECT_EQ(scalarPrefix(1, "\xED\xA0\x80"), "\xED");
    EXPECT_EQ(scalarPrefix(2, "a\xF0\x9F\x98"), "a\xF0\x9F\x98");
    EXPECT_EQ(scalarPrefix(1, "\xF4\x90\x80\x80"), "\xF4");
    EXPECT_EQ(scalarPrefix(1, "\xF4\x8F\xBF\xBFz"), "\xF4\x8F\xBF\xBF");
}

TEST(ScalarPrefixTest, thePrefixHasTheLimitOrIsTheWhole) {
    EXPECT_TRUE(rc::check("prefix of any text", [] {
        const auto text = *reference::anyText();
        const auto limit = *rc::gen::inRange<std::size_t>(0, 40);
        const std::string prefix = scalarPrefix(limit, text);
        RC_ASSERT(text.starts_with(prefix));
        RC_ASSERT(scalarCount(prefix) == std::min(limit, scalarCount(text)));
    }));
}

TEST(TextTest, noBytesAreTooStrangeForAnyRule) {
    EXPECT_TRUE(rc::check("any bytes", [] {
        const auto bytes = *anyBytes();
        const auto limit = *rc::gen::inRange<std::size_t>(0, 10);
        std::string joined;
        for (const std::string& piece : characters(bytes)) {
            RC_ASSERT(!piece.empty());
            joined += piece;
        }
        RC_ASSERT(joined == bytes);
        RC_ASSERT(bytes.starts_with(characterPrefix(limit, bytes)));
        RC_ASSERT(bytes.starts_with(scalarPrefix(limit, bytes)));
        RC_ASSERT(bytes.find(trimmed(bytes)) != std::string::npos);
        RC_ASSERT(lowercased(uppercased(bytes)).empty() == bytes.empty());
        RC_ASSERT(capitalized(bytes).empty() == bytes.empty());
        RC_ASSERT(alphanumericsOnly(bytes).size() <= bytes.size());
    }));
}

TEST(TextTest, trimmingTakesWhiteSpaceAndLineEndsAtBothEndsOnly) {
    EXPECT_EQ(trimmed("  a b \n"), "a b");
    EXPECT_EQ(trimmed("\t\r\n\v\fa\u0085"), "a");
    EXPECT_EQ(trimmed("\u00A0\u2028\u3000a\u2009\u2029"), "a");
    EXPECT_EQ(trimmed(" \n "), "");
    EXPECT_EQ(trimmed(""), "");
    EXPECT_EQ(trimmed("a"), "a");
    EXPECT_EQ(trimmed("\u200Ba"), "\u200Ba");
}

TEST(TextTest, charactersAreWhatAReaderCounts) {
    EXPECT_EQ(characters(""), Texts());
    EXPECT_EQ(characters("abc"), (Texts{"a", "b", "c"}));
    EXPECT_EQ(characters("a\r\nb\n\r"), (Texts{"a", "\r\n", "b", "\n", "\r"}));
    EXPECT_EQ(characters("e\u0301x"), (Texts{"e\u0301", "x"}));
    EXPECT_EQ(characters("🇩🇪🇫🇷"), (Texts{"🇩🇪", "🇫🇷"}));
    EXPECT_EQ(characters("👩\u200D🔬👍🏽"), (Texts{"👩\u200D🔬", "👍🏽"}));
    EXPECT_EQ(characters("한글"), (Texts{"한", "글"}));
    EXPECT_EQ(characters("ä\r\n"), (Texts{"ä", "\r\n"}));
}

TEST(TextTest, aPrefixOfCharactersNeverCutsOne) {
    EXPECT_EQ(characterPrefix(2, "abc"), "ab");
    EXPECT_EQ(characterPrefix(0, "abc"), "");
    EXPECT_EQ(characterPrefix(5, "abc"), "abc");
    EXPECT_EQ(characterPrefix(1, "👩\u200D🔬x"), "👩\u200D🔬");
    EXPECT_EQ(characterPrefix(2, "e\u0301e\u0301e\u0301"), "e\u0301e\u0301");
}

TEST(TextTest, caseFollowsNoLocale) {
    EXPECT_EQ(lowercased("ÄRZTIN I"), "ärztin i");
    EXPECT_EQ(uppercased("straße i"), "STRASSE I");
    EXPECT_EQ(lowercased("ΟΔΟΣ"), "οδος");
    EXPECT_EQ(lowercased("İ"), "i\u0307");
    EXPECT_EQ(uppercased(""), "");
}

TEST(TextTest, everyWordIsCapitalizedAndItsRestLowered) {
    EXPECT_EQ(capitalized("front desk"), "Front Desk");
    EXPECT_EQ(capitalized("FRONT DESK"), "Front Desk");
    EXPECT_EQ(capitalized("frontDesk"), "Frontdesk");
    EXPECT_EQ(capitalized("x-ray_room"), "X-Ray_Room");
    EXPECT_EQ(capitalized("o'neil's"), "O'neil's");
    EXPECT_EQ(capitalized("o’neil"), "O’neil");
    EXPECT_EQ(capitalized("2nd floor 3D"), "2Nd Floor 3D");
    EXPECT_EQ(capitalized("  two  blanks "), "  Two  Blanks ");
    EXPECT_EQ(capitalized("école ÉTÉ"), "École Été");
    EXPECT_EQ(capitalized("e\u0301te\u0301"), "E\u0301te\u0301");
    EXPECT_EQ(capitalized("ΟΔΟΣ ΣΑΣ"), "Οδος Σας");
    EXPECT_EQ(capitalized("ßa ǆan"), "Ssa ǅan");
    EXPECT_EQ(capitalized("診察 room"), "診察 Room");
    EXPECT_EQ(capitalized(""), "");
    EXPECT_EQ(capitalized("'quoted'"), "'Quoted'");
}

TEST(TextTest, aPartFromRightToLeftKeepsItsDirectionToItself) {
    for (const std::string part : {"דנה כהן", "سارة", "Dr. דנה", "ߒߞߏ"}) {
        EXPECT_EQ(isolated(part), "\u2068" + part + "\u2069");
    }
    for (const std::string part : {"", "Ana", "Żaneta 王 😀 Ω", "1 – 2", "\xff"}) {
        EXPECT_EQ(isolated(part), part);
    }
}

TEST(TextTest, onlyLettersAndNumbersStay) {
    EXPECT_EQ(alphanumericsOnly(" AB-12_cd! "), "AB12cd");
    EXPECT_EQ(alphanumericsOnly("ä½Ⅷ٣字"), "ä½Ⅷ٣字");
    EXPECT_EQ(alphanumericsOnly("e\u0301😀\u00A0"), "e");
    EXPECT_EQ(alphanumericsOnly("\xFF\xC3"), "");
}

}  // namespace
}  // namespace zelkovanta::records
