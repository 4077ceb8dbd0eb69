"""Real-time factor of tindle-render (one job) and of FFmpeg's adeclick on the same file, in CPU
seconds, measured here and now. Usage: speed.py BUILD_DIR SECONDS"""
import os
import resource
import subprocess
import sys
import tempfile

build, seconds = sys.argv[1], int(sys.argv[2])


def cpu_seconds(command):
    before = resource.getrusage(resource.RUSAGE_CHILDREN)
    subprocess.run(command, check=True, stdout=subprocess.DEVNULL)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return (after.ru_utime - before.ru_utime) + (after.ru_stime - before.ru_stime)


with tempfile.TemporaryDirectory() as scratch:
    source = os.path.join(scratch, "damaged.flac")
    subprocess.run([f"{build}/tools/tindle-make-example", source, str(seconds)], check=True, stdout=subprocess.DEVNULL)
    # Decoding is the same work for both; decode once to WAV so that both read the same raw file.
    wav = os.path.join(scratch, "damaged.wav")
    subprocess.run(["ffmpeg", "-nostdin", "-loglevel", "error", "-i", source, wav], check=True)
    tindle = cpu_seconds([f"{build}/app/tindle-render", "--quiet", "--jobs", "1", wav, os.path.join(scratch, "t.wav")])
    ffmpeg = cpu_seconds(["ffmpeg", "-nostdin", "-loglevel", "error", "-threads", "1", "-i", wav, "-af", "adeclick",
                          os.path.join(scratch, "f.wav")])

print(f"{seconds} s of damaged stereo music at 44.1 kHz, CPU seconds on one core:")
print(f"  {'tindle-render':<14} {tindle:7.2f} s   {seconds / tindle:7.1f}x real time")
print(f"  {'ffmpeg adeclick':<14} {ffmpeg:7.2f} s   {seconds / ffmpeg:7.1f}x real time")
print(f"  Tindle is {ffmpeg / tindle:.2f}x as fast as adeclick")
