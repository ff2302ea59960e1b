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
    /// The content of an image file. What is no image, or larger than any code, shows as plain white.
    Q_PROPERTY(QByteArray file READ file WRITE setFile NOTIFY fileChanged)
    /// Whether there is a picture to be seen.
    Q_PROPERTY(bool legible READ legible NOTIFY fileChanged)

public:
    explicit CodeImage(QQuickItem* parent = nullptr) : QQuickPaintedItem(parent) {}

    [[nodiscard]] const QByteArray& file() const { return file_; }
    void setFile(const QByteArray& file);
    [[nodiscard]] bool legible() const { return !image_.isNull(); }

    void paint(QPainter* painter) override;

Q_SIGNALS:
    void fileChanged();

private:
    QByteArray file_;
    QImage image_;
};

}  // namespace zelkovanta::screens::qml
