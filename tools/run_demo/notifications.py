"""A desktop's notifications where nobody looks: dunst under the virtual display, told what to do by dunstctl, and a
player of clips that notes what it was to play."""

import os
import re
import subprocess

import dbus

NAME = "org.freedesktop.Notifications"
PATH = "/org/freedesktop/Notifications"

# Over the edge of the window beside it, so that a picture shows what lies above what, and the rest of the window.
SETTINGS = """[global]
    dmenu = {folder}/menu
    idle_threshold = 0
    origin = top-right
    offset = 6x100
    width = 340
    font = DejaVu Sans 11
    show_indicators = yes
"""
# Asked which button it shall be, in place of a person.
MENU = """#!/bin/sh
grep -F "$(cat {folder}/choice)" | head -n 1
"""
PLAYER = """#!/bin/sh
basename "$1" >>{folder}/heard
"""


class Notifications:
    """Must begin before the computers do."""

    def __init__(self, stage, is_relayed=False):
        self.stage, self.processes = stage, stage.processes
        self.folder = os.path.join(stage.short, "notifications")
        os.makedirs(os.path.join(self.folder, "bin"))
        self._write("dunstrc", SETTINGS)
        self._write("menu", MENU, 0o700)
        self._write("bin/paplay", PLAYER, 0o700)
        self._write("heard", "")
        stage.environment["PATH"] = os.path.join(self.folder, "bin") + ":" + stage.environment.get("PATH", "")
        self.environment = dict(stage.environment)
        if is_relayed:
            address = stage.start_bus("desktop-bus")
            self.environment["DBUS_SESSION_BUS_ADDRESS"] = address
        self.processes.start("dunst", ["dunst", "-conf", os.path.join(self.folder, "dunstrc"), "-print"],
                             self.environment)
        if is_relayed:
            stage.relay_notifications(address)
        self.processes.until("dunst begins", lambda: stage.bus_has(NAME))
        bus = dbus.bus.BusConnection(self.environment["DBUS_SESSION_BUS_ADDRESS"])
        self.daemon = bus.get_object(NAME, PATH, introspect=False)

    def _write(self, name, text, mode=0o600):
        path = os.path.join(self.folder, name)
        with open(path, "w", encoding="utf-8") as file:
            file.write(text.format(folder=self.folder))
        os.chmod(path, mode)

    def _dunstctl(self, *words):
        subprocess.run(["dunstctl", *words], env=self.environment, check=True, timeout=20)

    def posts(self):
        """What dunst was told to show since it began, as it printed it: title, text and buttons."""
        return [Post(block) for block in re.findall(r"^\{$.*?^\}$", self.processes.log_of("dunst"), re.M | re.S)]

    def find(self, title, after=0):
        return next((post for post in self.posts()[after:] if post.title == title), None)

    def on_screen(self):
        """How many stand there now."""
        return int(self.daemon.Get("org.dunstproject.cmd0", "displayedLength", dbus_interface=dbus.PROPERTIES_IFACE))

    def is_drawn(self):
        found = subprocess.run(["xdotool", "search", "--onlyvisible", "--class", "Dunst"], env=self.environment,
                               capture_output=True, check=False)
        return bool(found.stdout.strip())

    def press(self, button):
        """A button of what stands there."""
        self._write("choice", button)
        self._dunstctl("context")

    def close_all(self):
        self._dunstctl("close-all")

    def heard(self):
        """The clips that were played."""
        with open(os.path.join(self.folder, "heard"), encoding="utf-8") as file:
            return file.read().split()


class Post:
    def __init__(self, block):
        self.title = re.search(r"^\tsummary: '(.*)'$", block, re.M).group(1)
        self.text = re.search(r"^\tbody: '(.*?)'\n\ticon: ", block, re.M | re.S).group(1)
        self.buttons = dict(re.findall(r'^\t\t"(.*)": "(.*)"$', block, re.M))
