#include "app/wiring.h"

#include "platform/linux/application_id.h"
#include "records/url.h"

#include <chrono>
#include <string>

#include <QCoreApplication>
#include <QGuiApplication>
#include <QString>
#include <QStyleHints>

namespace zelkovanta::app {

namespace {

records::Url defaultServerURL() {
    const auto url = records::Url::parse(ZELKOVANTA_SERVER_URL);
    if (!url) {
        qFatal("This build has no server address: \"%s\" is no URL.", ZELKOVANTA_SERVER_URL);
    }
    return *url;
}

}  // namespace

Wiring::Wiring(const platform::linux_host::LinuxHost::Settings& settings)
    : host_(settings),
      keyStore_(host_.keyStore(), settings.profile),
      strings_(host_.strings()),
      notifications_(alerts::NotificationService::start({.main = host_.mainThread().executor(),
                                                         .center = host_.userNotifications(),
                                                         .random = host_.random(),
                                                         .strings = strings_})),
      beacon_(alerts::BeaconAdvertiser::make(host_.peripheralManagers())),
      store_(startStore()) {
    QCoreApplication::installTranslator(&translator_);
    page_ = std::make_unique<screens::qml::PageModel>(
        store_, screens::qml::PagePorts{.main = host_.mainThread().executor(),
                                        .clock = host_.clock(),
                                        .strings = strings_,
                                        .defaults = host_.defaults(),
                                        .notes = notes_,
                                        .crash = crash_,
                                        .doubleClick = std::chrono::milliseconds{
                                            QGuiApplication::styleHints()->mouseDoubleClickInterval()}});
    mainWindow_.setPage(*page_, host_.appearance());
    host_.userNotifications().setRaiseHandler(
        [this](const std::string& token) { bringForward(QString::fromStdString(token)); });
    busPresence_ = std::make_unique<BusPresence>(settings.profile.applyToBusName(platform::linux_host::applicationId),
                                                 host_.sessionBusThread(), host_.mainThread().executor(),
                                                 [this](const QString& token) { bringForward(token); });
}

Wiring::~Wiring() {
    host_.userNotifications().setRaiseHandler({});
    busPresence_.reset();
    mainWindow_.close();
    page_.reset();
    store_.reset();
    host_.shutDown();
    QCoreApplication::removeTranslator(&translator_);
}

std::shared_ptr<store::AppStore> Wiring::startStore() {
    return store::AppStore::start({.main = host_.mainThread().executor(),
                                   .background = host_.background(),
                                   .clock = host_.clock(),
                                   .random = host_.random(),
                                   .urlLoading = host_.urlLoading(),
                                   .webSocketLoading = host_.webSockets(),
                                   .keyStore = keyStore_,
                                   .defaults = host_.defaults(),
                                   .information = host_.information(),
                                   .loginItem = host_.loginItem(),
                                   .hostInfo = host_.info(),
                                   .powerOff = host_.powerOff(),
                                   .notificationCenter = notificationCenter_,
                                   .strings = strings_,
                                   .defaultServerURL = defaultServerURL()},
                                  {.notifications = *notifications_,
                                   .notes = notes_,
                                   .crash = crash_,
                                   .updates = updates_,
                                   .beacon = *beacon_,
                                   .mainWindow = mainWindow_});
}

}  // namespace zelkovanta::app
