#pragma once

#include "platform/linux/beast_web_socket.h"
#include "platform/linux/bluez_peripheral_manager.h"
#include "platform/linux/boottime_clock.h"
#include "platform/linux/bundle_information.h"
#include "platform/linux/bus_threads.h"
#include "platform/linux/curl_url_session.h"
#include "platform/linux/desktop_notification_center.h"
#include "platform/linux/environment.h"
#include "platform/linux/gettext_string_table.h"
#include "platform/linux/ini_user_defaults.h"
#include "platform/linux/linux_host_info.h"
#include "platform/linux/network_thread.h"
#include "platform/linux/os_random.h"
#include "platform/linux/portal_appearance.h"
#include "platform/linux/power_off.h"
#include "platform/linux/profile.h"
#include "platform/linux/qt_main_thread.h"
#include "platform/linux/secret_service_key_store.h"
#include "platform/linux/xdg_login_item.h"

#include <filesystem>

namespace zelkovanta::platform::linux_host {

/// This computer, as the program needs it: every port in its real form, for one profile.
///
/// To be made on the main thread once the QCoreApplication is there (a QGuiApplication where the end of the desktop
/// session shall be noticed), and destroyed before it, after everything that uses a port.
class LinuxHost {
public:
    struct Settings {
        Profile profile{};
        FileRoots roots;
        std::filesystem::path resources;
        std::filesystem::path program;
        Environment environment;
        std::filesystem::path facts = "/";  ///< as `HostSources::root`
    };

    /// The settings of this process for its profile.
    [[nodiscard]] static Settings settingsOfThisProcess(Profile profile);

    explicit LinuxHost(const Settings& settings);
    /// Shuts down, if that was not done before.
    ~LinuxHost();
    LinuxHost(const LinuxHost&) = delete;
    LinuxHost& operator=(const LinuxHost&) = delete;

    /// Brings tokens to the key store (one second at most) and the settings to the disk (two), ends all traffic and
    /// stops the threads. To be called when the event loop has ended and nothing is to be asked of the host any more;
    /// ports may still be called, and do nothing.
    void shutDown();

    [[nodiscard]] QtMainThread& mainThread() { return mainThread_; }
    [[nodiscard]] NetworkThread& background() { return network_; }
    /// Where the session bus may be connected to.
    [[nodiscard]] Executor sessionBusThread() { return buses_.session(); }
    [[nodiscard]] Clock& clock() { return clock_; }
    [[nodiscard]] RandomSource& random() { return random_; }
    [[nodiscard]] UrlLoading& urlLoading() { return urlLoading_; }
    [[nodiscard]] WebSocketLoading& webSockets() { return webSockets_; }
    [[nodiscard]] KeyStore& keyStore() { return keyStore_; }
    [[nodiscard]] UserDefaults& defaults() { return defaults_; }
    [[nodiscard]] InformationDictionary& information() { return information_; }
    [[nodiscard]] LoginItem& loginItem() { return loginItem_; }
    [[nodiscard]] PowerOffNotifications& powerOff() { return powerOff_; }
    [[nodiscard]] DesktopNotificationCenter& userNotifications() { return userNotifications_; }
    [[nodiscard]] PeripheralManagers& peripheralManagers() { return peripheralManagers_; }
    [[nodiscard]] Appearance& appearance() { return appearance_; }
    [[nodiscard]] HostInfo& info() { return info_; }
    [[nodiscard]] const StringTable& strings() const { return strings_; }

private:
    // What work comes back to is declared before what does the work, and so outlives it.
    QtMainThread mainThread_;
    NetworkThread network_;
    BusThreads buses_;
    SessionBusId sessionBusId_;
    BoottimeClock clock_;
    OsRandom random_;
    LinuxHostInfo info_;
    CurlUrlLoading urlLoading_;
    BeastWebSocketLoading webSockets_;
    SecretServiceKeyStore keyStore_;
    IniUserDefaults defaults_;
    BundleInformation information_;
    GettextStringTable strings_;
    XdgLoginItem loginItem_;
    PowerOff powerOff_;
    DesktopNotificationCenter userNotifications_;
    BluezPeripheralManagers peripheralManagers_;
    PortalAppearance appearance_;
    bool isShutDown_ = false;
};

}  // namespace zelkovanta::platform::linux_host
