#pragma once

#include <QColor>
#include <QImage>
#include <QRectF>

class QPainter;

/// The mark of the program: one drawing for its windows, their icon, the tray and what is installed.
namespace zelkovanta::screens::qml {

/// Fills `place`, whatever its proportions: the drawing's points follow both of its sides, the width of its strokes the
/// side that is scaled less.
void paintBrandMark(QPainter& painter, const QColor& color, const QRectF& place);

/// The mark on a rounded square, as it stands for the whole program.
[[nodiscard]] QImage brandTileImage(int side, const QColor& tile, const QColor& mark);

}  // namespace zelkovanta::screens::qml
