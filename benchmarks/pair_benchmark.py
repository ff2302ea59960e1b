"""How soon a new computer shows its setup code, and how soon it is at work once an admin has approved it.

    pair_benchmark.py BUILD_FOLDER [RESULTS_FILE]

The screen is a virtual one whose pixels lie in a file, so "on screen" means just that. At work is a computer that shows
a signal of its office.
"""

import json
import os
import statistics
import sys
import time
import urllib.request

sys.dont_write_bytecode = True
TREE = os.path.dirname(os.path.dirname(os.path.realpath(__file__)))
sys.path.insert(0, os.path.join(TREE, "tools", "run_demo"))

# pylint: disable=wrong-import-position
from figures import join  # noqa: E402
from pixels import Screen  # noqa: E402
from processes import DemoError  # noqa: E402
from stage import ROOM, Stage  # noqa: E402

STARTS = 11
APPROVALS = 21
POLL = 2.0
WIDTH, HEIGHT = 480, 720
# Nothing but a code is of this black, on a window that is white.
BLACK, WHITE = b"\0\0\0", b"\xff\xff\xff"
SIGNAL_COLOR = "#FF00FE"
SIGNAL_PIXEL = b"\xfe\x00\xff"


class Measurement:
    def __init__(self, stage):
        self.stage = stage
        self.processes = stage.processes
        self.screen = Screen(stage.start_screen_in_file(WIDTH, HEIGHT), WIDTH, HEIGHT)
        self.opener = urllib.request.build_opener(urllib.request.ProxyHandler({}))
        stage.start_office()
        stage.order("type", "ready", "--color", SIGNAL_COLOR)
        self.signal = stage.order("send", "--room", ROOM, "--type", "ready")

    def shows_code(self):
        """Black between two margins that are not, or the window would not be drawn there yet."""
        return self.screen.pixel(4, 4) == WHITE and any(
            self.screen.row_holds(y, 110, 310, BLACK) and not self.screen.row_holds(y, 4, 80, BLACK)
            and not self.screen.row_holds(y, 340, 416, BLACK) for y in range(120, HEIGHT - 120, 8))

    def code_on_screen(self):
        """Seconds from the start of a computer that was never paired to its code."""
        times = []
        for number in range(STARTS):
            begun = time.monotonic()
            computer = self.stage.start_computer(f"new{number}")
            times.append(self.screen.until("the setup code", self.shows_code) - begun)
            self.processes.end(computer)
            self.screen.until("the screen is empty again", lambda: self.screen.pixel(4, 4) != WHITE)
        return statistics.median(times)

    def console_order(self, name, **fields):
        """As the page of the office's console gives it."""
        request = urllib.request.Request(
            f"{self.stage.console_address}console/v1/{name}", json.dumps(fields).encode(),
            {"Content-Type": "application/json", "Origin": self.stage.console_address.rstrip("/")})
        with self.opener.open(request, timeout=10) as answer:
            return json.load(answer)

    def approval(self):
        """Seconds from an admin's press to the computer at work, at moments that are spread evenly between two polls."""
        times = []
        handled = {line.split()[0] for line in self.stage.order("waiting").splitlines()}
        self.stage.start_computer("desk")
        for number in range(APPROVALS):
            shown = self.screen.until("the setup code", self.shows_code)
            request = self.processes.until("the office knows the request",
                                           lambda: [line.split()[0] for line in self.stage.order("waiting").splitlines()
                                                    if line.split()[0] not in handled])[0]
            handled.add(request)
            moment = shown + POLL + (number + 0.5) * POLL / APPROVALS
            self.processes.pause(moment - time.monotonic())
            begun = time.monotonic()
            answer = self.console_order("approve", request=request, role="room", room=ROOM)
            times.append(self.screen.until("the signal", lambda: self.screen.holds(SIGNAL_PIXEL)) - begun)
            self.console_order("revoke", device=answer["device"]["id"])
        return statistics.median(times)


def figure(name, value):
    print(f"{name:24} {value:10.3f} s", flush=True)
    return {"name": name, "value": value, "unit": "s", "peer": None, "peerValue": None, "ratio": None}


def main():
    build = os.path.realpath(sys.argv[1])
    try:
        with Stage(build, os.path.join(build, "benchmarks", "pair")) as stage:
            measurement = Measurement(stage)
            figures = [figure("pair.code_on_screen", measurement.code_on_screen()),
                       figure("pair.approval.p50", measurement.approval())]
    except DemoError as error:
        print(error, file=sys.stderr)
        return 1
    if len(sys.argv) > 2:
        join(figures, sys.argv[2])
    return 0


sys.exit(main())
