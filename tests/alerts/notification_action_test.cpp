#include "alerts/notification_action.h"

#include "alerts/signal_notification.h"
#include "tests/alerts/alert_records.h"

#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::alerts {
namespace {

using platform::NoText;
using platform::NotificationUserInfo;
using Action = store::DesktopSignalNotificationAction;

const NotificationUserInfo info = signalUserInfo("s", "m");

std::optional<Action> press(const std::string& action, const NotificationUserInfo& userInfo = info,
                            const std::string& category = "READY_SIGNAL") {
    return actionFromResponse(category, action, userInfo);
}

TEST(ReadySignalButtons, areTwoInTheWordsOfTheLanguage) {
    EXPECT_EQ(readySignalButtons(BracketedTexts{}),
              (platform::NotificationCategory{.identifier = "READY_SIGNAL",
                                              .actions = {{.identifier = "ONMYWAY", .title = "<On my way>"},
                                                          {.identifier = "DONE", .title = "<Done>"}}}));
}

TEST(ActionFromResponse, eachButtonHasItsWord) {
    EXPECT_EQ(press("ONMYWAY"), (Action{.signalId = "s", .memberId = "m", .action = "acknowledge"}));
    EXPECT_EQ(press("DONE"), (Action{.signalId = "s", .memberId = "m", .action = "done"}));
}

TEST(ActionFromResponse, nothingElseThatAPersonDoesIsAnAction) {
    for (const std::string& action : {std::string{platform::notification_action::defaultAction},
                                      std::string{platform::notification_action::dismissal}, std::string{},
                                      std::string{"onmyway"}, std::string{"DONE "}, std::string{"acknowledge"}}) {
        EXPECT_EQ(press(action), std::nullopt) << action;
    }
}

TEST(ActionFromResponse, anotherCategoryGivesNothing) {
    for (const std::string category : {"", "ready_signal", "READY_SIGNAL ", "OTHER"}) {
        EXPECT_EQ(press("ONMYWAY", info, category), std::nullopt) << category;
        EXPECT_EQ(press("DONE", info, category), std::nullopt) << category;
    }
}

TEST(ActionFromResponse, signalAndMemberMustBeTextsThatSaySomething) {
    const std::vector<NotificationUserInfo> incomplete{
        {},
        {{"signalId", "s"}},
        {{"memberId", "m"}},
        signalUserInfo("", "m"),
        signalUserInfo("s", ""),
        {{"signalId", NoText{}}, {"memberId", "m"}},
        {{"signalId", "s"}, {"memberId", NoText{}}},
        {{"SignalId", "s"}, {"MemberId", "m"}},
    };
    for (const auto& userInfo : incomplete) {
        EXPECT_EQ(press("ONMYWAY", userInfo), std::nullopt);
        EXPECT_EQ(press("DONE", userInfo), std::nullopt);
    }
}

TEST(ActionFromResponse, furtherEntriesDoNotMatter) {
    auto more = info;
    more.emplace("more", NoText{});
    EXPECT_EQ(press("DONE", more), (Action{.signalId = "s", .memberId = "m", .action = "done"}));
}

}  // namespace
}  // namespace zelkovanta::alerts
