#include "platform/linux/notification_keeper.h"

#include "platform/linux/atomic_file.h"
#include "platform/linux/notification_file.h"

#include <mutex>
#include <utility>

#include <boost/asio/post.hpp>

namespace zelkovanta::platform::linux_host {

namespace asio = boost::asio;

class NotificationKeeper::Writing : public std::enable_shared_from_this<Writing> {
public:
    Writing(std::filesystem::path target, Executor main, Executor files)
        : file(std::move(target)), main_(std::move(main)), files_(std::move(files)) {}

    void keep(Source source) {
        source_ = std::move(source);
        if (!std::exchange(isUnderWay_, true)) {
            asio::post(main_, [weak = weak_from_this()] {
                if (const auto self = weak.lock()) {
                    self->write();
                }
            });
        }
    }

    void keepNow() {
        if (source_) {
            takeText();
        }
        writeText(number_, text_);
    }

    void stop() { source_ = nullptr; }

    const std::filesystem::path file;

private:
    void takeText() {
        text_ = notificationFileText(std::exchange(source_, nullptr)());
        ++number_;
    }

    void write() {
        if (!source_) {
            isUnderWay_ = false;
            return;
        }
        takeText();
        asio::post(files_, [self = shared_from_this(), number = number_, text = text_] {
            self->writeText(number, text);
            asio::post(self->main_, [self] { self->write(); });
        });
    }

    void writeText(std::uint64_t number, const std::string& text) {
        const std::scoped_lock lock(mutex_);
        // The last one may have been written past the queue.
        if (number > written_) {
            written_ = number;
            static_cast<void>(writeFileAtomically(file, text));
        }
    }

    Executor main_;
    Executor files_;
    Source source_;  ///< set while something is to be written
    bool isUnderWay_ = false;
    std::string text_;
    std::uint64_t number_ = 0;  ///< of the text

    std::mutex mutex_;
    std::uint64_t written_ = 0;
};

NotificationKeeper::NotificationKeeper(std::filesystem::path file, Executor main, Executor files)
    : writing_(std::make_shared<Writing>(std::move(file), std::move(main), std::move(files))) {}

NotificationKeeper::~NotificationKeeper() {
    writing_->stop();
}

ledger::KeptNotifications NotificationKeeper::read() const {
    const auto text = readFile(writing_->file, longestNotificationFile);
    return text ? readNotificationFile(*text) : ledger::KeptNotifications{};
}

void NotificationKeeper::keep(Source source) {
    writing_->keep(std::move(source));
}

void NotificationKeeper::keepNow() {
    writing_->keepNow();
}

}  // namespace zelkovanta::platform::linux_host
