#!/usr/bin/python3
"""The real program as a process, on computers where something is missing or broken.

    process_test.py BUILD_FOLDER FOLDER [TEST...]      in a network of its own; see tests/end_to_end/in_own_network
"""

import os
import signal
import socketserver
import subprocess
import sys
import threading
import time
import unittest

import dbus

sys.dont_write_bytecode = True
TREE = os.path.dirname(os.path.dirname(os.path.dirname(os.path.realpath(__file__))))
sys.path.insert(0, os.path.join(TREE, "tools", "run_demo"))

# pylint: disable=wrong-import-position
from stage import PORT, ROOM, Stage  # noqa: E402
from windows import Window, accessibility_bus  # noqa: E402

BUILD, FOLDER = os.path.realpath(sys.argv[1]), os.path.realpath(sys.argv[2])
TWO_SECONDS = 2.0

# Takes the name of the key store and never reads what it is asked.
DEAF_KEY_STORE = """
import dbus, sys, time, signal
bus = dbus.bus.BusConnection(sys.argv[1])
bus.request_name("org.freedesktop.secrets")
signal.pause()
"""


class Listener:
    """Listens where the office would, and answers each connection in its own way."""

    def __init__(self, answer):
        class Handler(socketserver.BaseRequestHandler):
            def handle(self):
                answer(self.request)

        socketserver.ThreadingTCPServer.allow_reuse_address = True
        socketserver.ThreadingTCPServer.daemon_threads = True
        self.server = socketserver.ThreadingTCPServer(("127.0.0.1", PORT), Handler)
        self.server.block_on_close = False

    def __enter__(self):
        threading.Thread(target=self.server.serve_forever, daemon=True).start()
        return self

    def __exit__(self, *_):
        self.server.shutdown()
        self.server.server_close()


def answer_html(connection):
    connection.recv(65536)
    body = b"<html><body>Please sign in to the guest network.</body></html>"
    connection.sendall(b"HTTP/1.1 200 OK\r\nContent-Type: text/html\r\nContent-Length: %d\r\n\r\n" % len(body) + body)


def answer_garbage(connection):
    connection.recv(65536)
    connection.sendall(bytes(range(256)) * 16)


def answer_nothing(connection):
    while connection.recv(65536):
        pass


def answering_setups(body):
    """Answers each request for a setup code so, and every poll with "pending"."""
    def answer(connection):
        content = body if connection.recv(65536).startswith(b"POST") else b'{"status":"pending"}'
        connection.sendall(b"HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nConnection: close\r\n"
                           b"Content-Length: %d\r\n\r\n" % len(content) + content)
    return answer


def setup_code(image):
    return b'{"token":"t","claimToken":"c","qrData":"d","expiresAt":"the day after","qrPng":"' + image + b'"}'


class OnAComputer(unittest.TestCase):
    key_store = True

    def setUp(self):
        self.stage = Stage(BUILD, os.path.join(FOLDER, self._testMethodName), self.key_store)
        self.stage.__enter__()
        self.addCleanup(self.stage.__exit__)
        self.stage.start_display()
        self.processes = self.stage.processes

    def start(self, **changes):
        self.computer = self.stage.start_computer("desk", **changes)
        return self.computer

    def window(self):
        bus = accessibility_bus(self.stage.environment["DBUS_SESSION_BUS_ADDRESS"])
        return Window(bus, self.computer, self.processes)

    def set_up(self):
        """A computer of the room, connected."""
        self.stage.start_office()
        self.start()
        self.device = self.stage.approve("--role", "room", "--room", ROOM)
        window = self.window()
        window.wait_until_it_says(ROOM)
        window.wait_until_connected()
        return window

    def start_deaf_key_store(self):
        deaf = self.processes.start(
            "deaf-key-store",
            ["/usr/bin/python3", "-c", DEAF_KEY_STORE, self.stage.environment["DBUS_SESSION_BUS_ADDRESS"]],
            self.stage.environment)
        self.processes.until("the deaf key store is there", lambda: self.stage.bus_has("org.freedesktop.secrets"))
        self.assertIsNone(deaf.poll())
        return deaf

    def visible_windows(self, title="ZelkoVanta"):
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--name", title], env=self.stage.environment,
                               capture_output=True, text=True, check=False)
        return found.stdout.split()

    def close(self, window):
        """As a person does it, with the keys of the window manager."""
        def has_gone():
            subprocess.run(["xdotool", "windowactivate", window, "key", "--clearmodifiers", "alt+F4"],
                           env=self.stage.environment, check=False, timeout=10, capture_output=True)
            self.processes.pause(0.1)
            return not self.visible_windows()

        self.processes.until("the window is gone", has_gone, interval=0.5)

    def check_connection_then_office(self, answer, words, failure):
        window = self.set_up()
        self.stage.kill_office()
        with Listener(answer):
            window.wait_until_it_says(words)
            self.assertTrue(window.says(ROOM))
            self.assertFalse(window.says("Set up this computer"))
            window.open_form().press()
            window.wait_until_it_says(failure, 30)
            window.press("Cancel")
            self.assert_alive()
        self.stage.start_office()
        window.wait_until_connected(60)

    def assert_alive(self):
        self.assertIsNone(self.computer.poll(), self.processes.log_of("desk"))

    def end(self, how=signal.SIGTERM):
        begun = time.monotonic()
        status = self.processes.end(self.computer, how)
        return status, time.monotonic() - begun


