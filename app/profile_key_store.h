#pragma once

#include "platform/key_store.h"
#include "platform/linux/profile.h"

#include <string>
#include <utility>

namespace zelkovanta::app {

/// The key store as one profile sees it: its items stand beside those of the others. References must outlive it.
class ProfileKeyStore final : public platform::KeyStore {
public:
    ProfileKeyStore(platform::KeyStore& keyStore, platform::linux_host::Profile profile)
        : keyStore_(keyStore), profile_(std::move(profile)) {}

    platform::Awaitable<std::optional<std::string>> read(platform::KeyStoreItem item) override {
        return keyStore_.read(placed(std::move(item)));
    }
    void write(platform::KeyStoreItem item, std::string value) override {
        keyStore_.write(placed(std::move(item)), std::move(value));
    }
    void remove(platform::KeyStoreItem item) override { keyStore_.remove(placed(std::move(item))); }

private:
    [[nodiscard]] platform::KeyStoreItem placed(platform::KeyStoreItem item) const {
        item.service = profile_.applyTo(item.service);
        return item;
    }

    platform::KeyStore& keyStore_;
    const platform::linux_host::Profile profile_;
};

}  // namespace zelkovanta::app
