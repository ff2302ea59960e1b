"""Where the demo plays: folders, a session bus, a key store, a display, the office and the two computers.

Nothing of the person's own home is read or written: the folders, the bus and the key store are the demo's own. Before a
person's desktop its notifications and its sounds are all that the demo reaches.
"""

import os
import shutil
import signal
import socket
import subprocess
import tempfile

from processes import DemoError, Processes

PORT = 8787
PRACTICE = "harbour"
ROOM = "Room 3"
PROVIDER = "Dr. Amara Okafor"

BUS_CONFIGURATION = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path={path}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""


def port_is_taken():
    with socket.socket() as probe:
        probe.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        try:
            probe.bind(("127.0.0.1", PORT))
        except OSError:
            return True
    return False


class Stage:
    def __init__(self, build, folder, has_key_store=True):
        self.has_key_store = has_key_store
        self.folder = folder
        self.office_program = os.path.join(build, "office", "zelkovanta-office")
        self.client_program = os.path.join(build, "app", "zelkovanta")
        self.database = os.path.join(folder, "office.db")
        self.short = None
        self.office = None
        self.computers = {}
        self.notifications = None
        self.environment = dict(os.environ)
        self.processes = Processes(os.path.join(folder, "logs"))
        for program in (self.office_program, self.client_program):
            if not os.access(program, os.X_OK):
                raise DemoError(f"{program} is not built yet.")
        if port_is_taken():
            raise DemoError(f"Port {PORT} of this computer is taken, and the office listens there: "
                            "end what holds it (ss -ltnp names it).")

    def __enter__(self):
        shutil.rmtree(self.folder, ignore_errors=True)
        for name in ("config", "data", "cache", "state", "logs", "screenshots"):
            os.makedirs(os.path.join(self.folder, name))
        # Paths of sockets must be short, and the folder of this tree may lie deep.
        self.short = tempfile.mkdtemp(prefix="zelkovanta-")
        runtime = os.path.join(self.short, "runtime")
        os.mkdir(runtime, 0o700)
        display = self.environment.get("WAYLAND_DISPLAY")
        if display and not display.startswith("/") and self.environment.get("XDG_RUNTIME_DIR"):
            self.environment["WAYLAND_DISPLAY"] = os.path.join(self.environment["XDG_RUNTIME_DIR"], display)
        if self.environment.get("DISPLAY") and not self.environment.get("XAUTHORITY"):
            self.environment["XAUTHORITY"] = os.path.expanduser("~/.Xauthority")
        self._keep_sounds()
        self.environment.update(
            HOME=self.folder, XDG_RUNTIME_DIR=runtime,
            XDG_CONFIG_HOME=os.path.join(self.folder, "config"), XDG_DATA_HOME=os.path.join(self.folder, "data"),
            XDG_CACHE_HOME=os.path.join(self.folder, "cache"), XDG_STATE_HOME=os.path.join(self.folder, "state"))
        for name in ("ZELKOVANTA_PROFILE", "ZELKOVANTA_RESOURCES", "QT_QPA_PLATFORM", "DBUS_SESSION_BUS_ADDRESS"):
            self.environment.pop(name, None)
        try:
            self.environment["DBUS_SESSION_BUS_ADDRESS"] = self.start_bus("bus")
            if self.has_key_store:
                self.start_key_store()
        except BaseException:
            self.__exit__()
            raise
        return self

    def __exit__(self, *_):
        self.processes.end_all()
        if self.short:
            shutil.rmtree(self.short, ignore_errors=True)

    def _keep_sounds(self):
        """The sound server's sockets lie in the folder that the demo replaces by its own."""
        runtime = self.environment.get("XDG_RUNTIME_DIR")
        if runtime:
            self.environment.setdefault("PIPEWIRE_RUNTIME_DIR", runtime)
            self.environment.setdefault("PULSE_SERVER", f"unix:{runtime}/pulse/native")

    def start_bus(self, name):
        """Its address."""
        path = os.path.join(self.short, name)
        configuration = path + ".conf"
        with open(configuration, "w", encoding="utf-8") as file:
            file.write(BUS_CONFIGURATION.format(path=path))
        self.processes.start("session-" + name, ["dbus-daemon", "--nofork", f"--config-file={configuration}"],
                             self.environment)
        self.processes.until("the session bus begins", lambda: os.path.exists(path))
        return f"unix:path={path}"

    def relay_notifications(self, address):
        """Notifications appear on the desktop that has this bus."""
        relay = os.path.join(os.path.dirname(os.path.realpath(__file__)), "relay_notifications")
        self.processes.start("relay", [relay, address], self.environment)

    def bus_has(self, name):
        answer = subprocess.run(
            ["dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus", "/org/freedesktop/DBus",
             "org.freedesktop.DBus.NameHasOwner", f"string:{name}"],
            env=self.environment, capture_output=True, text=True, check=False)
        return "boolean true" in answer.stdout

    def start_key_store(self):
        """A keyring of the demo's own, unlocked with a password that protects nothing worth it."""
        if not shutil.which("gnome-keyring-daemon"):
            print("There is no gnome-keyring here, so the computers forget their pairing when they end.")
            return
        reading, writing = os.pipe()
        os.write(writing, b"demo")
        os.close(writing)
        with os.fdopen(reading) as password:
            self.processes.start("key-store", ["gnome-keyring-daemon", "--unlock", "--foreground",
                                               "--components=secrets"], self.environment, stdin=password)
        self.processes.until("the key store begins", lambda: self.bus_has("org.freedesktop.secrets"))

    def lock_key_store(self):
        """As it is after a login without a password."""
        subprocess.run(
            ["dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.secrets", "/org/freedesktop/secrets",
             "org.freedesktop.Secret.Service.Lock", "array:objpath:/org/freedesktop/secrets/collection/login"],
            env=self.environment, check=True, timeout=10, capture_output=True)

    def _start_screen(self, size, *options):
        """A display that nobody sees."""
        reading, writing = os.pipe()
        # A display that begins anew whenever nobody looks would drop whoever comes at that moment.
        self.processes.start("display", ["Xvfb", "-displayfd", str(writing), "-screen", "0", f"{size}x24", "-nolisten",
                                         "tcp", "-noreset", *options], self.environment, pass_fds=(writing,))
        os.close(writing)
        with os.fdopen(reading) as answer:
            number = answer.readline().strip()
        if not number:
            raise DemoError("The virtual display (Xvfb) did not begin: " +
                            self.processes.log_of("display").strip().replace("\n", " "))
        # Who looks here is a program, and it looks for English words, whatever language this computer speaks.
        self.environment.update(DISPLAY=f":{number}", QT_QPA_PLATFORM="xcb", LC_ALL="C.UTF-8")
        for name in ("WAYLAND_DISPLAY", "XAUTHORITY", "LANGUAGE"):
            self.environment.pop(name, None)

    def start_screen_in_file(self, width, height):
        """A display without anything around the windows, whose pixels lie in a file of the folder that is given."""
        folder = os.path.join(self.short, "screen")
        os.mkdir(folder)
        self._start_screen(f"{width}x{height}", "-fbdir", folder)
        return folder

    def start_display(self):
        """A display with a window manager, and what a screen reader asks."""
        self._start_screen("1280x800")
        self.environment["QT_LINUX_ACCESSIBILITY_ALWAYS_ON"] = "1"
        self.processes.start("window-manager", ["openbox", "--sm-disable"], self.environment)
        self.processes.start("accessibility", ["/usr/libexec/at-spi-bus-launcher", "--launch-immediately"],
                             self.environment)
        self.processes.until("the accessibility bus begins", lambda: self.bus_has("org.a11y.Bus"))

    def start_office(self, port=PORT):
        begun = self.openings()
        self.office = self.processes.start(
            "office", [self.office_program, "serve", "--database", self.database, "--port", str(port), "--sample",
                       PRACTICE], self.environment)
        self.processes.until("the office listens", lambda: self.openings() > begun)

    def openings(self):
        """How often the office has begun to listen."""
        file = os.path.join(self.folder, "logs", "office.log")
        return self.processes.log_of("office").count("listening on") if os.path.exists(file) else 0

    def kill_office(self):
        self.processes.end(self.office, signal.SIGKILL)

    def order(self, *words):
        """One command to the running office, as a script gives it. Its answer without the line end."""
        done = subprocess.run([self.office_program, *words, "--database", self.database], env=self.environment,
                              capture_output=True, text=True, check=False)
        if done.returncode != 0:
            raise DemoError(f"The office refused \"{' '.join(words)}\": {done.stderr.strip()}")
        return done.stdout.strip()

    @property
    def console_address(self):
        return f"http://127.0.0.1:{PORT}/"

    def start_computer(self, profile, **changes):
        computer = self.processes.start(profile, [self.client_program],
                                        dict(self.environment, ZELKOVANTA_PROFILE=profile, **changes))
        self.computers[profile] = computer
        return computer

    def approve(self, *placement):
        return self.order("approve", *placement, "--wait", "30")

    def arrange_windows(self, *computers):
        """Puts the computers' windows side by side."""
        for place, computer in enumerate(computers):
            for window in self.windows_of(computer, "--sync"):
                subprocess.run(["xdotool", "windowmove", "--sync", window, str(40 + 460 * place), "40"],
                               env=self.environment, check=True, timeout=10)

    def windows_of(self, computer, *options):
        """Those that can be seen."""
        done = subprocess.run(["xdotool", "search", *options, "--onlyvisible", "--pid", str(computer.pid)],
                              env=self.environment, capture_output=True, text=True, check=False)
        return done.stdout.split()

    def close_window(self, computer):
        """As a task bar does it: the window manager is asked to, and asks the window."""
        for window in self.windows_of(computer):
            subprocess.run(["wmctrl", "-i", "-c", hex(int(window))], env=self.environment, check=True, timeout=10)

    def start_again(self, computer):
        """What a person does who sees no window of it."""
        subprocess.run([self.client_program], env=dict(self.environment, ZELKOVANTA_PROFILE=computer.name), check=True,
                       timeout=20)

    def take_picture(self, name):
        file = os.path.join(self.folder, "screenshots", name + ".png")
        subprocess.run(["import", "-window", "root", file], env=self.environment, check=True)
        return file
