#pragma once

#include <QColor>
#include <QRectF>
#include <QString>

class QPainter;

/// The program's own vector drawings: `symbols/NAME.svg`, in one colour each, and its mark.
namespace zelkovanta::screens::qml {

/// The mark of the program among the symbols.
inline constexpr auto brandMark = "brand_mark";

/// Draws a symbol as large as it fits, centred; the mark fills the place. A name that there is no symbol of draws
/// nothing, and is told in the log: it is a fault of the program.
void paintSymbol(QPainter& painter, const QString& name, const QColor& color, const QRectF& place);

}  // namespace zelkovanta::screens::qml
