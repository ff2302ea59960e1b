#include "platform/linux/linux_host_info.h"

#include "platform/linux/atomic_file.h"
#include "platform/linux/locale_name.h"
#include "records/text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <system_error>
#include <unistd.h>
#include <utility>

#include <QDBusConnection>
#include <QDBusMessage>
#include <QString>

namespace zelkovanta::platform::linux_host {

namespace {

constexpr std::size_t maximumFactSize = std::size_t{256} * 1024;
constexpr int busLimit = 1000;

/// Calls `use` with each line until it gives a value.
template <class Use>
std::optional<std::string> findLine(std::string_view text, const Use& use) {
    while (!text.empty()) {
        const auto end = std::min(text.find('\n'), text.size());
        if (auto found = use(text.substr(0, end))) {
            return found;
        }
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return std::nullopt;
}

/// The value of a shell-like assignment, without its quotes.
std::string unquoted(std::string_view value) {
    const std::string bare = records::trimmed(value);
    value = bare;
    const bool isQuoted =
        value.size() >= 2 && (value.front() == '"' || value.front() == '\'') && value.back() == value.front();
    if (!isQuoted) {
        return std::string{value};
    }
    std::string result;
    value = value.substr(1, value.size() - 2);
    for (std::size_t i = 0; i < value.size(); ++i) {
        if (value[i] == '\\' && i + 1 < value.size()) {
            ++i;
        }
        result += value[i];
    }
    return result;
}

bool isAlphabetic(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); });
}

bool isRegion(std::string_view text) {
    return (text.size() == 2 && isAlphabetic(text)) ||
           (text.size() == 3 && std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; }));
}

std::string idOf(const QDBusConnection& bus) {
    if (!bus.isConnected()) {
        return {};
    }
    const auto call =
        QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"), QStringLiteral("/org/freedesktop/DBus"),
                                       QStringLiteral("org.freedesktop.DBus"), QStringLiteral("GetId"));
    const auto reply = bus.call(call, QDBus::Block, busLimit);
    if (reply.type() != QDBusMessage::ReplyMessage || reply.arguments().isEmpty()) {
        return {};
    }
    return reply.arguments().constFirst().toString().toStdString();
}

/// The value in a line "NAME=value" of a file of the login service.
std::optional<std::string> assignedValue(std::string_view text, std::string_view name) {
    return findLine(text, [name](std::string_view line) -> std::optional<std::string> {
        const bool isIt = line.starts_with(name) && line.substr(name.size()).starts_with('=');
        return isIt ? std::optional{unquoted(line.substr(name.size() + 1))} : std::nullopt;
    });
}

}  // namespace

std::string languageTag(std::string_view locale) {
    constexpr std::string_view fallback = "en-US";
    const LocaleName name = localeName(locale);
    if (name.language.size() < 2 || name.language.size() > 3 || !isAlphabetic(name.language)) {
        return std::string{fallback};
    }
    std::string tag = records::lowercased(name.language);
    if (name.modifier == "latin" || name.modifier == "cyrillic") {
        tag += name.modifier == "latin" ? "-Latn" : "-Cyrl";
    }
    if (isRegion(name.territory)) {
        tag += "-" + records::uppercased(name.territory);
    }
    return tag;
}

HostSources HostSources::ofThisComputer() {
    HostSources sources;
    sources.hostName = [] {
        std::array<char, 256> name{};
        return ::gethostname(name.data(), name.size() - 1) == 0 ? std::string{name.data()} : std::string{};
    };
    sources.sessionBusId = [] { return idOf(QDBusConnection::sessionBus()); };
    sources.userId = ::getuid();
    return sources;
}

LinuxHostInfo::LinuxHostInfo(HostSources sources) : sources_(std::move(sources)) {}

std::optional<std::string> LinuxHostInfo::firstLine(const char* file) const {
    const auto content = readFile(sources_.root / file, maximumFactSize);
    if (!content) {
        return std::nullopt;
    }
    auto line = records::trimmed(std::string_view{*content}.substr(0, content->find('\n')));
    return line.empty() ? std::nullopt : std::optional{std::move(line)};
}

