#include "screens/qml/symbol_icon.h"

#include "screens/qml/symbols.h"

namespace zelkovanta::screens::qml {

namespace {

constexpr double usualSide = 16;

}  // namespace

SymbolIcon::SymbolIcon(QQuickItem* parent) : QQuickPaintedItem(parent) {
    setImplicitSize(usualSide, usualSide);
    setAntialiasing(true);
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

void SymbolIcon::paint(QPainter* painter) {
    if (!symbol_.isEmpty()) {
        paintSymbol(*painter, symbol_, color_, boundingRect());
    }
}

}  // namespace zelkovanta::screens::qml
