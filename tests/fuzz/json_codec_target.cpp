#include "records/json_codec.h"
#include "tests/fuzz/finding.h"
#include "tests/fuzz/targets.h"
#include "tests/records/reference_json.h"

namespace zelkovanta::fuzz {
namespace {

using records::reference::Parsed;

template <class Record>
void compare(std::string_view input, const Parsed& parsed) {
    const auto decoded = records::decodeJson<Record>(input);
    require(decoded || !decoded.error().reason.empty());
    if (parsed.verdict == Parsed::Verdict::notJson)
        require(!decoded);
    if (parsed.verdict == Parsed::Verdict::json) {
        const auto expected = records::reference::read<Record>(parsed.document);
        require(decoded.has_value() == expected.has_value());
        require(!expected || *decoded == *expected);
    }
}

}  // namespace

void jsonCodec(std::string_view input) {
    const Parsed parsed = records::reference::parse(input);
    compare<records::PairRedeemResponse>(input, parsed);
    compare<records::QrTokenResponse>(input, parsed);
    compare<records::PairRequestPoll>(input, parsed);
    compare<records::StateSnapshot>(input, parsed);
    compare<records::Signal>(input, parsed);
    compare<records::Member>(input, parsed);
    compare<records::Device>(input, parsed);
    compare<records::EmptyResponse>(input, parsed);
    compare<records::Accepted>(input, parsed);
    compare<records::APIErrorEnvelope>(input, parsed);

    // The input as a text of its own: what is encoded is a document, and says the same where the input is UTF-8.
    records::CreateSignalRequest request;
    request.note = input;
    const Parsed encoded = records::reference::parse(records::encodeJson(request));
    require(encoded.verdict == Parsed::Verdict::json);
    const std::string note = encoded.document.at("note");
    require(note == input || note.find("\uFFFD") != std::string::npos);
}

}  // namespace zelkovanta::fuzz
