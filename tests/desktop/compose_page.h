#pragma once

#include "tests/desktop/page_fixture.h"

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include <QtTest/QTest>
#include <gtest/gtest.h>

namespace zelkovanta::desktop_test {

/// The form, from the button that opens it to its end, with the mouse, the keyboard and a screen reader.
class ComposePage : public testing::Test {
protected:
    static constexpr auto openingButton = "Send a request";
    static constexpr auto sendButton = "Send signal";

    using Adjust = std::function<void(records::StateSnapshot&)>;

    /// At the computer of room 3, where nobody is signed in.
    void openRoom(const Adjust& adjust = [](auto&) {}) {
        page.computer.launchWith("room", practice(adjust));
        page.open();
        page.press(openingButton);
    }
    /// At the computer of room 3 with Dr. Amari signed in.
    void openSignedIn() {
        page.computer.launchWith("room", practice());
        page.open();
        signInAt("room-3");
        page.press(openingButton);
    }
    /// Dr. Amari is signed in at the computer, which is that of this room now.
    void signInAt(const std::string& roomId) {
        records::Device device = support::makeDeviceOfRoom(roomId);
        device.signedInMemberId = "dr-amari";
        page.computer.deliverSessionStarted(device, practice().members[0]);
        page.settle();
    }
    /// At the computer of Dr. Amari.
    void openProvider(const Adjust& adjust = [](auto&) {}) {
        page.computer.launchWith("member", practice([&](records::StateSnapshot& snapshot) {
                                     snapshot.device = support::makeDeviceOfMember("dr-amari");
                                     adjust(snapshot);
                                 }));
        page.open();
        page.press(openingButton);
    }
    [[nodiscard]] std::string sent() const {
        auto* request = page.computer.openRequest("POST", "/signals");
        return request != nullptr ? request->request.body.value_or("") : "no request";
    }
    [[nodiscard]] bool isOpen() const { return page.shows(QAccessible::EditableText, "Note"); }
    [[nodiscard]] std::string note() const {
        return page.node(QAccessible::EditableText, "Note").interface->text(QAccessible::Value).toStdString();
    }
    [[nodiscard]] bool isChecked(QAccessible::Role role, const std::string& name) const {
        return page.node(role, name).state().checked;
    }
    [[nodiscard]] bool isFocused(QAccessible::Role role, const std::string& name) const {
        return page.shows(role, name) && page.node(role, name).state().focused;
    }
    [[nodiscard]] bool maySend() const { return page.node(QAccessible::Button, sendButton).isEnabled(); }
    void pick(const std::string& name) { page.click(page.node(QAccessible::CheckBox, name)); }
    void writeNote(const std::string& text) {
        page.click(page.node(QAccessible::EditableText, "Note"));
        page.type(text);
    }
    /// Whether Tab arrives there.
    bool tabTo(QAccessible::Role role, const std::string& name) {
        for (int presses = 0; presses < 30; ++presses) {
            if (isFocused(role, name)) {
                return true;
            }
            page.key(Qt::Key_Tab);
        }
        return false;
    }
    void keyWithControl(Qt::Key key) {
        QTest::keyClick(page.window, key, Qt::ControlModifier);
        page.settle();
    }
    /// Tells the office's computers that somebody has changed.
    void change(std::size_t member, const std::function<void(records::Member&)>& adjust) {
        records::Member changed = practice().members.at(member);
        adjust(changed);
        page.computer.deliverRecord("member.updated", server::server_message::MemberUpdated{changed});
        page.settle();
    }
    void leaveTheShift(std::size_t member) {
        change(member, [](records::Member& changed) { changed.onShift = false; });
    }
    /// What the reporter of crashes was told of forms and screens since the last time.
    std::vector<std::string> takeReports() {
        auto lines = page.computer.journal.take();
        std::erase_if(lines, [](const std::string& line) {
            return line.find("compose-note") == std::string::npos && !line.starts_with("crash.setScreen");
        });
        return lines;
    }

    Page page;
};

}  // namespace zelkovanta::desktop_test
