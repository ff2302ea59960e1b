#include "tests/support/recording_collaborators.h"

namespace zelkovanta::support {

namespace {

std::string joined(std::span<const std::string_view> texts) {
    std::string all;
    for (const std::string_view text : texts) {
        all += all.empty() ? "" : ", ";
        all += text;
    }
    return "[" + all + "]";
}

std::string shortKey(std::string_view key) {
    constexpr std::string_view prefix = "macos.";
    return std::string{key.starts_with(prefix) ? key.substr(prefix.size()) : key};
}

}  // namespace

void RecordingNotifications::setActionHandler(ActionHandler handler) {
    journal_.add("notifications.setActionHandler");
    actionHandler = std::move(handler);
}

void RecordingNotifications::setPermissionRequested() {
    journal_.add("notifications.setPermissionRequested");
    permissionWasRequested = true;
}

platform::Awaitable<void> RecordingNotifications::requestPermission() {
    journal_.add("notifications.requestPermission");
    co_return;
}

void RecordingNotifications::notifyNewSignal(const store::StoreState& state, const records::Signal& signal) {
    journal_.add("notifications.new " + signal.id + " " + signal.status);
    onNotify(state);
}

void RecordingNotifications::notifySignalUpdate(const store::StoreState& state, const records::Signal& signal,
                                                const records::Signal* previous) {
    journal_.add("notifications.update " + signal.id + " " + signal.status + ", was " +
                 (previous ? previous->status : "not there"));
    onNotify(state);
}

void RecordingNotifications::reconcile(std::span<const std::string_view> activeSignalIds,
                                       std::optional<std::string_view> activeMemberId) {
    journal_.add("notifications.reconcile " + std::string{activeMemberId.value_or("nobody")} + " " +
                 joined(activeSignalIds));
}

void RecordingNotes::setNotes(std::span<const std::string_view> notes, std::string_view key) {
    journal_.add("notes.set " + shortKey(key) + " " + joined(notes));
}

void RecordingNotes::addNotesToHistory(std::span<const std::string_view> notes, std::string_view key) {
    journal_.add("notes.history " + shortKey(key) + " " + joined(notes));
}

void RecordingNotes::retireNotes(std::string_view key) {
    journal_.add("notes.retire " + shortKey(key));
}

void RecordingCrashSession::setSender(std::string_view serverURL, Sender to) {
    journal_.add("crash.setSender " + std::string{serverURL});
    sender = std::move(to);
}

void RecordingCrashSession::clearSender() {
    journal_.add("crash.clearSender");
    sender = {};
}

platform::Awaitable<void> RecordingCrashSession::flush() {
    journal_.add("crash.flush");
    co_return;
}

void RecordingCrashSession::writeContext(store::PairedContext context) {
    journal_.add(context == store::PairedContext::paired ? "crash.context paired" : "crash.context unpaired");
}

void RecordingUpdates::announce(const records::DesktopRelease& release) {
    journal_.add("updates.announce " + (release.macos ? release.macos->version : "nothing"));
}

void RecordingDefaults::setBoolean(std::string_view key, bool value) {
    journal_.add("defaults " + std::string{key} + (value ? " = true" : " = false"));
    memory.setBoolean(key, value);
}

void RecordingDefaults::setNumber(std::string_view key, double value) {
    journal_.add("defaults " + std::string{key} + " = " + std::to_string(value));
    memory.setNumber(key, value);
}

void RecordingDefaults::setText(std::string_view key, std::string_view value) {
    journal_.add("defaults " + std::string{key} + " = '" + std::string{value} + "'");
    memory.setText(key, value);
}

void RecordingDefaults::remove(std::string_view key) {
    journal_.add("defaults without " + std::string{key});
    memory.remove(key);
}

platform::Awaitable<std::optional<std::string>> RecordingKeyStore::read(platform::KeyStoreItem item) {
    journal_.add("keyStore.read " + item.account);
    co_return co_await memory.read(std::move(item));
}

void RecordingKeyStore::write(platform::KeyStoreItem item, std::string value) {
    journal_.add("keyStore.write " + item.account + " = '" + value + "'");
    memory.write(std::move(item), std::move(value));
}

void RecordingKeyStore::remove(platform::KeyStoreItem item) {
    journal_.add("keyStore.remove " + item.account);
    memory.remove(std::move(item));
}

}  // namespace zelkovanta::support
