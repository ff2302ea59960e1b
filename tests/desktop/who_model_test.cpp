#include "screens/qml/choice_model.h"
#include "screens/qml/shown_choice.h"
#include "screens/qml/theme.h"

#include <algorithm>
#include <optional>
#include <rapidcheck.h>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <QAbstractItemModelTester>
#include <QColor>
#include <QPersistentModelIndex>
#include <gmock/gmock.h>

namespace zelkovanta::screens::qml {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

/// "any", "group KEY", or else a member's id.
WhoRow rowOf(const std::string& name) {
    if (name == "any") {
        return AnyRow{.text = name, .chosen = false, .tint = theme::blueText};
    }
    if (name.starts_with("group ")) {
        return GroupRow{.department = name.substr(6), .text = name, .chosen = false, .tint = theme::redText};
    }
    return PersonRow{.memberId = name,
                     .avatar = {.name = name, .colorHex = std::nullopt, .diameter = 26},
                     .queue = {},
                     .doNotDisturb = {},
                     .chosen = false};
}

std::vector<WhoRow> rowsOf(const std::vector<std::string>& names) {
    std::vector<WhoRow> rows;
    rows.reserve(names.size());
    for (const std::string& name : names) {
        rows.push_back(rowOf(name));
    }
    return rows;
}

/// The model, and what it tells a view.
struct Who {
    WhoModel model;
    std::vector<std::string> told;

    Who() {
        const auto tell = [this](std::string what, int first, int last) {
            told.push_back(std::move(what) + " " + std::to_string(first) + "-" + std::to_string(last));
        };
        QObject::connect(&model, &WhoModel::rowsInserted, [=](auto&, int first, int last) { tell("in", first, last); });
        QObject::connect(&model, &WhoModel::rowsRemoved, [=](auto&, int first, int last) { tell("out", first, last); });
        QObject::connect(&model, &WhoModel::rowsMoved,
                         [=](auto&, int first, int, auto&, int to) { tell("move", first, to); });
        QObject::connect(&model, &WhoModel::dataChanged,
                         [this](const QModelIndex& from, const QModelIndex&, const QList<int>& roles) {
                             std::string line = "change " + std::to_string(from.row());
                             std::set<std::string> names;
                             for (const int role : roles) {
                                 names.insert(model.roleNames().value(role).toStdString());
                             }
                             for (const std::string& name : names) {
                                 line += " " + name;
                             }
                             told.push_back(line);
                         });
        QObject::connect(&model, &WhoModel::modelReset, [this] { told.emplace_back("reset"); });
    }

