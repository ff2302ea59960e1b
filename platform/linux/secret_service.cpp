#include "platform/linux/secret_service.h"

#include "platform/linux/dbus_calls.h"

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

    friend QDBusArgument& operator<<(QDBusArgument& argument, const TransferredSecret& secret) {
        argument.beginStructure();
        argument << secret.session << secret.parameters << secret.value << secret.contentType;
        argument.endStructure();
        return argument;
    }
    friend const QDBusArgument& operator>>(const QDBusArgument& argument, TransferredSecret& secret) {
        argument.beginStructure();
        argument >> secret.session >> secret.parameters >> secret.value >> secret.contentType;
        argument.endStructure();
        return argument;  // NOLINT(bugprone-return-const-ref-from-parameter): the form that the library asks for
    }
};

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

using Answer = std::optional<QVariant>;

/// Somebody who waits for a person's answer. Its parent holds it, not the one who waits, so that the parent's end lets
/// go of both.
class Waiting final : public QObject {
public:
    Waiting(Completion<Answer> done, QObject* parent) : QObject(parent), done_(std::move(done)) {}

    void finish(Answer given) {
        if (auto done = std::exchange(done_, nullptr)) {
            done(std::move(given));
            deleteLater();
        }
    }

private:
    Completion<Answer> done_;
};

/// What a prompt led to, whether somebody waits for it already or not yet.
struct Outcome {
    QPointer<Waiting> waiting;
    std::optional<Answer> early;

    void give(Answer given) {
        if (waiting) {
            waiting->finish(std::move(given));
        } else if (!early) {
            early = std::move(given);
        }
    }
};

}  // namespace

SecretService::SecretService(QDBusConnection bus, std::chrono::milliseconds callLimit, QObject& owner)
    : bus_(std::move(bus)), callLimit_(callLimit), owner_(&owner) {
    qDBusRegisterMetaType<TransferredSecret>();
    qDBusRegisterMetaType<Attributes>();
}

Awaitable<std::optional<QList<QVariant>>> SecretService::call(QString path, QString interface, QString method,
                                                              QList<QVariant> arguments) {
    if (!owner_) {
        co_return std::nullopt;
    }
    auto message = QDBusMessage::createMethodCall(service_, path, interface, method);
    message.setArguments(arguments);
    const QDBusMessage reply = co_await callBus(bus_, message, callLimit_, *owner_);
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
    // Heard before the prompt is shown, or a quick answer would be missed.
    Outcome outcome;
    const DBusSignal completed(
        bus_, service_, prompt.path(), promptInterface, QStringLiteral("Completed"),
        [&outcome](const QDBusMessage& signal) {
            const auto arguments = signal.arguments();
            const bool isDismissed = arguments.size() != 2 || arguments.at(0).toBool();
            outcome.give(isDismissed ? Answer{} : qvariant_cast<QDBusVariant>(arguments.at(1)).variant());
        });
    const QDBusServiceWatcher gone(service_, bus_, QDBusServiceWatcher::WatchForUnregistration);
    QObject::connect(&gone, &QDBusServiceWatcher::serviceUnregistered, &gone,
                     [&outcome] { outcome.give(std::nullopt); });
    const QList<QVariant> arguments{QString{}};
    const auto shown = co_await call(prompt.path(), promptInterface, QStringLiteral("Prompt"), arguments);
    if (!shown || !owner_) {
        co_return std::nullopt;
    }
    auto wait = [&outcome, owner = owner_.data()](Completion<Answer> done) {
        if (outcome.early) {
            done(std::move(*outcome.early));
        } else {
            outcome.waiting = new Waiting(std::move(done), owner);
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

Awaitable<std::optional<QDBusObjectPath>> SecretService::unlockedItem(Found found) {
    if (!found.unlocked.isEmpty()) {
        co_return found.unlocked.first();
    }
    const QDBusObjectPath path = found.locked.first();
    const bool isUnlocked = co_await unlock(path);
    co_return isUnlocked ? std::optional{path} : std::nullopt;
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
    const auto path = co_await unlockedItem(*found);
    if (!path) {
        co_return std::nullopt;
    }
    const QList<QVariant> arguments{QVariant::fromValue(session_)};
    const auto reply = co_await call(path->path(), itemInterface, QStringLiteral("GetSecret"), arguments);
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
    const auto found = co_await search(item);
    if (!found) {
        co_return;
    }
    const auto sealed = cipher_.seal(value);
    if (!sealed) {
        co_return;
    }
    const QVariant secret = QVariant::fromValue(
        TransferredSecret{session_, toBytes(sealed->parameters), toBytes(sealed->value), QStringLiteral("text/plain")});
    if (found->unlocked.isEmpty() && found->locked.isEmpty()) {
        co_await create(item, secret);
        co_return;
    }
    // Where it is, be that another collection than today's default one: beside an older one it would not be found.
    const auto path = co_await unlockedItem(*found);
    if (path) {
        const QList<QVariant> arguments{secret};
        co_await call(path->path(), itemInterface, QStringLiteral("SetSecret"), arguments);
    }
}

Awaitable<void> SecretService::create(KeyStoreItem item, QVariant secret) {
    const auto collection = co_await defaultCollection();
    if (!collection) {
        co_return;
    }
    const QVariantMap properties{
        {QStringLiteral("org.freedesktop.Secret.Item.Label"), QStringLiteral("ZelkoVanta")},
        {QStringLiteral("org.freedesktop.Secret.Item.Attributes"), QVariant::fromValue(attributesOf(item))}};
    constexpr bool replace = true;
    const QList<QVariant> arguments{properties, secret, replace};
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
