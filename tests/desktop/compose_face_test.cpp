#include "tests/desktop/face.h"

#include <array>
#include <functional>
#include <optional>
#include <string>

#include <QtTest/QTest>

/// The colours and letters in which a form is drawn.
namespace zelkovanta::desktop_test {
namespace {

/// What stands for a colour of the office that cannot be read.
constexpr auto orange = "#FF8C28";
/// The first colours to tell recipients apart by.
constexpr Pair firstAccent{"#3457C4", "#8FB0F7"};
constexpr Pair secondAccent{"#0B7A6E", "#3FC9B8"};
constexpr Pair thirdAccent{"#6647C0", "#A78BF0"};

using Adjust = std::function<void(records::StateSnapshot&)>;

class ComposeFace : public Face {
protected:
    /// At the computer of a room, in an office whose people and types have colours of all kinds.
    void open(const Adjust& adjust = [](auto&) {}) {
        page.computer.launchWith("room", practice([&](records::StateSnapshot& snapshot) {
                                     snapshot.members[0].color = "#4F7CFF";
                                     snapshot.members[1].color = std::nullopt;
                                     snapshot.members[2].color = "teal";
                                     snapshot.signalTypes.push_back(ofColor("films", "X-ray", " 4f7cff "));
                                     snapshot.signalTypes.push_back(ofColor("assist", "Assistance", "#12Z"));
                                     adjust(snapshot);
                                 }));
        page.open(620, 900);
        page.model->openCompose();
        page.settle();
    }
    [[nodiscard]] QQuickItem* type(const std::string& name) const { return item(QAccessible::RadioButton, name); }
    [[nodiscard]] QQuickItem* person(const std::string& name) const { return item(QAccessible::CheckBox, name); }
    [[nodiscard]] QQuickItem* foot() const { return only("ComposeFoot"); }
    void choose(const std::string& name) {
        page.click(page.node(QAccessible::CheckBox, name));
        // Nothing is pointed at.
        QTest::mouseMove(page.window, QPoint{0, 0});
        page.settle();
    }
    /// The symbols of a row, in the order in which they are drawn: what it is, and the mark of who is chosen.
    void expectSymbols(const std::string& name, std::size_t count, const Pair& color) const {
        const auto symbols = shownItemsOfType(person(name), symbolIcon);
        EXPECT_EQ(symbols.size(), count) << name;
        for (const QQuickItem* symbol : symbols) {
            EXPECT_EQ(told(colorOf(symbol)), told(of(color))) << name;
        }
    }
    static void expectGround(const QQuickItem* entry, const QColor& fill, const QColor& outline) {
        const QObject* const face = faceOf(entry);
        EXPECT_EQ(told(colorOf(face)), told(fill));
        EXPECT_EQ(told(outlineOf(face)), told(outline));
        EXPECT_EQ(outlineWidthOf(face), 1);
    }

private:
    static records::SignalType ofColor(const std::string& id, const std::string& label, const std::string& color) {
        return support::makeType(id, 10, [&](records::SignalType& type) {
            type.key = id;
            type.label = label;
            type.color = color;
            type.sortOrder = 3;
        });
    }
    [[nodiscard]] QQuickItem* item(QAccessible::Role role, const std::string& name) const {
        return qobject_cast<QQuickItem*>(page.node(role, name).interface->object());
    }
};

INSTANTIATE_TEST_SUITE_P(BothAppearances, ComposeFace, testing::Values(Appearance::light, Appearance::dark),
                         appearanceName);

TEST_P(ComposeFace, aTypesMarkHasTheOfficesColourInThreeStrengths) {
    open();
    struct Case {
        const char* name{};
        const char* color{};
    };
    for (const Case& each : std::array<Case, 4>{
             {{"Patient ready", "#2FA24F"}, {"Urgent", "#E21833"}, {"X-ray", "#4F7CFF"}, {"Assistance", orange}}}) {
        SCOPED_TRACE(each.name);
        expectMark(only("TypeMark", type(each.name)), each.color);
    }
}

TEST_P(ComposeFace, aPersonsDiscHasTheirColourAndTheRingIsThePages) {
    open();
    struct Case {
        const char* name{};
        QColor disc;
    };
    for (const Case& each : std::array<Case, 3>{{{"Dr. Leila Amari", withOpacity("#4F7CFF", 0.29)},
                                                 {"Dr. Henrik Voss", Qt::transparent},
                                                 {"June Park", withOpacity(orange, 0.29)}}}) {
        SCOPED_TRACE(each.name);
        const QQuickItem* const avatar = only("MemberAvatar", person(each.name));
        EXPECT_EQ(told(avatar->property("disc").value<QColor>()), told(each.disc));
        EXPECT_EQ(told(avatar->property("ringColor").value<QColor>()), told(of(pageGround)));
        const QQuickItem* const drawn = only("QQuickRectangle", avatar);
        EXPECT_EQ(told(colorOf(drawn)), told(each.disc));
        EXPECT_EQ(told(outlineOf(drawn)), told(of(pageGround)));
        EXPECT_EQ(outlineWidthOf(drawn), 1.5);
        EXPECT_EQ(told(colorOf(only("QQuickText", avatar))), told(of(primary)));
    }
}

TEST_P(ComposeFace, aDepartmentHasAColourOfItsOwnAndAPersonTheFirst) {
    open();
    expectSymbols("Any Provider", 2, secondAccent);
    expectSymbols("Dr. Leila Amari", 1, firstAccent);
    expectSymbols("Any Assistant", 1, thirdAccent);
    expectSymbols("June Park", 0, firstAccent);
    choose("Any Assistant");
    expectSymbols("Any Assistant", 2, thirdAccent);
    expectSymbols("June Park", 1, firstAccent);
}

TEST_P(ComposeFace, whoeverIsNextHasTheFirstColour) {
    open([](records::StateSnapshot& snapshot) {
        snapshot.members[0].onShift = false;
        snapshot.members[1].onShift = false;
    });
    ASSERT_TRUE(page.node(QAccessible::CheckBox, "Any Provider").state().checked);
    expectSymbols("Any Provider", 2, firstAccent);
    expectSymbols("Any Assistant", 1, thirdAccent);
}

TEST_P(ComposeFace, anEntryIsACardUntilItIsChosen) {
    open();
    expectGround(person("Any Assistant"), of(card), hairline());
    expectGround(person("June Park"), of(card), hairline());
    expectGround(type("Urgent"), of(card), hairline());
    choose("Any Assistant");
    const auto tinted = [](const Pair& tint) { return withOpacity(isDark() ? tint.dark : tint.light, 0.14); };
    expectGround(person("Any Assistant"), tinted(thirdAccent), of(thirdAccent));
    expectGround(person("June Park"), tinted(firstAccent), of(firstAccent));
    expectGround(person("Dr. Henrik Voss"), tinted(firstAccent), of(firstAccent));
    choose("Dr. Henrik Voss");
    expectGround(person("Dr. Henrik Voss"), of(card), hairline());
    expectGround(type("Patient ready"), withOpacity("#2FA24F", 0.14), QColor{"#2FA24F"});
}

TEST_P(ComposeFace, theTextsHaveTheirLettersAndColours) {
    open([](records::StateSnapshot& snapshot) {
        snapshot.members[2].status = "dnd";
        snapshot.signals = {support::makeSignalTo("june", "call-1"), support::makeSignalTo("june", "call-2")};
    });
    const QQuickItem* const all = page.window->contentItem();
    for (const char* const title : {"Room", "Signal", "Who"}) {
        expectText(text(all, title), tertiary, 12, QFont::DemiBold);
    }
    expectText(text(all, "Pick a group, or check people for a combined call. First to respond takes it."), secondary,
               12, QFont::Normal);
    expectText(text(type("Patient ready"), "Patient ready"), primary, 14, QFont::DemiBold);
    expectText(text(type("Urgent"), "Urgent"), primary, 14, QFont::Normal);
    expectText(text(person("Any Assistant"), "Any Assistant"), primary, 14, QFont::DemiBold);
    QQuickItem* const june = person("June Park");
    expectText(text(june, "June Park"), primary, 14, QFont::Normal);
    expectText(text(june, "2 in queue"), tertiary, 12, QFont::Normal);
    QQuickItem* const quiet = text(june, "DND");
    expectText(quiet, {"#6E6553", "#A29A8B"}, 11, QFont::DemiBold);
    EXPECT_EQ(told(colorOf(quiet->parentItem())), told(withOpacity("#8A8170", 0.18)));
}

TEST_P(ComposeFace, theFootWarnsQuietlyAndFailsInRed) {
    open();
    EXPECT_EQ(told(colorOf(foot())), told(isDark() ? QColor{"#191521"} : QColor{"#F7F2E4"}));
    expectText(text(foot(),
                    "Say what needs doing, never who it is for. No patient names or info. This is not a medical "
                    "record."),
               tertiary, 11, QFont::Normal);
    choose("June Park");
    page.model->compose()->send();
    page.settle();
    page.computer.fail("POST", "/signals", platform::TransportCause::refused);
    page.settle();
    const QQuickItem* const error = only("ErrorText", foot());
    EXPECT_NE(error->property("text").toString(), QString{});
    expectText(error, red, 14, QFont::Normal);
}

TEST_P(ComposeFace, theNoteIsWrittenOnACard) {
    open();
    QQuickItem* const note = only("AppField", foot());
    const auto faces = shownItemsOfType(note, "QQuickRectangle");
    const QQuickItem* const frame = faces.back();
    EXPECT_EQ(told(colorOf(faces.front())), told(of(card)));
    EXPECT_EQ(told(outlineOf(frame)), told(hairline()));
    EXPECT_EQ(outlineWidthOf(frame), 1);
    EXPECT_EQ(told(colorOf(note)), told(of(primary)));
    expectText(text(note, "Short note (optional)"), tertiary, 14, QFont::Normal);
    page.click(page.node(QAccessible::EditableText, "Note"));
    EXPECT_EQ(told(outlineOf(frame)), told(of(blueText)));
    EXPECT_EQ(outlineWidthOf(frame), 2);
}

}  // namespace
}  // namespace zelkovanta::desktop_test
