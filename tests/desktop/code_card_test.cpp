#include "office/qr_picture.h"
#include "tests/desktop/piece_fixture.h"

#include <cmath>
#include <optional>
#include <string>

#include <QBuffer>
#include <gtest/gtest.h>

/// Codes to be scanned, in the pixels of the screen: run at several scales of it.
namespace zelkovanta::desktop_test {
namespace {

using namespace std::chrono_literals;

constexpr const char* setupData = "zelkovanta://setup?token=zvs_6VFnqjAwzlAoq6Fg2GKUaq5p81N0pyjNc0uGwf56JLA";
constexpr int quietZone = 4;

records::QrTokenResponse codeOf(const std::string& picture) {
    return {.token = "token",
            .claimToken = "claim",
            .qrData = setupData,
            .qrPng = picture,
            .expiresAt = "2026-01-02T08:05:00Z"};
}

QByteArray fileOf(const QImage& image) {
    QByteArray file;
    QBuffer buffer(&file);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return file;
}

QByteArray officesFile() {
    const std::string url = office::qrPicture(setupData);
    return QByteArray::fromBase64(QByteArray::fromStdString(url.substr(url.find(',') + 1)));
}

/// The office's picture with one pixel to a module.
QImage modules() {
    const QImage picture = QImage::fromData(officesFile());
    // The light around it is a few modules wide.
    int first = 0;
    while (first < picture.width() && picture.pixelColor(first, first) != Qt::black) {
        ++first;
    }
    const int module = first / quietZone;
    return picture.scaled(picture.size() / module);
}

/// What is drawn in a rectangle is the code in squares of just `pixels`, and white around it.
void expectCode(const QImage& drawn, const QImage& code, int pixels) {
    std::optional<QPoint> first;
    for (int y = 0; y < drawn.height() && !first; ++y) {
        for (int x = 0; x < drawn.width() && !first; ++x) {
            if (drawn.pixelColor(x, y) != Qt::white) {
                first = QPoint{x, y};
            }
        }
    }
    ASSERT_TRUE(first.has_value());
    const QPoint corner = *first - QPoint{quietZone * pixels, quietZone * pixels};
    int wrong = 0;
    for (int y = 0; y < drawn.height(); ++y) {
        for (int x = 0; x < drawn.width(); ++x) {
            const QPoint place = QPoint{x, y} - corner;
            const QPoint module{place.x() / pixels, place.y() / pixels};
            const bool inside = place.x() >= 0 && place.y() >= 0 && code.rect().contains(module);
            const QColor wanted = inside ? code.pixelColor(module) : QColor(Qt::white);
            wrong += drawn.pixelColor(x, y) != wanted ? 1 : 0;
        }
    }
    EXPECT_EQ(wrong, 0);
    // As much is left on one side as on the other, but for what cannot be halved.
    const int rest = drawn.width() - code.width() * pixels;
    EXPECT_NEAR(corner.x(), rest / 2.0, 1.5);
    EXPECT_NEAR(corner.y(), (drawn.height() - code.height() * pixels) / 2.0, 1.5);
}

QImage part(const QImage& picture, const QRectF& rect) {
    const double ratio = picture.devicePixelRatio();
    QImage part = picture.copy(QRectF{rect.topLeft() * ratio, rect.size() * ratio}.toRect());
    part.setDevicePixelRatio(1);
    return part;
}

TEST(OfficesCode, hasFortyFiveModules) {
    EXPECT_EQ(modules().size(), QSize(45, 45));
}

class CodeOnPage : public testing::TestWithParam<Appearance> {
protected:
    void expectSharp(const char* name) {
        QImage picture = page.picture();
        picture.setDevicePixelRatio(page.window->effectiveDevicePixelRatio());
        const QRect place = page.node(QAccessible::Graphic, name).rect().translated(-page.window->position());
        ASSERT_EQ(place.size(), QSize(180, 180));
        const int pixels = static_cast<int>(std::floor(180 * picture.devicePixelRatio() / 45));
        EXPECT_EQ(pixels * 45, 180 * picture.devicePixelRatio()) << "it fills its card";
        expectCode(part(picture, place), modules(), pixels);
    }

