#!/usr/bin/python3
"""Writes the tables of this folder: inputs and what each built-in function has to make of them.

Nothing of the engine is used: the values come from NumPy, SciPy and the definitions in
docs/built-ins.md. Run it without arguments after a definition has changed, and review the diff.
"""

import math
import os
import wave

import numpy
import scipy.linalg
import scipy.signal

import vad_reference
from golden_table import FOLDER, Table, text

NAN = float("nan")
INF = float("inf")
HUGE = 1.7976931348623157e308
TINY = 5e-324


def noise(seed, count, digits=6):
    """Seeded numbers between -1 and 1; this generator's stream is frozen."""
    return numpy.round(numpy.random.RandomState(seed).uniform(-1.0, 1.0, count), digits)


# Frames that every function of one vector meets.
ORDINARY = [[1.0], [1.0, 2.0, 3.0], [-2.5, 0.0, 4.0, 4.0, -8.0], list(noise(1, 40))]
HOSTILE = [[], [0.0], [-0.0], [NAN], [1.0, NAN, 2.0], [INF, 1.0], [-INF, 1.0], [INF, -INF],
           [TINY, -TINY], [HUGE, -HUGE], [-0.0, 0.0], [0.0, -0.0]]


def stateless(name, comment, tolerance, function):
    table = Table(name, comment)
    table.case("ordinary", tolerance)
    for frame in ORDINARY:
        table.frame([frame], function(frame))
    table.case("hostile", tolerance)
    for frame in HOSTILE:
        table.frame([frame], function(frame))
    return table


def with_errstate(function):
    def quiet(*arguments):
        with numpy.errstate(all="ignore"):
            return function(*arguments)
    return quiet


def exact_sum(values):
    try:
        return math.fsum(values)
    except (ValueError, OverflowError):
        return float(numpy.sum(values))


def size_of():
    return stateless("sizeOf", "The number of elements.", "exact", lambda x: [len(x)])


@with_errstate
def sum_():
    table = stateless("sum", "Correctly rounded (math.fsum); NumPy where that refuses.",
                      "absolute 1e-14", lambda x: [exact_sum(x)])
    x = noise(2, 500, 4)
    table.case("long", "absolute 1e-13")
    table.frame([x], [exact_sum(x)])
    table.case("integers", "exact")
    table.frame([numpy.arange(1, 301)], [45150.0])
    return table


def abs_():
    return stateless("abs", "numpy.abs.", "exact", lambda x: numpy.abs(x))


def min_():
    # NumPy gives either zero for zeros of both signs; the smaller one is the negative one.
    def minimum(x):
        if not x:
            return None
        low = numpy.min(x)
        return [-0.0] if low == 0.0 and any(math.copysign(1.0, v) < 0 for v in x if v == 0.0) \
            else [low]
    return stateless("min", "numpy.min; -0 is smaller than 0.", "exact", minimum)


def max_():
    def maximum(x):
        if not x:
            return None
        high = numpy.max(x)
        return [0.0] if high == 0.0 and any(math.copysign(1.0, v) > 0 for v in x if v == 0.0) \
            else [high]
    return stateless("max", "numpy.max; 0 is larger than -0.", "exact", maximum)


def index_of_max():
    return stateless("indexOfMax", "numpy.argmax.", "exact",
                     lambda x: [numpy.argmax(x)] if x else None)


def log():
    def logarithm(v):
        if v == 0.0:
            v = 2.2250738585072014e-308
        return math.log(v) if v > 0.0 else NAN

    table = stateless("log", "math.log; a zero counts as the smallest positive normal double.",
                      "relative 4.5e-16", lambda x: [logarithm(v) for v in x])
    x = numpy.concatenate([10.0 ** numpy.arange(-300, 301, 50), 1.0 + noise(3, 20) / 100])
    table.case("wide", "relative 4.5e-16")
    table.frame([x], [logarithm(v) for v in x])
    return table


