#include "office/command_line.h"

#include "office/json_text.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <map>
#include <set>
#include <string_view>
#include <vector>

namespace zelkovanta::office {
namespace {

using Fault = std::unexpected<std::string>;

/// How an option's value gets into an order.
enum class Form { text, number, yesNo, texts };

struct Option {
    std::string_view name;  ///< with its dashes
    std::string_view key;   ///< in the order
    Form form = Form::text;
};

/// An option without a value that sets a key to true or false.
struct Switch {
    std::string_view name;
    std::string_view key;
    bool value = true;
};

struct Shape {
    std::string_view command;
    std::string_view path;
    std::vector<std::string_view> positions;  ///< keys of the arguments without dashes
    std::size_t required = 0;                 ///< how many of them there must be
    std::vector<Option> options;
    std::vector<Switch> switches;
    std::string_view print = "-";
};

const std::vector<Option> placementOptions = {
    {"--role", "role"}, {"--room", "room"}, {"--member", "member"}, {"--name", "name"}, {"--practice", "practice"}};

std::vector<Shape> shapes() {
    const Option practice{"--practice", "practice"};
    const Option by{"--by", "by"};
    return {
        {"approve", "approve", {"request"}, 0, placementOptions, {}, "device.id"},
        {"code", "code", {}, 0, placementOptions, {}, "code"},
        {"signin", "signin", {"device", "member"}, 2, {}, {}},
        {"signin-code", "signin", {"code", "member"}, 2, {}, {}},
        {"scan", "scan", {"device", "member"}, 2, {}, {}},
        {"signout", "signout", {"device"}, 1, {}, {}},
        {"revoke", "revoke", {"device"}, 1, {}, {}},
        {"move",
         "move",
         {"device", "practice"},
         2,
         {{"--room", "room"}, {"--member", "member"}, {"--notice", "notice"}},
         {}},
        {"send",
         "send",
         {},
         0,
         {{"--room", "room"},
          {"--type", "type"},
          {"--from", "from"},
          {"--to", "to", Form::texts},
          {"--department", "toDepartment"},
          {"--note", "note"},
          practice},
         {},
         "id"},
        {"acknowledge", "act", {"signal"}, 1, {by}, {}},
        {"done", "act", {"signal"}, 1, {by}, {}},
        {"cancel", "act", {"signal"}, 1, {by}, {}},
        {"arrived", "act", {"signal"}, 1, {by}, {}},
        {"walk", "walk", {"member", "room"}, 2, {practice}, {}},
        {"member",
         "member",
         {"member"},
         1,
         {{"--rename", "name"},
          {"--department", "department"},
          {"--color", "color"},
          {"--status", "status"},
          {"--reason", "offShiftReason"},
          {"--cooldown", "cooldownMinutes", Form::number},
          {"--admin", "isAdmin", Form::yesNo},
          {"--alerts", "alertsEnabled", Form::yesNo},
          {"--sound", "alertSound"},
          practice},
         {{"--on-shift", "onShift", true},
          {"--off-shift", "onShift", false},
          {"--active", "active", true},
          {"--inactive", "active", false}}},
        {"add-member", "member/add", {"name", "department"}, 2, {practice}, {}, "id"},
        {"room",
         "room",
         {"room"},
         1,
         {{"--rename", "name"}, {"--beacon", "beaconUuid"}, practice},
         {{"--activate", "active", true}, {"--deactivate", "active", false}}},
        {"add-room", "room/add", {"name"}, 1, {practice}, {}, "id"},
        {"type",
         "type",
         {"type"},
         1,
         {{"--label", "label"},
          {"--color", "color"},
          {"--priority", "priority", Form::number},
          {"--order", "sortOrder", Form::number},
          practice},
         {{"--activate", "active", true}, {"--deactivate", "active", false}}},
        {"practice",
         "practice",
         {"practice"},
         0,
         {{"--rename", "name"},
          {"--vertical", "vertical"},
          {"--expire", "autoExpireMinutes", Form::number},
          {"--any-provider", "allowAnyProvider", Form::yesNo},
          {"--signed-in-sender", "requireSignedInSender", Form::yesNo}},
         {}},
        {"announce",
         "announce",
         {},
         0,
         {{"--version", "version"},
          {"--build", "build", Form::number},
          {"--url", "url"},
          {"--sha256", "sha256"},
          {"--windows", "windowsVersion"}},
         {}},
    };
}

constexpr std::array<std::string_view, 7> serveOptions = {"--database",    "--listen", "--port",          "--sample",
                                                          "--certificate", "--key",    "--app-check-file"};

template <class Number>
std::expected<Number, std::string> numberOf(std::string_view option, std::string_view text) {
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size()) {
        return Fault(std::string(option) + " takes a whole number that fits, not \"" + std::string(text) + "\".");
    }
    return number;
}

/// Goes through the arguments, one after the other.
class Reader {
public:
    explicit Reader(std::span<const std::string> arguments) : rest_(arguments) {}

