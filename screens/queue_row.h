#pragma once

#include "platform/clock.h"
#include "platform/string_table.h"
#include "records/office.h"
#include "records/signal.h"
#include "screens/theme/palette.h"
#include "store/store_state.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

/// One signal in a list: what belongs to it (`QueueRow`), and what is drawn of it (`drawn`). Pure, any thread.
namespace zelkovanta::screens {

/// A press on a row. What it does is `press` in `screens/queue_row_actions.h`.
enum class RowAction : std::uint8_t { acknowledge, done, cancel };

/// The word for `AppStore::actOnSignal`.
[[nodiscard]] std::string_view rawValue(RowAction action);

/// A row's whole content. The section that makes a row looks everything up, so a row stands without the store; what the
/// store does not know is none, and the row is there all the same.
struct QueueRow {
    records::Signal signal;
    std::optional<records::Room> room;
    std::optional<records::SignalType> type;
    std::optional<std::string> vertical;
    std::optional<records::Member> provider;         ///< the one addressed member
    std::optional<records::Member> requester;        ///< who sent it
    std::optional<std::string> requesterDepartment;  ///< as a person reads it
    std::optional<std::size_t> position;             ///< in the queue of the whole office, from 1
    bool highlighted = false;
    std::optional<RowAction> onAcknowledge;
    std::optional<RowAction> onDone;
    std::string completionLabel;  ///< spoken name of the check button; empty: "Done"
    std::optional<RowAction> onCancel;
    bool showTarget = false;  ///< says for whom it is
    bool operator==(const QueueRow&) const = default;
};

/// A status as a capsule. "waiting" alone is solid: what still needs someone stands out.
struct StatusChip {
    std::string status;
    bool prominent = false;  ///< larger: there is something to do
    std::string text;
    theme::ColorPair textColor;
    theme::ColorPair fill;
    bool operator==(const StatusChip&) const = default;
};
[[nodiscard]] StatusChip statusChip(const std::string& status, bool prominent, const platform::StringTable& strings);

/// How many people one call is for.
struct CombinedBadge {
    static constexpr theme::ColorPair textColor = theme::blueText;
    static constexpr theme::Color fill = theme::withOpacity(theme::brandBlue, 0.14);

    std::size_t count = 0;
    std::string text;
    bool operator==(const CombinedBadge&) const = default;
};
[[nodiscard]] CombinedBadge combinedBadge(std::size_t count, const platform::StringTable& strings);

/// Around what a button says. Logical pixels.
struct ButtonPadding {
    int horizontal = 0;
    int vertical = 0;
    bool operator==(const ButtonPadding&) const = default;
};

struct RowButton {
    RowAction action = RowAction::done;
    std::string text;            ///< empty for a button with a symbol alone
    std::string symbol;          ///< empty for a button with a text
    std::string accessibleName;  ///< never empty
    theme::ColorPair foreground;
    theme::Color fill;
    std::optional<theme::Color> outline;
    ButtonPadding padding;
    bool operator==(const RowButton&) const = default;
};

/// What is drawn of a row. An empty text means that its line is not there.
struct DrawnRow {
    std::string id;  ///< of the signal
    theme::Color mark;
    theme::ColorPair outline;
    std::string room;
    std::string type;
    theme::ColorPair typeColor;
    std::optional<platform::WallTime> since;  ///< none: the timer stays at zero
    std::string detail;
    std::string note;
    StatusChip chip;
    std::optional<CombinedBadge> combined;
    std::string position;  ///< "#3"
    std::vector<RowButton> buttons;
    bool operator==(const DrawnRow&) const = default;
};
[[nodiscard]] DrawnRow drawn(const QueueRow& row, const platform::StringTable& strings);

/// The disc beside a name. On a selected, yellow row "busy" is drawn in ink, for yellow would not show.
enum class DotPlace : std::uint8_t { plain, onSelectedBackground };
[[nodiscard]] theme::ColorPair statusDotColor(const std::optional<std::string>& status, DotPlace place);

}  // namespace zelkovanta::screens
