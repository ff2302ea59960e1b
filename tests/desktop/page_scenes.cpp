#include "tests/desktop/page_scenes.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <utility>

#include <QBuffer>
#include <QtTest/QTest>

namespace zelkovanta::desktop_test {

namespace {

records::Signal call(std::string id, std::string room, std::string type, std::string status, std::string createdAt,
                     std::string note, std::optional<std::string> from = "june",
                     std::optional<std::string> to = std::nullopt) {
    return support::makeSignal(std::move(id), [&](records::Signal& signal) {
        signal.roomId = std::move(room);
        signal.typeId = std::move(type);
        signal.status = std::move(status);
        signal.createdAt = std::move(createdAt);
        signal.note = std::move(note);
        signal.requesterId = std::move(from);
        signal.providerId = std::move(to);
    });
}

records::StateSnapshot busyPractice() {
    return practice([](records::StateSnapshot& state) {
        state.signals = {
            call("a", "room-3", "ready", "waiting", "2024-10-03T23:57:48Z", "Second visit, films are on the screen"),
            call("b", "room-1", "urgent", "waiting", "2024-10-03T23:59:21Z", ""),
            call("c", "room-1", "ready", "waiting", "2024-10-03T23:40:00Z", "Please bring the blue folder", "dr-amari",
                 "dr-voss"),
            call("d", "room-3", "ready", "acknowledged", "2024-10-03T22:50:10Z", "", std::nullopt, "dr-amari")};
        state.signals[3].acknowledgedBy = "dr-amari";
    });
}

void person(Page& page) {
    auto snapshot = busyPractice();
    snapshot.device = support::makeDeviceOfMember("dr-amari");
    page.computer.launchWith("member", snapshot);
    page.computer.socket().accept();
    page.computer.deliverSnapshot(snapshot);
}

/// What a room sent: to one person, to several, to whoever is next.
void room(Page& page) {
    auto snapshot = busyPractice();
    snapshot.signals[0].providerId = "dr-voss";
    snapshot.signals.push_back(call("e", "room-3", "urgent", "waiting", "2024-10-03T23:55:00Z", "", std::nullopt));
    snapshot.signals.back().providerIds = {{"dr-amari", "dr-voss", "june"}};
    page.computer.launchWith("room", snapshot);
    page.computer.socket().accept();
    page.computer.deliverSnapshot(snapshot);
}

/// More than a window holds, of every kind.
void crowd(Page& page) {
    auto snapshot = busyPractice();
    for (int number = 0; number < 300; ++number) {
        snapshot.signals.push_back(call("crowd-" + std::to_string(number), number % 2 == 0 ? "room-1" : "room-3",
                                        number % 3 == 0 ? "urgent" : "ready", "waiting", "2024-10-03T23:58:00Z", ""));
    }
    snapshot.device = support::makeDeviceOfMember("dr-amari");
    page.computer.launchWith("member", snapshot);
}

void personEmpty(Page& page) {
    auto snapshot = practice();
    snapshot.device = support::makeDeviceOfMember("dr-amari");
    page.computer.launchWith("member", snapshot);
}

void unknownStatus(Page& page) {
    auto snapshot = busyPractice();
    snapshot.members[0].status = "lunch";
    snapshot.device = support::makeDeviceOfMember("dr-amari");
    page.computer.launchWith("member", snapshot);
}

/// No screen asks for this yet, so the second row is made so by hand.
void highlight(Page& page) {
    const auto strings = textsIn("en");
    auto section =
        screens::personalQueueSection(page.computer.state(), screens::SectionTitle::hidden, std::nullopt, strings);
    section.rows.at(1).highlighted = true;
    page.model->queue()->received()->setSection(section);
    page.settle();
}

void emptyRoomOffline(Page& page) {
    page.computer.launchWith("room", practice());
    page.computer.socket().fail({});
    page.computer.settle();
}

void error(Page& page) {
    room(page);
    page.computer.run([](store::AppStore& store) { return store.sendSignal("ready", "", {}, {}, {}); });
    page.computer.fail("POST", "/signals", platform::TransportCause::refused);
}

void station(Page& page) {
    auto snapshot = busyPractice();
    snapshot.device = support::makeDeviceWithSignIn("dr-amari");
    snapshot.device.name = "Front desk";
    page.computer.defaults.memory.setNumber("stationSignInBootTime", page.computer.hostInfo.bootTime());
    page.computer.defaults.memory.setText("stationSignInAuditSessionId", page.computer.hostInfo.auditSessionId());
    page.computer.launchWith("shared", snapshot);
}

void longNames(Page& page) {
    auto snapshot = busyPractice();
    const std::string name = "Professor Dr. Maximiliane-Alexandra von Hohenstein-Wetterburg zu Oberlangenau";
    snapshot.office.name = "Practice of " + name;
    snapshot.members[0].name = name;
    snapshot.members[1].name = "ד״ר אבישג בן־דוד־לוי";
    snapshot.members[2].name = "د. ليلى العامري";
    snapshot.rooms[0].name = "חדר טיפולים מספר אחת";
    snapshot.rooms[1].name = "Sterilisation and instrument preparation, second floor, left";
    snapshot.signalTypes[0].label = "The patient has been prepared and is waiting";
    snapshot.signals[0].note = name + ", " + name + ", " + name;
    snapshot.device = support::makeDeviceOfMember("dr-amari");
    page.computer.launchWith("member", snapshot);
}

records::QrTokenResponse code() {
    QImage image(29, 29, QImage::Format_Mono);
    image.fill(1);
    for (int y = 2; y < 27; ++y) {
        for (int x = 2; x < 27; ++x) {
            image.setPixel(x, y, (x * 7 + y * 13 + x * y) % 3 == 0 ? 0 : 1);
        }
    }
    QByteArray file;
    QBuffer buffer(&file);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return {.token = "t",
            .claimToken = "c",
            .qrData = "d",
            .qrPng = "data:image/png;base64," + file.toBase64().toStdString(),
            .expiresAt = "2026-01-02T08:05:00Z"};
}

void setup(Page& page) {
    page.computer.launchUnpaired();
    page.computer.answerWith("POST", "/pair/request", code());
}

void signIn(Page& page) {
    auto snapshot = busyPractice();
    snapshot.device = support::makeDevice();
    snapshot.device.name = "Front desk";
    page.computer.launchWith("shared", snapshot);
    page.computer.socket().accept();
    page.computer.deliverSnapshot(snapshot);
}

void setupFailing(Page& page) {
    page.computer.launchWith("room", practice());
    page.computer.socket().fail({.closeCode = 4001, .httpStatus = {}});
    page.computer.settle();
    page.computer.fail("POST", "/pair/request", platform::TransportCause::refused);
}

}  // namespace

std::vector<Scene> scenes() {
    std::vector<Scene> all{{"person", person, 420, 680},
                           {"crowd", crowd, 420, 680},
                           {"person-empty", personEmpty, 420, 680},
                           {"person-unknown-status", unknownStatus, 420, 680},
                           {"person-highlighted", person, 420, 680, highlight},
                           {"person-wide", person, 1000, 640},
                           {"person-narrow", person, 360, 600},
                           {"form", person, 420, 680},
                           {"form-narrow", longNames, 360, 600},
                           {"form-wide", person, 1000, 640},
                           {"room", room, 420, 680},
                           {"room-narrow", room, 320, 600},
                           {"room-offline", emptyRoomOffline, 420, 680},
                           {"room-error", error, 360, 600},
                           {"station", station, 420, 680},
                           {"sign-in", signIn, 420, 680},
                           {"sign-in-narrow", signIn, 320, 480},
                           {"long", longNames, 360, 600},
                           {"long-wide", longNames, 1000, 600},
                           {"setup", setup, 420, 680},
                           {"setup-failing", setupFailing, 360, 600}};
    std::ranges::move(formScenes(), std::back_inserter(all));
    return all;
}

QImage draw(const Scene& scene, Appearance appearance, const std::string& language) {
    Page page(appearance, language);
    scene.fill(page);
    page.open(scene.width, scene.height);
    if (scene.name.starts_with("form")) {
        page.model->openCompose();
        page.settle();
    }
    // A sign-in code is asked for once its place is in sight.
    if (page.computer.openRequest("POST", "/devices/me/signin-qr") != nullptr) {
        page.computer.answerWith("POST", "/devices/me/signin-qr", code());
        page.settle();
    }
    scene.act(page);
    // Nothing is pointed at.
    QTest::mouseMove(page.window, QPoint{0, 0});
    return page.picture();
}

std::string pictureName(const std::string& scene, Appearance appearance) {
    return scene + (appearance == Appearance::dark ? "-dark" : "-light");
}

std::vector<KeptPicture> keptPictures() {
    std::vector<KeptPicture> kept{{"room", Appearance::light},
                                  {"room-narrow", Appearance::dark},
                                  {"room-offline", Appearance::light},
                                  {"person-empty", Appearance::dark},
                                  {"person-unknown-status", Appearance::light},
                                  {"person-highlighted", Appearance::dark}};
    for (const char* const scene :
         {"person", "person-narrow", "crowd", "form", "form-error", "form-quiet", "long", "setup", "sign-in"}) {
        kept.push_back({scene, Appearance::light});
        kept.push_back({scene, Appearance::dark});
    }
    return kept;
}

}  // namespace zelkovanta::desktop_test
