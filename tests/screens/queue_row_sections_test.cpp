#include "screens/queue_row_sections.h"

#include "store/queues.h"
#include "tests/support/office_records.h"

#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelkovanta::screens {
namespace {

using server::ConnectionState;
using store::StoreState;
using support::makeDevice;
using support::makeDeviceOfMember;
using support::makeDeviceWithSignIn;
using support::makeMember;
using support::makeOffice;
using support::makeRoom;
using support::makeSignal;
using support::makeSignalTo;
using support::makeType;
using testing::ElementsAre;
using testing::IsEmpty;
using theme::fixed;
using theme::rgb;

const platform::KeysAsTexts strings;

std::vector<std::string> idsOf(const std::vector<QueueRow>& rows) {
    std::vector<std::string> ids;
    for (const QueueRow& row : rows) {
        ids.push_back(row.signal.id);
    }
    return ids;
}

/// The computer of "me", a provider, in an office with an assistant "ana".
StoreState officeOfMe() {
    StoreState state;
    state.office = makeOffice("office-1", [](records::Office& office) { office.vertical = "medical"; });
    state.members = {makeMember("me"), makeMember("bo"),
                     makeMember("ana", [](records::Member& member) { member.department = "assistant"; })};
    state.rooms = {makeRoom("room-1"), makeRoom("room-2")};
    state.signalTypes = {makeType("type-ready", 10), makeType("type-urgent", 20)};
    state.device = makeDeviceOfMember("me");
    return state;
}

records::Signal sentBy(std::string memberId, std::string id) {
    return makeSignal(std::move(id), [&](records::Signal& signal) { signal.requesterId = std::move(memberId); });
}

TEST(PersonalQueueSection, looksUpAllThatBelongsToARow) {
    StoreState state = officeOfMe();
    state.signals = {makeSignal("signal-1", [](records::Signal& signal) {
        signal.requesterId = "ana";
        signal.providerId = "me";
    })};
    const auto section = personalQueueSection(state, SectionTitle::hidden, std::nullopt, strings);
    EXPECT_EQ(section.header, std::nullopt);
    EXPECT_EQ(section.empty, std::nullopt);
    ASSERT_EQ(section.rows.size(), 1U);
    QueueRow expected;
    expected.signal = state.signals[0];
    expected.room = state.rooms[0];
    expected.type = state.signalTypes[0];
    expected.vertical = "medical";
    expected.provider = state.members[0];
    expected.requester = state.members[2];
    expected.requesterDepartment = "dept-assistant";
    expected.onAcknowledge = RowAction::acknowledge;
    expected.onDone = RowAction::done;
    expected.completionLabel = "Done";
    EXPECT_EQ(section.rows[0], expected);
}

TEST(PersonalQueueSection, aRowWhoseRecordsAreGoneIsThereAllTheSame) {
    StoreState state = officeOfMe();
    state.office.reset();
    state.signals = {makeSignal("signal-1", [](records::Signal& signal) {
        signal.roomId = "gone";
        signal.typeId = "gone";
        signal.requesterId = "gone";
    })};
    const auto rows = personalQueueRows(state, std::nullopt, strings);
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].room, std::nullopt);
    EXPECT_EQ(rows[0].type, std::nullopt);
    EXPECT_EQ(rows[0].vertical, std::nullopt);
    EXPECT_EQ(rows[0].provider, std::nullopt);
    EXPECT_EQ(rows[0].requester, std::nullopt);
    EXPECT_EQ(rows[0].requesterDepartment, std::nullopt);
}

TEST(PersonalQueueSection, aRequesterOfNoDepartmentIsNamedAlone) {
    StoreState state = officeOfMe();
    state.members[1].department = "";
    state.signals = {sentBy("bo", "1")};
    const auto rows = personalQueueRows(state, std::nullopt, strings);
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].requesterDepartment, std::nullopt);
    EXPECT_EQ(drawn(rows[0], strings).detail, "Name of bo");
}

TEST(SentQueueSection, aRequesterOfNoDepartmentIsNamedAlone) {
    StoreState state = officeOfMe();
    state.members[0].department = "";
    state.signals = {sentBy("me", "1")};
    state.signals[0].providerId = "bo";
    const auto rows = sentQueueSection(state, std::nullopt, strings).rows;
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].requesterDepartment, std::nullopt);
    EXPECT_EQ(drawn(rows[0], strings).detail, "Name of me · for Name of bo");
}

