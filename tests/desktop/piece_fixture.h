#pragma once

#include "platform/simulated/simulated_appearance.h"
#include "screens/qml/theme.h"
#include "tests/desktop/page_fixture.h"

#include <map>
#include <memory>
#include <string>
#include <vector>

#include <QImage>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QVariant>

namespace zelkovanta::desktop_test {

/// Some components in a window of their own, in the colour of the page. What they need from C++ they find by name.
class Piece {
public:
    using Names = std::map<std::string, QVariant>;

    /// `qml` stands in an item that fills the window, is called `around`, and counts in its property `heard` the
    /// presses of Return that come as far as it. The window is called `window` and has a counter `presses`.
    explicit Piece(const std::string& qml, Appearance shown = Appearance::light, QSize size = {300, 200},
                   const Names& names = {});
    ~Piece();

    void settle();
    [[nodiscard]] QImage picture();

    /// The item or object with this `objectName`.
    [[nodiscard]] QObject* object(const std::string& name) const;
    [[nodiscard]] QQuickItem* item(const std::string& name) const;
    [[nodiscard]] int presses() const { return window->property("presses").toInt(); }
    [[nodiscard]] int heard() const;

    void key(Qt::Key key, Qt::KeyboardModifiers with = Qt::NoModifier);
    /// Holds a key until it has come so often again.
    void hold(Qt::Key key, int repeats);
    /// Gives an item the keyboard, as Tab does or as a click does.
    void focus(const std::string& name, Qt::FocusReason reason = Qt::TabFocusReason);

    [[nodiscard]] std::vector<Node> nodes() const { return nodesIn(window.get()); }
    /// The visible node of this role, of which there must be one.
    [[nodiscard]] Node node(QAccessible::Role role) const;
    /// As a screen reader; ends the test where the node does not offer it.
    void act(const Node& node, const QString& action);

    [[nodiscard]] const screens::qml::Theme& theme() const;

    platform::simulated::SimulatedAppearance appearance;
    QQmlEngine engine;
    std::unique_ptr<QQuickWindow> window;
};

/// The colour at a place that is given in the window's own measure.
[[nodiscard]] QColor pixelAt(const QImage& picture, double x, double y);
/// How many pixels have just this colour.
[[nodiscard]] int pixelsOf(const QImage& picture, const QColor& color);

}  // namespace zelkovanta::desktop_test
