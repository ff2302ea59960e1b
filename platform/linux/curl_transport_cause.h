#pragma once

#include "platform/url_session.h"

#include <curl/curl.h>

namespace zelkovanta::platform::linux_host {

/// The one place where the library's codes get their meaning. For an exchange of `easy` that failed with `code`, for
/// any cause but a body that exceeds its cap.
[[nodiscard]] TransportCause transportCauseOf(CURLcode code, CURL* easy, bool usesProxy);

}  // namespace zelkovanta::platform::linux_host
