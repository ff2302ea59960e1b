#include "tests/office/office_fixture.h"

namespace zelkovanta::office {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class StationsTest : public OfficeTest {
protected:
    Computer station = pairShared();
    Computer other = pairRoom("Room 1");

    json::value signInCode() { return call("POST", "devices/me/signin-qr", station); }
};

TEST_F(StationsTest, aPhoneSignsItsOwnerInAndOnlyTheStationHearsOfIt) {
    const json::value code = signInCode();
    EXPECT_EQ(verdict(), "200");
    EXPECT_EQ(at(code, "claimToken"), "<none>");
    EXPECT_EQ(at(code, "qrData"), "zelkovanta://signin?token=" + at(code, "token"));
    EXPECT_EQ(at(code, "expiresAt"), "2026-03-09T08:01:30.000Z");

    keep(office->signInWithCode(at(code, "token"), "Sofia Marino", now));
    EXPECT_EQ(verdict(), "200");
    ASSERT_THAT(kinds(), ElementsAre("session.started"));
    EXPECT_THAT(receivers(answer.effects[0]), ElementsAre(station.id));
    const json::value data = frameIn(answer.effects[0]).at("data");
    EXPECT_EQ(at(data, "device.id"), station.id);
    EXPECT_EQ(at(data, "device.signedInMemberId"), named<Member>("Sofia Marino").id);
    EXPECT_EQ(at(data, "member.name"), "Sofia Marino");
    EXPECT_EQ(stateAt(station).at("device"), data.at("device"));
}

TEST_F(StationsTest, aSignInCodeWorksOnceAndNotLate) {
    const std::string used = at(signInCode(), "token");
    (void)office->signInWithCode(used, "Sofia Marino", now);
    keep(office->signInWithCode(used, "Caleb Wright", now));
    EXPECT_EQ(verdict(), "404 invalid_code");

    const std::string late = at(signInCode(), "token");
    now += seconds{90};
    keep(office->signInWithCode(late, "Caleb Wright", now));
    EXPECT_EQ(verdict(), "410 expired_code");
    EXPECT_EQ(at(stateAt(station), "device.signedInMemberId"), named<Member>("Sofia Marino").id);
}

TEST_F(StationsTest, aCodeSurvivesAWrongName) {
    const std::string code = at(signInCode(), "token");
    keep(office->signInWithCode(code, "Nobody", now));
    EXPECT_EQ(verdict(), "404 unknown_member");
    keep(office->signInWithCode(code, "Caleb Wright", now));
    EXPECT_EQ(verdict(), "200");
}

TEST_F(StationsTest, onlyStationsGiveSignInCodes) {
    call("POST", "devices/me/signin-qr", other);
    EXPECT_EQ(verdict(), "409 not_a_station");
    call("POST", "devices/me/signin-qr", pairMember("Sofia Marino"));
    EXPECT_EQ(verdict(), "409 not_a_station");
    keep(office->signIn(other.id, "Sofia Marino", now));
    EXPECT_EQ(verdict(), "409 not_a_station");

    (void)office->changePractice({}, {.requireSignedInSender = true}, now);
    call("POST", "devices/me/signin-qr", other);
    EXPECT_EQ(verdict(), "200");
    keep(office->signIn(other.id, "Sofia Marino", now));
    EXPECT_EQ(verdict(), "200");
}

TEST_F(StationsTest, aStationThatAsksForCodesWithoutEndIsHeldOff) {
    for (int count = 0; count < 30; ++count) {
        signInCode();
        ASSERT_EQ(verdict(), "200");
    }
    signInCode();
    EXPECT_EQ(verdict(), "429 too_many_attempts");
    now += minutes{1};
    signInCode();
    EXPECT_EQ(verdict(), "200");
}

TEST_F(StationsTest, aSharedComputerSendsAndActsOnlyForSomebody) {
    const json::object where{{"roomId", named<Room>("Room 2").id}};
    sendReady(station, where);
    EXPECT_EQ(verdict(), "403 signin_required");
    const std::string id = at(sendReady(other), "id");
    act(station, id, "acknowledge");
    EXPECT_EQ(verdict(), "403 signin_required");
    call("POST", "members/me/status", station, R"({"status":"busy"})");
    EXPECT_EQ(verdict(), "403 signin_required");

    (void)office->signIn(station.id, "Sofia Marino", now);
    const std::string sofia = named<Member>("Sofia Marino").id;
    EXPECT_EQ(at(sendReady(station, where), "requesterId"), sofia);
    EXPECT_EQ(at(act(station, id, "acknowledge"), "acknowledgedBy"), sofia);
    call("POST", "members/me/status", station, R"({"status":"busy"})");
    EXPECT_EQ(verdict(), "200");
}

TEST_F(StationsTest, aRoomComputerNeedsASignInOnlyWhereThePracticeWantsIt) {
    (void)office->changePractice({}, {.requireSignedInSender = true}, now);
    sendReady(other);
    EXPECT_EQ(verdict(), "403 signin_required");
    (void)office->signIn(other.id, "Sofia Marino", now);
    EXPECT_EQ(at(sendReady(other), "requesterId"), named<Member>("Sofia Marino").id);
}

TEST_F(StationsTest, signingOutEndsTheSessionOnce) {
    (void)office->signIn(station.id, "Sofia Marino", now);
    const json::value empty = call("POST", "devices/me/signout", station);
    EXPECT_EQ(verdict(), "200");
    EXPECT_EQ(empty, json::value(json::object()));
    ASSERT_THAT(kinds(), ElementsAre("session.ended"));
    EXPECT_THAT(receivers(answer.effects[0]), ElementsAre(station.id));
    EXPECT_EQ(at(stateAt(station), "device.signedInMemberId"), "<none>");

    call("POST", "devices/me/signout", station);
    EXPECT_EQ(verdict(), "200");
    EXPECT_THAT(kinds(), IsEmpty());
}

TEST_F(StationsTest, theNextPersonTakesTheSessionOver) {
    (void)office->signIn(station.id, "Sofia Marino", now);
    keep(office->signIn("Hallway Mac", "Caleb Wright", now));
    EXPECT_THAT(kinds(), ElementsAre("session.started"));
    EXPECT_EQ(at(stateAt(station), "device.signedInMemberId"), named<Member>("Caleb Wright").id);
}

TEST_F(StationsTest, whoLeavesThePracticeIsSignedOut) {
    (void)office->signIn(station.id, "Sofia Marino", now);
    keep(office->changeMember({}, "Sofia Marino", {.active = false}, now));
    EXPECT_THAT(kinds(), ElementsAre("member.updated", "session.ended"));
    EXPECT_EQ(at(stateAt(station), "device.signedInMemberId"), "<none>");
    keep(office->signIn(station.id, "Sofia Marino", now));
    EXPECT_EQ(verdict(), "409 member_inactive");
}

TEST_F(StationsTest, aRevokedComputerIsClosedOffAndItsTokenIsDead) {
    signInCode();
    keep(office->revoke(station.id, now));
    EXPECT_EQ(verdict(), "200");
    EXPECT_EQ(answer.effects, std::vector<Effect>{(CloseSockets{station.id, 4001})});
    stateAt(station);
    EXPECT_EQ(verdict(), "401 invalid_token");
    EXPECT_EQ(office->socketOpened(station.token, now).status, 401);
    EXPECT_TRUE(office->state().all<SignInCode>().empty());
    keep(office->revoke(station.id, now));
    EXPECT_EQ(verdict(), "404 unknown_computer");
}

TEST_F(StationsTest, aComputerMayRemoveItself) {
    const json::value empty = call("DELETE", "devices/me", station);
    EXPECT_EQ(verdict(), "200");
    EXPECT_EQ(empty, json::value(json::object()));
    EXPECT_THAT(kinds(), ElementsAre("close 4001"));
    call("DELETE", "devices/me", station);
    EXPECT_EQ(verdict(), "401 invalid_token");
}

TEST_F(StationsTest, aMovedComputerGetsTheOtherPracticeWhole) {
    const Computer room = pairRoom("Room 3");
    const Computer there = pairRoom("Exam A", "Lakeside Family Practice");
    keep(office->move(room.id, "lakeside", {}, {}, MoveNotice::snapshot, now));
    EXPECT_EQ(verdict(), "200");
    ASSERT_THAT(kinds(), ElementsAre("snapshot"));
    EXPECT_THAT(receivers(answer.effects[0]), ElementsAre(room.id));
    const json::value data = frameIn(answer.effects[0]).at("data");
    EXPECT_EQ(data, stateAt(room));
    EXPECT_EQ(at(data, "office.name"), "Lakeside Family Practice");
    EXPECT_EQ(at(data, "device.roomId"), named<Room>("Room 3", "Lakeside Family Practice").id);

    sendReady(other);
    EXPECT_THAT(receivers(answer.effects[0]), testing::Not(testing::Contains(room.id)));
    keep(office->move(there.id, "Lakeside Family Practice", {}, {}, MoveNotice::snapshot, now));
    EXPECT_EQ(verdict(), "409 already_there");
}

TEST_F(StationsTest, aMoveFindsAPlaceOrIsRefused) {
    const Computer room = pairRoom("Imaging");
    keep(office->move(room.id, "lakeside", {}, {}, MoveNotice::officeUpdated, now));
    ASSERT_THAT(kinds(), ElementsAre("office.updated"));
    EXPECT_EQ(at(frameIn(answer.effects[0]), "data.office.name"), "Lakeside Family Practice");
    EXPECT_EQ(at(stateAt(room), "device.roomId"), named<Room>("Exam A", "Lakeside Family Practice").id);

    const Computer doctor = pairMember("Dr. Amara Okafor");
    keep(office->move(doctor.id, "lakeside", {}, {}, MoveNotice::snapshot, now));
    EXPECT_EQ(verdict(), "400 bad_request");
    EXPECT_EQ(at(stateAt(doctor), "office.name"), "Harbour Dental");
    keep(office->move(doctor.id, "lakeside", {}, "Dr. Ruth Adeyemi", MoveNotice::snapshot, now));
    EXPECT_EQ(at(stateAt(doctor), "device.memberId"), named<Member>("Dr. Ruth Adeyemi", "Lakeside Family Practice").id);

    (void)office->signIn(station.id, "Sofia Marino", now);
    keep(office->move(station.id, "lakeside", "Exam B", {}, MoveNotice::snapshot, now));
    EXPECT_EQ(at(stateAt(station), "device.signedInMemberId"), "<none>");
    EXPECT_EQ(at(stateAt(station), "device.roomId"), named<Room>("Exam B", "Lakeside Family Practice").id);
}

TEST_F(StationsTest, aMovedStationHonoursNoCodeThatItShowedBefore) {
    const std::string before = at(signInCode(), "token");
    keep(office->move(station.id, "lakeside", {}, {}, MoveNotice::snapshot, now));
    ASSERT_EQ(verdict(), "200");
    keep(office->signInWithCode(before, "Dr. Ruth Adeyemi", now));
    EXPECT_EQ(verdict(), "404 invalid_code");
    EXPECT_EQ(at(stateAt(station), "device.signedInMemberId"), "<none>");

    keep(office->signInWithCode(at(signInCode(), "token"), "Dr. Ruth Adeyemi", now));
    EXPECT_EQ(verdict(), "200");
}

TEST_F(StationsTest, notificationSettingsReachTheirComputer) {
    keep(office->setNotificationSettings(station.id, R"({"quiet":true,"perType":{"urgent":{"sound":"bell"}}})", now));
    EXPECT_THAT(kinds(), ElementsAre("snapshot"));
    EXPECT_EQ(at(stateAt(station), "device.notificationSettings.perType.urgent.sound"), "bell");
    for (const char* bad :
         {"[]", "{", R"({"quiet":1})", R"({"escalation":{"afterMinutes":"2"}})", R"({"perType":{"urgent":true}})"}) {
        keep(office->setNotificationSettings(station.id, bad, now));
        EXPECT_EQ(verdict(), "400 bad_request") << bad;
    }
    (void)office->setNotificationSettings(station.id, "", now);
    EXPECT_EQ(at(stateAt(station), "device.notificationSettings"), "<none>");
}

}  // namespace
}  // namespace zelkovanta::office
