"""passband analyze: the numbers of signals that are known, and the pictures of its page in a browser."""

import json
import math
import re
import shutil
import subprocess
import unittest
from pathlib import Path

from host_program import HostProgramTest, noise, write_csv, write_pcm

RATE = 16000
BROWSER = shutil.which("chromium") or shutil.which("chromium-browser") or shutil.which("google-chrome")
# What a page with this script at its end says of its pictures: size on the screen, curves, and the images inside.
MEASURE = """<script>document.body.dataset.pictures = JSON.stringify([...document.querySelectorAll('figure')].map(f => {
  const svg = f.querySelector('svg'), box = svg.getBoundingClientRect(), drawn = svg.getBBox();
  return [f.id, box.width, box.height, drawn.width, svg.querySelectorAll('path').length,
          svg.querySelectorAll('image').length]; }))</script>"""


class AnalyzeTest(HostProgramTest):
    def analyze(self, x, *arguments):
        write_csv(self.path("in.csv"), x)
        return json.loads(self.run_program("analyze", "--in", "in.csv", "--rate", RATE, "--format", "json", *arguments))

    def voice(self, pitch, count=16000):
        """Damped resonances, struck once a period."""
        x = [0.0] * count
        for k in range(int(count * pitch / RATE)):
            start = round(k * RATE / pitch)
            for n in range(start, min(start + 400, count)):
                t = (n - start) / RATE
                x[n] += 0.2 * math.exp(-300 * t) * (math.sin(2 * math.pi * 700 * t) + math.sin(2 * math.pi * 1900 * t))
        return x

    def test_levels_peaks_and_crossings_of_tones(self):
        tones = [(1234.5, 0.5), (3000.2, 0.05)]
        x = [sum(a * math.sin(2 * math.pi * f * n / RATE + 0.3) for f, a in tones) for n in range(32000)]
        numbers = self.analyze(x)
        self.assertAlmostEqual(numbers["duration_s"], 2)
        self.assertAlmostEqual(numbers["rms_dbfs"], 10 * math.log10(0.5 ** 2 + 0.05 ** 2), delta=0.01)
        self.assertAlmostEqual(numbers["peak_dbfs"], 20 * math.log10(max(map(abs, x))), delta=1e-9)
        self.assertAlmostEqual(numbers["crest_db"], numbers["peak_dbfs"] - numbers["rms_dbfs"] + 10 * math.log10(2),
                               delta=1e-9)
        crossings = sum((a > 0) != (b > 0) for a, b in zip(x, x[1:]))
        self.assertAlmostEqual(numbers["zero_crossings"], crossings, delta=1)
        for peak, (f, a) in zip(numbers["peaks"], tones):
            self.assertAlmostEqual(peak["hz"], f, delta=0.02)
            self.assertAlmostEqual(peak["dbfs"], 20 * math.log10(a), delta=0.1)
        self.assertIsNone(self.analyze(noise(16000))["pitch_hz"])

    def test_pitch_of_a_voice(self):
        for pitch in [80, 200]:
            self.assertAlmostEqual(self.analyze(self.voice(pitch))["pitch_hz"], pitch, delta=0.02 * pitch)

    def test_short_and_silent_recordings(self):
        for x in [[0.5], [0.0] * 3, [0.1, -0.2] * 40, [0.0] * 5000]:
            write_csv(self.path("in.csv"), x)
            self.run_program("analyze", "--in", "in.csv", "--rate", RATE, "--out", "page.html")
            self.assertIn("</html>", Path(self.path("page.html")).read_text())

    def test_the_page_stands_alone(self):
        write_pcm(self.path("a & b.wav"), [(int(20000 * s), 0) for s in self.voice(120)], rate=RATE)
        said = self.run_program("analyze", "--in", "a & b.wav", "--out", "page.html")
        self.assertIn("crest factor", said)
        page = Path(self.path("page.html")).read_text()
        self.assertIn("<h1>a &amp; b.wav, channel 1 of 2</h1>", page)
        self.assertEqual(re.findall(r"<figure id=\"(\w+)\"", page),
                         ["waveform", "spectrum", "spectrogram", "zoom", "cepstrum"])
        links = re.findall(r"(?:src|href)\s*=\s*['\"]([^'\"]{0,10})", page)
        self.assertTrue(all(link.startswith(("#", "data:")) for link in links), links)
        self.assertIn("autoregressive, order 48", page)
        self.assert_refused(["analyze", "--in", "a & b.wav", "--out", "page.pdf"], "with the extension .html")
        self.assert_refused(["analyze", "--in", "none.wav"], "none.wav")

    @unittest.skipUnless(BROWSER, "no browser here")
    def test_a_browser_shows_the_pictures(self):
        write_csv(self.path("in.csv"), self.voice(120))
        self.run_program("analyze", "--in", "in.csv", "--rate", RATE, "--out", "page.html")
        page = Path(self.path("page.html"))
        page.write_text(page.read_text().replace("</body>", MEASURE + "</body>"))
        shown = subprocess.run([BROWSER, "--headless", "--no-sandbox", "--disable-gpu", "--dump-dom",
                                f"--user-data-dir={self.path('profile')}", page.as_uri()],
                               capture_output=True, text=True, timeout=120)
        found = re.search(r"data-pictures=\"([^\"]*)\"", shown.stdout)
        self.assertIsNotNone(found, shown.stderr)
        pictures = json.loads(found.group(1).replace("&quot;", '"'))
        self.assertEqual(len(pictures), 5)
        for name, width, height, drawn, paths, images in pictures:
            self.assertGreater(width, 400, name)
            self.assertGreater(height, 200, name)
            self.assertGreater(drawn, 400, name)
            self.assertGreater(paths, 3, name)
            self.assertEqual(images, 1 if name == "spectrogram" else 0)


if __name__ == "__main__":
    unittest.main()
