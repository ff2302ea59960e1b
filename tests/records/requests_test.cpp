#include "records/json_codec.h"

#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace zelkovanta::records {
namespace {

using Json = nlohmann::json;

const Json leastDevice{{"id", "d1"}, {"kind", "tablet_from_the_future"}};
const Json leastOffice{{"id", "o1"}, {"name", "Practice"}};

TEST(PairRedeemResponseTest, theKindIsOpenAndTheRoleIsNot) {
    Json json{{"deviceToken", "t"}, {"device", leastDevice}, {"office", leastOffice}, {"role", "room"}};
    const auto response = decodeJson<PairRedeemResponse>(json.dump());
    ASSERT_TRUE(response);
    EXPECT_EQ(response->device.kind, "tablet_from_the_future");
    EXPECT_EQ(response->role, DeviceRole::room);
    EXPECT_EQ(response->room, std::nullopt);
    for (const Json& role : {Json("kiosk"), Json("Room"), Json(""), Json(0), Json(nullptr)}) {
        json["role"] = role;
        EXPECT_FALSE(decodeJson<PairRedeemResponse>(json.dump())) << role;
    }
    json.erase("role");
    EXPECT_FALSE(decodeJson<PairRedeemResponse>(json.dump()));
}

TEST(PairRedeemResponseTest, roomAndMemberArriveWhereTheyAreSent) {
    const Json json{{"deviceToken", "t"},
                    {"device", leastDevice},
                    {"office", leastOffice},
                    {"role", "member"},
                    {"room", {{"id", "r1"}, {"name", "Room 1"}}},
                    {"member", {{"id", "m1"}, {"name", "Alma"}, {"department", "provider"}}}};
    const auto response = decodeJson<PairRedeemResponse>(json.dump());
    ASSERT_TRUE(response);
    EXPECT_EQ(response->room->name, "Room 1");
    EXPECT_EQ(response->member->name, "Alma");
}

TEST(PairRequestPollTest, anyStatusAloneIsAnAnswer) {
    for (const char* status : {"pending", "approved", "", "a word of tomorrow"}) {
        const auto poll = decodeJson<PairRequestPoll>(Json{{"status", status}}.dump());
        ASSERT_TRUE(poll) << status;
        PairRequestPoll expected;
        expected.status = status;
        EXPECT_EQ(*poll, expected);
    }
    EXPECT_FALSE(decodeJson<PairRequestPoll>("{}"));
}

TEST(PairRequestPollTest, anUnknownRoleFailsTheAnswerAndAnAbsentOneDoesNot) {
    EXPECT_EQ(decodeJson<PairRequestPoll>(R"({"status":"approved","role":"shared"})")->role, DeviceRole::shared);
    EXPECT_EQ(decodeJson<PairRequestPoll>(R"({"status":"approved","role":null})")->role, std::nullopt);
    EXPECT_FALSE(decodeJson<PairRequestPoll>(R"({"status":"approved","role":"kiosk"})"));
}

TEST(QrTokenResponseTest, theClaimTokenMayBeAbsent) {
    const auto response =
        decodeJson<QrTokenResponse>(R"({"token":"t","qrData":"q","qrPng":"no marker","expiresAt":"soon"})");
    ASSERT_TRUE(response);
    EXPECT_EQ(response->claimToken, std::nullopt);
    EXPECT_EQ(response->qrPng, "no marker");
    EXPECT_FALSE(decodeJson<QrTokenResponse>(R"({"token":"t","qrData":"q","expiresAt":"soon"})"));
}

TEST(APIErrorEnvelopeTest, theCodeIsRequired) {
    const auto envelope =
        decodeJson<APIErrorEnvelope>(R"({"error":"in_cooldown","cooldownUntil":"later","message":null,"status":409})");
    ASSERT_TRUE(envelope);
    EXPECT_EQ(*envelope, (APIErrorEnvelope{"in_cooldown", std::nullopt, "later"}));
    EXPECT_FALSE(decodeJson<APIErrorEnvelope>(R"({"message":"Something"})"));
    EXPECT_FALSE(decodeJson<APIErrorEnvelope>(R"({"error":404})"));
}

TEST(AcceptedTest, theNumberIsRequired) {
    EXPECT_EQ(decodeJson<Accepted>(R"({"accepted":3})"), Accepted{3});
    EXPECT_FALSE(decodeJson<Accepted>("{}"));
    EXPECT_FALSE(decodeJson<Accepted>(R"({"accepted":"3"})"));
}

}  // namespace
}  // namespace zelkovanta::records
