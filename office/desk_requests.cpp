#include "office/desk.h"
#include "office/secrets.h"
#include "office/wire.h"

#include <algorithm>

namespace zelkovanta::office {
namespace {

constexpr std::string_view root = "/api/v1/";
constexpr std::size_t mostCrashReports = 100;

Refusal wrongMethod() {
    return {405, "method_not_allowed", "This address does not take that kind of request.", std::nullopt};
}

Refusal unknownAddress() {
    return refusals::notFound("not_found", "There is nothing at this address.");
}

/// What stands behind `prefix` in `path`, if it is one path element.
std::optional<std::string_view> elementBehind(std::string_view path, std::string_view prefix) {
    if (!path.starts_with(prefix)) {
        return std::nullopt;
    }
    path.remove_prefix(prefix.size());
    return path.empty() || path.contains('/') ? std::nullopt : std::optional(path);
}

std::expected<std::string, Refusal> emptied(std::expected<std::string, Refusal> outcome) {
    if (outcome) {
        *outcome = "{}";
    }
    return outcome;
}

}  // namespace

struct Office::Desk::Call {
    const Request& request;
    std::string_view path;  ///< below the root, without a query
    Timestamp now;
};

Office::Desk::Desk(Storage& storage, State state, RandomBytes& random, QrPicture qrPicture)
    : ledger_(storage, std::move(state)), random_(random), qrPicture_(std::move(qrPicture)) {}

Answer Office::Desk::finish(Outcome outcome, int status) {
    if (!outcome) {
        ledger_.undo();
        effects_.clear();
        return refuse(outcome.error());
    }
    if (!ledger_.commit()) {
        effects_.clear();
        return refuse({500, "storage_failed", "The office could not keep this. Try again.", std::nullopt});
    }
    return {.status = status, .body = std::move(*outcome), .route = {}, .effects = std::exchange(effects_, {})};
}

const Device* Office::Desk::deviceOfToken(std::string_view token) const {
    return token.empty() ? nullptr : ledger_.deviceByTokenHash(secretHash(token));
}

Answer Office::Desk::handle(const Request& request, Timestamp now) {
    std::string_view path = request.path;
    path = path.substr(0, path.find('?'));
    if (!path.starts_with(root)) {
        Answer answer = refuse(unknownAddress());
        answer.route = "unknown";
        return answer;
    }
    return route({request, path.substr(root.size()), now});
}

Answer Office::Desk::route(const Call& call) {
    const auto answered = [](std::string_view route, Answer answer) {
        answer.route = std::string(root) + std::string(route);
        return answer;
    };
    const auto with = [&](std::string_view method, auto work) -> Answer {
        return call.request.method == method ? finish(work()) : refuse(wrongMethod());
    };

    if (call.path == "pair/redeem") {
        return answered(call.path, with("POST", [&] { return redeem(call.request, call.now); }));
    }
    if (call.path == "pair/request") {
        return answered(call.path, with("POST", [&] { return requestSetup(call.request, call.now); }));
    }
    if (const auto claimToken = elementBehind(call.path, "pair/request/")) {
        return answered("pair/request/:claimToken", with("GET", [&] { return pollSetup(*claimToken, call.now); }));
    }
    const Device* device = deviceOfToken(call.request.token);
    if (device == nullptr) {
        return answered("any", refuse(refusals::invalidToken()));
    }
    return routePaired(call, Device(*device));
}

Answer Office::Desk::routePaired(const Call& call, const Device& device) {
    const auto on = [&](std::string_view route, std::string_view method, auto work, int status = 200) {
        Answer answer = call.request.method == method ? finish(work(), status) : refuse(wrongMethod());
        answer.route = std::string(root) + std::string(route);
        return answer;
    };
    const std::string_view body = call.request.body;

    if (call.path == "state") {
        return on("state", "GET", [&]() -> Outcome { return snapshot(device); });
    }
    if (call.path == "signals") {
        return on("signals", "POST", [&] { return createSignal(device, body, call.now); }, 201);
    }
    if (const auto id = elementBehind(call.path, "signals/")) {
        return on("signals/:id", "PATCH", [&] { return actOnSignal(device, *id, body, call.now); });
    }
    if (call.path == "members/me/status") {
        return on(call.path, "POST", [&] { return setStatus(device, body, call.now); });
    }
    if (call.path == "devices/me/signin-qr") {
        return on(call.path, "POST", [&] { return makeSignInCode(device, call.now); });
    }
    if (call.path == "devices/me/signout") {
        return on(call.path, "POST", [&] { return emptied(signOut(device)); });
    }
    if (call.path == "devices/me") {
        return on(call.path, "DELETE", [&] { return emptied(revoke(device)); });
    }
    if (call.path == "crash-reports") {
        return on(call.path, "POST", [&] { return acceptCrashReports(device, body, call.now); });
    }
    Answer answer = refuse(unknownAddress());
    answer.route = std::string(root) + "unknown";
    return answer;
}

SocketAnswer Office::Desk::socketOpened(std::string_view token, Timestamp now) {
    const Device* found = deviceOfToken(token);
    if (found == nullptr) {
        return {.status = 401, .body = refuse(refusals::invalidToken()).body, .deviceId = {}, .frame = {}};
    }
    Device device = *found;
    device.lastSeenAt = now;
    ledger_.put(device);
    // A time that cannot be kept is no reason to turn the computer away; the ledger has the old one back then.
    (void)ledger_.commit();
    const Device& kept = *ledger_.find<Device>(device.id);
    return {.status = 101, .body = {}, .deviceId = kept.id, .frame = snapshotFrame(snapshot(kept))};
}

Office::Desk::Outcome Office::Desk::acceptCrashReports(const Device& device, std::string_view body, Timestamp now) {
    RequestBody in(body);
    const std::vector<std::string> reports = in.requiredObjects("reports", mostCrashReports);
    if (in.fault()) {
        return std::unexpected(*in.fault());
    }
    for (const std::string& report : reports) {
        ledger_.put(CrashReport{unusedIdentifier<CrashReport>("crash_"), device.id, now, report});
    }
    while (state().all<CrashReport>().size() > mostCrashReports) {
        const auto& kept = state().all<CrashReport>();
        const auto oldest =
            std::ranges::min_element(kept, {}, [](const auto& entry) { return entry.second.receivedAt; });
        ledger_.erase<CrashReport>(std::string(oldest->first));
    }
    JsonText json;
    json.object().field("accepted", static_cast<std::int64_t>(reports.size())).endObject();
    return json.take();
}

}  // namespace zelkovanta::office
