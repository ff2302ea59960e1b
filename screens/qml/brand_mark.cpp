#include "screens/qml/brand_mark.h"

#include <algorithm>

#include <QPainter>
#include <QPainterPath>
#include <QPen>

namespace zelkovanta::screens::qml {

namespace {

// What the mark is drawn on.
constexpr double gridWidth = 200;
constexpr double gridHeight = 240;
constexpr double strokeWidth = 37;

constexpr double tileRadius = 0.22;  // of the side
constexpr double tileInset = 0.19;

}  // namespace

void paintBrandMark(QPainter& painter, const QColor& color, const QRectF& place) {
    const double scaleX = place.width() / gridWidth;
    const double scaleY = place.height() / gridHeight;
    const auto at = [&](double x, double y) { return place.topLeft() + QPointF{x * scaleX, y * scaleY}; };

    QPainterPath strokes;
    strokes.moveTo(at(94, 84));
    strokes.lineTo(at(94, 214));
    strokes.moveTo(at(88, 108));
    strokes.lineTo(at(24, 34));
    strokes.moveTo(at(94, 100));
    strokes.cubicTo(at(160, 100), at(170, 146), at(96, 156));
    strokes.lineTo(at(156, 214));

    QPainterPathStroker pen;
    pen.setWidth(strokeWidth * std::min(scaleX, scaleY));
    pen.setCapStyle(Qt::RoundCap);
    pen.setJoinStyle(Qt::RoundJoin);
    // One shape, so that a colour that lets something through is nowhere laid on twice.
    QPainterPath mark = pen.createStroke(strokes);
    mark.setFillRule(Qt::WindingFill);
    mark.addEllipse({at(67, 11), at(67 + 54, 11 + 54)});

    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(mark, color);
    painter.restore();
}

QImage brandTileImage(int side, const QColor& tile, const QColor& mark) {
    QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(tile);
    painter.drawRoundedRect(QRectF{0, 0, double(side), double(side)}, tileRadius * side, tileRadius * side);
    const double inset = tileInset * side;
    paintBrandMark(painter, mark, {inset, inset, side - 2 * inset, side - 2 * inset});
    return image;
}

}  // namespace zelkovanta::screens::qml
