"""What is done and what is seen of it, step by step, with the time that each took."""

import time

QUICK = 0.001


def watch():
    """Nothing is done: what comes by itself is waited for."""


class Steps:
    def __init__(self, processes):
        self.processes = processes
        self.number = 0

    def __call__(self, what, act, seen, limit=20.0, interval=QUICK):
        """Does something, waits until it is seen, and tells how long that took."""
        self.number += 1
        begun = time.monotonic()
        act()
        self.processes.until(what, seen, limit, interval)
        took = (time.monotonic() - begun) * 1000
        print(f"{self.number:3}. {what:<74} {took:8.1f} ms", flush=True)
