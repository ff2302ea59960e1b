#include "server/app_check_pinning.h"

#include "platform/simulated/fixed_information.h"

#include <gtest/gtest.h>

namespace zelkovanta::server {
namespace {

using platform::AuthenticationChallenge;
using platform::AuthenticationMethod;
using platform::ChallengeDisposition;
using platform::PublicKeyDigest;
using platform::ServerTrust;

constexpr const char* pinEntry = "ZVTPinnedSPKISHA256";

/// A digest whose bytes count up from `first`.
PublicKeyDigest digestFrom(std::uint8_t first) {
    PublicKeyDigest digest{};
    for (auto& byte : digest) {
        byte = first++;
    }
    return digest;
}

// As another tool writes the 32 bytes that count up from 0, 32 and 224.
constexpr const char* leafPin = "AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8=";
constexpr const char* intermediatePin = "ICEiIyQlJicoKSorLC0uLzAxMjM0NTY3ODk6Ozw9Pj8=";
constexpr const char* rootPin = "4OHi4+Tl5ufo6err7O3u7/Dx8vP09fb3+Pn6+/z9/v8=";

AuthenticationChallenge trusted(std::vector<PublicKeyDigest> keys = {digestFrom(0), digestFrom(32), digestFrom(224)}) {
    return {.method = AuthenticationMethod::serverTrust,
            .serverTrust = ServerTrust{.isTrusted = true, .publicKeys = std::move(keys)}};
}

TEST(AppCheckPinningTest, aPinOfAnyKeyOfTheChainIsAccepted) {
    EXPECT_EQ(dispositionFor(trusted(), leafPin), ChallengeDisposition::useCredential);
    EXPECT_EQ(dispositionFor(trusted(), intermediatePin), ChallengeDisposition::useCredential);
    EXPECT_EQ(dispositionFor(trusted(), rootPin), ChallengeDisposition::useCredential);
}

TEST(AppCheckPinningTest, aChainWithoutThePinnedKeyIsCancelled) {
    EXPECT_EQ(dispositionFor(trusted({digestFrom(1)}), leafPin), ChallengeDisposition::cancel);
    EXPECT_EQ(dispositionFor(trusted({}), leafPin), ChallengeDisposition::cancel);
}

TEST(AppCheckPinningTest, aServerThatTheHostDoesNotTrustIsCancelledWhateverItsKeys) {
    auto challenge = trusted();
    challenge.serverTrust->isTrusted = false;
    EXPECT_EQ(dispositionFor(challenge, leafPin), ChallengeDisposition::cancel);
    EXPECT_EQ(dispositionFor(challenge, "other"), ChallengeDisposition::cancel);
}

TEST(AppCheckPinningTest, anEmptyPinLeavesEverythingToTheHost) {
    auto untrusted = trusted();
    untrusted.serverTrust->isTrusted = false;
    EXPECT_EQ(dispositionFor(trusted(), ""), ChallengeDisposition::performDefaultHandling);
    EXPECT_EQ(dispositionFor(untrusted, ""), ChallengeDisposition::performDefaultHandling);
}

TEST(AppCheckPinningTest, otherChallengesAreLeftToTheHost) {
    EXPECT_EQ(dispositionFor({.method = AuthenticationMethod::clientCertificate, .serverTrust = {}}, leafPin),
              ChallengeDisposition::performDefaultHandling);
    auto strange = trusted({});
    strange.method = AuthenticationMethod::clientCertificate;
    EXPECT_EQ(dispositionFor(strange, leafPin), ChallengeDisposition::performDefaultHandling);
    EXPECT_EQ(dispositionFor({.method = AuthenticationMethod::serverTrust, .serverTrust = {}}, leafPin),
              ChallengeDisposition::performDefaultHandling);
}

TEST(AppCheckPinningTest, thePinIsComparedAsItStands) {
    const std::string pin = rootPin;
    std::string lowerCase = pin;
    lowerCase[1] = 'h';
    std::string unusedBits = pin;
    unusedBits[pin.size() - 2] = '9';
    std::string addressAlphabet = pin;
    addressAlphabet[addressAlphabet.find('+')] = '-';
    for (const std::string& wrong :
         {pin + " ", " " + pin, pin + "\n", "\t" + pin, pin.substr(0, pin.size() - 1), lowerCase, unusedBits,
          addressAlphabet, std::string{"e0e1e2e3e4e5e6e7e8e9eaebecedeeeff0f1f2f3f4f5f6f7f8f9fafbfcfdfeff"},
          pin + leafPin, pin + "," + leafPin, std::string{" "}, pin + std::string(1, '\0')}) {
        EXPECT_EQ(dispositionFor(trusted(), wrong), ChallengeDisposition::cancel) << wrong;
    }
}

TEST(AppCheckPinningTest, theDelegateReadsThePinAtEachChallenge) {
    platform::simulated::FixedInformation information;
    const AppCheckPinningDelegate delegate(information);
    EXPECT_EQ(delegate.answer(trusted()), ChallengeDisposition::performDefaultHandling);
    information.set(pinEntry, leafPin);
    EXPECT_EQ(delegate.answer(trusted()), ChallengeDisposition::useCredential);
    information.set(pinEntry, "other");
    EXPECT_EQ(delegate.answer(trusted()), ChallengeDisposition::cancel);
    information.remove(pinEntry);
    EXPECT_EQ(delegate.answer(trusted()), ChallengeDisposition::performDefaultHandling);
}

TEST(AppCheckPinningTest, theTokenIsTheEntryAsItStandsAndEmptyWithoutOne) {
    platform::simulated::FixedInformation information;
    EXPECT_EQ(appCheckToken(information), "");
    information.set("ZVTDesktopBuildSecret", " opaque=text ");
    EXPECT_EQ(appCheckToken(information), " opaque=text ");
    information.remove("ZVTDesktopBuildSecret");
    EXPECT_EQ(appCheckToken(information), "");
}

}  // namespace
}  // namespace zelkovanta::server
