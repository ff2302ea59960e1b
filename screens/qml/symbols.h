#pragma once

#include <QColor>
#include <QImage>
#include <QRectF>
#include <QString>

class QPainter;

/// The program's own vector drawings: `symbols/NAME.svg`, in one colour each.
namespace zelkovanta::screens::qml {

/// The mark of the program: drawn in its windows, as their icon, in the tray and in what is installed.
inline constexpr auto brandMark = "brand_mark";

/// Draws a symbol as large as it fits, centred. A name that there is no symbol of draws nothing, and is told in the
/// log: it is a fault of the program.
void paintSymbol(QPainter& painter, const QString& name, const QColor& color, const QRectF& place);

/// The same as a picture of its own; the size is in the picture's own points.
[[nodiscard]] QImage symbolImage(const QString& name, const QColor& color, const QSize& size);

/// The mark on a rounded square, as it stands for the whole program.
[[nodiscard]] QImage brandTileImage(int side, const QColor& tile, const QColor& mark);

}  // namespace zelkovanta::screens::qml
