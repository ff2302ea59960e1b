#include "records/server_date.h"
#include "tests/store/pairing_test.h"

#include <vector>

namespace zelkovanta::store {
namespace {

using records::DeviceRole;
using records::PairRequestPoll;
using records::QrTokenResponse;
using support::makeDeviceOfRoom;
using support::makeSnapshot;
using testing::ElementsAre;
using testing::IsEmpty;

using StoreSetupCodeTest = PairingTest;

// By a code that is scanned.

TEST_F(StoreSetupCodeTest, theSetupAsksTheDefaultServerAndShowsTheCode) {
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

TEST_F(StoreSetupCodeTest, thePollsComeTwoSecondsApartWithoutAToken) {
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

TEST_F(StoreSetupCodeTest, anApprovedPollPairsThisComputer) {
    launchPolling();
    answerWith("GET", pollPath, makeApproved());
    EXPECT_TRUE(state().isPaired);
    EXPECT_EQ(state().role, DeviceRole::room);
    EXPECT_EQ(state().device, makeDeviceOfRoom("room-8"));
    EXPECT_THAT(idsOf(state().rooms), ElementsAre("room-8"));
    EXPECT_EQ(storedToken(), "token-by-scan");
    EXPECT_EQ(defaults.text("serverURL"), defaultServerURL);
}

TEST_F(StoreSetupCodeTest, pairingWithinTheSetupRunsToItsEndAndEndsTheSetup) {
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

TEST_F(StoreSetupCodeTest, anythingButAWholeApprovalKeepsPolling) {
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

TEST_F(StoreSetupCodeTest, anApprovalWithoutARoleKeepsPollingUntilTheDeadline) {
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

TEST_F(StoreSetupCodeTest, aFailedPollIsNotShownAndTheNextOneFollows) {
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

TEST_F(StoreSetupCodeTest, aSilentPollIsGivenUpAndTheNextOneFollows) {
    launchPolling();
    loop.advance(15s);
    EXPECT_EQ(state().setupQrError, std::nullopt);
    loop.advance(2s);
    EXPECT_EQ(requestCount("GET", pollPath), 2U);
}

TEST_F(StoreSetupCodeTest, afterTwoHundredAndSeventySecondsANewCodeReplacesTheOldOne) {
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

TEST_F(StoreSetupCodeTest, settingTheClockNeitherShortensNorLengthensACodesLife) {
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

TEST_F(StoreSetupCodeTest, aCodeWithoutAUsableImageShowsNoneAndStillPolls) {
    for (const std::string png :
         {"data:image/png,plain", "", "data:image/png;base64,***", "data:image/png;base64,", "base64,YQ"}) {
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

TEST_F(StoreSetupCodeTest, theImageStandsBehindTheFirstMarker) {
    launchUnpaired();
    answerWith("POST", "/pair/request", makeCode("claim-1", "anything at all base64,aW1hZ2U="));
    EXPECT_EQ(state().setupQrImage, "image");
}

TEST_F(StoreSetupCodeTest, aSecondMarkerBelongsToTheImageAndMakesItNone) {
    launchUnpaired();
    answerWith("POST", "/pair/request", makeCode("claim-1", "a base64,aW1hZ2U=base64,aW1hZ2U="));
    EXPECT_EQ(state().setupQrImage, std::nullopt);
}

TEST_F(StoreSetupCodeTest, aCodeWithoutAClaimTokenIsNoCode) {
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

TEST_F(StoreSetupCodeTest, aFailedRequestForACodeIsTriedAgainAfterEightSeconds) {
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

TEST_F(StoreSetupCodeTest, aThrottledRequestForACodeWaitsThirtySeconds) {
    launchUnpaired();
    answer("POST", "/pair/request", 429, R"({"error":"too_many_attempts"})");
    EXPECT_EQ(state().setupQrError, "Reconnecting…");
    loop.advance(30s - 1ms);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 1U);
    loop.advance(1ms);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 2U);
}

TEST_F(StoreSetupCodeTest, anOldImageStaysBesideTheErrorOfItsSuccessor) {
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

TEST_F(StoreSetupCodeTest, aNewSetupClearsWhatWasShownAndEndsTheOldOne) {
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

TEST_F(StoreSetupCodeTest, aCodeThatArrivesForAnOldSetupIsNotShown) {
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

TEST_F(StoreSetupCodeTest, aNewSetupDuringTheWaitAfterAFailureAsksAtOnce) {
    launchUnpaired();
    answer("POST", "/pair/request", 429);
    store->restartSetupQr();
    settle();
    EXPECT_EQ(requestCount("POST", "/pair/request"), 2U);
    EXPECT_EQ(state().setupQrError, std::nullopt);
    loop.advance(14s);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 2U);
}

TEST_F(StoreSetupCodeTest, restartingManyTimesLeavesOneSetupRunning) {
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

}  // namespace
}  // namespace zelkovanta::store
