#include "platform/linux/gettext_string_table.h"

#include "platform/linux/atomic_file.h"
#include "screens/vocabulary/vocabulary_keys.h"
#include "tests/support/temporary_folder.h"

#include <cstdint>
#include <fstream>
#include <map>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

using Variables = std::map<std::string, std::string>;
using Languages = std::vector<std::string>;
using Texts = std::vector<std::pair<std::string, std::string>>;

const std::filesystem::path shipped = ZELKOVANTA_TEST_RESOURCES;

Environment environmentOf(Variables variables) {
    return [variables = std::move(variables)](const std::string& name) -> std::optional<std::string> {
        const auto found = variables.find(name);
        return found == variables.end() || found->second.empty() ? std::nullopt : std::optional{found->second};
    };
}

Environment speaking(const std::string& locale) {
    return environmentOf({{"LANG", locale}});
}

struct LanguageRow {
    Variables variables;
    Languages languages;
};

TEST(MessageLanguagesTest, theVariablesCountInTheirOrder) {
    const std::vector<LanguageRow> rows{
        {{}, {"en"}},
        {{{"LANG", "de_DE.UTF-8"}}, {"de_DE", "en"}},
        {{{"LANG", "de_DE.UTF-8"}, {"LC_MESSAGES", "es_ES.UTF-8"}}, {"es_ES", "en"}},
        {{{"LANG", "de_DE.UTF-8"}, {"LC_MESSAGES", "es_ES.UTF-8"}, {"LC_ALL", "fr_FR"}}, {"fr_FR", "en"}},
        {{{"LANG", "de_DE.UTF-8"}, {"LC_ALL", ""}}, {"de_DE", "en"}},
        {{{"LANG", "de_DE.UTF-8"}, {"LC_TIME", "es_ES"}}, {"de_DE", "en"}},
        {{{"LANG", "de_DE.UTF-8"}, {"LANGUAGE", "es:fr_CA:de"}}, {"es", "fr_CA", "de", "en"}},
        {{{"LC_ALL", "de_DE.UTF-8"}, {"LANGUAGE", "es"}}, {"es", "en"}},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(messageLanguages(environmentOf(row.variables)), row.languages);
    }
}

TEST(MessageLanguagesTest, withoutALanguageInTheLocaleTheListDoesNotCount) {
    for (const std::string locale : {"C", "POSIX", "C.UTF-8", ""}) {
        EXPECT_EQ(messageLanguages(environmentOf({{"LC_ALL", locale}, {"LANGUAGE", "de"}})), Languages{"en"}) << locale;
    }
    EXPECT_EQ(messageLanguages(environmentOf({{"LC_ALL", "C"}, {"LANG", "de_DE.UTF-8"}})), Languages{"en"});
}

TEST(MessageLanguagesTest, nothingStandsBehindEnglish) {
    EXPECT_EQ(messageLanguages(environmentOf({{"LANG", "de_DE"}, {"LANGUAGE", "en_GB:de:fr"}})), Languages{"en_GB"});
    EXPECT_EQ(messageLanguages(environmentOf({{"LANG", "de_DE"}, {"LANGUAGE", "de:en:fr"}})), (Languages{"de", "en"}));
}

TEST(MessageLanguagesTest, aCodesetAndAModifierAreNoPartOfIt) {
    EXPECT_EQ(messageLanguages(speaking("de_AT.ISO-8859-15@euro")), (Languages{"de_AT", "en"}));
    EXPECT_EQ(messageLanguages(speaking("ca@valencia")), (Languages{"ca", "en"}));
}

TEST(MessageLanguagesTest, whatIsNoLanguageIsPassedOver) {
    for (const std::string name : {"../../etc", "d", "/", "_", ".", "abcdefghi_DE", "d e", "de/..", ":::"}) {
        EXPECT_EQ(messageLanguages(environmentOf({{"LANG", "de"}, {"LANGUAGE", name + ":es"}})),
                  (Languages{"es", "en"}))
            << name;
    }
    EXPECT_EQ(messageLanguages(speaking("de_../x")), (Languages{"de", "en"}));
}

TEST(MessageLanguagesTest, anEndlessListEnds) {
    std::string list;
    for (int i = 0; i < 100'000; ++i) {
        list += "de:";
    }
    EXPECT_LE(messageLanguages(environmentOf({{"LANG", "de"}, {"LANGUAGE", list}})).size(), 17U);
}

