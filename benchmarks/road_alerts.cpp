#include "benchmarks/road_alerts.h"

#include "benchmarks/monotonic.h"
#include "platform/linux/profile.h"

#include <expected>
#include <utility>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QStringList>
#include <QVariantMap>

namespace zelkovanta::benchmarks {

namespace {

namespace host = platform::linux_host;

/// Notes when a new call was read, and passes everything on.
class StampedTask final : public platform::WebSocketTask {
public:
    StampedTask(std::shared_ptr<platform::WebSocketTask> task, std::atomic<std::int64_t>& callReadAt)
        : task_(std::move(task)), callReadAt_(callReadAt) {}

    void resume() override { task_->resume(); }
    platform::Awaitable<std::expected<platform::WebSocketFrame, platform::WebSocketFailure>> receive() override {
        auto frame = co_await task_->receive();
        const std::int64_t now = monotonicNow();
        if (frame && frame->payload.contains("\"signal.created\"")) {
            callReadAt_ = now;
        }
        co_return frame;
    }
    platform::Awaitable<bool> send(std::string text) override { return task_->send(std::move(text)); }
    void cancel(std::uint16_t closeCode) override { task_->cancel(closeCode); }

private:
    std::shared_ptr<platform::WebSocketTask> task_;
    std::atomic<std::int64_t>& callReadAt_;
};

class StampedSession final : public platform::WebSocketSession {
public:
    StampedSession(std::unique_ptr<platform::WebSocketSession> session, std::atomic<std::int64_t>& callReadAt)
        : session_(std::move(session)), callReadAt_(callReadAt) {}

    std::shared_ptr<platform::WebSocketTask> makeTask(platform::WebSocketRequest request) override {
        return std::make_shared<StampedTask>(session_->makeTask(std::move(request)), callReadAt_);
    }
    void invalidateAndCancel() override { session_->invalidateAndCancel(); }

private:
    std::unique_ptr<platform::WebSocketSession> session_;
    std::atomic<std::int64_t>& callReadAt_;
};

class StampedLoading final : public platform::WebSocketLoading {
public:
    StampedLoading(platform::WebSocketLoading& loading, std::atomic<std::int64_t>& callReadAt)
        : loading_(loading), callReadAt_(callReadAt) {}

    std::unique_ptr<platform::WebSocketSession> makeSession(platform::Executor executor) override {
        return std::make_unique<StampedSession>(loading_.makeSession(std::move(executor)), callReadAt_);
    }

private:
    platform::WebSocketLoading& loading_;
    std::atomic<std::int64_t>& callReadAt_;
};

/// Without players: what is heard comes after the notification, and is another program's work.
host::DesktopNotificationCenter::Settings centerSettings(const host::Environment& environment) {
    const auto roots = host::fileRootsFrom(environment, host::Profile{});
    return {.file = roots.state / "zelkovanta" / "notifications.json",
            .sounds = host::resourcesFolderFrom(environment, host::programFile()) / "sounds",
            .players = {}};
}

}  // namespace

RoadAlerts::RoadAlerts(host::QtMainThread& main, host::NetworkThread& network, platform::Clock& clock,
                       platform::RandomSource& random, platform::WebSocketLoading& webSockets)
    : webSockets_(std::make_unique<StampedLoading>(webSockets, callReadAt_)),
      strings_(host::resourcesFolderFrom(environment_, host::programFile()), environment_),
      center_(centerSettings(environment_), clock, main.executor(), network.makeWorkerQueue(),
              network.makeWorkerQueue()),
      service_(alerts::NotificationService::start(
          {.main = main.executor(), .center = center_, .random = random, .strings = strings_})) {}

RoadAlerts::~RoadAlerts() = default;

std::int64_t RoadAlerts::callBare() {
    const std::int64_t now = monotonicNow();
    const QString service = QStringLiteral("org.freedesktop.Notifications");
    auto message = QDBusMessage::createMethodCall(service, QStringLiteral("/org/freedesktop/Notifications"), service,
                                                  QStringLiteral("Notify"));
    const QStringList actions{QStringLiteral("default"),   QStringLiteral("ZelkoVanta"), QStringLiteral("ONMYWAY"),
                              QStringLiteral("On my way"), QStringLiteral("DONE"),       QStringLiteral("Done")};
    const QVariantMap hints{{QStringLiteral("desktop-entry"), QStringLiteral("com.zelkovanta.Desktop")},
                            {QStringLiteral("category"), QStringLiteral("im.received")},
                            {QStringLiteral("urgency"), QVariant::fromValue(uchar{1})},
                            {QStringLiteral("suppress-sound"), true}};
    message.setArguments({QString::fromLatin1(bareProgram), 0U, QStringLiteral("com.zelkovanta.Desktop"),
                          QStringLiteral("Room 3 · Patient ready"), QStringLiteral("Patient ready"), actions, hints,
                          0});
    QDBusConnection::sessionBus().asyncCall(message);
    return now;
}

}  // namespace zelkovanta::benchmarks
