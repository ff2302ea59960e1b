#include "tests/screens/compose_fixture.h"

#include <rapidcheck.h>
#include <rapidcheck/gtest.h>

#include <gmock/gmock.h>

namespace zelkovanta::screens {
namespace {

using records::StateSnapshot;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

using ComposeSending = ComposeTest;

TEST_F(ComposeSending, needsARoom) {
    launchMember("member-1");
    open();
    EXPECT_FALSE(form->canSend());
    form->chooseRoom("room-2");
    EXPECT_TRUE(form->canSend());
    form->chooseRoom(std::nullopt);
    EXPECT_FALSE(form->canSend());
    pressSend();
    EXPECT_EQ(sentBody(), "nothing");
}

TEST_F(ComposeSending, needsSomebodyOrWhoeverIsNextOrATypeWithADepartment) {
    launchRoom();
    open(fixedRoom());
    form->pressGroup("provider");
    ASSERT_EQ(form->choice().who, WhoSelection{});
    EXPECT_FALSE(form->canSend());
    form->pressAny();
    EXPECT_TRUE(form->canSend());
    form->pressAny();
    EXPECT_FALSE(form->canSend());
    form->chooseType("type-lab");
    EXPECT_TRUE(form->canSend());
    form->chooseType("type-xray");
    form->pressPerson("member-1");
    EXPECT_TRUE(form->canSend());
}

TEST_F(ComposeSending, sendsWhatWasChosen) {
    launchRoom();
    open(fixedRoom());
    form->chooseType("type-xray");
    form->pressGroup("provider");
    form->pressPerson("member-2");
    form->editNote("Bring the tray");
    pressSend();
    EXPECT_THAT(sentBody(), HasSubstr(R"("roomId":"room-1")"));
    EXPECT_THAT(sentBody(), HasSubstr(R"("typeId":"type-xray")"));
    EXPECT_THAT(sentBody(), HasSubstr(R"("providerId":"member-2")"));
    EXPECT_THAT(sentBody(), HasSubstr(R"("note":"Bring the tray")"));
    EXPECT_THAT(sentBody(), Not(HasSubstr("toDepartment")));
}

TEST_F(ComposeSending, theFixedRoomWinsOverAChosenOne) {
    launchRoom();
    open(fixedRoom());
    form->chooseRoom("room-2");
    pressSend();
    EXPECT_THAT(sentBody(), HasSubstr(R"("roomId":"room-1")"));
}

TEST_F(ComposeSending, aTypesDepartmentGoesOutAsOne) {
    launchRoom();
    open(fixedRoom());
    form->pressGroup("provider");
    form->chooseType("type-lab");
    pressSend();
    EXPECT_THAT(sentBody(), HasSubstr(R"("toDepartment":"assistant")"));
    EXPECT_THAT(sentBody(), Not(HasSubstr("provider")));
    answerCreated();
    EXPECT_EQ(defaults.memory.text("roomSendDefaults.autonomous.recipient"), "dept:assistant");
}

TEST_F(ComposeSending, aSuccessIsRememberedAndClosesTheForm) {
    launchMember("member-1");
    open();
    form->chooseRoom("room-2");
    form->chooseType("type-xray");
    form->editNote("secret");
    pressSend();
    journal.take();
    answerCreated();
    EXPECT_EQ(closed, 1);
    EXPECT_EQ(defaults.memory.text("lastUsedRoomId"), "room-2");
    EXPECT_EQ(defaults.memory.text("lastSendTypeId"), "type-xray");
    EXPECT_EQ(defaults.memory.text("lastSendRecipient"), "ids:member-2");
    const auto lines = takeLinesOf({"defaults", "notes.retire"});
    EXPECT_THAT(lines, ElementsAre("defaults lastUsedRoomId = 'room-2'", "defaults lastSendTypeId = 'type-xray'",
                                   "defaults lastSendRecipient = 'ids:member-2'", "notes.retire compose-note"));
    form->disappear();
    EXPECT_THAT(takeReports(), ElementsAre("crash.setScreen queue"));
}

TEST_F(ComposeSending, fromARoomNothingIsRememberedOfTheRoom) {
    launchRoomWith("member-3");
    open(homeRoom());
    form->chooseRoom("room-2");
    pressSend();
    answerCreated();
    EXPECT_EQ(defaults.memory.text("lastUsedRoomId"), std::nullopt);
    EXPECT_EQ(defaults.memory.text("lastSendTypeId"), std::nullopt);
    EXPECT_EQ(defaults.memory.text("roomSendDefaults.member.member-3.typeId"), "type-ready");
    // All providers, where any may answer.
    EXPECT_EQ(defaults.memory.text("roomSendDefaults.member.member-3.recipient"), "any");
}

TEST_F(ComposeSending, aFailureKeepsEverythingAndRemembersNothing) {
    launchMember("member-1");
    open();
    form->chooseRoom("room-2");
    form->editNote("Bring it");
    const ComposeChoice before = form->choice();
    pressSend();
    journal.take();
    answer("POST", "/signals", 500, "{}");
    EXPECT_EQ(closed, 0);
    EXPECT_EQ(form->choice(), before);
    EXPECT_NE(form->screen().error, "");
    EXPECT_EQ(form->screen().error, state().lastError);
    EXPECT_THAT(takeLinesOf({"defaults", "notes.retire"}), IsEmpty());
    EXPECT_TRUE(form->canSend());

    // Once more.
    pressSend();
    answerCreated();
    EXPECT_EQ(closed, 1);
    EXPECT_EQ(defaults.memory.text("lastUsedRoomId"), "room-2");
}

TEST_F(ComposeSending, aSecondPressMeanwhileDoesNothing) {
    launchMember("member-1");
    open();
    form->chooseRoom("room-2");
    form->send();
    EXPECT_FALSE(form->canSend());
    form->send();
    settle();
    form->send();
    settle();
    EXPECT_EQ(requestCount("POST", "/signals"), 1U);
    EXPECT_TRUE(form->screen().isSending);
    answerCreated();
    EXPECT_EQ(closed, 1);
}

TEST_F(ComposeSending, whatIsChosenMeanwhileChangesNothing) {
    launchMember("member-1");
    open();
    form->chooseRoom("room-2");
    form->send();
    form->chooseRoom("room-1");
    form->chooseType("type-lab");
    form->pressPerson("member-3");
    settle();
    EXPECT_THAT(sentBody(), HasSubstr(R"("roomId":"room-2")"));
    answerCreated();
    EXPECT_EQ(defaults.memory.text("lastUsedRoomId"), "room-2");
    EXPECT_EQ(defaults.memory.text("lastSendTypeId"), "type-ready");
    EXPECT_EQ(defaults.memory.text("lastSendRecipient"), "ids:member-2");
}

TEST_F(ComposeSending, withoutAFailureItWorkedEvenWhereNothingWasAsked) {
    launchMember("member-1");
    open();
    form->chooseRoom("room-2");
    // The word that the computer is no longer linked lies before the sending that the press began.
    main.setHeld(true);
    socket().fail({.closeCode = 4001, .httpStatus = {}});
    settle();
    form->send();
    main.setHeld(false);
    settle();
    ASSERT_FALSE(state().isPaired);
    EXPECT_EQ(requestCount("POST", "/signals"), 0U);
    EXPECT_EQ(closed, 1);
}

TEST_F(ComposeSending, aRevocationMeanwhileIsNoFailure) {
    launchMember("member-1");
    open();
    form->chooseRoom("room-2");
    pressSend();
    socket().fail({.closeCode = 4001, .httpStatus = {}});
    settle();
    ASSERT_FALSE(state().isPaired);
    answerCreated();
    EXPECT_EQ(state().lastError, std::nullopt);
    EXPECT_EQ(closed, 1);
}

TEST_F(ComposeSending, onASharedWorkstationTheRoomMustBeTheConfirmedOne) {
    StateSnapshot snapshot = officeSnapshot();
    snapshot.device = support::makeDeviceWithSignIn("member-1");
    launchWith("shared", snapshot);
    store->confirmFlexibleRoom("room-1");
    settle();
    open({.fixedRoomId = "room-2", .homeRoomId = {}});
    pressSend();
    EXPECT_EQ(form->screen().error, "Choose a room for this sign-in before sending.");
    EXPECT_EQ(closed, 0);
    EXPECT_EQ(requestCount("POST", "/signals"), 0U);
}

TEST_F(ComposeSending, aFormThatIsGoneMeanwhileIsNotClosedAgain) {
    launchMember("member-1");
    open();
    form->chooseRoom("room-2");
    pressSend();
    form->disappear();
    journal.take();
    answerCreated();
    EXPECT_EQ(closed, 0);
    // What was sent is remembered all the same.
    EXPECT_THAT(takeLinesOf({"defaults", "notes.retire"}),
                ElementsAre("defaults lastUsedRoomId = 'room-2'", "defaults lastSendTypeId = 'type-ready'",
                            "defaults lastSendRecipient = 'ids:member-2'"));
}

TEST_F(ComposeSending, whoSignsInMeanwhileDoesNotInheritTheChoice) {
    launchRoomWith("member-3");
    open(fixedRoom());
    pressSend();
    form->disappear();
    signIn("member-1");
    answerCreated();
    EXPECT_EQ(defaults.memory.text("roomSendDefaults.member.member-1.typeId"), std::nullopt);
    EXPECT_EQ(defaults.memory.text("roomSendDefaults.member.member-3.typeId"), "type-ready");
}

TEST_F(ComposeSending, aFormThatIsForgottenMeanwhileLivesUntilItsEnd) {
    launchMember("member-1");
    open();
    form->chooseRoom("room-2");
    pressSend();
    form->disappear();
    const std::weak_ptr<ComposeView> weak = form;
    form.reset();
    EXPECT_FALSE(weak.expired());
    answerCreated();
    EXPECT_TRUE(weak.expired());
    EXPECT_EQ(defaults.memory.text("lastUsedRoomId"), "room-2");
}

RC_GTEST_FIXTURE_PROP(ComposeTest, anyPressesSendOnlyWhatCanBeSelected, ()) {
    launchMember("member-1");
    open();
    form->chooseRoom("room-1");
    const int presses = *rc::gen::inRange(0, 12);
    for (int count = 0; count < presses; ++count) {
        switch (*rc::gen::inRange(0, 5)) {
            case 0:
                form->pressPerson("member-" + std::to_string(*rc::gen::inRange(2, 4)));
                break;
            case 1:
                form->pressGroup(*rc::gen::elementOf(std::vector<std::string>{"provider", "assistant"}));
                break;
            case 2:
                form->pressAny();
                break;
            case 3:
                form->chooseType(*rc::gen::elementOf(std::vector<std::string>{"type-ready", "type-lab", "type-xray"}));
                break;
            default:
                form->editNote(*rc::gen::arbitrary<std::string>());
        }
    }
    RC_ASSERT(!form->choice().who.explicitAny || form->choice().who.selectedProviderIds.empty());
    RC_ASSERT(form->canSend() == form->screen().canSend);
    pressSend();
    RC_ASSERT((requestCount("POST", "/signals") == 1U) == (sentBody() != "nothing"));
}

}  // namespace
}  // namespace zelkovanta::screens
