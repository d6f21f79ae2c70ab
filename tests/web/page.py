"""Tests the page build/web/robot.html in Chromium, and saves pictures of it in build/web."""

import json
import pathlib
import shlex
import statistics
import subprocess
import tempfile
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

TOP = pathlib.Path(__file__).resolve().parents[2]
URL = (TOP / "build/web/robot.html").as_uri()
LOADED = "#root=0,0,0.75,0,0,0&RShoulderPitch=0.25&RElbowRoll=0.5&wrench=RWristYaw,1,-10,2,0.5,0,0&base=KneePitch"
HANGING = "#root=1,-2,0.6,0.3,-1,2&HeadYaw=-1.25&LElbowRoll=-0.7&HipPitch=0.9&wrench=LWristYaw,0,5,0,0,1,0&base=Torso"
FLAGS = """--headless=new --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking
  --disable-component-update --disable-sync --use-angle=swiftshader --enable-unsafe-swiftshader --hide-scrollbars"""
BAD_LOGS = {
    "time,HeadYaw,Nose\n0,0,0\n": 'line 1, column 3: there is no joint "Nose"',
    "HeadYaw\n0\n": 'line 1: the column "time" is missing',
    "time,x,x\n0,0,0\n": 'line 1, column 3: the column "x" occurs twice',
    "time,x\n": "line 2: there is no row of values",
    "time,x,HeadYaw\n0,1,2\n1,1\n": "line 3, column 3 (HeadYaw): the value is missing",
    "time,x\n0,1\n1,1,5\n": "line 3, column 3: the first line does not name this column",
    "time,x\r\n0,1\r\n1,1e\r\n": 'line 3, column 2 (x): "1e" is not a number',
    "time,x\n0,\n": 'line 2, column 2 (x): "" is not a number',
    "x,time\n0,1\n0,0.5\n": "line 3, column 2 (time): the time runs backwards",
}


def start(*flags):
    options = webdriver.ChromeOptions()
    for flag in (*FLAGS.split(), *flags):
        options.add_argument(flag)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    return webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)


