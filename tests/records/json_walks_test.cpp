#include "records/json_codec.h"
#include "tests/records/full_records.h"
#include "tests/records/reference_json.h"

#include <cstddef>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::records {
namespace {

using reference::Json;

/// Every path to a member of an object or an element of an array in a document.
void collectPaths(const Json& json, const Json::json_pointer& here, std::vector<Json::json_pointer>& paths) {
    if (json.is_object()) {
        for (const auto& [key, value] : json.items()) {
            paths.push_back(here / key);
            collectPaths(value, here / key, paths);
        }
    } else if (json.is_array()) {
        for (std::size_t index = 0; index < json.size(); ++index) {
            paths.push_back(here / index);
            collectPaths(json[index], here / index, paths);
        }
    }
}

std::vector<Json::json_pointer> pathsOf(const Json& json, std::size_t least) {
    std::vector<Json::json_pointer> paths;
    collectPaths(json, Json::json_pointer(), paths);
    EXPECT_GE(paths.size(), least);
    return paths;
}

/// The codec says of a changed document what the lists of fields say; no change of a value goes unseen.
template <class Record>
void expectJudgedAlike(const Json& json, const Record& whole, const std::string& where) {
    const auto expected = reference::read<Record>(json);
    const auto decoded = decodeJson<Record>(json.dump());
    ASSERT_EQ(decoded.has_value(), expected.has_value()) << where;
    if (!decoded) {
        return;
    }
    EXPECT_EQ(*decoded, *expected) << where;
    if (json == reference::write(whole)) {
        EXPECT_EQ(*decoded, whole) << where;
    } else {
        EXPECT_NE(*decoded, whole) << where;
    }
}

template <class Record>
void walkThroughAbsence(const Record& whole, std::size_t leastPaths) {
    const Json json = reference::write(whole);
    for (const auto& path : pathsOf(json, leastPaths)) {
        if (json.at(path.parent_pointer()).is_object()) {
            Json without = json;
            without.at(path.parent_pointer()).erase(path.back());
            expectJudgedAlike(without, whole, path.to_string() + " absent");
        }
        Json null = json;
        null.at(path) = nullptr;
        expectJudgedAlike(null, whole, path.to_string() + " null");
    }
}

template <class Record>
void walkThroughOtherTypes(const Record& whole, int leastFailures) {
    const Json json = reference::write(whole);
    const std::vector<Json> others{"text", "true", "1", true, false, 0, 1, 1.0, 1.5, Json::array(), Json::object()};
    int failures = 0;
    for (const auto& path : pathsOf(json, 1)) {
        for (const Json& other : others) {
            Json changed = json;
            changed.at(path) = other;
            failures += reference::read<Record>(changed) ? 0 : 1;
            expectJudgedAlike(changed, whole, path.to_string() + " " + other.dump());
        }
    }
    EXPECT_GE(failures, leastFailures);
}

template <class Record>
void expectThatItArrives(const Record& whole) {
    const auto decoded = decodeJson<Record>(reference::write(whole).dump());
    ASSERT_TRUE(decoded) << decoded.error().reason;
    EXPECT_EQ(*decoded, whole);
}

TEST(JsonWalksTest, everyFieldOfEveryRecordArrives) {
    expectThatItArrives(reference::fullSnapshot());
    expectThatItArrives(reference::fullRedeemResponse());
    expectThatItArrives(reference::fullPoll());
    expectThatItArrives(reference::fullQrToken());
    expectThatItArrives(reference::fullErrorEnvelope());
}

TEST(JsonWalksTest, everyFieldIsRequiredOrOptionalAsItsRecordSays) {
    walkThroughAbsence(reference::fullSnapshot(), 80);
    walkThroughAbsence(reference::fullRedeemResponse(), 50);
    walkThroughAbsence(reference::fullPoll(), 50);
    walkThroughAbsence(reference::fullQrToken(), 5);
    walkThroughAbsence(reference::fullErrorEnvelope(), 3);
}

TEST(JsonWalksTest, aValueOfAnotherTypeFailsTheWhole) {
    walkThroughOtherTypes(reference::fullSnapshot(), 500);
    walkThroughOtherTypes(reference::fullRedeemResponse(), 300);
    walkThroughOtherTypes(reference::fullPoll(), 300);
    walkThroughOtherTypes(reference::fullQrToken(), 40);
    walkThroughOtherTypes(reference::fullErrorEnvelope(), 24);
}

}  // namespace
}  // namespace zelkovanta::records
