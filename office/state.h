#pragma once

#include "office/device.h"
#include "office/practice.h"
#include "office/signal.h"

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <tuple>
#include <variant>

namespace zelkovanta::office {

/// Records of one kind by their `id`.
template <class T>
using Table = std::map<std::string, T, std::less<>>;

using Record = std::variant<Practice, Member, Room, SignalType, Signal, Device, PairingCode, SetupRequest, SignInCode,
                            CrashReport, Release>;

/// Everything that the office knows and must not forget.
struct State {
    std::tuple<Table<Practice>, Table<Member>, Table<Room>, Table<SignalType>, Table<Signal>, Table<Device>,
               Table<PairingCode>, Table<SetupRequest>, Table<SignInCode>, Table<CrashReport>, Table<Release>>
        tables;

    template <class T>
    [[nodiscard]] const Table<T>& all() const {
        return std::get<Table<T>>(tables);
    }
    template <class T>
    [[nodiscard]] Table<T>& all() {
        return std::get<Table<T>>(tables);
    }
    /// The record, or null. Valid until a record of this kind is changed.
    template <class T>
    [[nodiscard]] const T* find(std::string_view id) const {
        const auto found = all<T>().find(id);
        return found == all<T>().end() ? nullptr : &found->second;
    }
    bool operator==(const State&) const = default;
};

/// A record put in place (new or replacing), or one removed.
struct Put {
    Record record;
    bool operator==(const Put&) const = default;
};
struct Erase {
    std::size_t kind = 0;  ///< index of the kind in `Record`
    std::string id;
    bool operator==(const Erase&) const = default;
};
using Change = std::variant<Put, Erase>;

/// Carries a change out.
void carryOut(State& state, const Change& change);

}  // namespace zelkovanta::office
