#pragma once

#include <algorithm>
#include <string>
#include <string_view>
#include <vector>

#include <QQuickItem>

/// The items that a window draws, by the names of their files.
namespace zelkovanta::desktop_test {

[[nodiscard]] inline bool isOfType(const QObject* object, std::string_view type) {
    const std::string_view name = object->metaObject()->className();
    return name.starts_with(type) && (name.size() == type.size() || name.substr(type.size()).starts_with("_QML"));
}

/// Below `root`, in the order in which they are drawn; hidden ones too.
[[nodiscard]] inline std::vector<QQuickItem*> itemsOfType(const QQuickItem* root, std::string_view type) {
    std::vector<QQuickItem*> found;
    for (QQuickItem* child : root->childItems()) {
        if (isOfType(child, type)) {
            found.push_back(child);
        }
        const auto below = itemsOfType(child, type);
        found.insert(found.end(), below.begin(), below.end());
    }
    return found;
}

/// Only those that can be seen.
[[nodiscard]] inline std::vector<QQuickItem*> shownItemsOfType(const QQuickItem* root, std::string_view type) {
    auto found = itemsOfType(root, type);
    std::erase_if(found, [](const QQuickItem* item) { return !item->isVisible(); });
    return found;
}

/// Where an item is in its window. Logical pixels.
[[nodiscard]] inline QRectF rectOf(const QQuickItem* item) {
    return item->mapRectToScene({0, 0, item->width(), item->height()});
}

}  // namespace zelkovanta::desktop_test
