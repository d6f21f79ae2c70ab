"""Tests the page build/web/robot.html in Chromium, and saves pictures of it in build/web."""

import json
import pathlib
import shlex
import statistics
import subprocess
import tempfile
import time
import unittest

from selenium import webdriver
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import WebDriverWait

TOP = pathlib.Path(__file__).resolve().parents[2]
URL = (TOP / "build/web/robot.html").as_uri()
STATES = ["", "#root=0,0,0.75,0,0,0&RShoulderPitch=0.25&wrench=RWristYaw,1,-10,2,0.5,0,0&base=KneePitch",
          "#root=1,-2,0.6,0.3,-1,2&HeadYaw=-1.25&LElbowRoll=-0.7&HipPitch=0.9&wrench=LWristYaw,0,5,0,0,1,0&base=LWristYaw"]
FLAGS = """--headless=new --no-sandbox --disable-gpu --disable-quic --no-first-run --disable-background-networking
  --disable-component-update --disable-sync --use-angle=swiftshader --enable-unsafe-swiftshader --hide-scrollbars"""


def start(*flags, width=1200, height=800, telephone=False):
    options = webdriver.ChromeOptions()
    for flag in (*FLAGS.split(), *flags, f"--user-data-dir={tempfile.mkdtemp()}"):
        options.add_argument(flag)
    options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
    browser = webdriver.Chrome(options=options)
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
        "width": width, "height": height, "deviceScaleFactor": 2 if telephone else 1, "mobile": telephone})
    return browser


class Page(unittest.TestCase):
    def setUp(self):
        self.browser = start()
        self.addCleanup(self.browser.quit)
        self.open("")

    def open(self, address):
        self.browser.get("about:blank")
        self.browser.get(URL + address)
        self.until("return window.page !== undefined")
        self.run("for (const part of document.querySelectorAll('details')) part.open = true")
        self.settle()

    def tearDown(self):
        """A page must report no error and ask for nothing but itself."""
        errors = [entry["message"] for entry in self.browser.get_log("browser") if entry["level"] == "SEVERE"]
        self.assertEqual(errors, [])
        events = [json.loads(entry["message"])["message"] for entry in self.browser.get_log("performance")]
        urls = {event["params"]["request"]["url"].split("#")[0] for event in events
                if event["method"] == "Network.requestWillBeSent"}
        self.assertEqual({url for url in urls if not url.startswith("data:")}, {URL})

    def run(self, script, *arguments):
        return self.browser.execute_script(script, *arguments)

    def until(self, script):
        WebDriverWait(self.browser, 20).until(lambda _: self.run(script))

    def settle(self):
        """Waits until two pictures have been drawn."""
        self.browser.execute_async_script("requestAnimationFrame(() => requestAnimationFrame(arguments[0]))")

    def element(self, name):
        return self.browser.find_element(By.ID, name)

    def report(self):
        """What lumo-inspect prints for the command on the page."""
        command = shlex.split(self.element("Command").text) + ["--format", "json"]
        command[0] = TOP / "build/release/bin/lumo-inspect"
        return json.loads(subprocess.check_output(command))

    def assertShown(self, text, value):
        digits = len(text.partition(".")[2]) if "e" not in text else 20
        self.assertLessEqual(abs(float(text) - value), 0.5001 * 10**-digits, f"{text} is not {value}")
