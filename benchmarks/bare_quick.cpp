// What a window of Qt Quick costs before anything is in it: the peer of the program's own window.

#include <QGuiApplication>
#include <QQmlApplicationEngine>
#include <QQuickWindow>

int main(int argc, char** argv) {
    QQuickWindow::setSceneGraphBackend(QStringLiteral("software"));
    qputenv("QSG_RENDER_LOOP", "basic");
    const QGuiApplication application(argc, argv);
    QQmlApplicationEngine engine;
    engine.loadData(
        "import QtQuick\n"
        "Window { visible: true; width: 420; height: 680; color: \"white\"; Text { anchors.centerIn: parent; text: \"A "
        "window\" } }\n");
    return engine.rootObjects().isEmpty() ? 1 : QGuiApplication::exec();
}