    [[nodiscard]] bool atEnd() const { return rest_.empty(); }
    [[nodiscard]] const std::string& next() {
        const std::string& first = rest_.front();
        rest_ = rest_.subspan(1);
        return first;
    }
    [[nodiscard]] std::expected<std::string, std::string> valueOf(std::string_view option) {
        if (atEnd()) {
            return Fault(std::string(option) + " needs a value.");
        }
        return next();
    }

private:
    std::span<const std::string> rest_;
};

/// Takes an option that tells where the office is; false if it is none.
std::expected<bool, std::string> takeWhereabouts(Whereabouts& office, std::string_view option, Reader& reader) {
    if (option != "--database" && option != "--server" && option != "--admin-token-file") {
        return false;
    }
    const auto value = reader.valueOf(option);
    if (!value) {
        return Fault(value.error());
    }
    if (option == "--database") {
        office.database = *value;
    } else if (option == "--server") {
        office.server = *value;
    } else {
        office.adminTokenFile = *value;
    }
    return true;
}

std::expected<void, std::string> checkWhereabouts(const Whereabouts& office) {
    if (!office.database && (!office.server || !office.adminTokenFile)) {
        return Fault("Say which office: --database FILE, or --server URL with --admin-token-file FILE.");
    }
    return {};
}

std::expected<Command, std::string> parseServe(Reader reader) {
    Serve serve;
    while (!reader.atEnd()) {
        const std::string option = reader.next();
        if (option == "--quiet") {
            serve.quiet = true;
            continue;
        }
        if (option == "--no-console") {
            serve.console = false;
            continue;
        }
        if (std::ranges::find(serveOptions, option) == serveOptions.end()) {
            return Fault("The office does not know \"" + option + "\"; zelkovanta-office help tells what it knows.");
        }
        const auto value = reader.valueOf(option);
        if (!value) {
            return Fault(value.error());
        }
        if (option == "--database") {
            serve.database = *value;
        } else if (option == "--listen") {
            serve.address = *value;
        } else if (option == "--sample") {
            serve.sample = *value;
        } else if (option == "--certificate") {
            serve.certificate = *value;
        } else if (option == "--key") {
            serve.key = *value;
        } else if (option == "--app-check-file") {
            serve.appCheckFile = *value;
        } else if (const auto port = numberOf<std::uint16_t>(option, *value)) {
            serve.port = *port;
        } else {
            return Fault(port.error());
        }
    }
    if (serve.database.empty()) {
        return Fault("Say where the office keeps its state: --database FILE.");
    }
    if (serve.certificate.has_value() != serve.key.has_value()) {
        return Fault("A certificate and its key go together: --certificate FILE --key FILE.");
    }
    return serve;
}

/// The order's fields, collected; a switch or option given twice is the last one, but for lists.
struct Fields {
    std::map<std::string_view, std::string> json;
    std::map<std::string_view, std::vector<std::string>> lists;

