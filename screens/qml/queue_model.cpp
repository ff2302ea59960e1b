#include "screens/qml/queue_model.h"

#include "screens/qml/shown_row.h"
#include "screens/qml/shown_text.h"

#include <algorithm>
#include <chrono>
#include <string_view>
#include <unordered_map>
#include <utility>

namespace zelkovanta::screens::qml {

namespace {

QVariant shown(const theme::ColorPair& color) {
    return QVariant::fromValue(ShownColor{color});
}

/// What a row is called: what of it is known.
std::string spoken(const DrawnRow& drawn) {
    std::string name;
    for (const std::string& part : {drawn.room, drawn.type, drawn.chip.text}) {
        if (!part.empty()) {
            name += name.empty() ? part : ", " + part;
        }
    }
    return name;
}

QVariant buttonOf(const DrawnRow& drawn, RowAction action) {
    const auto found = std::ranges::find(drawn.buttons, action, &RowButton::action);
    return QVariant::fromValue(found == drawn.buttons.end() ? ShownButton{} : ShownButton{*found});
}

}  // namespace

QueueModel::QueueModel(const platform::Clock& clock, const platform::StringTable& strings, PressHandler onPress)
    : clock_(clock), strings_(strings), onPress_(std::move(onPress)) {}

void QueueModel::setSection(const QueueSection& section) {
    const int before = count();
    std::unordered_map<std::string_view, const QueueEntryHandle*> known;
    known.reserve(rows().size());
    for (const QueueEntryHandle& entry : rows()) {
        known.emplace(entry->drawn.id, &entry);
    }
    std::vector<QueueEntryHandle> next;
    next.reserve(section.rows.size());
    for (const QueueRow& row : section.rows) {
        const auto found = known.find(row.signal.id);
        if (found != known.end() && (*found->second)->row == row) {
            next.push_back(*found->second);
        } else {
            next.push_back(entryOf(row, found != known.end() ? found->second->get() : nullptr));
        }
    }
    replaceRows(std::move(next));
    if (count() != before) {
        Q_EMIT countChanged();
    }
    if (std::exchange(empty_, section.empty) != section.empty) {
        Q_EMIT emptyChanged();
    }
    if (std::exchange(header_, section.header) != section.header) {
        Q_EMIT headerChanged();
    }
}

QueueEntryHandle QueueModel::entryOf(const QueueRow& row, const QueueEntry* before) const {
    DrawnRow drawnRow = drawn(row, strings_);
    WaitTimerText timer{drawnRow.since};
    // The same wait goes on, with what it remembers.
    if (before != nullptr && before->drawn.since == drawnRow.since) {
        timer = before->timer;
    }
    return std::make_shared<QueueEntry>(QueueEntry{.row = row, .drawn = std::move(drawnRow), .timer = timer});
}

void QueueModel::appear() {
    appeared_ = clock_.steadyNow();
}

int QueueModel::tick() {
    if (count() > 0) {
        Q_EMIT dataChanged(index(0), index(count() - 1), {waitText, waitColor});
    }
    const auto left = untilNextTick(appeared_, clock_.steadyNow());
    return static_cast<int>(std::chrono::ceil<std::chrono::milliseconds>(left).count());
}

int QueueModel::placeOf(const QString& id) const {
    const auto found = std::ranges::find(rows(), id.toStdString(), [](const auto& entry) { return entry->drawn.id; });
    return found == rows().end() ? -1 : static_cast<int>(found - rows().begin());
}

QString QueueModel::header() const {
    return shown(header_.value_or(""));
}

void QueueModel::press(const QString& id, std::optional<RowAction> QueueRow::* action) const {
    const auto found = std::ranges::find(rows(), id.toStdString(), [](const auto& entry) { return entry->drawn.id; });
    if (found == rows().end()) {
        return;
    }
    // A handle of its own, since the press may change the list.
    const auto entry = QueueEntryHandle(*found);
    const std::optional<RowAction> pressed = entry->row.*action;
    if (pressed &&
        std::ranges::find(entry->drawn.buttons, *pressed, &RowButton::action) != entry->drawn.buttons.end()) {
        onPress_(entry->row.signal, *pressed);
    }
}

QString QueueModel::emptySymbol() const {
    return empty_ ? shown(empty_->systemImage) : QString{};
}

QString QueueModel::emptyTitle() const {
    return empty_ ? shown(empty_->title) : QString{};
}

QString QueueModel::emptySubtitle() const {
    return empty_ ? shown(empty_->subtitle.value_or("")) : QString{};
}

QVariant QueueModel::valueOf(const QueueEntryHandle& entry, int role) const {
    const DrawnRow& drawnRow = entry->drawn;
    switch (role) {
        case signalId:
            return shown(drawnRow.id);
        case spokenName:
            return shown(spoken(drawnRow));
        case mark:
            return toColor(drawnRow.mark);
        case outline:
            return shown(drawnRow.outline);
        case room:
            return shown(drawnRow.room);
        case type:
            return shown(drawnRow.type);
        case typeColor:
            return shown(drawnRow.typeColor);
        case waitText:
            return shown(entry->timer.textAt(clock_.wallNow()));
        case waitColor:
            // The colour is that of the text as it was drawn last.
            static_cast<void>(entry->timer.textAt(clock_.wallNow()));
            return shown(entry->timer.color());
        case detail:
            return shown(drawnRow.detail);
        case note:
            return shown(drawnRow.note);
        case chip:
            return QVariant::fromValue(ShownChip{drawnRow.chip});
        case combined:
            return QVariant::fromValue(drawnRow.combined ? ShownBadge{*drawnRow.combined} : ShownBadge{});
        case position:
            return shown(drawnRow.position);
        case acknowledge:
            return buttonOf(drawnRow, RowAction::acknowledge);
        case done:
            return buttonOf(drawnRow, RowAction::done);
        case cancel:
            return buttonOf(drawnRow, RowAction::cancel);
        default:
            return {};
    }
}

QHash<int, QByteArray> QueueModel::roleNames() const {
    return {{signalId, "signalId"},
            {spokenName, "spokenName"},
            {mark, "mark"},
            {outline, "outline"},
            {room, "room"},
            {type, "type"},
            {typeColor, "typeColor"},
            {waitText, "waitText"},
            {waitColor, "waitColor"},
            {detail, "detail"},
            {note, "note"},
            {chip, "chip"},
            {combined, "combined"},
            {position, "position"},
            {acknowledge, "acknowledge"},
            {done, "done"},
            {cancel, "cancel"}};
}

}  // namespace zelkovanta::screens::qml
