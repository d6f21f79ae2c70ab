"""Tests the page build/web/robot.html in Chromium, and saves pictures of it in build/web."""

import json
import pathlib
import shlex
import statistics
import subprocess
import sys
import unittest

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

TOP = pathlib.Path(__file__).resolve().parents[2]
URL = (TOP / "build/web/robot.html").as_uri()
LOG = TOP / "docs/example-log.csv"
LOADED = "#z=0.75&RShoulderPitch=0.25&RElbowRoll=0.5&fx=1&fy=-10&fz=2&tx=0.5&loaded=RWristYaw&base=KneePitch"
TURNED = ("#x=1&y=-2&z=0.6&roll=0.3&pitch=-1&yaw=2&HeadYaw=-1.25&LElbowRoll=-0.7&fy=5&ty=1"
          "&loaded=LWristYaw&base=LWristYaw")
JOINTS = "#state fieldset:nth-child(n+2) [type=number]"
FLAGS = """--headless=new --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking
  --disable-component-update --disable-sync --use-angle=swiftshader --enable-unsafe-swiftshader --hide-scrollbars"""
BAD_LOGS = {
    "time,HeadYaw,Nose\n0,0,0\n": 'line 1, column 3: there is no joint "Nose"',
    "time,x,x\n0,1,2\n": 'line 1, column 3: the column "x" is there twice',
    "time,x\n0,1,5\n": "line 2, column 3: there is no such column",
    "HeadYaw\n0\n": 'line 1: the column "time" is missing',
    "time,x,HeadYaw\n0,1,2\n1,1\n": "line 3, column 3 (HeadYaw): the value is missing",
    "time,x\r\n0,1\r\n1,1e\r\n": 'line 3, column 2 (x): "1e" is not a usable number',
    "time,x\n0,\n": 'line 2, column 2 (x): "" is not a usable number',
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
        cls.browser = start()
        cls.addClassCleanup(cls.browser.quit)
        cls.browser.get("about:blank")
        cls.browser.get_log("performance")  # leaves out what the browser itself has loaded

    def tearDown(self):
        """No page reports an error, and none asks for anything but itself."""
        self.assertEqual([entry for entry in self.browser.get_log("browser") if entry["level"] == "SEVERE"], [])
        events = [json.loads(entry["message"])["message"] for entry in self.browser.get_log("performance")]
        urls = [event["params"]["request"]["url"] for event in events if event["method"] == "Network.requestWillBeSent"]
        self.assertEqual([url for url in urls if not url.startswith(("data:", URL))], [])

    def open(self, address="", size=(1200, 800, 1), scheme="light"):
        metrics = dict(zip(("width", "height", "deviceScaleFactor"), size), mobile=size[2] > 1)
        self.browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", metrics)
        media = {"features": [{"name": "prefers-color-scheme", "value": scheme}]}
        self.browser.execute_cdp_cmd("Emulation.setEmulatedMedia", media)
        self.browser.get("about:blank")
        self.browser.get(URL + address)
        self.until("return window.page !== undefined")
        self.js("for (const part of document.querySelectorAll('details')) part.open = true")
        self.settle()

    def js(self, script, *arguments):
        return self.browser.execute_script(script, *arguments)

    def until(self, script):
        WebDriverWait(self.browser, 20).until(lambda _: self.js(script))

    def settle(self):
        """Waits until what was asked for has been drawn."""
        self.browser.execute_async_script("requestAnimationFrame(() => requestAnimationFrame(arguments[0]))")

    def report(self):
        """What lumo-inspect prints for the command that the page shows."""
        options = shlex.split(self.shown("#Command")[0])[1:] + ["--format", "json"]
        return json.loads(subprocess.check_output([TOP / "build/release/bin/lumo-inspect", *options]))

    def shown(self, selector):
        return self.js("return [...document.querySelectorAll(arguments[0])].map((e) => e.value || e.textContent)",
                       selector)

    def assert_shown(self, selector, values, error=0):
        texts = self.shown(selector)
        self.assertEqual(len(texts), len(values))
        for text, value in zip(texts, values):
            most = 0.5001 * 10 ** -len(text.partition(".")[2]) + error
            self.assertLessEqual(abs(float(text) - value), most, f"{text} is shown instead of {value}")

    def test_digest(self):
        self.open()
        expected = (TOP / "tests/digest.txt").read_text()
        self.assertEqual(self.js("return new page.code.Robot().digest(2000)"), expected)

    def test_numbers(self):
        for address in ("", LOADED, TURNED):
            self.open(address)
            report = self.report()
            self.assert_shown("#com output", report["com"])
            self.assert_shown("#torques output", [joint["torque"] for joint in report["joints"]])
            self.assert_shown(JOINTS, [joint["position"] for joint in report["joints"]])
            self.assert_shown("#poses td", sum((body["position"] + body["rotation"] for body in report["bodies"]), []))
            for i, j, key in ((16, 16, ""), (16, 17, Keys.RIGHT), (15, 17, Keys.UP)):
                self.browser.find_element("id", "matrix").send_keys(key)
                self.assertEqual(float(self.shown("#entry")[0].split()[2]), report["generalized_mass"][i][j])
            for body in report["bodies"][1:]:
                self.browser.find_element("id", body["name"]).click()
                R, p = body["rotation"], body["position"]
                self.assert_shown("#body td", [body["mass"], *R[:3], p[0], *R[3:6], p[1], *R[6:], p[2], *R[2::3]])

    def test_torques_at_rest(self):
        """Torques are linear in wrenches, so those of the weight and of the load are computed separately and added."""
        sys.path.insert(0, str(TOP / "python/examples"))
        from gravity_torques import holding_torques, lumo, np
        robot = lumo.Plugin().create()
        self.open(LOADED)
        robot.setJointAnglesPos([joint["position"] for joint in self.report()["joints"]])
        robot.computeFwdKinematics()
        base, loaded = robot.getPose("KneePitch").copy(), robot.getPose("RWristYaw").copy()
        torques = holding_torques(robot, "KneePitch", base).copy()
        for wrench, sign in (np.zeros(6), -1), (np.array([1, -10, 2, 0.5, 0, 0]), 1):
            robot.setExternalWrench("RWristYaw", wrench)
            robot.setExternalWrench("KneePitch", -wrench, np.linalg.inv(base) @ loaded)
            robot.computeInverseDynamics()
            torques += sign * robot.getJointAnglesTorque()
        self.assert_shown("#torques output", torques, 1e-5)

    def test_keys_move_the_hand(self):
        self.open(LOADED)
        hand = "return [12, 13, 14].map((i) => page.scene.bodies[15].frame.matrixWorld.elements[i])"
        before = self.js(hand)
        self.browser.find_element("id", "range-RShoulderPitch").send_keys(*[Keys.RIGHT] * 20)
        self.settle()
        after = self.js(hand)
        self.assertEqual(self.shown("#RShoulderPitch"), ["0.45"])
        self.assertGreater(max(abs(a - b) for a, b in zip(before, after)), 0.02)
        for value, expected in zip(after, self.report()["bodies"][15]["position"]):
            self.assertAlmostEqual(value, expected, 6)
        self.until("return location.hash.includes('RShoulderPitch=0.45')")
        self.browser.back()
        self.settle()
        self.assertEqual(self.js(hand), before)

    def test_address(self):
        self.open(TURNED)
        self.assertEqual(self.js("return location.hash"), TURNED)
        self.js("location.hash = '#HeadYaw=1&Nose=1'")
        self.until("return message.textContent === 'The address is wrong at \"Nose=1\".'")
        self.assertEqual(self.shown("#HeadYaw, #LElbowRoll"), ["-1.25", "-0.7"])

    def test_logs(self):
        self.open()
        self.browser.find_element("id", "file").send_keys(str(LOG))
        self.until("return Number(scrub.value) > 1")
        self.browser.find_element("id", "play").click()
        self.js("scrub.value = 2; scrub.dispatchEvent(new Event('input'))")
        self.settle()
        row = [line.split(",") for line in LOG.read_text().splitlines() if line.startswith("2,")][0]
        self.assert_shown(JOINTS, [float(cell) for cell in row[2:]])
        state = self.shown("input, output")
        for text, message in BAD_LOGS.items():
            self.js("page.open(arguments[0], 'bad.csv')", text)
            self.assertEqual(self.browser.find_element("id", "message").text, f"bad.csv: {message}.")
            self.assertEqual(self.shown("input, output"), state)

    def test_speed(self):
        """A picture takes at most 4 ms of the script's time, and a log of 100,000 rows loads within 2 s."""
        self.open()
        times = self.js("""return Array.from({length: 300}, (_, i) => {
          const begin = performance.now();
          page.set({values: Array(27).fill(i / 300)});
          page.show();
          return performance.now() - begin;
        })""")
        head, *rows = LOG.read_text().splitlines()
        csv = [head] + [f"{i / 100}{rows[i % len(rows)][rows[i % len(rows)].index(','):]}" for i in range(100_000)]
        self.js("window.csv = arguments[0]", "\n".join(csv))
        load = self.js("const begin = performance.now(); page.open(csv, 'long.csv'); return performance.now() - begin")
        print(f"A picture takes {statistics.median(times):.1f} ms; a log of 100,000 rows loads in {load / 1000:.2f} s.")
        self.assertEqual(self.js("return [scrub.max, message.textContent]"), ["999.99", ""])
        self.assertLess(statistics.median(times), 4)
        self.assertLess(load, 2000)

    def test_pictures(self):
        wide, telephone = (1200, 800, 1), (390, 844, 2)
        for name, *state in ("light",), ("dark", LOADED, wide, "dark"), ("telephone", "", telephone), ("log",):
            self.open(*state)
            self.assertEqual(self.js("return document.documentElement.scrollWidth - innerWidth"), 0)
            if name == "log":
                self.browser.find_element("id", "example").click()
                self.until("return Number(scrub.value) > 1.5")
            self.browser.save_screenshot(str(TOP / f"build/web/{name}.png"))

    def test_missing(self):
        browser = start("--disable-3d-apis")
        self.addCleanup(browser.quit)
        for missing in ("WebGL", "WebAssembly"):
            browser.get(URL)
            text = f"This page needs {missing}, which this browser does not offer."
            self.assertEqual(browser.find_element("tag name", "body").text, text)
            browser.execute_cdp_cmd("Page.addScriptToEvaluateOnNewDocument", {"source": "delete window.WebAssembly"})


if __name__ == "__main__":
    unittest.main()
