#include "tests/desktop/page_scenes.h"

#include <algorithm>
#include <cstdlib>
#include <string>

#include <QDir>
#include <QStringList>
#include <gtest/gtest.h>

/// The page beside pictures of it that somebody has looked at: `./dev screenshots --references` draws them anew.
namespace zelkovanta::desktop_test {
namespace {

class PageReference : public testing::TestWithParam<KeptPicture> {};

INSTANTIATE_TEST_SUITE_P(EveryPicture, PageReference, testing::ValuesIn(keptPictures()), [](const auto& each) {
    std::string name = pictureName(each.param.scene, each.param.appearance);
    std::ranges::replace(name, '-', '_');
    return name;
});

/// How far two pictures are apart: the share of their pixels of which a channel differs by more than an eye forgives.
double difference(const QImage& left, const QImage& right) {
    constexpr int forgiven = 48;
    const QImage one = left.convertToFormat(QImage::Format_RGB32);
    const QImage other = right.convertToFormat(QImage::Format_RGB32);
    qint64 differing = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QRgb a = one.pixel(x, y);
            const QRgb b = other.pixel(x, y);
            const int most =
                std::max({std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)), std::abs(qBlue(a) - qBlue(b))});
            differing += most > forgiven ? 1 : 0;
        }
    }
    return static_cast<double>(differing) / (static_cast<double>(one.width()) * one.height());
}

TEST_P(PageReference, isWhatSomebodyHasLookedAt) {
    const auto& [name, appearance] = GetParam();
    const std::string file = "tests/data/screens/" + pictureName(name, appearance) + ".png";
    const QImage reference(QString::fromStdString(file));
    ASSERT_FALSE(reference.isNull()) << file;
    const auto all = scenes();
    const auto scene = std::ranges::find(all, name, &Scene::name);
    ASSERT_NE(scene, all.end());
    const QImage drawn = draw(*scene, appearance, "en");
    ASSERT_EQ(drawn.size(), reference.size());
    // A moved line of text is a hundredth of a picture; another way to smooth a letter is not.
    EXPECT_LT(difference(drawn, reference), 0.004) << file;
}

TEST(KeptPictures, areAllLookedAt) {
    QStringList looked;
    for (const KeptPicture& each : keptPictures()) {
        looked.push_back(QString::fromStdString(pictureName(each.scene, each.appearance) + ".png"));
    }
    looked.sort();
    EXPECT_EQ(QDir(QStringLiteral("tests/data/screens")).entryList(QDir::Files, QDir::Name), looked);
}

TEST(PictureDifference, findsAMovedLineAndForgivesASmoothedEdge) {
    QImage plain(100, 100, QImage::Format_RGB32);
    plain.fill(Qt::white);
    QImage smoothed = plain;
    QImage moved = plain;
    for (int x = 0; x < 100; ++x) {
        smoothed.setPixelColor(x, 50, QColor(220, 220, 220));
        moved.setPixelColor(x, 50, Qt::black);
    }
    EXPECT_EQ(difference(plain, smoothed), 0);
    EXPECT_GE(difference(plain, moved), 0.01);
}

}  // namespace
}  // namespace zelkovanta::desktop_test
