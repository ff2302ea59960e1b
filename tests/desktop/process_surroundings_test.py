#!/usr/bin/python3
"""The real program as a process, while what it stands on changes: the clock, the key store, the disk, its texts.

    process_surroundings_test.py BUILD_FOLDER FOLDER [TEST...]      in a network of its own; see
                                                                    tests/end_to_end/in_own_network
"""

import os
import re
import struct
import subprocess
import sys
import time
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.realpath(__file__)))

# pylint: disable=wrong-import-position
from process_faults_test import OnAWire  # noqa: E402
from process_test import BUILD, TWO_SECONDS, OnAComputer  # noqa: E402
from stage import ROOM  # noqa: E402

HOUR = 3600


class WhileTheClockIsSet(OnAWire):
    def setUp(self):
        super().setUp()
        self.clock = os.path.join(self.stage.folder, "clock")
        self.set_clock(0)

    def set_clock(self, seconds):
        """In one write, since the program reads the same memory."""
        with open(self.clock, "r+b" if os.path.exists(self.clock) else "wb", buffering=0) as file:
            file.write(struct.pack("=q", seconds))

    def start(self, **changes):
        # A sanitizer wants to be loaded first, and may come second.
        sanitizer = os.environ.get("ASAN_OPTIONS", "") + ":verify_asan_link_order=0"
        return super().start(LD_PRELOAD=os.path.join(BUILD, "tests", "desktop", "libshifted_clock.so"),
                             SHIFTED_CLOCK=self.clock, ASAN_OPTIONS=sanitizer, **changes)

    def longest_wait(self, window):
        """In minutes, as the rows' timers show it."""
        waits = [re.fullmatch(r"(?:(\d+):)?(\d+):(\d\d)", name) for _, name, _ in window.nodes()]
        return max((int(wait[1] or 0) * 60 + int(wait[2]) for wait in waits if wait), default=None)

    def stays_connected(self, window, seconds):
        begun = time.monotonic()

        def is_over():
            self.assertTrue(window.is_connected())
            return time.monotonic() > begun + seconds
        self.processes.until("time passes", is_over, seconds + 20, interval=0.5)

    def test_forth_and_back_by_an_hour_it_stays_connected_and_paired(self):
        window = self.set_up_over_the_wire()
        connection = self.wire.upgraded
        self.send("before")
        window.wait_until_it_says("before")
        for shift, note, wait, kind in ((HOUR, "an hour later", 60, "urgent"),
                                        (-HOUR, "an hour earlier", 0, "patient_seated"),
                                        (0, "on time again", 0, "step_out")):
            self.set_clock(shift)
            minutes = range(wait, wait + 5)  # The test itself takes its time.
            self.processes.until(f"the timers follow the clock: {note}", lambda: self.longest_wait(window) in minutes)
            # Whatever looks after the connection looks every five seconds.
            self.stays_connected(window, 6)
            self.send(note, kind)
            window.wait_until_it_says(note)
        self.assertIs(self.wire.upgraded, connection)
        self.end()
        self.set_clock(HOUR)
        self.start()
        window = self.window()
        window.wait_until_connected()
        window.wait_until_it_says(ROOM)


class WhileTheKeyStoreFallsSilent(OnAComputer):
    def test_a_saved_pairing_is_out_of_reach_and_comes_back_with_it(self):
        self.set_up()
        self.end()
        key_store, = [process for process in self.processes.running if process.name == "key-store"]
        self.processes.end(key_store)
        self.processes.until("the key store is gone", lambda: not self.stage.bus_has("org.freedesktop.secrets"))
        deaf = self.start_deaf_key_store()
        begun = time.monotonic()
        self.start()
        self.processes.until("the window shows", self.visible_windows, TWO_SECONDS)
        self.assertLess(time.monotonic() - begun, TWO_SECONDS)
        window = self.window()
        window.wait_until_it_says("Set up this computer")
        window.wait_until_it_says("Getting a code…")
        self.assertFalse(window.is_connected())
        self.assertEqual(self.stage.order("waiting"), "")
        status, took = self.end()
        self.assertEqual(status, 0, self.processes.log_of("desk"))
        self.assertLess(took, 5.0)
        self.processes.end(deaf)
        self.processes.until("the deaf one is gone", lambda: not self.stage.bus_has("org.freedesktop.secrets"))
        self.stage.start_key_store()
        self.start()
        window = self.window()
        window.wait_until_connected()
        window.wait_until_it_says(ROOM)


class WhereSettingsCanOnlyBeRead(OnAComputer):
    def protect(self, folder):
        """For this test alone: its mounts are its own, and root itself cannot write there."""
        subprocess.run(["mount", "--bind", folder, folder], check=True)
        self.addCleanup(subprocess.run, ["umount", "-l", folder], check=False)
        subprocess.run(["mount", "-o", "remount,bind,ro", folder], check=True)
        with self.assertRaisesRegex(OSError, "Read-only"):
            with open(os.path.join(folder, "probe"), "wb"):
                pass

    def test_a_pairing_from_before_is_there_and_the_computer_works(self):
        self.set_up()
        self.end()
        profile = os.path.join(self.stage.environment["XDG_DATA_HOME"], "zelkovanta-profiles", "desk")
        settings = os.path.join(profile, "config", "zelkovanta", "settings.ini")
        with open(settings, "rb") as file:
            before = file.read()
        self.protect(os.path.join(profile, "config"))
        for note, kind in (("in spite of it", "ready"), ("and once more", "urgent")):
            self.start()
            window = self.window()
            window.wait_until_connected()
            window.wait_until_it_says(ROOM)
            self.stage.order("send", "--room", ROOM, "--type", kind, "--note", note)
            window.wait_until_it_says(note)
            status, _ = self.end()
            self.assertEqual(status, 0, self.processes.log_of("desk"))
        with open(settings, "rb") as file:
            self.assertEqual(file.read(), before)


class WithTextsOfItsOwn(OnAComputer):
    def test_another_resources_folder_speaks_for_the_program(self):
        resources = os.path.join(self.stage.folder, "resources")
        catalogues = os.path.join(resources, "locale", "en", "LC_MESSAGES")
        os.makedirs(catalogues)
        subprocess.run(["msgfmt", "--output-file", os.path.join(catalogues, "zelkovanta.mo"), "-"], check=True, text=True,
                       input='msgid ""\nmsgstr "Content-Type: text/plain; charset=UTF-8\\n"\n\n'
                             'msgid "Set up this computer"\nmsgstr "Make this computer ours"\n')
        self.start(ZELKOVANTA_RESOURCES=resources)
        window = self.window()
        window.wait_until_it_says("Make this computer ours")
        self.assertFalse(window.says("Set up this computer"))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)
