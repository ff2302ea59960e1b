#include "server/server_message.h"
#include "tests/store/pairing_test.h"

#include <boost/asio/post.hpp>

namespace zelkovanta::store {
namespace {

using records::StateSnapshot;
using server::ConnectionState;
using support::makeMember;
using support::makeOffice;
using support::makeSignal;
using support::makeSignalThatIs;
using support::makeSnapshot;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* invalidToken = R"({"error":"invalid_token"})";

/// A paired computer can be paired once more by a setup code that was asked for by hand. Nothing ends in between, so
/// that what belongs to the first session is told apart by its client and its socket alone.
struct StoreTwoSessionsTest : PairingTest {
    static StateSnapshot snapshotWith(std::vector<records::Signal> signals, const std::string& officeId = "office-1") {
        return makeSnapshot([&](StateSnapshot& snapshot) {
            snapshot.office = makeOffice(officeId);
            snapshot.signals = std::move(signals);
        });
    }

    /// A session that shows signal "s" over a live socket.
    void launchFirstSession() {
        launchWith("room", snapshotWith({makeSignal("s")}));
        deliver("pong", "{}");
        ASSERT_EQ(state().connectionState, ConnectionState::connected);
    }

    /// Asks for a code by hand, up to the poll that the scan will answer.
    void showCode() {
        store->restartSetupQr();
        settle();
        answerWith("POST", "/pair/request", makeCode("claim-1"));
        loop.advance(2s);
        ASSERT_TRUE(openRequest("GET", pollPath));
    }

    void approveScan() {
        answerWith("GET", pollPath, makeApproved());
        expectSecondSession();
    }

    /// The approval reaches the main thread first, and behind it what `event` causes in the first session.
    void approveScanJustBefore(const std::function<void()>& event) {
        main.setHeld(true);
        openRequest("GET", pollPath)->answer(200, support::toJson(makeApproved()));
        settle();
        event();
        settle();
        main.setHeld(false);
        settle();
    }

    void expectSecondSession() const {
        EXPECT_TRUE(state().isPaired);
        EXPECT_EQ(storedToken(), "token-by-scan");
        EXPECT_EQ(state().setupQrNotice, std::nullopt);
        EXPECT_EQ(state().lastError, std::nullopt);
        EXPECT_EQ(webSocketLoading.tasks().size(), 2U);
        EXPECT_EQ(socket().header("Authorization"), "Bearer token-by-scan");
        EXPECT_EQ(requestCount("POST", "/pair/request"), 1U);
    }

