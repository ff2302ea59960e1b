#include "records/server_date.h"
#include "store/settings.h"
#include "tests/store/store_test.h"

#include <variant>

namespace zelkovanta::store {
namespace {

using records::DeviceRole;
using records::Member;
using records::PairRedeemResponse;
using records::PairRequestPoll;
using records::QrTokenResponse;
using records::Room;
using support::makeDevice;
using support::makeDeviceOfMember;
using support::makeDeviceOfRoom;
using support::makeDeviceWithSignIn;
using support::makeMember;
using support::makeOffice;
using support::makeRoom;
using support::makeSnapshot;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr const char* pollPath = "/pair/request/claim-1";

QrTokenResponse makeCode(std::string claimToken, std::string png = "data:image/png;base64,aW1hZ2U=") {
    return {.token = "token of " + claimToken,
            .claimToken = claimToken,
            .qrData = "zelkovanta://setup",
            .qrPng = std::move(png),
            .expiresAt = "2001-01-01T00:00:00Z"};
}

PairRedeemResponse makeRedeemed(DeviceRole role) {
    PairRedeemResponse response{.deviceToken = "token-by-code",
                                .device = makeDevice(),
                                .office = makeOffice("office-1"),
                                .role = role,
                                .room = {},
                                .member = {}};
    if (role == DeviceRole::room) {
        response.device = makeDeviceOfRoom("room-7");
        response.room = makeRoom("room-7");
    } else if (role == DeviceRole::member) {
        response.device = makeDeviceOfMember("member-7");
        response.member = makeMember("member-7");
    }
    return response;
}

PairRequestPoll makeApproved() {
    return {.status = "approved",
            .deviceToken = "token-by-scan",
            .device = makeDeviceOfRoom("room-8"),
            .office = makeOffice("office-1"),
            .role = DeviceRole::room,
            .room = makeRoom("room-8"),
            .member = {}};
}

PairRequestPoll makePollThatIs(std::string status) {
    return {.status = std::move(status),
            .deviceToken = {},
            .device = {},
            .office = {},
            .role = {},
            .room = {},
            .member = {}};
}

struct StorePairingTest : StoreTest {
    std::optional<std::expected<void, PairingFailure>> redeemed;

    void redeem(std::string code = "ABCD-1234") {
        run([this, code](AppStore& app) -> platform::Awaitable<void> {
            redeemed = co_await app.redeemPairingCode(code);
        });
    }

    bool wasCancelled() const {
        return redeemed && !*redeemed && std::holds_alternative<PairingCancelled>(redeemed->error());
    }

    std::optional<std::string> storedToken() const { return keyStore.memory.peek(deviceTokenItem()); }

    /// An unpaired computer that shows a code, before its first poll.
    void launchShowingCode() {
        launchUnpaired();
        answerWith("POST", "/pair/request", makeCode("claim-1"));
        journal.take();
    }

