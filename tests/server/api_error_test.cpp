#include "server/api_error.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

namespace zelkovanta::server {
namespace {

using platform::TransportCause;

/// Marks what was looked up.
class Marking final : public platform::StringTable {
public:
    [[nodiscard]] std::string localized(std::string_view key) const override { return "<" + std::string{key} + ">"; }
};

class Swapping final : public platform::StringTable {
public:
    [[nodiscard]] std::string localized(std::string_view) const override { return "%@ kam mit %lld (100 %)"; }
};

std::string text(const APIError& error) {
    return localizedDescription(error, Marking{});
}

TEST(APIErrorTest, theServersSentenceBeatsTheTableAndPassesAsItIs) {
    EXPECT_EQ(text(api_error::BadStatus{409, "already_cleared", "Dr. Ito was faster."}), "Dr. Ito was faster.");
    EXPECT_EQ(text(api_error::BadStatus{500, "whatever", "Try %@ again."}), "Try %@ again.");
}

TEST(APIErrorTest, everyKnownCodeHasItsSentence) {
    const std::vector<std::pair<std::string, std::string>> sentences{
        {"invalid_code", "<That code isn't valid. Check it and try again.>"},
        {"expired_code", "<That code has expired. Generate a new one in the admin.>"},
        {"duplicate_active_signal", "<This room already has an active signal.>"},
        {"already_cleared", "<That signal was already cleared.>"},
        {"provider_off_shift", "<That doctor is off shift right now.>"},
        {"room_required", "<Pick a room first.>"},
        {"too_many_attempts", "<Too many attempts. Wait a moment and try again.>"},
        {"not_a_station", "<This device can't be signed into.>"},
        {"signin_required", "<Sign in to use this computer first.>"},
    };
    for (const auto& [code, sentence] : sentences) {
        EXPECT_EQ(text(api_error::BadStatus{400, code, std::nullopt}), sentence);
        EXPECT_EQ(text(api_error::BadStatus{400, code, ""}), sentence) << "an empty message is none";
    }
}

TEST(APIErrorTest, anyOtherCodeIsNamedWithItsStatus) {
    EXPECT_EQ(text(api_error::BadStatus{502, "http_502", std::nullopt}), "<Server error (502): http_502>");
    EXPECT_EQ(text(api_error::BadStatus{500, "http_500", ""}), "<Server error (500): http_500>");
    EXPECT_EQ(text(api_error::BadStatus{400, "Invalid_Code", std::nullopt}), "<Server error (400): Invalid_Code>");
}

TEST(APIErrorTest, formatWordsAreFilledAfterTheLookupAndOnlyOnce) {
    EXPECT_EQ(localizedDescription(api_error::BadStatus{418, "tea", std::nullopt}, Swapping{}),
              "tea kam mit 418 (100 %)");
    EXPECT_EQ(text(api_error::BadStatus{500, "%lld and %@", std::nullopt}), "<Server error (500): %lld and %@>");
}

TEST(APIErrorTest, aCooldownReadsAsItsMessage) {
    EXPECT_EQ(text(api_error::InCooldown{"Back at ten.", "2026-03-01T10:00:00Z"}), "Back at ten.");
    EXPECT_EQ(text(api_error::InCooldown{std::string{api_error::cooldownSentence}, std::nullopt}),
              "<You're on a short cooldown after being moved off shift.>");
}

TEST(APIErrorTest, theOtherCasesHaveOneSentenceEach) {
    EXPECT_EQ(text(api_error::Decoding{{"field id is missing"}}), "<Unexpected response from the server.>");
    EXPECT_EQ(text(api_error::InvalidURL{}), "<Invalid server URL.>");
}

TEST(APIErrorTest, everyCauseOfAFailedExchangeHasASentenceOfItsOwn) {
    std::set<std::string> sentences;
    const std::vector causes{
        TransportCause::noNetwork,   TransportCause::nameNotFound,       TransportCause::refused,
        TransportCause::timedOut,    TransportCause::certificateRefused, TransportCause::proxyFailed,
        TransportCause::interrupted, TransportCause::tooLarge,           TransportCause::badServerResponse,
        TransportCause::cancelled,   TransportCause::unsendable};
    for (const auto cause : causes) {
        const std::string sentence = text(api_error::Transport{{cause}});
        EXPECT_TRUE(sentence.starts_with("<") && sentence.ends_with(".>")) << sentence;
        sentences.insert(sentence);
    }
    EXPECT_EQ(sentences.size(), causes.size());
}

TEST(APIErrorTest, onlyABadStatusHasAnHttpStatus) {
    EXPECT_TRUE(isHttpStatus(api_error::BadStatus{401, "invalid_token", std::nullopt}, 401));
    EXPECT_FALSE(isHttpStatus(api_error::BadStatus{403, "invalid_token", std::nullopt}, 401));
    EXPECT_FALSE(isHttpStatus(api_error::InCooldown{"Later.", std::nullopt}, 401));
    EXPECT_FALSE(isHttpStatus(api_error::Transport{}, 0));
}

}  // namespace
}  // namespace zelkovanta::server
