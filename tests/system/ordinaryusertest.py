"""An ordinary user plays every scenario, in namespaces of the user's own."""

import os
import pathlib
import shutil
import subprocess
import tempfile
import unittest

LIBRARY = pathlib.Path(__file__).parents[2] / "virtualcharger" / "scenario" / "library"
CANNOT_RUN_HERE = 3
NOBODY = 65534
SANITIZERS = {name: value for name, value in os.environ.items() if name.endswith("SAN_OPTIONS")}
PLACES = ("/dev/shm", "/home", "/run", "/tmp", "/var/tmp")


def files_of_nobody():
    found = set()
    for place in PLACES:
        for folder, folders, files in os.walk(place):
            for path in (os.path.join(folder, name) for name in folders + files):
                try:
                    if os.lstat(path).st_uid == NOBODY:
                        found.add(path)
                except FileNotFoundError:
                    pass
    return found


@unittest.skipIf(os.geteuid() != 0, "whoever runs this is an ordinary user: the other tests show it")
class AnOrdinaryUser(unittest.TestCase):
    def test_plays_every_scenario_and_leaves_nothing_behind(self):
        with tempfile.TemporaryDirectory() as name:
            folder = pathlib.Path(name)
            # The tree may lie where only its owner may look.
            for program in (os.environ["VIRTUAL_CHARGER"], os.environ["FEEDBACK"]):
                shutil.copy(program, folder)
            scenarios = [shutil.copy(path, folder) for path in sorted(LIBRARY.glob("*.scenario"))]
            runtime = folder / "runtime"
            runtime.mkdir(mode=0o700)
            os.chown(runtime, NOBODY, NOBODY)
            folder.chmod(0o755)
            before = files_of_nobody()
            run = subprocess.run(
                [folder / "virtual-charger", "--scenario", *scenarios], cwd="/",
                env={"XDG_RUNTIME_DIR": str(runtime), **SANITIZERS}, user=NOBODY, group=NOBODY, extra_groups=[],
                stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
            if run.returncode == CANNOT_RUN_HERE:
                self.skipTest(run.stdout)
            self.assertEqual(run.returncode, 0, run.stdout)
            self.assertEqual(files_of_nobody() - before, set())


if __name__ == "__main__":
    unittest.main()
