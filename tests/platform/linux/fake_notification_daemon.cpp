#include "tests/platform/linux/fake_notification_daemon.h"

#include <algorithm>

namespace zelkovanta::platform::linux_host {

namespace {

constexpr std::uint32_t expired = 1;
constexpr std::uint32_t dismissed = 2;
constexpr std::uint32_t closedByCall = 3;
constexpr std::uint32_t otherwise = 4;

}  // namespace

std::vector<DaemonQuirks> eightDaemons() {
    using enum DaemonQuirks::Replacing;
    return {
        {.name = "GNOME Shell",
         .capabilities = {"actions", "body", "body-markup", "persistence", "sound"},
         .mostOfOneProgram = 3,
         .callsExpiryDismissal = true},
        {.name = "Plasma",
         .capabilities = {"actions", "body", "body-markup", "persistence", "inhibitions"},
         .adoptsUnknownNumbers = true,
         .refusesRepetitions = true},
        {.name = "dunst",
         .capabilities = {"actions", "body", "body-markup"},
         .adoptsUnknownNumbers = true,
         .dropsSomeAtOnce = true},
        {.name = "mako", .closesBeforePress = true},
        {.name = "Budgie",
         .replacing = givesNewNumber,
         .closesReplacedAloud = true,
         .callsClosingExpiry = true,
         .listsWhatExpired = true},
        {.name = "SwayNC", .replacing = givesNewNumber, .clearsInSilence = true, .keepsWhatWasPressed = true},
        {.name = "MATE", .capabilities = {"body", "sound"}, .replacing = leavesTheOldOne},
        {.name = "LXQt", .replacing = givesNewNumber, .closesReplacedAloud = true, .listsWhatExpired = true},
    };
}

FakeNotificationDaemon::Number FakeNotificationDaemon::notify(const Shown& notification, Number replaces,
                                                              SteadyTime now) {
    using enum DaemonQuirks::Replacing;
    const std::string text = notification.title + '\n' + notification.body;
    const bool isRepetition = lastTime_ && text == lastText_ && now - *lastTime_ < std::chrono::seconds{1};
    lastText_ = text;
    lastTime_ = now;
    if (quirks_.refusesRepetitions && isRepetition) {
        return 0;
    }
    Number number = 0;
    if (shown_.contains(replaces)) {
        if (quirks_.replacing == keepsNumber) {
            number = replaces;
        } else if (quirks_.replacing == givesNewNumber) {
            if (quirks_.closesReplacedAloud) {
                remove(replaces, closedByCall);
            } else {
                shown_.erase(replaces);
            }
        }
    } else if (replaces != 0 && quirks_.adoptsUnknownNumbers) {
        number = replaces;
        last_ = std::max(last_, number);
    }
    if (number == 0) {
        number = ++last_;
    }
    shown_[number] = notification;
    if (quirks_.dropsSomeAtOnce && ++posts_ % 7 == 0) {
        remove(number, otherwise);
    }
    if (const auto own = numbersOf(notification.program); own.size() > quirks_.mostOfOneProgram) {
        remove(own.front(), expired);
    }
    return number;
}

std::vector<FakeNotificationDaemon::Number> FakeNotificationDaemon::numbersOf(const std::string& program) const {
    std::vector<Number> numbers;
    for (const auto& [number, notification] : shown_) {
        if (notification.program == program) {
            numbers.push_back(number);
        }
    }
    return numbers;
}

void FakeNotificationDaemon::close(const std::string& program, Number number) {
    const auto found = shown_.find(number);
    if (found == shown_.end()) {
        return;
    }
    foreignClosings_ += found->second.program == program ? 0 : 1;
    remove(number, closedByCall);
}

void FakeNotificationDaemon::dismiss(Number number) {
    remove(number, quirks_.callsClosingExpiry ? expired : dismissed);
}

void FakeNotificationDaemon::expire(Number number) {
    if (quirks_.listsWhatExpired) {
        if (const auto found = shown_.find(number); found != shown_.end() && !found->second.isListed) {
            found->second.isListed = true;
            tell_(found->second.program, ledger::Closed{number, expired});
        }
    } else {
        remove(number, quirks_.callsExpiryDismissal ? dismissed : expired);
    }
}

void FakeNotificationDaemon::press(Number number, const std::string& action) {
    const auto found = shown_.find(number);
    if (found == shown_.end()) {
        return;
    }
    const std::string program = found->second.program;
    if (quirks_.closesBeforePress) {
        remove(number, dismissed);
    }
    tell_(program, ledger::TokenGiven{number, "token"});
    tell_(program, ledger::Invoked{number, action});
    if (!quirks_.closesBeforePress && !quirks_.keepsWhatWasPressed) {
        remove(number, dismissed);
    }
}

void FakeNotificationDaemon::clear() {
    for (const auto& [number, notification] : std::exchange(shown_, {})) {
        if (!quirks_.clearsInSilence) {
            tell_(notification.program, ledger::Closed{number, dismissed});
        }
    }
}

void FakeNotificationDaemon::remove(Number number, std::uint32_t reason) {
    const auto found = shown_.find(number);
    if (found != shown_.end()) {
        const std::string program = found->second.program;
        shown_.erase(found);
        tell_(program, ledger::Closed{number, reason});
    }
}

}  // namespace zelkovanta::platform::linux_host
