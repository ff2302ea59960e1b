#include "platform/linux/bus_threads.h"

#include "platform/linux/linux_host_info.h"

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <filesystem>
#include <limits>
#include <mutex>
#include <optional>
#include <stop_token>
#include <system_error>
#include <utility>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QString>
#include <QUuid>
#include <boost/asio/post.hpp>
#include <boost/asio/thread_pool.hpp>

namespace zelkovanta::platform::linux_host {

namespace asio = boost::asio;

namespace {

using namespace std::chrono_literals;

constexpr const char* systemSocket = "unix:path=/run/dbus/system_bus_socket";

/// None where the bus library looks for the bus, or begins one, in a way of its own.
std::optional<std::string> sessionAddress(const Environment& environment) {
    if (auto address = environment("DBUS_SESSION_BUS_ADDRESS")) {
        return address->starts_with("autolaunch:") ? std::nullopt : std::move(address);
    }
    const auto runtime = environment("XDG_RUNTIME_DIR");
    std::error_code missing;
    return runtime && std::filesystem::exists(*runtime + "/bus", missing)
               ? std::optional{"unix:path=" + *runtime + "/bus"}
               : std::nullopt;
}

/// Returns once something has come back from this address, `stop`, or after `limit`; gives whether something has.
bool waitUntilItAnswers(const std::string& address, const std::stop_token& stop,
                        std::chrono::milliseconds limit = std::chrono::milliseconds::max()) {
    bool hasAnswered = true;
    const QString name = QUuid::createUuid().toString();
    // As a peer, since as a bus the library would wait for the greeting's answer.
    const QDBusConnection peer = QDBusConnection::connectToPeer(QString::fromStdString(address), name);
    if (peer.isConnected()) {
        const auto greeting = QDBusMessage::createMethodCall(
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
            QStringLiteral("org.freedesktop.DBus"), QStringLiteral("Hello"));
        const QDBusPendingCall answer = peer.asyncCall(greeting, std::numeric_limits<int>::max());
        std::mutex mutex;
        std::condition_variable_any never;
        std::unique_lock lock(mutex);
        // Nobody tells of the answer without an event loop.
        for (auto pause = 1ms; !answer.isFinished() && !stop.stop_requested() && limit > 0ms;
             limit -= pause, pause = std::min(pause * 2, 100ms)) {
            never.wait_for(lock, stop, pause, [] { return false; });
        }
        hasAnswered = answer.isFinished();
    }
    QDBusConnection::disconnectFromPeer(name);
    return hasAnswered;
}

}  // namespace

void leaveSilentSessionBusAlone(const Environment& environment, std::chrono::milliseconds limit) {
    const auto address = sessionAddress(environment);
    if (address && !waitUntilItAnswers(*address, std::stop_token{}, limit)) {
        qputenv("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    }
}

class BusThreads::Bus {
public:
    explicit Bus(const std::optional<std::string>& address) {
        if (address) {
            asio::post(thread_, [address = *address, stop = stopping_.get_token()] {
                static_cast<void>(waitUntilItAnswers(address, stop));
            });
        }
    }
    ~Bus() { stop(); }
    Bus(const Bus&) = delete;
    Bus& operator=(const Bus&) = delete;

    [[nodiscard]] Executor executor() { return thread_.get_executor(); }

    void stop() {
        thread_.stop();
        stopping_.request_stop();
        thread_.join();
    }

private:
    std::stop_source stopping_;
    asio::thread_pool thread_{1};
};

BusThreads::BusThreads(const Environment& environment)
    : session_(std::make_unique<Bus>(sessionAddress(environment))),
      system_(std::make_unique<Bus>(environment("DBUS_SYSTEM_BUS_ADDRESS").value_or(systemSocket))) {}

BusThreads::~BusThreads() = default;

Executor BusThreads::session() {
    return session_->executor();
}

Executor BusThreads::system() {
    return system_->executor();
}

void BusThreads::stop() {
    session_->stop();
    system_->stop();
}

class SessionBusId::Asking : public std::enable_shared_from_this<Asking> {
public:
    Asking(Executor connecting, std::function<std::string()> ask)
        : connecting_(std::move(connecting)), ask_(std::move(ask)) {}

    std::string value() {
        const std::scoped_lock lock(mutex_);
        if (id_.empty() && !std::exchange(isAsking_, true)) {
            asio::post(connecting_, [self = shared_from_this()] { self->find(); });
        }
        return id_;
    }

private:
    void find() {
        std::string id;
        for (int tries = 0; id.empty() && tries < mostTries; ++tries) {
            id = ask_();
        }
        const std::scoped_lock lock(mutex_);
        id_ = std::move(id);
        isAsking_ = false;
    }

    static constexpr int mostTries = 3;

    const Executor connecting_;
    const std::function<std::string()> ask_;
    std::mutex mutex_;
    std::string id_;
    bool isAsking_ = false;
};

SessionBusId::SessionBusId(Executor connecting, std::function<std::string()> ask)
    : asking_(std::make_shared<Asking>(std::move(connecting), std::move(ask))) {}

SessionBusId::SessionBusId(Executor connecting)
    : SessionBusId(std::move(connecting), HostSources::ofThisComputer().sessionBusId) {}

SessionBusId::~SessionBusId() = default;

std::string SessionBusId::value() const {
    return asking_->value();
}

}  // namespace zelkovanta::platform::linux_host