    Page page{GetParam()};
};

INSTANTIATE_TEST_SUITE_P(BothAppearances, CodeOnPage, testing::Values(Appearance::light, Appearance::dark));

TEST_P(CodeOnPage, theSetupCodeIsDrawnInEqualModulesOfWholePixels) {
    page.computer.launchUnpaired();
    page.open();
    page.computer.answerWith("POST", "/pair/request", codeOf(office::qrPicture(setupData)));
    for (const QSize size : {QSize{420, 680}, QSize{360, 600}, QSize{421, 681}}) {
        page.resize(size.width(), size.height());
        expectSharp("Setup code");
    }
}

TEST_P(CodeOnPage, theSignInCodeIsDrawnInEqualModulesOfWholePixels) {
    page.computer.launchWith("shared",
                             practice([](records::StateSnapshot& state) { state.device = support::makeDevice(); }));
    page.open();
    page.computer.answerWith("POST", "/devices/me/signin-qr", codeOf(office::qrPicture(setupData)));
    page.settle();
    expectSharp("Sign-in code");
}

class CodePicture : public testing::Test {
protected:
    static std::string image(double side) {
        return "CodeImage { objectName: \"code\"; file: codeFile; x: 10; y: 10; width: " + std::to_string(side) +
               "; height: width }";
    }
};

TEST_F(CodePicture, anyPlaceHoldsAsManyWholePixelsAsFit) {
    for (const double side : {45.0, 89.0, 116.0, 180.0, 212.0, 225.0}) {
        Piece piece(image(side), Appearance::light, {300, 300}, {{"codeFile", officesFile()}});
        const QImage picture = piece.picture();
        const double ratio = picture.devicePixelRatio();
        const QRectF place{9, 9, side + 2, side + 2};
        expectCode(part(picture, place), modules(), static_cast<int>(std::floor(side * ratio / 45)));
    }
}

TEST_F(CodePicture, isDrawnAnewInAnotherSizeAndForAnotherCode) {
    Piece piece(image(180), Appearance::light, {300, 300}, {{"codeFile", officesFile()}});
    piece.item("code")->setSize({90, 90});
    const double ratio = piece.picture().devicePixelRatio();
    expectCode(part(piece.picture(), {10, 10, 200, 200})
                   .copy(0, 0, static_cast<int>(90 * ratio), static_cast<int>(90 * ratio)),
               modules(), static_cast<int>(std::floor(90 * ratio / 45)));
    piece.item("code")->setProperty("file", QByteArray("none"));
    EXPECT_FALSE(piece.item("code")->property("legible").toBool());
    EXPECT_EQ(pixelsOf(piece.picture(), Qt::black), 0);
}

TEST_F(CodePicture, aPictureOfOnePixelAModuleIsTakenAsItIs) {
    Piece piece(image(180), Appearance::light, {300, 300}, {{"codeFile", fileOf(modules())}});
    const double ratio = piece.picture().devicePixelRatio();
    expectCode(part(piece.picture(), {10, 10, 180, 180}), modules(), static_cast<int>(std::floor(180 * ratio / 45)));
}

TEST_F(CodePicture, whatHasMorePixelsThanItsPlaceIsNotSmoothedEither) {
    QImage noise(700, 700, QImage::Format_RGB32);
    for (int y = 0; y < 700; ++y) {
        for (int x = 0; x < 700; ++x) {
            noise.setPixelColor(x, y, (x * 7 + y * 13 + x * y) % 3 == 0 ? Qt::black : Qt::white);
        }
    }
    Piece piece(image(100), Appearance::light, {300, 300}, {{"codeFile", fileOf(noise)}});
    const QImage picture = piece.picture();
    EXPECT_EQ(pixelsOf(picture, Qt::black) + pixelsOf(picture, Qt::white), picture.width() * picture.height());
    EXPECT_GT(pixelsOf(picture, Qt::black), 1000);
}

TEST_F(CodePicture, whatLetsThePageThroughStandsOnWhite) {
    QImage glass(4, 4, QImage::Format_ARGB32);
    glass.fill(Qt::transparent);
    glass.setPixelColor(1, 1, Qt::black);
    Piece piece(image(100), Appearance::dark, {300, 300}, {{"codeFile", fileOf(glass)}});
    EXPECT_EQ(part(piece.picture(), {10, 10, 100, 100}).pixelColor(3, 3), QColor(Qt::white));
}

/// A card with everything that it may hold.
constexpr auto card = R"(
    QrCodeCard {
        objectName: "card"
        x: 10; y: 10; width: 280
        spokenName: "Setup code"
        hasImage: true
        file: codeFile
        inSight: true
        caption: "Scan with the app"
        expiresAt: "soon"
        property int asked: 0
        onTicked: { ++asked; countdown = expiresAt === "" ? "" : expiresAt + " 0:5" + asked; }
        placeholder: "Getting a code…"
        illegibleText: "The code can't be shown."
    })";

class Card : public testing::TestWithParam<Appearance> {
protected:
    std::vector<std::string> said() const {
        std::vector<std::string> texts;
        for (const Node& node : piece.nodes()) {
            if (node.role == QAccessible::StaticText || node.role == QAccessible::Graphic) {
                texts.push_back(node.name);
            }
        }
        return texts;
    }
    void set(const char* property, const QVariant& value) {
        piece.object("card")->setProperty(property, value);
        piece.settle();
    }
    /// The clock of the countdown or that of the spinner, by how often it ticks.
    bool ticks(int interval) const {
        for (const QObject* child : piece.object("card")->findChildren<QObject*>()) {
            if (child->property("interval").toInt() == interval && child->property("repeat").toBool()) {
                return child->property("running").toBool();
            }
        }
        throw std::logic_error("There is no such clock");
    }
    bool spins() const { return ticks(150); }

