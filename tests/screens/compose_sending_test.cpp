#include "tests/screens/compose_fixture.h"

#include <algorithm>
#include <rapidcheck.h>
#include <regex>
#include <variant>

#include <gmock/gmock.h>
#include <rapidcheck/gtest.h>

namespace zelkovanta::screens {
namespace {

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

TEST_F(ComposeSending, aSecondFormWaitsForTheEndOfTheFirstOnes) {
    launchMember("member-1");
    open();
    form->chooseRoom("room-2");
    pressSend();
    form->disappear();
    open();
    form->chooseRoom("room-1");
    EXPECT_FALSE(form->canSend());
    EXPECT_FALSE(form->screen().canSend);
    EXPECT_TRUE(form->screen().isSending);
    pressSend();
    EXPECT_EQ(requestCount("POST", "/signals"), 1U);
    answerCreated();
    EXPECT_TRUE(form->canSend());
    EXPECT_FALSE(form->screen().isSending);
    EXPECT_EQ(closed, 0);
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

TEST_F(ComposeSending, whereTheFormStandsMeanwhileChangesNothing) {
    launchMember("member-1");
    open();
    form->chooseRoom("room-2");
    pressSend();
    form->setPlace(homeRoom());
    answerCreated();
    EXPECT_EQ(defaults.memory.text("lastUsedRoomId"), "room-2");
    EXPECT_EQ(defaults.memory.text("lastSendTypeId"), "type-ready");
}

TEST_F(ComposeSending, aRoomsFormThatBelongsToNoRoomMeanwhileRemembersNoRoom) {
    launchRoomWith("member-3");
    open(homeRoom());
    form->chooseRoom("room-2");
    pressSend();
    form->setPlace({});
    answerCreated();
    EXPECT_EQ(defaults.memory.text("lastUsedRoomId"), std::nullopt);
    EXPECT_EQ(defaults.memory.text("roomSendDefaults.member.member-3.typeId"), "type-ready");
}

TEST_F(ComposeSending, aFormThatIsDoneWithSendsNothing) {
    launchMember("member-1");
    open();
    form->chooseRoom("room-2");
    form->cancel();
    pressSend();
    EXPECT_EQ(requestCount("POST", "/signals"), 0U);
    EXPECT_EQ(closed, 1);
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
    launchStationWith("member-1");
    ASSERT_EQ(store::confirmedFlexibleRoomId(state()), "room-1");
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

/// The ids of members in a request.
std::vector<std::string> membersIn(const std::string& body) {
    static const std::regex memberId{"member-[0-9]+"};
    return {std::sregex_token_iterator{body.begin(), body.end(), memberId}, std::sregex_token_iterator{}};
}

/// A press on one of the rows that are shown, if there are any.
void pressSomeRow(ComposeView& form) {
    struct Presser {
        ComposeView& form;
        void operator()(const AnyRow&) const { form.pressAny(); }
        void operator()(const GroupRow& group) const { form.pressGroup(group.department); }
        void operator()(const PersonRow& person) const { form.pressPerson(person.memberId); }
    };
    const auto rows = form.screen().who.rows;
    if (!rows.empty()) {
        std::visit(Presser{form}, *rc::gen::elementOf(rows));
    }
}

RC_GTEST_FIXTURE_PROP(ComposeTest, anyPressesSendOnlyWhatCanBeSelected, ()) {
    launchMember("member-1");
    open();
    if (*rc::gen::weightedElement<bool>({{1, false}, {4, true}})) {
        form->chooseRoom("room-2");
    }
    const auto someMember = [] { return "member-" + std::to_string(*rc::gen::inRange(2, 4)); };
    const int presses = *rc::gen::inRange(0, 12);
    for (int count = 0; count < presses; ++count) {
        switch (*rc::gen::inRange(0, 7)) {
            case 0:
            case 1:
            case 2:
                pressSomeRow(*form);
                break;
            case 3:
                form->chooseType(*rc::gen::elementOf(std::vector<std::string>{"type-ready", "type-lab", "type-xray"}));
                break;
            case 4:
                form->chooseRoom("room-" + std::to_string(*rc::gen::inRange(1, 3)));
                break;
            case 5: {
                records::Member member = *store::memberById(state(), someMember());
                member.onShift = *rc::gen::arbitrary<bool>();
                deliverRecord("member.updated", server::server_message::MemberUpdated{member});
                break;
            }
            default:
                form->editNote(*rc::gen::arbitrary<std::string>());
        }
    }
    RC_ASSERT(!form->choice().who.explicitAny || form->choice().who.selectedProviderIds.empty());
    const bool may = form->canSend();
    RC_ASSERT(may == form->screen().canSend);
    RC_ASSERT(!may || form->choice().selectedRoomId);
    std::vector<std::string> selectable;
    for (const records::Member* member : store::selectableRecipients(state())) {
        selectable.push_back(member->id);
    }
    // What a note may hold is no address.
    form->editNote("");

    pressSend();
    RC_ASSERT((requestCount("POST", "/signals") == 1U) == may);
    for (const std::string& id : membersIn(sentBody())) {
        RC_ASSERT(std::ranges::find(selectable, id) != selectable.end());
    }
    RC_CLASSIFY(may, "sent");
    RC_CLASSIFY(!membersIn(sentBody()).empty(), "to people");
}

}  // namespace
}  // namespace zelkovanta::screens
