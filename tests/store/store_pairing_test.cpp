#include "tests/store/pairing_test.h"

#include <variant>

namespace zelkovanta::store {
namespace {

using records::DeviceRole;
using records::PairRedeemResponse;
using support::makeDeviceOfRoom;
using support::makeDeviceWithSignIn;
using support::makeOffice;
using support::makeSnapshot;
using testing::ElementsAre;
using testing::IsEmpty;

using StorePairingTest = PairingTest;

// By a typed code.

TEST_F(StorePairingTest, aCodeGoesToTheDefaultServerWithoutATokenAndIntroducesTheComputer) {
    launchUnpaired();
    hostInfo.name = "Reception desk of the second floor, left";
    redeem();
    Exchange* const exchange = openRequest("POST", "/pair/redeem");
    ASSERT_TRUE(exchange);
    EXPECT_EQ(exchange->request.url, "https://default.example/api/v1/pair/redeem");
    EXPECT_EQ(exchange->header("Authorization"), std::nullopt);
    EXPECT_EQ(exchange->request.body,
              R"({"code":"ABCD-1234","device":{"kind":"desktop_mac","name":"Reception desk of the second flo",)"
              R"("model":"OptiPlex 7010","appVersion":"2.3.4","locale":"en-US"}})");
}

TEST_F(StorePairingTest, aComputerThatKnowsNothingOfItselfSendsTheFallbacks) {
    launchUnpaired();
    hostInfo.name.clear();
    hostInfo.model.clear();
    information.remove("CFBundleShortVersionString");
    redeem();
    EXPECT_THAT(openRequest("POST", "/pair/redeem")->request.body,
                testing::Optional(testing::HasSubstr(R"("name":"Mac","model":"Mac","appVersion":"1.0.1")")));
}

TEST_F(StorePairingTest, aNameIsCutByScalarsAndNotByBytes) {
    launchUnpaired();
    std::string name;
    for (int count = 0; count < 40; ++count) {
        name += "é";
    }
    hostInfo.name = name;
    redeem();
    EXPECT_THAT(openRequest("POST", "/pair/redeem")->request.body,
                testing::Optional(testing::HasSubstr(R"("name":")" + name.substr(0, 64) + R"(",)")));
}

TEST_F(StorePairingTest, aNameIsCutBetweenALetterAndItsMark) {
    launchUnpaired();
    const std::string head = std::string(31, 'a') + "e";
    hostInfo.name = head + "\u0301 and more";
    redeem();
    EXPECT_THAT(openRequest("POST", "/pair/redeem")->request.body,
                testing::Optional(testing::HasSubstr(R"("name":")" + head + R"(",)")));
}

TEST_F(StorePairingTest, blanksAroundANameStay) {
    launchUnpaired();
    hostInfo.name = " Front desk  ";
    redeem();
    EXPECT_THAT(openRequest("POST", "/pair/redeem")->request.body,
                testing::Optional(testing::HasSubstr(R"("name":" Front desk  ",)")));
}

TEST_F(StorePairingTest, aRedeemedCodePairsInTheToldOrder) {
    launchShowingCode();
    redeem();
    journal.take();
    answerWith("POST", "/pair/redeem", makeRedeemed(DeviceRole::room));

    ASSERT_TRUE(redeemed);
    EXPECT_TRUE(redeemed->has_value());
    const Lines lines = journal.take();
    ASSERT_EQ(lines.size(), 12U);
    EXPECT_THAT(Lines(lines.begin(), lines.begin() + 8),
                ElementsAre("keyStore.write deviceToken = 'token-by-code'",    //
                            "defaults serverURL = 'https://default.example'",  //
                            "defaults deviceRole = 'room'",                    //
                            "crash.context paired",                            //
                            "notifications.setPermissionRequested",            //
                            "crash.clearSender",                               //
                            "notes.retire active-queue-notes",                 //
                            "crash.setSender https://default.example"));
    EXPECT_THAT(Lines(lines.begin() + 8, lines.end()),
                testing::UnorderedElementsAre("notifications.requestPermission", "crash.flush", "http GET /state",
                                              "socket.open"));
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(state().role, DeviceRole::room);
    EXPECT_EQ(state().office, makeOffice("office-1"));
    EXPECT_EQ(state().device, makeDeviceOfRoom("room-7"));
    EXPECT_THAT(idsOf(state().rooms), ElementsAre("room-7"));
    EXPECT_THAT(state().members, IsEmpty());
    EXPECT_FALSE(state().hasAuthenticatedSnapshot);
    EXPECT_EQ(state().settings.serverURLString, defaultServerURL);
    EXPECT_EQ(state().settings.storedRole, "room");
    EXPECT_EQ(openRequest("GET", "/state")->header("Authorization"), "Bearer token-by-code");
}

TEST_F(StorePairingTest, theRecordOfThePairingWorksUntilTheFirstSnapshotReplacesIt) {
    launchUnpaired();
    redeem();
    answerWith("POST", "/pair/redeem", makeRedeemed(DeviceRole::member));
    EXPECT_EQ(state().role, DeviceRole::member);
    EXPECT_THAT(idsOf(state().members), ElementsAre("member-7"));
    EXPECT_THAT(state().rooms, IsEmpty());
    EXPECT_EQ(activeMember(state()), &state().members[0]);
    answerWith("GET", "/state", makeSnapshot());
    EXPECT_THAT(idsOf(state().members), ElementsAre("member-1", "member-2", "member-3"));
}

TEST_F(StorePairingTest, aSharedWorkstationStartsWithNeitherRoomNorMember) {
    launchUnpaired();
    redeem();
    answerWith("POST", "/pair/redeem", makeRedeemed(DeviceRole::shared));
    EXPECT_EQ(state().role, DeviceRole::shared);
    EXPECT_EQ(defaults.text("deviceRole"), "shared");
    EXPECT_THAT(state().rooms, IsEmpty());
    EXPECT_THAT(state().members, IsEmpty());
    answerWith("GET", "/state", makeSnapshot());
    EXPECT_THAT(idsOf(state().rooms), ElementsAre("room-1", "room-2"));
}

TEST_F(StorePairingTest, aSharedWorkstationPairedWithSomebodySignedInAdoptsThem) {
    launchUnpaired();
    redeem();
    PairRedeemResponse response = makeRedeemed(DeviceRole::shared);
    response.device = makeDeviceWithSignIn("member-1");
    answerWith("POST", "/pair/redeem", response);
    EXPECT_EQ(state().flexibleRoomSession,
              (FlexibleRoomSession{.signedInMemberId = "member-1", .confirmedRoomId = {}}));
}

TEST_F(StorePairingTest, permissionIsAskedForAtMostOnceInAProcess) {
    launchUnpaired();
    redeem();
    answerWith("POST", "/pair/redeem", makeRedeemed(DeviceRole::room));
    EXPECT_THAT(takeLinesOf("notifications.requestPermission"), testing::SizeIs(1));
    run([](AppStore& app) { return app.unlinkComputer(); });
    answer("DELETE", "/devices/me", 200);
    redeem();
    answerWith("POST", "/pair/redeem", makeRedeemed(DeviceRole::room));
    ASSERT_TRUE(state().isPaired);
    EXPECT_THAT(takeLinesOf("notifications.requestPermission"), IsEmpty());
}

TEST_F(StorePairingTest, aRelaunchWithASavedPairingAsksForNoPermission) {
    launchPaired("room");
    EXPECT_THAT(takeLinesOf("notifications.requestPermission"), IsEmpty());
}

TEST_F(StorePairingTest, aFailureGoesToTheCallerAsItIs) {
    launchShowingCode();
    redeem();
    answer("POST", "/pair/redeem", 404, R"({"error":"invalid_code"})");
    ASSERT_TRUE(redeemed);
    ASSERT_FALSE(redeemed->has_value());
    ASSERT_TRUE(std::holds_alternative<server::APIError>(redeemed->error()));
    EXPECT_EQ(store->describe(std::get<server::APIError>(redeemed->error())),
              "That code isn't valid. Check it and try again.");
    EXPECT_FALSE(state().isPaired);
    EXPECT_EQ(state().lastError, std::nullopt);
    EXPECT_THAT(takeLinesOf("keyStore"), IsEmpty());
    EXPECT_TRUE(state().setupQrImage);
}

TEST_F(StorePairingTest, anUnknownRoleFailsTheRedeeming) {
    launchUnpaired();
    redeem();
    std::string body = support::toJson(makeRedeemed(DeviceRole::room));
    body.replace(body.find(R"("role":"room")"), 13, R"("role":"desk")");
    answer("POST", "/pair/redeem", 200, body);
    ASSERT_TRUE(redeemed);
    EXPECT_FALSE(redeemed->has_value());
    EXPECT_FALSE(state().isPaired);
}

// The two ways at once.

TEST_F(StorePairingTest, aCodeRedeemedAfterTheScanHasPairedIsCancelled) {
    launchPolling();
    redeem();
    answerWith("GET", pollPath, makeApproved());
    ASSERT_TRUE(state().isPaired);
    const StoreState before = state();
    journal.take();
    answerWith("POST", "/pair/redeem", makeRedeemed(DeviceRole::shared));
    EXPECT_TRUE(wasCancelled());
    EXPECT_EQ(state().role, before.role);
    EXPECT_EQ(state().device, before.device);
    EXPECT_EQ(storedToken(), "token-by-scan");
    EXPECT_THAT(journal.take(), IsEmpty());
}

TEST_F(StorePairingTest, aRefusedCodeAfterTheScanHasPairedIsStillTheCallersFailure) {
    launchPolling();
    redeem();
    answerWith("GET", pollPath, makeApproved());
    answer("POST", "/pair/redeem", 404, R"({"error":"invalid_code"})");
    ASSERT_TRUE(redeemed);
    EXPECT_FALSE(redeemed->has_value());
    EXPECT_FALSE(wasCancelled());
    EXPECT_EQ(state().lastError, std::nullopt);
    EXPECT_TRUE(state().isPaired);
}

TEST_F(StorePairingTest, anApprovalAfterTheCodeHasPairedChangesNothing) {
    launchPolling();
    redeem();
    answerWith("POST", "/pair/redeem", makeRedeemed(DeviceRole::shared));
    ASSERT_TRUE(state().isPaired);
    journal.take();
    answerWith("GET", pollPath, makeApproved());
    EXPECT_EQ(state().role, DeviceRole::shared);
    EXPECT_EQ(storedToken(), "token-by-code");
    EXPECT_THAT(journal.take(), IsEmpty());
    loop.advance(10min);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 1U);
    EXPECT_EQ(requestCount("GET", pollPath), 1U);
}

TEST_F(StorePairingTest, bothAnswersInOneMomentPairOnceWhicheverComesFirst) {
    for (const bool isScanFirst : {false, true}) {
        support::Computer other;
        other.launchUnpaired();
        other.answerWith("POST", "/pair/request", makeCode("claim-1"));
        other.loop.advance(2s);
        std::optional<std::expected<void, PairingFailure>> result;
        other.run([&](AppStore& app) -> platform::Awaitable<void> { result = co_await app.redeemPairingCode("CODE"); });
        other.journal.take();
        Exchange* const scan = other.openRequest("GET", pollPath);
        Exchange* const code = other.openRequest("POST", "/pair/redeem");
        (isScanFirst ? scan : code)->answer(200, support::toJson(makeApproved()));
        if (isScanFirst) {
            code->answer(200, support::toJson(makeRedeemed(DeviceRole::room)));
        } else {
            scan->answer(200, support::toJson(makeApproved()));
        }
        other.settle();
        ASSERT_TRUE(result);
        EXPECT_TRUE(other.state().isPaired);
        EXPECT_EQ(std::ranges::count_if(other.journal.lines(),
                                        [](const std::string& line) { return line.starts_with("keyStore.write"); }),
                  1);
        EXPECT_EQ(other.webSocketLoading.tasks().size(), 1U);
        EXPECT_EQ(result->has_value(), !isScanFirst);
    }
}

TEST_F(StorePairingTest, aCodeThatPairsWhileTheSetupIsBeingAskedForEndsTheSetup) {
    launchUnpaired();
    redeem();
    answerWith("POST", "/pair/redeem", makeRedeemed(DeviceRole::room));
    ASSERT_TRUE(state().isPaired);
    answerWith("POST", "/pair/request", makeCode("claim-1"));
    EXPECT_EQ(state().setupQrImage, std::nullopt);
    loop.advance(1min);
    EXPECT_EQ(requestCount("GET", pollPath), 0U);
}

TEST_F(StorePairingTest, aCodeThatPairsDuringTheWaitBetweenPollsEndsTheSetup) {
    launchShowingCode();
    loop.advance(1s);
    redeem();
    answerWith("POST", "/pair/redeem", makeRedeemed(DeviceRole::room));
    loop.advance(10min);
    EXPECT_EQ(requestCount("GET", pollPath), 0U);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 1U);
}

