#include "tests/desktop/page_fixture.h"

#include "screens/qml/registration.h"

#include <optional>
#include <stdexcept>

#include <QGuiApplication>
#include <QtTest/QTest>

namespace zelkovanta::desktop_test {

namespace {

void collect(QAccessibleInterface* interface, std::vector<Node>& into) {
    if (interface == nullptr || !interface->isValid() || interface->state().invisible) {
        return;
    }
    into.push_back({interface->role(), interface->text(QAccessible::Name).toStdString(), interface});
    for (int index = 0; index < interface->childCount(); ++index) {
        collect(interface->child(index), into);
    }
}

void findRows(QQuickItem* item, std::vector<QQuickItem*>& into) {
    if (item->property("signalId").isValid() && item->isVisible()) {
        into.push_back(item);
    }
    for (QQuickItem* child : item->childItems()) {
        findRows(child, into);
    }
}

}  // namespace

platform::linux_host::GettextStringTable textsIn(const std::string& language) {
    return {ZELKOVANTA_TEST_RESOURCES,
            [language](const std::string& name) { return name == "LANG" ? std::optional{language} : std::nullopt; }};
}

Page::Page(Appearance shown, const std::string& language)
    : appearance(shown == Appearance::dark ? platform::ColorScheme::dark : platform::ColorScheme::light),
      strings_(textsIn(language)) {
    QAccessible::setActive(true);
    QCoreApplication::installTranslator(&translator_);
}

Page::~Page() {
    engine_.reset();
    model.reset();
    QCoreApplication::removeTranslator(&translator_);
}

void Page::open(int width, int height) {
    model = std::make_unique<screens::qml::PageModel>(
        computer.store, screens::qml::PagePorts{.main = computer.main.executor(),
                                                .clock = computer.clock,
                                                .strings = strings_,
                                                .defaults = computer.defaults,
                                                .notes = computer.notes,
                                                .crash = computer.crash,
                                                .doubleClick = std::chrono::milliseconds{400}});
    engine_ = std::make_unique<QQmlApplicationEngine>();
    screens::qml::registerScreens(*engine_, appearance);
    engine_->setInitialProperties({{"page", QVariant::fromValue(model.get())}});
    engine_->load(QUrl{screens::qml::mainWindowUrl});
    if (engine_->rootObjects().isEmpty()) {
        throw std::logic_error("The page does not load");
    }
    window = qobject_cast<QQuickWindow*>(engine_->rootObjects().constFirst());
    window->show();
    window->requestActivate();
    resize(width, height);
}

void Page::settle() {
    for (int round = 0; round < 3; ++round) {
        computer.settle();
        QCoreApplication::sendPostedEvents();
        QCoreApplication::processEvents();
        if (window != nullptr && window->isVisible()) {
            static_cast<void>(window->grabWindow());
        }
    }
}

QImage Page::picture() {
    settle();
    return window->grabWindow();
}

void Page::resize(int width, int height) {
    window->resize(width, height);
    settle();
}

void holdKey(QQuickWindow* window, Qt::Key key, int repeats, Qt::KeyboardModifiers with) {
    QTest::keyPress(window, key, with);
    for (int repeat = 0; repeat < repeats; ++repeat) {
        for (const bool pressed : {false, true}) {
            QTest::simulateEvent(window, pressed, key, with, QString{}, true);
        }
    }
    QTest::keyRelease(window, key, with);
}

std::vector<Node> nodesIn(QQuickWindow* window) {
    std::vector<Node> found;
    collect(QAccessible::queryAccessibleInterface(window), found);
    return found;
}

std::vector<Node> Page::nodes() const {
    return nodesIn(window);
}

std::vector<Node> Page::nodes(QAccessible::Role role) const {
    std::vector<Node> found = nodes();
    std::erase_if(found, [role](const Node& node) { return node.role != role; });
    return found;
}

Node Page::node(QAccessible::Role role, const std::string& name) const {
    for (const Node& node : nodes(role)) {
        if (node.name.starts_with(name)) {
            return node;
        }
    }
    std::string shown;
    for (const Node& node : nodes()) {
        shown += "\n  " + std::to_string(node.role) + " " + node.name;
    }
    throw std::logic_error("Nothing is called \"" + name + "\" here:" + shown);
}

bool Page::shows(QAccessible::Role role, const std::string& name) const {
    for (const Node& node : nodes(role)) {
        if (node.name.starts_with(name)) {
            return true;
        }
    }
    return false;
}

bool Page::says(const std::string& text) const {
    for (const Node& node : nodes()) {
        const bool isText = node.role == QAccessible::StaticText || node.role == QAccessible::AlertMessage ||
                            node.role == QAccessible::Heading;
        if (isText && node.name.find(text) != std::string::npos) {
            return true;
        }
    }
    return false;
}

void Page::press(const std::string& button) {
    QAccessibleActionInterface* const actions = node(QAccessible::Button, button).interface->actionInterface();
    if (actions == nullptr || !actions->actionNames().contains(QAccessibleActionInterface::pressAction())) {
        throw std::logic_error("A screen reader cannot press \"" + button + "\"");
    }
    actions->doAction(QAccessibleActionInterface::pressAction());
    settle();
}

void Page::click(const Node& node) {
    QTest::mouseClick(window, Qt::LeftButton, {}, window->mapFromGlobal(node.rect().center()));
    settle();
}

void Page::type(const std::string& text) {
    for (const QChar character : QString::fromStdString(text)) {
        QTest::sendKeyEvent(QTest::Click, window, Qt::Key_unknown, QString{character}, Qt::NoModifier);
    }
    settle();
}

void Page::key(Qt::Key key) {
    QTest::keyClick(window, key);
    settle();
}

void Page::choose(const std::string& list, const std::string& entry) {
    click(node(QAccessible::ComboBox, list));
    click(node(QAccessible::ListItem, entry));
}

std::vector<QQuickItem*> Page::rowItems() const {
    std::vector<QQuickItem*> rows;
    findRows(window->contentItem(), rows);
    return rows;
}

QQuickItem* Page::rowItem(const std::string& signalId) const {
    for (QQuickItem* row : rowItems()) {
        if (row->property("signalId").toString().toStdString() == signalId) {
            return row;
        }
    }
    return nullptr;
}

records::StateSnapshot practice(const std::function<void(records::StateSnapshot&)>& adjust) {
    using support::makeMember;
    using support::makeRoom;
    using support::makeType;
    return support::makeSnapshot([&](records::StateSnapshot& snapshot) {
        snapshot.office.name = "Linden Street Dental";
        snapshot.office.departments = {{{.key = "provider", .label = "Doctor", .labelPlural = "Doctors"},
                                        {.key = "assistant", .label = "Assistant", .labelPlural = {}}}};
        const auto named = [](std::string name, std::string department) {
            return [=](records::Member& member) {
                member.name = name;
                member.department = department;
                member.status = "available";
            };
        };
        snapshot.members = {makeMember("dr-amari", named("Dr. Leila Amari", "provider")),
                            makeMember("dr-voss", named("Dr. Henrik Voss", "provider")),
                            makeMember("june", named("June Park", "assistant"))};
        snapshot.rooms = {makeRoom("room-1", [](records::Room& room) { room.name = "Room 1"; }),
                          makeRoom("room-3", [](records::Room& room) { room.name = "Room 3"; })};
        const auto labelled = [](std::string key, std::string label, std::string color) {
            return [=](records::SignalType& type) {
                type.key = key;
                type.label = label;
                type.color = color;
            };
        };
        snapshot.signalTypes = {makeType("ready", 10, labelled("ready", "Patient ready", "#2FA24F")),
                                makeType("urgent", 90, labelled("urgent", "Urgent", "#E21833"))};
        snapshot.signalTypes[0].sortOrder = 1;
        snapshot.signalTypes[1].sortOrder = 2;
        snapshot.device = support::makeDeviceOfRoom("room-3");
        adjust(snapshot);
    });
}

}  // namespace zelkovanta::desktop_test
