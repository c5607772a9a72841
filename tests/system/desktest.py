"""The charger under its page: steered over the WebSocket while processes die, stand still and come
back."""

import json
import os
import pathlib
import subprocess
import tempfile
import unittest

from desk import DeskTest, SteeredDesk
from processes import GENEROUS


def lamp(state):
    return state["lamp"]["colour"], state["lamp"]["mode"]


# A machine of which /dev has no more than every machine has.
BARE = ("unshare", "-rm", "sh", "-ec", """
mount -t tmpfs none /mnt
for device in null zero full random urandom tty; do
  touch /mnt/$device
  mount --bind /dev/$device /mnt/$device
done
mkdir /mnt/shm
ln -s /proc/self/fd /mnt/fd
mount --rbind /mnt /dev
exec "$@"
""", "sh")


class TheDesk(DeskTest):
    def ready(self, *options):
        desk = self.start(*options)
        desk.wait_for_state(lambda state: state["lifecycle"]["state"] == "uninitialized"
                            and desk.status("daemon") == "running", "the daemon")
        self.steps(desk, "disable", "enable")
        return desk

    def test_does_the_steps_and_shows_what_comes_of_them(self):
        desk = self.ready()
        self.steps(desk, "connector charging")
        desk.wait_for_state(lambda state: lamp(state) == ("Blue", "Pulsating"), "the lamp")
        self.assertEqual(desk.state["connector"]["state"], "charging")
        levels = {segment[2] for segment in desk.wait_for(
            lambda: (desk.last("lamp") or {}).get("channels", [[], [], []])[2][3:], "segments")}
        self.assertGreater(len(levels), 3, "a fade")
        self.steps(desk, "card swiped")
        desk.wait_for_state(lambda state: state["tone"]["beeps"] == 1, "a beep")
        desk.wait_for(lambda: [row["hz"] > 0 for row in desk.messages if row["type"] == "tone"][-2:]
                      == [True, False], "the tone's end")
        self.steps(desk, "log-level debug", "error 1004 on", "light 700",
                   "set HmiLedIntensityManual 40", "fault red trigger EIO times 2")
        desk.wait_for_state(lambda state: state["errors"] == [1004] and state["light"] ==
                            {"lux": 700, "percent": 100} and state["display"]["percent"] == 40 and
                            state["settings"]["HmiLedIntensityManual"] == 40, "every input")
        self.assertEqual(desk.state["faults"], [{"device": "red", "attribute": "trigger",
                                                 "fault": "EIO", "detail": "times 2"}])
        store = next(pathlib.Path(desk.folder.name).glob("charger-*/etc/ovra.json"))
        good = store.read_text()
        store.write_text("{")
        desk.wait_for_state(lambda state: "not a valid store" in state["storeError"], "a broken store")
        self.assertEqual(desk.state["settings"]["HmiLedIntensityManual"], 40)
        store.unlink()
        store.mkdir()
        desk.wait_for_state(lambda state: "but a directory" in state["storeError"], "a folder")
        store.rmdir()
        store.write_text(good.replace(": 40", ": 30"))
        desk.wait_for_state(lambda state: state["storeError"] == "" and
                            state["settings"]["HmiLedIntensityManual"] == 30, "an editor's change")
        for lane, value in (("lifecycle", "enabled"), ("connector", "charging"), ("display", 40),
                            ("error", {"identifier": 1004, "on": True}), ("step", "light 700")):
            desk.wait_for(lambda: any(row["lane"] == lane and row["value"] == value
                                      for row in desk.rows("timeline")), lane)
        for text, sender in (("connector Charging (6)", "session-manager"),
                             ("LED state = Blue/Pulsating", "daemon"), ("40 %", "daemon"),
                             ("1004 ChargeControl Cp Low Error = true", "diagnostics"),
                             ("TagSwipe (2)", "board-controller"), ("Enabled", "daemon")):
            row = desk.wait_for(lambda: next((row for row in desk.rows("messages")
                                              if row["text"] == text and row["ms"] is not None),
                                             None), text)
            self.assertEqual((row["from"], row["ok"]), (sender, True), row)
        desk.wait_for(lambda: any("Brightness is now" in row["text"] and row["level"] == 1
                                  for row in desk.rows("log")), "a line of the log")

    def test_refuses_what_it_cannot_do_and_says_why(self):
        desk = self.ready()
        for line, text in (("expect lamp off", "for scenarios"), ("conector charging", "connector"),
                           ("start daemon", "runs already"), ("thaw meter", "is not frozen"), ("repeat 2", "scenario"), ("", "line"), ("light\0 5", "character 0x00 at place 6")):
            done = desk.step(line)
            self.assertFalse(done["ok"], line)
            self.assertIn(text, done["text"])
        for message in ({"type": 7}, {"type": "step", "line": [5]}, {"type": "play", "scenario": {}},
                        {"type": "record", "on": "yes"}):
            desk.socket.send(json.dumps({**message, "id": "odd"}))
            self.assertFalse(desk.done("odd")["ok"])
            desk.messages.clear()
        self.assertIn("no scenario", desk.done(desk.ask("play", scenario="../story"))["text"])
        onlooker = desk.connect(token="wrong")
        self.addCleanup(onlooker.close)
        self.assertFalse(json.loads(onlooker.recv())["token"])
        onlooker.send(json.dumps({"type": "step", "id": 1, "line": "connector reserved"}))
        while (answer := json.loads(onlooker.recv()))["type"] != "done":
            pass
        self.assertFalse(answer["ok"])
        self.assertEqual(desk.state["connector"]["state"], "available")

    def test_lives_on_whatever_happens_to_its_processes(self):
        desk = self.ready()
        self.steps(desk, "kill daemon")
        desk.wait_for_state(lambda _: desk.status("daemon") == "stopped", "its death")
        self.assertFalse(desk.step("enable")["ok"])
        self.steps(desk, "start daemon", "disable", "enable", "freeze daemon")
        desk.wait_for_state(lambda _: desk.status("daemon") == "frozen", "ice")
        late = desk.ask("step", line="identify")
        self.steps(desk, "light 30", "thaw daemon")
        self.assertTrue(desk.done(late)["ok"])
        peers = ("session-manager", "diagnostics", "board-controller", "meter")
        for action, works in (("kill", True), ("freeze", False), ("start", True)):
            for number in [desk.ask("step", line=f"{action} {peer}") for peer in peers]:
                self.assertEqual(desk.done(number)["ok"], works, action)
        self.steps(desk, "kill diagnostics", "freeze meter")
        desk.wait_for(lambda: any(row["lane"] == "peers" and row["value"] ==
                                  "diagnostics stopped, meter frozen" for row in desk.rows("timeline")),
                      "the lane of the peers")
        self.steps(desk, "thaw meter", "start diagnostics")
        desk.wait_for(lambda: [row["value"] for row in desk.rows("timeline")
                               if row["lane"] == "peers"][-1] == "", "nothing in it")
        desk.kill_daemon()
        desk.wait_for_state(lambda _: desk.status("daemon") == "dead", "a death nobody asked for")
        self.steps(desk, "start daemon", "disable", "enable", "connector charging")
        desk.wait_for_state(lambda state: lamp(state) == ("Blue", "Pulsating"), "the lamp again")

    def test_answers_for_a_peer_that_stands_still(self):
        desk = self.ready()
        self.steps(desk, "freeze session-manager")
        late = desk.ask("step", line="connector charging")
        self.steps(desk, "card accepted")
        done = desk.done(late)
        self.assertFalse(done["ok"])
        self.assertIn('"thaw session-manager"', done["text"])

    def test_shows_what_the_daemon_reports_where_the_machine_gives_no_hardware(self):
        if subprocess.run([*BARE, "true"], capture_output=True).returncode != 0:
            self.skipTest("no namespaces for users")
        desk = SteeredDesk(inside=BARE)
        self.addCleanup(desk.close)
        self.assertFalse(desk.hello["hardware"])
        for said in (desk.said, desk.hello["remedy"]):
            self.assertIn("cannot open /dev/fuse: No such file or directory; load the module", said)
        desk.wait_for_state(lambda state: lamp(state) == ("Yellow", "On"), "the daemon")
        self.steps(desk, "disable", "enable", "connector charging", "set HmiLedIntensityManual 50")
        desk.wait_for_state(lambda state: lamp(state) == ("Blue", "Pulsating") and
                            state["lamp"]["percent"] == "50%", "the light that is reported")

    def test_plays_a_scenario_and_takes_steps_meanwhile(self):
        desk = self.ready()
        self.steps(desk, "connector reserved", "set HmiLedIntensityManual 20", "freeze meter")
        number = desk.ask("play", scenario="night")
        desk.wait_for_state(lambda state: state["play"]["waiting"], "an expectation")
        self.steps(desk, "fault beeper all EIO", "fault all all EIO", "heal beeper all")
        self.assertEqual(desk.step("heal beeper all")["text"],
                         'no fault was set at beeper all; "heal" alone ends all faults')
        self.steps(desk, "heal")
        self.assertTrue(desk.done(desk.ask("stop-play"))["ok"])
        self.assertEqual(desk.done(number)["text"], "stopped")
        self.assertTrue(desk.done(desk.ask("play", scenario="walk"))["ok"])
        desk.wait_for_state(lambda state: state["play"]["done"], "its end")
        number = desk.ask("play", scenario="walk")
        desk.wait_for_state(lambda state: state["play"]["line"] > 10 and not state["play"]["done"],
                            "its middle")
        desk.step("kill daemon")
        self.assertFalse(desk.done(number)["ok"])
        desk.wait_for_state(lambda state: state["play"]["failed"] and state["play"]["done"], "failure")
        self.steps(desk, "start daemon", "disable")

    def test_stops_a_scenario_at_any_moment_and_keeps_a_whole_charger(self):
        desk = self.ready()
        self.steps(desk, "freeze session-manager")
        step = desk.ask("step", line="connector charging")
        play = desk.ask("play", scenario="walk")
        desk.wait_for_state(lambda state: "begins when" in state["play"]["text"], "the play that waits")
        self.assertTrue(desk.done(desk.ask("stop-play"))["ok"])
        self.assertFalse(desk.done(play)["ok"])
        self.steps(desk, "thaw session-manager")
        desk.done(step)
        play = desk.ask("play", scenario="walk")
        desk.wait_for_state(lambda state: "anew" in state["play"]["text"], "the charger's renewal")
        self.assertTrue(desk.done(desk.ask("stop-play"))["ok"])
        self.assertEqual(desk.done(play)["text"], "stopped")
        self.assertEqual({each["status"] for each in desk.state["processes"]}, {"running"})

    def test_takes_no_light_of_a_former_daemon_for_the_new_ones(self):
        desk = self.ready()
        desk.wait_for_state(lambda state: state["lamp"]["reported"] == "Green/On", "the first report")
        self.steps(desk, "kill daemon")
        self.assertEqual(desk.state["lamp"]["reported"], "Green/On")
        self.steps(desk, "start daemon")
        desk.wait_for_state(lambda state: lamp(state) == ("Yellow", "On") and
                            state["lamp"]["reported"] == "", "the light before its first report")

    def test_brings_the_persons_charger_back_after_scenarios(self):
        desk = self.ready()
        self.assertFalse(desk.done(desk.ask("bring-back"))["ok"])
        self.steps(desk, "connector charging", "error 1004 on", "error 1002 on", "light 300",
                   "log-level debug", "freeze meter", "kill session-manager",
                   "fault sensor all garbage \"a b\"", "fault red pattern EIO times 2")
        store = next(pathlib.Path(desk.folder.name).glob("charger-*/etc/ovra.json"))
        text = store.read_text().replace('"settings": {', '"own": 1, "settings": {"OfMine": [7],')
        store.write_text(text.replace('"HmiBuzzerVolume": 4', '"HmiBuzzerVolume": 2'))

        def picture(state):
            return {key: state[key] for key in ("settings", "storeError", "errors", "light", "logLevel", "faults")} | {
                "connector": state["connector"]["state"], "lifecycle": state["lifecycle"]["state"],
                "lamp": lamp(state), "status": [(each["name"], each["status"]) for each in state["processes"]]}

        desk.wait_for_state(lambda state: state["settings"]["HmiBuzzerVolume"] == 2 and
                            lamp(state)[0] == "Red", "the hand-edited store and the light")
        for own in (store.read_text(), '{"half": '):
            if own != store.read_text():
                self.steps(desk, "heal red pattern")  # the daemon writes to the lamp by itself now
                store.write_text(own)
                desk.wait_for_state(lambda state: state["storeError"] and 1105 in state["errors"] and
                                    state["lifecycle"]["state"] == "fatal-error" and
                                    lamp(state) == ("Yellow", "On"), "the daemon's end of trust")
            before = picture(desk.state)
            for scenario, stop in (("night", lambda: desk.ask("stop-play")), ("walk", desk.kill_daemon)):
                number = desk.ask("play", scenario=scenario)
                desk.wait_for_state(lambda state: state["play"]["scenario"] == scenario and
                                    state["play"]["line"] > 5, "its middle")
                stop()
                self.assertFalse(desk.done(number)["ok"])
            self.assertTrue(desk.state["play"]["back"])
            done = desk.done(desk.ask("bring-back"))
            self.assertTrue(done["ok"], done["text"])
            self.assertEqual(store.read_text(), own)
            desk.wait_for_state(lambda state: picture(state) == before and not state["play"]["back"],
                                f"{before}")

    def test_records_what_a_person_does_as_a_scenario_that_comes_out_again(self):
        desk = self.ready()
        self.steps(desk, "connector charging", "set HmiLedIntensityManual 60", "light 300")
        desk.wait_for_state(lambda state: lamp(state) == ("Blue", "Pulsating") and
                            state["display"]["percent"] == 60, "the first light")
        self.assertTrue(desk.done(desk.ask("record", on=True))["ok"])
        self.steps(desk, "error 1004 on")
        desk.wait_for_state(lambda state: lamp(state) == ("Red", "Blink3"), "the error")
        self.steps(desk, "error 1004 off", "card swiped")
        desk.wait_for_state(lambda state: (state["tone"]["beeps"], state["tone"]["hz"]) == (1, 0),
                            "the beep")
        self.steps(desk, "kill session-manager", "start session-manager", "disable")
        self.assertFalse(desk.step("card accepted")["ok"])
        desk.wait_for_state(lambda state: lamp(state) == ("Yellow", "On"), "the disabled lamp")
        self.assertTrue(desk.done(desk.ask("record", on=False))["ok"])
        desk.wait_for_state(lambda state: not state["recording"]["on"], "the end of the recording")
        text = desk.wait_for(lambda: "accepted rejected" in desk.last("recording")["text"] and
                             desk.last("recording")["text"], "the text")
        for line in ("set HmiLedIntensityManual 60", "connector charging", "expect lamp red blink3",
                     "expect beep", "card accepted rejected", "expect lamp yellow on"):
            self.assertIn(line + "\n", text)
        with tempfile.TemporaryDirectory() as folder:
            path = pathlib.Path(folder) / "recorded.scenario"
            path.write_text(text)
            run = subprocess.run([os.environ["VIRTUAL_CHARGER"], "--scenario", str(path), "--daemon",
                                  os.environ["FEEDBACK"]], capture_output=True, text=True,
                                 timeout=2 * GENEROUS)
        self.assertEqual(run.returncode, 0, text + run.stdout)


if __name__ == "__main__":
    unittest.main()
