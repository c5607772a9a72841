"""The page on any screen, by keyboard, by ear, and for eyes that need contrast."""

import unittest

from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

from pagetestcase import PageTest

CONTRAST = """
const luminance = (rgb) => {
  const [r, g, b] = rgb.map((each) => each / 255)
    .map((each) => (each <= 0.04045 ? each / 12.92 : ((each + 0.055) / 1.055) ** 2.4));
  return 0.2126 * r + 0.7152 * g + 0.0722 * b;
};
const parse = (text) => text.match(/[\\d.]+/g).map(Number);
const background = (element) => {
  for (let each = element; each; each = each.parentElement) {
    const colour = parse(getComputedStyle(each).backgroundColor);
    if (colour.length < 4 || colour[3] === 1) return colour.slice(0, 3);
  }
  return [255, 255, 255];
};
const ratio = (one, other) => {
  const [light, dark] = [luminance(one), luminance(other)].sort((a, b) => b - a);
  return (light + 0.05) / (dark + 0.05);
};
const found = [];
const check = (what, element, colour, place, least) => {
  const seen = ratio(parse(colour), place);
  if (seen < least) found.push(`${what} of ${element.tagName}.${element.className} "${element.innerText}": ${seen.toFixed(2)}`);
};
for (const element of document.querySelectorAll("body *")) {
  if (!element.checkVisibility() || element.matches(".unseen, .skip, .screen *")) continue;
  const style = getComputedStyle(element);
  const behind = background(element);
  const large = parseFloat(style.fontSize) >= 24 || (parseFloat(style.fontSize) >= 18.66 && style.fontWeight >= 700);
  const says = [...element.childNodes].some((node) => node.nodeType === 3 && node.data.trim());
  if (says) check("text", element, style.color, behind, large ? 3 : 4.5);
  if (element.placeholder) check("placeholder", element, getComputedStyle(element, "::placeholder").color, behind, 4.5);
  if (element.matches(":is(button, select, input:not([type=range], [type=checkbox])):enabled")) {
    check("border", element, style.borderTopColor, background(element.parentElement), 3);
  }
}
// What the time line writes, and on what.
const colour = (name) => {
  const probe = document.body.appendChild(document.createElement("span"));
  probe.style.color = `var(--${name})`;
  const computed = getComputedStyle(probe).color;
  probe.remove();
  return computed;
};
for (const [text, place] of [["muted", "card"], ["ink", "card"], ["ink", "fill"], ["bad-ink", "bad-fill"]]) {
  check(`${text} on ${place}`, document.querySelector("canvas.timeline"), colour(text), parse(colour(place)), 4.5);
}
return found;
"""


# The browser's sound: what is asked of it, and when.
# What can take the focus; what of it was reached, could not be seen to have it, or was covered.
WATCH_FOCUS = """
document.activeElement.blur();
window.controls = () => [...document.querySelectorAll("a[href], button, input, select, canvas[tabindex], [role=log]")]
  .filter((each) => each.checkVisibility() && !each.matches(":disabled"));
window.named = (each) => each.outerHTML;
[window.reached, window.unseen, window.covered] = [new Set(), [], []];
addEventListener("focusin", ({ target }) => {
  reached.add(target);
  if (getComputedStyle(target).outlineStyle === "none") unseen.push(named(target));
});
addEventListener("focusout", ({ target }) => {
  const box = target.getBoundingClientRect();
  const shown = document.elementFromPoint(box.x + box.width / 2, box.y + Math.min(box.height / 2, 20));
  if (!target.matches(".skip") && !target.contains(shown)) covered.push(named(target));
});
"""


