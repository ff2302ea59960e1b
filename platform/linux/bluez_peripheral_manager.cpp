#include "platform/linux/bluez_peripheral_manager.h"

#include "platform/linux/bluez_objects.h"
#include "platform/linux/dbus_calls.h"

#include <algorithm>
#include <utility>
#include <vector>

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusServiceWatcher>
#include <QObject>

namespace zelkovanta::platform::linux_host {

namespace {

const QString advertisementPath = QStringLiteral("/com/zelkovanta/Desktop/advertisement");
const QString objectsInterface = QStringLiteral("org.freedesktop.DBus.ObjectManager");
const QString propertiesInterface = QStringLiteral("org.freedesktop.DBus.Properties");

bool isOfRadio(const QString& interface) {
    return interface == bluezAdapter || interface == bluezAdvertising;
}

bool tellsOfRadio(const QDBusMessage& signal) {
    const auto arguments = signal.arguments();
    if (signal.member() == QStringLiteral("PropertiesChanged")) {
        return !arguments.isEmpty() && isOfRadio(arguments.constFirst().toString());
    }
    if (arguments.size() < 2) {
        return false;
    }
    const auto interfaces = signal.member() == QStringLiteral("InterfacesAdded")
                                ? QStringList(qdbus_cast<BluezInterfaces>(arguments[1]).keys())
                                : arguments[1].toStringList();
    return std::ranges::any_of(interfaces, isOfRadio);
}

class BluezPeripheralManager final : public PeripheralManager {
public:
    class State : public std::enable_shared_from_this<State> {
    public:
        State(PeripheralManager& manager, std::weak_ptr<PeripheralManagerDelegate> delegate, Executor main)
            : manager_(&manager), delegate_(std::move(delegate)), main_(std::move(main)) {}

        void begin(const Executor& connecting) {
            connectToBus(Bus::system, connecting, main_, [weak = weak_from_this()](bool isConnected) {
                const auto self = weak.lock();
                if (!self || self->manager_ == nullptr) {
                    return;
                }
                if (isConnected) {
                    self->follow();
                } else {
                    self->become({.state = PeripheralManagerState::unsupported, .adapter = {}});
                }
            });
        }

        void end() {
            stopAdvertising();
            manager_ = nullptr;
            signals_.clear();
            service_.reset();
            receiver_.reset();
        }

        [[nodiscard]] PeripheralManagerState state() const { return radio_.state; }
        [[nodiscard]] bool isAdvertising() const { return advertisement_ != nullptr; }

        void startAdvertising(const Advertisement& advertisement) {
            if (radio_.state != PeripheralManagerState::poweredOn || isAdvertising()) {
                return;
            }
            const auto number = ++advertisements_;
            const auto over = [this, number] {
                if (number == advertisements_) {
                    forgetAdvertisement();
                }
            };
            advertisement_.reset(new BluezAdvertisement(advertisement, over));
            auto bus = QDBusConnection::systemBus();
            bus.registerVirtualObject(advertisementPath, advertisement_.get());
            adapter_ = radio_.adapter;
            call(advertisingCall("RegisterAdvertisement",
                                 {QVariant::fromValue(QDBusObjectPath(advertisementPath)), QVariantMap{}}),
                 [over](const QDBusMessage& answer) {
                     if (answer.type() == QDBusMessage::ErrorMessage) {
                         over();
                     }
                 });
        }

        void stopAdvertising() {
            if (!isAdvertising()) {
                return;
            }
            QDBusConnection::systemBus().send(
                advertisingCall("UnregisterAdvertisement", {QVariant::fromValue(QDBusObjectPath(advertisementPath))}));
            forgetAdvertisement();
        }

    private:
        struct Later {
            // BlueZ may be talking to it at this moment.
            void operator()(QObject* object) const { object->deleteLater(); }
        };

