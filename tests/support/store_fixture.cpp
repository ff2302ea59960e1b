#include "tests/support/store_fixture.h"

#include "server/server_message.h"
#include "store/settings.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

namespace zelkovanta::support {

namespace {

/// The path below "/api/v1", behind which server it may be.
std::string_view pathOf(std::string_view url) {
    constexpr std::string_view root = "/api/v1";
    const auto position = url.find(root);
    return position == std::string_view::npos ? url : url.substr(position + root.size());
}

}  // namespace

Computer::Computer() {
    urlLoading.setResponder([this](Exchange& exchange) {
        journal.add("http " + exchange.request.method + " " + std::string{pathOf(exchange.request.url)});
    });
    webSocketLoading.setServer([this](SocketTask&) { journal.add("socket.open"); });
    launchAtLoginObserver_ = notificationCenter.observe(std::string{store::launchAtLoginStatusDidChange},
                                                        [this] { journal.add("center launchAtLogin changed"); });
}

Computer::~Computer() = default;

void Computer::savePairing(std::string_view role, std::string_view token) {
    keyStore.memory.write(store::deviceTokenItem(), std::string{token});
    defaults.memory.setText("serverURL", serverURL);
    defaults.memory.setText("deviceRole", role);
}

void Computer::skipDesktopDefaults() {
    defaults.memory.setBoolean("didApplyDesktopDefaultsV1", true);
}

void Computer::launch() {
    store = store::AppStore::start({.main = main.executor(),
                                    .background = background,
                                    .clock = clock,
                                    .random = random,
                                    .urlLoading = urlLoading,
                                    .webSocketLoading = webSocketLoading,
                                    .keyStore = keyStore,
                                    .defaults = defaults,
                                    .information = information,
                                    .loginItem = loginItem,
                                    .hostInfo = hostInfo,
                                    .powerOff = powerOff,
                                    .notificationCenter = notificationCenter,
                                    .strings = strings,
                                    .defaultServerURL = *records::Url::parse(defaultServerURL)},
                                   {.notifications = *alerts,
                                    .notes = notes,
                                    .crash = crash,
                                    .updates = updates,
                                    .beacon = beacon,
                                    .mainWindow = mainWindow});
}

void Computer::launchPaired(std::string_view role) {
    skipDesktopDefaults();
    savePairing(role);
    launch();
    settle();
}

void Computer::launchWith(std::string_view role, const records::StateSnapshot& snapshot) {
    launchPaired(role);
    answerWith("GET", "/state", snapshot);
    journal.take();
}

void Computer::launchUnpaired() {
    skipDesktopDefaults();
    launch();
    settle();
}

void Computer::run(std::function<platform::Awaitable<void>(store::AppStore&)> operation) {
    platform::startTask(main.executor(), [this, operation = std::move(operation)] { return operation(*store); });
    settle();
}

void Computer::deliver(std::string_view type, std::string_view data) {
    deliverOver(socket(), type, data);
    settle();
}

void Computer::deliverOver(SocketTask& task, std::string_view type, std::string_view data) {
    task.deliver(frame(type, data));
}

void Computer::deliverCreated(const records::Signal& signal) {
    deliverRecord("signal.created", server::server_message::SignalCreated{signal});
}

void Computer::deliverUpdated(const records::Signal& signal) {
    deliverRecord("signal.updated", server::server_message::SignalUpdated{signal});
}

void Computer::deliverSessionStarted(const records::Device& device, const records::Member& member) {
    deliverRecord("session.started", server::server_message::SessionStarted{device, member});
}

Computer::Exchange* Computer::openRequest(std::string_view method, std::string_view path) const {
    const auto open = urlLoading.pending();
    const auto found = std::ranges::find_if(open, [&](const Exchange* exchange) {
        return exchange->request.method == method && pathOf(exchange->request.url) == path;
    });
    return found == open.end() ? nullptr : *found;
}

void Computer::answer(std::string_view method, std::string_view path, int status, std::string body) {
    Exchange* const exchange = openRequest(method, path);
    if (exchange == nullptr) {
        throw std::logic_error("No open request " + std::string{method} + " " + std::string{path});
    }
    exchange->answer(status, std::move(body));
    settle();
}

void Computer::fail(std::string_view method, std::string_view path, platform::TransportCause cause) {
    Exchange* const exchange = openRequest(method, path);
    if (exchange == nullptr) {
        throw std::logic_error("No open request " + std::string{method} + " " + std::string{path});
    }
    exchange->fail(cause);
    settle();
}

std::size_t Computer::requestCount(std::string_view method, std::string_view path) const {
    const auto all = urlLoading.exchanges();
    return static_cast<std::size_t>(std::ranges::count_if(all, [&](const Exchange* exchange) {
        return exchange->request.method == method && pathOf(exchange->request.url) == path;
    }));
}

}  // namespace zelkovanta::support
