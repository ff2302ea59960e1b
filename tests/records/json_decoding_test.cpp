#include "records/json_codec.h"
#include "tests/records/full_records.h"
#include "tests/records/reference_json.h"

#include <limits>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::records {
namespace {

using reference::fullSnapshot;
using reference::Json;

Json leastSignal() {
    return {
        {"id", "s1"}, {"roomId", "r1"}, {"typeId", "t1"}, {"status", "waiting"}, {"createdAt", "2026-01-01T00:00:00Z"}};
}

TEST(JsonDecodingTest, aSignalNeedsOnlyItsRequiredFields) {
    const auto signal = decodeJson<Signal>(leastSignal().dump());
    ASSERT_TRUE(signal);
    Signal expected;
    expected.id = "s1";
    expected.roomId = "r1";
    expected.typeId = "t1";
    expected.status = "waiting";
    expected.createdAt = "2026-01-01T00:00:00Z";
    EXPECT_EQ(*signal, expected);
}

TEST(JsonDecodingTest, aSignalOfAnUnknownStatusDecodesAsInactive) {
    Json json = leastSignal();
    json["status"] = "snoozed";
    const auto signal = decodeJson<Signal>(json.dump());
    ASSERT_TRUE(signal);
    EXPECT_EQ(signal->status, "snoozed");
    EXPECT_FALSE(isActive(*signal));
}

TEST(JsonDecodingTest, anEmptyListHasAValueAndAnAbsentOneHasNone) {
    Json json = leastSignal();
    EXPECT_FALSE(decodeJson<Signal>(json.dump())->providerIds);
    json["providerIds"] = nullptr;
    EXPECT_FALSE(decodeJson<Signal>(json.dump())->providerIds);
    json["providerIds"] = Json::array();
    json["providerId"] = "m1";
    const auto signal = decodeJson<Signal>(json.dump());
    EXPECT_EQ(signal->providerIds, std::vector<std::string>());
    EXPECT_EQ(signal->providerId, "m1");
}

TEST(JsonDecodingTest, anOptionalBooleanHasThreeStates) {
    Json json{{"id", "r1"}, {"name", "Room"}};
    const auto active = [&json]() -> std::optional<bool> {
        Json snapshot = reference::write(fullSnapshot());
        snapshot["rooms"] = Json::array({json});
        return decodeJson<StateSnapshot>(snapshot.dump()).value().rooms.front().active;
    };
    EXPECT_EQ(active(), std::nullopt);
    json["active"] = false;
    EXPECT_EQ(active(), false);
    json["active"] = true;
    EXPECT_EQ(active(), true);
    json["active"] = nullptr;
    EXPECT_EQ(active(), std::nullopt);
}

TEST(JsonDecodingTest, integersAreSigned64BitWithoutFractionOrExponent) {
    const auto accepted = [](const std::string& number) {
        return decodeJson<Accepted>(R"({"accepted":)" + number + "}");
    };
    EXPECT_EQ(accepted("0"), Accepted{0});
    EXPECT_EQ(accepted("-0"), Accepted{0});
    EXPECT_EQ(accepted("-17"), Accepted{-17});
    EXPECT_EQ(accepted("9223372036854775807"), Accepted{std::numeric_limits<std::int64_t>::max()});
    EXPECT_EQ(accepted("-9223372036854775808"), Accepted{std::numeric_limits<std::int64_t>::min()});
    for (const char* number :
         {"1.0", "1e0", "1E2", "10e-1", "0.0", "-0.0", "9223372036854775808", "-9223372036854775809",
          "18446744073709551615", "18446744073709551616", "1e400", "true", "\"1\"", "null", "[1]"})
        EXPECT_FALSE(accepted(number)) << number;
}

TEST(JsonDecodingTest, aBooleanIsNoNumber) {
    for (const char* value : {"0", "1", "\"true\"", "[]", "{}"}) {
        const auto member =
            decodeJson<Member>(R"({"id":"m","name":"n","department":"d","active":)" + std::string(value) + "}");
        EXPECT_FALSE(member) << value;
    }
}

TEST(JsonDecodingTest, keysAreComparedExactlyAndUnknownOnesIgnored) {
    Json json = leastSignal();
    json["Note"] = 1;
    json["note "] = 2;
    json["notes"] = 3;
    json["not"] = Json::array();
    json[""] = Json::object();
    const auto signal = decodeJson<Signal>(json.dump());
    ASSERT_TRUE(signal);
    EXPECT_EQ(signal->note, std::nullopt);
    json.erase("id");
    json["ID"] = "s1";
    EXPECT_FALSE(decodeJson<Signal>(json.dump()));
}

TEST(JsonDecodingTest, keysMayComeInAnyOrderAndEscaped) {
    const auto signal = decodeJson<Signal>(
        R"({"createdAt":"c","x":[{"id":1}],"st\u0061tus":"waiting","typeId":"t","note":"n","roomId":"r","id":"s"})");
    ASSERT_TRUE(signal);
    EXPECT_EQ(signal->createdAt, "c");
    EXPECT_EQ(signal->status, "waiting");
    EXPECT_EQ(signal->note, "n");
}

TEST(JsonDecodingTest, escapesInTextsAreUndone) {
    Json json = leastSignal();
    json["note"] = "";
    std::string text = json.dump();
    text.replace(text.find("\"note\":\"\""), 9, R"("note":"\"\\\/\b\f\n\r\t\u0000\u00e4\ud83d\ude00")");
    const auto signal = decodeJson<Signal>(text);
    ASSERT_TRUE(signal);
    EXPECT_EQ(signal->note, std::string("\"\\/\b\f\n\r\t\0ä😀", 15));
}

TEST(JsonDecodingTest, ofADoubledKeyTheLastOneAloneCounts) {
    const std::string start = R"({"id":"a","roomId":"r","typeId":"t","status":"w","createdAt":"c",)";
    EXPECT_EQ(decodeJson<Signal>(start + R"("note":"one","note":"two"})")->note, "two");
    EXPECT_EQ(decodeJson<Signal>(start + R"("note":"one","note":null})")->note, std::nullopt);
    EXPECT_EQ(decodeJson<Signal>(start + R"("note":1,"note":"two"})")->note, "two");
    EXPECT_EQ(decodeJson<Signal>(start + R"("id":"b"})")->id, "b");
    EXPECT_FALSE(decodeJson<Signal>(start + R"("note":"one","note":1})"));
    EXPECT_FALSE(decodeJson<Signal>(start + R"("id":null})"));
    EXPECT_EQ(decodeJson<Signal>(start + R"("providerIds":["a","b"],"providerIds":["c"]})")->providerIds,
              std::vector<std::string>{"c"});
    const std::string member = R"({"id":"m","name":"n","department":"d",)";
    EXPECT_EQ(decodeJson<Member>(member + R"("desktopAlerts":{"enabled":true},"desktopAlerts":{"sound":"s"}})")
                  ->desktopAlerts,
              (DesktopAlerts{std::nullopt, "s"}));
    const auto device = decodeJson<Device>(
        R"({"id":"d","kind":"k","notificationSettings":{"perType":{"a":1,"b":{"tone":"x"},"a":{"sound":"s"}}}})");
    ASSERT_TRUE(device);
    EXPECT_EQ(device->notificationSettings->perType->at("a"), (PerTypeSettings{std::nullopt, "s", std::nullopt}));
}

TEST(JsonDecodingTest, theDictionaryByTypeTakesAnyKeyButNoNull) {
    const auto device = [](const std::string& perType) {
        return decodeJson<Device>(R"({"id":"d","kind":"later_kind","notificationSettings":{"perType":)" + perType +
                                  "}}");
    };
    EXPECT_EQ(device("null")->notificationSettings->perType, std::nullopt);
    EXPECT_TRUE(device("{}")->notificationSettings->perType->empty());
    EXPECT_EQ(device(R"({"":{},"z\u0000":{"enabled":false}})")->notificationSettings->perType->size(), 2U);
    for (const char* perType : {R"({"a":null})", R"({"a":{"enabled":1}})", R"({"a":[]})", "[]", R"("a")"})
        EXPECT_FALSE(device(perType)) << perType;
}

TEST(JsonDecodingTest, aNullElementFailsItsList) {
    Json json = leastSignal();
    json["providerIds"] = Json::array({"m1", nullptr});
    EXPECT_FALSE(decodeJson<Signal>(json.dump()));
}

TEST(JsonDecodingTest, oneMalformedSignalFailsTheSnapshot) {
    Json json = reference::write(fullSnapshot());
    json["signals"].push_back(leastSignal());
    ASSERT_TRUE(decodeJson<StateSnapshot>(json.dump()));
    json["signals"].back().erase("typeId");
    EXPECT_FALSE(decodeJson<StateSnapshot>(json.dump()));
}

TEST(JsonDecodingTest, aNullReleaseIsTheSameAsNone) {
    Json json = reference::write(fullSnapshot());
    json["desktopRelease"] = nullptr;
    EXPECT_EQ(decodeJson<StateSnapshot>(json.dump())->desktopRelease, std::nullopt);
    json.erase("desktopRelease");
    EXPECT_EQ(decodeJson<StateSnapshot>(json.dump())->desktopRelease, std::nullopt);
    json["desktopRelease"] = Json::object();
    EXPECT_EQ(decodeJson<StateSnapshot>(json.dump())->desktopRelease, DesktopRelease());
}

TEST(JsonDecodingTest, aReleaseWhoseUrlDoesNotParseFailsTheSnapshot) {
    Json json = reference::write(fullSnapshot());
    for (const char* text : {"", "http://exa mple", "https://host/%zz"}) {
        json["desktopRelease"]["macos"]["url"] = text;
        EXPECT_FALSE(decodeJson<StateSnapshot>(json.dump())) << text;
    }
    json["desktopRelease"]["macos"]["url"] = "relative";
    EXPECT_EQ(decodeJson<StateSnapshot>(json.dump())->desktopRelease->macos->url.text(), "relative");
}

TEST(JsonDecodingTest, ofTheOtherReleaseOnlyTheVersionIsLookedAt) {
    Json json = reference::write(fullSnapshot());
    json["desktopRelease"] = Json{{"windows", {{"version", "2"}, {"url", 1}, {"build", "x"}}}};
    EXPECT_EQ(decodeJson<StateSnapshot>(json.dump())->desktopRelease->windows, DesktopRelease::Windows{"2"});
}

TEST(JsonDecodingTest, theReasonNamesFieldsAndHoldsNothingOfTheDocument) {
    const auto reason = [](const Json& json) { return decodeJson<StateSnapshot>(json.dump()).error().reason; };
    Json json = reference::write(fullSnapshot());
    json["members"][0]["name"] = 4711;
    EXPECT_EQ(reason(json), "members: name: not a string");
    json = reference::write(fullSnapshot());
    json["signals"][0].erase("typeId");
    EXPECT_EQ(reason(json), "signals: typeId: missing");
    json = reference::write(fullSnapshot());
    json["device"]["notificationSettings"]["perType"]["Secretive"] = "Secretive";
    EXPECT_EQ(reason(json), "device: notificationSettings: perType: not an object");
    json = reference::write(fullSnapshot());
    json["desktopRelease"]["macos"]["url"] = "Secretive %zz";
    EXPECT_EQ(reason(json), "desktopRelease: macos: url: not a URL");
    EXPECT_EQ(reason(Json::array()), "not an object");
    for (const char* text :
         {"Secretive", "{\"Secretive\":Secretive}", "[\"Secretive\"]", "{\"Secretive\"", "Secretive\xFF"}) {
        const std::string written = decodeJson<StateSnapshot>(text).error().reason;
        EXPECT_FALSE(written.empty());
        EXPECT_EQ(written.find("Secretive"), std::string::npos);
    }
}

}  // namespace
}  // namespace zelkovanta::records
