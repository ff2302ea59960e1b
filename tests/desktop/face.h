#pragma once

#include "tests/desktop/drawn_items.h"
#include "tests/desktop/page_fixture.h"

#include <stdexcept>
#include <string>
#include <string_view>

#include <QColor>
#include <QFont>
#include <gtest/gtest.h>

/// In which colours and letters a page is drawn, in either appearance.
namespace zelkovanta::desktop_test {

inline constexpr auto symbolIcon = "zelkovanta::screens::qml::SymbolIcon";

/// A colour in either appearance, as Qt reads it.
struct Pair {
    const char* light{};
    const char* dark{};
};

inline constexpr Pair primary{"#1A1206", "#F3EFE6"};
inline constexpr Pair secondary{"#5C5142", "#C9C4BB"};
inline constexpr Pair tertiary{"#8A8170", "#8F8A80"};
inline constexpr Pair pageGround{"#FFFFFF", "#141018"};
inline constexpr Pair card{"#FFFFFF", "#1E1B24"};
inline constexpr Pair ink{"#1A1206", "#1A1206"};
inline constexpr Pair white{"#FFFFFF", "#FFFFFF"};
inline constexpr Pair yellow{"#FFE14D", "#FFE14D"};
inline constexpr Pair red{"#E21833", "#E21833"};
inline constexpr Pair redText{"#C41230", "#FF6B7E"};
inline constexpr Pair blueText{"#3457C4", "#8FB0F7"};

[[nodiscard]] inline QColor withOpacity(const char* color, double opacity) {
    QColor result{QLatin1String{color}};
    result.setAlphaF(static_cast<float>(opacity));
    return result;
}

/// What is drawn is told in eight bits for each part.
[[nodiscard]] inline std::string told(const QColor& color) {
    return color.name(QColor::HexArgb).toStdString();
}

class Face : public testing::TestWithParam<Appearance> {
protected:
    Face() : page(GetParam()) {}

    [[nodiscard]] static bool isDark() { return GetParam() == Appearance::dark; }
    [[nodiscard]] static QColor of(const Pair& pair) {
        return QColor{QLatin1String{isDark() ? pair.dark : pair.light}};
    }
    [[nodiscard]] static QColor hairline() {
        return isDark() ? withOpacity("#FFFFFF", 0.14) : withOpacity("#1A1206", 0.08);
    }

    /// The visible item of this type, of which there must be one.
    [[nodiscard]] QQuickItem* only(std::string_view type, const QQuickItem* in = nullptr) const {
        const auto found = shownItemsOfType(in != nullptr ? in : page.window->contentItem(), type);
        if (found.size() != 1) {
            throw std::logic_error(std::to_string(found.size()) + " of " + std::string{type});
        }
        return found.front();
    }
    /// The visible text that says this.
    [[nodiscard]] static QQuickItem* text(const QQuickItem* in, const char* words) {
        for (const char* type : {"Words", "RowLine", "Caption", "SectionHeader", "QQuickText"}) {
            for (QQuickItem* item : shownItemsOfType(in, type)) {
                if (item->property("text").toString() == QString::fromUtf8(words)) {
                    return item;
                }
            }
        }
        throw std::logic_error(std::string{"Nobody says "} + words);
    }
    [[nodiscard]] static QColor colorOf(const QObject* item) { return item->property("color").value<QColor>(); }
    [[nodiscard]] static QColor outlineOf(const QObject* item) {
        return item->property("border").value<QObject*>()->property("color").value<QColor>();
    }
    [[nodiscard]] static double outlineWidthOf(const QObject* item) {
        return item->property("border").value<QObject*>()->property("width").toDouble();
    }
    /// The face behind what can be pressed.
    [[nodiscard]] static QObject* faceOf(const QObject* control) {
        return control->property("background").value<QObject*>();
    }
    static void expectText(const QQuickItem* item, const Pair& color, int size, QFont::Weight weight) {
        const std::string words = item->property("text").toString().toStdString();
        EXPECT_EQ(told(colorOf(item)), told(of(color))) << words;
        EXPECT_EQ(item->property("font").value<QFont>().pixelSize(), size) << words;
        EXPECT_EQ(item->property("font").value<QFont>().weight(), weight) << words;
    }
    /// A type's mark in the office's colour: a disc, and a fainter one in a ring around it.
    static void expectMark(const QQuickItem* mark, const char* color) {
        const auto discs = shownItemsOfType(mark, "QQuickRectangle");
        ASSERT_EQ(discs.size(), 2U);
        EXPECT_EQ(told(colorOf(discs[0])), told(withOpacity(color, 0.22)));
        EXPECT_EQ(told(outlineOf(discs[0])), told(withOpacity(color, 0.55)));
        EXPECT_EQ(outlineWidthOf(discs[0]), 1.5);
        EXPECT_EQ(told(colorOf(discs[1])), told(QColor{QLatin1String{color}}));
    }

    Page page;
};

/// What an instance of a face's tests is called.
[[nodiscard]] inline std::string appearanceName(const testing::TestParamInfo<Appearance>& each) {
    return each.param == Appearance::dark ? "dark" : "light";
}

}  // namespace zelkovanta::desktop_test
