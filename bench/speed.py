"""Real-time factor of tindle-render (one job) and of FFmpeg's adeclick on the same file, in CPU
seconds, measured here and now, each the quickest of three runs: on a shared machine one run carries
whatever else the processor did meanwhile. Usage: speed.py BUILD_DIR SECONDS"""
import os
import resource
import subprocess
import sys
import tempfile

build, seconds = sys.argv[1], int(sys.argv[2])


RUNS = 3


def cpu_seconds(command, output):
    quickest = None
    for _ in range(RUNS):
        if os.path.exists(output):
            os.remove(output)
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        spent = (after.ru_utime - before.ru_utime) + (after.ru_stime - before.ru_stime)
        quickest = spent if quickest is None else min(quickest, spent)
    return quickest


with tempfile.TemporaryDirectory() as scratch:
    source = os.path.join(scratch, "damaged.flac")
    subprocess.run([f"{build}/tools/tindle-make-example", source, str(seconds)], check=True, stdout=subprocess.DEVNULL)
    # Decoding is the same work for both; decode once to WAV so that both read the same raw file.
    wav = os.path.join(scratch, "damaged.wav")
    subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-i", source, wav], check=True)
    restored = os.path.join(scratch, "t.wav")
    tindle = cpu_seconds([f"{build}/app/tindle-render", "--quiet", "--jobs", "1", wav, restored], restored)
    declicked = os.path.join(scratch, "f.wav")
    ffmpeg = cpu_seconds(["ffmpeg", "-nostdin", "-loglevel", "error", "-threads", "1", "-i", wav, "-af", "adeclick",
                          declicked], declicked)

print(f"{seconds} s of damaged stereo music at 44.1 kHz, CPU seconds on one core, quickest of {RUNS} runs:")
print(f"  {'tindle-render':<14} {tindle:7.2f} s   {seconds / tindle:7.1f}x real time")
print(f"  {'ffmpeg adeclick':<14} {ffmpeg:7.2f} s   {seconds / ffmpeg:7.1f}x real time")
print(f"  Tindle is {ffmpeg / tindle:.2f}x as fast as adeclick")
