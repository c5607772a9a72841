"""What the virtual charger says, and how it ends, when something is not as expected."""

import os
import pathlib
import signal
import subprocess
import tempfile
import unittest

from processes import GENEROUS, wait_until

FAILURES = pathlib.Path(__file__).parent / "failures"
PROGRAM = os.environ["VIRTUAL_CHARGER"]
CANNOT_RUN_HERE = 3


def play(path, *options):
    run = subprocess.run([PROGRAM, "--scenario", str(path), "--daemon", os.environ["FEEDBACK"], *options],
                         capture_output=True, text=True, timeout=GENEROUS)
    if run.returncode == CANNOT_RUN_HERE:
        raise unittest.SkipTest(run.stderr)
    return run.returncode, run.stdout + run.stderr


class TheVirtualCharger(unittest.TestCase):
    def scenario(self, text):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        path = pathlib.Path(folder.name) / "own.scenario"
        path.write_text(text)
        return path

    def test_fails_at_the_step_that_did_not_come_out(self):
        for name, line, seen in (("wronglamp", 5, "blue pulsating"), ("extrawrite", 7, "pattern"),
                                 ("latelamp", 6, "at the latest"), ("refusedwrite", 12, "pattern"),
                                 ("wrongverdict", 2, "refused"), ("unexpectedbeep", 5, "a tone")):
            with self.subTest(name):
                status, output = play(FAILURES / f"{name}.scenario")
                self.assertEqual(status, 1, output)
                self.assertRegex(output, rf"FAILED .*{name}\.scenario:{line}\b")
                self.assertIn(seen, output.split("FAILED")[1])

    def test_names_every_bad_line_before_anything_starts(self):
        path = self.scenario("conector charging\nconnector charging\nexpect lamp pink on\nwait 3 days\n")
        status, output = play(path)
        self.assertEqual(status, 2)
        for line, hint in ((1, "connector"), (3, "pink"), (4, "")):
            self.assertRegex(output, rf"own\.scenario:{line}: .*{hint}")
        self.assertNotIn("own.scenario:2:", output)

    def test_says_what_to_do_where_there_is_no_daemon_or_no_scenario(self):
        path = self.scenario("connector charging\n")
        status, output = play(path, "--daemon", "/nowhere/feedback")
        self.assertEqual(status, 2)
        self.assertIn("./run --build", output)
        status, output = play("/nowhere/own.scenario")
        self.assertEqual(status, 2)
        self.assertIn("/nowhere/own.scenario", output)

    def test_cleans_up_when_it_is_interrupted(self):
        path = self.scenario("say begun\nwait 1000s\n")
        with tempfile.TemporaryDirectory() as runtime:
            run = subprocess.Popen(
                [PROGRAM, "--scenario", str(path), "--daemon", os.environ["FEEDBACK"]],
                stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True,
                env={**os.environ, "XDG_RUNTIME_DIR": runtime})
            wait_until(lambda: os.listdir(runtime) or run.poll() is not None, "the run's folder")
            if run.poll() == CANNOT_RUN_HERE:
                self.skipTest(run.communicate()[1])
            run.send_signal(signal.SIGINT)
            run.communicate(timeout=GENEROUS)
            self.assertEqual(run.returncode, 130)
            self.assertEqual(os.listdir(runtime), [])


if __name__ == "__main__":
    unittest.main()