class ItsWindow(OnAComputer):
    def test_opens_within_two_seconds_when_the_key_store_is_there(self):
        begun = time.monotonic()
        self.start()
        self.processes.until("the window shows", self.visible_windows, TWO_SECONDS)
        self.assertLess(time.monotonic() - begun, TWO_SECONDS)

    def test_closes_without_ending_the_program_and_a_second_start_shows_it_again(self):
        self.start()
        window, = self.processes.until("the window shows", self.visible_windows)
        self.close(window)
        self.assert_alive()
        second = subprocess.run([self.stage.client_program], check=False, timeout=10,
                                env=dict(self.stage.environment, ZELKOVANTA_PROFILE="desk"))
        self.assertEqual(second.returncode, 0)
        self.processes.until("the window shows again", self.visible_windows)
        self.assert_alive()

    def test_is_shown_when_the_desktop_asks_for_the_program_by_its_bus_name(self):
        self.start()
        window, = self.processes.until("the window shows", self.visible_windows)
        self.processes.until("the name is taken", lambda: self.stage.bus_has("com.zelkovanta.Desktop.desk"))
        self.close(window)
        bus = dbus.bus.BusConnection(self.stage.environment["DBUS_SESSION_BUS_ADDRESS"])
        program = bus.get_object("com.zelkovanta.Desktop.desk", "/com/zelkovanta/Desktop/desk", introspect=False)
        program.Activate(dbus.Dictionary(signature="sv"), dbus_interface="org.freedesktop.Application")
        self.processes.until("the window shows again", self.visible_windows)

    def test_of_a_second_profile_is_a_second_program(self):
        self.start()
        other = self.stage.start_computer("other")
        self.processes.until("both windows show", lambda: len(self.visible_windows()) == 2)
        self.assert_alive()
        self.assertIsNone(other.poll())

    def test_is_refused_in_one_sentence_when_another_start_does_not_answer(self):
        self.start()
        self.processes.until("the window shows", self.visible_windows)
        self.computer.send_signal(signal.SIGSTOP)
        second = subprocess.run([self.stage.client_program], check=False, timeout=10, capture_output=True, text=True,
                                env=dict(self.stage.environment, ZELKOVANTA_PROFILE="desk"))
        self.computer.send_signal(signal.SIGCONT)
        self.assertEqual((second.returncode, second.stderr),
                         (1, "ZelkoVanta is running already, and does not answer.\n"))

    def test_comes_back_after_the_program_was_killed(self):
        self.start()
        self.processes.until("the window shows", self.visible_windows)
        self.end(signal.SIGKILL)
        self.start()
        self.processes.until("the window shows", self.visible_windows)

    def test_ends_in_order_when_the_session_ends(self):
        self.set_up()
        status, took = self.end()
        self.assertEqual(status, 0, self.processes.log_of("desk"))
        self.assertLess(took, 3.0)


class ItsPairing(OnAComputer):
    def test_outlives_a_restart(self):
        self.set_up()
        self.end()
        self.start()
        window = self.window()
        window.wait_until_connected()
        window.wait_until_it_says(ROOM)

    def test_outlives_a_start_without_the_office(self):
        self.set_up()
        self.end()
        self.stage.kill_office()
        self.start()
        window = self.window()
        window.wait_until_it_says("Offline, retrying…")
        self.stage.start_office()
        window.wait_until_connected()
        window.wait_until_it_says(ROOM)

    def test_ends_with_a_reason_when_the_office_revokes_it(self):
        window = self.set_up()
        self.stage.order("revoke", self.device)
        window.wait_until_it_says("This computer is no longer linked. Scan the code to set it up again.")
        self.processes.until("a new code is asked for", lambda: self.stage.order("waiting"))
        self.assert_alive()

    def test_needs_no_folder_for_its_settings(self):
        # A file stands where the folder would be; root could write into any folder.
        blocked = os.path.join(self.stage.folder, "blocked")
        with open(blocked, "w", encoding="utf-8"):
            pass
        self.stage.environment["XDG_DATA_HOME"] = blocked
        self.stage.environment["XDG_CONFIG_HOME"] = blocked
        window = self.set_up()
        self.assertTrue(window.says("Sent from here"))
        status, _ = self.end()
        self.assertEqual(status, 0, self.processes.log_of("desk"))


