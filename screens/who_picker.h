#pragma once

#include "platform/string_table.h"
#include "screens/theme/member_avatar.h"
#include "store/queues.h"
#include "store/store_state.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

/// Who gets a signal: one person, several, a whole department, or whoever is next. A department is no choice of its
/// own: a form holds people and one flag, and what they amount to is worked out when the signal is sent. Departments
/// compare exactly. Pure; lists point into the state and hold until it changes.
namespace zelkovanta::screens {

/// What a form holds.
struct WhoSelection {
    std::vector<std::string> selectedProviderIds;  ///< in the order of selection
    bool explicitAny = false;                      ///< the next available provider was chosen
    bool operator==(const WhoSelection&) const = default;
};

/// Whom a signal is addressed to: at most one of the two is filled, neither for an open call.
struct Recipient {
    std::optional<std::string> department;
    std::vector<std::string> ids;
    bool operator==(const Recipient&) const = default;
};

/// The selectable recipients of a department.
[[nodiscard]] store::MemberList candidates(const store::StoreState& state, std::string_view department);
/// The selectable recipients whose department the office does not list.
[[nodiscard]] store::MemberList ungroupedRecipients(const store::StoreState& state);
/// True where the office says nothing of it.
[[nodiscard]] bool allowsAnyProvider(const store::StoreState& state);
[[nodiscard]] bool hasProviderDepartment(const store::StoreState& state);
/// Whether the department has candidates and all of them are selected.
[[nodiscard]] bool isGroupSelected(const store::StoreState& state, const WhoSelection& selection,
                                   std::string_view department);

// The presses on the rows.
[[nodiscard]] WhoSelection togglePerson(WhoSelection selection, const std::string& memberId);
[[nodiscard]] WhoSelection toggleGroup(const store::StoreState& state, WhoSelection selection,
                                       std::string_view department);
[[nodiscard]] WhoSelection toggleAny(WhoSelection selection);

/// What the selection amounts to. All candidates of a department, two at least and nobody else, are that department;
/// all providers are an open call where the office allows one. Nobody at all is `typeTarget`, the department that the
/// type of signal is meant for, unless the next available provider was chosen.
[[nodiscard]] Recipient resolveRecipient(const store::StoreState& state, const WhoSelection& selection,
                                         const std::optional<std::string>& typeTarget);

/// "dept:" and a key, "ids:" and ids parted by commas, or "any" for an open call.
[[nodiscard]] std::string encodeRecipient(const Recipient& recipient);
/// Another text, and "any", gives an open call.
[[nodiscard]] Recipient decodeRecipient(std::string_view text);

/// What a form opens with: the recipient stored from the last time as far as there still is one, else what suits the
/// type of signal. Names only selectable recipients.
[[nodiscard]] WhoSelection defaultRecipient(const store::StoreState& state, std::string_view stored,
                                            const std::optional<std::string>& typeTarget);

/// The line that says what will happen; none for a call to one person.
[[nodiscard]] std::optional<std::string> recipientHint(const store::StoreState& state, const WhoSelection& selection,
                                                       const std::optional<std::string>& typeTarget,
                                                       const platform::StringTable& strings);

/// Whoever is next: a press is `toggleAny`.
struct AnyRow {
    static constexpr std::string_view symbol = "person.2.fill";
    std::string text;
    bool chosen = false;
    theme::ColorPair tint;
    bool operator==(const AnyRow&) const = default;
};

/// Everybody of a department: a press is `toggleGroup`.
struct GroupRow {
    static constexpr std::string_view symbol = "person.3.fill";
    std::string department;  ///< its key
    std::string text;
    bool chosen = false;
    theme::ColorPair tint;
    bool operator==(const GroupRow&) const = default;
};

/// A press is `togglePerson`; somebody who does not want to be disturbed can be chosen all the same.
struct PersonRow {
    std::string memberId;
    theme::MemberAvatar avatar;  ///< its name is the row's
    std::string queue;           ///< "2 in queue"; empty for an empty queue
    std::string doNotDisturb;    ///< "DND"; empty otherwise
    bool chosen = false;         ///< carries the symbol "checkmark"
    bool operator==(const PersonRow&) const = default;
};

using WhoRow = std::variant<AnyRow, GroupRow, PersonRow>;

struct WhoPickerSection {
    std::string title;
    std::string explanation;
    std::vector<WhoRow> rows;
    std::optional<std::string> hint;
    bool operator==(const WhoPickerSection&) const = default;
};
/// Linear in the members and signals.
[[nodiscard]] WhoPickerSection whoPickerSection(const store::StoreState& state, const WhoSelection& selection,
                                                const std::optional<std::string>& typeTarget,
                                                const platform::StringTable& strings);

/// The length of each member's personal queue, in the order of `members`, in one pass over the signals.
[[nodiscard]] std::vector<std::size_t> personalQueueCounts(const store::StoreState& state,
                                                           std::span<const records::Member* const> members);

}  // namespace zelkovanta::screens
