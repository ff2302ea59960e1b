#pragma once

#include "platform/async.h"

#include <optional>
#include <string>

namespace zelkovanta::platform {

struct KeyStoreItem {
    std::string service;
    std::string account;
    bool operator==(const KeyStoreItem&) const = default;
};

/// Secrets of this person on this computer. No operation blocks its caller, and operations happen in the order in which
/// they were asked for: a read after a write sees it.
class KeyStore {
public:
    virtual ~KeyStore() = default;
    /// None if the item is missing or empty, or if there is no working key store. Waits while the store is locked,
    /// until it was unlocked or the person declined.
    virtual Awaitable<std::optional<std::string>> read(KeyStoreItem item) = 0;
    /// Updates the item, or adds it. A failure is ignored.
    virtual void write(KeyStoreItem item, std::string value) = 0;
    /// A missing item is no failure, and a failure is ignored.
    virtual void remove(KeyStoreItem item) = 0;
};

}  // namespace zelkovanta::platform
