#!/usr/bin/python3
"""How the office's console looks, is named and is reached by keys; and what other sites can do to it.

    looks_test.py BUILD_FOLDER PICTURES_FOLDER [TEST...]
"""

import functools
import http.server
import os
import sys
import tempfile
import threading

sys.dont_write_bytecode = True
sys.path.insert(0, os.path.dirname(os.path.realpath(__file__)))

# pylint: disable=wrong-import-position
from browser import NARROW, WIDE  # noqa: E402
from console_case import ConsoleTest, main  # noqa: E402
from office import Computer  # noqa: E402

ATTACK = """<!doctype html><title>Another site</title><script type="module">
const office = new URLSearchParams(location.search).get("office");
const tried = [];
for (const [mode, type] of [["no-cors", "text/plain"], ["cors", "application/json"], ["cors", "text/plain"]]) {
    await fetch(`${office}console/v1/room/add`, { method: "POST", mode, headers: { "Content-Type": type },
        body: '{"name":"Trapdoor"}' }).then((answer) => tried.push(answer.type), () => tried.push("failed"));
}
await fetch(`${office}console/v1/state`).then(() => tried.push("read"), () => tried.push("failed"));
await fetch(office).then(() => tried.push("read"), () => tried.push("failed"));
await new Promise((done) => {
    const socket = new WebSocket(`${office.replace("http", "ws")}console/v1/live`);
    socket.onopen = () => { tried.push("open"); done(); };
    socket.onerror = () => { tried.push("failed"); done(); };
});
const frame = document.createElement("iframe");
frame.src = office;
frame.onload = () => { document.title = tried.join(" "); };
document.body.append(frame);
</script><body></body>"""


class QuietHandler(http.server.SimpleHTTPRequestHandler):
    def log_message(self, *_):  # pylint: disable=arguments-differ
        pass


class Strangers(ConsoleTest):
    """Pages of other sites in the same browser."""

    def test_another_site_can_neither_order_nor_read(self):
        folder = self.enterContext(tempfile.TemporaryDirectory())
        with open(os.path.join(folder, "index.html"), "w", encoding="utf-8") as page:
            page.write(ATTACK)
        handler = functools.partial(QuietHandler, directory=folder)
        other = self.enterContext(http.server.ThreadingHTTPServer(("127.0.0.1", 0), handler))
        threading.Thread(target=other.serve_forever, daemon=True).start()
        self.addCleanup(other.shutdown)
        for host in ("127.0.0.1", "localhost"):
            self.browser.driver.get(f"http://{host}:{other.server_port}/?office={self.office.url}")
            tried = self.browser.until("all has been tried", lambda: self.browser.driver.title
                                       if self.browser.driver.title != "Another site" else None)
            # The opaque answer is the office's refusal.
            self.assertEqual(tried, "opaque failed failed failed failed failed")
            self.browser.driver.switch_to.frame(self.browser.there("iframe"))
            self.assertIsNone(self.browser.find("#practice"), "the console is in another site's frame")
            self.browser.driver.switch_to.default_content()
        self.assertNotIn("Trapdoor", [room["name"] for room in self.office.state()["rooms"]])
        self.browser.complaints()  # about each of the refusals


