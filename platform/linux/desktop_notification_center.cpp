#include "platform/linux/desktop_notification_center.h"

#include "platform/linux/dbus_calls.h"
#include "platform/linux/notification_bus.h"
#include "platform/linux/notification_keeper.h"
#include "platform/linux/notification_ledger.h"

#include <algorithm>
#include <deque>
#include <map>
#include <utility>

#include <QGuiApplication>
#include <boost/asio/post.hpp>

namespace zelkovanta::platform::linux_host {

namespace asio = boost::asio;
using namespace ledger;

namespace {

/// Heard where the daemon has no sound for messages of its own.
constexpr auto defaultClip = "chime.caf";

bool isInFront() {
    return qobject_cast<QGuiApplication*>(QCoreApplication::instance()) != nullptr &&
           QGuiApplication::applicationState() == Qt::ApplicationActive;
}

}  // namespace

class DesktopNotificationCenter::State : public std::enable_shared_from_this<State> {
public:
    State(const Settings& settings, Clock& clock, Executor main, Executor files)
        : clock_(clock),
          main_(std::move(main)),
          keeper_(settings.file, main_, std::move(files)),
          ledger_(keeper_.read(), clock.steadyNow()),
          player_(settings.sounds, settings.players),
          bus_([this](Event event) { handle(std::move(event)); }) {}

    void begin(const Executor& connecting) {
        connectToBus(Bus::session, connecting, main_, [weak = weak_from_this()](bool isConnected) {
            const auto self = weak.lock();
            if (!self || self->isEnded_) {
                return;
            }
            if (isConnected) {
                self->bus_.follow();
            } else {
                self->handle(BusMissing{});
            }
        });
        wakeWhenDue();
    }

    void end() {
        if (std::exchange(isEnded_, true)) {
            return;
        }
        bus_.leave();
        timer_.reset();
        keeper_.keepNow();
        completions_.clear();
        queries_.clear();
        delegate.reset();
        raise = nullptr;
    }

    void add(NotificationRequest request, Completion<> completion) {
        const auto receiver = delegate.lock();
        if (receiver && isInFront()) {
            const PresentationOptions options = receiver->willPresent(request);
            if (!options.banner && !options.list) {
                later(std::move(completion));
                return;
            }
            if (!options.sound) {
                request.content.sound.reset();
            }
        }
        const auto category =
            std::ranges::find(categories, request.content.categoryIdentifier, &NotificationCategory::identifier);
        auto actions = category == categories.end() ? std::vector<NotificationAction>{} : category->actions;
        const CompletionNumber number = ++completionNumbers_;
        completions_.emplace(number, std::move(completion));
        handle(Add{.request = std::move(request), .actions = std::move(actions), .completion = number});
    }

    using List = NotificationRequests (NotificationLedger::*)() const;
    void query(List list, Completion<NotificationRequests> completion) {
        queries_.push_back({list, std::move(completion)});
        answerQueries();
    }

    void handle(Event event) {
        if (isEnded_) {
            return;
        }
        for (auto& command : ledger_.handle(std::move(event), clock_.steadyNow())) {
            std::visit([this](auto& one) { perform(one); }, command);
        }
        answerQueries();
        wakeWhenDue();
    }

    template <class... Values>
    void later(Completion<Values...> completion, Values... values) {
        asio::post(main_, [completion = std::move(completion), ... values = std::move(values)]() mutable {
            completion(std::move(values)...);
        });
    }

    std::weak_ptr<UserNotificationCenterDelegate> delegate;
    std::vector<NotificationCategory> categories;
    RaiseHandler raise;

private:
    struct Query {
        List list;
        Completion<NotificationRequests> completion;
    };

    void perform(StartDaemon&) { bus_.start(); }
    void perform(AskCapabilities& command) { bus_.askCapabilities(command.daemon); }
    void perform(Post& command) { bus_.post(command); }
    void perform(Withdraw& command) { bus_.withdraw(command); }
    void perform(Keep&) {
        keeper_.keep([this] { return ledger_.kept(); });
    }

    void perform(Play& command) {
        const auto* const file = std::get_if<SoundFile>(&command.sound);
        bus_.unlessSilenced([this, name = file != nullptr ? file->name : defaultClip] {
            if (!isEnded_) {
                player_.play(name);
            }
        });
    }

