#include "store/queues.h"

#include "tests/support/office_records.h"

#include <chrono>
#include <ctime>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelkovanta::store {
namespace {

using records::DeviceRole;
using records::Member;
using records::Room;
using records::Signal;
using records::SignalType;
using support::makeDevice;
using support::makeDeviceOfMember;
using support::makeDeviceOfRoom;
using support::makeDeviceWithSignIn;
using support::makeInactiveRoom;
using support::makeMember;
using support::makeOffice;
using support::makeOfficeThatRequiresSignIn;
using support::makeRoom;
using support::makeSignal;
using support::makeSignalThatIs;
using support::makeSignalTo;
using support::makeType;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::string> idsOf(const auto& list) {
    std::vector<std::string> ids;
    for (const auto* record : list) {
        ids.push_back(record->id);
    }
    return ids;
}

Signal makeSignalAt(std::string createdAt, std::string id, std::string typeId = "type-ready") {
    return makeSignal(std::move(id), [&](Signal& signal) {
        signal.createdAt = std::move(createdAt);
        signal.typeId = std::move(typeId);
    });
}

struct QueuesTest : testing::Test {
    StoreState state;

    QueuesTest() {
        state.isPaired = true;
        state.office = makeOffice("office-1");
        state.members = {makeMember("member-1"), makeMember("member-2")};
        state.rooms = {makeRoom("room-1"), makeRoom("room-2")};
        state.signalTypes = {makeType("type-ready", 10)};
        state.device = makeDeviceOfRoom("room-1");
    }

