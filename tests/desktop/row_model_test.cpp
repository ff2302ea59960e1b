#include "screens/qml/row_model.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <rapidcheck.h>

#include <QAbstractItemModelTester>
#include <QPersistentModelIndex>
#include <gtest/gtest.h>

namespace zelkovanta::screens::qml {
namespace {

std::vector<PlainRow> rowsOf(const std::vector<int>& ids, const std::string& note = "") {
    std::vector<PlainRow> rows;
    for (const int id : ids) {
        PlainRow row;
        row.id = std::to_string(id);
        row.note = note;
        rows.push_back(row);
    }
    return rows;
}

std::vector<int> idsOf(const RowModel& model) {
    std::vector<int> ids;
    for (int row = 0; row < model.count(); ++row) {
        ids.push_back(model.data(model.index(row), RowModel::signalId).toString().toInt());
    }
    return ids;
}

std::vector<int> someIds() {
    auto ids = *rc::gen::unique<std::vector<int>>(rc::gen::inRange(0, 40));
    return ids;
}

/// A view that knows only what the model tells: it must arrive at the same list, and keep whoever stayed.
TEST(RowModel, whatIsToldLeadsFromAnyListToAnyOther) {
    const bool holds = rc::check([] {
        RowModel model;
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
        const auto before = someIds();
        const auto after = someIds();
        model.setRows(rowsOf(before));
        RC_ASSERT(idsOf(model) == before);
        std::vector<std::pair<int, QPersistentModelIndex>> kept;
        for (int row = 0; row < model.count(); ++row) {
            kept.emplace_back(before[static_cast<std::size_t>(row)], model.index(row));
        }
        model.setRows(rowsOf(after));
        RC_ASSERT(idsOf(model) == after);
        for (const auto& [id, index] : kept) {
            const auto found = std::ranges::find(after, id);
            RC_ASSERT(index.isValid() == (found != after.end()));
            RC_ASSERT(!index.isValid() || index.row() == found - after.begin());
        }
    });
    EXPECT_TRUE(holds);
}

TEST(RowModel, aRowThatChangesIsToldAlone) {
    RowModel model;
    model.setRows(rowsOf({1, 2, 3}));
    std::vector<int> changed;
    QObject::connect(&model, &RowModel::dataChanged, [&](const QModelIndex& from, const QModelIndex& to) {
        for (int row = from.row(); row <= to.row(); ++row) {
            changed.push_back(row);
        }
    });
    auto rows = rowsOf({1, 2, 3});
    rows[1].note = "Now";
    model.setRows(rows);
    EXPECT_EQ(changed, std::vector<int>{1});
    EXPECT_EQ(model.data(model.index(1), RowModel::note).toString(), "Now");
}

TEST(RowModel, aTimeBefore1970IsATimeAndOnlyNoneIsNoNumber) {
    using namespace std::chrono_literals;
    auto rows = rowsOf({1, 2, 3});
    rows[0].since = platform::WallTime{-1ms};
    rows[1].since = platform::WallTime{-86'400s};
    RowModel model;
    model.setRows(rows);
    const auto since = [&](int row) { return model.data(model.index(row), RowModel::since).toDouble(); };
    EXPECT_EQ(since(0), -1);
    EXPECT_EQ(since(1), -86'400'000);
    EXPECT_TRUE(std::isnan(since(2)));
}

TEST(RowModel, theSameRowsAreNoChange) {
    RowModel model;
    model.setRows(rowsOf({1, 2, 3}));
    int told = 0;
    const auto count = [&] { ++told; };
    QObject::connect(&model, &RowModel::dataChanged, count);
    QObject::connect(&model, &RowModel::rowsInserted, count);
    QObject::connect(&model, &RowModel::rowsRemoved, count);
    QObject::connect(&model, &RowModel::rowsMoved, count);
    QObject::connect(&model, &RowModel::modelReset, count);
    model.setRows(rowsOf({1, 2, 3}));
    EXPECT_EQ(told, 0);
}

}  // namespace
}  // namespace zelkovanta::screens::qml