    void perform(Complete& command) {
        if (auto node = completions_.extract(command.completion)) {
            later(std::move(node.mapped()));
        }
    }

    void perform(Respond& command) {
        NotificationResponse response{.actionIdentifier = std::move(command.action), .request = command.request};
        asio::post(main_, [weak = weak_from_this(), response = std::move(response)]() mutable {
            const auto self = weak.lock();
            if (const auto receiver = self && !self->isEnded_ ? self->delegate.lock() : nullptr) {
                // Nothing ends a process here while somebody is at work, so there is nobody to tell.
                receiver->didReceive(std::move(response), [] {});
            }
        });
    }

    void perform(Raise& command) {
        asio::post(main_, [weak = weak_from_this(), token = std::move(command.token)] {
            const auto self = weak.lock();
            if (self && !self->isEnded_ && self->raise) {
                const auto handler = self->raise;
                handler(token);
            }
        });
    }

    void answerQueries() {
        while (ledger_.isSettled() && !queries_.empty()) {
            Query query = std::move(queries_.front());
            queries_.pop_front();
            later(std::move(query.completion), (ledger_.*query.list)());
        }
    }

    void wakeWhenDue() {
        const auto due = ledger_.nextDue();
        if (isEnded_ || due == wokenAt_) {
            return;
        }
        wokenAt_ = due;
        timer_.reset();
        if (due) {
            const Duration wait = std::max(Duration::zero(), *due - clock_.steadyNow());
            timer_ = clock_.callAfter(wait, main_, [weak = weak_from_this()] {
                if (const auto self = weak.lock()) {
                    self->wokenAt_.reset();
                    self->handle(TimeCame{});
                }
            });
        }
    }

    Clock& clock_;
    Executor main_;
    NotificationKeeper keeper_;
    NotificationLedger ledger_;
    SoundPlayer player_;
    NotificationBus bus_;
    std::map<CompletionNumber, Completion<>> completions_;
    CompletionNumber completionNumbers_ = 0;
    std::deque<Query> queries_;
    Timer timer_;
    std::optional<SteadyTime> wokenAt_;
    bool isEnded_ = false;
};

DesktopNotificationCenter::DesktopNotificationCenter(const Settings& settings, Clock& clock, Executor main,
                                                     const Executor& connecting, Executor files)
    : state_(std::make_shared<State>(settings, clock, std::move(main), std::move(files))) {
    state_->begin(connecting);
}

DesktopNotificationCenter::~DesktopNotificationCenter() {
    end();
}

void DesktopNotificationCenter::end() {
    state_->end();
}

void DesktopNotificationCenter::setRaiseHandler(RaiseHandler handler) {
    state_->raise = std::move(handler);
}

void DesktopNotificationCenter::setDelegate(std::weak_ptr<UserNotificationCenterDelegate> delegate) {
    state_->delegate = std::move(delegate);
}

void DesktopNotificationCenter::setNotificationCategories(std::vector<NotificationCategory> categories) {
    state_->categories = std::move(categories);
}

void DesktopNotificationCenter::requestAuthorization(AuthorizationOptions, Completion<Authorization> completion) {
    state_->later(std::move(completion), Authorization::granted);
}

void DesktopNotificationCenter::add(NotificationRequest request, Completion<> completion) {
    state_->add(std::move(request), std::move(completion));
}

void DesktopNotificationCenter::getPendingRequests(Completion<NotificationRequests> completion) {
    state_->query(&NotificationLedger::pending, std::move(completion));
}

void DesktopNotificationCenter::getDeliveredNotifications(Completion<NotificationRequests> completion) {
    state_->query(&NotificationLedger::delivered, std::move(completion));
}

void DesktopNotificationCenter::removePendingRequests(std::vector<std::string> identifiers) {
    state_->handle(RemovePending{std::move(identifiers)});
}

void DesktopNotificationCenter::removeDeliveredNotifications(std::vector<std::string> identifiers) {
    state_->handle(RemoveDelivered{std::move(identifiers)});
}

}  // namespace zelkovanta::platform::linux_host
