#!/usr/bin/env python3
"""Opens reports in a headless Chromium and uses them as a reader does.

    report_in_browser.py ARTIFACT_HOST PLUGIN DEMO_VOLUME [unittest's arguments]

Ends with code 77 where Chromium, its driver or Selenium is missing.
"""

import base64
import contextlib
import json
import os
import pathlib
import shutil
import sqlite3
import subprocess
import sys
import tempfile
import unittest

try:
    from selenium import webdriver
    from selenium.common.exceptions import NoAlertPresentException, WebDriverException
    from selenium.webdriver.common.by import By
    from selenium.webdriver.common.keys import Keys
    from selenium.webdriver.support.ui import WebDriverWait
except ImportError:
    print("skipped: python3-selenium is missing")
    sys.exit(77)

DATABASE = "Artifacts_Result/Windows_Installed_Applications/Windows_Installed_Applications.sqlite"
HOSTILE = {
    "markup": "<img src=x onerror=alert(1)>",
    "script end": "</script><script>alert(2)</script>",
    "comment": "<!--<script>alert(3)",
    "attribute": "\" onmouseover=\"alert(4)\" x=\"'",
    "formula": "=HYPERLINK(\"http://127.0.0.1/\")",
    "line breaks": "one\r\ntwo",
    "reordered": "invoice\u202efdp.exe",
    "nul": "before\0after",
    "separators": "a\u2028b\u2029c",
    "terminal": "\x1b]0;owned\x07",
    "template": "{{script}} ${1} `",
    "number": "9007199254740993",
}
SHOWN = {
    "line breaks": r"one\x0d\x0atwo",
    "reordered": r"invoice\u202efdp.exe",
    "nul": r"before\x00after",
    "separators": r"a\u2028b\u2029c",
    "terminal": r"\x1b]0;owned\x07",
}


def find_programs():
    browser = next(filter(None, map(shutil.which, ("chromium", "chromium-browser", "google-chrome"))), None)
    driver = shutil.which("chromedriver")
    if not browser or not driver:
        print("skipped: chromium or chromedriver is missing")
        sys.exit(77)
    return browser, driver


def browser_with_profile(folder):
    browser, driver = find_programs()
    options = webdriver.ChromeOptions()
    options.binary_location = browser
    for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                     "--window-size=1280,1000", f"--user-data-dir={folder}"):
        options.add_argument(argument)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    return webdriver.Chrome(service=webdriver.chrome.service.Service(driver), options=options)


def try_browser():
    """A browser without fonts, or one that its machine does not let run, shows no page at all."""
    with tempfile.TemporaryDirectory(prefix="browser-", ignore_cleanup_errors=True) as folder:
        try:
            browser = browser_with_profile(folder)
            browser.get("data:text/html,<title>shown</title><p>text")
            title = browser.title
            browser.quit()
        except WebDriverException as error:
            title = str(error.msg)
    if title != "shown":
        print(f"skipped: the browser shows no page here: {title}")
        sys.exit(77)


