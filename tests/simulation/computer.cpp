#include "tests/simulation/computer.h"

#include "store/queues.h"
#include "store/settings.h"

#include <chrono>
#include <utility>

namespace zelkovanta::simulation {

using namespace std::chrono_literals;

namespace {

records::Url serverURL() {
    return *records::Url::parse("https://office.example");
}

}  // namespace

Process::Process(const ComputerSurroundings& surroundings, const Host& host, Chance chance, const Observer& observer)
    : main_(surroundings.loop.makeThread()),
      background_(surroundings.loop, main_),
      port_(surroundings.network, host.link, host.watch, host.number, host.peer),
      clock_(surroundings.loop),
      random_(chance),
      alertRandom_(chance.branch()),
      wrappedCenter_(surroundings.sabotage.notifications ? surroundings.sabotage.notifications(host.notifications)
                                                         : nullptr),
      alerts_(alerts::NotificationService::start({.main = main_.executor(),
                                                  .center = wrappedCenter_ ? *wrappedCenter_ : host.notifications,
                                                  .random = alertRandom_,
                                                  .strings = strings_})),
      notifications_(*alerts_, host.notificationWatch),
      collaborators_(host.watch),
      webSockets_(surroundings.sabotage.webSockets ? surroundings.sabotage.webSockets(port_) : nullptr),
      wrappedClock_(surroundings.sabotage.clock ? surroundings.sabotage.clock(clock_) : nullptr) {
    clock_.setWallOffset(host.wallOffset);
    store_ = store::AppStore::start({.main = main_.executor(),
                                     .background = background_,
                                     .clock = wrappedClock_ ? *wrappedClock_ : clock_,
                                     .random = random_,
                                     .urlLoading = port_,
                                     .webSocketLoading = webSockets_ ? *webSockets_ : port_,
                                     .keyStore = host.keyStore,
                                     .defaults = host.defaults,
                                     .information = information_,
                                     .loginItem = host.loginItem,
                                     .hostInfo = host.hostInfo,
                                     .powerOff = powerOff_,
                                     .notificationCenter = notificationCenter_,
                                     .strings = strings_,
                                     .defaultServerURL = serverURL()},
                                    collaborators_.with(notifications_));
    observation_ = store_->observe([this, observer, &watch = host.watch](const store::StoreChanges& changes) {
        showWhatIsNeeded(watch);
        observer(changes);
    });
}

void Process::showWhatIsNeeded(Watch& watch) {
    const bool isNeeded = state().isPaired && store::needsSignIn(state());
    if (isNeeded && !signInCodeViewer_) {
        watch.personAsked(Route::signInCode);
        signInCodeViewer_ = store_->showSignInCode();
    } else if (!isNeeded) {
        signInCodeViewer_.reset();
    }
}

Process::~Process() {
    kill();
}

void Process::start(std::function<platform::Awaitable<void>()> task) {
    platform::startTask(main_.executor(), std::move(task));
}

void Process::kill() {
    if (!store_) {
        return;
    }
    observation_.reset();
    signInCodeViewer_.reset();
    main_.end();
    background_.end();
    port_.letGo();
    store_.reset();
    alerts_.reset();
}

Computer::Computer(const ComputerSurroundings& surroundings, int number, Chance chance)
    : surroundings_(surroundings),
      number_(number),
      chance_(chance),
      center_(surroundings.loop),
      watch_(number, surroundings.loop, surroundings.verdict, surroundings.overtaken) {
    hostInfo_.name = "Computer " + std::to_string(number);
    hostInfo_.session = "login " + std::to_string(login_);
    center_.showingDelay = chance.between(0ms, 400ms);
    center_.pendingAnswerDelay = chance.between(0ms, 200ms);
    center_.deliveredAnswerDelay = chance.between(0ms, 200ms);
    if (surroundings.sabotage.keyStore) {
        wrappedKeyStore_ = surroundings.sabotage.keyStore(keyStore_);
    }
    if (surroundings.sabotage.hostInfo) {
        wrappedHostInfo_ = surroundings.sabotage.hostInfo(hostInfo_);
    }
}

Computer::~Computer() = default;

void Computer::launch() {
    if (process_) {
        return;
    }
    surroundings_.network.trace.note(surroundings_.loop.now(), number_, "launch");
    watch_.launched(login_);
    notificationWatch_.launched();
    process_ = std::make_unique<Process>(
        surroundings_,
        Process::Host{.keyStore = wrappedKeyStore_ ? *wrappedKeyStore_ : keyStore_,
                      .defaults = defaults_,
                      .hostInfo = wrappedHostInfo_ ? *wrappedHostInfo_ : hostInfo_,
                      .loginItem = loginItem_,
                      .notifications = center_,
                      .link = link_,
                      .watch = watch_,
                      .notificationWatch = notificationWatch_,
                      .wallOffset = wallOffset_,
                      .number = number_,
                      .peer = hostInfo_.name},
        chance_.branch(), [this](const store::StoreChanges& changes) {
            if (changes.contains(store::StoreField::isSending)) {
                sendingSince_ = state().isSending ? std::optional{surroundings_.loop.now()} : std::nullopt;
            }
            onChange(*this, changes);
        });
    responsiveSince_ = surroundings_.loop.now();
    applyHolds();
}

void Computer::kill() {
    if (!process_) {
        return;
    }
    surroundings_.network.trace.note(surroundings_.loop.now(), number_, "killed");
    process_->kill();
    ended_.push_back(std::move(process_));
    isMainBusy_ = areOthersBusy_ = false;
    isSuspended_ = false;
    sendingSince_.reset();
}

void Computer::applyHolds() {
    center_.setHeld(isSuspended_);
    if (process_) {
        process_->setMainHeld(isSuspended_ || isMainBusy_);
        process_->setOthersHeld(isSuspended_ || areOthersBusy_);
        watch_.setOrderUncertain(isSuspended_ || areOthersBusy_);
        responsiveSince_ = surroundings_.loop.now();
    }
}

void Computer::suspend() {
    isSuspended_ = true;
    applyHolds();
}

void Computer::resume() {
    isSuspended_ = false;
    applyHolds();
}

void Computer::setMainBusy(bool busy) {
    isMainBusy_ = busy;
    applyHolds();
}

void Computer::setOthersBusy(bool busy) {
    areOthersBusy_ = busy;
    applyHolds();
}

void Computer::powerOff() {
    surroundings_.network.trace.note(surroundings_.loop.now(), number_, "power off");
    isPoweringOff_ = true;
    process_->announcePowerOff();
    isPoweringOff_ = false;
    endDesktopSession();
    hostInfo_.boot += 3600;
}

void Computer::logOutAndIn() {
    endDesktopSession();
}

void Computer::endDesktopSession() {
    kill();
    center_.clear();
    notificationWatch_.cleared();
    ++login_;
    hostInfo_.session = "login " + std::to_string(login_);
}

void Computer::pressNotification(const std::string& identifier, std::string_view actionIdentifier) {
    if (center_.press(identifier, actionIdentifier)) {
        surroundings_.network.trace.note(surroundings_.loop.now(), number_, "pressed", identifier);
        notificationWatch_.takenAway(identifier);
    }
}

void Computer::dismissNotification(const std::string& identifier) {
    if (center_.dismiss(identifier)) {
        surroundings_.network.trace.note(surroundings_.loop.now(), number_, "dismissed", identifier);
        notificationWatch_.takenAway(identifier);
    }
}

void Computer::setKeyStoreLocked(bool locked) {
    isKeyStoreLocked_ = locked;
    keyStore_.setLocked(locked);
    responsiveSince_ = surroundings_.loop.now();
}

void Computer::setWallOffset(platform::Duration offset) {
    const auto before = std::exchange(wallOffset_, std::chrono::duration_cast<std::chrono::microseconds>(offset));
    // The kernel counts the moment of its start back from the time of day.
    hostInfo_.boot += std::chrono::duration<double>(wallOffset_ - before).count();
    if (process_) {
        process_->clock().setWallOffset(wallOffset_);
    }
}

std::optional<std::string> Computer::token() const {
    return keyStore_.peek(store::deviceTokenItem());
}

}  // namespace zelkovanta::simulation
