"""The road of a signal, played in two real windows. Every step is something that was seen in a window."""

import re

from alerts import Alerts
from stage import PROVIDER, ROOM
from steps import watch
from windows import Window, accessibility_bus

NOTE = "Second visit"


class Road:
    def __init__(self, stage, step):
        self.stage, self.step = stage, step
        self.processes = stage.processes
        self.room = self.provider = None
        self.sent = self.received = None

    def join_and_play(self):
        """Two computers that an admin's script sets up, and then the road."""
        bus = accessibility_bus(self.stage.environment["DBUS_SESSION_BUS_ADDRESS"])
        self.stage.start_office()
        room = self.join(bus, "room3", ROOM, "--role", "room", "--room", ROOM)
        provider = self.join(bus, "provider", PROVIDER, "--role", "member", "--member", PROVIDER)
        self.stage.arrange_windows(room.process, provider.process)
        self.play(room, provider)

    def play(self, room, provider):
        self.room, self.provider = room, provider
        self.sent = self.room.list("Sent")
        self.received = self.provider.list("Received")
        self.send_and_finish()
        Alerts(self.stage, self.step, room, provider).play()
        self.lose_the_office()
        self.send_once_more()

    def join(self, bus, profile, title, *placement):
        window = []

        def shows_code():
            if not window:
                window.append(Window(bus, self.stage.computers[profile], self.processes))
            return window[0].shows_picture("Setup code")

        self.step(f"{profile} starts for the first time and shows its setup code",
                  lambda: self.stage.start_computer(profile), shows_code)
        self.step(f"the office approves it, and it has become {title}",
                  lambda: self.stage.approve(*placement), lambda: window[0].says(title))
        self.step(f"{title} is connected", watch, window[0].is_connected)
        return window[0]

    def status_seen(self, rows, status):
        return lambda: rows.has_row(status)

    def send_and_finish(self):
        send = self.room.open_form(NOTE)
        self.stage.take_picture("form")
        self.step(f"{ROOM} presses Send signal; {PROVIDER} sees it",
                  send.press, lambda: self.received.has_row(f"{ROOM}, Patient ready, Waiting"))
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

    def both_connected(self):
        return self.room.is_connected() and self.provider.is_connected()

    def lose_the_office(self):
        self.step("the office is killed; both computers say so",
                  self.stage.kill_office, self.both_say("Offline, retrying…"), 30)
        self.stage.take_picture("no-connection")
        self.step("the office is started again; both come back by themselves",
                  self.stage.start_office, self.both_connected, 60)

    def send_once_more(self):
        send = self.room.open_form()
        self.step(f"{ROOM} sends again; {PROVIDER} sees it",
                  send.press, lambda: self.received.has_row(f"{ROOM}, Patient ready, Waiting"))
        self.stage.take_picture("both-windows")
