"""Windows that are moved between monitors of different scale. Their pictures stay in build/scales, to be looked at."""
import os
import subprocess
import time

from fixture import ONLOOKER, ROOT, WholeRun
from program import Program
from write_config import SourceFolder

PICTURES = os.path.join(ROOT, "build", "scales")
MAIN, CONFIGURATION = "Vardeko x64", "Config COPY"
# Up, down, and back to the first.
SCALES = (150, 300, 200, 100)
LARGEST_SCREEN = 2700


def xdotool(*words):
    return subprocess.run(["xdotool", *map(str, words)], capture_output=True, text=True, check=False).stdout.split()


class ScaleCases(WholeRun):
    def setUp(self):
        if int(xdotool("getdisplaygeometry")[0]) < LARGEST_SCREEN:
            self.skipTest("the screen is too small: ./test second-platform")
        super().setUp()
        os.makedirs(PICTURES, exist_ok=True)
        self.configure(*(SourceFolder(f"Q:\\Daten {number}", Extensions=".pdf,.docx") for number in range(4)))
        self.program = Program()
        self.addCleanup(self.program.close)
        self.window(MAIN)

    def window(self, title):
        for _ in range(200):
            if found := xdotool("search", "--onlyvisible", "--name", f"^{title}$"):
                return found[0]
            time.sleep(0.1)
        return self.fail(f"there is no window {title}")

    def picture(self, title, name):
        path = os.path.join(PICTURES, name + ".png")
        xdotool("mousemove", 2990, 1990)
        time.sleep(1)
        subprocess.run(["import", "-window", self.window(title), path], check=True)
        return path

    def scale(self, title, percent):
        done = subprocess.run(["wine", ONLOOKER, "scale", title, str(percent)], capture_output=True, text=True,
                              check=True)
        width, height, awareness = done.stdout.split()
        self.assertEqual(awareness, "per-monitor")
        return int(width), int(height)

    def check_scales(self, title, name):
        first_size = self.scale(title, 100)
        first = self.picture(title, f"{name}-100")
        for percent in SCALES:
            size = self.scale(title, percent)
            for side, length in zip(size, first_size):
                self.assertAlmostEqual(side, length * percent / 100, delta=2)
            last = self.picture(title, f"{name}-{percent}" + ("-again" if percent == 100 else ""))
        same = subprocess.run(["compare", "-metric", "AE", first, last, "null:"], capture_output=True, text=True,
                              check=False)
        # A caret may have blinked.
        self.assertLess(float(same.stderr.split()[0]), 50, "pixels that differ when it is back at 100 %")

    def test_the_main_window_at_every_scale(self):
        self.check_scales(MAIN, "main")

    def test_the_configuration_window_at_every_scale(self):
        main = self.window(MAIN)
        xdotool("mousemove", "--window", main, 700, 80, "click", 1, "key", "ctrl+e")
        self.check_scales(CONFIGURATION, "config")
