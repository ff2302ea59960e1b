#include "platform/linux/ini_user_defaults.h"

#include "platform/linux/network_thread.h"
#include "tests/platform/linux/without_root.h"
#include "tests/support/temporary_folder.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <limits>
#include <rapidcheck.h>
#include <sys/stat.h>

#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

using namespace std::chrono_literals;

struct IniUserDefaultsTest : testing::Test {
    support::TemporaryFolder folder;
    std::filesystem::path file = folder.path() / "config" / "zelkovanta" / "settings.ini";
    NetworkThread threads;

    std::unique_ptr<IniUserDefaults> open() {
        return std::make_unique<IniUserDefaults>(file, threads.makeWorkerQueue());
    }
    void writeFile(const std::string& content) const {
        std::filesystem::create_directories(file.parent_path());
        std::ofstream(file) << content;
    }
    /// What is set holds for this run, and no write is tried.
    void expectThatTheFileStaysAsItIs() {
        const auto defaults = open();
        EXPECT_FALSE(defaults->hasValue("a"));
        defaults->setText("a", "new");
        EXPECT_FALSE(defaults->flush(10s));
        EXPECT_EQ(defaults->text("a"), "new");
        EXPECT_EQ(std::distance(std::filesystem::directory_iterator(file.parent_path()), {}), 1);
    }
    [[nodiscard]] std::string content() const {
        std::ifstream in(file);
        return {std::istreambuf_iterator<char>(in), {}};
    }
};

