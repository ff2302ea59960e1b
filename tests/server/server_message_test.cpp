#include "server/server_message.h"

#include "tests/records/record_generators.h"
#include "tests/records/reference_message.h"

#include <cstddef>
#include <rapidcheck.h>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::server {
namespace {

using records::reference::Json;

// The order of the messages is told, not ours to choose.
template <std::size_t index, class Message>
constexpr bool isAt = std::is_same_v<std::variant_alternative_t<index, ServerMessage>, Message>;
static_assert(isAt<0, records::StateSnapshot>);
static_assert(isAt<1, server_message::SignalCreated>);
static_assert(isAt<2, server_message::SignalUpdated>);
static_assert(isAt<3, server_message::MemberUpdated>);
static_assert(isAt<4, server_message::OfficeUpdated>);
static_assert(isAt<5, server_message::RoomsUpdated>);
static_assert(isAt<6, server_message::TypesUpdated>);
static_assert(isAt<7, server_message::SessionStarted>);
static_assert(isAt<8, records::DesktopRelease>);
static_assert(isAt<9, server_message::SessionEnded>);
static_assert(isAt<10, server_message::Pong>);
static_assert(std::variant_size_v<ServerMessage> == 11);

const Json leastSignal{
    {"id", "s1"}, {"roomId", "r1"}, {"typeId", "t1"}, {"status", "waiting"}, {"createdAt", "2026-01-01T00:00:00Z"}};
const Json leastMember{{"id", "m1"}, {"name", "Alma"}, {"department", "provider"}};
const Json leastOffice{{"id", "o1"}, {"name", "Practice"}};
const Json leastRoom{{"id", "r1"}, {"name", "Room 1"}};
const Json leastType{{"id", "t1"}, {"key", "ready"}, {"label", "Ready"}, {"color", "#fff"}, {"priority", 10}};
const Json leastDevice{{"id", "d1"}, {"kind", "desktop_mac"}};
const Json leastSnapshot{{"office", leastOffice},        {"members", Json::array()}, {"rooms", Json::array()},
                         {"signalTypes", Json::array()}, {"signals", Json::array()}, {"device", leastDevice}};

std::string frame(const std::string& type, const Json& data) {
    return Json{{"type", type}, {"data", data}}.dump();
}

/// One valid frame of each type that has `data`.
const std::vector<Json> validFrames{
    {{"type", "snapshot"}, {"data", leastSnapshot}},
    {{"type", "signal.created"}, {"data", {{"signal", leastSignal}}}},
    {{"type", "signal.updated"}, {"data", {{"signal", leastSignal}}}},
    {{"type", "member.updated"}, {"data", {{"member", leastMember}}}},
    {{"type", "office.updated"}, {"data", {{"office", leastOffice}}}},
    {{"type", "rooms.updated"}, {"data", {{"rooms", Json::array({leastRoom, leastRoom})}}}},
    {{"type", "types.updated"}, {"data", {{"signalTypes", Json::array({leastType})}}}},
    {{"type", "session.started"}, {"data", {{"device", leastDevice}, {"member", leastMember}}}},
    {{"type", "desktop.release"}, {"data", {{"desktopRelease", {{"windows", {{"version", "1.3"}}}}}}}},
};

template <class Message>
std::optional<Message> decodedAs(std::string_view text) {
    const auto message = decodeServerMessage(text);
    if (!message || !std::holds_alternative<Message>(*message))
        return std::nullopt;
    return std::get<Message>(*message);
}

TEST(ServerMessageTest, everyTypeLeadsToItsMessage) {
    EXPECT_EQ(decodedAs<records::StateSnapshot>(frame("snapshot", leastSnapshot))->office.name, "Practice");
    EXPECT_EQ(decodedAs<server_message::SignalCreated>(frame("signal.created", {{"signal", leastSignal}}))->signal.id,
              "s1");
    EXPECT_EQ(decodedAs<server_message::SignalUpdated>(frame("signal.updated", {{"signal", leastSignal}}))->signal.id,
              "s1");
    EXPECT_EQ(decodedAs<server_message::MemberUpdated>(frame("member.updated", {{"member", leastMember}}))->member.name,
              "Alma");
    EXPECT_EQ(decodedAs<server_message::OfficeUpdated>(frame("office.updated", {{"office", leastOffice}}))->office.id,
              "o1");
    EXPECT_EQ(decodedAs<server_message::RoomsUpdated>(
                  frame("rooms.updated", {{"rooms", Json::array({leastRoom, leastRoom})}}))
                  ->rooms.size(),
              2U);
    EXPECT_EQ(
        decodedAs<server_message::TypesUpdated>(frame("types.updated", {{"signalTypes", Json::array({leastType})}}))
            ->signalTypes.front()
            .priority,
        10);
    const auto started = decodedAs<server_message::SessionStarted>(
        frame("session.started", {{"device", leastDevice}, {"member", leastMember}}));
    ASSERT_TRUE(started);
    EXPECT_EQ(started->device.id, "d1");
    EXPECT_EQ(started->member.id, "m1");
}

TEST(ServerMessageTest, pongAndTheEndOfASessionNeedNoData) {
    for (const std::string data :
         {"", R"(,"data":{})", R"(,"data":null)", R"(,"data":[1,"x"])", R"(,"data":{"signal":{}})", R"(,"later":1)"}) {
        EXPECT_TRUE(decodedAs<server_message::Pong>(R"({"type":"pong")" + data + "}")) << data;
        EXPECT_TRUE(decodedAs<server_message::SessionEnded>(R"({"type":"session.ended")" + data + "}")) << data;
    }
}

TEST(ServerMessageTest, evenWhatIsNotReadMustBeJson) {
    for (const std::string text :
         {R"({"type":"pong")", R"({"type":"pong"}})", R"({"type":"pong"} x)", R"({"type":"pong","data":})",
          R"({"type":"pong","data":{"a":01}})", R"({"type":"pong","data":"\ud800"})",
          "{\"type\":\"pong\",\"data\":\"\xFF\"}", R"({"type":"pong","data":[1,]})", R"({"type":"session.ended",})",
          R"({"type":"pong" "data":1})", R"({'type':'pong'})"})
        EXPECT_EQ(decodeServerMessage(text), std::nullopt) << text;
}

TEST(ServerMessageTest, typesAreComparedExactly) {
    for (const Json& valid : validFrames) {
        ASSERT_TRUE(decodeServerMessage(valid.dump())) << valid;
        std::string word = valid["type"];
        for (const std::string& other :
             {"S" + word.substr(1), word + " ", " " + word, word + "s", std::string(), word.substr(1), word + '\0'}) {
            Json changed = valid;
            changed["type"] = other;
            EXPECT_EQ(decodeServerMessage(changed.dump()), std::nullopt) << other;
        }
    }
    for (const char* word : {"Snapshot", "Pong", "SESSION.ENDED", "session_ended", "ping", "signal.deleted"})
        EXPECT_EQ(decodeServerMessage(frame(word, leastSnapshot)), std::nullopt) << word;
}

TEST(ServerMessageTest, aFrameIsAnObjectWithATextAsItsType) {
    for (const std::string text : {"", " ", "null", "1", "\"pong\"", "[]", R"([{"type":"pong"}])", "{}",
                                   R"({"data":{}})", R"({"type":null})", R"({"type":1})", R"({"type":["pong"]})",
                                   R"({"type":{"type":"pong"}})", R"({"Type":"pong"})", "<html>bad gateway</html>"})
        EXPECT_EQ(decodeServerMessage(text), std::nullopt) << text;
}

TEST(ServerMessageTest, dataMustBeThereAndHaveItsForm) {
    for (const Json& valid : validFrames) {
        Json changed = valid;
        changed.erase("data");
        EXPECT_EQ(decodeServerMessage(changed.dump()), std::nullopt) << valid["type"];
        for (const Json& data :
             {Json(), Json("text"), Json(1), Json(true), Json::array(), Json::object(), Json::array({valid["data"]})}) {
            changed["data"] = data;
            EXPECT_EQ(decodeServerMessage(changed.dump()), std::nullopt) << valid["type"] << data;
        }
        for (const auto& [key, value] : valid["data"].items()) {
            for (const Json& other : {Json(), Json("text"), Json(1), Json(false)}) {
                changed = valid;
                changed["data"][key] = other;
                EXPECT_EQ(decodeServerMessage(changed.dump()), std::nullopt) << valid["type"] << key << other;
            }
        }
    }
}

TEST(ServerMessageTest, aSignalWithoutItsTypeGivesNoMessage) {
    Json signal = leastSignal;
    signal.erase("typeId");
    EXPECT_EQ(decodeServerMessage(frame("signal.created", {{"signal", signal}})), std::nullopt);
    EXPECT_EQ(decodeServerMessage(frame("signal.updated", {{"signal", signal}})), std::nullopt);
}

TEST(ServerMessageTest, oneMalformedMemberDropsTheSnapshot) {
    Json snapshot = leastSnapshot;
    snapshot["members"] = Json::array({leastMember, leastMember});
    ASSERT_TRUE(decodeServerMessage(frame("snapshot", snapshot)));
    snapshot["members"][1]["onShift"] = "yes";
    EXPECT_EQ(decodeServerMessage(frame("snapshot", snapshot)), std::nullopt);
}

TEST(ServerMessageTest, oneMalformedRoomDropsTheList) {
    EXPECT_EQ(decodeServerMessage(frame("rooms.updated", {{"rooms", Json::array({leastRoom, Json{{"id", "r2"}}})}})),
              std::nullopt);
    EXPECT_TRUE(
        decodedAs<server_message::RoomsUpdated>(frame("rooms.updated", {{"rooms", Json::array()}}))->rooms.empty());
}

TEST(ServerMessageTest, aReleaseIsAMessageOnlyWhereItHasAValue) {
    EXPECT_EQ(decodeServerMessage(frame("desktop.release", Json::object())), std::nullopt);
    EXPECT_EQ(decodeServerMessage(frame("desktop.release", {{"desktopRelease", nullptr}})), std::nullopt);
    const Json mac{{"version", "1.4.0"}, {"build", 140}, {"url", "https://updates.example/a.dmg"}};
    const auto release =
        decodedAs<records::DesktopRelease>(frame("desktop.release", {{"desktopRelease", {{"macos", mac}}}}));
    ASSERT_TRUE(release);
    EXPECT_EQ(release->macos->build, 140);
    EXPECT_EQ(decodedAs<records::DesktopRelease>(frame("desktop.release", {{"desktopRelease", Json::object()}})),
              records::DesktopRelease());
    Json broken = mac;
    broken["url"] = "http://exa mple";
    EXPECT_EQ(decodeServerMessage(frame("desktop.release", {{"desktopRelease", {{"macos", broken}}}})), std::nullopt);
}

TEST(ServerMessageTest, dataMayComeBeforeTheTypeAndAmongOtherKeys) {
    const auto message = decodedAs<server_message::SignalUpdated>(
        R"({"seq":12,"data":{"at":"now","signal":)" + leastSignal.dump() + R"(},"type":"signal.updated","v":[2]})");
    ASSERT_TRUE(message);
    EXPECT_EQ(message->signal.id, "s1");
}

TEST(ServerMessageTest, ofADoubledKeyTheLastOneCounts) {
    EXPECT_TRUE(decodedAs<server_message::Pong>(R"({"type":"snapshot","type":"pong"})"));
    EXPECT_TRUE(decodedAs<server_message::Pong>(R"({"type":1,"type":"pong"})"));
    EXPECT_EQ(decodeServerMessage(R"({"type":"pong","type":null})"), std::nullopt);
    const std::string data = R"("data":{"signal":)" + leastSignal.dump() + "}";
    EXPECT_TRUE(decodeServerMessage(R"({"type":"signal.created","data":1,)" + data + "}"));
    EXPECT_EQ(decodeServerMessage(R"({"type":"signal.created",)" + data + R"(,"data":1})"), std::nullopt);
}

TEST(ServerMessageTest, twoIdenticalFramesGiveTwoEqualMessages) {
    const std::string text = frame("signal.updated", {{"signal", leastSignal}});
    const auto first = decodeServerMessage(text);
    const auto second = decodeServerMessage(text);
    ASSERT_TRUE(first);
    EXPECT_EQ(first, second);
}

TEST(ServerMessageTest, bytesOfAnySourceAndPlaceGiveTheSameMessage) {
    const std::string text = frame("signal.updated", {{"signal", leastSignal}});
    const std::vector<unsigned char> bytes(text.begin(), text.end());
    const std::string_view binary(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    ASSERT_TRUE(decodeServerMessage(text));
    EXPECT_EQ(decodeServerMessage(binary), decodeServerMessage(text));
    const std::string surrounded = "garbage" + text + "garbage";
    EXPECT_EQ(decodeServerMessage(std::string_view(surrounded).substr(7, text.size())), decodeServerMessage(text));
}

TEST(ServerMessageTest, everyPrefixOfAFrameGivesNoMessage) {
    for (const Json& valid : validFrames) {
        const std::string text = valid.dump();
        for (std::size_t length = 0; length < text.size(); ++length)
            ASSERT_EQ(decodeServerMessage(text.substr(0, length)), std::nullopt) << text.substr(0, length);
    }
}

TEST(ServerMessagePropertiesTest, aSnapshotArrivesWhole) {
    EXPECT_TRUE(rc::check("any snapshot", [] {
        const auto snapshot = *records::reference::anyRecord<records::StateSnapshot>();
        RC_ASSERT(decodedAs<records::StateSnapshot>(frame("snapshot", records::reference::write(snapshot))) ==
                  snapshot);
    }));
}

TEST(ServerMessagePropertiesTest, aChangedFrameGetsTheVerdictOfAnIndependentDecoder) {
    EXPECT_TRUE(rc::check("frames with changed bytes", [] {
        std::string text = (*rc::gen::elementOf(validFrames)).dump();
        const int changes = *rc::gen::inRange(1, 4);
        for (int done = 0; done < changes; ++done) {
            const auto position = *rc::gen::inRange<std::size_t>(0, text.size());
            switch (*rc::gen::inRange(0, 3)) {
                case 0:
                    text[position] = *rc::gen::arbitrary<char>();
                    break;
                case 1:
                    text.erase(position, *rc::gen::inRange<std::size_t>(1, 12));
                    break;
                default:
                    text.insert(position, *rc::gen::element<std::string>("null", "1", "\"x\"", ",", "{}", "\"", "[]"));
            }
            RC_PRE(!text.empty());
        }
        const auto parsed = records::reference::parse(text);
        const auto message = decodeServerMessage(text);
        if (parsed.verdict == records::reference::Parsed::Verdict::json)
            RC_ASSERT(message == records::reference::readMessage(parsed.document));
        if (parsed.verdict == records::reference::Parsed::Verdict::notJson)
            RC_ASSERT(!message.has_value());
    }));
}

}  // namespace
}  // namespace zelkovanta::server
