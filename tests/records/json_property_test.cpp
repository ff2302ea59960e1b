#include "records/json_codec.h"
#include "tests/records/record_generators.h"
#include "tests/records/reference_json.h"

#include <rapidcheck.h>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::records {
namespace {

using reference::Json;

/// A document as some writer would put it down: with or without white space, in ASCII or not.
rc::Gen<std::string> writtenSomehow(const Json& json) {
    return rc::gen::element(json.dump(), json.dump(2), json.dump(-1, ' ', true), json.dump(1, '\t', true));
}

template <class Record>
void checkWrittenIsRead(const char* name) {
    EXPECT_TRUE(rc::check(std::string("what another library writes is read: ") + name, [] {
        const auto record = *reference::anyRecord<Record>();
        const auto decoded = decodeJson<Record>(*writtenSomehow(reference::write(record)));
        RC_ASSERT(decoded.has_value());
        RC_ASSERT(*decoded == record);
    }));
}

template <class Record>
void checkEncodedIsUnderstood(const char* name) {
    EXPECT_TRUE(rc::check(std::string("another library reads what is encoded: ") + name, [] {
        const auto record = *reference::anyRecord<Record>();
        const Json json = Json::parse(encodeJson(record));
        RC_ASSERT(json == reference::write(record));
    }));
}

/// Both codecs give the same record, or both give none.
template <class Record>
void assertSameVerdict(const std::string& text) {
    const reference::Parsed parsed = reference::parse(text);
    const auto decoded = decodeJson<Record>(text);
    if (parsed.verdict == reference::Parsed::Verdict::undecided)
        return;
    const auto expected =
        parsed.verdict == reference::Parsed::Verdict::json ? reference::read<Record>(parsed.document) : std::nullopt;
    RC_ASSERT(decoded.has_value() == expected.has_value());
    if (expected)
        RC_ASSERT(*decoded == *expected);
}

Json anyJson() {
    return *rc::gen::element<Json>(nullptr, true, false, 0, -1, 1.0, 0.5, "", "room", "text", Json::array(),
                                   Json::array({nullptr}), Json::array({"a"}), Json::object(), Json{{"id", "x"}},
                                   std::numeric_limits<std::int64_t>::min(), std::numeric_limits<std::uint64_t>::max());
}

/// Replaces, removes, renames or adds something at a random depth of a document.
void change(Json& json) {
    if (json.is_structured() && !json.empty() && *rc::gen::inRange(0, 4) != 0) {
        auto member = json.begin();
        std::advance(member, *rc::gen::inRange<std::ptrdiff_t>(0, static_cast<std::ptrdiff_t>(json.size())));
        if (json.is_object() && *rc::gen::inRange(0, 4) == 0) {
            const std::string key = member.key();
            const Json value = *member;
            json.erase(key);
            if (*rc::gen::arbitrary<bool>())
                json[key + "s"] = value;
        } else {
            change(*member);
        }
    } else if (json.is_object() && *rc::gen::arbitrary<bool>()) {
        json[*reference::anyText()] = anyJson();
    } else {
        json = anyJson();
    }
}

template <class Record>
void checkChangedDocuments(const char* name) {
    EXPECT_TRUE(rc::check(std::string("a changed document has one verdict: ") + name, [] {
        Json json = reference::write(*reference::anyRecord<Record>());
        const int changes = *rc::gen::inRange(1, 4);
        for (int done = 0; done < changes; ++done)
            change(json);
        assertSameVerdict<Record>(*writtenSomehow(json));
    }));
}

template <class Record>
void checkChangedBytes(const char* name) {
    EXPECT_TRUE(rc::check(std::string("changed bytes have one verdict: ") + name, [] {
        std::string text = reference::write(*reference::anyRecord<Record>()).dump();
        const int changes = *rc::gen::inRange(1, 4);
        for (int done = 0; done < changes; ++done) {
            const auto position = *rc::gen::inRange<std::size_t>(0, text.size() + 1);
            const char byte = *rc::gen::oneOf(
                rc::gen::element('"', '\\', '{', '}', '[', ']', ',', ':', '0', '1', '-', '.', 'e', 'u', ' ', '\n'),
                rc::gen::arbitrary<char>());
            switch (*rc::gen::inRange(0, 4)) {
                case 0:
                    text.insert(position, 1, byte);
                    break;
                case 1:
                    text.resize(position);
                    break;
                case 2:
                    text.erase(position, 1);
                    break;
                default:
                    text.replace(position, position < text.size() ? 1 : 0, 1, byte);
            }
        }
        assertSameVerdict<Record>(text);
    }));
}

template <class Record>
class JsonPropertiesTest : public testing::Test {};

using DecodedRecords = testing::Types<PairRedeemResponse, QrTokenResponse, PairRequestPoll, StateSnapshot, Signal,
                                      Member, Device, EmptyResponse, Accepted, APIErrorEnvelope>;
TYPED_TEST_SUITE(JsonPropertiesTest, DecodedRecords);

TYPED_TEST(JsonPropertiesTest, whatAnotherLibraryWritesIsRead) {
    checkWrittenIsRead<TypeParam>(testing::internal::GetTypeName<TypeParam>().c_str());
}

TYPED_TEST(JsonPropertiesTest, aChangedDocumentGetsTheVerdictOfAnIndependentDecoder) {
    checkChangedDocuments<TypeParam>(testing::internal::GetTypeName<TypeParam>().c_str());
}

TYPED_TEST(JsonPropertiesTest, changedBytesGetTheVerdictOfAnIndependentDecoder) {
    checkChangedBytes<TypeParam>(testing::internal::GetTypeName<TypeParam>().c_str());
}

TEST(JsonEncodingPropertiesTest, anotherLibraryReadsWhatIsEncoded) {
    checkEncodedIsUnderstood<PairRedeemRequest>("PairRedeemRequest");
    checkEncodedIsUnderstood<PairRequestBody>("PairRequestBody");
    checkEncodedIsUnderstood<CreateSignalRequest>("CreateSignalRequest");
    checkEncodedIsUnderstood<SignalActionRequest>("SignalActionRequest");
    checkEncodedIsUnderstood<MemberStatusRequest>("MemberStatusRequest");
}

TEST(JsonPropertiesOfBytesTest, noBytesAreTooStrange) {
    EXPECT_TRUE(rc::check("any bytes", [] {
        assertSameVerdict<EmptyResponse>(*rc::gen::container<std::string>(rc::gen::arbitrary<char>()));
    }));
}

}  // namespace
}  // namespace zelkovanta::records
