#pragma once

#include <QByteArray>
#include <QImage>
#include <QQuickPaintedItem>
#include <QtQmlIntegration>

namespace zelkovanta::screens::qml {

/// A code to be scanned: enlarged by whole numbers only and never smoothed, on white whatever the appearance.
class CodeImage : public QQuickPaintedItem {
    Q_OBJECT
    QML_ELEMENT
    /// The content of an image file. What is no image shows as plain white.
    Q_PROPERTY(QByteArray file READ file WRITE setFile NOTIFY fileChanged)

public:
    explicit CodeImage(QQuickItem* parent = nullptr) : QQuickPaintedItem(parent) {}

    [[nodiscard]] const QByteArray& file() const { return file_; }
    void setFile(const QByteArray& file);

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void fileChanged();

private:
    QByteArray file_;
    QImage image_;
};

}  // namespace zelkovanta::screens::qml
