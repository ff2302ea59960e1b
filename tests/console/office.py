"""An office of a test's own, and computers that speak to it as the client does."""

import base64
import json
import os
import signal
import socket
import subprocess
import tempfile
import urllib.error
import urllib.request


class Office:
    """The office's program on a new database and a free port; a context."""

    def __init__(self, program, *arguments):
        self.program = program
        self.folder = tempfile.TemporaryDirectory()
        self.database = os.path.join(self.folder.name, "office.db")
        self.arguments = arguments or ("--sample", "harbour")
        self.process = None
        self.port = 0
        self.start()

    def start(self):
        with open(os.path.join(self.folder.name, "log"), "ab") as log:
            self.process = subprocess.Popen(
                [self.program, "serve", "--database", self.database, "--port", str(self.port), *self.arguments],
                stdout=subprocess.PIPE, stderr=log, text=True)
        line = self.process.stdout.readline()
        if not line.startswith("listening on http://127.0.0.1:"):
            raise RuntimeError(f"The office did not start: {line}")
        self.port = int(line.rsplit(":", 1)[1])

    def end(self):
        self.process.send_signal(signal.SIGTERM)
        self.process.wait(20)
        self.process.stdout.close()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        if self.process.poll() is None:
            self.end()
        self.folder.cleanup()

    @property
    def url(self):
        return f"http://127.0.0.1:{self.port}/"

    def command(self, *words):
        done = subprocess.run([self.program, *words, "--database", self.database], capture_output=True, text=True,
                              timeout=20, check=True)
        return done.stdout.rstrip("\n")

    def state(self, practice="Harbour Dental"):
        everything = json.loads(self.command("state"))
        found = next(each for each in everything["practices"] if each["office"]["name"] == practice)
        return {**found, "release": everything.get("desktopRelease"), "waiting": everything["waiting"]}

    def one(self, kind, name, practice="Harbour Dental"):
        """The record of that name (a type's is its label; a computer's entry has it in "device")."""
        records = self.state(practice)[kind]
        return next(each for each in records
                    if (each["device"]["name"] if kind == "devices" else each.get("name", each.get("label"))) == name)


class Computer:
    """What the desktop program does, as far as a console can see it."""

    def __init__(self, office, name):
        self.office = office
        self.introduction = {"kind": "desktop_mac", "name": name, "model": "ThinkPad X1", "appVersion": "1.0.1"}
        self.claim = None
        self.token = None
        self.device = None
        self.socket = None
        self.received = b""

    def ask(self, method, path, body=None):
        request = urllib.request.Request(f"{self.office.url}api/v1/{path}", method=method,
                                         data=None if body is None else json.dumps(body).encode())
        if self.token:
            request.add_header("Authorization", f"Bearer {self.token}")
        try:
            with urllib.request.urlopen(request, timeout=20) as reply:
                return json.load(reply)
        except urllib.error.HTTPError as error:
            return {"status": error.code, **json.load(error)}

    def show_setup_code(self):
        self.claim = self.ask("POST", "pair/request", {"device": self.introduction})["claimToken"]
        return self

    def adopt(self, answer):
        """Takes what pairing gave, if it gave it."""
        if "deviceToken" in answer:
            self.token, self.device = answer["deviceToken"], answer["device"]
        return self.token is not None

    def collect(self):
        return self.adopt(self.ask("GET", f"pair/request/{self.claim}"))

    def redeem(self, code):
        return self.adopt(self.ask("POST", "pair/redeem", {"code": code, "device": self.introduction}))

    def show_sign_in_code(self):
        return self.ask("POST", "devices/me/signin-qr")["token"]

    def connect(self):
        """Opens the real-time connection, whose first frame is the snapshot."""
        self.socket = socket.create_connection(("127.0.0.1", self.office.port), timeout=20)
        key = base64.b64encode(os.urandom(16)).decode()
        self.socket.sendall((f"GET /api/v1/ws HTTP/1.1\r\nHost: 127.0.0.1\r\nUpgrade: websocket\r\n"
                             f"Connection: Upgrade\r\nSec-WebSocket-Version: 13\r\nSec-WebSocket-Key: {key}\r\n"
                             f"Authorization: Bearer {self.token}\r\n\r\n").encode())
        while b"\r\n\r\n" not in self.received:
            self.received += self.socket.recv(65536)
        head, self.received = self.received.split(b"\r\n\r\n", 1)
        assert b" 101 " in head.split(b"\r\n", 1)[0], head
        return self.until("snapshot")

    def take(self, count):
        while len(self.received) < count:
            more = self.socket.recv(65536)
            assert more, "the office closed the connection"
            self.received += more
        taken, self.received = self.received[:count], self.received[count:]
        return taken

    def next_frame(self):
        """The next text frame's JSON, or a number: the code with which the office closed."""
        first, length = self.take(2)
        if length == 126:
            length = int.from_bytes(self.take(2), "big")
        elif length == 127:
            length = int.from_bytes(self.take(8), "big")
        payload = self.take(length)
        if first & 15 == 8:
            return int.from_bytes(payload[:2], "big")
        return json.loads(payload) if first & 15 == 1 else None

    def until(self, kind):
        """Skips frames until one of this type has come; gives its data."""
        while True:
            frame = self.next_frame()
            if isinstance(frame, dict) and frame["type"] == kind:
                return frame.get("data")
            assert not isinstance(frame, int), f"closed with {frame} while waiting for {kind}"

    def close_code(self):
        frame = self.next_frame()
        while not isinstance(frame, int):
            frame = self.next_frame()
        return frame

    def disconnect(self):
        if self.socket:
            self.socket.close()
        self.socket = None
        self.received = b""
