"""One function for each independent reader: what it makes of a file, and what it complains of."""

import array
import functools
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
    """What a reader makes of one file. None: it does not tell, or there is no such stream."""

    opened: bool  # with every stream that went in
    pictures: Optional[int] = None
    sounds: Optional[int] = None
    seconds: Optional[float] = None
    seek: Optional[bool] = None
    pictures_equal: Optional[bool] = None
    sound_equal: Optional[bool] = None
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
        if line and not line.startswith('Running as user "root"'):
            return line[:110]
    return "" if done.returncode == 0 else f"exit code {done.returncode}"


# How FFmpeg is told of streams that do not tell it themselves.
RAW = {
    "alaw": ("-f", "alaw", "-ar", "8000", "-ac", "1"),
    "s16le": ("-f", "s16le", "-ar", "8000", "-ac", "1"),
}


def pictures_of(path):
    """What decodes, picture by picture, without its times."""
    done = run("ffmpeg", "-v", "error", "-i", path, "-map", "0:v:0", "-fps_mode", "passthrough", "-f", "framehash", "-hash", "md5", "-")  # fmt: skip
    lines = [line.split(b",")[-1].strip() for line in done.stdout.splitlines() if not line.startswith(b"#")]
    return lines, done


# Sound goes on where it is, whatever its times: those are judged apart.
UNTIMED = ("-af", "asetpts=N/SR/TB")


def sound_of(path, form=()):
    """What decodes, in 16 bits."""
    done = run("ffmpeg", "-v", "error", *form, "-i", path, "-map", "0:a:0", *UNTIMED, "-f", "s16le", "-")
    return done.stdout, done


@functools.lru_cache(maxsize=None)
def wanted_pictures(sample):
    return pictures_of(sample.path)[0]


@functools.lru_cache(maxsize=None)
def wanted_sound(sample):
    return sound_of(sample.path, RAW.get(sample.codec, ()))[0]


