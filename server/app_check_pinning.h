#pragma once

#include "platform/information_dictionary.h"
#include "platform/url_session_delegate.h"

#include <string>
#include <string_view>

namespace zelkovanta::server {

/// The text by which the server knows its own desktop build, sent as it stands with the two requests that create a
/// device. Empty where the build has none. Read afresh at each use.
[[nodiscard]] std::string appCheckToken(const platform::InformationDictionary& information);

/// The one key that REST servers are tied to: SHA-256 over its SubjectPublicKeyInfo, in base64. Empty where the build
/// has none, which leaves servers to the host's own verification. Read afresh at each use.
[[nodiscard]] std::string pinnedKey(const platform::InformationDictionary& information);

/// How a challenge is answered under a pin. With one, a server must be trusted by the host, and a key of its verified
/// chain (leaf, intermediate or root) must be the pinned one, compared as text: nothing is trimmed, and there is no
/// other spelling. Challenges of other kinds are none of the pin's business.
[[nodiscard]] platform::ChallengeDisposition dispositionFor(const platform::AuthenticationChallenge& challenge,
                                                            std::string_view pin);

/// Answers for the sessions of REST clients, from the pin of the moment. Has no state. `information` must outlive it.
class AppCheckPinningDelegate final : public platform::UrlSessionDelegate {
public:
    explicit AppCheckPinningDelegate(const platform::InformationDictionary& information) : information_(information) {}

    [[nodiscard]] platform::ChallengeDisposition answer(
        const platform::AuthenticationChallenge& challenge) const override;

private:
    const platform::InformationDictionary& information_;
};

}  // namespace zelkovanta::server
