#pragma once

#include "platform/clock.h"
#include "platform/linux/notification_events.h"

#include <chrono>
#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

namespace zelkovanta::platform::linux_host {

/// What real daemons do otherwise than one would think.
struct DaemonQuirks {
    enum class Replacing : std::uint8_t { keepsNumber, givesNewNumber, leavesTheOldOne };

    std::string name;
    std::vector<std::string> capabilities{"actions", "body"};
    Replacing replacing = Replacing::keepsNumber;
    bool adoptsUnknownNumbers = false;
    bool closesReplacedAloud = false;
    std::size_t mostOfOneProgram = 1000;
    bool refusesRepetitions = false;    ///< of the same text within a second
    bool dropsSomeAtOnce = false;       ///< by a rule of the person's; told before the call is answered
    bool callsClosingExpiry = false;    ///< what the person closes is told as expired
    bool callsExpiryDismissal = false;  ///< and the other way round
    bool listsWhatExpired = false;
    bool clearsInSilence = false;
    bool closesBeforePress = false;
    bool keepsWhatWasPressed = false;
};

/// For the messages of tests.
// NOLINTNEXTLINE(readability-identifier-naming): the name that GoogleTest calls
inline void PrintTo(const DaemonQuirks& quirks, std::ostream* out) {
    *out << quirks.name;
}

/// The quirks of eight daemons that people use.
[[nodiscard]] std::vector<DaemonQuirks> eightDaemons();

/// A notification daemon in memory, and the person before it.
class FakeNotificationDaemon {
public:
    using Number = ledger::DaemonId;
    struct Shown {
        std::string program;
        std::string title;
        std::string body;
        std::vector<std::string> actions;
        bool isListed = false;  ///< it has left the screen
        bool operator==(const Shown&) const = default;
    };
    /// Told to the program that posted, in order.
    using Tell = std::function<void(const std::string& program, const ledger::Event&)>;

    FakeNotificationDaemon(DaemonQuirks quirks, Tell tell) : quirks_(std::move(quirks)), tell_(std::move(tell)) {}

    /// The number, or 0 where it refuses.
    Number notify(const Shown& notification, Number replaces, SteadyTime now);
    /// A call of `program`.
    void close(const std::string& program, Number number);

    void dismiss(Number number);
    void expire(Number number);
    void press(Number number, const std::string& action);
    void clear();

    [[nodiscard]] const DaemonQuirks& quirks() const { return quirks_; }
    [[nodiscard]] const std::map<Number, Shown>& shown() const { return shown_; }
    [[nodiscard]] std::vector<Number> numbersOf(const std::string& program) const;
    /// How often a program closed what was another's.
    [[nodiscard]] int foreignClosings() const { return foreignClosings_; }

private:
    void remove(Number number, std::uint32_t reason);

    DaemonQuirks quirks_;
    Tell tell_;
    std::map<Number, Shown> shown_;
    Number last_ = 0;
    int posts_ = 0;
    int foreignClosings_ = 0;
    std::string lastText_;
    std::optional<SteadyTime> lastTime_;
};

}  // namespace zelkovanta::platform::linux_host
