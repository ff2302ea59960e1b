#pragma once

#include "office/storage.h"

#include <filesystem>
#include <memory>

namespace zelkovanta::office {

/// One SQLite file: a table for each kind of record, a column for each field. Every commit is one transaction that has
/// reached the disk when it returns. The file is readable for its owner only, and belongs to one process at a time.
class SqliteStorage final : public Storage {
public:
    /// Opens the file, or makes it. Fails with a sentence when it cannot be written, is no database of ours, or is in
    /// use.
    [[nodiscard]] static std::expected<std::unique_ptr<SqliteStorage>, StorageFailure> open(
        const std::filesystem::path& file);
    ~SqliteStorage() override;

    [[nodiscard]] std::expected<State, StorageFailure> load() override;
    [[nodiscard]] std::expected<void, StorageFailure> commit(std::span<const Change> changes) override;

private:
    struct Connection;
    explicit SqliteStorage(std::unique_ptr<Connection> connection);
    std::unique_ptr<Connection> connection_;
};

}  // namespace zelkovanta::office
