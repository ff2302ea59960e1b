#pragma once

#include "platform/string_table.h"
#include "platform/user_notification_center.h"
#include "records/office.h"
#include "records/signal.h"
#include "store/store_state.h"

#include <optional>
#include <string>
#include <string_view>

/// Whether a new signal is worth a notification on this computer, and in which words. Pure functions.
namespace zelkovanta::alerts {

/// The extension of every clip's file.
inline constexpr std::string_view soundFileExtension = ".caf";

struct ResolvedAlerts {
    bool enabled = true;
    std::optional<std::string> sound;  ///< the name of a clip, without its extension; none: silent
    bool operator==(const ResolvedAlerts&) const = default;
};
/// What a member's settings come to: alerts are on and sound "chime" unless they say otherwise, and a name that is not
/// one of the program's clips is "chime" as well.
[[nodiscard]] ResolvedAlerts resolveDesktopAlerts(const std::optional<records::DesktopAlerts>& alerts);

/// The requester and the note, or what there is of them; `fallback` if there is neither. An empty text counts as none.
[[nodiscard]] std::string notificationBody(const std::optional<std::string>& requesterName,
                                           const std::optional<std::string>& note, std::string_view fallback);

/// The words of the practice for a type of signal; "Ready" for a type that the state does not know.
[[nodiscard]] std::string typeLabel(const store::StoreState& state, std::string_view typeId,
                                    const platform::StringTable& strings);

/// The notification of a signal that was just created; none where this computer's member is not to be alerted.
///
/// A call to everyone, or to a department, alerts the providers on shift and nobody else, also where the queue shows it
/// to others; and the signal's status plays no part: what is over already is taken back by the next reconciliation.
[[nodiscard]] std::optional<platform::NotificationRequest> requestForNewSignal(const store::StoreState& state,
                                                                               const records::Signal& signal,
                                                                               const platform::StringTable& strings);

}  // namespace zelkovanta::alerts
