#pragma once

#include <QByteArray>
#include <QImage>
#include <QQuickItem>
#include <QtQmlIntegration>

namespace zelkovanta::screens::qml {

/// A code to be scanned. Its modules are all equally large, a whole number of the screen's own pixels whatever its
/// scale, and never smoothed; what that leaves of the item stays as it is, at all sides alike.
class CodeImage : public QQuickItem {
    Q_OBJECT
    QML_ELEMENT
    /// The content of an image file. What is no image, or larger than any code, shows nothing.
    Q_PROPERTY(QByteArray file READ file WRITE setFile NOTIFY fileChanged)
    /// Whether there is a picture to be seen.
    Q_PROPERTY(bool legible READ legible NOTIFY fileChanged)

public:
    explicit CodeImage(QQuickItem* parent = nullptr);

    [[nodiscard]] const QByteArray& file() const { return file_; }
    void setFile(const QByteArray& file);
    [[nodiscard]] bool legible() const { return !modules_.isNull(); }

Q_SIGNALS:
    void fileChanged();

protected:
    QSGNode* updatePaintNode(QSGNode* old, UpdatePaintNodeData* data) override;
    void itemChange(ItemChange change, const ItemChangeData& data) override;

private:
    QByteArray file_;
    QImage modules_;  ///< one pixel for each
};

}  // namespace zelkovanta::screens::qml