    /// Everything that a person can do is under way when the second session begins, and is answered then.
    void expectOldRepliesDropped(int status, const std::vector<std::string>& bodies) {
        launchFirstSession();
        run([](AppStore& app) { return app.actOnSignal(makeSignal("s"), "acknowledge"); });
        run([](AppStore& app) { return app.setMemberStatus(records::MemberStatus::busy); });
        run([](AppStore& app) { return app.signOutStation(); });
        run([](AppStore& app) { return app.unlinkComputer(); });
        run([](AppStore& app) { return app.sendSignal("type-ready", "", {}, {}, {}); });
        const auto old = urlLoading.pending();
        ASSERT_EQ(old.size(), bodies.size());
        showCode();
        approveScan();
        answerWith("GET", "/state", snapshotWith({makeSignal("s")}));
        const StoreState before = state();
        journal.take();

        for (std::size_t index = 0; index < old.size(); ++index) {
            old[index]->answer(status, bodies[index]);
        }
        settle();
        expectSecondSession();
        EXPECT_EQ(state().signals, before.signals);
        EXPECT_EQ(state().members, before.members);
        EXPECT_EQ(state().device, before.device);
        EXPECT_FALSE(state().isSending);
        // No reset lies between the send and its end, so its note is let go of.
        EXPECT_THAT(journal.take(), ElementsAre("notes.clearSending"));
    }
};

// The second session itself.

TEST_F(StoreTwoSessionsTest, theSecondSessionHasNoSnapshotBeforeAnythingOfItIsPublished) {
    launchWith("room", snapshotWith({support::makeSignalWithNote("note", "s")}));
    showCode();
    journal.take();
    approveScan();
    EXPECT_FALSE(state().hasAuthenticatedSnapshot);
    Lines lines;
    for (const std::string& line : journal.take()) {
        if (line.starts_with("crash.") || line.starts_with("notes.")) {
            lines.push_back(line);
        }
    }
    EXPECT_THAT(lines, ElementsAre("crash.context paired",             //
                                   "crash.clearSender",                //
                                   "notes.retire active-queue-notes",  //
                                   "crash.setSender https://default.example", "crash.flush"));
}

TEST_F(StoreTwoSessionsTest, aPressWaitsForTheSnapshotOfTheSecondSession) {
    const auto snapshot = makeSnapshot([](StateSnapshot& whole) {
        whole.device = support::makeDeviceOfMember("member-1");
        whole.signals = {makeSignal("s")};
    });
    launchWith("member", snapshot);
    showCode();
    records::PairRequestPoll approved = makeApproved();
    approved.role = records::DeviceRole::member;
    approved.device = snapshot.device;
    answerWith("GET", pollPath, approved);
    expectSecondSession();
    ASSERT_NE(activeMember(state()), nullptr);
    ASSERT_THAT(idsOf(state().signals), ElementsAre("s"));
    run([this](AppStore&) {
        return notifications.actionHandler({.signalId = "s", .memberId = "member-1", .action = "done"});
    });
    EXPECT_EQ(requestCount("PATCH", "/signals/s"), 0U);
    answerWith("GET", "/state", snapshot);
    EXPECT_EQ(requestCount("PATCH", "/signals/s"), 1U);
}

TEST_F(StoreTwoSessionsTest, aPairingThatBringsNeitherRoomNorMemberLeavesThoseThatAreThere) {
    launchFirstSession();
    showCode();
    records::PairRequestPoll approved = makeApproved();
    approved.room.reset();
    answerWith("GET", pollPath, approved);
    expectSecondSession();
    EXPECT_EQ(state().device, support::makeDeviceOfRoom("room-8"));
    EXPECT_THAT(idsOf(state().rooms), ElementsAre("room-1", "room-2"));
    EXPECT_THAT(idsOf(state().members), ElementsAre("member-1", "member-2", "member-3"));
}

// Replies.

TEST_F(StoreTwoSessionsTest, aLateStateOfTheFirstSessionIsDropped) {
    launchPaired("room");
    Exchange* const old = openRequest("GET", "/state");
    showCode();
    approveScan();
    old->answer(200, support::toJson(snapshotWith({makeSignal("stale")}, "stale")));
    settle();
    EXPECT_EQ(state().office->id, "office-1");
    EXPECT_THAT(state().signals, IsEmpty());
    EXPECT_FALSE(state().hasAuthenticatedSnapshot);
    answerWith("GET", "/state", snapshotWith({makeSignal("fresh")}));
    EXPECT_THAT(idsOf(state().signals), ElementsAre("fresh"));
}

TEST_F(StoreTwoSessionsTest, lateRepliesToWhatAPersonDidAreDropped) {
    expectOldRepliesDropped(
        200, {support::toJson(makeSignalThatIs("acknowledged", "s")),
              support::toJson(makeMember("member-1", [](records::Member& member) { member.status = "stale"; })), "{}",
              "{}", support::toJson(makeSignal("stale"))});
}

TEST_F(StoreTwoSessionsTest, lateFailuresOfWhatAPersonDidAreSilent) {
    expectOldRepliesDropped(409, std::vector<std::string>(5, R"({"error":"already_cleared"})"));
}

TEST_F(StoreTwoSessionsTest, aLateWordThatTheFirstTokenIsDeadEndsNothing) {
    launchFirstSession();
    run([](AppStore& app) { return app.actOnSignal(makeSignal("s"), "done"); });
    Exchange* const old = openRequest("PATCH", "/signals/s");
    showCode();
    approveScan();
    old->answer(401, invalidToken);
    settle();
    expectSecondSession();
}

TEST_F(StoreTwoSessionsTest, aWordThatTheFirstTokenIsDeadOnItsWayMeanwhileEndsNothing) {
    launchFirstSession();
    run([](AppStore& app) { return app.actOnSignal(makeSignal("s"), "done"); });
    Exchange* const old = openRequest("PATCH", "/signals/s");
    showCode();
    approveScanJustBefore([&] { old->answer(401, invalidToken); });
    expectSecondSession();
}

TEST_F(StoreTwoSessionsTest, theCrashSenderOfTheFirstSessionSendsNothing) {
    launchFirstSession();
    // Keeps the first client alive beyond its session.
    run([](AppStore& app) { return app.actOnSignal(makeSignal("s"), "done"); });
    const CrashSession::Sender old = crash.sender;
    showCode();
    approveScan();
    sendReports(old, {"{}"});
    ASSERT_TRUE(sentReports);
    EXPECT_FALSE(sentReports->has_value());
    EXPECT_EQ(requestCount("POST", "/crash-reports"), 0U);
    sendReports(crash.sender, {"{}"});
    ASSERT_TRUE(openRequest("POST", "/crash-reports"));
    EXPECT_EQ(openRequest("POST", "/crash-reports")->header("Authorization"), "Bearer token-by-scan");
}

// The socket.

TEST_F(StoreTwoSessionsTest, aFrameOfTheFirstSocketOnItsWayMeanwhileIsDropped) {
    launchFirstSession();
    SocketTask& old = socket();
    old.outliveCancellation();
    showCode();
    const auto members = state().members;
    approveScanJustBefore([&] {
        deliverOver(old, "signal.created", support::toJson(server::server_message::SignalCreated{makeSignal("stale")}));
    });
    expectSecondSession();
    EXPECT_THAT(idsOf(state().signals), ElementsAre("s"));
    EXPECT_EQ(state().members, members);
    EXPECT_THAT(takeLinesOf("notifications.new"), IsEmpty());

    deliverOver(old, "signal.created", support::toJson(server::server_message::SignalCreated{makeSignal("later")}));
    settle();
    EXPECT_THAT(idsOf(state().signals), ElementsAre("s"));
    deliverCreated(makeSignal("new"));
    EXPECT_THAT(idsOf(state().signals), ElementsAre("s", "new"));
}

TEST_F(StoreTwoSessionsTest, theStoppedOfTheFirstSocketIsDropped) {
    launchFirstSession();
    SocketTask& old = socket();
    old.outliveCancellation();  // The old socket lives long enough to say it.
    showCode();
    // The sender is let go of right after the old socket was told to stop, so that two turns later the main thread
    // stands between the old socket's "stopped" and the new one's "connecting".
    std::vector<ConnectionState> seen;
    std::shared_ptr<void> whenLetGo(nullptr, [&](void*) {
        boost::asio::post(main.executor(), [&] {
            boost::asio::post(main.executor(), [&] { seen.push_back(state().connectionState); });
        });
    });
    crash.sender = [held = std::move(whenLetGo)](
                       std::vector<std::string>) -> platform::Awaitable<std::expected<std::int64_t, server::APIError>> {
        co_return 0;
    };
    approveScan();
    EXPECT_THAT(seen, ElementsAre(ConnectionState::connected));
    EXPECT_EQ(state().connectionState, ConnectionState::connecting);
}

TEST_F(StoreTwoSessionsTest, aLostLinkOfTheFirstSocketOnItsWayMeanwhileIsNotShown) {
    launchFirstSession();
    SocketTask& old = socket();
    showCode();
    std::vector<ConnectionState> seen;
    const auto observer = store->observe([&](const StoreChanges& changes) {
        if (changes.contains(StoreField::connectionState)) {
            seen.push_back(state().connectionState);
        }
    });
    approveScanJustBefore([&] { old.fail({.closeCode = 1006, .httpStatus = {}}); });
    expectSecondSession();
    EXPECT_THAT(seen, ElementsAre(ConnectionState::connecting));
}

TEST_F(StoreTwoSessionsTest, aRevocationByTheFirstSocketOnItsWayMeanwhileEndsNothing) {
    launchFirstSession();
    SocketTask& old = socket();
    showCode();
    approveScanJustBefore([&] { old.fail({.closeCode = 4001, .httpStatus = {}}); });
    expectSecondSession();
    socket().fail({.closeCode = 4001, .httpStatus = {}});
    settle();
    EXPECT_FALSE(state().isPaired);
}

TEST_F(StoreTwoSessionsTest, aRefusedUpgradeOfTheFirstSocketOnItsWayMeanwhileAsksNothing) {
    launchPaired("room");
    SocketTask& old = socket();
    showCode();
    approveScanJustBefore([&] { old.fail({.closeCode = {}, .httpStatus = 401}); });
    expectSecondSession();
    EXPECT_EQ(requestCount("GET", "/state"), 2U);  // One for each session.
}

// What goes on from one pairing into the next.

TEST_F(StoreTwoSessionsTest, aSignOutOfALostSignInHoldsTheNextOneBackAcrossPairings) {
    const auto signedIn =
        makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = support::makeDeviceWithSignIn("member-1"); });
    launchPaired("shared");
    deliverSnapshot(signedIn);
    Exchange* const old = openRequest("POST", "/devices/me/signout");
    ASSERT_TRUE(old);
    run([](AppStore& app) { return app.unlinkComputer(); });
    answer("DELETE", "/devices/me", 200);
    redeem();
    answerWith("POST", "/pair/redeem", makeRedeemed(records::DeviceRole::shared));
    ASSERT_TRUE(state().isPaired);

