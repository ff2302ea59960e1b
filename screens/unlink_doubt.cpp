#include "screens/unlink_doubt.h"

#include <algorithm>
#include <utility>

namespace zelkovanta::screens {

platform::Duration UnlinkDoubt::left(platform::SteadyTime now) const {
    return askedAt_ ? std::max(platform::Duration::zero(), *askedAt_ + patience - now) : platform::Duration::zero();
}

bool UnlinkDoubt::press(platform::SteadyTime now) {
    const auto before = std::exchange(pressedAt_, now);
    if (!isAsking(now)) {
        askedAt_ = now;
        return false;
    }
    if (before && now - *before < doubleClick_) {
        return false;
    }
    askedAt_.reset();
    return true;
}

}  // namespace zelkovanta::screens
