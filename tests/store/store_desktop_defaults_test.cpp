#include "tests/store/store_test.h"

namespace zelkovanta::store {
namespace {

using platform::LoginItemStatus;
using platform::RegistrationIntent;
using platform::simulated::SimulatedLoginItem;
using testing::ElementsAre;
using testing::IsEmpty;

/// What is set up once for an installation.
struct StoreDesktopDefaultsTest : StoreTest {
    bool isMarked() const { return defaults.boolean("didApplyDesktopDefaultsV1").value_or(false); }

    /// Moves to a moment after the start.
    void moveTo(platform::Duration sinceStart) { loop.advance(sinceStart - (loop.now() - begin_)); }

private:
    platform::SteadyTime begin_ = loop.now();
};

TEST_F(StoreDesktopDefaultsTest, theFirstLaunchShowsTheWindowAndStartsAtLoginFromNowOn) {
    launch();
    settle();
    EXPECT_TRUE(state().settings.openAsWindow);
    EXPECT_TRUE(state().settings.launchAtLogin);
    EXPECT_THAT(loginItem.registrations, ElementsAre(RegistrationIntent::firstLaunch));
    EXPECT_THAT(journal.take(),
                ElementsAre("notifications.setActionHandler", "notifications.registerCategories", "crash.start",
                            "defaults openAsWindow = true",               //
                            "window.show",                                //
                            "keyStore.read deviceToken",                  //
                            "defaults launchAtLogin = true",              //
                            "defaults didApplyDesktopDefaultsV1 = true",  //
                            "center launchAtLogin changed",               //
                            "http POST /pair/request"));
}

TEST_F(StoreDesktopDefaultsTest, aMarkedInstallationIsLeftAlone) {
    skipDesktopDefaults();
    launch();
    loop.advance(1min);
    EXPECT_FALSE(state().settings.openAsWindow);
    EXPECT_FALSE(state().settings.launchAtLogin);
    EXPECT_THAT(loginItem.registrations, IsEmpty());
    EXPECT_THAT(takeLinesOf("defaults"), IsEmpty());
}

TEST_F(StoreDesktopDefaultsTest, aStoredWindowChoiceStands) {
    defaults.memory.setBoolean("openAsWindow", false);
    launch();
    settle();
    EXPECT_FALSE(state().settings.openAsWindow);
    EXPECT_THAT(takeLinesOf("window"), IsEmpty());
    EXPECT_TRUE(state().settings.launchAtLogin);
}

TEST_F(StoreDesktopDefaultsTest, anEarlierDecisionOnStartingAtLoginStands) {
    for (const bool decision : {false, true}) {
        support::Computer other;
        other.defaults.memory.setBoolean("launchAtLogin", decision);
        other.launch();
        other.loop.advance(1min);
        EXPECT_EQ(other.state().settings.launchAtLogin, decision);
        EXPECT_TRUE(other.state().settings.openAsWindow);
        EXPECT_THAT(other.loginItem.registrations, IsEmpty());
        EXPECT_EQ(other.defaults.boolean("didApplyDesktopDefaultsV1"), true);
        EXPECT_THAT(other.journal.lines(), testing::Not(testing::Contains("center launchAtLogin changed")));
    }
}

TEST_F(StoreDesktopDefaultsTest, aRegistrationThatTakesEffectLateIsSeenAtTheNextCheck) {
    loginItem.registering = SimulatedLoginItem::Registering::hasNoEffect;
    launch();
    moveTo(1950ms);
    EXPECT_FALSE(state().settings.launchAtLogin);
    loginItem.current = LoginItemStatus::enabled;
    moveTo(1999ms);
    EXPECT_FALSE(state().settings.launchAtLogin);
    moveTo(2000ms);  // The twentieth check.
    EXPECT_TRUE(state().settings.launchAtLogin);
    EXPECT_TRUE(isMarked());
    EXPECT_THAT(loginItem.registrations, testing::SizeIs(1));
    EXPECT_THAT(takeLinesOf("center"), ElementsAre("center launchAtLogin changed"));
}

TEST_F(StoreDesktopDefaultsTest, twentyChecksInVainLeadToASecondRegistration) {
    loginItem.registering = SimulatedLoginItem::Registering::hasNoEffect;
    launch();
    moveTo(2000ms);
    loginItem.registering = SimulatedLoginItem::Registering::takesEffect;
    moveTo(2249ms);
    EXPECT_THAT(loginItem.registrations, testing::SizeIs(1));
    moveTo(2250ms);
    EXPECT_THAT(loginItem.registrations, ElementsAre(RegistrationIntent::firstLaunch, RegistrationIntent::firstLaunch));
    EXPECT_TRUE(state().settings.launchAtLogin);
    EXPECT_TRUE(isMarked());
}

TEST_F(StoreDesktopDefaultsTest, theSecondRoundChecksAsOftenAsTheFirst) {
    loginItem.registering = SimulatedLoginItem::Registering::hasNoEffect;
    launch();
    moveTo(4249ms);
    loginItem.current = LoginItemStatus::enabled;
    moveTo(4250ms);
    EXPECT_TRUE(state().settings.launchAtLogin);
    EXPECT_TRUE(isMarked());
}

TEST_F(StoreDesktopDefaultsTest, afterTwoRoundsTheMarkStaysUnsetAndTheNextLaunchTriesAgain) {
    loginItem.registering = SimulatedLoginItem::Registering::fails;
    launch();
    moveTo(1h);
    EXPECT_THAT(loginItem.registrations, testing::SizeIs(2));
    EXPECT_FALSE(state().settings.launchAtLogin);
    EXPECT_FALSE(defaults.hasValue("launchAtLogin"));
    EXPECT_FALSE(isMarked());
    EXPECT_EQ(state().lastError, std::nullopt);

    loginItem.current = LoginItemStatus::enabled;
    loop.advance(1h);
    EXPECT_FALSE(state().settings.launchAtLogin) << "checked beyond the second round";

    store.reset();
    loginItem.current = LoginItemStatus::notRegistered;
    loginItem.registering = SimulatedLoginItem::Registering::takesEffect;
    launch();
    settle();
    EXPECT_TRUE(state().settings.launchAtLogin);
    EXPECT_TRUE(isMarked());
}

TEST_F(StoreDesktopDefaultsTest, whatThePersonSwitchedOffInTheDesktopStaysOff) {
    loginItem.current = LoginItemStatus::requiresApproval;
    launch();
    moveTo(1min);
    EXPECT_EQ(loginItem.current, LoginItemStatus::requiresApproval);
    EXPECT_FALSE(state().settings.launchAtLogin);
    EXPECT_FALSE(isMarked());
}

TEST_F(StoreDesktopDefaultsTest, aDecisionMadeBeforeTheFirstCheckStands) {
    launch();
    defaults.setBoolean("launchAtLogin", false);
    settle();
    EXPECT_FALSE(state().settings.launchAtLogin);
    EXPECT_TRUE(isMarked());
    EXPECT_THAT(loginItem.registrations, testing::SizeIs(1)) << "the decision is looked at behind the registration";
    EXPECT_THAT(takeLinesOf("center"), IsEmpty());
}

TEST_F(StoreDesktopDefaultsTest, aDecisionMadeBetweenChecksStandsAndEndsThem) {
    loginItem.registering = SimulatedLoginItem::Registering::hasNoEffect;
    launch();
    moveTo(550ms);
    defaults.setBoolean("launchAtLogin", false);
    loginItem.current = LoginItemStatus::enabled;
    moveTo(600ms);
    EXPECT_TRUE(isMarked());
    moveTo(1min);
    EXPECT_FALSE(state().settings.launchAtLogin);
    EXPECT_THAT(loginItem.registrations, testing::SizeIs(1));
    EXPECT_THAT(takeLinesOf("center"), IsEmpty());
}

TEST_F(StoreDesktopDefaultsTest, aStoreThatIsGoneRegistersNoMore) {
    loginItem.registering = SimulatedLoginItem::Registering::hasNoEffect;
    launch();
    moveTo(1s);
    store.reset();
    moveTo(1min);
    EXPECT_THAT(loginItem.registrations, testing::SizeIs(1));
    EXPECT_FALSE(isMarked());
}

}  // namespace
}  // namespace zelkovanta::store