class ThePageForEveryone(PageTest):
    def test_is_worked_by_the_keyboard_alone(self):
        page = self.page
        self.addCleanup(page.resize, 1440, 900)
        page.resize(390, 844)
        page.browser.refresh()
        page.wait_for("#link", "live")
        page.press_keys(Keys.TAB, Keys.ENTER)
        page.press_keys(Keys.TAB)
        self.assertEqual(page.browser.switch_to.active_element.get_attribute("id"), "enable", "the skip link")
        page.press_keys("t")
        page.press_keys("?", Keys.ESCAPE)
        self.assertEqual(page.browser.switch_to.active_element.tag_name, "canvas", "the dialog gives the focus back")
        page.press_keys("c", Keys.ENTER)
        page.wait_for("#daemon .note.good", "✓")
        page.press_keys("r")
        page.press_keys("1004", Keys.ENTER)
        page.wait_for_lamp("Red blink3")
        page.wait_for("#errors .chips", "1004")
        page.press_keys(Keys.SHIFT + Keys.TAB)
        page.press_keys(Keys.ENTER)
        page.wait_for_lamp("Green on")
        page.run(WATCH_FOCUS)
        ActionChains(page.browser).send_keys(Keys.TAB * (page.run("return controls().length") + 20)).perform()
        self.assertEqual(page.run("return [controls().filter((each) => !reached.has(each)).map(named), unseen, covered]"),
                         [[], [], []])

    def test_leaves_the_keyboard_at_a_neighbour_where_a_control_goes(self):
        for card, name, neighbour in (("#processes", "kill meter", "start meter"),
                                      ("#processes", "start meter", "kill meter"),
                                      ("#processes", "freeze meter", "thaw meter"),
                                      ("#alerts", "thaw meter", "Enable")):
            with self.subTest(name):
                self.page.press(card, name)
                self.page.wait_for_focus(neighbour)

    def test_keeps_the_lamp_in_sight_and_each_part_one_tap_away_on_a_phone(self):
        page = self.page
        self.addCleanup(page.resize, 1440, 900)
        page.resize(390, 844)
        page.press("#daemon", "charging")
        page.wait_for_lamp("Blue pulsating")
        for link in page.browser.find_elements(By.CSS_SELECTOR, "#places a"):
            part = link.get_attribute("href").split("#")[1]
            link.click()
            with self.subTest(part):
                lamp, lens, top, bottom = page.run("""
                    const box = (id) => document.getElementById(id).getBoundingClientRect();
                    return [box("face").top, document.querySelector(".lens").getBoundingClientRect().height,
                            box(arguments[0]).top - box("face").bottom, box("places").top - box(arguments[0]).top]""", part)
                self.assertEqual((lamp >= 0, lens >= 64), (True, True), "the lamp")
                self.assertEqual((top >= 0, bottom >= 100), (True, True), "the part's head")
        # Its light is what the page is for, whatever else may not move.
        self.addCleanup(page.prefer)
        page.prefer(motion="reduce")
        blue = [frame["colour"][2] for frame in page.frames(5800)]
        self.assertGreater(max(blue) - min(blue), 150, "the strip's lamp pulsates")
        page.press("#daemon", "connected")
        page.wait_for_lamp("Green on")

    def test_tells_those_who_hear_it_the_name_of_every_control(self):
        nodes = [node for node in self.page.browser.execute_cdp_cmd("Accessibility.getFullAXTree", {})["nodes"]
                 if not node["ignored"]]
        said = [(node["role"]["value"], node.get("name", {}).get("value", ""),
                 {each["name"]: each["value"].get("value") for each in node.get("properties", [])}) for node in nodes]
        self.assertEqual([(role, facts) for role, name, facts in said
                          if name == "" and facts.get("focusable") and role != "generic"], [])
        levels = [facts["level"] for role, _, facts in said if role == "heading"]
        self.assertEqual(levels[0], 1)
        self.assertLessEqual(max(after - before for before, after in zip(levels, levels[1:])), 1, levels)

    def test_fits_every_width_without_scrolling_sideways(self):
        self.addCleanup(self.page.resize, 1440, 900)
        for width in (320, 390, 640, 768, 1024, 1440, 2560):
            self.page.resize(width, 900)
            self.assertEqual(self.page.run(
                "return [...document.querySelectorAll('body *')].filter((each) => each.checkVisibility() &&"
                "!each.closest('#places, .pattern, .unseen') &&"
                "each.getBoundingClientRect().right > document.documentElement.clientWidth + 1)"
                ".map((each) => each.outerHTML)"), [], width)

    def test_can_be_read_in_light_and_dark(self):
        self.raise_error("1004")
        self.page.wait_for("#errors .chips", "1004")
        self.page.press("#processes", "freeze meter")
        self.page.wait_for("#alerts", "The meter is frozen")
        self.addCleanup(self.page.prefer)
        for scheme in ("light", "dark"):
            self.page.prefer(scheme)
            self.assertEqual(self.page.run(CONTRAST), [], scheme)
        self.page.press("#processes", "thaw meter")
        self.page.wait_gone("#alerts", "frozen")
        self.end_error(1004)


if __name__ == "__main__":
    unittest.main()
