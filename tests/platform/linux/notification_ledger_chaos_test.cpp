// A person, other programs, a reconciliation and a bus that takes its time, in any order, before each of eight daemons.

#include "platform/linux/notification_ledger.h"
#include "tests/platform/linux/fake_notification_daemon.h"

#include <algorithm>
#include <deque>
#include <memory>
#include <optional>
#include <random>
#include <set>
#include <utility>

#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

using namespace ledger;
using namespace std::chrono_literals;

constexpr int seedsOfEachDaemon = 500;
constexpr int operationsOfEachSeed = 100;
const std::string us = "us";
const std::string others = "others";
const std::string notice = "notice";

class Chaos {
public:
    Chaos(DaemonQuirks quirks, unsigned int seed) : quirks_(std::move(quirks)), chance_(seed) {
        startDaemon();
        startProgram();
    }

    void operate() {
        switch (upTo(17)) {
            case 0:
            case 1:
            case 2:
                add();
                break;
            case 3:
            case 4:
                reconcile();
                break;
            case 11:
                takeBack();
                break;
            case 12:
                addNotice();
                break;
            case 5:
                press();
                break;
            case 6:
                dismiss();
                break;
            case 7:
                expire();
                break;
            case 8:
                disturb();
                break;
            case 9:
                now_ += std::chrono::milliseconds{upTo(3000)};
                tell(TimeCame{});
                break;
            case 10:
                rarely();
                break;
            default:
                deliverSome();
        }
    }

    /// Everything that is on its way arrives, and every wait is over.
    void quiet() {
        if (!daemon_) {
            startDaemon();
        }
        reconcile();
        for (int round = 0; round < 200; ++round) {
            deliverSome();
            takeBack();
            deliverAll();
            const auto due = ledger_->nextDue();
            if (!due) {
                break;
            }
            now_ = std::max(now_, *due);
            tell(TimeCame{});
        }
        while (asked_) {
            takeBack();
            deliverAll();
        }
    }

    void check() {
        std::map<std::string, std::vector<std::string>> alive;
        for (const auto& [number, shown] : daemon_->shown()) {
            if (shown.program == us) {
                alive[shown.title.substr(0, shown.title.find('#'))].push_back(shown.title);
            }
        }
        for (const auto& [identifier, titles] : alive) {
            EXPECT_EQ(titles.size(), 1U) << identifier;
            EXPECT_TRUE(active_.contains(identifier)) << identifier << " is over and still shown";
        }
        const bool dropsByItself = quirks_.dropsSomeAtOnce || quirks_.mostOfOneProgram < 10;
        for (const auto& [identifier, wanted] : wanted_) {
            if (active_.contains(identifier) && !dropsByItself) {
                EXPECT_EQ(alive[identifier], std::vector{wanted.title}) << "still due";
            }
        }
        EXPECT_EQ(foreignClosings_ + daemon_->foreignClosings(), 0);
        EXPECT_EQ(wrongResponses_, 0);
        EXPECT_EQ(wrongAddresses_, 0);
        EXPECT_LE(plays_, sounds_);
        EXPECT_TRUE(uncompleted_.empty());
        EXPECT_TRUE(ledger_->pending().empty());
    }

    int responses() const { return responses_; }
    int restarts() const { return restarts_; }

private:
    struct Wanted {
        std::string title;
        int run = 0;
    };
    /// What a reconciliation was told, and has not acted upon.
    struct Asked {
        NotificationRequests pending;
        NotificationRequests delivered;
        std::set<std::string> active;
    };

    int upTo(int end) { return std::uniform_int_distribution<int>{0, end - 1}(chance_); }

    void startDaemon() {
        name_ = ":1." + std::to_string(++daemons_);
        daemon_ =
            std::make_unique<FakeNotificationDaemon>(quirks_, [this](const std::string& program, const Event& event) {
                if (program == us) {
                    toProgram_.push_back(event);
                }
            });
        // Those who were there before take numbers too.
        for (int other = upTo(4); other > 0; --other) {
            disturb();
        }
        toProgram_.push_back(DaemonChanged{name_});
    }

    void endDaemon() {
        foreignClosings_ += daemon_->foreignClosings();
        daemon_.reset();
        ++restarts_;
        std::erase_if(wanted_, [this](const auto& one) { return one.second.run != runs_; });
        if (upTo(2) == 0) {
            toProgram_.push_back(DaemonChanged{std::nullopt});
        } else {
            startDaemon();
        }
    }

    void startProgram() {
        auto kept = ledger_ ? ledger_->kept() : KeptNotifications{};
        asked_.reset();
        ++runs_;
        ledger_ = std::make_unique<NotificationLedger>(std::move(kept), now_);
        tell(BusAnswered{"bus", daemon_ ? std::optional{name_} : std::nullopt});
    }

