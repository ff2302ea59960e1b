#include "office/desk.h"
#include "office/wire.h"

#include <expected>
#include <map>

namespace zelkovanta::office {
namespace {

constexpr std::string_view root = "/admin/v1/";
constexpr std::size_t longestText = 2000;
constexpr std::size_t mostTexts = 200;
constexpr std::int64_t farthest = 1'000'000'000;

std::optional<DeviceRole> roleNamed(std::string_view word) {
    for (const DeviceRole role : {DeviceRole::room, DeviceRole::member, DeviceRole::shared}) {
        if (roleWord(role) == word) {
            return role;
        }
    }
    return std::nullopt;
}

/// Reads the fields of one order.
class Order {
public:
    explicit Order(std::string_view body) : in_(body) {}

    [[nodiscard]] const std::optional<Refusal>& fault() const { return in_.fault(); }
    [[nodiscard]] std::string required(std::string_view name) { return in_.requiredText(name, longestText); }
    [[nodiscard]] std::optional<std::string> text(std::string_view name) { return in_.text(name, longestText); }
    [[nodiscard]] std::string textOrEmpty(std::string_view name) { return text(name).value_or(std::string()); }
    [[nodiscard]] std::optional<bool> truth(std::string_view name) { return in_.truth(name); }
    [[nodiscard]] std::optional<std::int64_t> integer(std::string_view name) {
        return in_.integer(name, -farthest, farthest);
    }
    [[nodiscard]] RequestBody& body() { return in_; }

private:
    RequestBody in_;
};

template <class T>
std::unexpected<Refusal> refusedFor(const std::expected<T, Refusal>& found) {
    return std::unexpected(found.error());
}

}  // namespace

/// One order, with a function for each address.
struct Office::Desk::Administration {
    Desk& desk;
    Order order;
    Timestamp now;

    using Handler = Outcome (Administration::*)();
    static const std::map<std::string_view, Handler> handlers;

    Outcome work(std::string_view path) {
        if (order.fault()) {
            return faulty();
        }
        const auto found = handlers.find(path);
        return found != handlers.end()
                   ? (this->*found->second)()
                   : std::unexpected(refusals::notFound("not_found", "There is nothing at this address."));
    }

private:
    [[nodiscard]] std::unexpected<Refusal> faulty() const { return std::unexpected(*order.fault()); }

    std::expected<Placement, Refusal> placement() {
        Placement wanted{.practice = order.textOrEmpty("practice"),
                         .role = DeviceRole::room,
                         .room = order.text("room"),
                         .member = order.text("member"),
                         .computerName = order.text("name")};
        const auto role = roleNamed(order.required("role"));
        if (order.fault()) {
            return faulty();
        }
        if (!role) {
            return std::unexpected(refusals::badRequest("The role must be room, member or shared."));
        }
        wanted.role = *role;
        return wanted;
    }

    /// The practice that the order names, else the first one.
    Found<Practice> practice() { return desk.practiceNamed(order.textOrEmpty("practice")); }
    /// The computer of this name, unless the order has a fault.
    [[nodiscard]] Found<Device> deviceNamed(const std::string& name) const {
        return order.fault() ? faulty() : desk.deviceNamed(name);
    }

    Outcome approve() {
        const std::string setup = order.required("request");
        const auto wanted = placement();
        return wanted ? desk.approve(setup, *wanted, now) : refusedFor(wanted);
    }

    Outcome makeCode() {
        const auto wanted = placement();
        return wanted ? desk.makePairingCode(*wanted, now) : refusedFor(wanted);
    }

    Outcome signIn() {
        const std::string member = order.required("member");
        const auto code = order.text("code");
        const std::string name = code ? std::string() : order.required("device");
        if (order.fault()) {
            return faulty();
        }
        if (code) {
            return desk.signInWithCode(*code, member, now);
        }
        const auto device = desk.deviceNamed(name);
        return device ? desk.signIn(Device(**device), member) : refusedFor(device);
    }

    Outcome scan() {
        const std::string name = order.required("device");
        const std::string member = order.required("member");
        const auto device = deviceNamed(name);
        return device ? desk.scanSignInCode(Device(**device), member, now) : refusedFor(device);
    }

