#include "server/server_message.h"
#include "tests/store/store_test.h"

namespace zelkovanta::store {
namespace {

using records::PairRedeemResponse;
using records::StateSnapshot;
using server::ConnectionState;
using support::makeDeviceOfRoom;
using support::makeMember;
using support::makeOffice;
using support::makeSignal;
using support::makeSignalThatIs;
using support::makeSnapshot;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* invalidToken = R"({"error":"invalid_token"})";

/// What belongs to an earlier session, or to an earlier office, changes nothing.
struct StoreGuardsTest : StoreTest {
    static StateSnapshot snapshotOf(const std::string& officeId) {
        return makeSnapshot([&](StateSnapshot& snapshot) { snapshot.office = makeOffice(officeId); });
    }
    void launchInRoom() { launchWith("room", snapshotOf("office-1")); }

    void unlink() {
        run([](AppStore& app) { return app.unlinkComputer(); });
        answer("DELETE", "/devices/me", 200);
        ASSERT_FALSE(state().isPaired);
    }

    void pairAgain() {
        run([](AppStore& app) -> platform::Awaitable<void> {
            static_cast<void>(co_await app.redeemPairingCode("CODE"));
        });
        answerWith("POST", "/pair/redeem",
                   PairRedeemResponse{.deviceToken = "token-2",
                                      .device = makeDeviceOfRoom("room-1"),
                                      .office = makeOffice("office-1"),
                                      .role = records::DeviceRole::room,
                                      .room = {},
                                      .member = {}});
        ASSERT_TRUE(state().isPaired);
    }

    void moveToOffice(const std::string& officeId) {
        deliverRecord("office.updated", server::server_message::OfficeUpdated{makeOffice(officeId)});
    }

