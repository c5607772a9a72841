"""Every source file is as clang-format leaves it."""

import pathlib
import subprocess
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
FOLDERS = ("src", "statemachines", "utils", "platform", "tools", "virtualcharger", "tests")


class TheSources(unittest.TestCase):
    def test_are_formatted(self):
        files = [str(path.relative_to(ROOT)) for folder in FOLDERS
                 for path in (ROOT / folder).rglob("*") if path.suffix in (".h", ".cpp")]
        run = subprocess.run(["clang-format", "--dry-run", "-Werror", *files], cwd=ROOT,
                             capture_output=True, text=True)
        self.assertEqual(run.returncode, 0, run.stderr)


if __name__ == "__main__":
    unittest.main()
