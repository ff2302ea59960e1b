#pragma once

#include "platform/login_item.h"
#include "platform/string_table.h"

#include <filesystem>
#include <string>
#include <string_view>

namespace zelkovanta::platform::linux_host {

/// The desktop's autostart entry of this program.
class XdgLoginItem final : public LoginItem {
public:
    /// `entry` is the file; `program` is absolute; `strings` must outlive this object.
    XdgLoginItem(std::filesystem::path entry, std::filesystem::path program, const StringTable& strings);

    [[nodiscard]] LoginItemStatus status() const override;
    std::expected<void, std::string> registerItem(RegistrationIntent intent) override;
    std::expected<void, std::string> unregisterItem() override;

private:
    [[nodiscard]] std::string sentence(std::string_view text) const;

    std::filesystem::path entry_;
    std::filesystem::path program_;
    const StringTable& strings_;
};

/// The text of an entry that starts `program` plainly.
[[nodiscard]] std::string autostartEntry(const std::string& program);

}  // namespace zelkovanta::platform::linux_host
