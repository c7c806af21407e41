"""Packs the sample streams into every container, shows them to independent readers, and writes the table."""

import json
import os
import subprocess
import sys
import tempfile
from dataclasses import dataclass
from pathlib import Path

from readers import CHROMIUM, READERS, is_there, version_of

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
    frames: int
    seconds: float
    plain: bool = False  # its bytes are samples

    @property
    def path(self):
        return MEDIA / self.name


SAMPLES = (
    Sample("camera_640x360_25fps_baseline.h264", "video", "h264", 100, 4),
    Sample("film_1280x720_30fps_bframes.h264", "video", "h264", 60, 2),
    Sample("cif_352x288_25fps.m4v", "video", "mpeg4", 75, 3),
    Sample("qvga_320x240_12fps.mjpeg", "video", "mjpeg", 24, 2),
    Sample("tone_8000_mono.alaw", "audio", "alaw", 0, 3),
    Sample("tone_8000_mono.s16le", "audio", "s16le", 0, 3, True),
)


def packed(container, sample, directory):
    """The file, or nothing where the container does not take the stream alone."""
    path = Path(directory) / (sample.path.stem + SUFFIX.get(container, ".mp4"))
    options = ["--pcap"] if container == "rtp" else []
    if sample.frames > 0:
        options += ["--fps", str(round(sample.frames / sample.seconds))]
    os.chmod(directory, 0o755)  # a reader may run as another user
    call = [WRAPTON, "pack", "--json", "--to", container, *options, str(sample.path), str(path)]
    done = subprocess.run(call, stdin=subprocess.DEVNULL, capture_output=True, check=False)
    return path if done.returncode == 0 and json.loads(done.stdout)["output_complete"] else None


def mark(value):
    return "-" if value is None else "yes" if value else "**no**"


def row(container, sample, reader, cell):
    error = "-"
    if cell.seconds is not None:
        error = f"{cell.seconds - sample.seconds:+.2f} s"
    frames = "-"
    if cell.frames is not None:
        frames = f"{cell.frames} of {sample.frames}" if sample.kind == "video" and reader != "tshark" else f"{cell.frames}"
    return (f"| {container} | {sample.path.stem} | {reader} | {mark(cell.opened)} | {frames} | {error} | "
            f"{mark(cell.seek)} | {mark(cell.equal)} | {cell.cause or '-'} |")  # fmt: skip


def measure():
    listed = json.loads(subprocess.run([WRAPTON, "formats", "--json"], capture_output=True, check=True).stdout)
    readers = [entry for entry in READERS if is_there(entry[1])]
    rows = []
    for entry in listed["formats"]:
        for sample in SAMPLES:
            if sample.codec not in entry[sample.kind]:
                continue
            with tempfile.TemporaryDirectory() as directory:
                path = packed(entry["name"], sample, directory)
                if path is None:
                    continue
                for reader, _, _, ask in readers:
                    try:
                        cell = ask(path, sample)
                    except (ValueError, KeyError, OSError) as error:
                        cell = None
                        rows.append(f"| {entry['name']} | {sample.path.stem} | {reader} | **no** | - | - | - | - | "
                                    f"{type(error).__name__}: {str(error)[:80]} |")
                    if cell is not None:
                        rows.append(row(entry["name"], sample, reader, cell))
    return rows


def main(target):
    lines = [
        "# Compatibility, as measured",
        "",
        "This page is written by `ctest -C matrix -L matrix`; never edit it. Each row is one container, one sample",
        "stream and one independent reader: whether it opened the file, how many frames it found, how far the duration",
        "is from that of the stream, whether it seeks to the middle, whether the decoded pictures or samples equal those",
        "of the stream, and its first complaint. A dash: the reader does not tell. Frames that tshark tells are packets.",
        "The native recording format is read by `wrapton info` alone; other readers know none of it.",
        "",
        "| reader | version |",
        "|---|---|",
    ]
    for name, programs, command, _ in READERS:
        lines.append(f"| {name} | {version_of(command) if is_there(programs) else 'not installed'} |")
    lines += [
        "",
        "| container | stream | reader | opened | frames | duration | seek | equal | complaint |",
        "|---|---|---|---|---|---|---|---|---|",
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
