#include "server/server_message.h"
#include "store/code_reply.h"
#include "tests/store/pairing_test.h"

namespace zelkovanta::store {
namespace {

/// What a server says that is broken, hostile or beside itself: nothing crashes, nothing sticks, and nobody is paired
/// who should not be.
struct StoreBadInputTest : PairingTest {
    void expectPairsInTheEnd(std::string_view claim) {
        loop.advance(2s);
        answerWith("GET", "/pair/request/" + std::string{claim}, makeApproved());
        EXPECT_TRUE(state().isPaired);
    }
};

TEST_F(StoreBadInputTest, anImageOfFiftyMegabytesIsNoImageAndTheCodeCanStillBeApproved) {
    launchUnpaired();
    answerWith("POST", "/pair/request",
               makeCode("claim-1", "data:image/png;base64," + std::string(std::size_t{50} << 20U, 'A')));
    EXPECT_EQ(state().setupQrImage, std::nullopt);
    EXPECT_EQ(state().setupQrError, std::nullopt);
    EXPECT_TRUE(state().setupQrExpiresAt);
    expectPairsInTheEnd("claim-1");
}

TEST(CodeReplyTest, anImageMayBeAsLargeAsAPictureOfACodeCanBe) {
    const std::string head = "data:image/png;base64,";
    const std::size_t room = (std::size_t{1} << 20U) - head.size();
    EXPECT_TRUE(imageFromDataURL(head + std::string(room / 4 * 4, 'A')));
    EXPECT_FALSE(imageFromDataURL(head + std::string(room / 4 * 4 + 4, 'A')));
}

TEST_F(StoreBadInputTest, aTimeOfNonsenseInTheReplyIsNotRead) {
    for (const std::string time :
         {"", "yesterday", "-1", "9999999-99-99T99:99:99Z", "2001-01-01T00:00:00Z", "\xf0\x9f\x99\x82"}) {
        support::Computer other;
        other.launchUnpaired();
        records::QrTokenResponse code = makeCode("claim-1");
        code.expiresAt = time;
        other.answerWith("POST", "/pair/request", code);
        EXPECT_EQ(other.state().setupQrImage, "image") << time;
        other.loop.advance(2s);
        EXPECT_TRUE(other.openRequest("GET", pollPath)) << time;
    }
}

TEST_F(StoreBadInputTest, aReplyWithATimeOfAnotherTypeIsNoReply) {
    launchUnpaired();
    answer("POST", "/pair/request", 200,
           R"({"token":"t","claimToken":"c","qrData":"d","qrPng":"data:image/png;base64,aW1hZ2U=","expiresAt":5})");
    EXPECT_EQ(state().setupQrError, "Reconnecting…");
    EXPECT_EQ(state().setupQrImage, std::nullopt);
    loop.advance(8s);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 2U);
}

TEST_F(StoreBadInputTest, aClaimTokenOfNonsenseLeadsAPollNowhereElse) {
    launchUnpaired();
    answerWith("POST", "/pair/request", makeCode("../../state?x=1#y\xc3\xbc"));
    loop.advance(2s);
    const auto open = urlLoading.pending();
    ASSERT_EQ(open.size(), 1U);
    EXPECT_TRUE(open.front()->request.url.starts_with("https://default.example/api/v1/pair/request/"));
    EXPECT_EQ(open.front()->request.url.find_first_of("?#\xc3"), std::string::npos) << open.front()->request.url;
    EXPECT_EQ(open.front()->header("Authorization"), std::nullopt);
}

TEST_F(StoreBadInputTest, aCodeOfEmojiIsRefusedLikeAnyOther) {
    launchUnpaired();
    redeem("\xf0\x9f\x94\xa5\xf0\x9f\x91\xa9\xe2\x80\x8d\xf0\x9f\x9a\x80");
    ASSERT_TRUE(openRequest("POST", "/pair/redeem"));
    answer("POST", "/pair/redeem", 404, R"({"error":"invalid_code"})");
    ASSERT_TRUE(redeemed);
    EXPECT_FALSE(*redeemed);
    EXPECT_FALSE(state().isPaired);
    EXPECT_EQ(storedToken(), std::nullopt);
}

TEST_F(StoreBadInputTest, aStormOfTooManyRequestsIsAnsweredWithPatience) {
    urlLoading.setResponder([](Exchange& exchange) { exchange.answer(429, R"({"error":"too_many_attempts"})"); });
    launchUnpaired();
    loop.advance(1h);
    EXPECT_EQ(requestCount("POST", "/pair/request"), 121U);  // At once, and then every thirty seconds.
    EXPECT_EQ(state().setupQrError, "Reconnecting…");

    urlLoading.setResponder({});
    loop.advance(30s);
    answerWith("POST", "/pair/request", makeCode("claim-1"));
    EXPECT_EQ(state().setupQrError, std::nullopt);
    expectPairsInTheEnd("claim-1");
}

TEST_F(StoreBadInputTest, aStormDuringThePollsNeitherShowsNorHurriesThem) {
    launchShowingCode();
    urlLoading.setResponder([](Exchange& exchange) { exchange.answer(429, R"({"error":"too_many_attempts"})"); });
    loop.advance(1min);
    EXPECT_EQ(requestCount("GET", pollPath), 30U);
    EXPECT_EQ(state().setupQrError, std::nullopt);
    EXPECT_EQ(state().setupQrImage, "image");
    urlLoading.setResponder({});
    expectPairsInTheEnd("claim-1");
}

TEST_F(StoreBadInputTest, anOfficeThatApprovesTwicePairsOnce) {
    launchPolling();
    redeem();
    openRequest("GET", pollPath)->answer(200, support::toJson(makeApproved()));
    openRequest("POST", "/pair/redeem")->answer(200, support::toJson(makeRedeemed(records::DeviceRole::member)));
    settle();
    EXPECT_TRUE(state().isPaired);
    const auto device = state().device;
    const auto token = storedToken();
    EXPECT_EQ(requestCount("GET", "/state"), 1U);
    loop.advance(10min);
    EXPECT_EQ(requestCount("GET", pollPath), 1U);
    EXPECT_EQ(state().device, device);
    EXPECT_EQ(storedToken(), token);
}

TEST_F(StoreBadInputTest, anApprovalAfterThePairingHasEndedPairsNobody) {
    launchPolling();
    Exchange* const first = openRequest("GET", pollPath);
    redeem();
    answerWith("POST", "/pair/redeem", makeRedeemed(records::DeviceRole::room));
    ASSERT_TRUE(state().isPaired);
    answer("GET", "/state", 401, R"({"error":"invalid_token"})");
    ASSERT_FALSE(state().isPaired);
    first->answer(200, support::toJson(makeApproved()));
    settle();
    EXPECT_FALSE(state().isPaired);
    EXPECT_EQ(storedToken(), std::nullopt);
}

}  // namespace
}  // namespace zelkovanta::store
