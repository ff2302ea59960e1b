#pragma once

#include "platform/information_dictionary.h"

#include <string>

namespace zelkovanta::server {

/// The text by which the server knows its own desktop build, sent as it stands with the two requests that create a
/// device. Empty where the build has none. Read afresh at each use.
[[nodiscard]] std::string appCheckToken(const platform::InformationDictionary& information);

}  // namespace zelkovanta::server
