#include "records/json_codec.h"

#include "records/json_decoder.h"
#include "records/json_encoder.h"

namespace zelkovanta::records {

template <class Record>
std::expected<Record, DecodingError> decodeJson(std::string_view text) {
    const json::Document document(text);
    if (!document.isValid())
        return std::unexpected(DecodingError{document.error()});
    std::expected<Record, DecodingError> record;
    json::Failure failure;
    if (!json::decode(document.root(), *record, failure))
        record = std::unexpected(DecodingError{failure.reason()});
    return record;
}

template std::expected<PairRedeemResponse, DecodingError> decodeJson(std::string_view);
template std::expected<QrTokenResponse, DecodingError> decodeJson(std::string_view);
template std::expected<PairRequestPoll, DecodingError> decodeJson(std::string_view);
template std::expected<StateSnapshot, DecodingError> decodeJson(std::string_view);
template std::expected<Signal, DecodingError> decodeJson(std::string_view);
template std::expected<Member, DecodingError> decodeJson(std::string_view);
template std::expected<Device, DecodingError> decodeJson(std::string_view);
template std::expected<EmptyResponse, DecodingError> decodeJson(std::string_view);
template std::expected<Accepted, DecodingError> decodeJson(std::string_view);
template std::expected<APIErrorEnvelope, DecodingError> decodeJson(std::string_view);

template <class Record>
std::string encodeJson(const Record& record) {
    std::string text;
    json::encode(record, text);
    return text;
}

template std::string encodeJson(const PairRedeemRequest&);
template std::string encodeJson(const PairRequestBody&);
template std::string encodeJson(const CreateSignalRequest&);
template std::string encodeJson(const SignalActionRequest&);
template std::string encodeJson(const MemberStatusRequest&);

}  // namespace zelkovanta::records
