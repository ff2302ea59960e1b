#include "alerts/notification_service.h"
#include "platform/simulated/event_loop.h"
#include "tests/alerts/alert_records.h"
#include "tests/platform/linux/notification_daemon_on_bus.h"
#include "tests/platform/linux/notification_fixture.h"
#include "tests/support/counting_random.h"

#include <gmock/gmock.h>

// The service over this desktop's centre. The service's own turns happen when the test lets them, so that the bus can
// tell something between the answer of a list and the removal that follows from it.
namespace zelkovanta::platform::linux_host {
namespace {

using testing::IsEmpty;
using Ids = std::vector<std::string_view>;

struct NotificationServiceOnBusTest : NotificationTest {
    std::optional<NotificationDaemonOnBus> daemon;
    simulated::EventLoop turns;
    support::CountingRandom random;
    KeysAsTexts texts;
    store::StoreState state = alerts::stateOfMember();
    std::shared_ptr<alerts::NotificationService> service;

    // What the centre still has to tell goes before those to whom it would.
    ~NotificationServiceOnBusTest() override { center.reset(); }

    void SetUp() override {
        daemon.emplace(DaemonQuirks{});
        begin();
        service = alerts::NotificationService::start(
            {.main = turns.makeThread().executor(), .center = *center, .random = random, .strings = texts});
        service->reconcile(Ids{"s"}, "member-1");
        service->notifyNewSignal(state, support::makeSignal("s"));
        ASSERT_TRUE(runUntil([this] { return delivered().size() == 1; }));
        settle();
    }
    /// Whatever was asked of the centre has been answered, and the service has acted upon it.
    void settle() {
        for (int round = 0; round < 3; ++round) {
            turns.runReady();
            pending();
        }
        turns.runReady();
    }
    void signalIsOver() {
        service->reconcile(Ids{}, "member-1");
        // Questions are answered in their order.
        pending();
    }
};

TEST_F(NotificationServiceOnBusTest, whatIsOverIsWithdrawn) {
    ASSERT_EQ(daemon->daemon.shown().size(), 1U);
    signalIsOver();
    settle();
    EXPECT_TRUE(runUntil([this] { return daemon->daemon.shown().empty(); }));
    EXPECT_THAT(delivered(), IsEmpty());
}

TEST_F(NotificationServiceOnBusTest, whatIsShownAgainBetweenTheListAndTheRemovalIsWithdrawn) {
    daemon->vanish();
    ASSERT_TRUE(runUntil([this] { return pending().size() == 1; }));
    signalIsOver();
    daemon.emplace(DaemonQuirks{});
    ASSERT_TRUE(runUntil([this] { return delivered().size() == 1; }));
    turns.runReady();
    EXPECT_THAT(delivered(), IsEmpty());
    EXPECT_TRUE(runUntil([this] { return daemon->daemon.shown().empty(); }));
}

TEST_F(NotificationServiceOnBusTest, whatLosesItsDaemonBetweenTheListAndTheRemovalIsNotShownAgain) {
    signalIsOver();
    daemon->vanish();
    ASSERT_TRUE(runUntil([this] { return pending().size() == 1; }));
    turns.runReady();
    EXPECT_THAT(pending(), IsEmpty());
    daemon.emplace(DaemonQuirks{});
    ASSERT_TRUE(addAndWait(signalRequest("other")));
    EXPECT_EQ(daemon->posts.size(), 1U);
}

TEST_F(NotificationServiceOnBusTest, aNoticeOutlivesEveryPassAndItsDaemon) {
    service->postAllSet("Room 3", "ble");
    ASSERT_TRUE(runUntil([this] { return delivered().size() == 2; }));
    signalIsOver();
    settle();
    ASSERT_TRUE(runUntil([this] { return daemon->daemon.shown().size() == 1; }));
    EXPECT_EQ(daemon->daemon.shown().begin()->second.title, "Room 3: all set");
    daemon->vanish();
    daemon.emplace(DaemonQuirks{});
    ASSERT_TRUE(runUntil([this] { return daemon->daemon.shown().size() == 1; }));
    EXPECT_EQ(daemon->daemon.shown().begin()->second.title, "Room 3: all set");
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
