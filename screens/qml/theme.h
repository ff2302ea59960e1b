#pragma once

#include "platform/appearance.h"
#include "screens/theme/palette.h"

#include <memory>

#include <QColor>
#include <QObject>
#include <QtQmlIntegration>

class QJSEngine;
class QQmlEngine;

namespace zelkovanta::screens::qml {

[[nodiscard]] inline QColor toColor(const theme::Color& color) {
    return QColor::fromRgbF(static_cast<float>(color.red), static_cast<float>(color.green),
                            static_cast<float>(color.blue), static_cast<float>(color.opacity));
}

/// A colour that follows the appearance, as QML takes it: `Theme.dark ? pair.dark : pair.light`.
class ShownColor {
    Q_GADGET
    QML_VALUE_TYPE(shownColor)
    Q_PROPERTY(QColor light MEMBER light FINAL)
    Q_PROPERTY(QColor dark MEMBER dark FINAL)

public:
    QColor light;
    QColor dark;

    ShownColor() = default;
    explicit ShownColor(const theme::ColorPair& pair) : light(toColor(pair.light)), dark(toColor(pair.dark)) {}
    bool operator==(const ShownColor&) const = default;
};

/// Colours and sizes. Light or dark is what the desktop says; where it says nothing, what its palette is, which is
/// light where nobody has chosen one.
class Theme : public QObject {
    Q_OBJECT
    QML_ELEMENT
    QML_SINGLETON
    Q_PROPERTY(bool dark READ dark NOTIFY appearanceChanged)

    Q_PROPERTY(QColor accent READ accent CONSTANT)
    Q_PROPERTY(QColor accentLight READ accentLight CONSTANT)
    Q_PROPERTY(QColor ink READ ink CONSTANT)
    Q_PROPERTY(QColor blue READ blue CONSTANT)
    Q_PROPERTY(QColor red READ red CONSTANT)
    Q_PROPERTY(QColor green READ green CONSTANT)
    Q_PROPERTY(QColor stone READ stone CONSTANT)
    Q_PROPERTY(QColor white READ white CONSTANT)

    Q_PROPERTY(QColor page READ page NOTIFY appearanceChanged)
    Q_PROPERTY(QColor band READ band NOTIFY appearanceChanged)
    Q_PROPERTY(QColor card READ card NOTIFY appearanceChanged)
    Q_PROPERTY(QColor primary READ primary NOTIFY appearanceChanged)
    Q_PROPERTY(QColor secondary READ secondary NOTIFY appearanceChanged)
    Q_PROPERTY(QColor tertiary READ tertiary NOTIFY appearanceChanged)
    Q_PROPERTY(QColor hairline READ hairline NOTIFY appearanceChanged)
    Q_PROPERTY(QColor blueText READ blueText NOTIFY appearanceChanged)
    Q_PROPERTY(QColor redText READ redText NOTIFY appearanceChanged)
    Q_PROPERTY(QColor stoneText READ stoneText NOTIFY appearanceChanged)
    Q_PROPERTY(QColor focusRing READ blueText NOTIFY appearanceChanged)

    Q_PROPERTY(int badgeSize MEMBER badgeSize_ CONSTANT)
    Q_PROPERTY(int captionSize MEMBER captionSize_ CONSTANT)
    Q_PROPERTY(int textSize MEMBER textSize_ CONSTANT)
    Q_PROPERTY(int headlineSize MEMBER headlineSize_ CONSTANT)
    Q_PROPERTY(int titleSize MEMBER titleSize_ CONSTANT)
    Q_PROPERTY(int radius MEMBER radius_ CONSTANT)
    Q_PROPERTY(int cardRadius MEMBER cardRadius_ CONSTANT)
    Q_PROPERTY(int margin MEMBER margin_ CONSTANT)

public:
    /// The appearance must outlive it.
    explicit Theme(platform::Appearance& appearance, QObject* parent = nullptr);

    /// The one that `registerScreens` gave to the engine.
    static Theme* create(QQmlEngine* engine, QJSEngine* scripts);

    [[nodiscard]] bool dark() const { return dark_; }

    [[nodiscard]] static QColor accent() { return toColor(theme::brandYellow); }
    [[nodiscard]] static QColor accentLight() { return toColor(theme::brandYellowLight); }
    [[nodiscard]] static QColor ink() { return toColor(theme::ink); }
    [[nodiscard]] static QColor blue() { return toColor(theme::brandBlue); }
    [[nodiscard]] static QColor red() { return toColor(theme::brandRed); }
    [[nodiscard]] static QColor green() { return toColor(theme::brandGreen); }
    [[nodiscard]] static QColor stone() { return toColor(theme::stone); }
    [[nodiscard]] static QColor white() { return toColor(theme::white); }

    [[nodiscard]] QColor page() const { return shown(theme::pageBackground); }
    [[nodiscard]] QColor band() const { return shown(theme::sidebarBackground); }
    [[nodiscard]] QColor card() const { return shown(theme::cardBackground); }
    [[nodiscard]] QColor primary() const { return shown(theme::textPrimary); }
    [[nodiscard]] QColor secondary() const { return shown(theme::textSecondary); }
    [[nodiscard]] QColor tertiary() const { return shown(theme::textTertiary); }
    [[nodiscard]] QColor hairline() const { return shown(theme::hairline); }
    [[nodiscard]] QColor blueText() const { return shown(theme::blueText); }
    [[nodiscard]] QColor redText() const { return shown(theme::redText); }
    [[nodiscard]] QColor stoneText() const { return shown(theme::stoneText); }

    /// What a text size in pixels is in points, of which there may be parts as well.
    Q_INVOKABLE [[nodiscard]] double pointSize(double pixels) const;

    bool eventFilter(QObject* watched, QEvent* event) override;

Q_SIGNALS:
    void appearanceChanged();

private:
    [[nodiscard]] QColor shown(const theme::ColorPair& pair) const { return toColor(dark_ ? pair.dark : pair.light); }
    [[nodiscard]] bool isDark() const;
    void refresh();

    platform::Appearance& appearance_;
    platform::Observation observation_;
    bool dark_;

    const int badgeSize_ = 11;
    const int captionSize_ = 12;
    const int textSize_ = 14;
    const int headlineSize_ = 16;
    const int titleSize_ = 18;
    const int radius_ = 10;
    const int cardRadius_ = 13;
    const int margin_ = 12;
};

}  // namespace zelkovanta::screens::qml
