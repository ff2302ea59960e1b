#pragma once

#include "tests/platform/linux/fake_notification_daemon.h"

#include <vector>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusVirtualObject>

namespace zelkovanta::platform::linux_host {

/// The fake daemon as "org.freedesktop.Notifications", on a bus connection of its own. Runs in the test's event loop.
class NotificationDaemonOnBus final : public QDBusVirtualObject {
public:
    enum class Behaviour : std::uint8_t { answers, isSilent, refuses };

    explicit NotificationDaemonOnBus(DaemonQuirks quirks);
    ~NotificationDaemonOnBus() override;

    void vanish();
    /// Answers what a silent daemon was asked.
    void answerNow();

    Behaviour behaviour = Behaviour::answers;
    bool isInhibited = false;
    int silenceQuestions = 0;  ///< how often that was asked
    FakeNotificationDaemon daemon;
    std::vector<QDBusMessage> posts;      ///< every "Notify", in order
    std::vector<std::uint32_t> closings;  ///< every "CloseNotification"

    [[nodiscard]] QString introspect(const QString& path) const override;
    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override;

private:
    void notify(const QDBusMessage& message);
    void tell(const ledger::Event& event);

    QDBusConnection bus_;
    std::vector<QDBusMessage> unanswered_;
};

}  // namespace zelkovanta::platform::linux_host
