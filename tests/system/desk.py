"""A charger with its page's WebSocket, as a browser uses it."""

import json
import os
import re
import signal
import subprocess
import tempfile
import time
import unittest

import websocket

from processes import GENEROUS

PROGRAM = os.environ["VIRTUAL_CHARGER"]


class Desk:
    """A desk of its own; what it tells is kept as it comes."""

    def __init__(self, *options, inside=()):
        self.runtime = tempfile.TemporaryDirectory(prefix="desk-", dir="/tmp")
        self.process = subprocess.Popen(
            [*inside, PROGRAM, "--daemon", os.environ["FEEDBACK"], *options], stdout=subprocess.PIPE,
            stderr=subprocess.PIPE, text=True,
            env={**os.environ, "XDG_RUNTIME_DIR": self.runtime.name})
        self.said = ""
        while not (found := re.search(r"(http://[\d.:]+/)#(\w+)", self.said)):
            line = self.process.stdout.readline()
            if not line:
                raise AssertionError(self.process.communicate()[1])
            self.said += line
        self.address, self.token = found.groups()
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
        """Ends it as a person does; the exit status."""
        self.socket.close()
        self.process.send_signal(signal.SIGINT)
        output, errors = self.process.communicate(timeout=GENEROUS)
        self.runtime.cleanup()
        if self.process.returncode != 0:
            raise AssertionError(output + errors)

    def status(self, name):
        return next(each["status"] for each in self.state["processes"] if each["name"] == name)


class DeskTest(unittest.TestCase):
    def start(self, *options):
        desk = Desk(*options)
        self.addCleanup(desk.close)
        if not desk.hello["hardware"]:
            self.skipTest(desk.hello["remedy"])
        return desk

    def steps(self, desk, *lines):
        for line in lines:
            done = desk.step(line)
            self.assertTrue(done["ok"], f"{line}: {done['text']}")
