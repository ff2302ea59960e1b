#pragma once

#include "store/queues.h"
#include "tests/support/store_fixture.h"

#include <chrono>
#include <expected>
#include <optional>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelkovanta::store {

using namespace std::chrono_literals;

/// A test of the store on one simulated computer.
struct StoreTest : testing::Test, support::Computer {
    using Lines = std::vector<std::string>;

    /// Ids of a list of the state, in its order.
    template <class Record>
    static Lines idsOf(const std::vector<Record>& records) {
        Lines ids;
        for (const Record& record : records) {
            ids.push_back(record.id);
        }
        return ids;
    }

    /// What the sender of crash reports gave; none until then.
    std::optional<std::expected<std::int64_t, server::APIError>> sentReports;
    void sendReports(const CrashSession::Sender& sender, const Lines& reports) {
        run([this, sender, reports](AppStore&) -> platform::Awaitable<void> {
            sentReports = co_await sender(reports);
        });
    }

    /// The lines of the journal that begin with `prefix`; the journal begins anew.
    Lines takeLinesOf(std::string_view prefix) {
        Lines lines;
        for (std::string& line : journal.take()) {
            if (line.starts_with(prefix)) {
                lines.push_back(std::move(line));
            }
        }
        return lines;
    }
};

}  // namespace zelkovanta::store
