#include "platform/linux/notification_file.h"

#include <limits>

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

namespace zelkovanta::platform::linux_host {

using namespace ledger;

namespace {

const QString busKey = QStringLiteral("bus");
const QString daemonKey = QStringLiteral("daemon");
const QString notificationsKey = QStringLiteral("notifications");
const QString idKey = QStringLiteral("id");
const QString identifierKey = QStringLiteral("identifier");
const QString categoryKey = QStringLiteral("category");
const QString userInfoKey = QStringLiteral("userInfo");

DaemonId idFrom(const QJsonValue& value) {
    const double number = value.toDouble();
    const bool isId = number >= 1 && number <= std::numeric_limits<DaemonId>::max();
    const auto id = isId ? static_cast<DaemonId>(number) : 0;
    return static_cast<double>(id) == number ? id : 0;
}

Kept keptFrom(const QJsonObject& object) {
    Kept kept{.id = idFrom(object[idKey]),
              .identifier = object[identifierKey].toString().toStdString(),
              .categoryIdentifier = object[categoryKey].toString().toStdString(),
              .userInfo = {}};
    const QJsonObject userInfo = object[userInfoKey].toObject();
    for (auto entry = userInfo.begin(); entry != userInfo.end(); ++entry) {
        auto& value = kept.userInfo[entry.key().toStdString()];
        if (entry.value().isString()) {
            value = entry.value().toString().toStdString();
        } else {
            value = NoText{};
        }
    }
    return kept;
}

}  // namespace

std::string notificationFileText(const KeptNotifications& kept) {
    QJsonArray notifications;
    for (const auto& one : kept.notifications) {
        QJsonObject userInfo;
        for (const auto& [key, value] : one.userInfo) {
            if (const auto* const text = std::get_if<std::string>(&value)) {
                userInfo[QString::fromStdString(key)] = QString::fromStdString(*text);
            }
        }
        notifications.append(QJsonObject{{idKey, static_cast<qint64>(one.id)},
                                         {identifierKey, QString::fromStdString(one.identifier)},
                                         {categoryKey, QString::fromStdString(one.categoryIdentifier)},
                                         {userInfoKey, userInfo}});
    }
    const QJsonObject file{{busKey, QString::fromStdString(kept.bus)},
                           {daemonKey, QString::fromStdString(kept.daemon)},
                           {notificationsKey, notifications}};
    return QJsonDocument(file).toJson(QJsonDocument::Compact).toStdString();
}

KeptNotifications readNotificationFile(std::string_view text) {
    const auto file =
        QJsonDocument::fromJson(QByteArray::fromRawData(text.data(), static_cast<qsizetype>(text.size()))).object();
    KeptNotifications kept{.bus = file[busKey].toString().toStdString(),
                           .daemon = file[daemonKey].toString().toStdString(),
                           .notifications = {}};
    for (const auto& value : file[notificationsKey].toArray()) {
        if (auto one = keptFrom(value.toObject()); one.id != 0 && !one.identifier.empty()) {
            kept.notifications.push_back(std::move(one));
        }
    }
    return kept;
}

}  // namespace zelkovanta::platform::linux_host
