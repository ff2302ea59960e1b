#include "platform/linux/ini_user_defaults.h"

#include "platform/linux/atomic_file.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <system_error>
#include <utility>

#include <boost/asio/post.hpp>

namespace zelkovanta::platform::linux_host {

namespace {

constexpr std::size_t maximumFileSize = std::size_t{1024} * 1024;

template <class T>
std::optional<T> valueOf(const SettingValues& values, std::string_view key) {
    const auto found = values.find(key);
    const T* const value = found == values.end() ? nullptr : std::get_if<T>(&found->second);
    return value == nullptr ? std::nullopt : std::optional<T>{*value};
}

bool isMissing(std::error_code error) {
    return error == std::errc::no_such_file_or_directory || error == std::errc::not_a_directory;
}

}  // namespace

/// Holds the newest content that is not on the disk yet.
class IniUserDefaults::Writer : public std::enable_shared_from_this<Writer> {
public:
    enum class Mode : std::uint8_t { writes, leavesTheFile };

    Writer(std::filesystem::path file, Executor executor, Mode mode)
        : file_(std::move(file)), executor_(std::move(executor)), mode_(mode) {}

    void write(std::string content) {
        {
            const std::scoped_lock lock(mutex_);
            waiting_ = std::move(content);
            if (std::exchange(isPosted_, true)) {
                return;
            }
        }
        boost::asio::post(executor_, [self = shared_from_this()] { self->writeWaiting(); });
    }

    bool flush(std::chrono::milliseconds limit) {
        std::unique_lock lock(mutex_);
        return written_.wait_for(lock, limit, [this] { return !waiting_ && !isPosted_; }) && !hasFailed_;
    }

private:
    void writeWaiting() {
        std::unique_lock lock(mutex_);
        while (waiting_) {
            const std::string content = std::move(*waiting_);
            waiting_.reset();
            lock.unlock();
            const bool failed = mode_ == Mode::leavesTheFile || writeFileAtomically(file_, content);
            lock.lock();
            hasFailed_ = failed;
        }
        isPosted_ = false;
        written_.notify_all();
    }

    std::filesystem::path file_;
    Executor executor_;
    const Mode mode_;
    std::mutex mutex_;
    std::condition_variable written_;
    std::optional<std::string> waiting_;
    bool isPosted_ = false;
    bool hasFailed_ = false;
};

IniUserDefaults::IniUserDefaults(std::filesystem::path file, Executor writer) {
    const auto content = readWholeFile(file, maximumFileSize);
    const auto mode = content || isMissing(content.error()) ? Writer::Mode::writes : Writer::Mode::leavesTheFile;
    values_ = parseSettings(content.value_or(""));
    writer_ = std::make_shared<Writer>(std::move(file), std::move(writer), mode);
}

IniUserDefaults::~IniUserDefaults() = default;

std::optional<bool> IniUserDefaults::boolean(std::string_view key) const {
    return valueOf<bool>(values_, key);
}

std::optional<double> IniUserDefaults::number(std::string_view key) const {
    return valueOf<double>(values_, key);
}

std::optional<std::string> IniUserDefaults::text(std::string_view key) const {
    return valueOf<std::string>(values_, key);
}

bool IniUserDefaults::hasValue(std::string_view key) const {
    return values_.contains(key);
}

void IniUserDefaults::setBoolean(std::string_view key, bool value) {
    set(key, value);
}

void IniUserDefaults::setNumber(std::string_view key, double value) {
    set(key, value);
}

void IniUserDefaults::setText(std::string_view key, std::string_view value) {
    set(key, std::string{value});
}

void IniUserDefaults::remove(std::string_view key) {
    const auto found = values_.find(key);
    if (found != values_.end()) {
        values_.erase(found);
        writer_->write(formatSettings(values_));
    }
}

void IniUserDefaults::set(std::string_view key, SettingValue value) {
    const auto found = values_.find(key);
    if (found != values_.end() && found->second == value) {
        return;
    }
    values_.insert_or_assign(std::string{key}, std::move(value));
    writer_->write(formatSettings(values_));
}

bool IniUserDefaults::flush(std::chrono::milliseconds limit) {
    return writer_->flush(limit);
}

}  // namespace zelkovanta::platform::linux_host
