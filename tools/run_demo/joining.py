"""The road of a computer into an office, played in two real windows and in the office's web console. Every step is
something that was seen, in a window wherever it shows there."""

from browser import Console
from stage import PROVIDER, ROOM
from steps import watch
from windows import Window, accessibility_bus

STATION = "Front desk"
COLLEAGUE = "Dr. Jonas Lindqvist"
APPROVED = 3.0  # seconds from the admin's click to a working screen; the computer asks every two
NOTICE = "This computer is no longer linked. Scan the code to set it up again."


class Joining:
    """Ends with a computer of the room and one of the provider, both connected."""

    def __init__(self, stage, step):
        self.stage, self.step = stage, step
        self.processes = stage.processes
        self.bus = None
        self.room = self.provider = None

    def play(self):
        self.bus = accessibility_bus(self.stage.environment["DBUS_SESSION_BUS_ADDRESS"])
        with Console(self.stage) as console:
            self.step("the office begins, and its console is live in a browser", lambda: self.open(console),
                      console.is_live)
            first = self.start("first", console)
            second = self.start("second", console)
            self.stage.arrange_windows(first.process, second.process)
            console.take_picture("two-computers-wait")
            self.stage.take_picture("setup")
            waiting = console.waiting()
            self.become_room(console, first, waiting[0])
            self.become_station(console, second, waiting[1])
            self.sign_in(console, second)
            self.send_from_station(console, second, first)
            self.sign_out(second)
            self.unlink(console, second)
            self.become_personal(console, second)
        self.room, self.provider = first, second

    def open(self, console):
        self.stage.start_office()
        console.open()

    def start(self, profile, console):
        before = len(console.waiting())
        window = []

        def shows_code():
            if not window:
                window.append(Window(self.bus, self.stage.computers[profile], self.processes))
            return window[0].shows_picture("Setup code")

        self.step(f"the {profile} computer starts for the first time and shows its setup code",
                  lambda: self.stage.start_computer(profile), shows_code)
        self.step("the console lists it as waiting", watch, lambda: len(console.waiting()) == before + 1)
        return window[0]

    def become_room(self, console, window, request):
        approve = console.placement(request, "room", name=ROOM, room=ROOM)
        self.step(f"the admin makes the first {ROOM}'s computer; its window says so", approve.click,
                  lambda: window.says(ROOM) and window.find("push button", "Send a request"), APPROVED)
        self.step("it is connected", watch, window.is_connected)

    def become_station(self, console, window, request):
        approve = console.placement(request, "shared", name=STATION)
        self.step("the admin makes the second a shared workstation; it asks for a sign-in", approve.click,
                  lambda: window.says(f"Sign in to {STATION}"), APPROVED)
        self.step("it shows a sign-in code", watch, lambda: window.shows_picture("Sign-in code"))
        self.stage.take_picture("sign-in-code")

    def sign_in(self, console, window):
        console.pick_up_phone(PROVIDER)
        button = self.processes.until("the phone sees the workstation's code", lambda: console.scan_button(STATION))
        self.step(f"the phone of {PROVIDER} scans it; the window says who is there", button.click,
                  lambda: window.says(f"Signed in · {PROVIDER}"))
        window.press("Current room", "combo box")
        entry = window.wait_for("list item", ROOM)
        self.step(f"{PROVIDER} says to be in {ROOM}; the workstation can send", entry.press,
                  lambda: window.find("push button", "Send a request"))
        self.stage.take_picture("signed-in")

    def send_from_station(self, console, station, room):
        station.press("Sent")
        sent, in_room = station.list("Sent"), room.list("Sent")
        send = station.open_form()
        self.step(f"it sends; the computer of {ROOM} shows the call too", send.press,
                  lambda: in_room.has_row(f"{ROOM}, Patient ready, Waiting"))
        self.step("so does the workstation itself", watch,
                  lambda: sent.has_row(f"{ROOM}, Patient ready, Waiting"))
        console.pick_up_phone(COLLEAGUE)
        button = self.processes.until("the call rings", lambda: console.call_button("acknowledge"))
        self.step(f"it rings at {COLLEAGUE}, who is on the way; the workstation sees it", button.click,
                  lambda: sent.has_row("On the way"))
        console.take_picture("phone")
        self.stage.take_picture("call-taken")
        button = self.processes.until("the call can be finished", lambda: console.call_button("done"))
        self.step("it is done; both lists are empty", button.click, lambda: not sent.rows() and not in_room.rows())

    def sign_out(self, window):
        self.step(f"{PROVIDER} signs out; the workstation shows a code again", lambda: window.press("Sign out"),
                  lambda: window.shows_picture("Sign-in code"))

    def unlink(self, console, window):
        button = console.button_of_computer(STATION, "unlink")
        self.step("the admin unlinks it; its window says why it has to be set up", button.click,
                  lambda: window.says(NOTICE))
        self.step("it shows a new setup code", watch, lambda: window.shows_picture("Setup code"))
        self.stage.take_picture("unlinked")

    def become_personal(self, console, window):
        code = console.make_code("member", member=PROVIDER)
        window.wait_for("text", "Pairing code").write(code)
        button = window.wait_for("push button", "Pair device")
        self.step(f"a pairing code is typed; it is the computer of {PROVIDER} now", button.press,
                  lambda: window.says(PROVIDER) and window.find("push button", "Send a request"))
        self.step("it is connected", watch, window.is_connected)
        window.press("Received")
