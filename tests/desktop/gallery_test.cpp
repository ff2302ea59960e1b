#include "screens/qml/registration.h"
#include "tests/desktop/page_fixture.h"
#include "tests/gallery/gallery_samples.h"

#include <filesystem>
#include <fstream>
#include <regex>
#include <set>
#include <sstream>
#include <string>

#include <QQmlApplicationEngine>
#include <gtest/gtest.h>

namespace zelkovanta::desktop_test {
namespace {

/// Whole pages and their parts, and what only others stand on.
const std::set<std::string> elsewhere{"Main",        "DeskView",    "RoomChoice",  "SetupView",  "SignInView",
                                      "ComposeForm", "ComposeHead", "ComposeFoot", "QueueLists", "WhoPicker"};

/// Adds the components that a file of QML is made of, and those that they are made of.
void addComponentsOf(const std::filesystem::path& file, std::set<std::string>& components) {
    static const std::regex named(R"re(\b([A-Z][A-Za-z]*)(?: \{|\.qml"))re");
    std::ostringstream text;
    text << std::ifstream(file).rdbuf();
    const std::string source = text.str();
    for (std::sregex_iterator found(source.begin(), source.end(), named), end; found != end; ++found) {
        const std::string name = (*found)[1];
        if (!elsewhere.contains(name) && components.insert(name).second) {
            addComponentsOf("screens/qml/" + name + ".qml", components);
        }
    }
}

class Gallery : public testing::TestWithParam<platform::ColorScheme> {
protected:
    Gallery() {
        QAccessible::setActive(true);
        screens::qml::registerScreens(engine, appearance);
        engine.setInitialProperties({{QStringLiteral("samples"), QVariant::fromValue(&samples)}});
        engine.load(QUrl::fromLocalFile(QStringLiteral("tests/gallery/Gallery.qml")));
        if (!engine.rootObjects().isEmpty()) {
            window = qobject_cast<QQuickWindow*>(engine.rootObjects().constFirst());
        }
    }

    platform::simulated::SimulatedAppearance appearance{GetParam()};
    gallery::Samples samples{appearance};
    QQmlApplicationEngine engine;
    QQuickWindow* window = nullptr;
};

INSTANTIATE_TEST_SUITE_P(BothAppearances, Gallery,
                         testing::Values(platform::ColorScheme::light, platform::ColorScheme::dark));

// What it warns of fails the test, as in all tests here.
TEST_P(Gallery, isShownAndTurnsWithTheAppearance) {
    ASSERT_NE(window, nullptr);
    window->show();
    QCoreApplication::processEvents();
    const bool dark = GetParam() == platform::ColorScheme::dark;
    EXPECT_EQ(window->grabWindow().pixelColor(2, 2), dark ? QColor("#141018") : QColor("#FFFFFF"));
    samples.setDark(!dark);
    EXPECT_EQ(window->grabWindow().pixelColor(2, 2), dark ? QColor("#FFFFFF") : QColor("#141018"));
}

TEST(GalleryContent, isEveryComponent) {
    std::set<std::string> shown;
    addComponentsOf("tests/gallery/Gallery.qml", shown);
    addComponentsOf("tests/gallery/GalleryPart.qml", shown);
    addComponentsOf("tests/gallery/GalleryStates.qml", shown);
    int components = 0;
    for (const auto& entry : std::filesystem::directory_iterator("screens/qml")) {
        const std::string name = entry.path().stem().string();
        if (entry.path().extension() == ".qml" && !elsewhere.contains(name)) {
            ++components;
            EXPECT_TRUE(shown.contains(name)) << name;
        }
    }
    EXPECT_GT(components, 30);
}

}  // namespace
}  // namespace zelkovanta::desktop_test
