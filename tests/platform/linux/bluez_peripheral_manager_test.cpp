#include "platform/linux/bluez_peripheral_manager.h"

#include "platform/linux/bluez_objects.h"
#include "platform/linux/network_thread.h"
#include "platform/linux/qt_main_thread.h"
#include "tests/platform/linux/qt_loop.h"

#include <optional>
#include <vector>

#include <QCoreApplication>
#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMetaType>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusVariant>
#include <QUuid>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

using enum PeripheralManagerState;
using testing::ElementsAre;

const Advertisement room{.serviceUUIDs = {"6ba7b810-9dad-11d1-80b4-00c04fd430c8"}, .localName = "ZelkoVanta"};

/// BlueZ with one adapter, on a bus connection of its own. Like the real one it reads an advertisement before it
/// answers.
class FakeBluez final : public QDBusVirtualObject {
public:
    explicit FakeBluez(bool powered = true, bool advertises = true)
        : isPowered(powered),
          canAdvertise(advertises),
          bus_(QDBusConnection::connectToBus(QDBusConnection::SystemBus, QUuid::createUuid().toString())) {
        qDBusRegisterMetaType<BluezInterfaces>();
        qDBusRegisterMetaType<BluezObjects>();
        bus_.registerVirtualObject(QStringLiteral("/"), this, QDBusConnection::SubPath);
        bus_.registerService(bluezService);
    }
    ~FakeBluez() override {
        const QString name = bus_.name();
        bus_.unregisterObject(QStringLiteral("/"));
        bus_ = QDBusConnection(QString{});
        QDBusConnection::disconnectFromBus(name);
    }

    bool isPowered;
    bool canAdvertise;
    bool isForbidden = false;
    bool refuses = false;
    int questions = 0;
    int registrations = 0;
    int withdrawals = 0;
    std::optional<QVariantMap> advertised;

    void power(bool isOn) {
        isPowered = isOn;
        auto signal = QDBusMessage::createSignal(adapter_, QStringLiteral("org.freedesktop.DBus.Properties"),
                                                 QStringLiteral("PropertiesChanged"));
        signal.setArguments({bluezAdapter, QVariantMap{{QStringLiteral("Powered"), isOn}}, QStringList{}});
        bus_.send(signal);
    }
    void release() {
        bus_.send(QDBusMessage::createMethodCall(client_, path_, QStringLiteral("org.bluez.LEAdvertisement1"),
                                                 QStringLiteral("Release")));
        advertised.reset();
    }

    [[nodiscard]] QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection&) override {
        const QString method = message.member();
        if (method == QStringLiteral("GetManagedObjects")) {
            ++questions;
            bus_.send(isForbidden ? message.createErrorReply(QDBusError::AccessDenied, QStringLiteral("no"))
                                  : message.createReply(QVariant::fromValue(objects())));
        } else if (method == QStringLiteral("RegisterAdvertisement")) {
            EXPECT_EQ(message.path(), adapter_);
            ++registrations;
            readAdvertisement(message);
        } else if (method == QStringLiteral("UnregisterAdvertisement")) {
            ++withdrawals;
            advertised.reset();
            bus_.send(message.createReply());
        } else {
            return false;
        }
        return true;
    }

private:
    const QString adapter_ = QStringLiteral("/org/bluez/hci0");

    [[nodiscard]] BluezObjects objects() const {
        BluezInterfaces interfaces{{bluezAdapter, {{QStringLiteral("Powered"), isPowered}}}};
        if (canAdvertise) {
            interfaces[bluezAdvertising] = {{QStringLiteral("ActiveInstances"), QVariant::fromValue(uchar{0})}};
        }
        return {{QDBusObjectPath(QStringLiteral("/org/bluez")), {{QStringLiteral("org.bluez.AgentManager1"), {}}}},
                {QDBusObjectPath(adapter_), interfaces}};
    }

    void readAdvertisement(const QDBusMessage& message) {
        client_ = message.service();
        path_ = qvariant_cast<QDBusObjectPath>(message.arguments().at(0)).path();
        auto get = QDBusMessage::createMethodCall(client_, path_, QStringLiteral("org.freedesktop.DBus.Properties"),
                                                  QStringLiteral("GetAll"));
        get.setArguments({QStringLiteral("org.bluez.LEAdvertisement1")});
        auto* const watcher = new QDBusPendingCallWatcher(bus_.asyncCall(get), this);
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, message] {
            watcher->deleteLater();
            const auto answer = watcher->reply();
            if (refuses || answer.type() != QDBusMessage::ReplyMessage) {
                bus_.send(
                    message.createErrorReply(QStringLiteral("org.bluez.Error.NotPermitted"), QStringLiteral("no")));
                return;
            }
            advertised = qdbus_cast<QVariantMap>(answer.arguments().constFirst());
            bus_.send(message.createReply());
        });
    }

    QDBusConnection bus_;
    QString client_;
    QString path_;
};

struct BluezTest : testing::Test {
    struct Delegate final : PeripheralManagerDelegate {
        std::vector<PeripheralManagerState> states;
        void peripheralManagerDidUpdateState(PeripheralManager& teller) override { states.push_back(teller.state()); }
    };

    int count = 0;
    QCoreApplication application{count, nullptr};
    LastDeletions lastDeletions;
    QtMainThread mainThread;
    NetworkThread network;
    BluezPeripheralManagers managers{mainThread.executor(), network.makeWorkerQueue()};
    std::shared_ptr<Delegate> delegate = std::make_shared<Delegate>();
    std::optional<FakeBluez> bluez;
    std::unique_ptr<PeripheralManager> manager;

    ~BluezTest() override {
        manager.reset();
        network.stop();
        mainThread.end();
    }

