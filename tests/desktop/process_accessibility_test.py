#!/usr/bin/python3
"""The real program as a screen reader meets it, over the accessibility bus.

    process_accessibility_test.py BUILD_FOLDER FOLDER [TEST...]   in a network of its own; see
                                                                  tests/end_to_end/in_own_network
"""

import os
import sys
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.realpath(__file__)))

# pylint: disable=wrong-import-position
from process_test import OnAComputer  # noqa: E402
from stage import ROOM  # noqa: E402

ACCESSIBLE = "org.a11y.atspi.Accessible"
ACTION = "org.a11y.atspi.Action"
COMPONENT = "org.a11y.atspi.Component"
STATE_CHECKED = 4
STATE_FOCUSABLE = 11
FRAMES = {"frame", "application", "filler", "panel", "form"}
PRESSED = {"push button": "Press", "check box": "Toggle"}


def has_state(node, state):
    low, _ = node.remote.GetState(dbus_interface=ACCESSIBLE)
    return bool(int(low) >> state & 1)


def top_of(node):
    _, top, _, _ = node.remote.GetExtents(0, dbus_interface=COMPONENT)
    return int(top)


def actions_of(node):
    return [str(name) for name, _, _ in node.remote.GetActions(dbus_interface=ACTION)]


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

    def is_checked(self, window, role, name):
        return has_state(window.wait_for(role, name), STATE_CHECKED)

    def assert_becomes(self, what, seen):
        self.processes.until(what, seen)

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
        tops = [top_of(row) for _, row in rows]
        self.assertEqual(tops, sorted(tops), "read from top to bottom")
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
        kinds = [(name, node) for role, name, node in window.nodes() if role == "radio button"]
        self.assertGreater(len(kinds), 1)
        other, node = next((name, node) for name, node in kinds if not has_state(node, STATE_CHECKED))
        names = actions_of(node)
        action = next(name for name in ("Toggle", "Press") if name in names)
        self.assertTrue(node.remote.DoAction(names.index(action), dbus_interface=ACTION))
        self.assert_becomes(f"{other} is chosen", lambda: self.is_checked(window, "radio button", other))
        people = [(name, node) for role, name, node in window.nodes() if role == "check box"]
        self.assertGreater(len(people), 1)
        for name, node in people[:3]:
            before = has_state(node, STATE_CHECKED)
            names = actions_of(node)
            self.assertTrue(node.remote.DoAction(names.index("Toggle"), dbus_interface=ACTION))
            self.assert_becomes(f"{name} has changed",
                                lambda name=name, before=before: self.is_checked(window, "check box", name) != before)
        tops = [top_of(node) for role, _, node in window.nodes() if role == "check box"]
        self.assertEqual(tops, sorted(tops), "read from top to bottom")
        window.press("Cancel")
        window.wait_for("push button", "Send a request")


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)