class ReportTest(unittest.TestCase):
    """One browser and one demonstration volume for all tests; each opens its report anew."""

    programs = ()

    @classmethod
    def setUpClass(cls):
        cls.folder = pathlib.Path(tempfile.mkdtemp(prefix="report-"))
        cls.addClassCleanup(shutil.rmtree, cls.folder, ignore_errors=True)
        host, plugin, demo_volume = cls.programs
        cls.host = host
        volume = cls.folder / "volume"
        subprocess.run([demo_volume, volume], check=True, stdout=subprocess.DEVNULL)
        subprocess.run([host, "extract", volume, "--result", cls.folder / "result", "--plugin", plugin, "--quiet"],
                       check=True, capture_output=True)
        cls.database = cls.folder / "result" / DATABASE
        cls.start_browser()

    @classmethod
    def start_browser(cls):
        cls.browser = browser_with_profile(tempfile.mkdtemp(prefix="profile-", dir=cls.folder))
        cls.addClassCleanup(cls.browser.quit)

    # What reports are made of.

    def write_report(self, result, *options, code=0):
        file = self.folder / f"{self.id()}.html"
        run = subprocess.run([self.host, "report", result, "-o", file, *options], capture_output=True, text=True)
        self.assertEqual(run.returncode, code, run.stderr)
        return file

    def hostile_result(self):
        file = self.folder / "hostile.sqlite"
        file.unlink(missing_ok=True)
        shutil.copy(self.database, file)
        with contextlib.closing(sqlite3.connect(file)) as database, database:
            database.execute("DELETE FROM previously_executed_apps")
            for number, text in enumerate(HOSTILE.values()):
                database.execute(
                    "INSERT INTO previously_executed_apps (system_account, exename, runcount, lastruntime, "
                    "source_file, source_count_name) VALUES (?, ?, ?, ?, ?, 'Source1')",
                    (text if number % 2 else "anna", text, 9007199254740993, -1 if number % 3 else 1 << 62, text))
            database.execute("UPDATE previously_executed_apps SET notes = CAST(x'41ff' AS TEXT), tags_icon = x'00ff'")
            database.execute("UPDATE previously_executed_apps SET notes = ? WHERE INT = 1", ("x" * (8 << 20),))
        return file

    # What a reader does.

    def open(self, file):
        """A browser that its machine has ended is started once more; one that the page ends fails again."""
        try:
            self.show(file)
        except WebDriverException:
            self.start_browser()
            self.show(file)

    def show(self, file):
        self.browser.get_log("performance")
        self.browser.get_log("browser")
        self.browser.get(file.as_uri())

    def find(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def all(self, selector):
        return self.browser.find_elements(By.CSS_SELECTOR, selector)

    def wait(self, condition):
        WebDriverWait(self.browser, 20, poll_frequency=0.05).until(lambda _: condition())

    def count(self):
        return self.find(".table-view .count").text

    def cells(self, column):
        names = [head.text.rstrip(" ▲▼") for head in self.all("#panel thead th")]
        place = names.index(column) + 1
        return [cell.text for cell in self.all(f"#panel tbody tr td:nth-child({place})")]

    def tab(self, table):
        return self.find(f"[role=tab][data-table='{table}']")

    def select(self, table):
        self.tab(table).click()

    def search(self, text):
        field = self.find("#panel input[type=search]")
        field.clear()
        before = self.count()
        field.send_keys(text)
        self.wait(lambda: self.count() != before)

    def click_head(self, name):
        next(head for head in self.all("#panel thead th button") if head.text.rstrip(" ▲▼") == name).click()

    def messages(self):
        return [entry["message"] for entry in self.browser.get_log("browser")]

    def network(self, method):
        messages = [json.loads(entry["message"])["message"] for entry in self.browser.get_log("performance")]
        return [message["params"] for message in messages if message["method"] == method]

    def requested(self):
        urls = [params["request"]["url"] for params in self.network("Network.requestWillBeSent")]
        return [url for url in urls if not url.startswith("data:")]

    def embedded(self, name):
        return self.browser.execute_script(
            "return [...document.querySelectorAll('script[type=\"application/json\"]')]"
            ".map(each => JSON.parse(each.textContent)).find(each => each.name === arguments[0])", name)

    # The tests.

    def test_it_loads_nothing_and_complains_of_nothing(self):
        file = self.write_report(self.folder / "result")
        self.open(file)
        self.assertEqual(self.messages(), [])
        self.assertEqual(self.requested(), [file.as_uri()])

    def test_it_may_load_nothing(self):
        self.open(self.write_report(self.folder / "result"))
        self.browser.execute_script("""
            const image = new Image(); image.src = 'http://127.0.0.1:9/x.png'; document.body.append(image);
            const script = document.createElement('script'); script.textContent = 'window.injected = 1'; document.body.append(script);
            fetch('http://127.0.0.1:9/y').catch(() => {});""")
        messages = []
        self.wait(lambda: len(messages.extend(self.messages()) or messages) >= 3)
        for refused in ("127.0.0.1:9/x.png", "127.0.0.1:9/y", "inline script"):
            self.assertTrue(any(refused in message and "violates" in message for message in messages), messages)
        self.assertIsNone(self.browser.execute_script("return window.injected ?? null"))

    def tables(self):
        with contextlib.closing(sqlite3.connect(self.database)) as database:
            return [row[0] for row in database.execute(
                "SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite_%'")]

    def test_it_holds_every_row(self):
        self.open(self.write_report(self.folder / "result"))
        with contextlib.closing(sqlite3.connect(self.database)) as database:
            database.row_factory = sqlite3.Row
            for name in self.tables():
                packed = self.embedded(name)
                rows = database.execute(f'SELECT * FROM "{name}" ORDER BY INT').fetchall()
                self.assertEqual(packed["rows"], len(rows))
                for column in packed["columns"]:
                    if column["isDerived"]:
                        continue
                    values, places = column["values"], column["places"]
                    shown = [values[places[row] if places else 0 if len(values) == 1 else row] for row in range(len(rows))]
                    self.assertEqual(shown, [row[column["name"]] for row in rows], column["name"])

    def test_facts_come_first(self):
        self.open(self.write_report(self.folder / "result"))
        facts = self.find("#facts").text
        record = json.loads((self.database.parent / "run.json").read_text(encoding="utf-8"))["runs"][0]
        self.browser.execute_script("document.querySelectorAll('details').forEach(each => { each.open = true; })")
        unfolded = self.find("#facts").text
        for text in (record["source"]["volume"], record["begin"], record["library"]["sha256"], record["outcome"],
                     *record["remarks"]):
            self.assertIn(text, facts)
        for file in record["files"]:
            self.assertIn(file["path"], unfolded)
            self.assertIn(file["sha256_before"], unfolded)

    def test_search_sort_and_account(self):
        self.open(self.write_report(self.folder / "result"))
        self.select("previously_executed_apps")
        with contextlib.closing(sqlite3.connect(self.database)) as database:
            total, annas, most = database.execute(
                "SELECT count(*), sum(system_account = 'anna'), max(runcount) FROM previously_executed_apps").fetchone()
        self.assertEqual(self.count(), f"Rows 1 to {total} of {total}")
        self.click_head("runcount")
        counts = [int(text) for text in self.cells("runcount")]
        self.assertEqual(counts, sorted(counts))
        self.click_head("runcount")
        self.assertEqual(int(self.cells("runcount")[0]), most)
        self.assertEqual(self.find("#panel th[aria-sort]").get_attribute("aria-sort"), "descending")
        accounts = self.find("#panel select[aria-label=Account]")
        accounts.find_element(By.XPATH, "option[text()='anna']").click()
        self.assertEqual(self.count(), f"Rows 1 to {annas} of {annas}, out of {total}")
        self.search("NOTEPAD")
        self.assertTrue(all("notepad" in text.lower() for text in self.cells("exename_resolved")))
        self.search("nothing has this text")
        self.assertEqual(self.count(), f"No row of {total}")

    def test_pages_and_details(self):
        self.open(self.write_report(self.folder / "result"))
        self.find("#panel select[aria-label='Rows of a page'] option[value='50']").click()
        self.select("timeline")
        self.find("#panel select[aria-label='Rows of a page'] option[value='50']").click()
        total = int(self.count().split()[-1])
        self.assertGreater(total, 50)
        self.assertFalse(self.find("#panel .controls button:not([hidden])").is_enabled())
        next(button for button in self.all("#panel button") if button.text == "Next page").click()
        self.assertEqual(self.count(), f"Rows 51 to {total} of {total}")
        self.assertEqual(len(self.all("#panel tbody tr")), total - 50)
        row = self.find("#panel tbody tr")
        row.send_keys(Keys.ENTER)
        self.assertIn("source_file", self.find("#panel .details").text)
        self.find("#panel tbody tr").send_keys(Keys.ARROW_DOWN)
        self.assertEqual(self.browser.switch_to.active_element, self.all("#panel tbody tr")[1])

    def test_a_program_leads_to_its_rows(self):
        self.open(self.write_report(self.folder / "result"))
        self.find("#panel tbody tr").click()
        cited = self.find("#panel .details dd button")
        table, number = cited.text.split(":")
        cited.click()
        self.assertEqual(self.tab(table).get_attribute("aria-selected"), "true")
        details = self.find("#panel .details").text.split("\n")
        self.assertEqual(details[details.index("INT") + 1], number)

    def test_the_time_line_zooms_and_lists(self):
        self.open(self.write_report(self.folder / "result"))
        shown = lambda: self.find("#time-line .count").text
        whole = shown()
        next(button for button in self.all("#time-line button") if button.text == "+").click()
        self.assertNotEqual(shown(), whole)
        picture = self.find("#time-line svg")
        picture.send_keys("0")
        self.assertEqual(shown(), whole)
        picture.send_keys(Keys.ENTER)
        self.assertEqual(self.tab("timeline").get_attribute("aria-selected"), "true")
        self.assertEqual(whole.split()[0], self.count().split()[-1])
        rectangle = picture.rect
        drag = webdriver.ActionChains(self.browser).move_to_element_with_offset(picture, 0, 0)
        drag.click_and_hold().move_by_offset(int(rectangle["width"] / 4), 0).release().perform()
        self.assertNotEqual(shown(), whole)

    def test_pictures_count_what_the_tables_hold(self):
        self.open(self.write_report(self.folder / "result"))
        with contextlib.closing(sqlite3.connect(self.database)) as database:
            days = dict(database.execute(
                "SELECT date(lastruntime, 'unixepoch') || system_account, count(*) FROM previously_executed_apps "
                "WHERE lastruntime > 0 GROUP BY 1").fetchall())
        self.browser.execute_script("document.querySelectorAll('details').forEach(each => { each.open = true; })")
        lines = [[cell.text for cell in line.find_elements(By.TAG_NAME, "td")]
                 for line in self.all("#pictures figure:first-of-type tbody tr")]
        self.assertEqual({line[0] + line[1]: int(line[2]) for line in lines}, days)

    def test_a_bar_lists_the_rows_of_its_lane(self):
        self.open(self.write_report(self.folder / "result"))
        bar = self.find("#time-line svg rect.bar")
        told = bar.find_element(By.TAG_NAME, "title").get_attribute("textContent")
        webdriver.ActionChains(self.browser).scroll_to_element(bar).move_to_element(bar).click().perform()
        self.assertEqual({told.split(":")[0]}, set(self.cells("event")))
        self.assertEqual(len(self.cells("event")), int(told.split(": ")[1].split()[0]))

    def test_what_the_report_lacks_comes_first(self):
        damaged = self.folder / "damaged.sqlite"
        shutil.copy(self.database, damaged)
        with contextlib.closing(sqlite3.connect(damaged)) as database, database:
            database.executemany("INSERT INTO registered_apps (key_name) VALUES (?)", [("x" * 500,)] * 2000)
        with open(damaged, "r+b") as file:
            file.seek(-(200 << 10), os.SEEK_END)
            file.write(b"\xff" * (100 << 10))
        self.open(self.write_report(damaged, code=1))
        self.assertEqual(self.find("main > :first-child").get_attribute("id"), "ending")
        self.assertIn("table registered_apps cannot be read to its end", self.find("#ending").text)

    def test_foreign_tables_hide_nothing(self):
        foreign = self.folder / "foreign.sqlite"
        shutil.copy(self.database, foreign)
        with contextlib.closing(sqlite3.connect(foreign)) as database, database:
            for table in ("programs", "timeline", "a b"):
                database.execute(f'CREATE TABLE "{table}" (INT INTEGER PRIMARY KEY, rows, source_file, source_count_name)')
                database.execute(f'INSERT INTO "{table}" (rows) VALUES (\'hello a:1,2\')')
        self.open(self.write_report(foreign))
        tabs = self.all("[role=tab]")
        self.assertEqual(len(tabs), 2 + len(self.tables()) + 3)
        for tab in tabs[-3:]:
            tab.click()
            self.assertEqual(self.cells("rows"), ["hello a:1,2"])
            self.find("#panel tbody tr").click()
            self.assertIn("hello a:1,2", self.find("#panel .details").text)
        tabs[0].click()
        self.assertGreater(len(self.cells("program")), 10)

    def test_several_sources_are_told_apart(self):
        sources = self.folder / "sources.sqlite"
        shutil.copy(self.database, sources)
        with contextlib.closing(sqlite3.connect(sources)) as database, database:
            columns = "system_account, exename, runcount, lastruntime"
            database.execute(f"INSERT INTO previously_executed_apps ({columns}, source_count_name) "
                             f"SELECT {columns}, 'Source2' FROM previously_executed_apps WHERE system_account = 'anna'")
        self.open(self.write_report(sources))
        lanes = [label.text for label in self.all("#pictures figure:first-of-type svg > text:not(.faint)")]
        self.assertIn("anna, Source1", lanes)
        self.assertIn("anna, Source2", lanes)
        self.assertIn("Source2", self.cells("source_count_name"))

    def test_printing_unfolds_the_facts(self):
        self.open(self.write_report(self.folder / "result"))
        folded = lambda: len(self.all("#facts details:not([open])"))
        before = folded()
        self.assertGreater(before, 0)
        self.browser.execute_script("window.dispatchEvent(new Event('beforeprint'))")
        self.assertEqual(folded(), 0)
        self.browser.execute_script("window.dispatchEvent(new Event('afterprint'))")
        self.assertEqual(folded(), before)

    def test_themes_and_narrow_windows(self):
        self.open(self.write_report(self.folder / "result"))
        background = lambda: self.browser.execute_script("return getComputedStyle(document.body).backgroundColor")
        button = self.find("#theme")
        button.click()
        light = background()
        button.click()
        self.assertNotEqual(background(), light)
        for width in (1280, 360):
            self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                         {"width": width, "height": 800, "deviceScaleFactor": 1, "mobile": False})
            overhang = self.browser.execute_script(
                "return document.documentElement.scrollWidth - document.documentElement.clientWidth")
            self.assertLessEqual(overhang, 0, f"the page is wider than a window of {width}")
        self.browser.execute_cdp_cmd("Emulation.clearDeviceMetricsOverride", {})

    def test_it_prints(self):
        self.open(self.write_report(self.folder / "result"))
        printed = base64.b64decode(self.browser.print_page())
        self.assertTrue(printed.startswith(b"%PDF"))
        self.assertGreater(len(printed), 20_000)

    def test_everything_has_a_name(self):
        self.open(self.write_report(self.folder / "result"))
        tree = self.browser.execute_cdp_cmd("Accessibility.getFullAXTree", {})["nodes"]
        nameless = [node for node in tree if not node.get("ignored")
                    and node.get("role", {}).get("value") in ("button", "searchbox", "combobox", "checkbox", "tab", "img", "image")
                    and not node.get("name", {}).get("value")]
        self.assertEqual(nameless, [])

    def test_hostile_texts_are_texts(self):
        file = self.write_report(self.hostile_result())
        self.open(file)
        self.assertEqual(self.messages(), [])
        self.select("previously_executed_apps")
        shown = self.cells("exename_resolved")
        for kind, text in HOSTILE.items():
            # Names of programs are shown with one kind of slash.
            self.assertIn(SHOWN.get(kind, text).replace("/", "\\"), shown, kind)
        for row in self.all("#panel tbody tr"):
            row.click()
        with self.assertRaises(NoAlertPresentException):
            self.browser.switch_to.alert.accept()
        self.assertEqual(self.all("img, iframe, object, #tables script"), [])
        self.assertEqual(self.requested(), [file.as_uri()])
        self.browser.execute_script("document.querySelectorAll('details').forEach(each => { each.open = true; })")
        for table in ("programs", "timeline"):
            self.select(table)
        self.assertEqual(self.messages(), [])

    def test_what_is_no_text_is_marked(self):
        self.open(self.write_report(self.hostile_result()))
        self.select("previously_executed_apps")
        self.all("#panel tbody tr")[1].click()
        literals = [each.text for each in self.all("#panel .details .literal")]
        self.assertEqual(literals, ["x'00ff'", "CAST(x'41ff' AS TEXT)"])
        self.all("#panel tbody tr")[0].click()
        self.assertIn("(8388608 bytes)", self.find("#panel .details").text)
        self.assertIn("9007199254740993", self.find("#panel .details").text)

    def test_a_selection_says_so(self):
        self.open(self.write_report(self.folder / "result", "--user", "ANNA", "--tab", "previously_executed_apps"))
        facts = self.find("#facts").text
        self.assertIn("selected rows only", facts)
        self.assertIn("selected tables only", facts)
        self.assertEqual(len(self.all("[role=tab]")), 2)
        self.select("previously_executed_apps")
        self.assertEqual(set(self.cells("system_account")), {"anna"})


if __name__ == "__main__":
    if len(sys.argv) < 4:
        sys.exit(__doc__)
    ReportTest.programs = tuple(os.path.abspath(program) for program in sys.argv[1:4])
    try_browser()
    unittest.main(argv=[sys.argv[0], *sys.argv[4:]], verbosity=2)
