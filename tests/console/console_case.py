"""What every test of the console begins with: an office, and a browser that shows its console.

A test's program is run with BUILD_FOLDER PICTURES_FOLDER [TEST...].
"""

import os
import sys
import unittest

from browser import WIDE, Browser
from office import Computer, Office

BUILD, PICTURES = os.path.realpath(sys.argv[1]), os.path.realpath(sys.argv[2])
PROGRAM = os.path.join(BUILD, "office", "zelkovanta-office")


class ConsoleTest(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.browser = Browser(os.path.join(PICTURES, cls.__name__))
        cls.addClassCleanup(cls.browser.close)

    def setUp(self):
        self.office = self.enterContext(Office(PROGRAM))
        self.browser.resize(WIDE)
        self.browser.open(self.office.url)
        self.expected_complaints = 0

    def tearDown(self):
        complaints = self.browser.complaints()
        self.browser.driver.get("about:blank")
        self.assertEqual(len(complaints), self.expected_complaints, complaints)

    def paired(self, name, *placement):
        computer = Computer(self.office, name)
        self.assertTrue(computer.redeem(self.office.command("code", "--name", name, *placement)))
        return computer

    def connected(self, computer):
        computer.connect()
        self.addCleanup(computer.disconnect)
        return computer

    def phone_of(self, member):
        self.browser.choose("#phone-member", member)
        identifier = self.office.one("members", member)["id"]
        self.browser.there(f"#phone[data-member={identifier}]")

    def refused(self, sentence):
        """The page shows why, and the browser notes the refusal."""
        self.browser.reads("#message p", sentence)
        self.expected_complaints += 1


def main():
    unittest.main(argv=[sys.argv[0], *sys.argv[3:]], verbosity=2)
