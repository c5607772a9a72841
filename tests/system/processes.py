"""The daemon and its peers as processes, with their sockets and their store in a directory of the
test's own. Charger needs neither FUSE nor namespaces: without LED devices the daemon still talks.
Stage has the hardware too, and skips the test where it cannot."""

import concurrent.futures
import itertools
import json
import os
import pathlib
import re
import shutil
import signal
import subprocess
import tempfile
import time
import unittest

import grpc
from ipc import common_pb2, genericcontrol_pb2, genericcontrol_pb2_grpc

EMPTY = common_pb2.MEmpty()

# Nothing that works takes this long.
GENEROUS = 30

# Seconds from SIGINT to the daemon's end; longer under sanitizers.
STOP_LIMIT = float(os.environ.get("STOP_LIMIT", 1))

CANNOT_RUN_HERE = 3


def wait_until(condition, what):
    limit = time.monotonic() + GENEROUS
    while time.monotonic() < limit:
        result = condition()
        if result:
            return result
        time.sleep(0.02)
    raise AssertionError(f"waited {GENEROUS} s in vain for {what}")


class Charger:
    """A root directory for one daemon; everything that was started ends with it."""

    def __init__(self):
        self.root = pathlib.Path(tempfile.mkdtemp(prefix="feedback-"))
        self.sockets = self.root / "run"
        self.store = self.root / "etc" / "ovra.json"
        self.store.parent.mkdir()
        self.write_store(settings={}, hwinfo={"HwHasLed": True, "HwHasBuzzer": True})
        self._children = []

    def write_store(self, **sections):
        self.store.write_text(
            json.dumps({"communication": {"SocketDirectory": str(self.sockets)}, **sections}))

    def close(self):
        for child in self._children:
            child.kill()
            child.wait()
            child.stdin.close()
            if child.stdout:
                child.stdout.close()
        shutil.rmtree(self.root)

    def daemon(self, *options, **arguments):
        return self._start([os.environ["FEEDBACK"], "-r", f"{self.root}/", *options], **arguments)

    def peer(self, name):
        program = os.environ["VIRTUAL_CHARGER"]
        return self._start([program, "--peer", name, "--store", str(self.store)])

    def start_watcher(self):
        """A process that watches the daemon's states, and has heard the present one."""
        watch = ("import sys; sys.path[:0] = sys.argv[2:]; from processes import *;"
                 "control = genericcontrol_pb2_grpc.GenericControlStub(grpc.insecure_channel("
                 "sys.argv[1]));"
                 "[print('heard', flush=True) for _ in control.WatchState(EMPTY, wait_for_ready=True)]")
        watcher = self._start(["/usr/bin/python3", "-B", "-c", watch,
                               self.target("FeedbackGenCtrl"), str(pathlib.Path(__file__).parent)])
        watcher.stdout.readline()
        return watcher

    def socket(self, name):
        return self.sockets / name

    def wait_for(self, name):
        wait_until(self.socket(name).exists, f"the socket {name}")

    def target(self, name):
        self.wait_for(name)
        return f"unix:{self.socket(name)}"

    def channel(self, name):
        return grpc.insecure_channel(self.target(name))

    def control(self):
        """The board controller's end, to be closed by its user."""
        channel = self.channel("FeedbackGenCtrl")
        return channel, genericcontrol_pb2_grpc.GenericControlStub(channel)

    def initialise_and_enable(self):
        """What the board controller does at power-up."""
        channel, control = self.control()
        with channel:
            states = control.WatchState(EMPTY, timeout=GENEROUS, wait_for_ready=True)
            control.Disable(EMPTY, timeout=GENEROUS, wait_for_ready=True)
            next(state for state in states if state.state == genericcontrol_pb2.EStateDisabled)
            control.Enable(EMPTY, timeout=GENEROUS)
            next(state for state in states if state.state == genericcontrol_pb2.EStateEnabled)

    def _start(self, command, **arguments):
        child = subprocess.Popen(
            command, stderr=subprocess.STDOUT, text=True,
            **{"stdin": subprocess.PIPE, "stdout": subprocess.PIPE, **arguments})
        self._children.append(child)
        return child


def interrupt(child):
    """Ends the process as the charger does; its exit status and what it said."""
    child.send_signal(signal.SIGINT)
    output, _ = child.communicate(timeout=GENEROUS)
    return child.returncode, output


def read_until(child, text):
    """What it says, up to the line with this text."""
    lines = []
    for line in child.stdout:
        lines.append(line)
        if text in line:
            return lines
    raise AssertionError(f"it ended without \"{text}\":\n{''.join(lines)}")


class Stage:
    """The virtual charger while it plays these steps, and the daemon's log in full detail."""

    def __init__(self, *steps):
        self._folder = pathlib.Path(tempfile.mkdtemp(prefix="stage-"))
        scenario = self._folder / "own.scenario"
        scenario.write_text("\n".join(steps))
        daemon = self._folder / "feedback"
        daemon.write_text(f"#!/bin/sh\nexec {os.environ['FEEDBACK']} -v -v \"$@\"\n")
        daemon.chmod(0o755)
        self._play = subprocess.Popen(
            [os.environ["VIRTUAL_CHARGER"], "--scenario", scenario, "--daemon", daemon, "--keep"],
            stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        self.transcript = []
        self.root = pathlib.Path(self.until("the run's folder: ").split(": ")[1])
        self.store = self.root / "etc" / "ovra.json"

    def until(self, text):
        """The transcript's next line with this text."""
        try:
            self.transcript += read_until(self._play, text)
            return self.transcript[-1].rstrip()
        except AssertionError:
            if self._play.wait(GENEROUS) == CANNOT_RUN_HERE:
                raise unittest.SkipTest("no FUSE or no namespaces") from None
            raise

    def finish(self):
        """Plays on to the end; all must be as expected. Returns the daemon's log."""
        self.until("all as expected")
        self._play.wait(GENEROUS)
        return (self.root / "feedback.log").read_text()

    def durations(self, step):
        """Seconds that each of these steps took."""
        lines = re.findall(r"^ *(\d+\.\d+) +(.*)$", "".join(self.transcript), re.MULTILINE)
        return [float(end) - float(begin) for (begin, _), (end, text) in zip(lines, lines[1:])
                if text.startswith(step)]

    def channel(self, name):
        return grpc.insecure_channel(f"unix:{self.root}/run/{name}")

    def close(self):
        self._play.kill()
        self._play.communicate()
        shutil.rmtree(self._folder)
        shutil.rmtree(self.root, ignore_errors=True)


def raw_service(charger, name, streams=None, replies=None):
    """A service that says these bytes, in turn: the messages of a stream once, also when it is
    begun again, and the replies to a request over and over."""
    def stream(messages):
        rest = iter(messages)

        def handler(requests, _):
            yield next(rest, b"")
            for _ in requests:  # the next message answers the reply to the one before
                yield from itertools.islice(rest, 1)
        return grpc.stream_stream_rpc_method_handler(handler)

    def reply(messages):
        turns = itertools.cycle(messages)
        return grpc.unary_unary_rpc_method_handler(lambda request, _: next(turns))

    methods = {method: stream(messages) for method, messages in (streams or {}).items()}
    methods |= {method: reply(messages) for method, messages in (replies or {}).items()}
    server = grpc.server(concurrent.futures.ThreadPoolExecutor())
    server.add_generic_rpc_handlers(
        [grpc.method_handlers_generic_handler(f"ipc.{name.rstrip('1')}", methods)])
    charger.sockets.mkdir(exist_ok=True)
    server.add_insecure_port(f"unix:{charger.socket(name)}")
    server.start()
    return server
