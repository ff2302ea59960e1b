#pragma once

#include "platform/async.h"
#include "platform/linux/notification_events.h"

#include <filesystem>
#include <functional>
#include <memory>

namespace zelkovanta::platform::linux_host {

/// The file of the notifications on the desktop. A change is written soon, many changes at once; a disk that refuses
/// costs no more than notifications that nobody withdraws. Main thread.
class NotificationKeeper {
public:
    using Source = std::function<ledger::KeptNotifications()>;

    /// Writing may block, so it happens on `files`, a serial queue.
    NotificationKeeper(std::filesystem::path file, Executor main, Executor files);
    ~NotificationKeeper();
    NotificationKeeper(const NotificationKeeper&) = delete;
    NotificationKeeper& operator=(const NotificationKeeper&) = delete;

    /// Blocks for as long as the file takes to be read.
    [[nodiscard]] ledger::KeptNotifications read() const;
    /// `source` is asked on the main thread when there is time, until this object is destroyed.
    void keep(Source source);
    /// What is not yet written is, before this returns.
    void keepNow();

private:
    class Writing;
    std::shared_ptr<Writing> writing_;
};

}  // namespace zelkovanta::platform::linux_host
