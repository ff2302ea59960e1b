#pragma once

#include "platform/information_dictionary.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace zelkovanta::platform::simulated {

/// An information dictionary whose entries the test sets. Not for several threads while they change.
class FixedInformation final : public InformationDictionary {
public:
    using Entries = std::map<std::string, std::string, std::less<>>;

    FixedInformation() = default;
    explicit FixedInformation(Entries entries) : entries_(std::move(entries)) {}

    [[nodiscard]] std::optional<std::string> text(std::string_view key) const override {
        const auto found = entries_.find(key);
        return found == entries_.end() ? std::nullopt : std::optional{found->second};
    }

    void set(std::string key, std::string value) { entries_.insert_or_assign(std::move(key), std::move(value)); }
    void remove(const std::string& key) { entries_.erase(key); }

private:
    Entries entries_;
};

}  // namespace zelkovanta::platform::simulated
