#!/usr/bin/env python3
"""Writes the fuzzers' seed corpora into corpus/ (the results are committed).

corpus/state: saved-state chunks, valid and damaged, built from their layout: "RMLV", "DTLV",
version, count, then (engine id, value) records, little-endian.
corpus/renderer-input: small audio files of every readable kind, and damaged ones. FLAC and Ogg
Vorbis come from ffmpeg, when it is installed.
Inputs that once failed are kept beside them as finding-*, copied from the fuzzer's findings; this
script leaves them alone.
"""
import math
import os
import shutil
import struct
import subprocess
import sys
import tempfile
import wave

here = os.path.dirname(os.path.abspath(__file__))


def write(folder, name, data):
    path = os.path.join(here, "corpus", folder)
    os.makedirs(path, exist_ok=True)
    with open(os.path.join(path, name), "wb") as f:
        f.write(data)


# --- state chunks ---------------------------------------------------------------------------------

IDS = [0, 1, 2, 4, 5, 6, 7]
DEFAULTS = [1.0, 30.0, 2.0, 1.0, 30.0, 30.0, 0.0]


def chunk(records, count=None, version=0x00010101, magic=b"RMLVDTLV"):
    count = len(records) if count is None else count
    data = magic + struct.pack("<Ii", version, count)
    for ident, value in records:
        data += struct.pack("<if", ident, value)
    return data


def state_corpus():
    default = list(zip(IDS, DEFAULTS))
    write("state", "default", chunk(default))
    write("state", "empty", b"")
    for n in (1, 4, 8, 12, 15, 16, 20, 71, 73):
        write("state", "cut-%d" % n, chunk(default)[:n] if n <= 72 else chunk(default) + b"\0")
    for count in (0, 1, 6, 8, -1, 0x7FFFFFFF):
        write("state", "count-%d" % count, chunk(default, count=count))
    write("state", "bad-magic", chunk(default, magic=b"RMLVXXXX"))
    write("state", "bad-version", chunk(default, version=0x00020000))
    # The record of the last engine id ends the load early.
    write("state", "last-first", chunk([(7, 1.0)] + default[:-1]))
    write("state", "no-such-ids", chunk([(3, 1.0), (8, 1.0), (-1, 1.0), (1 << 30, 1.0)] + default[:3]))
    extremes = [float("nan"), float("inf"), -float("inf"), 1e30, -1e30, 0.0, 1e-40, 1e6, -5.0]
    for k, value in enumerate(extremes):
        write("state", "extreme-%d" % k, chunk([(i, value) for i in IDS]))
    for ident in IDS:
        write("state", "huge-%d" % ident,
              chunk([(i, 1e9 if i == ident else v) for i, v in default]))


# --- audio files ----------------------------------------------------------------------------------

RATE = 22050
LENGTH = 600


def tone(channels, scale):
    frames = []
    for n in range(LENGTH):
        for c in range(channels):
            v = 0.3 * math.sin(0.05 * n + c) + (0.7 if n % 200 == 100 else 0.0)
            frames.append(v * scale)
    return frames


def wav(channels, width, rate=RATE):
    import io
    out = io.BytesIO()
    with wave.open(out, "wb") as w:
        w.setnchannels(channels)
        w.setsampwidth(width)
        w.setframerate(rate)
        if width == 1:
            w.writeframes(bytes(int(128 + v) for v in tone(channels, 127)))
        elif width == 2:
            w.writeframes(struct.pack("<%dh" % (LENGTH * channels), *map(int, tone(channels, 32767))))
        else:
            data = b"".join(struct.pack("<i", int(v))[:3] for v in tone(channels, 8388607))
            w.writeframes(data)
    return out.getvalue()


def wav_float(channels):
    samples = tone(channels, 1.0)
    data = struct.pack("<%df" % len(samples), *samples)
    fmt = struct.pack("<HHIIHH", 3, channels, RATE, RATE * 4 * channels, 4 * channels, 32)
    body = b"WAVE" + b"fmt " + struct.pack("<I", len(fmt)) + fmt + b"data" + struct.pack("<I", len(data)) + data
    return b"RIFF" + struct.pack("<I", len(body)) + body


def aiff(channels):
    samples = tone(channels, 32767)
    data = struct.pack(">%dh" % len(samples), *map(int, samples))
    # 80-bit extended 22050.
    exponent = 16383 + int(math.floor(math.log2(RATE)))
    mantissa = int(RATE * (1 << 63) / (1 << int(math.floor(math.log2(RATE)))))
    rate80 = struct.pack(">HQ", exponent, mantissa)
    comm = struct.pack(">hIh", channels, LENGTH, 16) + rate80
    ssnd = struct.pack(">II", 0, 0) + data
    body = b"AIFF" + b"COMM" + struct.pack(">I", len(comm)) + comm + b"SSND" + struct.pack(">I", len(ssnd)) + ssnd
    return b"FORM" + struct.pack(">I", len(body)) + body


def via_ffmpeg(source, suffix, codec_args):
    ffmpeg = shutil.which("ffmpeg")
    if ffmpeg is None:
        return None
    with tempfile.TemporaryDirectory() as folder:
        src = os.path.join(folder, "in.wav")
        dst = os.path.join(folder, "out" + suffix)
        with open(src, "wb") as f:
            f.write(source)
        subprocess.run([ffmpeg, "-v", "error", "-i", src] + codec_args + [dst], check=True)
        with open(dst, "rb") as f:
            return f.read()


def renderer_corpus():
    write("renderer-input", "wav-16-mono", wav(1, 2))
    write("renderer-input", "wav-16-stereo", wav(2, 2))
    write("renderer-input", "wav-8-mono", wav(1, 1))
    write("renderer-input", "wav-24-stereo", wav(2, 3))
    write("renderer-input", "wav-float-stereo", wav_float(2))
    write("renderer-input", "wav-3-channels", wav(3, 2))
    write("renderer-input", "wav-rate-1", wav(1, 2, rate=1))
    write("renderer-input", "wav-cut", wav(2, 2)[:700])
    write("renderer-input", "aiff-16-stereo", aiff(2))
    write("renderer-input", "aiff-cut", aiff(1)[:300])
    flac = via_ffmpeg(wav(2, 2), ".flac", ["-c:a", "flac"])
    ogg = via_ffmpeg(wav(2, 2), ".ogg", ["-c:a", "libvorbis", "-q:a", "0"])
    if flac is None or ogg is None:
        sys.exit("ffmpeg is needed for the FLAC and Ogg Vorbis seeds")
    write("renderer-input", "flac-16-stereo", flac)
    write("renderer-input", "flac-cut", flac[: len(flac) // 2])
    write("renderer-input", "ogg-stereo", ogg)
    write("renderer-input", "ogg-cut", ogg[: len(ogg) // 2])
    write("renderer-input", "not-audio", b"This is a text file, not audio.\n")


state_corpus()
renderer_corpus()
