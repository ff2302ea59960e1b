#pragma once

#include <string>

namespace zelkovanta::screens {

/// One of several entries of which a person takes one.
struct Choice {
    std::string id;
    std::string name;
    bool operator==(const Choice&) const = default;
};

}  // namespace zelkovanta::screens
