#pragma once

#include "screens/who_picker.h"
#include "tests/support/office_records.h"

#include <optional>
#include <string>
#include <utility>
#include <vector>

/// An office as a table of who works where.
namespace zelkovanta::screens {

struct Staff {
    std::string id;
    std::string department;
};

/// A room's computer where nobody is signed in: everybody can be chosen.
inline store::StoreState officeWith(const std::vector<std::string>& departments, const std::vector<Staff>& staff,
                                    std::optional<bool> allowAnyProvider = std::nullopt) {
    store::StoreState state;
    state.office = support::makeOffice("office-1", [&](records::Office& office) {
        office.departments.emplace();
        for (const std::string& key : departments) {
            office.departments->push_back({.key = key, .label = "Label of " + key, .labelPlural = {}});
        }
        office.settings = records::OfficeSettings{
            .autoExpireMinutes = {}, .allowAnyProvider = allowAnyProvider, .ble = {}, .requireSignedInSender = {}};
    });
    for (const Staff& each : staff) {
        state.members.push_back(
            support::makeMember(each.id, [&](records::Member& member) { member.department = each.department; }));
    }
    state.device = support::makeDeviceOfRoom("room-1");
    return state;
}

/// Two providers, two nurses, one assistant, one of a department that the office does not list.
inline store::StoreState usualOffice(std::optional<bool> allowAnyProvider = std::nullopt) {
    return officeWith({"provider", "nurse", "assistant"},
                      {{"p1", "provider"},
                       {"n1", "nurse"},
                       {"p2", "provider"},
                       {"n2", "nurse"},
                       {"a1", "assistant"},
                       {"x1", "visitor"}},
                      allowAnyProvider);
}

inline WhoSelection people(std::vector<std::string> ids) {
    return {.selectedProviderIds = std::move(ids), .explicitAny = false};
}

inline WhoSelection whoeverIsNext() {
    return {.selectedProviderIds = {}, .explicitAny = true};
}

inline Recipient toDepartment(std::string key) {
    return {.department = std::move(key), .ids = {}};
}

inline Recipient toPeople(std::vector<std::string> ids) {
    return {.department = {}, .ids = std::move(ids)};
}

inline Recipient openCall() {
    return {};
}

inline std::vector<std::string> idsOf(const store::MemberList& members) {
    std::vector<std::string> ids;
    for (const records::Member* member : members) {
        ids.push_back(member->id);
    }
    return ids;
}

}  // namespace zelkovanta::screens