    /// The same with its first poll under way.
    void launchPolling() {
        launchShowingCode();
        loop.advance(2s);
        ASSERT_TRUE(openRequest("GET", pollPath));
    }
};

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

// By a code that is scanned.

TEST_F(StorePairingTest, theSetupAsksTheDefaultServerAndShowsTheCode) {
    launchUnpaired();
    Exchange* const exchange = openRequest("POST", "/pair/request");
    ASSERT_TRUE(exchange);
    EXPECT_EQ(exchange->request.url, "https://default.example/api/v1/pair/request");
    EXPECT_EQ(exchange->header("Authorization"), std::nullopt);
    EXPECT_EQ(exchange->request.body, R"({"device":{"kind":"desktop_mac","name":"Front Desk","model":"OptiPlex 7010",)"
                                      R"("appVersion":"2.3.4","locale":"en-US"}})");
    EXPECT_EQ(state().setupQrImage, std::nullopt);
    EXPECT_EQ(state().setupQrError, std::nullopt);

    loop.advance(3s);
    answerWith("POST", "/pair/request", makeCode("claim-1"));
    EXPECT_EQ(state().setupQrImage, "image");
    EXPECT_EQ(state().setupQrError, std::nullopt);
    // The reply's own time is not read.
    EXPECT_EQ(state().setupQrExpiresAt, records::formatServerDate(clock.wallNow() + 270s));
}

TEST_F(StorePairingTest, thePollsComeTwoSecondsApartWithoutAToken) {
    launchShowingCode();
    loop.advance(1999ms);
    EXPECT_EQ(requestCount("GET", pollPath), 0U);
    loop.advance(1ms);
    ASSERT_EQ(requestCount("GET", pollPath), 1U);
    EXPECT_EQ(openRequest("GET", pollPath)->header("Authorization"), std::nullopt);
    EXPECT_EQ(openRequest("GET", pollPath)->request.url, "https://default.example/api/v1/pair/request/claim-1");
    EXPECT_EQ(urlLoading.sessions().back().idleTimeout, 15s);

    loop.advance(700ms);  // The wait begins with the answer.
    answerWith("GET", pollPath, makePollThatIs("pending"));
    loop.advance(1999ms);
    EXPECT_EQ(requestCount("GET", pollPath), 1U);
    loop.advance(1ms);
    EXPECT_EQ(requestCount("GET", pollPath), 2U);
}

TEST_F(StorePairingTest, anApprovedPollPairsThisComputer) {
    launchPolling();
    answerWith("GET", pollPath, makeApproved());
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(state().role, DeviceRole::room);
    EXPECT_EQ(state().device, makeDeviceOfRoom("room-8"));
    EXPECT_THAT(idsOf(state().rooms), ElementsAre("room-8"));
    EXPECT_EQ(storedToken(), "token-by-scan");
    EXPECT_EQ(defaults.text("serverURL"), defaultServerURL);
}

TEST_F(StorePairingTest, pairingWithinTheSetupRunsToItsEndAndEndsTheSetup) {
    launchPolling();
    journal.take();
    answerWith("GET", pollPath, makeApproved());
    const Lines lines = journal.take();
    ASSERT_EQ(lines.size(), 12U);
    EXPECT_EQ(lines[0], "keyStore.write deviceToken = 'token-by-scan'");
    EXPECT_EQ(lines[7], "crash.setSender https://default.example");
    EXPECT_THAT(Lines(lines.begin() + 8, lines.end()),
                testing::UnorderedElementsAre("notifications.requestPermission", "crash.flush", "http GET /state",
                                              "socket.open"));
    answerWith("GET", "/state", makeSnapshot());
    EXPECT_TRUE(state().hasAuthenticatedSnapshot);
    deliver("pong", "{}");
    EXPECT_EQ(state().connectionState, server::ConnectionState::connected);

    loop.advance(10min);
    EXPECT_EQ(requestCount("GET", pollPath), 1U);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 1U);
    EXPECT_THAT(takeLinesOf("keyStore"), IsEmpty());
}

TEST_F(StorePairingTest, anythingButAWholeApprovalKeepsPolling) {
    std::vector<PairRequestPoll> polls;
    for (const std::string status : {"pending", "claimed", "denied", "expired", "Approved", ""}) {
        polls.push_back(makeApproved());
        polls.back().status = status;
    }
    polls.resize(polls.size() + 4, makeApproved());
    (polls.end() - 4)->deviceToken.reset();
    (polls.end() - 3)->device.reset();
    (polls.end() - 2)->office.reset();
    (polls.end() - 1)->role.reset();

    launchShowingCode();
    for (const PairRequestPoll& poll : polls) {
        loop.advance(2s);
        answerWith("GET", pollPath, poll);
        EXPECT_FALSE(state().isPaired) << poll.status;
    }
    loop.advance(2s);
    answerWith("GET", pollPath, makeApproved());
    EXPECT_TRUE(state().isPaired);
}

TEST_F(StorePairingTest, anApprovalWithoutARoleKeepsPollingUntilTheDeadline) {
    PairRequestPoll poll = makeApproved();
    poll.role.reset();
    urlLoading.setResponder([&](Exchange& exchange) {
        const bool isPoll = exchange.request.method == "GET";
        exchange.answer(200, isPoll ? support::toJson(poll) : support::toJson(makeCode("claim-1")));
    });
    launchUnpaired();
    loop.advance(269s);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 1U);
    EXPECT_EQ(requestCount("GET", pollPath), 134U);
    loop.advance(1s);
    EXPECT_EQ(requestCount("GET", pollPath), 135U);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 2U);
    EXPECT_FALSE(state().isPaired);
}