TEST_F(StorePairingTest, aCodeThatPairsDuringTheWaitAfterAFailureEndsTheSetup) {
    launchUnpaired();
    answer("POST", "/pair/request", 500);
    redeem();
    answerWith("POST", "/pair/redeem", makeRedeemed(DeviceRole::room));
    loop.advance(10min);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 1U);
}

TEST_F(StorePairingTest, aCodeWhoseComputerWasPairedAndResetMeanwhileIsCancelled) {
    launchPolling();
    redeem();
    answerWith("GET", pollPath, makeApproved());
    run([](AppStore& app) { return app.unlinkComputer(); });
    answer("DELETE", "/devices/me", 200);
    ASSERT_FALSE(state().isPaired);
    answerWith("POST", "/pair/redeem", makeRedeemed(DeviceRole::room));
    EXPECT_TRUE(wasCancelled());
    EXPECT_FALSE(state().isPaired);
    EXPECT_EQ(storedToken(), std::nullopt);
}

TEST_F(StorePairingTest, ofTwoCodesRedeemedAtOnceTheFirstAnswerPairs) {
    launchUnpaired();
    redeem("FIRST");
    redeem("SECOND");
    const auto open = urlLoading.pending();
    ASSERT_EQ(open.size(), 3U);
    PairRedeemResponse second = makeRedeemed(DeviceRole::shared);
    second.deviceToken = "token of the second";
    open[2]->answer(200, support::toJson(second));
    open[1]->answer(200, support::toJson(makeRedeemed(DeviceRole::room)));
    settle();
    EXPECT_TRUE(wasCancelled());
    EXPECT_EQ(state().role, DeviceRole::shared);
    EXPECT_EQ(storedToken(), "token of the second");
}

