#include "records/json_codec.h"

#include <string>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace zelkovanta::records {
namespace {

using Json = nlohmann::json;

std::string noteAsSent(std::string_view note) {
    CreateSignalRequest request;
    request.note = note;
    return Json::parse(encodeJson(request)).at("note").get<std::string>();
}

TEST(JsonEncodingTest, anEmptyNoteIsSentAndAnAbsentRoomIsNot) {
    CreateSignalRequest request;
    request.typeId = "t1";
    EXPECT_EQ(Json::parse(encodeJson(request)), (Json{{"typeId", "t1"}, {"note", ""}}));
}

TEST(JsonEncodingTest, everyFieldIsSentUnderItsName) {
    const CreateSignalRequest request{
        .roomId = "r1",
        .providerId = "m1",
        .providerIds = std::vector<std::string>{"m1", "m2"},
        .toDepartment = "provider",
        .typeId = "t1",
        .note = "ready",
    };
    EXPECT_EQ(Json::parse(encodeJson(request)), (Json{{"roomId", "r1"},
                                                      {"providerId", "m1"},
                                                      {"providerIds", {"m1", "m2"}},
                                                      {"toDepartment", "provider"},
                                                      {"typeId", "t1"},
                                                      {"note", "ready"}}));
}

TEST(JsonEncodingTest, anEmptyListIsSentAsOne) {
    CreateSignalRequest request;
    request.providerIds.emplace();
    EXPECT_EQ(Json::parse(encodeJson(request)).at("providerIds"), Json::array());
}

TEST(JsonEncodingTest, pairingRequestsHoldTheDevice) {
    const PairDeviceInfo device{"desktop_mac", "Front desk", "Model", "1.0.1", "en-US"};
    const Json deviceJson{{"kind", "desktop_mac"},
                          {"name", "Front desk"},
                          {"model", "Model"},
                          {"appVersion", "1.0.1"},
                          {"locale", "en-US"}};
    EXPECT_EQ(Json::parse(encodeJson(PairRedeemRequest{"ABCD", device})),
              (Json{{"code", "ABCD"}, {"device", deviceJson}}));
    EXPECT_EQ(Json::parse(encodeJson(PairRequestBody{device})), (Json{{"device", deviceJson}}));
    EXPECT_EQ(encodeJson(PairRequestBody{}), R"({"device":{"kind":"","name":"","model":"","appVersion":""}})");
    PairDeviceInfo withoutLocale = device;
    withoutLocale.locale.reset();
    EXPECT_FALSE(Json::parse(encodeJson(PairRequestBody{withoutLocale})).at("device").contains("locale"));
}

TEST(JsonEncodingTest, actionsAndStatusesAreSingleWords) {
    EXPECT_EQ(encodeJson(SignalActionRequest{"acknowledge"}), R"({"action":"acknowledge"})");
    EXPECT_EQ(encodeJson(SignalActionRequest{"done"}), R"({"action":"done"})");
    EXPECT_EQ(encodeJson(SignalActionRequest{"cancel"}), R"({"action":"cancel"})");
    EXPECT_EQ(encodeJson(MemberStatusRequest{"dnd"}), R"({"status":"dnd"})");
}

TEST(JsonEncodingTest, textsAreEscapedWhereJsonAsksForIt) {
    EXPECT_EQ(encodeJson(SignalActionRequest{"\"\\/\b\n\x1F"}), R"({"action":"\"\\/\u0008\u000a\u001f"})");
    EXPECT_EQ(encodeJson(SignalActionRequest{std::string("\0", 1)}), R"({"action":"\u0000"})");
    EXPECT_EQ(encodeJson(SignalActionRequest{"ä😀\x7F\u2028"}), "{\"action\":\"ä😀\x7F\u2028\"}");
}

TEST(JsonEncodingTest, bytesThatAreNoUtf8AreReplaced) {
    EXPECT_EQ(noteAsSent("a\xFFz"), "a\uFFFDz");
    EXPECT_EQ(noteAsSent("\xE2\x82"), "\uFFFD");
    EXPECT_EQ(noteAsSent("\xED\xA0\x80"), "\uFFFD\uFFFD\uFFFD");
    EXPECT_EQ(noteAsSent("\xC3"
                         "A"),
              "\uFFFDA");
}

}  // namespace
}  // namespace zelkovanta::records
