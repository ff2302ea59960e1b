#pragma once

#include "platform/string_table.h"
#include "records/device_role.h"
#include "screens/queue_row.h"
#include "store/store_state.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

/// The lists of rows, and what stands around them. Pure; computed afresh from the state at each call.
namespace zelkovanta::screens {

enum class SignalTab : std::uint8_t { received, sent };

/// In place of the rows of an empty list.
struct EmptyQueueLabel {
    std::string systemImage;
    std::string title;
    std::optional<std::string> subtitle;
    bool operator==(const EmptyQueueLabel&) const = default;
};

struct QueueSection {
    std::optional<std::string> header;  ///< as it is written; drawn in upper case
    std::vector<QueueRow> rows;
    std::optional<EmptyQueueLabel> empty;  ///< there while there are no rows
    bool operator==(const QueueSection&) const = default;
};

/// The rows of the active member's queue, within one room if one is given.
[[nodiscard]] std::vector<QueueRow> personalQueueRows(const store::StoreState& state,
                                                      const std::optional<std::string>& roomId,
                                                      const platform::StringTable& strings);

enum class SectionTitle : std::uint8_t { hidden, shown };
[[nodiscard]] QueueSection personalQueueSection(const store::StoreState& state, SectionTitle title,
                                                const std::optional<std::string>& roomId,
                                                const platform::StringTable& strings);

/// What was sent by the active member and from this computer's room. A sender cannot acknowledge from here.
[[nodiscard]] QueueSection sentQueueSection(const store::StoreState& state, const std::optional<std::string>& roomId,
                                            const platform::StringTable& strings);

/// One half of the switch between the two lists.
struct QueueTabButton {
    SignalTab tab = SignalTab::received;
    std::string title;
    bool selected = false;
    std::string badge;  ///< empty: no badge
    theme::ColorPair titleColor;
    theme::ColorPair fill;
    std::optional<theme::ColorPair> outline;
    theme::Color badgeFill;
    bool operator==(const QueueTabButton&) const = default;
};
/// Received, then sent.
[[nodiscard]] std::array<QueueTabButton, 2> queueTabToggle(SignalTab tab, std::size_t receivedCount,
                                                           std::size_t sentCount, const platform::StringTable& strings);

struct ConnectionBanner {
    std::string text;
    bool hasSpinner = true;
    bool operator==(const ConnectionBanner&) const = default;
};
/// None while connected: the banner takes no room then.
[[nodiscard]] std::optional<ConnectionBanner> connectionBanner(server::ConnectionState state,
                                                               const platform::StringTable& strings);

/// The menu with which the active member says how they can be reached.
struct MemberStatusControl {
    struct Entry {
        records::MemberStatus status = records::MemberStatus::available;
        std::string text;
        bool isCurrent = false;  ///< carries the symbol "checkmark"
        bool operator==(const Entry&) const = default;
    };
    theme::ColorPair dot;
    std::string text;
    std::array<Entry, 3> entries;
    bool operator==(const MemberStatusControl&) const = default;
};
/// None without an active member. A status that is not known reads as available, and none of the entries is current.
[[nodiscard]] std::optional<MemberStatusControl> memberStatusControl(const store::StoreState& state,
                                                                     const platform::StringTable& strings);

}  // namespace zelkovanta::screens
