#pragma once

#include "alerts/beacon_advertiser.h"
#include "alerts/notification_service.h"
#include "app/bus_presence.h"
#include "app/later_services.h"
#include "app/main_window.h"
#include "app/profile_key_store.h"
#include "platform/linux/linux_host.h"
#include "platform/notification_center.h"
#include "platform/string_table.h"
#include "screens/qml/page_model.h"
#include "screens/qml/string_table_translator.h"
#include "store/app_store.h"

#include <memory>

class QString;

namespace zelkovanta::app {

/// The program behind its one window: this computer's ports, the store over them, and the page over the store.
///
/// Main thread, between the making of the QGuiApplication and its end.
class Wiring {
public:
    explicit Wiring(const platform::linux_host::LinuxHost::Settings& settings);
    /// Ends the session of this run in order; waits two seconds at most for the settings to reach the disk.
    ~Wiring();
    Wiring(const Wiring&) = delete;
    Wiring& operator=(const Wiring&) = delete;

    /// Shows the window. Without a tray there is no other way to the program.
    void showWindow() { mainWindow_.show(); }
    /// In answer to the person.
    void bringForward(const QString& activationToken) { mainWindow_.bringForward(activationToken); }

private:
    [[nodiscard]] std::shared_ptr<store::AppStore> startStore();

    platform::linux_host::LinuxHost host_;
    ProfileKeyStore keyStore_;
    platform::NotificationCenter notificationCenter_;
    const platform::StringTable& strings_;
    screens::qml::StringTableTranslator translator_{strings_};

    std::shared_ptr<alerts::NotificationService> notifications_;
    std::shared_ptr<alerts::BeaconAdvertiser> beacon_;
    NoNoteRegistry notes_;
    NoCrashSession crash_;
    NoUpdateService updates_;
    MainWindow mainWindow_;

    std::shared_ptr<store::AppStore> store_;
    std::unique_ptr<screens::qml::PageModel> page_;
    std::unique_ptr<BusPresence> busPresence_;
};

}  // namespace zelkovanta::app
