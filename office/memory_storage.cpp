#include "office/memory_storage.h"

namespace zelkovanta::office {

std::expected<State, StorageFailure> MemoryStorage::load() {
    return kept_;
}

std::expected<void, StorageFailure> MemoryStorage::commit(std::span<const Change> changes) {
    if (refusing_) {
        return std::unexpected(StorageFailure{"The storage refuses to keep anything."});
    }
    for (const Change& change : changes) {
        carryOut(kept_, change);
    }
    return {};
}

}  // namespace zelkovanta::office
