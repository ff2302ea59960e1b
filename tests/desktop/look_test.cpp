#include "screens/qml/symbols.h"
#include "tests/desktop/piece_fixture.h"

#include <cmath>
#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>

#include <QDir>
#include <QFont>
#include <QFontDatabase>
#include <QGuiApplication>
#include <QPainter>
#include <QScreen>
#include <QTest>
#include <gtest/gtest.h>

/// Colours, symbols and the small things that are drawn with them.
namespace zelkovanta::desktop_test {
namespace {

QColor withOpacity(const char* name, double opacity) {
    QColor color{name};
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

struct Named {
    const char* name;
    QColor light;
    QColor dark;
};

std::vector<Named> colors() {
    const auto fixed = [](const char* name, const char* color) { return Named{name, QColor{color}, QColor{color}}; };
    return {fixed("accent", "#FFE14D"),
            fixed("accentLight", "#FFEA6B"),
            fixed("ink", "#1A1206"),
            fixed("blue", "#5789F2"),
            fixed("red", "#E21833"),
            fixed("green", "#2FA24F"),
            fixed("stone", "#8A8170"),
            fixed("white", "#FFFFFF"),
            {"page", "#FFFFFF", "#141018"},
            {"band", "#F7F2E4", "#191521"},
            {"card", "#FFFFFF", "#1E1B24"},
            {"primary", "#1A1206", "#F3EFE6"},
            {"secondary", "#5C5142", "#C9C4BB"},
            {"tertiary", "#8A8170", "#8F8A80"},
            {"hairline", withOpacity("#1A1206", 0.08), withOpacity("#FFFFFF", 0.14)},
            {"blueText", "#3457C4", "#8FB0F7"},
            {"redText", "#C41230", "#FF6B7E"},
            {"stoneText", "#6E6553", "#A29A8B"},
            {"focusRing", "#3457C4", "#8FB0F7"}};
}

TEST(ThemeColors, areThoseOfThePaletteInBothAppearancesAndFollowThem) {
    Piece piece("Item {}");
    std::set<std::string> told;
    for (const auto scheme :
         {platform::ColorScheme::light, platform::ColorScheme::dark, platform::ColorScheme::light}) {
        piece.appearance.become(scheme);
        const bool dark = scheme == platform::ColorScheme::dark;
        EXPECT_EQ(piece.theme().dark(), dark);
        for (const Named& color : colors()) {
            const QColor shown = piece.theme().property(color.name).value<QColor>();
            EXPECT_EQ(shown.rgba(), (dark ? color.dark : color.light).rgba()) << color.name;
            told.insert(color.name);
        }
    }
    std::set<std::string> existing;
    const QMetaObject* const type = piece.theme().metaObject();
    for (int index = 0; index < type->propertyCount(); ++index) {
        if (type->property(index).metaType() == QMetaType::fromType<QColor>()) {
            existing.insert(type->property(index).name());
        }
    }
    EXPECT_EQ(told, existing);
}

TEST(ThemeColors, areFollowedByTextsAndSymbolsThatAreShown) {
    Piece piece(R"(
        Words { objectName: "words"; text: "Room 3"; y: 60; font.pixelSize: 40; font.bold: true }
        SymbolIcon { symbol: "plus"; color: Theme.primary; width: 40; height: 40 })");
    const QColor ink("#1A1206");
    const QColor paper("#F3EFE6");
    EXPECT_GT(pixelsOf(piece.picture().copy(0, 0, 50, 50), ink), 50);
    EXPECT_GT(pixelsOf(piece.picture().copy(0, 50, 200, 80), ink), 50);
    piece.appearance.become(platform::ColorScheme::dark);
    const QImage picture = piece.picture();
    EXPECT_EQ(pixelsOf(picture, ink), 0);
    EXPECT_GT(pixelsOf(picture.copy(0, 0, 50, 50), paper), 50);
    EXPECT_GT(pixelsOf(picture.copy(0, 50, 200, 80), paper), 50);
}

/// The names of symbols in the program's own sources.
std::set<std::string> usedSymbols() {
    static const std::regex named(R"re((?:\bsymbol\b|\bsystemImage\b)[^"\n;,]{0,20}"([a-z0-9._]+)")re");
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::recursive_directory_iterator("screens")) {
        const auto extension = entry.path().extension();
        if (extension != ".qml" && extension != ".cpp" && extension != ".h") {
            continue;
        }
        std::ostringstream text;
        text << std::ifstream(entry.path()).rdbuf();
        const std::string source = text.str();
        for (std::sregex_iterator found(source.begin(), source.end(), named), end; found != end; ++found) {
            if ((*found)[1] != "symbol") {  // the name of a model's field
                names.insert((*found)[1]);
            }
        }
    }
    return names;
}

std::set<std::string> existingSymbols() {
    std::set<std::string> names{screens::qml::brandMark};
    for (const QString& file : QDir(QStringLiteral(":/qt/qml/ZelkoVanta/Screens/symbols")).entryList()) {
        names.insert(file.chopped(4).toStdString());
    }
    return names;
}

TEST(Symbols, exclusivelyOnesThatExistAreUsed) {
    const auto used = usedSymbols();
    EXPECT_TRUE(used.contains("plus")) << "the sources are read";
    EXPECT_TRUE(used.contains("person.2.fill")) << "in C++ too";
    EXPECT_TRUE(used.contains("tray"));
    const auto existing = existingSymbols();
    for (const std::string& name : used) {
        EXPECT_TRUE(existing.contains(name)) << name;
    }
}

TEST(Symbols, allPaintInTheColourAndTheOpacityThatTheyAreGiven) {
    const auto existing = existingSymbols();
    EXPECT_GE(existing.size(), 17U);
    for (const std::string& name : existing) {
        QImage image(48, 48, QImage::Format_ARGB32);
        image.fill(Qt::transparent);
        {
            QPainter painter(&image);
            screens::qml::paintSymbol(painter, QString::fromStdString(name), QColor(200, 40, 80, 102), {0, 0, 48, 48});
        }
        int painted = 0;
        int most = 0;
        for (int y = 0; y < 48; ++y) {
            for (int x = 0; x < 48; ++x) {
                const QColor color = image.pixelColor(x, y);
                most = std::max(most, color.alpha());
                if (color.alpha() > 90) {
                    ++painted;
                    EXPECT_NEAR(color.red(), 200, 4) << name;
                    EXPECT_NEAR(color.blue(), 80, 4) << name;
                }
            }
        }
        EXPECT_GT(painted, 60) << name;
        EXPECT_NEAR(most, 102, 2) << name;
    }
}

QColor mixed(const QColor& over, double opacity, const QColor& ground) {
    const auto channel = [opacity](int above, int below) {
        return static_cast<int>(std::lround(above * opacity + below * (1 - opacity)));
    };
    return {channel(over.red(), ground.red()), channel(over.green(), ground.green()),
            channel(over.blue(), ground.blue())};
}

void expectNear(const QColor& color, const QColor& wanted, int forgiven = 2) {
    EXPECT_NEAR(color.red(), wanted.red(), forgiven)
        << color.name().toStdString() << " is not " << wanted.name().toStdString();
    EXPECT_NEAR(color.green(), wanted.green(), forgiven);
    EXPECT_NEAR(color.blue(), wanted.blue(), forgiven);
}

TEST(Avatar, isADiscWithARingAndInitials) {
    for (const auto appearance : {Appearance::light, Appearance::dark}) {
        Piece piece(R"(
            MemberAvatar { objectName: "with"; diameter: 80; initials: "L"; disc: Qt.alpha("#12A594", 0.29)
                           ringColor: "#FF0000" }
            MemberAvatar { x: 100; diameter: 80; initials: "L"; disc: "transparent" })",
                    appearance);
        const QImage picture = piece.picture();
        const double ratio = picture.devicePixelRatio();
        const auto at = [&](double x, double y) { return pixelAt(picture, x, y); };
        const QColor page = piece.theme().page();
        expectNear(at(12, 40), mixed("#12A594", 0.29, page));
        EXPECT_GT(at(40, 0.5).red(), 240);
        EXPECT_LT(at(40, 0.5).green(), 16) << "its ring";
        EXPECT_EQ(at(1, 1), page) << "it is round";
        EXPECT_EQ(at(112, 40), page) << "no colour, no disc";
        EXPECT_EQ(at(140, 0.5), page) << "a ring in the colour of the page";
        const auto initials = [&](double left) {
            const QRectF middle{(left + 20) * ratio, 20 * ratio, 40 * ratio, 40 * ratio};
            return pixelsOf(picture.copy(middle.toRect()), piece.theme().primary());
        };
        EXPECT_GT(initials(0), 20);
        EXPECT_GT(initials(100), 20);
        for (const Node& node : piece.nodes()) {
            EXPECT_NE(node.role, QAccessible::StaticText) << "the name stands beside it";
        }
    }
}

