#!/usr/bin/python3
"""The real program, started while it runs already, or while it is ending.

    process_starts_test.py BUILD_FOLDER FOLDER [TEST...]      in a network of its own; see tests/end_to_end/in_own_network
"""

import os
import re
import signal
import subprocess
import sys
import unittest

import dbus

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.realpath(__file__)))

# pylint: disable=wrong-import-position
from process_test import OnAComputer  # noqa: E402
from stage import PROVIDER, ROOM  # noqa: E402

LONGEST_PROFILE = "front-desk_" * 5 + "123456789"


class Starting(OnAComputer):
    def second_start(self, profile="desk", **changes):
        return subprocess.run([self.stage.client_program], check=False, timeout=10, capture_output=True, text=True,
                              env=dict(self.stage.environment, ZELKOVANTA_PROFILE=profile, **changes))

    def assert_hands_over(self, profile="desk", **changes):
        second = self.second_start(profile, **changes)
        self.assertEqual((second.returncode, second.stderr), (0, ""))

    def x(self, *words):
        return subprocess.run(words, env=self.stage.environment, check=True, timeout=10, capture_output=True,
                              text=True).stdout

    def first_window(self):
        window, = self.processes.until("the window shows", self.visible_windows)
        return window

    def size(self, window):
        found = re.search(r"WIDTH=(\d+)\nHEIGHT=(\d+)", self.x("xdotool", "getwindowgeometry", "--shell", window))
        return tuple(map(int, found.groups()))

    def maximise(self, window):
        before = self.size(window)
        self.x("wmctrl", "-i", "-r", hex(int(window)), "-b", "add,maximized_vert,maximized_horz")
        return self.processes.until("the window is as large as the screen",
                                    lambda: (size := self.size(window))[0] > before[0] and size[0] == 1280 and size)

    def minimise(self, window):
        self.x("xdotool", "windowminimize", window)
        self.processes.until("the window is minimised", lambda: not self.visible_windows())

    def below_the_pointer(self):
        """Whatever is on top there: a window's frame, by its number."""
        return re.search(r"WINDOW=(\d+)", self.x("xdotool", "getmouselocation", "--shell")).group(1)


