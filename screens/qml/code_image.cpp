#include "screens/qml/code_image.h"

#include <algorithm>
#include <cmath>

#include <QBuffer>
#include <QImageReader>
#include <QPainter>

namespace zelkovanta::screens::qml {

namespace {

// Larger than any code; a small file can unfold to a picture that takes all memory.
constexpr int longestSide = 4096;

QImage pictureIn(const QByteArray& file) {
    QBuffer buffer;
    buffer.setData(file);
    QImageReader reader(&buffer);
    const QSize size = reader.size();
    return size.isValid() && size.width() <= longestSide && size.height() <= longestSide ? reader.read() : QImage{};
}

}  // namespace

void CodeImage::setFile(const QByteArray& file) {
    if (file == file_) {
        return;
    }
    file_ = file;
    image_ = pictureIn(file_);
    Q_EMIT fileChanged();
    update();
}

void CodeImage::paint(QPainter* painter) {
    painter->fillRect(boundingRect(), Qt::white);
    if (image_.isNull()) {
        return;
    }
    const double fit = std::min(width() / image_.width(), height() / image_.height());
    // A code larger than its place has to shrink; smoothing keeps it readable then.
    const double scale = fit >= 1 ? std::floor(fit) : fit;
    painter->setRenderHint(QPainter::SmoothPixmapTransform, fit < 1);
    const QSizeF size{image_.width() * scale, image_.height() * scale};
    const QPointF corner{std::round((width() - size.width()) / 2), std::round((height() - size.height()) / 2)};
    painter->drawImage(QRectF{corner, size}, image_);
}

}  // namespace zelkovanta::screens::qml