TEST_F(IniUserDefaultsTest, valuesAreThereInTheNextLaunchWithTheirTypes) {
    {
        const auto defaults = open();
        defaults->setBoolean("openAsWindow", true);
        defaults->setNumber("stationSignInBootTime", 1'700'000'000.25);
        defaults->setText("serverURL", "https://office.example/ä?x=\"1\"\n");
        defaults->setText("empty", "");
        EXPECT_EQ(defaults->boolean("openAsWindow"), true);
        EXPECT_TRUE(defaults->flush(10s));
    }
    const auto defaults = open();
    EXPECT_EQ(defaults->boolean("openAsWindow"), true);
    EXPECT_EQ(defaults->number("stationSignInBootTime"), 1'700'000'000.25);
    EXPECT_EQ(defaults->text("serverURL"), "https://office.example/ä?x=\"1\"\n");
    EXPECT_EQ(defaults->text("empty"), "");
    EXPECT_FALSE(defaults->hasValue("launchAtLogin"));
}

TEST_F(IniUserDefaultsTest, aValueOfAnotherTypeReadsAsAbsentButIsStored) {
    writeFile("[Settings]\na=\"true\"\nb=true\nc=1\nd=\"1\"\n");
    const auto defaults = open();
    EXPECT_EQ(defaults->boolean("a"), std::nullopt);
    EXPECT_EQ(defaults->text("b"), std::nullopt);
    EXPECT_EQ(defaults->boolean("c"), std::nullopt);
    EXPECT_EQ(defaults->number("d"), std::nullopt);
    for (const char* key : {"a", "b", "c", "d"}) {
        EXPECT_TRUE(defaults->hasValue(key)) << key;
    }
}

TEST_F(IniUserDefaultsTest, aRemovedValueIsGoneInTheNextLaunchToo) {
    const auto defaults = open();
    defaults->setText("a", "x");
    defaults->setText("b", "y");
    defaults->remove("a");
    defaults->remove("never there");
    EXPECT_FALSE(defaults->hasValue("a"));
    EXPECT_TRUE(defaults->flush(10s));
    EXPECT_EQ(content(), "[Settings]\nb=\"y\"\n");
}

TEST_F(IniUserDefaultsTest, theFileIsThisPersonsAloneAndNothingUnfinishedLiesBesideIt) {
    const auto defaults = open();
    for (int i = 0; i < 200; ++i) {
        defaults->setNumber("count", i);
    }
    EXPECT_TRUE(defaults->flush(10s));
    EXPECT_EQ(content(), "[Settings]\ncount=199\n");
    struct stat status{};
    ASSERT_EQ(::stat(file.c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(file.parent_path()), {}), 1);
}

TEST_F(IniUserDefaultsTest, aDamagedFileGivesWhatCanBeRead) {
    writeFile(
        "garbage\n[Settings\nkey=\"no "
        "end\n=\nhalf=\"\\x1\"\ngood=true\r\n\xff\xfe=12\nbad=12x\ngood2=\"a\\\"b\"\ncut=\"of");
    const auto defaults = open();
    EXPECT_EQ(defaults->boolean("good"), true);
    EXPECT_EQ(defaults->text("good2"), "a\"b");
    EXPECT_EQ(defaults->number("\xff\xfe"), 12);
    for (const char* key : {"key", "half", "bad", "cut", "garbage", ""}) {
        EXPECT_FALSE(defaults->hasValue(key)) << key;
    }
}

TEST_F(IniUserDefaultsTest, whatIsNoFileIsReadAsNothing) {
    std::filesystem::create_directories(file);
    EXPECT_FALSE(open()->hasValue("a"));
    std::filesystem::remove(file);
    ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0);
    EXPECT_FALSE(open()->hasValue("a"));
}

TEST_F(IniUserDefaultsTest, aReadOnlyFolderKeepsValuesForThisRunAndTheFileAsItWas) {
    writeFile("[Settings]\na=\"old\"\n");
    std::filesystem::permissions(folder.path(), std::filesystem::perms::owner_all |
                                                    std::filesystem::perms::others_exec |
                                                    std::filesystem::perms::others_read);
    std::filesystem::permissions(file.parent_path(), std::filesystem::perms(0555));
    {
        const WithoutRoot bound;
        const auto defaults = open();
        defaults->setText("a", "new");
        EXPECT_FALSE(defaults->flush(10s));
        EXPECT_EQ(defaults->text("a"), "new");
    }
    std::filesystem::permissions(file.parent_path(), std::filesystem::perms(0755));
    EXPECT_EQ(content(), "[Settings]\na=\"old\"\n");
}

TEST_F(IniUserDefaultsTest, aFullDiskKeepsValuesForThisRunAndTheNextChangeTriesAgain) {
    writeFile("[Settings]\na=\"old\"\n");
    const auto defaults = open();
    {
        const WithoutRoom full;
        defaults->setText("a", "new");
        EXPECT_FALSE(defaults->flush(10s));
    }
    EXPECT_EQ(defaults->text("a"), "new");
    EXPECT_EQ(content(), "[Settings]\na=\"old\"\n");
    EXPECT_EQ(std::distance(std::filesystem::directory_iterator(file.parent_path()), {}), 1);
    defaults->setBoolean("b", true);
    EXPECT_TRUE(defaults->flush(10s));
    EXPECT_EQ(content(), "[Settings]\na=\"new\"\nb=true\n");
}

TEST_F(IniUserDefaultsTest, aFileThatMayNotBeReadIsNeverWrittenOver) {
    writeFile("[Settings]\na=\"old\"\n");
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
    std::filesystem::permissions(file.parent_path(), std::filesystem::perms(0777));
    std::filesystem::permissions(file, std::filesystem::perms(0));
    {
        const WithoutRoot bound;
        expectThatTheFileStaysAsItIs();
    }
    std::filesystem::permissions(file, std::filesystem::perms(0600));
    EXPECT_EQ(content(), "[Settings]\na=\"old\"\n");
    EXPECT_EQ(open()->text("a"), "old");
}

TEST_F(IniUserDefaultsTest, aFileThatCouldNotBeOpenedForOnceIsNotWrittenOverLater) {
    writeFile("[Settings]\na=\"old\"\n");
    std::unique_ptr<IniUserDefaults> defaults;
    {
        const WithoutDescriptors none;
        defaults = open();
    }
    EXPECT_FALSE(defaults->hasValue("a"));
    defaults->setText("b", "new");
    EXPECT_FALSE(defaults->flush(10s));
    EXPECT_EQ(defaults->text("b"), "new");
    EXPECT_EQ(content(), "[Settings]\na=\"old\"\n");
}

TEST_F(IniUserDefaultsTest, aFileOfMoreThanAMegabyteIsNeitherReadNorWrittenOver) {
    std::string longest = "[Settings]\na=\"old\"\n";
    longest.resize(std::size_t{1024} * 1024, '\n');
    writeFile(longest);
    EXPECT_EQ(open()->text("a"), "old");
    writeFile(longest + "\n");
    expectThatTheFileStaysAsItIs();
    EXPECT_EQ(content(), longest + "\n");
}

TEST_F(IniUserDefaultsTest, aFileReachedThroughALinkStaysBehindTheLink) {
    const auto target = folder.path() / "elsewhere.ini";
    std::ofstream(target) << "[Settings]\na=\"old\"\n";
    std::filesystem::create_directories(file.parent_path());
    std::filesystem::create_symlink(target, file);
    const auto defaults = open();
    defaults->setText("a", "new");
    EXPECT_TRUE(defaults->flush(10s));
    EXPECT_TRUE(std::filesystem::is_symlink(file));
    EXPECT_EQ(content(), "[Settings]\na=\"new\"\n");
}

SettingValues arbitraryValues() {
    const auto bytes = rc::gen::arbitrary<std::string>();
    const auto value =
        rc::gen::oneOf(rc::gen::map(rc::gen::arbitrary<bool>(), [](bool v) { return SettingValue{v}; }),
                       rc::gen::map(rc::gen::arbitrary<double>(), [](double v) { return SettingValue{v}; }),
                       rc::gen::map(bytes, [](std::string v) { return SettingValue{std::move(v)}; }));
    SettingValues values;
    for (auto& [key, each] :
         *rc::gen::container<std::vector<std::pair<std::string, SettingValue>>>(rc::gen::pair(bytes, value))) {
        values.insert_or_assign(std::move(key), std::move(each));
    }
    return values;
}

TEST(SettingsTextTest, whatIsWrittenIsReadBackWhateverItIs) {
    EXPECT_TRUE(rc::check([] {
        const SettingValues values = arbitraryValues();
        RC_ASSERT(parseSettings(formatSettings(values)) == values);
    }));
}

TEST(SettingsTextTest, everyByteAndTheEndsOfTheNumbersSurvive) {
    SettingValues values;
    for (int byte = 0; byte < 256; ++byte) {
        const std::string text(1, static_cast<char>(byte));
        values["key" + text] = text;
        values[text] = text + "\\" + text;
    }
    values["smallest"] = std::numeric_limits<double>::denorm_min();
    values["largest"] = std::numeric_limits<double>::max();
    values["endless"] = std::numeric_limits<double>::infinity();
    values["third"] = 1.0 / 3;
    EXPECT_EQ(parseSettings(formatSettings(values)), values);
    const auto notANumber = parseSettings(formatSettings({{"n", std::nan("")}}));
    EXPECT_TRUE(std::isnan(std::get<double>(notANumber.at("n"))));
}

TEST(SettingsTextTest, aCutOrFlippedFileNeverGivesAValueThatIsNotInItsLines) {
    EXPECT_TRUE(rc::check([] {
        const SettingValues values = arbitraryValues();
        std::string text = formatSettings(values);
        text.resize(*rc::gen::inRange<std::size_t>(0, text.size() + 1));
        for (const auto& [key, value] : parseSettings(text)) {
            // A number cut short is another number: the one thing that a line cannot tell.
            RC_ASSERT(values.contains(key));
            RC_ASSERT(std::holds_alternative<double>(value) || values.at(key) == value);
        }
    }));
}

/// Files made of pieces that mean something, in any order, are harder to read than noise.
TEST(SettingsTextTest, whateverTheFileHoldsWhatWasReadIsWrittenAndReadAgain) {
    EXPECT_TRUE(rc::check([] {
        const auto piece = rc::gen::element<std::string>("[", "]", "=", "\"", "\\", "\\x1f", "\\xg", "\n", "\r", "true",
                                                         "false", "1e9", "-", "inf", "#", ";", "key", " ", "\t",
                                                         std::string(1, '\0'), "\xc3", "\xff");
        std::string text;
        for (const auto& each : *rc::gen::container<std::vector<std::string>>(piece)) {
            text += each;
        }
        const SettingValues read = parseSettings(text);
        RC_ASSERT(parseSettings(formatSettings(read)) == read);
    }));
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
