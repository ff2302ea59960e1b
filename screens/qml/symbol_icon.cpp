#include "screens/qml/symbol_icon.h"

#include "screens/qml/symbols.h"

#include <QImage>
#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>
#include <QSGTexture>

namespace zelkovanta::screens::qml {

namespace {

constexpr double usualSide = 16;

}  // namespace

SymbolIcon::SymbolIcon(QQuickItem* parent) : QQuickItem(parent) {
    setImplicitSize(usualSide, usualSide);
    setFlag(ItemHasContents);
}

void SymbolIcon::setSymbol(const QString& symbol) {
    if (symbol != symbol_) {
        symbol_ = symbol;
        Q_EMIT symbolChanged();
        update();
    }
}

void SymbolIcon::setColor(const QColor& color) {
    if (color != color_) {
        color_ = color;
        Q_EMIT colorChanged();
        update();
    }
}

void SymbolIcon::itemChange(ItemChange change, const ItemChangeData& data) {
    QQuickItem::itemChange(change, data);
    if (change == ItemDevicePixelRatioHasChanged) {
        update();
    }
}

QSGNode* SymbolIcon::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
    const double ratio = window()->effectiveDevicePixelRatio();
    const QSize pixels = (size() * ratio).toSize();
    if (symbol_.isEmpty() || pixels.isEmpty()) {
        delete old;
        return nullptr;
    }
    auto* node = static_cast<QSGImageNode*>(old);
    if (node == nullptr) {
        node = window()->createImageNode();
        node->setOwnsTexture(true);
    }
    QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    {
        QPainter painter(&image);
        paintSymbol(painter, symbol_, color_, QRectF{QPointF{}, QSizeF{pixels}});
    }
    // A copy, since an image that was painted on keeps the painter's workshop, which is many times its size.
    node->setTexture(window()->createTextureFromImage(image.copy()));
    // Pixel on pixel, where a scale leaves no whole number of them.
    node->setRect({QPointF{}, QSizeF{pixels} / ratio});
    return node;
}

}  // namespace zelkovanta::screens::qml