    void add() {
        const std::string identifier = "signal" + std::to_string(upTo(8));
        const std::string title = identifier + "#" + std::to_string(++titles_);
        NotificationRequest request;
        request.identifier = identifier;
        request.content.title = title;
        request.content.categoryIdentifier = "READY_SIGNAL";
        request.content.userInfo["title"] = title;
        if (upTo(2) == 0) {
            request.content.sound = upTo(2) == 0 ? NotificationSound{DefaultSound{}} : SoundFile{"chime.caf"};
            ++sounds_;
        }
        active_.insert(identifier);
        ask();
        want(request);
    }

    void addNotice() {
        NotificationRequest request;
        request.identifier = notice + std::to_string(upTo(1'000'000));
        request.content.title = request.identifier + "#" + std::to_string(++titles_);
        request.content.userInfo["title"] = request.content.title;
        active_.insert(request.identifier);
        want(request);
    }

    void want(const NotificationRequest& request) {
        wanted_[request.identifier] = {request.content.title, runs_};
        uncompleted_.insert(++completions_);
        tell(Add{request, {}, completions_});
    }

    void reconcile() {
        if (upTo(3) == 0) {
            active_.erase("signal" + std::to_string(upTo(8)));
            std::erase_if(wanted_, [this](const auto& one) { return !active_.contains(one.first); });
        }
        ask();
    }

    /// An earlier answer that has not been acted upon is dropped.
    void ask() { asked_ = Asked{ledger_->pending(), ledger_->delivered(), active_}; }

    void takeBack() {
        const auto asked = std::exchange(asked_, std::nullopt);
        if (!asked) {
            return;
        }
        const auto stale = [&asked](const NotificationRequests& requests) {
            std::vector<std::string> identifiers;
            for (const auto& one : requests) {
                if (!asked->active.contains(one->identifier)) {
                    identifiers.push_back(one->identifier);
                }
            }
            return identifiers;
        };
        tell(RemovePending{stale(asked->pending)});
        tell(RemoveDelivered{stale(asked->delivered)});
    }

    /// One of ours that the person sees; 0 if there is none.
    DaemonId seen() {
        const auto numbers = daemon_ ? daemon_->numbersOf(us) : std::vector<DaemonId>{};
        return numbers.empty() ? 0 : numbers[static_cast<std::size_t>(upTo(static_cast<int>(numbers.size())))];
    }

    void unwant(DaemonId number) {
        std::erase_if(wanted_, [&](const auto& one) { return one.second.title == daemon_->shown().at(number).title; });
    }

    void press() {
        if (const DaemonId number = seen(); number != 0) {
            const std::string title = daemon_->shown().at(number).title;
            const std::string action = title.starts_with(notice) || upTo(3) == 0 ? "default" : "DONE";
            pressed_.emplace_back(title, action);
            unwant(number);
            daemon_->press(number, action);
        }
    }

    void dismiss() {
        if (const DaemonId number = seen(); number != 0) {
            unwant(number);
            daemon_->dismiss(number);
        }
    }

    void expire() {
        if (const DaemonId number = seen(); number != 0) {
            if (!quirks_.listsWhatExpired || daemon_->shown().at(number).title.starts_with(notice)) {
                unwant(number);
            }
            daemon_->expire(number);
        }
    }

    void disturb() {
        if (!daemon_) {
            return;
        }
        const auto numbers = daemon_->numbersOf(others);
        if (numbers.empty() || upTo(2) == 0) {
            daemon_->notify({.program = others, .title = "mail", .body = std::to_string(++titles_), .actions = {}}, 0,
                            now_);
        } else {
            daemon_->close(others, numbers.front());
        }
    }

    void rarely() {
        const int what = upTo(6);
        if (what == 0 && daemon_) {
            endDaemon();
        } else if (what == 1 && !daemon_) {
            startDaemon();
        } else if (what == 2 && daemon_) {
            for (const auto number : daemon_->numbersOf(us)) {
                unwant(number);
            }
            daemon_->clear();
        } else if (what == 3) {
            // A program that ends in the middle of a call never learns the number.
            quiet();
            uncompleted_.clear();
            startProgram();
        }
    }

    void deliverSome() {
        for (int count = upTo(5); count > 0; --count) {
            deliver(upTo(2) == 0);
        }
    }

    void deliverAll() {
        while (!toDaemon_.empty() || !toProgram_.empty()) {
            deliver(!toDaemon_.empty());
        }
    }

    void deliver(bool isToDaemon) {
        if (isToDaemon && !toDaemon_.empty()) {
            const Command command = std::move(toDaemon_.front());
            toDaemon_.pop_front();
            std::visit([this](const auto& one) { reach(one); }, command);
        } else if (!isToDaemon && !toProgram_.empty()) {
            const Event event = std::move(toProgram_.front());
            toProgram_.pop_front();
            tell(event);
        }
    }

