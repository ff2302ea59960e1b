#include "platform/linux/linux_host_info.h"

#include "tests/support/temporary_folder.h"

#include <fstream>
#include <map>

#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

struct LinuxHostInfoTest : testing::Test {
    support::TemporaryFolder root;
    std::map<std::string, std::string> variables;
    int busCalls = 0;
    std::string busId = "abc";
    LinuxHostInfo info{{.root = root.path(),
                        .environment = [this](const std::string& name) -> std::optional<std::string> {
                            const auto found = variables.find(name);
                            return found == variables.end() ? std::nullopt : std::optional{found->second};
                        },
                        .hostName = [] { return "desk3.clinic.example"; },
                        .sessionBusId =
                            [this] {
                                ++busCalls;
                                return busId;
                            }}};

    void write(const std::string& file, const std::string& content) const {
        std::filesystem::create_directories((root.path() / file).parent_path());
        std::ofstream(root.path() / file) << content;
    }
};

TEST_F(LinuxHostInfoTest, theNameIsThePrettyOneElseTheHostsWithoutItsDomain) {
    EXPECT_EQ(info.localizedName(), "desk3");
    write("etc/machine-info", "ICON_NAME=computer\n");
    EXPECT_EQ(info.localizedName(), "desk3");
    write("etc/machine-info", "ICON_NAME=computer\nPRETTY_HOSTNAME=\"Front \\\"desk\\\" 3.1\"\n");
    EXPECT_EQ(info.localizedName(), "Front \"desk\" 3.1");
    write("etc/machine-info", "PRETTY_HOSTNAME=\n");
    EXPECT_EQ(info.localizedName(), "desk3");
}

TEST_F(LinuxHostInfoTest, theModelIsTheFirmwaresCutToEightyScalars) {
    EXPECT_EQ(info.hardwareModel(), "");
    write("sys/class/dmi/id/product_name", "OptiPlex 7010\n");
    EXPECT_EQ(info.hardwareModel(), "OptiPlex 7010");
    std::string umlauts;
    for (int i = 0; i < 100; ++i) {
        umlauts += "ä";
    }
    write("sys/class/dmi/id/product_name", umlauts + "\n");
    EXPECT_EQ(info.hardwareModel(), umlauts.substr(0, 160));
}

TEST_F(LinuxHostInfoTest, theLocaleIsTheFirstVariableThatIsSet) {
    EXPECT_EQ(info.localeIdentifier(), "en-US");
    variables["LANG"] = "de_DE.UTF-8";
    EXPECT_EQ(info.localeIdentifier(), "de-DE");
    variables["LC_MESSAGES"] = "fr_CA.UTF-8";
    EXPECT_EQ(info.localeIdentifier(), "fr-CA");
    variables["LC_ALL"] = "C.UTF-8";
    EXPECT_EQ(info.localeIdentifier(), "en-US");
}

TEST_F(LinuxHostInfoTest, localesBecomeLanguageTags) {
    const std::map<std::string, std::string> tags{{"C", "en-US"},
                                                  {"POSIX", "en-US"},
                                                  {"", "en-US"},
                                                  {"en_US", "en-US"},
                                                  {"de", "de"},
                                                  {"sr_RS@latin", "sr-Latn-RS"},
                                                  {"de_AT@euro", "de-AT"},
                                                  {"es_419.UTF-8", "es-419"},
                                                  {"PT_br", "pt-BR"},
                                                  {"../../etc", "en-US"},
                                                  {"de_\"x", "de"},
                                                  {"english", "en-US"}};
    for (const auto& [locale, tag] : tags) {
        EXPECT_EQ(languageTag(locale), tag) << locale;
    }
}

TEST_F(LinuxHostInfoTest, theBootTimeIsTheKernelsAndZeroWithoutIt) {
    EXPECT_EQ(info.bootTime(), 0);
    write("proc/stat", "cpu  1 2 3\nintr 4\nbtime 1700000123\nprocesses 5\n");
    EXPECT_EQ(info.bootTime(), 1'700'000'123);
    write("proc/stat", "btime soon\n");
    EXPECT_EQ(info.bootTime(), 0);
    write("proc/stat", "btime -5\n");
    EXPECT_EQ(info.bootTime(), 0);
}

TEST_F(LinuxHostInfoTest, theAuditSessionIsTheFirstThatExists) {
    EXPECT_EQ(info.auditSessionId(), "babc");
    variables["XDG_SESSION_ID"] = "7";
    EXPECT_EQ(info.auditSessionId(), "babc") << "a session that is gone";
    write("run/systemd/sessions/7", "UID=1000\n");
    EXPECT_EQ(info.auditSessionId(), "l7");
    write("proc/self/cgroup", "0::/user.slice/user-1000.slice/user@1000.service/app.slice\n");
    EXPECT_EQ(info.auditSessionId(), "l7");
    write("proc/self/cgroup", "0::/user.slice/user-1000.slice/session-c2.scope\n");
    EXPECT_EQ(info.auditSessionId(), "lc2");
    write("proc/self/sessionid", "4294967295");
    EXPECT_EQ(info.auditSessionId(), "lc2");
    write("proc/self/sessionid", "12");
    EXPECT_EQ(info.auditSessionId(), "k12");
    EXPECT_EQ(busCalls, 1);
}

TEST_F(LinuxHostInfoTest, aBusThatDidNotAnswerIsAskedAgain) {
    busId.clear();
    EXPECT_EQ(info.auditSessionId(), "");
    EXPECT_EQ(info.auditSessionId(), "");
    busId = "late";
    EXPECT_EQ(info.auditSessionId(), "blate");
    busId = "another";
    EXPECT_EQ(info.auditSessionId(), "blate");
    EXPECT_EQ(busCalls, 3);
}

TEST_F(LinuxHostInfoTest, aVariableThatLeadsElsewhereIsNoSession) {
    write("run/elsewhere", "x");
    variables["XDG_SESSION_ID"] = "../../elsewhere";
    EXPECT_EQ(info.auditSessionId(), "babc");
}

TEST(LinuxHostInfoOfThisComputerTest, factsAreThere) {
    const LinuxHostInfo info{HostSources::ofThisComputer()};
    EXPECT_FALSE(info.localizedName().empty());
    EXPECT_GT(info.bootTime(), 1e9);
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