    std::vector<std::string> sortedIds() const { return idsOf(sortedActiveSignals(state.signalTypes, state.signals)); }
};

TEST_F(QueuesTest, aHigherPriorityGoesFirstAndAmongEqualsTheOldest) {
    state.signalTypes = {makeType("calm", 1), makeType("urgent", 100)};
    state.signals = {makeSignalAt("2026-01-02T08:00:03Z", "calm-new", "calm"),
                     makeSignalAt("2026-01-02T08:00:04Z", "urgent-new", "urgent"),
                     makeSignalAt("2026-01-02T08:00:01Z", "calm-old", "calm"),
                     makeSignalAt("2026-01-02T08:00:02Z", "urgent-old", "urgent")};
    EXPECT_THAT(sortedIds(), ElementsAre("urgent-old", "urgent-new", "calm-old", "calm-new"));
}

TEST_F(QueuesTest, anUnknownTypeCountsAsZeroBetweenPositiveAndNegativePriorities) {
    state.signalTypes = {makeType("below", -1), makeType("above", 1), makeType("zero", 0)};
    state.signals = {makeSignalAt("1", "below", "below"), makeSignalAt("3", "unknown", "never heard of"),
                     makeSignalAt("2", "zero", "zero"), makeSignalAt("4", "above", "above")};
    EXPECT_THAT(sortedIds(), ElementsAre("above", "zero", "unknown", "below"));
}

TEST_F(QueuesTest, extremePrioritiesCompareWithoutOverflow) {
    state.signalTypes = {makeType("lowest", std::numeric_limits<std::int64_t>::min()),
                         makeType("highest", std::numeric_limits<std::int64_t>::max()), makeType("minus", -1)};
    state.signals = {makeSignalAt("1", "lowest", "lowest"), makeSignalAt("1", "minus", "minus"),
                     makeSignalAt("1", "highest", "highest")};
    EXPECT_THAT(sortedIds(), ElementsAre("highest", "minus", "lowest"));
}

TEST_F(QueuesTest, equalInPriorityAndTimeKeepTheOrderGiven) {
    state.signals = {makeSignal("c"), makeSignal("a"), makeSignal("b")};
    EXPECT_THAT(sortedIds(), ElementsAre("c", "a", "b"));
}

TEST_F(QueuesTest, timesCompareAsPlainTextAndAreNeverParsed) {
    // By the clock the second one is older; as a text the first one is smaller.
    state.signals = {makeSignalAt("2026-01-02T09:00:00+09:00", "later text"),
                     makeSignalAt("2026-01-02T08:00:00Z", "smaller text"), makeSignalAt("", "empty")};
    EXPECT_THAT(sortedIds(), ElementsAre("empty", "smaller text", "later text"));
}

TEST_F(QueuesTest, theOrderOfTheTypesPlaysNoPartInTheQueue) {
    state.signalTypes = {makeType("first", 1, [](SignalType& type) { type.sortOrder = 9; }),
                         makeType("second", 1, [](SignalType& type) { type.sortOrder = 1; })};
    state.signals = {makeSignalAt("1", "a", "first"), makeSignalAt("2", "b", "second")};
    EXPECT_THAT(sortedIds(), ElementsAre("a", "b"));
}

TEST_F(QueuesTest, aTypeThatIsNotActiveStillGivesItsPriority) {
    state.signalTypes.push_back(makeType("retired", 99, [](SignalType& type) { type.active = false; }));
    state.signals = {makeSignalAt("1", "ready"), makeSignalAt("2", "retired", "retired")};
    EXPECT_THAT(sortedIds(), ElementsAre("retired", "ready"));
}

TEST_F(QueuesTest, onlyWaitingAndAcknowledgedAreActiveAndByExactText) {
    for (const std::string status :
         {"done", "canceled", "expired", "cancelled", "Waiting", "waiting ", "", "acknowledged", "waiting"}) {
        state.signals.push_back(makeSignalThatIs(status, status));
    }
    EXPECT_THAT(sortedIds(), ElementsAre("acknowledged", "waiting"));
}

TEST_F(QueuesTest, twoTypesWithOneIdEndTheProcess) {
    state.signalTypes = {makeType("twice", 1), makeType("once", 1), makeType("twice", 2)};
    const std::string fault = "Duplicate values for key: 'twice'";
    EXPECT_DEATH(static_cast<void>(sortedIds()), fault);
    EXPECT_DEATH(static_cast<void>(personalQueue(state, "member-1")), fault);
    EXPECT_DEATH(static_cast<void>(personalSignalIds(state, "member-1")), fault);
    EXPECT_DEATH(static_cast<void>(sentSignals(state)), fault);
    EXPECT_DEATH(static_cast<void>(queuePosition(state, "nothing")), fault);
    state.device = makeDeviceOfRoom("room-1");
    ASSERT_EQ(activeMember(state), nullptr);
    EXPECT_DEATH(static_cast<void>(activeQueueCount(state)), fault) << "of the office";
    state.device = makeDeviceOfMember("member-1");
    ASSERT_NE(activeMember(state), nullptr);
    EXPECT_DEATH(static_cast<void>(activeQueueCount(state)), fault) << "of a member";
    EXPECT_DEATH(static_cast<void>(receivedSignals(state)), fault);
}

TEST_F(QueuesTest, aListOfFortyThousandIsSortedWithoutSquareWork) {
    const auto seconds = [](std::size_t count) {
        const std::vector<SignalType> types{makeType("calm", 1), makeType("urgent", 2)};
        std::vector<Signal> signals;
        for (std::size_t index = 0; index < count; ++index) {
            signals.push_back(makeSignalAt(std::to_string(index * 7919 % count), std::to_string(index),
                                           index % 2 == 0 ? "calm" : "urgent"));
        }
        std::clock_t best = std::numeric_limits<std::clock_t>::max();
        for (int round = 0; round < 5; ++round) {
            const std::clock_t begin = std::clock();
            EXPECT_EQ(sortedActiveSignals(types, signals).size(), count);
            best = std::min(best, std::clock() - begin);
        }
        return static_cast<double>(best);
    };
    // Four times the signals: n log n costs 4.6 times as much, a square 16 times.
    EXPECT_LT(seconds(40'000), 10 * (seconds(10'000) + 200));
}

struct IsActionableTest : testing::Test {
    static bool actionable(const Signal& signal, Shift shift = Shift::on, Provider provider = Provider::yes) {
        return isActionable(signal, "me", shift, provider);
    }
};

TEST_F(IsActionableTest, whatIsNotActiveIsNoBodys) {
    for (const std::string status : {"done", "canceled", "expired", "unheard"}) {
        EXPECT_FALSE(
            actionable(makeSignal("s", [&](Signal& signal) { signal.status = status, signal.providerId = "me"; })));
    }
}

