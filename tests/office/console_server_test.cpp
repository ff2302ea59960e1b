#include "tests/office/loopback.h"
#include "tests/office/office_fixture.h"
#include "tests/office/office_process.h"

#include <fstream>

namespace zelkovanta::office {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

/// The console over real sockets, asked as a browser asks.
class ConsoleServerTest : public testing::Test {
protected:
    std::string host() const { return "127.0.0.1:" + std::to_string(office.port()); }
    std::string origin() const { return "http://" + host(); }

    std::string exchange(const std::string& request) const {
        RawConnection connection(office.port());
        connection.send(request);
        return connection.readAll();
    }
    std::string get(const std::string& path, const std::string& asHost) const {
        return exchange("GET " + path + " HTTP/1.1\r\nHost: " + asHost + "\r\nConnection: close\r\n\r\n");
    }
    std::string get(const std::string& path) const { return get(path, host()); }
    std::string post(const std::string& path, const std::string& headers, const std::string& body) const {
        return exchange("POST /console/v1/" + path + " HTTP/1.1\r\nHost: " + host() + "\r\nConnection: close\r\n" +
                        headers + "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
    }
    /// As the page does it.
    std::string order(const std::string& path, const std::string& body) const {
        return post(path, fromThePage(), body);
    }
    std::string fromThePage() const {
        return "Origin: " + origin() + "\r\nSec-Fetch-Site: same-origin\r\nContent-Type: application/json\r\n";
    }
    json::value next(RealTimeConnection& console) const {
        const auto frame = console.next();
        return frame ? json::parse(*frame) : json::value();
    }

    OfficeProcess office;
};

TEST_F(ConsoleServerTest, givesThePageToABrowserOfThisMachine) {
    const std::string page = get("/");
    EXPECT_THAT(page, AllOf(StartsWith("HTTP/1.1 200"), HasSubstr("Content-Type: text/html"),
                            HasSubstr("frame-ancestors 'none'"), HasSubstr("nosniff"),
                            HasSubstr("For development and demonstration only")));
    EXPECT_THAT(get("/console/console.js"), AllOf(StartsWith("HTTP/1.1 200"), HasSubstr("text/javascript")));
    EXPECT_THAT(get("/console/office.db"), StartsWith("HTTP/1.1 404"));
    EXPECT_THAT(get("/", "evil.example"), AllOf(StartsWith("HTTP/1.1 404"), Not(HasSubstr("<html"))));
}

TEST_F(ConsoleServerTest, obeysItsOwnPage) {
    EXPECT_THAT(order("room/add", R"({"name":"Sun room"})"), StartsWith("HTTP/1.1 200"));
    EXPECT_THAT(office.command({"state"}), HasSubstr("Sun room"));
}

TEST_F(ConsoleServerTest, obeysNoOtherSite) {
    const std::string body = R"({"name":"Trapdoor"})";
    const std::string json = "Content-Type: application/json\r\n";
    EXPECT_THAT(post("room/add", json + "Origin: http://evil.example\r\n", body), StartsWith("HTTP/1.1 403"));
    EXPECT_THAT(post("room/add", json + "Origin: null\r\n", body), StartsWith("HTTP/1.1 403"));
    EXPECT_THAT(post("room/add", json, body), StartsWith("HTTP/1.1 403"));
    EXPECT_THAT(post("room/add", json + "Origin: " + origin() + "\r\nSec-Fetch-Site: cross-site\r\n", body),
                StartsWith("HTTP/1.1 403"));
    EXPECT_THAT(post("room/add", "Content-Type: text/plain\r\nOrigin: " + origin() + "\r\n", body),
                StartsWith("HTTP/1.1 415"));
    EXPECT_THAT(exchange("OPTIONS /console/v1/room/add HTTP/1.1\r\nHost: " + host() +
                         "\r\nOrigin: http://evil.example\r\nAccess-Control-Request-Method: POST\r\n"
                         "Connection: close\r\n\r\n"),
                AllOf(StartsWith("HTTP/1.1 403"), Not(HasSubstr("Access-Control-Allow"))));
    EXPECT_THAT(get("/console/v1/state"), StartsWith("HTTP/1.1 403"));
    EXPECT_THAT(office.command({"state"}), Not(HasSubstr("Trapdoor")));
}

TEST_F(ConsoleServerTest, refusesNonsenseWithASentence) {
    for (const char* body : {"", "no json", "[]", "{\"name\":7}", "{\"name\":\"\xff\"}", "{"}) {
        EXPECT_THAT(order("room/add", body), AllOf(StartsWith("HTTP/1.1 400"), HasSubstr("\"message\""))) << body;
    }
    EXPECT_THAT(order("revoke", R"({"device":"dev_none"})"),
                AllOf(StartsWith("HTTP/1.1 404"), HasSubstr("unknown_computer"), HasSubstr("\"message\"")));
    EXPECT_THAT(order("act", R"({"signal":"sig_none","action":"done"})"), HasSubstr("unknown_signal"));
    EXPECT_THAT(order("approve", R"({"request":"AAAAAA","role":"shared"})"), HasSubstr("unknown_request"));
    EXPECT_THAT(order("approve", R"({"request":"AAAAAA","role":"king"})"), StartsWith("HTTP/1.1 400"));
    EXPECT_THAT(order("dance", "{}"), StartsWith("HTTP/1.1 404"));
    EXPECT_THAT(order("room/add", "\"" + std::string(70'000, 'x') + "\""), StartsWith("HTTP/1.1 413"));
}

TEST_F(ConsoleServerTest, opensItsLiveConnectionForItsOwnPageAlone) {
    const std::string foreign = "http://evil.example";
    RealTimeConnection other(office.port());
    EXPECT_EQ(other.openConsole(host(), foreign), 403);
    RealTimeConnection rebound(office.port());
    EXPECT_EQ(rebound.openConsole("evil.example", foreign), 403);
    RealTimeConnection own(office.port());
    EXPECT_EQ(own.openConsole(host(), origin()), 101);
}

TEST_F(ConsoleServerTest, tellsEveryConsoleWhatChanges) {
    RealTimeConnection first(office.port());
    RealTimeConnection second(office.port());
    ASSERT_EQ(first.openConsole(host(), origin()), 101);
    EXPECT_EQ(at(next(first).at("office").at("practices").at(0), "office.name"), "Harbour Dental");
    ASSERT_EQ(second.openConsole(host(), origin()), 101);
    (void)next(second);
    const std::string signal = office.command({"send", "--room", "Room 1", "--type", "ready"});
    for (RealTimeConnection* console : {&first, &second}) {
        json::value frame = next(*console);
        while (!frame.is_null() && frame.at("office").at("practices").at(0).at("signals").as_array().empty()) {
            frame = next(*console);
        }
        ASSERT_FALSE(frame.is_null());
        EXPECT_EQ(at(frame.at("office").at("practices").at(0).at("signals").at(0), "id"), signal);
    }
}

TEST_F(ConsoleServerTest, tellsWhichComputersAreConnected) {
    const std::string code = office.command({"code", "--role", "shared"});
    const json::value paired = json::parse(
        ask(office.port(), "POST", "/api/v1/pair/redeem", {},
            R"({"device":{"kind":"desktop_mac","name":"Pamir","model":"M","appVersion":"1"},"code":")" + code + "\"}")
            .body);
    RealTimeConnection console(office.port());
    ASSERT_EQ(console.openConsole(host(), origin()), 101);
    EXPECT_EQ(next(console).at("connected").as_array().size(), 0U);
    const auto connectedIn = [&](std::size_t count) {
        json::value frame = next(console);
        while (!frame.is_null() && frame.at("connected").as_array().size() != count) {
            frame = next(console);
        }
        return frame.is_null() ? std::string("<gone>") : json::serialize(frame.at("connected"));
    };
    {
        RealTimeConnection computer(office.port());
        ASSERT_EQ(computer.open(at(paired, "deviceToken")), 101);
        EXPECT_EQ(connectedIn(1), "[\"" + at(paired, "device.id") + "\"]");
    }
    EXPECT_EQ(connectedIn(0), "[]");
}

TEST(OfficeWithoutConsole, hasNothingAtItsAddresses) {
    const OfficeProcess office(
        [](const auto&) { return std::vector<std::string>{"--sample", "harbour", "--no-console"}; });
    const std::string host = "127.0.0.1:" + std::to_string(office.port());
    EXPECT_EQ(ask(office.port(), "GET", "/", {}).status, 404);
    EXPECT_EQ(ask(office.port(), "GET", "/console/console.js", {}).status, 404);
    EXPECT_EQ(ask(office.port(), "POST", "/console/v1/room/add", {}, R"({"name":"X"})").status, 404);
    RealTimeConnection console(office.port());
    EXPECT_EQ(console.openConsole(host, "http://" + host), 404);
}

TEST(OfficeThatKnowsItsPrograms, takesWhatTheRequestSaysOfItsProgram) {
    const OfficeProcess office([](const std::filesystem::path& folder) {
        std::ofstream(folder / "secret") << "build-secret\n";
        return std::vector<std::string>{"--sample", "harbour", "--app-check-file", folder / "secret"};
    });
    const auto statusWith = [&](const std::string& header) {
        const std::string body = R"({"device":{"kind":"desktop_mac","name":"Pamir","model":"M","appVersion":"1"}})";
        RawConnection connection(office.port());
        connection.send("POST /api/v1/pair/request HTTP/1.1\r\nHost: localhost\r\nConnection: close\r\n" + header +
                        "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body);
        return connection.readAll().substr(0, 12);
    };
    EXPECT_EQ(statusWith(""), "HTTP/1.1 403");
    EXPECT_EQ(statusWith("X-ZVT-AppCheck-Token: guessed\r\n"), "HTTP/1.1 403");
    EXPECT_EQ(statusWith("X-ZVT-AppCheck-Token: build-secret\r\n"), "HTTP/1.1 200");
    EXPECT_EQ(office.log().find("build-secret"), std::string::npos);
}

}  // namespace
}  // namespace zelkovanta::office
