#include "screens/who_picker.h"

#include "screens/vocabulary/vocabulary.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <ranges>
#include <unordered_set>
#include <utility>

namespace zelkovanta::screens {

namespace {

using records::providerDepartment;
using store::MemberList;
using store::StoreState;
using Ids = std::unordered_set<std::string_view>;

constexpr std::string_view departmentPrefix = "dept:";
constexpr std::string_view idsPrefix = "ids:";

MemberList candidatesAmong(const MemberList& recipients, std::string_view department) {
    MemberList found;
    std::ranges::copy_if(recipients, std::back_inserter(found),
                         [department](const records::Member* member) { return member->department == department; });
    return found;
}

MemberList ungroupedAmong(const StoreState& state, const MemberList& recipients) {
    MemberList found;
    std::ranges::copy_if(recipients, std::back_inserter(found), [&state](const records::Member* member) {
        const auto departments = store::officeDepartments(state);
        return std::ranges::find(departments, member->department, &records::OfficeDepartment::key) == departments.end();
    });
    return found;
}

Ids idsIn(const std::vector<std::string>& list) {
    return {list.begin(), list.end()};
}

std::vector<std::string> idsOf(const MemberList& members) {
    std::vector<std::string> ids;
    ids.reserve(members.size());
    for (const records::Member* member : members) {
        ids.push_back(member->id);
    }
    return ids;
}

bool holdsAll(const Ids& ids, const MemberList& members) {
    return std::ranges::all_of(members, [&ids](const records::Member* member) { return ids.contains(member->id); });
}

bool areExactly(const Ids& ids, const MemberList& members) {
    Ids own;
    for (const records::Member* member : members) {
        own.insert(member->id);
    }
    return own == ids;
}

std::string departmentWord(const StoreState& state, const std::string& key, const platform::StringTable& strings) {
    return vocabulary::departmentLabel(state.office, key, vocabulary::Count::one, strings);
}

/// What came of the stored recipient; none if nobody of it is left.
std::optional<WhoSelection> fromStored(const StoreState& state, const MemberList& recipients, const Recipient& stored) {
    if (!stored.department) {
        Ids selectable;
        for (const records::Member* member : recipients) {
            selectable.insert(member->id);
        }
        WhoSelection kept{.selectedProviderIds = stored.ids};
        std::erase_if(kept.selectedProviderIds, [&](const std::string& id) { return !selectable.contains(id); });
        return kept.selectedProviderIds.empty() ? std::nullopt : std::optional{kept};
    }
    const auto departments = store::officeDepartments(state);
    const bool isProvider = *stored.department == providerDepartment;
    const bool isKnown =
        std::ranges::find(departments, *stored.department, &records::OfficeDepartment::key) != departments.end();
    if (!isProvider && !isKnown) {
        return std::nullopt;
    }
    const auto found = candidatesAmong(recipients, *stored.department);
    if (!found.empty()) {
        return WhoSelection{.selectedProviderIds = idsOf(found)};
    }
    if (isProvider && allowsAnyProvider(state)) {
        return WhoSelection{.selectedProviderIds = {}, .explicitAny = true};
    }
    return std::nullopt;
}

}  // namespace

MemberList candidates(const StoreState& state, std::string_view department) {
    return candidatesAmong(store::selectableRecipients(state), department);
}

MemberList ungroupedRecipients(const StoreState& state) {
    return ungroupedAmong(state, store::selectableRecipients(state));
}

bool allowsAnyProvider(const StoreState& state) {
    return !state.office || !state.office->settings || state.office->settings->allowAnyProvider.value_or(true);
}

bool hasProviderDepartment(const StoreState& state) {
    return std::ranges::any_of(store::officeDepartments(state),
                               [](const auto& department) { return department.key == providerDepartment; });
}

bool isGroupSelected(const StoreState& state, const WhoSelection& selection, std::string_view department) {
    const auto members = candidates(state, department);
    return !members.empty() && holdsAll(idsIn(selection.selectedProviderIds), members);
}

WhoSelection togglePerson(WhoSelection selection, const std::string& memberId) {
    selection.explicitAny = false;
    if (std::erase(selection.selectedProviderIds, memberId) == 0) {
        selection.selectedProviderIds.push_back(memberId);
    }
    return selection;
}

WhoSelection toggleGroup(const StoreState& state, WhoSelection selection, std::string_view department) {
    const bool isSelected = isGroupSelected(state, selection, department);
    const auto members = idsOf(candidates(state, department));
    std::vector<std::string>& ids = selection.selectedProviderIds;
    selection.explicitAny = false;
    if (isSelected) {
        const Ids own = idsIn(members);
        std::erase_if(ids, [&own](const std::string& id) { return own.contains(id); });
        return selection;
    }
    std::vector<std::string> missing;
    const Ids present = idsIn(ids);
    std::ranges::copy_if(members, std::back_inserter(missing),
                         [&present](const std::string& id) { return !present.contains(id); });
    ids.insert(ids.end(), missing.begin(), missing.end());
    return selection;
}

WhoSelection toggleAny(WhoSelection selection) {
    return {.selectedProviderIds = {}, .explicitAny = !selection.explicitAny};
}

Recipient resolveRecipient(const StoreState& state, const WhoSelection& selection,
                           const std::optional<std::string>& typeTarget) {
    if (selection.selectedProviderIds.empty()) {
        return {.department = selection.explicitAny ? std::nullopt : typeTarget, .ids = {}};
    }
    const MemberList recipients = store::selectableRecipients(state);
    const Ids selected = idsIn(selection.selectedProviderIds);
    for (const records::OfficeDepartment& department : store::officeDepartments(state)) {
        const auto members = candidatesAmong(recipients, department.key);
        if (members.size() < 2 || !areExactly(selected, members)) {
            continue;
        }
        if (department.key == providerDepartment && allowsAnyProvider(state)) {
            return {};
        }
        return {.department = department.key, .ids = {}};
    }
    return {.department = {}, .ids = selection.selectedProviderIds};
}

std::string encodeRecipient(const Recipient& recipient) {
    if (recipient.department) {
        return std::string{departmentPrefix} + *recipient.department;
    }
    if (recipient.ids.empty()) {
        return "any";
    }
    std::string text{idsPrefix};
    for (const std::string& id : recipient.ids) {
        text += &id == recipient.ids.data() ? "" : ",";
        text += id;
    }
    return text;
}

Recipient decodeRecipient(std::string_view text) {
    Recipient recipient;
    if (text.starts_with(departmentPrefix)) {
        recipient.department = text.substr(departmentPrefix.size());
    } else if (text.starts_with(idsPrefix)) {
        for (const auto piece : std::views::split(text.substr(idsPrefix.size()), ',')) {
            if (!piece.empty()) {
                recipient.ids.emplace_back(piece.begin(), piece.end());
            }
        }
    }
    return recipient;
}

WhoSelection defaultRecipient(const StoreState& state, std::string_view stored,
                              const std::optional<std::string>& typeTarget) {
    const MemberList recipients = store::selectableRecipients(state);
    if (auto remembered = fromStored(state, recipients, decodeRecipient(stored))) {
        return std::move(*remembered);
    }
    if (typeTarget) {
        return {.selectedProviderIds = idsOf(candidatesAmong(recipients, *typeTarget))};
    }
    if (allowsAnyProvider(state)) {
        auto providers = idsOf(candidatesAmong(recipients, providerDepartment));
        const bool isOpen = providers.empty();
        return {.selectedProviderIds = std::move(providers), .explicitAny = isOpen};
    }
    return {.selectedProviderIds = idsOf({recipients.begin(), recipients.begin() + (recipients.empty() ? 0 : 1)})};
}

std::optional<std::string> recipientHint(const StoreState& state, const WhoSelection& selection,
                                         const std::optional<std::string>& typeTarget,
                                         const platform::StringTable& strings) {
    const Recipient recipient = resolveRecipient(state, selection, typeTarget);
    if (recipient.department) {
        return platform::filled(strings.localized("Goes to everyone in %@ on shift. First to respond takes it."),
                                {departmentWord(state, *recipient.department, strings)});
    }
    if (recipient.ids.size() >= 2) {
        return platform::filled(strings.localized("Combined call: all %lld get it. First to respond takes it."),
                                {static_cast<std::int64_t>(recipient.ids.size())});
    }
    if (recipient.ids.size() == 1) {
        return std::nullopt;
    }
    if (selection.selectedProviderIds.empty() && !selection.explicitAny) {
        return strings.localized("Pick who should get it.");
    }
    return platform::filled(strings.localized("Goes to the next available %@."),
                            {departmentWord(state, std::string{providerDepartment}, strings)});
}

}  // namespace zelkovanta::screens
