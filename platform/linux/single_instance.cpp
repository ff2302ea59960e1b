#include "platform/linux/single_instance.h"

#include "platform/linux/atomic_file.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>
#include <utility>

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>
#include <QDBusVirtualObject>
#include <QLocalServer>
#include <QLocalSocket>

namespace zelkovanta::platform::linux_host {

namespace {

constexpr int waitLimit = 1000;
const std::string applicationId = "com.zelkovanta.Desktop";
const QString applicationInterface = QStringLiteral("org.freedesktop.Application");
const QString tokenKey = QStringLiteral("activation-token");
const QString startupKey = QStringLiteral("desktop-startup-id");

/// The path that goes with a name: dots become slashes, and what a path may not hold becomes "_".
QString objectPath(const std::string& busName) {
    QString path = QStringLiteral("/");
    for (const char c : busName) {
        path += QLatin1Char(c == '.' ? '/' : c == '-' ? '_' : c);
    }
    return path;
}

std::string activationToken(const Environment& environment) {
    if (const auto token = environment("XDG_ACTIVATION_TOKEN")) {
        return *token;
    }
    return environment("DESKTOP_STARTUP_ID").value_or("");
}

std::string tokenIn(const QVariantMap& platformData) {
    const QString token = platformData.value(tokenKey).toString();
    return (token.isEmpty() ? platformData.value(startupKey).toString() : token).toStdString();
}

/// The interface by which a desktop starts and activates a program.
class ApplicationObject final : public QDBusVirtualObject {
public:
    explicit ApplicationObject(SingleInstance::Activate activate) : activate_(std::move(activate)) {}

    [[nodiscard]] QString introspect(const QString&) const override {
        return QStringLiteral(
            "<interface name=\"org.freedesktop.Application\">"
            "<method name=\"Activate\"><arg type=\"a{sv}\" name=\"platform_data\" direction=\"in\"/></method>"
            "<method name=\"Open\"><arg type=\"as\" name=\"uris\" direction=\"in\"/>"
            "<arg type=\"a{sv}\" name=\"platform_data\" direction=\"in\"/></method>"
            "<method name=\"ActivateAction\"><arg type=\"s\" name=\"action_name\" direction=\"in\"/>"
            "<arg type=\"av\" name=\"parameter\" direction=\"in\"/>"
            "<arg type=\"a{sv}\" name=\"platform_data\" direction=\"in\"/></method></interface>");
    }

    bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
        const QString method = message.member();
        const bool isOurs = message.interface().isEmpty() || message.interface() == applicationInterface;
        const bool isKnown = method == QStringLiteral("Activate") || method == QStringLiteral("Open") ||
                             method == QStringLiteral("ActivateAction");
        if (!isOurs || !isKnown) {
            return false;
        }
        const auto arguments = message.arguments();
        const QVariantMap data = arguments.isEmpty() ? QVariantMap{} : qdbus_cast<QVariantMap>(arguments.constLast());
        connection.send(message.createReply());
        activate_(tokenIn(data));
        return true;
    }

private:
    SingleInstance::Activate activate_;
};

class OnBus final : public SingleInstance {
public:
    OnBus(QDBusConnection bus, std::string name, Activate activate)
        : bus_(std::move(bus)), name_(std::move(name)), object_(std::move(activate)) {}
    ~OnBus() override {
        if (isOwner_) {
            bus_.unregisterService(QString::fromStdString(name_));
        }
        bus_.unregisterObject(objectPath(name_));
    }
    OnBus(const OnBus&) = delete;
    OnBus& operator=(const OnBus&) = delete;

    /// False if another process has the name.
    bool own() {
        // Before the name is ours: whoever sees the name may call at once.
        bus_.registerVirtualObject(objectPath(name_), &object_);
        const auto reply =
            bus_.interface()->registerService(QString::fromStdString(name_), QDBusConnectionInterface::DontQueueService,
                                              QDBusConnectionInterface::DontAllowReplacement);
        isOwner_ = reply.isValid() && reply.value() == QDBusConnectionInterface::ServiceRegistered;
        return isOwner_ || !reply.isValid();
    }

