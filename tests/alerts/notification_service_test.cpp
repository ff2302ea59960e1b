#include "alerts/notification_service.h"

#include "alerts/notification_action.h"
#include "platform/simulated/simulated_notification_center.h"
#include "platform/task.h"
#include "tests/alerts/alert_records.h"
#include "tests/support/counting_random.h"

#include <chrono>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelkovanta::alerts {
namespace {

using namespace std::chrono_literals;
using platform::simulated::EventLoop;
using support::makeSignal;
using support::makeSignalThatIs;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using testing::UnorderedElementsAre;

using Action = store::DesktopSignalNotificationAction;
using Ids = std::vector<std::string_view>;

struct NotificationServiceTest : testing::Test {
    EventLoop loop;
    EventLoop::Thread& main = loop.makeThread();
    support::CountingRandom random;
    platform::KeysAsTexts texts;
    platform::simulated::SimulatedNotificationCenter center{loop};
    std::shared_ptr<NotificationService> service =
        NotificationService::start({.main = main.executor(), .center = center, .random = random, .strings = texts});
    store::StoreState state = stateOfMember();

    void settle() { loop.runReady(); }

    /// The store's two steps at a new signal: it tells what is open, then of the signal.
    void create(const std::string& id, const Ids& open) {
        service->reconcile(open, "member-1");
        service->notifyNewSignal(state, makeSignal(id));
    }
    void nowOpen(const Ids& open, std::optional<std::string_view> member = "member-1") {
        service->reconcile(open, member);
    }
    void put(std::string identifier, platform::NotificationUserInfo userInfo) {
        platform::NotificationContent content;
        content.userInfo = std::move(userInfo);
        center.add({.identifier = std::move(identifier), .content = std::move(content)}, [] {});
    }
    std::vector<std::string> shown() const {
        std::vector<std::string> identifiers;
        for (const auto& [identifier, request] : center.delivered()) {
            identifiers.push_back(identifier);
        }
        return identifiers;
    }
};

TEST_F(NotificationServiceTest, beginsAsTheDelegateWithItsButtonsNamed) {
    EXPECT_EQ(center.delegatesSet(), 1);
    EXPECT_THAT(center.categories(), ElementsAre(readySignalButtons(texts)));
    EXPECT_FALSE(service->permissionRequested());
    EXPECT_THAT(center.authorizationRequests(), IsEmpty());
    service->setActionHandler([](const Action&) -> platform::Awaitable<void> { co_return; });
    EXPECT_EQ(center.delegatesSet(), 2);
    service->registerCategories();
    EXPECT_THAT(center.categories(), SizeIs(1));
}

TEST_F(NotificationServiceTest, permissionIsAskedForAlertSoundAndBadgeAndTheAnswerIsIgnored) {
    for (const auto answer :
         {platform::Authorization::granted, platform::Authorization::refused, platform::Authorization::failed}) {
        center.authorization = answer;
        platform::startTask(main.executor(), [this] { return service->requestPermission(); });
        settle();
    }
    const platform::AuthorizationOptions all{.alert = true, .sound = true, .badge = true};
    EXPECT_THAT(center.authorizationRequests(), ElementsAre(all, all, all));
    EXPECT_FALSE(service->permissionRequested());
    service->setPermissionRequested();
    EXPECT_TRUE(service->permissionRequested());
}

TEST_F(NotificationServiceTest, aNewSignalIsShown) {
    create("s", {"s"});
    settle();
    EXPECT_THAT(shown(), ElementsAre("zelkovanta.signal.s"));
    EXPECT_EQ(center.presentation(),
              (platform::PresentationOptions{.banner = true, .list = true, .sound = true, .badge = false}));
}

TEST_F(NotificationServiceTest, theSameSignalAgainReplacesItsNotification) {
    create("s", {"s"});
    settle();
    state.members.front().desktopAlerts = records::DesktopAlerts{.enabled = {}, .sound = "bell"};
    create("s", {"s"});
    settle();
    ASSERT_THAT(shown(), ElementsAre("zelkovanta.signal.s"));
    EXPECT_EQ(center.delivered().begin()->second->content.sound,
              platform::NotificationSound{platform::SoundFile{"bell.caf"}});
}

TEST_F(NotificationServiceTest, aSignalThatIsOverIsTakenBack) {
    create("s", {"s"});
    create("t", {"s", "t"});
    settle();
    nowOpen({"t"});
    settle();
    EXPECT_THAT(shown(), ElementsAre("zelkovanta.signal.t"));
}

TEST_F(NotificationServiceTest, whatEndsWhileItIsBeingShownLeavesNothing) {
    center.showingDelay = 3s;
    create("s", {"s"});
    loop.advance(1s);
    nowOpen({});
    loop.advance(1ms);
    EXPECT_EQ(center.pendingCount(), 0U);
    loop.advance(10s);
    EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(NotificationServiceTest, whatEndsBetweenTheQuestionAndTheAddIsTakenBackByThePassAfterTheAdd) {
    // The signal is not open when it is posted: it was done before it was created.
    center.showingDelay = 3s;
    service->reconcile(Ids{}, "member-1");
    settle();
    service->notifyNewSignal(state, makeSignalThatIs("done", "s"));
    loop.advance(2999ms);
    EXPECT_EQ(center.pendingCount(), 1U);
    loop.advance(1ms);
    EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(NotificationServiceTest, anAddThatFailsIsFollowedByAPassLikeAnyOther) {
    create("s", {"s"});
    settle();
    center.authorization = platform::Authorization::failed;
    // The pass of the change itself comes too late to be the one that is seen.
    center.deliveredAnswerDelay = 1h;
    nowOpen({});
    center.deliveredAnswerDelay = {};
    settle();
    ASSERT_THAT(shown(), SizeIs(1));
    service->notifyNewSignal(state, makeSignal("t"));
    settle();
    EXPECT_THAT(shown(), IsEmpty());
    loop.advance(1h);
    EXPECT_EQ(center.removalCalls(), 1U);
    EXPECT_TRUE(center.isQuiet());
}

TEST_F(NotificationServiceTest, withoutPermissionRequestsAreStillMade) {
    center.authorization = platform::Authorization::refused;
    create("s", {"s"});
    settle();
    EXPECT_EQ(center.added(), 1U);
    EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(NotificationServiceTest, anEarlierPassIsIgnoredEvenWhenItAnswersLast) {
    create("s", {"s"});
    settle();
    center.deliveredAnswerDelay = 5s;
    nowOpen({});
    center.deliveredAnswerDelay = 1s;
    nowOpen({"s"});
    loop.advance(10s);
    EXPECT_THAT(shown(), ElementsAre("zelkovanta.signal.s"));
    EXPECT_EQ(center.removalCalls(), 0U);
}

TEST_F(NotificationServiceTest, ofTwoQuickPassesOnlyTheSecondTakesBack) {
    create("s", {"s"});
    create("t", {"s", "t"});
    settle();
    nowOpen({});
    nowOpen({"s"});
    settle();
    EXPECT_THAT(shown(), ElementsAre("zelkovanta.signal.s"));
    EXPECT_EQ(center.removalCalls(), 1U);
}

TEST_F(NotificationServiceTest, ofTheTwoAnswersOneMayCountAndTheOtherComeTooLate) {
    put("zelkovanta.signal.s", signalUserInfo("s", "member-1"));
    settle();
    center.showingDelay = 1h;
    put("zelkovanta.signal.t", signalUserInfo("t", "member-1"));
    center.deliveredAnswerDelay = 5s;
    nowOpen({});
    settle();
    EXPECT_EQ(center.pendingCount(), 0U);
    center.deliveredAnswerDelay = {};
    nowOpen({"s", "t"});
    loop.advance(10s);
    EXPECT_THAT(shown(), ElementsAre("zelkovanta.signal.s"));
}

TEST_F(NotificationServiceTest, aPassWithNothingStaleRemovesNothing) {
    create("s", {"s"});
    nowOpen({"s"});
    settle();
    EXPECT_EQ(center.removalCalls(), 0U);
}

TEST_F(NotificationServiceTest, aHandOverTakesTheEarlierMembersNotificationsAtOnce) {
    create("s", {"s"});
    settle();
    nowOpen({"s"}, "member-2");
    settle();
    EXPECT_THAT(shown(), IsEmpty());
}

TEST_F(NotificationServiceTest, theEndOfASessionTakesEverySignalAndNoNotice) {
    create("s", {"s"});
    service->postAllSet("Room 3", "ble");
    settle();
    ASSERT_THAT(shown(), SizeIs(2));
    nowOpen({}, std::nullopt);
    settle();
    ASSERT_THAT(shown(), SizeIs(1));
    EXPECT_EQ(center.delivered().begin()->second->content.title, "Room 3: all set");
}

TEST_F(NotificationServiceTest, whatAnEarlierRunLeftIsTakenBackUnlessItIsStillOpenForTheSameMember) {
    put("zelkovanta.signal.old", signalUserInfo("old", "member-1"));
    put("zelkovanta.signal.open", signalUserInfo("open", "member-1"));
    put("zelkovanta.signal.foreign", signalUserInfo("foreign", "member-2"));
    put("zelkovanta.signal.bare", {});
    put("zelkovanta.signal.odd", {{"memberId", platform::NoText{}}});
    put("another program's", {});
    settle();
    EXPECT_THAT(shown(), SizeIs(6));
    nowOpen({"open", "foreign", "bare", "odd"});
    settle();
    EXPECT_THAT(shown(), UnorderedElementsAre("zelkovanta.signal.open", "another program's"));
}

TEST_F(NotificationServiceTest, aPendingRequestWithoutAMemberIsRemovedThoughItsSignalIsOpen) {
    center.showingDelay = 1h;
    put("zelkovanta.signal.s", {});
    nowOpen({"s"});
    settle();
    EXPECT_EQ(center.pendingCount(), 0U);
}

TEST_F(NotificationServiceTest, aRoomIsToldOfEachStepOnItsOwn) {
    state = stateOfRoom();
    const auto waiting = makeSignal("s");
    const auto acknowledged = makeSignal("s", [](records::Signal& signal) {
        signal.status = "acknowledged";
        signal.acknowledgedBy = "member-2";
    });
    const auto done = makeSignalThatIs("done", "s");
    const auto shownAfter = [this](const records::Signal& signal, const records::Signal* previous) {
        service->notifySignalUpdate(state, signal, previous);
        settle();
        return center.delivered().size();
    };
    EXPECT_EQ(shownAfter(waiting, nullptr), 0U);
    EXPECT_EQ(shownAfter(acknowledged, &waiting), 1U);
    EXPECT_EQ(shownAfter(acknowledged, &acknowledged), 1U);
    EXPECT_EQ(shownAfter(done, &acknowledged), 2U);
    EXPECT_EQ(shownAfter(done, &done), 3U);
    EXPECT_EQ(shownAfter(done, nullptr), 4U);
    for (const auto& [identifier, request] : center.delivered()) {
        EXPECT_THAT(identifier,
                    testing::MatchesRegex("[0-9a-f]{8}-[0-9a-f]{4}-4[0-9a-f]{3}-[89ab][0-9a-f]{3}-[0-9a-f]{12}"));
        EXPECT_EQ(request->content.sound, platform::NotificationSound{platform::DefaultSound{}});
        EXPECT_THAT(request->content.userInfo, IsEmpty());
        EXPECT_EQ(request->content.categoryIdentifier, "");
    }
}

TEST_F(NotificationServiceTest, aNoticeStartsNoPass) {
    create("s", {"s"});
    settle();
    // The identifiers that were given last name the signal no more, so that a pass would be seen.
    center.deliveredAnswerDelay = 1h;
    nowOpen({});
    center.deliveredAnswerDelay = {};
    service->postOnTheWay("Ann", "Ready");
    settle();
    EXPECT_THAT(shown(), SizeIs(2));
}

TEST_F(NotificationServiceTest, aPressReachesTheHandlerAndCompletesWhenItIsThrough) {
    std::vector<Action> handled;
    service->setActionHandler([this, &handled](Action action) -> platform::Awaitable<void> {
        handled.push_back(action);
        EXPECT_EQ(center.completedResponses(), 0U);
        co_return;
    });
    create("s", {"s"});
    settle();
    main.setHeld(true);
    EXPECT_TRUE(center.press("zelkovanta.signal.s", "ONMYWAY"));
    settle();
    EXPECT_THAT(handled, IsEmpty()) << "not on the main thread";
    main.setHeld(false);
    settle();
    EXPECT_THAT(handled, ElementsAre(Action{.signalId = "s", .memberId = "member-1", .action = "acknowledge"}));
    EXPECT_EQ(center.completedResponses(), 1U);
}

TEST_F(NotificationServiceTest, theHandlerThatCountsIsTheOneAtTheTimeOfThePress) {
    std::string handledBy;
    service->setActionHandler([&handledBy](const Action&) -> platform::Awaitable<void> {
        handledBy += "first";
        co_return;
    });
    create("s", {"s"});
    settle();
    service->setActionHandler([&handledBy](const Action&) -> platform::Awaitable<void> {
        handledBy += "second";
        co_return;
    });
    center.press("zelkovanta.signal.s", "DONE");
    settle();
    EXPECT_EQ(handledBy, "second");
}

TEST_F(NotificationServiceTest, withoutAHandlerAPressCompletesOnce) {
    create("s", {"s"});
    settle();
    center.press("zelkovanta.signal.s", "DONE");
    settle();
    EXPECT_EQ(center.completedResponses(), 1U);
}

TEST_F(NotificationServiceTest, whatIsNoActionCompletesAtOnceAndHandlesNothing) {
    service->setActionHandler([](const Action&) -> platform::Awaitable<void> {
        ADD_FAILURE() << "handled";
        co_return;
    });
    platform::NotificationContent withoutMember;
    withoutMember.categoryIdentifier = "READY_SIGNAL";
    withoutMember.userInfo = signalUserInfo("s", "");
    center.add({.identifier = "without member", .content = withoutMember}, [] {});
    platform::NotificationContent otherCategory;
    otherCategory.categoryIdentifier = "OTHER";
    otherCategory.userInfo = signalUserInfo("s", "member-1");
    center.add({.identifier = "other category", .content = otherCategory}, [] {});
    create("s", {"s"});
    settle();
    // With the main thread held: it has no part in it.
    main.setHeld(true);
    EXPECT_TRUE(center.press("without member", "ONMYWAY"));
    EXPECT_TRUE(center.press("other category", "ONMYWAY"));
    EXPECT_TRUE(center.press("zelkovanta.signal.s", platform::notification_action::defaultAction));
    settle();
    EXPECT_EQ(center.completedResponses(), 3U);
    main.setHeld(false);
    settle();
    EXPECT_EQ(center.completedResponses(), 3U);
}

TEST_F(NotificationServiceTest, answersThatComeWhenTheServiceIsGoneDoNothing) {
    create("s", {"s"});
    settle();
    create("t", {"s", "t"});
    nowOpen({});
    service.reset();
    settle();
    EXPECT_EQ(center.removalCalls(), 0U);
    EXPECT_TRUE(center.press("zelkovanta.signal.s", "DONE"));
    settle();
    EXPECT_EQ(center.completedResponses(), 1U);
}

TEST_F(NotificationServiceTest, aPressUnderWayWhenTheServiceGoesCompletesAllTheSame) {
    service->setActionHandler([](const Action&) -> platform::Awaitable<void> { co_return; });
    create("s", {"s"});
    settle();
    main.setHeld(true);
    center.press("zelkovanta.signal.s", "DONE");
    settle();
    service.reset();
    main.setHeld(false);
    settle();
    EXPECT_EQ(center.completedResponses(), 1U);
}

TEST_F(NotificationServiceTest, aCentreThatNeverAnswersHoldsUpNothing) {
    center.setHeld(true);
    for (int round = 0; round < 100; ++round) {
        create("s" + std::to_string(round), {});
    }
    settle();
    EXPECT_EQ(center.added(), 100U);
    // When it answers at last, everything comes right.
    nowOpen({"s7"});
    center.setHeld(false);
    settle();
    EXPECT_THAT(shown(), ElementsAre("zelkovanta.signal.s7"));
}

}  // namespace
}  // namespace zelkovanta::alerts
