#pragma once

#include "store/settings.h"
#include "tests/store/store_test.h"

#include <expected>
#include <optional>
#include <string>
#include <utility>
#include <variant>

namespace zelkovanta::store {

inline constexpr const char* pollPath = "/pair/request/claim-1";

inline records::QrTokenResponse makeCode(std::string claimToken, std::string png = "data:image/png;base64,aW1hZ2U=") {
    return {.token = "token of " + claimToken,
            .claimToken = claimToken,
            .qrData = "zelkovanta://setup",
            .qrPng = std::move(png),
            .expiresAt = "2001-01-01T00:00:00Z"};
}

inline records::PairRedeemResponse makeRedeemed(records::DeviceRole role) {
    records::PairRedeemResponse response{.deviceToken = "token-by-code",
                                         .device = support::makeDevice(),
                                         .office = support::makeOffice("office-1"),
                                         .role = role,
                                         .room = {},
                                         .member = {}};
    if (role == records::DeviceRole::room) {
        response.device = support::makeDeviceOfRoom("room-7");
        response.room = support::makeRoom("room-7");
    } else if (role == records::DeviceRole::member) {
        response.device = support::makeDeviceOfMember("member-7");
        response.member = support::makeMember("member-7");
    }
    return response;
}

inline records::PairRequestPoll makeApproved() {
    return {.status = "approved",
            .deviceToken = "token-by-scan",
            .device = support::makeDeviceOfRoom("room-8"),
            .office = support::makeOffice("office-1"),
            .role = records::DeviceRole::room,
            .room = support::makeRoom("room-8"),
            .member = {}};
}

inline records::PairRequestPoll makePollThatIs(std::string status) {
    return {.status = std::move(status),
            .deviceToken = {},
            .device = {},
            .office = {},
            .role = {},
            .room = {},
            .member = {}};
}

/// A test of the ways into an office.
struct PairingTest : StoreTest {
    std::optional<std::expected<void, PairingFailure>> redeemed;

    void redeem(std::string code = "ABCD-1234") {
        run([this, code](AppStore& app) -> platform::Awaitable<void> {
            redeemed = co_await app.redeemPairingCode(code);
        });
    }

    bool wasCancelled() const {
        return redeemed && !*redeemed && std::holds_alternative<PairingCancelled>(redeemed->error());
    }

    std::optional<std::string> storedToken() const { return keyStore.memory.peek(deviceTokenItem()); }

    /// An unpaired computer that shows a code, before its first poll.
    void launchShowingCode() {
        launchUnpaired();
        answerWith("POST", "/pair/request", makeCode("claim-1"));
        journal.take();
    }

    /// The same with its first poll under way.
    void launchPolling() {
        launchShowingCode();
        loop.advance(2s);
        ASSERT_TRUE(openRequest("GET", pollPath));
    }
};

}  // namespace zelkovanta::store
