#include "platform/simulated/simulated_host.h"

#include "platform/task.h"

#include <utility>

namespace zelkovanta::platform::simulated {

Executor SimulatedBackground::makeSerialQueue() {
    EventLoop::Thread& queue = loop_.makeThread();
    queue.setHeld(held_);
    return queues_.emplace_back(&queue)->executor();
}

void SimulatedBackground::setHeld(bool held) {
    held_ = held;
    backgroundThread_.setHeld(held);
    for (EventLoop::Thread* queue : queues_) {
        queue->setHeld(held);
    }
}

void SimulatedBackground::runAndWait(std::function<Awaitable<void>()> task, Duration limit) {
    auto isDone = std::make_shared<bool>(false);
    startTask(backgroundThread_.executor(), [task = std::move(task), isDone]() -> Awaitable<void> {
        co_await task();
        *isDone = true;
    });
    mainThread_.setHeld(true);
    loop_.advanceUntil([&] { return *isDone; }, limit);
    mainThread_.setHeld(false);
}

void SimulatedBackground::end() {
    backgroundThread_.end();
    for (EventLoop::Thread* queue : queues_) {
        queue->end();
    }
}

std::expected<void, std::string> SimulatedLoginItem::registerItem(RegistrationIntent intent) {
    registrations.push_back(intent);
    if (registering == Registering::fails) {
        return std::unexpected("The login items cannot be changed.");
    }
    const bool staysOff = current == LoginItemStatus::requiresApproval && intent == RegistrationIntent::firstLaunch;
    if (registering == Registering::takesEffect && !staysOff) {
        current = LoginItemStatus::enabled;
    }
    return {};
}

std::expected<void, std::string> SimulatedLoginItem::unregisterItem() {
    current = LoginItemStatus::notRegistered;
    return {};
}

}  // namespace zelkovanta::platform::simulated
