#pragma once

namespace zelkovanta::platform::linux_host {

/// Whether any interface but loopback is up and has an address that reaches beyond its own link. Quick.
[[nodiscard]] bool hasNetwork();

}  // namespace zelkovanta::platform::linux_host
