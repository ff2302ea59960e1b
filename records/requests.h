#pragma once

#include "records/device_role.h"
#include "records/office.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <boost/describe/class.hpp>

/// Records of the REST interface. A field without a value is left out when encoding; no request carries a null.
namespace zelkovanta::records {

/// How this computer introduces itself when it is paired.
struct PairDeviceInfo {
    std::string kind;
    std::string name;
    std::string model;
    std::string appVersion;
    std::optional<std::string> locale;  ///< BCP 47
    bool operator==(const PairDeviceInfo&) const = default;
};
BOOST_DESCRIBE_STRUCT(PairDeviceInfo, (), (kind, name, model, appVersion, locale))

struct PairRedeemRequest {
    std::string code;
    PairDeviceInfo device;
    bool operator==(const PairRedeemRequest&) const = default;
};
BOOST_DESCRIBE_STRUCT(PairRedeemRequest, (), (code, device))

struct PairRequestBody {
    PairDeviceInfo device;
    bool operator==(const PairRequestBody&) const = default;
};
BOOST_DESCRIBE_STRUCT(PairRequestBody, (), (device))

struct PairRedeemResponse {
    std::string deviceToken;
    Device device;
    Office office;
    DeviceRole role = DeviceRole::room;
    std::optional<Room> room;      ///< of a room computer
    std::optional<Member> member;  ///< of a personal computer
    bool operator==(const PairRedeemResponse&) const = default;
};
BOOST_DESCRIBE_STRUCT(PairRedeemResponse, (), (deviceToken, device, office, role, room, member))

/// A code to be scanned: for setting up this computer, or for signing in at it.
struct QrTokenResponse {
    std::string token;
    std::optional<std::string> claimToken;
    std::string qrData;
    std::string qrPng;  ///< a data URL
    std::string expiresAt;
    bool operator==(const QrTokenResponse&) const = default;
};
BOOST_DESCRIBE_STRUCT(QrTokenResponse, (), (token, claimToken, qrData, qrPng, expiresAt))

/// One answer to polling a setup request. Every status but "approved" means not yet.
struct PairRequestPoll {
    std::string status;
    std::optional<std::string> deviceToken;
    std::optional<Device> device;
    std::optional<Office> office;
    std::optional<DeviceRole> role;
    std::optional<Room> room;
    std::optional<Member> member;
    bool operator==(const PairRequestPoll&) const = default;
};
BOOST_DESCRIBE_STRUCT(PairRequestPoll, (), (status, deviceToken, device, office, role, room, member))

struct CreateSignalRequest {
    std::optional<std::string> roomId;
    std::optional<std::string> providerId;
    std::optional<std::vector<std::string>> providerIds;
    std::optional<std::string> toDepartment;
    std::string typeId;
    std::string note;
    bool operator==(const CreateSignalRequest&) const = default;
};
BOOST_DESCRIBE_STRUCT(CreateSignalRequest, (), (roomId, providerId, providerIds, toDepartment, typeId, note))

struct SignalActionRequest {
    std::string action;  ///< one of `signal_action`
    bool operator==(const SignalActionRequest&) const = default;
};
BOOST_DESCRIBE_STRUCT(SignalActionRequest, (), (action))

struct MemberStatusRequest {
    std::string status;
    bool operator==(const MemberStatusRequest&) const = default;
};
BOOST_DESCRIBE_STRUCT(MemberStatusRequest, (), (status))

/// The body of every failure that the server itself writes.
struct APIErrorEnvelope {
    std::string error;
    std::optional<std::string> message;
    std::optional<std::string> cooldownUntil;
    bool operator==(const APIErrorEnvelope&) const = default;
};
BOOST_DESCRIBE_STRUCT(APIErrorEnvelope, (), (error, message, cooldownUntil))

/// Success without content.
struct EmptyResponse {
    bool operator==(const EmptyResponse&) const = default;
};
BOOST_DESCRIBE_STRUCT(EmptyResponse, (), ())

struct Accepted {
    std::int64_t accepted = 0;
    bool operator==(const Accepted&) const = default;
};
BOOST_DESCRIBE_STRUCT(Accepted, (), (accepted))

}  // namespace zelkovanta::records
