#pragma once

#include "platform/simulated/simulated_notification_center.h"
#include "store/store_state.h"
#include "tests/simulation/verdict.h"

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <string>
#include <string_view>

namespace zelkovanta::simulation {

/// Knows what should stand in the notification centre of one computer, by rules that are written down here a second
/// time. It sees what the store tells the alerts, and what people do in the centre.
class NotificationWatch {
public:
    /// A program was started. Until it has looked into the centre for the first time, what the last one left may stand.
    void launched() { hasReconciled_ = false; }
    void created(const store::StoreState& state, const records::Signal& signal);
    void updated(const store::StoreState& state, const records::Signal& signal, const records::Signal* previous);
    void reconciled(std::span<const std::string_view> openIds, std::optional<std::string_view> memberId);
    /// A person pressed a notification or took it away.
    void takenAway(std::string_view identifier);
    /// The desktop's session ended with everything that it showed.
    void cleared();

    /// What the centre shows, or does not show, against the rules; asked while nothing is on its way to or from it.
    [[nodiscard]] std::optional<std::string> complaint(const store::StoreState& state,
                                                       const platform::simulated::SimulatedNotificationCenter& center);

private:
    struct Posted {
        std::string memberId;
        /// The signal was not open for the member for a moment, so that the notification may be gone or not: whoever
        /// asked for it was overtaken by the next change, or was not.
        bool wasClosed = false;
    };
    [[nodiscard]] std::optional<std::string> complaintOf(const store::StoreState& state,
                                                         const platform::NotificationRequest& shown) const;

    std::map<std::string, Posted, std::less<>> posted_;  ///< by the signal's id; neither pressed nor dismissed
    std::set<std::string, std::less<>> open_;            ///< as the store told it last
    std::int64_t notices_ = 0;                           ///< that should stand in the centre
    bool hasReconciled_ = false;
};

}  // namespace zelkovanta::simulation