TEST_F(IsActionableTest, nobodyReceivesTheirOwnCall) {
    EXPECT_FALSE(actionable(makeSignal("open", [](Signal& signal) { signal.requesterId = "me"; })));
    EXPECT_FALSE(
        actionable(makeSignal("to me", [](Signal& signal) { signal.requesterId = "me", signal.providerId = "me"; })));
    EXPECT_FALSE(actionable(makeSignal("to me and others", [](Signal& signal) {
        signal.requesterId = "me", signal.providerIds = std::vector<std::string>{"me", "b"};
    })));
}

TEST_F(IsActionableTest, aListOfRecipientsDecidesAloneEvenWhenEmpty) {
    const auto withList = [](std::vector<std::string> list) {
        return makeSignal("s", [&](Signal& signal) { signal.providerId = "me", signal.providerIds = std::move(list); });
    };
    EXPECT_FALSE(actionable(withList({})));
    EXPECT_FALSE(actionable(withList({"a", "b"})));
    EXPECT_TRUE(actionable(withList({"a", "me"})));
    EXPECT_TRUE(isActionable(withList({"a", "me"}), "a", Shift::off, Provider::no));
}

TEST_F(IsActionableTest, aSingleRecipientIsTheOnlyOne) {
    EXPECT_TRUE(actionable(makeSignalTo("me", "s"), Shift::off, Provider::no));
    EXPECT_FALSE(actionable(makeSignalTo("somebody else", "s")));
}

TEST_F(IsActionableTest, anOpenCallGoesToProvidersOnShift) {
    EXPECT_TRUE(actionable(makeSignal("open"), Shift::on, Provider::yes));
    EXPECT_FALSE(actionable(makeSignal("open"), Shift::off, Provider::yes));
    EXPECT_FALSE(actionable(makeSignal("open"), Shift::on, Provider::no));
    EXPECT_FALSE(actionable(makeSignal("open"), Shift::off, Provider::no));
}

TEST_F(IsActionableTest, theAddressedDepartmentTakesNoPart) {
    const Signal signal = makeSignal("s", [](Signal& adjusted) { adjusted.toDepartment = "front desk"; });
    EXPECT_TRUE(actionable(signal, Shift::on, Provider::yes));
    EXPECT_FALSE(actionable(signal, Shift::on, Provider::no));
}

TEST_F(IsActionableTest, whatAColleagueTookLeavesMyQueue) {
    const auto acknowledgedBy = [](std::optional<std::string> who) {
        return makeSignal("s", [&](Signal& signal) { signal.status = "acknowledged", signal.acknowledgedBy = who; });
    };
    EXPECT_FALSE(actionable(acknowledgedBy("a colleague")));
    EXPECT_TRUE(actionable(acknowledgedBy("me")));
    EXPECT_TRUE(actionable(acknowledgedBy(std::nullopt)));
}

TEST_F(IsActionableTest, whoAcknowledgedIsNotAskedWhileWaiting) {
    EXPECT_TRUE(actionable(makeSignal("s", [](Signal& signal) { signal.acknowledgedBy = "a colleague"; })));
}

TEST_F(QueuesTest, theActiveMemberIsTheOneBoundElseTheOneSignedIn) {
    EXPECT_EQ(activeMember(state), nullptr);
    state.device = makeDeviceWithSignIn("member-2");
    EXPECT_EQ(activeMember(state), &state.members[1]);
    EXPECT_EQ(signedInMember(state), &state.members[1]);
    EXPECT_EQ(pairedMember(state), nullptr);
    state.device->memberId = "member-1";
    EXPECT_EQ(activeMember(state), &state.members[0]);
    EXPECT_EQ(pairedMember(state), &state.members[0]);
}

TEST_F(QueuesTest, aComputerBoundToAnUnknownMemberStillIgnoresWhoIsSignedIn) {
    state.device = makeDeviceOfMember("gone");
    state.device->signedInMemberId = "member-2";
    EXPECT_EQ(activeMember(state), nullptr);
}

TEST_F(QueuesTest, withoutADeviceNobodyIsActiveAndNoRoomIsPaired) {
    state.device.reset();
    EXPECT_EQ(activeMember(state), nullptr);
    EXPECT_EQ(pairedMember(state), nullptr);
    EXPECT_EQ(signedInMember(state), nullptr);
    EXPECT_EQ(pairedRoom(state), nullptr);
}