TEST(Avatar, hasInitialsInAFixedPartOfItsDiameter) {
    for (const double diameter : {24.0, 26.0, 28.0, 64.0}) {
        Piece piece("MemberAvatar { objectName: \"avatar\"; initials: \"LA\"; disc: \"transparent\"; diameter: " +
                    std::to_string(diameter) + " }");
        const auto font = piece.item("avatar")->childItems()[1]->property("font").value<QFont>();
        EXPECT_TRUE(font.bold());
        EXPECT_NEAR(font.pointSizeF() * QGuiApplication::primaryScreen()->logicalDotsPerInchY() / 72, 0.36 * diameter,
                    0.01);
        const auto* const ring = piece.item("avatar")->childItems()[0]->property("border").value<QObject*>();
        EXPECT_EQ(ring->property("width").toDouble(), 1.5);
    }
}

TEST(Rings, areAPixelAndAHalfWide) {
    Piece piece(R"(
        MemberAvatar { objectName: "avatar"; diameter: 80; initials: ""; disc: "#0000FF"; ringColor: "#FF0000" }
        TypeMark { objectName: "mark"; x: 100; side: 80; tint: "#FF0000" })");
    for (const char* const name : {"avatar", "mark"}) {
        const auto* const ring = piece.item(name)->childItems()[0]->property("border").value<QObject*>();
        EXPECT_EQ(ring->property("width").toDouble(), 1.5) << name;
        EXPECT_FALSE(ring->property("pixelAligned").toBool()) << name << ", or two pixels are drawn";
    }
    // Within the height of a pixel an edge of this bend is a fiftieth of a pixel off.
    constexpr int bend = 8;
    const QImage picture = piece.picture();
    expectNear(picture.pixelColor(0, 40), "#FF0000", bend);
    expectNear(picture.pixelColor(1, 40), mixed("#FF0000", 0.5, "#0000FF"), bend);
    expectNear(picture.pixelColor(2, 40), "#0000FF", bend);
}

