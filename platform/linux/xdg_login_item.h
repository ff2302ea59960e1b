#pragma once

#include "platform/login_item.h"

#include <filesystem>
#include <string>

namespace zelkovanta::platform::linux_host {

/// The desktop's autostart entry of this program.
class XdgLoginItem final : public LoginItem {
public:
    /// `entry` is the file; `program` is absolute.
    XdgLoginItem(std::filesystem::path entry, std::filesystem::path program);

    [[nodiscard]] LoginItemStatus status() const override;
    std::expected<void, std::string> registerItem(RegistrationIntent intent) override;
    std::expected<void, std::string> unregisterItem() override;

private:
    std::filesystem::path entry_;
    std::filesystem::path program_;
};

/// The text of an entry that starts `program` plainly.
[[nodiscard]] std::string autostartEntry(const std::string& program);

}  // namespace zelkovanta::platform::linux_host
