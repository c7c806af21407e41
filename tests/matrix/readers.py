"""One function for each independent reader: what it makes of a file, and what it complains of."""

import hashlib
import json
import os
import re
import shutil
import subprocess
import wave
from dataclasses import dataclass
from typing import Optional

from browser import Browser


@dataclass
class Cell:
    opened: bool
    frames: Optional[int] = None
    seconds: Optional[float] = None
    seek: Optional[bool] = None
    equal: Optional[bool] = None
    cause: str = ""


def run(*command, timeout=90):
    try:
        return subprocess.run(
            [str(part) for part in command], stdin=subprocess.DEVNULL, capture_output=True, timeout=timeout, check=False
        )
    except subprocess.TimeoutExpired:
        return subprocess.CompletedProcess(command, 124, b"", b"did not end in time")


def cause_of(done):
    """The first complaint, without addresses and paths that differ from run to run."""
    for line in (done.stderr or done.stdout).decode(errors="replace").splitlines():
        line = re.sub(r"\s*@ 0x[0-9a-f]+", "", line)
        line = re.sub(r"(/[\w.+-]+)+/", "", line).replace("|", "/").strip()
        if line:
            return line[:110]
    return "" if done.returncode == 0 else f"exit code {done.returncode}"


def hashes(path, kind):
    """What decodes, picture by picture, without its times."""
    done = run("ffmpeg", "-v", "error", "-i", path, "-map", f"0:{kind[0]}:0", "-fps_mode", "passthrough", "-f", "framehash", "-hash", "md5", "-")
    lines = [line.split(b",")[-1].strip() for line in done.stdout.splitlines() if not line.startswith(b"#")]
    return lines, done


def sound(path):
    done = run("ffmpeg", "-v", "error", "-i", path, "-map", "0:a:0", "-f", "s16le", "-")
    return hashlib.md5(done.stdout).hexdigest()


def ffmpeg(path, sample):
    probe = run("ffprobe", "-v", "error", "-of", "json", "-count_packets", "-show_streams", "-show_format", path)
    streams = json.loads(probe.stdout or b"{}").get("streams", [])
    wanted = [entry for entry in streams if entry["codec_type"] == sample.kind]
    if not wanted:
        return Cell(False, cause=cause_of(probe) or f"no {sample.kind} in it")
    frames = int(wanted[0].get("nb_read_packets", 0))
    duration = json.loads(probe.stdout)["format"].get("duration")
    seconds = float(duration) if duration else None
    middle = (seconds or sample.seconds) / 2
    sought = run("ffmpeg", "-v", "error", "-ss", f"{middle:.2f}", "-i", path, "-frames:v", "1", "-f", "null", "-")
    seek = sought.returncode == 0 and not sought.stderr
    if sample.kind == "video":
        decoded, done = hashes(path, "video")
        equal = decoded == hashes(sample.path, "video")[0]
    else:
        done = probe
        equal = sound(path) == sound(sample.path) if sample.plain else None
    return Cell(True, frames, seconds, seek, equal, cause_of(done) if done.stderr else "")


def mediainfo(path, sample):
    done = run("mediainfo", "--Output=JSON", path)
    tracks = json.loads(done.stdout or b"{}").get("media", {}).get("track", [])
    wanted = [entry for entry in tracks if entry["@type"].lower() == sample.kind]
    if not wanted:
        return Cell(False, cause=f"finds no {sample.kind}")
    count = wanted[0].get("FrameCount")
    seconds = wanted[0].get("Duration") or tracks[0].get("Duration")
    return Cell(True, int(count) if count else None, float(seconds) if seconds else None)


def mkvinfo(path, sample):
    if path.suffix != ".mkv":
        return None
    done = run("mkvinfo", "-v", path)
    text = done.stdout.decode(errors="replace")
    if done.returncode != 0 or "+ Segment" not in text:
        return Cell(False, cause=cause_of(done))
    complaint = re.search(r"\((?:Error|Warning)[^)]*\)", text)
    return Cell(True, text.count("Simple block"), cause=complaint[0] if complaint else "")


def gstreamer(path, sample):
    done = run("gst-discoverer-1.0", "-v", path)
    text = done.stdout.decode(errors="replace")
    if f"{sample.kind}" not in text.lower() or "Analyzing" not in text or done.returncode != 0:
        wrong = subprocess.CompletedProcess((), 1, b"", done.stderr or done.stdout[-300:])
        return Cell(False, cause=cause_of(wrong))
    found = re.search(r"Duration: (\d+):(\d+):([\d.]+)", text)
    seconds = int(found[1]) * 3600 + int(found[2]) * 60 + float(found[3]) if found else None
    seekable = re.search(r"Seekable: (\w+)", text)
    missing = re.search(r"Missing (?:plugins|elements).*", text)
    return Cell(True, None, seconds, seekable[1] == "yes" if seekable else None, cause=missing[0] if missing else "")