@with_errstate
def delta():
    table = Table("delta", "numpy.subtract of the frame before; zeros on a change of size.")
    table.case("frames", "exact")
    frames = [[1.0, 2.0], [4.0, 1.0], [4.0, 1.0, 7.0], [0.5, 0.25, -1.0], [], [], [3.0], [NAN],
              [1.0], [INF], [INF], [HUGE], [-HUGE], list(noise(4, 20)), list(noise(5, 20)), "reset",
              list(noise(6, 20)), list(noise(7, 20))]
    previous = None
    for frame in frames:
        if isinstance(frame, str):
            table.add("reset")
            previous = None
            continue
        same = previous is not None and len(previous) == len(frame)
        table.frame([frame], numpy.subtract(frame, previous) if same else numpy.zeros(len(frame)))
        previous = frame
    return table


@with_errstate
def energy():
    table = Table("energy", "The dot product with itself over the sample rate.")
    x = noise(8, 160, 4)
    for name, rate in [("telephone", 8000), ("wide", 16000), ("fraction", 11025.5)]:
        table.case(name, "relative 1e-14", signalfeature__SampleRate=rate)
        for frame in [x, [3.0, 4.0], [], [NAN, 1.0], [INF], [1e200], [TINY]]:
            squares = numpy.square(frame)
            table.frame([frame], [exact_sum(squares) / rate])
    table.case("no-rate", "exact")
    table.frame([[1.0]], None)
    return table


STREAM = [[1.0], [2.0, 3.0], [], [4.0, 5.0, 6.0], [NAN], [-INF, 7.0], list(range(10, 22)), [8.0]]


def sliding_window():
    table = Table("slidingWindow", "The end of the list of all values.")
    for size in [1, 3, 5, 100]:
        table.case("size-%d" % size, "exact", slidingwindow__WindowSize=size)
        for _ in range(2):
            values = []
            for frame in STREAM:
                values += frame
                table.frame([frame], values[-size:])
            table.add("reset")
    table.case("no-size", "exact")
    table.frame([[1.0]], None)
    return table


def tapped_delay():
    table = Table("tappedDelay", "The end of the list of all values, padded in front.")
    for name, size, count, padding in [("plain", 4, 0, ""), ("counted", 4, 1, ""),
                                       ("padded", 6, 0, "7"), ("pattern", 7, 1, "1, 2 3"),
                                       ("number", 3, 0, 0.5), ("long", 30, 1, "-1,-2")]:
        pad = [float(word) for word in str(padding).replace(",", " ").split()]
        table.case(name, "exact", tappeddelay__TapeSize=size,
                   tappeddelay__IncludeUsedTapeSizeInOutput=count,
                   tappeddelay__PaddingValues=padding)
        values = []
        for frame in STREAM:
            values += frame
            used = values[-size:]
            front = [pad[i % len(pad)] for i in range(size - len(used))] if pad else []
            table.frame([frame], ([len(used)] if count else []) + front + used)
    return table


def same(a, b):
    return len(a) == len(b) and all(x == y or (x != x and y != y) for x, y in zip(a, b))


def debounce():
    table = Table("debounce", "The last frame that came often enough in a row.")
    a, b, c = [1.0, 2.0], [3.0, 4.0], [NAN, 5.0]
    frames = [a, b, b, a, b, b, b, b, c, c, c, a, c, c, [9.0], [8.0], [8.0], [8.0], [], [], a, b, a]
    for count in [0, 1, 2, 3]:
        table.case("count-%d" % count, "exact", debounce__DebounceValue=count)
        history, out = [], None
        for frame in frames:
            history.append(frame)
            last = history[-max(count, 1):]
            steady = len(last) == max(count, 1) and all(same(frame, f) for f in last)
            if out is None or len(frame) != len(out) or steady:
                out = frame
            table.frame([frame], out)
    table.case("no-count", "exact")
    table.frame([[1.0]], None)
    return table


