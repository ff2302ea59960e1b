#include "alerts/new_signal.h"
#include "tests/alerts/alert_records.h"

#include <array>
#include <cstddef>
#include <functional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

// Who is alerted of a new signal, as a table: each choice of each column says by itself what it means for the outcome,
// and a row is one choice of every column.
namespace zelkovanta::alerts {
namespace {

using records::DeviceRole;
using records::Member;
using records::Signal;
using store::StoreState;

constexpr auto me = "member-1";
constexpr auto colleague = "member-2";

/// What a choice does to the case, and what it contributes to the outcome.
struct Case {
    StoreState state;
    Signal signal;
    [[nodiscard]] Member& member() { return state.members.front(); }
};

enum class Place { anyRoomWillDo, mustBeConfirmed };
enum class Person { nobody, bound, signedIn };
enum class Reach { theMember, others, everyone };

template <class Meaning>
struct Choice {
    std::string name;
    std::function<void(Case&)> apply;
    Meaning meaning;
};

const std::vector<Choice<Place>> roles{
    {"room", [](Case& one) { one.state.role = DeviceRole::room; }, Place::anyRoomWillDo},
    {"member", [](Case& one) { one.state.role = DeviceRole::member; }, Place::anyRoomWillDo},
    {"shared", [](Case& one) { one.state.role = DeviceRole::shared; }, Place::mustBeConfirmed},
};
const std::vector<Choice<Person>> people{
    {"nobody", [](Case& one) { one.state.device = support::makeDevice(); }, Person::nobody},
    {"a bound member", [](Case& one) { one.state.device = support::makeDeviceOfMember(me); }, Person::bound},
    {"a signed-in member", [](Case& one) { one.state.device = support::makeDeviceWithSignIn(me); }, Person::signedIn},
};
void confirm(Case& one, const char* roomId) {
    one.state.flexibleRoomSession.signedInMemberId = one.state.device->signedInMemberId;
    one.state.flexibleRoomSession.confirmedRoomId = roomId;
}
/// Whether the room of the signal counts as confirmed, if the confirmation counts at all.
const std::vector<Choice<bool>> rooms{
    {"no room", [](Case& one) { one.state.flexibleRoomSession = {}; }, false},
    {"the signal's room", [](Case& one) { confirm(one, "room-1"); }, true},
    {"another room", [](Case& one) { confirm(one, "room-2"); }, false},
};
const std::vector<Choice<Reach>> addressings{
    {"an empty list", [](Case& one) { one.signal.providerIds.emplace(); }, Reach::others},
    {"a list of me", [](Case& one) { one.signal.providerIds = {{me}}; }, Reach::theMember},
    {"a list with me", [](Case& one) { one.signal.providerIds = {{colleague, me}}; }, Reach::theMember},
    {"a list of others", [](Case& one) { one.signal.providerIds = {{colleague, "member-3"}}; }, Reach::others},
    {"a list of others, and me", [](Case& one) { one.signal.providerIds = {{colleague}}, one.signal.providerId = me; },
     Reach::others},
    {"a list of me, and another", [](Case& one) { one.signal.providerIds = {{me}}, one.signal.providerId = colleague; },
     Reach::theMember},
    {"me", [](Case& one) { one.signal.providerId = me; }, Reach::theMember},
    {"me and a department", [](Case& one) { one.signal.providerId = me, one.signal.toDepartment = "assistant"; },
     Reach::theMember},
    {"another", [](Case& one) { one.signal.providerId = colleague; }, Reach::others},
    {"anyone", [](Case&) {}, Reach::everyone},
    {"the providers", [](Case& one) { one.signal.toDepartment = "provider"; }, Reach::everyone},
    {"the assistants", [](Case& one) { one.signal.toDepartment = "assistant"; }, Reach::everyone},
};
/// Whether it counts as on shift.
const std::vector<Choice<bool>> shifts{
    {"no word of a shift", [](Case& one) { one.member().onShift.reset(); }, true},
    {"on shift", [](Case& one) { one.member().onShift = true; }, true},
    {"off shift", [](Case& one) { one.member().onShift = false; }, false},
};
/// Whether it is the department that open calls go to.
const std::vector<Choice<bool>> departments{
    {"provider", [](Case& one) { one.member().department = "provider"; }, true},
    {"assistant", [](Case& one) { one.member().department = "assistant"; }, false},
    {"Provider", [](Case& one) { one.member().department = "Provider"; }, false},
};
/// Whether it is the member's own call.
const std::vector<Choice<bool>> requesters{
    {"nobody", [](Case& one) { one.signal.requesterId.reset(); }, false},
    {"me", [](Case& one) { one.signal.requesterId = me; }, true},
    {"a colleague", [](Case& one) { one.signal.requesterId = colleague; }, false},
    {"a stranger", [](Case& one) { one.signal.requesterId = "gone"; }, false},
};
void setAlerts(Case& one, std::optional<bool> enabled) {
    one.member().desktopAlerts = records::DesktopAlerts{.enabled = enabled, .sound = {}};
}
/// Whether alerts are wanted.
const std::vector<Choice<bool>> alertSettings{
    {"no settings", [](Case& one) { one.member().desktopAlerts.reset(); }, true},
    {"settings without a word of it", [](Case& one) { setAlerts(one, std::nullopt); }, true},
    {"alerts", [](Case& one) { setAlerts(one, true); }, true},
    {"no alerts", [](Case& one) { setAlerts(one, false); }, false},
};
/// Whether the member can be disturbed.
const std::vector<Choice<bool>> statuses{
    {"no status", [](Case& one) { one.member().status.reset(); }, true},
    {"busy", [](Case& one) { one.member().status = "busy"; }, true},
    {"dnd", [](Case& one) { one.member().status = "dnd"; }, false},
    {"DND", [](Case& one) { one.member().status = "DND"; }, true},
};
/// The label that the notification shows.
const std::vector<Choice<const char*>> types{
    {"a known type", [](Case& one) { one.signal.typeId = "type-ready"; }, "Label of type-ready"},
    {"an unknown type", [](Case& one) { one.signal.typeId = "gone"; }, "Ready"},
};

std::size_t rowsOf(const Choice<Place>& role, const Choice<Person>& person, const Choice<bool>& room,
                   const Choice<Reach>& addressing) {
    std::size_t rows = 0;
    Case one{.state = stateOfMember(), .signal = support::makeSignal("s")};
    for (const auto& change : {person.apply, room.apply, role.apply, addressing.apply}) {
        change(one);
    }
    // Only a person who signed in here can have confirmed a room.
    const bool isInTheRoom =
        role.meaning == Place::anyRoomWillDo || (person.meaning == Person::signedIn && room.meaning);
    for (const auto& shift : shifts) {
        shift.apply(one);
        for (const auto& department : departments) {
            department.apply(one);
            const bool isMeant = addressing.meaning == Reach::theMember ||
                                 (addressing.meaning == Reach::everyone && shift.meaning && department.meaning);
            for (const auto& requester : requesters) {
                requester.apply(one);
                for (const auto& alerts : alertSettings) {
                    alerts.apply(one);
                    for (const auto& status : statuses) {
                        status.apply(one);
                        const bool isAlerted = person.meaning != Person::nobody && isInTheRoom && isMeant &&
                                               !requester.meaning && alerts.meaning && status.meaning;
                        for (const auto& type : types) {
                            type.apply(one);
                            ++rows;
                            const auto request = requestForNewSignal(one.state, one.signal, platform::KeysAsTexts{});
                            const std::string title = request ? request->content.title : "none";
                            const std::string expected =
                                isAlerted ? "Name of room-1 · " + std::string{type.meaning} : "none";
                            EXPECT_EQ(title, expected)
                                << "role " << role.name << ", " << person.name << ", confirmed " << room.name << ", to "
                                << addressing.name << ", " << shift.name << ", department " << department.name
                                << ", from " << requester.name << ", " << alerts.name << ", " << status.name << ", "
                                << type.name;
                        }
                    }
                }
            }
        }
    }
    return rows;
}

TEST(DecisionTable, everyCombinationIsAlertedAsTheRulesSay) {
    std::size_t rows = 0;
    for (const auto& role : roles) {
        for (const auto& person : people) {
            for (const auto& room : rooms) {
                for (const auto& addressing : addressings) {
                    rows += rowsOf(role, person, room, addressing);
                    ASSERT_FALSE(testing::Test::HasFailure()) << "and more of the same kind";
                }
            }
        }
    }
    EXPECT_EQ(rows, 373'248U);
}

}  // namespace
}  // namespace zelkovanta::alerts
