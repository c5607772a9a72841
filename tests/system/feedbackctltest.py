"""feedbackctl beside a real daemon and its peers."""

import contextlib
import json
import os
import pathlib
import pty
import re
import shutil
import signal
import subprocess
import tempfile
import unittest

from ipc import diagnostics_pb2, diagnostics_pb2_grpc
from processes import GENEROUS, Charger, wait_until

PROGRAM = os.environ["FEEDBACKCTL"]
CANNOT_RUN_HERE = 3
SOURCES = pathlib.Path(__file__).parents[2] / "tools" / "feedbackctl"


class FeedbackCtl(unittest.TestCase):
    def setUp(self):
        self.charger = Charger()
        self.addCleanup(self.charger.close)

    def command(self, *words):
        return [PROGRAM, "--root", str(self.charger.root), *words]

    def run_tool(self, *words):
        run = subprocess.run(self.command(*words), capture_output=True, text=True, timeout=GENEROUS)
        return run.returncode, run.stdout

    def json(self, *words):
        return json.loads(self.run_tool(*words, "--json")[1])

    def start_charger(self):
        peers = [self.charger.peer(name) for name in ("diagnostics", "session-manager")]
        daemon = self.charger.daemon()
        self.charger.initialise_and_enable()
        return daemon, peers

    def set_error(self, identifier, is_on):
        with self.charger.channel("Diagnostics") as channel:
            diagnostics_pb2_grpc.DiagnosticsStub(channel).SendSignal(
                diagnostics_pb2.MDiagnosticsSignal(
                    identifier=identifier,
                    data=[diagnostics_pb2.MDiagnosticsData(bool_value=is_on)]),
                timeout=GENEROUS, wait_for_ready=True)

    def explains(self, winner, lamp):
        def is_so():
            told = self.json("lamp")
            return told["winner"] == winner and told["lamp"] == lamp and told["fits"]
        wait_until(is_so, f"the lamp {lamp} explained by {winner}")

    def test_explains_what_the_lamp_shows_and_why(self):
        daemon, peers = self.start_charger()
        self.set_error(1004, True)
        self.explains("error", "Red/Blink3")
        self.assertEqual(self.run_tool("trigger", "identify")[0], 0)
        self.explains("event", "White/Flashing")
        self.assertEqual(self.run_tool("disable")[0], 0)
        self.explains("disabled", "Yellow/On")
        peers[0].kill()
        peers[0].wait()
        self.assertEqual(self.run_tool("lamp")[0], 1)

    def test_redraws_its_view_only_on_a_terminal_that_can(self):
        self.start_charger()
        self.set_error(1004, True)
        wait_until(lambda: self.json("lamp")["lamp"] == "Red/Blink3", "the lamp's report")
        plain = {name: value for name, value in os.environ.items() if name != "NO_COLOR"}
        for environment, redraws, colours in (({"TERM": "xterm"}, True, True),
                                              ({"TERM": "xterm", "NO_COLOR": "1"}, True, False),
                                              ({"TERM": "dumb"}, False, False)):
            terminal, its_end = pty.openpty()
            with open(terminal, "rb", 0) as screen:
                watch = subprocess.Popen(self.command("watch"), stdout=its_end,
                                         env={**plain, **environment})
                self.addCleanup(watch.kill)
                os.close(its_end)
                shown = b""
                with contextlib.suppress(OSError):  # the end of a terminal
                    while part := screen.read(1024):
                        shown += part
                        if b"Red/Blink3" in shown:
                            watch.send_signal(signal.SIGINT)
            self.assertEqual(watch.wait(GENEROUS), 0)
            self.assertIn(b"Red/Blink3", shown)
            self.assertEqual((b"\x1b[J" in shown, b"48;2;255;0;0" in shown), (redraws, colours))

    def test_finds_what_is_wrong(self):
        daemon, peers = self.start_charger()

        def verdicts():
            return {(check["check"], check["verdict"]) for check in self.json("doctor")}

        found = verdicts()
        for name in ("store", "socket directory", "Feedback", "SessionManager", "Meter1", "daemon"):
            self.assertIn((name, "ok"), found)
        self.charger.write_store(settings={"HmiBuzzerVolum": 2}, hwinfo={"HwHasBuzzer": 1})
        peers[1].kill()
        peers[1].wait()
        daemon.kill()
        daemon.wait()
        found = verdicts()
        for name in ("store", "FeedbackGenCtrl", "SessionManager"):
            self.assertIn((name, "failed"), found)
        status, output = self.run_tool("doctor")
        self.assertEqual(status, 1)
        self.assertRegex(output, 'warning +store .*did you mean "HmiBuzzerVolume"')
        self.assertRegex(output, 'failed +store .*"HwHasBuzzer": found 1, expected true or false')
        self.assertRegex(output, "failed +Feedback .*; start the daemon")

    def test_completes_on_bash(self):
        script = self.run_tool("completion", "bash")[1]
        ask = 'COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); _feedbackctl; echo "${COMPREPLY[@]}"'
        for words, expected in (([""], "status watch lamp"), (["sta"], "status"),
                                (["trigger", "i"], "identify"), (["log-level", "d"], "debug"),
                                (["--root", "/x", "set", "HmiB"], "HmiBuzzerVolume"),
                                (["signals", "LedS"], "LedState"),
                                (["watch", "--f"], "--for"), (["trigger", "--instance", ""], "0 1"),
                                (["--root", "/us"], "/usr"), (["watch", "--for", ""], "")):
            run = subprocess.run(["bash", "-c", script + ask, "bash", "feedbackctl", *words],
                                 capture_output=True, text=True, check=True, timeout=GENEROUS)
            self.assertEqual(run.stderr, "")
            self.assertEqual(run.stdout[:len(expected)], expected, words)
            self.assertEqual(bool(run.stdout.strip()), bool(expected), words)

    def test_has_every_command_and_option_in_its_manual(self):
        manual = (SOURCES / "feedbackctl.1").read_text().replace("\\-", "-")
        words = set(re.findall(r"[\w-]+", manual))
        commands = re.findall(r"^  ([\w-]+)", self.run_tool("--help")[1].split("commands:")[1]
                              .split("options:")[0], re.MULTILINE)
        self.assertGreater(len(commands), 10)
        for command in commands:
            self.assertRegex(manual, rf"\n\.BR? (\w+ \", \" )?{command}\b")
            for option in re.findall(r"^  (--\w+)", self.run_tool(command, "--help")[1], re.MULTILINE):
                self.assertIn(option, words, command)

