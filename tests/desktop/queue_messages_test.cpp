#include "server/server_message.h"
#include "tests/desktop/page_fixture.h"

#include <gtest/gtest.h>

/// What the office says of itself, each message alone, and the rows that are shown meanwhile.
namespace zelkovanta::desktop_test {
namespace {

namespace message = server::server_message;

class QueueMessages : public testing::Test {
protected:
    void SetUp() override {
        page.computer.launchWith("member", told);
        page.open();
        page.computer.socket().accept();
        ASSERT_NE(page.rowItem("a"), nullptr);
    }
    [[nodiscard]] std::string shown(const char* property) const {
        return page.rowItem("a")->property(property).toString().toStdString();
    }
    /// Puts into the list by hand what is there until the next time that it is made anew.
    void mark() {
        screens::QueueSection section;
        section.header = "By hand";
        page.model->queue()->received()->setSection(section);
    }
    [[nodiscard]] bool isMarked() const { return page.model->queue()->received()->header() == "By hand"; }

    Page page;
    records::StateSnapshot told = practice([](records::StateSnapshot& snapshot) {
        snapshot.device = support::makeDeviceOfMember("dr-amari");
        snapshot.signalTypes.push_back(support::makeType("films", 20, [](records::SignalType& type) {
            type.key = "films";
            type.label = "Films";
            type.color = "#2FA24F";
        }));
        const auto callOf = [](std::string id, std::string typeId) {
            return support::makeSignal(std::move(id), [&](records::Signal& signal) {
                signal.roomId = "room-3";
                signal.typeId = std::move(typeId);
            });
        };
        snapshot.signals = {callOf("a", "films"), callOf("b", "ready")};
    });
};

TEST_F(QueueMessages, aRoomThatIsRenamedIsRenamedInTheRows) {
    ASSERT_EQ(shown("room"), "Room 3");
    auto rooms = told.rooms;
    rooms.at(1).name = "Surgery";
    page.computer.deliverRecord("rooms.updated", message::RoomsUpdated{rooms});
    page.settle();
    EXPECT_EQ(shown("room"), "Surgery");
    EXPECT_TRUE(page.says("Surgery"));
}

TEST_F(QueueMessages, aTypeThatIsCalledAndColouredAnewIsSoInTheRows) {
    ASSERT_EQ(shown("type"), "Films");
    const auto before = page.rowItem("a")->property("mark").value<QColor>();
    auto types = told.signalTypes;
    types.back().label = "X-rays";
    types.back().color = "#E21833";
    page.computer.deliverRecord("types.updated", message::TypesUpdated{types});
    page.settle();
    EXPECT_EQ(shown("type"), "X-rays");
    EXPECT_TRUE(page.says("X-rays"));
    EXPECT_NE(page.rowItem("a")->property("mark").value<QColor>(), before);
    EXPECT_EQ(page.rowItem("a")->property("mark").value<QColor>(), QColor("#E21833"));
}

TEST_F(QueueMessages, anOfficeOfAnotherTradeCallsItsTypesByItsOwnWords) {
    ASSERT_TRUE(page.says("Patient ready"));
    auto office = told.office;
    office.vertical = "veterinary";
    page.computer.deliverRecord("office.updated", message::OfficeUpdated{office});
    page.settle();
    EXPECT_TRUE(page.says("Pet ready"));
    EXPECT_FALSE(page.says("Patient ready"));
}

TEST_F(QueueMessages, aPressThatFailsLeavesTheRowsAlone) {
    page.press("Done");
    mark();
    page.computer.answer("PATCH", "/signals/a", 409, R"({"error":"busy","message":"The office is closed."})");
    page.settle();
    ASSERT_EQ(page.computer.state().lastError, "The office is closed.");
    EXPECT_TRUE(isMarked());
}

TEST_F(QueueMessages, aSignalOnItsWayLeavesTheRowsAlone) {
    mark();
    page.computer.run([](store::AppStore& store) -> platform::Awaitable<void> {
        return store.sendSignal("ready", "", "room-3", {"dr-voss"}, std::nullopt);
    });
    page.settle();
    ASSERT_TRUE(page.computer.state().isSending);
    EXPECT_TRUE(isMarked());
    page.computer.answer("POST", "/signals", 409, R"({"error":"busy","message":"The office is closed."})");
    page.settle();
    ASSERT_FALSE(page.computer.state().isSending);
    EXPECT_TRUE(isMarked());
    // What does concern them makes them anew.
    page.computer.deliverRecord("rooms.updated", message::RoomsUpdated{told.rooms});
    page.settle();
    EXPECT_FALSE(isMarked());
}

}  // namespace
}  // namespace zelkovanta::desktop_test
