#include "tests/screens/compose_fixture.h"

#include <gmock/gmock.h>

namespace zelkovanta::screens {
namespace {

using records::StateSnapshot;
using support::makeMember;
using support::makeSignal;
using testing::ElementsAre;

std::vector<std::string> idsOf(const store::SignalTypeList& types) {
    std::vector<std::string> ids;
    for (const records::SignalType* type : types) {
        ids.push_back(type->id);
    }
    return ids;
}

WhoSelection people(std::vector<std::string> ids) {
    return {.selectedProviderIds = std::move(ids), .explicitAny = false};
}

struct ComposeTypes : ComposeTest {
    /// An assistant's computer in an office with these types.
    void launchAssistantWith(std::vector<records::SignalType> types) {
        StateSnapshot snapshot = officeSnapshot();
        snapshot.device = support::makeDeviceOfMember("member-3");
        snapshot.signalTypes = std::move(types);
        launchWith("member", snapshot);
        make({});
    }
    static records::SignalType typeFor(std::string id, std::string key, std::vector<std::string> senders) {
        records::SignalType type = typeOf(std::move(id), std::move(key), 0);
        type.senderDepartments = std::move(senders);
        return type;
    }
};

TEST_F(ComposeTypes, thoseOfOtherDepartmentsAreNotOffered) {
    launchAssistantWith({typeFor("1", "for all", {}), typeFor("2", "for providers", {"provider"}),
                         typeFor("3", "for both", {"provider", "assistant"}), typeFor("4", "other case", {"Assistant"}),
                         typeOf("5", "open", 0)});
    EXPECT_THAT(idsOf(form->availableTypes()), ElementsAre("1", "3", "5"));
}

TEST_F(ComposeTypes, withNobodySignedInAllAreOffered) {
    StateSnapshot snapshot = officeSnapshot();
    snapshot.signalTypes = {typeFor("1", "for providers", {"provider"})};
    launchWith("room", snapshot);
    make({});
    EXPECT_THAT(idsOf(form->availableTypes()), ElementsAre("1"));
}

TEST_F(ComposeTypes, comeInTheirOrderWithoutTheInactiveOnes) {
    records::SignalType inactive = typeOf("4", "gone", 0);
    inactive.active = false;
    launchAssistantWith({typeOf("1", "b", 2), typeOf("2", "a", 2), typeOf("3", "c", 1), inactive});
    EXPECT_THAT(idsOf(form->availableTypes()), ElementsAre("3", "2", "1"));
}

TEST_F(ComposeTypes, readyIsTheDefaultWhereverItStands) {
    launchAssistantWith({typeOf("1", "first", 1), typeOf("2", "ready", 2)});
    EXPECT_EQ(form->defaultType()->id, "2");
}

TEST_F(ComposeTypes, withoutReadyTheFirstOneIs) {
    launchAssistantWith({typeOf("1", "second", 2), typeOf("2", "first", 1)});
    EXPECT_EQ(form->defaultType()->id, "2");
    form->appear();
    EXPECT_EQ(form->choice().selectedTypeId, "2");
}

TEST_F(ComposeTypes, aReadyThatIsForOthersIsNoDefault) {
    launchAssistantWith({typeFor("1", "ready", {"provider"}), typeOf("2", "other", 5)});
    EXPECT_EQ(form->defaultType()->id, "2");
}

TEST_F(ComposeTypes, ofTwoThatAreReadyTheFirstOneCounts) {
    records::SignalType inactive = typeOf("1", "ready", 1);
    inactive.active = false;
    launchAssistantWith({inactive, typeOf("2", "ready", 3), typeOf("3", "other", 2)});
    EXPECT_EQ(form->defaultType()->id, "3") << "it cannot be sent, and the other is not looked for";
}

TEST_F(ComposeTypes, withoutTypesThereIsNone) {
    launchAssistantWith({});
    EXPECT_EQ(form->defaultType(), nullptr);
    form->appear();
    EXPECT_EQ(form->selectedType(), nullptr);
    EXPECT_EQ(form->choice().selectedTypeId, std::nullopt);
    EXPECT_FALSE(form->canSend());
}

TEST_F(ComposeTypes, aChosenTypeThatIsGoneGivesWayToTheDefault) {
    launchAssistantWith({typeOf("1", "ready", 1), typeOf("2", "other", 2)});
    form->appear();
    form->chooseType("2");
    EXPECT_EQ(form->selectedType()->id, "2");
    form->chooseType("gone");
    EXPECT_EQ(form->selectedType()->id, "1");
}

TEST_F(ComposeTypes, aStoredTypeThatIsForOthersFallsBackToReady) {
    defaults.memory.setText("lastSendTypeId", "1");
    launchAssistantWith({typeFor("1", "secret", {"provider"}), typeOf("2", "other", 1), typeOf("3", "ready", 2)});
    form->appear();
    EXPECT_EQ(form->choice().selectedTypeId, "3");
}

using ComposeOpening = ComposeTest;

TEST_F(ComposeOpening, clearsAnOldFailure) {
    launchMember("member-1");
    run([](store::AppStore& app) { return app.actOnSignal(makeSignal("signal-9"), "done"); });
    answer("PATCH", "/signals/signal-9", 500, "{}");
    ASSERT_TRUE(state().lastError);
    open();
    EXPECT_EQ(state().lastError, std::nullopt);
    EXPECT_EQ(form->screen().error, "");
}

TEST_F(ComposeOpening, takesTheRoomSentFromLastWhileItIsActive) {
    defaults.memory.setText("lastUsedRoomId", "room-2");
    launchMember("member-1");
    open();
    EXPECT_EQ(form->choice().selectedRoomId, "room-2");

    form->disappear();
    deliverRecord("rooms.updated", server::server_message::RoomsUpdated{
                                       {support::makeRoom("room-1"), support::makeInactiveRoom("room-2")}});
    open();
    EXPECT_EQ(form->choice().selectedRoomId, std::nullopt);
}

TEST_F(ComposeOpening, aRoomsComputerDoesNotTakeTheRoomSentFromLast) {
    defaults.memory.setText("lastUsedRoomId", "room-2");
    launchRoomWith("member-1");
    open(homeRoom());
    EXPECT_EQ(form->choice().selectedRoomId, std::nullopt);
    EXPECT_FALSE(form->canSend());
    open(fixedRoom());
    EXPECT_EQ(form->choice().selectedRoomId, std::nullopt);
    EXPECT_TRUE(form->canSend());
}

TEST_F(ComposeOpening, aRoomThatWasChosenStays) {
    defaults.memory.setText("lastUsedRoomId", "room-2");
    launchMember("member-1");
    make({});
    form->chooseRoom("room-1");
    form->appear();
    EXPECT_EQ(form->choice().selectedRoomId, "room-1");
}

TEST_F(ComposeOpening, takesTypeAndRecipientOfTheLastTime) {
    defaults.memory.setText("lastSendTypeId", "type-lab");
    defaults.memory.setText("lastSendRecipient", "ids:member-2");
    launchMember("member-1");
    open();
    EXPECT_EQ(form->choice().selectedTypeId, "type-lab");
    EXPECT_EQ(form->choice().who, people({"member-2"}));
}

TEST_F(ComposeOpening, withNothingStoredSuitsTheType) {
    launchMember("member-1");
    open();
    EXPECT_EQ(form->choice().selectedTypeId, "type-ready");
    EXPECT_EQ(form->choice().who, people({"member-2"}));  // The other provider.
}

TEST_F(ComposeOpening, theTypesDepartmentIsTakenWhereNobodyIsStored) {
    defaults.memory.setText("lastSendTypeId", "type-lab");
    launchMember("member-1");
    open();
    EXPECT_EQ(form->choice().who, people({"member-3"}));
}

TEST_F(ComposeOpening, theTypeOfTheLastTimeWinsOverOneChosenBefore) {
    defaults.memory.setText("lastSendTypeId", "type-lab");
    launchMember("member-1");
    make({});
    form->chooseType("type-xray");
    form->appear();
    EXPECT_EQ(form->choice().selectedTypeId, "type-lab");
    EXPECT_EQ(form->choice().who, people({"member-3"})) << "who suits that type";
}

TEST_F(ComposeOpening, whatWasChosenBeforeStays) {
    defaults.memory.setText("lastSendRecipient", "ids:member-3");
    launchMember("member-1");
    make({});
    form->chooseType("type-xray");
    form->pressAny();
    form->appear();
    EXPECT_EQ(form->choice().selectedTypeId, "type-xray");
    EXPECT_EQ(form->choice().who, (WhoSelection{.selectedProviderIds = {}, .explicitAny = true}));
}

TEST_F(ComposeOpening, dropsWhoCannotBeSelected) {
    launchMember("member-1");
    make({});
    form->pressPerson("member-1");
    form->pressPerson("gone");
    form->pressPerson("member-3");
    form->appear();
    EXPECT_EQ(form->choice().who, people({"member-3"}));
}

TEST_F(ComposeOpening, defaultsAreLoadedOnlyThen) {
    launchMember("member-1");
    open();
    defaults.memory.setText("lastSendRecipient", "ids:member-3");
    form->pressPerson("member-2");
    ASSERT_EQ(form->choice().who, WhoSelection{});
    form->chooseType("type-lab");
    settle();
    EXPECT_EQ(form->choice().who, WhoSelection{});
}

TEST_F(ComposeOpening, changingTheTypeKeepsTheRecipients) {
    launchMember("member-1");
    open();
    ASSERT_EQ(form->choice().who, people({"member-2"}));
    form->chooseType("type-lab");
    EXPECT_EQ(form->choice().who, people({"member-2"}));
}

TEST_F(ComposeOpening, whoLeavesWhileItIsOpenIsDropped) {
    launchMember("member-1");
    open();
    form->pressPerson("member-3");
    ASSERT_EQ(form->choice().who, people({"member-2", "member-3"}));
    int changes = 0;
    form->setChangeHandler([&] { ++changes; });
    deliverRecord("member.updated", server::server_message::MemberUpdated{makeMember(
                                        "member-2", [](records::Member& member) { member.onShift = false; })});
    EXPECT_EQ(form->choice().who, people({"member-3"}));
    EXPECT_EQ(changes, 1);
    // Coming back does not check them again.
    deliverRecord("member.updated", server::server_message::MemberUpdated{makeMember("member-2")});
    EXPECT_EQ(form->choice().who, people({"member-3"}));
}

TEST_F(ComposeOpening, eachPersonAtARoomsComputerHasTheirOwnDefaults) {
    defaults.memory.setText("roomSendDefaults.autonomous.typeId", "type-xray");
    defaults.memory.setText("roomSendDefaults.autonomous.recipient", "dept:assistant");
    defaults.memory.setText("roomSendDefaults.member.member-1.typeId", "type-lab");
    defaults.memory.setText("roomSendDefaults.member.member-1.recipient", "ids:member-2");
    defaults.memory.setText("lastSendTypeId", "type-lab");
    defaults.memory.setText("lastSendRecipient", "ids:member-1");
    launchRoom();
    open(fixedRoom());
    EXPECT_EQ(form->choice().selectedTypeId, "type-xray");
    EXPECT_EQ(form->choice().who, people({"member-3"}));
    form->disappear();

    signIn("member-1");
    open(homeRoom());
    EXPECT_EQ(form->choice().selectedTypeId, "type-lab");
    EXPECT_EQ(form->choice().who, people({"member-2"}));
}

}  // namespace
}  // namespace zelkovanta::screens
