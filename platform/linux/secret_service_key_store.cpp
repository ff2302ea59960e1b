#include "platform/linux/secret_service_key_store.h"

#include "platform/linux/callback_awaitable.h"
#include "platform/linux/dbus_calls.h"
#include "platform/linux/secret_service.h"
#include "platform/task.h"

#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <utility>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QObject>
#include <QTimer>
#include <openssl/crypto.h>

namespace zelkovanta::platform::linux_host {

/// The operations in their order, one at a time.
class SecretServiceKeyStore::Queue : public std::enable_shared_from_this<Queue> {
public:
    /// Done on the main thread; `service` is null without a bus.
    using Operation = std::move_only_function<Awaitable<void>(SecretService* service)>;

    Queue(Executor mainThread, Executor connecting, std::chrono::milliseconds callLimit)
        : mainThread_(std::move(mainThread)), connecting_(std::move(connecting)), callLimit_(callLimit) {}

    enum class Kind : std::uint8_t { read, change };

    void add(Kind kind, Operation operation) {
        {
            const std::scoped_lock lock(mutex_);
            if (isEnded_) {
                return;
            }
            changes_ += kind == Kind::change ? 1 : 0;
            waiting_.push_back(std::move(operation));
            if (std::exchange(isRunning_, true)) {
                return;
            }
        }
        startTask(mainThread_, [self = shared_from_this()] { return self->run(self); });
    }

    void changeIsDone() {
        const std::scoped_lock lock(mutex_);
        --changes_;
    }

    bool hasChanges() {
        const std::scoped_lock lock(mutex_);
        return changes_ > 0;
    }

    void end() {
        std::deque<Operation> dropped;
        {
            const std::scoped_lock lock(mutex_);
            isEnded_ = true;
            dropped.swap(waiting_);
        }
        owner_.reset();
    }

private:
    Awaitable<void> run(std::shared_ptr<Queue> self) {
        while (auto operation = self->next()) {
            const bool hasBus = co_await self->connect();
            if (!self->owner_) {
                // The store ended meanwhile. Whoever asked is let go of, as by every operation of an ended store.
                co_return;
            }
            if (!hasBus) {
                co_await (*operation)(nullptr);
                continue;
            }
            SecretService service(QDBusConnection::sessionBus(), self->callLimit_, *self->owner_);
            co_await (*operation)(&service);
        }
    }

    [[nodiscard]] Awaitable<bool> connect() const {
        auto begin = [connecting = connecting_, main = mainThread_](Completion<bool> done) {
            connectToBus(Bus::session, connecting, main, std::move(done));
        };
        return awaitCallback<bool>(std::move(begin));
    }

    std::optional<Operation> next() {
        const std::scoped_lock lock(mutex_);
        if (waiting_.empty() || isEnded_) {
            isRunning_ = false;
            return std::nullopt;
        }
        Operation operation = std::move(waiting_.front());
        waiting_.pop_front();
        return operation;
    }

    Executor mainThread_;
    Executor connecting_;
    std::chrono::milliseconds callLimit_;
    /// Owns the calls under way.
    std::unique_ptr<QObject> owner_ = std::make_unique<QObject>();
    std::mutex mutex_;
    std::deque<Operation> waiting_;
    int changes_ = 0;
    bool isRunning_ = false;
    bool isEnded_ = false;
};

SecretServiceKeyStore::SecretServiceKeyStore(Executor mainThread, Executor connecting,
                                             std::chrono::milliseconds callLimit)
    : queue_(std::make_shared<Queue>(std::move(mainThread), std::move(connecting), callLimit)) {}

SecretServiceKeyStore::~SecretServiceKeyStore() {
    queue_->end();
}

Awaitable<std::optional<std::string>> SecretServiceKeyStore::read(KeyStoreItem item) {
    using Value = std::optional<std::string>;
    auto begin = [queue = queue_, item = std::move(item)](Completion<Value> done) mutable {
        queue->add(Queue::Kind::read,
                   [item = std::move(item), done = std::move(done)](SecretService* service) mutable -> Awaitable<void> {
                       Value value;
                       if (service != nullptr) {
                           value = co_await service->read(item);
                       }
                       done(std::move(value));
                   });
    };
    return awaitCallback<Value>(std::move(begin));
}

void SecretServiceKeyStore::finishChanges(std::chrono::milliseconds limit) {
    // The timer alone says when the limit is reached: it may fire a little before a clock would say so, and nothing
    // would wake the loop again.
    QTimer wake;
    wake.setSingleShot(true);
    wake.start(limit);
    while (queue_->hasChanges() && wake.isActive()) {
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
}

void SecretServiceKeyStore::write(KeyStoreItem item, std::string value) {
    auto operation = [queue = std::weak_ptr(queue_), item = std::move(item),
                      value = std::move(value)](SecretService* service) mutable -> Awaitable<void> {
        if (service != nullptr) {
            co_await service->write(item, value);
        }
        OPENSSL_cleanse(value.data(), value.size());
        if (const auto held = queue.lock()) {
            held->changeIsDone();
        }
    };
    queue_->add(Queue::Kind::change, std::move(operation));
}

void SecretServiceKeyStore::remove(KeyStoreItem item) {
    auto operation = [queue = std::weak_ptr(queue_),
                      item = std::move(item)](SecretService* service) mutable -> Awaitable<void> {
        if (service != nullptr) {
            co_await service->remove(item);
        }
        if (const auto held = queue.lock()) {
            held->changeIsDone();
        }
    };
    queue_->add(Queue::Kind::change, std::move(operation));
}

}  // namespace zelkovanta::platform::linux_host
