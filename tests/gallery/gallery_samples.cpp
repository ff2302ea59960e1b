#include "tests/gallery/gallery_samples.h"

#include "tests/desktop/page_fixture.h"
#include "tests/support/office_records.h"

#include <functional>
#include <string>
#include <utility>

#include <QBuffer>
#include <QDir>
#include <QImage>

namespace zelkovanta::gallery {

namespace {

using screens::QueueRow;
using screens::RowAction;

QueueRow rowOf(const std::string& id, const std::string& createdAt, const std::string& room, const std::string& type,
               const std::string& color) {
    QueueRow row;
    row.signal = support::makeSignal(id);
    row.signal.createdAt = createdAt;
    row.room = support::makeRoom("room", [&](records::Room& made) { made.name = room; });
    row.type = support::makeType("type", 10, [&](records::SignalType& made) {
        made.label = type;
        made.color = color;
    });
    row.requester = support::makeMember("june", [](records::Member& made) { made.name = "June Park"; });
    row.requesterDepartment = "Assistant";
    row.completionLabel = "Done";
    row.onDone = RowAction::done;
    return row;
}

/// A row in each of its states. The day begins at midnight on 2024-10-04.
screens::QueueSection everyRow() {
    screens::QueueSection section;
    const auto add = [&](QueueRow row, const std::function<void(QueueRow&)>& adjust) {
        adjust(row);
        section.rows.push_back(std::move(row));
    };
    add(rowOf("waiting", "2024-10-03T23:57:48Z", "Room 3", "Patient ready", "#2FA24F"), [](QueueRow& row) {
        row.signal.note = "Second visit, films are on the screen";
        row.onAcknowledge = RowAction::acknowledge;
    });
    add(rowOf("long", "2024-10-03T23:54:30Z", "Room 1", "Urgent", "#E21833"),
        [](QueueRow& row) { row.onAcknowledge = RowAction::acknowledge; });
    add(rowOf("taken", "2024-10-03T22:51:12Z", "Room 2", "Checkup", "#5789F2"),
        [](QueueRow& row) { row.signal.status = "acknowledged"; });
    add(rowOf("sent", "2024-10-03T23:59:40Z", "Room 3", "Question", "#FFE14D"), [](QueueRow& row) {
        row.onCancel = RowAction::cancel;
        row.position = 3;
        row.showTarget = true;
        row.provider = support::makeMember("voss", [](records::Member& made) { made.name = "Dr. Henrik Voss"; });
    });
    add(rowOf("combined", "2024-10-03T23:59:02Z", "Sterilisation", "Help", "#7C5CD6"), [](QueueRow& row) {
        row.onCancel = RowAction::cancel;
        row.position = 12;
        row.showTarget = true;
        row.signal.providerIds = {"a", "b", "c"};
    });
    add(rowOf("done", "2024-10-03T23:59:02Z", "Room 9", "White on white", "#FFFFFF"), [](QueueRow& row) {
        row.signal.status = "done";
        row.onDone.reset();
    });
    add(rowOf("other", "2024-10-03T23:59:02Z", "Room 9", "Highlighted", "#000000"), [](QueueRow& row) {
        row.signal.status = "expired";
        row.highlighted = true;
        row.onDone.reset();
    });
    add(rowOf("bare", "some day", "", "", ""), [](QueueRow& row) {
        row.room.reset();
        row.type.reset();
        row.requester.reset();
        row.requesterDepartment.reset();
    });
    add(rowOf("names", "2024-10-03T23:59:02Z", "Sterilisation and instrument preparation, second floor, left",
              "The patient has been prepared", "#12A594"),
        [](QueueRow& row) {
            row.onAcknowledge = RowAction::acknowledge;
            row.onCancel = RowAction::cancel;
            row.requester->name = "ד״ר אבישג בן־דוד־לוי";
            row.signal.note =
                "Professor Dr. Maximiliane-Alexandra von Hohenstein-Wetterburg zu Oberlangenau asks for "
                "the blue folder, the films of the last two years and somebody who can read them";
        });
    return section;
}

/// A practice whose people and types are as different as they may be.
records::StateSnapshot everybody() {
    return desktop_test::practice([](records::StateSnapshot& state) {
        state.members[1].name = "Professor Dr. Maximiliane-Alexandra von Hohenstein-Wetterburg zu Oberlangenau";
        state.members[1].status = "dnd";
        state.members[1].color = "#7C5CD6";
        state.members.push_back(support::makeMember("avishag", [](records::Member& made) {
            made.name = "ד״ר אבישג בן־דוד־לוי";
            made.department = "provider";
            made.status = "busy";
            made.color = "#12A594";
        }));
        state.signalTypes.push_back(support::makeType("long", 20, [](records::SignalType& made) {
            made.label = "The patient has been prepared and is waiting for somebody to come";
            made.color = "#FFFFFF";
        }));
        for (const char* const id : {"one", "two"}) {
            state.signals.push_back(support::makeSignal(id, [](records::Signal& made) {
                made.roomId = "room-3";
                made.typeId = "ready";
                made.providerId = "avishag";
            }));
        }
        state.device = support::makeDeviceOfMember("dr-amari");
    });
}

}  // namespace

Samples::Samples(platform::simulated::SimulatedAppearance& appearance)
    : appearance_(appearance),
      strings_(desktop_test::textsIn("en")),
      rows_(clock_, strings_, [](const records::Signal&, RowAction) {}) {
    rows_.setSection(everyRow());
    computer_.launchWith("member", everybody());
    page_ = std::make_unique<screens::qml::PageModel>(
        computer_.store, screens::qml::PagePorts{.main = computer_.main.executor(),
                                                 .clock = computer_.clock,
                                                 .strings = strings_,
                                                 .defaults = computer_.defaults,
                                                 .notes = computer_.notes,
                                                 .crash = computer_.crash,
                                                 .doubleClick = std::chrono::milliseconds{400}});
    page_->openCompose();
    choices_.setChoices({{"a", "Room 1"}, {"b", "Room 2"}, {"c", "חדר טיפולים מספר אחת"}});
}

QVariantList Samples::dots(bool onAccent) {
    const auto place = onAccent ? screens::DotPlace::onSelectedBackground : screens::DotPlace::plain;
    QVariantList dots;
    for (const char* status : {"available", "busy", "dnd", ""}) {
        dots.push_back(QVariant::fromValue(screens::qml::ShownColor{screens::statusDotColor(status, place)}));
    }
    return dots;
}

QStringList Samples::symbols() const {
    QStringList names{QStringLiteral("brand_mark")};
    for (const QString& file : QDir(QStringLiteral(":/qt/qml/ZelkoVanta/Screens/symbols")).entryList()) {
        names.push_back(file.chopped(4));
    }
    return names;
}

QByteArray Samples::code() const {
    QImage image(29, 29, QImage::Format_Mono);
    image.fill(1);
    for (int y = 2; y < 27; ++y) {
        for (int x = 2; x < 27; ++x) {
            image.setPixel(x, y, (x * 7 + y * 13 + x * y) % 3 == 0 ? 0U : 1U);
        }
    }
    QByteArray file;
    QBuffer buffer(&file);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return file;
}

void Samples::setDark(bool dark) {
    appearance_.become(dark ? platform::ColorScheme::dark : platform::ColorScheme::light);
}

}  // namespace zelkovanta::gallery
