"""The settings store under the running daemon: what breaks it, who changes it, what arrives."""

import json
import os
import shutil
import unittest

from ipc import diagnostics_pb2, diagnostics_pb2_grpc, genericcontrol_pb2, signalidentifier_pb2
from processes import EMPTY, GENEROUS, Charger, interrupt, wait_until

CONFIG_ERROR = "(src/feedback:105) Config error occurred: "
APPLIED = "(src/components/feedbackhsmactionhandler:275) Brightness is now: false | "


def in_place(store, text):
    store.parent.mkdir(exist_ok=True)
    store.write_text(text)


def by_renaming(store, text):
    store.parent.mkdir(exist_ok=True)
    new = store.with_name("new")
    new.write_text(text)
    new.rename(store)


def by_a_link(store, text):
    target = store.parent.parent / "target"
    by_renaming(target, text)
    store.parent.mkdir(exist_ok=True)
    store.unlink(missing_ok=True)
    store.symlink_to(target)


def by_a_new_folder(store, text):
    shutil.rmtree(store.parent, ignore_errors=True)
    by_renaming(store, text)


WAYS = (in_place, by_renaming, by_a_link, by_a_new_folder)


class TheStore(unittest.TestCase):
    def setUp(self):
        self.charger = Charger()
        self.addCleanup(self.charger.close)
        self.charger.peer("diagnostics")
        self.charger.wait_for("Diagnostics")

    def start_daemon(self):
        self.log = self.charger.root / "log"
        self.seen = 0
        return self.charger.daemon("-v", stdout=self.log.open("w"))

    def lines_up_to(self, text):
        """What was logged since it was asked last, when this text is in it."""
        def lines():
            return (self.log.read_text()[self.seen:].rpartition("\n")[0] + "\n").splitlines(True)
        wait_until(lambda: any(text in line for line in lines()), text)
        found = lines()
        found = found[:next(i for i, line in enumerate(found) if text in line) + 1]
        self.seen += len("".join(found))
        return found

    def good(self, manual, **settings):
        return json.dumps({"communication": {"SocketDirectory": str(self.charger.sockets)},
                           "settings": {"HmiLedIntensityManual": manual, **settings},
                           "hwinfo": {"HwHasLed": True}})

    def breaks(self, store):
        """What is done to the store, and the reason that the daemon gives."""
        def write(text):
            return lambda: by_renaming(store, text)

        text = self.good(5)
        yield from ((write(text[:size]), "not a valid store: ") for size in range(1, len(text), 17))
        yield write(""), "not a valid store: "
        yield write(text[:-1] + " " * 1024 * 1024 + "}"), "it is larger than 1048576 bytes"
        yield write('{"settings":' + "[" * 100000), "Exceeded stackLimit"
        yield write(text.replace('"hwinfo"', '"settings"')), "Duplicate key: 'settings'"
        yield write(text + "{}"), "Extra non-whitespace after JSON value"
        yield write(text + "\0"), "it holds a control character"
        yield write("[]"), "it is not an object"
        yield store.unlink, "cannot open the store: No such file or directory"
        yield lambda: shutil.rmtree(store.parent), "cannot open the store: No such file or directory"
        pipe = store.with_name("pipe")
        yield lambda: (os.mkfifo(pipe), pipe.rename(store)), "it is not a regular file"

    def test_keeps_the_last_good_values_through_whatever_breaks_it(self):
        store = self.charger.store
        in_place(store, self.good(0))
        daemon = self.start_daemon()
        self.charger.initialise_and_enable()
        channel, control = self.charger.control()
        self.addCleanup(channel.close)
        reports = control.WatchState(EMPTY, timeout=10 * GENEROUS)
        next(reports)
        self.lines_up_to(f"{APPLIED}0")
        for manual, (break_it, reason) in enumerate(self.breaks(store), start=1):
            with self.subTest(reason=reason, manual=manual):
                break_it()
                broken = self.lines_up_to(f"{CONFIG_ERROR}{store}: ")
                self.assertIn(reason, broken[-1])
                self.assertNotIn(APPLIED, "".join(broken), "one final value only")
                self.assertEqual(next(reports).state, genericcontrol_pb2.EStateFatalError)
                way = WAYS[manual % len(WAYS)] if store.is_file() else by_renaming
                way(store, self.good(manual))
                mended = self.lines_up_to(f"{APPLIED}{manual}\n")
                self.assertEqual(1, sum(APPLIED in line for line in mended))
                if way is by_renaming:  # the others leave a moment without a whole store
                    self.assertNotIn(CONFIG_ERROR, "".join(mended), "named once")
        self.assertEqual(interrupt(daemon)[0], 0)
        self.assertNotRegex(self.log.read_text()[self.seen:], "Config error|Brightness is now")

    def test_names_each_value_of_another_type_and_reports_it(self):
        wrong = {"settings": {"HmiLedIntensityMode": (5, "a text"),
                              "HmiLedIntensityManual": ("dark", "an integer of 32 bits"),
                              "HmiBuzzerVolume": (2.5, "an integer of 32 bits"),
                              "InstallationComplete": ({}, "true or false")},
                 "hwinfo": {"HwHasLed": (1, "true or false"), "HwHasBuzzer": ([], "true or false"),
                            "HwHasMeterDisplay": ("yes", "true or false")}}
        for section, keys in wrong.items():
            values = {key: value for key, (value, _) in keys.items()}
            self.charger.write_store(**{"hwinfo": {"HwHasBuzzer": True}, section: values})
            daemon = self.start_daemon()
            channel, control = self.charger.control()
            with channel:
                control.Disable(EMPTY, timeout=GENEROUS, wait_for_ready=True)
                reports = control.WatchState(EMPTY, timeout=GENEROUS)
                next(each for each in reports if each.state == genericcontrol_pb2.EStateFatalError)
            with self.charger.channel("Diagnostics") as channel:
                request = diagnostics_pb2.MDiagnosticsRequest(
                    identifier=signalidentifier_pb2.ESignalIdentifierInvalidConfigValueError)
                signal = diagnostics_pb2_grpc.DiagnosticsStub(channel).ReceiveSignal(
                    request, timeout=GENEROUS)
                self.assertTrue(signal.data[0].bool_value)
            self.assertEqual(interrupt(daemon)[0], 0)
            errors = [line.partition(CONFIG_ERROR)[2] for line in self.log.read_text().splitlines()
                      if CONFIG_ERROR in line]
            self.assertCountEqual(errors, [
                f'{self.charger.store}: section "{section}", key "{key}": found '
                f"{json.dumps(value)}, expected {expected}; using the default"
                for key, (value, expected) in keys.items()])


if __name__ == "__main__":
    unittest.main()