TEST_F(QueuesTest, thePairedRoomIsTheOneThatTheDeviceNames) {
    EXPECT_EQ(pairedRoom(state), &state.rooms[0]);
    state.device->roomId = "gone";
    EXPECT_EQ(pairedRoom(state), nullptr);
    state.device->roomId.reset();
    EXPECT_EQ(pairedRoom(state), nullptr);
}

TEST_F(QueuesTest, lookUpsGiveTheFirstMatchOrNothing) {
    state.rooms.push_back(makeRoom("room-1", [](Room& room) { room.name = "a second one"; }));
    EXPECT_EQ(roomById(state, "room-1"), &state.rooms[0]);
    EXPECT_EQ(roomById(state, "gone"), nullptr);
    EXPECT_EQ(signalTypeById(state, "type-ready"), &state.signalTypes[0]);
    EXPECT_EQ(signalTypeById(state, "gone"), nullptr);
    EXPECT_EQ(memberById(state, "member-2"), &state.members[1]);
    EXPECT_EQ(memberById(state, "gone"), nullptr);
    EXPECT_EQ(memberById(state, std::nullopt), nullptr);
}

TEST_F(QueuesTest, anOpenCallGoesToEveryProviderOnShiftButItsRequester) {
    state.members = {makeMember("on shift", [](Member& member) { member.onShift = true; }),
                     makeMember("not said"),
                     makeMember("off shift", [](Member& member) { member.onShift = false; }),
                     makeMember("assistant", [](Member& member) { member.department = "assistant"; }),
                     makeMember("other case", [](Member& member) { member.department = "Provider"; }),
                     makeMember("requester"),
                     makeMember("not active", [](Member& member) { member.active = false; })};
    state.signals = {makeSignal("open", [](Signal& signal) { signal.requesterId = "requester"; })};
    std::vector<std::string> receivers;
    for (const Member& member : state.members) {
        if (!personalQueue(state, member.id).empty()) {
            receivers.push_back(member.id);
        }
    }
    EXPECT_THAT(receivers, ElementsAre("on shift", "not said", "not active"));
}

TEST_F(QueuesTest, anUnknownMemberReceivesWhatNamesItAndNoOpenCalls) {
    state.signals = {makeSignal("open"), makeSignalTo("stranger", "named"), makeSignal("listed", [](Signal& signal) {
                         signal.providerIds = std::vector<std::string>{"stranger"};
                     })};
    EXPECT_THAT(idsOf(personalQueue(state, "stranger")), ElementsAre("named", "listed"));
}

TEST_F(QueuesTest, aPersonalQueueIsInQueueOrderAndItsIdsAreTheSameSignals) {
    state.signalTypes = {makeType("calm", 1), makeType("urgent", 2)};
    state.signals = {makeSignalAt("2", "b", "calm"), makeSignalAt("1", "a", "calm"), makeSignalAt("3", "c", "urgent"),
                     makeSignalTo("member-2", "not mine")};
    EXPECT_THAT(idsOf(personalQueue(state, "member-1")), ElementsAre("c", "a", "b"));
    EXPECT_THAT(personalSignalIds(state, "member-1"), testing::UnorderedElementsAre("a", "b", "c"));
}

TEST_F(QueuesTest, aRoomsComputerWithoutMemberReceivesNothingYetCountsTheOffice) {
    state.signals = {makeSignal("open"), makeSignalTo("member-2", "to somebody"), makeSignalThatIs("done", "over")};
    EXPECT_THAT(receivedSignals(state), IsEmpty());
    EXPECT_THAT(receivedSignals(state, "room-1"), IsEmpty());
    EXPECT_EQ(activeQueueCount(state), 2U);
}

TEST_F(QueuesTest, receivedSignalsAreTheActiveMembersWithinOneRoomIfGiven) {
    state.device = makeDeviceWithSignIn("member-1");
    state.signals = {makeSignal("here"), makeSignal("there", [](Signal& signal) { signal.roomId = "room-2"; }),
                     makeSignalTo("member-2", "not mine")};
    EXPECT_THAT(idsOf(receivedSignals(state)), ElementsAre("here", "there"));
    EXPECT_THAT(idsOf(receivedSignals(state, "room-2")), ElementsAre("there"));
    EXPECT_THAT(idsOf(receivedSignals(state, "room-3")), IsEmpty());
}