TEST_F(StorePairingTest, aFailedPollIsNotShownAndTheNextOneFollows) {
    launchPolling();
    answer("GET", pollPath, 500, "<html>");
    EXPECT_EQ(state().setupQrError, std::nullopt);
    EXPECT_TRUE(state().setupQrImage);
    loop.advance(2s);
    fail("GET", pollPath, platform::TransportCause::refused);
    loop.advance(2s);
    answer("GET", pollPath, 200, R"({"status":"approved","role":"unheard of"})");
    loop.advance(2s);
    answerWith("GET", pollPath, makeApproved());
    EXPECT_TRUE(state().isPaired);
}

TEST_F(StorePairingTest, aSilentPollIsGivenUpAndTheNextOneFollows) {
    launchPolling();
    loop.advance(15s);
    EXPECT_EQ(state().setupQrError, std::nullopt);
    loop.advance(2s);
    EXPECT_EQ(requestCount("GET", pollPath), 2U);
}

TEST_F(StorePairingTest, afterTwoHundredAndSeventySecondsANewCodeReplacesTheOldOne) {
    int codes = 0;
    urlLoading.setResponder([&](Exchange& exchange) {
        if (exchange.request.method == "POST") {
            ++codes;
            exchange.answer(200, support::toJson(makeCode(
                                     "claim-" + std::to_string(codes),
                                     codes == 1 ? "data:image/png;base64,b25l" : "data:image/png;base64,dHdv")));
        } else {
            exchange.answer(200, support::toJson(makePollThatIs("pending")));
        }
    });
    launchUnpaired();
    const auto firstDeadline = state().setupQrExpiresAt;
    EXPECT_EQ(state().setupQrImage, "one");
    loop.advance(270s - 1ms);
    EXPECT_EQ(codes, 1);
    loop.advance(1ms);
    EXPECT_EQ(codes, 2);
    EXPECT_EQ(state().setupQrImage, "two");
    EXPECT_NE(state().setupQrExpiresAt, firstDeadline);
    EXPECT_EQ(state().setupQrExpiresAt, records::formatServerDate(clock.wallNow() + 270s));
    loop.advance(2s);
    EXPECT_EQ(requestCount("GET", "/pair/request/claim-2"), 1U);
}

TEST_F(StorePairingTest, settingTheClockNeitherShortensNorLengthensACodesLife) {
    urlLoading.setResponder([&](Exchange& exchange) {
        exchange.answer(200, exchange.request.method == "POST" ? support::toJson(makeCode("claim-1"))
                                                               : support::toJson(makePollThatIs("pending")));
    });
    launchUnpaired();
    loop.advance(100s);
    clock.setWallOffset(1h);
    loop.advance(100s);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 1U);
    clock.setWallOffset(-1h);
    loop.advance(70s);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 2U);
}

TEST_F(StorePairingTest, aCodeWithoutAUsableImageShowsNoneAndStillPolls) {
    for (const std::string png : {"data:image/png,plain", "", "data:image/png;base64,***", "base64,YQ"}) {
        support::Computer other;
        other.launchUnpaired();
        other.answerWith("POST", "/pair/request", makeCode("claim-1", png));
        EXPECT_EQ(other.state().setupQrImage, std::nullopt) << png;
        EXPECT_EQ(other.state().setupQrError, std::nullopt) << png;
        EXPECT_TRUE(other.state().setupQrExpiresAt) << png;
        other.loop.advance(2s);
        EXPECT_TRUE(other.openRequest("GET", pollPath)) << png;
    }
}

TEST_F(StorePairingTest, theImageStandsBehindTheFirstMarker) {
    launchUnpaired();
    answerWith("POST", "/pair/request", makeCode("claim-1", "anything at all base64,aW1hZ2U="));
    EXPECT_EQ(state().setupQrImage, "image");
}

TEST_F(StorePairingTest, aCodeWithoutAClaimTokenIsNoCode) {
    for (const std::optional<std::string>& claim : {std::optional<std::string>{}, std::optional<std::string>{""}}) {
        support::Computer other;
        other.launchUnpaired();
        QrTokenResponse code = makeCode("claim-1");
        code.claimToken = claim;
        other.answerWith("POST", "/pair/request", code);
        EXPECT_EQ(other.state().setupQrError, "Reconnecting…");
        EXPECT_EQ(other.state().setupQrImage, std::nullopt);
        other.loop.advance(8s - 1ms);
        EXPECT_EQ(other.requestCount("POST", "/pair/request"), 1U);
        other.loop.advance(1ms);
        EXPECT_EQ(other.requestCount("POST", "/pair/request"), 2U);
    }
}

