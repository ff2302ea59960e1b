#include "app/main_window.h"

#include "screens/qml/brand_mark.h"
#include "screens/qml/registration.h"
#include "screens/qml/theme.h"

#include <QGuiApplication>
#include <QIcon>
#include <QPixmap>
#include <QUrl>

namespace zelkovanta::app {

MainWindow::~MainWindow() = default;

void MainWindow::make() {
    engine_ = std::make_unique<QQmlApplicationEngine>();
    screens::qml::registerScreens(*engine_, *appearance_);
    engine_->setInitialProperties({{QStringLiteral("page"), QVariant::fromValue(page_)}});
    engine_->load(QUrl{QString::fromLatin1(screens::qml::mainWindowUrl)});
    for (QObject* root : engine_->rootObjects()) {
        window_ = qobject_cast<QQuickWindow*>(root);
    }
    if (!window_) {
        qFatal("The window cannot be made.");
    }
    QIcon icon;
    for (const int side : {16, 32, 64}) {
        icon.addPixmap(QPixmap::fromImage(
            screens::qml::brandTileImage(side, screens::qml::Theme::accent(), screens::qml::Theme::ink())));
    }
    window_->setIcon(icon);
}

void MainWindow::show() {
    if (!window_) {
        make();
    }
    // Not `show`, which also takes back that the window is maximised.
    window_->setVisible(true);
}

void MainWindow::bringForward(const QString& activationToken) {
    if (!window_) {
        make();
    }
    if (window_->windowStates().testFlag(Qt::WindowMinimized)) {
        window_->setWindowStates(window_->windowStates() & ~Qt::WindowMinimized);
    }
    show();
    window_->raise();
    // Where Qt's Wayland part looks for it. It is of no use to anybody else, least of all to the programs started here.
    if (!activationToken.isEmpty()) {
        qputenv("XDG_ACTIVATION_TOKEN", activationToken.toUtf8());
    }
    window_->requestActivate();
    qunsetenv("XDG_ACTIVATION_TOKEN");
}

}  // namespace zelkovanta::app
