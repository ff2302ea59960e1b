"""A person before the office's console: a headless Chromium that is clicked and read."""

import os

from selenium import webdriver
from selenium.common.exceptions import StaleElementReferenceException, TimeoutException
from selenium.webdriver.chrome.options import Options
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import Select, WebDriverWait

PATIENCE = 20
WIDE = (1366, 850)
NARROW = (390, 844)


class Browser:
    def __init__(self, folder):
        self.folder = folder
        os.makedirs(folder, exist_ok=True)
        options = Options()
        options.binary_location = "/usr/bin/chromium"
        for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage", "--no-first-run",
                         "--disable-background-networking", "--disable-component-update", "--disable-sync",
                         f"--user-data-dir={os.path.join(folder, 'profile')}", "about:blank"):
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL"})
        self.driver = webdriver.Chrome(options=options, service=Service("/usr/bin/chromedriver"))

    def close(self):
        self.driver.quit()

    def resize(self, size, color="light"):
        width, height = size
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": 1, "mobile": size == NARROW})
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {
            "features": [{"name": "prefers-color-scheme", "value": color}]})

    def open(self, url):
        self.driver.get(url)
        self.until("the page is live", lambda: self.find("#connection[data-state=live]"))

    def until(self, what, condition):
        """Waits until the condition gives something, and gives that."""
        try:
            return WebDriverWait(self.driver, PATIENCE, poll_frequency=0.02,
                                 ignored_exceptions=(StaleElementReferenceException,)).until(lambda _: condition())
        except TimeoutException:
            picture = os.path.join(self.folder, "in_vain.png")
            self.driver.save_screenshot(picture)
            raise AssertionError(f"Waited {PATIENCE} seconds in vain: {what}. See {picture}.") from None

    def find_all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def find(self, selector):
        found = self.find_all(selector)
        return found[0] if found else None

    def there(self, selector):
        return self.until(f"{selector} is there", lambda: self.find(selector))

    def gone(self, selector):
        self.until(f"{selector} is gone", lambda: not self.find_all(selector))

    def click(self, selector):
        """Where a person would click: in sight, enabled, and not covered."""
        button = self.until(f"{selector} can be clicked", lambda: next(
            (each for each in self.find_all(selector) if each.is_displayed() and each.is_enabled()), None))
        self.driver.execute_script("arguments[0].scrollIntoView({block: 'center'})", button)
        button.click()

    def type(self, selector, text):
        field = self.there(selector)
        self.driver.execute_script("arguments[0].scrollIntoView({block: 'center'})", field)
        field.clear()
        field.send_keys(text)

    def choose(self, selector, text):
        """An option by what a person reads."""
        self.until(f"{selector} offers {text}", lambda: any(
            option.text == text for option in self.find_all(f"{selector} option")))
        Select(self.find(selector)).select_by_visible_text(text)

    def text(self, selector):
        found = self.find(selector)
        return found.text if found else ""

    def reads(self, selector, text):
        self.until(f"{selector} reads \"{text}\", not \"{self.text(selector)}\"", lambda: text in self.text(selector))

    def run(self, script, *arguments):
        return self.driver.execute_script(script, *arguments)

    def complaints(self):
        """What the browser's console holds since the last look, of pages that are not the browser's own."""
        return [entry["message"] for entry in self.driver.get_log("browser")
                if not entry["message"].startswith("chrome://")]

    def open_details(self):
        self.run("for (const each of document.querySelectorAll('details')) each.open = true")

    def picture(self, name):
        """Of the whole page."""
        size = self.run("return [innerWidth, document.documentElement.scrollHeight, innerHeight]")
        mobile = size[0] == NARROW[0]
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": size[0], "height": size[1], "deviceScaleFactor": 1, "mobile": mobile})
        self.driver.save_screenshot(os.path.join(self.folder, name + ".png"))
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": size[0], "height": size[2], "deviceScaleFactor": 1, "mobile": mobile})
