#include "tests/fuzz/targets.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include <gtest/gtest.h>

namespace zelkovanta::fuzz {
namespace {

/// Runs `body` over every file of a corpus, and over its beginnings, which are rarely whole.
void runOver(const char* corpus, void (*body)(std::string_view)) {
    std::size_t inputs = 0;
    for (const auto& file : std::filesystem::directory_iterator(std::filesystem::path(ZELKOVANTA_CORPORA) / corpus)) {
        std::ifstream stream(file.path(), std::ios::binary);
        const std::string input{std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
        for (std::size_t length = 0; length <= input.size(); length += 1 + input.size() / 16)
            ASSERT_NO_THROW(body(std::string_view(input).substr(0, length))) << file.path() << " " << length;
        ASSERT_NO_THROW(body(input)) << file.path();
        ++inputs;
    }
    EXPECT_GE(inputs, 5U);
}

TEST(CorpusTest, jsonCodecHolds) {
    runOver("json_codec", jsonCodec);
}
TEST(CorpusTest, serverMessageHolds) {
    runOver("server_message", serverMessage);
}
TEST(CorpusTest, serverDateHolds) {
    runOver("server_date", serverDate);
}
TEST(CorpusTest, urlHolds) {
    runOver("url", url);
}

}  // namespace
}  // namespace zelkovanta::fuzz
