#include "tests/office/loopback.h"
#include "tests/office/office_fixture.h"
#include "tests/office/office_process.h"

#include <fstream>

namespace zelkovanta::office {
namespace {

using testing::AnyOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

/// The office's program over real sockets.
class ServerTest : public testing::Test {
protected:
    HttpReply call(std::string_view method, std::string_view path, const Computer& computer,
                   std::string_view body = {}) const {
        return ask(office.port(), method, "/api/v1/" + std::string(path), computer.token, body);
    }

    Computer pair(std::vector<std::string> placement) const {
        placement.insert(placement.begin(), "code");
        const std::string code = office.command(placement);
        const HttpReply reply = call("POST", "pair/redeem", {}, R"({"code":")" + code + "\"," + introduction.substr(1));
        EXPECT_EQ(reply.status, 200) << reply.body;
        const json::value body = json::parse(reply.body);
        return {at(body, "device.id"), at(body, "deviceToken")};
    }
    Computer pairRoom() const { return pair({"--role", "room", "--room", "Room 3"}); }
    Computer pairDoctor() const { return pair({"--role", "member", "--member", "Dr. Amara Okafor"}); }

    /// The "ready" type's identifier.
    std::string typeId(const Computer& computer) const {
        const json::value state = json::parse(call("GET", "state", computer).body);
        return at(state.at("signalTypes").at(0), "id");
    }
    std::string sendReady(const Computer& computer, const std::string& note = "") const {
        const HttpReply reply =
            call("POST", "signals", computer, R"({"typeId":")" + typeId(computer) + R"(","note":")" + note + "\"}");
        EXPECT_EQ(reply.status, 201) << reply.body;
        return at(json::parse(reply.body), "id");
    }

    static json::value nextFrame(RealTimeConnection& connection) {
        const auto frame = connection.next();
        return frame ? json::parse(*frame) : json::value();
    }

    const std::string introduction =
        R"({"device":{"kind":"desktop_mac","name":"Pamir","model":"Mac14,3","appVersion":"1.0.1"}})";
    OfficeProcess office;
};

TEST_F(ServerTest, refusesAnUpgradeWithoutAGoodToken) {
    for (const char* token : {"", "zvd_guessed"}) {
        RealTimeConnection connection(office.port());
        EXPECT_EQ(connection.open(token), 401);
    }
}

TEST_F(ServerTest, startsEveryRealTimeConnectionWithTheSnapshot) {
    const Computer room = pairRoom();
    const std::string id = sendReady(room);
    RealTimeConnection connection(office.port());
    ASSERT_EQ(connection.open(room.token), 101);
    const json::value frame = nextFrame(connection);
    EXPECT_EQ(at(frame, "type"), "snapshot");
    EXPECT_EQ(at(frame.at("data").at("signals").at(0), "id"), id);
    EXPECT_EQ(frame.at("data"), json::parse(call("GET", "state", room).body));
}

TEST_F(ServerTest, carriesASignalFromOneComputerToTheOtherAndBack) {
    const Computer room = pairRoom();
    const Computer doctor = pairDoctor();
    RealTimeConnection atRoom(office.port());
    RealTimeConnection atDoctor(office.port());
    ASSERT_EQ(atRoom.open(room.token), 101);
    ASSERT_EQ(atDoctor.open(doctor.token), 101);
    EXPECT_EQ(at(nextFrame(atRoom), "type"), "snapshot");
    EXPECT_EQ(at(nextFrame(atDoctor), "type"), "snapshot");

    const std::string id = sendReady(room, "ready when you are");
    const json::value created = nextFrame(atDoctor);
    EXPECT_EQ(at(created, "type"), "signal.created");
    EXPECT_EQ(at(created, "data.signal.id"), id);
    EXPECT_EQ(nextFrame(atRoom), created);

    EXPECT_EQ(call("PATCH", "signals/" + id, doctor, R"({"action":"acknowledge"})").status, 200);
    EXPECT_EQ(at(nextFrame(atRoom), "data.signal.status"), "acknowledged");
    EXPECT_EQ(call("PATCH", "signals/" + id, doctor, R"({"action":"done"})").status, 200);
    EXPECT_EQ(at(nextFrame(atRoom), "data.signal.status"), "done");
}

