#include "alerts/signal_notification.h"

#include <algorithm>
#include <deque>
#include <optional>
#include <ranges>
#include <rapidcheck.h>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelkovanta::alerts {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

using Identity = DesktopSignalNotificationIdentity;
using Identities = std::vector<Identity>;
using Ids = std::vector<std::string_view>;

std::vector<std::string> stale(const Identities& identities, const Ids& open,
                               const std::optional<std::string>& memberId) {
    const auto expected = expectedIdentifiers(open);
    return staleIdentifiers(std::views::all(identities), StaleNotifications(expected, memberId));
}

TEST(SignalIdentifier, isThePrefixAndTheId) {
    EXPECT_EQ(signalIdentifier("s-1"), "zelkovanta.signal.s-1");
    EXPECT_EQ(signalIdentifier(""), "zelkovanta.signal.");
    EXPECT_EQ(signalIdentifier("zelkovanta.signal.s"), "zelkovanta.signal.zelkovanta.signal.s");
}

TEST(SignalUserInfo, holdsTwoTexts) {
    EXPECT_EQ(signalUserInfo("s", "m"), (platform::NotificationUserInfo{{"signalId", "s"}, {"memberId", "m"}}));
}

TEST(ExpectedIdentifiers, areThoseOfTheOpenSignals) {
    EXPECT_THAT(expectedIdentifiers({}).all(), IsEmpty());
    const Ids ids{"b", "", "a"};
    auto identifiers = expectedIdentifiers(ids);
    const auto moved = std::move(identifiers);
    EXPECT_THAT(moved.all(), ElementsAre("zelkovanta.signal.b", "zelkovanta.signal.", "zelkovanta.signal.a"));
}

TEST(IdentityOf, takesTheMemberFromTheUserInfoIfItIsAText) {
    platform::NotificationRequest request{.identifier = "zelkovanta.signal.a", .content = {}};
    EXPECT_EQ(identityOf(request), (Identity{"zelkovanta.signal.a", std::nullopt}));
    request.content.userInfo = {{"memberId", platform::NoText{}}};
    EXPECT_EQ(identityOf(request), (Identity{"zelkovanta.signal.a", std::nullopt}));
    request.content.userInfo = {{"MemberId", "m"}};
    EXPECT_EQ(identityOf(request), (Identity{"zelkovanta.signal.a", std::nullopt}));
    request.content.userInfo = signalUserInfo("a", "m");
    EXPECT_EQ(identityOf(request), (Identity{"zelkovanta.signal.a", "m"}));
}

TEST(StaleIdentifiers, whatIsNotOpenIsStaleInTheOrderOfTheNotifications) {
    const Identities all{{"zelkovanta.signal.c", "m"}, {"zelkovanta.signal.a", "m"}, {"zelkovanta.signal.b", "m"}};
    EXPECT_THAT(stale(all, {"a"}, "m"), ElementsAre("zelkovanta.signal.c", "zelkovanta.signal.b"));
    EXPECT_THAT(stale(all, {"a", "b", "c"}, "m"), IsEmpty());
}

TEST(StaleIdentifiers, withNobodyAndNothingOpenEverySignalGoesAndEverythingElseStays) {
    const Identities all{{"zelkovanta.signal.a", std::nullopt}, {"0e0b2e3c-6c5e-4a3a-9d5e-0f0a52b0a001", std::nullopt},
                         {"zelkovanta.signal.", "m"},           {"zelkovanta.signal", "m"},
                         {"Zelkovanta.signal.a", "m"},          {" zelkovanta.signal.a", "m"},
                         {"zelkovanta.signal.b", "m"}};
    EXPECT_THAT(stale(all, {}, std::nullopt),
                ElementsAre("zelkovanta.signal.a", "zelkovanta.signal.", "zelkovanta.signal.b"));
    EXPECT_THAT(stale(all, {}, "m"), ElementsAre("zelkovanta.signal.a", "zelkovanta.signal.", "zelkovanta.signal.b"));
}

