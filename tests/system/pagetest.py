"""The page in a real browser, on a real virtual charger: what a person does and sees."""

import pathlib
import re
import sys
import time
import unittest

from selenium.webdriver.common.keys import Keys

from desk import Desk
from pagedriver import Page
from pagetestcase import PageTest
from patternlight import ChannelLight, screen
from processes import wait_until

# The page tells times to a part of a millisecond; a hard edge inside a frame moves by so much.
BLUR = 1.5

WRITE_DOWN_SOUND = """
window.played = [];
window.contexts = [];
AudioContext = class extends AudioContext {
  constructor() {
    super();
    contexts.push(this);
  }
};
OscillatorNode = class extends OscillatorNode {
  constructor(audio, options) {
    super(audio, options);
    this.sound = { hz: options.frequency };
  }
  start(begin) {
    super.start(begin);
    played.push(Object.assign(this.sound, { begin }));
  }
  stop(end) {
    super.stop(end);
    this.sound.end = end;
  }
};
"""


def beginning(frames, lights, earliest, latest):
    """When the patterns began: the moment that explains the frames best."""
    def error(begun):
        return sum(abs(screen(light.mean(frame["from"] - begun, frame["to"] - begun)) - drawn)
                   for frame in frames for light, drawn in zip(lights, frame["colour"]))

    for step in (20, 4, 0.5):
        moments = [earliest + step * place for place in range(int((latest - earliest) / step) + 1)]
        best = min(moments, key=error)
        earliest, latest = best - step, best + step
    return best


