#include "office/sqlite_storage.h"

#include "office/sqlite_columns.h"

#include <array>
#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <unistd.h>
#include <utility>

#include <sqlite3.h>

namespace zelkovanta::office {
namespace {

constexpr int schemaVersion = 1;

struct Finalizer {
    void operator()(sqlite3_stmt* statement) const { sqlite3_finalize(statement); }
};
using Statement = std::unique_ptr<sqlite3_stmt, Finalizer>;

struct Closer {
    void operator()(sqlite3* database) const { sqlite3_close_v2(database); }
};
using Database = std::unique_ptr<sqlite3, Closer>;

constexpr std::array tableNames = {"practices",     "members",       "rooms",         "signal_types",
                                   "signals",       "devices",       "pairing_codes", "setup_requests",
                                   "sign_in_codes", "crash_reports", "releases"};
static_assert(tableNames.size() == std::variant_size_v<Record>);

Statement prepare(sqlite3* database, const std::string& text) {
    sqlite3_stmt* statement = nullptr;
    sqlite3_prepare_v3(database, text.c_str(), static_cast<int>(text.size()), SQLITE_PREPARE_PERSISTENT, &statement,
                       nullptr);
    return Statement(statement);
}

StorageFailure failure(sqlite3* database, std::string_view doing) {
    return {std::string(doing) + (sqlite3_errcode(database) == SQLITE_BUSY
                                      ? ": another program uses it."
                                      : std::string(": ") + sqlite3_errmsg(database) + ".")};
}

/// The file with the rights of its owner alone; SQLite gives its side files the same.
std::expected<void, StorageFailure> createPrivately(const std::filesystem::path& file) {
    const int descriptor = ::open(file.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (descriptor < 0) {
        return std::unexpected(
            StorageFailure{"The database " + file.string() + " cannot be opened: " + std::strerror(errno) + "."});
    }
    ::close(descriptor);
    return {};
}

}  // namespace

struct SqliteStorage::Connection {
    Database database;
    Statement begin;
    Statement commit;
    Statement rollback;
    std::array<Statement, std::variant_size_v<Record>> put;
    std::array<Statement, std::variant_size_v<Record>> erase;

    /// Runs a statement that gives no rows.
    [[nodiscard]] bool run(const Statement& statement) const {
        const int result = sqlite3_step(statement.get());
        sqlite3_reset(statement.get());
        sqlite3_clear_bindings(statement.get());
        return result == SQLITE_DONE;
    }

    [[nodiscard]] bool carryOut(const Change& change) const {
        if (const auto* erased = std::get_if<Erase>(&change)) {
            const Statement& statement = erase.at(erased->kind);
            columns::bindValue(statement.get(), 1, erased->id);
            return run(statement);
        }
        const Record& record = std::get<Put>(change).record;
        const Statement& statement = put.at(record.index());
        std::visit([&](const auto& fields) { columns::bindAll(statement.get(), fields); }, record);
        return run(statement);
    }

    template <std::size_t Kind>
    [[nodiscard]] bool prepareKind() {
        using T = std::variant_alternative_t<Kind, Record>;
        const std::string table = tableNames[Kind];
        const std::string create =
            "CREATE TABLE IF NOT EXISTS " + table + " (" + columns::definitions<T>() + ") STRICT, WITHOUT ROWID";
        if (sqlite3_exec(database.get(), create.c_str(), nullptr, nullptr, nullptr) != SQLITE_OK) {
            return false;
        }
        put[Kind] =
            prepare(database.get(), "INSERT OR REPLACE INTO " + table + " VALUES (" + columns::placeholders<T>() + ")");
        erase[Kind] = prepare(database.get(), "DELETE FROM " + table + " WHERE id = ?");
        return put[Kind] != nullptr && erase[Kind] != nullptr;
    }

