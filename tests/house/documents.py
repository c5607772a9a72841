"""What the documents promise is there: links lead somewhere, every package has its line of reason."""

import pathlib
import re
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]
DOCUMENTS = [*ROOT.glob("*.md"), *(ROOT / "docs").glob("*.md")]


class TheDocuments(unittest.TestCase):
    def test_link_to_files_that_exist(self):
        for document in DOCUMENTS:
            for target in re.findall(r"\]\(([^)#:]+)\)", document.read_text()):
                self.assertTrue((document.parent / target).exists(), f"{document.name}: {target}")

    def test_name_files_and_folders_that_exist(self):
        # `src/feedback.cpp`, but not `src/feedback.{h,cpp}` or `build/...`
        named = r"`((?:src|platform|utils|statemachines|virtualcharger|tests|scripts)/[\w./]*\w/?)`"
        for document in DOCUMENTS:
            for path in re.findall(named, document.read_text()):
                self.assertTrue((ROOT / path).exists(), f"{document.name}: {path}")

    def test_give_a_reason_for_each_package_that_is_installed(self):
        setup = (ROOT / "scripts/setup").read_text()
        installed = set(" ".join(re.findall(r'\[\w+\]="([^"]+)"', setup)).split())
        rows = re.findall(r"^\| ([\w+, -]+) \| .+ \|$",
                          (ROOT / "README.md").read_text().split("## Dependencies")[1], re.MULTILINE)
        explained = {name for row in rows for name in row.split(", ")} - {"package"}
        self.assertEqual(installed, {name for name in explained if not set(name) <= {"-"}})


if __name__ == "__main__":
    unittest.main()