def debounce_on_off():
    table = Table("debounceOnOff", "Runs of frames whose first value is, or isn't, zero.")
    firsts = [0, 1, 0, 1, 1, 1, 0, 1, 0, 0, 0, -2.5, NAN, INF, -0.0, 0, 0, 0, 1, TINY, 1, 1]
    for on, off in [(0, 0), (1, 1), (2, 3), (3, 1), (1, 4)]:
        table.case("on-%d-off-%d" % (on, off), "exact", debounceonoff__DebounceOnValue=on,
                   debounceonoff__DebounceOffValue=off)
        state, run, before = 0, 0, None
        for first in firsts:
            active = first != 0
            run = run + 1 if active == before else 1
            before = active
            if run >= max(on if active else off, 1):
                state = int(active)
            table.frame([[first, 1.0]], [state])
    table.case("empty", "exact", debounceonoff__DebounceOnValue=1,
               debounceonoff__DebounceOffValue=1)
    table.frame([[]], None)
    return table


@with_errstate
def average_power():
    return stateless("averagePower", "numpy.mean of the squares; none of no element.",
                     "relative 1e-14",
                     lambda x: [exact_sum(numpy.square(x)) / len(x)] if len(x) else None)


def central_frequency():
    table = Table("centralFrequency", "The centroid of three bins of 15.625 Hz, as defined.")
    spectrum = list(numpy.abs(noise(9, 16)))
    table.case("peaks", "exact")
    for index in [1.0, 1.4, 0.5, 7.0, 13.49, 14.4, 14.5, 15.0, 0.49, 0.0, -1.0, 1e300, -1e300, NAN,
                  INF, -INF]:
        k = math.floor(index + 0.5) if math.isfinite(index) else -1
        result = None
        if 1 <= k <= len(spectrum) - 2:
            f0 = (2 * k - 1) * 15.625 * 0.5
            f1 = f0 + 15.625
            f2 = f1 + 15.625
            low, peak, high = spectrum[k - 1:k + 2]
            result = [(f1 * peak + f0 * low + f2 * high) / (peak + low + high)]
        table.frame([[index], spectrum], result)
    table.case("shapes", "exact")
    table.frame([[1.4], [1.0, 2.0, 1.0, 5.0]], [23.4375])
    table.frame([[1.0], [0.0, 0.0, 0.0]], [NAN])
    table.frame([[1.0], [1.0, 2.0]], None)
    table.frame([[1.0], []], None)
    table.frame([[], [1.0, 2.0, 1.0]], None)
    table.frame([[1.0, 9.0], [0.0, NAN, 0.0]], [NAN])
    return table


def am_demodulate():
    table = Table("amDemodulate",
                  "The magnitude of the analytic signal (scipy.signal.hilbert) of a long carrier, of",
                  "which the frame is a piece; the definition allows 2 % RMS, end periods left out.")
    rate = 8000
    t = numpy.arange(8000) / rate
    for carrier, beat, depth in [(1000, 50, 0.5), (400, 25, 0.8), (1800, 100, 0.3)]:
        envelope = 1.0 + depth * numpy.cos(2 * math.pi * beat * t + 0.3)
        signal = envelope * numpy.sin(2 * math.pi * carrier * t + 0.7)
        reference = numpy.abs(scipy.signal.hilbert(signal))
        period = math.ceil(rate / carrier)
        table.case("carrier-%d" % carrier, "rms 0.02 %d" % period, sampleRate=rate, freq=carrier)
        piece = slice(4000, 4160)
        table.frame([numpy.round(signal[piece], 5)], numpy.round(reference[piece], 5))
    table.case("silence", "exact", sampleRate=rate, freq=1000.0)
    table.frame([numpy.zeros(40)], numpy.zeros(40))
    table.frame([[]], [])
    table.case("no-frequency", "exact", sampleRate=rate)
    table.frame([[1.0]], None)
    return table


