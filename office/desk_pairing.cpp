#include "office/desk.h"
#include "office/secrets.h"
#include "office/wire.h"

#include <algorithm>

namespace zelkovanta::office {
namespace {

using std::chrono::minutes;

constexpr minutes pairingCodeLife{15};
constexpr minutes setupRequestLife{5};
constexpr std::size_t mostSetupRequests = 500;
constexpr std::size_t longestName = 64;
constexpr std::size_t longestWord = 200;

/// How a computer introduces itself.
struct Introduction {
    std::string kind;
    std::string name;
    std::string model;
    std::string appVersion;
    std::optional<std::string> locale;
};

Introduction introduction(RequestBody& body) {
    RequestBody in = body.requiredObject("device");
    Introduction device{.kind = in.requiredText("kind", longestName),
                        .name = in.requiredText("name", longestName),
                        .model = in.requiredText("model", longestWord),
                        .appVersion = in.requiredText("appVersion", longestName),
                        .locale = in.text("locale", longestName)};
    body.adoptFault(in);
    return device;
}

}  // namespace

/// Gives a computer its practice, role, room and member.
std::expected<Device, Refusal> Office::Desk::place(const Placement& placement, Device device) const {
    const auto practice = practiceNamed(placement.practice);
    if (!practice) {
        return std::unexpected(practice.error());
    }
    device.practiceId = (*practice)->id;
    device.role = placement.role;
    if (placement.role == DeviceRole::room && !placement.room) {
        return std::unexpected(refusals::badRequest("A room computer needs a room."));
    }
    if ((placement.role == DeviceRole::member) != placement.member.has_value()) {
        return std::unexpected(refusals::badRequest(placement.member ? "Only a member's own computer is given a member."
                                                                     : "A member's own computer needs a member."));
    }
    if (placement.role == DeviceRole::member && placement.room) {
        return std::unexpected(refusals::badRequest("A member's own computer is not given a room."));
    }
    if (placement.room) {
        const auto room = roomNamed(device.practiceId, *placement.room);
        if (!room) {
            return std::unexpected(room.error());
        }
        device.roomId = (*room)->id;
    }
    if (placement.member) {
        const auto member = memberNamed(device.practiceId, *placement.member);
        if (!member) {
            return std::unexpected(member.error());
        }
        device.memberId = (*member)->id;
    }
    if (placement.computerName) {
        device.name = *placement.computerName;
    }
    return device;
}

/// Gives the computer a new token. The body is the only place where the token itself ever stands.
std::string Office::Desk::handOver(Device device, bool withStatus) {
    const std::string token = newToken(random_, "zvd_");
    device.tokenHash = secretHash(token);

    JsonText json;
    json.object();
    if (withStatus) {
        json.field("status", "approved");
    }
    json.field("deviceToken", token).key("device");
    write(json, device);
    json.key("office");
    write(json, *ledger_.find<Practice>(device.practiceId));
    json.field("role", roleWord(device.role));
    if (const Room* room = device.roomId ? ledger_.find<Room>(*device.roomId) : nullptr) {
        json.key("room");
        write(json, *room);
    }
    if (const Member* member = device.memberId ? ledger_.find<Member>(*device.memberId) : nullptr) {
        json.key("member");
        write(json, *member);
    }
    json.endObject();
    ledger_.put(std::move(device));
    return json.take();
}

Office::Desk::Outcome Office::Desk::makePairingCode(const Placement& placement, Timestamp now) {
    const auto device = place(placement, {});
    if (!device) {
        return std::unexpected(device.error());
    }
    std::string code = newCode(random_, 8);
    while (ledger_.find<PairingCode>(secretHash(code)) != nullptr) {
        code = newCode(random_, 8);
    }
    const PairingCode kept{.id = secretHash(code),
                           .practiceId = device->practiceId,
                           .role = device->role,
                           .roomId = device->roomId,
                           .memberId = device->memberId,
                           .computerName = placement.computerName,
                           .expiresAt = now + pairingCodeLife,
                           .deviceId = std::nullopt};
    ledger_.put(kept);

    JsonText json;
    json.object()
        .field("code", code.substr(0, 4) + "-" + code.substr(4))
        .field("expiresAt", isoText(kept.expiresAt))
        .endObject();
    return json.take();
}

bool Office::Desk::isOurProgram(const Request& request) const {
    return appCheck_.empty() || sameSecret(request.appCheck, appCheck_);
}

Office::Desk::Outcome Office::Desk::redeem(const Request& request, Timestamp now) {
    if (!isOurProgram(request)) {
        return std::unexpected(refusals::unknownProgram());
    }
    if (wrongCodes_.exhausted(request.peer, now)) {
        return std::unexpected(refusals::tooManyAttempts());
    }
    RequestBody in(request.body);
    const std::string typed = in.requiredText("code", longestName);
    Introduction computer = introduction(in);
    if (in.fault()) {
        return std::unexpected(*in.fault());
    }

    const std::optional<std::string> code = normalPairingCode(typed);
    const PairingCode* found = code ? ledger_.find<PairingCode>(secretHash(*code)) : nullptr;
    if (found == nullptr) {
        wrongCodes_.add(request.peer, now);
        return std::unexpected(refusals::invalidCode());
    }
    if (found->expiresAt <= now) {
        return std::unexpected(refusals::expiredCode());
    }
    if (found->deviceId) {
        // The same computer may ask again as long as it has not come in: the answer to its first try may have been
        // lost.
        const Device* made = ledger_.find<Device>(*found->deviceId);
        const bool sameComputer = made != nullptr && !made->lastSeenAt && made->kind == computer.kind &&
                                  made->model == computer.model && made->appVersion == computer.appVersion &&
                                  (found->computerName || made->name == computer.name);
        if (!sameComputer) {
            wrongCodes_.add(request.peer, now);
            return std::unexpected(refusals::invalidCode());
        }
        return handOver(*made, false);
    }

    Device device{.id = unusedIdentifier<Device>("dev_"),
                  .practiceId = found->practiceId,
                  .role = found->role,
                  .kind = std::move(computer.kind),
                  .name = found->computerName.value_or(std::move(computer.name)),
                  .model = std::move(computer.model),
                  .appVersion = std::move(computer.appVersion),
                  .locale = std::move(computer.locale),
                  .memberId = found->memberId,
                  .roomId = found->roomId,
                  .signedInMemberId = std::nullopt,
                  .notificationSettings = std::nullopt,
                  .tokenHash = {},
                  .registeredAt = now,
                  .lastSeenAt = std::nullopt};
    PairingCode used = *found;
    used.deviceId = device.id;
    ledger_.put(std::move(used));
    return handOver(std::move(device), false);
}

Office::Desk::Outcome Office::Desk::requestSetup(const Request& request, Timestamp now) {
    if (!isOurProgram(request)) {
        return std::unexpected(refusals::unknownProgram());
    }
    if (setups_.exhausted(request.peer, now) || state().all<SetupRequest>().size() >= mostSetupRequests) {
        return std::unexpected(refusals::tooManyAttempts());
    }
    RequestBody in(request.body);
    Introduction computer = introduction(in);
    if (in.fault()) {
        return std::unexpected(*in.fault());
    }
    setups_.add(request.peer, now);

    const std::string token = newToken(random_, "zvs_");
    const std::string claimToken = newToken(random_, "zvc_");
    std::string id = newCode(random_, 6);
    while (ledger_.find<SetupRequest>(id) != nullptr) {
        id = newCode(random_, 6);
    }
    const Timestamp expiresAt = now + setupRequestLife;
    ledger_.put(SetupRequest{.id = std::move(id),
                             .tokenHash = secretHash(token),
                             .claimHash = secretHash(claimToken),
                             .kind = std::move(computer.kind),
                             .name = std::move(computer.name),
                             .model = std::move(computer.model),
                             .appVersion = std::move(computer.appVersion),
                             .locale = std::move(computer.locale),
                             .createdAt = now,
                             .expiresAt = expiresAt,
                             .deviceId = std::nullopt});
    return qrToken(token, claimToken, "zelkovanta://setup?token=" + token, expiresAt);
}

Office::Desk::Outcome Office::Desk::pollSetup(std::string_view claimToken, Timestamp now) {
    const std::string hash = secretHash(claimToken);
    const auto& requests = state().all<SetupRequest>();
    const auto found =
        std::ranges::find_if(requests, [&](const auto& entry) { return entry.second.claimHash == hash; });
    if (found == requests.end()) {
        return std::unexpected(refusals::invalidCode());
    }
    const SetupRequest& setup = found->second;
    if (!setup.deviceId) {
        if (setup.expiresAt <= now) {
            return std::unexpected(refusals::expiredCode());
        }
        return R"({"status":"pending"})";
    }
    // Until the computer has come in once, its token may be collected again: an answer may have been lost on the way.
    const Device* device = ledger_.find<Device>(*setup.deviceId);
    if (device == nullptr || device->lastSeenAt) {
        return std::unexpected(refusals::expiredCode());
    }
    return handOver(*device, true);
}

Office::Desk::Outcome Office::Desk::approve(std::string_view setupRequest, const Placement& placement, Timestamp now) {
    // What an admin types, or what a phone has read from the picture.
    const std::string hash = secretHash(setupRequest);
    const auto& requests = state().all<SetupRequest>();
    const auto found = std::ranges::find_if(
        requests, [&](const auto& entry) { return entry.first == setupRequest || entry.second.tokenHash == hash; });
    if (found == requests.end()) {
        return std::unexpected(
            refusals::notFound("unknown_request", "There is no setup request \"" + std::string(setupRequest) + "\"."));
    }
    SetupRequest setup = found->second;
    if (setup.deviceId) {
        return std::unexpected(refusals::conflict("already_approved", "This setup request is already approved."));
    }
    if (setup.expiresAt <= now) {
        return std::unexpected(refusals::expiredCode());
    }
    auto device = place(placement, {.id = unusedIdentifier<Device>("dev_"),
                                    .practiceId = {},
                                    .role = placement.role,
                                    .kind = setup.kind,
                                    .name = setup.name,
                                    .model = setup.model,
                                    .appVersion = setup.appVersion,
                                    .locale = setup.locale,
                                    .memberId = std::nullopt,
                                    .roomId = std::nullopt,
                                    .signedInMemberId = std::nullopt,
                                    .notificationSettings = std::nullopt,
                                    .tokenHash = {},
                                    .registeredAt = now,
                                    .lastSeenAt = std::nullopt});
    if (!device) {
        return std::unexpected(device.error());
    }
    setup.deviceId = device->id;
    ledger_.put(std::move(setup));
    ledger_.put(*device);
    JsonText json;
    json.object().key("device");
    write(json, *device);
    json.endObject();
    return json.take();
}

std::string Office::Desk::waitingList(Timestamp now) const {
    std::vector<const SetupRequest*> open;
    for (const auto& [id, setup] : state().all<SetupRequest>()) {
        if (!setup.deviceId && now < setup.expiresAt) {
            open.push_back(&setup);
        }
    }
    std::ranges::stable_sort(open, {}, &SetupRequest::createdAt);
    JsonText json;
    json.array();
    for (const SetupRequest* setup : open) {
        json.object()
            .field("request", setup->id)
            .field("name", setup->name)
            .field("model", setup->model)
            .field("kind", setup->kind)
            .field("appVersion", setup->appVersion)
            .field("createdAt", isoText(setup->createdAt))
            .field("expiresAt", isoText(setup->expiresAt))
            .endObject();
    }
    json.endArray();
    return json.take();
}

}  // namespace zelkovanta::office
