#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <QFont>
#include <QGuiApplication>
#include <QQuickWindow>
#include <gtest/gtest.h>

namespace {

// Where Qt's handler, which has no state of its own, puts what it is told.
std::vector<std::string>& warnings() {
    static std::vector<std::string> told;
    return told;
}

void remember(QtMsgType type, const QMessageLogContext&, const QString& text) {
    std::fprintf(stderr, "%s\n", qPrintable(text));
    if (type != QtDebugMsg && type != QtInfoMsg) {
        warnings().push_back(text.toStdString());
    }
}

/// Whatever the windows complain about fails the test in which they do.
class WithoutWarnings : public testing::EmptyTestEventListener {
    void OnTestStart(const testing::TestInfo&) override { warnings().clear(); }
    void OnTestEnd(const testing::TestInfo&) override {
        for (const std::string& warning : warnings()) {
            ADD_FAILURE() << warning;
        }
    }
};

}  // namespace

int main(int argc, char** argv) {
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QQuickWindow::setSceneGraphBackend(QStringLiteral("software"));
    ::setenv("QSG_RENDER_LOOP", "basic", 1);
    const QGuiApplication application(argc, argv);
    QGuiApplication::setFont(QFont(QStringLiteral("DejaVu Sans")));
    ::testing::InitGoogleTest(&argc, argv);
    qInstallMessageHandler(remember);
    // GoogleTest owns it.
    ::testing::UnitTest::GetInstance()->listeners().Append(new WithoutWarnings);
    return RUN_ALL_TESTS();
}