class FeedbackCtlOnAVirtualCharger(unittest.TestCase):
    def setUp(self):
        self.runtime = pathlib.Path(tempfile.mkdtemp(prefix="ctl-"))
        self.addCleanup(shutil.rmtree, self.runtime)
        scenario = self.runtime / "own.scenario"
        scenario.write_text("disable\nenable\nconnector charging\nwait 1000s\n")
        charger = subprocess.Popen(
            [os.environ["VIRTUAL_CHARGER"], "--scenario", str(scenario), "--daemon",
             os.environ["FEEDBACK"]], stdout=subprocess.DEVNULL, stderr=subprocess.PIPE, text=True,
            env={**os.environ, "XDG_RUNTIME_DIR": str(self.runtime)})
        self.addCleanup(charger.stderr.close)
        self.addCleanup(charger.wait)
        self.addCleanup(charger.send_signal, signal.SIGINT)

        def root():
            if charger.poll() == CANNOT_RUN_HERE:
                self.skipTest(charger.stderr.read())
            return next(iter(self.runtime.glob("charger-*/etc/ovra.json")), None)

        self.root = wait_until(root, "the charger's store").parents[1]

    def run_tool(self, *words):
        return subprocess.run([PROGRAM, *words, "--root", str(self.root)], capture_output=True,
                              text=True, timeout=GENEROUS)

    def test_finds_the_hardware_that_only_the_daemon_sees(self):
        wait_until(lambda: "> connector  Blue/Pulsating  Charging" in self.run_tool("lamp").stdout,
                   "the lamp's explanation")
        doctor = self.run_tool("doctor")
        self.assertEqual(doctor.returncode, 0, doctor.stdout)
        for check in ("red channel", "light sensor", "buzzer volume", "buzzer tone"):
            self.assertRegex(doctor.stdout, f"(?m)^ok +{check} ")


if __name__ == "__main__":
    unittest.main()
