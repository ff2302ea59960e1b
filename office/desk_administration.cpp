#include "office/desk.h"
#include "office/wire.h"

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

std::optional<SignalAction> actionNamed(std::string_view word) {
    if (word == "acknowledge") {
        return SignalAction::acknowledge;
    }
    if (word == "done") {
        return SignalAction::done;
    }
    if (word == "cancel") {
        return SignalAction::cancel;
    }
    if (word == "arrived") {
        return SignalAction::arrived;
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

}  // namespace

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

    Order order(request.body);
    const auto refusedFor = [](const auto& found) -> Outcome { return std::unexpected(found.error()); };
    const auto faulty = [&]() -> Outcome { return std::unexpected(*order.fault()); };
    const auto placement = [&]() -> std::expected<Placement, Refusal> {
        Placement wanted{.practice = order.textOrEmpty("practice"),
                         .role = DeviceRole::room,
                         .room = order.text("room"),
                         .member = order.text("member"),
                         .computerName = order.text("name")};
        const auto role = roleNamed(order.required("role"));
        if (order.fault()) {
            return std::unexpected(*order.fault());
        }
        if (!role) {
            return std::unexpected(refusals::badRequest("The role must be room, member or shared."));
        }
        wanted.role = *role;
        return wanted;
    };

    const auto work = [&]() -> Outcome {
        if (order.fault()) {
            return faulty();
        }
        if (path == "approve") {
            const std::string setup = order.required("request");
            const auto wanted = placement();
            return wanted ? approve(setup, *wanted, now) : refusedFor(wanted);
        }
        if (path == "code") {
            const auto wanted = placement();
            return wanted ? makePairingCode(*wanted, now) : refusedFor(wanted);
        }
        if (path == "signin") {
            const std::string member = order.required("member");
            const auto code = order.text("code");
            const std::string name = code ? std::string() : order.required("device");
            if (order.fault()) {
                return faulty();
            }
            if (code) {
                return signInWithCode(*code, member, now);
            }
            const auto device = deviceNamed(name);
            return device ? signIn(Device(**device), member) : refusedFor(device);
        }
        if (path == "scan") {
            const std::string name = order.required("device");
            const std::string member = order.required("member");
            const auto device = order.fault() ? std::unexpected(*order.fault()) : deviceNamed(name);
            return device ? scanSignInCode(Device(**device), member, now) : refusedFor(device);
        }
        if (path == "signout" || path == "revoke" || path == "alerts") {
            const std::string name = order.required("device");
            const auto settings = order.body().objectText("settings");
            const auto device = order.fault() ? std::unexpected(*order.fault()) : deviceNamed(name);
            if (!device) {
                return refusedFor(device);
            }
            return path == "signout"  ? signOut(**device)
                   : path == "revoke" ? revoke(Device(**device))
                                      : setNotificationSettings(**device, settings.value_or(std::string()));
        }
        if (path == "move") {
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
            const auto device = deviceNamed(name);
            const auto practice = practiceNamed(target);
            if (!device || !practice) {
                return device ? refusedFor(practice) : refusedFor(device);
            }
            return move(**device, **practice, room, member,
                        notice == "snapshot" ? MoveNotice::snapshot : MoveNotice::officeUpdated);
        }
        if (path == "send") {
            const SendOrder wanted{.practice = order.textOrEmpty("practice"),
                                   .room = order.required("room"),
                                   .type = order.required("type"),
                                   .from = order.text("from"),
                                   .to = order.body().texts("to", mostTexts).value_or(std::vector<std::string>()),
                                   .toDepartment = order.text("toDepartment"),
                                   .note = order.textOrEmpty("note")};
            return order.fault() ? faulty() : send(wanted, now);
        }
        if (path == "act") {
            const std::string id = order.required("signal");
            const auto action = actionNamed(order.required("action"));
            auto by = order.text("by");
            if (order.fault()) {
                return faulty();
            }
            if (!action) {
                return std::unexpected(
                    refusals::badRequest("The action must be acknowledge, done, cancel or arrived."));
            }
            const auto signal = signalNamed(id);
            if (!signal) {
                return refusedFor(signal);
            }
            if (by) {
                const auto member = memberNamed((*signal)->practiceId, *by);
                if (!member) {
                    return refusedFor(member);
                }
                by = (*member)->id;
            }
            return act(**signal, *action, by, now);
        }
        if (path == "announce") {
            const Release release{.id = {},
                                  .macosVersion = order.text("version"),
                                  .macosBuild = order.integer("build"),
                                  .macosUrl = order.text("url"),
                                  .macosSha256 = order.text("sha256"),
                                  .windowsVersion = order.text("windowsVersion")};
            return order.fault() ? faulty() : announce(release);
        }

        const auto practice = practiceNamed(order.textOrEmpty("practice"));
        if (path == "member") {
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
            const auto member = memberNamed((*practice)->id, name);
            return member ? changeMember(**member, change, now) : refusedFor(member);
        }
        if (path == "walk") {
            const std::string member = order.required("member");
            const std::string room = order.required("room");
            return order.fault() ? faulty() : practice ? walkIn(**practice, member, room, now) : refusedFor(practice);
        }
        if (path == "status") {
            const std::string name = order.required("member");
            const std::string status = order.required("status");
            if (order.fault() || !practice) {
                return order.fault() ? faulty() : refusedFor(practice);
            }
            const auto member = memberNamed((*practice)->id, name);
            return member ? setStatus(Member(**member), status, now) : refusedFor(member);
        }
        if (path == "member/add") {
            const std::string name = order.required("name");
            const std::string department = order.required("department");
            return order.fault() ? faulty()
                   : practice    ? addMember(**practice, name, department, now)
                                 : refusedFor(practice);
        }
        if (path == "room") {
            const std::string name = order.required("room");
            const RoomChange change{
                .name = order.text("name"), .active = order.truth("active"), .beaconUuid = order.text("beaconUuid")};
            if (order.fault() || !practice) {
                return order.fault() ? faulty() : refusedFor(practice);
            }
            const auto room = roomNamed((*practice)->id, name);
            return room ? changeRoom(**room, change) : refusedFor(room);
        }
        if (path == "room/add") {
            const std::string name = order.required("name");
            return order.fault() ? faulty() : practice ? addRoom(**practice, name) : refusedFor(practice);
        }
        if (path == "type") {
            const std::string name = order.required("type");
            const TypeChange change{.label = order.text("label"),
                                    .color = order.text("color"),
                                    .priority = order.integer("priority"),
                                    .sortOrder = order.integer("sortOrder"),
                                    .active = order.truth("active")};
            if (order.fault() || !practice) {
                return order.fault() ? faulty() : refusedFor(practice);
            }
            const auto type = typeNamed((*practice)->id, name);
            return type ? changeType(**type, change) : refusedFor(type);
        }
        if (path == "practice") {
            const PracticeChange change{.name = order.text("name"),
                                        .vertical = order.text("vertical"),
                                        .autoExpireMinutes = order.integer("autoExpireMinutes"),
                                        .allowAnyProvider = order.truth("allowAnyProvider"),
                                        .requireSignedInSender = order.truth("requireSignedInSender")};
            return order.fault() ? faulty() : practice ? changePractice(**practice, change) : refusedFor(practice);
        }
        return std::unexpected(refusals::notFound("not_found", "There is nothing at this address."));
    };

    const auto explained = [&]() -> Outcome {
        Outcome outcome = work();
        return outcome ? std::move(outcome) : std::unexpected(withSentence(std::move(outcome.error())));
    };
    Answer answer = request.method == "POST"
                        ? finish(explained())
                        : refuse({405, "method_not_allowed", "This address takes only POST.", std::nullopt});
    answer.route = answer.status == 404 || answer.status == 405 ? std::string(root) + "any" : request.path;
    return answer;
}

}  // namespace zelkovanta::office
