#include "alerts/new_signal.h"

#include "alerts/signal_notification.h"
#include "store/queues.h"
#include "tests/alerts/alert_records.h"

#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelkovanta::alerts {
namespace {

using platform::NotificationSound;
using platform::SoundFile;
using records::DesktopAlerts;
using records::Member;
using records::Signal;
using support::makeSignal;
using support::makeSignalTo;
using support::makeSignalWithNote;

const platform::KeysAsTexts keys;

std::optional<NotificationSound> clip(std::string file) {
    return SoundFile{std::move(file)};
}

struct NewSignalTest : testing::Test {
    store::StoreState state = stateOfMember();
    Member& me = state.members.front();

    std::optional<platform::NotificationRequest> requestFor(const Signal& signal) const {
        return requestForNewSignal(state, signal, keys);
    }
    platform::NotificationContent contentFor(const Signal& signal) const {
        return requestFor(signal).value_or(platform::NotificationRequest{}).content;
    }
    std::optional<NotificationSound> soundWith(const std::string& name) {
        me.desktopAlerts = DesktopAlerts{.enabled = {}, .sound = name};
        EXPECT_TRUE(requestFor(makeSignal("s"))) << name;
        return contentFor(makeSignal("s")).sound;
    }
};

TEST_F(NewSignalTest, aNewSignalIsToldWithTypeRoomRequesterAndNote) {
    state.office->vertical = "veterinary";
    state.signalTypes.front().key = "ready";
    const auto signal = makeSignal("s 1", [](Signal& adjusted) {
        adjusted.requesterId = "member-3";
        adjusted.note = "Bring the X-ray";
    });
    EXPECT_EQ(requestFor(signal), (platform::NotificationRequest{
                                      .identifier = "zelkovanta.signal.s 1",
                                      .content = {.title = "Name of room-1 · signal-ready-veterinary",
                                                  .body = "Name of member-3 · Bring the X-ray",
                                                  .sound = SoundFile{"chime.caf"},
                                                  .threadIdentifier = "room-1",
                                                  .categoryIdentifier = "READY_SIGNAL",
                                                  .userInfo = {{"signalId", "s 1"}, {"memberId", "member-1"}}}}));
}

TEST_F(NewSignalTest, whatTheOfficeLacksIsToldInGeneralWords) {
    state.signalTypes.clear();
    state.rooms.clear();
    state.office.reset();
    const auto content = contentFor(makeSignal("s"));
    EXPECT_EQ(content.title, "A room · Ready");
    EXPECT_EQ(content.body, "Ready");
    EXPECT_EQ(content.threadIdentifier, "room-1");
}

TEST_F(NewSignalTest, wordsOfTheProgramAreLookedUpAndThoseOfTheOfficeAreNot) {
    state.signalTypes.clear();
    state.rooms.clear();
    const auto request = requestForNewSignal(state, makeSignalWithNote("Note", "s"), BracketedTexts{});
    ASSERT_TRUE(request);
    EXPECT_EQ(request->content.title, "<A room> · <Ready>");
    EXPECT_EQ(request->content.body, "Note");
}

TEST_F(NewSignalTest, anOfficesOwnTypeShowsItsLabelAndABuiltInOneTheWordsOfTheTrade) {
    EXPECT_EQ(contentFor(makeSignal("s")).title, "Name of room-1 · Label of type-ready");
    state.signalTypes.front().key = "urgent";
    EXPECT_EQ(contentFor(makeSignal("s")).title, "Name of room-1 · signal-urgent");
}

TEST_F(NewSignalTest, anEmptyListOfRecipientsReachesNobody) {
    me.onShift = true;
    EXPECT_FALSE(requestFor(makeSignal("s", [](Signal& signal) { signal.providerIds.emplace(); })));
}

TEST_F(NewSignalTest, nobodyIsAlertedOfTheirOwnCall) {
    EXPECT_FALSE(requestFor(makeSignal("s", [](Signal& signal) {
        signal.requesterId = "member-1";
        signal.providerId = "member-1";
    })));
}

TEST_F(NewSignalTest, whoeverIsNotToBeDisturbedOrHasAlertsOffIsLeftAloneAndStillSeesTheQueue) {
    const auto signal = makeSignalTo("member-1", "s");
    state.signals = {signal};
    me.status = "dnd";
    EXPECT_FALSE(requestFor(signal));
    EXPECT_EQ(store::receivedSignals(state).size(), 1U);
    me.status = "available";
    me.desktopAlerts = DesktopAlerts{.enabled = false, .sound = "bell"};
    EXPECT_FALSE(requestFor(signal));
    EXPECT_EQ(store::receivedSignals(state).size(), 1U);
    me.desktopAlerts->enabled = true;
    EXPECT_TRUE(requestFor(signal));
}

TEST_F(NewSignalTest, theSoundIsTheMembersChoiceOrTheChime) {
    EXPECT_EQ(soundWith("none"), std::nullopt);
    for (const std::string name : {"chime", "bell", "blip", "pulse"}) {
        EXPECT_EQ(soundWith(name), clip(name + ".caf"));
    }
    for (const std::string name : {"default", "", "Bell", "gong", "bell ", "bell.caf", "../../etc/passwd", "None"}) {
        EXPECT_EQ(soundWith(name), clip("chime.caf")) << name;
    }
    me.desktopAlerts = DesktopAlerts{};
    EXPECT_EQ(contentFor(makeSignal("s")).sound, clip("chime.caf"));
    me.desktopAlerts.reset();
    EXPECT_EQ(contentFor(makeSignal("s")).sound, clip("chime.caf"));
}

TEST_F(NewSignalTest, theStatusOfTheSignalPlaysNoPart) {
    for (const std::string status : {"waiting", "acknowledged", "done", "canceled", "expired", "of a later server"}) {
        EXPECT_TRUE(requestFor(support::makeSignalThatIs(status, "s"))) << status;
    }
}

TEST_F(NewSignalTest, aCallToADepartmentAlertsTheProvidersOnly) {
    const auto toAssistants = makeSignal("s", [](Signal& signal) { signal.toDepartment = "assistant"; });
    EXPECT_TRUE(requestFor(toAssistants));
    me.department = "assistant";
    EXPECT_FALSE(requestFor(toAssistants));
}

TEST_F(NewSignalTest, anUnknownBoundMemberIsNobody) {
    state.device->memberId = "gone";
    state.device->signedInMemberId = "member-1";
    EXPECT_FALSE(requestFor(makeSignalTo("gone", "s")));
    EXPECT_FALSE(requestFor(makeSignalTo("member-1", "s")));
}

TEST(NewSignal, aWorkstationAlertsOnlyForTheConfirmedRoom) {
    auto state = stateOfWorkstation();
    const auto inRoom = [](std::string room) {
        return makeSignal("s", [&](Signal& signal) { signal.roomId = std::move(room); });
    };
    EXPECT_TRUE(requestForNewSignal(state, inRoom("room-1"), keys));
    EXPECT_FALSE(requestForNewSignal(state, inRoom("room-2"), keys));
    state.rooms.front().active = false;
    EXPECT_FALSE(requestForNewSignal(state, inRoom("room-1"), keys));
    state.rooms.front().active = true;
    state.flexibleRoomSession.signedInMemberId = "member-2";
    EXPECT_FALSE(requestForNewSignal(state, inRoom("room-1"), keys));
}

TEST(NewSignal, aRoomsComputerIsAlertedOnlyForWhoeverIsSignedIn) {
    auto state = stateOfRoom();
    EXPECT_FALSE(requestForNewSignal(state, makeSignal("s"), keys));
    state.device->signedInMemberId = "member-2";
    const auto request = requestForNewSignal(state, makeSignal("s"), keys);
    ASSERT_TRUE(request);
    EXPECT_EQ(*textIn(request->content.userInfo, "memberId"), "member-2");
}

TEST(NewSignal, withoutADeviceNobodyIsAlerted) {
    auto state = stateOfMember();
    state.device.reset();
    EXPECT_FALSE(requestForNewSignal(state, makeSignal("s"), keys));
}

TEST(NotificationBody, nameAndNoteAndWhatIsLeftOfThem) {
    struct Row {
        std::optional<std::string> name, note;
        std::string body;
    };
    const std::vector<Row> rows{
        {std::nullopt, std::nullopt, "Ready"},
        {"", std::nullopt, "Ready"},
        {std::nullopt, "", "Ready"},
        {"", "", "Ready"},
        {"Ann", std::nullopt, "Ann"},
        {"Ann", "", "Ann"},
        {std::nullopt, "Note", "Note"},
        {"", "Note", "Note"},
        {"Ann", "Note", "Ann · Note"},
        {"Ann", " ", "Ann ·  "},
        {" ", "Note", "  · Note"},
        {std::nullopt, "  a\n b ", "  a\n b "},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(notificationBody(row.name, row.note, "Ready"), row.body);
    }
    const std::string longNote(100'000, 'n');
    EXPECT_EQ(notificationBody("Ann", longNote, "Ready"), "Ann · " + longNote);
}

TEST(ResolveDesktopAlerts, absentMeansOn) {
    EXPECT_EQ(resolveDesktopAlerts(std::nullopt), (ResolvedAlerts{.enabled = true, .sound = "chime"}));
    EXPECT_EQ(resolveDesktopAlerts(DesktopAlerts{}), (ResolvedAlerts{.enabled = true, .sound = "chime"}));
    EXPECT_EQ(resolveDesktopAlerts(DesktopAlerts{.enabled = false, .sound = "none"}),
              (ResolvedAlerts{.enabled = false, .sound = std::nullopt}));
    EXPECT_EQ(resolveDesktopAlerts(DesktopAlerts{.enabled = true, .sound = "pulse"}),
              (ResolvedAlerts{.enabled = true, .sound = "pulse"}));
}

}  // namespace
}  // namespace zelkovanta::alerts
