"""Packs the sample streams into every container, shows them to independent readers, and writes the table."""

import json
import os
import subprocess
import sys
import tempfile
from dataclasses import dataclass
from pathlib import Path
from typing import Optional

from readers import CHROMIUM, READERS, Cell, is_there, version_of

MEDIA = Path(__file__).resolve().parent.parent / "media"
WRAPTON = os.environ.get("WRAPTON", "wrapton")
SUFFIX = {"asf": ".asf", "asfstream": ".asf", "flv": ".flv", "flvstream": ".flv", "gaysps": ".mpg", "qvps": ".mpg",
          "ps": ".mpg", "mov": ".mov", "mov64": ".mov", "mkv": ".mkv", "avi": ".avi", "omf": ".omf", "rtp": ".pcap",
          "wav": ".wav", "ts": ".ts", "3gp": ".3gp"}  # fmt: skip


@dataclass(frozen=True)
class Sample:
    name: str
    kind: str
    codec: str
    frames: int  # 0: samples, which frames can be cut of at will
    seconds: float

    @property
    def path(self):
        return MEDIA / self.name


@dataclass(frozen=True)
class Recording:
    """What goes into one file."""

    video: Optional[Sample]
    sound: Optional[Sample]

    @property
    def samples(self):
        return [sample for sample in (self.video, self.sound) if sample is not None]

    @property
    def kinds(self):
        return [sample.kind for sample in self.samples]

    @property
    def seconds(self):
        return max(sample.seconds for sample in self.samples)

    @property
    def title(self):
        return " + ".join(sample.name for sample in self.samples)


CAMERA = Sample("camera_640x360_25fps_baseline.h264", "video", "h264", 100, 4)
VIDEOS = (
    CAMERA,
    Sample("film_1280x720_30fps_bframes.h264", "video", "h264", 60, 2),
    Sample("cif_352x288_25fps.m4v", "video", "mpeg4", 75, 3),
    Sample("qvga_320x240_12fps.mjpeg", "video", "mjpeg", 24, 2),
)
# The second of a codec is for containers that do not take the first.
SOUNDS = (
    Sample("tone_44100_stereo.aac", "audio", "aac", 174, 174 * 1024 / 44100),
    Sample("tone_48000_stereo.mp2", "audio", "mp2", 125, 3),
    Sample("tone_16000_mono.mp2", "audio", "mp2", 42, 42 * 1152 / 16000),
    Sample("tone_8000_mono.alaw", "audio", "alaw", 0, 3),
    Sample("tone_8000_mono.s16le", "audio", "s16le", 0, 3),
)


def packed(container, recording, directory):
    """The file, or nothing where the container does not take all of it."""
    path = Path(directory) / (recording.samples[0].path.stem + SUFFIX.get(container, ".mp4"))
    options = ["--pcap"] if container == "rtp" else []
    if recording.video is not None:
        options += ["--fps", str(round(recording.video.frames / recording.video.seconds))]
    os.chmod(directory, 0o755)  # a reader may run as another user
    inputs = [str(sample.path) for sample in recording.samples]
    call = [WRAPTON, "pack", "--json", "--to", container, *options, *inputs, str(path)]
    done = subprocess.run(call, stdin=subprocess.DEVNULL, capture_output=True, check=False)
    if done.returncode not in (0, 1):
        return None
    result = json.loads(done.stdout)
    stored = all(stream["frames_stored"] > 0 for stream in result["streams"])
    return path if result["output_complete"] and stored else None


def mark(value):
    return "-" if value is None else "yes" if value else "**no**"


def count(found, sample, packets):
    if found is None:
        return "-"
    return f"{found} of {sample.frames}" if sample is not None and sample.frames and not packets else f"{found}"


def row(container, recording, reader, cell):
    off = f"{cell.seconds - recording.seconds:+.2f} s" if cell.seconds is not None else "-"
    packets = reader == "tshark"
    columns = (
        container,
        recording.title,
        reader,
        mark(cell.opened),
        count(cell.pictures, recording.video, packets),
        count(cell.sounds, recording.sound, packets),
        off,
        mark(cell.seek),
        mark(cell.pictures_equal),
        mark(cell.sound_equal),
        cell.cause or "-",
    )
    return "| " + " | ".join(columns) + " |"


def asked(container, recording, readers):
    """A row of each reader that has to do with the container; none where it does not take the streams."""
    with tempfile.TemporaryDirectory() as directory:
        path = packed(container, recording, directory)
        if path is None:
            return []
        rows = []
        for reader, _, _, ask in readers:
            try:
                cell = ask(path, recording)
            except (ValueError, KeyError, OSError) as error:
                cell = Cell(False, cause=f"{type(error).__name__}: {str(error)[:80]}")
            if cell is not None:
                rows.append(row(container, recording, reader, cell))
        return rows


def measure():
    listed = json.loads(subprocess.run([WRAPTON, "formats", "--json"], capture_output=True, check=True).stdout)
    readers = [entry for entry in READERS if is_there(entry[1])]
    rows = []
    for entry in listed["formats"]:
        videos = [sample for sample in VIDEOS if sample.codec in entry["video"]]
        for video in videos:
            rows += asked(entry["name"], Recording(video, None), readers)
        for beside in (None, *videos[:1]):  # alone, and beside a picture
            measured = set()
            for sound in SOUNDS:
                if sound.codec not in entry["audio"] or sound.codec in measured:
                    continue
                new = asked(entry["name"], Recording(beside, sound), readers)
                rows += new
                measured.update([sound.codec] if new else [])
    return rows


def main(target):
    lines = [
        "# Compatibility, as measured",
        "",
        "This page is written by `ctest -C matrix -L matrix`; never edit it. Each row is one container, the sample",
        "streams in it and one independent reader: whether it opened the file with all of them, how many pictures and",
        "pieces of sound it found, how far the duration is from that of the longest stream, whether it seeks to the",
        "middle, whether the decoded pictures and the decoded sound equal those of the streams, and its first complaint.",
        "A dash: the reader does not tell, or there is no such stream. Counts of tshark are packets. Samples that are",
        "not cut into frames (A-law, PCM) have no number to compare with. Decoded sound is equal when no sample of 16",
        "bits is off by more than 1. Streams that a container refuses have no row.",
        "The native recording format is read by `wrapton info` alone; other readers know none of it.",
        "",
        "| reader | version |",
        "|---|---|",
    ]
    for name, programs, command, _ in READERS:
        lines.append(f"| {name} | {version_of(command) if is_there(programs) else 'not installed'} |")
    lines += [
        "",
        "| container | streams | reader | opened | pictures | sounds | duration | seek | pictures equal | sound equal "
        "| complaint |",
        "|---|---|---|---|---|---|---|---|---|---|---|",
    ]
    try:
        rows = measure()
    finally:
        CHROMIUM.close()
    Path(target).write_text("\n".join(lines + rows) + "\n")
    print(f"{len(rows)} cells in {target}")
    return 0 if rows else 1


if __name__ == "__main__":
    sys.exit(main(sys.argv[1]))
