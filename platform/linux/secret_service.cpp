#include "platform/linux/secret_service.h"

#include "platform/linux/dbus_calls.h"

#include <memory>
#include <utility>

#include <QDBusArgument>
#include <QDBusMetaType>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QMap>

namespace zelkovanta::platform::linux_host {

/// "(oayays)" of the API.
struct TransferredSecret {
    QDBusObjectPath session;
    QByteArray parameters;
    QByteArray value;
    QString contentType;
};

QDBusArgument& operator<<(QDBusArgument& argument, const TransferredSecret& secret) {
    argument.beginStructure();
    argument << secret.session << secret.parameters << secret.value << secret.contentType;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, TransferredSecret& secret) {
    argument.beginStructure();
    argument >> secret.session >> secret.parameters >> secret.value >> secret.contentType;
    argument.endStructure();
    return argument;
}

}  // namespace zelkovanta::platform::linux_host

Q_DECLARE_METATYPE(zelkovanta::platform::linux_host::TransferredSecret)

namespace zelkovanta::platform::linux_host {

namespace {

using Attributes = QMap<QString, QString>;

const QString servicePath = QStringLiteral("/org/freedesktop/secrets");
const QString serviceInterface = QStringLiteral("org.freedesktop.Secret.Service");
const QString collectionInterface = QStringLiteral("org.freedesktop.Secret.Collection");
const QString itemInterface = QStringLiteral("org.freedesktop.Secret.Item");
const QString promptInterface = QStringLiteral("org.freedesktop.Secret.Prompt");
const QString noObject = QStringLiteral("/");

Attributes attributesOf(const KeyStoreItem& item) {
    return {{QStringLiteral("xdg:schema"), QStringLiteral("com.zelkovanta.Secret")},
            {QStringLiteral("service"), QString::fromStdString(item.service)},
            {QStringLiteral("account"), QString::fromStdString(item.account)}};
}

QByteArray toBytes(const std::string& text) {
    return {text.data(), static_cast<qsizetype>(text.size())};
}

}  // namespace

SecretService::SecretService(QDBusConnection bus, std::chrono::milliseconds callLimit, QObject& owner)
    : bus_(std::move(bus)), callLimit_(callLimit), owner_(owner) {
    qDBusRegisterMetaType<TransferredSecret>();
    qDBusRegisterMetaType<Attributes>();
}

Awaitable<std::optional<QList<QVariant>>> SecretService::call(QString path, QString interface, QString method,
                                                              QList<QVariant> arguments) {
    auto message = QDBusMessage::createMethodCall(service_, path, interface, method);
    message.setArguments(arguments);
    const QDBusMessage reply = co_await callBus(bus_, message, callLimit_, owner_);
    if (reply.type() != QDBusMessage::ReplyMessage) {
        co_return std::nullopt;
    }
    if (!service_.startsWith(QLatin1Char(':'))) {
        // From here on with the very process that answered: another one would know nothing of this conversation.
        service_ = reply.service();
    }
    co_return reply.arguments();
}

Awaitable<bool> SecretService::begin() {
    const QVariant publicKey = QVariant::fromValue(QDBusVariant(toBytes(cipher_.publicKey())));
    const QList<QVariant> arguments{QString::fromLatin1(SecretCipher::algorithm), publicKey};
    const auto reply = co_await call(servicePath, serviceInterface, QStringLiteral("OpenSession"), arguments);
    if (!reply || reply->size() != 2) {
        co_return false;
    }
    session_ = qvariant_cast<QDBusObjectPath>(reply->at(1));
    co_return cipher_.agree(qvariant_cast<QDBusVariant>(reply->at(0)).variant().toByteArray().toStdString());
}

Awaitable<std::optional<SecretService::Found>> SecretService::search(KeyStoreItem item) {
    const QList<QVariant> arguments{QVariant::fromValue(attributesOf(item))};
    const auto reply = co_await call(servicePath, serviceInterface, QStringLiteral("SearchItems"), arguments);
    if (!reply || reply->size() != 2) {
        co_return std::nullopt;
    }
    co_return Found{qdbus_cast<Paths>(reply->at(0)), qdbus_cast<Paths>(reply->at(1))};
}

Awaitable<std::optional<QVariant>> SecretService::answer(QDBusObjectPath prompt) {
    if (prompt.path() == noObject) {
        co_return QVariant{};
    }
    using Answer = std::optional<QVariant>;
    // Heard before the prompt is shown, or a quick answer would be missed.
    auto pending = std::make_shared<std::pair<std::optional<Answer>, Completion<Answer>>>();
    const auto finish = [pending](Answer given) {
        if (pending->second) {
            std::exchange(pending->second, nullptr)(std::move(given));
        } else if (!pending->first) {
            pending->first = std::move(given);
        }
    };
    const DBusSignal completed(
        bus_, service_, prompt.path(), promptInterface, QStringLiteral("Completed"),
        [finish](const QDBusMessage& signal) {
            const auto arguments = signal.arguments();
            const bool isDismissed = arguments.size() != 2 || arguments.at(0).toBool();
            finish(isDismissed ? Answer{} : qvariant_cast<QDBusVariant>(arguments.at(1)).variant());
        });
    const QDBusServiceWatcher gone(service_, bus_, QDBusServiceWatcher::WatchForUnregistration);
    QObject::connect(&gone, &QDBusServiceWatcher::serviceUnregistered, &gone, [finish] { finish(std::nullopt); });
    const QList<QVariant> arguments{QString{}};
    const auto shown = co_await call(prompt.path(), promptInterface, QStringLiteral("Prompt"), arguments);
    if (!shown) {
        co_return std::nullopt;
    }
    auto wait = [pending](Completion<Answer> done) {
        if (pending->first) {
            done(std::move(*pending->first));
        } else {
            pending->second = std::move(done);
        }
    };
    co_return co_await awaitCallback<Answer>(std::move(wait));
}

Awaitable<bool> SecretService::unlock(QDBusObjectPath object) {
    const QList<QVariant> arguments{QVariant::fromValue(Paths{object})};
    const auto reply = co_await call(servicePath, serviceInterface, QStringLiteral("Unlock"), arguments);
    if (!reply || reply->size() != 2) {
        co_return false;
    }
    if (qdbus_cast<Paths>(reply->at(0)).contains(object)) {
        co_return true;
    }
    const auto prompt = qvariant_cast<QDBusObjectPath>(reply->at(1));
    if (prompt.path() == noObject) {
        co_return false;
    }
    const auto answered = co_await answer(prompt);
    co_return answered&& qdbus_cast<Paths>(*answered).contains(object);
}

Awaitable<std::optional<std::string>> SecretService::read(KeyStoreItem item) {
    const bool hasBegun = co_await begin();
    if (!hasBegun) {
        co_return std::nullopt;
    }
    const auto found = co_await search(item);
    if (!found || (found->unlocked.isEmpty() && found->locked.isEmpty())) {
        co_return std::nullopt;
    }
    const QDBusObjectPath path = found->unlocked.isEmpty() ? found->locked.first() : found->unlocked.first();
    if (found->unlocked.isEmpty()) {
        const bool isUnlocked = co_await unlock(path);
        if (!isUnlocked) {
            co_return std::nullopt;
        }
    }
    const QList<QVariant> arguments{QVariant::fromValue(session_)};
    const auto reply = co_await call(path.path(), itemInterface, QStringLiteral("GetSecret"), arguments);
    if (!reply || reply->isEmpty()) {
        co_return std::nullopt;
    }
    const auto secret = qdbus_cast<TransferredSecret>(reply->at(0));
    auto value = cipher_.open({secret.parameters.toStdString(), secret.value.toStdString()});
    co_return value && !value->empty() ? std::move(value) : std::nullopt;
}

Awaitable<std::optional<QDBusObjectPath>> SecretService::defaultCollection() {
    const QList<QVariant> alias{QStringLiteral("default")};
    const auto reply = co_await call(servicePath, serviceInterface, QStringLiteral("ReadAlias"), alias);
    if (!reply || reply->isEmpty()) {
        co_return std::nullopt;
    }
    const auto collection = qvariant_cast<QDBusObjectPath>(reply->at(0));
    if (collection.path() != noObject) {
        const bool isUnlocked = co_await unlock(collection);
        co_return isUnlocked ? std::optional{collection} : std::nullopt;
    }
    // A person without any collection is asked to make one.
    const QList<QVariant> arguments{
        QVariantMap{{QStringLiteral("org.freedesktop.Secret.Collection.Label"), QStringLiteral("Default keyring")}},
        QStringLiteral("default")};
    const auto made = co_await call(servicePath, serviceInterface, QStringLiteral("CreateCollection"), arguments);
    if (!made || made->size() != 2) {
        co_return std::nullopt;
    }
    const auto path = qvariant_cast<QDBusObjectPath>(made->at(0));
    if (path.path() != noObject) {
        co_return path;
    }
    const auto answered = co_await answer(qvariant_cast<QDBusObjectPath>(made->at(1)));
    const auto answeredPath = answered ? qvariant_cast<QDBusObjectPath>(*answered) : QDBusObjectPath{};
    co_return answeredPath.path().size() > 1 ? std::optional{answeredPath} : std::nullopt;
}

Awaitable<void> SecretService::write(KeyStoreItem item, std::string value) {
    const bool hasBegun = co_await begin();
    if (!hasBegun) {
        co_return;
    }
    const auto collection = co_await defaultCollection();
    if (!collection) {
        co_return;
    }
    const auto sealed = cipher_.seal(value);
    const TransferredSecret secret{session_, toBytes(sealed.parameters), toBytes(sealed.value),
                                   QStringLiteral("text/plain")};
    const QVariantMap properties{
        {QStringLiteral("org.freedesktop.Secret.Item.Label"), QStringLiteral("ZelkoVanta")},
        {QStringLiteral("org.freedesktop.Secret.Item.Attributes"), QVariant::fromValue(attributesOf(item))}};
    constexpr bool replace = true;
    const QList<QVariant> arguments{properties, QVariant::fromValue(secret), replace};
    const auto reply = co_await call(collection->path(), collectionInterface, QStringLiteral("CreateItem"), arguments);
    if (reply && reply->size() == 2) {
        co_await answer(qvariant_cast<QDBusObjectPath>(reply->at(1)));
    }
}

Awaitable<void> SecretService::remove(KeyStoreItem item) {
    const auto found = co_await search(item);
    if (!found) {
        co_return;
    }
    const Paths all = found->unlocked + found->locked;
    for (const auto& path : all) {
        if (found->locked.contains(path)) {
            const bool isUnlocked = co_await unlock(path);
            if (!isUnlocked) {
                continue;
            }
        }
        const QList<QVariant> none;
        const auto reply = co_await call(path.path(), itemInterface, QStringLiteral("Delete"), none);
        if (reply && !reply->isEmpty()) {
            co_await answer(qvariant_cast<QDBusObjectPath>(reply->at(0)));
        }
    }
}

}  // namespace zelkovanta::platform::linux_host
