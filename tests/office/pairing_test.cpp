#include "tests/office/office_fixture.h"

namespace zelkovanta::office {
namespace {

using testing::Contains;
using testing::HasSubstr;
using testing::Not;

class PairingTest : public OfficeTest {
protected:
    std::string code(const Placement& placement) { return at(keep(office->makePairingCode(placement, now)), "code"); }
    std::string roomCode() {
        return code({.practice = {}, .role = DeviceRole::room, .room = "Room 3", .member = {}, .computerName = {}});
    }
    static Placement roomThree() {
        return {.practice = {}, .role = DeviceRole::room, .room = "Room 3", .member = {}, .computerName = "Three"};
    }
    json::value poll(const json::value& setup) { return call("GET", "pair/request/" + at(setup, "claimToken"), {}); }
    std::string onlyRequest() const { return office->state().all<SetupRequest>().begin()->first; }
};

TEST_F(PairingTest, aCodeHasTwoGroupsOfFourAndMakesARoomComputer) {
    const std::string typed = roomCode();
    EXPECT_THAT(typed, testing::MatchesRegex("[A-Z2-9]{4}-[A-Z2-9]{4}"));

    const json::value paired = redeem(typed, "Pamir");
    EXPECT_EQ(verdict(), "200");
    EXPECT_EQ(at(paired, "role"), "room");
    EXPECT_EQ(at(paired, "device.kind"), "desktop_mac");
    EXPECT_EQ(at(paired, "device.name"), "Pamir");
    EXPECT_EQ(at(paired, "device.roomId"), named<Room>("Room 3").id);
    EXPECT_EQ(at(paired, "device.memberId"), "<none>");
    EXPECT_EQ(at(paired, "office.name"), "Harbour Dental");
    EXPECT_EQ(at(paired, "room.name"), "Room 3");
    EXPECT_EQ(at(paired, "member"), "<none>");

    const Computer computer{at(paired, "device.id"), at(paired, "deviceToken")};
    EXPECT_EQ(at(stateAt(computer), "device.id"), computer.id);
}

TEST_F(PairingTest, aCodeMayBeTypedWithoutItsDashAndInSmallLetters) {
    for (const bool small : {false, true}) {
        std::string typed = roomCode();
        typed.erase(4, 1);
        if (small) {
            for (char& letter : typed) {
                letter = static_cast<char>(std::tolower(letter));
            }
        }
        redeem(" " + typed);
        EXPECT_EQ(verdict(), "200");
    }
}

TEST_F(PairingTest, aMembersComputerComesWithItsMember) {
    const json::value paired = redeem(code(
        {.practice = {}, .role = DeviceRole::member, .room = {}, .member = "dr. amara okafor", .computerName = {}}));
    EXPECT_EQ(at(paired, "role"), "member");
    EXPECT_EQ(at(paired, "member.name"), "Dr. Amara Okafor");
    EXPECT_EQ(at(paired, "device.memberId"), at(paired, "member.id"));
    EXPECT_EQ(at(paired, "room"), "<none>");
}

TEST_F(PairingTest, aSharedComputerNeedsNeitherRoomNorMember) {
    const json::value paired =
        redeem(code({.practice = {}, .role = DeviceRole::shared, .room = {}, .member = {}, .computerName = "Hallway"}));
    EXPECT_EQ(at(paired, "role"), "shared");
    EXPECT_EQ(at(paired, "device.name"), "Hallway");
    EXPECT_EQ(at(paired, "room"), "<none>");
    EXPECT_EQ(at(paired, "member"), "<none>");
}

TEST_F(PairingTest, aWrongCodeIsInvalidAndALateOneHasExpired) {
    redeem("ABCD-EFGH");
    EXPECT_EQ(verdict(), "404 invalid_code");
    redeem("");
    EXPECT_EQ(verdict(), "404 invalid_code");
    redeem("ÄÖÜß-0000");
    EXPECT_EQ(verdict(), "404 invalid_code");

    const std::string late = roomCode();
    now += minutes{15};
    redeem(late);
    EXPECT_EQ(verdict(), "410 expired_code");
    now -= seconds{1};
    redeem(late);
    EXPECT_EQ(verdict(), "200");
}

TEST_F(PairingTest, aCodeWorksOnce) {
    const std::string typed = roomCode();
    redeem(typed, "First");
    EXPECT_EQ(verdict(), "200");
    redeem(typed, "Second");
    EXPECT_EQ(verdict(), "404 invalid_code");
    EXPECT_EQ(office->state().all<Device>().size(), 1U);
}

TEST_F(PairingTest, theSameComputerMayAskAgainUntilItHasComeIn) {
    const std::string typed = roomCode();
    const json::value lost = redeem(typed);
    const json::value again = redeem(typed);
    EXPECT_EQ(verdict(), "200");
    EXPECT_EQ(at(again, "device.id"), at(lost, "device.id"));
    EXPECT_NE(at(again, "deviceToken"), at(lost, "deviceToken"));

    stateAt({{}, at(lost, "deviceToken")});
    EXPECT_EQ(verdict(), "401 invalid_token");
    EXPECT_EQ(office->socketOpened(at(again, "deviceToken"), now).status, 101);
    redeem(typed);
    EXPECT_EQ(verdict(), "404 invalid_code");
}

TEST_F(PairingTest, tenWrongCodesInAMinuteCloseTheDoorForThatPeer) {
    for (int attempt = 0; attempt < 10; ++attempt) {
        redeem("ABCD-EFGH");
        EXPECT_EQ(verdict(), "404 invalid_code");
    }
    const std::string right = roomCode();
    redeem(right);
    EXPECT_EQ(verdict(), "429 too_many_attempts");
    peer = "127.0.0.2";
    redeem("ABCD-EFGH");
    EXPECT_EQ(verdict(), "404 invalid_code");
    peer = "127.0.0.1";
    now += minutes{1};
    redeem(right);
    EXPECT_EQ(verdict(), "200");
}

TEST_F(PairingTest, aSetupRequestWaitsIsApprovedAndIsCollected) {
    const json::value setup = requestSetup("Pamir");
    EXPECT_EQ(verdict(), "200");
    EXPECT_EQ(at(setup, "qrData"), "zelkovanta://setup?token=" + at(setup, "token"));
    EXPECT_EQ(at(setup, "qrPng"), "data:image/png;base64," + at(setup, "qrData"));
    EXPECT_EQ(at(setup, "expiresAt"), "2026-03-09T08:05:00.000Z");
    EXPECT_EQ(json::serialize(poll(setup)), R"({"status":"pending"})");

    const json::value approved = keep(office->approve(onlyRequest(), roomThree(), now));
    EXPECT_EQ(verdict(), "200");
    const json::value collected = poll(setup);
    EXPECT_EQ(at(collected, "status"), "approved");
    EXPECT_EQ(at(collected, "role"), "room");
    EXPECT_EQ(at(collected, "device.id"), at(approved, "device.id"));
    EXPECT_EQ(at(collected, "device.name"), "Three");
    EXPECT_EQ(at(collected, "office.slug"), "harbour");
    EXPECT_EQ(at(collected, "room.name"), "Room 3");
    stateAt({{}, at(collected, "deviceToken")});
    EXPECT_EQ(verdict(), "200");
}

TEST_F(PairingTest, anApprovedComputerCollectsAnewUntilItHasComeIn) {
    const json::value setup = requestSetup();
    (void)office->approve(onlyRequest(), roomThree(), now);
    const json::value lost = poll(setup);
    const json::value collected = poll(setup);
    EXPECT_EQ(at(collected, "device.id"), at(lost, "device.id"));
    EXPECT_EQ(office->socketOpened(at(lost, "deviceToken"), now).status, 401);
    EXPECT_EQ(office->socketOpened(at(collected, "deviceToken"), now).status, 101);
    poll(setup);
    EXPECT_EQ(verdict(), "410 expired_code");
    EXPECT_EQ(office->socketOpened(at(collected, "deviceToken"), now).status, 101);
}

TEST_F(PairingTest, aPhoneApprovesWithTheTokenOfThePicture) {
    const json::value setup = requestSetup();
    keep(office->approve(at(setup, "token"), roomThree(), now));
    EXPECT_EQ(verdict(), "200");
    EXPECT_EQ(at(poll(setup), "status"), "approved");
}

TEST_F(PairingTest, aSetupRequestLapsesAfterFiveMinutes) {
    const json::value setup = requestSetup();
    const std::string request = onlyRequest();
    now += minutes{5};
    poll(setup);
    EXPECT_EQ(verdict(), "410 expired_code");
    keep(office->approve(request, roomThree(), now));
    EXPECT_EQ(verdict(), "410 expired_code");
    now += minutes{10};
    (void)office->tick(now);
    poll(setup);
    EXPECT_EQ(verdict(), "404 invalid_code");
    EXPECT_TRUE(office->state().all<SetupRequest>().empty());
}

TEST_F(PairingTest, anUnknownClaimIsInvalid) {
    call("GET", "pair/request/zvc_guessed", {});
    EXPECT_EQ(verdict(), "404 invalid_code");
    keep(office->approve("NOSUCH", roomThree(), now));
    EXPECT_EQ(verdict(), "404 unknown_request");
}

TEST_F(PairingTest, aRequestIsApprovedOnce) {
    requestSetup();
    keep(office->approve(onlyRequest(), roomThree(), now));
    keep(office->approve(onlyRequest(), roomThree(), now));
    EXPECT_EQ(verdict(), "409 already_approved");
    EXPECT_EQ(office->state().all<Device>().size(), 1U);
}

TEST_F(PairingTest, aComputerRevokedBeforeItCameInCollectsNothing) {
    const json::value setup = requestSetup();
    const json::value approved = keep(office->approve(onlyRequest(), roomThree(), now));
    (void)office->revoke(at(approved, "device.id"), now);
    poll(setup);
    EXPECT_EQ(verdict(), "410 expired_code");
}

TEST_F(PairingTest, tooManySetupRequestsOfOnePeerAreHeldOff) {
    for (int attempt = 0; attempt < 120; ++attempt) {
        requestSetup();
        ASSERT_EQ(verdict(), "200");
    }
    requestSetup();
    EXPECT_EQ(verdict(), "429 too_many_attempts");
    now += minutes{1};
    requestSetup();
    EXPECT_EQ(verdict(), "200");
}

TEST_F(PairingTest, everyRoleWantsItsOwnPlace) {
    const auto made = [&](DeviceRole role, std::optional<std::string> room, std::optional<std::string> member) {
        keep(office->makePairingCode(
            {.practice = {}, .role = role, .room = std::move(room), .member = std::move(member), .computerName = {}},
            now));
        return verdict();
    };
    EXPECT_EQ(made(DeviceRole::room, {}, {}), "400 bad_request");
    EXPECT_EQ(made(DeviceRole::room, "Room 3", "Sofia Marino"), "400 bad_request");
    EXPECT_EQ(made(DeviceRole::room, "Room 9", {}), "404 unknown_room");
    EXPECT_EQ(made(DeviceRole::room, "Exam A", {}), "404 unknown_room");
    EXPECT_EQ(made(DeviceRole::member, {}, {}), "400 bad_request");
    EXPECT_EQ(made(DeviceRole::member, "Room 3", "Sofia Marino"), "400 bad_request");
    EXPECT_EQ(made(DeviceRole::member, {}, "Nobody"), "404 unknown_member");
    EXPECT_EQ(made(DeviceRole::shared, {}, "Sofia Marino"), "400 bad_request");
    EXPECT_EQ(made(DeviceRole::shared, "Consult", {}), "200");
}

TEST_F(PairingTest, badIntroductionsAreRefused) {
    const auto asked = [&](std::string body) {
        call("POST", "pair/request", {}, std::move(body));
        return verdict();
    };
    EXPECT_EQ(asked(""), "400 bad_request");
    EXPECT_EQ(asked("[]"), "400 bad_request");
    EXPECT_EQ(asked("{\"device\":7}"), "400 bad_request");
    EXPECT_EQ(asked(R"({"device":{"kind":"desktop_mac","name":"a","model":"b"}})"), "400 bad_request");
    EXPECT_EQ(asked(R"({"device":{"kind":"desktop_mac","name":5,"model":"b","appVersion":"1"}})"), "400 bad_request");
    EXPECT_EQ(asked(R"({"device":{"kind":"desktop_mac","name":")" + std::string(65, 'a') +
                    R"(","model":"b","appVersion":"1"}})"),
              "400 bad_request");
    EXPECT_EQ(asked(R"({"device":{"kind":"desktop_mac","name":"a","model":"b","appVersion":"1"}})"), "200");
}

