#include "alerts/room_notice.h"

#include "tests/alerts/alert_records.h"

#include <optional>
#include <string>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelkovanta::alerts {
namespace {

using records::Signal;
using support::makeSignal;
using support::makeSignalThatIs;

const platform::KeysAsTexts keys;

Signal acknowledgedBy(std::string memberId) {
    return makeSignal("s", [&](Signal& signal) {
        signal.status = "acknowledged";
        signal.acknowledgedBy = std::move(memberId);
    });
}

struct RoomNoticeTest : testing::Test {
    store::StoreState state = stateOfRoom();
    Signal waiting = makeSignal("s");

    std::optional<RoomNotice> noticeOf(const Signal& signal, const Signal* previous) const {
        return noticeOfUpdate(state, signal, previous, keys);
    }
};

TEST_F(RoomNoticeTest, whoeverIsOnTheWayIsToldAtTheTransition) {
    EXPECT_EQ(noticeOf(acknowledgedBy("member-2"), &waiting),
              RoomNotice(OnTheWay{.providerName = "Name of member-2", .typeLabel = "Label of type-ready"}));
}

TEST_F(RoomNoticeTest, onlyTheStepFromWaitingToAcknowledgedTellsOfTheWay) {
    const Signal acknowledged = acknowledgedBy("member-2");
    EXPECT_FALSE(noticeOf(acknowledged, &acknowledged));
    EXPECT_FALSE(noticeOf(acknowledged, nullptr));
    for (const std::string status : {"done", "canceled", "expired", "Waiting", ""}) {
        const Signal previous = makeSignalThatIs(status, "s");
        EXPECT_FALSE(noticeOf(acknowledged, &previous)) << status;
    }
}

TEST_F(RoomNoticeTest, theProviderIsWhoAcknowledgedElseWhoWasAskedElseNobody) {
    const auto nameFor = [this](std::optional<std::string> by, std::optional<std::string> asked) {
        const auto notice = noticeOf(makeSignal("s",
                                                [&](Signal& signal) {
                                                    signal.status = "acknowledged";
                                                    signal.acknowledgedBy = by;
                                                    signal.providerId = asked;
                                                }),
                                     &waiting);
        return std::get<OnTheWay>(*notice).providerName;
    };
    EXPECT_EQ(nameFor("member-2", "member-1"), "Name of member-2");
    EXPECT_EQ(nameFor("gone", "member-1"), "Name of member-1");
    EXPECT_EQ(nameFor(std::nullopt, "member-1"), "Name of member-1");
    EXPECT_EQ(nameFor("gone", "gone"), std::nullopt);
    EXPECT_EQ(nameFor(std::nullopt, std::nullopt), std::nullopt);
}

TEST_F(RoomNoticeTest, anUnknownTypeIsReady) {
    state.signalTypes.clear();
    EXPECT_EQ(std::get<OnTheWay>(*noticeOf(acknowledgedBy("member-2"), &waiting)).typeLabel, "Ready");
}

TEST_F(RoomNoticeTest, doneIsToldEveryTimeWhateverWasBefore) {
    Signal done = makeSignalThatIs("done", "s");
    done.clearedBy = "ble";
    const RoomNotice expected{AllSet{.roomName = "Name of room-1", .clearedBy = "ble"}};
    EXPECT_EQ(noticeOf(done, &waiting), expected);
    EXPECT_EQ(noticeOf(done, &done), expected);
    EXPECT_EQ(noticeOf(done, nullptr), expected);
}

TEST_F(RoomNoticeTest, aRoomThatIsNotInTheListIsThisRoom) {
    state.rooms.clear();
    EXPECT_EQ(noticeOf(makeSignalThatIs("done", "s"), nullptr),
              RoomNotice(AllSet{.roomName = "This room", .clearedBy = {}}));
}

TEST_F(RoomNoticeTest, noOtherStatusIsTold) {
    for (const std::string status : {"waiting", "canceled", "expired", "Done", "of a later server", ""}) {
        EXPECT_FALSE(noticeOf(makeSignalThatIs(status, "s"), &waiting)) << status;
    }
}

TEST_F(RoomNoticeTest, onlyTheComputerOfTheSignalsRoomTells) {
    const Signal done = makeSignalThatIs("done", "s");
    for (const auto role : {records::DeviceRole::member, records::DeviceRole::shared}) {
        state.role = role;
        EXPECT_FALSE(noticeOf(done, &waiting));
    }
    state.role = records::DeviceRole::room;
    EXPECT_TRUE(noticeOf(done, &waiting));
    state.device->roomId = "room-2";
    EXPECT_FALSE(noticeOf(done, &waiting));
    state.device->roomId.reset();
    EXPECT_FALSE(noticeOf(done, &waiting));
    state.device.reset();
    EXPECT_FALSE(noticeOf(done, &waiting));
}

platform::NotificationContent notice(std::string title, std::string body) {
    return {.title = std::move(title),
            .body = std::move(body),
            .sound = platform::DefaultSound{},
            .threadIdentifier = {},
            .categoryIdentifier = {},
            .userInfo = {}};
}

TEST(OnTheWayContent, namesTheProviderAndTheType) {
    EXPECT_EQ(onTheWayContent("Dr. Ito", "Ready", keys), notice("Dr. Ito is on the way", "Ready"));
    EXPECT_EQ(onTheWayContent(std::nullopt, "Ready", keys), notice("The doctor is on the way", "Ready"));
    EXPECT_EQ(onTheWayContent("", "", keys), notice(" is on the way", ""));
}

TEST(OnTheWayContent, aNameIsNoPattern) {
    EXPECT_EQ(onTheWayContent("%@ {room} %lld", "%@", keys), notice("%@ {room} %lld is on the way", "%@"));
}

TEST(AllSetContent, tellsWhyTheSignalIsOver) {
    const auto bodyFor = [](const std::optional<std::string>& clearedBy) {
        return allSetContent("Room 3", clearedBy, keys).body;
    };
    EXPECT_EQ(allSetContent("Room 3", "ble", keys),
              notice("Room 3: all set", "Cleared automatically: the provider arrived."));
    EXPECT_EQ(bodyFor("timeout"), "The signal expired.");
    for (const std::string clearedBy : {"member-1", "", "BLE", "Timeout", "of a later server"}) {
        EXPECT_EQ(bodyFor(clearedBy), "The signal was marked done.") << clearedBy;
    }
    EXPECT_EQ(bodyFor(std::nullopt), "The signal was marked done.");
}

TEST(RoomNoticeTexts, areLookedUp) {
    const BracketedTexts texts;
    EXPECT_EQ(onTheWayContent(std::nullopt, "Ready", texts).title, "<<The doctor> is on the way>");
    EXPECT_EQ(allSetContent("Room 3", std::nullopt, texts),
              notice("<Room 3: all set>", "<The signal was marked done.>"));
    auto state = stateOfRoom();
    state.rooms.clear();
    EXPECT_EQ(noticeOfUpdate(state, makeSignalThatIs("done", "s"), nullptr, texts),
              RoomNotice(AllSet{.roomName = "<This room>", .clearedBy = {}}));
}

}  // namespace
}  // namespace zelkovanta::alerts
