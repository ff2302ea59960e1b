#pragma once

#include "platform/async.h"
#include "platform/linux/settings_text.h"
#include "platform/user_defaults.h"

#include <chrono>
#include <filesystem>
#include <memory>

namespace zelkovanta::platform::linux_host {

/// Settings in one file. Read at construction; written off the main thread, several changes at once where they come
/// quickly. What cannot be written is no error: values are kept for this run, and each further change tries the disk
/// again. A file that is there and cannot be read, or is longer than a megabyte, is never written over: what it holds
/// is absent in this run, and what is set is for this run alone.
class IniUserDefaults final : public UserDefaults {
public:
    /// `writer` is a serial queue on which blocking is allowed.
    IniUserDefaults(std::filesystem::path file, Executor writer);
    ~IniUserDefaults() override;

    [[nodiscard]] std::optional<bool> boolean(std::string_view key) const override;
    [[nodiscard]] std::optional<double> number(std::string_view key) const override;
    [[nodiscard]] std::optional<std::string> text(std::string_view key) const override;
    [[nodiscard]] bool hasValue(std::string_view key) const override;

    void setBoolean(std::string_view key, bool value) override;
    void setNumber(std::string_view key, double value) override;
    void setText(std::string_view key, std::string_view value) override;
    void remove(std::string_view key) override;

    /// Waits until the disk has what was set so far, `limit` at most; false if it has not. While the writer's threads
    /// still run.
    bool flush(std::chrono::milliseconds limit);

private:
    class Writer;
    void set(std::string_view key, SettingValue value);

    SettingValues values_;
    std::shared_ptr<Writer> writer_;
};

}  // namespace zelkovanta::platform::linux_host
