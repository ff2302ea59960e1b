#pragma once

#include "office/storage.h"

namespace zelkovanta::office {

/// Keeps what is committed for as long as it lives, so that an office opened on it again stands for a restart.
class MemoryStorage final : public Storage {
public:
    [[nodiscard]] std::expected<State, StorageFailure> load() override;
    [[nodiscard]] std::expected<void, StorageFailure> commit(std::span<const Change> changes) override;

    /// While set, every commit fails, as on a full disk.
    void refuseCommits(bool refuse) { refusing_ = refuse; }

private:
    State kept_;
    bool refusing_ = false;
};

}  // namespace zelkovanta::office