        void follow() {
            receiver_ = std::make_unique<QObject>();
            const auto bus = QDBusConnection::systemBus();
            const auto hear = [&](const QString& interface, const char* name) {
                signals_.push_back(std::make_unique<DBusSignal>(
                    bus, QString{}, QString{}, interface, QString::fromLatin1(name),
                    [this](const QDBusMessage& signal) {
                        if (!owner_.isEmpty() && signal.service() == owner_ && tellsOfRadio(signal)) {
                            ask();
                        }
                    }));
            };
            hear(objectsInterface, "InterfacesAdded");
            hear(objectsInterface, "InterfacesRemoved");
            hear(propertiesInterface, "PropertiesChanged");
            service_ =
                std::make_unique<QDBusServiceWatcher>(bluezService, bus, QDBusServiceWatcher::WatchForOwnerChange);
            QObject::connect(service_.get(), &QDBusServiceWatcher::serviceOwnerChanged, receiver_.get(),
                             [this] { ask(); });
            ask();
        }

        /// The objects are few, so any change of a radio is answered by reading all of them anew.
        void ask() {
            const auto number = ++questions_;
            auto message = QDBusMessage::createMethodCall(bluezService, QStringLiteral("/"), objectsInterface,
                                                          QStringLiteral("GetManagedObjects"));
            message.setAutoStartService(false);
            call(message, [this, number](const QDBusMessage& answer) {
                if (number == questions_) {
                    owner_ = answer.type() == QDBusMessage::ReplyMessage ? answer.service() : QString{};
                    become(bluezRadioFrom(answer));
                }
            });
        }

        void become(const BluezRadio& radio) {
            if (isAdvertising() &&
                (radio.state != PeripheralManagerState::poweredOn || radio.adapter != adapter_ || owner_.isEmpty())) {
                stopAdvertising();
            }
            const bool isNews = std::exchange(radio_, radio).state != radio.state;
            if (const auto delegate = delegate_.lock(); delegate && isNews) {
                delegate->peripheralManagerDidUpdateState(*manager_);
            }
        }

        [[nodiscard]] QDBusMessage advertisingCall(const char* method, const QVariantList& arguments) const {
            auto message =
                QDBusMessage::createMethodCall(bluezService, adapter_, bluezAdvertising, QString::fromLatin1(method));
            message.setAutoStartService(false);
            message.setArguments(arguments);
            return message;
        }

        void call(const QDBusMessage& message, Completion<const QDBusMessage&> answer) {
            callBus(QDBusConnection::systemBus(), message, usualCallLimit, *receiver_, std::move(answer));
        }

        void forgetAdvertisement() {
            ++advertisements_;
            QDBusConnection::systemBus().unregisterObject(advertisementPath);
            advertisement_.reset();
        }

        PeripheralManager* manager_;
        std::weak_ptr<PeripheralManagerDelegate> delegate_;
        Executor main_;
        BluezRadio radio_;
        QString adapter_;  ///< where the advertisement is
        QString owner_;    ///< BlueZ by its own name on the bus
        std::unique_ptr<BluezAdvertisement, Later> advertisement_;
        std::uint64_t advertisements_ = 0;
        std::uint64_t questions_ = 0;
        std::vector<std::unique_ptr<DBusSignal>> signals_;
        std::unique_ptr<QDBusServiceWatcher> service_;
        std::unique_ptr<QObject> receiver_;
    };

    BluezPeripheralManager(std::weak_ptr<PeripheralManagerDelegate> delegate, Executor main, const Executor& connecting)
        : state_(std::make_shared<State>(*this, std::move(delegate), std::move(main))) {
        state_->begin(connecting);
    }
    ~BluezPeripheralManager() override { state_->end(); }
    BluezPeripheralManager(const BluezPeripheralManager&) = delete;
    BluezPeripheralManager& operator=(const BluezPeripheralManager&) = delete;

    [[nodiscard]] PeripheralManagerState state() const override { return state_->state(); }
    [[nodiscard]] bool isAdvertising() const override { return state_->isAdvertising(); }
    void startAdvertising(Advertisement advertisement) override { state_->startAdvertising(advertisement); }
    void stopAdvertising() override { state_->stopAdvertising(); }

private:
    std::shared_ptr<State> state_;
};

}  // namespace

BluezPeripheralManagers::BluezPeripheralManagers(Executor main, Executor connecting)
    : main_(std::move(main)), connecting_(std::move(connecting)) {}

std::unique_ptr<PeripheralManager> BluezPeripheralManagers::make(std::weak_ptr<PeripheralManagerDelegate> delegate) {
    return std::make_unique<BluezPeripheralManager>(std::move(delegate), main_, connecting_);
}

}  // namespace zelkovanta::platform::linux_host
