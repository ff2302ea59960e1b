#include "platform/linux/power_off.h"

#include "platform/linux/dbus_calls.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <list>
#include <optional>
#include <utility>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusPendingCall>
#include <QDBusPendingCallWatcher>
#include <QDBusServiceWatcher>
#include <QDBusUnixFileDescriptor>
#include <QGuiApplication>
#include <boost/asio/io_context.hpp>
#include <boost/asio/post.hpp>
#include <boost/asio/signal_set.hpp>

namespace zelkovanta::platform::linux_host {

namespace asio = boost::asio;

namespace {

const QString loginService = QStringLiteral("org.freedesktop.login1");
const QString loginPath = QStringLiteral("/org/freedesktop/login1");
const QString loginInterface = QStringLiteral("org.freedesktop.login1.Manager");

/// How long a desktop session may take to end once it was announced.
constexpr std::chrono::seconds logOutLimit{30};

/// What one observer asked to be called.
class Registration final : public PowerOffNotifications::Observer {
public:
    explicit Registration(std::shared_ptr<std::function<void()>> handler) : handler_(std::move(handler)) {}

private:
    std::shared_ptr<std::function<void()>> handler_;
};

}  // namespace

class PowerOff::State : public std::enable_shared_from_this<State> {
public:
    State(Clock& clock, asio::io_context& network, Executor workers, Executor mainThread, std::function<void()> quit)
        : clock_(clock),
          workers_(std::move(workers)),
          mainThread_(std::move(mainThread)),
          quit_(std::move(quit)),
          signals_(network, SIGTERM) {}

    void begin() {
        waitForSignal();
        if (auto* const application = qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
            QObject::connect(
                application, &QGuiApplication::commitDataRequest, &receiver_, [this] { logOutAnnounced(); },
                Qt::DirectConnection);
        }
        asio::post(workers_, [self = shared_from_this()] {
            if (QDBusConnection::systemBus().isConnected()) {
                asio::post(self->mainThread_, [self] { self->follow(); });
            }
        });
    }

    void follow() {
        if (isEnded_) {
            return;
        }
        const auto bus = QDBusConnection::systemBus();
        // Subscribed before the lock is taken: a shutdown in between would be held up by somebody who never heard of
        // it.
        announced_.emplace(bus, loginService, loginPath, loginInterface, QStringLiteral("PrepareForShutdown"),
                           [this](const QDBusMessage& signal) { shutdownAnnounced(signal); });
        loginServiceAppears_.emplace(loginService, bus, QDBusServiceWatcher::WatchForRegistration);
        QObject::connect(&*loginServiceAppears_, &QDBusServiceWatcher::serviceRegistered, &receiver_,
                         [this] { takeLock(); });
        takeLock();
    }

    void end() {
        if (std::exchange(isEnded_, true)) {
            return;
        }
        asio::post(signals_.get_executor(), [self = shared_from_this()] {
            boost::system::error_code ignored;
            self->signals_.cancel(ignored);
        });
        logOutIsOver_.reset();
        announced_.reset();
        loginServiceAppears_.reset();
        lock_ = {};
    }

    std::unique_ptr<Observer> observe(std::function<void()> handler) {
        auto shared = std::make_shared<std::function<void()>>(std::move(handler));
        std::erase_if(handlers_, [](const auto& weak) { return weak.expired(); });
        handlers_.push_back(shared);
        return std::make_unique<Registration>(std::move(shared));
    }

private:
    void waitForSignal() {
        signals_.async_wait([self = shared_from_this()](boost::system::error_code withdrawn, int) {
            if (withdrawn) {
                return;
            }
            asio::post(self->mainThread_, [self] {
                if (!self->isEnded_) {
                    self->logOutIsOver_.reset();
                    self->run();
                    self->quit_();
                }
            });
            self->waitForSignal();
        });
    }

    void run() {
        if (std::exchange(hasRun_, true)) {
            return;
        }
        // A copy, since a handler may end its own or another's observation.
        const auto handlers = handlers_;
        for (const auto& weak : handlers) {
            if (const auto handler = weak.lock()) {
                (*handler)();
            }
        }
    }

    void logOutAnnounced() {
        if (isEnded_) {
            return;
        }
        run();
        if (!isShuttingDown_) {
            logOutIsOver_ = clock_.callAfter(logOutLimit, mainThread_, [this] { hasRun_ = false; });
        }
    }

    void shutdownAnnounced(const QDBusMessage& signal) {
        const bool isBeginning = !signal.arguments().isEmpty() && signal.arguments().constFirst().toBool();
        isShuttingDown_ = isBeginning;
        logOutIsOver_.reset();
        if (isBeginning) {
            run();
            lock_ = {};
        } else {
            hasRun_ = false;
            takeLock();
        }
    }

    void takeLock() {
        auto call = QDBusMessage::createMethodCall(loginService, loginPath, loginInterface, QStringLiteral("Inhibit"));
        call.setAutoStartService(false);
        call.setArguments({QStringLiteral("shutdown"), QStringLiteral("ZelkoVanta"),
                           QStringLiteral("Signing out of this computer"), QStringLiteral("delay")});
        auto* const watcher = new QDBusPendingCallWatcher(QDBusConnection::systemBus().asyncCall(call), &receiver_);
        QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &receiver_, [this, watcher] {
            const auto arguments = watcher->reply().arguments();
            // A lock that was granted while the shutdown was announced would hold it up for nothing.
            if (!watcher->isError() && !arguments.isEmpty() && !isShuttingDown_) {
                lock_ = qvariant_cast<QDBusUnixFileDescriptor>(arguments.constFirst());
            }
            watcher->deleteLater();
        });
    }

    Clock& clock_;
    Executor workers_;
    Executor mainThread_;
    std::function<void()> quit_;
    asio::signal_set signals_;
    /// Held open while a shutdown shall wait for us.
    QDBusUnixFileDescriptor lock_;
    std::list<std::weak_ptr<std::function<void()>>> handlers_;
    bool hasRun_ = false;
    bool isShuttingDown_ = false;
    bool isEnded_ = false;
    /// Withdrawn by what ends more than the desktop session.
    Timer logOutIsOver_;
    std::optional<DBusSignal> announced_;
    std::optional<QDBusServiceWatcher> loginServiceAppears_;
    QObject receiver_;
};

PowerOff::PowerOff(Clock& clock, asio::io_context& network, Executor workers, Executor mainThread,
                   std::function<void()> quit)
    : state_(std::make_shared<State>(clock, network, std::move(workers), std::move(mainThread), std::move(quit))) {
    state_->begin();
}

PowerOff::~PowerOff() {
    stop();
}

void PowerOff::stop() {
    state_->end();
}

std::unique_ptr<PowerOffNotifications::Observer> PowerOff::observe(std::function<void()> handler) {
    return state_->observe(std::move(handler));
}

}  // namespace zelkovanta::platform::linux_host
