"""Child processes that end with this one, and waiting for what they do."""

import ctypes
import os
import select
import signal
import subprocess
import time


class DemoError(Exception):
    """One sentence for whoever started the demo."""


def _end_with_parent():
    # The kernel sends the signal when the parent is gone, however it went.
    pr_set_pdeathsig = 1
    ctypes.CDLL(None).prctl(pr_set_pdeathsig, signal.SIGTERM)


class Processes:
    """Starts processes and ends them in reverse order."""

    def __init__(self, log_folder):
        self.log_folder = log_folder
        self.running = []

    def start(self, name, command, environment, pass_fds=(), stdin=None):
        """Output goes to a log of the process's name. The process gets a session of its own, so that Ctrl-C in the
        terminal reaches this script only."""
        log = open(os.path.join(self.log_folder, name + ".log"), "ab")
        try:
            process = subprocess.Popen(command, env=environment, stdout=log, stderr=log, pass_fds=pass_fds,
                                       stdin=stdin or subprocess.DEVNULL, preexec_fn=_end_with_parent,
                                       start_new_session=True)
        except FileNotFoundError as error:
            raise DemoError(f'"{command[0]}" is not installed here.') from error
        finally:
            log.close()
        process.name = name
        self.running.append(process)
        return process

    def end(self, process, how=signal.SIGTERM, limit=5.0):
        if process in self.running:
            self.running.remove(process)
        if process.poll() is None:
            process.send_signal(how)
            try:
                process.wait(limit)
            except subprocess.TimeoutExpired:
                process.kill()
                process.wait()
        return process.returncode

    def kill(self, process):
        """From any thread. Its end is no error, and is waited for by `end`."""
        if process in self.running:
            self.running.remove(process)
        process.send_signal(signal.SIGKILL)

    def end_all(self):
        while self.running:
            self.end(self.running[-1])

    def log_of(self, name):
        with open(os.path.join(self.log_folder, name + ".log"), encoding="utf-8", errors="replace") as log:
            return log.read()

    def end_of(self, process):
        """The error of a process that has ended by itself, with the last line of its log."""
        status = process.wait()
        how = f" ({signal.Signals(-status).name})" if status < 0 else ""
        lines = self.log_of(process.name).strip().splitlines()
        last_words = f": {lines[-1]}" if lines else "."
        return DemoError(f"{process.name} has ended by itself{how}{last_words}")

    def pause(self, seconds):
        """Waits, at most until one of the processes ends, which is an error."""
        poller = select.poll()
        watched = {}
        for process in self.running:
            descriptor = os.pidfd_open(process.pid)
            watched[descriptor] = process
            poller.register(descriptor, select.POLLIN)
        try:
            ended = poller.poll(seconds * 1000)
        finally:
            for descriptor in watched:
                os.close(descriptor)
        for descriptor, _ in ended:
            raise self.end_of(watched[descriptor])

    def until(self, what, condition, limit=20.0, interval=0.02):
        """The first true result of `condition`, asked again and again; an error after `limit` seconds."""
        deadline = time.monotonic() + limit
        while True:
            result = condition()
            if result:
                return result
            if time.monotonic() > deadline:
                raise DemoError(f"Waited {limit:g} seconds in vain: {what}.")
            self.pause(interval)