    void tell(const Event& event) {
        for (auto& command : ledger_->handle(event, now_)) {
            if (const auto* const complete = std::get_if<Complete>(&command)) {
                EXPECT_EQ(uncompleted_.erase(complete->completion), 1U);
                ask();
            } else if (const auto* const respond = std::get_if<Respond>(&command)) {
                heard(*respond);
            } else if (std::holds_alternative<Play>(command)) {
                ++plays_;
            } else {
                toDaemon_.push_back(std::move(command));
            }
        }
    }

    void heard(const Respond& respond) {
        const auto title = std::get<std::string>(respond.request->content.userInfo.at("title"));
        const auto found = std::ranges::find(pressed_, std::pair{title, respond.action});
        ++responses_;
        if (found == pressed_.end()) {
            ++wrongResponses_;
        } else {
            pressed_.erase(found);
        }
    }

    // What reaches the bus.

    void reach(const StartDaemon&) {
        if (!daemon_ && upTo(2) == 0) {
            startDaemon();
        }
        toProgram_.push_back(StartEnded{});
    }
    void reach(const AskCapabilities& command) {
        if (daemon_ && command.daemon == name_) {
            const auto& names = quirks_.capabilities;
            toProgram_.push_back(CapabilitiesKnown{name_,
                                                   {.actions = std::ranges::count(names, "actions") > 0,
                                                    .bodyMarkup = std::ranges::count(names, "body-markup") > 0,
                                                    .persistence = std::ranges::count(names, "persistence") > 0,
                                                    .sound = std::ranges::count(names, "sound") > 0}});
        }
    }
    void reach(const Post& command) {
        if (!daemon_ || command.daemon != name_) {
            toProgram_.push_back(PostRefused{command.call});
            return;
        }
        if (command.replaces != 0 && daemon_->shown().contains(command.replaces) &&
            daemon_->shown().at(command.replaces).program != us) {
            ++wrongAddresses_;
        }
        plays_ += command.hasDaemonSound ? 1 : 0;
        const DaemonId number =
            daemon_->notify({.program = us, .title = command.request->content.title, .body = {}, .actions = {}},
                            command.replaces, now_);
        toProgram_.push_back(PostAnswered{command.call, number});
    }
    void reach(const Withdraw& command) {
        if (daemon_ && command.daemon == name_) {
            daemon_->close(us, command.id);
        }
    }
    template <class Other>
    void reach(const Other&) {}

    DaemonQuirks quirks_;
    std::mt19937 chance_;
    SteadyTime now_{};
    std::unique_ptr<FakeNotificationDaemon> daemon_;
    std::unique_ptr<NotificationLedger> ledger_;
    std::string name_;
    std::deque<Command> toDaemon_;
    std::deque<Event> toProgram_;
    std::set<std::string> active_;
    std::optional<Asked> asked_;
    std::map<std::string, Wanted> wanted_;
    std::vector<std::pair<std::string, std::string>> pressed_;
    std::set<CompletionNumber> uncompleted_;
    CompletionNumber completions_ = 0;
    int daemons_ = 0;
    int runs_ = 0;
    int titles_ = 0;
    int sounds_ = 0;
    int plays_ = 0;
    int responses_ = 0;
    int restarts_ = 0;
    int foreignClosings_ = 0;
    int wrongResponses_ = 0;
    int wrongAddresses_ = 0;
};

struct NotificationLedgerChaosTest : testing::TestWithParam<DaemonQuirks> {};

TEST_P(NotificationLedgerChaosTest, nothingStaysThatIsOverAndNothingIsLostThatIsDue) {
    int responses = 0;
    int restarts = 0;
    for (unsigned int seed = 0; seed < seedsOfEachDaemon; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Chaos chaos(GetParam(), seed);
        for (int operation = 0; operation < operationsOfEachSeed; ++operation) {
            chaos.operate();
        }
        chaos.quiet();
        chaos.check();
        responses += chaos.responses();
        restarts += chaos.restarts();
        if (HasFailure()) {
            return;
        }
    }
    EXPECT_GT(responses, seedsOfEachDaemon);
    EXPECT_GT(restarts, seedsOfEachDaemon / 10);
}

std::string nameOf(const testing::TestParamInfo<DaemonQuirks>& daemon) {
    std::string name = daemon.param.name;
    std::erase(name, ' ');
    return name;
}

INSTANTIATE_TEST_SUITE_P(Daemons, NotificationLedgerChaosTest, testing::ValuesIn(eightDaemons()), nameOf);

}  // namespace
}  // namespace zelkovanta::platform::linux_host
