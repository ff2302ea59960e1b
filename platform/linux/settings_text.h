#pragma once

#include <map>
#include <string>
#include <string_view>
#include <variant>

namespace zelkovanta::platform::linux_host {

using SettingValue = std::variant<bool, double, std::string>;
using SettingValues = std::map<std::string, SettingValue, std::less<>>;

/// The settings file: one section with a line for each value.
///
///     [Settings]
///     openAsWindow=true
///     stationSignInBootTime=1700000000.25
///     serverURL="https://office.example"
///
/// The form of a value is its type. In texts and keys a backslash leads "\\", "\"", "\n", "\r", "\t", "\=" and "\xHH"
/// for bytes below 0x20; other bytes stand for themselves.
[[nodiscard]] std::string formatSettings(const SettingValues& values);

/// Reads what can be read: a line that makes no sense is passed over, of a key's lines the last one holds.
[[nodiscard]] SettingValues parseSettings(std::string_view text);

}  // namespace zelkovanta::platform::linux_host
