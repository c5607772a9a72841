"""Chargers with a page, and the page's WebSocket as a browser uses it."""

import json
import os
import pathlib
import re
import signal
import subprocess
import tempfile
import time
import unittest

import websocket

from processes import GENEROUS


class Desk:
    """A charger with a page, in a runtime folder of its own, or beside another one in that one's."""

    def __init__(self, name, *options, inside=(), beside=None):
        self._beside = beside
        self.folder = beside.folder if beside else tempfile.TemporaryDirectory(dir="/tmp")
        self._process = subprocess.Popen(
            [*inside, os.environ["VIRTUAL_CHARGER"], "--daemon", os.environ["FEEDBACK"],
             "--name", name, *options],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True,
            env={**os.environ, "XDG_RUNTIME_DIR": self.folder.name})
        self.said = ""
        for line in self._process.stdout:
            self.said += line
            found = re.search(r"(http://127\.0\.0\.1:(\d+)/)#(\w+)", line)
            if found:
                self.url, self.address, self.port, self.token = found[0], *found.groups()
                return
        raise AssertionError("the virtual charger gave no address:\n" + self.said)

    def kill_daemon(self):
        """From outside, so that nobody has asked for it."""
        children = pathlib.Path(f"/proc/{self._process.pid}/task/{self._process.pid}/children").read_text()
        daemon = next(int(child) for child in children.split()
                      if pathlib.Path(f"/proc/{child}/comm").read_text().strip() == "feedback")
        os.kill(daemon, signal.SIGKILL)

    def kill(self):
        self._process.kill()

    def end(self):
        """Its exit status, as after Ctrl-C."""
        if self._process.poll() is None:
            self._process.send_signal(signal.SIGINT)
        if not self._process.stdout.closed:
            self.said += self._process.communicate(timeout=GENEROUS)[0]
        if not self._beside:
            self.folder.cleanup()
        return self._process.returncode


class SteeredDesk(Desk):
    """Over the WebSocket; what it tells is kept as it comes."""

    def __init__(self, *options, inside=(), beside=None):
        super().__init__("steered", *options, inside=inside, beside=beside)
        self.messages = []
        self.state = None
        self._steps = 0
        self.socket = self.connect()
        self.hello = self.wait_for(lambda: self.last("hello"), "the greeting")

    def connect(self, token=None):
        client = websocket.create_connection(
            self.address.replace("http", "ws") + "ws", origin=self.address.rstrip("/"),
            timeout=GENEROUS)
        client.send(json.dumps({"type": "hello", "token": self.token if token is None else token}))
        return client

    def take(self):
        message = json.loads(self.socket.recv())
        self.messages.append(message)
        if message["type"] in ("hello", "state"):
            self.state = message["state"] if message["type"] == "hello" else message

    def wait_for(self, condition, what):
        """What the condition gives as soon as it is true."""
        limit = time.monotonic() + GENEROUS
        while not (result := condition()):
            if time.monotonic() > limit:
                raise AssertionError(f"waited {GENEROUS} s in vain for {what}; {self.state}")
            self.take()
        return result

    def wait_for_state(self, condition, what):
        return self.wait_for(lambda: self.state and condition(self.state), what)

    def last(self, kind):
        return next((each for each in reversed(self.messages) if each["type"] == kind), None)

    def rows(self, kind):
        return [row for each in self.messages if each["type"] == kind for row in each["rows"]]

    def ask(self, kind, **fields):
        self._steps += 1
        self.socket.send(json.dumps({"type": kind, "id": self._steps, **fields}))
        return self._steps

    def done(self, number):
        return self.wait_for(
            lambda: next((each for each in self.messages
                          if each["type"] == "done" and each["id"] == number), None),
            f"the end of {number}")

    def step(self, line):
        return self.done(self.ask("step", line=line))

    def close(self):
        self.socket.close()
        if self.end() != 0:
            raise AssertionError(self.said)

    def status(self, name):
        return next(each["status"] for each in self.state["processes"] if each["name"] == name)


class DeskTest(unittest.TestCase):
    def start(self, *options):
        desk = SteeredDesk(*options)
        self.addCleanup(desk.close)
        if not desk.hello["hardware"]:
            self.skipTest(desk.hello["remedy"])
        return desk

    def steps(self, desk, *lines):
        for line in lines:
            done = desk.step(line)
            self.assertTrue(done["ok"], f"{line}: {done['text']}")
