// page_pictures FOLDER [LANGUAGE] [SUFFIX]: draws the page in the states in which a person meets it, light and dark, in
// one language. QT_SCALE_FACTOR makes the pictures larger, and the suffix says so in their names.
// page_pictures --references FOLDER: draws the pictures that tests compare the page with.

#include "tests/desktop/page_scenes.h"

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include <QDir>
#include <QFont>
#include <QGuiApplication>

namespace {

using namespace zelkovanta::desktop_test;

bool drawInto(const std::string& file, const Scene& scene, Appearance appearance, const std::string& language) {
    if (draw(scene, appearance, language).save(QString::fromStdString(file))) {
        return true;
    }
    std::fprintf(stderr, "%s cannot be written.\n", file.c_str());
    return false;
}

int drawAll(const std::string& folder, const std::string& language, const std::string& suffix) {
    for (const Scene& scene : scenes()) {
        for (const auto appearance : {Appearance::light, Appearance::dark}) {
            if (!drawInto(folder + "/" + pictureName(scene.name, appearance) + suffix + ".png", scene, appearance,
                          language)) {
                return EXIT_FAILURE;
            }
        }
    }
    return EXIT_SUCCESS;
}

int drawReferences(const std::string& folder) {
    const auto all = scenes();
    for (const KeptPicture& kept : keptPictures()) {
        const std::string name = pictureName(kept.scene, kept.appearance);
        const auto scene = std::ranges::find(all, kept.scene, &Scene::name);
        if (scene == all.end()) {
            std::fprintf(stderr, "There is no scene for %s.\n", name.c_str());
            return EXIT_FAILURE;
        }
        if (!drawInto(folder + "/" + name + ".png", *scene, kept.appearance, "en")) {
            return EXIT_FAILURE;
        }
    }
    return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    const bool references = !arguments.empty() && arguments[0] == "--references";
    const auto argument = [&](std::size_t index, const char* otherwise) {
        return index < arguments.size() ? arguments[index] : otherwise;
    };
    const std::string folder = argument(references ? 1 : 0, "");
    if (folder.empty() || !QDir().mkpath(QString::fromStdString(folder))) {
        std::fprintf(stderr,
                     "Which folder shall the pictures go to? page_pictures FOLDER [LANGUAGE] [SUFFIX], or\n"
                     "page_pictures --references FOLDER\n");
        return EXIT_FAILURE;
    }
    ::setenv("QT_QPA_PLATFORM", "offscreen", 0);
    QQuickWindow::setSceneGraphBackend(QStringLiteral("software"));
    const QGuiApplication application(argc, argv);
    QGuiApplication::setFont(QFont(QStringLiteral("DejaVu Sans")));
    return references ? drawReferences(folder) : drawAll(folder, argument(1, "en"), argument(2, ""));
}