class WhereNoOfficeAnswers(OnAComputer):
    def check_setup_then_office(self, answer):
        with Listener(answer):
            self.start()
            window = self.window()
            window.wait_until_it_says("Reconnecting…", 30)
            self.assert_alive()
        self.stage.start_office()
        self.stage.approve("--role", "room", "--room", ROOM)
        window.wait_until_connected(30)

    def test_html_is_no_code_and_the_office_is_found_when_it_comes(self):
        self.check_setup_then_office(answer_html)

    def test_garbage_is_no_code_and_the_office_is_found_when_it_comes(self):
        self.check_setup_then_office(answer_garbage)

    def test_silence_is_no_code_and_the_office_is_found_when_it_comes(self):
        self.check_setup_then_office(answer_nothing)

    def test_a_paired_computer_lives_through_html(self):
        self.check_connection_then_office(answer_html, "Offline, retrying…",
                                          "Unexpected response from the server.")

    def test_a_paired_computer_lives_through_garbage(self):
        self.check_connection_then_office(answer_garbage, "Offline, retrying…",
                                          "Something other than the ZelkoVanta server answered. "
                                          "Check the server address.")

    def test_a_paired_computer_lives_through_silence(self):
        self.check_connection_then_office(answer_nothing, "Connecting…", "The server took too long to answer.")


class WhereSetupCodesAreBroken(OnAComputer):
    def check_typed_code_helps(self, image):
        with Listener(answering_setups(setup_code(image))):
            self.start()
            window = self.window()
            window.wait_until_it_says("The code can't be shown. Type a pairing code instead.", 30)
            self.assert_alive()
        self.stage.start_office()
        window.wait_for("text", "Pairing code").write(self.stage.order("code", "--role", "room", "--room", ROOM))
        window.press("Pair device")
        window.wait_until_it_says(ROOM)

    def test_an_image_of_fifty_megabytes_is_none_and_a_typed_code_helps(self):
        self.check_typed_code_helps(b"data:image/png;base64," + b"A" * (50 << 20))

    def test_broken_base64_is_no_image_and_a_typed_code_helps(self):
        self.check_typed_code_helps(b"data:image/png;base64,***")

    def test_a_reply_without_a_marker_is_no_image_and_a_typed_code_helps(self):
        self.check_typed_code_helps(b"data:image/png,plain")

    def test_what_belongs_to_no_code_is_taken_out_of_what_is_pasted(self):
        self.stage.start_office()
        self.start()
        window = self.window()
        code = self.stage.order("code", "--role", "room", "--room", ROOM)
        window.wait_for("text", "Pairing code").write("\U0001F525 " + code.lower().replace("-", "\u2013") + "\U0001F680")
        window.press("Pair device")
        window.wait_until_it_says(ROOM)


class WithoutAKeyStore(OnAComputer):
    key_store = False

    def test_a_pairing_lasts_for_this_run_and_the_next_one_says_that_it_is_gone(self):
        self.set_up()
        self.end()
        self.start()
        self.window().wait_until_it_says("Set up this computer")

    def test_one_that_never_answers_holds_up_neither_the_window_nor_a_typed_code(self):
        self.start_deaf_key_store()
        self.stage.start_office()
        begun = time.monotonic()
        self.start()
        self.processes.until("the window shows", self.visible_windows, TWO_SECONDS)
        self.assertLess(time.monotonic() - begun, TWO_SECONDS)
        window = self.window()
        window.wait_until_it_says("Getting a code…")
        code = self.stage.order("code", "--role", "room", "--room", ROOM)
        window.wait_for("text", "Pairing code").write(code)
        window.press("Pair device")
        window.wait_until_connected()
        window.wait_until_it_says(ROOM)
        status, took = self.end()
        self.assertEqual(status, 0, self.processes.log_of("desk"))
        self.assertLess(took, 5.0)


class WithoutASessionBus(OnAComputer):
    key_store = False

    def test_the_window_opens_and_the_computer_can_be_set_up(self):
        self.stage.start_office()
        begun = time.monotonic()
        self.start(DBUS_SESSION_BUS_ADDRESS="unix:path=/nonexistent/bus")
        self.processes.until("the window shows", self.visible_windows, TWO_SECONDS)
        self.assertLess(time.monotonic() - begun, TWO_SECONDS)
        self.stage.approve("--role", "room", "--room", ROOM)
        self.processes.until("the window is the room's", lambda: self.visible_windows(f"^{ROOM} – ZelkoVanta$"))
        status, _ = self.end()
        self.assertEqual(status, 0, self.processes.log_of("desk"))


if __name__ == "__main__":
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)
