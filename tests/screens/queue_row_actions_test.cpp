#include "screens/queue_row_actions.h"

#include "tests/support/store_fixture.h"

#include <gtest/gtest.h>

namespace zelkovanta::screens {
namespace {

using support::makeDeviceOfMember;
using support::makeSignal;
using support::makeSignalThatIs;
using support::makeSnapshot;

struct QueueActions : testing::Test, support::Computer {
    QueueActions() {
        launchWith("member", makeSnapshot([](records::StateSnapshot& snapshot) {
                       snapshot.device = makeDeviceOfMember("member-1");
                       snapshot.signals = {makeSignal("signal-1")};
                   }));
    }
    std::string bodyOf(std::string_view method, std::string_view path) const {
        return openRequest(method, path)->request.body.value_or("");
    }
};

TEST_F(QueueActions, aPressIsOneRequestWithItsWord) {
    for (const auto& [action, word] : {std::pair{RowAction::acknowledge, "acknowledge"},
                                       std::pair{RowAction::done, "done"}, std::pair{RowAction::cancel, "cancel"}}) {
        press(store, main.executor(), state().signals.at(0), action);
        settle();
        EXPECT_EQ(bodyOf("PATCH", "/signals/signal-1"), R"({"action":")" + std::string{word} + R"("})");
        answerWith("PATCH", "/signals/signal-1", makeSignal("signal-1"));
    }
}

TEST_F(QueueActions, aPressReturnsBeforeAnythingIsSent) {
    press(store, main.executor(), state().signals.at(0), RowAction::done);
    EXPECT_EQ(requestCount("PATCH", "/signals/signal-1"), 0U);
    settle();
    EXPECT_EQ(requestCount("PATCH", "/signals/signal-1"), 1U);
}

TEST_F(QueueActions, twoPressesAreTwoRequests) {
    press(store, main.executor(), state().signals.at(0), RowAction::done);
    press(store, main.executor(), state().signals.at(0), RowAction::done);
    settle();
    EXPECT_EQ(requestCount("PATCH", "/signals/signal-1"), 2U);
}

TEST_F(QueueActions, aFailureIsTheStoresError) {
    press(store, main.executor(), state().signals.at(0), RowAction::done);
    settle();
    answer("PATCH", "/signals/signal-1", 409, R"({"error":"already_cleared"})");
    EXPECT_TRUE(state().lastError);
    EXPECT_EQ(state().signals.size(), 1U);
}

TEST_F(QueueActions, aSignalThatIsOverLeavesTheQueue) {
    press(store, main.executor(), state().signals.at(0), RowAction::done);
    settle();
    answerWith("PATCH", "/signals/signal-1", makeSignalThatIs("done", "signal-1"));
    EXPECT_TRUE(state().signals.empty());
}

TEST_F(QueueActions, aChosenStatusIsSent) {
    chooseMemberStatus(store, main.executor(), records::MemberStatus::dnd);
    settle();
    EXPECT_EQ(bodyOf("POST", "/members/me/status"), R"({"status":"dnd"})");
}

}  // namespace
}  // namespace zelkovanta::screens
