#include "screens/qml/code_image.h"

#include <algorithm>
#include <cmath>
#include <numeric>

#include <QBuffer>
#include <QImageReader>
#include <QPainter>
#include <QQuickWindow>
#include <QSGImageNode>

namespace zelkovanta::screens::qml {

namespace {

// Larger than any code; a small file can unfold to a picture that takes all memory.
constexpr int longestSide = 4096;

/// On white, where a camera expects it.
QImage pictureIn(const QByteArray& file) {
    QBuffer buffer;
    buffer.setData(file);
    QImageReader reader(&buffer);
    const QSize size = reader.size();
    if (!size.isValid() || size.width() > longestSide || size.height() > longestSide) {
        return {};
    }
    const QImage read = reader.read();
    if (read.isNull()) {
        return {};
    }
    QImage picture(read.size(), QImage::Format_RGB32);
    picture.fill(Qt::white);
    QPainter(&picture).drawImage(QPoint{}, read);
    return picture;
}

const QRgb* lineOf(const QImage& picture, int y) {
    return reinterpret_cast<const QRgb*>(picture.constScanLine(y));
}

/// The side of the squares that a picture is made of: every change of colour lies on a multiple of it.
int moduleOf(const QImage& picture) {
    int side = std::gcd(picture.width(), picture.height());
    for (int y = 0; y < picture.height() && side > 1; ++y) {
        const QRgb* const line = lineOf(picture, y);
        if (y > 0 && !std::equal(line, line + picture.width(), lineOf(picture, y - 1))) {
            side = std::gcd(side, y);
        }
        for (int x = 1; x < picture.width(); ++x) {
            if (line[x] != line[x - 1]) {
                side = std::gcd(side, x);
            }
        }
    }
    return side;
}

/// In another size, each pixel as one of those that were there.
QImage picked(const QImage& picture, const QSize& size) {
    QImage image(size, QImage::Format_RGB32);
    for (int y = 0; y < size.height(); ++y) {
        const QRgb* const from = lineOf(picture, y * picture.height() / size.height());
        auto* const line = reinterpret_cast<QRgb*>(image.scanLine(y));
        for (int x = 0; x < size.width(); ++x) {
            line[x] = from[x * picture.width() / size.width()];
        }
    }
    return image;
}

QImage modulesIn(const QByteArray& file) {
    const QImage picture = pictureIn(file);
    return picture.isNull() ? picture : picked(picture, picture.size() / moduleOf(picture));
}

}  // namespace

CodeImage::CodeImage(QQuickItem* parent) : QQuickItem(parent) {
    setFlag(ItemHasContents);
}

void CodeImage::setFile(const QByteArray& file) {
    if (file == file_) {
        return;
    }
    file_ = file;
    modules_ = modulesIn(file_);
    Q_EMIT fileChanged();
    update();
}

QSGNode* CodeImage::updatePaintNode(QSGNode* old, UpdatePaintNodeData*) {
    delete old;
    const double ratio = window()->effectiveDevicePixelRatio();
    const double fit =
        modules_.isNull() ? 0 : std::min(width() * ratio / modules_.width(), height() * ratio / modules_.height());
    // What has more modules than its place has pixels is no code any more; it loses some.
    const double scale = fit >= 1 ? std::floor(fit) : fit;
    const QSize pixels{static_cast<int>(modules_.width() * scale), static_cast<int>(modules_.height() * scale)};
    if (pixels.isEmpty()) {
        return nullptr;
    }
    QSGImageNode* const node = window()->createImageNode();
    node->setOwnsTexture(true);
    node->setTexture(window()->createTextureFromImage(picked(modules_, pixels)));
    node->setFiltering(QSGTexture::Nearest);
    node->setMipmapFiltering(QSGTexture::None);
    // The corner on a pixel of its own, as far as this item stands on one.
    const QSizeF size = QSizeF{pixels} / ratio;
    const auto centred = [ratio](double whole, double part) { return std::floor((whole - part) / 2 * ratio) / ratio; };
    node->setRect({QPointF{centred(width(), size.width()), centred(height(), size.height())}, size});
    return node;
}

void CodeImage::itemChange(ItemChange change, const ItemChangeData& data) {
    QQuickItem::itemChange(change, data);
    if (change == ItemDevicePixelRatioHasChanged) {
        update();
    }
}

}  // namespace zelkovanta::screens::qml
