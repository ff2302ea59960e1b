#include "office/time_text.h"
#include "tests/office/office_fixture.h"

namespace zelkovanta::office {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class TimeTest : public OfficeTest {
protected:
    Computer room = pairRoom("Room 3");
};

TEST(TimeText, aTimeIsIsoWithThreeDigitsOfMilliseconds) {
    using namespace std::chrono;
    EXPECT_EQ(isoText(sys_days{2026y / 2 / 28} + 23h + 59min + 59s + 7ms), "2026-02-28T23:59:59.007Z");
    EXPECT_EQ(isoText(sys_days{1969y / 12 / 31} + 12h), "1969-12-31T12:00:00.000Z");
    EXPECT_EQ(isoText(sys_days{2024y / 2 / 29}), "2024-02-29T00:00:00.000Z");
}

TEST(TimeText, ordersAsTimeDoes) {
    const Timestamp start = std::chrono::sys_days{std::chrono::year{2026} / 12 / 31} + hours{23};
    Timestamp earlier = start;
    for (int step = 1; step < 2000; ++step) {
        const Timestamp later = start + milliseconds{step * step * 7};
        ASSERT_LT(isoText(earlier), isoText(later));
        earlier = later;
    }
}

TEST_F(TimeTest, aSignalExpiresWhenItsTimeIsUpAndNotBefore) {
    const std::string id = at(sendReady(room), "id");
    now += minutes{45} - milliseconds{1};
    EXPECT_THAT(office->tick(now), IsEmpty());
    now += milliseconds{1};
    const std::vector<Effect> effects = office->tick(now);
    ASSERT_THAT(kinds(effects), ElementsAre("signal.updated"));
    const json::value signal = frameIn(effects[0]).at("data").at("signal");
    EXPECT_EQ(at(signal, "id"), id);
    EXPECT_EQ(at(signal, "status"), "expired");
    EXPECT_EQ(at(signal, "clearedBy"), "timeout");
    EXPECT_EQ(at(signal, "clearedAt"), "2026-03-09T08:45:00.000Z");
    EXPECT_THAT(office->tick(now), IsEmpty());
}

TEST_F(TimeTest, anAcknowledgedSignalExpiresTooAndSeveralTogether) {
    const std::string id = at(sendReady(room), "id");
    act(room, id, "acknowledge");
    sendReady(room, {{"roomId", named<Room>("Room 1").id}});
    now += minutes{46};
    EXPECT_THAT(kinds(office->tick(now)), ElementsAre("signal.updated", "signal.updated"));
    EXPECT_EQ(stateAt(room).at("signals"), json::value(json::array()));
}

TEST_F(TimeTest, withoutALimitNothingExpires) {
    (void)office->changePractice({}, {.autoExpireMinutes = 0}, now);
    sendReady(room);
    now += hours{24 * 30};
    EXPECT_THAT(office->tick(now), IsEmpty());
    EXPECT_THAT(stateAt(room).at("signals").get_array(), SizeIs(1));
}

TEST_F(TimeTest, theNextDeadlineIsTheFirstOfAll) {
    const auto inMinutes = [&](int count) { return std::optional(timestamp(now) + minutes{count}); };
    storage = MemoryStorage();
    restart();
    EXPECT_EQ(office->nextDeadline(), std::nullopt);
    (void)office->addSample("harbour", now);
    const Computer computer = pairRoom("Room 3");
    EXPECT_EQ(office->nextDeadline(), inMinutes(15 + 24 * 60));  // the used pairing code
    requestSetup();
    EXPECT_EQ(office->nextDeadline(), inMinutes(5 + 10));
    (void)office->changeMember({}, "Sofia Marino", {.cooldownMinutes = 12}, now);
    EXPECT_EQ(office->nextDeadline(), inMinutes(12));
    sendReady(computer);
    (void)office->changePractice({}, {.autoExpireMinutes = 3}, now);
    EXPECT_EQ(office->nextDeadline(), inMinutes(3));
}

TEST_F(TimeTest, tickingAtEveryDeadlineComesToAnEnd) {
    requestSetup();
    sendReady(room);
    (void)office->changeMember({}, "Sofia Marino", {.cooldownMinutes = 12}, now);
    call("POST", "devices/me/signin-qr", pairShared());
    int ticks = 0;
    while (const auto deadline = office->nextDeadline()) {
        now = *deadline;
        (void)office->tick(now);
        ASSERT_LT(++ticks, 20);
    }
    EXPECT_TRUE(office->state().all<Signal>().empty());
    EXPECT_TRUE(office->state().all<PairingCode>().empty());
    EXPECT_TRUE(office->state().all<SetupRequest>().empty());
    EXPECT_TRUE(office->state().all<SignInCode>().empty());
    EXPECT_EQ(office->state().all<Device>().size(), 2U);
}

TEST_F(TimeTest, whatIsOverIsForgottenAfterAWeek) {
    const std::string id = at(sendReady(room), "id");
    act(room, id, "done");
    now += hours{24 * 7} - milliseconds{1};
    (void)office->tick(now);
    act(room, id, "done");
    EXPECT_EQ(verdict(), "409 already_cleared");
    now += milliseconds{1};
    (void)office->tick(now);
    act(room, id, "done");
    EXPECT_EQ(verdict(), "404 unknown_signal");
}

TEST_F(TimeTest, aClockSetBackMakesNothingExpireEarlyNorLocksAnybodyOut) {
    for (int attempt = 0; attempt < 10; ++attempt) {
        redeem("ABCD-EFGH");
    }
    now -= hours{1};
    redeem("ABCD-EFGH");
    EXPECT_EQ(verdict(), "404 invalid_code");
    sendReady(room);
    EXPECT_THAT(office->tick(now), IsEmpty());
    now += hours{1};
    EXPECT_THAT(kinds(office->tick(now)), ElementsAre("signal.updated"));
}

TEST_F(TimeTest, aTickThatCannotBeKeptChangesNothingAndIsMadeUpFor) {
    sendReady(room);
    now += minutes{45};
    storage.refuseCommits(true);
    const State before = office->state();
    EXPECT_THAT(office->tick(now), IsEmpty());
    EXPECT_EQ(office->state(), before);
    storage.refuseCommits(false);
    EXPECT_THAT(kinds(office->tick(now)), ElementsAre("signal.updated"));
}

}  // namespace
}  // namespace zelkovanta::office
