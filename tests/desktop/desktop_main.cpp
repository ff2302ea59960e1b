#include <cstdlib>

#include <QFont>
#include <QGuiApplication>
#include <QQuickWindow>
#include <gtest/gtest.h>

int main(int argc, char** argv) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QQuickWindow::setSceneGraphBackend(QStringLiteral("software"));
    ::setenv("QSG_RENDER_LOOP", "basic", 1);
    const QGuiApplication application(argc, argv);
    QGuiApplication::setFont(QFont(QStringLiteral("DejaVu Sans")));
    ::testing::InitGoogleTest(&argc, argv);
    return RUN_ALL_TESTS();
}