class ItsSecondStart(Starting):
    def test_leaves_a_maximised_window_maximised(self):
        self.start()
        window = self.first_window()
        size = self.maximise(window)
        self.assert_hands_over()
        self.assertEqual(self.size(window), size)
        self.activate()
        self.assertEqual(self.size(window), size)

    def activate(self):
        """As the desktop does it, by the program's name on the bus."""
        bus = dbus.bus.BusConnection(self.stage.environment["DBUS_SESSION_BUS_ADDRESS"])
        self.processes.until("the name is taken", lambda: self.stage.bus_has("com.zelkovanta.Desktop.desk"))
        program = bus.get_object("com.zelkovanta.Desktop.desk", "/com/zelkovanta/Desktop/desk", introspect=False)
        program.Activate(dbus.Dictionary(signature="sv"), dbus_interface="org.freedesktop.Application")

    def test_shows_a_minimised_window_as_it_was(self):
        self.start()
        window = self.first_window()
        size = self.size(window)
        self.minimise(window)
        self.assert_hands_over()
        self.assertEqual(self.first_window(), window)
        self.assertEqual(self.size(window), size)

    def test_shows_a_window_that_was_minimised_and_maximised_as_large_as_the_screen(self):
        self.start()
        window = self.first_window()
        size = self.maximise(window)
        self.minimise(window)
        self.assert_hands_over()
        self.assertEqual(self.first_window(), window)
        self.processes.until("the window is as large as before", lambda: self.size(window) == size)

    def test_raises_a_window_that_another_one_covers(self):
        self.start()
        window = self.first_window()
        self.x("xdotool", "mousemove", "--window", window, "100", "100")
        frame = self.below_the_pointer()
        other = self.stage.start_computer("other")
        windows = self.processes.until("both windows show", lambda: len(self.visible_windows()) == 2
                                       and self.visible_windows())
        covering, = set(windows) - {window}
        self.maximise(covering)
        self.x("xdotool", "windowactivate", covering)
        self.processes.until("the other window covers it", lambda: self.below_the_pointer() != frame)
        self.assert_hands_over()
        self.processes.until("the window is above the other one", lambda: self.below_the_pointer() == frame)
        self.processes.until("the keyboard is the window's",
                             lambda: self.x("xdotool", "getactivewindow").strip() == window)
        self.assertIsNone(other.poll())

    def test_brings_a_token_that_no_program_started_later_inherits(self):
        seen = os.path.join(self.stage.folder, "seen")
        player = os.path.join(self.stage.folder, "paplay")
        with open(player, "w", encoding="utf-8") as file:
            file.write(f'#!/bin/sh\necho "${{XDG_ACTIVATION_TOKEN-none}}" >"{seen}.part" && mv "{seen}.part" "{seen}"\n')
        os.chmod(player, 0o755)
        self.stage.environment["PATH"] = self.stage.folder + ":" + self.stage.environment["PATH"]
        self.stage.start_office()
        self.start()
        self.stage.approve("--role", "member", "--member", PROVIDER)
        self.window().wait_until_connected()
        self.assert_hands_over(XDG_ACTIVATION_TOKEN="leave-to-come-forward")
        self.stage.order("send", "--room", ROOM, "--type", "urgent", "--note", "heard")
        self.processes.until("a clip is played", lambda: os.path.exists(seen))
        with open(seen, encoding="utf-8") as file:
            self.assertEqual(file.read(), "none\n")

    def test_finds_the_first_one_of_the_longest_profile(self):
        self.assertEqual(len(LONGEST_PROFILE), 64)
        self.computer = self.stage.start_computer(LONGEST_PROFILE)
        self.close(self.first_window())
        self.assert_hands_over(LONGEST_PROFILE)
        self.first_window()

    def test_finds_the_first_one_in_a_deep_home_without_a_folder_for_the_session(self):
        home = os.path.join(self.stage.folder, *["a-folder-below-a-folder"] * 8)
        os.makedirs(home)
        for name in ("XDG_RUNTIME_DIR", "XDG_DATA_HOME", "XDG_CONFIG_HOME", "XDG_STATE_HOME"):
            self.stage.environment.pop(name)
        self.stage.environment["HOME"] = home
        self.start()
        self.close(self.first_window())
        self.assertEqual(self.second_start().returncode, 0)
        self.first_window()

    def test_is_missed_in_one_sentence_where_nothing_can_listen(self):
        folder = self.stage.environment["XDG_RUNTIME_DIR"]
        self.start()
        self.first_window()
        socket, = [name for name in os.listdir(folder) if name.endswith(".socket")]
        self.end()
        # A folder with something in it stands where the socket was.
        os.makedirs(os.path.join(folder, socket, "full"))
        self.start()
        self.first_window()
        self.assertRegex(self.processes.log_of("desk"), r"(?m)^Another start cannot show this window: .+\.$")
        self.assertEqual(self.second_start().returncode, 1)


class WhileItEnds(Starting):
    key_store = False

    def test_a_start_waits_for_the_end_and_shows_its_own_window(self):
        # What was handed to a key store that never answers is waited for at the end.
        self.start_deaf_key_store()
        self.stage.start_office()
        ending = self.start()
        window = self.window()
        window.wait_for("text", "Pairing code").write(self.stage.order("code", "--role", "room", "--room", ROOM))
        window.press("Pair device")
        window.wait_until_connected()
        self.processes.running.remove(ending)
        ending.send_signal(signal.SIGTERM)
        self.processes.until("the window is gone", lambda: not self.visible_windows())
        self.assertIsNone(ending.poll(), "it ended too soon for a start in between")
        self.start()
        self.assertEqual(ending.wait(10), 0)
        self.first_window()
        self.window().wait_until_it_says("Set up this computer")
        self.assert_alive()
        self.assert_hands_over()


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)
