#pragma once

#include <QColor>
#include <QQuickItem>
#include <QString>
#include <QtQmlIntegration>

namespace zelkovanta::screens::qml {

/// A symbol of the program in one colour, crisp at every size and scale. Says nothing to a screen reader: what it
/// stands on has the name.
class SymbolIcon : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    Q_PROPERTY(QString symbol READ symbol WRITE setSymbol NOTIFY symbolChanged REQUIRED)
    Q_PROPERTY(QColor color READ color WRITE setColor NOTIFY colorChanged)

public:
    explicit SymbolIcon(QQuickItem* parent = nullptr);

    [[nodiscard]] const QString& symbol() const { return symbol_; }
    void setSymbol(const QString& symbol);
    [[nodiscard]] const QColor& color() const { return color_; }
    void setColor(const QColor& color);

Q_SIGNALS:
    void symbolChanged();
    void colorChanged();

protected:
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData* data) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;

private:
    QString symbol_;
    QColor color_ = Qt::black;
};

}  // namespace zelkovanta::screens::qml
