"""The office's web console in a browser without a window, worked with the mouse and the keyboard as a person does."""

import os

from selenium import webdriver
from selenium.common.exceptions import StaleElementReferenceException, WebDriverException
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.support.ui import Select

from processes import DemoError

BROWSER, DRIVER = "/usr/bin/chromium", "/usr/bin/chromedriver"


class Console:
    def __init__(self, stage):
        self.stage = stage
        self.processes = stage.processes
        for program in (BROWSER, DRIVER):
            if not os.access(program, os.X_OK):
                raise DemoError(f"{program} is missing, with which the office's console is played.")
        # The driver listens on loopback, where no proxy leads.
        for name in ("no_proxy", "NO_PROXY"):
            os.environ[name] = stage.environment[name] = "127.0.0.1,localhost"
        options = webdriver.ChromeOptions()
        options.binary_location = BROWSER
        for argument in ("--headless=new", "--window-size=1280,1000", "--no-first-run", "--disable-gpu",
                         "--disable-dev-shm-usage", "--disable-background-networking", "--disable-component-update",
                         f"--user-data-dir={os.path.join(stage.short, 'browser')}"):
            options.add_argument(argument)
        if os.geteuid() == 0:
            options.add_argument("--no-sandbox")  # The browser's own sandbox is not for root.
        log = os.path.join(stage.folder, "logs", "browser.log")
        self.driver = webdriver.Chrome(service=Service(DRIVER, log_path=log, env=stage.environment), options=options)
        self.driver.set_page_load_timeout(30)

    def __enter__(self):
        return self

    def __exit__(self, *_):
        try:
            self.driver.quit()
        except WebDriverException:
            pass  # It has gone by itself.

    def open(self):
        self.driver.get(self.stage.console_address)

    # What the page shows.

    def _all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def _one(self, selector):
        return self.processes.until(f"the console shows {selector}", lambda: next(iter(self._all(selector)), None),
                                    interval=0.001)

    def is_live(self):
        return bool(self._all("#connection[data-state=live]"))

    def waiting(self):
        """The setup requests in the page, newest last."""
        return self._attributes("#waiting-list > li", "data-request")

    def _attributes(self, selector, name):
        try:
            return [element.get_attribute(name) for element in self._all(selector)]
        except StaleElementReferenceException:
            return []  # The page changed between the two questions.

    def refusal(self):
        texts = [element.text for element in self._all("#message:not([hidden]) p")]
        return texts[0] if texts else None

    def take_picture(self, name):
        self.driver.save_screenshot(os.path.join(self.stage.folder, "screenshots", f"console-{name}.png"))

    # The admin.

    def _fill_placement(self, form, role, name=None, room=None, member=None):
        Select(form.find_element(By.NAME, "role")).select_by_value(role)
        if room:
            Select(form.find_element(By.NAME, "room")).select_by_visible_text(room)
        if member:
            Select(form.find_element(By.NAME, "member")).select_by_visible_text(member)
        if name:
            form.find_element(By.NAME, "name").send_keys(name)
        return form.find_element(By.CSS_SELECTOR, "button.main")

    def placement(self, request, role, **where):
        """Fills in what a waiting computer shall be; gives the button that approves it."""
        return self._fill_placement(self._one(f'#waiting-list > li[data-request="{request}"] form'), role, **where)

    def make_code(self, role, **where):
        self._fill_placement(self._one("#code-form"), role, **where).click()
        return self.processes.until("the console shows a pairing code", lambda: self._one("#code-value").text)

    def button_of_computer(self, name, action):
        return self._one(f'#computer-list > li[data-name="{name}"] [data-action={action}]')

    # The phone of one member.

    def pick_up_phone(self, member):
        picker = Select(self._one("#phone-member"))
        picker.select_by_visible_text(member)
        chosen = picker.first_selected_option.get_attribute("value")
        self.processes.until(f"the phone is {member}'s", lambda: self._all(f'#phone[data-member="{chosen}"]'))

    def scan_button(self, station):
        """The button that scans a station's code; none while the station shows no code."""
        try:
            for row in self._all("#station-list > li"):
                button = row.find_element(By.CSS_SELECTOR, "[data-action=scan]")
                if station in row.text and button.is_displayed() and button.is_enabled():
                    return button
        except StaleElementReferenceException:
            pass  # The page changed between the two questions.
        return None

    def call_button(self, action):
        """The button on the first call that rings; none without a call."""
        return next(iter(self._all(f"#phone-signals > li [data-action={action}]")), None)
