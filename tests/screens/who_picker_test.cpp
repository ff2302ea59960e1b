#include "screens/who_picker.h"

#include "tests/screens/who_picker_office.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelkovanta::screens {
namespace {

using store::StoreState;
using testing::ElementsAre;
using testing::IsEmpty;

const platform::KeysAsTexts strings;
constexpr std::nullopt_t noTarget = std::nullopt;

TEST(Candidates, areThoseOnShiftOfExactlyThatDepartment) {
    StoreState state = usualOffice();
    EXPECT_THAT(idsOf(candidates(state, "provider")), ElementsAre("p1", "p2"));
    EXPECT_THAT(idsOf(candidates(state, "Provider")), IsEmpty());
    state.members[0].onShift = false;
    EXPECT_THAT(idsOf(candidates(state, "provider")), ElementsAre("p2"));
    state.members[2].active = false;
    EXPECT_THAT(idsOf(candidates(state, "provider")), ElementsAre("p2"));
}

TEST(Candidates, neverHoldTheSignedInMember) {
    StoreState state = usualOffice();
    state.device = support::makeDeviceWithSignIn("p1");
    EXPECT_THAT(idsOf(candidates(state, "provider")), ElementsAre("p2"));
}

TEST(UngroupedRecipients, areThoseOfNoDepartmentOfTheOffice) {
    StoreState state = usualOffice();
    EXPECT_THAT(idsOf(ungroupedRecipients(state)), ElementsAre("x1"));
    state.members[1].department = "Nurse";
    EXPECT_THAT(idsOf(ungroupedRecipients(state)), ElementsAre("n1", "x1"));
    state.office.reset();
    EXPECT_EQ(ungroupedRecipients(state).size(), 6U);
}

TEST(AllowsAnyProvider, isTrueWhereTheOfficeSaysNothing) {
    EXPECT_TRUE(allowsAnyProvider(usualOffice()));
    EXPECT_TRUE(allowsAnyProvider(usualOffice(true)));
    EXPECT_FALSE(allowsAnyProvider(usualOffice(false)));
    StoreState state = usualOffice(false);
    state.office->settings.reset();
    EXPECT_TRUE(allowsAnyProvider(state));
    state.office.reset();
    EXPECT_TRUE(allowsAnyProvider(state));
}

TEST(HasProviderDepartment, comparesExactly) {
    EXPECT_TRUE(hasProviderDepartment(usualOffice()));
    EXPECT_FALSE(hasProviderDepartment(officeWith({"Provider", "nurse"}, {})));
    EXPECT_FALSE(hasProviderDepartment(StoreState{}));
}

TEST(IsGroupSelected, needsCandidatesAndAllOfThem) {
    const StoreState state = usualOffice();
    EXPECT_FALSE(isGroupSelected(state, people({}), "nurse"));
    EXPECT_FALSE(isGroupSelected(state, people({"n1"}), "nurse"));
    EXPECT_TRUE(isGroupSelected(state, people({"n2", "n1"}), "nurse"));
    EXPECT_TRUE(isGroupSelected(state, people({"n2", "a1", "n1"}), "nurse"));
    EXPECT_TRUE(isGroupSelected(state, people({"a1"}), "assistant"));
    EXPECT_FALSE(isGroupSelected(state, people({}), "nobody's"));
}

TEST(TogglePerson, addsAtTheEndAndTakesOut) {
    EXPECT_EQ(togglePerson(people({"b"}), "a"), people({"b", "a"}));
    EXPECT_EQ(togglePerson(people({"b", "a", "c"}), "a"), people({"b", "c"}));
    EXPECT_EQ(togglePerson(whoeverIsNext(), "a"), people({"a"}));
}

TEST(ToggleGroup, addsWhoIsMissingInTheirOrderAndTakesAllOut) {
    const StoreState state = usualOffice();
    EXPECT_EQ(toggleGroup(state, people({}), "nurse"), people({"n1", "n2"}));
    EXPECT_EQ(toggleGroup(state, people({"n2", "p1"}), "nurse"), people({"n2", "p1", "n1"}));
    EXPECT_EQ(toggleGroup(state, people({"n2", "p1", "n1", "a1"}), "nurse"), people({"p1", "a1"}));
    EXPECT_EQ(toggleGroup(state, whoeverIsNext(), "nurse"), people({"n1", "n2"}));
    EXPECT_EQ(toggleGroup(state, whoeverIsNext(), "nobody's"), people({}));
}

TEST(ToggleAny, letsGoOfThePeople) {
    EXPECT_EQ(toggleAny(people({"a", "b"})), whoeverIsNext());
    EXPECT_EQ(toggleAny(whoeverIsNext()), people({}));
}

struct Resolution {
    std::string what;
    StoreState state;
    WhoSelection selection;
    std::optional<std::string> typeTarget;
    Recipient result;
    std::optional<std::string> hint;
};

std::vector<Resolution> resolutions() {
    const std::string everyNurse = "Goes to everyone in dept-nurse on shift. First to respond takes it.";
    const std::string next = "Goes to the next available dept-provider-other.";
    const auto combined = [](const char* count) {
        return "Combined call: all " + std::string{count} + " get it. First to respond takes it.";
    };
    StoreState oneOfTwoOnShift = usualOffice();
    oneOfTwoOnShift.members[3].onShift = false;
    StoreState twins = officeWith({"nurse", "nurse"}, {{"n1", "nurse"}, {"n2", "nurse"}});
    return {
        {"one person", usualOffice(), people({"n1"}), noTarget, toPeople({"n1"}), std::nullopt},
        {"both of a department", usualOffice(), people({"n2", "n1"}), noTarget, toDepartment("nurse"), everyNurse},
        {"the only one of a department", usualOffice(), people({"a1"}), noTarget, toPeople({"a1"}), std::nullopt},
        {"the only one on shift", oneOfTwoOnShift, people({"n1"}), noTarget, toPeople({"n1"}), std::nullopt},
        {"all providers, allowed by default", usualOffice(), people({"p1", "p2"}), noTarget, openCall(), next},
        {"all providers, allowed", usualOffice(true), people({"p2", "p1"}), noTarget, openCall(), next},
        {"all providers, not allowed", usualOffice(false), people({"p1", "p2"}), noTarget, toDepartment("provider"),
         "Goes to everyone in dept-provider-other on shift. First to respond takes it."},
        {"a department and one more", usualOffice(), people({"n1", "n2", "a1"}), noTarget, toPeople({"n1", "n2", "a1"}),
         combined("3")},
        {"some of two departments", usualOffice(), people({"n1", "p1"}), noTarget, toPeople({"n1", "p1"}),
         combined("2")},
        {"people win over the type's department", usualOffice(), people({"p1"}), "nurse", toPeople({"p1"}),
         std::nullopt},
        {"nobody", usualOffice(), people({}), noTarget, openCall(), "Pick who should get it."},
        {"nobody, with a type for nurses", usualOffice(), people({}), "nurse", toDepartment("nurse"), everyNurse},
        {"whoever is next, with a type for nurses", usualOffice(), whoeverIsNext(), "nurse", openCall(), next},
        {"whoever is next", usualOffice(), whoeverIsNext(), noTarget, openCall(), next},
        {"whoever is next, not allowed", usualOffice(false), whoeverIsNext(), noTarget, openCall(), next},
        {"a type for a department that is not there", usualOffice(), people({}), "Lab", toDepartment("Lab"),
         "Goes to everyone in Lab on shift. First to respond takes it."},
        {"a department that is listed twice", twins, people({"n1", "n2"}), noTarget, toDepartment("nurse"), everyNurse},
        {"people of an unlisted department", officeWith({}, {{"n1", "nurse"}, {"n2", "nurse"}}), people({"n1", "n2"}),
         noTarget, toPeople({"n1", "n2"}), combined("2")},
    };
}

TEST(ResolveRecipient, workedOutFromWhoIsChecked) {
    for (const Resolution& each : resolutions()) {
        EXPECT_EQ(resolveRecipient(each.state, each.selection, each.typeTarget), each.result) << each.what;
    }
}

TEST(RecipientHint, saysWhatWillHappen) {
    for (const Resolution& each : resolutions()) {
        EXPECT_EQ(recipientHint(each.state, each.selection, each.typeTarget, strings), each.hint) << each.what;
    }
}

TEST(EncodeRecipient, writesOneOfThreeForms) {
    EXPECT_EQ(encodeRecipient(toDepartment("nurse")), "dept:nurse");
    EXPECT_EQ(encodeRecipient(toDepartment("")), "dept:");
    EXPECT_EQ(encodeRecipient(toPeople({"a"})), "ids:a");
    EXPECT_EQ(encodeRecipient(toPeople({"b", "a"})), "ids:b,a");
    EXPECT_EQ(encodeRecipient(openCall()), "any");
}

TEST(DecodeRecipient, readsThemAndTakesAnythingElseForNobody) {
    EXPECT_EQ(decodeRecipient("dept:nurse"), toDepartment("nurse"));
    EXPECT_EQ(decodeRecipient("dept:ids:a,b"), toDepartment("ids:a,b"));
    EXPECT_EQ(decodeRecipient("ids:a,b"), toPeople({"a", "b"}));
    EXPECT_EQ(decodeRecipient("ids:dept:x"), toPeople({"dept:x"}));
    EXPECT_EQ(decodeRecipient("ids:,a,,b,"), toPeople({"a", "b"}));
    for (const char* text : {"any", "", "ids:", "nurse", "DEPT:nurse", " ids:a", "dept"}) {
        EXPECT_EQ(decodeRecipient(text), openCall()) << text;
    }
}

struct Opening {
    std::string what;
    StoreState state;
    std::string stored;
    std::optional<std::string> typeTarget;
    WhoSelection result;
};

TEST(DefaultRecipient, isWhatIsLeftOfTheLastOneOrWhatSuitsTheType) {
    StoreState noProviders = usualOffice();
    noProviders.members[0].onShift = false;
    noProviders.members[2].onShift = false;
    StoreState noProvidersNotAllowed = usualOffice(false);
    noProvidersNotAllowed.members = noProviders.members;
    StoreState noNurses = usualOffice();
    noNurses.members[1].onShift = false;
    noNurses.members[3].onShift = false;
    StoreState nobody = usualOffice(false);
    nobody.members.clear();
    const auto providers = people({"p1", "p2"});

    const std::vector<Opening> openings{
        // People.
        {"people, in the stored order", usualOffice(), "ids:n2,p1", noTarget, people({"n2", "p1"})},
        {"who is gone is dropped", usualOffice(), "ids:gone,n2", "nurse", people({"n2"})},
        {"all are gone", usualOffice(), "ids:gone", "nurse", people({"n1", "n2"})},
        {"all are gone, no target", usualOffice(), "ids:gone", noTarget, providers},
        // The providers.
        {"the providers", usualOffice(), "dept:provider", "nurse", providers},
        {"no provider on shift", noProviders, "dept:provider", "nurse", whoeverIsNext()},
        {"no provider on shift, not allowed", noProvidersNotAllowed, "dept:provider", "nurse", people({"n1", "n2"})},
        {"the providers, unlisted", officeWith({}, {{"p1", "provider"}}), "dept:provider", noTarget, people({"p1"})},
        // Another department.
        {"a department", usualOffice(), "dept:nurse", "assistant", people({"n1", "n2"})},
        {"a department with nobody on shift", noNurses, "dept:nurse", "assistant", people({"a1"})},
        {"a department that the office no longer has", usualOffice(), "dept:visitor", noTarget, providers},
        {"a department in another case", usualOffice(), "dept:Nurse", noTarget, providers},
        // Nothing came of it.
        {"an open call, with a target", usualOffice(), "any", "nurse", people({"n1", "n2"})},
        {"an open call, without", usualOffice(), "any", noTarget, providers},
        {"nothing stored", usualOffice(), "", noTarget, providers},
        {"an unknown form", usualOffice(), "room:1", "assistant", people({"a1"})},
        {"a target with nobody on shift", noNurses, "", "nurse", people({})},
        {"a target that is not listed", usualOffice(), "", "visitor", people({"x1"})},
        {"no provider on shift, nothing stored", noProviders, "", noTarget, whoeverIsNext()},
        {"not allowed: the first of all", usualOffice(false), "", noTarget, people({"p1"})},
        {"not allowed, no providers", noProvidersNotAllowed, "any", noTarget, people({"n1"})},
        {"not allowed, nobody", nobody, "", noTarget, people({})},
    };
    for (const Opening& each : openings) {
        EXPECT_EQ(defaultRecipient(each.state, each.stored, each.typeTarget), each.result) << each.what;
    }
}

TEST(DefaultRecipient, neverNamesTheSignedInMember) {
    StoreState state = usualOffice(false);
    state.device = support::makeDeviceWithSignIn("p1");
    EXPECT_EQ(defaultRecipient(state, "ids:p1,n1", noTarget), people({"n1"}));
    EXPECT_EQ(defaultRecipient(state, "", noTarget), people({"n1"}));
    EXPECT_EQ(defaultRecipient(state, "dept:provider", noTarget), people({"p2"}));
}

}  // namespace
}  // namespace zelkovanta::screens
