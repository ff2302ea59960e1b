#pragma once

#include "records/requests.h"
#include "records/snapshot.h"

#include <expected>
#include <string>
#include <string_view>

/// JSON (RFC 8259) to records and back, by their descriptions.
///
/// Decoding is strict. Keys are the field names; unknown keys are ignored. A required field must be present, not null
/// and of its JSON type, an optional one may be absent or null; anything else fails the whole record and all that
/// encloses it. Nothing is coerced and no default is put in. Integers are signed 64-bit, written without fraction or
/// exponent. The text must be one valid UTF-8 JSON document.
/// Encoding leaves out fields without a value.
///
/// The functions are pure and may run on any thread.
namespace zelkovanta::records {

struct DecodingError {
    std::string reason;  ///< for a developer; holds no value of the document
    bool operator==(const DecodingError&) const = default;
};

template <class Record>
[[nodiscard]] std::expected<Record, DecodingError> decodeJson(std::string_view text);

extern template std::expected<PairRedeemResponse, DecodingError> decodeJson(std::string_view);
extern template std::expected<QrTokenResponse, DecodingError> decodeJson(std::string_view);
extern template std::expected<PairRequestPoll, DecodingError> decodeJson(std::string_view);
extern template std::expected<StateSnapshot, DecodingError> decodeJson(std::string_view);
extern template std::expected<Signal, DecodingError> decodeJson(std::string_view);
extern template std::expected<Member, DecodingError> decodeJson(std::string_view);
extern template std::expected<Device, DecodingError> decodeJson(std::string_view);
extern template std::expected<EmptyResponse, DecodingError> decodeJson(std::string_view);
extern template std::expected<Accepted, DecodingError> decodeJson(std::string_view);
extern template std::expected<APIErrorEnvelope, DecodingError> decodeJson(std::string_view);

template <class Record>
[[nodiscard]] std::string encodeJson(const Record& record);

extern template std::string encodeJson(const PairRedeemRequest&);
extern template std::string encodeJson(const PairRequestBody&);
extern template std::string encodeJson(const CreateSignalRequest&);
extern template std::string encodeJson(const SignalActionRequest&);
extern template std::string encodeJson(const MemberStatusRequest&);

}  // namespace zelkovanta::records
