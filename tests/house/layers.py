"""Each layer may include only what stands below it: walks every #include and fails on one that runs
the other way. The link lines of the CMakeLists.txt files repeat the same table."""

import pathlib
import re
import sys
import unittest

ROOT = pathlib.Path(__file__).resolve().parents[2]

# Who may include what, most special path first. A layer may always include itself.
MAY_INCLUDE = {
    "src/components": ["src/hal", "statemachines", "utils", "platform"],
    "src/hal": ["utils", "platform"],
    "src": ["src/components", "src/hal", "statemachines", "utils", "platform"],
    "statemachines": ["utils", "platform"],
    "utils": ["platform"],
    "virtualcharger": ["utils", "platform"],
    "tools": ["utils", "platform"],
    # The platform's own order.
    "platform/diagnostics": ["platform/rpc", "platform/ipc"],
    "platform/rpc": ["platform/kvconfig", "platform/ipc", "platform/os"],
    "platform/log": ["platform/rpc/interfaces", "platform/ipc"],
    "platform/kvconfig": ["platform/worker", "platform/log", "platform/os"],
    "platform/worker": ["platform/log"],
    "platform/sysfs": ["platform/log"],
    "platform/ipc": [],
    "platform/os": [],
}
GRPC = re.compile(r'^#include [<"](grpc(pp)?/|.*\.grpc\.pb\.h)', re.MULTILINE)
INCLUDE = re.compile(r'^#include "([^"]+)"', re.MULTILINE)


def layer_of(path):
    matches = [layer for layer in MAY_INCLUDE if path == layer or path.startswith(layer + "/")]
    return max(matches, key=len) if matches else None


def sources():
    for layer in {layer.split("/")[0] for layer in MAY_INCLUDE}:
        for path in sorted((ROOT / layer).rglob("*")):
            if path.suffix in (".h", ".cpp"):
                yield path.relative_to(ROOT).as_posix(), path.read_text()


def is_allowed(included, allowed):
    # "platform" and "platform/rpc/interfaces" are no layers of their own: all below them is meant.
    folders = [each + "/" for each in allowed if each not in MAY_INCLUDE]
    return layer_of(included) in allowed or included.startswith(tuple(folders))


def violations(path, text):
    layer = layer_of(path)
    allowed = MAY_INCLUDE[layer] + [layer]
    for included in INCLUDE.findall(text):
        if not is_allowed(included, allowed):
            yield f"{path} includes {included}: {layer} may include {', '.join(allowed)}"
    if not path.startswith("platform/rpc/") and GRPC.search(text):
        yield f"{path} includes gRPC's headers: only platform/rpc may"


class TheLayers(unittest.TestCase):
    def test_are_included_downwards_only(self):
        found = [each for path, text in sources() for each in violations(path, text)]
        self.assertEqual(found, [], "\n" + "\n".join(found))

    def test_are_all_walked(self):
        walked = {layer_of(path) for path, _ in sources()}
        existing = {layer for layer in MAY_INCLUDE if list((ROOT / layer).rglob("*.h"))}
        self.assertEqual(walked, existing)

    def test_an_include_that_runs_upwards_is_found(self):
        upwards = {
            "utils/a.h": '#include "src/hal/led.h"',
            "src/hal/a.cpp": '#include "src/components/connector.h"',
            "src/components/a.cpp": '#include "src/feedback.h"',
            "statemachines/a.h": '#include "src/hal/led.h"',
            "platform/log/a.h": '#include "platform/rpc/log.h"',
            "platform/worker/a.h": '#include "utils/traceentry.h"',
            "virtualcharger/a.cpp": '#include "src/hal/led.h"',
            "src/components/b.cpp": "#include <grpcpp/server.h>",
        }
        for path, text in upwards.items():
            self.assertTrue(list(violations(path, text)), path)
        self.assertFalse(list(violations("src/feedback.cpp", '#include "src/hal/led.h"')))


if __name__ == "__main__":
    sys.exit(unittest.main())
