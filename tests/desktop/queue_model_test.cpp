#include "screens/qml/queue_model.h"

#include "platform/simulated/event_loop.h"
#include "screens/qml/shown_row.h"
#include "tests/support/office_records.h"

#include <algorithm>
#include <chrono>
#include <rapidcheck.h>
#include <set>
#include <utility>

#include <QAbstractItemModelTester>
#include <QPersistentModelIndex>
#include <gtest/gtest.h>

namespace zelkovanta::screens::qml {
namespace {

using namespace std::chrono_literals;

constexpr std::string_view start = "2024-10-04T00:00:00Z";  // The simulated day begins then.

QueueSection sectionOf(const std::vector<int>& ids) {
    QueueSection section;
    for (const int id : ids) {
        QueueRow row;
        row.signal = support::makeSignal(std::to_string(id));
        row.signal.createdAt = start;
        row.onAcknowledge = RowAction::acknowledge;
        row.onDone = RowAction::done;
        section.rows.push_back(std::move(row));
    }
    return section;
}

struct Pressed {
    std::string id;
    RowAction action;
    bool operator==(const Pressed&) const = default;
};

struct Queue {
    platform::simulated::EventLoop loop;
    platform::simulated::ManualClock clock{loop};
    platform::KeysAsTexts strings;
    std::vector<Pressed> presses;
    QueueModel model{clock, strings, [this](const records::Signal& signal, RowAction action) {
                         presses.push_back({signal.id, action});
                     }};
    /// What was told of changed fields: the row, and the names of its fields.
    std::vector<std::pair<int, std::set<std::string>>> changes;

    Queue() {
        QObject::connect(&model, &QueueModel::dataChanged,
                         [this](const QModelIndex& from, const QModelIndex& to, const QList<int>& roles) {
                             std::set<std::string> names;
                             for (const int role : roles) {
                                 names.insert(model.roleNames().value(role).toStdString());
                             }
                             for (int row = from.row(); row <= to.row(); ++row) {
                                 changes.emplace_back(row, names);
                             }
                         });
    }

