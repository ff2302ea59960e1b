#include "platform/linux/xdg_login_item.h"

#include "platform/linux/bundle_information.h"
#include "tests/platform/linux/without_root.h"
#include "tests/support/temporary_folder.h"

#include <fstream>
#include <iterator>

#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

struct XdgLoginItemTest : testing::Test {
    support::TemporaryFolder folder;
    std::filesystem::path entry = folder.path() / "config" / "autostart" / "com.zelkovanta.Desktop.desktop";
    KeysAsTexts texts;
    XdgLoginItem item{entry, "/usr/bin/zelkovanta", texts};

    void write(const std::string& content) const {
        std::filesystem::create_directories(entry.parent_path());
        std::ofstream(entry) << content;
    }
    [[nodiscard]] std::string content() const {
        std::ifstream in(entry);
        return {std::istreambuf_iterator<char>(in), {}};
    }
};

TEST_F(XdgLoginItemTest, registeringWritesAnEntryThatStartsTheProgramPlainly) {
    EXPECT_EQ(item.status(), LoginItemStatus::notRegistered);
    EXPECT_TRUE(item.registerItem(RegistrationIntent::firstLaunch).has_value());
    EXPECT_EQ(item.status(), LoginItemStatus::enabled);
    EXPECT_NE(content().find("\nExec=\"/usr/bin/zelkovanta\"\n"), std::string::npos) << content();
    EXPECT_NE(content().find("\nTryExec=/usr/bin/zelkovanta\n"), std::string::npos) << content();
    EXPECT_TRUE(item.unregisterItem().has_value());
    EXPECT_EQ(item.status(), LoginItemStatus::notRegistered);
    EXPECT_FALSE(std::filesystem::exists(entry));
    EXPECT_TRUE(item.unregisterItem().has_value());
}

TEST_F(XdgLoginItemTest, anEntryThatTheDesktopSwitchedOffNeedsApproval) {
    for (const std::string line : {"Hidden=true", "Hidden = true", "X-GNOME-Autostart-enabled=false\r"}) {
        write("[Desktop Entry]\nType=Application\n" + line + "\nExec=zelkovanta\n");
        EXPECT_EQ(item.status(), LoginItemStatus::requiresApproval) << line;
    }
    for (const std::string text : {"[Desktop Entry]\nHidden=false\n", "[Desktop Entry]\n#Hidden=true\n",
                                   "[Desktop Entry]\nExec=a\n[Desktop Action x]\nHidden=true\n", "",
                                   "\xff\x00=", "[Desktop Entry]\nHidden=TRUE\n"}) {
        write(text);
        EXPECT_EQ(item.status(), LoginItemStatus::enabled) << text;
    }
}

TEST_F(XdgLoginItemTest, theFirstLaunchLeavesASwitchedOffEntryAndThePersonsWishDoesNot) {
    const std::string off = "[Desktop Entry]\nHidden=true\n";
    write(off);
    EXPECT_TRUE(item.registerItem(RegistrationIntent::firstLaunch).has_value());
    EXPECT_EQ(content(), off);
    EXPECT_TRUE(item.registerItem(RegistrationIntent::personsWish).has_value());
    EXPECT_EQ(item.status(), LoginItemStatus::enabled);
}

TEST_F(XdgLoginItemTest, aFolderThatCannotBeWrittenIsASentence) {
    std::filesystem::create_directories(entry.parent_path());
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
    std::filesystem::permissions(entry.parent_path(), std::filesystem::perms(0555));
    const WithoutRoot bound;
    const auto result = item.registerItem(RegistrationIntent::personsWish);
    ASSERT_FALSE(result.has_value());
    EXPECT_EQ(result.error(), "The autostart entry could not be written to " + entry.parent_path().string() + ".");
    EXPECT_EQ(item.status(), LoginItemStatus::notRegistered);
}

TEST_F(XdgLoginItemTest, anEntryThatCannotBeRemovedIsASentence) {
    write(autostartEntry("/usr/bin/zelkovanta"));
    std::filesystem::permissions(folder.path(), std::filesystem::perms(0755));
    std::filesystem::permissions(entry.parent_path(), std::filesystem::perms(0555));
    const WithoutRoot bound;
    const auto result = item.unregisterItem();
    ASSERT_FALSE(result.has_value());
    EXPECT_EQ(result.error(), "The autostart entry could not be removed from " + entry.parent_path().string() + ".");
}

TEST_F(XdgLoginItemTest, theSentenceIsInThePersonsLanguage) {
    struct Shouting final : StringTable {
        [[nodiscard]] std::string localized(std::string_view key) const override { return std::string{key} + "!"; }
    };
    const Shouting shouting;
    XdgLoginItem told{"/proc/autostart/entry.desktop", "/usr/bin/zelkovanta", shouting};
    const auto result = told.registerItem(RegistrationIntent::personsWish);
    ASSERT_FALSE(result.has_value());
    EXPECT_EQ(result.error(), "The autostart entry could not be written to /proc/autostart.!");
}

TEST(AutostartEntryTest, aStrangePathStaysOneArgument) {
    const std::string entry = autostartEntry("/opt/a b/100%/\"$x`\\");
    EXPECT_NE(entry.find("\nExec=\"/opt/a b/100%%/\\\\\"\\\\$x\\\\`\\\\\\\\\"\n"), std::string::npos) << entry;
    EXPECT_NE(entry.find("\nTryExec=/opt/a b/100%/\"$x`\\\\\n"), std::string::npos) << entry;
}

TEST(BundleInformationTest, entriesAreReadAfreshAtEachUse) {
    const support::TemporaryFolder folder;
    const BundleInformation information(folder.path());
    EXPECT_EQ(information.text("CFBundleShortVersionString"), std::nullopt);
    std::ofstream(folder.path() / "Info.json") << R"({"CFBundleShortVersionString": "1.0.1", "count": 3, "ä": "ü"})";
    EXPECT_EQ(information.text("CFBundleShortVersionString"), "1.0.1");
    EXPECT_EQ(information.text("count"), std::nullopt);
    EXPECT_EQ(information.text("missing"), std::nullopt);
    EXPECT_EQ(information.text("ä"), "ü");
    std::ofstream(folder.path() / "Info.json") << R"({"CFBundleShortVersionString": "1.0.2"})";
    EXPECT_EQ(information.text("CFBundleShortVersionString"), "1.0.2");
    std::ofstream(folder.path() / "Info.json") << R"(["no object"])";
    EXPECT_EQ(information.text("CFBundleShortVersionString"), std::nullopt);
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
