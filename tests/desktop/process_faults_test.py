#!/usr/bin/python3
"""The real program as a process, where what it needs breaks off, lies, is locked or full.

    process_faults_test.py BUILD_FOLDER FOLDER [TEST...]      in a network of its own; see tests/end_to_end/in_own_network
"""

import os
import socket
import subprocess
import sys
import threading
import time
import unittest

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.realpath(__file__)))

# pylint: disable=wrong-import-position
from process_test import TWO_SECONDS, Listener, OnAComputer  # noqa: E402
from stage import PORT, ROOM  # noqa: E402

OFFICE_PORT = 8788
CUT_OFF = "The connection to the server was lost."


class Wire:
    """The way between the computer and the office, on which a test sits."""

    def __init__(self):
        self.change = lambda data: [data]
        self.connections = []
        self.upgraded = None
        self.threads = []
        self.server = socket.create_server(("127.0.0.1", PORT))
        threading.Thread(target=self._accept, daemon=True).start()

    def close(self):
        self.server.shutdown(socket.SHUT_RDWR)
        self.server.close()
        self.cut()
        for thread in self.threads:
            thread.join()

    def cut(self):
        """Every connection ends, without a word."""
        for connection in self.connections:
            for end in connection:
                try:
                    end.shutdown(socket.SHUT_RDWR)
                except OSError:
                    pass
        self.connections = []

    def _accept(self):
        while True:
            try:
                computer, _ = self.server.accept()
            except OSError:
                return
            try:
                office = socket.create_connection(("127.0.0.1", OFFICE_PORT))
            except OSError:
                computer.close()
                continue
            for end in (computer, office):
                end.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            self.connections.append((computer, office))
            for way in ((computer, office, None), (office, computer, self)):
                self.threads.append(threading.Thread(target=self._carry, args=way, daemon=True))
                self.threads[-1].start()

    def _carry(self, source, target, wire):
        try:
            while data := source.recv(65536):
                if wire and b" 101 " in data[:16]:
                    self.upgraded = target
                for piece in wire.change(data) if wire else [data]:
                    target.sendall(piece)
        except OSError:
            pass
        for end in (source, target):
            try:
                end.shutdown(socket.SHUT_RDWR)
            except OSError:
                pass
        source.close()


def frame(payload):
    """A text frame as a server sends it."""
    length = len(payload)
    if length < 126:
        head = bytes([length])
    elif length < 1 << 16:
        head = bytes([126]) + length.to_bytes(2, "big")
    else:
        head = bytes([127]) + length.to_bytes(8, "big")
    return b"\x81" + head + payload


class OnAWire(OnAComputer):
    def setUp(self):
        super().setUp()
        self.wire = Wire()
        self.addCleanup(self.wire.close)

    def set_up_over_the_wire(self):
        self.stage.start_office(OFFICE_PORT)
        self.start()
        self.stage.approve("--role", "room", "--room", ROOM)
        window = self.window()
        window.wait_until_it_says(ROOM)
        window.wait_until_connected()
        return window

    def send(self, note, kind="ready"):
        return self.stage.order("send", "--room", ROOM, "--type", kind, "--note", note)


