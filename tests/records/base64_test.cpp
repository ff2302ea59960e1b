#include "records/base64.h"

#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <gtest/gtest.h>

namespace zelkovanta::records {
namespace {

using namespace std::string_view_literals;

/// RFC 4648, section 10.
constexpr std::pair<std::string_view, std::string_view> vectors[] = {
    {"", ""},
    {"f", "Zg=="},
    {"fo", "Zm8="},
    {"foo", "Zm9v"},
    {"foob", "Zm9vYg=="},
    {"fooba", "Zm9vYmE="},
    {"foobar", "Zm9vYmFy"},
};

TEST(Base64Test, theVectorsOfTheStandardAreDecoded) {
    for (const auto& [bytes, text] : vectors) {
        EXPECT_EQ(decodeBase64(text), std::string{bytes}) << text;
    }
}

TEST(Base64Test, everyCharacterOfTheAlphabetHasItsValue) {
    EXPECT_EQ(
        decodeBase64("ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/"),
        std::string(
            "\x00\x10\x83\x10\x51\x87\x20\x92\x8b\x30\xd3\x8f\x41\x14\x93\x51\x55\x97\x61\x96\x9b\x71\xd7\x9f"
            "\x82\x18\xa3\x92\x59\xa7\xa2\x9a\xab\xb2\xdb\xaf\xc3\x1c\xb3\xd3\x5d\xb7\xe3\x9e\xbb\xf3\xdf\xbf"sv));
}

TEST(Base64Test, whatIsNotInThatFormIsRefusedWhole) {
    for (const std::string_view text : {
             "A===",       "====",         "=",
             "==",         "AB=",  // padding of nothing, or too short
             "A",          "AB",           "ABC",
             "ABCDE",  // a length that is no form's
             "A=BC",       "AB=C",         "=ABC",
             "Zg==Zm8=",   "AB==CDEF",              // padding inside
             "Zm-_",       "ab_d",         "ab-d",  // the alphabet for URLs
             "Zm 9",       " Zm9v",        "Zm9v    ",
             "Zm9v\n",     "Zm9v\r\n\r\n",  // white space, line ends
             "Zm9v\nZm9v", "\tZm9",         //
             "Zm9\x80",    "\xffZm9",      "Zm\xc3\xa4",
             "Zg=\xbd",  // beyond ASCII
             "Zg==x",      "Zg==xxxx",     "Zg== ",
             "Zm8=\n",  // text behind the padding
             "Zm9*",       "Zm9,",         "base64,aW1hZ2U=",
         }) {
        EXPECT_EQ(decodeBase64(text), std::nullopt) << testing::PrintToString(std::string{text});
    }
    EXPECT_EQ(decodeBase64("Zm9\0"sv), std::nullopt);
}

}  // namespace
}  // namespace zelkovanta::records
