#pragma once

#include "office/storage.h"

#include <cstdint>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace zelkovanta::office {

/// The state with its storage behind it. Changes show at once, and are undone together if they cannot be committed.
class Ledger {
public:
    using SignalsByAge = std::set<std::pair<Timestamp, std::string>>;

    Ledger(Storage& storage, State state);

    [[nodiscard]] const State& state() const { return state_; }

    template <class T>
    [[nodiscard]] const T* find(std::string_view id) const {
        return state_.find<T>(id);
    }
    template <class T>
    void put(T record);
    template <class T>
    void erase(std::string id);

    [[nodiscard]] bool changed() const { return !changes_.empty(); }
    /// Makes everything since the last commit durable. If that fails, all of it is undone.
    [[nodiscard]] std::expected<void, StorageFailure> commit();
    void undo();

    [[nodiscard]] const Device* deviceByTokenHash(const std::string& hash) const;
    /// Active signals of a practice, the oldest first.
    [[nodiscard]] const SignalsByAge& activeSignals(std::string_view practiceId) const;
    /// Signals that are over, of all practices, by the time at which they ended.
    [[nodiscard]] const SignalsByAge& clearedSignals() const { return cleared_; }
    [[nodiscard]] const std::set<std::string>& devicesOf(std::string_view practiceId) const;
    /// Grows whenever a practice, or its members, rooms or signal types change.
    [[nodiscard]] std::uint64_t revision() const { return revision_; }

private:
    template <class T>
    void exchange(const std::string& id, std::optional<T> record);
    template <class T>
    void index(const T& record);
    template <class T>
    void unindex(const T& record);

    Storage& storage_;
    State state_;
    std::vector<Change> changes_;
    std::vector<Change> reversals_;
    std::unordered_map<std::string, std::string> devicesByTokenHash_;
    std::map<std::string, std::set<std::string>, std::less<>> devicesByPractice_;
    std::map<std::string, SignalsByAge, std::less<>> activeByPractice_;
    SignalsByAge cleared_;
    std::uint64_t revision_ = 0;
};

}  // namespace zelkovanta::office
