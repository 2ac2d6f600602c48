"""Times SciPy on the work of our rows and prints `kernel,params,peer,ns`: nanoseconds of CPU time per sample, minima."""

import sys
import time

import numpy as np
from scipy import signal

TYPES = {"f32": np.float32, "f64": np.float64}
COMPLEX = {"f32": np.complex64, "f64": np.complex128}


def best(call, samples, seconds=0.25):
    call()
    least, end = float("inf"), time.perf_counter() + seconds
    while time.perf_counter() < end:
        start = time.thread_time_ns()
        call()
        least = min(least, time.thread_time_ns() - start)
    return least / samples


def noise(count, dtype):
    return np.random.default_rng(1).uniform(-1, 1, count).astype(dtype)


def report(kernel, params, name, nanoseconds):
    print(f"{kernel},{params},{name},{nanoseconds:.5g}", flush=True)


def fir(name, dtype):
    for taps in (8, 32, 128, 512, 2048, 8192):
        h = signal.firwin(max(taps, 2), 0.25).astype(dtype)[:taps]
        x, zi = noise(4096, dtype), np.zeros(taps - 1, dtype)
        for block in (64, 512):
            part = x[:block]
            report("fir_block", f"type={name};taps={taps};block={block}", "scipy_lfilter",
                   best(lambda: signal.lfilter(h, [1], part, zi=zi), block))


def multirate(name, dtype):
    for up, down, taps, iterations in ((3, 2, 96, 1364), (160, 147, 5120, 28), (8, 1, 256, 512), (1, 8, 256, 512)):
        h, x = noise(taps, dtype), noise(iterations * down, dtype)
        report("fir_multirate", f"type={name};up={up};down={down};taps={taps};iterations={iterations}", "scipy_upfirdn",
               best(lambda: signal.upfirdn(h, x, up, down), iterations * up))


def windows(name, dtype):
    x, w = np.ones(4096, dtype), signal.windows.hann(4096).astype(dtype)
    report("window_hanning", f"type={name};n=4096", "scipy_hann",
           best(lambda: np.multiply(x, signal.windows.hann(4096).astype(dtype), out=x), 4096))
    report("window_multiply", f"type={name};n=4096", "numpy_multiply", best(lambda: np.multiply(x, w, out=x), 4096))
    if name == "f64":
        report("window_kaiser", "type=f64;n=4096;beta=9", "scipy_kaiser",
               best(lambda: np.multiply(x, signal.windows.kaiser(4096, 9), out=x), 4096))


def iir_direct(name, dtype):
    for order in (4, 8):
        b, a = (taps.astype(dtype) for taps in signal.butter(order, 0.2))
        x, zi = noise(65536, dtype), np.zeros(order, dtype)
        for block in (64, 512, 4096, 65536):
            part = x[:block]
            report("iir_direct", f"type={name};order={order};block={block}", "scipy_lfilter",
                   best(lambda: signal.lfilter(b, a, part, zi=zi), block))


def iir_design():
    params = "family={};type=bandpass;order={};form=sos"
    elliptic = params.format("elliptic", 10)
    for form in ("zpk", "sos"):  # zeros, poles and gain alone are a part of what our row does
        report("iir_design", elliptic, f"scipy_{form}",
               best(lambda: signal.ellip(10, 0.5, 60, [0.2, 0.4], "bandpass", output=form), 1))
    report("iir_design", params.format("butterworth", 5), "scipy_sos",
           best(lambda: signal.butter(5, [0.2, 0.4], "bandpass", output="sos"), 1))


def iir_sections(name, dtype):
    for sections in (1, 2, 4, 8, 25):
        sos = signal.butter(2 * sections, 0.2, output="sos").astype(dtype)
        for type_name, element in ((name, dtype), (name.replace("f", "c"), COMPLEX[name])):
            x, zi = noise(65536, dtype).astype(element), np.zeros((sections, 2), element)
            nanoseconds = best(lambda: signal.sosfilt(sos, x, zi=zi), len(x))
            for block in (64, 512, 4096):
                report("iir_sections", f"type={type_name};sections={sections};block={block}", "scipy_sosfilt", nanoseconds)


def zoom(name, dtype):
    x = noise(4096, dtype)
    for count in (1, 16):
        table = np.exp(-2j * np.pi * np.outer(0.01 + 0.025 * np.arange(count), np.arange(4096))).astype(COMPLEX[name])
        report("goertzel", f"type={name};frequencies={count};samples=4096", "numpy_stored",
               best(lambda: table @ x, 4096 * count))
    planned = signal.ZoomFFT(4096, [0.1, 0.15], 1024, fs=1)
    report("chirp_z", f"type={name};samples=4096;points=1024", "scipy_planned", best(lambda: planned(x), 4096))


def frequency_response():
    b = np.array([0.1, 0.2, 0.3, 0.2, 0.1, 0.2, 0.3, 0.2, 0.1])
    a = np.array([1, -0.5, 0.3, -0.1, 0.05, 0.02, 0.01, 0.002, 0.001])
    params = "type=f64;order=8;points=4096"
    report("frequency_response", params, "scipy_freqz", best(lambda: signal.freqz(b, a, 4096), 4096))
    report("frequency_response", params, "numpy_two_ffts",
           best(lambda: np.fft.rfft(b, 8192) / np.fft.rfft(a, 8192), 4096))


if __name__ == "__main__":
    for type_name, element in TYPES.items():
        fir(type_name, element)
        multirate(type_name, element)
        windows(type_name, element)
        iir_direct(type_name, element)
        iir_sections(type_name, element)
    iir_design()
    sys.exit(0)
