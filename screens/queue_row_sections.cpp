#include "screens/queue_row_sections.h"

#include "screens/vocabulary/vocabulary.h"
#include "store/queues.h"

#include <string_view>
#include <unordered_map>
#include <utility>

namespace zelkovanta::screens {

namespace {

using store::StoreState;

/// The first record with each id, so that a list of rows does not search the lists of the store for every one of them.
template <class Record>
class FirstById {
public:
    explicit FirstById(const std::vector<Record>& records) {
        byId_.reserve(records.size());
        for (const Record& record : records) {
            byId_.emplace(record.id, &record);
        }
    }

    [[nodiscard]] std::optional<Record> find(std::string_view id) const {
        const auto found = byId_.find(id);
        return found == byId_.end() ? std::nullopt : std::optional{*found->second};
    }
    [[nodiscard]] std::optional<Record> find(const std::optional<std::string>& id) const {
        return id ? find(std::string_view{*id}) : std::nullopt;
    }

private:
    std::unordered_map<std::string_view, const Record*> byId_;
};

/// Makes the rows of one list.
class RowWriter {
public:
    RowWriter(const StoreState& state, const platform::StringTable& strings)
        : state_(state), strings_(strings), rooms_(state.rooms), types_(state.signalTypes), members_(state.members) {}

    [[nodiscard]] QueueRow write(const records::Signal& signal) const {
        QueueRow row;
        row.signal = signal;
        row.room = rooms_.find(std::string_view{signal.roomId});
        row.type = types_.find(std::string_view{signal.typeId});
        row.vertical = state_.office ? state_.office->vertical : std::nullopt;
        row.provider = members_.find(signal.providerId);
        row.requester = members_.find(signal.requesterId);
        if (row.requester) {
            auto label =
                vocabulary::departmentLabel(state_.office, row.requester->department, vocabulary::Count::one, strings_);
            // Somebody of no department has no label either.
            row.requesterDepartment = label.empty() ? std::nullopt : std::optional{std::move(label)};
        }
        row.onDone = RowAction::done;
        return row;
    }

private:
    const StoreState& state_;
    const platform::StringTable& strings_;
    FirstById<records::Room> rooms_;
    FirstById<records::SignalType> types_;
    FirstById<records::Member> members_;
};

QueueTabButton tabButton(SignalTab tab, std::string title, bool selected, std::size_t count) {
    QueueTabButton button{.tab = tab,
                          .title = std::move(title),
                          .selected = selected,
                          .badge = count == 0 ? std::string{} : std::to_string(count),
                          .titleColor = theme::textSecondary,
                          .fill = theme::cardBackground,
                          .outline = theme::hairline,
                          .badgeFill = theme::brandYellow};
    if (selected) {
        button.titleColor = theme::fixed(theme::ink);
        button.fill = theme::fixed(theme::brandYellow);
        button.outline.reset();
        button.badgeFill = theme::withOpacity(theme::ink, 0.25);
    }
    return button;
}

}  // namespace

std::vector<QueueRow> personalQueueRows(const StoreState& state, const std::optional<std::string>& roomId,
                                        const platform::StringTable& strings) {
    std::vector<QueueRow> rows;
    const auto signals = store::receivedSignals(state, roomId);
    const RowWriter writer{state, strings};
    rows.reserve(signals.size());
    for (const records::Signal* signal : signals) {
        QueueRow& row = rows.emplace_back(writer.write(*signal));
        row.onAcknowledge = RowAction::acknowledge;
        row.completionLabel = strings.localized("Done");
    }
    return rows;
}

QueueSection personalQueueSection(const StoreState& state, SectionTitle title, const std::optional<std::string>& roomId,
                                  const platform::StringTable& strings) {
    QueueSection section;
    if (title == SectionTitle::shown) {
        section.header = strings.localized("Your signals");
    }
    section.rows = personalQueueRows(state, roomId, strings);
    if (section.rows.empty()) {
        section.empty = {
            .systemImage = "tray", .title = strings.localized("No one is waiting for you."), .subtitle = {}};
    }
    return section;
}

QueueSection sentQueueSection(const StoreState& state, const std::optional<std::string>& roomId,
                              const platform::StringTable& strings) {
    QueueSection section;
    const auto signals = store::sentSignals(state, roomId);
    if (signals.empty()) {
        section.empty = {.systemImage = "paperplane",
                         .title = strings.localized("Nothing sent yet."),
                         .subtitle = strings.localized("Tap + to send a signal.")};
        return section;
    }
    // The place of every signal at once; asking for one after the other would sort the office's queue for each row.
    std::unordered_map<std::string_view, std::size_t> positions;
    const auto queue = store::sortedActiveSignals(state.signalTypes, state.signals);
    for (std::size_t index = 0; index < queue.size(); ++index) {
        positions.emplace(queue[index]->id, index + 1);
    }
    const RowWriter writer{state, strings};
    section.rows.reserve(signals.size());
    for (const records::Signal* signal : signals) {
        QueueRow& row = section.rows.emplace_back(writer.write(*signal));
        row.position = positions.at(signal->id);
        row.completionLabel = strings.localized("Mark completed");
        row.onCancel = RowAction::cancel;
        row.showTarget = true;
    }
    return section;
}

std::array<QueueTabButton, 2> queueTabToggle(SignalTab tab, std::size_t receivedCount, std::size_t sentCount,
                                             const platform::StringTable& strings) {
    return {tabButton(SignalTab::received, strings.localized("Received"), tab == SignalTab::received, receivedCount),
            tabButton(SignalTab::sent, strings.localized("Sent"), tab == SignalTab::sent, sentCount)};
}

std::optional<ConnectionBanner> connectionBanner(server::ConnectionState state, const platform::StringTable& strings) {
    switch (state) {
        case server::ConnectionState::connected:
            break;
        case server::ConnectionState::disconnected:
            return ConnectionBanner{.text = strings.localized("Offline, retrying…"), .hasSpinner = true};
        case server::ConnectionState::connecting:
            return ConnectionBanner{.text = strings.localized("Connecting…"), .hasSpinner = true};
        case server::ConnectionState::stopped:
            return ConnectionBanner{.text = strings.localized("Not connected"), .hasSpinner = false};
    }
    return std::nullopt;
}

std::optional<MemberStatusControl> memberStatusControl(const StoreState& state, const platform::StringTable& strings) {
    const records::Member* member = store::activeMember(state);
    if (!member) {
        return std::nullopt;
    }
    const auto current = records::memberStatusFromRawValue(member->status.value_or(""));
    MemberStatusControl control;
    control.dot = statusDotColor(member->status, DotPlace::plain);
    control.text = vocabulary::memberStatusLabel(current.value_or(records::MemberStatus::available), strings);
    for (std::size_t index = 0; index < control.entries.size(); ++index) {
        const records::MemberStatus status = records::allMemberStatuses[index];
        control.entries[index] = {
            .status = status, .text = vocabulary::memberStatusLabel(status, strings), .isCurrent = status == current};
    }
    return control;
}

}  // namespace zelkovanta::screens