    [[nodiscard]] bool becomes(PeripheralManagerState state) {
        return runUntil([&] { return !delegate->states.empty() && delegate->states.back() == state; });
    }
    void advertise() {
        bluez.emplace();
        manager = managers.make(delegate);
        ASSERT_TRUE(becomes(poweredOn));
        manager->startAdvertising(room);
        ASSERT_TRUE(runUntil([&] { return bluez->advertised.has_value(); }));
    }
};

TEST_F(BluezTest, nothingIsAskedBeforeAManagerIsMade) {
    bluez.emplace();
    BluezPeripheralManagers idle(mainThread.executor(), network.makeWorkerQueue());
    manager = managers.make(delegate);
    EXPECT_EQ(manager->state(), unknown);
    EXPECT_TRUE(becomes(poweredOn));
    EXPECT_EQ(bluez->questions, 1);
    EXPECT_EQ(bluez->registrations, 0);
}

TEST_F(BluezTest, anAdvertisementHoldsTheTwoEntriesAndNothingElse) {
    ASSERT_NO_FATAL_FAILURE(advertise());
    EXPECT_TRUE(manager->isAdvertising());
    const QVariantMap expected{{"Type", "peripheral"},
                               {"ServiceUUIDs", QStringList{"6ba7b810-9dad-11d1-80b4-00c04fd430c8"}},
                               {"LocalName", "ZelkoVanta"}};
    EXPECT_EQ(*bluez->advertised, expected);
    manager->startAdvertising(room);
    manager->stopAdvertising();
    EXPECT_FALSE(manager->isAdvertising());
    EXPECT_TRUE(runUntil([&] { return bluez->withdrawals == 1; }));
    EXPECT_EQ(bluez->registrations, 1);
}

TEST_F(BluezTest, aRadioThatIsSwitchedOffEndsTheAdvertisementAndSaysWhenItIsBack) {
    ASSERT_NO_FATAL_FAILURE(advertise());
    bluez->power(false);
    EXPECT_TRUE(becomes(poweredOff));
    EXPECT_FALSE(manager->isAdvertising());
    EXPECT_TRUE(runUntil([&] { return bluez->withdrawals == 1; }));
    manager->startAdvertising(room);
    bluez->power(true);
    EXPECT_TRUE(becomes(poweredOn));
    EXPECT_FALSE(manager->isAdvertising());
    manager->startAdvertising(room);
    EXPECT_TRUE(runUntil([&] { return bluez->advertised.has_value(); }));
    EXPECT_EQ(bluez->registrations, 2);
    EXPECT_THAT(delegate->states, ElementsAre(poweredOn, poweredOff, poweredOn));
}

TEST_F(BluezTest, aRefusalOrAReleaseLeavesNothingAdvertised) {
    bluez.emplace();
    bluez->refuses = true;
    manager = managers.make(delegate);
    ASSERT_TRUE(becomes(poweredOn));
    manager->startAdvertising(room);
    EXPECT_TRUE(manager->isAdvertising());
    EXPECT_TRUE(runUntil([&] { return !manager->isAdvertising(); }));
    bluez->refuses = false;
    manager->startAdvertising(room);
    ASSERT_TRUE(runUntil([&] { return bluez->advertised.has_value(); }));
    bluez->release();
    EXPECT_TRUE(runUntil([&] { return !manager->isAdvertising(); }));
}

TEST_F(BluezTest, aManagerThatGoesTakesItsAdvertisementAlong) {
    ASSERT_NO_FATAL_FAILURE(advertise());
    manager.reset();
    EXPECT_TRUE(runUntil([&] { return bluez->withdrawals == 1; }));
}

TEST_F(BluezTest, withoutBluezOrAnAdapterThatCanTheRadioIsUnsupportedUntilOneComes) {
    manager = managers.make(delegate);
    EXPECT_TRUE(becomes(unsupported));
    manager->startAdvertising(room);
    EXPECT_FALSE(manager->isAdvertising());
    manager->stopAdvertising();
    bluez.emplace(false, false);
    EXPECT_TRUE(runUntil([&] { return bluez->questions > 0; }));
    bluez.reset();
    bluez.emplace(false);
    EXPECT_TRUE(becomes(poweredOff));
    bluez.reset();
    EXPECT_TRUE(becomes(unsupported));
    bluez.emplace();
    EXPECT_TRUE(becomes(poweredOn));
}

TEST_F(BluezTest, aBusThatForbidsItIsSaidSo) {
    bluez.emplace();
    bluez->isForbidden = true;
    manager = managers.make(delegate);
    EXPECT_TRUE(becomes(unauthorized));
}

TEST(BluezRadioTest, theFirstPoweredAdapterThatCanAdvertiseIsUsed) {
    const auto adapter = [](bool isPowered, bool canAdvertise) {
        BluezInterfaces interfaces{{bluezAdapter, {{QStringLiteral("Powered"), isPowered}}}};
        if (canAdvertise) {
            interfaces[bluezAdvertising] = {};
        }
        return interfaces;
    };
    BluezObjects objects{{QDBusObjectPath("/a"), adapter(true, false)}};
    EXPECT_EQ(bluezRadio(objects), (BluezRadio{unsupported, {}}));
    objects[QDBusObjectPath("/b")] = adapter(false, true);
    EXPECT_EQ(bluezRadio(objects), (BluezRadio{poweredOff, {}}));
    objects[QDBusObjectPath("/c")] = adapter(true, true);
    objects[QDBusObjectPath("/d")] = adapter(true, true);
    EXPECT_EQ(bluezRadio(objects), (BluezRadio{poweredOn, QStringLiteral("/c")}));
    EXPECT_EQ(bluezRadio({}), (BluezRadio{unsupported, {}}));
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
