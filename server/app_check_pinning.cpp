#include "server/app_check_pinning.h"

namespace zelkovanta::server {

std::string appCheckToken(const platform::InformationDictionary& information) {
    return information.text("ZVTDesktopBuildSecret").value_or(std::string{});
}

}  // namespace zelkovanta::server