    [[nodiscard]] std::string object() const {
        JsonText text;
        text.object();
        for (const auto& [key, value] : json) {
            text.key(key).raw(value);
        }
        for (const auto& [key, values] : lists) {
            text.field(key, values);
        }
        return text.endObject().take();
    }
};

std::string jsonText(std::string_view text) {
    return JsonText().value(text).take();
}

std::expected<void, std::string> take(Fields& fields, const Option& option, const std::string& value) {
    if (option.form == Form::texts) {
        fields.lists[option.key].push_back(value);
        return {};
    }
    if (option.form == Form::number) {
        const auto number = numberOf<std::int64_t>(option.name, value);
        if (!number) {
            return Fault(number.error());
        }
        fields.json[option.key] = std::to_string(*number);
        return {};
    }
    if (option.form == Form::yesNo) {
        if (value != "yes" && value != "no") {
            return Fault(std::string(option.name) + " takes yes or no, not \"" + value + "\".");
        }
        fields.json[option.key] = value == "yes" ? "true" : "false";
        return {};
    }
    fields.json[option.key] = jsonText(value);
    return {};
}

std::expected<Command, std::string> parseControl(const Shape& shape, Reader reader) {
    Approve approve;
    Control& control = approve.order;
    control.method = "POST";
    control.path = "/admin/v1/" + std::string(shape.path);
    control.print = shape.print;
    const bool approving = shape.command == "approve";

    Fields fields;
    std::vector<std::string> positional;
    while (!reader.atEnd()) {
        const std::string argument = reader.next();
        if (!argument.starts_with("--")) {
            positional.push_back(argument);
            continue;
        }
        if (const auto taken = takeWhereabouts(control.office, argument, reader); !taken || *taken) {
            if (!taken) {
                return Fault(taken.error());
            }
            continue;
        }
        if (const auto found = std::ranges::find(shape.switches, argument, &Switch::name);
            found != shape.switches.end()) {
            fields.json[found->key] = found->value ? "true" : "false";
            continue;
        }
        const auto option = std::ranges::find(shape.options, argument, &Option::name);
        const bool waiting = approving && argument == "--wait";
        if (option == shape.options.end() && !waiting) {
            return Fault(std::string(shape.command) + " does not know \"" + argument +
                         "\"; zelkovanta-office help tells what it knows.");
        }
        const auto value = reader.valueOf(argument);
        if (!value) {
            return Fault(value.error());
        }
        if (waiting) {
            const auto wait = numberOf<std::uint16_t>(argument, *value);
            if (!wait) {
                return Fault(wait.error());
            }
            approve.wait = std::chrono::seconds{*wait};
        } else if (const auto taken = take(fields, *option, *value); !taken) {
            return Fault(taken.error());
        }
    }
    if (shape.command == "announce") {
        // "release" or "none" stands before the options, and reads well.
        const bool none = positional == std::vector<std::string>{"none"};
        if (positional != std::vector<std::string>{"release"} && !none) {
            return Fault(R"(announce takes "release" with its options, or "none".)");
        }
        if (none == !fields.json.empty()) {
            return Fault(none ? "announce none takes no options." : "announce release needs its options.");
        }
        positional.clear();
    }
    if (positional.size() < shape.required || positional.size() > shape.positions.size()) {
        std::string wanted;
        for (const std::string_view position : shape.positions) {
            wanted += " " + std::string(position);
        }
        return Fault(std::string(shape.command) + " takes " + (wanted.empty() ? " nothing" : wanted).substr(1) +
                     " before its options.");
    }
    if (const auto known = checkWhereabouts(control.office); !known) {
        return Fault(known.error());
    }
    if (approving) {
        if (!positional.empty()) {
            approve.request = positional.front();
        }
    } else {
        for (std::size_t index = 0; index < positional.size(); ++index) {
            fields.json[shape.positions[index]] = jsonText(positional[index]);
        }
    }
    if (shape.path == "act") {
        fields.json["action"] = jsonText(shape.command);
    }
    control.body = fields.object();
    return approving ? Command(approve) : Command(control);
}

std::expected<Command, std::string> parseLook(std::string_view what, Reader reader) {
    Control control{.office = {}, .method = "GET", .path = "/admin/v1/" + std::string(what), .body = {}, .print = ""};
    while (!reader.atEnd()) {
        const std::string option = reader.next();
        const auto taken = takeWhereabouts(control.office, option, reader);
        if (!taken) {
            return Fault(taken.error());
        }
        if (!*taken) {
            return Fault(std::string(what) + " does not know \"" + option +
                         "\"; zelkovanta-office help tells what it knows.");
        }
    }
    if (const auto known = checkWhereabouts(control.office); !known) {
        return Fault(known.error());
    }
    return control;
}

}  // namespace

std::expected<Command, std::string> parseCommandLine(std::span<const std::string> arguments) {
    if (arguments.empty() || arguments[0] == "help" || arguments[0] == "--help") {
        return Help{};
    }
    const std::string& command = arguments[0];
    if (command.starts_with("--")) {
        return parseServe(Reader(arguments));
    }
    const Reader rest(arguments.subspan(1));
    if (command == "serve") {
        return parseServe(rest);
    }
    if (command == "waiting" || command == "state") {
        return parseLook(command, rest);
    }
    for (const Shape& shape : shapes()) {
        if (shape.command == command) {
            return parseControl(shape, rest);
        }
    }
    return Fault("There is no command \"" + command + "\"; zelkovanta-office help tells which there are.");
}

std::filesystem::path adminTokenFileOf(const std::filesystem::path& database) {
    return database.string() + ".admin";
}

std::filesystem::path addressFileOf(const std::filesystem::path& database) {
    return database.string() + ".address";
}

}  // namespace zelkovanta::office