std::string LinuxHostInfo::localizedName() const {
    const auto machine = readFile(sources_.root / "etc/machine-info", maximumFactSize);
    const auto pretty = findLine(machine.value_or(""), [](std::string_view line) -> std::optional<std::string> {
        constexpr std::string_view name = "PRETTY_HOSTNAME=";
        const std::string assignment = records::trimmed(line);
        auto value = assignment.starts_with(name) ? unquoted(assignment.substr(name.size())) : "";
        return value.empty() ? std::nullopt : std::optional{std::move(value)};
    });
    if (pretty) {
        return *pretty;
    }
    const std::string name = sources_.hostName();
    return name.substr(0, name.find('.'));
}

std::string LinuxHostInfo::hardwareModel() const {
    return records::scalarPrefix(80, firstLine("sys/class/dmi/id/product_name").value_or(""));
}

std::string LinuxHostInfo::localeIdentifier() const {
    return languageTag(messageLocale(sources_.environment));
}

double LinuxHostInfo::bootTime() const {
    const auto statistics = readFile(sources_.root / "proc/stat", maximumFactSize);
    const auto found = findLine(statistics.value_or(""), [](std::string_view line) -> std::optional<std::string> {
        constexpr std::string_view name = "btime ";
        return line.starts_with(name) ? std::optional{records::trimmed(line.substr(name.size()))} : std::nullopt;
    });
    const std::string digits = found.value_or("");
    double seconds = 0;
    const auto [end, failed] = std::from_chars(digits.data(), digits.data() + digits.size(), seconds);
    const bool isNumber = failed == std::errc{} && end == digits.data() + digits.size();
    return isNumber && seconds > 0 ? seconds : 0;
}

// A program of a login runs in its session's scope. One that the person's service manager started does not: it inherits
// the variable at best, which counts only while that session is there, for the service manager and the session bus may
// outlive a login. Else the session counts that the person has in front of them.
std::optional<std::string> LinuxHostInfo::loginSession() const {
    const auto groups = readFile(sources_.root / "proc/self/cgroup", maximumFactSize);
    auto inScope = findLine(groups.value_or(""), [](std::string_view line) -> std::optional<std::string> {
        constexpr std::string_view begin = "/session-";
        const auto at = line.rfind(begin);
        if (at == std::string_view::npos) {
            return std::nullopt;
        }
        const auto rest = line.substr(at + begin.size());
        const auto end = rest.find(".scope");
        return end == std::string_view::npos || end == 0 ? std::nullopt
                                                         : std::optional<std::string>{rest.substr(0, end)};
    });
    if (inScope) {
        return inScope;
    }
    if (const auto inherited = sources_.environment("XDG_SESSION_ID"); inherited && isOpenSession(*inherited)) {
        return inherited;
    }
    const auto user = readFile(sources_.root / "run/systemd/users" / std::to_string(sources_.userId), maximumFactSize);
    if (const auto shown = assignedValue(user.value_or(""), "DISPLAY"); shown && isOpenSession(*shown)) {
        return shown;
    }
    return std::nullopt;
}

bool LinuxHostInfo::isOpenSession(const std::string& session) const {
    if (session.empty() || session.find('/') != std::string::npos) {
        return false;
    }
    const auto facts = readFile(sources_.root / "run/systemd/sessions" / session, maximumFactSize);
    return facts && assignedValue(*facts, "STATE") != "closing";
}

std::string LinuxHostInfo::auditSessionId() const {
    constexpr std::string_view unset = "4294967295";
    if (const auto kernel = firstLine("proc/self/sessionid"); kernel && *kernel != unset) {
        return "k" + *kernel;
    }
    if (const auto login = loginSession()) {
        return "l" + *login;
    }
    if (busId_.empty()) {
        busId_ = sources_.sessionBusId();
    }
    return busId_.empty() ? "" : "b" + busId_;
}

}  // namespace zelkovanta::platform::linux_host
