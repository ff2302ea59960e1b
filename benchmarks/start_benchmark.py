"""How soon the window shows something and the office's state, and what it costs to keep it open.

    start_benchmark.py BUILD_FOLDER [RESULTS_FILE]

The screen is a virtual one whose pixels lie in a file, so "on screen" means just that. A bare window of Qt Quick is
measured in the same run.
"""

import os
import statistics
import sys
import time

sys.dont_write_bytecode = True
TREE = os.path.dirname(os.path.dirname(os.path.realpath(__file__)))
sys.path.insert(0, os.path.join(TREE, "tools", "run_demo"))

# pylint: disable=wrong-import-position
from figures import join  # noqa: E402
from pixels import Screen  # noqa: E402
from processes import DemoError  # noqa: E402
from stage import ROOM, Stage  # noqa: E402

STARTS = 11
WIDTH, HEIGHT = 480, 720
WHITE = b"\xff\xff\xff"
SIGNAL_COLOR = "#FF00FE"
SIGNAL_PIXEL = b"\xfe\x00\xff"
QUEUE_ROWS = 12
# The office takes no call twice, so each of the rows is another kind for somebody else; the first stands above the rest.
FIRST_KIND = "urgent"
KINDS = [FIRST_KIND, "step_out", "ready", "patient_seated"]
PEOPLE = ["Dr. Amara Okafor", "Dr. Jonas Lindqvist", "Dr. Mei Tanaka"]


class Measurement:
    def __init__(self, stage, build):
        self.stage = stage
        self.processes = stage.processes
        self.bare_program = os.path.join(build, "benchmarks", "bare_quick")
        self.screen = Screen(stage.start_screen_in_file(WIDTH, HEIGHT), WIDTH, HEIGHT)

    def start_bare(self):
        return self.processes.start("bare", [self.bare_program], self.stage.environment)

    def start_ours(self):
        return self.stage.start_computer("room3")

    def is_drawn(self):
        return self.screen.pixel(4, 4) == WHITE

    def end(self, process):
        self.processes.end(process)
        self.screen.until("the screen is empty again", lambda: not self.is_drawn())

    def first_frame(self, start):
        begun = time.monotonic()
        process = start()
        try:
            shown = self.screen.until("the first frame", self.is_drawn)
        except DemoError as error:
            self.processes.pause(0)  # Tells so if the program has ended.
            raise error
        return process, begun, shown

    def set_up(self):
        """A computer that is paired, and one signal of a colour that nothing else has."""
        self.stage.start_office()
        computer = self.start_ours()
        self.stage.approve("--role", "room", "--room", ROOM)
        self.stage.order("type", FIRST_KIND, "--color", SIGNAL_COLOR)
        signal = self.send(FIRST_KIND)
        self.screen.until("the signal shows", lambda: self.screen.holds(SIGNAL_PIXEL))
        self.end(computer)
        return signal

    def send(self, kind, *people):
        recipients = [word for person in people for word in ("--to", person)]
        return self.stage.order("send", "--room", ROOM, "--type", kind, *recipients)

    def fill_queue(self):
        """The rest of the rows."""
        calls = [(kind, person) for kind in KINDS for person in PEOPLE]
        return [self.send(*call) for call in calls[:QUEUE_ROWS - 1]]

    def starts(self):
        frames, snapshots, bare_frames = [], [], []
        for _ in range(STARTS):
            process, begun, shown = self.first_frame(self.start_ours)
            known = self.screen.until("the signal", lambda: self.screen.holds(SIGNAL_PIXEL))
            frames.append((shown - begun) * 1000)
            snapshots.append((known - begun) * 1000)
            self.end(process)
            process, begun, shown = self.first_frame(self.start_bare)
            bare_frames.append((shown - begun) * 1000)
            self.end(process)
        return statistics.median(frames), statistics.median(snapshots), statistics.median(bare_frames)

    def memory_after_30_seconds(self, start, shown=None):
        process, _, _ = self.first_frame(start)
        if shown:
            self.screen.until("the rows", lambda: self.screen.holds(shown))
        self.processes.pause(30)
        with open(f"/proc/{process.pid}/smaps_rollup", encoding="ascii") as file:
            pss = next(int(line.split()[1]) for line in file if line.startswith("Pss:"))
        self.end(process)
        return pss * 1024 / 1e6

    def idle_minute(self):
        """Processor seconds of one minute, ours and the bare window's, the queue being empty."""
        ours, _, _ = self.first_frame(self.start_ours)
        bare = self.start_bare()
        self.processes.pause(10)
        before = processor_seconds(ours), processor_seconds(bare)
        self.processes.pause(60)
        after = processor_seconds(ours), processor_seconds(bare)
        self.processes.end(bare)
        self.end(ours)
        return after[0] - before[0], after[1] - before[1]


def processor_seconds(process):
    # The clock of another process, as clock_getcpuclockid names it; threads that have ended are counted too.
    return time.clock_gettime_ns((~process.pid << 3) | 2) / 1e9


def figure(name, value, unit, peer_value):
    print(f"{name:24} {value:10.3f} {unit:4} bare_quick {peer_value:10.3f}", flush=True)
    # A peer that did nothing at all has no ratio.
    return {"name": name, "value": value, "unit": unit, "peer": "bare_quick", "peerValue": peer_value,
            "ratio": value / peer_value if peer_value else None}


def main():
    build = os.path.realpath(sys.argv[1])
    try:
        with Stage(build, os.path.join(build, "benchmarks", "start")) as stage:
            measurement = Measurement(stage, build)
            signal = measurement.set_up()
            frame, snapshot, bare_frame = measurement.starts()
            figures = [figure("start.first_frame", frame, "ms", bare_frame),
                       figure("start.first_snapshot", snapshot, "ms", bare_frame)]
            signals = [signal, *measurement.fill_queue()]
            frame, _, bare_frame = measurement.starts()
            figures.append(figure("start.queue", frame, "ms", bare_frame))
            figures.append(figure("memory.queue",
                                  measurement.memory_after_30_seconds(measurement.start_ours, SIGNAL_PIXEL), "MB",
                                  measurement.memory_after_30_seconds(measurement.start_bare)))
            for signal in signals:
                stage.order("cancel", signal)
            figures.append(figure("memory.window", measurement.memory_after_30_seconds(measurement.start_ours), "MB",
                                  measurement.memory_after_30_seconds(measurement.start_bare)))
            ours, bare = measurement.idle_minute()
            figures.append(figure("idle.cpu.window", ours, "s", bare))
    except DemoError as error:
        print(error, file=sys.stderr)
        return 1
    if len(sys.argv) > 2:
        join(figures, sys.argv[2])
    return 0


sys.exit(main())