    Piece piece{card, GetParam(), {300, 320}, {{"codeFile", officesFile()}}};
};

INSTANTIATE_TEST_SUITE_P(BothAppearances, Card, testing::Values(Appearance::light, Appearance::dark));

TEST_P(Card, isWhiteWithAnOutlineAndHasWhatBelongsToItBelow) {
    const QImage picture = piece.picture();
    const auto at = [&](double x, double y) { return pixelAt(picture, x, y); };
    EXPECT_EQ(at(150, 14), QColor(Qt::white));
    EXPECT_EQ(at(54, 100), QColor(Qt::white));
    EXPECT_EQ(at(20, 100), piece.theme().page());
    const QObject* const ground = piece.item("card")->childItems()[0];
    const QObject* const outline = ground->property("border").value<QObject*>();
    EXPECT_EQ(outline->property("color").value<QColor>(), piece.theme().hairline());
    EXPECT_EQ(outline->property("width").toInt(), 1);
    ASSERT_EQ(said().size(), 3U);
    EXPECT_EQ(said()[0], "Setup code");
    EXPECT_EQ(said()[1], "Scan with the app");
    EXPECT_TRUE(said()[2].starts_with("soon 0:5")) << said()[2];
    const auto lines = piece.item("card")->childItems();
    EXPECT_EQ(lines[1]->property("color").value<QColor>(), piece.theme().secondary());
    EXPECT_EQ(lines[2]->property("color").value<QColor>(), piece.theme().tertiary());
    EXPECT_GE(lines[1]->y(), 200) << "below the card, where its colours can be read";
    EXPECT_GT(lines[2]->y(), lines[1]->y());
    EXPECT_EQ(lines[2]->property("font").value<QFont>().pixelSize(), 12);
}

TEST_P(Card, withoutACodeThatCanBeShownSomethingGoesOn) {
    EXPECT_FALSE(spins());
    set("hasImage", false);
    EXPECT_TRUE(spins());
    EXPECT_EQ(said()[0], "Getting a code…");
    set("hasImage", true);
    set("file", QByteArray("none"));
    EXPECT_TRUE(spins());
    EXPECT_EQ(said()[0], "The code can't be shown.");
    EXPECT_GT(pixelsOf(piece.picture(), "#1A1206"), 0) << "its words are dark on white";
    set("inSight", false);
    EXPECT_FALSE(spins()) << "nobody looks";
}

TEST_P(Card, countsOnlyWhileSomebodyMayLookAndSomethingEnds) {
    EXPECT_TRUE(ticks(1000));
    set("inSight", false);
    EXPECT_FALSE(ticks(1000));
    const int asked = piece.object("card")->property("asked").toInt();
    set("inSight", true);
    EXPECT_TRUE(ticks(1000));
    EXPECT_EQ(piece.object("card")->property("asked").toInt(), asked + 1) << "at once";
    set("expiresAt", "later");
    EXPECT_EQ(said().back().substr(0, 7), "later 0");
    set("expiresAt", "");
    EXPECT_FALSE(ticks(1000));
    EXPECT_EQ(said().back(), "Scan with the app");
    set("caption", "");
    EXPECT_EQ(said().back(), "Setup code");
    EXPECT_EQ(piece.item("card")->implicitHeight(), 200) << "what is empty takes no room";
}

TEST_P(Card, isFadedWhereItIsNotToBeReliedOn) {
    EXPECT_GT(pixelsOf(piece.picture(), Qt::black), 1000);
    set("faded", true);
    EXPECT_EQ(pixelsOf(piece.picture(), Qt::black), 0);
    EXPECT_EQ(said()[0], "Setup code");
}

TEST(SignInCard, countsDownInMinutesAndSecondsOfOneWidth) {
    Page page;
    page.computer.launchWith("shared",
                             practice([](records::StateSnapshot& state) { state.device = support::makeDevice(); }));
    page.open();
    page.computer.answerWith("POST", "/devices/me/signin-qr", codeOf(office::qrPicture(setupData)));
    page.settle();
    const auto line = [&] { return page.node(QAccessible::StaticText, "Code refreshes in"); };
    EXPECT_EQ(line().name, "Code refreshes in 0:50");
    const QRect place = line().rect();
    QObject* shown = nullptr;
    for (QObject* object : page.window->findChildren<QObject*>()) {
        if (object->property("countdown").isValid() && object->property("expiresAt").toString() != "") {
            shown = object;
        }
    }
    ASSERT_NE(shown, nullptr);
    // What its clock does once a second.
    for (const auto& [time, text] : std::vector<std::pair<platform::Duration, std::string>>{
             {9s, "0:41"}, {400ms, "0:41"}, {200ms, "0:40"}, {35400ms, "0:05"}}) {
        page.computer.loop.advance(time);
        QMetaObject::invokeMethod(shown, "ticked");
        page.settle();
        EXPECT_EQ(line().name, "Code refreshes in " + text);
        EXPECT_EQ(line().rect().width(), place.width());
    }
}

TEST(SetupCard, movesNothingInAWindowThatIsHidden) {
    Page page;
    page.computer.launchUnpaired();
    page.open();
    const auto spins = [&] {
        for (const QObject* object : page.window->findChildren<QObject*>()) {
            if (object->property("interval").toInt() == 150 && object->property("running").toBool()) {
                return true;
            }
        }
        return false;
    };
    EXPECT_TRUE(spins()) << "a code is on its way";
    page.window->showMinimized();
    page.settle();
    EXPECT_FALSE(spins());
    page.window->showNormal();
    page.settle();
    EXPECT_TRUE(spins());
    page.window->hide();
    page.settle();
    EXPECT_FALSE(spins());
}

}  // namespace
}  // namespace zelkovanta::desktop_test