def mpv(path, sample):
    options = ["--no-config", "--vo=null", "--ao=null", "--untimed", "--msg-level=all=error", "--no-audio-display"]
    done = run("mpv", *options, path)
    sought = run("mpv", *options, f"--start={sample.seconds / 2:.2f}", "--frames=1", path)
    opened = done.returncode == 0
    return Cell(opened, None, None, sought.returncode == 0 if opened else None, cause=cause_of(done))


# VLC refuses to run as root.
AS_NOBODY = ("setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "env", "HOME=/tmp") if os.geteuid() == 0 else ()


def vlc(path, sample):
    done = run(*AS_NOBODY, "cvlc", "--play-and-exit", "--no-video-title-show", "--vout=dummy", "--aout=dummy", "--rate=8", path)
    # There is no desktop to talk to; that says nothing of the file.
    text = "\n".join(line for line in done.stderr.decode(errors="replace").splitlines() if " interface " not in line)
    wrong = re.search(r".*(?:cannot|could not|error:).*", text)
    if done.returncode != 0:
        return Cell(False, cause=cause_of(done))
    return Cell(wrong is None, cause=re.sub(r"^\[[0-9a-f]+\] *", "", wrong[0].strip())[:110] if wrong else "")


def tshark(path, sample):
    if path.suffix == ".pcap":
        done = run("tshark", "-r", path, "-d", "udp.port==5004,rtp", "-T", "fields", "-e", "rtp.seq", "-e", "rtp.marker")
        rows = [line.split() for line in done.stdout.decode().splitlines() if line.split()]
        numbers = [int(row[0]) for row in rows]
        lost = sum((after - before) % 65536 != 1 for before, after in zip(numbers, numbers[1:]))
        return Cell(bool(rows), len(rows), cause=f"{lost} gaps" if lost else cause_of(done))
    if path.suffix == ".ts":
        done = run("tshark", "-r", path, "-T", "fields", "-e", "mp2t.pid", "-e", "_ws.malformed")
        rows = done.stdout.decode().splitlines()
        malformed = sum("alformed" in row for row in rows)
        return Cell(bool(rows), len(rows), cause=f"{malformed} malformed" if malformed else cause_of(done))
    return None


def python_wave(path, sample):
    if path.suffix != ".wav":
        return None
    try:
        with wave.open(str(path)) as reader:
            data = reader.readframes(reader.getnframes())
            # The first 40 ms made room for the header.
            equal = sample.path.read_bytes().endswith(data) if sample.plain else None
            return Cell(True, reader.getnframes(), reader.getnframes() / reader.getframerate(), None, equal)
    except wave.Error as error:
        return Cell(False, cause=str(error))


class Chromium:
    """One browser for all files."""

    def __init__(self):
        self.browser = None

    def __call__(self, path, sample):
        if path.suffix not in (".mp4", ".mov", ".3gp"):
            return None
        self.browser = self.browser or Browser()
        result = self.browser.play(path)
        if "error" in result:
            return Cell(False, cause=str(result["error"])[:110])
        return Cell(True, result["frames"] or None, result["duration"], result["seek"])

    def close(self):
        if self.browser is not None:
            self.browser.close()


CHROMIUM = Chromium()

# Name in the table, programs it needs, and how to ask for its version.
READERS = (
    ("FFmpeg", ("ffprobe", "ffmpeg"), ("ffmpeg", "-version"), ffmpeg),
    ("MediaInfo", ("mediainfo",), ("mediainfo", "--Version"), mediainfo),
    ("mkvinfo", ("mkvinfo",), ("mkvinfo", "--version"), mkvinfo),
    ("GStreamer", ("gst-discoverer-1.0",), ("gst-discoverer-1.0", "--gst-version"), gstreamer),
    ("mpv", ("mpv",), ("mpv", "--version"), mpv),
    ("VLC", ("cvlc",), (*AS_NOBODY, "cvlc", "--version"), vlc),
    ("tshark", ("tshark",), ("tshark", "--version"), tshark),
    ("Python wave", ("python3",), ("python3", "--version"), python_wave),
    ("Chromium", ("chromium", "chromedriver"), ("chromium", "--version"), CHROMIUM),
)


def is_there(programs):
    return all(shutil.which(program) for program in programs)


def version_of(command):
    text = run(*command).stdout.decode(errors="replace")
    found = re.search(r"\d+(?:\.\d+)+", text)
    return found[0] if found else "unknown"
