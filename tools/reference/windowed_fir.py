"""Writes tests/fir_design/windowed_fir_reference.inc: ideal responses, windowed and Kaiser designs in 50-digit arithmetic.

Formulas: Oppenheim, Schafer, "Discrete-Time Signal Processing", ch. 7.5; Kaiser 1974. A row is
{kind, type, {edges}, length or 0, window, parameter, gain, FS, ripple, odd, {taps}}, where kind 0 is the ideal response, 1 a
windowed design and 2 a Kaiser design; type and window are ordinals of the enumerations.
"""
import pathlib

import mpmath
from mpmath import mp, mpf

mp.dps = 50
LOWPASS, HIGHPASS, BANDPASS, BANDSTOP, HILBERT3, HILBERT4, DIFF3, DIFF4 = range(8)
RECTANGULAR, HANNING, HAMMING, BLACKMAN, KAISER = 0, 1, 2, 5, 9


def sinc_term(f, x):
    return f if x == 0 else mp.sinpi(f * x) / (mp.pi * x)


def ideal(kind, edges, length, fs):
    e = [mpf(v) for v in edges]
    fs = mpf(fs)
    one_band = kind in (LOWPASS, HIGHPASS)
    f1 = f2 = mpf(0)
    if len(e) == 1:
        f1 = e[0] / (fs / 2)
    elif len(e) == 4:
        f1, f2 = (e[0] + e[1]) / fs, (e[2] + e[3]) / fs
    elif one_band:
        f1 = (e[0] + e[1]) / fs
    elif kind in (BANDPASS, BANDSTOP):
        f1, f2 = e[0] / (fs / 2), e[1] / (fs / 2)
    taps = []
    for n in range(length):
        x = n - mpf(length - 1) / 2
        delta = mpf(1 if x == 0 else 0)
        if kind == LOWPASS:
            h = sinc_term(f1, x)
        elif kind == HIGHPASS:
            h = delta - sinc_term(f1, x)
        elif kind == BANDPASS:
            h = sinc_term(f2, x) - sinc_term(f1, x)
        elif kind == BANDSTOP:
            h = delta - sinc_term(f2, x) + sinc_term(f1, x)
        elif x == 0:
            h = mpf(0)
        elif kind in (HILBERT3, HILBERT4):
            h = 2 * mp.sinpi(x / 2) ** 2 / (mp.pi * x)
        else:
            h = (mp.cospi(x) / x - mp.sinpi(x) / (mp.pi * x * x)) * fs
        taps.append(h)
    return taps


def window(kind, parameter, length):
    d = mpf(length - 1)
    w = []
    for n in range(length):
        c1, c2 = mp.cospi(2 * n / d), mp.cospi(4 * n / d)
        if kind == RECTANGULAR:
            w.append(mpf(1))
        elif kind == HANNING:
            w.append((1 - c1) / 2)
        elif kind == HAMMING:
            w.append(mpf("0.54") - mpf("0.46") * c1)
        elif kind == BLACKMAN:
            a = mpf(parameter)
            w.append((a + 1) / 2 - c1 / 2 - a / 2 * c2)
        else:
            t = 2 * n / d - 1
            u = 1 - t * t
            # End points vanish in the limit of the formula's open interval.
            w.append(mp.besseli(0, parameter * mp.sqrt(u)) / mp.besseli(0, parameter) if 0 < n < length - 1 else None)
    return w


def attenuation(ripple):
    return -20 * mp.log10(mpf(ripple))


def kaiser_length(e0, e1, ripple, fs):
    delta = abs(e1 - e0) / (mpf(fs) / 2)
    return int(mp.nint((attenuation(ripple) - 8) / (delta * mp.pi * mpf("2.285"))))


def kaiser_beta(ripple):
    a = attenuation(ripple)
    if a > 50:
        return mpf("0.1102") * (a - mpf("8.7"))
    if a >= 21:
        return mpf("0.5842") * (a - 21) ** mpf("0.4") + mpf("0.07886") * (a - 21)
    return mpf(0)


def parity(length, kind):
    if kind in (HIGHPASS, BANDSTOP, HILBERT3, DIFF3):
        return length | 1
    if kind in (HILBERT4, DIFF4):
        return length + length % 2
    return length


def number(x):
    return "kAny" if x is None else mpmath.nstr(x, 17, strip_zeros=True) if x != 0 else "0"


def row(kind, filter_type, edges, length, win, parameter, gain, fs, ripple, odd, taps):
    listed = ", ".join(number(h) for h in taps)
    plain = ", ".join(repr(float(e)) for e in edges)
    return (f"{{{kind}, {filter_type}, {{{plain}}}, {length}, {win}, {float(parameter)!r}, {float(gain)!r}, {float(fs)!r}, "
            f"{float(ripple)!r}, {int(odd)},\n {{{listed}}}}},")


def main():
    rows = []
    edges_of = {LOWPASS: [[0.25], [0.2, 0.3]], HIGHPASS: [[0.6], [0.5, 0.75]], BANDPASS: [[0.2, 0.6], [0.1, 0.2, 0.5, 0.7]],
                BANDSTOP: [[0.2, 0.6], [0.1, 0.2, 0.5, 0.7]]}
    for kind in range(8):
        for edges in edges_of.get(kind, [[0.4]]):
            for length in (1, 2, 8, 11):
                rows.append(row(0, kind, edges, length, 0, 0, 1, 2, 0, False, ideal(kind, edges, length, 2)))
        edges = [e * 24000 for e in edges_of.get(kind, [[0.4]])[0]]
        rows.append(row(0, kind, edges, 9, 0, 0, 1, 48000, 0, False, ideal(kind, edges, 9, 48000)))
        for win, parameter in ((RECTANGULAR, 0), (HANNING, 0), (HAMMING, 0), (BLACKMAN, -0.16), (KAISER, 5.5)):
            edges = edges_of.get(kind, [[0.4]])[-1]
            for length in (10, 13):
                real = parity(length, kind)
                taps = [None if w is None else h * w * mpf(2.5)
                        for h, w in zip(ideal(kind, edges, real, 2), window(win, parameter, real))]
                rows.append(row(1, kind, edges, length, win, parameter, 2.5, 2, 0, False, taps))
        for ripple, odd in ((0.02, False), (0.001, True)):
            edges = {LOWPASS: [0.2, 0.4], HIGHPASS: [0.5, 0.75], BANDPASS: [0.1, 0.3, 0.5, 0.7],
                     BANDSTOP: [0.1, 0.3, 0.5, 0.7]}.get(kind, [0.8, 0.9])
            used, r = [mpf(e) for e in edges], mpf(ripple)
            if kind >= HILBERT3:
                used, r = [1 - (1 - used[0]) * 2, mpf(1)], r / 2
            length = kaiser_length(used[0], used[1], r, 2)
            if len(used) == 4:
                length = max(length, kaiser_length(used[2], used[3], r, 2))
            length = parity(length, kind)
            length = min(max(length + (1 - length % 2 if odd else 0), 4), 10000)
            taps = [None if w is None else h * w * mpf(0.5)
                    for h, w in zip(ideal(kind, used, length, 2), window(KAISER, kaiser_beta(r), length))]
            rows.append(row(2, kind, edges, 0, KAISER, 0, 0.5, 2, ripple, odd, taps))
    target = pathlib.Path(__file__).resolve().parents[2] / "tests/fir_design/windowed_fir_reference.inc"
    head = f"// Generated by tools/reference/windowed_fir.py with mpmath {mpmath.__version__} at 50 digits; edit the script.\n"
    target.write_text(head + "\n".join(rows) + "\n")


main()
