#pragma once

#include "platform/key_store.h"

#include <chrono>
#include <memory>

namespace zelkovanta::platform::linux_host {

/// The desktop's key store, by the Secret Service API over the session bus. Without a bus, without a service, or where
/// the service breaks off or refuses to encrypt what goes over the bus, nothing is found and nothing is kept: there is
/// no second place.
///
/// The bus is first touched by the first operation. Operations may be asked for on any thread; they talk to the bus on
/// the main thread without ever waiting on it, so they need its event loop.
class SecretServiceKeyStore final : public KeyStore {
public:
    /// Connecting to the bus may wait, so it happens on `connecting`. `callLimit` is how long the service may take for
    /// one answer; a person at a prompt may take any time.
    SecretServiceKeyStore(Executor mainThread, Executor connecting,
                          std::chrono::milliseconds callLimit = std::chrono::seconds{30});
    /// On the main thread. Operations still waiting are given up.
    ~SecretServiceKeyStore() override;
    SecretServiceKeyStore(const SecretServiceKeyStore&) = delete;
    SecretServiceKeyStore& operator=(const SecretServiceKeyStore&) = delete;

    /// Runs the event loop until every write and removal is done, `limit` at most: for the end of the program. Main
    /// thread.
    void finishChanges(std::chrono::milliseconds limit);

    Awaitable<std::optional<std::string>> read(KeyStoreItem item) override;
    void write(KeyStoreItem item, std::string value) override;
    void remove(KeyStoreItem item) override;

private:
    class Queue;
    std::shared_ptr<Queue> queue_;
};

}  // namespace zelkovanta::platform::linux_host
