#pragma once

#include "screens/qml/theme.h"
#include "screens/queue_row.h"
#include "screens/queue_row_sections.h"

#include <QColor>
#include <QString>
#include <QtQmlIntegration>

/// Pieces of a queue as QML takes them.
namespace zelkovanta::screens::qml {

/// A button of a row, or the place where it would be.
class ShownButton {
    Q_GADGET
    QML_VALUE_TYPE(shownButton)
    Q_PROPERTY(bool shown MEMBER shown FINAL)
    Q_PROPERTY(QString text MEMBER text FINAL)
    Q_PROPERTY(QString symbol MEMBER symbol FINAL)
    Q_PROPERTY(QString name MEMBER name FINAL)
    Q_PROPERTY(zelkovanta::screens::qml::ShownColor foreground MEMBER foreground FINAL)
    Q_PROPERTY(QColor fill MEMBER fill FINAL)
    Q_PROPERTY(QColor outline MEMBER outline FINAL)
    Q_PROPERTY(int horizontalPadding MEMBER horizontalPadding FINAL)
    Q_PROPERTY(int verticalPadding MEMBER verticalPadding FINAL)

public:
    bool shown = false;
    QString text;
    QString symbol;
    QString name;
    ShownColor foreground;
    QColor fill = Qt::transparent;
    QColor outline = Qt::transparent;
    int horizontalPadding = 0;
    int verticalPadding = 0;

    ShownButton() = default;
    explicit ShownButton(const RowButton& button);
    bool operator==(const ShownButton&) const = default;
};

class ShownChip {
    Q_GADGET
    QML_VALUE_TYPE(shownChip)
    Q_PROPERTY(QString text MEMBER text FINAL)
    Q_PROPERTY(bool prominent MEMBER prominent FINAL)
    Q_PROPERTY(zelkovanta::screens::qml::ShownColor ink MEMBER ink FINAL)
    Q_PROPERTY(zelkovanta::screens::qml::ShownColor fill MEMBER fill FINAL)

public:
    QString text;
    bool prominent = false;
    ShownColor ink;
    ShownColor fill;

    ShownChip() = default;
    explicit ShownChip(const StatusChip& chip);
    bool operator==(const ShownChip&) const = default;
};

/// The badge of a combined call, or the place where it would be: no text.
class ShownBadge {
    Q_GADGET
    QML_VALUE_TYPE(shownBadge)
    Q_PROPERTY(QString text MEMBER text FINAL)
    Q_PROPERTY(zelkovanta::screens::qml::ShownColor ink MEMBER ink FINAL)
    Q_PROPERTY(QColor fill MEMBER fill FINAL)

public:
    QString text;
    ShownColor ink;
    QColor fill = Qt::transparent;

    ShownBadge() = default;
    explicit ShownBadge(const CombinedBadge& badge);
    bool operator==(const ShownBadge&) const = default;
};

class ShownTab {
    Q_GADGET
    QML_VALUE_TYPE(shownTab)
    Q_PROPERTY(QString title MEMBER title FINAL)
    Q_PROPERTY(bool selected MEMBER selected FINAL)
    Q_PROPERTY(QString badge MEMBER badge FINAL)
    Q_PROPERTY(zelkovanta::screens::qml::ShownColor ink MEMBER ink FINAL)
    Q_PROPERTY(zelkovanta::screens::qml::ShownColor fill MEMBER fill FINAL)
    Q_PROPERTY(zelkovanta::screens::qml::ShownColor outline MEMBER outline FINAL)
    Q_PROPERTY(QColor badgeFill MEMBER badgeFill FINAL)

public:
    QString title;
    bool selected = false;
    QString badge;
    ShownColor ink;
    ShownColor fill;
    ShownColor outline;
    QColor badgeFill;

    ShownTab() = default;
    explicit ShownTab(const QueueTabButton& tab);
    bool operator==(const ShownTab&) const = default;
};

}  // namespace zelkovanta::screens::qml
