#include "platform/linux/notification_file.h"

#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

using namespace ledger;

TEST(NotificationFileTest, whatIsKeptIsReadAgain) {
    const KeptNotifications kept{"0123",
                                 ":1.5",
                                 {{1, "zelkovanta.signal.a", "READY_SIGNAL", {{"signalId", "a"}, {"memberId", "m"}}},
                                  {4294967295U, "b", "c", {}}}};
    EXPECT_EQ(readNotificationFile(notificationFileText(kept)), kept);
}

TEST(NotificationFileTest, aTextThatIsNothingOfTheKindKeepsNothing) {
    for (const auto* const text :
         {"", "{", "[]", "7", "{\"notifications\":7}", "\xff\xfe", "{\"bus\":[],\"daemon\":{}}"}) {
        EXPECT_EQ(readNotificationFile(text), KeptNotifications{}) << text;
    }
}

TEST(NotificationFileTest, damagedEntriesAreLeftOut) {
    const auto kept = readNotificationFile(
        R"({"bus":"b","daemon":"d","notifications":[7,{},{"id":0,"identifier":"a"},{"id":1.5,"identifier":"a"},)"
        R"({"id":4294967296,"identifier":"a"},{"id":-1,"identifier":"a"},{"id":2},{"id":3,"identifier":"c"}]})");
    EXPECT_EQ(kept, (KeptNotifications{"b", "d", {{3, "c", "", {}}}}));
}

TEST(NotificationFileTest, aValueThatIsNoTextReadsAsSuch) {
    const auto kept = readNotificationFile(
        R"({"notifications":[{"id":3,"identifier":"c","userInfo":{"memberId":7,"signalId":"s"}}]})");
    ASSERT_EQ(kept.notifications.size(), 1U);
    EXPECT_EQ(kept.notifications[0].userInfo, (NotificationUserInfo{{"memberId", NoText{}}, {"signalId", "s"}}));
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