class Looks(ConsoleTest):
    def fill(self):
        """Something of everything, with long words."""
        Computer(self.office, "A computer with a rather long name of 32").show_setup_code()
        self.connected(self.paired("Hallway", "--role", "shared"))
        self.connected(self.paired("Room 3", "--role", "room", "--room", "Room 3"))
        self.office.command("send", "--room", "Room 3", "--type", "ready", "--from", "Priya Raman",
                            "--note", "Bite wings are up, and " + "verylongword" * 12)
        self.office.command("send", "--room", "Room 1", "--type", "urgent", "--department", "hygienist")
        self.office.command("member", "Caleb Wright", "--off-shift", "--cooldown", "5")
        self.office.command("room", "Consult", "--deactivate")
        self.browser.until("all of it shows", lambda: len(self.browser.find_all("#queue-list li")) == 2 and
                           len(self.browser.find_all("#computer-list .state[data-state=on]")) == 2)

    def test_nothing_is_wider_than_the_window(self):
        self.fill()
        for size, color in ((WIDE, "light"), (WIDE, "dark"), (NARROW, "light"), (NARROW, "dark"), ((320, 600), "light"),
                            ((800, 900), "light"), ((1920, 1000), "dark")):
            self.browser.resize(size, color)
            self.browser.open_details()
            self.browser.until(f"the page is {size[0]} wide", lambda: self.browser.run("return innerWidth") == size[0])
            beyond = self.browser.run("""
                const width = document.documentElement.clientWidth;
                return [...document.querySelectorAll("body *")]
                    .filter((each) => each.getBoundingClientRect().right > width + 0.5)
                    .map((each) => each.outerHTML.slice(0, 80));""")
            self.assertEqual(beyond, [], f"at {size}")
            self.assertLessEqual(self.browser.run("return document.documentElement.scrollWidth"), size[0])
            self.browser.picture(f"{size[0]}_{color}")

    def test_it_says_what_it_is_for(self):
        self.assertIn("For development and demonstration only", self.browser.text("header"))

    def test_everything_that_can_be_used_has_a_name(self):
        self.fill()
        self.browser.open_details()
        nameless = self.browser.run("""
            return [...document.querySelectorAll("input, select, button, summary, a, ul, section, nav")]
                .filter((each) => each.offsetParent !== null)
                .filter((each) => !(each.labels && [...each.labels].some((label) => label.innerText.trim())) &&
                    !each.getAttribute("aria-label") && !each.getAttribute("aria-labelledby") &&
                    !each.innerText.trim())
                .map((each) => each.outerHTML.slice(0, 100));""")
        self.assertEqual(nameless, [])
        ids = self.browser.run("return [...document.querySelectorAll('[id]')].map((each) => each.id)")
        self.assertEqual(len(ids), len(set(ids)))

    def test_texts_stand_out_from_their_ground_in_both_colour_schemes(self):
        self.fill()
        for color in ("light", "dark"):
            self.browser.resize(WIDE, color)
            faint = self.browser.run("""
                const channels = (text) => text.match(/[\\d.]+/g).map(Number);
                const light = (text) => channels(text).slice(0, 3).map((each) => each / 255)
                    .map((each) => each <= 0.03928 ? each / 12.92 : ((each + 0.055) / 1.055) ** 2.4)
                    .reduce((sum, each, at) => sum + each * [0.2126, 0.7152, 0.0722][at], 0);
                const ground = (each) => {
                    const own = getComputedStyle(each).backgroundColor;
                    return channels(own)[3] === 0 && each.parentElement ? ground(each.parentElement) : own;
                };
                return [...document.querySelectorAll("main *, header *")].filter((each) => each.offsetParent !== null &&
                        !each.disabled && !each.closest(".off") &&
                        [...each.childNodes].some((node) => node.nodeType === 3 && node.data.trim()))
                    .map((each) => {
                        const [less, more] = [light(getComputedStyle(each).color), light(ground(each))].sort((a, b) => a - b);
                        return [(more + 0.05) / (less + 0.05), each.outerHTML.slice(0, 80)];
                    }).filter(([ratio]) => ratio < 4.5);""")
            self.assertEqual(faint, [], color)

    def test_a_computer_is_set_up_with_the_keyboard_alone(self):
        computer = Computer(self.office, "Pamir").show_setup_code()
        self.browser.there("#waiting-list li")
        keys = self.browser.driver.switch_to

        def press(*pressed):
            keys.active_element.send_keys(*pressed)

        for _ in range(40):
            press("\ue004")
            if self.browser.run("return document.activeElement.closest('#waiting-list') && "
                                "document.activeElement.name === 'name'"):
                break
        press("Desk")
        press("\ue004", "Shared")
        press("\ue004")
        press("\ue004")
        self.assertEqual(self.browser.run("return document.activeElement.textContent"), "Approve")
        press("\ue007")
        self.browser.gone("#waiting-list li")
        self.assertTrue(computer.collect())
        self.assertEqual(self.office.one("devices", "Desk")["role"], "shared")

    def test_it_comes_back_by_itself_when_the_office_was_gone(self):
        self.office.command("add-room", "Sun room")
        self.office.end()
        self.browser.there("#connection[data-state=lost]")
        self.office.start()
        self.browser.there("#connection[data-state=live]")
        self.browser.there("#room-list [aria-label='Name of Sun room']")
        refused = [each for each in self.browser.complaints() if "ERR_CONNECTION_REFUSED" not in each]
        self.assertEqual(refused, [])


main()
