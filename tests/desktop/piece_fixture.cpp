#include "tests/desktop/piece_fixture.h"

#include "screens/qml/registration.h"

#include <stdexcept>

#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlContext>
#include <QtTest/QTest>

namespace zelkovanta::desktop_test {

Piece::Piece(const std::string& qml, Appearance shown, QSize size, const Names& names)
    : appearance(shown == Appearance::dark ? platform::ColorScheme::dark : platform::ColorScheme::light) {
    QAccessible::setActive(true);
    screens::qml::registerScreens(engine, appearance);
    for (const auto& [name, value] : names) {
        engine.rootContext()->setContextProperty(QString::fromStdString(name), value);
    }
    QQmlComponent component(&engine);
    component.setData(QByteArray::fromStdString(R"(
        import QtQuick
        import ZelkoVanta.Screens
        Window {
            id: window
            property int presses: 0
            color: Theme.page
            Item {
                id: around
                objectName: "around"
                property int heard: 0
                anchors.fill: parent
                Keys.onReturnPressed: ++heard
                Keys.onEnterPressed: ++heard
        )" + qml + "\n}}"),
                      QUrl{});
    window.reset(qobject_cast<QQuickWindow*>(component.create()));
    if (!window) {
        throw std::logic_error(component.errorString().toStdString());
    }
    window->resize(size);
    window->show();
    window->requestActivate();
    settle();
}

Piece::~Piece() = default;

void Piece::settle() {
    for (int round = 0; round < 2; ++round) {
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        if (window->isVisible()) {
            static_cast<void>(window->grabWindow());
        }
    }
}

QImage Piece::picture() {
    settle();
    QImage picture = window->grabWindow();
    picture.setDevicePixelRatio(window->effectiveDevicePixelRatio());
    return picture;
}

QObject* Piece::object(const std::string& name) const {
    auto* const found = window->findChild<QObject*>(QString::fromStdString(name));
    if (found == nullptr) {
        throw std::logic_error("Nothing is called \"" + name + "\" here");
    }
    return found;
}

QQuickItem* Piece::item(const std::string& name) const {
    return qobject_cast<QQuickItem*>(object(name));
}

int Piece::heard() const {
    return object("around")->property("heard").toInt();
}

void Piece::key(Qt::Key key, Qt::KeyboardModifiers with) {
    QTest::keyClick(window.get(), key, with);
    settle();
}

void Piece::hold(Qt::Key key, int repeats) {
    holdKey(window.get(), key, repeats);
    settle();
}

void Piece::focus(const std::string& name, Qt::FocusReason reason) {
    item(name)->forceActiveFocus(reason);
    settle();
}

Node Piece::node(QAccessible::Role role) const {
    std::vector<Node> found = nodes();
    std::erase_if(found, [role](const Node& node) { return node.role != role; });
    if (found.size() != 1) {
        throw std::logic_error("There are " + std::to_string(found.size()) + " of role " + std::to_string(role));
    }
    return found.front();
}

void Piece::act(const Node& node, const QString& action) {
    QAccessibleActionInterface* const actions = node.interface->actionInterface();
    if (actions == nullptr || !actions->actionNames().contains(action)) {
        throw std::logic_error("\"" + node.name + "\" has no action " + action.toStdString());
    }
    actions->doAction(action);
    settle();
}

const screens::qml::Theme& Piece::theme() const {
    return *engine.findChild<screens::qml::Theme*>();
}

QColor pixelAt(const QImage& picture, double x, double y) {
    const double ratio = picture.devicePixelRatio();
    return picture.pixelColor(static_cast<int>(x * ratio), static_cast<int>(y * ratio));
}

int pixelsOf(const QImage& picture, const QColor& color) {
    int count = 0;
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            count += picture.pixelColor(x, y) == color ? 1 : 0;
        }
    }
    return count;
}

}  // namespace zelkovanta::desktop_test
