#include "office/command_line.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelkovanta::office {
namespace {

using testing::HasSubstr;
using testing::Not;

std::expected<Command, std::string> parsed(std::vector<std::string> words) {
    return parseCommandLine(words);
}

std::string fault(std::vector<std::string> words) {
    const auto command = parseCommandLine(words);
    return command ? "" : command.error();
}

Control controlOf(std::vector<std::string> words) {
    words.insert(words.end(), {"--database", "o.db"});
    const auto command = parseCommandLine(words);
    if (!command) {
        ADD_FAILURE() << command.error();
        return {};
    }
    return std::get<Control>(*command);
}

TEST(CommandLine, runsTheOfficeWithOrWithoutTheWord) {
    const Serve plain{.database = "o.db", .address = "127.0.0.1", .port = 8787, .sample = {}, .quiet = false};
    EXPECT_EQ(parsed({"--database", "o.db"}), Command(plain));
    EXPECT_EQ(parsed({"serve", "--database", "o.db"}), Command(plain));
    const Serve full{.database = "o.db", .address = "::1", .port = 0, .sample = "harbour", .quiet = true};
    EXPECT_EQ(parsed({"--port", "0", "--listen", "::1", "--sample", "harbour", "--quiet", "--database", "o.db"}),
              Command(full));
}

TEST(CommandLine, encryptsHidesTheConsoleAndKnowsItsPrograms) {
    const auto command = parsed({"--database", "o.db", "--certificate", "c.pem", "--key", "k.pem", "--app-check-file",
                                 "secret", "--no-console"});
    ASSERT_TRUE(command.has_value()) << command.error();
    const Serve& serve = std::get<Serve>(*command);
    EXPECT_EQ(serve.certificate, "c.pem");
    EXPECT_EQ(serve.key, "k.pem");
    EXPECT_EQ(serve.appCheckFile, "secret");
    EXPECT_FALSE(serve.console);
    EXPECT_THAT(fault({"--database", "o.db", "--certificate", "c.pem"}), HasSubstr("go together"));
    EXPECT_THAT(fault({"--database", "o.db", "--key", "k.pem"}), HasSubstr("go together"));
    EXPECT_THAT(fault({"--database", "o.db", "--app-check-file"}), HasSubstr("needs a value"));
}

TEST(CommandLine, playsPhonesBeforeAScreenAndOnTheirWay) {
    EXPECT_EQ(controlOf({"scan", "Hallway Mac", "Sofia Marino"}).body,
              R"({"device":"Hallway Mac","member":"Sofia Marino"})");
    EXPECT_EQ(controlOf({"walk", "Dr. Mei Tanaka", "Room 2"}).path, "/admin/v1/walk");
    EXPECT_EQ(controlOf({"walk", "Dr. Mei Tanaka", "Room 2"}).body, R"({"member":"Dr. Mei Tanaka","room":"Room 2"})");
}

TEST(CommandLine, showsItsUsageWhenNothingIsWanted) {
    EXPECT_EQ(parsed({}), Command(Help{}));
    EXPECT_EQ(parsed({"--help"}), Command(Help{}));
    EXPECT_EQ(parsed({"help"}), Command(Help{}));
}

TEST(CommandLine, tellsInOneSentenceWhatIsWrong) {
    EXPECT_EQ(fault({"serve"}), "Say where the office keeps its state: --database FILE.");
    EXPECT_EQ(fault({"--database"}), "--database needs a value.");
    EXPECT_EQ(fault({"--database", "o", "--port", "65536"}), "--port takes a whole number that fits, not \"65536\".");
    EXPECT_EQ(fault({"--database", "o", "--port", "-1"}), "--port takes a whole number that fits, not \"-1\".");
    EXPECT_EQ(fault({"--database", "o", "--port", "80x"}), "--port takes a whole number that fits, not \"80x\".");
    EXPECT_THAT(fault({"--database", "o", "--loud"}), HasSubstr("does not know \"--loud\""));
    EXPECT_THAT(fault({"dance"}), HasSubstr("no command \"dance\""));
    EXPECT_THAT(fault({"waiting"}), HasSubstr("Say which office"));
    EXPECT_THAT(fault({"waiting", "--server", "http://x"}), HasSubstr("Say which office"));
    EXPECT_THAT(fault({"revoke", "--database", "o"}), HasSubstr("revoke takes device before its options"));
    EXPECT_THAT(fault({"revoke", "a", "b", "--database", "o"}), HasSubstr("revoke takes device"));
    EXPECT_THAT(fault({"revoke", "a", "--force", "--database", "o"}), HasSubstr("does not know \"--force\""));
    EXPECT_THAT(fault({"send", "--room"}), HasSubstr("--room needs a value"));
    EXPECT_THAT(fault({"practice", "--any-provider", "maybe", "--database", "o"}), HasSubstr("yes or no"));
    EXPECT_THAT(fault({"member", "m", "--cooldown", "soon", "--database", "o"}), HasSubstr("whole number"));
    EXPECT_THAT(fault({"announce", "--version", "1", "--database", "o"}), HasSubstr("\"release\""));
    EXPECT_THAT(fault({"announce", "none", "--version", "1", "--database", "o"}), HasSubstr("takes no options"));
    EXPECT_THAT(fault({"announce", "release", "--database", "o"}), HasSubstr("needs its options"));
    EXPECT_THAT(fault({"state", "now", "--database", "o"}), HasSubstr("does not know \"now\""));
}

TEST(CommandLine, findsTheOfficeByItsDatabaseOrItsAddress) {
    EXPECT_EQ(controlOf({"state"}).office, (Whereabouts{.database = "o.db", .server = {}, .adminTokenFile = {}}));
    const auto command = parsed({"state", "--server", "http://127.0.0.1:1", "--admin-token-file", "t"});
    ASSERT_TRUE(command.has_value());
    EXPECT_EQ(std::get<Control>(*command).office,
              (Whereabouts{.database = {}, .server = "http://127.0.0.1:1", .adminTokenFile = "t"}));
    EXPECT_EQ(adminTokenFileOf("a/o.db"), "a/o.db.admin");
    EXPECT_EQ(addressFileOf("a/o.db"), "a/o.db.address");
}

TEST(CommandLine, turnsCommandsIntoOrders) {
    const auto order = [](std::vector<std::string> words) {
        const Control control = controlOf(std::move(words));
        return control.method + " " + control.path + " " + control.body;
    };
    EXPECT_EQ(order({"waiting"}), "GET /admin/v1/waiting ");
    EXPECT_EQ(order({"code", "--role", "room", "--room", "Room 3"}),
              R"(POST /admin/v1/code {"role":"room","room":"Room 3"})");
    EXPECT_EQ(order({"signin", "Hallway", "Sofia"}), R"(POST /admin/v1/signin {"device":"Hallway","member":"Sofia"})");
    EXPECT_EQ(order({"signin-code", "zvq", "Sofia"}), R"(POST /admin/v1/signin {"code":"zvq","member":"Sofia"})");
    EXPECT_EQ(order({"signout", "Hallway"}), R"(POST /admin/v1/signout {"device":"Hallway"})");
    EXPECT_EQ(order({"move", "a", "b", "--notice", "office"}),
              R"(POST /admin/v1/move {"device":"a","notice":"office","practice":"b"})");
    EXPECT_EQ(order({"send", "--room", "r", "--type", "ready", "--to", "a", "--to", "b", "--note", "say \"hi\""}),
              R"(POST /admin/v1/send {"note":"say \"hi\"","room":"r","type":"ready","to":["a","b"]})");
    for (const char* action : {"acknowledge", "done", "cancel", "arrived"}) {
        EXPECT_EQ(order({action, "sig", "--by", "m"}),
                  R"(POST /admin/v1/act {"action":")" + std::string(action) + R"(","by":"m","signal":"sig"})");
    }
    EXPECT_EQ(order({"member", "m", "--off-shift", "--cooldown", "5", "--alerts", "no"}),
              R"(POST /admin/v1/member {"alertsEnabled":false,"cooldownMinutes":5,"member":"m","onShift":false})");
    EXPECT_EQ(order({"room", "r", "--deactivate"}), R"(POST /admin/v1/room {"active":false,"room":"r"})");
    EXPECT_EQ(order({"add-room", "r"}), R"(POST /admin/v1/room/add {"name":"r"})");
    EXPECT_EQ(order({"add-member", "m", "nurse"}), R"(POST /admin/v1/member/add {"department":"nurse","name":"m"})");
    EXPECT_EQ(order({"type", "t", "--priority", "-3"}), R"(POST /admin/v1/type {"priority":-3,"type":"t"})");
    EXPECT_EQ(order({"practice", "--signed-in-sender", "yes"}),
              R"(POST /admin/v1/practice {"requireSignedInSender":true})");
    EXPECT_EQ(order({"announce", "none"}), "POST /admin/v1/announce {}");
    EXPECT_EQ(order({"announce", "release", "--version", "1", "--build", "2", "--url", "https://x"}),
              R"(POST /admin/v1/announce {"build":2,"url":"https://x","version":"1"})");
}

TEST(CommandLine, approvesARequestAComputerByNameOrTheOldest) {
    const auto approval = [](std::vector<std::string> words) {
        words.insert(words.end(), {"--database", "o.db", "--role", "shared"});
        return std::get<Approve>(*parseCommandLine(words));
    };
    EXPECT_EQ(approval({"approve"}).request, std::nullopt);
    EXPECT_EQ(approval({"approve"}).wait, std::chrono::seconds(0));
    const Approve waiting = approval({"approve", "ABC234", "--wait", "20", "--name", "Front"});
    EXPECT_EQ(waiting.request, "ABC234");
    EXPECT_EQ(waiting.wait, std::chrono::seconds(20));
    EXPECT_EQ(waiting.order.body, R"({"name":"Front","role":"shared"})");
    EXPECT_EQ(waiting.order.print, "device.id");
}

TEST(CommandLine, everyCommandStandsInTheUsage) {
    const std::string usage = usageText();
    for (const char* command :
         {"serve", "waiting",  "approve",     "code",     "signin",   "signin-code", "signout", "revoke",
          "move",  "send",     "acknowledge", "done",     "cancel",   "arrived",     "member",  "add-member",
          "room",  "add-room", "type",        "practice", "announce", "state"}) {
        EXPECT_THAT(usage, HasSubstr(command));
    }
    EXPECT_THAT(usage, Not(HasSubstr("\t")));
}

}  // namespace
}  // namespace zelkovanta::office