    static bool ask(const QDBusConnection& bus, const std::string& name, const std::string& token) {
        auto call = QDBusMessage::createMethodCall(QString::fromStdString(name), objectPath(name), applicationInterface,
                                                   QStringLiteral("Activate"));
        QVariantMap data;
        if (!token.empty()) {
            data = {{tokenKey, QString::fromStdString(token)}, {startupKey, QString::fromStdString(token)}};
        }
        call.setArguments({data});
        call.setAutoStartService(false);
        return bus.call(call, QDBus::Block, waitLimit).type() == QDBusMessage::ReplyMessage;
    }

private:
    QDBusConnection bus_;
    std::string name_;
    ApplicationObject object_;
    bool isOwner_ = false;
};

/// A lock that the kernel ends with its process, and a socket beside it for asking.
class InFolder final : public SingleInstance {
public:
    InFolder(std::filesystem::path base, Activate activate) : base_(std::move(base)), activate_(std::move(activate)) {}
    ~InFolder() override {
        if (lock_ >= 0) {
            server_.close();
            ::close(lock_);
        }
    }
    InFolder(const InFolder&) = delete;
    InFolder& operator=(const InFolder&) = delete;

    /// False if another process has the lock. A folder that cannot be written leaves nothing to tell instances apart.
    bool own() {
        std::error_code ignored;
        std::filesystem::create_directories(base_.parent_path(), ignored);
        lock_ = ::open((base_.string() + ".lock").c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
        if (lock_ < 0) {
            return true;
        }
        if (::flock(lock_, LOCK_EX | LOCK_NB) != 0) {
            ::close(std::exchange(lock_, -1));
            return false;
        }
        const QString socket = socketName(base_);
        QLocalServer::removeServer(socket);
        server_.setSocketOptions(QLocalServer::UserAccessOption);
        QObject::connect(&server_, &QLocalServer::newConnection, &server_, [this] { accept(); });
        server_.listen(socket);
        return true;
    }

    static bool ask(const std::filesystem::path& base, const std::string& token) {
        QLocalSocket socket;
        socket.connectToServer(socketName(base));
        if (!socket.waitForConnected(waitLimit)) {
            return false;
        }
        socket.write(QByteArray::fromStdString(token + "\n"));
        return socket.waitForBytesWritten(waitLimit);
    }

private:
    static constexpr qint64 maximumTokenSize = 4096;

    static QString socketName(const std::filesystem::path& base) {
        return QString::fromStdString(base.string() + ".socket");
    }

    void accept() {
        while (QLocalSocket* const socket = server_.nextPendingConnection()) {
            QObject::connect(socket, &QLocalSocket::disconnected, socket, &QObject::deleteLater);
            QObject::connect(socket, &QLocalSocket::readyRead, &server_, [this, socket] {
                if (socket->canReadLine() || socket->bytesAvailable() > maximumTokenSize) {
                    const std::string token = socket->readLine(maximumTokenSize).trimmed().toStdString();
                    socket->close();
                    activate_(token);
                }
            });
        }
    }

    std::filesystem::path base_;
    Activate activate_;
    int lock_ = -1;
    QLocalServer server_;
};

}  // namespace

std::expected<std::unique_ptr<SingleInstance>, SingleInstance::AnotherRuns> SingleInstance::claim(
    const Profile& profile, const FileRoots& roots, const Environment& environment, Activate activate) {
    const std::string token = activationToken(environment);
    if (const auto bus = QDBusConnection::sessionBus(); bus.isConnected()) {
        const std::string name = profile.applyToBusName(applicationId);
        auto instance = std::make_unique<OnBus>(bus, name, std::move(activate));
        if (instance->own()) {
            return instance;
        }
        instance.reset();
        return std::unexpected(AnotherRuns{OnBus::ask(bus, name, token)});
    }
    const auto base = roots.runtime.value_or(roots.data / "zelkovanta") / profile.applyTo(applicationId);
    auto instance = std::make_unique<InFolder>(base, std::move(activate));
    if (instance->own()) {
        return instance;
    }
    return std::unexpected(AnotherRuns{InFolder::ask(base, token)});
}

}  // namespace zelkovanta::platform::linux_host