TEST(AddButton, shinesAtTheTopAndCastsAShadow) {
    Piece piece(R"(ComposeFab { x: 40; y: 40 })");
    const QImage picture = piece.picture();
    const auto at = [&](double x, double y) { return pixelAt(picture, x, y); };
    expectNear(at(66, 42), "#FFEA6B");
    expectNear(at(66, 89), "#FFE14D");
    EXPECT_EQ(at(66, 66), QColor("#1A1206")) << "the plus";
    const QColor page = piece.theme().page();
    // All seven rings lie below the disc's edge, one less at each pixel outwards; the same at all sides.
    const double ring = 1 - std::pow(1 - 0.28, 1.0 / 7);
    for (int out = 0; out < 7; ++out) {
        const QColor wanted = mixed(Qt::black, 1 - std::pow(1 - ring, 7 - out), page);
        for (const QPointF& place : {QPointF{66, 39.5 - out}, QPointF{66, 92.5 + out}, QPointF{39.5 - out, 66}}) {
            EXPECT_NEAR(at(place.x(), place.y()).red(), wanted.red(), 8) << out << " pixels out";
        }
    }
    EXPECT_EQ(at(66, 32), page);
    EXPECT_EQ(at(66, 100), page);
}

TEST(AddButton, standsSixteenFromTheEdgesAndSaysWhatItDoes) {
    for (const int width : {320, 420, 1000}) {
        Page page;
        page.computer.launchWith("room", practice());
        page.open(width, 600);
        const QRect button =
            page.node(QAccessible::Button, "Send a request").rect().translated(-page.window->position());
        EXPECT_EQ(button.left() + button.width(), width - 16);
        const QRect corner = page.node(QAccessible::Button, "Unlink").rect().translated(-page.window->position());
        EXPECT_EQ(button.top() + button.height(), corner.top() - 16) << "above what stands at the foot";
    }
}

/// The tip of an item, once it has been made.
QObject* tipOf(const QQuickItem* item) {
    for (QObject* child : item->findChildren<QObject*>()) {
        if (child->property("delay").isValid() && child->property("timeout").isValid()) {
            return child;
        }
    }
    return nullptr;
}

TEST(AddButton, hasATipForThePointerOnceItHasRestedThere) {
    Piece piece(R"(ComposeFab { objectName: "add"; x: 40; y: 80 })");
    EXPECT_EQ(tipOf(piece.item("add")), nullptr) << "nobody has pointed there";
    QTest::mouseMove(piece.window.get(), {66, 106});
    piece.settle();
    QObject* const tip = tipOf(piece.item("add"));
    ASSERT_NE(tip, nullptr);
    EXPECT_EQ(tip->property("text").toString(), "Send a request");
    EXPECT_FALSE(tip->property("visible").toBool());
    QTest::mouseMove(piece.window.get(), {5, 5});
    tip->setProperty("delay", 0);
    QTest::mouseMove(piece.window.get(), {66, 106});
    piece.settle();
    EXPECT_TRUE(tip->property("visible").toBool());
}