TEST_F(ServerTest, answersPingsAndIgnoresOtherFrames) {
    const Computer room = pairRoom();
    RealTimeConnection connection(office.port());
    ASSERT_EQ(connection.open(room.token), 101);
    (void)nextFrame(connection);
    connection.send("no json");
    connection.send(R"({"type":"dance"})");
    connection.send(R"({"type":"ping"})");
    EXPECT_EQ(at(nextFrame(connection), "type"), "pong");
}

TEST_F(ServerTest, closesARevokedComputerWith4001) {
    const Computer room = pairRoom();
    const Computer doctor = pairDoctor();
    RealTimeConnection first(office.port());
    RealTimeConnection second(office.port());
    RealTimeConnection other(office.port());
    ASSERT_EQ(first.open(room.token), 101);
    ASSERT_EQ(second.open(room.token), 101);
    ASSERT_EQ(other.open(doctor.token), 101);
    (void)nextFrame(first);
    (void)nextFrame(second);
    (void)nextFrame(other);
    office.command({"revoke", room.id});
    EXPECT_EQ(first.next(), std::nullopt);
    EXPECT_EQ(first.closeCode(), 4001);
    EXPECT_EQ(second.next(), std::nullopt);
    EXPECT_EQ(second.closeCode(), 4001);
    EXPECT_EQ(call("GET", "state", room).status, 401);
    other.send(R"({"type":"ping"})");
    EXPECT_EQ(at(nextFrame(other), "type"), "pong");
}

TEST_F(ServerTest, closesAComputerThatRemovedItselfWith4001) {
    const Computer room = pairRoom();
    RealTimeConnection connection(office.port());
    ASSERT_EQ(connection.open(room.token), 101);
    (void)nextFrame(connection);
    EXPECT_EQ(call("DELETE", "devices/me", room).body, "{}");
    EXPECT_EQ(connection.next(), std::nullopt);
    EXPECT_EQ(connection.closeCode(), 4001);
}

TEST_F(ServerTest, setsAComputerUpThroughTheCommandLine) {
    const json::value setup = json::parse(call("POST", "pair/request", {}, introduction).body);
    EXPECT_THAT(office.command({"waiting"}), HasSubstr("\tPamir\t"));
    const std::string device =
        office.command({"approve", "Pamir", "--role", "room", "--room", "Room 3", "--name", "Three", "--wait", "5"});
    const json::value approved = json::parse(call("GET", "pair/request/" + at(setup, "claimToken"), {}).body);
    EXPECT_EQ(at(approved, "device.id"), device);
    EXPECT_EQ(at(approved, "device.name"), "Three");
    EXPECT_EQ(office.command({"waiting"}), "");
    EXPECT_THROW(office.command({"approve", "--role", "shared"}), std::runtime_error);
}

TEST_F(ServerTest, signsSomebodyInAndOutThroughTheCommandLine) {
    const Computer station = pair({"--role", "shared"});
    RealTimeConnection connection(office.port());
    ASSERT_EQ(connection.open(station.token), 101);
    (void)nextFrame(connection);
    const json::value code = json::parse(call("POST", "devices/me/signin-qr", station).body);
    EXPECT_THAT(at(code, "qrPng"), HasSubstr("data:image/png;base64,iVBOR"));
    office.command({"signin-code", at(code, "token"), "Sofia Marino"});
    EXPECT_EQ(at(nextFrame(connection), "data.member.name"), "Sofia Marino");
    office.command({"signout", station.id});
    EXPECT_EQ(at(nextFrame(connection), "type"), "session.ended");
    office.command({"move", station.id, "lakeside"});
    EXPECT_EQ(at(nextFrame(connection), "data.office.slug"), "lakeside");
    office.command({"announce", "release", "--version", "2.0", "--build", "7", "--url", "https://x.example/y"});
    EXPECT_EQ(at(nextFrame(connection), "data.desktopRelease.macos.version"), "2.0");
}

