#include "screens/who_picker.h"
#include "tests/screens/who_picker_office.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace zelkovanta::screens {
namespace {

using store::StoreState;
using testing::ElementsAre;

const platform::KeysAsTexts strings;

/// The rows in short: "any", "group nurse" and "n1"; a star marks the chosen ones.
std::vector<std::string> outline(const WhoPickerSection& section) {
    std::vector<std::string> lines;
    for (const WhoRow& row : section.rows) {
        if (const auto* any = std::get_if<AnyRow>(&row)) {
            lines.push_back(std::string{"any"} + (any->chosen ? "*" : ""));
        } else if (const auto* group = std::get_if<GroupRow>(&row)) {
            lines.push_back("group " + group->department + (group->chosen ? "*" : ""));
        } else {
            const auto& person = std::get<PersonRow>(row);
            lines.push_back(person.memberId + (person.chosen ? "*" : ""));
        }
    }
    return lines;
}

WhoPickerSection sectionOf(const StoreState& state, const WhoSelection& selection = {}) {
    return whoPickerSection(state, selection, std::nullopt, strings);
}

PersonRow personOf(const StoreState& state, const std::string& id) {
    for (const WhoRow& row : sectionOf(state).rows) {
        if (const auto* person = std::get_if<PersonRow>(&row); person && person->memberId == id) {
            return *person;
        }
    }
    ADD_FAILURE() << id << " is not there";
    return {};
}

TEST(WhoPicker, listsEachDepartmentWithItsPeopleAndThenTheOthers) {
    EXPECT_THAT(outline(sectionOf(usualOffice())),
                ElementsAre("group provider", "p1", "p2", "group nurse", "n1", "n2", "group assistant", "a1", "x1"));
}

TEST(WhoPicker, saysWhatItIsFor) {
    const auto section = sectionOf(usualOffice());
    EXPECT_EQ(section.title, "Who");
    EXPECT_EQ(section.explanation, "Pick a group, or check people for a combined call. First to respond takes it.");
    EXPECT_EQ(section.hint, "Pick who should get it.");
    EXPECT_EQ(sectionOf(usualOffice(), people({"n1"})).hint, std::nullopt);
}

TEST(WhoPicker, marksWhatIsChosen) {
    EXPECT_THAT(
        outline(sectionOf(usualOffice(), people({"n2", "n1", "p2"}))),
        ElementsAre("group provider", "p1", "p2*", "group nurse*", "n1*", "n2*", "group assistant", "a1", "x1"));
}

TEST(WhoPicker, withoutAProviderDepartmentWhoeverIsNextStandsFirst) {
    StoreState state = officeWith({"nurse"}, {{"n1", "nurse"}});
    EXPECT_THAT(outline(sectionOf(state, whoeverIsNext())), ElementsAre("any*", "group nurse", "n1"));
    state.office->settings->allowAnyProvider = false;
    EXPECT_THAT(outline(sectionOf(state)), ElementsAre("group nurse", "n1"));
}

TEST(WhoPicker, withNoProviderOnShiftWhoeverIsNextStandsInTheirPlace) {
    StoreState state = officeWith({"nurse", "provider", "assistant"}, {{"n1", "nurse"}, {"a1", "assistant"}});
    EXPECT_THAT(outline(sectionOf(state)), ElementsAre("group nurse", "n1", "any", "group assistant", "a1"));
    state.office->settings->allowAnyProvider = false;
    EXPECT_THAT(outline(sectionOf(state)), ElementsAre("group nurse", "n1", "group assistant", "a1"));
}

TEST(WhoPicker, aDepartmentWithNobodyOnShiftIsNotThere) {
    StoreState state = usualOffice();
    state.members[4].onShift = false;
    EXPECT_THAT(outline(sectionOf(state)), ElementsAre("group provider", "p1", "p2", "group nurse", "n1", "n2", "x1"));
}

TEST(WhoPicker, theSignedInMemberNeverStandsInTheRows) {
    StoreState state = usualOffice();
    state.device = support::makeDeviceWithSignIn("a1");
    EXPECT_THAT(outline(sectionOf(state)), ElementsAre("group provider", "p1", "p2", "group nurse", "n1", "n2", "x1"));
}

TEST(WhoPicker, withoutAnOfficeThereAreOnlyPeople) {
    StoreState state = usualOffice();
    state.office.reset();
    EXPECT_THAT(outline(sectionOf(state)), ElementsAre("any", "p1", "n1", "p2", "n2", "a1", "x1"));
}

TEST(WhoPicker, groupsAreWordedAndTinted) {
    const auto section = sectionOf(officeWith({"nurse", "lab"}, {{"n1", "nurse"}, {"l1", "lab"}}));
    const auto& any = std::get<AnyRow>(section.rows[0]);
    EXPECT_EQ(any.text, "Any dept-provider-other");
    EXPECT_EQ(any.tint, theme::accentPalette(0));
    EXPECT_EQ(AnyRow::symbol, "person.2.fill");
    EXPECT_EQ(std::get<GroupRow>(section.rows[1]).text, "Any dept-nurse");
    EXPECT_EQ(std::get<GroupRow>(section.rows[3]).text, "Any Label of lab");
    EXPECT_EQ(GroupRow::symbol, "person.3.fill");
    EXPECT_NE(std::get<GroupRow>(section.rows[1]).tint, std::get<GroupRow>(section.rows[3]).tint);
}

TEST(WhoPicker, aPersonShowsTheirQueueAndThatTheyWantQuiet) {
    StoreState state = usualOffice();
    state.members[0].status = "dnd";
    state.members[0].color = "#336699";
    state.members[2].status = "busy";
    state.signals = {support::makeSignalTo("p1", "1"), support::makeSignal("open"), support::makeSignalTo("n1", "2")};
    const PersonRow first = personOf(state, "p1");
    EXPECT_EQ(first.avatar.name, "Name of p1");
    EXPECT_EQ(first.avatar.colorHex, "#336699");
    EXPECT_EQ(first.queue, "2 in queue");
    EXPECT_EQ(first.doNotDisturb, "DND");
    EXPECT_EQ(personOf(state, "p2").queue, "1 in queue");
    EXPECT_EQ(personOf(state, "p2").doNotDisturb, "");
    EXPECT_EQ(personOf(state, "n1").queue, "1 in queue");
    EXPECT_EQ(personOf(state, "n2").queue, "");
}

}  // namespace
}  // namespace zelkovanta::screens