TEST(StaleIdentifiers, aNotificationForAnotherMemberGoesThoughItsSignalIsOpen) {
    const Identities all{{"zelkovanta.signal.a", "m"}, {"zelkovanta.signal.b", "n"}, {"zelkovanta.signal.c", ""}};
    EXPECT_THAT(stale(all, {"a", "b", "c"}, "m"), ElementsAre("zelkovanta.signal.b", "zelkovanta.signal.c"));
    EXPECT_THAT(stale(all, {"a", "b", "c"}, std::nullopt),
                ElementsAre("zelkovanta.signal.a", "zelkovanta.signal.b", "zelkovanta.signal.c"));
}

TEST(StaleIdentifiers, aNotificationWithoutAMemberIsStaleAsSoonAsSomebodyIsCurrent) {
    const Identities all{{"zelkovanta.signal.a", std::nullopt}};
    EXPECT_THAT(stale(all, {"a"}, "m"), ElementsAre("zelkovanta.signal.a"));
    EXPECT_THAT(stale(all, {"a"}, std::nullopt), IsEmpty());
}

TEST(StaleIdentifiers, idsCompareWhole) {
    const Identities all{{"zelkovanta.signal.ab", "m"}, {"zelkovanta.signal.A", "m"}, {"zelkovanta.signal.a ", "m"}};
    EXPECT_THAT(stale(all, {"a"}, "m"),
                ElementsAre("zelkovanta.signal.ab", "zelkovanta.signal.A", "zelkovanta.signal.a "));
}

TEST(StaleIdentifiers, oneOfManyIsNeverTakenForAnother) {
    for (const std::size_t count : {1U, 2U, 3U, 31U, 32U, 33U, 5000U}) {
        std::vector<std::string> ids;
        std::vector<std::string> over;
        for (std::size_t number = 0; number < 2 * count; ++number) {
            ids.push_back(std::to_string(number));
        }
        Ids open;
        std::deque<std::string> identifiers;
        Identities all;
        for (std::size_t number = 0; number < 2 * count; ++number) {
            all.push_back({identifiers.emplace_back(signalIdentifier(ids[number])), "m"});
            if (number % 2 == 0) {
                open.emplace_back(ids[number]);
            } else {
                over.push_back(identifiers.back());
            }
        }
        EXPECT_EQ(stale(all, open, "m"), over);
    }
}

TEST(StaleIdentifiers, sameNotificationTwiceIsToldTwice) {
    const Identities all{{"zelkovanta.signal.a", "m"}, {"zelkovanta.signal.a", "m"}};
    EXPECT_THAT(stale(all, {}, "m"), ElementsAre("zelkovanta.signal.a", "zelkovanta.signal.a"));
}

/// The rule once more, one notification at a time and without sets.
bool isStale(const Identity& identity, const std::vector<std::string>& open, const std::optional<std::string>& member) {
    if (!identity.identifier.starts_with("zelkovanta.signal.")) {
        return false;
    }
    if (identity.memberId.has_value() != member.has_value() || (member && *identity.memberId != *member)) {
        return true;
    }
    return std::ranges::none_of(
        open, [&](const std::string& id) { return "zelkovanta.signal." + id == identity.identifier; });
}

std::optional<std::string> maybe(const rc::Gen<std::string>& gen) {
    return *rc::gen::arbitrary<bool>() ? std::optional{*gen} : std::nullopt;
}

TEST(StaleIdentifiers, agreeWithTheRuleForAnyNotifications) {
    EXPECT_TRUE(rc::check([] {
        const auto id = rc::gen::element<std::string>("", "a", "b", "ab", ".");
        const auto member = rc::gen::element<std::string>("", "m", "n");
        const auto open = *rc::gen::container<std::vector<std::string>>(id);
        const auto current = maybe(member);
        std::deque<std::string> identifiers;
        std::deque<std::optional<std::string>> members;
        Identities all;
        std::vector<std::string> expected;
        const int count = *rc::gen::inRange(0, 12);
        for (int index = 0; index < count; ++index) {
            const auto prefix = *rc::gen::element<std::string>("zelkovanta.signal.", "zelkovanta.signal", "x");
            identifiers.push_back(prefix + *id);
            members.push_back(maybe(member));
            all.push_back({identifiers.back(), members.back()});
            if (isStale(all.back(), open, current)) {
                expected.push_back(identifiers.back());
            }
        }
        RC_ASSERT(stale(all, Ids(open.begin(), open.end()), current) == expected);
    }));
}

}  // namespace
}  // namespace zelkovanta::alerts
