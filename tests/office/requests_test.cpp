#include "office/qr_picture.h"
#include "tests/office/office_fixture.h"

namespace zelkovanta::office {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class RequestsTest : public OfficeTest {
protected:
    Computer room = pairRoom("Room 3");
};

TEST_F(RequestsTest, everyOperationOfAPairedComputerWantsItsToken) {
    const std::vector<std::pair<const char*, const char*>> operations = {{"GET", "state"},
                                                                         {"POST", "signals"},
                                                                         {"PATCH", "signals/sig_1"},
                                                                         {"POST", "members/me/status"},
                                                                         {"POST", "devices/me/signin-qr"},
                                                                         {"POST", "devices/me/signout"},
                                                                         {"DELETE", "devices/me"},
                                                                         {"POST", "crash-reports"}};
    for (const auto& [method, path] : operations) {
        for (const char* token : {"", "zvd_guessed"}) {
            const json::value body = call(method, path, {{}, token}, "{}");
            EXPECT_EQ(verdict(), "401 invalid_token") << method << ' ' << path;
            EXPECT_NE(at(body, "message"), "<none>");
            EXPECT_THAT(kinds(), IsEmpty());
        }
    }
}

TEST_F(RequestsTest, wrongMethodsAndAddressesAreTold) {
    call("GET", "signals", room);
    EXPECT_EQ(verdict(), "405 method_not_allowed");
    call("POST", "state", room);
    EXPECT_EQ(verdict(), "405 method_not_allowed");
    call("GET", "pair/redeem", {});
    EXPECT_EQ(verdict(), "405 method_not_allowed");
    call("GET", "nothing", room);
    EXPECT_EQ(verdict(), "404 not_found");
    call("PATCH", "signals/a/b", room);
    EXPECT_EQ(verdict(), "404 not_found");
    call("PATCH", "signals/", room);
    EXPECT_EQ(verdict(), "404 not_found");
    keep(office->handle({.method = "GET", .path = "/", .token = {}, .body = {}, .peer = {}}, now));
    EXPECT_EQ(verdict(), "404 not_found");
    keep(office->handle({.method = "GET", .path = "", .token = {}, .body = {}, .peer = {}}, now));
    EXPECT_EQ(verdict(), "404 not_found");
}

TEST_F(RequestsTest, aQueryIsNoPartOfTheAddress) {
    call("GET", "state?fresh=1", room);
    EXPECT_EQ(verdict(), "200");
}

TEST_F(RequestsTest, theRouteForTheLogHoldsNoIdentifier) {
    act(room, "sig_0123", "done");
    EXPECT_EQ(answer.route, "/api/v1/signals/:id");
    call("GET", "pair/request/zvc_secret", {});
    EXPECT_EQ(answer.route, "/api/v1/pair/request/:claimToken");
    call("GET", "secret/path", room);
    EXPECT_EQ(answer.route, "/api/v1/unknown");
}

TEST_F(RequestsTest, bodiesThatAreNoneAreRefused) {
    std::string deep(5000, '[');
    const std::vector<std::string> bodies = {"",
                                             "{",
                                             "null",
                                             "7",
                                             "\"text\"",
                                             "[]",
                                             deep,
                                             R"({"typeId":)",
                                             R"({"typeId":null,"note":""})",
                                             R"({"typeId":7,"note":""})",
                                             R"({"typeId":"x"})",
                                             R"({"typeId":"x","note":null})",
                                             R"({"typeId":"x","note":["a"]})",
                                             R"({"typeId":"x","note":"","providerIds":"a"})",
                                             R"({"typeId":"x","note":"","providerIds":[1]})",
                                             R"({"typeId":"x","note":"","roomId":{}})",
                                             "{\"typeId\":\"x\",\"note\":\"\xff\xfe\"}",
                                             R"({"typeId":"x","note":"\ud800"})",
                                             std::string("\0\0\0", 3)};
    for (const std::string& body : bodies) {
        call("POST", "signals", room, body);
        EXPECT_EQ(verdict(), "400 bad_request") << body.substr(0, 60);
    }
    EXPECT_TRUE(office->state().all<Signal>().empty());
}

TEST_F(RequestsTest, unknownKeysAndNullOptionsAreIgnored) {
    call("POST", "signals", room,
         json::serialize(json::object{{"typeId", named<SignalType>("ready").id},
                                      {"note", "n\u0001\"\\/ü"},
                                      {"roomId", nullptr},
                                      {"providerIds", nullptr},
                                      {"later", json::array{1, 2}}}));
    EXPECT_EQ(verdict(), "201");
    EXPECT_EQ(at(stateAt(room).at("signals").at(0), "note"), "n\u0001\"\\/ü");
}

TEST_F(RequestsTest, anEmptyListOfRecipientsIsAnOpenCall) {
    EXPECT_EQ(at(sendReady(room, {{"providerIds", json::array()}}), "providerIds"), "<none>");
}

TEST_F(RequestsTest, theSnapshotHasEverythingInOrder) {
    sendReady(room, {{"roomId", named<Room>("Room 2").id}});
    now += seconds{1};
    sendReady(room);
    const json::value state = stateAt(room);
    EXPECT_EQ(at(state, "office.id"), practiceNamed("Harbour Dental").id);
    EXPECT_EQ(state.at("members").get_array().size(), 13U);
    EXPECT_EQ(at(state.at("members").at(0), "name"), "Dr. Amara Okafor");
    std::vector<std::string> rooms;
    for (const json::value& each : state.at("rooms").get_array()) {
        rooms.push_back(at(each, "name"));
    }
    EXPECT_THAT(rooms, ElementsAre("Room 1", "Room 2", "Room 3", "Room 4", "Imaging", "Consult"));
    std::vector<std::string> types;
    for (const json::value& each : state.at("signalTypes").get_array()) {
        types.push_back(at(each, "key"));
    }
    EXPECT_THAT(types, ElementsAre("ready", "patient_seated", "step_out", "urgent", "xray", "checkout"));
    ASSERT_EQ(state.at("signals").get_array().size(), 2U);
    EXPECT_LT(at(state.at("signals").at(0), "createdAt"), at(state.at("signals").at(1), "createdAt"));
    EXPECT_EQ(at(state, "device.id"), room.id);
    EXPECT_EQ(at(state, "desktopRelease"), "<none>");
    EXPECT_EQ(office->snapshot(room.id), answer.body);
    EXPECT_EQ(office->snapshot("dev_none"), std::nullopt);
}

TEST_F(RequestsTest, anOpenedConnectionStartsWithTheSnapshot) {
    now += seconds{5};
    const SocketAnswer opened = office->socketOpened(room.token, now);
    EXPECT_EQ(opened.status, 101);
    EXPECT_EQ(opened.deviceId, room.id);
    const json::value frame = json::parse(opened.frame);
    EXPECT_EQ(at(frame, "type"), "snapshot");
    EXPECT_EQ(frame.at("data"), stateAt(room));
    EXPECT_EQ(at(frame, "data.device.lastSeenAt"), "2026-03-09T08:00:05.000Z");
}

TEST_F(RequestsTest, anUnknownTokenOpensNoConnection) {
    for (const char* token : {"", "zvd_guessed"}) {
        const SocketAnswer refused = office->socketOpened(token, now);
        EXPECT_EQ(refused.status, 401);
        EXPECT_EQ(at(json::parse(refused.body), "error"), "invalid_token");
        EXPECT_TRUE(refused.frame.empty());
    }
}

TEST_F(RequestsTest, onlyAPingIsAnswered) {
    EXPECT_EQ(Office::replyToFrame(R"({"type":"ping"})"), R"({"type":"pong"})");
    for (const char* frame : {"", "ping", "{}", "[]", R"({"type":"Ping"})", R"({"type":1})", "{\"type\":\"ping\""}) {
        EXPECT_EQ(Office::replyToFrame(frame), std::nullopt) << frame;
    }
}

TEST_F(RequestsTest, crashReportsAreCountedAndTheNewestHundredKept) {
    EXPECT_EQ(call("POST", "crash-reports", room, R"({"reports":[]})"), json::value({{"accepted", 0}}));
    EXPECT_EQ(call("POST", "crash-reports", room, R"({"reports":[{"a":1},{"b":[2]}]})"),
              json::value({{"accepted", 2}}));
    ASSERT_EQ(office->state().all<CrashReport>().size(), 2U);
    for (int batch = 0; batch < 60; ++batch) {
        now += seconds{1};
        call("POST", "crash-reports", room, R"({"reports":[{"c":1},{"c":2}]})");
    }
    EXPECT_EQ(office->state().all<CrashReport>().size(), 100U);
    for (const auto& [id, report] : office->state().all<CrashReport>()) {
        EXPECT_THAT(report.report, testing::HasSubstr("\"c\""));
    }
    for (const char* body : {"{}", R"({"reports":{}})", R"({"reports":[1]})"}) {
        call("POST", "crash-reports", room, body);
        EXPECT_EQ(verdict(), "400 bad_request");
    }
}

TEST_F(RequestsTest, whatCannotBeKeptIsNotAccepted) {
    const State before = office->state();
    storage.refuseCommits(true);
    sendReady(room);
    EXPECT_EQ(verdict(), "500 storage_failed");
    EXPECT_THAT(kinds(), IsEmpty());
    keep(office->revoke(room.id, now));
    EXPECT_EQ(verdict(), "500 storage_failed");
    keep(office->makePairingCode(
        {.practice = {}, .role = DeviceRole::shared, .room = {}, .member = {}, .computerName = {}}, now));
    EXPECT_EQ(verdict(), "500 storage_failed");
    EXPECT_EQ(office->state(), before);
    // A computer is let in all the same; only the time of its coming is not kept.
    EXPECT_EQ(office->socketOpened(room.token, now).status, 101);
    EXPECT_EQ(office->state(), before);
    stateAt(room);
    EXPECT_EQ(verdict(), "200");

    storage.refuseCommits(false);
    sendReady(room);
    EXPECT_EQ(verdict(), "201");
    EXPECT_THAT(kinds(), ElementsAre("signal.created"));
}

TEST_F(RequestsTest, theSampleIsAddedOnceAndOnlyWhereThereIsNothing) {
    const State before = office->state();
    const json::value again = keep(office->addSample("harbour", now));
    EXPECT_EQ(verdict(), "200");
    EXPECT_EQ(at(again, "added"), "0");
    EXPECT_EQ(office->state(), before);
    keep(office->addSample("atlantis", now));
    EXPECT_EQ(verdict(), "404 unknown_sample");
}

TEST_F(RequestsTest, theAdminsAddressesTakeOrdersAndRefuseNonsense) {
    const auto order = [&](std::string path, std::string body) {
        keep(office->administer({.method = "POST", .path = "/admin/v1/" + path, .token = {}, .body = body, .peer = {}},
                                now));
        return verdict();
    };
    EXPECT_EQ(order("code", R"({"role":"shared"})"), "200");
    EXPECT_EQ(order("code", R"({"role":"king"})"), "400 bad_request");
    EXPECT_EQ(order("code", "{}"), "400 bad_request");
    EXPECT_EQ(order("approve", R"({"request":"ABCDEF","role":"shared"})"), "404 unknown_request");
    EXPECT_EQ(order("signin", R"({"device":"Room 3 Mac","member":"Sofia Marino"})"), "409 not_a_station");
    EXPECT_EQ(order("signin", R"({"code":"zvq_none","member":"Sofia Marino"})"), "404 invalid_code");
    EXPECT_EQ(order("signout", R"({"device":"Room 3 Mac"})"), "200");
    EXPECT_EQ(order("alerts", R"({"device":"Room 3 Mac","settings":{"quiet":true}})"), "200");
    EXPECT_EQ(order("move", R"({"device":"Room 3 Mac","practice":"lakeside","notice":"loud"})"), "400 bad_request");
    EXPECT_EQ(order("move", R"({"device":"Room 3 Mac","practice":"lakeside","notice":"office"})"), "200");
    EXPECT_EQ(order("send", R"({"room":"Room 1","type":"ready","to":["Sofia Marino"],"note":"n"})"), "200");
    const std::string id = office->state().all<Signal>().begin()->first;
    EXPECT_EQ(order("act", R"({"signal":")" + id + R"(","action":"acknowledge","by":"Sofia Marino"})"), "200");
    EXPECT_EQ(order("act", R"({"signal":")" + id + R"(","action":"shout"})"), "400 bad_request");
    EXPECT_EQ(order("member", R"({"member":"Sofia Marino","onShift":false})"), "200");
    EXPECT_EQ(order("member", R"({"member":"Sofia Marino","onShift":"no"})"), "400 bad_request");
    EXPECT_EQ(order("member/add", R"({"name":"Ada New","department":"nurse"})"), "200");
    EXPECT_EQ(order("room", R"({"room":"Room 1","active":false})"), "200");
    EXPECT_EQ(order("room/add", R"({"name":"Room 9"})"), "200");
    EXPECT_EQ(order("type", R"({"type":"ready","priority":21})"), "200");
    EXPECT_EQ(order("type", R"({"type":"ready","priority":"high"})"), "400 bad_request");
    EXPECT_EQ(order("practice", R"({"practice":"lakeside","vertical":"other"})"), "200");
    EXPECT_EQ(order("announce", R"({"version":"1","build":2,"url":"https://x.example/y"})"), "200");
    EXPECT_EQ(order("revoke", R"({"device":"Room 3 Mac"})"), "200");
    EXPECT_EQ(order("revoke", R"({"device":"Room 3 Mac"})"), "404 unknown_computer");
    EXPECT_EQ(order("dance", "{}"), "404 not_found");
    EXPECT_EQ(order("revoke", "no json"), "400 bad_request");
    keep(office->administer({.method = "GET", .path = "/admin/v1/state", .token = {}, .body = {}, .peer = {}}, now));
    EXPECT_EQ(verdict(), "200");
    EXPECT_EQ(json::parse(answer.body).at("practices").get_array().size(), 2U);
    keep(office->administer({.method = "GET", .path = "/admin/v1/revoke", .token = {}, .body = {}, .peer = {}}, now));
    EXPECT_EQ(verdict(), "405 method_not_allowed");
}

TEST_F(RequestsTest, theSameSeedAndTheSameCallsGiveTheSameBytes) {
    const auto play = [] {
        MemoryStorage kept;
        SeededBytes chance(7);
        const auto opened = Office::open(kept, chance, qrPicture);
        Office& again = **opened;
        WallTime time{hours{1}};
        std::string all = again.addSample("harbour", time).body;
        const Request setup{.method = "POST",
                            .path = "/api/v1/pair/request",
                            .token = {},
                            .body = R"({"device":{"kind":"desktop_mac","name":"a","model":"b","appVersion":"1"}})",
                            .peer = {}};
        for (int turn = 0; turn < 5; ++turn) {
            all += again.handle(setup, time += seconds{turn}).body;
        }
        return all;
    };
    EXPECT_EQ(play(), play());
}

}  // namespace
}  // namespace zelkovanta::office
