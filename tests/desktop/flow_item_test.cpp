#include "tests/desktop/piece_fixture.h"

#include <gtest/gtest.h>

namespace zelkovanta::desktop_test {
namespace {

class FlowItem : public testing::Test {
protected:
    QPointF place(const char* name) const { return piece.item(name)->position(); }
    void set(const char* name, const char* property, const QVariant& value) {
        ASSERT_TRUE(piece.object(name)->setProperty(property, value));
        piece.settle();
    }
    QQuickItem* flow() const { return piece.item("flow"); }

    Piece piece{R"(
        FlowLayout {
            id: flow
            objectName: "flow"
            width: 100
            spacing: 5
            lineSpacing: 3
            Item { objectName: "a"; implicitWidth: 40; implicitHeight: 10 }
            Item { objectName: "b"; implicitWidth: 50; implicitHeight: 20 }
            Item { objectName: "c"; implicitWidth: 60; implicitHeight: 10 }
        }
        Component { id: more; Item { implicitWidth: 30; implicitHeight: 10 } }
        Item { objectName: "maker"; function make() { return more.createObject(flow); } })"};
};

TEST_F(FlowItem, putsItsChildrenIntoLines) {
    EXPECT_EQ(place("a"), QPointF(0, 0));
    EXPECT_EQ(place("b"), QPointF(45, 0));
    EXPECT_EQ(place("c"), QPointF(0, 23));
    EXPECT_EQ(piece.item("c")->size(), QSizeF(60, 10));
    EXPECT_EQ(flow()->implicitWidth(), 160) << "in one line";
    EXPECT_EQ(flow()->implicitHeight(), 33) << "in the width that it has";
}

TEST_F(FlowItem, doesSoAnewInAnotherWidth) {
    set("flow", "width", 160);
    EXPECT_EQ(place("c"), QPointF(100, 0));
    EXPECT_EQ(flow()->implicitHeight(), 20);
    set("flow", "width", 94);
    EXPECT_EQ(place("b"), QPointF(0, 13));
    EXPECT_EQ(place("c"), QPointF(0, 36));
    EXPECT_EQ(flow()->implicitHeight(), 46);
    set("flow", "width", 10);
    EXPECT_EQ(piece.item("c")->size(), QSizeF(60, 10)) << "what is wider than the whole leaves it";
}

TEST_F(FlowItem, doesSoAnewWithOtherSpacings) {
    set("flow", "spacing", 10);
    EXPECT_EQ(place("b"), QPointF(50, 0));
    set("flow", "spacing", 11);
    EXPECT_EQ(place("b"), QPointF(0, 13));
    set("flow", "lineSpacing", 7);
    EXPECT_EQ(place("b"), QPointF(0, 17));
    EXPECT_EQ(flow()->implicitHeight(), 10 + 7 + 20 + 7 + 10);
}

TEST_F(FlowItem, doesSoAnewForAChildOfAnotherSize) {
    set("a", "implicitWidth", 46);
    EXPECT_EQ(place("b"), QPointF(0, 13));
    set("a", "implicitHeight", 30);
    EXPECT_EQ(place("b"), QPointF(0, 33));
}

TEST_F(FlowItem, aChildThatComesIsPutInPlaceAndOneThatGoesLeavesNoGap) {
    QVariant made;
    ASSERT_TRUE(QMetaObject::invokeMethod(piece.object("maker"), "make", Q_RETURN_ARG(QVariant, made)));
    piece.settle();
    auto* const last = made.value<QQuickItem*>();
    ASSERT_NE(last, nullptr);
    EXPECT_EQ(last->position(), QPointF(65, 23));
    EXPECT_EQ(flow()->implicitWidth(), 195);
    delete piece.item("a");
    piece.settle();
    EXPECT_EQ(place("b"), QPointF(0, 0));
    EXPECT_EQ(place("c"), QPointF(0, 23));
    set("c", "implicitWidth", 0);
    EXPECT_EQ(last->position(), QPointF(55, 0)) << "what has no width takes no room";
}

TEST(EmptyFlowItem, isNothing) {
    const Piece piece(R"(FlowLayout { objectName: "flow"; width: 100; spacing: 5; lineSpacing: 5 })");
    EXPECT_EQ(piece.item("flow")->implicitWidth(), 0);
    EXPECT_EQ(piece.item("flow")->implicitHeight(), 0);
}

}  // namespace
}  // namespace zelkovanta::desktop_test
