#include "tests/platform/linux/fake_secret_service.h"

#include "platform/linux/secret_cipher.h"

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusObjectPath>
#include <QDBusVariant>
#include <QUuid>

namespace zelkovanta::platform::linux_host {

namespace {

using Paths = QList<QDBusObjectPath>;

const QString serviceName = QStringLiteral("org.freedesktop.secrets");
const QString itemPath = QStringLiteral("/org/freedesktop/secrets/collection/login/1");
const QString promptPath = QStringLiteral("/org/freedesktop/secrets/prompt/1");

}  // namespace

FakeSecretService::FakeSecretService(Behaviour behaviour, std::optional<std::string> secret)
    : bus_(QDBusConnection::connectToBus(QDBusConnection::SessionBus, QUuid::createUuid().toString())),
      behaviour_(behaviour),
      secret_(std::move(secret)),
      cipher_(std::make_unique<SecretCipher>()) {
    bus_.registerVirtualObject(QStringLiteral("/org/freedesktop/secrets"), this, QDBusConnection::SubPath);
    bus_.registerService(serviceName);
}

FakeSecretService::~FakeSecretService() {
    vanish();
}

void FakeSecretService::vanish() {
    if (!bus_.isConnected()) {
        return;
    }
    bus_.unregisterObject(QStringLiteral("/org/freedesktop/secrets"));
    bus_.unregisterService(serviceName);
    const QString name = bus_.name();
    bus_ = QDBusConnection(QString{});
    QDBusConnection::disconnectFromBus(name);
}

QString FakeSecretService::introspect(const QString&) const {
    return {};
}

void FakeSecretService::reply(const QDBusMessage& message, const QList<QVariant>& arguments) {
    bus_.send(message.createReply(arguments));
}

void FakeSecretService::answerPrompt(bool isDismissed) {
    isLocked = isDismissed;
    auto signal = QDBusMessage::createSignal(promptPath, QStringLiteral("org.freedesktop.Secret.Prompt"),
                                             QStringLiteral("Completed"));
    const Paths unlocked = isDismissed ? Paths{} : Paths{QDBusObjectPath(itemPath)};
    signal.setArguments({isDismissed, QVariant::fromValue(QDBusVariant(QVariant::fromValue(unlocked)))});
    bus_.send(signal);
}

bool FakeSecretService::handleMessage(const QDBusMessage& message, const QDBusConnection&) {
    const std::string method = message.member().toStdString();
    calls.push_back(method);
    if (behaviour_ == Behaviour::isSilent) {
        message.setDelayedReply(true);
        return true;
    }
    if (behaviour_ == Behaviour::givesNonsense) {
        reply(message, {QStringLiteral("what"), 7});
        return true;
    }
    const auto arguments = message.arguments();
    if (method == "OpenSession") {
        if (behaviour_ == Behaviour::knowsNoEncryption) {
            bus_.send(message.createErrorReply(QDBusError::NotSupported, QStringLiteral("plain only")));
            return true;
        }
        cipher_->agree(qvariant_cast<QDBusVariant>(arguments.at(1)).variant().toByteArray().toStdString());
        const auto key = QByteArray::fromStdString(cipher_->publicKey());
        reply(message, {QVariant::fromValue(QDBusVariant(key)),
                        QVariant::fromValue(QDBusObjectPath("/org/freedesktop/secrets/session/1"))});
    } else if (method == "SearchItems") {
        const Paths item = secret_ ? Paths{QDBusObjectPath(itemPath)} : Paths{};
        reply(message,
              {QVariant::fromValue(isLocked ? Paths{} : item), QVariant::fromValue(isLocked ? item : Paths{})});
    } else if (method == "Unlock") {
        reply(message, {QVariant::fromValue(Paths{}), QVariant::fromValue(QDBusObjectPath(promptPath))});
    } else if (method == "Prompt") {
        // The answer may come before the reply to this call.
        if (!isPromptSilent) {
            answerPrompt(isPromptDismissed);
        }
        reply(message, {});
    } else if (method == "GetSecret") {
        const auto sealed = cipher_->seal(secret_.value_or("")).value();
        QDBusArgument secret;
        secret.beginStructure();
        secret << QDBusObjectPath("/org/freedesktop/secrets/session/1") << QByteArray::fromStdString(sealed.parameters)
               << QByteArray::fromStdString(sealed.value) << QStringLiteral("text/plain");
        secret.endStructure();
        reply(message, {QVariant::fromValue(secret)});
    } else if (method == "SetSecret") {
        const auto secret = qvariant_cast<QDBusArgument>(arguments.at(0));
        QDBusObjectPath path;
        QByteArray parameters;
        QByteArray value;
        secret.beginStructure();
        secret >> path >> parameters >> value;
        secret.endStructure();
        secret_ = cipher_->open({parameters.toStdString(), value.toStdString()});
        reply(message, {});
    } else if (method == "ReadAlias") {
        reply(message, {QVariant::fromValue(QDBusObjectPath("/org/freedesktop/secrets/collection/login"))});
    } else {
        return false;
    }
    return true;
}

}  // namespace zelkovanta::platform::linux_host
