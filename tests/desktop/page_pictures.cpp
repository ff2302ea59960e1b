// page_pictures FOLDER [LANGUAGE] [SUFFIX]: draws the page in the states in which a person meets it, light and dark, in
// one language. QT_SCALE_FACTOR makes the pictures larger, and the suffix says so in their names.

#include "tests/desktop/page_scenes.h"

#include <cstdio>
#include <cstdlib>
#include <string>

#include <QDir>
#include <QFont>
#include <QGuiApplication>

namespace {

using namespace zelkovanta::desktop_test;

int drawAll(const std::string& folder, const std::string& language, const std::string& suffix) {
    for (const Scene& scene : scenes()) {
        for (const auto appearance : {Appearance::light, Appearance::dark}) {
            const std::string file =
                folder + "/" + scene.name + (appearance == Appearance::dark ? "-dark" : "-light") + suffix + ".png";
            if (!draw(scene, appearance, language).save(QString::fromStdString(file))) {
                std::fprintf(stderr, "%s cannot be written.\n", file.c_str());
                return EXIT_FAILURE;
            }
        }
    }
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2 || !QDir().mkpath(QString::fromLocal8Bit(argv[1]))) {
        std::fprintf(stderr, "Which folder shall the pictures go to? page_pictures FOLDER [LANGUAGE] [SUFFIX]\n");
        return EXIT_FAILURE;
    }
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QQuickWindow::setSceneGraphBackend(QStringLiteral("software"));
    const QGuiApplication application(argc, argv);
    QGuiApplication::setFont(QFont(QStringLiteral("DejaVu Sans")));
    return drawAll(argv[1], argc > 2 ? argv[2] : "en", argc > 3 ? argv[3] : "");
}
