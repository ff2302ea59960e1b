"""The road of a signal, played in two real windows. Every step is something that was seen in a window."""

import re
import time

from stage import PROVIDER, ROOM
from windows import Window, accessibility_bus

NOTE = "Second visit"
QUICK = 0.001


def watch():
    """Nothing is done: what comes by itself is waited for."""


class Road:
    def __init__(self, stage):
        self.stage = stage
        self.processes = stage.processes
        self.number = 0
        self.room = self.provider = None
        self.sent = self.received = None

    def step(self, what, act, seen, limit=20.0, interval=QUICK):
        """Does something, waits until it is seen, and tells how long that took."""
        self.number += 1
        begun = time.monotonic()
        act()
        self.processes.until(what, seen, limit, interval)
        took = (time.monotonic() - begun) * 1000
        print(f"{self.number:3}. {what:<74} {took:8.1f} ms", flush=True)

    def play(self):
        bus = accessibility_bus(self.stage.environment["DBUS_SESSION_BUS_ADDRESS"])
        self.stage.start_office()
        self.room = self.join(bus, "room3", ROOM, "--role", "room", "--room", ROOM)
        self.provider = self.join(bus, "provider", PROVIDER, "--role", "member", "--member", PROVIDER)
        self.sent = self.room.list("Sent")
        self.received = self.provider.list("Received")
        self.stage.arrange_windows(self.room.process, self.provider.process)
        self.send_and_finish()
        self.lose_the_office()
        self.send_once_more()

    def join(self, bus, profile, title, *placement):
        process = None

        def start():
            nonlocal process
            process = self.stage.start_computer(profile)

        windows = []

        def shows_setup():
            if not windows:
                windows.append(Window(bus, process, self.processes))
            return windows[0].says("Set up this computer")

        self.step(f"{profile} starts for the first time and asks to be set up", start, shows_setup)
        window = windows[0]
        self.step(f"{profile} shows its setup code", watch, lambda: window.find("graphic", "Setup code") or
                  window.find("icon", "Setup code") or window.find("image", "Setup code"))
        self.stage.take_picture(f"{profile}-setup")
        self.step(f"the office approves it, and it has become {title}",
                  lambda: self.stage.approve(*placement), lambda: window.says(title))
        self.step(f"{title} is connected", watch, lambda: window.says("Connected"))
        return window

    def status_seen(self, rows, status):
        return lambda: rows.has_row(status)

    def send_and_finish(self):
        self.room.wait_for("text", "Note").write(NOTE)
        send = self.room.wait_for("push button", "Send")
        self.step(f"{ROOM} presses Send; {PROVIDER} sees it",
                  send.press, lambda: self.received.has_row(f"{ROOM}, Ready for doctor, Waiting"))
        self.step("it carries the note", watch, lambda: NOTE in self.received.texts_of_row(ROOM))
        self.step("its wait timer runs", watch, self.timer_has_moved())
        self.step(f"{ROOM} shows it as sent", watch, self.status_seen(self.sent, "Waiting"))
        self.stage.take_picture("signal-sent")
        on_my_way = self.provider.wait_for("push button", "On my way")
        self.step(f'{PROVIDER} presses "On my way"; {ROOM} sees it',
                  on_my_way.press, self.status_seen(self.sent, "On the way"))
        self.stage.take_picture("on-the-way")
        done = self.provider.wait_for("push button", "Done")
        self.step(f"{PROVIDER} presses Done; {ROOM}'s list is empty",
                  done.press, lambda: not self.sent.rows())
        self.step(f"{PROVIDER}'s list is empty", watch, lambda: not self.received.rows())
        self.step("both say so", watch, lambda: self.room.says("Nothing sent yet.") and
                  self.provider.says("No one is waiting for you."))

    def timer_has_moved(self):
        first = []

        def moved():
            times = [text for text in self.received.texts_of_row(ROOM) if re.fullmatch(r"\d+:\d\d", text)]
            if times and not first:
                first.extend(times)
            return times and times != first
        return moved

    def both_say(self, text):
        return lambda: self.room.says(text) and self.provider.says(text)

    def lose_the_office(self):
        self.step("the office is killed; both computers say so",
                  self.stage.kill_office, self.both_say("No connection. Retrying…"), 30)
        self.stage.take_picture("no-connection")
        self.step("the office is started again; both come back by themselves",
                  self.stage.start_office, self.both_say("Connected"), 60)

    def send_once_more(self):
        send = self.room.wait_for("push button", "Send")
        self.step(f"{ROOM} sends again; {PROVIDER} sees it",
                  send.press, lambda: self.received.has_row(f"{ROOM}, Ready for doctor, Waiting"))
        self.stage.take_picture("both-windows")
