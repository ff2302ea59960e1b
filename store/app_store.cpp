#include "store/app_store.h"

#include "store/settings.h"

#include <utility>

#include <boost/asio/post.hpp>

namespace zelkovanta::store {

namespace asio = boost::asio;

std::shared_ptr<AppStore> AppStore::start(const StorePorts& ports, const StoreCollaborators& collaborators) {
    auto store = std::make_shared<AppStore>(Private{}, ports, collaborators);
    store->begin();
    return store;
}

AppStore::AppStore(Private, StorePorts ports, const StoreCollaborators& collaborators)
    : ports_(std::move(ports)), collaborators_(collaborators) {
    state_.settings = loadSettings(ports_.defaults);
}

AppStore::~AppStore() {
    setupQrTask_.cancel();
    signInCodeTask_.cancel();
    if (socket_) {
        socket_->stop();
    }
}

void AppStore::begin() {
    bindCollaborators();
    collaborators_.crash.start();
    platform::startTask(ports_.main, [weak = weak_from_this()] { return resumeSavedSession(weak); });
    powerOffObserver_ = ports_.powerOff.observe([weak = weak_from_this()] {
        if (const auto self = weak.lock()) {
            self->handlePowerOff();
        }
    });
    applyDesktopDefaults();
    if (state_.settings.openAsWindow) {
        asio::post(ports_.main, [weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->collaborators_.mainWindow.show();
            }
        });
    }
}

void AppStore::bindCollaborators() {
    collaborators_.notifications.setActionHandler([weak = weak_from_this()](DesktopSignalNotificationAction action) {
        return handleNotificationAction(weak, std::move(action));
    });
    collaborators_.notifications.registerCategories();
}

platform::Awaitable<void> AppStore::handleNotificationAction(std::weak_ptr<AppStore> weak,
                                                             DesktopSignalNotificationAction action) {
    if (const auto self = weak.lock()) {
        co_await self->enqueueNotificationAction(std::move(action));
    }
}

std::shared_ptr<void> AppStore::observe(Observer observer) {
    return observers_.add(std::move(observer));
}

void AppStore::markChanged(StoreField field) {
    const bool isFirst = !changes_.any();
    changes_.mark(field);
    if (isFirst) {
        asio::post(ports_.main, [weak = weak_from_this()] {
            if (const auto self = weak.lock()) {
                self->tellObservers();
            }
        });
    }
}

void AppStore::tellObservers() {
    const StoreChanges changes = std::exchange(changes_, {});
    observers_.tell(changes);
}

bool AppStore::holds(const ReplyGuard& guard) const {
    return state_.isPaired && guard.generation == publicationGeneration_ && guard.client == apiClient_;
}

void AppStore::setLastError(std::optional<std::string> text) {
    assign(StoreField::lastError, state_.lastError, std::move(text));
}

std::string AppStore::describe(const server::APIError& error) const {
    return server::localizedDescription(error, ports_.strings);
}

std::string AppStore::departmentLabel(const std::string& key, screens::vocabulary::Count count) const {
    return screens::vocabulary::departmentLabel(state_.office, key, count, ports_.strings);
}

AppStore::ClientHandle AppStore::makeClient(const records::Url& baseURL, std::optional<std::string> token) const {
    return server::APIClient::make(baseURL, std::move(token),
                                   {.urlLoading = ports_.urlLoading,
                                    .information = ports_.information,
                                    .background = ports_.background.executor()});
}

}  // namespace zelkovanta::store
