#include "server/app_check_pinning.h"

#include "records/base64.h"

#include <algorithm>

namespace zelkovanta::server {

using platform::ChallengeDisposition;

namespace {

std::string spelled(const platform::PublicKeyDigest& digest) {
    return records::encodeBase64(std::string{digest.begin(), digest.end()});
}

}  // namespace

std::string appCheckToken(const platform::InformationDictionary& information) {
    return information.text("ZVTDesktopBuildSecret").value_or(std::string{});
}

std::string pinnedKey(const platform::InformationDictionary& information) {
    return information.text("ZVTPinnedSPKISHA256").value_or(std::string{});
}

ChallengeDisposition dispositionFor(const platform::AuthenticationChallenge& challenge, std::string_view pin) {
    if (pin.empty() || challenge.method != platform::AuthenticationMethod::serverTrust || !challenge.serverTrust) {
        return ChallengeDisposition::performDefaultHandling;
    }
    const bool isPinned = std::ranges::any_of(challenge.serverTrust->publicKeys,
                                              [pin](const auto& digest) { return spelled(digest) == pin; });
    return challenge.serverTrust->isTrusted && isPinned ? ChallengeDisposition::useCredential
                                                        : ChallengeDisposition::cancel;
}

ChallengeDisposition AppCheckPinningDelegate::answer(const platform::AuthenticationChallenge& challenge) const {
    return dispositionFor(challenge, pinnedKey(information_));
}

}  // namespace zelkovanta::server