    template <std::size_t Kind>
    [[nodiscard]] bool loadKind(State& state) const {
        using T = std::variant_alternative_t<Kind, Record>;
        const Statement rows =
            prepare(database.get(), "SELECT " + columns::names<T>() + " FROM " + std::string(tableNames[Kind]));
        if (rows == nullptr) {
            return false;
        }
        int result = sqlite3_step(rows.get());
        for (; result == SQLITE_ROW; result = sqlite3_step(rows.get())) {
            T record;
            if (!columns::readAll(rows.get(), record)) {
                return false;
            }
            std::string id = record.id;
            state.all<T>().emplace(std::move(id), std::move(record));
        }
        return result == SQLITE_DONE;
    }
};

SqliteStorage::SqliteStorage(std::unique_ptr<Connection> connection) : connection_(std::move(connection)) {}
SqliteStorage::~SqliteStorage() = default;

std::expected<std::unique_ptr<SqliteStorage>, StorageFailure> SqliteStorage::open(const std::filesystem::path& file) {
    if (const auto created = createPrivately(file); !created) {
        return std::unexpected(created.error());
    }
    auto connection = std::make_unique<Connection>();
    sqlite3* database = nullptr;
    const int opened = sqlite3_open_v2(file.c_str(), &database, SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
    connection->database.reset(database);
    const std::string doing = "The database " + file.string() + " cannot be used";
    if (opened != SQLITE_OK) {
        return std::unexpected(failure(database, doing));
    }
    // Exclusive: a second office on the same file would not see what this one accepts.
    const auto execute = [database](const char* text) {
        return sqlite3_exec(database, text, nullptr, nullptr, nullptr) == SQLITE_OK;
    };
    if (!execute("PRAGMA locking_mode = EXCLUSIVE; PRAGMA journal_mode = WAL; PRAGMA synchronous = FULL; "
                 "BEGIN IMMEDIATE")) {
        return std::unexpected(failure(database, doing));
    }

    int version = -1;
    {
        const Statement asked = prepare(database, "PRAGMA user_version");
        if (asked != nullptr && sqlite3_step(asked.get()) == SQLITE_ROW) {
            version = sqlite3_column_int(asked.get(), 0);
        }
    }
    if (version != 0 && version != schemaVersion) {
        return std::unexpected(StorageFailure{doing + ": it was written by another version of this program."});
    }
    const auto prepareAll = [&]<std::size_t... Kinds>(std::index_sequence<Kinds...>) {
        return (connection->prepareKind<Kinds>() && ...);
    };
    connection->begin = prepare(database, "BEGIN IMMEDIATE");
    connection->commit = prepare(database, "COMMIT");
    connection->rollback = prepare(database, "ROLLBACK");
    const std::string mark = "PRAGMA user_version = " + std::to_string(schemaVersion);
    if (!prepareAll(std::make_index_sequence<std::variant_size_v<Record>>()) || !execute(mark.c_str()) ||
        !execute("COMMIT")) {
        return std::unexpected(failure(database, doing));
    }
    return std::unique_ptr<SqliteStorage>(new SqliteStorage(std::move(connection)));
}

std::expected<State, StorageFailure> SqliteStorage::load() {
    State state;
    const auto loadAll = [&]<std::size_t... Kinds>(std::index_sequence<Kinds...>) {
        return (connection_->loadKind<Kinds>(state) && ...);
    };
    if (!loadAll(std::make_index_sequence<std::variant_size_v<Record>>())) {
        return std::unexpected(failure(connection_->database.get(), "The database cannot be read"));
    }
    return state;
}

std::expected<void, StorageFailure> SqliteStorage::commit(std::span<const Change> changes) {
    const Connection& connection = *connection_;
    bool good = connection.run(connection.begin);
    for (const Change& change : changes) {
        good = good && connection.carryOut(change);
    }
    if (good && connection.run(connection.commit)) {
        return {};
    }
    const StorageFailure failed = failure(connection.database.get(), "The database cannot be written");
    (void)connection.run(connection.rollback);
    return std::unexpected(failed);
}

}  // namespace zelkovanta::office
