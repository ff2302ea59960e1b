#pragma once

#include <cstdint>

namespace zelkovanta::server {

enum class ConnectionState : std::uint8_t {
    disconnected,  ///< waiting to retry
    connecting,
    connected,  ///< the server has said something over the current socket
    stopped,
};

}  // namespace zelkovanta::server
