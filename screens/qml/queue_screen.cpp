#include "screens/qml/queue_screen.h"

#include "screens/qml/shown_text.h"
#include "screens/queue_row_actions.h"
#include "store/queues.h"

#include <algorithm>
#include <array>
#include <string>
#include <utility>
#include <vector>

namespace zelkovanta::screens::qml {

namespace {

/// Whether the lists or the status may read otherwise now. A lost connection and a failed press leave them alone.
bool concernsQueues(const store::StoreChanges& changes) {
    using enum store::StoreField;
    return std::ranges::any_of(std::array{isPaired, role, office, members, rooms, signalTypes,
                                          store::StoreField::signals, device, flexibleRoomSession},
                               [&](store::StoreField field) { return changes.contains(field); });
}

}  // namespace

QueueScreen::QueueScreen(std::shared_ptr<store::AppStore> store, platform::Executor main, const platform::Clock& clock,
                         const platform::StringTable& strings)
    : store_(std::move(store)),
      main_(std::move(main)),
      strings_(strings),
      received_(clock, strings,
                [this](const records::Signal& signal, RowAction action) { press(store_, main_, signal, action); }),
      sent_(clock, strings,
            [this](const records::Signal& signal, RowAction action) { press(store_, main_, signal, action); }) {
    refresh();
    observation_ = store_->observe([this](const store::StoreChanges& changes) {
        if (concernsQueues(changes)) {
            refresh();
        } else if (changes.contains(store::StoreField::connectionState)) {
            banner_ = connectionBanner(store_->state().connectionState, strings_);
            Q_EMIT bannerChanged();
        }
    });
}

void QueueScreen::refresh() {
    refreshLists();
    refreshStatus();
    auto banner = connectionBanner(store_->state().connectionState, strings_);
    if (std::exchange(banner_, banner) != banner) {
        Q_EMIT bannerChanged();
    }
}

void QueueScreen::refreshLists() {
    const auto& state = store_->state();
    const auto roomId = store::confirmedFlexibleRoomId(state);
    const auto counts = std::pair{received_.count(), sent_.count()};
    received_.setSection(personalQueueSection(state, SectionTitle::hidden, roomId, strings_));
    sent_.setSection(sentQueueSection(state, roomId, strings_));
    if (counts != std::pair{received_.count(), sent_.count()}) {
        Q_EMIT tabsChanged();
    }
}

void QueueScreen::refreshStatus() {
    auto status = memberStatusControl(store_->state(), strings_);
    if (status == status_) {
        return;
    }
    status_ = std::move(status);
    std::vector<Choice> entries;
    if (status_) {
        for (const auto& entry : status_->entries) {
            entries.push_back({std::string{records::rawValue(entry.status)}, entry.text});
        }
    }
    statuses_.setChoices(std::move(entries));
    Q_EMIT statusChanged();
}

std::array<QueueTabButton, 2> QueueScreen::tabs() const {
    return queueTabToggle(tab_, static_cast<std::size_t>(received_.count()), static_cast<std::size_t>(sent_.count()),
                          strings_);
}

ShownTab QueueScreen::receivedTab() const {
    return ShownTab{tabs()[0]};
}

ShownTab QueueScreen::sentTab() const {
    return ShownTab{tabs()[1]};
}

void QueueScreen::chooseSent(bool chosen) {
    const SignalTab tab = chosen ? SignalTab::sent : SignalTab::received;
    if (std::exchange(tab_, tab) != tab) {
        Q_EMIT tabsChanged();
    }
}

QString QueueScreen::bannerText() const {
    return banner_ ? shown(banner_->text) : QString{};
}

QString QueueScreen::statusText() const {
    return status_ ? shown(status_->text) : QString{};
}

QString QueueScreen::statusId() const {
    if (status_) {
        const auto current = std::ranges::find_if(status_->entries, &MemberStatusControl::Entry::isCurrent);
        if (current != status_->entries.end()) {
            return shown(records::rawValue(current->status));
        }
    }
    return {};
}

void QueueScreen::chooseStatus(const QString& id) {
    if (const auto status = records::memberStatusFromRawValue(id.toStdString())) {
        chooseMemberStatus(store_, main_, *status);
    }
}

}  // namespace zelkovanta::screens::qml
