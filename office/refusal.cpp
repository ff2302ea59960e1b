#include "office/refusal.h"

#include "office/json_text.h"

namespace zelkovanta::office {

Answer refuse(const Refusal& refusal) {
    JsonText json;
    json.object().field("error", refusal.code);
    if (!refusal.message.empty()) {
        json.field("message", refusal.message);
    }
    if (refusal.cooldownUntil) {
        json.field("cooldownUntil", isoText(*refusal.cooldownUntil));
    }
    json.endObject();
    return {.status = refusal.status, .body = json.take(), .route = {}, .effects = {}};
}

namespace refusals {

Refusal badRequest(std::string message) {
    return {400, "bad_request", std::move(message), std::nullopt};
}
Refusal notFound(std::string code, std::string message) {
    return {404, std::move(code), std::move(message), std::nullopt};
}
Refusal conflict(std::string code, std::string message) {
    return {409, std::move(code), std::move(message), std::nullopt};
}
Refusal invalidToken() {
    return {401, "invalid_token", "This computer is not linked to an office.", std::nullopt};
}
Refusal invalidCode() {
    return {404, "invalid_code", {}, std::nullopt};
}
Refusal expiredCode() {
    return {410, "expired_code", {}, std::nullopt};
}
Refusal tooManyAttempts() {
    return {429, "too_many_attempts", {}, std::nullopt};
}
Refusal signInRequired() {
    return {403, "signin_required", {}, std::nullopt};
}
Refusal notAStation() {
    return {409, "not_a_station", {}, std::nullopt};
}

}  // namespace refusals
}  // namespace zelkovanta::office