TEST(AddButton, hasATipForTheKeyboard) {
    Piece piece(R"(ComposeFab { objectName: "add"; x: 40; y: 80 })");
    piece.focus("add", Qt::MouseFocusReason);
    EXPECT_EQ(tipOf(piece.item("add")), nullptr);
    piece.focus("around");
    piece.focus("add");
    EXPECT_NE(tipOf(piece.item("add")), nullptr);
}

/// Where each of the digits of a text begins, and where the text ends.
std::vector<double> edges(const Piece& piece, const std::string& name) {
    std::vector<double> found;
    QQuickItem* const digits = piece.item(name);
    for (QQuickItem* part : digits->childItems()[0]->childItems()) {
        if (part->property("text").isValid()) {
            found.push_back(part->x());
        }
    }
    found.push_back(digits->implicitWidth());
    return found;
}

TEST(CountingDigits, areAllAsWideAsTheWidestAndNothingMoves) {
    // The first is a font whose digits are of many widths; those of the other are even.
    ASSERT_TRUE(QFontDatabase::hasFamily(QStringLiteral("Cantarell")));
    for (const char* family : {"Cantarell", "DejaVu Sans"}) {
        const bool isEven = family == std::string_view{"DejaVu Sans"};
        for (const int size : {11, 14, 40}) {
            const auto digits = [&](const char* name, const char* text, int y) {
                return std::string("Digits { objectName: \"") + name + "\"; text: \"" + text +
                       "\"; font.pixelSize: " + std::to_string(size) + "; font.family: \"" + family +
                       "\"; y: " + std::to_string(y) + " }\n";
            };
            Piece piece(digits("ones", "1:11", 0) + digits("noughts", "0:00", 60) +
                        digits("sentence", "Code refreshes in 1:11", 120));
            EXPECT_EQ(edges(piece, "ones"), edges(piece, "noughts"));
            ASSERT_EQ(edges(piece, "ones").size(), isEven ? 2U : 5U);
            const auto before = edges(piece, "sentence");
            piece.object("sentence")->setProperty("text", "Code refreshes in 0:08");
            piece.settle();
            EXPECT_EQ(edges(piece, "sentence"), before);
            QFont font{QString::fromLatin1(family)};
            font.setPixelSize(size);
            double widest = 0;
            for (char digit = '0'; digit <= '9'; ++digit) {
                widest = std::max(widest, QFontMetricsF(font).horizontalAdvance(QLatin1Char(digit)));
            }
            if (!isEven) {
                EXPECT_NEAR(edges(piece, "ones")[3] - edges(piece, "ones")[2], widest, 0.01);
            }
        }
    }
}

TEST(CountingDigits, areReadOutAsTheyStand) {
    const Piece piece(R"(Digits { text: "1:02:03" })");
    EXPECT_EQ(piece.node(QAccessible::StaticText).name, "1:02:03");
}

QColor colorOf(const Node& node) {
    return node.interface->object()->property("color").value<QColor>();
}

TEST(Errors, areInTheBrandsRedInBothAppearances) {
    for (const auto appearance : {Appearance::light, Appearance::dark}) {
        Page paired(appearance);
        paired.computer.launchWith("room", practice());
        paired.open();
        paired.computer.run([](store::AppStore& store) { return store.sendSignal("ready", "", {}, {}, {}); });
        paired.computer.answer("POST", "/signals", 409, R"({"error":"busy","message":"Somebody was faster."})");
        paired.settle();
        EXPECT_EQ(colorOf(paired.node(QAccessible::AlertMessage, "Somebody was faster.")), QColor("#E21833"));

        Page unpaired(appearance);
        unpaired.computer.launchUnpaired();
        unpaired.open();
        unpaired.computer.fail("POST", "/pair/request", platform::TransportCause::refused);
        unpaired.settle();
        EXPECT_EQ(colorOf(unpaired.node(QAccessible::AlertMessage, "Reconnecting…")), QColor("#E21833"));
    }
}

TEST(Errors, areReadToTheirEnd) {
    Piece piece(R"(ErrorText { objectName: "error"; width: 120
                               text: "The office could not be asked, so nothing was sent." })");
    const QQuickItem* const error = piece.item("error");
    EXPECT_FALSE(error->property("truncated").toBool());
    EXPECT_GT(error->property("lineCount").toInt(), 1);
    EXPECT_GE(error->height(), error->implicitHeight());
    EXPECT_EQ(piece.node(QAccessible::AlertMessage).name, "The office could not be asked, so nothing was sent.");
    piece.object("error")->setProperty("text", "");
    EXPECT_FALSE(error->isVisible());
}

}  // namespace
}  // namespace zelkovanta::desktop_test