TEST_F(PairingTest, noSecretIsKeptAsItIs) {
    const std::string typed = roomCode();
    const json::value setup = requestSetup();
    (void)office->approve(onlyRequest(), roomThree(), now);
    const json::value collected = poll(setup);

    std::vector<std::string> kept;
    for (const auto& [id, record] : office->state().all<PairingCode>()) {
        kept.push_back(id);
    }
    for (const auto& [id, record] : office->state().all<SetupRequest>()) {
        kept.insert(kept.end(), {id, record.tokenHash, record.claimHash});
    }
    for (const auto& [id, record] : office->state().all<Device>()) {
        kept.push_back(record.tokenHash);
    }
    for (const std::string& secret : {typed, typed.substr(0, 4) + typed.substr(5), at(setup, "token"),
                                      at(setup, "claimToken"), at(collected, "deviceToken")}) {
        EXPECT_THAT(kept, Not(Contains(HasSubstr(secret))));
    }
    EXPECT_GE(at(collected, "deviceToken").size(), 43U);  // 256 bits
}

TEST_F(PairingTest, theAdminSeesWhoWaitsButNoSecret) {
    const json::value setup = requestSetup("Pamir");
    now += seconds{7};
    requestSetup("Elbrus");
    const json::value waiting = keep(
        office->administer({.method = "GET", .path = "/admin/v1/waiting", .token = {}, .body = {}, .peer = {}}, now));
    const json::array& list = waiting.at("waiting").get_array();
    ASSERT_EQ(list.size(), 2U);
    EXPECT_EQ(at(list[0], "name"), "Pamir");
    EXPECT_EQ(at(list[0], "createdAt"), "2026-03-09T08:00:00.000Z");
    EXPECT_EQ(at(list[1], "name"), "Elbrus");
    EXPECT_THAT(answer.body, Not(HasSubstr(at(setup, "claimToken"))));
    EXPECT_THAT(answer.body, Not(HasSubstr(at(setup, "token"))));
}

}  // namespace
}  // namespace zelkovanta::office