TEST_F(QueuesTest, sentSignalsAreMineAndThoseFromThisComputersRoom) {
    state.device = makeDeviceOfRoom("room-1");
    state.device->signedInMemberId = "member-1";
    state.signals = {makeSignal("mine, elsewhere",
                                [](Signal& signal) { signal.requesterId = "member-1", signal.roomId = "room-2"; }),
                     makeSignal("from here", [](Signal& signal) { signal.requesterId = "member-2"; }),
                     makeSignal("from here, by nobody"), makeSignal("neither", [](Signal& signal) {
                         signal.requesterId = "member-2", signal.roomId = "room-2";
                     })};
    EXPECT_THAT(idsOf(sentSignals(state)), ElementsAre("mine, elsewhere", "from here", "from here, by nobody"));
    EXPECT_THAT(idsOf(sentSignals(state, "room-2")), ElementsAre("mine, elsewhere"));
}

TEST_F(QueuesTest, aMembersComputerListsTheirOwnWhereverTheySentThem) {
    state.device = makeDeviceOfMember("member-1");
    state.signals = {makeSignal("mine", [](Signal& signal) { signal.requesterId = "member-1"; }),
                     makeSignal("not mine", [](Signal& signal) { signal.requesterId = "member-2"; }),
                     makeSignal("by nobody")};
    EXPECT_THAT(idsOf(sentSignals(state)), ElementsAre("mine"));
}

TEST_F(QueuesTest, aRoomsComputerListsItsRoomWithoutAMember) {
    state.signals = {makeSignal("here"), makeSignal("there", [](Signal& signal) { signal.roomId = "room-2"; })};
    EXPECT_THAT(idsOf(sentSignals(state)), ElementsAre("here"));
    state.device = makeDevice();
    EXPECT_THAT(sentSignals(state), IsEmpty());
    state.device.reset();
    EXPECT_THAT(sentSignals(state), IsEmpty());
}

TEST_F(QueuesTest, aPlaceIsCountedFromOneInTheQueueOfTheWholeOffice) {
    state.device = makeDeviceOfMember("member-1");
    state.signals = {makeSignalAt("2", "second"), makeSignalAt("1", "first"), makeSignalThatIs("done", "over")};
    state.signals[1].providerId = "member-2";
    EXPECT_EQ(queuePosition(state, "first"), 1U);
    EXPECT_EQ(queuePosition(state, "second"), 2U);
    EXPECT_EQ(queuePosition(state, "over"), std::nullopt);
    EXPECT_EQ(queuePosition(state, "unknown"), std::nullopt);
}

TEST_F(QueuesTest, withAnActiveMemberTheCountIsTheirQueue) {
    state.device = makeDeviceWithSignIn("member-1");
    state.signals = {makeSignal("open"), makeSignalTo("member-2", "not mine")};
    EXPECT_EQ(activeQueueCount(state), 1U);
    state.device = makeDeviceOfMember("member-2");
    state.role = DeviceRole::member;
    EXPECT_EQ(activeQueueCount(state), 2U);
}

TEST_F(QueuesTest, aSharedWorkstationCountsOnlyInTheConfirmedRoom) {
    state.role = DeviceRole::shared;
    state.device = makeDevice();
    state.signals = {makeSignal("here"), makeSignal("there", [](Signal& signal) { signal.roomId = "room-2"; })};
    EXPECT_EQ(activeQueueCount(state), 0U);

    state.device = makeDeviceWithSignIn("member-1");
    EXPECT_EQ(activeQueueCount(state), 0U);

    state.flexibleRoomSession = {.signedInMemberId = "member-1", .confirmedRoomId = "room-2"};
    EXPECT_EQ(activeQueueCount(state), 1U);

    state.device->signedInMemberId = "unknown";
    state.flexibleRoomSession.signedInMemberId = "unknown";
    EXPECT_EQ(activeQueueCount(state), 0U);
}

