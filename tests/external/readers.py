"""The command under test, the independent readers, and the streams: shared by all tests here."""

import json
import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from dataclasses import dataclass
from pathlib import Path

MEDIA = Path(__file__).resolve().parent.parent / "media"
WRAPTON = os.environ.get("WRAPTON", "wrapton")
SKIPPED = 77  # ctest's SKIP_RETURN_CODE


@dataclass(frozen=True)
class Video:
    name: str
    codec: str  # as ffprobe names it
    width: int
    height: int
    rate: int
    frames: int

    @property
    def path(self):
        return MEDIA / self.name


@dataclass(frozen=True)
class Audio:
    name: str
    codec: str
    rate: int
    channels: int
    frames: int

    @property
    def path(self):
        return MEDIA / self.name


VIDEO = {
    "h264_baseline": Video("camera_640x360_25fps_baseline.h264", "h264", 640, 360, 25, 100),
    "h264_bframes": Video("film_1280x720_30fps_bframes.h264", "h264", 1280, 720, 30, 60),
    "mpeg4": Video("cif_352x288_25fps.m4v", "mpeg4", 352, 288, 25, 75),
    "mjpeg": Video("qvga_320x240_12fps.mjpeg", "mjpeg", 320, 240, 12, 24),
}

AUDIO = {
    "aac_8000_mono": Audio("tone_8000_mono.aac", "aac", 8000, 1, 33),
    "aac_44100_stereo": Audio("tone_44100_stereo.aac", "aac", 44100, 2, 174),
    "mp2_16000_mono": Audio("tone_16000_mono.mp2", "mp2", 16000, 1, 42),
    "mp2_48000_stereo": Audio("tone_48000_stereo.mp2", "mp2", 48000, 2, 125),
}


def wrapton(*arguments, **options):
    """Runs the command to its end; the result has returncode, stdout and stderr."""
    return subprocess.run([WRAPTON, *map(str, arguments)],
                          stdin=subprocess.DEVNULL,
                          capture_output=True,
                          text=True,
                          timeout=120,
                          check=False,
                          **options)


def pack_json(*arguments):
    """Runs `pack --json`; gives the exit code and the parsed result."""
    done = wrapton("pack", "--json", *arguments)
    return done.returncode, json.loads(done.stdout)


def ffprobe(path, *options):
    """What ffprobe says of a file, and what it complains of on standard error."""
    done = subprocess.run(["ffprobe", "-v", "warning", "-of", "json", *options, str(path)],
                          stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
    return json.loads(done.stdout or "{}"), done.stderr


def ffmpeg(*arguments):
    subprocess.run(["ffmpeg", "-v", "error", "-y", *map(str, arguments)],
                   stdin=subprocess.DEVNULL, check=True)


def decoded_hashes(path, kind, decoder, known_complaint=None):
    """Hashes of the decoded pictures ("v") or sound ("a") in output order, without their times.
    Lines of standard error with the known complaint are none."""
    done = subprocess.run(["ffmpeg", "-v", "error", f"-c:{kind}", decoder, "-i", str(path), "-map",
                           f"0:{kind}:0", "-fps_mode", "passthrough", "-f", "framehash", "-hash",
                           "md5", "-"],
                          stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
    complaints = [line for line in done.stderr.splitlines()
                  if known_complaint is None or known_complaint not in line]
    if done.returncode != 0 or complaints:
        raise AssertionError(f"ffmpeg does not decode {path}: {done.stderr}")
    lines = [line.split(",") for line in done.stdout.splitlines() if not line.startswith("#")]
    # stream, dts, pts, duration, size, hash
    return [(fields[4].strip(), fields[5].strip()) for fields in lines]


class MediaTest(unittest.TestCase):
    """A test with a directory of its own and every difference in full."""

    maxDiff = None

    def setUp(self):
        self.directory = Path(tempfile.mkdtemp(prefix="wrapton-"))
        self.addCleanup(shutil.rmtree, self.directory, ignore_errors=True)

    def assert_reads_clean(self, path):
        """ffprobe reads the file, packets included, without a word of complaint."""
        found, complaints = ffprobe(path, "-show_format", "-show_streams", "-count_packets")
        self.assertEqual(complaints, "", f"ffprobe on {path}")
        return found

    def packed(self, *arguments):
        """Packs, expects success with everything stored, and gives the result."""
        code, result = pack_json(*arguments)
        self.assertEqual(code, 0, result)
        self.assertEqual(result["state"], "done")
        return result

    def packed_with_losses(self, *arguments):
        """Packs, expects that single frames are missing, and gives the result."""
        code, result = pack_json(*arguments)
        self.assertEqual((code, result["state"]), (1, "warned"), result)
        return result


FFMPEG = {"ffprobe": "ffmpeg", "ffmpeg": "ffmpeg"}  # tools and their Debian packages


def missing_readers(tools=FFMPEG):
    return [tool for tool in tools if shutil.which(tool) is None]


def main(suite=None, tools=FFMPEG):
    """Runs the caller's tests, or says why they cannot be run here."""
    missing = missing_readers(tools)
    if missing:
        packages = sorted({tools[tool] for tool in missing})
        print(f"skipped: {' and '.join(missing)} not found (Debian: {' '.join(packages)})")
        sys.exit(SKIPPED)
    if suite is None:
        unittest.main(verbosity=2)
    result = unittest.TextTestRunner(verbosity=2).run(suite)
    sys.exit(0 if result.wasSuccessful() and result.testsRun > 0 else 1)
