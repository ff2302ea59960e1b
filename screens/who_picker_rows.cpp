#include "screens/vocabulary/vocabulary.h"
#include "screens/who_picker.h"

#include <algorithm>
#include <cstdint>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace zelkovanta::screens {

namespace {

using records::providerDepartment;
using store::MemberList;
using store::StoreState;

/// Writes the rows of the picker.
class RowWriter {
public:
    RowWriter(const StoreState& state, const WhoSelection& selection, const platform::StringTable& strings)
        : state_(state),
          selection_(selection),
          strings_(strings),
          selected_(selection.selectedProviderIds.begin(), selection.selectedProviderIds.end()) {
        const auto recipients = store::selectableRecipients(state);
        const auto counts = personalQueueCounts(state, recipients);
        for (std::size_t index = 0; index < recipients.size(); ++index) {
            queues_.emplace(recipients[index]->id, counts[index]);
        }
    }

    [[nodiscard]] std::vector<WhoRow> write() {
        const bool allowsAny = allowsAnyProvider(state_);
        if (allowsAny && !hasProviderDepartment(state_)) {
            addAnyone();
        }
        std::int64_t tint = 0;
        for (const records::OfficeDepartment& department : store::officeDepartments(state_)) {
            ++tint;
            const auto found = candidates(state_, department.key);
            if (!found.empty()) {
                addGroup(department.key, found, tint);
            } else if (allowsAny && department.key == providerDepartment) {
                addAnyone();
            }
        }
        for (const records::Member* member : ungroupedRecipients(state_)) {
            addPerson(*member);
        }
        return std::move(rows_);
    }

private:
    [[nodiscard]] std::string anyOf(const std::string& department) const {
        return platform::filled(
            strings_.localized("Any %@"),
            {vocabulary::departmentLabel(state_.office, department, vocabulary::Count::one, strings_)});
    }

    void addAnyone() {
        rows_.emplace_back(AnyRow{.text = anyOf(std::string{providerDepartment}),
                                  .chosen = selection_.explicitAny,
                                  .tint = theme::accentPalette(0)});
    }

    void addGroup(const std::string& department, const MemberList& members, std::int64_t tint) {
        rows_.emplace_back(GroupRow{.department = department,
                                    .text = anyOf(department),
                                    .chosen = areSelected(members),
                                    .tint = theme::accentPalette(tint)});
        for (const records::Member* member : members) {
            addPerson(*member);
        }
    }

    void addPerson(const records::Member& member) {
        const std::size_t queue = queues_.at(member.id);
        PersonRow row{.memberId = member.id,
                      .avatar = {.name = member.name, .colorHex = member.color, .diameter = avatarDiameter},
                      .queue = {},
                      .doNotDisturb = {},
                      .chosen = selected_.contains(member.id)};
        if (queue != 0) {
            row.queue = platform::filled(strings_.localized("%lld in queue"), {static_cast<std::int64_t>(queue)});
        }
        if (member.status == "dnd") {
            row.doNotDisturb = strings_.localized("DND");
        }
        rows_.emplace_back(std::move(row));
    }

    [[nodiscard]] bool areSelected(const MemberList& members) const {
        return std::ranges::all_of(members, [this](const auto* member) { return selected_.contains(member->id); });
    }

    static constexpr double avatarDiameter = 26;

    const StoreState& state_;
    const WhoSelection& selection_;
    const platform::StringTable& strings_;
    std::unordered_set<std::string_view> selected_;
    std::unordered_map<std::string_view, std::size_t> queues_;
    std::vector<WhoRow> rows_;
};

}  // namespace

WhoPickerSection whoPickerSection(const StoreState& state, const WhoSelection& selection,
                                  const std::optional<std::string>& typeTarget, const platform::StringTable& strings) {
    return {.title = strings.localized("Who"),
            .explanation =
                strings.localized("Pick a group, or check people for a combined call. First to respond takes it."),
            .rows = RowWriter{state, selection, strings}.write(),
            .hint = recipientHint(state, selection, typeTarget, strings)};
}

std::vector<std::size_t> personalQueueCounts(const StoreState& state, std::span<const records::Member* const> members) {
    // What names a member counts for that member; an open call counts for every provider on shift, but for who sent it
    // and, once taken, for who took it alone.
    struct Tally {
        const records::Signal* lastCounted = nullptr;
        std::int64_t named = 0;
        std::int64_t open = 0;
    };
    std::unordered_map<std::string_view, Tally> tallies;
    std::int64_t openForAll = 0;
    for (const records::Signal& signal : state.signals) {
        if (!records::isActive(signal)) {
            continue;
        }
        const auto takenBy = signal.status == records::signal_status::acknowledged ? signal.acknowledgedBy
                                                                                   : std::optional<std::string>{};
        const auto countFor = [&](const std::string& id) {
            Tally& tally = tallies[id];
            if (signal.requesterId != id && takenBy.value_or(id) == id && tally.lastCounted != &signal) {
                tally.lastCounted = &signal;
                ++tally.named;
            }
        };
        if (signal.providerIds) {
            std::ranges::for_each(*signal.providerIds, countFor);
        } else if (signal.providerId) {
            countFor(*signal.providerId);
        } else if (!takenBy) {
            ++openForAll;
            if (signal.requesterId) {
                --tallies[*signal.requesterId].open;
            }
        } else if (takenBy != signal.requesterId) {
            // Its key lives in the state, not in this turn of the loop.
            ++tallies[*signal.acknowledgedBy].open;
        }
    }

    std::vector<std::size_t> counts;
    counts.reserve(members.size());
    for (const records::Member* member : members) {
        const auto found = tallies.find(member->id);
        const Tally tally = found == tallies.end() ? Tally{} : found->second;
        const bool takesOpenCalls =
            store::shiftOf(*member) == store::Shift::on && store::providerOf(*member) == store::Provider::yes;
        counts.push_back(static_cast<std::size_t>(tally.named + (takesOpenCalls ? openForAll + tally.open : 0)));
    }
    return counts;
}

}  // namespace zelkovanta::screens
