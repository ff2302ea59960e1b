#include "tests/simulation/fault.h"

namespace zelkovanta::simulation {

std::string_view name(Fault fault) {
    static constexpr std::array<std::string_view, faultCount> names{
        "request lost",
        "reply lost",
        "exchange reset",
        "refused with 401",
        "refused with 429",
        "refused with 500",
        "garbage reply",
        "reply cut",
        "slow reply",
        "upgrade refused with 401",
        "upgrade refused with 429",
        "upgrade refused with 500",
        "upgrade answered with garbage",
        "upgrade, then silence",
        "frame cut",
        "socket reset",
        "socket closed",
        "socket half open",
        "ping not sent",
        "link down",
        "link silent",
        "link stalled",
        "link rough",
        "office restarted",
        "office storage full",
        "computer suspended",
        "main thread busy",
        "other threads busy",
        "process killed",
        "power off",
        "new login",
        "key store locked",
        "clock set",
        "computer revoked",
        "computer unlinked",
        "moved by snapshot",
        "moved by office update",
        "frame of a dead socket",
        "reply of a dead session",
    };
    return names[static_cast<std::size_t>(fault)];
}

}  // namespace zelkovanta::simulation
