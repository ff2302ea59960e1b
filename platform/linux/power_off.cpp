#include "platform/linux/power_off.h"

#include "platform/linux/dbus_calls.h"

#include <algorithm>
#include <chrono>
#include <csignal>
#include <optional>
#include <utility>

#include <QCoreApplication>
#include <QDBusConnection>
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

}  // namespace

class PowerOff::State : public std::enable_shared_from_this<State> {
public:
    State(Clock& clock, asio::io_context& network, Executor mainThread, const StringTable& strings,
          std::function<void()> quit)
        : clock_(clock),
          mainThread_(std::move(mainThread)),
          strings_(strings),
          quit_(std::move(quit)),
          signals_(network, SIGTERM) {}

    void begin(const Executor& connecting) {
        waitForSignal();
        if (auto* const application = qobject_cast<QGuiApplication*>(QCoreApplication::instance())) {
            QObject::connect(
                application, &QGuiApplication::commitDataRequest, &receiver_, [this] { logOutAnnounced(); },
                Qt::DirectConnection);
        }
        connectToBus(Bus::system, connecting, mainThread_, [self = shared_from_this()](bool isConnected) {
            if (isConnected) {
                self->follow();
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

    Observation observe(std::function<void()> handler) { return observers_.add(std::move(handler)); }

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
        observers_.tell();
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
                           QString::fromStdString(strings_.localized("Signing out of this computer")),
                           QStringLiteral("delay")});
        callBus(QDBusConnection::systemBus(), call, usualCallLimit, receiver_, [this](const QDBusMessage& answer) {
            const auto arguments = answer.arguments();
            // A lock that was granted while the shutdown was announced would hold it up for nothing.
            if (answer.type() == QDBusMessage::ReplyMessage && !arguments.isEmpty() && !isShuttingDown_) {
                lock_ = qvariant_cast<QDBusUnixFileDescriptor>(arguments.constFirst());
            }
        });
    }

    Clock& clock_;
    Executor mainThread_;
    const StringTable& strings_;
    std::function<void()> quit_;
    asio::signal_set signals_;
    /// Held open while a shutdown shall wait for us.
    QDBusUnixFileDescriptor lock_;
    ObserverList<> observers_;
    bool hasRun_ = false;
    bool isShuttingDown_ = false;
    bool isEnded_ = false;
    /// Withdrawn by what ends more than the desktop session.
    Timer logOutIsOver_;
    std::optional<DBusSignal> announced_;
    std::optional<QDBusServiceWatcher> loginServiceAppears_;
    QObject receiver_;
};

PowerOff::PowerOff(Clock& clock, asio::io_context& network, const Executor& connecting, Executor mainThread,
                   const StringTable& strings, std::function<void()> quit)
    : state_(std::make_shared<State>(clock, network, std::move(mainThread), strings, std::move(quit))) {
    state_->begin(connecting);
}

PowerOff::~PowerOff() {
    stop();
}

void PowerOff::stop() {
    state_->end();
}

Observation PowerOff::observe(std::function<void()> handler) {
    return state_->observe(std::move(handler));
}

}  // namespace zelkovanta::platform::linux_host
