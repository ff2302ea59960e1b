#pragma once

#include "office/time_text.h"

#include <cstdint>
#include <optional>
#include <string>

#include <boost/describe/class.hpp>
#include <boost/describe/enum.hpp>

// Computers, and the roads by which they join. Secrets (device tokens, pairing codes, claims, sign-in codes) are kept
// only as the hexadecimal SHA-256 of their text.
namespace zelkovanta::office {

enum class DeviceRole { room, member, shared };
BOOST_DESCRIBE_ENUM(DeviceRole, room, member, shared)

struct Device {
    std::string id = {};
    std::string practiceId = {};
    DeviceRole role = DeviceRole::room;
    std::string kind = {};
    std::string name = {};
    std::string model = {};
    std::string appVersion = {};
    std::optional<std::string> locale = {};
    std::optional<std::string> memberId = {};
    std::optional<std::string> roomId = {};
    std::optional<std::string> signedInMemberId = {};
    std::optional<std::string> notificationSettings = {};  ///< a JSON object, passed on as it is
    std::string tokenHash = {};                            ///< empty until the computer has collected its token
    Timestamp registeredAt;
    std::optional<Timestamp> lastSeenAt = {};  ///< last time that its real-time connection opened
    bool operator==(const Device&) const = default;
};
BOOST_DESCRIBE_STRUCT(Device, (),
                      (id, practiceId, role, kind, name, model, appVersion, locale, memberId, roomId, signedInMemberId,
                       notificationSettings, tokenHash, registeredAt, lastSeenAt))

/// A code that an admin made, for a computer whose place is already decided.
struct PairingCode {
    std::string id = {};  ///< the hash of the eight characters without the dash
    std::string practiceId = {};
    DeviceRole role = DeviceRole::room;
    std::optional<std::string> roomId = {};
    std::optional<std::string> memberId = {};
    std::optional<std::string> computerName = {};
    Timestamp expiresAt;
    std::optional<std::string> deviceId = {};  ///< once redeemed
    bool operator==(const PairingCode&) const = default;
};
BOOST_DESCRIBE_STRUCT(PairingCode, (), (id, practiceId, role, roomId, memberId, computerName, expiresAt, deviceId))

/// A computer that shows its setup code and waits for an admin.
struct SetupRequest {
    std::string id = {};  ///< six characters that an admin can read out and type
    std::string tokenHash = {};
    std::string claimHash = {};
    std::string kind = {};
    std::string name = {};
    std::string model = {};
    std::string appVersion = {};
    std::optional<std::string> locale = {};
    Timestamp createdAt;
    Timestamp expiresAt;
    std::optional<std::string> deviceId = {};  ///< once approved
    bool operator==(const SetupRequest&) const = default;
};
BOOST_DESCRIBE_STRUCT(SetupRequest, (),
                      (id, tokenHash, claimHash, kind, name, model, appVersion, locale, createdAt, expiresAt, deviceId))

/// The rotating code with which a phone signs its owner in at a station.
struct SignInCode {
    std::string id = {};  ///< the code's hash
    std::string deviceId = {};
    Timestamp expiresAt;
    bool operator==(const SignInCode&) const = default;
};
BOOST_DESCRIBE_STRUCT(SignInCode, (), (id, deviceId, expiresAt))

struct CrashReport {
    std::string id = {};
    std::string deviceId = {};
    Timestamp receivedAt;
    std::string report = {};  ///< JSON as it came
    bool operator==(const CrashReport&) const = default;
};
BOOST_DESCRIBE_STRUCT(CrashReport, (), (id, deviceId, receivedAt, report))

/// The announced release of the desktop program, for all practices. There is at most one, with the id "current".
struct Release {
    std::string id = {};
    std::optional<std::string> macosVersion = {};  ///< with build and URL, or without both
    std::optional<std::int64_t> macosBuild = {};
    std::optional<std::string> macosUrl = {};
    std::optional<std::string> macosSha256 = {};
    std::optional<std::string> windowsVersion = {};
    bool operator==(const Release&) const = default;
};
BOOST_DESCRIBE_STRUCT(Release, (), (id, macosVersion, macosBuild, macosUrl, macosSha256, windowsVersion))

}  // namespace zelkovanta::office