TEST_F(ServerTest, keepsAConnectionForSeveralRequests) {
    const Computer room = pairRoom();
    RawConnection connection(office.port());
    const std::string request =
        "GET /api/v1/state HTTP/1.1\r\nHost: localhost\r\nAuthorization: Bearer " + room.token + "\r\n\r\n";
    for (int turn = 0; turn < 3; ++turn) {
        connection.send(request);
        EXPECT_THAT(connection.readUntil("\"device\":{"), HasSubstr("HTTP/1.1 200 OK"));
    }
}

TEST_F(ServerTest, refusesWhatIsTooLarge) {
    const Computer room = pairRoom();
    const std::string large(70'000, ' ');
    EXPECT_EQ(call("POST", "signals", room, large).status, 413);
    EXPECT_EQ(call("POST", "crash-reports", room, R"({"reports":[{"a":")" + large + "\"}]}").body, R"({"accepted":1})");
    EXPECT_EQ(call("POST", "crash-reports", room, std::string(1'100'000, ' ')).status, 413);

    RawConnection chunked(office.port());
    chunked.send("POST /api/v1/signals HTTP/1.1\r\nHost: x\r\nTransfer-Encoding: chunked\r\n\r\n11170\r\n" + large);
    EXPECT_THAT(chunked.readAll(), HasSubstr("413"));
    RawConnection header(office.port());
    header.send("GET /api/v1/state HTTP/1.1\r\nX: " + large + "\r\n\r\n");
    EXPECT_THAT(header.readAll(), HasSubstr("431"));
}

TEST_F(ServerTest, survivesGarbageHalfRequestsAndVanishingVisitors) {
    const Computer room = pairRoom();
    for (const std::string& bytes :
         {std::string("\0\0\0\0\xff\xfe\r\n\r\n", 10), std::string("HELO\r\n\r\n"), std::string("GET /\r\n\r\n"),
          std::string("GET / HTTP/9.9\r\n\r\n"), std::string("POST / HTTP/1.1\r\nContent-Length: -4\r\n\r\n")}) {
        RawConnection connection(office.port());
        connection.send(bytes);
        EXPECT_THAT(connection.readAll(), HasSubstr(" 400 "));
    }
    for (const char* half : {"", "GET /api", "POST /api/v1/signals HTTP/1.1\r\nContent-Length: 40\r\n\r\n{\"typeId\"",
                             "GET /api/v1/ws HTTP/1.1\r\nUpgrade: websocket\r\n"}) {
        RawConnection connection(office.port());
        connection.send(half);
        connection.close();
    }
    RawConnection socket(office.port());
    socket.send(
        "GET /api/v1/ws HTTP/1.1\r\nHost: x\r\nConnection: upgrade\r\nUpgrade: websocket\r\n"
        "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nAuthorization: Bearer " +
        room.token + "\r\n\r\n");
    EXPECT_THAT(socket.readUntil("snapshot"), HasSubstr("101"));
    socket.send("this is no frame, and it is not masked either");
    (void)socket.readAll();
    EXPECT_EQ(call("GET", "state", room).status, 200);
}

