#pragma once

#include "alerts/notification_service.h"
#include "platform/linux/desktop_notification_center.h"
#include "platform/linux/environment.h"
#include "platform/linux/gettext_string_table.h"
#include "platform/linux/network_thread.h"
#include "platform/linux/qt_main_thread.h"
#include "platform/random_source.h"
#include "platform/web_socket.h"

#include <atomic>
#include <cstdint>
#include <memory>
#include <string>

namespace zelkovanta::benchmarks {

inline constexpr auto bareProgram = "bare";

/// The program's alerts, whole, and the time at which a web socket had read what they tell of. Main thread.
class RoadAlerts {
public:
    /// The references must outlive it.
    RoadAlerts(platform::linux_host::QtMainThread& main, platform::linux_host::NetworkThread& network,
               platform::Clock& clock, platform::RandomSource& random, platform::WebSocketLoading& webSockets);
    ~RoadAlerts();
    RoadAlerts(const RoadAlerts&) = delete;
    RoadAlerts& operator=(const RoadAlerts&) = delete;

    [[nodiscard]] platform::WebSocketLoading& webSockets() { return *webSockets_; }
    [[nodiscard]] alerts::NotificationService& service() { return *service_; }
    [[nodiscard]] platform::linux_host::DesktopNotificationCenter& center() { return center_; }
    [[nodiscard]] std::int64_t callReadAt() const { return callReadAt_; }
    /// Has the daemon show what the alerts would have it show, with one call in the name of `bareProgram`, and does not
    /// wait. Gives the time before it.
    [[nodiscard]] static std::int64_t callBare();

private:
    std::atomic<std::int64_t> callReadAt_ = 0;
    std::unique_ptr<platform::WebSocketLoading> webSockets_;
    platform::linux_host::Environment environment_ = platform::linux_host::processEnvironment();
    platform::linux_host::GettextStringTable strings_;
    platform::linux_host::DesktopNotificationCenter center_;
    std::shared_ptr<alerts::NotificationService> service_;
};

}  // namespace zelkovanta::benchmarks
