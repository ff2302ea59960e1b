#include "platform/linux/profile.h"

#include "platform/linux/os_random.h"

#include <map>

#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

Environment environmentOf(std::map<std::string, std::string> variables) {
    return [variables = std::move(variables)](const std::string& name) -> std::optional<std::string> {
        const auto found = variables.find(name);
        return found == variables.end() ? std::nullopt : std::optional{found->second};
    };
}

TEST(ProfileTest, withoutAProfileTheNamesAreThePlainOnes) {
    const auto profile = profileFrom(environmentOf({}));
    ASSERT_TRUE(profile.has_value());
    EXPECT_EQ(profile->applyTo("com.zelkovanta.macos"), "com.zelkovanta.macos");
    EXPECT_EQ(profile->applyToBusName("com.zelkovanta.Desktop"), "com.zelkovanta.Desktop");
}

TEST(ProfileTest, aProfileIsAppended) {
    const auto profile = profileFrom(environmentOf({{"ZELKOVANTA_PROFILE", "room-3_b"}}));
    ASSERT_TRUE(profile.has_value());
    EXPECT_EQ(profile->applyTo("com.zelkovanta.macos"), "com.zelkovanta.macos.room-3_b");
    EXPECT_EQ(profile->applyToBusName("com.zelkovanta.Desktop"), "com.zelkovanta.Desktop.room-3_b");
}

TEST(ProfileTest, aNumberIsMadeAnElementOfABusName) {
    EXPECT_EQ((Profile{"2"}.applyToBusName("com.zelkovanta.Desktop")), "com.zelkovanta.Desktop._2");
    EXPECT_EQ((Profile{"2"}.applyTo("com.zelkovanta.macos")), "com.zelkovanta.macos.2");
}

TEST(ProfileTest, otherCharactersAreRefusedInASentence) {
    for (const std::string& name : std::vector<std::string>{"a b", "../x", "a.b", "ä", "a/b", std::string(65, 'a')}) {
        const auto profile = profileFrom(environmentOf({{"ZELKOVANTA_PROFILE", name}}));
        ASSERT_FALSE(profile.has_value()) << name;
        EXPECT_TRUE(profile.error().starts_with("ZELKOVANTA_PROFILE must")) << profile.error();
    }
}

TEST(FileRootsTest, theBaseFoldersAreTheSessions) {
    const auto environment =
        environmentOf({{"HOME", "/home/a"}, {"XDG_CONFIG_HOME", "/c"}, {"XDG_RUNTIME_DIR", "/run/a"}});
    EXPECT_EQ(
        fileRootsFrom(environment, {}),
        (FileRoots{
            .config = "/c", .data = "/home/a/.local/share", .state = "/home/a/.local/state", .runtime = "/run/a"}));
}

TEST(FileRootsTest, aRelativePathIsNoPath) {
    const auto environment = environmentOf(
        {{"HOME", "/home/a"}, {"XDG_CONFIG_HOME", "c"}, {"XDG_DATA_HOME", "./d"}, {"XDG_RUNTIME_DIR", "run"}});
    EXPECT_EQ(
        fileRootsFrom(environment, {}),
        (FileRoots{.config = "/home/a/.config", .data = "/home/a/.local/share", .state = "/home/a/.local/state"}));
}

TEST(FileRootsTest, aProfileHasOneFolderOfItsOwn) {
    const auto environment = environmentOf({{"HOME", "/home/a"}, {"XDG_DATA_HOME", "/d"}});
    EXPECT_EQ(fileRootsFrom(environment, Profile{"p"}), (FileRoots{.config = "/d/zelkovanta-profiles/p/config",
                                                                   .data = "/d/zelkovanta-profiles/p/data",
                                                                   .state = "/d/zelkovanta-profiles/p/state"}));
}

TEST(FileRootsTest, resourcesLieBesideTheProgramsFolderUnlessToldOtherwise) {
    EXPECT_EQ(resourcesFolderFrom(environmentOf({}), "/usr/bin/zelkovanta"), "/usr/share/zelkovanta");
    EXPECT_EQ(resourcesFolderFrom(environmentOf({{"ZELKOVANTA_RESOURCES", "/r"}}), "/usr/bin/zelkovanta"), "/r");
    EXPECT_TRUE(programFile().is_absolute());
}

TEST(OsRandomTest, valuesStayWithinTheirRangeAndDiffer) {
    OsRandom random;
    double least = 1;
    double most = 0;
    for (int i = 0; i < 1000; ++i) {
        const double value = random.uniform(0, 0.25);
        ASSERT_GE(value, 0);
        ASSERT_LE(value, 0.25);
        least = std::min(least, value);
        most = std::max(most, value);
    }
    EXPECT_LT(least, 0.05);
    EXPECT_GT(most, 0.2);
    EXPECT_EQ(random.uniform(3, 3), 3);
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
