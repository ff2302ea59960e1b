#include "office/refusal.h"

#include "office/json_text.h"

#include <algorithm>
#include <array>
#include <utility>

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

Refusal withSentence(Refusal refusal) {
    constexpr std::array<std::pair<std::string_view, std::string_view>, 8> sentences = {{
        {"already_cleared", "That signal is over already."},
        {"duplicate_active_signal", "That room has the same signal already."},
        {"provider_off_shift", "Somebody who is called is off shift."},
        {"not_a_station", "Nobody can sign in at that computer."},
        {"invalid_code", "There is no such code."},
        {"expired_code", "That code or request has lapsed."},
        {"in_cooldown", "That member is in a cooldown."},
        {"too_many_attempts", "Too many attempts. Wait a moment and try again."},
    }};
    if (refusal.message.empty()) {
        const auto found = std::ranges::find(sentences, std::string_view(refusal.code),
                                             &std::pair<std::string_view, std::string_view>::first);
        refusal.message = found == sentences.end() ? "The office refused: " + refusal.code + "." : found->second;
    }
    return refusal;
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
Refusal unknownProgram() {
    return {403, "unknown_program", "This office pairs only with programs that it knows.", std::nullopt};
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