TEST_F(ServerTest, dropsAReaderThatNeverReads) {
    const Computer room = pairRoom();
    RawConnection sleeper(office.port());
    sleeper.send(
        "GET /api/v1/ws HTTP/1.1\r\nHost: x\r\nConnection: upgrade\r\nUpgrade: websocket\r\n"
        "Sec-WebSocket-Version: 13\r\nSec-WebSocket-Key: dGhlIHNhbXBsZSBub25jZQ==\r\nAuthorization: Bearer " +
        room.token + "\r\n\r\n");
    EXPECT_THAT(sleeper.readUntil("\r\n\r\n"), HasSubstr("101"));

    // Every change of its settings sends the computer a snapshot with them in it.
    std::string token;
    std::getline(std::ifstream(adminTokenFileOf(office.database())) >> std::ws, token);
    const std::string settings = R"({"tone":")" + std::string(60'000, 't') + "\"}";
    const std::string order = R"({"device":")" + room.id + R"(","settings":)" + settings + "}";
    constexpr std::size_t orders = 700;
    for (std::size_t count = 0; count < orders; ++count) {
        ASSERT_EQ(ask(office.port(), "POST", "/admin/v1/alerts", token, order).status, 200);
    }
    EXPECT_LT(sleeper.readAll().size(), orders * 60'000);

    RealTimeConnection again(office.port());
    ASSERT_EQ(again.open(room.token), 101);
    EXPECT_EQ(at(nextFrame(again), "data.device.id"), room.id);
}

TEST_F(ServerTest, killedAndStartedAgainHasForgottenNothing) {
    const Computer room = pairRoom();
    const Computer doctor = pairDoctor();
    const std::string open = sendReady(room);
    EXPECT_EQ(call("PATCH", "signals/" + open, doctor, R"({"action":"acknowledge"})").status, 200);
    const json::value setup = json::parse(call("POST", "pair/request", {}, introduction).body);
    const std::string code = office.command({"code", "--role", "shared"});
    RealTimeConnection connection(office.port());
    ASSERT_EQ(connection.open(room.token), 101);
    (void)nextFrame(connection);
    const std::string before = call("GET", "state", room).body;

    EXPECT_EQ(office.end(SIGKILL), -SIGKILL);
    EXPECT_EQ(connection.next(), std::nullopt);
    office.start();
    EXPECT_EQ(call("GET", "state", room).body, before);
    EXPECT_EQ(call("GET", "state", doctor).status, 200);
    EXPECT_EQ(call("GET", "pair/request/" + at(setup, "claimToken"), {}).body, R"({"status":"pending"})");
    EXPECT_EQ(call("POST", "pair/redeem", {}, R"({"code":")" + code + "\"," + introduction.substr(1)).status, 200);
    EXPECT_EQ(call("PATCH", "signals/" + open, doctor, R"({"action":"done"})").status, 200);
}

TEST_F(ServerTest, killedWhileItAcceptsKeepsAllThatItHasAccepted) {
    const Computer room = pairRoom();
    const std::string type = typeId(room);
    const json::value state = json::parse(call("GET", "state", room).body);
    std::vector<std::string> accepted;
    for (const json::value& where : state.at("rooms").get_array()) {
        const HttpReply reply = call("POST", "signals", room,
                                     R"({"typeId":")" + type + R"(","note":"","roomId":")" + at(where, "id") + "\"}");
        ASSERT_EQ(reply.status, 201);
        accepted.push_back(at(json::parse(reply.body), "id"));
    }
    // One more is on its way when the end comes; it may be kept or not.
    RawConnection half(office.port());
    half.send("PATCH /api/v1/signals/" + accepted.back() + " HTTP/1.1\r\nHost: x\r\nAuthorization: Bearer " +
              room.token + "\r\nContent-Length: 17\r\n\r\n{\"action\":\"done\"}");
    office.end(SIGKILL);
    office.start();
    const json::value after = json::parse(call("GET", "state", room).body);
    std::vector<std::string> kept;
    for (const json::value& signal : after.at("signals").get_array()) {
        kept.push_back(at(signal, "id"));
    }
    std::vector<std::string> withoutLast(accepted.begin(), accepted.end() - 1);
    EXPECT_THAT(kept,
                AnyOf(testing::UnorderedElementsAreArray(accepted), testing::UnorderedElementsAreArray(withoutLast)));
}

