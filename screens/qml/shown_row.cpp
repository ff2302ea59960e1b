#include "screens/qml/shown_row.h"

namespace zelkovanta::screens::qml {

ShownButton::ShownButton(const RowButton& button)
    : shown(true),
      text(QString::fromStdString(button.text)),
      symbol(QString::fromStdString(button.symbol)),
      name(QString::fromStdString(button.accessibleName)),
      foreground(button.foreground),
      fill(toColor(button.fill)),
      outline(button.outline ? toColor(*button.outline) : QColor{Qt::transparent}),
      horizontalPadding(button.padding.horizontal),
      verticalPadding(button.padding.vertical) {}

ShownChip::ShownChip(const StatusChip& chip)
    : text(QString::fromStdString(chip.text)), prominent(chip.prominent), ink(chip.textColor), fill(chip.fill) {}

ShownBadge::ShownBadge(const CombinedBadge& badge)
    : text(QString::fromStdString(badge.text)), ink(CombinedBadge::textColor), fill(toColor(CombinedBadge::fill)) {}

ShownTab::ShownTab(const QueueTabButton& tab)
    : title(QString::fromStdString(tab.title)),
      selected(tab.selected),
      badge(QString::fromStdString(tab.badge)),
      ink(tab.titleColor),
      fill(tab.fill),
      outline(tab.outline.value_or(theme::fixed(theme::rgb(0, 0)))),
      badgeFill(toColor(tab.badgeFill)) {}

}  // namespace zelkovanta::screens::qml
