#include "tests/desktop/page_scenes.h"

#include <string>
#include <utility>

namespace zelkovanta::desktop_test {

namespace {

using Adjust = std::function<void(records::StateSnapshot&)>;

/// A practice with more people and more to ask for.
records::StateSnapshot fullPractice(const Adjust& adjust = [](auto&) {}) {
    return practice([&](records::StateSnapshot& state) {
        const auto person = [](std::string id, std::string name, std::string department, std::string color) {
            return support::makeMember(std::move(id), [&](records::Member& member) {
                member.name = std::move(name);
                member.department = std::move(department);
                member.color = std::move(color);
                member.status = "available";
            });
        };
        state.members[0].color = "#4F7CFF";
        state.members[1].color = "#FF8C28";
        state.members[2].color = "#9B5DE5";
        state.members.push_back(person("tomas", "Tomás Rivera", "assistant", "#2FA24F"));
        state.members.push_back(person("ida", "Ida Berg", "reception", "#E21833"));
        const auto type = [](std::string id, std::string label, std::string color, std::int64_t order) {
            return support::makeType(id, 10, [&](records::SignalType& made) {
                made.key = id;
                made.label = std::move(label);
                made.color = std::move(color);
                made.sortOrder = order;
            });
        };
        state.signalTypes.push_back(type("films", "X-ray", "#4F7CFF", 3));
        state.signalTypes.push_back(type("assist", "Assistance", "#FFE14D", 4));
        state.signals = {support::makeSignalTo("dr-voss", "call-1"), support::makeSignalTo("dr-voss", "call-2"),
                         support::makeSignalTo("june", "call-3")};
        adjust(state);
    });
}

void launchPerson(Page& page, const Adjust& adjust = [](auto&) {}) {
    auto snapshot = fullPractice(adjust);
    snapshot.device = support::makeDeviceOfMember("dr-amari");
    page.computer.defaults.memory.setText("lastUsedRoomId", "room-1");
    page.computer.launchWith("member", snapshot);
}

void person(Page& page) {
    launchPerson(page);
}

void room(Page& page) {
    page.computer.launchWith("room", fullPractice());
}

void signedInRoom(Page& page) {
    room(page);
    records::Device device = support::makeDeviceOfRoom("room-3");
    device.signedInMemberId = "dr-amari";
    page.computer.deliverSessionStarted(device, fullPractice().members[0]);
}

void nobodyOnShift(Page& page) {
    page.computer.launchWith("room", fullPractice([](records::StateSnapshot& state) {
                                 state.members[0].onShift = false;
                                 state.members[1].onShift = false;
                             }));
}

void quiet(Page& page) {
    launchPerson(page, [](records::StateSnapshot& state) {
        state.members[1].status = "dnd";
        state.members[3].status = "dnd";
    });
}

void crowd(Page& page) {
    launchPerson(page, [](records::StateSnapshot& state) {
        for (int number = 1; number <= 12; ++number) {
            records::SignalType type = state.signalTypes[static_cast<std::size_t>(number % 4)];
            type.id += std::to_string(number);
            type.key = type.id;
            type.label = (number % 3 == 0 ? "Instruments for room " : "Ask ") + std::to_string(number);
            type.sortOrder = 10 + number;
            state.signalTypes.push_back(type);
        }
        for (int number = 1; number <= 40; ++number) {
            records::Member member = state.members[static_cast<std::size_t>(number % 5)];
            member.id += std::to_string(number);
            member.name += " " + std::to_string(number);
            state.members.push_back(member);
        }
    });
}

void pick(Page& page, const std::string& name) {
    page.click(page.node(QAccessible::CheckBox, name));
}

void write(Page& page, const std::string& note) {
    page.click(page.nodes(QAccessible::EditableText).front());
    page.type(note);
}

void pickSeveral(Page& page) {
    pick(page, "June Park");
}

void pickAssistants(Page& page) {
    pick(page, "Dr. Henrik Voss");
    // What a department is called is a matter of the language.
    page.click(page.nodes(QAccessible::CheckBox).at(2));
}

void failToSend(Page& page) {
    write(page, "Second visit, films are on the screen");
    page.model->compose()->send();
    page.settle();
    page.computer.fail("POST", "/signals", platform::TransportCause::refused);
}

void fillTheNote(Page& page) {
    std::string note;
    while (note.size() < 210) {
        note += "Please bring the blue folder. ";
    }
    write(page, note);
}

}  // namespace

std::vector<Scene> formScenes() {
    return {{"form-error", person, 420, 680, failToSend},
            {"form-combined", person, 420, 680, pickSeveral},
            {"form-department", person, 420, 680, pickAssistants},
            {"form-any", nobodyOnShift, 420, 680},
            {"form-quiet", quiet, 420, 680},
            {"form-quiet-narrow", quiet, 360, 600},
            {"form-home", signedInRoom, 420, 680},
            {"form-room", room, 420, 680},
            {"form-crowd", crowd, 420, 680},
            {"form-full-note", person, 360, 600, fillTheNote}};
}

}  // namespace zelkovanta::desktop_test
