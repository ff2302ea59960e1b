#pragma once

#include "office/exchange.h"
#include "office/time_text.h"

#include <optional>
#include <string>
#include <string_view>

namespace zelkovanta::office {

/// Why a request is not done.
struct Refusal {
    int status = 400;
    std::string code;
    /// A sentence for the person. Empty where the code has well-known words of its own.
    std::string message;
    std::optional<Timestamp> cooldownUntil;
};

/// The error envelope.
[[nodiscard]] Answer refuse(const Refusal& refusal);

/// With a sentence in any case. Codes for which every computer has words of its own come to an admin with these.
[[nodiscard]] Refusal withSentence(Refusal refusal);

namespace refusals {
[[nodiscard]] Refusal badRequest(std::string message);
[[nodiscard]] Refusal notFound(std::string code, std::string message);
[[nodiscard]] Refusal conflict(std::string code, std::string message);
[[nodiscard]] Refusal invalidToken();
[[nodiscard]] Refusal unknownProgram();
[[nodiscard]] Refusal invalidCode();
[[nodiscard]] Refusal expiredCode();
[[nodiscard]] Refusal tooManyAttempts();
[[nodiscard]] Refusal signInRequired();
[[nodiscard]] Refusal notAStation();
}  // namespace refusals

}  // namespace zelkovanta::office
