"""Makes the files of the demonstration in the directory given, and prints a table of them."""

import shlex
import sys
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
sys.path.insert(0, str(ROOT / "tests" / "external"))

from readers import (AUDIO, MEDIA, VIDEO, decoded_hashes, ffprobe,  # noqa: E402
                     missing_readers, pack_json)

CAMERA = VIDEO["h264_baseline"]
FILM = VIDEO["h264_bframes"]
AAC_8K = AUDIO["aac_8000_mono"]
AAC_44K = AUDIO["aac_44100_stereo"]
MP2_48K = AUDIO["mp2_48000_stereo"]
SAMPLES = MEDIA / "tone_8000_mono.s16le"

# file, options of `wrapton pack`, streams
FILES = [
    ("camera.mp4", [], [CAMERA, AAC_8K]),
    ("camera_faststart.mp4", ["--reserve", "65536"], [CAMERA, AAC_8K]),
    ("film.mov", [], [FILM, AAC_44K]),
    ("camera_64.mp4", ["--to", "mp464"], [CAMERA, AAC_44K]),
    ("film_64.mov", ["--to", "mov64"], [FILM, MP2_48K]),
    ("camera_noseek.mp4", ["--to", "mp4noseek"], [CAMERA, MP2_48K]),
    ("pictures.mov", ["--fps", "12"], [VIDEO["mjpeg"]]),
]


def same(path, kind, source):
    wanted = decoded_hashes(source.path, kind, source.codec)
    return decoded_hashes(path, kind, source.codec) == wanted


def container_name(path):
    """As ffprobe names it; the brand tells MP4 and QuickTime apart, which share a demuxer."""
    found, complaints = ffprobe(path, "-show_format")
    if complaints:
        raise AssertionError(f"ffprobe complains of {path}: {complaints}")
    name = found["format"]["format_name"]
    brand = found["format"].get("tags", {}).get("major_brand")
    return f"{name} ({brand.strip()})" if brand else name


def package(path, options, sources):
    print("$ " + shlex.join(["wrapton", "pack", *options, *[str(source.relative_to(ROOT))
                                                            for source in sources],
                             str(path.relative_to(ROOT))]))
    code, result = pack_json(*options, *sources, path)
    if code != 0:
        raise AssertionError(f"{path}: {result}")
    streams = result["streams"]
    return (str(path.relative_to(ROOT)), str(path.stat().st_size), container_name(path),
            " + ".join(str(stream["frames_in"]) for stream in streams),
            " + ".join(str(stream["frames_stored"]) for stream in streams))


def media_row(path, options, streams):
    row = package(path, options, [stream.path for stream in streams])
    kinds = ["v", "a"][:len(streams)]
    equal = ["equal" if same(path, kind, stream) else "DIFFERENT"
             for kind, stream in zip(kinds, streams)]
    return (*row, equal[0], equal[1] if len(equal) > 1 else "-")


def wav_row(path):
    row = package(path, [], [SAMPLES])
    equal = path.read_bytes()[44:] == SAMPLES.read_bytes()
    return (*row, "-", "equal" if equal else "DIFFERENT")


def print_table(rows):
    head = ("file", "bytes", "container", "frames in", "frames out", "pictures", "sound")
    widths = [max(map(len, column)) for column in zip(head, *rows)]
    print()
    for row in [head, tuple("-" * width for width in widths), *rows]:
        print("  ".join(cell.ljust(width) for cell, width in zip(row, widths)).rstrip())


def main():
    missing = missing_readers()
    if missing:
        sys.exit("needed for the demonstration: " + ", ".join(missing))
    directory = ROOT / sys.argv[1]
    directory.mkdir(exist_ok=True)
    rows = [media_row(directory / name, options, streams) for name, options, streams in FILES]
    rows.append(wav_row(directory / "tone.wav"))
    print_table(rows)
    print("\nframes: video + audio")
    if any("DIFFERENT" in cell for row in rows for cell in row):
        sys.exit(1)


if __name__ == "__main__":
    main()
