"""A person at the page of a virtual charger: a real browser, found and worked by what stands on the
page."""

import tempfile

from selenium import webdriver
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.chrome.service import Service

from processes import GENEROUS, wait_until

FLAGS = ("--headless=new --no-sandbox --disable-gpu --disable-quic --no-first-run "
         "--disable-background-networking --disable-component-update --disable-sync").split()

# The middle of the lamp and the charger's time that it stands for, in each frame of some time.
WATCH_LAMP = """
const [milliseconds, done] = arguments;
const canvas = document.querySelector("canvas.lens");
const context = canvas.getContext("2d");
const frames = [];
let first = null;
requestAnimationFrame(function watch() {
  const { from, to } = canvas.frame;
  const pixel = context.getImageData(canvas.width / 2, canvas.height / 2, 1, 1).data;
  if (frames.at(-1)?.to !== to) frames.push({ from, to, colour: [...pixel.slice(0, 3)] });
  first ??= to;
  if (to - first < milliseconds) requestAnimationFrame(watch);
  else done(frames);
});
"""

# Freezes the daemon as soon as a light is shown and reported.
KEEP_LIGHT = """
const [light, done] = arguments;
const says = (part, text) => document.querySelector(`#lamp ${part}`).innerText.includes(text);
requestAnimationFrame(function watch() {
  if (!says(".headline", light) || !says(".reported", "✓")) return requestAnimationFrame(watch);
  document.querySelector("[aria-label='freeze daemon']").click();
  done();
});
"""


class Page:
    def __init__(self, url, width=1440, height=900):
        self._profile = tempfile.TemporaryDirectory(ignore_cleanup_errors=True)
        options = webdriver.ChromeOptions()
        options.binary_location = "/usr/bin/chromium"
        for flag in [*FLAGS, f"--user-data-dir={self._profile.name}"]:
            options.add_argument(flag)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        self.browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
        self.browser.set_script_timeout(GENEROUS)
        self.resize(width, height)
        self.open(url)

    def close(self):
        self.browser.quit()
        self._profile.cleanup()

    def open(self, url):
        self.browser.get(url)
        self.wait_for("#link", "live")

    def complaints(self):
        """What the browser has to say against the page: errors in scripts, refused content."""
        return [line["message"] for line in self.browser.get_log("browser")
                if line["level"] == "SEVERE" and "WebSocket" not in line["message"]]

    def resize(self, width, height):
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": 1, "mobile": False})

    def prefer(self, scheme="light", motion="no-preference"):
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "features": [{"name": "prefers-color-scheme", "value": scheme},
                         {"name": "prefers-reduced-motion", "value": motion}]})

    def run(self, script, *arguments):
        return self.browser.execute_script(script, *arguments)

    def find(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def text(self, selector):
        return self.run("return [...document.querySelectorAll(arguments[0])]"
                        ".map((each) => each.innerText).join('\\n')", selector)

    def wait_for(self, selector, text):
        """Until the text stands there; upper and lower case are the page's own affair."""
        try:
            wait_until(lambda: text.lower() in self.text(selector).lower(), f'"{text}" in {selector}')
        except AssertionError as error:
            raise AssertionError(f"{error}, which says: {self.text(selector)}") from None

    def wait_gone(self, selector, text):
        wait_until(lambda: text not in self.text(selector), f'"{text}" to go from {selector}')

    def names(self, selector):
        """What the buttons in there are called for those who hear the page."""
        return self.run("return [...document.querySelectorAll(`${arguments[0]} button`)]"
                        ".map((each) => each.getAttribute('aria-label') ?? each.innerText)", selector)

    def press(self, card, name):
        """The button of a card by its name, as it is read or heard."""
        button = self.run(
            "return [...document.querySelectorAll(`${arguments[0]} button`)].find((each) =>"
            "(each.getAttribute('aria-label') ?? each.innerText.replace(/^\\d+\\s*/, '')).trim() === arguments[1])",
            card, name)
        assert button, f'no button "{name}" in {card}'
        wait_until(button.is_enabled, f'the button "{name}" to be enabled')
        self.run("arguments[0].scrollIntoView({block: 'center'})", button)
        button.click()

    def wait_for_focus(self, name):
        wait_until(lambda: name == self.run("return document.activeElement.ariaLabel ?? document.activeElement.innerText"),
                   f'the focus at "{name}"')

    def type(self, selector, *keys):
        self.find(selector).send_keys(*keys)

    def press_keys(self, *keys):
        self.browser.switch_to.active_element.send_keys(*keys)

    def set(self, key, value):
        """A number of the store, as a person types it."""
        self.type(f"#setting-{key}", Keys.CONTROL + "a" + Keys.NULL, str(value), Keys.ENTER)

    def wait_for_lamp(self, light):
        self.wait_for("#lamp .headline", light)

    def keep_light(self, light):
        self.browser.execute_async_script(KEEP_LIGHT, light)

    def frames(self, milliseconds):
        return self.browser.execute_async_script(WATCH_LAMP, milliseconds)

    def now(self):
        """The charger's time, as this page has it."""
        return self.run("return document.querySelector('canvas.lens').frame.to")

    def channels(self):
        """[(pattern, minimum, maximum)]"""
        rows = self.run("return [...document.querySelectorAll('.channels tbody tr')]"
                        ".map((row) => [...row.children].map((cell) => cell.innerText))")
        return [(pattern if pattern[0].isdigit() else "", int(minimum), int(maximum))
                for _, minimum, maximum, pattern in rows]
