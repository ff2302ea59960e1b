#include "office/ledger.h"

#include <type_traits>

namespace zelkovanta::office {
namespace {

template <class T, class... Kinds>
constexpr std::size_t kindIn(std::variant<Kinds...>*) {
    std::size_t position = 0;
    (void)((std::is_same_v<T, Kinds> ? false : (++position, true)) && ...);
    return position;
}

template <class T>
constexpr std::size_t kindOf = kindIn<T>(static_cast<Record*>(nullptr));

}  // namespace

template <class T>
void Ledger::index(const T& record) {
    if constexpr (std::is_same_v<T, Device>) {
        devicesByPractice_[record.practiceId].insert(record.id);
        if (!record.tokenHash.empty()) {
            devicesByTokenHash_[record.tokenHash] = record.id;
        }
    } else if constexpr (std::is_same_v<T, Signal>) {
        if (isActive(record)) {
            activeByPractice_[record.practiceId].emplace(record.createdAt, record.id);
        } else {
            cleared_.emplace(record.clearedAt.value_or(record.createdAt), record.id);
        }
    } else if constexpr (std::is_same_v<T, Practice> || std::is_same_v<T, Member> || std::is_same_v<T, Room> ||
                         std::is_same_v<T, SignalType>) {
        ++revision_;
    }
}

template <class T>
void Ledger::unindex(const T& record) {
    if constexpr (std::is_same_v<T, Device>) {
        devicesByPractice_[record.practiceId].erase(record.id);
        devicesByTokenHash_.erase(record.tokenHash);
    } else if constexpr (std::is_same_v<T, Signal>) {
        if (isActive(record)) {
            activeByPractice_[record.practiceId].erase({record.createdAt, record.id});
        } else {
            cleared_.erase({record.clearedAt.value_or(record.createdAt), record.id});
        }
    }
}

Ledger::Ledger(Storage& storage, State state) : storage_(storage), state_(std::move(state)) {
    for (const auto& [id, device] : state_.all<Device>()) {
        index(device);
    }
    for (const auto& [id, signal] : state_.all<Signal>()) {
        index(signal);
    }
}

template <class T>
void Ledger::exchange(const std::string& id, std::optional<T> record) {
    if (const T* old = state_.find<T>(id)) {
        unindex(*old);
        reversals_.push_back(Put{*old});
    } else {
        reversals_.push_back(Erase{kindOf<T>, id});
    }
    if (record) {
        index(*record);
        changes_.push_back(Put{std::move(*record)});
    } else {
        changes_.push_back(Erase{kindOf<T>, id});
    }
    carryOut(state_, changes_.back());
}

template <class T>
void Ledger::put(T record) {
    const std::string id = record.id;
    exchange<T>(id, std::move(record));
}

template <class T>
void Ledger::erase(std::string id) {
    if (state_.find<T>(id) != nullptr) {
        exchange<T>(id, std::nullopt);
    }
}

std::expected<void, StorageFailure> Ledger::commit() {
    if (changes_.empty()) {
        return {};
    }
    const auto committed = storage_.commit(changes_);
    if (!committed) {
        undo();
        return committed;
    }
    changes_.clear();
    reversals_.clear();
    return {};
}

void Ledger::undo() {
    if (changes_.empty()) {
        return;
    }
    for (auto reversal = reversals_.rbegin(); reversal != reversals_.rend(); ++reversal) {
        carryOut(state_, *reversal);
    }
    changes_.clear();
    reversals_.clear();

    // Rare, so the derived views are simply made anew.
    devicesByTokenHash_.clear();
    devicesByPractice_.clear();
    activeByPractice_.clear();
    cleared_.clear();
    ++revision_;
    for (const auto& [id, device] : state_.all<Device>()) {
        index(device);
    }
    for (const auto& [id, signal] : state_.all<Signal>()) {
        index(signal);
    }
}

const Device* Ledger::deviceByTokenHash(const std::string& hash) const {
    const auto found = devicesByTokenHash_.find(hash);
    return found == devicesByTokenHash_.end() ? nullptr : find<Device>(found->second);
}

const Ledger::SignalsByAge& Ledger::activeSignals(std::string_view practiceId) const {
    static const SignalsByAge none;
    const auto found = activeByPractice_.find(practiceId);
    return found == activeByPractice_.end() ? none : found->second;
}

const std::set<std::string>& Ledger::devicesOf(std::string_view practiceId) const {
    static const std::set<std::string> none;
    const auto found = devicesByPractice_.find(practiceId);
    return found == devicesByPractice_.end() ? none : found->second;
}

#define ZELKOVANTA_RECORD(T)         \
    template void Ledger::put<T>(T); \
    template void Ledger::erase<T>(std::string);
ZELKOVANTA_RECORD(Practice)
ZELKOVANTA_RECORD(Member)
ZELKOVANTA_RECORD(Room)
ZELKOVANTA_RECORD(SignalType)
ZELKOVANTA_RECORD(Signal)
ZELKOVANTA_RECORD(Device)
ZELKOVANTA_RECORD(PairingCode)
ZELKOVANTA_RECORD(SetupRequest)
ZELKOVANTA_RECORD(SignInCode)
ZELKOVANTA_RECORD(CrashReport)
ZELKOVANTA_RECORD(Release)
#undef ZELKOVANTA_RECORD

}  // namespace zelkovanta::office
