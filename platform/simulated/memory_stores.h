#pragma once

#include "platform/key_store.h"
#include "platform/user_defaults.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

namespace zelkovanta::platform::simulated {

/// Settings in memory; they outlive a simulated process.
class MemoryUserDefaults final : public UserDefaults {
public:
    [[nodiscard]] std::optional<bool> boolean(std::string_view key) const override { return get<bool>(key); }
    [[nodiscard]] std::optional<double> number(std::string_view key) const override { return get<double>(key); }
    [[nodiscard]] std::optional<std::string> text(std::string_view key) const override { return get<std::string>(key); }
    [[nodiscard]] bool hasValue(std::string_view key) const override { return values_.contains(key); }
    void setBoolean(std::string_view key, bool value) override { values_.insert_or_assign(std::string{key}, value); }
    void setNumber(std::string_view key, double value) override { values_.insert_or_assign(std::string{key}, value); }
    void setText(std::string_view key, std::string_view value) override {
        values_.insert_or_assign(std::string{key}, std::string{value});
    }
    void remove(std::string_view key) override {
        if (const auto found = values_.find(key); found != values_.end()) {
            values_.erase(found);
        }
    }

private:
    template <class Value>
    [[nodiscard]] std::optional<Value> get(std::string_view key) const {
        const auto found = values_.find(key);
        if (found == values_.end() || !std::holds_alternative<Value>(found->second)) {
            return std::nullopt;
        }
        return std::get<Value>(found->second);
    }

    std::map<std::string, std::variant<bool, double, std::string>, std::less<>> values_;
};

/// Secrets in memory. A read can be made to wait, as it does while a real key store is locked.
class MemoryKeyStore final : public KeyStore {
public:
    Awaitable<std::optional<std::string>> read(KeyStoreItem item) override;
    void write(KeyStoreItem item, std::string value) override;
    void remove(KeyStoreItem item) override;

    /// While locked, reads wait.
    void setLocked(bool locked);
    /// While broken, reads find nothing and writes are lost.
    void setBroken(bool broken) { isBroken_ = broken; }
    [[nodiscard]] std::optional<std::string> peek(const KeyStoreItem& item) const;

private:
    using Key = std::pair<std::string, std::string>;
    std::map<Key, std::string> values_;
    std::vector<std::move_only_function<void()>> waiting_;
    bool isLocked_ = false;
    bool isBroken_ = false;
};

}  // namespace zelkovanta::platform::simulated