TEST(PersonalQueueSection, keepsTheQueuesOrderAndItsRoom) {
    StoreState state = officeOfMe();
    state.signals = {
        makeSignal("second", [](auto& signal) { signal.createdAt = "2026-01-02T09:00:00Z"; }),
        makeSignal("first", [](auto& signal) { signal.createdAt = "2026-01-02T08:00:00Z"; }),
        makeSignal("urgent",
                   [](auto& signal) {
                       signal.typeId = "type-urgent";
                       signal.roomId = "room-2";
                       signal.createdAt = "2026-01-02T10:00:00Z";
                   }),
        makeSignalTo("bo", "another's"),
        sentBy("me", "my own"),
    };
    EXPECT_THAT(idsOf(personalQueueRows(state, std::nullopt, strings)), ElementsAre("urgent", "first", "second"));
    EXPECT_THAT(idsOf(personalQueueSection(state, SectionTitle::shown, "room-1", strings).rows),
                ElementsAre("first", "second"));
}

TEST(PersonalQueueSection, anEmptyQueueSaysSo) {
    const auto section = personalQueueSection(officeOfMe(), SectionTitle::shown, std::nullopt, strings);
    EXPECT_EQ(section.header, "Your signals");
    EXPECT_THAT(section.rows, IsEmpty());
    EXPECT_EQ(section.empty,
              (EmptyQueueLabel{.systemImage = "tray", .title = "No one is waiting for you.", .subtitle = {}}));
}

TEST(SentQueueSection, aSenderFinishesAndCancelsButDoesNotAcknowledge) {
    StoreState state = officeOfMe();
    state.signals = {makeSignal("signal-1", [](records::Signal& signal) {
        signal.requesterId = "me";
        signal.providerId = "bo";
    })};
    const auto section = sentQueueSection(state, std::nullopt, strings);
    ASSERT_EQ(section.rows.size(), 1U);
    const QueueRow& row = section.rows[0];
    EXPECT_EQ(row.onAcknowledge, std::nullopt);
    EXPECT_EQ(row.onDone, RowAction::done);
    EXPECT_EQ(row.completionLabel, "Mark completed");
    EXPECT_EQ(row.onCancel, RowAction::cancel);
    EXPECT_TRUE(row.showTarget);
    EXPECT_FALSE(row.highlighted);
    EXPECT_EQ(row.position, 1U);

    const DrawnRow shown = drawn(row, strings);
    ASSERT_EQ(shown.buttons.size(), 2U);
    EXPECT_EQ(shown.buttons[0].accessibleName, "Mark completed");
    EXPECT_EQ(shown.buttons[1].text, "Cancel");
    EXPECT_TRUE(shown.chip.prominent);
    EXPECT_EQ(shown.position, "#1");
    EXPECT_EQ(shown.detail, "Name of me · dept-provider-medical · for Name of bo");
}

TEST(SentQueueSection, aPositionIsThePlaceInTheQueueOfTheWholeOffice) {
    StoreState state = officeOfMe();
    state.signals = {sentBy("me", "3"), sentBy("bo", "2"), sentBy("me", "1"), sentBy("ana", "0")};
    for (std::size_t index = 0; index < state.signals.size(); ++index) {
        state.signals[index].createdAt = "2026-01-02T0" + std::to_string(9 - index) + ":00:00Z";
    }
    state.signals.push_back(sentBy("me", "urgent"));
    state.signals.back().typeId = "type-urgent";
    for (const QueueRow& row : sentQueueSection(state, std::nullopt, strings).rows) {
        EXPECT_EQ(row.position, store::queuePosition(state, row.signal.id)) << row.signal.id;
    }
    EXPECT_THAT(idsOf(sentQueueSection(state, std::nullopt, strings).rows), ElementsAre("urgent", "1", "3"));
}

TEST(SentQueueSection, anEmptyListSaysHowToSend) {
    const auto section = sentQueueSection(officeOfMe(), std::nullopt, strings);
    EXPECT_EQ(section.header, std::nullopt);
    EXPECT_EQ(section.empty,
              (EmptyQueueLabel{
                  .systemImage = "paperplane", .title = "Nothing sent yet.", .subtitle = "Tap + to send a signal."}));
}

TEST(SentQueueSection, holdsToOneRoom) {
    StoreState state = officeOfMe();
    state.signals = {sentBy("me", "here"), sentBy("me", "there")};
    state.signals[1].roomId = "room-2";
    EXPECT_THAT(idsOf(sentQueueSection(state, "room-2", strings).rows), ElementsAre("there"));
}

