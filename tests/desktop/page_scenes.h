#pragma once

#include "tests/desktop/page_fixture.h"

#include <functional>
#include <string>
#include <vector>

#include <QImage>

namespace zelkovanta::desktop_test {

/// A state in which a person meets the page.
struct Scene {
    std::string name;
    std::function<void(Page&)> fill;
    int width;
    int height;
    /// What the person does then; in a form, once it is open.
    std::function<void(Page&)> act = [](Page&) {};
};

[[nodiscard]] std::vector<Scene> scenes();
/// Those of them in which a form is filled in.
[[nodiscard]] std::vector<Scene> formScenes();

/// The page in that state, as it is drawn.
[[nodiscard]] QImage draw(const Scene& scene, Appearance appearance, const std::string& language);

/// "person-dark": what a picture of that state is called.
[[nodiscard]] std::string pictureName(const std::string& scene, Appearance appearance);

/// A picture in tests/data/screens that somebody has looked at, and that the page must go on looking like.
struct KeptPicture {
    std::string scene;
    Appearance appearance = Appearance::light;
};

[[nodiscard]] std::vector<KeptPicture> keptPictures();

}  // namespace zelkovanta::desktop_test
