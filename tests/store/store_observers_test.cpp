#include "server/server_message.h"
#include "tests/store/store_test.h"

namespace zelkovanta::store {
namespace {

using records::StateSnapshot;
using support::makeDevice;
using support::makeDeviceWithSignIn;
using support::makeMember;
using support::makeOffice;
using support::makeSignal;
using support::makeSignalThatIs;
using support::makeSnapshot;
using testing::ElementsAre;
using testing::IsEmpty;

struct StoreObserversTest : StoreTest {
    std::vector<StoreChanges> told;

    std::shared_ptr<void> observe() {
        return store->observe([this](const StoreChanges& changes) { told.push_back(changes); });
    }
    static StoreChanges changesOf(std::initializer_list<StoreField> fields) {
        StoreChanges changes;
        for (const StoreField field : fields) {
            changes.mark(field);
        }
        return changes;
    }
};

TEST_F(StoreObserversTest, aSnapshotIsToldOnceAndWhole) {
    launchPaired("room");
    settle();
    std::vector<std::string> seen;
    const auto guard = store->observe([&](const StoreChanges& changes) {
        told.push_back(changes);
        seen.push_back(state().office->id + " " + std::to_string(state().members.size()) + " " +
                       std::to_string(state().signals.size()) + " " + state().device->roomId.value_or("no room"));
    });
    answerWith("GET", "/state", makeSnapshot([](StateSnapshot& snapshot) { snapshot.signals = {makeSignal("s")}; }));
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told[0], changesOf({StoreField::office, StoreField::members, StoreField::rooms, StoreField::signalTypes,
                                  StoreField::signals, StoreField::device}));
    EXPECT_THAT(seen, ElementsAre("office-1 3 1 room-1"));
}

TEST_F(StoreObserversTest, aMoveIsSeenWithoutAnythingOfTheOldOffice) {
    launchWith("room", makeSnapshot([](StateSnapshot& snapshot) { snapshot.signals = {makeSignal("s")}; }));
    bool hasMixed = false;
    const auto guard = store->observe([&](const StoreChanges&) {
        const bool isNew = state().office->id == "office-2";
        const bool isEmpty =
            state().members.empty() && state().rooms.empty() && state().signals.empty() && !state().device;
        hasMixed = hasMixed || (isNew && !isEmpty);
        told.emplace_back();
    });
    deliverRecord("office.updated", server::server_message::OfficeUpdated{makeOffice("office-2")});
    EXPECT_FALSE(told.empty());
    EXPECT_FALSE(hasMixed);
}

TEST_F(StoreObserversTest, aResetIsSeenAsOneStep) {
    launchWith("room", makeSnapshot());
    std::vector<std::string> seen;
    const auto guard = store->observe([&](const StoreChanges&) {
        seen.push_back(std::string{state().isPaired ? "paired" : "unpaired"} +
                       (state().office ? " with office" : " without office") +
                       (state().setupQrNotice ? " and a notice" : ""));
    });
    socket().fail({.closeCode = 4001, .httpStatus = {}});
    settle();
    EXPECT_EQ(seen.back(), "unpaired without office and a notice");
    EXPECT_THAT(seen, testing::Not(testing::Contains("paired without office")));
    EXPECT_THAT(seen, testing::Not(testing::Contains("unpaired with office")));
    EXPECT_THAT(seen, testing::Not(testing::Contains("unpaired without office")));
}

TEST_F(StoreObserversTest, onlyWhatChangedIsNamed) {
    launchWith("room", makeSnapshot([](StateSnapshot& snapshot) { snapshot.signals = {makeSignal("s")}; }));
    deliver("pong", "{}");
    const auto guard = observe();
    deliverUpdated(makeSignalThatIs("acknowledged", "s"));
    deliverRecord("types.updated", server::server_message::TypesUpdated{{}});
    deliverRecord("member.updated", server::server_message::MemberUpdated{makeMember("member-1")});
    EXPECT_THAT(told, ElementsAre(changesOf({StoreField::signals}), changesOf({StoreField::signalTypes}),
                                  changesOf({StoreField::members})));
}

TEST_F(StoreObserversTest, nothingIsToldWhereNothingChanged) {
    launchWith("shared", makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
    deliver("pong", "{}");
    const auto guard = observe();
    deliver("pong", "{}");
    deliverUpdated(makeSignalThatIs("done", "unknown"));
    store->confirmFlexibleRoom("room-1");  // Nobody is signed in.
    settle();
    EXPECT_THAT(told, IsEmpty());
}

TEST_F(StoreObserversTest, theFlexibleSessionIsToldOnlyWhenItDiffers) {
    launchWith("shared", makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
    deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1"));
    const auto guard = observe();
    deliverRecord("rooms.updated", server::server_message::RoomsUpdated{makeSnapshot().rooms});
    EXPECT_THAT(told, ElementsAre(changesOf({StoreField::rooms})));
    told.clear();
    store->confirmFlexibleRoom("room-1");
    deliverRecord("rooms.updated", server::server_message::RoomsUpdated{{}});
    ASSERT_FALSE(told.empty());
    EXPECT_TRUE(told.back().contains(StoreField::flexibleRoomSession));
}

TEST_F(StoreObserversTest, aSignInAndItsEndTellOfTheFlexibleSessionOnlyWhereItDiffers) {
    for (const std::string role : {"room", "shared"}) {
        support::Computer other;
        other.launchWith(role, makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
        std::size_t times = 0;
        const auto guard = other.store->observe(
            [&](const StoreChanges& changes) { times += changes.contains(StoreField::flexibleRoomSession) ? 1U : 0U; });
        const std::size_t once = role == "shared" ? 1U : 0U;
        other.deliver("session.ended", "{}");
        EXPECT_EQ(times, 0U) << role << ": an end of nothing";
        other.deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1"));
        EXPECT_EQ(times, once) << role << ": a sign-in";
        other.deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1"));
        EXPECT_EQ(times, once) << role << ": the same once more";
        other.deliver("session.ended", "{}");
        EXPECT_EQ(times, 2 * once) << role << ": its end";
    }
}

TEST_F(StoreObserversTest, changesOfSeveralCallsInOneTurnAreToldOnce) {
    launchWith("shared", makeSnapshot([](StateSnapshot& snapshot) { snapshot.device = makeDevice(); }));
    deliverSessionStarted(makeDeviceWithSignIn("member-1"), makeMember("member-1"));
    const auto guard = observe();
    store->confirmFlexibleRoom("room-1");
    store->confirmFlexibleRoom("room-2");
    EXPECT_THAT(told, IsEmpty());
    settle();
    EXPECT_THAT(told, ElementsAre(changesOf({StoreField::flexibleRoomSession, StoreField::lastError})));
}

TEST_F(StoreObserversTest, everyObserverIsToldAndAnEndedOneNoMore) {
    launchWith("room", makeSnapshot());
    int first = 0;
    int second = 0;
    auto firstGuard = store->observe([&](const StoreChanges&) { ++first; });
    const auto secondGuard = store->observe([&](const StoreChanges&) { ++second; });
    deliverCreated(makeSignal("a"));
    const int firstBefore = first;
    const int secondBefore = second;
    EXPECT_GE(firstBefore, 1);
    EXPECT_EQ(firstBefore, secondBefore);
    firstGuard.reset();
    deliverCreated(makeSignal("b"));
    EXPECT_EQ(first, firstBefore);
    EXPECT_EQ(second, secondBefore + 1);
}

TEST_F(StoreObserversTest, anObserverMayEndItselfAndOthersWhileItIsTold) {
    launchWith("room", makeSnapshot());
    deliver("pong", "{}");
    int count = 0;
    std::shared_ptr<void> self;
    std::shared_ptr<void> next;
    self = store->observe([&](const StoreChanges&) {
        ++count;
        next.reset();
        self.reset();
    });
    next = store->observe([&](const StoreChanges&) { count += 100; });
    deliverCreated(makeSignal("a"));
    deliverCreated(makeSignal("b"));
    EXPECT_EQ(count, 1);
}

TEST_F(StoreObserversTest, whatAnObserverChangesIsToldInATurnOfItsOwn) {
    launchUnpaired();
    settle();
    int count = 0;
    std::shared_ptr<void> added;
    const auto guard = store->observe([&](const StoreChanges&) {
        if (++count == 1) {
            store->restartSetupQr();
            added = store->observe([&](const StoreChanges& changes) { told.push_back(changes); });
        }
    });
    store->restartSetupQr();
    settle();
    EXPECT_EQ(count, 2);
    EXPECT_EQ(told.size(), 1U);
}

TEST_F(StoreObserversTest, aGuardMayOutliveTheStore) {
    launchWith("room", makeSnapshot());
    auto guard = observe();
    deliverCreated(makeSignal("a"));
    store.reset();
    settle();
    const std::size_t before = told.size();
    guard.reset();
    EXPECT_EQ(told.size(), before);
}

}  // namespace
}  // namespace zelkovanta::store
