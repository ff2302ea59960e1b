#include "records/json_codec.h"

#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::records {
namespace {

bool decodes(std::string_view text) {
    return decodeJson<EmptyResponse>(text).has_value();
}

/// An object whose only key is ignored.
std::string ignoring(std::string_view value) {
    return R"({"later":)" + std::string(value) + "}";
}

TEST(JsonDocumentTest, anyObjectIsAnEmptyResponse) {
    for (const char* text : {"{}", " {} ", "\t{\r\n}\n", R"({"ok":true})", R"({"":null,"a":[1,{"b":[]}]})"})
        EXPECT_TRUE(decodes(text)) << text;
}

TEST(JsonDocumentTest, whatIsNoObjectIsNoRecord) {
    for (const char* text : {"", " ", "[]", "[{}]", "null", "true", "1", "\"{}\"", "<html>", "{", "}", "{]"})
        EXPECT_FALSE(decodes(text)) << text;
    EXPECT_FALSE(decodes(std::string_view()));
}

TEST(JsonDocumentTest, whatIsIgnoredMustStillBeJson) {
    for (const char* value : {"",
                              "tru",
                              "True",
                              "nul",
                              "NaN",
                              "Infinity",
                              "undefined",
                              "'a'",
                              "\"a",
                              "\"\\x41\"",
                              "\"\\u12\"",
                              "01",
                              "+1",
                              "1.",
                              ".5",
                              "1e",
                              "1e+",
                              "-",
                              "--1",
                              "0x10",
                              "1 2",
                              "[1,]",
                              "[,1]",
                              "[1",
                              "{\"a\"}",
                              "{\"a\":}",
                              "{a:1}",
                              "{\"a\":1,}",
                              "1,",
                              "/*c*/1",
                              "\"\x01\"",
                              "\"a\nb\"",
                              "\"\\ud800\"",
                              "\"\\udc00\\ud800\"",
                              "01234567890123456789012345",
                              "12345678901234567890123.",
                              "1e99999e",
                              "-e999"})
        EXPECT_FALSE(decodes(ignoring(value))) << value;
}

TEST(JsonDocumentTest, nothingMayFollowTheDocument) {
    for (const char* text : {"{}{}", "{} x", "{},", "{}]", "{}null"})
        EXPECT_FALSE(decodes(text)) << text;
    EXPECT_FALSE(decodes(std::string_view("{}\0", 3)));
}

TEST(JsonDocumentTest, aTextMustBeUtf8WithoutAMark) {
    EXPECT_TRUE(decodes(ignoring("\"\xC3\xA4\xF0\x9F\x98\x80\"")));
    for (const char* value : {"\"\xFF\"", "\"\xC3\"", "\"\xC0\xAF\"", "\"\xED\xA0\x80\"", "\"\xF4\x90\x80\x80\""})
        EXPECT_FALSE(decodes(ignoring(value)));
    EXPECT_FALSE(decodes("\xEF\xBB\xBF{}"));
    EXPECT_FALSE(decodes(std::string_view("{\0}\0", 4)));
}

TEST(JsonDocumentTest, numbersOfAnySizeMayBeIgnored) {
    for (const std::string& value :
         {std::string("0"), std::string("-0"), std::string("9223372036854775808"), std::string("-9223372036854775809"),
          std::string("18446744073709551616"), std::string("1e400"), std::string("-1E+400"), std::string("1e-400"),
          std::string("0.5e99999"), std::string(4000, '7'), "-" + std::string(4000, '7') + ".5",
          std::string(R"(["12345678901234567890123 \" 1e999",1e999,{"1e999":12345678901234567890123}])")})
        EXPECT_TRUE(decodes(ignoring(value))) << value;
}

TEST(JsonDocumentTest, aHugeNumberDoesNotChangeTheTextsBesideIt) {
    const auto signal =
        decodeJson<Signal>(R"({"id":"12345678901234567890123","x":12345678901234567890123,"roomId":"1e999","y":1e999,)"
                           R"("typeId":"\"1e999\\","status":"-1e999","createdAt":"\\"})");
    ASSERT_TRUE(signal);
    EXPECT_EQ(signal->id, "12345678901234567890123");
    EXPECT_EQ(signal->roomId, "1e999");
    EXPECT_EQ(signal->typeId, "\"1e999\\");
    EXPECT_EQ(signal->status, "-1e999");
    EXPECT_EQ(signal->createdAt, "\\");
}

TEST(JsonDocumentTest, deepNestingIsAFailureAndNoFault) {
    EXPECT_TRUE(decodes(ignoring(std::string(900, '[') + std::string(900, ']'))));
    for (const std::size_t depth : {2'000U, 100'000U, 5'000'000U}) {
        EXPECT_FALSE(decodes(ignoring(std::string(depth, '[') + std::string(depth, ']'))));
        EXPECT_FALSE(decodes(std::string(depth, '[')));
        std::string objects;
        for (std::size_t level = 0; level < depth / 5; ++level)
            objects += "{\"a\":";
        EXPECT_FALSE(decodes(objects));
    }
}

TEST(JsonDocumentTest, aHugeTextDecodesAndASmallOneAfterIt) {
    const std::string note(std::size_t{20} << 20U, 'n');
    const auto signal = decodeJson<Signal>(
        R"({"id":"a","roomId":"b","typeId":"c","status":"d","createdAt":"e","note":")" + note + "\"}");
    ASSERT_TRUE(signal);
    EXPECT_EQ(signal->note, note);
    EXPECT_TRUE(decodes("{}"));
}

TEST(JsonDocumentTest, threadsDecodeBesideEachOther) {
    std::vector<std::thread> threads;
    std::vector<int> decoded(4, 0);
    for (std::size_t index = 0; index < decoded.size(); ++index) {
        threads.emplace_back([&count = decoded[index], index] {
            const auto expected = static_cast<std::int64_t>(index);
            for (int round = 0; round < 2'000; ++round) {
                const auto accepted = decodeJson<Accepted>(R"({"accepted":)" + std::to_string(index) + "}");
                count += accepted == Accepted{expected} ? 1 : 0;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    EXPECT_EQ(decoded, std::vector<int>(4, 2'000));
}

}  // namespace
}  // namespace zelkovanta::records