def judge_sound(cell, decoded, wanted):
    """Equal throughout, but for the rounding of decoders; the cause tells how much of it there is otherwise."""
    here, there = (array.array("h", data[: len(data) // 2 * 2]) for data in (decoded, wanted))
    close = all(abs(one - other) <= 1 for one, other in zip(here, there))
    cell.sound_equal = len(here) == len(there) > 0 and close
    if not cell.sound_equal and not cell.cause:
        whole = "the end of it" if decoded and wanted.endswith(decoded) else "other ones"
        cell.cause = f"sound: {len(here)} of {len(there)} samples, {whole}"


def lasts(packets, index):
    """From the first to the end of the last packet of a stream."""
    own = [entry for entry in packets if entry["stream_index"] == index and "pts_time" in entry]
    if not own:
        return None
    ends = [float(entry["pts_time"]) + float(entry.get("duration_time", 0)) for entry in own]
    return max(ends) - min(float(entry["pts_time"]) for entry in own)


def ffmpeg(path, recording):
    fields = "stream=index,codec_type,nb_read_packets:format=duration:packet=stream_index,pts_time,duration_time"
    probe = run("ffprobe", "-v", "error", "-of", "json", "-count_packets", "-show_packets", "-show_entries", fields, path)
    told = json.loads(probe.stdout or b"{}")
    streams = {}
    for entry in told.get("streams", []):
        streams.setdefault(entry["codec_type"], entry)
    missing = [kind for kind in recording.kinds if kind not in streams]
    if missing:
        return Cell(False, cause=cause_of(probe) if probe.stderr else f"no {missing[0]} in it")
    duration = told["format"].get("duration")
    cell = Cell(True, seconds=float(duration) if duration else None)
    middle = (cell.seconds or recording.seconds) / 2
    untimed = UNTIMED if recording.sound is not None else ()
    sought = run("ffmpeg", "-v", "error", "-ss", f"{middle:.2f}", "-i", path, "-t", "0.2", *untimed, "-f", "null", "-")
    cell.seek = sought.returncode == 0 and not sought.stderr
    if recording.video is not None:
        cell.pictures = int(streams["video"].get("nb_read_packets", 0))
        decoded, done = pictures_of(path)
        cell.pictures_equal = decoded == wanted_pictures(recording.video)
        cell.cause = cause_of(done) if done.stderr else ""
    if recording.sound is not None:
        cell.sounds = int(streams["audio"].get("nb_read_packets", 0))
        decoded, done = sound_of(path)
        cell.cause = cell.cause or (cause_of(done) if done.stderr else "")
        judge_sound(cell, decoded, wanted_sound(recording.sound))
        length = lasts(told.get("packets", []), streams["audio"]["index"])
        off = (length or recording.sound.seconds) - recording.sound.seconds
        if abs(off) > 0.1 and not cell.cause:
            cell.cause = f"sound lasts {off:+.2f} s"
    return cell


def mediainfo(path, recording):
    done = run("mediainfo", "--Output=JSON", path)
    tracks = json.loads(done.stdout or b"{}").get("media", {}).get("track", [])
    wanted = {kind: next((entry for entry in tracks if entry["@type"].lower() == kind), None) for kind in recording.kinds}
    missing = [kind for kind, track in wanted.items() if track is None]
    if missing:
        return Cell(False, cause=f"finds no {missing[0]}")
    counts = {kind: int(track["FrameCount"]) for kind, track in wanted.items() if "FrameCount" in track}
    alone = wanted[recording.kinds[0]].get("Duration") if len(wanted) == 1 else None
    seconds = alone or tracks[0].get("Duration")
    return Cell(True, counts.get("video"), counts.get("audio"), float(seconds) if seconds else None)


def mkvinfo(path, recording):
    if path.suffix != ".mkv":
        return None
    done = run("mkvinfo", "-v", path)
    text = done.stdout.decode(errors="replace")
    if done.returncode != 0 or "+ Segment" not in text:
        return Cell(False, cause=cause_of(done))
    complaint = re.search(r"\((?:Error|Warning)[^)]*\)", text)
    return Cell(True, text.count("Simple block"), cause=complaint[0] if complaint else "")


def gstreamer(path, recording):
    done = run("gst-discoverer-1.0", "-v", path)
    text = done.stdout.decode(errors="replace")
    missing = [kind for kind in recording.kinds if not re.search(rf"^\s+{kind} #\d+:", text, re.MULTILINE)]
    plugin = re.search(r"Missing plugins\n \((?:[^|]*\|){3}([^|]*)", text)
    cause = f"not installed: {plugin[1]}" if plugin else ""
    if missing or done.returncode != 0:
        complaint = re.search(r"An error was encountered.*\n\s*(.*)", text)
        return Cell(False, cause=cause or (complaint[1].strip() if complaint else f"finds no {' '.join(missing)}"))
    found = re.search(r"Duration: (\d+):(\d+):([\d.]+)", text)
    seconds = int(found[1]) * 3600 + int(found[2]) * 60 + float(found[3]) if found else None
    seekable = re.search(r"Seekable: (\w+)", text)
    return Cell(True, seconds=seconds, seek=seekable[1] == "yes" if seekable else None, cause=cause)


def mpv(path, recording):
    options = ["--no-config", "--vo=null", "--ao=null", "--ao-null-untimed", "--untimed", "--msg-level=all=error"]
    cause = ""
    for kind in recording.kinds:  # each alone: a player goes on with the one that it has
        done = run("mpv", *options, "--aid=no" if kind == "video" else "--vid=no", path)
        cause = cause or cause_of(done)
        if done.returncode != 0:
            return Cell(False, cause=cause)
    sought = run("mpv", *options, f"--start={recording.seconds / 2:.2f}", "--length=0.2", path)
    return Cell(True, seek=sought.returncode == 0, cause=cause)


# VLC refuses to run as root.
AS_NOBODY = ("setpriv", "--reuid=65534", "--regid=65534", "--clear-groups", "env", "HOME=/tmp") if os.geteuid() == 0 else ()


def vlc(path, recording):
    options = ("--verbose=2", "--play-and-exit", "--no-video-title-show", "--vout=dummy", "--aout=dummy", "--rate=8")
    done = run(*AS_NOBODY, "cvlc", *options, path)
    lines = done.stderr.decode(errors="replace").splitlines()
    for kind in recording.kinds:
        if not any(f"using {kind} decoder module" in line for line in lines):
            return Cell(False, cause=f"decodes no {kind}" if done.returncode == 0 else cause_of(done))
    # There is no desktop to talk to; that says nothing of the file.
    complaints = (line for line in lines if " error: " in line and not re.search(r" (?:interface|libvlc) ", line))
    wrong = re.sub(r"^\[[0-9a-f]+\] *", "", next(complaints, "")).strip()[:110]
    return Cell(not wrong, cause=wrong)


def tshark(path, recording):
    if path.suffix == ".pcap":
        done = run("tshark", "-r", path, "-d", "udp.port==5004,rtp", "-T", "fields", "-e", "rtp.seq", "-e", "rtp.marker")
        rows = [line.split() for line in done.stdout.decode().splitlines() if line.split()]
        numbers = [int(row[0]) for row in rows]
        lost = sum((after - before) % 65536 != 1 for before, after in zip(numbers, numbers[1:]))
        cell = Cell(bool(rows), cause=f"{lost} gaps" if lost else cause_of(done))
        if recording.video is not None:
            cell.pictures = len(rows)
        else:
            cell.sounds = len(rows)
        return cell
    if path.suffix == ".ts":
        done = run("tshark", "-r", path, "-T", "fields", "-e", "mp2t.pid", "-e", "_ws.malformed")
        rows = [line.split() for line in done.stdout.decode().splitlines() if line.split()]
        malformed = sum("alformed" in line for line in done.stdout.decode().splitlines())
        counts = {"video": sum(row[0] == "0x00000012" for row in rows), "audio": sum(row[0] == "0x00000013" for row in rows)}
        opened = all(counts[kind] > 0 for kind in recording.kinds)
        cause = f"{malformed} malformed" if malformed else cause_of(done)
        return Cell(opened, counts["video"], counts["audio"] if recording.sound else None, cause=cause)
    return None


def python_wave(path, recording):
    if path.suffix != ".wav":
        return None
    try:
        with wave.open(str(path)) as reader:
            data = reader.readframes(reader.getnframes())
            cell = Cell(True, sounds=reader.getnframes(), seconds=reader.getnframes() / reader.getframerate())
            judge_sound(cell, data, wanted_sound(recording.sound))
            return cell
    except wave.Error as error:
        return Cell(False, cause=str(error))


class Chromium:
    """One browser for all files."""

    def __init__(self):
        self.browser = None

    def __call__(self, path, recording):
        if path.suffix not in (".mp4", ".mov", ".3gp"):
            return None
        self.browser = self.browser or Browser()
        result = self.browser.play(path)
        if "error" in result:
            return Cell(False, cause=str(result["error"])[:110])
        silent = recording.sound is not None and result["sound"] == 0
        cause = "plays no sound" if silent else ""
        return Cell(not silent, result["frames"] or None, seconds=result["duration"], seek=result["seek"], cause=cause)

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
