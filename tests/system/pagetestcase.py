"""A person's page and charger, for tests that bring both back to where they were."""

import os
import unittest

from selenium.webdriver.common.keys import Keys

from desk import Desk
from pagedriver import Page


class PageTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.desk_name = f"{cls.__name__}-{os.getpid()}"
        cls.desk = Desk(cls.desk_name)
        cls.addClassCleanup(cls.desk.end)
        cls.page = Page(cls.desk.url)
        cls.addClassCleanup(cls.page.close)
        if "No virtual hardware" in cls.page.text("#alerts"):
            raise unittest.SkipTest(cls.page.text("#alerts"))
        cls.page.press("#daemon", "Disable")
        cls.page.wait_for("#daemon", "disabled")
        cls.page.press("#daemon", "Enable")
        cls.page.wait_for("#daemon .fact", "enabled")

    def setUp(self):
        for identifier in self.page.text("#errors .chip .number").split():
            self.end_error(identifier)
        if self.page.text("#faults .broken"):
            self.page.press("#faults", "Heal all (1)")
        self.page.press("#daemon", "available")
        self.page.wait_for_lamp("Green on")

    def tearDown(self):
        self.assertEqual(self.page.complaints(), [])

    def raise_error(self, typed):
        self.page.type("#error-picker", typed, Keys.ENTER)

    def end_error(self, identifier):
        self.page.press("#errors", next(
            name for name in self.page.names("#errors .chip") if f" {identifier} " in name))
        self.page.wait_gone("#errors .chips", str(identifier))
