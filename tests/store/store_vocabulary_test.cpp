#include "tests/store/store_test.h"

namespace zelkovanta::store {
namespace {

using screens::vocabulary::Count;
using support::makeSnapshot;

struct StoreVocabularyTest : StoreTest {
    void launchInTrade(const std::string& vertical) {
        launchWith("room", makeSnapshot([&](records::StateSnapshot& snapshot) {
                       snapshot.office.vertical = vertical;
                       snapshot.office.departments = {{"billing", "Accounts", "Accountants"}};
                   }));
    }
};

TEST_F(StoreVocabularyTest, departmentsReadAsThePresentOfficeHasThem) {
    launchInTrade("Veterinary");
    EXPECT_EQ(store->departmentLabel("provider", Count::one), "dept-provider-veterinary");
    EXPECT_EQ(store->departmentLabel("billing", Count::one), "Accounts");
    EXPECT_EQ(store->departmentLabel("billing", Count::many), "Accountants");
}

TEST_F(StoreVocabularyTest, withoutAnOfficeTheVocabularyIsThatOfNoTrade) {
    launchUnpaired();
    EXPECT_EQ(store->departmentLabel("provider", Count::many), "dept-provider-other-plural");
    EXPECT_EQ(store->departmentLabel("billing", Count::one), "Billing");
}

}  // namespace
}  // namespace zelkovanta::store