    [[nodiscard]] QVariant value(int row, int role) const { return model.data(model.index(row), role); }
    [[nodiscard]] std::vector<int> ids() const {
        std::vector<int> found;
        for (int row = 0; row < model.count(); ++row) {
            found.push_back(value(row, QueueModel::signalId).toString().toInt());
        }
        return found;
    }
};

/// A view that knows only what the model tells: it must arrive at the same list, and keep whoever stayed.
TEST(QueueModelTest, whatIsToldLeadsFromAnyListToAnyOther) {
    const bool holds = rc::check([] {
        Queue queue;
        const QAbstractItemModelTester tester(&queue.model, QAbstractItemModelTester::FailureReportingMode::Fatal);
        const auto someIds = rc::gen::unique<std::vector<int>>(rc::gen::inRange(0, 40));
        const auto before = *someIds;
        const auto after = *someIds;
        queue.model.setSection(sectionOf(before));
        RC_ASSERT(queue.ids() == before);
        std::vector<std::pair<int, QPersistentModelIndex>> kept;
        for (int row = 0; row < queue.model.count(); ++row) {
            kept.emplace_back(before[static_cast<std::size_t>(row)], queue.model.index(row));
        }
        queue.model.setSection(sectionOf(after));
        RC_ASSERT(queue.ids() == after);
        for (const auto& [id, index] : kept) {
            const auto found = std::ranges::find(after, id);
            RC_ASSERT(index.isValid() == (found != after.end()));
            RC_ASSERT(!index.isValid() || index.row() == found - after.begin());
        }
    });
    EXPECT_TRUE(holds);
}

TEST(QueueModelTest, aFieldThatChangesIsToldAlone) {
    Queue queue;
    queue.model.setSection(sectionOf({1, 2, 3}));
    auto section = sectionOf({1, 2, 3});
    section.rows[1].signal.note = "Now";
    queue.model.setSection(section);
    const std::vector<std::pair<int, std::set<std::string>>> expected{{1, {"note"}}};
    EXPECT_EQ(queue.changes, expected);
    EXPECT_EQ(queue.value(1, QueueModel::note).toString(), "Now");
}

TEST(QueueModelTest, anAcknowledgedSignalChangesItsChipItsNameAndItsButtons) {
    Queue queue;
    queue.model.setSection(sectionOf({1}));
    EXPECT_TRUE(queue.value(0, QueueModel::acknowledge).value<ShownButton>().shown);
    auto section = sectionOf({1});
    section.rows[0].signal.status = "acknowledged";
    queue.model.setSection(section);
    const std::vector<std::pair<int, std::set<std::string>>> expected{{0, {"acknowledge", "chip", "spokenName"}}};
    EXPECT_EQ(queue.changes, expected);
    EXPECT_FALSE(queue.value(0, QueueModel::acknowledge).value<ShownButton>().shown);
    EXPECT_TRUE(queue.value(0, QueueModel::done).value<ShownButton>().shown);
}

TEST(QueueModelTest, theSameRowsAreNoChange) {
    Queue queue;
    queue.model.setSection(sectionOf({1, 2, 3}));
    int told = 0;
    const auto count = [&] { ++told; };
    QObject::connect(&queue.model, &QueueModel::dataChanged, count);
    QObject::connect(&queue.model, &QueueModel::rowsInserted, count);
    QObject::connect(&queue.model, &QueueModel::rowsRemoved, count);
    QObject::connect(&queue.model, &QueueModel::rowsMoved, count);
    QObject::connect(&queue.model, &QueueModel::modelReset, count);
    queue.model.setSection(sectionOf({1, 2, 3}));
    EXPECT_EQ(told, 0);
}

TEST(QueueModelTest, aTickTouchesTheTimersAlone) {
    Queue queue;
    queue.model.setSection(sectionOf({1, 2}));
    EXPECT_EQ(queue.value(0, QueueModel::waitText).toString(), "0:00");
    queue.loop.advance(299s);
    queue.model.tick();
    const std::vector<std::pair<int, std::set<std::string>>> expected{{0, {"waitColor", "waitText"}},
                                                                      {1, {"waitColor", "waitText"}}};
    EXPECT_EQ(queue.changes, expected);
    EXPECT_EQ(queue.value(0, QueueModel::waitText).toString(), "4:59");
    const auto calm = queue.value(0, QueueModel::waitColor).value<ShownColor>();
    EXPECT_EQ(calm, ShownColor{theme::textSecondary});
    queue.loop.advance(1s);
    EXPECT_EQ(queue.value(0, QueueModel::waitColor).value<ShownColor>(), ShownColor{theme::redText});
}

TEST(QueueModelTest, aWarningOutlivesAChangeOfItsRowAndAClockThatIsSetBack) {
    Queue queue;
    queue.model.setSection(sectionOf({1}));
    queue.loop.advance(300s);
    EXPECT_EQ(queue.value(0, QueueModel::waitColor).value<ShownColor>(), ShownColor{theme::redText});
    auto section = sectionOf({1});
    section.rows[0].signal.note = "Now";
    queue.model.setSection(section);
    queue.clock.setWallOffset(-200s);
    EXPECT_EQ(queue.value(0, QueueModel::waitText).toString(), "1:40");
    EXPECT_EQ(queue.value(0, QueueModel::waitColor).value<ShownColor>(), ShownColor{theme::redText});
}

TEST(QueueModelTest, aTimeThatIsNoneStaysAtZero) {
    Queue queue;
    auto section = sectionOf({1});
    section.rows[0].signal.createdAt = "some day";
    queue.model.setSection(section);
    queue.loop.advance(1000s);
    EXPECT_EQ(queue.value(0, QueueModel::waitText).toString(), "0:00");
    EXPECT_EQ(queue.value(0, QueueModel::waitColor).value<ShownColor>(), ShownColor{theme::textSecondary});
}

TEST(QueueModelTest, onlyTheButtonsThatARowHasAct) {
    Queue queue;
    queue.model.setSection(sectionOf({1, 2}));
    queue.model.pressAcknowledge("2");
    queue.model.pressDone("1");
    queue.model.pressCancel("1");
    queue.model.pressDone("none");
    const std::vector<Pressed> expected{{"2", RowAction::acknowledge}, {"1", RowAction::done}};
    EXPECT_EQ(queue.presses, expected);
}

TEST(QueueModelTest, aButtonThatIsNotDrawnDoesNotAct) {
    Queue queue;
    auto section = sectionOf({1});
    section.rows[0].signal.status = "acknowledged";
    queue.model.setSection(section);
    ASSERT_TRUE(section.rows[0].onAcknowledge);
    queue.model.pressAcknowledge("1");
    EXPECT_EQ(queue.presses, std::vector<Pressed>{});
    queue.model.pressDone("1");
    EXPECT_EQ(queue.presses, (std::vector<Pressed>{{"1", RowAction::done}}));
}

TEST(QueueModelTest, aRowIsCalledByWhatIsKnownOfIt) {
    Queue queue;
    queue.model.setSection(sectionOf({1}));
    EXPECT_EQ(queue.value(0, QueueModel::spokenName).toString(), "Room, status-waiting");
    auto section = sectionOf({1});
    section.rows[0].room = support::makeRoom("r", [](records::Room& room) { room.name = ""; });
    section.rows[0].type = support::makeType("t", 1, [](records::SignalType& type) { type.label = "X-ray"; });
    queue.model.setSection(section);
    EXPECT_EQ(queue.value(0, QueueModel::spokenName).toString(), "X-ray, status-waiting");
}

TEST(QueueModelTest, ticksStayAlignedToTheMomentOfAppearing) {
    Queue queue;
    queue.model.setSection(sectionOf({1}));
    queue.loop.advance(370ms);
    queue.model.appear();
    EXPECT_EQ(queue.model.tick(), 1000);
    // A tick that comes late is followed by one that is on time again.
    queue.loop.advance(1030ms);
    EXPECT_EQ(queue.model.tick(), 970);
    queue.loop.advance(970ms);
    EXPECT_EQ(queue.model.tick(), 1000);
    queue.loop.advance(1h + 400us);
    EXPECT_EQ(queue.model.tick(), 1000) << "never before the second is full";
    queue.model.appear();
    queue.loop.advance(250ms);
    EXPECT_EQ(queue.model.tick(), 750);
}

TEST(QueueModelTest, aBadgeHasTheColoursOfItsKind) {
    Queue queue;
    auto section = sectionOf({1, 2});
    section.rows[1].signal.providerIds = {{"a", "b", "c"}};
    queue.model.setSection(section);
    EXPECT_EQ(queue.value(0, QueueModel::combined).value<ShownBadge>(), ShownBadge{});
    const auto badge = queue.value(1, QueueModel::combined).value<ShownBadge>();
    EXPECT_EQ(badge.text, "Combined · 3");
    EXPECT_EQ(badge.ink, (ShownColor{{.light = theme::rgb(0x3457C4), .dark = theme::rgb(0x8FB0F7)}}));
    EXPECT_EQ(badge.fill, toColor(theme::rgb(0x5789F2, 0.14)));
}

TEST(QueueModelTest, aListHasTheTitleOfItsSection) {
    Queue queue;
    int told = 0;
    QObject::connect(&queue.model, &QueueModel::headerChanged, [&] { ++told; });
    auto section = sectionOf({1});
    queue.model.setSection(section);
    EXPECT_EQ(queue.model.header(), "");
    section.header = "Your signals";
    queue.model.setSection(section);
    EXPECT_EQ(queue.model.header(), "Your signals");
    EXPECT_EQ(told, 1);
}

TEST(QueueModelTest, anEmptyListSaysSo) {
    Queue queue;
    QueueSection section;
    section.empty = EmptyQueueLabel{.systemImage = "tray", .title = "Nobody.", .subtitle = std::nullopt};
    queue.model.setSection(section);
    EXPECT_EQ(queue.model.emptySymbol(), "tray");
    EXPECT_EQ(queue.model.emptyTitle(), "Nobody.");
    EXPECT_EQ(queue.model.emptySubtitle(), "");
    queue.model.setSection(sectionOf({1}));
    EXPECT_EQ(queue.model.emptyTitle(), "");
}

}  // namespace
}  // namespace zelkovanta::screens::qml
