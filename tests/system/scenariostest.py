"""What the virtual charger says, and how it ends, when something is not as expected."""

import os
import pathlib
import pty
import re
import signal
import subprocess
import tempfile
import termios
import unittest
from xml.etree import ElementTree

from processes import GENEROUS, wait_until

FAILURES = pathlib.Path(__file__).parent / "failures"
DOCUMENT = pathlib.Path(__file__).parents[2] / "docs" / "scenarios.md"
PROGRAM = os.environ["VIRTUAL_CHARGER"]
CANNOT_RUN_HERE = 3


def play(*arguments):
    run = subprocess.run([PROGRAM, "--daemon", os.environ["FEEDBACK"], "--scenario", *map(str, arguments)],
                         capture_output=True, text=True, timeout=3 * GENEROUS)
    if run.returncode == CANNOT_RUN_HERE:
        raise unittest.SkipTest(run.stderr)
    return run.returncode, run.stdout + run.stderr


class TheVirtualCharger(unittest.TestCase):
    def scenario(self, text, name="own"):
        path = self.folder / f"{name}.scenario"
        path.write_text(text)
        return path

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = pathlib.Path(folder.name)

    def test_tells_ci_the_step_that_did_not_come_out_of_each_scenario(self):
        expected = {"extrawrite": ("7", "pattern"), "latelamp": ("6", "at the latest"),
                    "laterround": ("6", "blue pulsating"), "longbeep": ("5", "4004 Hz for 3"),
                    "missinglog": ("6", "others, at last"), "refusedwrite": ("12", "refused: Input"),
                    "unexpectedbeep": ("5", "a tone"), "unexpectedlog": ("7", "received: 42"),
                    "unexpectedreport": ("7", "enabled at"), "wronglamp": ("5", "blue pulsating"),
                    "wrongreport": ("5", "disabled at"), "wrongverdict": ("2", 'refused; the daemon is uninitialized: "disable" first')}
        files = sorted(FAILURES.glob("*.scenario"))
        self.assertEqual([file.stem for file in files], list(expected))
        junit = self.folder / "failures.xml"
        status, output = play(*files, "--junit", junit)
        self.assertEqual(status, 1, output)
        self.assertIn(f"0 of {len(files)} scenarios as expected", output)
        suites = ElementTree.parse(junit).getroot()
        self.assertEqual([suite.get("name") for suite in suites], list(expected))
        for suite in suites:
            line, seen = expected[suite.get("name")]
            failures = suite.findall("testcase/failure")
            self.assertEqual((len(failures), suite.get("failures")), (1, "1"), output)
            self.assertIn(f"{suite.get('file')}:{line}: ", failures[0].get("message"))
            self.assertIn(seen, failures[0].text.split("expected: ")[1])
            self.assertIn("Starting state machine", suite.find("testcase/system-out").text)
        self.assertIn("(round 2 of 3)", output.split("FAILED")[3])

    def test_plays_each_scenario_in_its_document(self):
        blocks = re.findall("^```scenario\n(.*?)^```", DOCUMENT.read_text(), re.MULTILINE | re.DOTALL)
        self.assertGreaterEqual(len(blocks), 5)
        status, output = play(*[self.scenario(block, f"block{number}")
                                for number, block in enumerate(blocks)])
        self.assertEqual(status, 0, output)

    def test_names_every_bad_line_before_anything_starts(self):
        path = self.scenario("conector charging\nconnector charging\nexpect lamp pink on\nwait 3 days\n")
        junit = self.folder / "own.xml"
        status, output = play(path, "--junit", junit)
        self.assertEqual(status, 2)
        errors = ElementTree.parse(junit).findall("testsuite/testcase/error")
        for text in (output, errors[0].text):
            for line, hint in ((1, "connector"), (3, "pink"), (4, "")):
                self.assertRegex(text, rf"own\.scenario:{line}: .*{hint}")
            self.assertNotIn("own.scenario:2:", text)

    def test_says_what_to_do_where_there_is_no_daemon_or_no_scenario(self):
        path = self.scenario("connector charging\n")
        status, output = play(path, "--daemon", "/nowhere/feedback")
        self.assertEqual(status, 2)
        self.assertIn("./run --build", output)
        status, output = play("/nowhere/own.scenario")
        self.assertEqual(status, 2)
        self.assertIn("/nowhere/own.scenario", output)

    def test_shows_on_a_terminal_what_is_awaited_and_what_is_seen(self):
        path = self.scenario("light 1\nexpect lamp red on within 1s\n")
        own, terminal = pty.openpty()
        termios.tcsetwinsize(terminal, (40, 100))
        with os.fdopen(own, "rb") as output:
            run = subprocess.Popen([PROGRAM, "--daemon", os.environ["FEEDBACK"], "--scenario", path],
                                   stdout=terminal, stderr=subprocess.PIPE)
            self.addCleanup(run.stderr.close)
            # Little is written, so that it can stay in the terminal until the end.
            status = run.wait(GENEROUS)
            if status == CANNOT_RUN_HERE:
                self.skipTest(run.stderr.read().decode())
            os.close(terminal)
            shown = output.read1().decode()
        self.assertEqual(status, 1)
        self.assertRegex(shown, r"\r\x1b\[K +[\d.]+   expect lamp red on within 1s   awaited: red on, "
                                r"at [\d.]+ s at the latest; seen: y[^\n]*\r\x1b\[K")

    def begin(self, *files):
        """A run with a folder of its own for what it writes."""
        runtime = tempfile.TemporaryDirectory()
        self.addCleanup(runtime.cleanup)
        run = subprocess.Popen([PROGRAM, "--daemon", os.environ["FEEDBACK"], "--scenario", *files],
                               stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                               env={**os.environ, "XDG_RUNTIME_DIR": runtime.name})
        wait_until(lambda: os.listdir(runtime.name) or run.poll() is not None, "the run's folder")
        if run.poll() == CANNOT_RUN_HERE:
            self.skipTest(run.communicate()[1])
        return run, runtime.name

    def test_cleans_up_when_it_is_interrupted(self):
        path = self.scenario("say begun\nwait 1000s\n")
        for files in ([path], [path, path]):
            with self.subTest(len(files)):
                run, runtime = self.begin(*files)
                run.send_signal(signal.SIGINT)
                run.communicate(timeout=GENEROUS)
                self.assertEqual(run.returncode, 130)
                self.assertEqual(os.listdir(runtime), [])

    def test_cleans_up_when_nobody_reads_any_more(self):
        path = self.scenario("repeat 10000\nwait 10ms\nend\n")
        for files in ([path], [path, path]):
            with self.subTest(len(files)):
                run, runtime = self.begin(*files)
                run.stdout.close()
                self.assertEqual(run.wait(GENEROUS), 128 + signal.SIGPIPE)
                run.stderr.close()
                self.assertEqual(os.listdir(runtime), [])


if __name__ == "__main__":
    unittest.main()