    /// One frame of every kind, each of which would change the state.
    static void deliverEverythingOver(SocketTask& task) {
        using namespace server::server_message;
        deliverOver(task, "snapshot", support::toJson(makeSnapshot([](StateSnapshot& snapshot) {
                        snapshot.office = makeOffice("stale");
                        snapshot.signals = {makeSignal("stale")};
                    })));
        deliverOver(task, "signal.created", support::toJson(SignalCreated{makeSignal("stale")}));
        deliverOver(task, "signal.updated", support::toJson(SignalUpdated{makeSignal("stale")}));
        deliverOver(task, "member.updated", support::toJson(MemberUpdated{makeMember("stale")}));
        deliverOver(task, "office.updated", support::toJson(OfficeUpdated{makeOffice("stale")}));
        deliverOver(task, "rooms.updated", support::toJson(RoomsUpdated{{support::makeRoom("stale")}}));
        deliverOver(task, "types.updated", support::toJson(TypesUpdated{{support::makeType("stale", 1)}}));
        deliverOver(task, "session.started",
                    support::toJson(SessionStarted{support::makeDeviceWithSignIn("stale"), makeMember("stale")}));
        deliverOver(task, "session.ended", "{}");
        deliverOver(task, "desktop.release",
                    R"({"desktopRelease":)" + support::toJson(support::makeRelease("9", 9)) + "}");
    }
};

/// A frame that is already posted to the main thread when the session ends: the socket itself cannot hold it back.
TEST_F(StoreGuardsTest, aMessageOnItsWayWhileTheSessionEndsIsDropped) {
    launchInRoom();
    run([](AppStore& app) { return app.unlinkComputer(); });
    main.setHeld(true);
    openRequest("DELETE", "/devices/me")->answer(200, "{}");
    settle();
    deliverOver(socket(), "signal.created", support::toJson(server::server_message::SignalCreated{makeSignal("late")}));
    settle();
    main.setHeld(false);
    settle();
    ASSERT_FALSE(state().isPaired);
    EXPECT_THAT(state().signals, IsEmpty());
    EXPECT_THAT(takeLinesOf("notifications.new"), IsEmpty());
}

TEST_F(StoreGuardsTest, everyMessageOfAReplacedSocketIsDropped) {
    launchInRoom();
    SocketTask& old = socket();
    old.outliveCancellation();
    moveToOffice("office-2");
    answerWith("GET", "/state", snapshotOf("office-2"));
    const StoreState before = state();
    journal.take();
    deliverEverythingOver(old);
    settle();
    EXPECT_EQ(state().office, before.office);
    EXPECT_EQ(state().members, before.members);
    EXPECT_EQ(state().rooms, before.rooms);
    EXPECT_EQ(state().signalTypes, before.signalTypes);
    EXPECT_EQ(state().signals, before.signals);
    EXPECT_EQ(state().device, before.device);
    EXPECT_THAT(journal.take(), IsEmpty());
}

/// Both frames are read before the main thread comes round: the first one moves the computer.
TEST_F(StoreGuardsTest, theMessageBehindAMoveBelongsToTheOldOffice) {
    launchInRoom();
    main.setHeld(true);
    deliverOver(socket(), "snapshot", support::toJson(snapshotOf("office-2")));
    deliverOver(socket(), "signal.created", support::toJson(server::server_message::SignalCreated{makeSignal("old")}));
    settle();
    main.setHeld(false);
    settle();
    EXPECT_EQ(state().office->id, "office-2");
    EXPECT_THAT(state().signals, IsEmpty());
}

TEST_F(StoreGuardsTest, theStoppedOfAReplacedSocketIsDropped) {
    launchInRoom();
    deliver("pong", "{}");
    ASSERT_EQ(state().connectionState, ConnectionState::connected);
    std::vector<ConnectionState> seen;
    const auto observer = store->observe([&](const StoreChanges& changes) {
        if (changes.contains(StoreField::connectionState)) {
            seen.push_back(state().connectionState);
        }
    });
    moveToOffice("office-2");
    EXPECT_THAT(seen, ElementsAre(ConnectionState::connecting));
    deliver("pong", "{}");
    EXPECT_EQ(state().connectionState, ConnectionState::connected);
}

TEST_F(StoreGuardsTest, theStoppedOfAnEndedSessionComesFromTheResetAlone) {
    launchInRoom();
    deliver("pong", "{}");
    unlink();
    EXPECT_EQ(state().connectionState, ConnectionState::stopped);
    pairAgain();
    EXPECT_EQ(state().connectionState, ConnectionState::connecting);
}

TEST_F(StoreGuardsTest, aRevocationOnItsWayWhileTheComputerMovesEndsNothing) {
    launchInRoom();
    main.setHeld(true);
    deliverOver(socket(), "office.updated",
                support::toJson(server::server_message::OfficeUpdated{makeOffice("office-2")}));
    settle();
    // The frame waits at the main thread; the socket's end comes behind it.
    socket().fail({.closeCode = 4001, .httpStatus = {}});
    settle();
    main.setHeld(false);
    settle();
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(webSocketLoading.tasks().size(), 2U);
}

TEST_F(StoreGuardsTest, aRefusedUpgradeOfAReplacedSocketAsksNothing) {
    launchInRoom();
    SocketTask& old = socket();
    old.outliveCancellation();
    moveToOffice("office-2");
    const std::size_t before = requestCount("GET", "/state");
    old.fail({.closeCode = {}, .httpStatus = 401});
    loop.advance(1s);
    EXPECT_EQ(requestCount("GET", "/state"), before);
}

TEST_F(StoreGuardsTest, refusedUpgradesAskOnceInTenSecondsThroughAMoveAResetAndTheNextPairing) {
    const auto expectStateAskedFor = [this](std::size_t times, const char* when) {
        socket().fail({.closeCode = {}, .httpStatus = 401});
        settle();
        EXPECT_EQ(requestCount("GET", "/state"), times) << when;
    };
    launchInRoom();
    expectStateAskedFor(2, "at the first refusal");
    loop.advance(1s);  // The next socket.
    moveToOffice("office-2");
    ASSERT_EQ(requestCount("GET", "/state"), 3U);
    expectStateAskedFor(3, "after a move");
    unlink();
    pairAgain();
    ASSERT_EQ(requestCount("GET", "/state"), 4U);
    expectStateAskedFor(4, "after a reset and a pairing");
    loop.advance(9s);
    expectStateAskedFor(4, "when ten seconds are not over yet");
    loop.advance(3s);
    expectStateAskedFor(5, "when they are");
}

// Replies.

TEST_F(StoreGuardsTest, theStateOfAnEndedSessionIsDropped) {
    launchPaired("room");
    Exchange* const old = openRequest("GET", "/state");
    unlink();
    old->answer(200, support::toJson(snapshotOf("office-1")));
    settle();
    EXPECT_EQ(state().office, std::nullopt);
    EXPECT_FALSE(state().hasAuthenticatedSnapshot);
}

TEST_F(StoreGuardsTest, theStateOfAnEarlierPairingIsDroppedByTheNextOne) {
    launchPaired("room");
    Exchange* const old = openRequest("GET", "/state");
    unlink();
    pairAgain();
    old->answer(200, support::toJson(snapshotOf("office-old")));
    settle();
    EXPECT_EQ(state().office->id, "office-1");
    EXPECT_FALSE(state().hasAuthenticatedSnapshot);
    answerWith("GET", "/state", snapshotOf("office-1"));
    EXPECT_TRUE(state().hasAuthenticatedSnapshot);
}

TEST_F(StoreGuardsTest, theStateAskedForBeforeAMoveIsDropped) {
    launchPaired("room");
    Exchange* const old = openRequest("GET", "/state");
    deliverSnapshot(snapshotOf("office-1"));
    moveToOffice("office-2");
    ASSERT_EQ(requestCount("GET", "/state"), 2U);
    old->answer(200, support::toJson(snapshotOf("office-1")));
    settle();
    EXPECT_EQ(state().office->id, "office-2");
    EXPECT_FALSE(state().hasAuthenticatedSnapshot);
}

TEST_F(StoreGuardsTest, theStateAskedForWhenASessionEndedIsDroppedAfterAMove) {
    launchInRoom();
    deliver("session.ended", "{}");
    Exchange* const old = openRequest("GET", "/state");
    deliverSnapshot(snapshotOf("office-2"));
    old->answer(200, support::toJson(snapshotOf("office-1")));
    settle();
    EXPECT_EQ(state().office->id, "office-2");
}

TEST_F(StoreGuardsTest, repliesToWhatAPersonDidBeforeAMoveAreDroppedAndTheirErrorsSilent) {
    for (const int status : {200, 409}) {
        support::Computer other;
        other.launchWith("room", makeSnapshot([](StateSnapshot& snapshot) { snapshot.signals = {makeSignal("s")}; }));
        other.run([](AppStore& app) { return app.actOnSignal(makeSignal("s"), "acknowledge"); });
        other.run([](AppStore& app) { return app.setMemberStatus(records::MemberStatus::busy); });
        other.run([](AppStore& app) { return app.signOutStation(); });
        other.run([](AppStore& app) { return app.unlinkComputer(); });
        other.run([](AppStore& app) { return app.sendSignal("type-ready", "", {}, {}, {}); });
        const auto open = other.urlLoading.pending();
        ASSERT_EQ(open.size(), 5U);
        other.deliverSnapshot(snapshotOf("office-2"));
        const StoreState before = other.state();
        other.journal.take();
        const std::vector<std::string> bodies{
            support::toJson(makeSignalThatIs("acknowledged", "stale")),
            support::toJson(makeMember("member-1", [](records::Member& member) { member.status = "stale"; })), "{}",
            "{}", support::toJson(makeSignal("stale"))};
        for (std::size_t index = 0; index < open.size(); ++index) {
            open[index]->answer(status, status == 200 ? bodies[index] : R"({"error":"already_cleared"})");
        }
        other.settle();
        EXPECT_TRUE(other.state().isPaired);
        EXPECT_EQ(other.state().signals, before.signals);
        EXPECT_EQ(other.state().members, before.members);
        EXPECT_EQ(other.state().device, before.device);
        EXPECT_EQ(other.state().lastError, std::nullopt);
        EXPECT_FALSE(other.state().isSending);
        EXPECT_THAT(other.journal.take(), IsEmpty());
    }
}

TEST_F(StoreGuardsTest, aLateSuccessOfAnEarlierSessionLeavesTheErrorOfTheNextOne) {
    struct Row {
        std::function<platform::Awaitable<void>(AppStore&)> begin;
        const char* method;
        const char* path;
        std::string reply;
    };
    const std::vector<Row> rows{
        {[](AppStore& app) { return app.sendSignal("type-ready", "", {}, {}, {}); }, "POST", "/signals",
         support::toJson(makeSignal("s"))},
        {[](AppStore& app) { return app.actOnSignal(makeSignal("s"), "done"); }, "PATCH", "/signals/s",
         support::toJson(makeSignalThatIs("done", "s"))},
        {[](AppStore& app) { return app.setMemberStatus(records::MemberStatus::busy); }, "POST", "/members/me/status",
         support::toJson(makeMember("member-1"))},
        {[](AppStore& app) { return app.signOutStation(); }, "POST", "/devices/me/signout", ""}};
    launchInRoom();
    for (const Row& row : rows) {
        run(row.begin);
        Exchange* const old = openRequest(row.method, row.path);
        ASSERT_TRUE(old) << row.path;
        unlink();
        pairAgain();
        run([](AppStore& app) { return app.actOnSignal(makeSignal("other"), "done"); });
        answer("PATCH", "/signals/other", 409, R"({"error":"already_cleared"})");
        ASSERT_EQ(state().lastError, "That signal was already cleared.");
        old->answer(200, row.reply);
        settle();
        EXPECT_EQ(state().lastError, "That signal was already cleared.") << row.path;
    }
}

TEST_F(StoreGuardsTest, aLateUnlinkingDoesNotEndTheNextPairing) {
    launchInRoom();
    run([](AppStore& app) { return app.unlinkComputer(); });
    run([](AppStore& app) { return app.unlinkComputer(); });
    const auto open = urlLoading.pending();
    ASSERT_EQ(open.size(), 2U);
    open[0]->answer(200, "{}");
    settle();
    pairAgain();
    open[1]->answer(401, R"({"error":"unknown_device"})");
    settle();
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(state().lastError, std::nullopt);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 1U);
}

TEST_F(StoreGuardsTest, aDeadTokenOfAnEarlierSessionDoesNotUnlinkTheNextOne) {
    launchInRoom();
    run([](AppStore& app) { return app.actOnSignal(makeSignal("s"), "done"); });
    Exchange* const old = openRequest("PATCH", "/signals/s");
    unlink();
    pairAgain();
    old->answer(401, invalidToken);
    settle();
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(state().setupQrNotice, std::nullopt);
    EXPECT_EQ(state().lastError, std::nullopt);
}

/// The word of a dead token is already on its way to the main thread when the computer moves.
TEST_F(StoreGuardsTest, aDeadTokenReportedForTheOldOfficeDoesNotUnlinkInTheNewOne) {
    launchInRoom();
    run([](AppStore& app) { return app.actOnSignal(makeSignal("s"), "done"); });
    main.setHeld(true);
    deliverOver(socket(), "office.updated",
                support::toJson(server::server_message::OfficeUpdated{makeOffice("office-2")}));
    settle();
    openRequest("PATCH", "/signals/s")->answer(401, invalidToken);
    settle();
    main.setHeld(false);
    settle();
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(state().office->id, "office-2");
}

TEST_F(StoreGuardsTest, aDeadTokenAfterAMoveUnlinksAsAlways) {
    launchInRoom();
    moveToOffice("office-2");
    answer("GET", "/state", 401, invalidToken);
    EXPECT_FALSE(state().isPaired);
    EXPECT_TRUE(state().setupQrNotice);
}

TEST_F(StoreGuardsTest, theCrashSenderOfTheOldOfficeIsReplacedByOneThatSends) {
    launchInRoom();
    const CrashSession::Sender old = crash.sender;
    moveToOffice("office-2");
    sendReports(old, {"{}"});
    ASSERT_TRUE(sentReports);
    EXPECT_FALSE(sentReports->has_value());
    sendReports(crash.sender, {"{}"});
    EXPECT_EQ(requestCount("POST", "/crash-reports"), 1U);
}

TEST_F(StoreGuardsTest, aReplyThatEndsAfterTheStoreIsDroppedWithIt) {
    launchPaired("room");
    Exchange* const old = openRequest("GET", "/state");
    store.reset();
    old->answer(401, invalidToken);
    settle();
    EXPECT_THAT(takeLinesOf("keyStore.remove"), IsEmpty());
}

TEST_F(StoreGuardsTest, aReplyFromAnotherOfficeMovesTheComputerWithoutASecondRequest) {
    for (const int status : {200, 409}) {
        support::Computer other;
        other.launchWith("room", makeSnapshot([](StateSnapshot& snapshot) { snapshot.signals = {makeSignal("s")}; }));
        SocketTask& oldSocket = other.socket();
        other.run([](AppStore& app) { return app.actOnSignal(makeSignal("s"), "acknowledge"); });
        Exchange* const oldAction = other.openRequest("PATCH", "/signals/s");
        other.deliver("session.ended", "{}");
        ASSERT_EQ(other.requestCount("GET", "/state"), 2U);
        other.answerWith("GET", "/state", makeSnapshot([](StateSnapshot& snapshot) {
                             snapshot.office = makeOffice("office-2");
                             snapshot.signals = {makeSignal("s")};
                         }));

        EXPECT_EQ(other.state().office->id, "office-2");
        EXPECT_TRUE(other.state().hasAuthenticatedSnapshot);
        EXPECT_EQ(other.requestCount("GET", "/state"), 2U);
        EXPECT_EQ(other.webSocketLoading.tasks().size(), 2U);
        EXPECT_FALSE(oldSocket.isLive());
        EXPECT_TRUE(other.socket().isLive());

        other.journal.take();
        oldAction->answer(status, status == 200 ? support::toJson(makeSignalThatIs("acknowledged", "s"))
                                                : R"({"error":"already_cleared"})");
        other.settle();
        EXPECT_EQ(other.state().signals[0].status, "waiting");
        EXPECT_EQ(other.state().lastError, std::nullopt);
        EXPECT_THAT(other.journal.take(), IsEmpty());
        other.deliverCreated(makeSignal("t"));
        EXPECT_THAT(idsOf(other.state().signals), ElementsAre("s", "t"));
    }
}

}  // namespace
}  // namespace zelkovanta::store