TEST_F(QueuesTest, activeRoomsKeepTheirOrderAndLeaveOutOnlyThoseSwitchedOff) {
    state.rooms = {makeRoom("z"), makeInactiveRoom("off"), makeRoom("a", [](Room& room) { room.active = true; })};
    EXPECT_THAT(idsOf(activeRooms(state)), ElementsAre("z", "a"));
}

TEST_F(QueuesTest, recipientsAreThoseOnShiftWithoutTheActiveMember) {
    state.members = {makeMember("z"), makeMember("off", [](Member& member) { member.onShift = false; }),
                     makeMember("inactive", [](Member& member) { member.active = false; }),
                     makeMember("a", [](Member& member) { member.onShift = true; })};
    EXPECT_THAT(idsOf(onShiftMembers(state)), ElementsAre("z", "inactive", "a"));
    EXPECT_THAT(idsOf(selectableRecipients(state)), ElementsAre("z", "inactive", "a"));
    state.device = makeDeviceWithSignIn("z");
    EXPECT_THAT(idsOf(onShiftMembers(state)), ElementsAre("z", "inactive", "a"));
    EXPECT_THAT(idsOf(selectableRecipients(state)), ElementsAre("inactive", "a"));
}

TEST_F(QueuesTest, departmentsAreTheOfficesOwnOrNone) {
    EXPECT_TRUE(officeDepartments(state).empty());
    state.office->departments = {{.key = "lab", .label = "Lab", .labelPlural = {}},
                                 {.key = "desk", .label = "Desk", .labelPlural = "Desks"}};
    ASSERT_EQ(officeDepartments(state).size(), 2U);
    EXPECT_EQ(officeDepartments(state)[1].key, "desk");
    state.office.reset();
    EXPECT_TRUE(officeDepartments(state).empty());
}

TEST_F(QueuesTest, typesInTheFormGoBySortOrderThenKeyWithoutThoseSwitchedOff) {
    const auto type = [](std::string key, std::optional<std::int64_t> order, std::optional<bool> active = {}) {
        return makeType("id of " + key, 0, [&](SignalType& adjusted) {
            adjusted.key = key, adjusted.sortOrder = order, adjusted.active = active;
        });
    };
    state.signalTypes = {type("late", 5),    type("b", {}), type("off", 0, false),
                         type("a", 0, true), type("B", 0),  type("early", -3)};
    EXPECT_THAT(idsOf(activeSignalTypes(state)),
                ElementsAre("id of early", "id of B", "id of a", "id of b", "id of late"));
}

TEST_F(QueuesTest, whetherAPersonMustSignInFollowsRoleAndOffice) {
    state.device = makeDeviceOfRoom("room-1");
    state.role = DeviceRole::room;
    EXPECT_FALSE(requiresSignedInSender(state));
    state.office = makeOfficeThatRequiresSignIn("office-1");
    EXPECT_TRUE(requiresSignedInSender(state));
    state.office->settings->requireSignedInSender = false;
    EXPECT_FALSE(requiresSignedInSender(state));
    state.office->settings->requireSignedInSender.reset();
    EXPECT_FALSE(requiresSignedInSender(state));
    state.office.reset();
    EXPECT_FALSE(requiresSignedInSender(state));

    state.role = DeviceRole::shared;
    EXPECT_TRUE(requiresSignedInSender(state));
    state.role = DeviceRole::member;
    state.office = makeOfficeThatRequiresSignIn("office-1");
    EXPECT_FALSE(requiresSignedInSender(state));
}

TEST_F(QueuesTest, aBoundComputerNeverAsksForASignIn) {
    state.office = makeOfficeThatRequiresSignIn("office-1");
    state.device = makeDeviceOfMember("member-1");
    for (const DeviceRole role : records::allDeviceRoles) {
        state.role = role;
        EXPECT_FALSE(requiresSignedInSender(state));
        EXPECT_FALSE(needsSignIn(state));
    }
}

TEST_F(QueuesTest, aSignInIsNeededUntilSomebodyIsSignedIn) {
    state.role = DeviceRole::shared;
    state.device.reset();
    EXPECT_TRUE(needsSignIn(state));
    state.device = makeDevice();
    EXPECT_TRUE(needsSignIn(state));
    state.device = makeDeviceWithSignIn("somebody unknown");
    EXPECT_FALSE(needsSignIn(state));
}

}  // namespace
}  // namespace zelkovanta::store
