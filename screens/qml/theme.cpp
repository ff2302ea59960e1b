#include "screens/qml/theme.h"

#include <utility>

#include <QEvent>
#include <QGuiApplication>
#include <QPalette>
#include <QQmlEngine>
#include <QScreen>

namespace zelkovanta::screens::qml {

Theme::Theme(platform::Appearance& appearance, QObject* parent)
    : QObject(parent),
      appearance_(appearance),
      observation_(appearance.observe([this] { refresh(); })),
      dark_(isDark()) {
    // The palette changes with the desktop's own theme.
    QCoreApplication::instance()->installEventFilter(this);
}

Theme* Theme::create(QQmlEngine* engine, QJSEngine*) {
    auto* const theme = engine->findChild<Theme*>(QString{}, Qt::FindDirectChildrenOnly);
    QQmlEngine::setObjectOwnership(theme, QQmlEngine::CppOwnership);
    return theme;
}

bool Theme::isDark() const {
    switch (appearance_.colorScheme()) {
        case platform::ColorScheme::light:
            return false;
        case platform::ColorScheme::dark:
            return true;
        case platform::ColorScheme::unknown:
            break;
    }
    return QGuiApplication::palette().color(QPalette::Window).lightnessF() < 0.5F;
}

double Theme::pointSize(double pixels) const {
    constexpr double pointsInAnInch = 72;
    return pixels * pointsInAnInch / QGuiApplication::primaryScreen()->logicalDotsPerInchY();
}

void Theme::refresh() {
    const bool dark = isDark();
    if (std::exchange(dark_, dark) != dark) {
        Q_EMIT appearanceChanged();
    }
}

bool Theme::eventFilter(QObject* watched, QEvent* event) {
    if (event->type() == QEvent::ApplicationPaletteChange) {
        refresh();
    }
    return QObject::eventFilter(watched, event);
}

}  // namespace zelkovanta::screens::qml