class Page(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        profile = tempfile.TemporaryDirectory()
        cls.addClassCleanup(profile.cleanup)
        cls.browser = start(f"--user-data-dir={profile.name}")
        cls.addClassCleanup(cls.browser.quit)
        cls.browser.get("about:blank")
        cls.browser.get_log("performance")  # leaves out what the browser loads before

    def setUp(self):
        self.open("")

    def tearDown(self):
        """No page reports an error, and none asks for anything but itself."""
        errors = [entry["message"] for entry in self.browser.get_log("browser") if entry["level"] == "SEVERE"]
        self.assertEqual(errors, [])
        events = [json.loads(entry["message"])["message"] for entry in self.browser.get_log("performance")]
        urls = {event["params"]["request"]["url"] for event in events if event["method"] == "Network.requestWillBeSent"}
        self.assertEqual({url for url in urls if not url.startswith(("data:", URL))}, set())

    def open(self, address, width=1200, height=800, dark=False, telephone=False):
        scheme = {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [scheme]})
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
            "width": width, "height": height, "deviceScaleFactor": 2 if telephone else 1, "mobile": telephone})
        self.browser.get("about:blank")
        self.browser.get(URL + address)
        self.until("return window.page !== undefined")
        self.settle()

    def js(self, script, *arguments):
        return self.browser.execute_script(script, *arguments)

    def until(self, script):
        WebDriverWait(self.browser, 20).until(lambda _: self.js(script))

    def settle(self):
        """Waits until what was asked for has been drawn."""
        self.browser.execute_async_script("requestAnimationFrame(() => requestAnimationFrame(arguments[0]))")

    def element(self, name):
        return self.browser.find_element("id", name)

    def unfold(self):
        self.js("for (const part of document.querySelectorAll('details')) part.open = true")
        self.settle()

    def report(self):
        """What lumo-inspect prints in the state of the page, by the command that the page shows."""
        self.unfold()
        command = shlex.split(self.element("Command").text)[1:]
        return json.loads(subprocess.check_output([TOP / "build/release/bin/lumo-inspect", *command, "--format", "json"]))

    def shown(self, selector):
        return self.js("return [...document.querySelectorAll(arguments[0])].map((e) => e.value || e.textContent)", selector)

    def assert_shown(self, texts, values):
        self.assertEqual(len(texts), len(values))
        for text, value in zip(texts, values):
            rounding = 0.5001 * 10 ** -len(text.partition(".")[2])
            self.assertLessEqual(abs(float(text) - value), rounding, f"{text} is shown, but lumo-inspect prints {value}")

    def test_digest(self):
        digest = self.js("return new page.code.Robot().digest(2000)")
        self.assertEqual(digest, (TOP / "tests/digest.txt").read_text())

    def test_numbers(self):
        for address in ("", LOADED, HANGING):
            with self.subTest(address):
                self.open(address)
                report = self.report()
                poses = [body["position"] + body["rotation"] for body in report["bodies"]]
                self.assert_shown(self.shown("#com output"), report["com"])
                self.assert_shown(self.shown("#torques output"), [joint["torque"] for joint in report["joints"]])
                self.assert_shown(self.shown("#state [type=number]")[6:], [joint["position"] for joint in report["joints"]])
                self.assert_shown(self.shown("#poses td"), sum(poses, []))
                for entry, key in (((16, 16), ""), ((16, 17), Keys.RIGHT), ((15, 17), Keys.UP)):
                    self.element("matrix").send_keys(key)
                    value = float(self.element("entry").text.split(" ")[2])
                    self.assertEqual(value, report["generalized_mass"][entry[0]][entry[1]])
                for body in range(16):
                    self.element("scene").send_keys("n")
                    R, mass = report["bodies"][body]["rotation"], report["bodies"][body]["mass"]
                    pose = [x for i in range(3) for x in (*R[3 * i:3 * i + 3], report["bodies"][body]["position"][i])]
                    self.assert_shown(self.shown("#body td"), [mass, *pose, *([R[2], R[5], R[8]] if body else [])])

    def test_torques_hold_the_base(self):
        """The torques that the base holds are those of the tree when it hangs from the torso, with the ground's wrench."""
        self.open(LOADED.replace("KneePitch", "RWristYaw"))
        held = self.report()
        self.assertNotEqual(held["joints"][14]["torque"], 0)
        self.assertAlmostEqual(held["joints"][0]["torque"], 0, 4)

    def test_keys_move_the_hand(self):
        place = "return [12, 13, 14].map((i) => page.scene.bodies[15].frame.matrixWorld.elements[i])"
        self.open(LOADED)
        before = self.js(place)
        self.element("range-RShoulderPitch").send_keys(*[Keys.RIGHT] * 20)
        self.settle()
        after = self.js(place)
        self.assertGreater(max(abs(a - b) for a, b in zip(before, after)), 0.02)
        self.assertEqual(self.shown("#RShoulderPitch"), ["0.45"])
        for value, expected in zip(after, self.report()["bodies"][15]["position"]):
            self.assertAlmostEqual(value, expected, 6)
        self.until("return location.hash.includes('RShoulderPitch=0.45')")
        self.element("scene").send_keys(Keys.CONTROL + "z")
        self.settle()
        self.assertEqual(self.js(place), before)

    def test_address(self):
        self.open(HANGING)
        self.assertEqual(self.js("return location.hash"), HANGING)
        self.js("location.hash = '#root=0,0,1,0,0,0&Nose=1'")
        self.until("return message.textContent !== ''")
        self.assertEqual(self.element("message").text, 'The address is wrong at "Nose=1".')
        self.assertEqual(self.shown("#LElbowRoll"), ["-0.7"])

    def test_logs(self):
        file = TOP / "docs/example-log.csv"
        rows = [[float(cell) for cell in line.split(",")] for line in file.read_text().splitlines()[1:]]
        self.element("file").send_keys(str(file))
        self.until("return Number(scrub.value) > 1")
        self.assertGreater(len({pixel for pixel in self.js(
            "return [...curves.getContext('2d').getImageData(0, 0, curves.width, curves.height).data]")}), 50)
        self.element("play").click()
        self.js("scrub.value = 2; scrub.dispatchEvent(new Event('input'))")
        self.settle()
        row = max((row for row in rows if row[0] <= 2), key=lambda row: row[0])
        self.assert_shown(self.shown("#state [type=number]")[6:], row[2:])
        state = self.shown("#state [type=number]")
        for text, message in BAD_LOGS.items():
            self.js("page.open(arguments[0], 'bad.csv')", text)
            self.assertEqual(self.element("message").text, f"bad.csv: {message}.")
            self.assertEqual(self.shown("#state [type=number]"), state)
            self.assertTrue(self.element("log").is_displayed())

    def test_speed(self):
        """A picture takes at most 4 ms of the script's time, and a log of 100,000 rows loads within 2 s."""
        self.unfold()
        times = self.js("""return Array.from({length: 300}, (_, i) => {
          const state = page.code.state, begin = performance.now();
          page.set({q: Array(21).fill(i / 300)});
          page.show();
          return performance.now() - begin;
        })""")
        with open(TOP / "docs/example-log.csv") as file:
            head, *rows = file.read().splitlines()
        load = self.js("""
          const rows = Array.from({length: 1e5}, (_, i) => 0.01 * i + arguments[1][i % arguments[1].length]);
          const begin = performance.now();
          page.open([arguments[0], ...rows].join('\\n'), 'long.csv');
          return performance.now() - begin;
        """, head, [row[row.index(","):] for row in rows])
        self.assertEqual(self.element("message").text, "")
        print(f"A picture takes {statistics.median(times):.1f} ms; a log of 100,000 rows loads in {load / 1000:.2f} s.")
        self.assertLess(statistics.median(times), 4)
        self.assertLess(load, 2000)

    def test_pictures(self):
        def save(name):
            self.settle()
            self.browser.save_screenshot(str(TOP / f"build/web/{name}.png"))
        self.element("RElbowRoll").click()
        save("light")
        self.open(LOADED, dark=True)
        self.unfold()
        save("dark")
        self.open("", 390, 844, telephone=True)
        self.assertEqual(self.js("return document.documentElement.scrollWidth"), 390)
        save("telephone")
        self.open("")
        self.element("example").click()
        self.until("return Number(scrub.value) > 1.5")
        save("log")

    def test_missing(self):
        browser = start("--disable-3d-apis")
        self.addCleanup(browser.quit)
        browser.get(URL)
        self.assertEqual(browser.find_element("tag name", "body").text,
                         "This page needs WebGL, which this browser does not offer.")
        browser.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": "delete window.WebAssembly"})
        browser.refresh()
        self.assertEqual(browser.find_element("tag name", "body").text,
                         "This page needs WebAssembly, which this browser does not offer.")


if __name__ == "__main__":
    unittest.main()
