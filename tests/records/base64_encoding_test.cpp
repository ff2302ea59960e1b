#include "records/base64.h"

#include <rapidcheck.h>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::records {
namespace {

TEST(Base64EncodingTest, theVectorsOfTheStandardAreWritten) {
    const std::vector<std::pair<std::string, std::string>> vectors{{"", ""},
                                                                   {"f", "Zg=="},
                                                                   {"fo", "Zm8="},
                                                                   {"foo", "Zm9v"},
                                                                   {"foob", "Zm9vYg=="},
                                                                   {"fooba", "Zm9vYmE="},
                                                                   {"foobar", "Zm9vYmFy"},
                                                                   {"\xfb\xff\xbe", "+/++"}};
    for (const auto& [bytes, text] : vectors) {
        EXPECT_EQ(encodeBase64(bytes), text);
    }
}

TEST(Base64EncodingTest, bytesSurviveTheWayThereAndBack) {
    EXPECT_TRUE(rc::check([](const std::string& bytes) { RC_ASSERT(decodeBase64(encodeBase64(bytes)) == bytes); }));
}

}  // namespace
}  // namespace zelkovanta::records
