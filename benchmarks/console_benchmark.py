"""How soon the office's console shows something, and what a browser has to load for it.

    console_benchmark.py BUILD_FOLDER [RESULTS_FILE]

In headless Chromium, as it says itself: the first paint after a navigation to the page with nothing cached, beside that
of a page of one word; and the bytes of the page and all that it loads, with their headers.
"""

import http.server
import os
import statistics
import sys
import threading

sys.dont_write_bytecode = True
TREE = os.path.dirname(os.path.dirname(os.path.realpath(__file__)))
sys.path.insert(0, os.path.join(TREE, "tests", "console"))

# pylint: disable=wrong-import-position
from browser import WIDE, Browser  # noqa: E402
from figures import join  # noqa: E402
from office import Office  # noqa: E402

VISITS = 21

FIRST_PAINT = "return performance.getEntriesByName('first-contentful-paint')[0]?.startTime"
WEIGHT = """
    return [...performance.getEntriesByType("navigation"), ...performance.getEntriesByType("resource")]
        .reduce((sum, each) => sum + each.transferSize, 0);"""


class OneWord(http.server.BaseHTTPRequestHandler):
    def do_GET(self):  # pylint: disable=invalid-name
        page = b"<!doctype html><title>One word</title><p>Office"
        self.send_response(200)
        self.send_header("Content-Type", "text/html")
        self.send_header("Content-Length", str(len(page)))
        self.end_headers()
        self.wfile.write(page)

    def log_message(self, *_):  # pylint: disable=arguments-differ
        pass


def first_paint(browser):
    return browser.until("the first paint", lambda: browser.run(FIRST_PAINT))


def measured(browser, office):
    paints, bare_paints, weights = [], [], []
    with http.server.ThreadingHTTPServer(("127.0.0.1", 0), OneWord) as bare:
        threading.Thread(target=bare.serve_forever, daemon=True).start()
        for _ in range(VISITS):
            browser.driver.get("about:blank")
            browser.open(office.url)
            paints.append(first_paint(browser))
            weights.append(browser.run(WEIGHT) / 1000)
            browser.driver.get("about:blank")
            browser.driver.get(f"http://127.0.0.1:{bare.server_port}/")
            bare_paints.append(first_paint(browser))
        bare.shutdown()
    return statistics.median(paints), statistics.median(bare_paints), max(weights)


def figure(name, value, unit, peer=None, peer_value=None):
    print(f"{name:24} {value:10.3f} {unit}" + (f" {peer} {peer_value:10.3f}" if peer else ""), flush=True)
    return {"name": name, "value": value, "unit": unit, "peer": peer, "peerValue": peer_value,
            "ratio": value / peer_value if peer else None}


def main():
    build = os.path.realpath(sys.argv[1])
    browser = Browser(os.path.join(build, "benchmarks", "console"))
    try:
        with Office(os.path.join(build, "office", "zelkovanta-office")) as office:
            browser.resize(WIDE)
            browser.driver.execute_cdp_cmd("Network.enable", {})
            browser.driver.execute_cdp_cmd("Network.setCacheDisabled", {"cacheDisabled": True})
            for room in range(1, 5):
                office.command("send", "--room", f"Room {room}", "--type", "ready")
            paint, bare_paint, weight = measured(browser, office)
    finally:
        browser.close()
    figures = [figure("console.first_paint", paint, "ms", "one_word", bare_paint), figure("console.weight", weight, "KB")]
    if len(sys.argv) > 2:
        join(figures, sys.argv[2])
    return 0


sys.exit(main())