class WhereTheOfficeBreaksOff(OnAWire):
    def break_off_in_the_midst(self, is_it):
        """From here on the office is killed halfway through what `is_it` picks."""
        broken = threading.Event()

        def half(data):
            if broken.is_set() or not is_it(data):
                return [data]
            self.processes.kill(self.stage.office)
            broken.set()
            return [data[:len(data) // 2]]
        self.wire.change = half
        return broken

    def bring_the_office_back(self):
        self.stage.kill_office()
        self.wire.change = lambda data: [data]
        self.wire.cut()
        self.stage.start_office(OFFICE_PORT)

    def test_killed_within_a_frame_it_is_found_again_and_nothing_is_lost(self):
        window = self.set_up_over_the_wire()
        broken = self.break_off_in_the_midst(lambda data: data[0] == 0x81 and b'"signal.created"' in data)
        subprocess.Popen([self.stage.office_program, "send", "--room", ROOM, "--type", "ready", "--note", "first",
                          "--database", self.stage.database], env=self.stage.environment,
                         stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL).wait()
        self.assertTrue(broken.wait(10))
        window.wait_until_it_says("Offline, retrying…")
        self.assertTrue(window.says(ROOM))
        self.assert_alive()
        self.bring_the_office_back()
        window.wait_until_connected(60)
        self.send("second", "urgent")
        window.wait_until_it_says("first")
        window.wait_until_it_says("second")

    def test_killed_within_a_reply_it_is_found_again_with_what_it_had_accepted_once(self):
        window = self.set_up_over_the_wire()
        broken = self.break_off_in_the_midst(lambda data: data.startswith(b"HTTP/1.1 201"))
        window.open_form("accepted").press()
        self.assertTrue(broken.wait(10))
        window.wait_until_it_says(CUT_OFF)
        window.press("Cancel")
        self.assert_alive()
        self.bring_the_office_back()
        window.wait_until_connected(60)
        window.wait_until_it_says("accepted")
        self.assertEqual(self.stage.order("state").count('"accepted"'), 1)


class WhereTheOfficeSaysTooMuchOrTooLittle(OnAWire):
    def test_a_computer_is_set_up_byte_by_byte(self):
        told = threading.Event()

        def bytes_of(data):
            yield from (data[i:i + 1] for i in range(len(data)))
            if data.startswith(b"HTTP/1.1 200") and b'"signals"' in data:
                told.set()
        self.wire.change = bytes_of
        window = self.set_up_over_the_wire()
        # A signal that overtakes the reply is out of sight until the next snapshot.
        self.assertTrue(told.wait(20))
        self.send("bit by bit")
        window.wait_until_it_says("bit by bit")

    def check_frame_then_office(self, payload):
        window = self.set_up_over_the_wire()
        socket_of_computer = self.wire.upgraded
        threading.Thread(target=lambda: self.pour(socket_of_computer, frame(payload)), daemon=True).start()
        self.processes.until("the computer opens another socket",
                             lambda: self.wire.upgraded is not socket_of_computer, 30)
        self.assert_alive()
        window.wait_until_connected(30)
        self.assertTrue(window.says(ROOM))
        self.send("afterwards")
        window.wait_until_it_says("afterwards")

    @staticmethod
    def pour(end, data):
        try:
            end.sendall(data)
        except OSError:
            pass

    def test_a_frame_of_twenty_megabytes_ends_its_socket_and_no_more(self):
        self.check_frame_then_office(b'{"type":"pong","x":"' + b"x" * (20 << 20) + b'"}')

    def test_a_frame_that_is_no_utf8_ends_its_socket_and_no_more(self):
        self.check_frame_then_office(b'{"type":"session.ended","x":"\xff\xfe"}')


def answer_half(connection):
    connection.recv(65536)
    connection.sendall(b'HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 400\r\n\r\n{"token":"t","qr')


def answer_half_and_stall(connection):
    answer_half(connection)
    while connection.recv(65536):
        pass


def answer_without_end(connection):
    connection.recv(65536)
    connection.sendall(b"HTTP/1.1 200 OK\r\nContent-Type: application/json\r\n\r\n")
    while True:
        connection.sendall(b"{" * 65536)


def quietly(answer):
    def answer_while_heard(connection):
        try:
            answer(connection)
        except OSError:
            pass  # The computer has heard enough.
    return answer_while_heard


class WhereSomethingElseAnswers(OnAComputer):
    def check_setup_then_office(self, answer):
        with Listener(quietly(answer)):
            self.start()
            window = self.window()
            window.wait_until_it_says("Reconnecting…", 30)
            self.assert_alive()
        self.stage.start_office()
        self.stage.approve("--role", "room", "--room", ROOM)
        window.wait_until_connected(30)

    def test_half_a_reply_is_no_code_and_the_office_is_found_when_it_comes(self):
        self.check_setup_then_office(answer_half)

    def test_a_reply_without_end_is_no_code_and_the_office_is_found_when_it_comes(self):
        self.check_setup_then_office(answer_without_end)

    def test_a_paired_computer_lives_through_half_a_reply_that_stalls(self):
        self.check_connection_then_office(quietly(answer_half_and_stall), "Offline, retrying…",
                                          "The server took too long to answer.")

    def test_a_paired_computer_lives_through_a_reply_without_end(self):
        self.check_connection_then_office(quietly(answer_without_end), "Offline, retrying…",
                                          "The server's answer is too large.")


class WhereTheKeyStoreIsLocked(OnAComputer):
    def start_locked(self):
        self.set_up()
        self.end()
        self.stage.lock_key_store()
        self.start_prompter()
        self.processes.until("somebody can be asked", lambda: self.stage.bus_has("org.gnome.keyring.SystemPrompter"))
        begun = time.monotonic()
        self.start()
        self.processes.until("the window shows", self.visible_windows, TWO_SECONDS)
        self.assertLess(time.monotonic() - begun, TWO_SECONDS)
        window = self.window()
        self.processes.until("the person is asked", lambda: self.visible_windows("Unlock"))
        self.assertTrue(window.says("Set up this computer"))
        self.assertFalse(window.is_connected())
        return window

    def start_prompter(self):
        """What asks a person for the password, as a desktop has it. It ends by itself when nobody has been asked."""
        prompter = subprocess.Popen(["/usr/libexec/gcr-prompter"], env=self.stage.environment,
                                    stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
        self.addCleanup(prompter.wait)
        self.addCleanup(prompter.kill)

    def press(self, *keys):
        subprocess.run(["xdotool", *keys], env=self.stage.environment, check=True, timeout=10)

    def test_the_window_shows_and_the_saved_pairing_is_there_once_it_is_unlocked(self):
        window = self.start_locked()
        self.press("type", "demo")
        self.press("key", "Return")
        window.wait_until_connected()
        window.wait_until_it_says(ROOM)
        self.assertEqual(self.stage.order("waiting"), "")

    def test_whoever_declines_sets_up_anew(self):
        window = self.start_locked()
        self.press("key", "Escape")
        self.processes.until("a code is asked for", lambda: self.stage.order("waiting"))
        window.wait_until_it_says("Set up this computer")
        self.assert_alive()

    def test_the_program_ends_in_order_while_somebody_is_asked(self):
        self.start_locked()
        status, took = self.end()
        self.assertEqual(status, 0, self.processes.log_of("desk"))
        self.assertLess(took, 4.0)


class WhereTheDiskIsFull(OnAComputer):
    def small_disk(self):
        """A disk of its own for the settings, in the mounts of this test alone."""
        folder = self.stage.environment["XDG_DATA_HOME"] + "/zelkovanta-profiles"
        os.makedirs(folder, exist_ok=True)
        subprocess.run(["mount", "-t", "tmpfs", "-o", "size=64k", "full", folder], check=True)
        self.addCleanup(subprocess.run, ["umount", "-l", folder], check=False)
        return folder

    def fill(self, folder):
        with open(os.path.join(folder, "filler"), "wb", buffering=0) as filler:
            with self.assertRaises(OSError):
                while True:
                    filler.write(b"x" * 4096)

    def test_a_computer_is_set_up_and_works_for_this_run(self):
        folder = self.small_disk()
        self.fill(folder)
        window = self.set_up()
        self.stage.order("send", "--room", ROOM, "--type", "ready", "--note", "in spite of it")
        window.wait_until_it_says("in spite of it")
        status, _ = self.end()
        self.assertEqual(status, 0, self.processes.log_of("desk"))
        self.assertFalse([name for _, _, names in os.walk(folder) for name in names
                          if name.endswith(".ini") or ".ini." in name])

    def test_a_pairing_from_before_outlives_it(self):
        folder = self.small_disk()
        self.set_up()
        self.end()
        self.fill(folder)
        for _ in range(2):
            self.start()
            window = self.window()
            window.wait_until_connected()
            window.wait_until_it_says(ROOM)
            status, _ = self.end()
            self.assertEqual(status, 0, self.processes.log_of("desk"))


class WhereTheSessionBusIsSilent(OnAComputer):
    key_store = False

    def test_the_window_opens_settings_are_kept_and_the_program_ends_at_once(self):
        path = os.path.join(self.stage.short, "silent")
        held = []
        with socket.socket(socket.AF_UNIX) as silent:
            silent.bind(path)
            silent.listen(64)

            def accept():
                while True:
                    try:
                        held.append(silent.accept()[0])
                    except OSError:
                        return
            threading.Thread(target=accept, daemon=True).start()
            self.stage.start_office()
            begun = time.monotonic()
            self.start(DBUS_SESSION_BUS_ADDRESS=f"unix:path={path}", DBUS_SYSTEM_BUS_ADDRESS=f"unix:path={path}")
            self.processes.until("the window shows", self.visible_windows, TWO_SECONDS)
            self.assertLess(time.monotonic() - begun, TWO_SECONDS)
            self.stage.approve("--role", "room", "--room", ROOM)
            self.processes.until("the window is the room's", lambda: self.visible_windows(f"^{ROOM} – ZelkoVanta$"))
            self.assertGreater(len(held), 0)
            status, took = self.end()
            self.assertEqual(status, 0, self.processes.log_of("desk"))
            self.assertLess(took, 4.0)
            settings = os.path.join(self.stage.environment["XDG_DATA_HOME"], "zelkovanta-profiles", "desk", "config",
                                    "zelkovanta", "settings.ini")
            with open(settings, encoding="utf-8") as file:
                self.assertIn("deviceRole", file.read())
            silent.shutdown(socket.SHUT_RDWR)


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)
