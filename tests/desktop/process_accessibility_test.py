#!/usr/bin/python3
"""The real program as a screen reader meets it, over the accessibility bus.

    process_accessibility_test.py BUILD_FOLDER FOLDER [TEST...]   in a network of its own; see
                                                                  tests/end_to_end/in_own_network
"""

import json
import os
import sys
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.realpath(__file__)))

# pylint: disable=wrong-import-position
from process_test import OnAComputer  # noqa: E402
from stage import PROVIDER, ROOM  # noqa: E402

ACCESSIBLE = "org.a11y.atspi.Accessible"
ACTION = "org.a11y.atspi.Action"
COMPONENT = "org.a11y.atspi.Component"
STATE_CHECKED = 4
STATE_FOCUSABLE = 11
FRAMES = {"frame", "application", "filler", "panel", "form"}
PRESSED = {"push button": "Press", "check box": "Toggle", "radio button": "Toggle", "combo box": "Press"}


def has_state(node, state):
    low, _ = node.remote.GetState(dbus_interface=ACCESSIBLE)
    return bool(int(low) >> state & 1)


def place_of(node):
    left, top, _, _ = node.remote.GetExtents(0, dbus_interface=COMPONENT)
    return int(top), int(left)


def actions_of(node):
    return [str(name) for name, _, _ in node.remote.GetActions(dbus_interface=ACTION)]


def act(node, action):
    names = actions_of(node)
    if action not in names or not node.remote.DoAction(names.index(action), dbus_interface=ACTION):
        raise AssertionError(f'"{node.name}" does not take "{action}".')