def sinus_correlate():
    table = Table("sinusCorrelate",
                  "The share of the least-squares fit (scipy.linalg.lstsq) in the frame's energy.")
    rate = 8000

    def correlation(x, frequency):
        angle = 2 * math.pi * frequency * numpy.arange(len(x)) / rate
        basis = numpy.stack([numpy.cos(angle), numpy.sin(angle)], axis=1)
        fit = basis @ scipy.linalg.lstsq(basis, x, cond=1e-9)[0]
        return round(math.sqrt(numpy.dot(fit, fit) / numpy.dot(x, x)), 13)

    n = numpy.arange(160)
    tone = numpy.round(0.5 * numpy.sin(2 * math.pi * 440 * n / rate + 1.1), 6)
    for frequency in [440, 440.5, 697.0, 1000, 50, 3999, 4000]:
        table.case("at-%g" % frequency, "absolute 1e-12", sampleRate=rate, frequency=frequency)
        for x in [tone[:97], tone[:40] + noise(10, 40) / 4, noise(11, 33), tone[:5] + 1e-3]:
            x = numpy.round(x, 4)
            table.frame([x], [correlation(x, float(numpy.float32(frequency)))])
    table.case("silence", "exact", sampleRate=rate, frequency=440)
    table.frame([numpy.zeros(20)], [0.0])
    table.frame([[]], [0.0])
    table.case("not-configured", "exact", frequency=440)
    table.frame([[1.0]], None)
    return table


def is_greater():
    table = Table("isGreater", "numpy.greater_equal of two values; none of other sizes.")
    table.case("pairs", "exact")
    values = [0.0, -0.0, 1.0, -1.0, TINY, HUGE, INF, -INF, NAN]
    for a in values:
        for b in values:
            table.frame([[a], [b]], [numpy.greater_equal(a, b)])
    for a, b in [([], [1.0]), ([1.0], []), ([1.0, 2.0], [2.0]), ([2.0], [1.0, 2.0])]:
        table.frame([a, b], None)
    return table


VAD_LEVELS = [-9.0, -35.5, -60.0]


def vad_table(name, energies, comments, recording=None):
    table = Table(name, *comments)
    if recording:
        table.add("recording", *recording)
    for energy in energies:
        table.add("energy", text(energy))
    for level in VAD_LEVELS:
        for sensitivity in range(5):
            found = vad_reference.decisions(energies, level, sensitivity)
            table.add("decisions", level, sensitivity, "".join(map(str, found)))
    return table


RECORDING = "examples/audio/prompt.wav"
FRAME = 160


def vad_recording():
    with wave.open(os.path.join(FOLDER, "..", "..", RECORDING)) as file:
        samples = numpy.frombuffer(file.readframes(file.getnframes()), "<i2") / 32768.0
    frames = samples[:len(samples) // FRAME * FRAME].reshape(-1, FRAME)
    return vad_table("vad-recording", numpy.mean(numpy.square(frames), axis=1).tolist(),
                     ["The mean power of each frame of a recording, and what the detector decides",
                      "for it, by level and sensitivity. Every decision agrees."],
                     [RECORDING, FRAME])


def vad_noise():
    random = numpy.random.RandomState(12)
    levels = [0.0] * 5 + [1e-4] * 30 + [0.3] * 20 + [1e-3] * 40 + [0.0] * 3 + [0.05] * 25 + \
        [1e-6] * 30 + [2.0] * 10 + [0.02] * 60 + [0.5] * 15 + [0.012] * 60
    energies = [float("%.6g" % (level * random.uniform(0.5, 1.5))) for level in levels]
    return vad_table("vad-noise", energies,
                     ["Seeded noise whose level steps, and what the detector decides for each frame,",
                      "by level and sensitivity. Every decision agrees."])


def main():
    for make in [size_of, sum_, abs_, min_, max_, index_of_max, log, delta, energy, sliding_window,
                 tapped_delay, debounce, debounce_on_off, average_power, central_frequency,
                 am_demodulate, sinus_correlate, is_greater, vad_recording, vad_noise]:
        make().write()


if __name__ == "__main__":
    main()
