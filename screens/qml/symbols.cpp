#include "screens/qml/symbols.h"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>
#include <QtDebug>

namespace zelkovanta::screens::qml {

namespace {

constexpr double tileRadius = 0.22;  // of the side
constexpr double tileInset = 0.19;

}  // namespace

void paintSymbol(QPainter& painter, const QString& name, const QColor& color, const QRectF& place) {
    QFile file(QStringLiteral(":/qt/qml/ZelkoVanta/Screens/symbols/%1.svg").arg(name));
    if (!file.open(QIODevice::ReadOnly)) {
        qWarning("There is no symbol \"%s\".", qPrintable(name));
        return;
    }
    // The drawing leaves its colour open, in the word that browsers know.
    QSvgRenderer drawing(file.readAll().replace("currentColor", color.name(QColor::HexRgb).toLatin1()));
    drawing.setAspectRatioMode(Qt::KeepAspectRatio);
    painter.save();
    painter.setOpacity(painter.opacity() * color.alphaF());
    painter.setRenderHint(QPainter::Antialiasing);
    drawing.render(&painter, place);
    painter.restore();
}

QImage symbolImage(const QString& name, const QColor& color, const QSize& size) {
    QImage image(size, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    paintSymbol(painter, name, color, QRectF{QPointF{}, QSizeF{size}});
    return image;
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
    paintSymbol(painter, QString::fromLatin1(brandMark), mark, {inset, inset, side - 2 * inset, side - 2 * inset});
    return image;
}

}  // namespace zelkovanta::screens::qml
