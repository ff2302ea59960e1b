"""A call on the desktop: raised, answered and taken back in notifications, while the windows are not needed."""

from stage import PROVIDER, ROOM
from steps import watch

NOTE = "Brought the X-rays"
CALL = f"{ROOM} · Patient ready"
COMING = f"{PROVIDER} is on the way"
CLIP = "chime.caf"


class Alerts:
    """Between two connected computers whose lists are empty, as they are afterwards."""

    def __init__(self, stage, step, room, provider):
        self.stage, self.step, self.processes = stage, step, stage.processes
        self.room, self.provider = room, provider
        self.sent, self.received = room.list("Sent"), provider.list("Received")
        self.desktop = stage.notifications

    def play(self):
        self.desktop.close_all()
        self.raise_call()
        self.answer_without_window()
        self.open_window_and_finish()
        self.take_back()

    def send(self, what, seen, note=None):
        send = self.room.open_form(note)
        before = len(self.desktop.posts())
        self.step(what, send.press, lambda: self.desktop.find(CALL, before) and seen())
        return self.desktop.find(CALL, before)

    def raise_call(self):
        heard = len(self.desktop.heard())
        call = self.send(f"{ROOM} sends; {PROVIDER}'s desktop shows it in the practice's words", lambda: True, NOTE)
        self.step("it carries the note", watch, lambda: NOTE in call.text)
        self.step("it has two buttons", watch, lambda: {"ONMYWAY": "On my way", "DONE": "Done"}.items() <=
                  call.buttons.items() and len(call.buttons) == 3)  # and the click on itself
        self.step("its clip was played once", watch, lambda: self.desktop.heard()[heard:] == [CLIP])
        self.step("it stands on the screen, over the windows", watch, self.desktop.is_drawn)
        self.stage.take_picture("notification")

    def answer_without_window(self):
        computer = self.provider.process
        before = len(self.desktop.posts())
        self.step(f"{PROVIDER} closes the window", lambda: self.stage.close_window(computer),
                  lambda: not self.stage.windows_of(computer))
        self.step(f'"On my way" is pressed in the notification; {ROOM} sees it',
                  lambda: self.desktop.press("On my way"), lambda: self.sent.has_row("On the way"))
        self.step(f"{ROOM}'s desktop says who is coming", watch, lambda: self.desktop.find(COMING, before))
        self.step("the call's own notification is gone", watch, lambda: self.desktop.on_screen() == 1)
        self.step("no window has opened", watch, lambda: not self.stage.windows_of(computer))
        self.processes.until("the notice is drawn", self.desktop.is_drawn)
        self.stage.take_picture("who-is-coming")

    def open_window_and_finish(self):
        computer = self.provider.process
        self.step(f"{PROVIDER} starts the program again; the window is back",
                  lambda: self.stage.start_again(computer), lambda: self.stage.windows_of(computer))
        done = self.provider.wait_for("push button", "Done")
        self.step(f"{PROVIDER} presses Done; both lists are empty", done.press,
                  lambda: not self.sent.rows() and not self.received.rows())
        self.desktop.close_all()
        self.processes.until("the notices are closed", lambda: self.desktop.on_screen() == 0)

    def take_back(self):
        self.send(f"{ROOM} sends again; {PROVIDER}'s desktop shows it", lambda: self.desktop.on_screen() == 1)
        self.processes.until("the notification is drawn", self.desktop.is_drawn)
        cancel = self.room.wait_for("push button", "Cancel")
        self.step(f"{ROOM} cancels; the notification is taken back", cancel.press,
                  lambda: self.desktop.on_screen() == 0)
        self.step("both lists are empty", watch, lambda: not self.sent.rows() and not self.received.rows())
