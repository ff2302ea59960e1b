#include "platform/linux/portal_appearance.h"

#include "platform/linux/network_thread.h"
#include "platform/linux/qt_main_thread.h"
#include "tests/platform/linux/qt_loop.h"

#include <chrono>
#include <memory>
#include <optional>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QDBusVirtualObject>
#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

using namespace std::chrono_literals;

const QString portalService = QStringLiteral("org.freedesktop.portal.Desktop");
const QString portalPath = QStringLiteral("/org/freedesktop/portal/desktop");
const QString settingsInterface = QStringLiteral("org.freedesktop.portal.Settings");
const QString appearanceGroup = QStringLiteral("org.freedesktop.appearance");
const QString colorSchemeKey = QStringLiteral("color-scheme");

/// A desktop portal with one setting, on a connection of its own.
class FakePortal final : public QDBusVirtualObject {
public:
    std::optional<unsigned int> scheme;  ///< none: this portal does not know the setting
    int questions = 0;

    explicit FakePortal(std::optional<unsigned int> of) : scheme(of) {
        bus_.registerVirtualObject(portalPath, this);
        bus_.registerService(portalService);
    }
    ~FakePortal() override {
        bus_.unregisterService(portalService);
        bus_.unregisterObject(portalPath);
        QDBusConnection::disconnectFromBus(QStringLiteral("portal"));
    }

    void change(const QString& group, const QString& key, const QVariant& value) {
        auto signal = QDBusMessage::createSignal(portalPath, settingsInterface, QStringLiteral("SettingChanged"));
        signal << group << key << QVariant::fromValue(QDBusVariant{value});
        bus_.send(signal);
    }

    [[nodiscard]] QString introspect(const QString&) const override { return {}; }
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        ++questions;
        const bool isKnown = message.member() == "Read" && message.interface() == settingsInterface &&
                             message.arguments() == QVariantList{appearanceGroup, colorSchemeKey} && scheme;
        return connection.send(
            isKnown ? message.createReply(QVariant::fromValue(QDBusVariant{QVariant::fromValue(QDBusVariant{*scheme})}))
                    : message.createErrorReply(QStringLiteral("org.freedesktop.portal.Error.NotFound"),
                                               QStringLiteral("No such setting")));
    }

private:
    QDBusConnection bus_ = QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("portal"));
};

struct PortalAppearanceTest : testing::Test {
    int count = 0;
    QCoreApplication application{count, nullptr};
    QtMainThread mainThread;
    NetworkThread network;
    std::optional<PortalAppearance> appearance;
    Observation observer;
    int changes = 0;

    void begin() {
        appearance.emplace(mainThread.executor(), network.makeWorkerQueue());
        observer = appearance->observe([this] { ++changes; });
    }
    bool becomes(ColorScheme scheme) {
        return runUntil([this, scheme] { return appearance->colorScheme() == scheme; });
    }
    ~PortalAppearanceTest() override {
        observer.reset();
        appearance.reset();
        network.stop();
        mainThread.end();
    }
};

TEST_F(PortalAppearanceTest, whatThePortalSaysIsTold) {
    const FakePortal portal{1};
    begin();
    EXPECT_EQ(appearance->colorScheme(), ColorScheme::unknown);
    EXPECT_TRUE(becomes(ColorScheme::dark));
    EXPECT_EQ(changes, 1);
}

TEST_F(PortalAppearanceTest, aChangeIsFollowed) {
    FakePortal portal{2};
    begin();
    EXPECT_TRUE(becomes(ColorScheme::light));
    portal.change(appearanceGroup, colorSchemeKey, 1U);
    EXPECT_TRUE(becomes(ColorScheme::dark));
    portal.change(appearanceGroup, colorSchemeKey, 0U);
    EXPECT_TRUE(becomes(ColorScheme::unknown));
    EXPECT_EQ(changes, 3);
}

TEST_F(PortalAppearanceTest, otherSettingsAndStrangeValuesChangeNothingOrAreUnknown) {
    FakePortal portal{1};
    begin();
    EXPECT_TRUE(becomes(ColorScheme::dark));
    portal.change(appearanceGroup, QStringLiteral("accent-color"), 2U);
    portal.change(QStringLiteral("org.gnome.desktop.interface"), colorSchemeKey, 2U);
    portal.change(appearanceGroup, colorSchemeKey, QStringLiteral("dark"));
    EXPECT_TRUE(becomes(ColorScheme::unknown));
    EXPECT_EQ(changes, 2) << "the first two were none of ours";
}

TEST_F(PortalAppearanceTest, aPortalThatComesLaterOrComesBackIsAskedThen) {
    begin();
    {
        const FakePortal portal{1};
        EXPECT_TRUE(becomes(ColorScheme::dark));
    }
    const FakePortal portal{2};
    EXPECT_TRUE(becomes(ColorScheme::light));
}

TEST_F(PortalAppearanceTest, aPortalWithoutTheSettingLeavesItUnknown) {
    FakePortal portal{std::nullopt};
    begin();
    EXPECT_TRUE(runUntil([&] { return portal.questions > 0; }));
    portal.change(appearanceGroup, colorSchemeKey, 2U);
    EXPECT_TRUE(becomes(ColorScheme::light));
    EXPECT_EQ(changes, 1) << "nothing before that";
}

TEST_F(PortalAppearanceTest, nothingIsToldOnceStopped) {
    FakePortal portal{1};
    begin();
    EXPECT_TRUE(becomes(ColorScheme::dark));
    appearance->stop();
    const int questions = portal.questions;
    portal.change(appearanceGroup, colorSchemeKey, 2U);
    PortalAppearance other(mainThread.executor(), network.makeWorkerQueue());
    EXPECT_TRUE(runUntil([&] { return portal.questions > questions; }));
    EXPECT_EQ(appearance->colorScheme(), ColorScheme::dark);
    EXPECT_EQ(changes, 1);
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
