"""What is on a virtual display, read from the file in which its pixels lie."""

import mmap
import os
import time

from processes import DemoError

LIMIT = 15.0


class Screen:
    def __init__(self, folder, width, height):
        file = os.path.join(folder, "Xvfb_screen0")
        with open(file, "rb") as screen:
            self.memory = mmap.mmap(screen.fileno(), 0, prot=mmap.PROT_READ)
        self.width, self.height = width, height
        self.pixels = len(self.memory) - width * height * 4

    def pixel(self, x, y):
        at = self.pixels + (y * self.width + x) * 4
        return self.memory[at:at + 3]

    def holds(self, pixel):
        """Anywhere in the upper half, where the first rows are."""
        return self.memory.find(pixel, self.pixels, self.pixels + self.width * self.height * 2) >= 0

    def row_holds(self, y, left, right, pixel):
        at = self.pixels + y * self.width * 4
        return self.memory.find(pixel, at + left * 4, at + right * 4) >= 0

    def until(self, what, condition):
        deadline = time.monotonic() + LIMIT
        while not condition():
            if time.monotonic() > deadline:
                raise DemoError(f"Waited {LIMIT:g} seconds in vain: {what}.")
        return time.monotonic()
