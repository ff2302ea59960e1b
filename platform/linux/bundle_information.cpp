#include "platform/linux/bundle_information.h"

#include "platform/linux/atomic_file.h"

#include <QByteArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QString>

namespace zelkovanta::platform::linux_host {

std::optional<std::string> BundleInformation::text(std::string_view key) const {
    const auto content = readFile(file_, std::size_t{1024} * 1024);
    if (!content) {
        return std::nullopt;
    }
    const auto document =
        QJsonDocument::fromJson(QByteArray::fromRawData(content->data(), static_cast<qsizetype>(content->size())));
    const auto value = document.object().value(QString::fromUtf8(key.data(), static_cast<qsizetype>(key.size())));
    return value.isString() ? std::optional{value.toString().toStdString()} : std::nullopt;
}

}  // namespace zelkovanta::platform::linux_host
