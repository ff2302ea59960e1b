#include "tests/office/office_fixture.h"

namespace zelkovanta::office {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class StaffTest : public OfficeTest {
protected:
    json::value setStatus(const Computer& computer, const std::string& status) {
        return call("POST", "members/me/status", computer, json::serialize(json::object{{"status", status}}));
    }
    json::value dataOfOnlyFrame(std::string_view type) {
        EXPECT_THAT(kinds(), ElementsAre(std::string(type)));
        return answer.effects.empty() ? json::value() : frameIn(answer.effects[0]).at("data");
    }

    Computer room = pairRoom("Room 3");
    Computer doctor = pairMember("Dr. Amara Okafor");
};

TEST_F(StaffTest, aMemberSetsItsStatusAndEverybodyHearsOfIt) {
    for (const char* status : {"busy", "dnd", "available"}) {
        const json::value member = setStatus(doctor, status);
        EXPECT_EQ(at(member, "status"), status);
        EXPECT_EQ(dataOfOnlyFrame("member.updated").at("member"), member);
        EXPECT_THAT(receivers(answer.effects[0]), UnorderedElementsAre(room.id, doctor.id));
    }
    setStatus(doctor, "available");
    EXPECT_EQ(verdict(), "200");
    EXPECT_THAT(kinds(), IsEmpty());
}

TEST_F(StaffTest, onlyTheThreeWordsAreAStatusAndOnlyAMemberHasOne) {
    setStatus(doctor, "Busy");
    EXPECT_EQ(verdict(), "400 bad_request");
    setStatus(room, "busy");
    EXPECT_EQ(verdict(), "403 signin_required");
}

TEST_F(StaffTest, aMemberInACooldownHearsHowLong) {
    (void)office->changeMember({}, "Dr. Amara Okafor",
                               {.onShift = false, .offShiftReason = "no_response", .cooldownMinutes = 10}, now);
    const json::value refused = setStatus(doctor, "available");
    EXPECT_EQ(verdict(), "403 in_cooldown");
    EXPECT_EQ(at(refused, "cooldownUntil"), "2026-03-09T08:10:00.000Z");

    now += minutes{10};
    EXPECT_THAT(kinds(office->tick(now)), ElementsAre("member.updated"));
    const json::value member = setStatus(doctor, "busy");
    EXPECT_EQ(verdict(), "200");
    EXPECT_EQ(at(member, "cooldownUntil"), "<none>");
    EXPECT_EQ(at(member, "offShiftReason"), "no_response");
    EXPECT_EQ(at(member, "onShift"), "false");
}

TEST_F(StaffTest, comingBackOnShiftEndsCooldownAndReason) {
    (void)office->changeMember({}, "Sofia Marino", {.onShift = false, .offShiftReason = "ill", .cooldownMinutes = 5},
                               now);
    const json::value member = keep(office->changeMember({}, "Sofia Marino", {.onShift = true}, now));
    EXPECT_EQ(dataOfOnlyFrame("member.updated").at("member"), member);
    EXPECT_EQ(at(member, "onShift"), "true");
    EXPECT_EQ(at(member, "cooldownUntil"), "<none>");
    EXPECT_EQ(at(member, "offShiftReason"), "<none>");
}

TEST_F(StaffTest, aMemberIsChangedFieldByField) {
    const json::value member = keep(office->changeMember({}, "Sofia Marino",
                                                         {.name = "Sofia Marino-Bell",
                                                          .department = "assistant",
                                                          .color = "",
                                                          .status = "dnd",
                                                          .isAdmin = true,
                                                          .alertsEnabled = false,
                                                          .alertSound = "bell"},
                                                         now));
    EXPECT_EQ(at(member, "name"), "Sofia Marino-Bell");
    EXPECT_EQ(at(member, "department"), "assistant");
    EXPECT_EQ(at(member, "color"), "<none>");
    EXPECT_EQ(at(member, "status"), "dnd");
    EXPECT_EQ(at(member, "isAdmin"), "true");
    EXPECT_EQ(at(member, "desktopAlerts.enabled"), "false");
    EXPECT_EQ(at(member, "desktopAlerts.sound"), "bell");
    EXPECT_EQ(at(member, "active"), "true");
    keep(office->changeMember({}, "Sofia Marino-Bell", {.department = "gardening"}, now));
    EXPECT_EQ(verdict(), "404 unknown_department");
    keep(office->changeMember({}, "Sofia Marino-Bell", {.name = ""}, now));
    EXPECT_EQ(verdict(), "400 bad_request");
    keep(office->changeMember({}, "Sofia Marino-Bell", {.status = "asleep"}, now));
    EXPECT_EQ(verdict(), "400 bad_request");
    keep(office->changeMember({}, "Sofia Marino-Bell", {.cooldownMinutes = -1}, now));
    EXPECT_EQ(verdict(), "400 bad_request");
}

TEST_F(StaffTest, newMembersAndRoomsComeLast) {
    const json::value member = keep(office->addMember({}, "Ada New", "nurse", now));
    EXPECT_EQ(dataOfOnlyFrame("member.updated").at("member"), member);
    const json::value added = keep(office->addRoom({}, "Room 5", now));
    const json::array rooms = dataOfOnlyFrame("rooms.updated").at("rooms").get_array();
    ASSERT_EQ(rooms.size(), 7U);
    EXPECT_EQ(rooms.back(), added);
    const json::value state = stateAt(room);
    EXPECT_EQ(state.at("rooms"), json::value(rooms));
    EXPECT_EQ(state.at("members").get_array().back(), member);
}

TEST_F(StaffTest, aRoomChangeSendsAllRooms) {
    keep(office->changeRoom({}, "Room 3", {.name = "Room Three", .active = false, .beaconUuid = "b-1"}, now));
    const json::array rooms = dataOfOnlyFrame("rooms.updated").at("rooms").get_array();
    ASSERT_EQ(rooms.size(), 6U);
    EXPECT_EQ(at(rooms[2], "name"), "Room Three");
    EXPECT_EQ(at(rooms[2], "active"), "false");
    EXPECT_EQ(at(rooms[2], "beaconUuid"), "b-1");
    keep(office->changeRoom({}, "Room 3", {.active = true}, now));
    EXPECT_EQ(verdict(), "404 unknown_room");
}

TEST_F(StaffTest, aTypeChangeSendsAllTypes) {
    keep(office->changeType({}, "step_out", {.label = "Step out", .priority = 35, .active = false}, now));
    const json::array types = dataOfOnlyFrame("types.updated").at("signalTypes").get_array();
    ASSERT_EQ(types.size(), 6U);
    EXPECT_EQ(at(types[2], "key"), "step_out");
    EXPECT_EQ(at(types[2], "priority"), "35");
    EXPECT_EQ(at(types[2], "active"), "false");
}

TEST_F(StaffTest, aPracticeChangeSendsTheOffice) {
    const json::value changed = keep(office->changePractice(
        "harbour", {.name = "Harbour", .autoExpireMinutes = 0, .requireSignedInSender = true}, now));
    EXPECT_EQ(dataOfOnlyFrame("office.updated").at("office"), changed);
    EXPECT_EQ(at(changed, "name"), "Harbour");
    EXPECT_EQ(at(changed, "settings.requireSignedInSender"), "true");
    keep(office->changePractice("harbour", {.autoExpireMinutes = -5}, now));
    EXPECT_EQ(verdict(), "400 bad_request");
}

TEST_F(StaffTest, anAnnouncedReleaseReachesEveryPracticeAndEverySnapshot) {
    const Computer elsewhere = pairRoom("Exam A", "Lakeside Family Practice");
    keep(office->announce({.id = {},
                           .macosVersion = "1.4.0",
                           .macosBuild = 140,
                           .macosUrl = "https://updates.zelkovanta.example/a.dmg",
                           .macosSha256 = "ab12",
                           .windowsVersion = "1.3"},
                          now));
    const json::value release = dataOfOnlyFrame("desktop.release").at("desktopRelease");
    EXPECT_THAT(receivers(answer.effects[0]), UnorderedElementsAre(room.id, doctor.id, elsewhere.id));
    EXPECT_EQ(at(release, "macos.version"), "1.4.0");
    EXPECT_EQ(at(release, "macos.build"), "140");
    EXPECT_EQ(at(release, "macos.sha256"), "ab12");
    EXPECT_EQ(at(release, "windows.version"), "1.3");
    EXPECT_EQ(stateAt(elsewhere).at("desktopRelease"), release);
    (void)office->announce({}, now);
    EXPECT_EQ(at(stateAt(elsewhere), "desktopRelease"), "<none>");
}

TEST_F(StaffTest, aReleaseNobodyCouldReadIsRefused) {
    for (const char* url : {"", "ftp://x/y", "https://", "https://a b", "javascript:1", "https://x/\x01"}) {
        keep(office->announce(
            {.id = {}, .macosVersion = "1", .macosBuild = 1, .macosUrl = url, .macosSha256 = {}, .windowsVersion = {}},
            now));
        EXPECT_EQ(verdict(), "400 bad_request") << url;
    }
    keep(office->announce(
        {.id = {}, .macosVersion = "1", .macosBuild = {}, .macosUrl = {}, .macosSha256 = {}, .windowsVersion = {}},
        now));
    EXPECT_EQ(verdict(), "400 bad_request");
    EXPECT_TRUE(office->state().all<Release>().empty());
}

TEST_F(StaffTest, aNameThatTwoBearMustBeReplacedByAnId) {
    const std::string id = at(keep(office->addMember({}, "Sofia Marino", "nurse", now)), "id");
    keep(office->changeMember({}, "Sofia Marino", {.status = "busy"}, now));
    EXPECT_EQ(verdict(), "409 ambiguous_member");
    keep(office->changeMember({}, id, {.status = "busy"}, now));
    EXPECT_EQ(verdict(), "200");
}

}  // namespace
}  // namespace zelkovanta::office
