#include "records/device_role.h"

#include <string>
#include <vector>

#include <gtest/gtest.h>

namespace zelkovanta::records {
namespace {

TEST(DeviceRoleTest, rolesAreListedInOrderWithTheirWords) {
    std::vector<std::string> words;
    for (const DeviceRole role : allDeviceRoles)
        words.emplace_back(rawValue(role));
    EXPECT_EQ(words, (std::vector<std::string>{"room", "member", "shared"}));
}

TEST(DeviceRoleTest, everyRoleIsFoundAgainByItsWord) {
    for (const DeviceRole role : allDeviceRoles)
        EXPECT_EQ(deviceRoleFromRawValue(rawValue(role)), role);
}

TEST(DeviceRoleTest, noOtherWordIsARole) {
    for (const char* word : {"", "Room", "rooms", "room ", "kiosk"})
        EXPECT_EQ(deviceRoleFromRawValue(word), std::nullopt) << word;
}

TEST(MemberStatusTest, statusesAreListedInOrderWithTheirWords) {
    std::vector<std::string> words;
    for (const MemberStatus status : allMemberStatuses)
        words.emplace_back(rawValue(status));
    EXPECT_EQ(words, (std::vector<std::string>{"available", "busy", "dnd"}));
}

TEST(MemberStatusTest, everyStatusIsFoundAgainByItsWordAndNoOther) {
    for (const MemberStatus status : allMemberStatuses)
        EXPECT_EQ(memberStatusFromRawValue(rawValue(status)), status);
    for (const char* word : {"", "Available", "away"})
        EXPECT_EQ(memberStatusFromRawValue(word), std::nullopt) << word;
}

}  // namespace
}  // namespace zelkovanta::records