TEST_F(ServerTest, endsInOrderWhenAsked) {
    const Computer room = pairRoom();
    RealTimeConnection connection(office.port());
    ASSERT_EQ(connection.open(room.token), 101);
    (void)nextFrame(connection);
    RawConnection idle(office.port());
    for (const int signal : {SIGTERM, SIGINT}) {
        EXPECT_EQ(office.end(signal), 0);
        office.start();
    }
    EXPECT_EQ(connection.next(), std::nullopt);
    EXPECT_EQ(connection.closeCode(), 1001);
    EXPECT_EQ(idle.readAll(), "");
    EXPECT_EQ(call("GET", "state", room).status, 200);
    EXPECT_EQ(office.end(SIGTERM), 0);
    EXPECT_FALSE(std::filesystem::exists(addressFileOf(office.database())));
    EXPECT_THROW(office.command({"waiting"}), std::runtime_error);
}

TEST_F(ServerTest, onlyTheAdminGivesOrders) {
    const Computer room = pairRoom();
    for (const std::string& token : {std::string(), std::string("zva_guessed"), room.token}) {
        const HttpReply reply = ask(office.port(), "GET", "/admin/v1/state", token);
        EXPECT_EQ(reply.status, 401);
        EXPECT_EQ(at(json::parse(reply.body), "error"), "not_an_admin");
    }
    const auto rights = std::filesystem::status(adminTokenFileOf(office.database())).permissions();
    EXPECT_EQ(rights, std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(ServerTest, logsNoTokenNoNoteAndNoName) {
    const Computer room = pairRoom();
    sendReady(room, "BP 120 over 80");
    office.command({"member", "Sofia Marino", "--status", "busy"});
    call("GET", "pair/request/zvc_guessed", {});
    office.end(SIGTERM);
    const std::string log = office.log();
    EXPECT_THAT(log, HasSubstr("POST /api/v1/signals 201"));
    EXPECT_THAT(log, HasSubstr("GET /api/v1/pair/request/:claimToken 404"));
    for (const std::string& secret : {room.token, std::string("zva_"), std::string("zvc_"), std::string("BP 120"),
                                      std::string("Marino"), std::string("Pamir")}) {
        EXPECT_THAT(log, Not(HasSubstr(secret)));
    }
    std::ifstream file(office.database(), std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), {}};
    EXPECT_THAT(bytes, Not(HasSubstr(room.token)));
    EXPECT_THAT(bytes, HasSubstr(room.id));
}

TEST_F(ServerTest, saysInOneSentenceWhyItCannotRun) {
    const support::TemporaryFolder folder;
    const std::string database = (folder.path() / "o.db").string();
    const auto refused = [](std::vector<std::string> arguments) {
        const OfficeProcess::Refusal refusal = OfficeProcess::refusalOf(std::move(arguments));
        EXPECT_NE(refusal.status, 0);
        return refusal.sentence;
    };
    const std::string port = std::to_string(office.port());
    EXPECT_EQ(refused({"serve", "--database", database, "--port", port}),
              "Another program already listens on 127.0.0.1 port " + port + ".\n");
    EXPECT_THAT(refused({"serve", "--database", office.database().string(), "--port", "0"}),
                EndsWith("another program uses it.\n"));
    EXPECT_EQ(refused({"serve", "--database", database, "--port", "0", "--listen", "here"}),
              "\"here\" is no network address.\n");
    EXPECT_EQ(refused({"serve", "--database", database, "--port", "0", "--sample", "atlantis"}),
              "There is no sample practice \"atlantis\"; there is harbour.\n");
    EXPECT_THAT(refused({"dance"}), HasSubstr("no command \"dance\""));
    EXPECT_THAT(refused({"state", "--database", (folder.path() / "none.db").string()}), HasSubstr("No office runs on"));
    EXPECT_THAT(refused({"done", "sig_none", "--database", office.database().string()}),
                HasSubstr("There is no such signal."));
}

}  // namespace
}  // namespace zelkovanta::office
