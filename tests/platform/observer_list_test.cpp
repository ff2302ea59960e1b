#include "platform/observer_list.h"

#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

namespace zelkovanta::platform {
namespace {

using testing::ElementsAre;

struct ObserverListTest : testing::Test {
    std::vector<std::string> told;
    std::optional<ObserverList<const std::string&>> list{std::in_place};

    [[nodiscard]] Observation observe(const std::string& name) {
        return list->add([this, name](const std::string& what) { told.push_back(name + " " + what); });
    }
};

TEST_F(ObserverListTest, whoeverObservesIsToldInTheOrderOfTheBeginning) {
    const auto first = observe("first");
    const auto second = observe("second");
    list->tell("a");
    list->tell("b");
    EXPECT_THAT(told, ElementsAre("first a", "second a", "first b", "second b"));
    EXPECT_EQ(list->size(), 2U);
}

TEST_F(ObserverListTest, whoeverLetsGoIsToldNoMore) {
    auto first = observe("first");
    const auto second = observe("second");
    first.reset();
    list->tell("a");
    EXPECT_THAT(told, ElementsAre("second a"));
    EXPECT_EQ(list->size(), 1U);
    list->clear();
    list->tell("b");
    EXPECT_THAT(told, ElementsAre("second a"));
}

TEST_F(ObserverListTest, anObservationMayEndAnotherThatIsNotToldAnyMore) {
    Observation second;
    const auto first = list->add([&](const std::string&) { second.reset(); });
    second = observe("second");
    list->tell("a");
    EXPECT_THAT(told, testing::IsEmpty());
}

TEST_F(ObserverListTest, anObservationMayEndItself) {
    Observation self;
    int count = 0;
    self = list->add([&](const std::string&) {
        self.reset();
        ++count;
    });
    list->tell("a");
    list->tell("b");
    EXPECT_EQ(count, 1);
}

TEST_F(ObserverListTest, whoeverBeginsWhileOthersAreToldIsToldTheNextTime) {
    Observation second;
    const auto first = list->add([&](const std::string&) {
        if (!second) {
            second = observe("second");
        }
    });
    list->tell("a");
    EXPECT_THAT(told, testing::IsEmpty());
    list->tell("b");
    EXPECT_THAT(told, ElementsAre("second b"));
}

TEST_F(ObserverListTest, theListMayGoWhileItsObserversAreTold) {
    const auto first = list->add([&](const std::string&) { list.reset(); });
    const auto second = observe("second");
    const std::string what = "a";
    list->tell(what);
    EXPECT_FALSE(list);
    EXPECT_THAT(told, ElementsAre("second a"));
}

}  // namespace
}  // namespace zelkovanta::platform
