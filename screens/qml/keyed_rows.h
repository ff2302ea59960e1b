#pragma once

#include <algorithm>
#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_set>
#include <utility>
#include <vector>

#include <QAbstractListModel>
#include <QList>

namespace zelkovanta::screens::qml {

/// Rows that are told apart by a key: of several with one key the first stands for all. What changes is told as
/// removals, inserts, moves and changed fields, so that every other row keeps its place on screen, its focus and its
/// state.
template <class Row>
class KeyedRows : public QAbstractListModel {
public:
    using QAbstractListModel::QAbstractListModel;

    [[nodiscard]] int count() const { return static_cast<int>(rows_.size()); }
    [[nodiscard]] int rowCount(const QModelIndex& parent) const override { return parent.isValid() ? 0 : count(); }
    [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override {
        return checkIndex(index, CheckIndexOption::IndexIsValid) ? valueOf(row(index.row()), role) : QVariant{};
    }

protected:
    [[nodiscard]] virtual const std::string& keyOf(const Row& row) const = 0;
    [[nodiscard]] virtual QVariant valueOf(const Row& row, int role) const = 0;

    [[nodiscard]] const std::vector<Row>& rows() const { return rows_; }
    [[nodiscard]] const Row& row(int index) const { return rows_[static_cast<std::size_t>(index)]; }

    void replaceRows(std::vector<Row> rows) {
        dropRepeated(rows);
        removeAbsent(rows);
        insertAndMove(rows);
        replaceChanged(std::move(rows));
    }

private:
    using Keys = std::unordered_set<std::string_view>;
    [[nodiscard]] Keys keysOf(const std::vector<Row>& rows) const {
        Keys keys;
        keys.reserve(rows.size());
        for (const Row& row : rows) {
            keys.insert(keyOf(row));
        }
        return keys;
    }

    void dropRepeated(std::vector<Row>& rows) const {
        if (keysOf(rows).size() == rows.size()) {
            return;
        }
        std::unordered_set<std::string> seen;
        std::erase_if(rows, [&](const Row& row) { return !seen.insert(keyOf(row)).second; });
    }

    void removeAbsent(const std::vector<Row>& rows) {
        const Keys kept = keysOf(rows);
        const auto isKept = [&](int index) { return kept.contains(keyOf(row(index))); };
        for (int end = count(); end > 0;) {
            if (isKept(end - 1)) {
                --end;
                continue;
            }
            int first = end - 1;
            while (first > 0 && !isKept(first - 1)) {
                --first;
            }
            beginRemoveRows({}, first, end - 1);
            rows_.erase(rows_.begin() + first, rows_.begin() + end);
            endRemoveRows();
            end = first;
        }
    }

    /// Brings the keys into the order of `rows`; each row that stands there already stays untouched.
    void insertAndMove(const std::vector<Row>& rows) {
        const std::vector<Row> before = rows_;  // The keys live in here while rows come and go.
        const Keys present = keysOf(before);
        const int wanted = static_cast<int>(rows.size());
        for (int index = 0; index < wanted; ++index) {
            const std::string& key = keyOf(rows[static_cast<std::size_t>(index)]);
            if (index < count() && keyOf(row(index)) == key) {
                continue;
            }
            if (present.contains(key)) {
                const auto found =
                    std::find_if(rows_.begin() + index, rows_.end(), [&](const Row& row) { return keyOf(row) == key; });
                const int from = static_cast<int>(found - rows_.begin());
                beginMoveRows({}, from, from, {}, index);
                std::rotate(rows_.begin() + index, found, found + 1);
                endMoveRows();
                continue;
            }
            int last = index;
            while (last + 1 < wanted && !present.contains(keyOf(rows[static_cast<std::size_t>(last) + 1]))) {
                ++last;
            }
            beginInsertRows({}, index, last);
            rows_.insert(rows_.begin() + index, rows.begin() + index, rows.begin() + last + 1);
            endInsertRows();
            index = last;
        }
    }

    void replaceChanged(std::vector<Row> rows) {
        for (std::size_t at = 0; at < rows_.size(); ++at) {
            if (rows_[at] == rows[at]) {
                continue;
            }
            const Row before = std::exchange(rows_[at], std::move(rows[at]));
            QList<int> fields;
            const auto names = roleNames();
            for (auto role = names.keyBegin(); role != names.keyEnd(); ++role) {
                if (valueOf(before, *role) != valueOf(rows_[at], *role)) {
                    fields.push_back(*role);
                }
            }
            if (!fields.isEmpty()) {
                const QModelIndex changed = index(static_cast<int>(at));
                Q_EMIT dataChanged(changed, changed, fields);
            }
        }
    }

    std::vector<Row> rows_;
};

}  // namespace zelkovanta::screens::qml
