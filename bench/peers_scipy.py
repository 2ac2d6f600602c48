"""Times SciPy, NumPy and Bottleneck on the work of our rows and prints `kernel,params,peer,ns`: nanoseconds of CPU time per sample, minima."""

import sys
import time

import bottleneck
import numpy as np
from scipy import ndimage, signal

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


def equiripple():
    for taps in (51, 201, 1001, 2001):
        bands = [0, 0.2, 0.2 + 4 / taps, 0.5]
        report("equiripple", f"taps={taps}", "scipy_remez",
               best(lambda: signal.remez(taps, bands, [1, 0], fs=1, grid_density=16, maxiter=200), 1))


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


def median(name, dtype):
    x = noise(16384, dtype)
    for data, values in (("random", x), ("ascending", np.arange(len(x)).astype(dtype)), ("ties", np.round(4 * x))):
        for mask in (5, 9, 31, 255, 4095):
            report("median", f"type={name};mask={mask};block=4096;data={data}", "bottleneck",
                   best(lambda: bottleneck.move_median(values, mask, min_count=1), len(x)))


def simple_filters(name, dtype):
    x, count = noise(16384, dtype), 16384
    params = f"type={name};samples={count}"
    b, a, zi = (np.array(v, dtype) for v in ([0.01, 0], [1, -0.99], [0]))
    report("exponential_average", params, "scipy_lfilter", best(lambda: signal.lfilter(b, a, x, zi=zi), count))
    for order in (5, 31, 1001):
        report("moving_average", f"{params};order={order}", "scipy_uniform_filter1d",
               best(lambda: ndimage.uniform_filter1d(x, order, mode="constant"), count))
    report("remove_dc", params, "numpy_mean", best(lambda: x - x.mean(), count))
    report("differentiate", params, "numpy_gradient", best(lambda: np.gradient(x), count))
    report("integrate", params, "numpy_cumsum", best(lambda: np.cumsum(x), count))


def tone(name, dtype):
    for block in (64, 512, 4096):
        phases = (np.arange(block) * (2 * np.pi * 0.0123)).astype(dtype)
        out = np.empty_like(phases)
        report("tone", f"type={name};block={block}", "numpy_sin", best(lambda: np.sin(phases, out=out), block))


def ar_burg(name, dtype):
    def run(x, order=32):
        a, f, b = np.ones(1, dtype), x[1:], x[:-1]
        for _ in range(order):
            k = -2 * np.dot(f, b) / (np.dot(f, f) + np.dot(b, b))
            f, b = (f + k * b)[1:], (b + k * f)[:-1]
            a = np.append(a, dtype(0))
            a = a + k * a[::-1]
        return a

    for count in (1000, 10000, 100000):
        x = noise(count, dtype)
        report("ar_burg", f"type={name};order=32;samples={count}", "numpy_passes", best(lambda: run(x), count))


def search(name, dtype):
    for count in (4096, 100000, 10000000):
        x, params = noise(count, dtype), f"type={name};samples={count}"

        def maxima():
            rising = x[:-1] < x[1:]
            return np.count_nonzero(rising[:-1] & ~rising[1:])

        def crossings():
            above = x > 0
            return np.count_nonzero(above[:-1] != above[1:])

        report("maximum_count", params, "numpy", best(maxima, count))
        report("zero_crossing_count", params, "numpy", best(crossings, count))
        report("find_nearest", params, "numpy", best(lambda: np.argmin(np.abs(dtype(0.1) - x)), count))


def decibels(name, dtype):
    for count in (4096, 1 << 20):
        x = np.abs(noise(count, dtype))
        report("decibels", f"type={name};elements={count}", "numpy",
               best(lambda: np.maximum(20 * np.log10(x), dtype(-120)), count))


def cepstrum():
    for count in (1024, 1 << 16, 1 << 20):
        x = noise(count, np.float64)
        params = f"type=f64;samples={count}"
        report("real_cepstrum", params, "numpy",
               best(lambda: np.fft.irfft(np.log(np.abs(np.fft.rfft(x))))[: count // 2], count))

        def with_phase():
            spectrum = np.fft.rfft(x)
            return np.fft.irfft(np.log(np.abs(spectrum)) + 1j * np.unwrap(np.angle(spectrum)))

        report("complex_cepstrum", params, "numpy", best(with_phase, count))


if __name__ == "__main__":
    for type_name, element in TYPES.items():
        fir(type_name, element)
        multirate(type_name, element)
        windows(type_name, element)
        iir_direct(type_name, element)
        iir_sections(type_name, element)
        zoom(type_name, element)
        tone(type_name, element)
        median(type_name, element)
        simple_filters(type_name, element)
        ar_burg(type_name, element)
        search(type_name, element)
        decibels(type_name, element)
    iir_design()
    equiripple()
    frequency_response()
    cepstrum()
    sys.exit(0)
