#pragma once

#include <string_view>

/// What each fuzzer does with one input. A finding is an exception, or what a sanitizer stops at. The same bodies run
/// over their corpora with the ordinary tests.
namespace zelkovanta::fuzz {

/// Every record that is decoded, against an independent decoder.
void jsonCodec(std::string_view input);
/// Against an independent decoder.
void serverMessage(std::string_view input);
/// What is read is written and read again.
void serverDate(std::string_view input);
/// What parses stays as it was written and takes paths.
void url(std::string_view input);

}  // namespace zelkovanta::fuzz
