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
};

[[nodiscard]] std::vector<Scene> scenes();

/// The page in that state, as it is drawn.
[[nodiscard]] QImage draw(const Scene& scene, Appearance appearance, const std::string& language);

}  // namespace zelkovanta::desktop_test