    Outcome signOut() {
        const auto device = deviceNamed(order.required("device"));
        return device ? desk.signOut(**device) : refusedFor(device);
    }

    Outcome revoke() {
        const auto device = deviceNamed(order.required("device"));
        return device ? desk.revoke(Device(**device)) : refusedFor(device);
    }

    Outcome setAlerts() {
        const std::string name = order.required("device");
        const auto settings = order.body().objectText("settings");
        const auto device = deviceNamed(name);
        return device ? desk.setNotificationSettings(**device, settings.value_or(std::string())) : refusedFor(device);
    }

    Outcome move() {
        const std::string name = order.required("device");
        const std::string target = order.required("practice");
        const auto room = order.text("room");
        const auto member = order.text("member");
        const std::string notice = order.text("notice").value_or("snapshot");
        if (order.fault()) {
            return faulty();
        }
        if (notice != "snapshot" && notice != "office") {
            return std::unexpected(refusals::badRequest("The notice must be snapshot or office."));
        }
        const auto device = desk.deviceNamed(name);
        if (!device) {
            return refusedFor(device);
        }
        const auto practice = desk.practiceNamed(target);
        return practice ? desk.move(**device, **practice, room, member,
                                    notice == "snapshot" ? MoveNotice::snapshot : MoveNotice::officeUpdated)
                        : refusedFor(practice);
    }

    Outcome send() {
        const SendOrder wanted{.practice = order.textOrEmpty("practice"),
                               .room = order.required("room"),
                               .type = order.required("type"),
                               .from = order.text("from"),
                               .to = order.body().texts("to", mostTexts).value_or(std::vector<std::string>()),
                               .toDepartment = order.text("toDepartment"),
                               .note = order.textOrEmpty("note")};
        return order.fault() ? faulty() : desk.send(wanted, now);
    }

    Outcome act() {
        const std::string id = order.required("signal");
        const auto action = actionNamed(order.required("action"));
        auto by = order.text("by");
        if (order.fault()) {
            return faulty();
        }
        if (!action) {
            return std::unexpected(refusals::badRequest("The action must be acknowledge, done, cancel or arrived."));
        }
        const auto signal = desk.signalNamed(id);
        if (!signal) {
            return refusedFor(signal);
        }
        if (by) {
            const auto member = desk.memberNamed((*signal)->practiceId, *by);
            if (!member) {
                return refusedFor(member);
            }
            by = (*member)->id;
        }
        return desk.act(**signal, *action, by, now);
    }

    Outcome announce() {
        const Release release{.id = {},
                              .macosVersion = order.text("version"),
                              .macosBuild = order.integer("build"),
                              .macosUrl = order.text("url"),
                              .macosSha256 = order.text("sha256"),
                              .windowsVersion = order.text("windowsVersion")};
        return order.fault() ? faulty() : desk.announce(release);
    }

    Outcome changeMember() {
        const auto practice = this->practice();
        const std::string name = order.required("member");
        const MemberChange change{.name = order.text("name"),
                                  .department = order.text("department"),
                                  .color = order.text("color"),
                                  .status = order.text("status"),
                                  .active = order.truth("active"),
                                  .onShift = order.truth("onShift"),
                                  .offShiftReason = order.text("offShiftReason"),
                                  .cooldownMinutes = order.integer("cooldownMinutes"),
                                  .isAdmin = order.truth("isAdmin"),
                                  .alertsEnabled = order.truth("alertsEnabled"),
                                  .alertSound = order.text("alertSound")};
        if (order.fault() || !practice) {
            return order.fault() ? faulty() : refusedFor(practice);
        }
        const auto member = desk.memberNamed((*practice)->id, name);
        return member ? desk.changeMember(**member, change, now) : refusedFor(member);
    }

    Outcome walk() {
        const auto practice = this->practice();
        const std::string member = order.required("member");
        const std::string room = order.required("room");
        if (order.fault() || !practice) {
            return order.fault() ? faulty() : refusedFor(practice);
        }
        return desk.walkIn(**practice, member, room, now);
    }

    Outcome setStatus() {
        const auto practice = this->practice();
        const std::string name = order.required("member");
        const std::string status = order.required("status");
        if (order.fault() || !practice) {
            return order.fault() ? faulty() : refusedFor(practice);
        }
        const auto member = desk.memberNamed((*practice)->id, name);
        return member ? desk.setStatus(Member(**member), status, now) : refusedFor(member);
    }