std::string number(std::size_t value) {
    std::string bytes;
    for (int i = 0; i < 4; ++i) {
        bytes += static_cast<char>(value & 0xffU);
        value >>= 8U;
    }
    return bytes;
}

/// A catalogue as msgfmt writes it, with its header and without a hash table.
std::string catalogueOf(Texts texts) {
    texts.insert(texts.begin(), {"", "Content-Type: text/plain; charset=UTF-8\n"});
    constexpr std::size_t headerSize = 28;
    const std::size_t tableSize = texts.size() * 8;
    std::string keyTable;
    std::string textTable;
    std::string strings;
    const auto place = [&](const std::string& text) {
        std::string row = number(text.size()) + number(headerSize + 2 * tableSize + strings.size());
        strings += text + '\0';
        return row;
    };
    for (const auto& [key, text] : texts) {
        keyTable += place(key);
        textTable += place(text);
    }
    return number(0x950412de) + number(0) + number(texts.size()) + number(headerSize) + number(headerSize + tableSize) +
           number(0) + number(0) + keyTable + textTable + strings;
}

struct GettextStringTableTest : testing::Test {
    support::TemporaryFolder resources;

    void write(const std::string& language, const std::string& bytes) const {
        const auto folder = resources.path() / "locale" / language / "LC_MESSAGES";
        std::filesystem::create_directories(folder);
        std::ofstream(folder / "zelkovanta.mo", std::ios::binary) << bytes;
    }
    [[nodiscard]] GettextStringTable tableFor(const std::string& locale) const {
        return {resources.path(), speaking(locale)};
    }
};

TEST_F(GettextStringTableTest, aTextThatOneLanguageLacksComesFromTheNextAndAtLastFromEnglish) {
    write("de", catalogueOf({{"a", "a auf Deutsch"}}));
    write("es", catalogueOf({{"a", "a en español"}, {"b", "b en español"}}));
    write("en", catalogueOf({{"a", "a in English"}, {"b", "b in English"}, {"c", "c in English"}}));
    const GettextStringTable table{resources.path(), environmentOf({{"LANG", "de_DE"}, {"LANGUAGE", "fr:de:es"}})};
    EXPECT_EQ(table.localized("a"), "a auf Deutsch");
    EXPECT_EQ(table.localized("b"), "b en español");
    EXPECT_EQ(table.localized("c"), "c in English");
    EXPECT_EQ(table.localized("d"), "d");
}

TEST_F(GettextStringTableTest, aTerritoryReadsItsOwnCatalogueAndThenItsLanguages) {
    write("de", catalogueOf({{"a", "a auf Deutsch"}, {"b", "b auf Deutsch"}}));
    write("de_AT", catalogueOf({{"a", "a in Wien"}}));
    EXPECT_EQ(tableFor("de_AT.UTF-8").localized("a"), "a in Wien");
    EXPECT_EQ(tableFor("de_AT.UTF-8").localized("b"), "b auf Deutsch");
    EXPECT_EQ(tableFor("de_CH.UTF-8").localized("a"), "a auf Deutsch");
}

TEST_F(GettextStringTableTest, withoutACatalogueEveryTextReadsAsItsKey) {
    EXPECT_EQ(tableFor("de_DE.UTF-8").localized("Send signal"), "Send signal");
    EXPECT_EQ(tableFor("de_DE.UTF-8").localized("dept-nurse"), "dept-nurse");
}

TEST_F(GettextStringTableTest, theHeaderIsNoText) {
    write("en", catalogueOf({{"a", "A"}}));
    EXPECT_EQ(tableFor("en").localized(""), "");
}

TEST_F(GettextStringTableTest, keysCompareExactly) {
    write("en", catalogueOf({{"Done", "finished"}, {"for %lld doctors", "for %lld people"}}));
    const auto table = tableFor("en_US.UTF-8");
    EXPECT_EQ(table.localized("done"), "done");
    EXPECT_EQ(table.localized("Done "), "Done ");
    EXPECT_EQ(table.localized("for %lld doctors"), "for %lld people");
    EXPECT_EQ(table.localized("for 3 doctors"), "for 3 doctors");
}

TEST_F(GettextStringTableTest, anEmptyTranslationCountsAsMissing) {
    write("de", catalogueOf({{"a", ""}}));
    write("en", catalogueOf({{"a", "A"}}));
    EXPECT_EQ(tableFor("de").localized("a"), "A");
}

