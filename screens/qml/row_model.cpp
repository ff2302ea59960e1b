#include "screens/qml/row_model.h"

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <limits>
#include <string_view>
#include <unordered_set>

#include <QString>

namespace zelkovanta::screens::qml {

namespace {

std::unordered_set<std::string_view> idsOf(const std::vector<PlainRow>& rows) {
    std::unordered_set<std::string_view> ids;
    for (const PlainRow& row : rows) {
        ids.insert(row.id);
    }
    return ids;
}

double milliseconds(const std::optional<platform::WallTime>& moment) {
    using namespace std::chrono;
    return moment ? duration<double, std::milli>(moment->time_since_epoch()).count()
                  : std::numeric_limits<double>::quiet_NaN();
}

}  // namespace

void RowModel::setRows(const std::vector<PlainRow>& rows) {
    const int before = count();
    removeAbsent(rows);
    insertAndMove(rows);
    replaceChanged(rows);
    if (count() != before) {
        Q_EMIT countChanged();
    }
}

void RowModel::removeAbsent(const std::vector<PlainRow>& rows) {
    const auto kept = idsOf(rows);
    int end = count();
    while (end > 0) {
        const auto isKept = [&](int index) { return kept.contains(rows_[static_cast<std::size_t>(index)].id); };
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

/// Brings the ids into the order of `rows`; each row that stands there already stays untouched.
void RowModel::insertAndMove(const std::vector<PlainRow>& rows) {
    const auto present = [this] {
        std::unordered_set<std::string> ids;
        for (const PlainRow& row : rows_) {
            ids.insert(row.id);
        }
        return ids;
    }();
    const int wanted = static_cast<int>(rows.size());
    for (int index = 0; index < wanted; ++index) {
        const auto at = static_cast<std::size_t>(index);
        if (at < rows_.size() && rows_[at].id == rows[at].id) {
            continue;
        }
        if (present.contains(rows[at].id)) {
            const auto found = std::ranges::find(rows_.begin() + index, rows_.end(), rows[at].id, &PlainRow::id);
            const int from = static_cast<int>(found - rows_.begin());
            beginMoveRows({}, from, from, {}, index);
            std::rotate(rows_.begin() + index, found, found + 1);
            endMoveRows();
            continue;
        }
        int last = index;
        while (last + 1 < wanted && !present.contains(rows[static_cast<std::size_t>(last) + 1].id)) {
            ++last;
        }
        beginInsertRows({}, index, last);
        rows_.insert(rows_.begin() + index, rows.begin() + index, rows.begin() + last + 1);
        endInsertRows();
        index = last;
    }
}

void RowModel::replaceChanged(const std::vector<PlainRow>& rows) {
    for (std::size_t at = 0; at < rows_.size(); ++at) {
        if (rows_[at] != rows[at]) {
            rows_[at] = rows[at];
            const QModelIndex changed = index(static_cast<int>(at));
            Q_EMIT dataChanged(changed, changed);
        }
    }
}

int RowModel::rowCount(const QModelIndex& parent) const {
    return parent.isValid() ? 0 : count();
}

QVariant RowModel::data(const QModelIndex& index, int role) const {
    if (!checkIndex(index, CheckIndexOption::IndexIsValid)) {
        return {};
    }
    const PlainRow& row = rows_[static_cast<std::size_t>(index.row())];
    switch (role) {
        case signalId:
            return QString::fromStdString(row.id);
        case room:
            return QString::fromStdString(row.room);
        case type:
            return QString::fromStdString(row.type);
        case color:
            return QString::fromStdString(row.color);
        case detail:
            return QString::fromStdString(row.detail);
        case note:
            return QString::fromStdString(row.note);
        case status:
            return QString::fromStdString(row.status);
        case statusText:
            return QString::fromStdString(row.statusText);
        case since:
            return milliseconds(row.since);
        case mayAcknowledge:
            return row.mayAcknowledge;
        case mayFinish:
            return row.mayFinish;
        case mayCancel:
            return row.mayCancel;
        default:
            return {};
    }
}

QHash<int, QByteArray> RowModel::roleNames() const {
    return {{signalId, "signalId"},   {room, "room"},
            {type, "type"},           {color, "typeColor"},
            {detail, "detail"},       {note, "note"},
            {status, "status"},       {statusText, "statusText"},
            {since, "since"},         {mayAcknowledge, "mayAcknowledge"},
            {mayFinish, "mayFinish"}, {mayCancel, "mayCancel"}};
}

}  // namespace zelkovanta::screens::qml