class ItsAccessibility(OnAComputer):
    def assert_all_can_be_used(self, window):
        """Whatever takes the keyboard has a name, and whatever can be pressed takes a press."""
        focusable = 0
        for role, name, node in window.nodes():
            if role not in FRAMES and has_state(node, STATE_FOCUSABLE):
                focusable += 1
                self.assertTrue(name, f"a {role} without a name")
            if role in PRESSED:
                self.assertIn(PRESSED[role], actions_of(node), f"{role} {name}")
        self.assertGreater(focusable, 0)

    def assert_read_as_they_stand(self, nodes, least=2):
        """Line by line, and each line from the left."""
        places = [place_of(node) for node in nodes]
        self.assertGreaterEqual(len(places), least)
        self.assertEqual(places, sorted(places))

    def nodes_of(self, window, role):
        return [node for a_role, _, node in window.nodes() if a_role == role]

    def is_checked(self, window, role, name):
        return has_state(window.wait_for(role, name), STATE_CHECKED)

    def assert_becomes(self, what, seen):
        self.processes.until(what, seen)

    def in_the_office(self, kind, **wanted):
        """What the office has of this kind with these values."""
        practice = json.loads(self.stage.order("state"))["practices"][0]
        return [each for each in practice[kind] if all(each.get(key) == value for key, value in wanted.items())]

    def assert_office_gets(self, kind, **wanted):
        self.assert_becomes(f"the office has {wanted} among its {kind}", lambda: self.in_the_office(kind, **wanted))

    def set_up_member(self):
        """A member's own computer, connected."""
        self.stage.start_office()
        self.start()
        self.stage.approve("--role", "member", "--member", PROVIDER)
        window = self.window()
        window.wait_until_connected()
        self.member, = self.in_the_office("members", name=PROVIDER)
        return window

    def is_signed_in(self, device):
        known, = (each["device"] for each in self.in_the_office("devices") if each["device"]["id"] == device)
        return "signedInMemberId" in known

    def test_a_computer_that_is_not_set_up_can_be_used(self):
        self.stage.start_office()
        self.start()
        window = self.window()
        window.wait_for("text", "Pairing code")
        self.assert_all_can_be_used(window)

    def test_every_button_of_the_queue_fires_and_the_rows_are_read_as_they_stand(self):
        window = self.set_up()
        # Each overtakes those before it.
        for kind in ("patient_seated", "ready", "step_out", "urgent"):
            self.stage.order("send", "--room", ROOM, "--type", kind, "--note", f"note of {kind}")
            window.wait_until_it_says(f"note of {kind}")
        self.assert_all_can_be_used(window)
        rows = window.list("Sent").rows()
        self.assertEqual(len(rows), 4)
        self.assert_read_as_they_stand([row for _, row in rows], 4)
        notes = [name for _, name, _ in window.nodes() if name.startswith("note of ")]
        self.assertEqual(notes, ["note of urgent", "note of step_out", "note of ready", "note of patient_seated"])
        window.press("Mark completed")
        self.assert_becomes("the first row is gone", lambda: len(window.list("Sent").rows()) == 3)
        window.press("Cancel")
        self.assert_becomes("the next row is gone", lambda: len(window.list("Sent").rows()) == 2)

    def test_every_control_of_the_form_fires(self):
        window = self.set_up()
        window.press("Send a request")
        window.wait_for("push button", "Send signal")
        self.assert_all_can_be_used(window)
        window.press("Back")
        window.wait_for("push button", "Send a request").press()
        kinds = self.nodes_of(window, "radio button")
        self.assert_read_as_they_stand(kinds)
        other = next(node for node in kinds if not has_state(node, STATE_CHECKED))
        name = other.name
        act(other, "Toggle")
        self.assert_becomes(f"{name} is chosen", lambda: self.is_checked(window, "radio button", name))
        self.assertEqual(sum(has_state(node, STATE_CHECKED) for node in self.nodes_of(window, "radio button")), 1)
        people = [(name, node) for role, name, node in window.nodes() if role == "check box"]
        self.assertGreater(len(people), 1)
        for name, node in people[:3]:
            before = has_state(node, STATE_CHECKED)
            act(node, "Toggle")
            self.assert_becomes(f"{name} has changed",
                                lambda name=name, before=before: self.is_checked(window, "check box", name) != before)
        self.assert_read_as_they_stand(self.nodes_of(window, "check box"))
        window.press("Cancel")
        window.wait_for("push button", "Send a request")

    def test_what_is_chosen_and_written_in_the_form_is_sent(self):
        window = self.set_up()
        window.press("Send a request")
        act(window.wait_for("radio button", "Urgent"), "Toggle")
        self.assert_becomes("it is chosen", lambda: self.is_checked(window, "radio button", "Urgent"))
        for person in self.nodes_of(window, "check box"):
            if has_state(person, STATE_CHECKED) != person.name.startswith(PROVIDER):
                act(person, "Toggle")
        self.assert_becomes("one is chosen", lambda: self.is_checked(window, "check box", PROVIDER))
        window.wait_for("text", "Note").write("as it was written")
        window.press("Send signal")
        window.wait_for("push button", "Send a request")
        kind, = self.in_the_office("signalTypes", key="urgent")
        member, = self.in_the_office("members", name=PROVIDER)
        self.assert_office_gets("signals", note="as it was written", typeId=kind["id"], providerId=member["id"])
        window.wait_until_it_says("as it was written")

    def test_a_members_queues_and_status_fire(self):
        window = self.set_up_member()
        for kind in ("ready", "urgent"):
            self.stage.order("send", "--room", ROOM, "--type", kind, "--to", PROVIDER, "--note", f"note of {kind}")
            window.wait_until_it_says(f"note of {kind}")
        self.assert_all_can_be_used(window)
        self.assert_read_as_they_stand([row for _, row in window.list("Received").rows()])
        for _, row in window.list("Received").rows():
            self.assert_read_as_they_stand([node for role, _, node in window.nodes(row) if role == "push button"])
        window.press("On my way")
        self.assert_office_gets("signals", note="note of urgent", status="acknowledged",
                                acknowledgedBy=self.member["id"])
        self.assertTrue(self.in_the_office("signals", note="note of ready", status="waiting"))
        self.assert_becomes("it is offered once", lambda: [
            name for role, name, _ in window.nodes() if (role, name) == ("push button", "On my way")] == ["On my way"])
        window.press("Done")
        self.assert_office_gets("cleared", note="note of urgent", status="done")
        self.assert_becomes("one row is left", lambda: len(window.list("Received").rows()) == 1)

        window.press("Sent")
        window.wait_until_it_says("Nothing sent yet.")
        self.assertTrue(self.is_checked(window, "push button", "Sent"))
        self.assertFalse(self.is_checked(window, "push button", "Received"))
        self.assertFalse(window.says("note of ready"))
        window.press("Received")
        window.wait_until_it_says("note of ready")
        self.assertTrue(self.is_checked(window, "push button", "Received"))

        window.press("Your status: Available", "combo box")
        window.wait_for("list item", "Do not disturb")
        self.assert_read_as_they_stand(self.nodes_of(window, "list item")[-3:], 3)
        window.press("Do not disturb", "list item")
        window.wait_for("combo box", "Your status: Do not disturb")
        self.assert_office_gets("members", name=PROVIDER, status="dnd")

    def test_a_shared_workstation_shows_its_code_takes_a_room_and_signs_out(self):
        self.stage.start_office()
        self.start()
        device = self.stage.approve("--role", "shared")
        window = self.window()
        self.assert_becomes("a code is shown", lambda: window.shows_picture("Sign-in code"))
        self.assert_all_can_be_used(window)
        self.stage.order("scan", device, PROVIDER)
        window.wait_until_it_says(f"Signed in · {PROVIDER}")
        self.assertTrue(self.is_signed_in(device))
        self.assert_all_can_be_used(window)
        window.press("Current room: Choose a room…", "combo box")
        window.wait_for("list item", ROOM).press()
        window.wait_for("combo box", f"Current room: {ROOM}")
        window.wait_for("push button", "Send a request")
        self.assert_all_can_be_used(window)
        window.open_form("from where they are").press()
        room, = self.in_the_office("rooms", name=ROOM)
        self.assert_office_gets("signals", note="from where they are", roomId=room["id"])
        window.wait_for("push button", "Send a request")
        window.press("Sign out")
        self.assert_becomes("a code is shown again", lambda: window.shows_picture("Sign-in code"))
        self.assertFalse(window.says("Signed in"))
        self.assert_becomes("nobody is signed in at the office", lambda: not self.is_signed_in(device))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)