// While the key store is still being read.

TEST_F(StorePairingTest, aPairingMadeWhileTheKeyStoreWasLockedIsNotOverwritten) {
    skipDesktopDefaults();
    savePairing("member", "token of old");
    keyStore.memory.setLocked(true);
    launch();
    settle();
    redeem();
    answerWith("POST", "/pair/redeem", makeRedeemed(DeviceRole::room));
    ASSERT_TRUE(state().isPaired);
    journal.take();
    keyStore.memory.setLocked(false);
    loop.advance(10s);
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(state().role, DeviceRole::room);
    EXPECT_EQ(webSocketLoading.tasks().size(), 1U);
    EXPECT_EQ(requestCount("GET", "/state"), 1U);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 0U);
    EXPECT_EQ(state().settings.serverURLString, defaultServerURL);
}

TEST_F(StorePairingTest, aKeyStoreThatOpensAfterAPairingCameAndWentBringsTheOldOneNotBack) {
    skipDesktopDefaults();
    savePairing("member", "token of old");
    keyStore.memory.setLocked(true);
    launch();
    settle();
    redeem();
    answerWith("POST", "/pair/redeem", makeRedeemed(DeviceRole::room));
    socket().fail({.closeCode = 4001, .httpStatus = {}});
    settle();
    ASSERT_FALSE(state().isPaired);
    ASSERT_TRUE(state().setupQrNotice);
    // A key store that reads what it held when it was asked.
    keyStore.memory.write(deviceTokenItem(), "token of old");
    keyStore.memory.setLocked(false);
    settle();
    EXPECT_FALSE(state().isPaired);
    EXPECT_TRUE(state().setupQrNotice);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 1U);
}

TEST_F(StorePairingTest, aKeyStoreThatLosesWritesStillPairsForThisRun) {
    launchUnpaired();
    keyStore.memory.setBroken(true);
    redeem();
    answerWith("POST", "/pair/redeem", makeRedeemed(DeviceRole::room));
    EXPECT_TRUE(state().isPaired);
    answerWith("GET", "/state", makeSnapshot());
    EXPECT_TRUE(state().hasAuthenticatedSnapshot);
    EXPECT_EQ(state().lastError, std::nullopt);
}

TEST_F(StorePairingTest, aPairingSurvivesARelaunch) {
    launchUnpaired();
    redeem();
    answerWith("POST", "/pair/redeem", makeRedeemed(DeviceRole::shared));
    store.reset();
    settle();
    launch();
    settle();
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(state().role, DeviceRole::shared);
    EXPECT_EQ(urlLoading.pending().back()->header("Authorization"), "Bearer token-by-code");
}

}  // namespace
}  // namespace zelkovanta::store
