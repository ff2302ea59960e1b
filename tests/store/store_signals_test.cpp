#include "server/server_message.h"
#include "tests/store/store_test.h"

namespace zelkovanta::store {
namespace {

using records::Member;
using records::Signal;
using records::StateSnapshot;
using support::makeDevice;
using support::makeDeviceWithSignIn;
using support::makeMember;
using support::makeSignal;
using support::makeSignalThatIs;
using support::makeSnapshot;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* chooseRoom = "Choose a room for this sign-in before sending.";

/// What a person asks to send; the fields are those of `AppStore::sendSignal`.
struct Wish {
    std::string note;
    std::optional<std::string> roomId;
    std::vector<std::string> providerIds;
    std::optional<std::string> toDepartment;
};

struct StoreSignalsTest : StoreTest {
    void send(const Wish& wish) {
        run([wish](AppStore& app) {
            return app.sendSignal("type-ready", wish.note, wish.roomId, wish.providerIds, wish.toDepartment);
        });
    }
    void act(const std::string& signalId, const std::string& action) {
        run([=](AppStore& app) { return app.actOnSignal(makeSignal(signalId), action); });
    }
    void setStatus(records::MemberStatus status) {
        run([=](AppStore& app) { return app.setMemberStatus(status); });
    }

    /// The body of the open request that creates a signal.
    std::string sentBody() const {
        const Exchange* exchange = openRequest("POST", "/signals");
        return exchange ? exchange->request.body.value_or("no body") : "no request";
    }

    void launchInRoom() { launchWith("room", makeSnapshot()); }