TEST_F(GettextStringTableTest, aDamagedCatalogueCountsAsEmptyWhereverItBreaksOff) {
    const std::string whole = catalogueOf({{"a", "a auf Deutsch"}, {"b", "b auf Deutsch"}});
    write("en", catalogueOf({{"a", "a in English"}}));
    for (std::size_t size = 0; size < whole.size(); ++size) {
        write("de", whole.substr(0, size));
        EXPECT_EQ(tableFor("de").localized("a"), "a in English") << size;
    }
    write("de", whole);
    EXPECT_EQ(tableFor("de").localized("a"), "a auf Deutsch");
}

TEST_F(GettextStringTableTest, noNumberInACatalogueLeadsBeyondItsEnd) {
    const std::string whole = catalogueOf({{"a", "A"}, {"b", "B"}});
    write("en", catalogueOf({{"z", "Z"}}));
    for (std::size_t at = 0; at + 4 <= whole.size(); at += 4) {
        for (const std::uint32_t value : {0U, 1U, 3U, 0x7fffffffU, 0x80000000U, 0xfffffff8U, 0xffffffffU}) {
            std::string bytes = whole;
            bytes.replace(at, 4, number(value));
            write("de", bytes);
            EXPECT_EQ(tableFor("de").localized("z"), "Z") << at << " " << value;
        }
    }
}

/// One language without the others, which would stand in for what it lacks.
class ShippedTextsTest : public testing::TestWithParam<std::string> {
    const support::TemporaryFolder resources_;

    [[nodiscard]] const std::filesystem::path& resourcesOfOne(const std::string& language) const {
        std::filesystem::create_directories(resources_.path() / "locale");
        std::filesystem::copy(shipped / "locale" / language, resources_.path() / "locale" / language,
                              std::filesystem::copy_options::recursive);
        return resources_.path();
    }

protected:
    const GettextStringTable table{resourcesOfOne(GetParam().substr(0, 2)), speaking(GetParam())};
};

TEST_P(ShippedTextsTest, everyKeyOfTheVocabularyHasWords) {
    namespace vocabulary = screens::vocabulary;
    const auto expectWords = [this](const auto& keys) {
        for (const std::string_view key : keys) {
            EXPECT_NE(table.localized(key), key);
        }
    };
    expectWords(vocabulary::signalKeys);
    expectWords(vocabulary::departmentKeys);
    expectWords(vocabulary::pluralDepartmentKeys);
    expectWords(vocabulary::statusKeys);
    expectWords(vocabulary::memberKeys);
    expectWords(vocabulary::roomKeys);
}

TEST_P(ShippedTextsTest, theRoomTextsNameTheirRoom) {
    for (const std::string_view key : screens::vocabulary::roomKeys) {
        EXPECT_NE(table.localized(key).find("{room}"), std::string::npos) << key;
    }
}

TEST_P(ShippedTextsTest, formatWordsAreKept) {
    EXPECT_EQ(filled(table.localized("Server error (%lld): %@"), {502, "http_502"}).find('%'), std::string::npos);
    EXPECT_NE(filled(table.localized("for %lld doctors"), {1}).find('1'), std::string::npos);
    EXPECT_NE(filled(table.localized("%@ is on the way"), {"Ana"}).find("Ana"), std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(Languages, ShippedTextsTest, testing::Values("en_US.UTF-8", "de_DE.UTF-8", "es_MX.UTF-8"),
                         [](const auto& language) { return language.param.substr(0, 2); });

TEST(ShippedLanguagesTest, eachTradeReadsItsOwnWordsInEachLanguage) {
    const GettextStringTable english{shipped, speaking("en_US.UTF-8")};
    EXPECT_EQ(english.localized("dept-provider-dental"), "Dentist");
    EXPECT_EQ(english.localized("signal-ready-veterinary"), "Pet ready");
    const GettextStringTable german{shipped, speaking("de_DE.UTF-8")};
    EXPECT_EQ(german.localized("dept-provider-veterinary"), "Tierarzt/-ärztin");
    EXPECT_EQ(german.localized("On my way"), "Ich komme");
    const GettextStringTable spanish{shipped, speaking("es_ES.UTF-8")};
    EXPECT_EQ(spanish.localized("signal-ready-therapy"), "Cliente listo");
}

TEST(ShippedLanguagesTest, aLanguageThatIsNotShippedReadsEnglish) {
    const GettextStringTable table{shipped, speaking("fr_FR.UTF-8")};
    EXPECT_EQ(table.localized("member-dnd"), "Do not disturb");
    EXPECT_EQ(table.localized("for %lld doctors"), "for %lld doctors");
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
