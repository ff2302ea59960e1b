"""The computers' windows as a screen reader meets them: what they show is read, their buttons are pressed, over the
accessibility bus and without any way into the program that a person does not have."""

import dbus

from processes import DemoError

ACCESSIBLE = "org.a11y.atspi.Accessible"
ACTION = "org.a11y.atspi.Action"
INVISIBLE_ROLES = {"scroll bar"}
PICTURE_ROLES = {"graphic", "icon", "image"}
IN_AN_OFFICE = "Unlink this computer"
NO_CONNECTION = {"Connecting…", "Offline, retrying…", "Not connected"}
STATE_SHOWING = 25
STATE_VISIBLE = 30


class Node:
    """One thing in a window."""

    def __init__(self, bus, owner, path):
        self.bus, self.owner, self.path = bus, owner, path
        self.remote = bus.get_object(owner, path, introspect=False)

    def _property(self, name):
        return self.remote.Get(ACCESSIBLE, name, dbus_interface=dbus.PROPERTIES_IFACE)

    @property
    def name(self):
        return str(self._property("Name"))

    @property
    def role(self):
        return str(self.remote.GetRoleName(dbus_interface=ACCESSIBLE))

    @property
    def is_visible(self):
        low, _ = self.remote.GetState(dbus_interface=ACCESSIBLE)
        return bool(int(low) >> STATE_VISIBLE & 1) and bool(int(low) >> STATE_SHOWING & 1)

    def children(self):
        return [Node(self.bus, owner, path) for owner, path in self.remote.GetChildren(dbus_interface=ACCESSIBLE)]

    def press(self):
        names = [str(name) for name, _, _ in self.remote.GetActions(dbus_interface=ACTION)]
        if "Press" not in names or not self.remote.DoAction(names.index("Press"), dbus_interface=ACTION):
            raise DemoError(f'"{self.name}" cannot be pressed.')

    def write(self, text):
        if not self.remote.SetTextContents(text, dbus_interface="org.a11y.atspi.EditableText"):
            raise DemoError(f'"{self.name}" takes no text.')


def accessibility_bus(session_bus_address):
    session = dbus.bus.BusConnection(session_bus_address)
    launcher = session.get_object("org.a11y.Bus", "/org/a11y/bus", introspect=False)
    address = launcher.GetAddress(dbus_interface="org.a11y.Bus")
    return dbus.bus.BusConnection(str(address))


class Window:
    """The window of one process."""

    def __init__(self, bus, process, processes):
        self.bus, self.process, self.processes = bus, process, processes
        self.application = processes.until(f"{process.name} can be read", self._find_application)

    def _find_application(self):
        registry = Node(self.bus, "org.a11y.atspi.Registry", "/org/a11y/atspi/accessible/root")
        for application in registry.children():
            try:
                if self._process_of(application.owner) == self.process.pid:
                    return application
            except dbus.DBusException:
                continue  # It has ended between the two questions.
        return None

    def _process_of(self, owner):
        return self.bus.call_blocking("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus",
                                      "GetConnectionUnixProcessID", "s", (owner,))

    def nodes(self, top=None):
        """Everything that can be seen, in reading order, as (role, name, node)."""
        found = []
        waiting = [top or self.application]
        while waiting:
            node = waiting.pop()
            try:
                role = node.role
                if node is not self.application and not node.is_visible:
                    continue
                found.append((role, node.name, node))
                waiting += reversed(node.children())
            except dbus.DBusException:
                continue  # It has gone between two questions.
        return found

    def find(self, role, name):
        return next((node for a_role, a_name, node in self.nodes() if a_role == role and a_name.startswith(name)), None)

    def wait_for(self, role, name, limit=20.0):
        return self.processes.until(f'{self.process.name} shows "{name}"', lambda: self.find(role, name), limit)

    def says(self, text):
        return any(text in name for role, name, _ in self.nodes() if role not in INVISIBLE_ROLES)

    def wait_until_it_says(self, text, limit=20.0):
        return self.processes.until(f'{self.process.name} says "{text}"', lambda: self.says(text), limit)

    def is_connected(self):
        """It stands in an office, and says nothing of a connection that is not there."""
        names = [name for role, name, _ in self.nodes() if role not in INVISIBLE_ROLES]
        return any(name.startswith(IN_AN_OFFICE) for name in names) and not any(name in NO_CONNECTION for name in names)

    def wait_until_connected(self, limit=20.0):
        return self.processes.until(f"{self.process.name} is connected", self.is_connected, limit)

    def open_form(self, note=None):
        """A form to send with, as it opens; gives the button that sends."""
        self.press("Send a request")
        field = self.wait_for("text", "Note")
        if note is not None:
            field.write(note)
        return self.wait_for("push button", "Send signal")

    def shows_picture(self, name):
        return any(self.find(role, name) for role in PICTURE_ROLES)

    def press(self, name, role="push button"):
        self.wait_for(role, name).press()

    def list(self, name):
        return List(self, self.wait_for("list", name))


class List:
    """A list whose rows can be asked for quickly, for measuring."""

    def __init__(self, window, node):
        self.window, self.node = window, node

    def rows(self):
        rows = []
        for child in self.node.children():
            try:
                if child.role == "list item" and child.is_visible:
                    rows.append((child.name, child))
            except dbus.DBusException:
                continue
        return rows

    def has_row(self, text):
        return any(text in name for name, _ in self.rows())

    def texts_of_row(self, text):
        return [name for row_name, row in self.rows() if text in row_name for _, name, _ in self.window.nodes(row)]
