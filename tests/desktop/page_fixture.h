#pragma once

#include "platform/linux/gettext_string_table.h"
#include "platform/simulated/simulated_appearance.h"
#include "screens/qml/page_model.h"
#include "screens/qml/string_table_translator.h"
#include "tests/support/store_fixture.h"

#include <memory>
#include <string>
#include <vector>

#include <QAccessible>
#include <QImage>
#include <QQmlApplicationEngine>
#include <QQuickItem>
#include <QQuickWindow>

/// The real page over a real store in virtual time. It is looked at and pressed as a screen reader does it, and with
/// the mouse and the keyboard.
namespace zelkovanta::desktop_test {

/// Something that the page offers to a screen reader.
struct Node {
    QAccessible::Role role;
    std::string name;
    QAccessibleInterface* interface;

    [[nodiscard]] QAccessible::State state() const { return interface->state(); }
    /// Qt 6.4 does not tell a screen reader, so the item is asked.
    [[nodiscard]] bool isEnabled() const { return interface->object()->property("enabled").toBool(); }
    [[nodiscard]] QRect rect() const { return interface->rect(); }
};

enum class Appearance { light, dark };

/// The texts that the program is installed with, in one language.
[[nodiscard]] platform::linux_host::GettextStringTable textsIn(const std::string& language);

class Page {
public:
    /// A computer of its own, not yet launched.
    explicit Page(Appearance shown = Appearance::light, const std::string& language = "en");
    ~Page();

    /// The window over the computer's store, which must have been launched.
    void open(int width = 420, int height = 680);

    /// Runs what is due in the store and in the window, and draws.
    void settle();
    [[nodiscard]] QImage picture();
    void resize(int width, int height);

    /// Everything visible, in reading order.
    [[nodiscard]] std::vector<Node> nodes() const;
    [[nodiscard]] std::vector<Node> nodes(QAccessible::Role role) const;
    /// The visible node of this role whose name begins with `name`; ends the test if there is none.
    [[nodiscard]] Node node(QAccessible::Role role, const std::string& name) const;
    [[nodiscard]] bool shows(QAccessible::Role role, const std::string& name) const;
    /// Whether a visible text says this.
    [[nodiscard]] bool says(const std::string& text) const;

    void press(const std::string& button);  ///< as a screen reader
    void click(const Node& node);           ///< with the mouse
    void type(const std::string& text);
    void key(Qt::Key key);
    /// Opens a list and takes the entry of this name.
    void choose(const std::string& list, const std::string& entry);

    /// The lists' items that are alive.
    [[nodiscard]] std::vector<QQuickItem*> rowItems() const;
    [[nodiscard]] QQuickItem* rowItem(const std::string& signalId) const;

    support::Computer computer;
    platform::simulated::SimulatedAppearance appearance;
    std::unique_ptr<screens::qml::PageModel> model;
    QQuickWindow* window = nullptr;

private:
    platform::linux_host::GettextStringTable strings_;
    screens::qml::StringTableTranslator translator_{strings_};
    std::unique_ptr<QQmlApplicationEngine> engine_;
};

/// Holds a key until it has come so often again, and lets it go.
void holdKey(QQuickWindow* window, Qt::Key key, int repeats, Qt::KeyboardModifiers with = Qt::NoModifier);

/// Everything visible in a window, in reading order.
[[nodiscard]] std::vector<Node> nodesIn(QQuickWindow* window);

/// A small practice with names and types as people have them.
[[nodiscard]] records::StateSnapshot practice(const std::function<void(records::StateSnapshot&)>& adjust = [](auto&) {
});

}  // namespace zelkovanta::desktop_test
