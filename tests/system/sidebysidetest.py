"""Two chargers on one desk: the page of one, in a real browser, shows the other one as a tile."""

import contextlib
import unittest

from desk import Desk, SteeredDesk
from pagedriver import Page
from patternlight import ChannelLight, screen
from processes import wait_until

WITHIN = 1  # of 255, where the page rounds


class ChargersSideBySide(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.desk = Desk("left")
        cls.addClassCleanup(cls.desk.end)
        cls.other = SteeredDesk(beside=cls.desk)
        cls.addClassCleanup(cls.other.close)
        if not cls.other.hello["hardware"]:
            raise unittest.SkipTest(cls.other.hello["remedy"])
        cls.page = Page(cls.desk.url)
        cls.addClassCleanup(cls.page.close)

    def setUp(self):
        self.steps("disable", "enable", "connector available")
        self.page.wait_for("#others", "steered")

    def tearDown(self):
        self.assertEqual(self.page.complaints(), [])

    def steps(self, *lines):
        for line in lines:
            done = self.other.step(line)
            self.assertTrue(done["ok"], f"{line}: {done['text']}")

    @contextlib.contextmanager
    def tile(self, name="steered"):
        """The page stands for what is in the tile."""
        self.page.browser.switch_to.frame(self.page.find(f"iframe[title='The lamp of {name}']"))
        try:
            yield self.page
        finally:
            self.page.browser.switch_to.default_content()

    def tiles(self):
        return self.page.run("return [...document.querySelectorAll('#others .tile a')].map(({href}) => href)")

    def wait_for_tiles(self, *urls):
        wait_until(lambda: self.tiles() == list(urls), f"tiles that lead to {urls}")

    def test_draws_the_others_light_and_follows_it(self):
        with self.tile() as tile:
            tile.wait_for("#light", "Green on")
            self.other.wait_for_state(lambda state: state["lamp"]["colour"] == "Green", "green light")
            wanted = [screen(ChannelLight(each["pattern"], each["minimum"], each["maximum"]).mean(0, 100))
                      for each in self.other.state["lamp"]["channels"]]
            wait_until(lambda: all(abs(drawn - level) <= WITHIN for drawn, level in
                                   zip(tile.frames(1)[0]["colour"], wanted)), f"the colour {wanted}")
            self.steps("connector charging")
            tile.wait_for("#light", "Blue pulsating")
            tile.wait_for("#charger", "charging")
            blue = [frame["colour"] for frame in tile.frames(5800)]
            self.assertEqual({(red, green) for red, green, _ in blue}, {(0, 0)})
            self.assertGreater(max(blue)[2] - min(blue)[2], 100, "it does not pulsate")

    def test_makes_trouble_impossible_to_miss_until_it_is_over(self):
        for act, trouble, remedy in ((self.other.kill_daemon, "daemon dead", "start daemon"),
                                     (lambda: self.steps("freeze meter"), "meter frozen", "thaw meter")):
            with self.subTest(trouble), self.tile() as tile:
                act()
                tile.wait_for("#trouble", trouble)
                self.assertNotEqual(tile.run("return getComputedStyle(document.body).outlineStyle"), "none")
                self.steps(remedy)
                tile.wait_gone("#trouble", trouble)

    def test_opens_the_others_page_ready_to_steer_in_one_tab(self):
        browser = self.page.browser
        mine = browser.current_window_handle
        for state, light in (("charging", "Blue pulsating"), ("connected", "Green on")):
            self.page.type("#others a", "\ue007")  # Enter
            wait_until(lambda: len(browser.window_handles) == 2, "a tab")
            browser.switch_to.window(next(each for each in browser.window_handles if each != mine))
            self.page.wait_for("#link", "live")
            self.page.press("#daemon", state)
            self.page.wait_for_lamp(light)
            browser.switch_to.window(mine)
            with self.tile() as tile:
                tile.wait_for("#light", light)
        self.assertEqual(len(browser.window_handles), 2)

    def test_tells_only_who_may_steer_how_the_others_are_steered(self):
        self.wait_for_tiles(self.other.url)
        looking = Page(self.desk.address)
        self.addCleanup(looking.close)
        looking.wait_for("#others", "steered")
        self.assertEqual(looking.find("#others a").get_attribute("href"), self.other.address)
        self.assertNotIn(self.other.token, looking.run("return document.documentElement.outerHTML"))

    def test_lists_chargers_as_they_come_and_go(self):
        stayed = self.page.find("#others .tile")
        for leave in (lambda desk: desk.end(), lambda desk: desk.kill()):
            third = Desk("a-third", beside=self.desk)
            self.addCleanup(third.end)
            self.wait_for_tiles(third.url, self.other.url)
            with self.tile("a-third") as tile:
                tile.wait_for("#charger", "available")
            self.page.resize(390, 800)
            self.assertEqual(self.page.run("const page = document.documentElement;"
                                           "return page.scrollWidth - page.clientWidth"), 0)
            self.page.resize(1440, 900)
            leave(third)
            self.wait_for_tiles(self.other.url)
        self.assertTrue(stayed.is_displayed(), "the other tile was made anew")

    def test_names_a_tile_for_those_who_hear_it(self):
        link = self.page.find("#others a")
        self.assertEqual((link.aria_role, link.accessible_name), ("link", "steered: open its page"))
        with self.tile() as tile:
            self.assertEqual(tile.run("return document.querySelectorAll('a, button, input, [tabindex]').length"), 0)


if __name__ == "__main__":
    unittest.main()
