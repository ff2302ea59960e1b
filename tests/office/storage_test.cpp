#include "office/memory_storage.h"
#include "office/sqlite_storage.h"
#include "tests/support/temporary_folder.h"

#include <csignal>
#include <fstream>
#include <sys/resource.h>
#include <sys/stat.h>
#include <type_traits>
#include <utility>

#include <boost/describe/enumerators.hpp>
#include <boost/describe/members.hpp>
#include <boost/mp11/algorithm.hpp>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

namespace zelkovanta::office {
namespace {

using testing::EndsWith;
using testing::HasSubstr;

/// A value that differs from the default one and, by `salt`, from others.
template <class T>
void fill(T& value, int salt) {
    if constexpr (std::is_same_v<T, std::string>) {
        value = "ü\"' \n" + std::string(1, '\0') + std::to_string(salt);
    } else if constexpr (std::is_same_v<T, bool>) {
        value = salt % 2 == 0;
    } else if constexpr (std::is_same_v<T, std::int64_t>) {
        value = std::int64_t{1} << (salt % 62);
    } else if constexpr (std::is_same_v<T, Timestamp>) {
        value = Timestamp(std::chrono::milliseconds(-1'000'000'007LL * salt));
    } else if constexpr (std::is_same_v<T, Department>) {
        value = {.key = "k" + std::to_string(salt), .label = "L", .labelPlural = "Ls"};
    } else if constexpr (std::is_enum_v<T>) {
        boost::mp11::mp_for_each<boost::describe::describe_enumerators<T>>([&](auto each) { value = each.value; });
    } else if constexpr (requires { value.emplace_back(); }) {
        fill(value.emplace_back(), salt);
        fill(value.emplace_back(), salt + 1);
    } else {
        fill(value.emplace(), salt);
    }
}

template <class T>
T filled(int salt) {
    T record;
    boost::mp11::mp_for_each<boost::describe::describe_members<T, boost::describe::mod_public>>(
        [&](auto field) { fill(record.*field.pointer, ++salt); });
    return record;
}

/// One full and one bare record of every kind.
std::vector<Change> everything() {
    std::vector<Change> changes;
    const auto add = [&]<std::size_t... Kinds>(std::index_sequence<Kinds...>) {
        const auto one = [&]<class T>(std::type_identity<T>) {
            changes.push_back(Put{filled<T>(static_cast<int>(changes.size()))});
            T bare;
            bare.id = "bare";
            changes.push_back(Put{bare});
        };
        (one(std::type_identity<std::variant_alternative_t<Kinds, Record>>()), ...);
    };
    add(std::make_index_sequence<std::variant_size_v<Record>>());
    return changes;
}

class InMemory {
public:
    Storage& storage() { return storage_; }
    void reopen() {}

private:
    MemoryStorage storage_;
};

class OnDisk {
public:
    OnDisk() { reopen(); }
    Storage& storage() { return *storage_; }
    void reopen() {
        storage_.reset();
        auto opened = SqliteStorage::open(folder_.path() / "office.db");
        if (!opened) {
            throw std::runtime_error(opened.error().reason);
        }
        storage_ = std::move(*opened);
    }

private:
    support::TemporaryFolder folder_;
    std::unique_ptr<SqliteStorage> storage_;
};

template <class T>
class EveryStorage : public testing::Test {
protected:
    T place;
};
using Places = testing::Types<InMemory, OnDisk>;

class PlaceNames {
public:
    template <class T>
    // GoogleTest asks for this name.
    static std::string GetName(int) {  // NOLINT(readability-identifier-naming)
        return std::is_same_v<T, InMemory> ? "inMemory" : "onDisk";
    }
};
TYPED_TEST_SUITE(EveryStorage, Places, PlaceNames);

TYPED_TEST(EveryStorage, startsEmpty) {
    EXPECT_EQ(this->place.storage().load(), State());
}

TYPED_TEST(EveryStorage, givesEveryFieldOfEveryRecordBack) {
    const std::vector<Change> changes = everything();
    ASSERT_TRUE(this->place.storage().commit(changes).has_value());
    State expected;
    for (const Change& change : changes) {
        carryOut(expected, change);
    }
    this->place.reopen();
    EXPECT_EQ(this->place.storage().load(), expected);
    EXPECT_EQ(expected.all<Signal>().size(), 2U);
}

TYPED_TEST(EveryStorage, replacesAndRemovesInOrder) {
    Room room{.id = "r", .practiceId = "p", .position = 1, .name = "One", .beaconUuid = "b", .active = true};
    Room renamed = room;
    renamed.name = "Two";
    renamed.beaconUuid.reset();
    const std::size_t kind = Record(room).index();
    ASSERT_TRUE(this->place.storage().commit(std::vector<Change>{Put{room}, Put{renamed}}).has_value());
    this->place.reopen();
    EXPECT_EQ(this->place.storage().load()->template all<Room>(), (Table<Room>{{"r", renamed}}));
    ASSERT_TRUE(this->place.storage().commit(std::vector<Change>{Erase{kind, "r"}, Put{room}}).has_value());
    this->place.reopen();
    EXPECT_EQ(this->place.storage().load()->template all<Room>(), (Table<Room>{{"r", room}}));
    ASSERT_TRUE(this->place.storage().commit(std::vector<Change>{Erase{kind, "r"}, Erase{kind, "none"}}).has_value());
    this->place.reopen();
    EXPECT_EQ(this->place.storage().load(), State());
}

class SqliteStorageTest : public testing::Test {
protected:
    [[nodiscard]] std::filesystem::path file() const { return folder.path() / "office.db"; }
    std::string refusal() const {
        const auto opened = SqliteStorage::open(file());
        return opened ? "" : opened.error().reason;
    }
    support::TemporaryFolder folder;
};

TEST_F(SqliteStorageTest, isReadableForItsOwnerOnly) {
    const auto storage = SqliteStorage::open(file());
    ASSERT_TRUE(storage.has_value());
    ASSERT_TRUE((*storage)->commit(everything()).has_value());
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
        struct stat status{};
        ASSERT_EQ(stat(entry.path().c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 0777U, 0600U) << entry.path();
    }
}

TEST_F(SqliteStorageTest, belongsToOneAtATime) {
    const auto storage = SqliteStorage::open(file());
    ASSERT_TRUE(storage.has_value());
    EXPECT_THAT(refusal(), EndsWith("another program uses it."));
}

TEST_F(SqliteStorageTest, refusesAFileThatIsNoDatabase) {
    std::ofstream(file()) << std::string(4096, 'x');
    EXPECT_THAT(refusal(), HasSubstr("cannot be used: file is not a database."));
}

TEST_F(SqliteStorageTest, refusesADatabaseOfAnotherVersion) {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(file().c_str(), &database), SQLITE_OK);
    ASSERT_EQ(sqlite3_exec(database, "PRAGMA user_version = 7", nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(database);
    EXPECT_THAT(refusal(), EndsWith("it was written by another version of this program."));
}

TEST_F(SqliteStorageTest, refusesAFolderThatIsNotThere) {
    const auto opened = SqliteStorage::open(folder.path() / "none" / "office.db");
    ASSERT_FALSE(opened.has_value());
    EXPECT_THAT(opened.error().reason, EndsWith("cannot be opened: No such file or directory."));
}

TEST_F(SqliteStorageTest, keepsAllOrNothingWhenTheDiskIsFullAndGoesOnAfterwards) {
    auto storage = *SqliteStorage::open(file());
    const Room room{.id = "r", .practiceId = "p", .position = 0, .name = "One", .beaconUuid = {}, .active = {}};
    ASSERT_TRUE(storage->commit(std::vector<Change>{Put{room}}).has_value());

    std::vector<Change> many;
    for (int count = 0; count < 4000; ++count) {
        Signal signal;
        signal.id = "s" + std::to_string(count);
        signal.note = std::string(200, 'n');
        many.push_back(Put{signal});
    }
    rlimit before{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &before), 0);
    const auto oldHandler = std::signal(SIGXFSZ, SIG_IGN);
    const rlimit small{.rlim_cur = 256 * 1024, .rlim_max = before.rlim_max};
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &small), 0);
    const auto refused = storage->commit(many);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &before), 0);
    std::signal(SIGXFSZ, oldHandler);
    ASSERT_FALSE(refused.has_value());
    EXPECT_THAT(refused.error().reason, HasSubstr("cannot be written"));

    State expected;
    carryOut(expected, Put{room});
    EXPECT_EQ(storage->load(), expected);
    ASSERT_TRUE(storage->commit(many).has_value());
    storage.reset();
    EXPECT_EQ((*SqliteStorage::open(file()))->load()->all<Signal>().size(), 4000U);
}

}  // namespace

}  // namespace zelkovanta::office
