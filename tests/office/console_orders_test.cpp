#include "tests/office/office_fixture.h"

namespace zelkovanta::office {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

/// What the console asks for beyond a script: its overview, and phones.
class ConsoleOrdersTest : public OfficeTest {
protected:
    json::value order(const std::string& name, const json::object& fields) {
        return keep(office->administer(
            {.method = "POST", .path = "/admin/v1/" + name, .token = {}, .body = json::serialize(fields), .peer = peer},
            now));
    }
    json::object overview() const { return json::parse(office->overview(now)).as_object(); }
    json::object harbour() const { return overview().at("practices").at(0).as_object(); }
    std::string readyIn(const std::string& room, std::vector<std::string> to = {}) {
        return at(keep(office->send({.practice = {}, .room = room, .type = "ready", .to = std::move(to)}, now)), "id");
    }
    std::string clearedBy(const std::string& signal) const {
        return office->state().find<Signal>(signal)->clearedBy.value_or("<nobody>");
    }
};

TEST_F(ConsoleOrdersTest, theOverviewShowsWaitingComputersUntilTheirCodeLapses) {
    requestSetup("Pamir");
    const json::object waiting = overview().at("waiting").at(0).as_object();
    EXPECT_EQ(at(waiting, "name"), "Pamir");
    EXPECT_EQ(at(waiting, "model"), "Mac14,3");
    EXPECT_EQ(at(waiting, "expiresAt"), "2026-03-09T08:05:00.000Z");
    now += minutes{5};
    EXPECT_THAT(overview().at("waiting").as_array(), IsEmpty());
}

TEST_F(ConsoleOrdersTest, theOverviewShowsComputersStationsAndOpenCodesOfEachPractice) {
    const Computer station = pairShared();
    pairRoom("Room 1");
    (void)office->makePairingCode({.practice = {}, .role = DeviceRole::shared, .computerName = "Desk"}, now);
    call("POST", "devices/me/signin-qr", station);

    const json::array devices = harbour().at("devices").as_array();
    ASSERT_THAT(devices, SizeIs(2));
    for (const json::value& device : devices) {
        const bool isStation = at(device, "device.id") == station.id;
        EXPECT_EQ(at(device, "station"), isStation ? "true" : "false");
        EXPECT_EQ(at(device, "codeShownUntil"), isStation ? "2026-03-09T08:01:30.000Z" : "<none>");
    }
    const json::array codes = harbour().at("codes").as_array();
    ASSERT_THAT(codes, SizeIs(1)) << "the redeemed ones are gone";
    EXPECT_EQ(at(codes.at(0), "name"), "Desk");
    EXPECT_THAT(overview().at("practices").at(1).at("devices").as_array(), IsEmpty());

    now += minutes{15};
    EXPECT_THAT(harbour().at("codes").as_array(), IsEmpty());
    EXPECT_EQ(at(harbour().at("devices").at(0), "codeShownUntil"), "<none>");
}

TEST_F(ConsoleOrdersTest, theOverviewHoldsNoSecret) {
    const Computer station = pairShared();
    const json::value setup = requestSetup();
    const json::value code = keep(office->makePairingCode({.role = DeviceRole::shared}, now));
    const json::value signIn = call("POST", "devices/me/signin-qr", station);
    const std::string text = office->overview(now);
    for (const std::string& secret :
         {station.token, at(setup, "token"), at(setup, "claimToken"), at(code, "code"), at(signIn, "token")}) {
        EXPECT_EQ(text.find(secret), std::string::npos) << secret;
    }
}

TEST_F(ConsoleOrdersTest, theOverviewShowsTheLatestSignalsThatAreOver) {
    std::string last;
    for (int count = 0; count < 25; ++count) {
        last = readyIn("Room 1");
        now += seconds{1};
        (void)office->act(last, SignalAction::done, "Dr. Mei Tanaka", now);
    }
    const json::array cleared = harbour().at("cleared").as_array();
    ASSERT_THAT(cleared, SizeIs(20));
    EXPECT_EQ(at(cleared.at(0), "id"), last);
    EXPECT_THAT(overview().at("practices").at(1).at("cleared").as_array(), IsEmpty());
}

TEST_F(ConsoleOrdersTest, aPhoneScansTheCodeThatAStationShows) {
    const Computer station = pairShared();
    order("scan", {{"device", station.id}, {"member", "Sofia Marino"}});
    EXPECT_EQ(verdict(), "409 no_code_shown");
    call("POST", "devices/me/signin-qr", station);
    now += seconds{90};
    order("scan", {{"device", station.id}, {"member", "Sofia Marino"}});
    EXPECT_EQ(verdict(), "409 no_code_shown") << "the code has lapsed";
    call("POST", "devices/me/signin-qr", station);
    order("scan", {{"device", station.id}, {"member", "Nobody"}});
    EXPECT_EQ(verdict(), "404 unknown_member");
    order("scan", {{"device", station.id}, {"member", "Sofia Marino"}});
    EXPECT_EQ(verdict(), "200");
    EXPECT_THAT(kinds(), ElementsAre("session.started"));
    order("scan", {{"device", station.id}, {"member", "Caleb Wright"}});
    EXPECT_EQ(verdict(), "409 no_code_shown") << "the code was used";
    order("scan", {{"device", pairMember("Sofia Marino").id}, {"member", "Sofia Marino"}});
    EXPECT_EQ(verdict(), "409 not_a_station");
    order("scan", {{"device", "nowhere"}, {"member", "Sofia Marino"}});
    EXPECT_EQ(verdict(), "404 unknown_computer");
}

TEST_F(ConsoleOrdersTest, aPictureOfAnOlderCodeIsWorthNothingOnceSomebodyHasSignedIn) {
    const Computer station = pairShared();
    const std::string older = at(call("POST", "devices/me/signin-qr", station), "token");
    now += seconds{50};
    const std::string newer = at(call("POST", "devices/me/signin-qr", station), "token");
    keep(office->signInWithCode(newer, "Sofia Marino", now));
    EXPECT_EQ(verdict(), "200");
    keep(office->signInWithCode(older, "Caleb Wright", now));
    EXPECT_EQ(verdict(), "404 invalid_code");
}

TEST_F(ConsoleOrdersTest, anOlderCodeStillCountsWhileTheNewOneIsShown) {
    const Computer station = pairShared();
    const std::string older = at(call("POST", "devices/me/signin-qr", station), "token");
    now += seconds{50};
    call("POST", "devices/me/signin-qr", station);
    keep(office->signInWithCode(older, "Sofia Marino", now));
    EXPECT_EQ(verdict(), "200");
}

TEST_F(ConsoleOrdersTest, walkingIntoARoomClearsWhatCallsForThatMemberThere) {
    pairRoom("Room 4");
    const std::string open = readyIn("Room 1");
    const std::string named = readyIn("Room 1", {"Dr. Mei Tanaka"});
    const std::string several = readyIn("Room 1", {"Dr. Mei Tanaka", "Sofia Marino"});
    const std::string forAnother = readyIn("Room 1", {"Dr. Jonas Lindqvist"});
    const std::string elsewhere = readyIn("Room 2", {"Dr. Mei Tanaka"});

    const json::value answered = order("walk", {{"member", "Dr. Mei Tanaka"}, {"room", "Room 1"}});
    EXPECT_EQ(verdict(), "200");
    EXPECT_THAT(answered.at("cleared").as_array(), SizeIs(3));
    EXPECT_THAT(kinds(), ElementsAre("signal.updated", "signal.updated", "signal.updated"));
    for (const std::string& signal : {open, named, several}) {
        EXPECT_EQ(clearedBy(signal), "ble");
        EXPECT_EQ(office->state().find<Signal>(signal)->status, SignalStatus::done);
    }
    EXPECT_EQ(clearedBy(forAnother), "<nobody>");
    EXPECT_EQ(clearedBy(elsewhere), "<nobody>");
    EXPECT_THAT(order("walk", {{"member", "Dr. Mei Tanaka"}, {"room", "Room 1"}}).at("cleared").as_array(), IsEmpty());
}

TEST_F(ConsoleOrdersTest, onlyWhoeverIsOnTheWayClearsByArriving) {
    const std::string open = readyIn("Room 1");
    (void)office->act(open, SignalAction::acknowledge, "Dr. Mei Tanaka", now);
    order("walk", {{"member", "Dr. Jonas Lindqvist"}, {"room", "Room 1"}});
    EXPECT_EQ(clearedBy(open), "<nobody>");
    order("walk", {{"member", "Dr. Mei Tanaka"}, {"room", "Room 1"}});
    EXPECT_EQ(clearedBy(open), "ble");
}

TEST_F(ConsoleOrdersTest, anOpenCallIsNotClearedByWhoeverIsNoProvider) {
    const std::string open = readyIn("Room 1");
    order("walk", {{"member", "Sofia Marino"}, {"room", "Room 1"}});
    EXPECT_EQ(verdict(), "200");
    EXPECT_EQ(clearedBy(open), "<nobody>");
}

TEST_F(ConsoleOrdersTest, walkingNamesAMemberAndARoomOfThePractice) {
    order("walk", {{"member", "Nobody"}, {"room", "Room 1"}});
    EXPECT_EQ(verdict(), "404 unknown_member");
    order("walk", {{"member", "Sofia Marino"}, {"room", "Exam A"}});
    EXPECT_EQ(verdict(), "404 unknown_room");
    order("walk", {{"member", "Sofia Marino"}});
    EXPECT_EQ(verdict(), "400 bad_request");
}

TEST_F(ConsoleOrdersTest, aPhoneChangesItsOwnersStatusButNotInACooldown) {
    order("status", {{"member", "Sofia Marino"}, {"status", "busy"}});
    EXPECT_EQ(verdict(), "200");
    EXPECT_THAT(kinds(), IsEmpty()) << "no computer is there to hear it";
    EXPECT_EQ(named<Member>("Sofia Marino").status, "busy");
    (void)office->changeMember({}, "Sofia Marino", {.onShift = false, .cooldownMinutes = 5}, now);
    order("status", {{"member", "Sofia Marino"}, {"status", "available"}});
    EXPECT_EQ(verdict(), "403 in_cooldown");
    EXPECT_EQ(at(json::parse(answer.body), "message"), "That member is in a cooldown.");
    order("status", {{"member", "Sofia Marino"}, {"status", "asleep"}});
    EXPECT_EQ(verdict(), "400 bad_request");
    EXPECT_EQ(named<Member>("Sofia Marino").status, "busy");
}

TEST_F(ConsoleOrdersTest, everyRefusalOfAnAdminHasASentence) {
    const std::string over = readyIn("Room 1");
    (void)office->act(over, SignalAction::done, {}, now);
    EXPECT_EQ(at(order("act", {{"signal", over}, {"action", "done"}}), "message"), "That signal is over already.");
    EXPECT_EQ(at(order("signin", {{"code", "zvq_old"}, {"member", "Sofia Marino"}}), "message"),
              "There is no such code.");
}

TEST_F(ConsoleOrdersTest, anOfficeThatKnowsItsProgramsPairsNoOthers) {
    office->requireAppCheck("build-secret");
    const json::value code = keep(office->makePairingCode({.role = DeviceRole::shared}, now));
    requestSetup();
    EXPECT_EQ(verdict(), "403 unknown_program");
    redeem(at(code, "code"));
    EXPECT_EQ(verdict(), "403 unknown_program");
    EXPECT_THAT(overview().at("waiting").as_array(), IsEmpty());

    const auto asking = [&](const std::string& path, json::object body, const std::string& appCheck) {
        body["device"] = introduction("Pamir");
        return keep(office->handle({.method = "POST",
                                    .path = "/api/v1/" + path,
                                    .token = {},
                                    .body = json::serialize(body),
                                    .peer = peer,
                                    .appCheck = appCheck},
                                   now));
    };
    asking("pair/request", {}, "build-secret ");
    EXPECT_EQ(verdict(), "403 unknown_program");
    asking("pair/redeem", {{"code", at(code, "code")}}, "build-secret");
    EXPECT_EQ(verdict(), "200");
    const json::value setup = asking("pair/request", {}, "build-secret");
    EXPECT_EQ(verdict(), "200");
    call("GET", "pair/request/" + at(setup, "claimToken"), {});
    EXPECT_EQ(verdict(), "200") << "a poll says nothing about its program";
}

}  // namespace
}  // namespace zelkovanta::office
