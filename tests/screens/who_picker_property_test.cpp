#include "screens/who_picker.h"
#include "tests/screens/who_picker_office.h"

#include <algorithm>
#include <rapidcheck.h>
#include <set>

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

namespace zelkovanta::screens {
namespace {

using store::StoreState;
using Strings = std::vector<std::string>;
using Flag = std::optional<bool>;

template <class Value>
Value oneOf(std::vector<Value> values) {
    return *rc::gen::elementOf(std::move(values));
}

bool anyBool() {
    return *rc::gen::arbitrary<bool>();
}

int upTo(int most) {
    return *rc::gen::resize(rc::kNominalSize, rc::gen::inRange(0, most + 1));
}

std::string memberName(int number) {
    return "m" + std::to_string(number);
}

/// A small office: departments, people on and off shift, somebody signed in or nobody.
StoreState anyOffice() {
    StoreState state = officeWith({}, {}, oneOf<Flag>({std::nullopt, true, false}));
    for (const char* key : {"nurse", "provider", "assistant", "lab"}) {
        if (anyBool()) {
            state.office->departments->push_back({.key = key, .label = key, .labelPlural = {}});
        }
    }
    const int count = upTo(9);
    for (int number = 0; number < count; ++number) {
        state.members.push_back(support::makeMember(memberName(number), [](records::Member& member) {
            member.department = oneOf<std::string>({"nurse", "provider", "provider", "assistant", "visitor"});
            member.onShift = oneOf<Flag>({std::nullopt, true, true, false});
        }));
    }
    if (anyBool()) {
        state.device = support::makeDeviceWithSignIn(memberName(upTo(9)));
    }
    return state;
}

std::optional<std::string> anyTarget() {
    return oneOf<std::optional<std::string>>({std::nullopt, "nurse", "provider", "visitor", "lab", "elsewhere"});
}

/// Some of these ids, in any order.
Strings someOf(Strings ids) {
    Strings some;
    while (!ids.empty() && upTo(4) != 0) {
        const auto taken = ids.begin() + upTo(static_cast<int>(ids.size()) - 1);
        some.push_back(*taken);
        ids.erase(taken);
    }
    return some;
}

/// People, sometimes those of a whole department, sometimes somebody who is gone.
WhoSelection anySelection(const StoreState& state) {
    if (upTo(5) == 0) {
        return {.selectedProviderIds = {}, .explicitAny = anyBool()};
    }
    if (anyBool()) {
        return people(idsOf(candidates(state, oneOf<std::string>({"nurse", "provider", "assistant"}))));
    }
    Strings ids{"gone"};
    for (const auto& member : state.members) {
        ids.push_back(member.id);
    }
    return people(someOf(ids));
}

std::set<std::string> setOf(const Strings& ids) {
    return {ids.begin(), ids.end()};
}

std::set<std::string> selectableIds(const StoreState& state) {
    return setOf(idsOf(store::selectableRecipients(state)));
}

RC_GTEST_PROP(RecipientText, aDepartmentOfAnyKeyComesBack, (const std::string& key)) {
    RC_ASSERT(decodeRecipient(encodeRecipient(toDepartment(key))) == toDepartment(key));
}

RC_GTEST_PROP(RecipientText, peopleComeBackInTheirOrder, ()) {
    const auto id =
        rc::gen::nonEmpty(rc::gen::container<std::string>(rc::gen::distinctFrom(rc::gen::character<char>(), ',')));
    const auto ids = *rc::gen::container<Strings>(id);
    RC_ASSERT(decodeRecipient(encodeRecipient(toPeople(ids))) == toPeople(ids));
}

RC_GTEST_PROP(RecipientText, whatASelectionAmountsToComesBack, ()) {
    const StoreState state = anyOffice();
    const Recipient recipient = resolveRecipient(state, anySelection(state), anyTarget());
    RC_ASSERT(decodeRecipient(encodeRecipient(recipient)) == recipient);
}

RC_GTEST_PROP(RecipientText, anyTextDecodesToAtMostOneOfTheTwo, (const std::string& text)) {
    const Recipient recipient = decodeRecipient(oneOf<std::string>({"", "dept:", "ids:"}) + text);
    RC_ASSERT(!recipient.department || recipient.ids.empty());
    RC_ASSERT(decodeRecipient(encodeRecipient(recipient)) == recipient);
}

RC_GTEST_PROP(ResolveRecipient, isWhatThePlainRuleGives, ()) {
    const StoreState state = anyOffice();
    const WhoSelection selection = anySelection(state);
    const auto target = anyTarget();
    const Recipient recipient = resolveRecipient(state, selection, target);
    RC_ASSERT(!recipient.department || recipient.ids.empty());

    const auto selected = setOf(selection.selectedProviderIds);
    std::optional<std::string> matched;
    for (const auto& department : *state.office->departments) {
        std::set<std::string> ids;
        for (const auto& member : state.members) {
            const bool isMe = state.device->signedInMemberId == member.id;
            if (member.department == department.key && member.onShift != false && !isMe) {
                ids.insert(member.id);
            }
        }
        if (!matched && ids.size() >= 2 && ids == selected) {
            matched = department.key;
        }
    }
    if (selected.empty()) {
        RC_ASSERT(recipient.department == (selection.explicitAny ? std::nullopt : target));
        RC_ASSERT(recipient.ids.empty());
    } else if (!matched) {
        RC_ASSERT(recipient == toPeople(selection.selectedProviderIds));
    } else if (*matched == "provider" && state.office->settings->allowAnyProvider != false) {
        RC_ASSERT(recipient == openCall());
    } else {
        RC_ASSERT(recipient == toDepartment(*matched));
    }
}

RC_GTEST_PROP(DefaultRecipient, namesOnlyWhoCanBeSelected, (const std::string& junk)) {
    const StoreState state = anyOffice();
    const StoreState before = anyOffice();
    const std::string stored = oneOf<std::string>(
        {junk, "any", "dept:" + junk, "ids:" + junk, "dept:provider", "dept:nurse", "dept:visitor", "ids:m0,m1,gone,m7",
         encodeRecipient(resolveRecipient(before, anySelection(before), anyTarget()))});
    const WhoSelection selection = defaultRecipient(state, stored, anyTarget());
    const auto selectable = selectableIds(state);
    for (const std::string& id : selection.selectedProviderIds) {
        RC_ASSERT(selectable.contains(id));
    }
    if (selection.explicitAny) {
        RC_ASSERT(selection.selectedProviderIds.empty());
        RC_ASSERT(allowsAnyProvider(state));
    }
}

RC_GTEST_PROP(DefaultRecipient, whatWasSentToPeopleComesBackWhileNothingChanges, ()) {
    const StoreState state = anyOffice();
    WhoSelection selection = anySelection(state);
    const auto selectable = selectableIds(state);
    std::erase_if(selection.selectedProviderIds, [&](const std::string& id) { return !selectable.contains(id); });
    RC_PRE(!selection.selectedProviderIds.empty());

    const Recipient sent = resolveRecipient(state, selection, std::nullopt);
    const WhoSelection opened = defaultRecipient(state, encodeRecipient(sent), std::nullopt);
    RC_ASSERT(setOf(opened.selectedProviderIds) == setOf(selection.selectedProviderIds));
    RC_ASSERT(!opened.explicitAny);
    RC_ASSERT(resolveRecipient(state, opened, std::nullopt) == sent);
}

RC_GTEST_PROP(Presses, aGroupPressedTwiceIsAsBeforeButForThoseWhoWereThere, ()) {
    const StoreState state = anyOffice();
    const WhoSelection selection = anySelection(state);
    const auto department = oneOf<std::string>({"nurse", "provider", "assistant", "lab"});
    const bool hasPeople = !candidates(state, department).empty();

    const WhoSelection once = toggleGroup(state, selection, department);
    RC_ASSERT(!once.explicitAny);
    RC_ASSERT(isGroupSelected(state, once, department) ==
              (hasPeople && !isGroupSelected(state, selection, department)));
    const WhoSelection twice = toggleGroup(state, once, department);
    auto others = selection.selectedProviderIds;
    const auto own = setOf(idsOf(candidates(state, department)));
    std::erase_if(others, [&](const std::string& id) { return own.contains(id); });
    if (isGroupSelected(state, once, department)) {
        RC_ASSERT(twice.selectedProviderIds == others);
    } else if (hasPeople) {
        RC_ASSERT(once.selectedProviderIds == others);
    }
}

RC_GTEST_PROP(Presses, aPersonPressedTwiceIsAsBefore, ()) {
    const StoreState state = anyOffice();
    const WhoSelection selection = anySelection(state);
    const std::string id = memberName(upTo(9));
    const WhoSelection once = togglePerson(selection, id);
    RC_ASSERT(setOf(once.selectedProviderIds).contains(id) != setOf(selection.selectedProviderIds).contains(id));
    RC_ASSERT(setOf(togglePerson(once, id).selectedProviderIds) == setOf(selection.selectedProviderIds));
}

records::Signal anySignal(int number) {
    const auto somebody = [] {
        return oneOf<std::optional<std::string>>({std::nullopt, memberName(upTo(9)), memberName(upTo(9)), "gone"});
    };
    return support::makeSignal("signal-" + std::to_string(number), [&](records::Signal& signal) {
        signal.status = oneOf<std::string>({"waiting", "acknowledged", "done"});
        signal.requesterId = somebody();
        signal.acknowledgedBy = somebody();
        signal.providerId = somebody();
        if (upTo(2) == 0) {
            signal.providerIds.emplace();
            for (int count = upTo(4); count > 0; --count) {
                signal.providerIds->push_back(memberName(upTo(9)));
            }
        }
    });
}

RC_GTEST_PROP(PersonalQueueCounts, areTheLengthsOfTheQueues, ()) {
    StoreState state = anyOffice();
    const int count = upTo(30);
    for (int number = 0; number < count; ++number) {
        state.signals.push_back(anySignal(number));
    }
    store::MemberList members;
    for (const auto& member : state.members) {
        members.push_back(&member);
    }
    const auto counts = personalQueueCounts(state, members);
    RC_ASSERT(counts.size() == members.size());
    for (std::size_t index = 0; index < members.size(); ++index) {
        RC_ASSERT(counts[index] == store::personalQueue(state, members[index]->id).size());
    }
}

}  // namespace
}  // namespace zelkovanta::screens
