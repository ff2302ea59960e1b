#include "store/login_scope.h"

#include <cmath>

namespace zelkovanta::store {

namespace {
constexpr double bootTimeTolerance = 5.0;
}

bool LoginScope::holdsIn(const LoginScope& current) const {
    return bootTime > 0 && std::abs(bootTime - current.bootTime) <= bootTimeTolerance && !auditSessionId.empty() &&
           !current.auditSessionId.empty() && auditSessionId == current.auditSessionId;
}

}  // namespace zelkovanta::store
