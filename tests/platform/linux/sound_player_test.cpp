#include "platform/linux/sound_player.h"

#include "tests/platform/linux/qt_loop.h"
#include "tests/support/temporary_folder.h"

#include <fstream>
#include <set>
#include <sstream>

#include <QCoreApplication>
#include <QProcess>
#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

struct SoundPlayerTest : testing::Test {
    int count = 0;
    QCoreApplication application{count, nullptr};
    LastDeletions lastDeletions;
    support::TemporaryFolder folder;

    SoundPlayerTest() {
        std::ofstream(folder.path() / "chime.caf") << "clip";
        std::ofstream(folder.path() / "bell.caf") << "clip";
    }

    /// Does what the script says; the log is $0 and the clip $1.
    SoundPlayer::Player player(const char* script) {
        return {QStringLiteral("/bin/sh"),
                {QStringLiteral("-c"), QString::fromLatin1(script),
                 QString::fromStdString((folder.path() / "log").string())}};
    }
    std::string log() {
        std::ifstream file(folder.path() / "log");
        std::ostringstream text;
        text << file.rdbuf();
        return text.str();
    }
};

constexpr auto notesTheName = "basename \"$1\" >>\"$0\"";

TEST_F(SoundPlayerTest, aClipIsPlayedOnceByTheFirstPlayerThatCan) {
    SoundPlayer sounds(folder.path(), {{QStringLiteral("/nowhere/player"), {}},
                                       player("echo refused >>\"$0\"; exit 1"),
                                       player(notesTheName),
                                       player("echo again >>\"$0\"")});
    sounds.play("chime.caf");
    EXPECT_TRUE(runUntil([&] { return log() == "refused\nchime.caf\n"; }));
    sounds.play("bell.caf");
    EXPECT_TRUE(runUntil([&] { return log() == "refused\nchime.caf\nrefused\nbell.caf\n"; }));
}

TEST_F(SoundPlayerTest, aClipThatIsHeardDoesNotBeginAgain) {
    SoundPlayer sounds(folder.path(), {player("basename \"$1\" >>\"$0\"; until [ -e \"$0.go\" ]; do :; done")});
    sounds.play("chime.caf");
    sounds.play("chime.caf");
    sounds.play("bell.caf");
    EXPECT_TRUE(runUntil([&] { return log().size() == std::string("chime.caf\nbell.caf\n").size(); }));
    std::ofstream(folder.path() / "log.go") << "";
    EXPECT_TRUE(runUntil([&] {
        sounds.play("chime.caf");
        return log().size() > std::string("chime.caf\nbell.caf\n").size();
    }));
}

TEST_F(SoundPlayerTest, withoutAPlayerAClipOrASoundServerThereIsSilence) {
    SoundPlayer none(folder.path(), {});
    none.play("chime.caf");
    SoundPlayer missing(folder.path(), {{QStringLiteral("/nowhere/player"), {}}});
    missing.play("chime.caf");
    SoundPlayer noClip(folder.path(), {player("echo played >>\"$0\"")});
    noClip.play("missing.caf");
    noClip.play("../" + folder.path().filename().string() + "/chime.caf");
    noClip.play("");
    noClip.play("bell.caf");
    EXPECT_TRUE(runUntil([&] { return !log().empty(); }));
    EXPECT_EQ(log(), "played\n");
}

TEST_F(SoundPlayerTest, aPlayerThatHangsEndsWithTheProgram) {
    qint64 process = 0;
    {
        SoundPlayer sounds(folder.path(), {player("echo $$ >\"$0\"; exec tail -f /dev/null")});
        sounds.play("chime.caf");
        ASSERT_TRUE(runUntil([&] { return !log().empty() && log().back() == '\n'; }));
        process = std::stoll(log());
    }
    EXPECT_FALSE(std::filesystem::exists("/proc/" + std::to_string(process)));
}

TEST(SoundClipsTest, theFourClipsAreMadeAlikeEachTimeAndAreShortGentleAndDistinct) {
    support::TemporaryFolder folder;
    std::set<std::string> contents;
    for (const auto* const run : {"first", "second"}) {
        const auto target = QString::fromStdString((folder.path() / run).string());
        ASSERT_EQ(QProcess::execute(QStringLiteral("tools/make_sounds"), {target}), 0);
    }
    const auto content = [&](const char* run, const std::string& clip) {
        std::ifstream file(folder.path() / run / (clip + ".caf"), std::ios::binary);
        return std::string(std::istreambuf_iterator<char>(file), {});
    };
    for (const std::string clip : {"chime", "bell", "blip", "pulse"}) {
        const auto bytes = content("first", clip);
        EXPECT_EQ(bytes, content("second", clip));
        EXPECT_TRUE(contents.insert(bytes).second);
        QProcess reader;
        reader.start(QStringLiteral("sndfile-info"),
                     {QString::fromStdString((folder.path() / "first" / (clip + ".caf")).string())});
        ASSERT_TRUE(reader.waitForFinished());
        const auto seen = reader.readAll().toStdString();
        EXPECT_NE(seen.find("Channels    : 1"), std::string::npos) << seen;
        EXPECT_NE(seen.find("(-12.04 dB)"), std::string::npos) << seen;
        const auto duration = seen.find("Duration    : 00:00:0");
        ASSERT_NE(duration, std::string::npos) << seen;
        EXPECT_LE(std::stod(seen.substr(duration + 20)), 1.0) << seen;
    }
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
