"""Times SciPy on the work of our rows and prints `kernel,params,peer,ns`: nanoseconds of CPU time per sample, minima."""

import sys
import time

import numpy as np
from scipy import signal

TYPES = {"f32": np.float32, "f64": np.float64}


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


if __name__ == "__main__":
    for type_name, element in TYPES.items():
        fir(type_name, element)
        multirate(type_name, element)
        windows(type_name, element)
        iir_direct(type_name, element)
    iir_design()
    sys.exit(0)
