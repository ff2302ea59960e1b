#include "server/server_message.h"
#include "tests/fuzz/finding.h"
#include "tests/fuzz/targets.h"
#include "tests/records/reference_message.h"

namespace zelkovanta::fuzz {

void serverMessage(std::string_view input) {
    using records::reference::Parsed;
    const Parsed parsed = records::reference::parse(input);
    const auto message = server::decodeServerMessage(input);
    if (parsed.verdict == Parsed::Verdict::notJson)
        require(!message.has_value());
    if (parsed.verdict == Parsed::Verdict::json)
        require(message == records::reference::readMessage(parsed.document));
}

}  // namespace zelkovanta::fuzz
