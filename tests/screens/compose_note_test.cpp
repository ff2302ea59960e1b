#include "tests/screens/compose_fixture.h"

#include <gmock/gmock.h>

namespace zelkovanta::screens {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::StartsWith;

using ComposeNote = ComposeTest;

TEST_F(ComposeNote, isKnownToTheReporterFromTheStart) {
    launchMember("member-1");
    open();
    EXPECT_THAT(takeReports(),
                ElementsAre("notes.history compose-note []", "notes.set compose-note []", "crash.setScreen send"));
}

TEST_F(ComposeNote, eachEditIsToldAndGoesToTheHistory) {
    launchMember("member-1");
    open();
    takeReports();
    form->editNote("Bring");
    form->editNote("Bring it");
    EXPECT_THAT(takeReports(),
                ElementsAre("notes.history compose-note [Bring]", "notes.set compose-note [Bring]",
                            "notes.history compose-note [Bring it]", "notes.set compose-note [Bring it]"));
}

TEST_F(ComposeNote, anEditOfAFormThatIsGoneIsNotTold) {
    launchMember("member-1");
    open();
    form->disappear();
    takeReports();
    form->editNote("late");
    EXPECT_THAT(takeReports(), IsEmpty());
}

TEST_F(ComposeNote, anEditOfAFormThatIsDoneWithIsNotTold) {
    launchMember("member-1");
    open();
    form->cancel();
    takeReports();
    form->editNote("late");
    EXPECT_THAT(takeReports(), IsEmpty()) << "nobody would take it back";
    form->disappear();
    EXPECT_THAT(takeReports(), ElementsAre("crash.setScreen queue"));
}

TEST_F(ComposeNote, stopsGrowingAtTwoHundredScalars) {
    launchMember("member-1");
    open();
    std::string typed;
    for (int count = 0; count < 230; ++count) {
        typed += "a";
        form->editNote(typed);
        typed = form->choice().note;
    }
    EXPECT_EQ(form->choice().note, std::string(200, 'a'));
}

TEST_F(ComposeNote, isCutByScalarsNotByWhatIsSeen) {
    launchMember("member-1");
    open();
    // A family of four is seven scalars: 28 of them are 196, and the next is cut behind its second person.
    const std::string family = "👨‍👩‍👧‍👦";
    std::string typed;
    for (int count = 0; count < 40; ++count) {
        typed += family;
    }
    form->editNote(typed);
    std::string expected;
    for (int count = 0; count < 28; ++count) {
        expected += family;
    }
    expected += "👨‍👩\u200D";
    EXPECT_EQ(form->choice().note, expected);

    form->editNote("x" + std::string("😀") + typed);
    EXPECT_THAT(form->choice().note, StartsWith("x😀👨"));
}

TEST_F(ComposeNote, whatIsToldIsTheCutNote) {
    launchMember("member-1");
    open();
    takeReports();
    form->editNote(std::string(250, 'b'));
    EXPECT_THAT(takeReports(), ElementsAre("notes.history compose-note [" + std::string(200, 'b') + "]",
                                           "notes.set compose-note [" + std::string(200, 'b') + "]"));
}

using ComposeLeaving = ComposeTest;

TEST_F(ComposeLeaving, cancellingRetiresTheNoteAndCloses) {
    launchMember("member-1");
    open();
    form->editNote("never mind");
    journal.take();
    form->cancel();
    EXPECT_EQ(closed, 1);
    EXPECT_THAT(takeReports(), ElementsAre("notes.retire compose-note"));
    form->disappear();
    EXPECT_THAT(takeReports(), ElementsAre("crash.setScreen queue"));
    EXPECT_THAT(takeLinesOf({"defaults"}), IsEmpty());
}

TEST_F(ComposeLeaving, cancellingTwiceClosesOnce) {
    launchMember("member-1");
    open();
    form->cancel();
    form->cancel();
    EXPECT_EQ(closed, 1);
}

TEST_F(ComposeLeaving, anyOtherWayRetiresTheNoteAndNamesTheScreenBehind) {
    launchMember("member-1");
    open();
    journal.take();
    form->disappear();
    form->disappear();
    EXPECT_THAT(takeReports(), ElementsAre("notes.retire compose-note", "crash.setScreen queue"));
    EXPECT_EQ(closed, 0);
}

TEST_F(ComposeLeaving, aFormThatIsDestroyedWasLeft) {
    launchMember("member-1");
    open();
    journal.take();
    form.reset();
    EXPECT_THAT(takeReports(), ElementsAre("notes.retire compose-note", "crash.setScreen queue"));
}

TEST_F(ComposeLeaving, aFormThatWasNeverShownTellsNobody) {
    launchMember("member-1");
    make({});
    form->cancel();
    form.reset();
    EXPECT_EQ(closed, 0);
    EXPECT_THAT(takeReports(), IsEmpty());
}

TEST_F(ComposeLeaving, behindARevokedComputerIsThePairingScreen) {
    launchMember("member-1");
    open();
    socket().fail({.closeCode = 4001, .httpStatus = {}});
    settle();
    ASSERT_FALSE(state().isPaired);
    journal.take();
    form->disappear();
    EXPECT_THAT(takeReports(), ElementsAre("notes.retire compose-note", "crash.setScreen pairing"));
}

}  // namespace
}  // namespace zelkovanta::screens