    deliverSnapshot(signedIn);
    EXPECT_EQ(state().device->signedInMemberId, std::nullopt);
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 1U);
    old->answer(200, "");
    settle();
    EXPECT_EQ(requestCount("POST", "/devices/me/signout"), 1U);
    deliverSnapshot(signedIn);
    ASSERT_TRUE(openRequest("POST", "/devices/me/signout"));
    EXPECT_EQ(openRequest("POST", "/devices/me/signout")->header("Authorization"), "Bearer token-by-code");
}

TEST_F(StoreTwoSessionsTest, theEndOfAnOldSendEndsTheBusySignOfTheNewOneButKeepsItsNote) {
    launchFirstSession();
    const auto send = [this](const std::string& note) {
        run([note](AppStore& app) { return app.sendSignal("type-ready", note, {}, {}, {}); });
    };
    send("old");
    Exchange* const old = openRequest("POST", "/signals");
    run([](AppStore& app) { return app.unlinkComputer(); });
    answer("DELETE", "/devices/me", 200);
    redeem();
    answerWith("POST", "/pair/redeem", makeRedeemed(records::DeviceRole::room));
    send("new");
    ASSERT_TRUE(state().isSending);
    journal.take();

    old->answer(409, R"({"error":"duplicate_active_signal"})");
    settle();
    EXPECT_FALSE(state().isSending);
    EXPECT_EQ(state().lastError, std::nullopt);
    EXPECT_THAT(journal.take(), IsEmpty());

    answerWith("POST", "/signals", makeSignal("sent"));
    EXPECT_FALSE(state().isSending);
    EXPECT_THAT(idsOf(state().signals), ElementsAre("sent"));
    EXPECT_THAT(takeLinesOf("notes.clearSending"), testing::SizeIs(1));
}

TEST_F(StoreTwoSessionsTest, ofTwoSendsAtOnceEachLetsGoOfTheNoteAndEndsTheBusySign) {
    launchFirstSession();
    run([](AppStore& app) { return app.sendSignal("type-ready", "one", {}, {}, {}); });
    run([](AppStore& app) { return app.sendSignal("type-ready", "two", {}, {}, {}); });
    EXPECT_EQ(requestCount("POST", "/signals"), 2U);
    EXPECT_THAT(takeLinesOf("notes.clearSending"), IsEmpty());
    answerWith("POST", "/signals", makeSignal("one"));
    EXPECT_FALSE(state().isSending);
    EXPECT_THAT(takeLinesOf("notes.clearSending"), testing::SizeIs(1));
    answer("POST", "/signals", 409, R"({"error":"duplicate_active_signal"})");
    EXPECT_FALSE(state().isSending);
    EXPECT_THAT(takeLinesOf("notes.clearSending"), testing::SizeIs(1));
    EXPECT_THAT(idsOf(state().signals), ElementsAre("s", "one"));
    EXPECT_EQ(state().lastError, "This room already has an active signal.");
}

}  // namespace
}  // namespace zelkovanta::store