    Outcome addMember() {
        const auto practice = this->practice();
        const std::string name = order.required("name");
        const std::string department = order.required("department");
        if (order.fault() || !practice) {
            return order.fault() ? faulty() : refusedFor(practice);
        }
        return desk.addMember(**practice, name, department, now);
    }

    Outcome changeRoom() {
        const auto practice = this->practice();
        const std::string name = order.required("room");
        const RoomChange change{
            .name = order.text("name"), .active = order.truth("active"), .beaconUuid = order.text("beaconUuid")};
        if (order.fault() || !practice) {
            return order.fault() ? faulty() : refusedFor(practice);
        }
        const auto room = desk.roomNamed((*practice)->id, name);
        return room ? desk.changeRoom(**room, change) : refusedFor(room);
    }

    Outcome addRoom() {
        const auto practice = this->practice();
        const std::string name = order.required("name");
        if (order.fault() || !practice) {
            return order.fault() ? faulty() : refusedFor(practice);
        }
        return desk.addRoom(**practice, name);
    }

    Outcome changeType() {
        const auto practice = this->practice();
        const std::string name = order.required("type");
        const TypeChange change{.label = order.text("label"),
                                .color = order.text("color"),
                                .priority = order.integer("priority"),
                                .sortOrder = order.integer("sortOrder"),
                                .active = order.truth("active")};
        if (order.fault() || !practice) {
            return order.fault() ? faulty() : refusedFor(practice);
        }
        const auto type = desk.typeNamed((*practice)->id, name);
        return type ? desk.changeType(**type, change) : refusedFor(type);
    }

    Outcome changePractice() {
        const auto practice = this->practice();
        const PracticeChange change{.name = order.text("name"),
                                    .vertical = order.text("vertical"),
                                    .autoExpireMinutes = order.integer("autoExpireMinutes"),
                                    .allowAnyProvider = order.truth("allowAnyProvider"),
                                    .requireSignedInSender = order.truth("requireSignedInSender")};
        if (order.fault() || !practice) {
            return order.fault() ? faulty() : refusedFor(practice);
        }
        return desk.changePractice(**practice, change);
    }
};

const std::map<std::string_view, Office::Desk::Administration::Handler> Office::Desk::Administration::handlers{
    {"approve", &Administration::approve},
    {"code", &Administration::makeCode},
    {"signin", &Administration::signIn},
    {"scan", &Administration::scan},
    {"signout", &Administration::signOut},
    {"revoke", &Administration::revoke},
    {"alerts", &Administration::setAlerts},
    {"move", &Administration::move},
    {"send", &Administration::send},
    {"act", &Administration::act},
    {"announce", &Administration::announce},
    {"member", &Administration::changeMember},
    {"walk", &Administration::walk},
    {"status", &Administration::setStatus},
    {"member/add", &Administration::addMember},
    {"room", &Administration::changeRoom},
    {"room/add", &Administration::addRoom},
    {"type", &Administration::changeType},
    {"practice", &Administration::changePractice},
};

Answer Office::Desk::administer(const Request& request, Timestamp now) {
    std::string_view path = request.path;
    if (!path.starts_with(root)) {
        return refuse(refusals::notFound("not_found", "There is nothing at this address."));
    }
    path.remove_prefix(root.size());
    if (request.method == "GET" && (path == "waiting" || path == "state")) {
        Answer answer =
            finish(path == "waiting" ? JsonText().object().key("waiting").raw(waitingList(now)).endObject().take()
                                     : overview(now));
        answer.route = request.path;
        return answer;
    }

    const auto explained = [&]() -> Outcome {
        Administration administration{.desk = *this, .order = Order(request.body), .now = now};
        Outcome outcome = administration.work(path);
        return outcome ? std::move(outcome) : std::unexpected(withSentence(std::move(outcome.error())));
    };
    Answer answer = request.method == "POST"
                        ? finish(explained())
                        : refuse({405, "method_not_allowed", "This address takes only POST.", std::nullopt});
    answer.route = answer.status == 404 || answer.status == 405 ? std::string(root) + "any" : request.path;
    return answer;
}

}  // namespace zelkovanta::office