class ThePage(PageTest):
    def assert_drawn(self, frames, channels, earliest, latest):
        """Each frame's colour is the mean of the light that the patterns give in its time, when they
        began at one moment between the two; which one."""
        lights = [ChannelLight(*channel) for channel in channels]
        begun = beginning(frames, lights, earliest, latest)
        for frame in frames:
            for light, drawn in zip(lights, frame["colour"]):
                moved = [screen(light.mean(frame["from"] - begun + by, frame["to"] - begun + by))
                         for by in (-BLUR, 0, BLUR)]
                self.assertLessEqual(min(moved) - 1, drawn, (frame, moved, channels, begun))
                self.assertGreaterEqual(max(moved) + 1, drawn, (frame, moved, channels, begun))
        return begun

    def begin_light(self, light, begin):
        """Between which times, and what the channels play then."""
        earliest = self.page.now()
        begin()
        self.page.wait_for_lamp(light)
        self.page.wait_for("#lamp .reported", "✓ reported")
        return self.page.channels(), earliest, self.page.now()

    def test_draws_the_light_that_the_patterns_give_in_each_frame(self):
        page = self.page
        for light, period, begin, end in (
                ("Blue pulsating", 5800, lambda: page.press("#daemon", "charging"), lambda: None),
                ("Green flashing", 700, lambda: self.accept_card_and_keep_its_light(),
                 lambda: page.press("#processes", "thaw daemon")),
                ("Red blink3", 5200, lambda: self.raise_error("cp low"), lambda: None)):
            with self.subTest(light):
                channels, earliest, latest = self.begin_light(light, begin)
                frames, seen = page.frames(period), page.channels()
                end()
                self.assertEqual(seen, channels, "the light changed meanwhile")
                self.assert_drawn(frames, channels, earliest, latest)
                self.assertGreater(max(max(frame["colour"]) for frame in frames), 200, "it was never bright")

    def accept_card_and_keep_its_light(self):
        """However slow this test is: what a daemon that is frozen has begun, the kernel plays on."""
        self.page.press("#daemon", "accepted")
        self.page.keep_light("Green flashing")
        self.page.wait_for("#processes", "frozen")

    def test_shows_the_same_phase_after_a_reload_and_in_another_browser(self):
        channels, earliest, latest = self.begin_light(
            "Blue pulsating", lambda: self.page.press("#daemon", "charging"))
        begun = self.assert_drawn(self.page.frames(700), channels, earliest, latest)
        self.page.browser.refresh()
        self.page.wait_for_lamp("Blue pulsating")
        other = Page(self.desk.url.split("#")[0])
        self.addCleanup(other.close)
        other.wait_for_lamp("Blue pulsating")
        for page in (self.page, other):
            self.assertEqual(page.channels(), channels)
            self.assert_drawn(page.frames(700), channels, begun - BLUR, begun + BLUR)

    def test_says_what_the_lamp_shows_and_that_the_daemon_says_the_same(self):
        for state, light in (("connected", "Green on"), ("charging", "Blue pulsating")):
            self.page.press("#daemon", state)
            self.page.wait_for_lamp(light)
            self.page.wait_for("#lamp .reported", f"✓ reported {light.replace(' ', '/')}")
            self.page.wait_for("#daemon", state)

    def test_dims_the_lamp_and_the_meters_display(self):
        for percent in (40, 100):
            self.page.set("HmiLedIntensityManual", percent)
            self.page.wait_for("#lamp .figure", f"{percent} %")
            self.page.wait_for("#meter", f"{percent} %")
        self.page.set("HmiLedIntensityManual", 140)
        self.page.wait_for("#settings .hint", "above the range: 100 holds")
        self.page.press("#settings", "Take HmiLedIntensityManual out of the store")
        wait_until(lambda: self.page.find("#setting-HmiLedIntensityManual").get_attribute("value") == "",
                   "the setting to be unset")
        self.page.type("#light", Keys.HOME)
        self.page.wait_for("#timeline .readout", "0 lux")

    def test_raises_errors_by_number_and_by_text_and_ends_them(self):
        for typed, identifier in (("1004", 1004), ("short", 1002)):
            self.raise_error(typed)
            self.page.wait_for("#errors .chips", str(identifier))
            self.page.wait_for_lamp("Red")
        self.page.wait_for("#timeline .readout", "1004, 1002")
        for identifier in (1002, 1004):
            self.end_error(identifier)
        self.page.wait_for_lamp("Green on")

    def test_sounds_from_the_first_click_on_and_says_when_it_waits_for_one(self):
        page = Page(self.desk.url)
        self.addCleanup(page.close)
        page.browser.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": WRITE_DOWN_SOUND})
        page.browser.refresh()
        page.wait_for("#link", "live")

        def has_true_length():
            before = page.run("return played.length")
            page.press("#daemon", "swiped")
            wait_until(lambda: page.run("return played.length > arguments[0] && played.at(-1).end", before), "a sound")
            sound = page.run("return played.at(-1)")
            hz, length = map(int, re.search(r"(\d+) Hz, (\d+) ms", page.text(".beeps li:first-child")).groups())
            self.assertEqual(sound["hz"], hz)
            return abs(1000 * (sound["end"] - sound["begin"]) - length) < 20

        page.press("#speaker", "Sound: off")
        page.wait_for("#sound", "Sound: on")
        wait_until(lambda: page.run("return contexts.at(-1)?.state === 'running'"), "the browser's sound")
        # A tone of which the begin or the end has come late is cut.
        wait_until(has_true_length, "a beep with its true length")
        page.browser.refresh()
        for label in ("Sound: click to hear", "Sound: on", "Sound: off"):
            page.wait_for("#sound", label)
            page.press("#speaker", label)

    def test_shows_what_is_broken_until_it_is_healed(self):
        for name in ("blue pattern", "EIO", "Break it: blue pattern EIO"):
            self.page.press("#faults", name)
        self.page.wait_for("#faults .broken", "pattern: EIO")
        self.page.press("#daemon", "charging")
        self.page.wait_for("#lamp .reported", "≠ reported Blue/Pulsating, but shows Mixed")
        self.page.press("#faults", "red all")
        self.page.press("#faults", "Break it: red all EIO")
        self.page.wait_for("#faults .chips", "red all: EIO")
        self.page.press("#faults", "Heal red all")
        self.page.wait_gone("#faults .chips", "red all")
        self.assertEqual(self.page.text("#faults .broken"), "pattern: EIO")
        self.page.press("#faults", "Heal all (1)")
        wait_until(lambda: self.page.text("#faults .broken") == "", "no fault")

    def test_tells_beside_the_control_what_went_wrong_until_the_next_try(self):
        self.page.type("#step", "conector charging", Keys.ENTER)
        self.page.wait_for("#scenarios .note.bad", 'did you mean "connector"?')
        self.page.type("#step", "connector 99", Keys.ENTER)
        self.page.wait_for("#scenarios .note.good", "✓")
        self.page.wait_for("#daemon .group:nth-of-type(2) .fact", "99")

    def test_makes_a_process_that_is_gone_or_frozen_impossible_to_miss(self):
        for process, act, alert, remedy in (
                ("daemon", self.desk.kill_daemon, "The daemon died: signal 9", "start"),
                ("daemon", lambda: self.page.press("#processes", "freeze daemon"), "The daemon is frozen", "thaw"),
                ("meter", lambda: self.page.press("#processes", "stop meter"), "The meter is stopped", "start")):
            with self.subTest(alert):
                act()
                self.page.wait_for("#alerts", alert)
                self.assertTrue(self.page.run("const box = document.querySelector('.alert').getBoundingClientRect();"
                                              "return box.top >= 0 && box.bottom <= innerHeight"))
                self.page.press("#alerts", f"{remedy} {process}")
                self.page.wait_gone("#alerts", alert)
        self.page.type("#step", "disable", Keys.ENTER)
        self.page.wait_for("#daemon .fact", "disabled")
        self.page.type("#step", "enable", Keys.ENTER)
        self.page.wait_for("#daemon .fact", "enabled")

    def test_names_a_daemon_that_does_not_come_to_serve_and_a_folder_that_is_gone(self):
        desk = Desk(f"{self.desk_name}-troubled")
        self.addCleanup(desk.end)
        page = Page(desk.url)
        self.addCleanup(page.close)
        store = next(pathlib.Path(desk.folder.name).glob("charger-*/etc/ovra.json"))
        store.write_text(store.read_text().replace("/run\"", "/elsewhere\""))
        page.press("#processes", "kill daemon")
        page.press("#processes", "start daemon")
        page.wait_for("#alerts", "The daemon has been starting since")
        folder = store.parent.parent
        folder.rename(f"{folder}-elsewhere")
        page.wait_for("#alerts .bad", f"the run's folder {folder} is gone: end this charger (Ctrl-C)")
        self.assertEqual(desk.end(), 0, desk.said)
        self.assertEqual(desk.said.count("is gone: end this charger"), 1, desk.said)

    def test_lets_a_second_browser_without_the_token_look_but_not_steer(self):
        other = Page(self.desk.url.split("#")[0])
        self.addCleanup(other.close)
        other.wait_for("#alerts", "may look, but not steer")
        self.assertFalse(other.find("#enable").is_enabled())
        self.page.press("#daemon", "charging")
        other.wait_for_lamp("Blue pulsating")

    def test_says_that_the_connection_is_lost_and_comes_back_by_itself(self):
        desk = Desk(f"{self.desk_name}-lost")
        page = Page(desk.url)
        self.addCleanup(page.close)
        page.type("#step", "enab")
        self.assertEqual(desk.end(), 0)
        page.wait_for("#alerts", "connection to the charger is lost")
        page.wait_for_focus("Try now")
        self.assertFalse(page.find("#enable").is_enabled())
        again = Desk(f"{self.desk_name}-lost", "--port", desk.port)
        self.addCleanup(again.end)
        page.wait_for("#link", "live")
        page.wait_gone("#alerts", "connection")

    def test_reads_the_time_line_at_a_moment_with_the_arrow_keys(self):
        self.page.press("#daemon", "charging")
        self.page.wait_for("#timeline .readout", "charging")
        self.page.type("canvas.timeline", Keys.HOME)
        self.page.wait_gone("#timeline .readout", "charging")
        self.page.type("canvas.timeline", Keys.END)
        self.page.wait_for("#timeline .readout", "charging")
        self.page.type("canvas.timeline", Keys.ESCAPE)
        self.page.wait_for("#timeline .moment", "now")
        self.page.type("canvas.timeline", Keys.ARROW_LEFT)
        self.page.press("#timeline", "Back to now")
        self.page.wait_for("#timeline .moment", "now")

    def test_finds_messages_and_log_lines(self):
        self.page.press("#daemon", "charging")
        self.page.wait_for("#messages .rows", "Blue/Pulsating")
        self.page.type("#messages input[type=search]", "Blue/Puls")
        self.page.wait_gone("#messages .rows", "connector")
        self.page.wait_for("#messages .rows", "Blue/Pulsating")
        self.page.type("#messages input[type=search]", Keys.CONTROL + "a" + Keys.NULL, Keys.DELETE)
        self.page.wait_for("#messages .rows", "connector")

    def test_finds_an_answer_that_comes_after_its_call(self):
        self.page.type("#messages input[type=search]", "no reply")
        for step in ("freeze daemon", "connector charging"):
            self.page.type("#step", step, Keys.ENTER)
        self.page.wait_for("#messages .rows", "no reply in time")
        self.page.press("#alerts", "thaw daemon")
        self.page.type("#messages input[type=search]", Keys.CONTROL + "a" + Keys.NULL, Keys.DELETE)

    def test_keeps_what_is_read_in_its_place_while_lines_come(self):
        page = self.page
        count = lambda: int(page.text("#log .count").split()[-1])
        shown = lambda: page.run("const rows = [...document.querySelectorAll('#log .row')]; return [rows.length,"
                                 "rows[0].getBoundingClientRect().top - rows[0].parentNode.parentNode.getBoundingClientRect().top,"
                                 "rows[0].innerText, rows.at(-1).innerText]")
        scroll = lambda by: page.run(f"const list = document.querySelector('#log .rows'); list.scrollBy(0, {by});"
                                     "return [...list.querySelectorAll('.row')].map((row) => row.innerText)")

        def write(lines):
            wanted = count() + lines
            while count() < wanted:
                page.run("document.querySelectorAll('.states button').forEach((each) => each.click())")
                page.wait_for("#daemon .group:nth-of-type(2) .note.good", "✓")

        page.type("#step", "log-level trace", Keys.ENTER)
        write(400)
        page.type("#log .rows", Keys.HOME)
        before = shown()
        write(100)
        self.assertEqual(shown(), before)
        self.assertLessEqual(before[0], 200)
        wait_until(lambda: scroll(2000)[0] != before[2], "the oldest lines to make room")
        wait_until(lambda: scroll(-2000)[0] == before[2], "the oldest lines to come back")
        page.type("#log .rows", Keys.END)
        last = shown()[3]
        write(1)
        wait_until(lambda: shown()[3] != last, "the end to be followed")
        page.type("#step", "log-level info", Keys.ENTER)
        page.wait_for("#scenarios .note.good", "log-level info")

    def test_shows_from_which_level_on_the_daemon_writes_its_log(self):
        level = lambda: self.page.run("return document.querySelector('#log-level').value")
        wait_until(lambda: level() == "info", "the daemon's own level")
        self.page.type("#log-level", "d")
        self.page.wait_for("#log .note.good", "log-level debug")
        self.page.press("#daemon", "charging")
        self.page.wait_for("#log .rows", "debug")
        self.assertEqual(level(), "debug")
        self.page.type("#step", "stop daemon", Keys.ENTER)
        self.page.wait_for("#alerts", "daemon is stopped")
        wait_until(lambda: level() == "info", "the level of the next daemon")
        for step in ("start daemon", "disable", "enable"):
            self.page.type("#step", step, Keys.ENTER)
            self.page.wait_for("#scenarios .note.good", step)

    def test_brings_the_charger_back_that_a_scenario_has_taken_away(self):
        self.page.press("#daemon", "charging")
        self.page.wait_for_lamp("Blue pulsating")
        self.page.press("#scenarios", "Play")
        self.page.wait_for("#scenarios .progress", "beeps:")
        self.page.wait_for_focus("Stop")
        self.page.press("#scenarios", "Stop")
        self.page.wait_for_focus("Play")
        self.page.press("#scenarios", "Bring back my charger")
        self.page.wait_for("#scenarios .progress", "✓ your charger is back")
        self.page.wait_for_lamp("Blue pulsating")
        self.assertNotIn("Bring back", self.page.text("#scenarios"))

    def test_writes_down_what_is_done_as_a_scenario(self):
        self.page.press("#recording", "Record")
        self.page.wait_for("#record", "Recording")
        self.page.press("#daemon", "charging")
        self.page.wait_for(".recorded", "connector charging")
        self.page.press("#recording", "● Recording, stop")
        self.page.wait_for("#record", "Record")
        self.page.browser.refresh()
        self.page.wait_for(".recorded", "connector charging")



def take_picture(path):
    """The page in the middle of a story, for the README."""
    desk = Desk("charger")
    page = Page(desk.url, height=1285)
    page.browser.execute_cdp_cmd("Emulation.setScrollbarsHidden", {"hidden": True})
    try:
        for step in ("set HmiLedIntensityManual 80", "disable", "enable", "connector connected", "card swiped",
                     "card accepted", "connector authorized", "light 120", "error 1004 on", "error 1004 off",
                     "connector charging"):
            page.type("#step", step, Keys.ENTER)
            page.wait_for("#scenarios .note.good", "✓")
            time.sleep(1.5)  # so that the time line has something to show
        wait_until(lambda: max(page.frames(1)[0]["colour"]) > 225, "the lamp to be bright")
        page.run("document.activeElement.blur()")
        page.browser.save_screenshot(path)
    finally:
        page.close()
        desk.end()


if __name__ == "__main__":
    if sys.argv[1:2] == ["--picture"]:
        take_picture(sys.argv[2])
    else:
        unittest.main()