    std::vector<std::string> setRows(std::vector<WhoRow> rows) {
        told.clear();
        model.setRows(std::move(rows));
        return std::exchange(told, {});
    }
    [[nodiscard]] QVariant value(int row, int role) const { return model.data(model.index(row), role); }
    [[nodiscard]] std::vector<std::string> names() const {
        std::vector<std::string> found;
        for (int row = 0; row < model.count(); ++row) {
            found.push_back(value(row, WhoModel::label).toString().toStdString());
        }
        return found;
    }
};

TEST(WhoModelTest, whatIsToldLeadsFromAnyPeopleToAnyOthers) {
    const bool holds = rc::check([] {
        Who who;
        const QAbstractItemModelTester tester(&who.model, QAbstractItemModelTester::FailureReportingMode::Fatal);
        const std::vector<std::string> everybody{"any", "group provider", "group nurse", "a", "b", "c", "d", "e", "f"};
        const auto some = rc::gen::unique<std::vector<std::size_t>>(rc::gen::inRange<std::size_t>(0, 40));
        // Most of the numbers are nobody, so that few people and many come alike.
        const auto somePeople = [&](const std::vector<std::size_t>& numbers) {
            std::vector<std::string> people;
            for (const std::size_t number : numbers) {
                if (number < everybody.size()) {
                    people.push_back(everybody[number]);
                }
            }
            return people;
        };
        const auto before = somePeople(*some);
        const auto after = somePeople(*some);
        who.setRows(rowsOf(before));
        RC_ASSERT(who.names() == before);
        std::vector<std::pair<std::string, QPersistentModelIndex>> kept;
        for (int row = 0; row < who.model.count(); ++row) {
            kept.emplace_back(before[static_cast<std::size_t>(row)], who.model.index(row));
        }
        who.setRows(rowsOf(after));
        RC_ASSERT(who.names() == after);
        for (const auto& [name, index] : kept) {
            const auto found = std::ranges::find(after, name);
            RC_ASSERT(index.isValid() == (found != after.end()));
            RC_ASSERT(!index.isValid() || index.row() == found - after.begin());
        }
    });
    EXPECT_TRUE(holds);
}

TEST(WhoModelTest, whoComesGoesAndMovesIsToldAlone) {
    Who who;
    who.setRows(rowsOf({"group provider", "a", "b", "group nurse", "c"}));
    EXPECT_THAT(who.setRows(rowsOf({"group provider", "x", "y", "a", "b", "group nurse", "c"})), ElementsAre("in 1-2"));
    EXPECT_THAT(who.setRows(rowsOf({"group provider", "a", "b", "c"})), ElementsAre("out 5-5", "out 1-2"));
    EXPECT_THAT(who.setRows(rowsOf({"group provider", "c", "a", "b"})), ElementsAre("move 3-1"));
    EXPECT_THAT(who.setRows(rowsOf({"group provider", "c", "a", "b"})), IsEmpty());
}

TEST(WhoModelTest, aCheckIsAChangeOfThatRowAlone) {
    Who who;
    who.setRows(rowsOf({"any", "a", "b"}));
    auto rows = rowsOf({"any", "a", "b"});
    std::get<PersonRow>(rows[2]).chosen = true;
    EXPECT_THAT(who.setRows(rows), ElementsAre("change 2 chosen"));
    std::get<PersonRow>(rows[1]).queue = "1 in queue";
    EXPECT_THAT(who.setRows(rows), ElementsAre("change 1 queue spokenName"));
    std::get<PersonRow>(rows[1]).avatar.diameter = 30;
    std::get<PersonRow>(rows[1]).avatar.ringColor = theme::redText;
    EXPECT_THAT(who.setRows(rows), ElementsAre("change 1 diameter ring"));
    EXPECT_EQ(who.value(1, WhoModel::diameter).toReal(), 30);
    EXPECT_EQ(who.value(1, WhoModel::ring).value<ShownColor>(), ShownColor{theme::redText});
    EXPECT_EQ(who.value(2, WhoModel::ring).value<ShownColor>(), ShownColor{theme::pageBackground});
}

TEST(WhoModelTest, aDepartmentThatIsListedTwiceHasTwoRows) {
    Who who;
    who.setRows(rowsOf({"group nurse", "a", "group nurse", "a"}));
    EXPECT_THAT(who.names(), ElementsAre("group nurse", "a", "group nurse", "a"));
    EXPECT_THAT(who.setRows(rowsOf({"group nurse", "a"})), ElementsAre("out 2-3"));
    EXPECT_EQ(who.model.at(2), nullptr);
    EXPECT_EQ(who.model.at(-1), nullptr);
    EXPECT_EQ(*who.model.at(1), rowOf("a"));
}

TEST(WhoModelTest, aRowTellsWhatItIsDrawnWith) {
    Who who;
    const auto person = [](std::string id, std::string name, std::optional<std::string> color) {
        return PersonRow{.memberId = std::move(id),
                         .avatar = {.name = std::move(name), .colorHex = std::move(color), .diameter = 26},
                         .queue = {},
                         .doNotDisturb = {},
                         .chosen = false};
    };
    who.setRows({AnyRow{.text = "Any", .chosen = false, .tint = theme::accentPalette(0)},
                 GroupRow{.department = "nurse", .text = "Any Nurse", .chosen = false, .tint = theme::accentPalette(2)},
                 person("a", "leila amari", "#12A594"), person("b", "", std::nullopt), person("c", "Bo", "teal")});
    const auto tint = [&](int row) { return who.value(row, WhoModel::tint).value<ShownColor>(); };
    EXPECT_EQ(tint(0), (ShownColor{theme::accentPalette(0)}));
    EXPECT_EQ(tint(1), (ShownColor{theme::accentPalette(2)}));
    EXPECT_EQ(tint(2), (ShownColor{theme::blueText}));
    const auto disc = [&](int row) {
        return who.value(row, WhoModel::disc).value<QColor>().name(QColor::HexArgb).toStdString();
    };
    // 29 in a hundred are 74 in 255.
    EXPECT_EQ(disc(2), "#4a12a594");
    EXPECT_EQ(disc(4), "#4aff8c28") << "what cannot be read is orange";
    for (const int without : {0, 1, 3}) {
        EXPECT_EQ(disc(without), "#00000000") << without;
    }
    const auto initials = [&](int row) { return who.value(row, WhoModel::initials).toString().toStdString(); };
    EXPECT_EQ(initials(2), "LA");
    EXPECT_EQ(initials(3), "?");
    EXPECT_EQ(initials(4), "B");
    EXPECT_EQ(initials(0) + initials(1), "") << "they have symbols";
}

/// The first of each id.
std::vector<Choice> firstsOf(const std::vector<Choice>& choices) {
    std::vector<Choice> firsts;
    for (const Choice& choice : choices) {
        if (std::ranges::find(firsts, choice.id, &Choice::id) == firsts.end()) {
            firsts.push_back(choice);
        }
    }
    return firsts;
}

TEST(ChoiceModelTest, whatIsToldLeadsFromAnyEntriesToAnyOthersWhateverComesTwice) {
    const bool holds = rc::check([] {
        ChoiceModel model;
        const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
        const auto shownChoices = [&model] {
            std::vector<Choice> found;
            for (int row = 0; row < model.count(); ++row) {
                found.push_back({.id = model.idAt(row).toStdString(),
                                 .name = model.data(model.index(row), ChoiceModel::name).toString().toStdString()});
            }
            return found;
        };
        for (int change = 0; change < 3; ++change) {
            std::vector<Choice> choices;
            for (const auto& [id, name] : *rc::gen::container<std::vector<std::pair<int, int>>>(
                     rc::gen::pair(rc::gen::inRange(0, 6), rc::gen::inRange(0, 3)))) {
                choices.push_back({.id = std::to_string(id), .name = std::to_string(name)});
            }
            RC_CLASSIFY(firstsOf(choices).size() < choices.size(), "some come twice");
            model.setChoices(choices);
            RC_ASSERT(shownChoices() == firstsOf(choices));
        }
    });
    EXPECT_TRUE(holds);
}

TEST(TypeModelTest, theChosenTypeChangesWithoutMovingTheOthers) {
    TypeModel types;
    const ComposeType ready{.id = "ready", .label = "Ready", .color = theme::rgb(0x2FA24F), .selected = true};
    const ComposeType urgent{.id = "urgent", .label = "Urgent", .color = theme::rgb(0xE21833)};
    types.setTypes({ready, urgent});
    EXPECT_EQ(types.data(types.index(0), TypeModel::tint).value<QColor>(), QColor("#2FA24F"));
    EXPECT_EQ(types.data(types.index(1), TypeModel::tint).value<QColor>(), QColor("#E21833"));
    const QPersistentModelIndex second = types.index(1);
    std::vector<int> changed;
    QObject::connect(&types, &TypeModel::dataChanged,
                     [&](const QModelIndex& from, const QModelIndex&, const auto& roles) {
                         EXPECT_EQ(roles, QList<int>{TypeModel::chosen});
                         changed.push_back(from.row());
                     });
    ComposeType quiet = ready;
    quiet.selected = false;
    ComposeType chosen = urgent;
    chosen.selected = true;
    types.setTypes({quiet, chosen});
    EXPECT_THAT(changed, ElementsAre(0, 1));
    types.setTypes({chosen});
    EXPECT_EQ(second.row(), 0);
    EXPECT_EQ(types.data(second, TypeModel::typeId).toString(), "urgent");
}

}  // namespace
}  // namespace zelkovanta::screens::qml