TEST_F(StorePairingTest, aFailedRequestForACodeIsTriedAgainAfterEightSeconds) {
    launchUnpaired();
    answer("POST", "/pair/request", 500, "<html>");
    EXPECT_EQ(state().setupQrError, "Reconnecting…");
    loop.advance(8s - 1ms);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 1U);
    loop.advance(1ms);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 2U);
    EXPECT_EQ(state().setupQrError, "Reconnecting…");
    fail("POST", "/pair/request", platform::TransportCause::noNetwork);
    loop.advance(8s);
    answerWith("POST", "/pair/request", makeCode("claim-1"));
    EXPECT_EQ(state().setupQrError, std::nullopt);
    EXPECT_EQ(state().setupQrImage, "image");
}

TEST_F(StorePairingTest, aThrottledRequestForACodeWaitsThirtySeconds) {
    launchUnpaired();
    answer("POST", "/pair/request", 429, R"({"error":"too_many_attempts"})");
    EXPECT_EQ(state().setupQrError, "Reconnecting…");
    loop.advance(30s - 1ms);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 1U);
    loop.advance(1ms);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 2U);
}

TEST_F(StorePairingTest, anOldImageStaysBesideTheErrorOfItsSuccessor) {
    urlLoading.setResponder([](Exchange& exchange) {
        if (exchange.request.method == "GET") {
            exchange.answer(200, support::toJson(makePollThatIs("pending")));
        }
    });
    launchUnpaired();
    answerWith("POST", "/pair/request", makeCode("claim-1"));
    loop.advance(270s);
    answer("POST", "/pair/request", 500);
    EXPECT_EQ(state().setupQrError, "Reconnecting…");
    EXPECT_EQ(state().setupQrImage, "image");
}

TEST_F(StorePairingTest, aNewSetupClearsWhatWasShownAndEndsTheOldOne) {
    launchPolling();
    store->restartSetupQr();
    EXPECT_EQ(state().setupQrImage, std::nullopt);
    EXPECT_EQ(state().setupQrExpiresAt, std::nullopt);
    EXPECT_EQ(state().setupQrError, std::nullopt);
    settle();
    EXPECT_EQ(requestCount("POST", "/pair/request"), 2U);
    answerWith("GET", pollPath, makeApproved());
    EXPECT_FALSE(state().isPaired) << "a result of the old setup was taken";
    loop.advance(1min);
    EXPECT_EQ(requestCount("GET", pollPath), 1U);
}

TEST_F(StorePairingTest, aCodeThatArrivesForAnOldSetupIsNotShown) {
    launchUnpaired();
    Exchange* const old = openRequest("POST", "/pair/request");
    store->restartSetupQr();
    settle();
    old->answer(200, support::toJson(makeCode("claim-old")));
    settle();
    EXPECT_EQ(state().setupQrImage, std::nullopt);
    answerWith("POST", "/pair/request", makeCode("claim-1"));
    EXPECT_EQ(state().setupQrImage, "image");
    loop.advance(2s);
    EXPECT_EQ(requestCount("GET", "/pair/request/claim-old"), 0U);
    EXPECT_EQ(requestCount("GET", pollPath), 1U);
}

TEST_F(StorePairingTest, aNewSetupDuringTheWaitAfterAFailureAsksAtOnce) {
    launchUnpaired();
    answer("POST", "/pair/request", 429);
    store->restartSetupQr();
    settle();
    EXPECT_EQ(requestCount("POST", "/pair/request"), 2U);
    EXPECT_EQ(state().setupQrError, std::nullopt);
    loop.advance(14s);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 2U);
}

TEST_F(StorePairingTest, restartingManyTimesLeavesOneSetupRunning) {
    launchUnpaired();
    for (int count = 0; count < 5; ++count) {
        store->restartSetupQr();
    }
    settle();
    for (Exchange* exchange : urlLoading.pending()) {
        exchange->answer(200, support::toJson(makeCode("claim-1")));
    }
    settle();
    loop.advance(2s);
    EXPECT_EQ(requestCount("GET", pollPath), 1U);
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
