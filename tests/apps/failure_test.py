"""Every failure of the host program is one line and exit code 1, and no file is harmed."""

import os
import unittest
from pathlib import Path

from host_program import HostProgramTest, noise, write_csv, write_pcm

FIR = ["design", "fir"]
LOW = [*FIR, "--rate", "8000", "--type", "lowpass"]
WINDOW = [*LOW, "--method", "window", "--edges", "1000"]


class FailureTest(HostProgramTest):
    def setUp(self):
        super().setUp()
        write_pcm(self.path("in.wav"), [(int(20000 * x),) for x in noise(100)], rate=8000)
        write_csv(self.path("in.csv"), noise(10))
        write_csv(self.path("taps.csv"), [0.25, 0.5, 0.25])

    def test_command_lines_that_mean_nothing(self):
        for arguments, reason in [
                ([], "subcommand is required"),
                (["filtre"], "'filtre' is no command"),
                (["design"], "subcommand is required"),
                (["--bogus"], "'--bogus' is no command"),
                (FIR, "required"),
                ([*LOW, "--edges"], "--edges"),
                ([*LOW, "--edges", "1000,12oo"], "12oo"),
                ([*LOW, "--edges", "1000,1200", "--format", "xml"], "xml"),
                ([*WINDOW, "--length", "12.5"], "12.5"),
                ([*WINDOW, "--length", "99999999999"], "99999999999"),
                (["filter", "--in", "in.wav"], "--out"),
                (["filter", "--in", "in.wav", "--out", "out.wav"], "a filter is required"),
                (["filter", "--in", "in.wav", "--out", "out.wav", "--taps", "taps.csv", "--type", "lowpass"],
                 "--type does not go with --taps")]:
            with self.subTest(arguments=arguments):
                self.assert_refused(arguments, reason)

    def test_designs_that_cannot_be(self):
        cases = [
            ([*FIR, "--rate", "8000", "--type", "lowpas", "--edges", "1,2"], "'lowpas' is none of lowpass, highpass"),
            ([*LOW], "takes 2 frequencies"),
            ([*LOW, "--edges", "1000"], "takes 2 frequencies, the ends of its transition bands; 1 given"),
            ([*LOW, "--edges", "1000,1200,1400"], "3 given"),
            ([*WINDOW[:-1], "1000,1200,1400", "--length", "9"], "takes 1 or 2 frequencies; 3 given"),
            ([*LOW, "--edges", "nan,1200"], "nan is not a frequency"),
            ([*LOW, "--edges", "1000,inf"], "inf is not a frequency"),
            ([*LOW, "--edges", "-5,1000"], "-5 Hz is below 0"),
            ([*LOW, "--edges", "3900,4001"], "4001 Hz is above 4000 Hz, half the sampling rate"),
            ([*LOW, "--edges", "1200,1000"], "1000 Hz after 1200 Hz"),
            ([*LOW, "--edges", "1000,1000"], "frequencies must ascend"),
            ([*LOW, "--edges", "1000,1000.001"], "would need 10000 taps or more"),
            ([*LOW, "--edges", "1000,1200", "--ripple", "0"], "not between 0 and 1"),
            ([*LOW, "--edges", "1000,1200", "--ripple", "nan"], "not between 0 and 1"),
            ([*LOW, "--edges", "1000,1200", "--attenuation", "-60"], "not between 0 and 300"),
            ([*LOW, "--edges", "1000,1200", "--attenuation", "60", "--ripple", "0.1"], "give one of them"),
            ([*LOW, "--edges", "1000,1200", "--gain", "inf"], "inf is not a gain"),
            ([*LOW, "--edges", "1000,1200", "--length", "50"], "--length goes with --method window"),
            (WINDOW, "--length is required"),
            ([*WINDOW, "--length", "3"], "3 is not between 4 and 10000"),
            ([*WINDOW, "--length", "10001"], "10001 is not between 4 and 10000"),
            ([*WINDOW, "--length", "9", "--odd"], "--odd goes with --method kaiser"),
            ([*WINDOW, "--length", "9", "--window", "hannig"], "'hannig' is not known"),
            ([*WINDOW, "--length", "9", "--window", "kaiser"], "--param is required"),
            ([*WINDOW, "--length", "9", "--window", "kaiser", "--param", "-1"], "not below 0"),
            ([*WINDOW, "--length", "9", "--window", "hanning", "--param", "1"], "takes none"),
            ([*FIR, "--rate", "8000", "--type", "hilbert3", "--edges", "4000"], "ends below half the rate"),
            ([*FIR, "--rate", "8000", "--type", "hilbert4", "--edges", "3800", "--odd"], "even number of taps")]
        cases += [([*FIR, "--type", "lowpass", "--edges", "1,2", "--rate", rate], "is not a sampling rate")
                  for rate in ["0", "-8000", "nan", "inf"]]
        cases += [([*LOW, "--edges", "1000,1200", "--out", "no/such/directory/taps.csv"], "No such file or directory"),
                  ([*LOW, "--edges", "1000,1200", "--out", "."], "is a directory"),
                  ([*LOW, "--edges", "1000,1200", "--plot", "taps.pdf"], "extension .svg")]
        for arguments, reason in cases:
            with self.subTest(arguments=arguments):
                self.assert_refused(arguments, reason)

    def test_files_that_cannot_be_read_or_filtered(self):
        files = {"empty.csv": "", "names.csv": "a,b\n", "ragged.csv": "1,2\n3\n", "words.csv": "1\n2\nthree\n",
                 "huge.csv": "1\n1e999\n", "noise.wav": "this is no sound", "empty.wav": "", "wide.csv": "1,2\n3,4\n",
                 "bad.json": "{\"taps\": [1, 2", "none.json": "{\"tap\": [1]}", "text.json": "{\"taps\": [\"1\"]}",
                 "zero.json": "[]", "nan.csv": "1\nnan\n", "skew.csv": "1\n2\n"}
        for name, text in files.items():
            Path(self.path(name)).write_text(text)
        for name, reason in [("missing.wav", "No such file or directory"), ("missing.csv", "No such file or directory"),
                             (".", "is a directory"), ("empty.csv", "holds no numbers"),
                             ("names.csv", "holds no numbers"),
                             ("ragged.csv", "line 2: 1 values, the lines above have 2"),
                             ("words.csv", "line 3: 'three' is not a number"), ("huge.csv", "line 2: '1e999'"),
                             ("noise.wav", "cannot read noise.wav: "), ("empty.wav", "cannot read empty.wav: ")]:
            with self.subTest(input=name):
                self.assert_refused(["filter", "--taps", "taps.csv", "--in", name, "--out", "out.csv"], reason)
                self.assert_refused(["levels", "--band", "10,20", "--rate", "8000", "--in", name], reason)
        for name, reason in [("missing.csv", "No such file"), ("wide.csv", "in one column or in one row"),
                             ("bad.json", "not a JSON tap file"), ("none.json", "key 'taps' not found"),
                             ("text.json", "must be number"), ("zero.json", "holds no taps"),
                             ("nan.csv", "tap 1 is nan")]:
            with self.subTest(taps=name):
                self.assert_refused(["filter", "--taps", name, "--in", "in.wav", "--out", "out.wav"], reason)
        taps = ["filter", "--taps", "taps.csv"]
        for arguments, reason in [
                ([*taps, "--in", "in.wav", "--out", "out.mp3"], "the extension is none of"),
                ([*taps, "--in", "in.csv", "--out", "out.wav"], "needs a sampling rate; give it with --rate"),
                ([*taps, "--in", "in.wav", "--out", "out.wav", "--rate", "44100"], "in.wav has 8000 Hz, not 44100 Hz"),
                ([*taps, "--in", "in.wav", "--out", "out.wav", "--down", "3"], "does not fit into an audio file"),
                ([*taps, "--in", "in.wav", "--out", "out.wav", "--up", "0"], "--up: 0"),
                ([*taps, "--in", "in.wav", "--out", "out.wav", "--block", "0"], "--block: 0"),
                ([*taps, "--in", "in.wav", "--out", "out.wav", "--subtype", "pcm12"], "none of pcm8, pcm16"),
                ([*taps, "--in", "in.wav", "--out", "out.flac", "--subtype", "double"],
                 "flac files do not hold double samples"),
                (["filter", "--taps", "skew.csv", "--in", "in.wav", "--out", "out.wav", "--align"], "not symmetric"),
                (["filter", "--type", "lowpass", "--edges", "3000,4100", "--in", "in.wav", "--out", "out.wav"],
                 "4100 Hz is above 4000 Hz"),
                (["filter", "--type", "lowpass", "--edges", "1,2", "--in", "in.csv", "--out", "out.csv"],
                 "--rate is required"),
                (["levels", "--in", "in.wav", "--band", "300"], "takes 2 frequencies"),
                (["levels", "--in", "in.wav", "--band", "300,nan"], "nan is not a frequency"),
                (["levels", "--in", "in.wav", "--band", "300,5000"], "5000 Hz is above 4000 Hz"),
                (["levels", "--in", "in.wav", "--band", "300,400", "--guard", "-1"], "--guard: -1 Hz"),
                (["levels", "--in", "in.wav", "--band", "300,400", "--resolution", "0"], "not a resolution"),
                (["plot-spectrum", "--in", "in.wav", "--out", "out.png"], "extension .svg")]:
            with self.subTest(arguments=arguments):
                self.assert_refused(arguments, reason)
        self.assertEqual([name for name in os.listdir(self.directory) if name.startswith("out") or "part" in name], [])

    def test_a_failure_leaves_files_as_they_were(self):
        Path(self.path("late.csv")).write_text("1\n" * 5000 + "oops\n")
        Path(self.path("out.csv")).write_text("precious")
        self.assert_refused(["filter", "--taps", "taps.csv", "--in", "late.csv", "--out", "out.csv"], "line 5001")
        self.assertEqual(Path(self.path("out.csv")).read_text(), "precious")
        before = Path(self.path("in.wav")).read_bytes()
        os.symlink("in.wav", self.path("link.wav"))
        for name in ["in.wav", "link.wav"]:
            self.assert_refused(["filter", "--taps", "taps.csv", "--in", "in.wav", "--out", name],
                                "both read and written")
        self.assertEqual(Path(self.path("in.wav")).read_bytes(), before)
        self.assertEqual([name for name in os.listdir(self.directory) if "part" in name], [])

    @unittest.skipUnless(os.path.exists("/dev/full"), "needs a device that is always full")
    def test_a_full_disk_is_told(self):
        for name in ["full.wav", "full.csv", "full.svg", "full.json"]:
            os.symlink("/dev/full", self.path(name))
        for arguments in [["filter", "--taps", "taps.csv", "--in", "in.wav", "--out", "full.wav"],
                          ["filter", "--taps", "taps.csv", "--in", "in.wav", "--out", "full.csv"],
                          [*LOW, "--edges", "1000,1200", "--out", "full.json"],
                          [*LOW, "--edges", "1000,1200", "--plot", "full.svg"]]:
            with self.subTest(arguments=arguments):
                self.assert_refused(arguments, "cannot write full.")
        with open("/dev/full", "w") as full:
            result = self.call_into(full, *LOW, "--edges", "1000,1200")
        self.assertEqual((result.returncode, result.stderr.count("\n")), (1, 1))
        self.assertIn("cannot write standard output: No space left on device", result.stderr)
        self.assertTrue(os.path.exists("/dev/full"))

    def test_plots_without_gnuplot(self):
        plot = [*LOW, "--edges", "1000,1200", "--plot", "p.svg"]
        self.assert_refused(plot, "gnuplot draws the plots, and it is not installed", env={"PATH": str(self.directory)})
        broken = self.directory / "gnuplot"
        broken.write_text("#!/bin/sh\necho 'line 0: no luck today' >&2\nexit 3\n")
        broken.chmod(0o755)
        self.assert_refused(plot, "could not draw p.svg: line 0: no luck today", env={"PATH": str(self.directory)})
        self.assertFalse(os.path.exists(self.path("p.svg")))


if __name__ == "__main__":
    unittest.main()
