#!/usr/bin/python3
"""What ./dev run does before a display, for a person who types: the words, the end, and what ends by itself.

    run_by_hand_test.py BUILD_FOLDER FOLDER [TEST...]      in a network of its own; see in_own_network
"""

import os
import re
import select
import shutil
import signal
import subprocess
import sys
import time
import unittest

TREE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.realpath(__file__))))
RUN_DEMO = os.path.join(TREE, "tools", "run_demo", "run_demo")
BUILD, FOLDER = os.path.realpath(sys.argv[1]), os.path.realpath(sys.argv[2])
INVITED = "ends everything."


class ByHand(unittest.TestCase):
    demo = ""

    def setUp(self):
        shutil.rmtree(FOLDER, ignore_errors=True)
        os.makedirs(FOLDER)
        reading, writing = os.pipe()
        screen = subprocess.Popen(["Xvfb", "-displayfd", str(writing), "-screen", "0", "1280x800x24", "-nolisten", "tcp",
                                   "-noreset"], pass_fds=(writing,), stdout=subprocess.DEVNULL,
                                  stderr=subprocess.DEVNULL)
        self.addCleanup(screen.wait)
        self.addCleanup(screen.terminate)
        os.close(writing)
        with os.fdopen(reading) as answer:
            number = answer.readline().strip()
        environment = dict(os.environ, DISPLAY=f":{number}", LC_ALL="C.UTF-8", DEMO=self.demo)
        for name in ("WAYLAND_DISPLAY", "XAUTHORITY", "DBUS_SESSION_BUS_ADDRESS", "XDG_RUNTIME_DIR", "QT_QPA_PLATFORM"):
            environment.pop(name, None)
        self.said = ""
        self.run_demo = subprocess.Popen([RUN_DEMO, BUILD, "--folder", os.path.join(FOLDER, "demo")], env=environment,
                                         stdin=subprocess.PIPE, stdout=subprocess.PIPE, stderr=subprocess.STDOUT)
        self.addCleanup(self.run_demo.wait)
        self.addCleanup(self.run_demo.stdout.close)
        self.addCleanup(self.run_demo.stdin.close)
        self.addCleanup(self.run_demo.terminate)
        self.hear(INVITED, 60)

    def hear(self, words, limit=20):
        deadline = time.monotonic() + limit
        while words not in self.said:
            ready, _, _ = select.select([self.run_demo.stdout], [], [], max(0.0, deadline - time.monotonic()))
            data = os.read(self.run_demo.stdout.fileno(), 65536) if ready else b""
            self.assertTrue(data, f'waited in vain for "{words}" after:\n{self.said}')
            self.said += data.decode()

    def type(self, words):
        self.run_demo.stdin.write(words)
        self.run_demo.stdin.flush()

    def status(self):
        """With everything that was still said."""
        output = self.run_demo.stdout.read().decode()
        self.said += output
        return self.run_demo.wait(20)

    def programs(self):
        """The processes of the demo by their programs' names, with their profile."""
        with open(f"/proc/{self.run_demo.pid}/task/{self.run_demo.pid}/children", encoding="ascii") as children:
            found = {}
            for child in map(int, children.read().split()):
                name = os.path.basename(os.readlink(f"/proc/{child}/exe"))
                with open(f"/proc/{child}/environ", encoding="utf-8") as environment:
                    profile = re.search(r"(?:^|\0)ZELKOVANTA_PROFILE=([^\0]*)", environment.read())
                found[name if profile is None else profile.group(1)] = child
        return found

    def assert_nothing_is_left(self, processes):
        self.assertEqual([name for name, process in processes.items() if os.path.exists(f"/proc/{process}")], [])


class OfNewComputers(ByHand):
    def test_the_office_stops_and_starts_at_a_word_and_all_ends_with_quit(self):
        processes = self.programs()
        self.assertTrue({"first", "second", "zelkovanta-office"} <= processes.keys(), processes)
        self.type(b"stop\n")
        self.hear("The office has stopped.")
        self.assertNotIn("zelkovanta-office", self.programs())
        self.type(b"start\n")
        self.hear("The office runs again.")
        processes |= self.programs()
        self.type(b"dance\n")
        self.hear("The words are: stop, start, quit.")
        self.type(b"quit\n")
        self.assertEqual(self.status(), 0, self.said)
        self.assert_nothing_is_left(processes)

    def test_words_that_come_at_once_are_obeyed_one_after_the_other(self):
        self.type(b"stop\nstart\nquit\n")
        self.assertEqual(self.status(), 0, self.said)
        self.assertRegex(self.said, r"The office has stopped\.\nThe office runs again\.\n$")

    def test_ctrl_c_ends_all_in_order_even_where_nobody_types(self):
        processes = self.programs()
        self.run_demo.stdin.close()
        self.run_demo.send_signal(signal.SIGINT)
        self.assertEqual(self.status(), 0, self.said)
        self.assert_nothing_is_left(processes)

    def test_a_computer_that_crashes_is_named(self):
        processes = self.programs()
        os.kill(processes["second"], signal.SIGSEGV)
        self.assertEqual(self.status(), 1, self.said)
        self.assertRegex(self.said, r"\nsecond has ended by itself \(SIGSEGV\)[.:]")
        self.assert_nothing_is_left(processes)

    def test_both_computers_that_crash_are_no_success(self):
        processes = self.programs()
        os.kill(self.run_demo.pid, signal.SIGSTOP)
        for profile in ("first", "second"):
            os.kill(processes[profile], signal.SIGKILL)
        os.kill(self.run_demo.pid, signal.SIGCONT)
        self.assertEqual(self.status(), 1, self.said)
        self.assertRegex(self.said, r"\nfirst has ended by itself \(SIGKILL\)[.:]")

    def test_an_office_that_ends_by_itself_is_named_with_its_last_words(self):
        processes = self.programs()
        os.kill(processes["zelkovanta-office"], signal.SIGKILL)
        self.assertEqual(self.status(), 1, self.said)
        self.assertRegex(self.said, r"\noffice has ended by itself \(SIGKILL\): .*\S")
        self.assert_nothing_is_left(processes)


class OfComputersThatAreSetUp(ByHand):
    demo = "paired"

    def test_both_windows_are_their_rooms_and_quit_ends_them(self):
        processes = self.programs()
        self.assertTrue({"room3", "provider", "zelkovanta-office"} <= processes.keys(), processes)
        self.assertIn("A new computer was set up: Room 3\n", self.said)
        self.type(b"quit\n")
        self.assertEqual(self.status(), 0, self.said)
        self.assert_nothing_is_left(processes)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)
