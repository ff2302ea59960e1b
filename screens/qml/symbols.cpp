#include "screens/qml/symbols.h"

#include "screens/qml/brand_mark.h"

#include <QFile>
#include <QImage>
#include <QLatin1String>
#include <QPainter>
#include <QSvgRenderer>
#include <QtDebug>

namespace zelkovanta::screens::qml {

void paintSymbol(QPainter& painter, const QString& name, const QColor& color, const QRectF& place) {
    if (name == QLatin1String{brandMark}) {
        paintBrandMark(painter, color, place);
        return;
    }
    QFile file(QStringLiteral(":/qt/qml/ZelkoVanta/Screens/symbols/%1.svg").arg(name));
    if (!file.open(QIODevice::ReadOnly)) {
        qWarning("There is no symbol \"%s\".", qPrintable(name));
        return;
    }
    // The drawing leaves its colour open, in the word that browsers know.
    QSvgRenderer drawing(file.readAll().replace("currentColor", color.name(QColor::HexRgb).toLatin1()));
    drawing.setAspectRatioMode(Qt::KeepAspectRatio);
    if (color.alpha() == 255) {
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        drawing.render(&painter, place);
        painter.restore();
        return;
    }
    // In a layer of its own, so that what lies upon each other lets no less through.
    QImage layer(painter.device()->width(), painter.device()->height(), QImage::Format_ARGB32_Premultiplied);
    layer.setDevicePixelRatio(painter.device()->devicePixelRatioF());
    layer.fill(Qt::transparent);
    {
        QPainter apart(&layer);
        apart.setTransform(painter.transform());
        apart.setRenderHint(QPainter::Antialiasing);
        drawing.render(&apart, place);
    }
    painter.save();
    painter.resetTransform();
    painter.setOpacity(painter.opacity() * color.alphaF());
    painter.drawImage(QPoint{}, layer);
    painter.restore();
}

}  // namespace zelkovanta::screens::qml