    void launchShared() {
        launchWith("shared", makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
    }
    void signIn() { deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1")); }
};

// Sending.

TEST_F(StoreSignalsTest, anOpenCallFromTheComputersRoomIsSentAndMerged) {
    launchInRoom();
    send({.note = "", .roomId = {}, .providerIds = {}, .toDepartment = {}});
    EXPECT_TRUE(state().isSending);
    EXPECT_EQ(sentBody(), R"({"roomId":"room-1","typeId":"type-ready","note":""})");
    EXPECT_THAT(journal.take(), ElementsAre("notes.set sending-note []", "http POST /signals"));
    EXPECT_THAT(state().signals, IsEmpty());

    answerWith("POST", "/signals", makeSignal("s"));
    EXPECT_THAT(idsOf(state().signals), ElementsAre("s"));
    EXPECT_FALSE(state().isSending);
    EXPECT_EQ(state().lastError, std::nullopt);
    EXPECT_THAT(journal.take(),
                ElementsAre("notes.history active-queue-notes []", "notes.history active-queue-notes []",
                            "notes.history active-queue-notes []", "notes.set active-queue-notes []",
                            "notifications.reconcile nobody []", "notes.clearSending"));
}

TEST_F(StoreSignalsTest, theNoteIsKnownBeforeTheRequestGoesOut) {
    launchInRoom();
    send({.note = "Patient waits", .roomId = {}, .providerIds = {}, .toDepartment = {}});
    EXPECT_THAT(journal.take(), ElementsAre("notes.set sending-note [Patient waits]", "http POST /signals"));
}

TEST_F(StoreSignalsTest, oneRecipientTravelsAloneAndSeveralAsAList) {
    launchInRoom();
    send({.note = "", .roomId = {}, .providerIds = {"member-1"}, .toDepartment = {}});
    EXPECT_EQ(sentBody(), R"({"roomId":"room-1","providerId":"member-1","typeId":"type-ready","note":""})");
    answer("POST", "/signals", 500);
    send({.note = "", .roomId = {}, .providerIds = {"member-1", "member-2"}, .toDepartment = {}});
    EXPECT_EQ(sentBody(),
              R"({"roomId":"room-1","providerIds":["member-1","member-2"],"typeId":"type-ready","note":""})");
}

TEST_F(StoreSignalsTest, aDepartmentWinsOverAListOfRecipients) {
    launchInRoom();
    send({.note = "", .roomId = {}, .providerIds = {"member-1", "member-2"}, .toDepartment = "lab"});
    EXPECT_EQ(sentBody(), R"({"roomId":"room-1","toDepartment":"lab","typeId":"type-ready","note":""})");
    answer("POST", "/signals", 500);
    send({.note = "", .roomId = {}, .providerIds = {"member-1"}, .toDepartment = "lab"});
    EXPECT_EQ(sentBody(), R"({"roomId":"room-1","toDepartment":"lab","typeId":"type-ready","note":""})");
}

TEST_F(StoreSignalsTest, aRoomThatIsGivenWinsOverTheComputersOwnAndNoneIsLeftOut) {
    launchInRoom();
    send({.note = "", .roomId = "room-2", .providerIds = {}, .toDepartment = {}});
    EXPECT_EQ(sentBody(), R"({"roomId":"room-2","typeId":"type-ready","note":""})");
    answer("POST", "/signals", 500);
    deliverSnapshot(makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
    send({.note = "", .roomId = {}, .providerIds = {}, .toDepartment = {}});
    EXPECT_EQ(sentBody(), R"({"typeId":"type-ready","note":""})");
}

TEST_F(StoreSignalsTest, aLongNoteIsCutToTwoHundredScalars) {
    launchInRoom();
    const std::string head = "é" + std::string(199, 'a');
    send({.note = head + std::string(50, 'b'), .roomId = {}, .providerIds = {}, .toDepartment = {}});
    EXPECT_EQ(sentBody(), R"({"roomId":"room-1","typeId":"type-ready","note":")" + head + R"("})");
    // The whole of it is what must not reach a report.
    EXPECT_EQ(journal.take().front(), "notes.set sending-note [" + head + std::string(50, 'b') + "]");
}

TEST_F(StoreSignalsTest, aNoteIsCutBetweenALetterAndItsMark) {
    launchInRoom();
    const std::string head = std::string(199, 'a') + "e";
    send({.note = head + "\u0301 and more", .roomId = {}, .providerIds = {}, .toDepartment = {}});
    EXPECT_EQ(sentBody(), R"({"roomId":"room-1","typeId":"type-ready","note":")" + head + R"("})");
}

TEST_F(StoreSignalsTest, blanksAroundANoteStay) {
    launchInRoom();
    send({.note = "  n ", .roomId = {}, .providerIds = {}, .toDepartment = {}});
    EXPECT_EQ(sentBody(), R"({"roomId":"room-1","typeId":"type-ready","note":"  n "})");
}

TEST_F(StoreSignalsTest, anEmptyRoomAndAnEmptyDepartmentAreGivenAllTheSame) {
    launchInRoom();
    send({.note = "", .roomId = "", .providerIds = {"member-1"}, .toDepartment = ""});
    EXPECT_EQ(sentBody(), R"({"roomId":"","toDepartment":"","typeId":"type-ready","note":""})");
}

TEST_F(StoreSignalsTest, aFailedSendSaysWhyInTheServersWordsOrOurs) {
    launchInRoom();
    send({.note = "n", .roomId = {}, .providerIds = {}, .toDepartment = {}});
    journal.take();
    answer("POST", "/signals", 409, R"({"error":"duplicate_active_signal"})");
    EXPECT_EQ(state().lastError, "This room already has an active signal.");
    EXPECT_FALSE(state().isSending);
    EXPECT_THAT(state().signals, IsEmpty());
    EXPECT_THAT(journal.take(), ElementsAre("notes.clearSending"));

    send({.note = "n", .roomId = {}, .providerIds = {}, .toDepartment = {}});
    answer("POST", "/signals", 409, R"({"error":"duplicate_active_signal","message":"Room 3 is busy."})");
    EXPECT_EQ(state().lastError, "Room 3 is busy.");

    send({.note = "n", .roomId = {}, .providerIds = {}, .toDepartment = {}});
    loop.advance(15s);
    EXPECT_EQ(state().lastError, "The server took too long to answer.");
    EXPECT_FALSE(state().isSending);
    EXPECT_EQ(requestCount("POST", "/signals"), 3U) << "something was tried again";
}

TEST_F(StoreSignalsTest, aLaterSuccessClearsTheErrorLine) {
    launchInRoom();
    send({.note = "", .roomId = {}, .providerIds = {}, .toDepartment = {}});
    answer("POST", "/signals", 500);
    ASSERT_TRUE(state().lastError);
    send({.note = "", .roomId = {}, .providerIds = {}, .toDepartment = {}});
    EXPECT_TRUE(state().lastError) << "asking alone cleared it";
    answerWith("POST", "/signals", makeSignal("s"));
    EXPECT_EQ(state().lastError, std::nullopt);
}

TEST_F(StoreSignalsTest, aSignalThatCameBackAlreadyDoneIsNotKept) {
    launchInRoom();
    send({.note = "", .roomId = {}, .providerIds = {}, .toDepartment = {}});
    answerWith("POST", "/signals", makeSignalThatIs("done", "s"));
    EXPECT_THAT(state().signals, IsEmpty());
    EXPECT_EQ(state().lastError, std::nullopt);
}

TEST_F(StoreSignalsTest, theReplyAndTheEventOfOneSignalMakeOneRow) {
    launchInRoom();
    send({.note = "", .roomId = {}, .providerIds = {}, .toDepartment = {}});
    deliverCreated(makeSignal("s"));
    answerWith("POST", "/signals", makeSignal("s"));
    EXPECT_THAT(idsOf(state().signals), ElementsAre("s"));
}

TEST_F(StoreSignalsTest, withoutASessionNothingIsSent) {
    launchUnpaired();
    journal.take();
    send({.note = "n", .roomId = {}, .providerIds = {}, .toDepartment = {}});
    EXPECT_FALSE(state().isSending);
    EXPECT_EQ(state().lastError, std::nullopt);
    EXPECT_THAT(journal.take(), ElementsAre("notes.set sending-note [n]", "notes.clearSending"));
}

TEST_F(StoreSignalsTest, onASharedWorkstationOnlyTheConfirmedRoomMaySend) {
    launchShared();
    const auto expectRefused = [this](const Wish& wish) {
        journal.take();
        send(wish);
        EXPECT_EQ(state().lastError, chooseRoom);
        EXPECT_FALSE(state().isSending);
        EXPECT_THAT(journal.take(), ElementsAre("notes.set sending-note [n]", "notes.clearSending"));
    };
    const Wish here{.note = "n", .roomId = "room-1", .providerIds = {}, .toDepartment = {}};
    expectRefused(here);  // Nobody is signed in.
    signIn();
    expectRefused(here);  // No room is confirmed.
    store->confirmFlexibleRoom("room-1");
    EXPECT_EQ(state().lastError, std::nullopt);
    expectRefused({.note = "n", .roomId = "room-2", .providerIds = {}, .toDepartment = {}});
    expectRefused({.note = "n", .roomId = {}, .providerIds = {}, .toDepartment = {}});

    send(here);
    EXPECT_EQ(sentBody(), R"({"roomId":"room-1","typeId":"type-ready","note":"n"})");
    answerWith("POST", "/signals", makeSignal("s"));
    EXPECT_EQ(state().lastError, std::nullopt);
}

TEST_F(StoreSignalsTest, aWorkstationThatIsNoLongerLinkedStillMissesItsRoomFirst) {
    launchShared();
    run([](AppStore& app) { return app.unlinkComputer(); });
    answer("DELETE", "/devices/me", 200);
    ASSERT_FALSE(state().isPaired);
    journal.take();
    send({.note = "n", .roomId = "room-1", .providerIds = {}, .toDepartment = {}});
    EXPECT_EQ(state().lastError, chooseRoom);
    EXPECT_THAT(journal.take(), ElementsAre("notes.set sending-note [n]", "notes.clearSending"));
}

TEST_F(StoreSignalsTest, aSendThatLostItsSessionFallsSilentYetEnds) {
    launchInRoom();
    send({.note = "n", .roomId = {}, .providerIds = {}, .toDepartment = {}});
    Exchange* const exchange = openRequest("POST", "/signals");
    run([](AppStore& app) { return app.unlinkComputer(); });
    answer("DELETE", "/devices/me", 200);
    ASSERT_FALSE(state().isPaired);
    EXPECT_TRUE(state().isSending);
    journal.take();
    exchange->answer(200, support::toJson(makeSignal("s")));
    settle();
    EXPECT_FALSE(state().isSending);
    EXPECT_THAT(state().signals, IsEmpty());
    // The note belongs to another generation by now.
    EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(StoreSignalsTest, aFailureThatLostItsSessionIsSilentToo) {
    launchInRoom();
    send({.note = "n", .roomId = {}, .providerIds = {}, .toDepartment = {}});
    Exchange* const exchange = openRequest("POST", "/signals");
    deliverRecord("office.updated", server::server_message::OfficeUpdated{support::makeOffice("office-2")});
    journal.take();
    exchange->answer(409, R"({"error":"duplicate_active_signal"})");
    settle();
    EXPECT_EQ(state().lastError, std::nullopt);
    EXPECT_FALSE(state().isSending);
    EXPECT_THAT(journal.take(), IsEmpty());
}

// Acting.

TEST_F(StoreSignalsTest, anActionIsAskedForAndShownOnlyWhenAnswered) {
    launchWith("room", makeSnapshot([](StateSnapshot& snapshot) { snapshot.signals = {makeSignal("s")}; }));
    act("s", "acknowledge");
    EXPECT_EQ(openRequest("PATCH", "/signals/s")->request.body, R"({"action":"acknowledge"})");
    EXPECT_EQ(state().signals[0].status, "waiting");
    answerWith("PATCH", "/signals/s", makeSignalThatIs("acknowledged", "s"));
    EXPECT_EQ(state().signals[0].status, "acknowledged");
    EXPECT_THAT(takeLinesOf("notifications.update"), IsEmpty());

    act("s", "done");
    answerWith("PATCH", "/signals/s", makeSignalThatIs("done", "s"));
    EXPECT_THAT(state().signals, IsEmpty());
    EXPECT_THAT(takeLinesOf("notifications.update"), IsEmpty());
}

TEST_F(StoreSignalsTest, aFailedActionLeavesTheSignalAsItWas) {
    launchWith("room", makeSnapshot([](StateSnapshot& snapshot) { snapshot.signals = {makeSignal("s")}; }));
    act("s", "cancel");
    answer("PATCH", "/signals/s", 409, R"({"error":"already_cleared"})");
    EXPECT_EQ(state().lastError, "That signal was already cleared.");
    EXPECT_EQ(state().signals[0], makeSignal("s"));
    act("s", "cancel");
    answer("PATCH", "/signals/s", 200, "");
    EXPECT_EQ(state().lastError, "Unexpected response from the server.");
    act("s", "cancel");
    answerWith("PATCH", "/signals/s", makeSignalThatIs("canceled", "s"));
    EXPECT_EQ(state().lastError, std::nullopt);
}

TEST_F(StoreSignalsTest, actionsUnderWayAtOnceMergeEachByItself) {
    launchWith("room",
               makeSnapshot([](StateSnapshot& snapshot) { snapshot.signals = {makeSignal("a"), makeSignal("b")}; }));
    act("a", "done");
    act("b", "done");
    answerWith("PATCH", "/signals/b", makeSignalThatIs("done", "b"));
    EXPECT_THAT(idsOf(state().signals), ElementsAre("a"));
    answerWith("PATCH", "/signals/a", makeSignalThatIs("done", "a"));
    EXPECT_THAT(state().signals, IsEmpty());
}

TEST_F(StoreSignalsTest, withoutASessionNothingIsActedOnAndNoStatusIsSet) {
    launchUnpaired();
    act("s", "done");
    setStatus(records::MemberStatus::dnd);
    EXPECT_EQ(urlLoading.requestLines(), Lines{"POST https://default.example/api/v1/pair/request"});
    EXPECT_EQ(state().lastError, std::nullopt);
}

// The own status.

TEST_F(StoreSignalsTest, aStatusIsSentByItsWordAndTheReplyReplacesTheMember) {
    launchInRoom();
    const std::vector<std::pair<records::MemberStatus, std::string>> rows{
        {records::MemberStatus::available, "available"},
        {records::MemberStatus::busy, "busy"},
        {records::MemberStatus::dnd, "dnd"}};
    for (const auto& [status, word] : rows) {
        setStatus(status);
        EXPECT_EQ(openRequest("POST", "/members/me/status")->request.body, R"({"status":")" + word + R"("})");
        journal.take();
        answerWith("POST", "/members/me/status", makeMember("member-2", [&](Member& member) { member.status = word; }));
        EXPECT_THAT(idsOf(state().members), ElementsAre("member-1", "member-2", "member-3"));
        EXPECT_EQ(state().members[1].status, word);
        EXPECT_EQ(state().lastError, std::nullopt);
        EXPECT_THAT(takeLinesOf("notifications"), ElementsAre("notifications.reconcile nobody []"));
    }
}

TEST_F(StoreSignalsTest, theReplyToAStatusNeverAddsAMember) {
    launchInRoom();
    setStatus(records::MemberStatus::busy);
    journal.take();
    answerWith("POST", "/members/me/status", makeMember("stranger"));
    EXPECT_THAT(idsOf(state().members), ElementsAre("member-1", "member-2", "member-3"));
    EXPECT_THAT(takeLinesOf("notifications"), ElementsAre("notifications.reconcile nobody []"));
}

TEST_F(StoreSignalsTest, aCooldownReachesTheErrorLineAndNothingElse) {
    launchInRoom();
    setStatus(records::MemberStatus::available);
    answer("POST", "/members/me/status", 403, R"({"error":"in_cooldown","cooldownUntil":"2026-01-02T09:00:00Z"})");
    EXPECT_EQ(state().lastError, "You're on a short cooldown after being moved off shift.");
    EXPECT_EQ(state().shiftCooldown, std::nullopt);
    setStatus(records::MemberStatus::available);
    answer("POST", "/members/me/status", 401, R"({"error":"in_cooldown","message":"Two more minutes."})");
    EXPECT_EQ(state().lastError, "Two more minutes.");
    EXPECT_TRUE(state().isPaired);
}

TEST_F(StoreSignalsTest, noEventButASignInTouchesTheErrorLine) {
    using namespace server::server_message;
    launchWith("room", makeSnapshot([](StateSnapshot& snapshot) { snapshot.signals = {makeSignal("s")}; }));
    run([](AppStore& app) { return app.actOnSignal(makeSignal("s"), "done"); });
    answer("PATCH", "/signals/s", 500);
    const auto error = state().lastError;
    ASSERT_TRUE(error);

    deliverCreated(makeSignal("t"));
    EXPECT_THAT(idsOf(state().signals), ElementsAre("s", "t"));
    EXPECT_EQ(state().lastError, error) << "a new signal";
    deliverUpdated(makeSignalThatIs("acknowledged", "t"));
    EXPECT_EQ(state().signals[1].status, "acknowledged");
    EXPECT_EQ(state().lastError, error) << "a changed signal";
    deliverUpdated(makeSignalThatIs("done", "t"));
    EXPECT_THAT(idsOf(state().signals), ElementsAre("s"));
    EXPECT_EQ(state().lastError, error) << "a signal that is over";
    deliverRecord("member.updated", MemberUpdated{makeMember("member-9")});
    EXPECT_THAT(state().members, testing::SizeIs(4));
    EXPECT_EQ(state().lastError, error) << "a member";
    deliverRecord("office.updated",
                  OfficeUpdated{support::makeOffice("office-1", [](auto& office) { office.name = "New"; })});
    EXPECT_EQ(state().office->name, "New");
    EXPECT_EQ(state().lastError, error) << "the office";
    deliverRecord("rooms.updated", RoomsUpdated{{support::makeRoom("room-1")}});
    EXPECT_THAT(idsOf(state().rooms), ElementsAre("room-1"));
    EXPECT_EQ(state().lastError, error) << "the rooms";
    deliverRecord("types.updated", TypesUpdated{{support::makeType("type-new", 1)}});
    EXPECT_THAT(idsOf(state().signalTypes), ElementsAre("type-new"));
    EXPECT_EQ(state().lastError, error) << "the types";
    deliver("desktop.release", R"({"desktopRelease":)" + support::toJson(support::makeRelease("9", 9)) + "}");
    EXPECT_THAT(takeLinesOf("updates"), ElementsAre("updates.announce 9"));
    EXPECT_EQ(state().lastError, error) << "a release";
    deliver("session.ended", "{}");
    EXPECT_EQ(state().lastError, error) << "the end of a sign-in";
    answerWith("GET", "/state", makeSnapshot());
    EXPECT_THAT(state().signals, IsEmpty());
    EXPECT_EQ(state().lastError, error) << "the state asked for";
    deliverRecord("office.updated", OfficeUpdated{support::makeOffice("office-2")});
    EXPECT_EQ(state().office->id, "office-2");
    EXPECT_EQ(state().lastError, error) << "a move";
    fail("GET", "/state", platform::TransportCause::noNetwork);
    EXPECT_EQ(state().lastError, error) << "a state that could not be had";
    deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1"));
    EXPECT_EQ(state().lastError, std::nullopt);
}

}  // namespace
}  // namespace zelkovanta::store