TEST(QueueTabToggle, theSelectedTabIsYellow) {
    const auto tabs = queueTabToggle(SignalTab::sent, 3, 12, strings);
    EXPECT_EQ(tabs[0].tab, SignalTab::received);
    EXPECT_EQ(tabs[0].title, "Received");
    EXPECT_FALSE(tabs[0].selected);
    EXPECT_EQ(tabs[0].badge, "3");
    EXPECT_EQ(tabs[0].titleColor, theme::textSecondary);
    EXPECT_EQ(tabs[0].fill, theme::cardBackground);
    EXPECT_EQ(tabs[0].outline, theme::hairline);
    EXPECT_EQ(tabs[0].badgeFill, rgb(0xFFE14D));

    EXPECT_EQ(tabs[1].tab, SignalTab::sent);
    EXPECT_EQ(tabs[1].title, "Sent");
    EXPECT_TRUE(tabs[1].selected);
    EXPECT_EQ(tabs[1].badge, "12");
    EXPECT_EQ(tabs[1].titleColor, fixed(rgb(0x1A1206)));
    EXPECT_EQ(tabs[1].fill, fixed(rgb(0xFFE14D)));
    EXPECT_EQ(tabs[1].outline, std::nullopt);
    EXPECT_EQ(tabs[1].badgeFill, rgb(0x1A1206, 0.25));
}

TEST(QueueTabToggle, aCountOfZeroHasNoBadge) {
    const auto tabs = queueTabToggle(SignalTab::received, 0, 1, strings);
    EXPECT_EQ(tabs[0].badge, "");
    EXPECT_EQ(tabs[1].badge, "1");
}

TEST(ConnectionBanner, saysWhatIsWrongAndNothingWhileConnected) {
    EXPECT_EQ(connectionBanner(ConnectionState::connected, strings), std::nullopt);
    EXPECT_EQ(connectionBanner(ConnectionState::disconnected, strings),
              (ConnectionBanner{.text = "Offline, retrying\u2026", .hasSpinner = true}));
    EXPECT_EQ(connectionBanner(ConnectionState::connecting, strings),
              (ConnectionBanner{.text = "Connecting\u2026", .hasSpinner = true}));
    EXPECT_EQ(connectionBanner(ConnectionState::stopped, strings),
              (ConnectionBanner{.text = "Not connected", .hasSpinner = false}));
}

std::optional<MemberStatusControl> controlFor(std::optional<std::string> status) {
    StoreState state = officeOfMe();
    state.members[0].status = std::move(status);
    return memberStatusControl(state, strings);
}

TEST(MemberStatusControl, isNotThereWithoutAnActiveMember) {
    StoreState state = officeOfMe();
    state.device = makeDevice();
    EXPECT_EQ(memberStatusControl(state, strings), std::nullopt);
    state.device = makeDeviceWithSignIn("bo");
    EXPECT_NE(memberStatusControl(state, strings), std::nullopt);
}

TEST(MemberStatusControl, offersTheThreeAndMarksTheCurrentOne) {
    const auto control = controlFor("busy");
    ASSERT_TRUE(control);
    EXPECT_EQ(control->text, "member-busy");
    EXPECT_EQ(control->dot, fixed(rgb(0xFFE14D)));
    using Entry = MemberStatusControl::Entry;
    EXPECT_THAT(control->entries,
                ElementsAre(Entry{.status = records::MemberStatus::available, .text = "member-available"},
                            Entry{.status = records::MemberStatus::busy, .text = "member-busy", .isCurrent = true},
                            Entry{.status = records::MemberStatus::dnd, .text = "member-dnd"}));
}

TEST(MemberStatusControl, aStatusThatIsNotKnownReadsAsAvailableWithAFaintDot) {
    for (const std::optional<std::string>& status :
         {std::optional<std::string>{}, std::optional<std::string>{"lunch"}, std::optional<std::string>{"Available"}}) {
        const auto control = controlFor(status);
        ASSERT_TRUE(control);
        EXPECT_EQ(control->text, "member-available");
        EXPECT_EQ(control->dot, theme::textTertiary);
        for (const auto& entry : control->entries) {
            EXPECT_FALSE(entry.isCurrent);
        }
    }
}

TEST(QueueSections, ofTwoRecordsWithOneIdTheFirstIsTheOneThatIsShown) {
    StoreState state = officeOfMe();
    state.rooms.push_back(makeRoom("room-1", [](records::Room& room) { room.name = "Another"; }));
    state.members.push_back(makeMember("ana", [](records::Member& member) { member.name = "Another"; }));
    state.signals = {makeSignalTo("me", "signal-1")};
    state.signals[0].roomId = "room-1";
    state.signals[0].requesterId = "ana";
    const auto rows = personalQueueSection(state, SectionTitle::hidden, std::nullopt, strings).rows;
    ASSERT_EQ(rows.size(), 1U);
    EXPECT_EQ(rows[0].room, state.rooms.front());
    EXPECT_EQ(rows[0].requester, state.members[2]);
}

}  // namespace
}  // namespace zelkovanta::screens
