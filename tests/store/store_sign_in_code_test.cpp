#include "records/server_date.h"
#include "tests/store/store_test.h"

#include <memory>

namespace zelkovanta::store {
namespace {

using support::makeDevice;
using support::makeDeviceWithSignIn;
using support::makeMember;
using support::makeOffice;
using support::makeSnapshot;

constexpr const char* path = "/devices/me/signin-qr";

records::QrTokenResponse makeSignInCode(std::string png = "data:image/png;base64,aW1hZ2U=") {
    return {.token = "token",
            .claimToken = {},
            .qrData = "zelkovanta://signin",
            .qrPng = std::move(png),
            .expiresAt = "not a time at all"};
}

struct Station : support::Computer {
    std::shared_ptr<void> viewer;

    void launchStation() {
        launchWith("shared", makeSnapshot([](records::StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
    }
    void show() {
        viewer = store->showSignInCode();
        settle();
    }
    void launchShowing() {
        launchStation();
        show();
    }
    std::size_t requests() const { return requestCount("POST", path); }
    const SignInCode& code() const { return state().signInCode; }
};

struct StoreSignInCodeTest : testing::Test, Station {};

TEST_F(StoreSignInCodeTest, nothingIsAskedForUntilSomebodyLooks) {
    launchStation();
    loop.advance(10min);
    EXPECT_EQ(requests(), 0U);
}

TEST_F(StoreSignInCodeTest, theCodeIsAskedForWithTheTokenAndShown) {
    launchShowing();
    Exchange* const exchange = openRequest("POST", path);
    ASSERT_TRUE(exchange);
    EXPECT_EQ(exchange->request.url, "https://office.example/api/v1/devices/me/signin-qr");
    EXPECT_EQ(exchange->header("Authorization"), "Bearer token-1");
    EXPECT_EQ(code(), SignInCode{});
    loop.advance(3s);
    answerWith("POST", path, makeSignInCode());
    // The reply's own time is not read; the fifty seconds begin with the answer.
    EXPECT_EQ(code(), (SignInCode{.image = "image",
                                  .expiresAt = records::formatServerDate(clock.wallNow() + 50s),
                                  .error = std::nullopt}));
}

TEST_F(StoreSignInCodeTest, aNewCodeIsAskedForEveryFiftySeconds) {
    launchShowing();
    answerWith("POST", path, makeSignInCode("data:image/png;base64,b25l"));
    loop.advance(50s - 1ms);
    EXPECT_EQ(requests(), 1U);
    loop.advance(1ms);
    ASSERT_EQ(requests(), 2U);
    EXPECT_EQ(code().image, "one") << "the old code stands until the new one is there";
    answerWith("POST", path, makeSignInCode("data:image/png;base64,dHdv"));
    EXPECT_EQ(code().image, "two");
    EXPECT_EQ(code().expiresAt, records::formatServerDate(clock.wallNow() + 50s));
}

TEST_F(StoreSignInCodeTest, aFailureIsShownAndTriedAgainAfterTenSeconds) {
    launchShowing();
    fail("POST", path, platform::TransportCause::noNetwork);
    EXPECT_EQ(code(), (SignInCode{.image = {}, .expiresAt = {}, .error = "Reconnecting…"}));
    loop.advance(10s - 1ms);
    EXPECT_EQ(requests(), 1U);
    loop.advance(1ms);
    EXPECT_EQ(requests(), 2U);
    EXPECT_EQ(code().error, "Reconnecting…");
    answerWith("POST", path, makeSignInCode());
    EXPECT_EQ(code().error, std::nullopt);
    EXPECT_EQ(code().image, "image");
}

TEST_F(StoreSignInCodeTest, aFailureLeavesTheOldCodeAndItsTime) {
    launchShowing();
    answerWith("POST", path, makeSignInCode());
    const SignInCode before = code();
    loop.advance(50s);
    answer("POST", path, 500, "<html>");
    EXPECT_EQ(code().image, before.image);
    EXPECT_EQ(code().expiresAt, before.expiresAt);
    EXPECT_EQ(code().error, "Reconnecting…");
}

TEST_F(StoreSignInCodeTest, aThrottledRequestWaitsThirtySeconds) {
    launchShowing();
    answer("POST", path, 429, R"({"error":"too_many_attempts"})");
    EXPECT_EQ(code().error, "Reconnecting…");
    loop.advance(30s - 1ms);
    EXPECT_EQ(requests(), 1U);
    loop.advance(1ms);
    EXPECT_EQ(requests(), 2U);
}

TEST_F(StoreSignInCodeTest, afterAnHourOfThrottlingTheCodeIsBackAndTheRotationGoesOn) {
    launchShowing();
    answerWith("POST", path, makeSignInCode("data:image/png;base64,b25l"));
    loop.advance(50s);
    for (std::size_t tries = 2; tries < 122; ++tries) {
        ASSERT_EQ(requests(), tries) << "one request each half a minute";
        answer("POST", path, 429, R"({"error":"too_many_attempts"})");
        ASSERT_EQ(code().error, "Reconnecting…");
        ASSERT_EQ(code().image, "one");
        loop.advance(30s);
    }
    ASSERT_EQ(requests(), 122U);
    answerWith("POST", path, makeSignInCode("data:image/png;base64,dHdv"));
    EXPECT_EQ(code(), (SignInCode{.image = "two",
                                  .expiresAt = records::formatServerDate(clock.wallNow() + 50s),
                                  .error = std::nullopt}));
    loop.advance(50s);
    EXPECT_EQ(requests(), 123U);
}

TEST_F(StoreSignInCodeTest, aReplyThatHoldsNoCodeLeavesTheOldOneAndIsAskedForAgainAfterTenSeconds) {
    launchShowing();
    answerWith("POST", path, makeSignInCode());
    const SignInCode before = code();
    loop.advance(50s);
    answer("POST", path, 200, "{}");
    EXPECT_EQ(code(), (SignInCode{.image = before.image, .expiresAt = before.expiresAt, .error = "Reconnecting…"}));
    loop.advance(10s - 1ms);
    EXPECT_EQ(requests(), 2U);
    loop.advance(1ms);
    EXPECT_EQ(requests(), 3U);
}

TEST_F(StoreSignInCodeTest, aReplyWithoutAUsableImageShowsNoneAndTheRotationGoesOn) {
    for (const std::string png :
         {"data:image/png,plain", "", "data:image/png;base64,***", "data:image/png;base64,", "base64,YQ"}) {
        Station other;
        other.launchShowing();
        other.answerWith("POST", path, makeSignInCode(png));
        EXPECT_EQ(other.code().image, std::nullopt) << png;
        EXPECT_EQ(other.code().error, std::nullopt) << png;
        EXPECT_TRUE(other.code().expiresAt) << png;
        other.loop.advance(50s);
        EXPECT_EQ(other.requests(), 2U) << png;
    }
}

TEST_F(StoreSignInCodeTest, itEndsWhenNobodyLooksAnyMore) {
    launchShowing();
    answerWith("POST", path, makeSignInCode());
    viewer.reset();
    EXPECT_EQ(code(), SignInCode{});
    loop.advance(10min);
    EXPECT_EQ(requests(), 1U);
}

TEST_F(StoreSignInCodeTest, aReplyThatComesWhenNobodyLooksAnyMoreIsDropped) {
    launchShowing();
    viewer.reset();
    answerWith("POST", path, makeSignInCode());
    EXPECT_EQ(code(), SignInCode{});
    loop.advance(10min);
    EXPECT_EQ(requests(), 1U);
}

TEST_F(StoreSignInCodeTest, aReplyToAnEarlierLookIsNotShownInTheNext) {
    launchShowing();
    Exchange* const old = openRequest("POST", path);
    viewer.reset();
    show();
    ASSERT_EQ(requests(), 2U);
    old->answer(200, support::toJson(makeSignInCode("data:image/png;base64,b25l")));
    settle();
    EXPECT_EQ(code(), SignInCode{});
    answerWith("POST", path, makeSignInCode("data:image/png;base64,dHdv"));
    EXPECT_EQ(code().image, "two");
    loop.advance(50s);
    EXPECT_EQ(requests(), 3U) << "two rotations at once";
}

TEST_F(StoreSignInCodeTest, lookingAgainDuringAWaitAsksAtOnce) {
    launchShowing();
    answer("POST", path, 429);
    viewer.reset();
    show();
    EXPECT_EQ(requests(), 2U);
    EXPECT_EQ(code().error, std::nullopt);
}

TEST_F(StoreSignInCodeTest, allWhoLookSeeTheSameCodeUntilTheLastHasGone) {
    launchShowing();
    auto second = store->showSignInCode();
    settle();
    EXPECT_EQ(requests(), 1U);
    answerWith("POST", path, makeSignInCode());
    viewer.reset();
    EXPECT_EQ(code().image, "image");
    loop.advance(50s);
    EXPECT_EQ(requests(), 2U);
    second.reset();
    EXPECT_EQ(code(), SignInCode{});
}

TEST_F(StoreSignInCodeTest, withoutASessionNothingIsAskedForUntilThereIsOne) {
    launchUnpaired();
    show();
    loop.advance(1min);
    EXPECT_EQ(requests(), 0U);
    run([](AppStore& app) -> platform::Awaitable<void> {
        std::string typed = "ABCD-1234";
        static_cast<void>(co_await app.redeemPairingCode(std::move(typed)));
    });
    answerWith("POST", "/pair/redeem",
               records::PairRedeemResponse{.deviceToken = "token-2",
                                           .device = makeDevice(),
                                           .office = makeOffice("office-1"),
                                           .role = records::DeviceRole::shared,
                                           .room = {},
                                           .member = {}});
    EXPECT_EQ(requests(), 1U);
    EXPECT_EQ(openRequest("POST", path)->header("Authorization"), "Bearer token-2");
}

TEST_F(StoreSignInCodeTest, aRevokedComputerShowsNoCodeAndAsksForNone) {
    launchShowing();
    answerWith("POST", path, makeSignInCode());
    loop.advance(50s);
    answer("POST", path, 401, R"({"error":"invalid_token"})");
    EXPECT_FALSE(state().isPaired);
    EXPECT_EQ(code(), SignInCode{});
    loop.advance(10min);
    EXPECT_EQ(requests(), 2U);
}

TEST_F(StoreSignInCodeTest, aMoveToAnotherOfficeBringsACodeOfThatOffice) {
    launchShowing();
    answerWith("POST", path, makeSignInCode());
    deliverSnapshot(makeSnapshot([](records::StateSnapshot& snapshot) {
        snapshot.office = makeOffice("office-2");
        snapshot.device = makeDevice();
    }));
    EXPECT_EQ(code(), SignInCode{});
    settle();
    EXPECT_EQ(requests(), 2U);
    answerWith("POST", path, makeSignInCode());
    EXPECT_EQ(code().image, "image");
    loop.advance(50s);
    EXPECT_EQ(requests(), 3U) << "two rotations at once";
}

TEST_F(StoreSignInCodeTest, aSignInLeavesTheCodeToWhoeverStillLooks) {
    launchShowing();
    answerWith("POST", path, makeSignInCode());
    deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1"));
    EXPECT_EQ(code().image, "image");
}

TEST_F(StoreSignInCodeTest, settingTheClockNeitherShortensNorLengthensACodesLife) {
    launchShowing();
    answerWith("POST", path, makeSignInCode());
    loop.advance(20s);
    clock.setWallOffset(3h);
    loop.advance(20s);
    EXPECT_EQ(requests(), 1U);
    clock.setWallOffset(-3h);
    loop.advance(10s);
    EXPECT_EQ(requests(), 2U);
}

TEST_F(StoreSignInCodeTest, observersAreToldOfACodeAndOfNothingThatStayedAsItWas) {
    launchStation();
    int told = 0;
    const auto observation =
        store->observe([&](const StoreChanges& changes) { told += changes.contains(StoreField::signInCode) ? 1 : 0; });
    show();
    EXPECT_EQ(told, 0);
    answerWith("POST", path, makeSignInCode());
    EXPECT_EQ(told, 1);
    viewer.reset();
    settle();
    EXPECT_EQ(told, 2);
}

TEST_F(StoreSignInCodeTest, whoStillLooksWhenTheStoreIsGoneHarmsNothing) {
    launchShowing();
    answerWith("POST", path, makeSignInCode());
    store.reset();
    viewer.reset();
    loop.advance(1min);
    EXPECT_EQ(requests(), 1U);
}

}  // namespace
}  // namespace zelkovanta::store
