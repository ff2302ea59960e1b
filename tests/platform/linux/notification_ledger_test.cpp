#include "platform/linux/notification_ledger.h"

#include <sstream>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelkovanta::platform::linux_host {
namespace {

using namespace ledger;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

NotificationRequest request(const std::string& identifier, std::optional<NotificationSound> sound = std::nullopt) {
    NotificationRequest request;
    request.identifier = identifier;
    request.content = {.title = "Room 3 · Ready",
                       .body = "Alice",
                       .sound = std::move(sound),
                       .threadIdentifier = "r3",
                       .categoryIdentifier = "READY_SIGNAL",
                       .userInfo = {{"signalId", identifier}}};
    return request;
}

std::vector<std::string> identifiers(const NotificationRequests& requests) {
    std::vector<std::string> identifiers;
    for (const auto& one : requests) {
        identifiers.push_back(one->identifier);
    }
    return identifiers;
}

struct NotificationLedgerTest : testing::Test {
    SteadyTime now{};
    NotificationLedger book{{}, now};

    std::vector<std::string> told(Event event) {
        std::vector<std::string> texts;
        for (const auto& command : book.handle(std::move(event), now)) {
            std::ostringstream text;
            text << command;
            texts.push_back(text.str());
        }
        return texts;
    }
    void pass(Duration time) { now += time; }
    /// A daemon that runs, and has said what it can do.
    void ready(const Capabilities& capabilities = {.actions = true}) {
        static_cast<void>(told(BusAnswered{"bus", ":1.5"}));
        static_cast<void>(told(CapabilitiesKnown{":1.5", capabilities}));
    }
    void shown(const std::string& identifier, CallNumber call, DaemonId id) {
        static_cast<void>(told(Add{request(identifier), {}, 0}));
        static_cast<void>(told(PostAnswered{call, id}));
    }
};

TEST_F(NotificationLedgerTest, aRequestIsPostedOnceTheDaemonHasSaidWhatItCanDo) {
    EXPECT_THAT(told(Add{request("a"), {}, 1}), IsEmpty());
    EXPECT_THAT(told(BusAnswered{"bus", ":1.5"}), ElementsAre("ask :1.5 what it can do"));
    EXPECT_THAT(told(CapabilitiesKnown{":1.5", {}}), ElementsAre("post a to :1.5 in call 1"));
    EXPECT_THAT(identifiers(book.pending()), ElementsAre("a"));
    EXPECT_THAT(told(PostAnswered{1, 7}), ElementsAre("keep", "complete 1"));
    EXPECT_THAT(identifiers(book.pending()), IsEmpty());
    EXPECT_THAT(identifiers(book.delivered()), ElementsAre("a"));
}

TEST_F(NotificationLedgerTest, whatIsAskedForTwiceReplacesItself) {
    ready();
    shown("a", 1, 7);
    EXPECT_THAT(told(Add{request("a"), {}, 2}), ElementsAre("post a to :1.5 in call 2 over 7"));
    EXPECT_THAT(identifiers(book.pending()), ElementsAre("a"));
    EXPECT_THAT(identifiers(book.delivered()), IsEmpty());
    EXPECT_THAT(told(PostAnswered{2, 7}), ElementsAre("keep", "complete 2"));
}

TEST_F(NotificationLedgerTest, theNumberOfTheAnswerCountsAndTheOldOneGoes) {
    ready();
    shown("a", 1, 7);
    static_cast<void>(told(Add{request("a"), {}, 2}));
    EXPECT_THAT(told(PostAnswered{2, 8}), ElementsAre("withdraw 7 from :1.5", "keep", "complete 2"));
    EXPECT_THAT(told(RemoveDelivered{{"a"}}), ElementsAre("withdraw 8 from :1.5", "keep"));
}

TEST_F(NotificationLedgerTest, anOldNumberThatTheDaemonHasClosedItselfIsNotClosedAgain) {
    ready();
    shown("a", 1, 7);
    static_cast<void>(told(Add{request("a"), {}, 2}));
    EXPECT_THAT(told(Closed{7, 3}), ElementsAre("keep"));
    EXPECT_THAT(told(PostAnswered{2, 8}), ElementsAre("keep", "complete 2"));
}

TEST_F(NotificationLedgerTest, oneCallAtATimeForAnIdentifier) {
    ready();
    static_cast<void>(told(Add{request("a"), {}, 1}));
    EXPECT_THAT(told(Add{request("a"), {}, 2}), IsEmpty());
    EXPECT_THAT(told(PostAnswered{1, 7}), ElementsAre("keep", "post a to :1.5 in call 2 over 7"));
    EXPECT_THAT(told(PostAnswered{2, 7}), ElementsAre("keep", "complete 1", "complete 2"));
}

TEST_F(NotificationLedgerTest, aRequestRemovedDuringItsCallIsWithdrawnWhenItIsShown) {
    ready();
    static_cast<void>(told(Add{request("a", SoundFile{"chime.caf"}), {}, 1}));
    EXPECT_THAT(told(RemovePending{{"a"}}), ElementsAre("complete 1"));
    EXPECT_THAT(identifiers(book.pending()), IsEmpty());
    EXPECT_THAT(told(PostAnswered{1, 7}), ElementsAre("keep", "withdraw 7 from :1.5"));
    EXPECT_THAT(identifiers(book.delivered()), IsEmpty());
}

TEST_F(NotificationLedgerTest, oneThatWasListedAsPendingIsWithdrawnThoughItHasBeenShownSince) {
    ready();
    static_cast<void>(told(Add{request("a"), {}, 1}));
    pass(NotificationLedger::answerLimit);
    EXPECT_THAT(told(TimeCame{}), ElementsAre("complete 1"));
    ASSERT_THAT(identifiers(book.pending()), ElementsAre("a"));
    static_cast<void>(told(PostAnswered{1, 7}));
    EXPECT_THAT(told(RemovePending{{"a", "unknown"}}), ElementsAre("withdraw 7 from :1.5", "keep"));
    EXPECT_THAT(identifiers(book.delivered()), IsEmpty());
}

TEST_F(NotificationLedgerTest, oneThatWasListedAsDeliveredIsWithdrawnThoughItsDaemonHasGoneSince) {
    ready();
    shown("a", 1, 7);
    shown("b", 2, 8);
    ASSERT_THAT(identifiers(book.delivered()), ElementsAre("a", "b"));
    static_cast<void>(told(DaemonChanged{":1.9"}));
    EXPECT_THAT(told(RemoveDelivered{{"a", "unknown"}}), IsEmpty());
    EXPECT_THAT(told(CapabilitiesKnown{":1.9", {}}), ElementsAre("post b to :1.9 in call 3"));
    EXPECT_THAT(told(RemoveDelivered{{"b"}}), IsEmpty());
    EXPECT_THAT(told(PostAnswered{3, 1}), ElementsAre("keep", "withdraw 1 from :1.9"));
}

TEST_F(NotificationLedgerTest, whatWasAddedOverADeliveredOneIsNotThatOne) {
    ready();
    static_cast<void>(told(Add{request("new"), {}, 1}));
    EXPECT_THAT(told(RemoveDelivered{{"new"}}), IsEmpty());
    static_cast<void>(told(PostAnswered{1, 6}));
    shown("a", 2, 7);
    static_cast<void>(told(Add{request("a"), {}, 2}));
    EXPECT_THAT(told(RemoveDelivered{{"a"}}), IsEmpty());
    EXPECT_THAT(told(PostAnswered{3, 7}), ElementsAre("keep", "complete 2"));
    EXPECT_THAT(identifiers(book.delivered()), ElementsAre("a", "new"));
}

TEST_F(NotificationLedgerTest, aSoundIsPlayedOnceAndOnlyWhereOneIsAskedFor) {
    ready();
    static_cast<void>(told(Add{request("a", SoundFile{"bell.caf"}), {}, 1}));
    EXPECT_THAT(told(PostAnswered{1, 7}), ElementsAre("keep", "complete 1", "play bell.caf"));
    static_cast<void>(told(Add{request("b"), {}, 2}));
    EXPECT_THAT(told(PostAnswered{2, 8}), ElementsAre("keep", "complete 2"));
}

TEST_F(NotificationLedgerTest, theSoundForMessagesIsTheDaemonsWhereItHasOne) {
    ready({.actions = true, .bodyMarkup = false, .persistence = false, .sound = true});
    EXPECT_THAT(told(Add{request("a", DefaultSound{}), {}, 1}), ElementsAre("post a to :1.5 in call 1 with sound"));
    EXPECT_THAT(told(PostAnswered{1, 7}), ElementsAre("keep", "complete 1"));
    static_cast<void>(told(CapabilitiesKnown{":1.5", {}}));
    EXPECT_THAT(told(Add{request("b", DefaultSound{}), {}, 2}), ElementsAre("post b to :1.5 in call 2"));
    EXPECT_THAT(told(PostAnswered{2, 8}), ElementsAre("keep", "complete 2", "play the default sound"));
}

TEST_F(NotificationLedgerTest, aRestartedDaemonShowsWhatIsDueOnceAndInSilence) {
    ready();
    static_cast<void>(told(Add{request("b", SoundFile{"bell.caf"}), {}, 1}));
    static_cast<void>(told(PostAnswered{1, 1}));
    static_cast<void>(told(Add{request("a", DefaultSound{}), {}, 2}));
    static_cast<void>(told(PostAnswered{2, 2}));
    EXPECT_THAT(told(DaemonChanged{":1.9"}), ElementsAre("keep", "ask :1.9 what it can do"));
    EXPECT_THAT(identifiers(book.pending()), ElementsAre("a", "b"));
    EXPECT_THAT(
        told(CapabilitiesKnown{":1.9", {.actions = true, .bodyMarkup = false, .persistence = false, .sound = true}}),
        ElementsAre("post b to :1.9 in call 3", "post a to :1.9 in call 4"));
    EXPECT_THAT(told(PostAnswered{3, 1}), ElementsAre("keep"));
    EXPECT_THAT(told(PostAnswered{4, 2}), ElementsAre("keep"));
    EXPECT_THAT(told(RemoveDelivered{{"a"}}), ElementsAre("withdraw 2 from :1.9", "keep"));
}

TEST_F(NotificationLedgerTest, nothingOfTheOldDaemonIsHeardAfterItHasGone) {
    ready();
    shown("a", 1, 7);
    static_cast<void>(told(Add{request("b"), {}, 2}));
    static_cast<void>(told(DaemonChanged{std::nullopt}));
    EXPECT_THAT(told(PostAnswered{2, 9}), IsEmpty());
    EXPECT_THAT(told(Closed{7, 2}), IsEmpty());
    EXPECT_THAT(told(Invoked{7, "DONE"}), IsEmpty());
    EXPECT_THAT(told(CapabilitiesKnown{":1.5", {}}), IsEmpty());
    EXPECT_THAT(identifiers(book.pending()), ElementsAre("a", "b"));
    EXPECT_THAT(book.kept().notifications, IsEmpty());
}

TEST_F(NotificationLedgerTest, whatIsRemovedWhileNoDaemonRunsIsNotShownLater) {
    ready();
    shown("a", 1, 7);
    static_cast<void>(told(DaemonChanged{std::nullopt}));
    EXPECT_THAT(told(RemovePending{{"a"}}), IsEmpty());
    static_cast<void>(told(DaemonChanged{":1.9"}));
    EXPECT_THAT(told(CapabilitiesKnown{":1.9", {}}), IsEmpty());
}

TEST_F(NotificationLedgerTest, withoutABusARequestIsCompletedAndHeardAtOnce) {
    EXPECT_FALSE(book.isSettled());
    EXPECT_THAT(told(BusMissing{}), IsEmpty());
    EXPECT_TRUE(book.isSettled());
    EXPECT_THAT(told(Add{request("a", SoundFile{"pulse.caf"}), {}, 1}), ElementsAre("complete 1", "play pulse.caf"));
    EXPECT_THAT(identifiers(book.pending()), ElementsAre("a"));
}

TEST_F(NotificationLedgerTest, aMissingDaemonIsStartedAndWhatCannotBeShownWaitsInSilence) {
    static_cast<void>(told(BusAnswered{"bus", std::nullopt}));
    EXPECT_THAT(told(Add{request("a", SoundFile{"pulse.caf"}), {}, 1}), ElementsAre("start a daemon"));
    EXPECT_THAT(told(Add{request("b"), {}, 2}), IsEmpty());
    EXPECT_THAT(told(StartEnded{}), ElementsAre("complete 1", "play pulse.caf", "complete 2"));
    EXPECT_THAT(told(Add{request("c"), {}, 3}), ElementsAre("start a daemon"));
    static_cast<void>(told(StartEnded{}));
    static_cast<void>(told(DaemonChanged{":1.9"}));
    EXPECT_THAT(told(CapabilitiesKnown{":1.9", {}}),
                ElementsAre("post a to :1.9 in call 1", "post b to :1.9 in call 2", "post c to :1.9 in call 3"));
    EXPECT_THAT(told(PostAnswered{1, 1}), ElementsAre("keep"));
}

TEST_F(NotificationLedgerTest, aBusThatNeverAnswersHoldsUpNobody) {
    static_cast<void>(told(Add{request("a"), {}, 1}));
    ASSERT_EQ(book.nextDue(), now + 2s);
    pass(2s);
    EXPECT_THAT(told(TimeCame{}), ElementsAre("complete 1"));
    EXPECT_TRUE(book.isSettled());
    EXPECT_THAT(told(BusAnswered{"bus", std::nullopt}), ElementsAre("start a daemon"));
}

TEST_F(NotificationLedgerTest, aDaemonThatNeverAnswersIsWaitedForAndHoldsUpNobody) {
    ready();
    static_cast<void>(told(Add{request("a", SoundFile{"blip.caf"}), {}, 1}));
    pass(NotificationLedger::answerLimit);
    EXPECT_THAT(told(TimeCame{}), ElementsAre("complete 1", "play blip.caf"));
    EXPECT_THAT(identifiers(book.pending()), ElementsAre("a"));
    EXPECT_THAT(told(RemovePending{{"a"}}), IsEmpty());
    pass(1h);
    EXPECT_THAT(told(TimeCame{}), IsEmpty());
    EXPECT_THAT(told(PostAnswered{1, 7}), ElementsAre("keep", "withdraw 7 from :1.5"));
}

TEST_F(NotificationLedgerTest, aDaemonThatDoesNotSayWhatItCanDoIsTakenForOneThatCanDoNothing) {
    static_cast<void>(told(BusAnswered{"bus", ":1.5"}));
    static_cast<void>(told(Add{request("a"), {}, 1}));
    pass(2s);
    EXPECT_THAT(told(TimeCame{}), ElementsAre("post a to :1.5 in call 1", "complete 1"));
}

TEST_F(NotificationLedgerTest, aDaemonThatRefusesIsAskedThreeTimesMore) {
    ready();
    static_cast<void>(told(Add{request("a"), {}, 1}));
    EXPECT_THAT(told(PostRefused{1}), ElementsAre("complete 1"));
    pass(1199ms);
    EXPECT_THAT(told(TimeCame{}), IsEmpty());
    pass(1ms);
    EXPECT_THAT(told(TimeCame{}), ElementsAre("post a to :1.5 in call 2"));
    EXPECT_THAT(told(PostAnswered{2, 0}), IsEmpty());
    pass(5s);
    EXPECT_THAT(told(TimeCame{}), ElementsAre("post a to :1.5 in call 3"));
    EXPECT_THAT(told(PostRefused{3}), IsEmpty());
    pass(30s);
    EXPECT_THAT(told(TimeCame{}), ElementsAre("post a to :1.5 in call 4"));
    EXPECT_THAT(told(PostRefused{4}), IsEmpty());
    pass(1h);
    EXPECT_THAT(told(TimeCame{}), IsEmpty());
    static_cast<void>(told(DaemonChanged{":1.9"}));
    EXPECT_THAT(told(CapabilitiesKnown{":1.9", {}}), ElementsAre("post a to :1.9 in call 5"));
}

TEST_F(NotificationLedgerTest, aRefusedReplacementLeavesTheOldOneToBeWithdrawn) {
    ready();
    shown("a", 1, 7);
    static_cast<void>(told(Add{request("a"), {}, 2}));
    static_cast<void>(told(PostRefused{2}));
    EXPECT_THAT(identifiers(book.pending()), ElementsAre("a"));
    EXPECT_THAT(told(RemovePending{{"a"}}), ElementsAre("withdraw 7 from :1.5", "keep"));
}

TEST_F(NotificationLedgerTest, whatEndsOneDaemonAfterTheOtherIsGivenUp) {
    ready();
    static_cast<void>(told(Add{request("a"), {}, 1}));
    int posts = 1;
    for (int daemon = 0; daemon < 10; ++daemon) {
        const std::string name = ":2." + std::to_string(daemon);
        static_cast<void>(told(DaemonChanged{std::nullopt}));
        static_cast<void>(told(DaemonChanged{name}));
        posts += static_cast<int>(told(CapabilitiesKnown{name, {}}).size());
    }
    EXPECT_EQ(posts, 4);
}

TEST_F(NotificationLedgerTest, aPressIsTheShownRequestsAndWithdrawsIt) {
    ready();
    shown("a", 1, 7);
    EXPECT_THAT(told(Invoked{7, "ONMYWAY"}), ElementsAre("respond ONMYWAY of a", "withdraw 7 from :1.5", "keep"));
    EXPECT_THAT(told(Invoked{7, "ONMYWAY"}), IsEmpty());
    EXPECT_THAT(identifiers(book.delivered()), IsEmpty());
}

TEST_F(NotificationLedgerTest, aPressToldAfterTheClosingThatItCausedStillCountsOnce) {
    ready();
    shown("a", 1, 7);
    EXPECT_THAT(told(Closed{7, 2}), ElementsAre("keep"));
    EXPECT_THAT(told(Invoked{7, "DONE"}), ElementsAre("respond DONE of a"));
    EXPECT_THAT(told(Invoked{7, "DONE"}), IsEmpty());
}

TEST_F(NotificationLedgerTest, aPressDuringAReplacementIsThatOfWhatWasSeen) {
    ready();
    NotificationRequest first = request("a");
    first.content.userInfo["memberId"] = "alice";
    static_cast<void>(told(Add{first, {}, 1}));
    static_cast<void>(told(PostAnswered{1, 7}));
    NotificationRequest second = first;
    second.content.userInfo["memberId"] = "bob";
    static_cast<void>(told(Add{second, {}, 2}));
    const Commands commands = book.handle(Invoked{7, "DONE"}, now);
    ASSERT_EQ(commands.size(), 1U);
    EXPECT_EQ(*std::get<Respond>(commands[0]).request, first);
    EXPECT_THAT(told(PostAnswered{2, 7}), ElementsAre("keep", "complete 2"));
}

TEST_F(NotificationLedgerTest, nothingButAPressOfAButtonIsAnAnswer) {
    ready();
    shown("a", 1, 7);
    static_cast<void>(told(TokenGiven{7, "leave"}));
    EXPECT_THAT(told(Invoked{7, "default"}), ElementsAre("raise with token 'leave'", "respond default of a"));
    EXPECT_THAT(identifiers(book.delivered()), ElementsAre("a"));
    EXPECT_THAT(told(Closed{7, 2}), ElementsAre("keep"));
    shown("b", 2, 8);
    EXPECT_THAT(told(Closed{8, 4}), ElementsAre("keep"));
    EXPECT_THAT(identifiers(book.delivered()), IsEmpty());
}

TEST_F(NotificationLedgerTest, anExpiredOneMayStillBeListedAndIsWithdrawn) {
    ready();
    shown("a", 1, 7);
    EXPECT_THAT(told(Closed{7, 1}), IsEmpty());
    EXPECT_THAT(identifiers(book.delivered()), ElementsAre("a"));
    EXPECT_THAT(told(RemoveDelivered{{"a"}}), ElementsAre("withdraw 7 from :1.5", "keep"));
}

struct NoticesOfTheLedgerTest : NotificationLedgerTest {
    NoticesOfTheLedgerTest() {
        ready();
        NotificationRequest notice = request("notice", DefaultSound{});
        notice.content.categoryIdentifier.clear();
        static_cast<void>(told(Add{notice, {}, 1}));
        static_cast<void>(told(PostAnswered{1, 7}));
    }
    std::vector<std::string> toldTheNextDaemon() {
        static_cast<void>(told(DaemonChanged{":1.9"}));
        return told(CapabilitiesKnown{":1.9", {.actions = true, .sound = true}});
    }
};

TEST_F(NoticesOfTheLedgerTest, theNextDaemonShowsItOnceInSilence) {
    EXPECT_THAT(toldTheNextDaemon(), ElementsAre("post notice to :1.9 in call 2"));
    EXPECT_THAT(told(PostAnswered{2, 1}), ElementsAre("keep"));
    EXPECT_THAT(identifiers(book.delivered()), ElementsAre("notice"));
}

TEST_F(NoticesOfTheLedgerTest, whatThePersonTookAwayDoesNotComeBack) {
    static_cast<void>(told(Closed{7, 2}));
    EXPECT_THAT(toldTheNextDaemon(), IsEmpty());
}

TEST_F(NoticesOfTheLedgerTest, oneThatHasExpiredIsTheDaemonsAffair) {
    static_cast<void>(told(Closed{7, 1}));
    EXPECT_THAT(identifiers(book.delivered()), IsEmpty());
    EXPECT_THAT(toldTheNextDaemon(), IsEmpty());
}

TEST_F(NoticesOfTheLedgerTest, theNextRunLeavesItAlone) {
    EXPECT_THAT(book.kept().notifications, IsEmpty());
}

TEST_F(NotificationLedgerTest, oneThatIsDroppedBeforeItsAnswerIsGone) {
    ready();
    static_cast<void>(told(Add{request("a"), {}, 1}));
    EXPECT_THAT(told(Closed{7, 4}), IsEmpty());
    EXPECT_THAT(told(PostAnswered{1, 7}), ElementsAre("keep", "complete 1"));
    EXPECT_THAT(identifiers(book.delivered()), IsEmpty());
}

TEST_F(NotificationLedgerTest, aNumberThatIsGivenTwiceBelongsToTheLater) {
    ready();
    shown("a", 1, 7);
    shown("b", 2, 7);
    EXPECT_THAT(identifiers(book.delivered()), ElementsAre("b"));
    const Commands commands = book.handle(Invoked{7, "DONE"}, now);
    EXPECT_EQ(std::get<Respond>(commands.at(0)).request->identifier, "b");
}

TEST_F(NotificationLedgerTest, theNextRunKnowsWhatTheLastOneLeft) {
    ready();
    shown("a", 1, 7);
    NotificationLedger next(book.kept(), now);
    EXPECT_FALSE(next.isSettled());
    static_cast<void>(next.handle(BusAnswered{"bus", ":1.5"}, now));
    ASSERT_THAT(identifiers(next.delivered()), ElementsAre("a"));
    EXPECT_EQ(next.delivered()[0]->content.userInfo, request("a").content.userInfo);
    EXPECT_EQ(next.delivered()[0]->content.body, "");
    EXPECT_EQ(next.kept(), book.kept());
    book = next;
    EXPECT_THAT(told(RemoveDelivered{{"a"}}), ElementsAre("withdraw 7 from :1.5", "keep"));
}

TEST_F(NotificationLedgerTest, anInheritedOneIsReplacedOrPressedLikeAnyOther) {
    const KeptNotifications kept{"bus", ":1.5", {{7, "a", "READY_SIGNAL", {}}, {8, "b", "READY_SIGNAL", {}}}};
    book = NotificationLedger(kept, now);
    ready();
    EXPECT_THAT(told(Invoked{8, "DONE"}), ElementsAre("respond DONE of b", "withdraw 8 from :1.5", "keep"));
    EXPECT_THAT(told(Add{request("a"), {}, 1}), ElementsAre("post a to :1.5 in call 1 over 7"));
}

TEST_F(NotificationLedgerTest, anotherDaemonOrAnotherBusInheritsNothing) {
    const KeptNotifications kept{"bus", ":1.5", {{7, "a", "READY_SIGNAL", {}}}};
    book = NotificationLedger(kept, now);
    EXPECT_THAT(told(BusAnswered{"bus", ":1.6"}), ElementsAre("ask :1.6 what it can do", "keep"));
    EXPECT_THAT(book.delivered(), IsEmpty());
    book = NotificationLedger(kept, now);
    EXPECT_THAT(told(BusAnswered{"other bus", ":1.5"}), ElementsAre("ask :1.5 what it can do", "keep"));
    EXPECT_THAT(book.delivered(), IsEmpty());
    book = NotificationLedger(kept, now);
    EXPECT_THAT(told(BusAnswered{"bus", std::nullopt}), ElementsAre("keep"));
    EXPECT_THAT(book.delivered(), IsEmpty());
}

TEST_F(NotificationLedgerTest, whatTheLastRunSaidIsNotKnownAndSoNotSaidToTheNextDaemon) {
    book = NotificationLedger({"bus", ":1.5", {{7, "a", "READY_SIGNAL", {}}}}, now);
    ready();
    EXPECT_THAT(told(DaemonChanged{":1.9"}), ElementsAre("keep", "ask :1.9 what it can do"));
    EXPECT_THAT(told(CapabilitiesKnown{":1.9", {}}), IsEmpty());
    EXPECT_THAT(book.pending(), IsEmpty());
}

}  // namespace
}  // namespace zelkovanta::platform::linux_host
