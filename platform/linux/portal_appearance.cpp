#include "platform/linux/portal_appearance.h"

#include "platform/linux/dbus_calls.h"
#include "platform/observer_list.h"

#include <optional>
#include <utility>

#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QDBusVariant>

namespace zelkovanta::platform::linux_host {

namespace {

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const QString colorSchemeKey = QStringLiteral("color-scheme");

/// A reply wraps its value once more than a signal does.
ColorScheme schemeIn(QVariant value) {
    while (value.metaType() == QMetaType::fromType<QDBusVariant>()) {
        value = qvariant_cast<QDBusVariant>(value).variant();
    }
    constexpr unsigned int preferDark = 1;
    constexpr unsigned int preferLight = 2;
    if (value.metaType() != QMetaType::fromType<unsigned int>()) {
        return ColorScheme::unknown;
    }
    switch (value.toUInt()) {
        case preferDark:
            return ColorScheme::dark;
        case preferLight:
            return ColorScheme::light;
        default:
            return ColorScheme::unknown;
    }
}

}  // namespace

class PortalAppearance::State : public std::enable_shared_from_this<State> {
public:
    explicit State(Executor mainThread) : mainThread_(std::move(mainThread)) {}

    void begin(const Executor& connecting) {
        connectToBus(Bus::session, connecting, mainThread_, [weak = weak_from_this()](bool isConnected) {
            if (const auto self = weak.lock(); self && isConnected) {
                self->follow();
            }
        });
    }

    void end() {
        isEnded_ = true;
        changed_.reset();
        portal_.reset();
        observers_.clear();
    }

    [[nodiscard]] ColorScheme scheme() const { return scheme_; }

    Observation observe(std::function<void()> handler) { return observers_.add(std::move(handler)); }

private:
    void follow() {
        if (isEnded_) {
            return;
        }
        const auto bus = QDBusConnection::sessionBus();
        // Heard before it is asked, so that no change falls between the two.
        changed_.emplace(bus, portalService, portalPath, settingsInterface, QStringLiteral("SettingChanged"),
                         [this](const QDBusMessage& signal) { settingChanged(signal); });
        portal_.emplace(portalService, bus, QDBusServiceWatcher::WatchForRegistration);
        QObject::connect(&*portal_, &QDBusServiceWatcher::serviceRegistered, &receiver_, [this] { ask(); });
        ask();
    }

    void ask() {
        auto call =
            QDBusMessage::createMethodCall(portalService, portalPath, settingsInterface, QStringLiteral("Read"));
        call.setArguments({appearanceGroup, colorSchemeKey});
        callBus(QDBusConnection::sessionBus(), call, usualCallLimit, receiver_,
                [this, changesBefore = changes_](const QDBusMessage& answer) {
                    const auto arguments = answer.arguments();
                    // What was told meanwhile is newer than the answer.
                    if (!isEnded_ && answer.type() == QDBusMessage::ReplyMessage && !arguments.isEmpty() &&
                        changesBefore == changes_) {
                        become(schemeIn(arguments.constFirst()));
                    }
                });
    }

    void settingChanged(const QDBusMessage& signal) {
        const auto arguments = signal.arguments();
        if (arguments.size() == 3 && arguments[0] == appearanceGroup && arguments[1] == colorSchemeKey) {
            ++changes_;
            become(schemeIn(arguments[2]));
        }
    }

    void become(ColorScheme scheme) {
        if (std::exchange(scheme_, scheme) == scheme) {
            return;
        }
        observers_.tell();
    }

    Executor mainThread_;
    ColorScheme scheme_ = ColorScheme::unknown;
    int changes_ = 0;
    bool isEnded_ = false;
    ObserverList<> observers_;
    std::optional<DBusSignal> changed_;
    std::optional<QDBusServiceWatcher> portal_;
    QObject receiver_;
};

PortalAppearance::PortalAppearance(Executor mainThread, Executor connecting)
    : state_(std::make_shared<State>(std::move(mainThread))) {
    state_->begin(connecting);
}

PortalAppearance::~PortalAppearance() {
    stop();
}

void PortalAppearance::stop() {
    state_->end();
}

ColorScheme PortalAppearance::colorScheme() const {
    return state_->scheme();
}

Observation PortalAppearance::observe(std::function<void()> handler) {
    return state_->observe(std::move(handler));
}

}  // namespace zelkovanta::platform::linux_host
