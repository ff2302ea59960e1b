#include "alerts/notification_service.h"
#include "platform/simulated/simulated_notification_center.h"
#include "records/json_codec.h"
#include "tests/alerts/alert_records.h"
#include "tests/support/counting_random.h"

#include <cstddef>
#include <memory>
#include <random>
#include <string>
#include <unordered_set>
#include <vector>

#include <gtest/gtest.h>

// Names and notes are typed by people, and identifiers come from a server: whatever is in them goes through as it is,
// and never becomes markup, a pattern, another identifier or another button.
namespace zelkovanta::alerts {
namespace {

using platform::simulated::EventLoop;

const std::vector<std::string> hostile{
    "",
    " ",
    "<b>bold</b> & <img src='http://example/x.png'/>",
    "</body>]]>&amp;&#x3C;",
    "%@ %lld %s %n %1 {room}",
    std::string{"nul\0in the middle", 17},
    "line\nbreak\r\n\ttab\x1b[31m\x07",
    "\u202Eright to left\u2066\u2069\u200F",
    "zero\u200Bwidth\uFEFF",
    "e\u0301\u0323\u0300\u0489\u0489\u0489",
    "👩🏽‍⚕️🏳️‍🌈",
    " · ",
    "zelkovanta.signal.",
    "zelkovanta.signal.s",
    "ONMYWAY",
    "READY_SIGNAL",
    "../../../etc/passwd",
    "'; DROP TABLE signals; --",
    "\xff\xfe\x80",  // no UTF-8
    "\xed\xa0\x80",  // a surrogate
    std::string(1 << 20, 'x'),
};

struct HostileTexts : testing::Test {
    EventLoop loop;
    EventLoop::Thread& main = loop.makeThread();
    support::CountingRandom random;
    platform::KeysAsTexts texts;
    platform::simulated::SimulatedNotificationCenter center{loop};
    std::shared_ptr<NotificationService> service =
        NotificationService::start({.main = main.executor(), .center = center, .random = random, .strings = texts});
};

struct Texts {
    std::string id, roomId, roomName, memberId, requesterName, label, note;
};

/// Two of them, one after the other; the long one, which makes it slow, is tried on its own.
std::string anyText(std::mt19937& chance) {
    const auto pick = [&chance] {
        return hostile[std::uniform_int_distribution<std::size_t>{0, hostile.size() - 2}(chance)];
    };
    const std::string first = pick();
    return first + pick();
}

/// Posts a signal with these texts, takes it back, and tells what was shown meanwhile.
void expectShownLiterally(HostileTexts& test, const Texts& given) {
    auto state = stateOfMember();
    state.rooms = {{.id = given.roomId, .name = given.roomName, .beaconUuid = {}, .active = {}}};
    state.members.front().id = given.memberId;
    state.members.front().name = "not shown";
    state.device->memberId = given.memberId;
    const std::string requesterId = given.memberId + "x";
    state.members[1].id = requesterId;
    state.members[1].name = given.requesterName;
    state.signalTypes.front().label = given.label;
    records::Signal signal = support::makeSignalTo(given.memberId, given.id);
    signal.roomId = given.roomId;
    signal.requesterId = requesterId;
    signal.note = given.note;

    test.service->notifyNewSignal(state, signal);
    const std::vector<std::string_view> open{given.id};
    test.service->reconcile(open, given.memberId);
    test.loop.runReady();
    ASSERT_EQ(test.center.delivered().size(), 1U);
    const auto& [identifier, request] = *test.center.delivered().begin();
    EXPECT_EQ(identifier, "zelkovanta.signal." + given.id);
    const auto& content = request->content;
    EXPECT_EQ(content.title, given.roomName + " · " + given.label);
    const std::string& name = given.requesterName;
    const std::string& note = given.note;
    const std::string both = name + (name.empty() || note.empty() ? "" : " · ") + note;
    EXPECT_EQ(content.body, both.empty() ? given.label : both);
    EXPECT_EQ(content.threadIdentifier, given.roomId);
    EXPECT_EQ(content.categoryIdentifier, "READY_SIGNAL");
    EXPECT_EQ(content.userInfo, (platform::NotificationUserInfo{{"signalId", given.id}, {"memberId", given.memberId}}));
    test.service->reconcile({}, given.memberId);
    test.loop.runReady();
    ASSERT_TRUE(test.center.delivered().empty());
}

TEST_F(HostileTexts, areShownAsTheyAreInEveryPlace) {
    for (const std::string& text : hostile) {
        expectShownLiterally(*this, {text, text, text, text, text, text, text});
    }
}

TEST_F(HostileTexts, inTenThousandCombinationsAreShownAsTheyAre) {
    std::mt19937 chance(6);
    std::unordered_set<std::string> rounds;
    const auto any = [&chance] { return anyText(chance); };
    for (int round = 0; round < 10'000; ++round) {
        const std::string id = any();
        const std::string roomId = any();
        const std::string roomName = any();
        const std::string memberId = any();
        const std::string requesterName = any();
        const std::string label = any();
        const std::string note = any();
        expectShownLiterally(*this, {id, roomId, roomName, memberId, requesterName, label, note});
        ASSERT_FALSE(HasFailure()) << "round " << round;
        rounds.insert(id + roomId + roomName + memberId + requesterName + label + note);
    }
    EXPECT_EQ(rounds.size(), 10'000U);
}

TEST_F(HostileTexts, inNoticesAreShownAsTheyAre) {
    for (const std::string& text : hostile) {
        center.clear();
        service->postOnTheWay(text, text);
        loop.runReady();
        ASSERT_EQ(center.delivered().size(), 1U);
        EXPECT_EQ(center.delivered().begin()->second->content.title, text + " is on the way");
        EXPECT_EQ(center.delivered().begin()->second->content.body, text);
        center.clear();
        service->postAllSet(text, text);
        loop.runReady();
        ASSERT_EQ(center.delivered().size(), 1U);
        EXPECT_EQ(center.delivered().begin()->second->content.title, text + ": all set");
        service->reconcile({}, std::nullopt);
        loop.runReady();
        EXPECT_EQ(center.delivered().size(), 1U);
    }
}

TEST_F(HostileTexts, aLoneSurrogateOfTheWireIsNoSignalAtAll) {
    const std::string json = support::toJson(support::makeSignalWithNote("@", "s"));
    const auto withNote = [&json](const std::string& escape) {
        std::string text = json;
        text.replace(text.find('@'), 1, escape);
        return records::decodeJson<records::Signal>(text);
    };
    EXPECT_TRUE(withNote("\\ud83d\\ude42"));
    for (const std::string escape : {"\\ud83d", "\\ude42", "\\ude42\\ud83d", "\\ud83dx"}) {
        EXPECT_FALSE(withNote(escape)) << escape;
    }
}

}  // namespace
}  // namespace zelkovanta::alerts
