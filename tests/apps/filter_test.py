"""passband filter: streams against direct sums, and the ways samples go in and out of files."""

import math
import os
import pty
import subprocess
import time
import unittest
from pathlib import Path

from host_program import (EPS, PROGRAM, HostProgramTest, fir, noise, read_csv, read_float_wav, read_pcm, write_csv,
                          write_pcm)

BLOCKS = [1, 7, 512, 1000000]


def multirate(taps, x, up, down, phase=0):
    """Zeros between the samples, the filter at the high rate, every down-th sample kept."""
    high = [value for sample in x for value in [sample] + [0.0] * (up - 1)]
    return fir(taps, high)[phase::down]


class FilterTest(HostProgramTest):
    def setUp(self):
        super().setUp()
        self.taps = noise(31, seed=7)
        write_csv(self.path("taps.csv"), self.taps, header="tap")

    def filter(self, source, target, *arguments, taps="taps.csv"):
        return self.run_program("filter", "--taps", self.path(taps), "--in", self.path(source), "--out",
                                self.path(target), *arguments)

    def tolerance(self, taps, x):
        return 2 * len(taps) * EPS * sum(map(abs, taps)) * max(map(abs, x))

    def test_each_channel_is_its_own_convolution_for_every_block_size(self):
        left, right = noise(700, seed=2), noise(700, seed=3)
        write_csv(self.path("in.csv"), left, right, header="left,right")
        outputs = set()
        for block in BLOCKS:
            self.filter("in.csv", "out.csv", "--block", block)
            outputs.add(Path(self.path("out.csv")).read_bytes())
        self.assertEqual(len(outputs), 1)
        self.assertTrue(outputs.pop().startswith(b"left,right\n"))
        columns = read_csv(self.path("out.csv"), header=True)
        for x, y in zip([left, right], columns):
            self.assert_close(y, fir(self.taps, x), self.tolerance(self.taps, x))

    def test_long_filters_give_the_same_samples_for_every_block_size(self):
        taps = noise(2100, seed=4)
        x = noise(5000, seed=5)
        write_csv(self.path("long.csv"), taps)
        write_csv(self.path("in.csv"), x)
        outputs = set()
        for block in BLOCKS + [1999]:
            self.filter("in.csv", "out.csv", "--block", block, taps="long.csv")
            outputs.add(Path(self.path("out.csv")).read_bytes())
        self.assertEqual(len(outputs), 1)
        y = read_csv(self.path("out.csv"))[0]
        places = range(0, 5000, 97)
        expected = [math.fsum(taps[k] * x[n - k] for k in range(min(2100, n + 1))) for n in places]
        self.assert_close([y[n] for n in places], expected, 1e-13 * sum(map(abs, taps)))

    def test_rate_changes_match_the_definition_and_keep_the_duration(self):
        x = noise(101, seed=6)
        write_csv(self.path("in.csv"), x)
        for up, down in [(2, 1), (1, 3), (2, 3), (3, 7), (4, 2)]:
            with self.subTest(up=up, down=down):
                outputs = set()
                for block in BLOCKS:
                    said = self.filter("in.csv", "out.csv", "--up", up, "--down", down, "--block", block)
                    outputs.add(Path(self.path("out.csv")).read_bytes())
                self.assertEqual(len(outputs), 1)
                self.assertEqual("frames of zeros" in said, 101 % down != 0)
                expected = multirate(self.taps, x + [0.0] * down, up, down)[:math.ceil(101 * up / down)]
                self.assert_close(read_csv(self.path("out.csv"))[0], expected, self.tolerance(self.taps, x))

    def test_align_takes_the_delay_out_also_across_rates(self):
        taps = [float(min(n + 1, 31 - n)) for n in range(31)]  # a triangle: its peak marks the delay
        write_csv(self.path("triangle.csv"), taps)
        x = [1.0 if n == 42 else 0.0 for n in range(85)]
        write_csv(self.path("in.csv"), x)
        for up, down in [(1, 1), (3, 1), (1, 2), (3, 2), (2, 7)]:
            with self.subTest(up=up, down=down):
                self.filter("in.csv", "out.csv", "--align", "--up", up, "--down", down, taps="triangle.csv")
                y = read_csv(self.path("out.csv"))[0]
                self.assertEqual(len(y), math.ceil(85 * up / down))
                self.assertEqual(y, [max(0.0, 16.0 - abs(j * down - 42 * up)) for j in range(len(y))])

    def test_the_end_of_the_signal_is_kept_by_align(self):
        write_csv(self.path("in.csv"), [0.0] * 9 + [1.0])
        write_csv(self.path("delay.csv"), [0.0] * 1000 + [1.0] + [0.0] * 1000)
        self.filter("in.csv", "out.csv", "--align", taps="delay.csv")
        self.assert_close(read_csv(self.path("out.csv"))[0], [0.0] * 9 + [1.0], 1e-15)

    def test_integer_samples_come_back_bit_for_bit(self):
        write_csv(self.path("one.csv"), [1.0])
        for bits in [8, 16, 24, 32]:
            top = 2 ** (bits - 1)
            values = [-top, top - 1, 0, 1, -1, 5, top // 3, -top // 3]
            frames = [(a, b) for a in values for b in values]
            write_pcm(self.path("in.wav"), frames, bits, rate=44100)
            self.filter("in.wav", "out.wav", "--block", 3, taps="one.csv")
            self.assertEqual(read_pcm(self.path("out.wav")), read_pcm(self.path("in.wav")))

    def test_wav_and_csv_tell_the_same_signal(self):
        values = [(int(20000 * x), int(20000 * z)) for x, z in zip(noise(300), noise(300, seed=9))]
        write_pcm(self.path("in.wav"), values)
        self.filter("in.wav", "out.csv")
        for x, y in zip(zip(*values), read_csv(self.path("out.csv"))):
            scaled = [sample / 32768 for sample in x]
            self.assert_close(y, fir(self.taps, scaled), self.tolerance(self.taps, scaled))
        self.filter("in.wav", "out.wav", "--subtype", "float")
        columns = read_csv(self.path("out.csv"))
        interleaved = [sample for frame in zip(*columns) for sample in frame]
        self.assert_close(read_float_wav(self.path("out.wav")), interleaved, 2.0 ** -24 * 4)
        self.filter("out.csv", "again.wav", "--rate", 48000, taps="taps.csv")
        self.assertEqual(len(read_float_wav(self.path("again.wav"))), 600)

    def test_samples_are_rounded_to_the_nearest_integer(self):
        write_pcm(self.path("in.wav"), [(n,) for n in [3, 1, -1, -3, 5, 6, -6]])
        for tap, expected in [(0.5, [2, 0, 0, -2, 2, 3, -3]), (0.75, [2, 1, -1, -2, 4, 4, -4])]:  # ties go to even
            write_csv(self.path("tap.csv"), [tap])
            self.filter("in.wav", "out.wav", taps="tap.csv")
            data = b"".join(n.to_bytes(2, "little", signed=True) for n in expected)
            self.assertEqual(read_pcm(self.path("out.wav"))[1], data)

    def test_samples_beyond_full_scale_are_clipped_and_counted(self):
        write_pcm(self.path("in.wav"), [(20000,), (-20000,), (100,), (16384,), (-16384,)])
        write_csv(self.path("two.csv"), [2.0])
        result = self.call("filter", "--taps", "two.csv", "--in", "in.wav", "--out", "out.wav")
        self.assertIn("note: 3 samples were beyond full scale", result.stderr)  # -2 x 16384 just fits
        data = read_pcm(self.path("out.wav"))[1]
        samples = [int.from_bytes(data[n:n + 2], "little", signed=True) for n in range(0, 10, 2)]
        self.assertEqual(samples, [32767, -32768, 200, 32767, -32768])

    def test_design_options_filter_like_their_tap_file(self):
        write_pcm(self.path("in.wav"), [(int(20000 * x),) for x in noise(500)], rate=8000)
        design = ["--type", "bandpass", "--edges", "200,300,3300,3500", "--attenuation", 50, "--gain", 2]
        for name in ["made.csv", "made.json"]:
            self.run_program("design", "fir", "--rate", 16000, *design, "--out", self.path(name))
            self.filter("in.wav", "by_file.wav", "--up", 2, taps=name)
            self.run_program("filter", *design, "--in", "in.wav", "--out", "by_options.wav", "--up", 2)
            self.assertEqual(read_pcm(self.path("by_file.wav")), read_pcm(self.path("by_options.wav")))
        self.assertEqual(read_pcm(self.path("by_file.wav"))[0].framerate, 16000)
        result = self.call("filter", "--taps", "made.json", "--in", "in.wav", "--out", "out.wav")
        self.assertIn("note: the taps are made for 16000 Hz and used at 8000 Hz", result.stderr)

    def test_single_precision_rounds_as_single_precision_does(self):
        x = noise(200)
        write_csv(self.path("in.csv"), x)
        self.filter("in.csv", "double.csv")
        self.filter("in.csv", "single.csv", "--precision", "single")
        double, single = read_csv(self.path("double.csv"))[0], read_csv(self.path("single.csv"))[0]
        self.assert_close(single, double, self.tolerance(self.taps, x) * 2 ** 29)
        self.assertGreater(max(abs(a - b) for a, b in zip(single, double)), 1e-10)

    def test_csv_is_read_the_way_people_write_it(self):
        text = "\ufeff# recorded by hand\r\n time ; level \r\n 1 ;\t\r\n"
        Path(self.path("bad.csv")).write_text(text, encoding="utf-8", newline="")
        self.assert_refused(["info", "--in", "bad.csv"], "line 3: 3 values below 2 names")
        text = "\ufeff# recorded by hand\r\n time ; level \r\n\r\n +1 ; 2e-3\r\n# pause\r\n-.5;nan"
        Path(self.path("in.csv")).write_text(text, encoding="utf-8", newline="")
        write_csv(self.path("one.csv"), [1.0])
        self.filter("in.csv", "out.csv", taps="one.csv")
        self.assertEqual(Path(self.path("out.csv")).read_text(), "time,level\n1,0.002\n-0.5,nan\n")

    def test_empty_recordings_stay_empty(self):
        write_csv(self.path("taps.csv"), [1.0, 2.0, 1.0])
        for channels in [1, 2]:
            write_pcm(self.path("in.wav"), [(0,) * channels])
            data = Path(self.path("in.wav")).read_bytes()
            size = 2 * channels  # cut the only frame off and say so in the header
            Path(self.path("in.wav")).write_bytes(data[:-size - 4] + bytes(4))
            self.filter("in.wav", "out.wav", "--align")
            self.assertEqual(read_pcm(self.path("out.wav"))[0].nframes, 0)

    def test_summary_and_quiet(self):
        write_pcm(self.path("in.wav"), [(1, 2)] * 50)
        said = self.filter("in.wav", "out.wav")
        for words in ["out.wav: 50 frames, 2 channels, 48000 Hz", "31 taps, double precision, delay 15 samples",
                      "times real time", "million samples a second"]:
            self.assertIn(words, said)
        self.assertEqual(self.filter("in.wav", "out.wav", "--quiet"), "")

    def test_progress_is_for_terminals_only(self):
        os.mkfifo(self.path("slow.csv"))
        for on_terminal in [True, False]:
            keyboard, terminal = pty.openpty()
            program = subprocess.Popen([PROGRAM, "filter", "--taps", "taps.csv", "--in", "slow.csv", "--out", "out.csv",
                                        "--block", "1"], cwd=self.directory, stdout=subprocess.DEVNULL,
                                       stderr=terminal if on_terminal else subprocess.PIPE)
            with open(self.path("slow.csv"), "w", buffering=1) as feed:
                for _ in range(12):
                    feed.write("1\n")
                    time.sleep(0.1)
            messages = program.communicate()[1]
            self.assertEqual(program.returncode, 0)
            if on_terminal:
                self.assertRegex(os.read(keyboard, 1000), rb"\r\d+ frames\x1b\[K")
            else:
                self.assertEqual(messages, b"")
            os.close(terminal)
            os.close(keyboard)


if __name__ == "__main__":
    unittest.main()
