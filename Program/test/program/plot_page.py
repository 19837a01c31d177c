"""How the report looks in a browser: headless Chromium lays it out at a phone's and a desktop's width."""
import html
import json
import os
import re
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "Support"))
import correction_file
import program

CHROMIUM = os.environ["ORVEX_CHROMIUM"]

# The page stands in a frame of the width to be looked at, since a window has a least width.
HARNESS = """<!DOCTYPE html><meta charset="utf-8"><body style="margin:0">
<iframe id="page" style="width:%dpx;height:4000px;border:0" srcdoc="%s"></iframe><pre id="result"></pre>
<script>
page.onload = () => {
  const view = page.contentDocument, root = view.documentElement, clipped = [], small = [], series = {};
  for (const svg of view.querySelectorAll("figure svg")) {
    const box = svg.getBoundingClientRect(), scale = box.width / svg.viewBox.baseVal.width;
    for (const text of svg.querySelectorAll("text")) {
      const place = text.getBoundingClientRect();
      if (place.left < box.left - 1 || place.right > box.right + 1 || place.top < box.top - 1 || place.bottom > box.bottom + 1)
        clipped.push(svg.id + ": " + text.textContent);
      if (parseFloat(getComputedStyle(text).fontSize) * scale < 9.5) small.push(svg.id + ": " + text.textContent);
    }
    series[svg.id] = [...svg.querySelectorAll("path[data-series]")].map(path => [path.dataset.series, path.getTotalLength() > 20]);
  }
  result.textContent = JSON.stringify({overflow: root.scrollWidth - root.clientWidth, clipped, small, series});
};
</script>"""

FRAMES = [["frame 1001", True], ["frame 1013", True], ["frame 1025", True]]
HEIGHTS = [["25 %", True], ["50 %", True], ["75 %", True], ["corner", True]]
SERIES = {
    "shading": FRAMES, "distortion": FRAMES, "shift": FRAMES, "shading-over-clip": HEIGHTS, "distortion-over-clip": HEIGHTS,
    "round-trip": FRAMES,
    "residuals-over-clip": [["round trip", True], ["fit to corrected", True], ["fit to recorded", True]],
    "grid-recorded": [], "grid-corrected": []}


class PlotPage(program.ProgramTest):
    def setUp(self):
        super().setUp()
        heights = [0, 5, 10, 14, 17, 19, 21.4]
        lines = [correction_file.frame_line(
            1001 + i, shading=",".join(f"{100 - (0.05 + 0.001 * i) * h * h:.4f}" for h in heights),
            distortion=",".join(f"{(0.045 - 0.001 * i) * h * h:.4f}" for h in heights)) for i in range(25)]
        with open(self.path("zoom.olcf"), "w", encoding="utf-8") as file:
            file.write(correction_file.text(frames=[], clipDurationFrames="25") + "\n".join(lines) + "\n")
        self.expect(self.run_program("plot", "zoom.olcf", "-o", "report.html"), 0, "", "")
        with open(self.path("report.html"), encoding="utf-8") as file:
            self.page = file.read()

    def look(self, width):
        """Lays the page out; what was measured, and the browser's console."""
        with open(self.path("harness.html"), "w", encoding="utf-8") as file:
            file.write(HARNESS % (width, html.escape(self.page)))
        result = subprocess.run(
            [CHROMIUM, "--headless", "--no-sandbox", "--disable-gpu", "--no-first-run", "--disable-background-networking",
             "--disable-component-update", "--disable-sync", "--disable-dev-shm-usage", "--enable-logging=stderr",
             "--user-data-dir=" + self.path("profile"), "--window-size=1400,1000", "--virtual-time-budget=5000", "--dump-dom",
             "file://" + self.path("harness.html")],
            stdin=subprocess.DEVNULL, capture_output=True, encoding="utf-8", timeout=120, check=False)
        found = re.search(r'<pre id="result">(.*?)</pre>', result.stdout, re.DOTALL)
        self.assertTrue(found and found.group(1), result.stdout[-500:] + result.stderr)
        console = [line for line in result.stderr.splitlines() if "CONSOLE" in line]
        return json.loads(html.unescape(found.group(1))), console

    def test_fits_a_phone(self):
        seen, console = self.look(390)
        self.assertEqual(seen, {"overflow": 0, "clipped": [], "small": [], "series": SERIES})
        self.assertEqual(console, [])

    def test_fits_a_desktop(self):
        seen, console = self.look(1280)
        self.assertEqual(seen, {"overflow": 0, "clipped": [], "small": [], "series": SERIES})
        self.assertEqual(console, [])


program.main()
