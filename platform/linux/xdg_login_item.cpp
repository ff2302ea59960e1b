#include "platform/linux/xdg_login_item.h"

#include "platform/linux/application_id.h"
#include "platform/linux/atomic_file.h"
#include "records/text.h"

#include <system_error>
#include <utility>

namespace zelkovanta::platform::linux_host {

namespace {

constexpr std::size_t maximumEntrySize = std::size_t{64} * 1024;

/// A desktop switches an entry off by one of two keys in its main group.
bool isSwitchedOff(std::string_view entry) {
    bool isInMainGroup = false;
    while (!entry.empty()) {
        const auto end = std::min(entry.find('\n'), entry.size());
        const std::string line = records::trimmed(entry.substr(0, end));
        entry.remove_prefix(std::min(end + 1, entry.size()));
        if (line.starts_with('[')) {
            isInMainGroup = line == "[Desktop Entry]";
            continue;
        }
        const auto equals = line.find('=');
        if (!isInMainGroup || equals == std::string::npos) {
            continue;
        }
        const auto key = records::trimmed(std::string_view{line}.substr(0, equals));
        const auto value = records::trimmed(std::string_view{line}.substr(equals + 1));
        if ((key == "Hidden" && value == "true") || (key == "X-GNOME-Autostart-enabled" && value == "false")) {
            return true;
        }
    }
    return false;
}

/// The escapes that every string of an entry has.
std::string entryString(const std::string& text) {
    std::string result;
    for (const char c : text) {
        switch (c) {
            case '\\':
                result += "\\\\";
                break;
            case '\n':
                result += "\\n";
                break;
            case '\t':
                result += "\\t";
                break;
            case '\r':
                result += "\\r";
                break;
            default:
                result += c;
        }
    }
    return result;
}

/// One argument of a command line, before the escapes of strings.
std::string quotedArgument(const std::string& argument) {
    std::string result = "\"";
    for (const char c : argument) {
        if (c == '"' || c == '`' || c == '$' || c == '\\') {
            result += '\\';
        }
        result += c == '%' ? std::string{"%%"} : std::string{c};
    }
    return result + "\"";
}

}  // namespace

std::string autostartEntry(const std::string& program) {
    return "[Desktop Entry]\n"
           "Type=Application\n"
           "Name=ZelkoVanta\n"
           "Exec=" +
           entryString(quotedArgument(program)) + "\nTryExec=" + entryString(program) + "\nIcon=" + applicationId +
           "\nTerminal=false\n"
           "X-GNOME-Autostart-enabled=true\n";
}

XdgLoginItem::XdgLoginItem(std::filesystem::path entry, std::filesystem::path program, const StringTable& strings)
    : entry_(std::move(entry)), program_(std::move(program)), strings_(strings) {}

LoginItemStatus XdgLoginItem::status() const {
    const auto entry = readFile(entry_, maximumEntrySize);
    if (!entry) {
        return LoginItemStatus::notRegistered;
    }
    return isSwitchedOff(*entry) ? LoginItemStatus::requiresApproval : LoginItemStatus::enabled;
}

/// The text with the folder in it.
std::string XdgLoginItem::sentence(std::string_view text) const {
    const std::string folder = entry_.parent_path().string();
    return filled(text, {folder});
}

std::expected<void, std::string> XdgLoginItem::registerItem(RegistrationIntent intent) {
    if (intent == RegistrationIntent::firstLaunch && status() == LoginItemStatus::requiresApproval) {
        return {};
    }
    if (const auto failed = writeFileAtomically(entry_, autostartEntry(program_.string()))) {
        return std::unexpected(sentence(strings_.localized("The autostart entry could not be written to %@.")));
    }
    return {};
}

std::expected<void, std::string> XdgLoginItem::unregisterItem() {
    std::error_code failed;
    std::filesystem::remove(entry_, failed);
    if (failed && failed != std::errc::no_such_file_or_directory && failed != std::errc::not_a_directory) {
        return std::unexpected(sentence(strings_.localized("The autostart entry could not be removed from %@.")));
    }
    return {};
}

}  // namespace zelkovanta::platform::linux_host
