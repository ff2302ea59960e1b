#pragma once

#include "office/state.h"

#include <expected>
#include <span>
#include <string>

namespace zelkovanta::office {

struct StorageFailure {
    std::string reason;  ///< one sentence for the person who started the office
};

/// Where the office's state outlives the process. One office uses one storage, from one thread.
class Storage {
public:
    virtual ~Storage() = default;

    /// Everything committed so far; empty for a new storage.
    [[nodiscard]] virtual std::expected<State, StorageFailure> load() = 0;

    /// All of the changes, in order, or none of them. On success they are durable.
    [[nodiscard]] virtual std::expected<void, StorageFailure> commit(std::span<const Change> changes) = 0;
};

}  // namespace zelkovanta::office
