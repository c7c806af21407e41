"""Recordings that were cut off: mended with the copy of their index, or read as they are."""

import json
import os
import subprocess
import sys
import time
from pathlib import Path

from boxes import MediaFile
from readers import AUDIO, MEDIA, VIDEO, WRAPTON, MediaTest, ffprobe, main, wrapton
from streams import adts_frames

CAMERA = VIDEO["h264_baseline"]
TONE = AUDIO["aac_8000_mono"]
MEND = os.environ.get("WRAPTON_MEND", "mend")
TYPES = ("mp4", "mov", "3gp", "mp464", "mov64", "mp4noseek")
COPY_AT = 75  # the last key picture of the camera's 100; a copy is kept behind each


def frame_hashes(path, kind, *options):
    """Hashes of the decoded frames, and what was complained of."""
    done = subprocess.run(["ffmpeg", "-v", "error", *options, "-i", str(path), "-map", f"0:{kind}:0", "-fps_mode",
                           "passthrough", "-f", "framehash", "-hash", "md5", "-"],
                          stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
    lines = [line.split(",") for line in done.stdout.splitlines() if not line.startswith("#")]
    return [fields[5].strip() for fields in lines], done.stderr


def mend(*arguments):
    return subprocess.run([MEND, *map(str, arguments)], stdin=subprocess.DEVNULL, capture_output=True, text=True,
                          check=False)


def python_package():
    """The package over the library, which needs one that loads into Python."""
    sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "bindings" / "python"))
    import wrapton as package  # pylint: disable=import-outside-toplevel
    return package


class Mended(MediaTest):
    """What the example does, for every type that has a copy."""

    def setUp(self):
        super().setUp()
        self.kept = self.directory / "kept"
        self.pictures, _ = frame_hashes(CAMERA.path, "v")
        self.assertEqual(len(self.pictures), CAMERA.frames)

    def record(self, container):
        self.output = self.directory / f"cut.{container}"
        done = mend("record", container, CAMERA.width, CAMERA.height, CAMERA.rate, CAMERA.path, self.output, self.kept)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.end = int(self.kept.read_bytes().split(b"\n")[0].split()[3])
        self.assertLess(self.end, self.output.stat().st_size)

    def check_mended(self, container):
        """Up to the copy, nothing is missing and nothing is complained of."""
        done = mend("repair", self.output, self.kept)
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        index = self.kept.read_bytes().split(b"\n", 1)[1]
        self.assertEqual(self.output.stat().st_size, self.end + len(index))
        self.assertTrue(self.output.read_bytes().endswith(index))
        found = self.assert_reads_clean(self.output)
        self.assertEqual(int(found["streams"][0]["nb_read_packets"]), COPY_AT + 1, container)
        self.assertEqual(frame_hashes(self.output, "v"), (self.pictures[:COPY_AT + 1], ""))
        self.assertEqual(len(MediaFile(self.output).tracks["vide"].samples), COPY_AT + 1)

    def test_every_type_up_to_the_copy(self):
        for container in TYPES:
            with self.subTest(container=container):
                self.record(container)
                self.check_mended(container)

    def test_whatever_stands_behind_the_copy(self):
        for container in TYPES:
            for behind in (b"", b"\0" * 7, b"\xFF" * 300000):
                with self.subTest(container=container, behind=len(behind)):
                    self.record(container)
                    self.output.write_bytes(self.output.read_bytes()[:self.end] + behind)
                    self.check_mended(container)

    def test_without_the_copy_nothing_opens_it(self):
        for container in TYPES:
            self.record(container)
            found, complaints = ffprobe(self.output, "-show_streams")
            self.assertEqual(found.get("streams", []), [], container)
            self.assertIn("moov atom not found", complaints)

    def test_a_copy_that_knows_more_than_the_file_has_is_refused(self):
        for container in TYPES:
            self.record(container)
            short = self.output.read_bytes()[:self.end - 1]
            self.output.write_bytes(short)
            done = mend("repair", self.output, self.kept)
            self.assertEqual(done.returncode, 1)
            self.assertIn("an older one is needed", done.stderr)
            self.assertEqual(self.output.read_bytes(), short)

    def test_what_is_no_copy_is_refused(self):
        self.record("mp4")
        before = self.output.read_bytes()
        for content in (b"", b"1 2 3", b"1 2 3 4", b"no copy\n"):
            self.kept.write_bytes(content)
            self.assertEqual(mend("repair", self.output, self.kept).returncode, 1)
        self.assertEqual(mend("repair", self.output, self.directory / "missing").returncode, 1)
        self.assertEqual(self.output.read_bytes(), before)

    def test_types_without_a_copy_and_wrong_calls_are_refused(self):
        call = [CAMERA.width, CAMERA.height, CAMERA.rate, CAMERA.path, self.directory / "out", self.kept]
        self.assertEqual(mend("record", "avi", *call).returncode, 1)
        self.assertEqual(mend("record", "mp4", *call[:4], self.directory / "none" / "out", self.kept).returncode, 1)
        for wrong in ([], ["record"], ["repair", "a"], ["mend", "a", "b"]):
            self.assertEqual(mend(*wrong).returncode, 2)
        self.assertEqual(list(self.directory.iterdir()), [])


class WithSound(MediaTest):
    """Pictures and sound through the eight functions, a copy behind each key picture."""

    def setUp(self):
        super().setUp()
        if "WRAPTON_LIBRARY" not in os.environ:
            self.skipTest("this library does not load into Python")
        self.library = python_package()

    def frames(self):
        """Bytes and attributes in the order of their times, and whether it is a key picture."""
        library = self.library
        between = subprocess.run(["ffprobe", "-v", "error", "-show_entries", "packet=pos,size,flags", "-of", "json",
                                  str(CAMERA.path)], capture_output=True, text=True, check=True)
        data = CAMERA.path.read_bytes()
        timed = []
        at = 0
        for number, packet in enumerate(json.loads(between.stdout)["packets"]):
            key = "K" in packet["flags"]
            size = int(packet["size"])
            kind = library.FrameSubType.I if key else library.FrameSubType.P
            timed.append((number / CAMERA.rate, 0, data[at:at + size],
                          library.Picture(library.VideoEncode.HI_H264, kind, CAMERA.width, CAMERA.height, CAMERA.rate),
                          key))
            at += size
        self.assertEqual(at, len(data))
        for number, frame in enumerate(adts_frames(TONE.path.read_bytes())):
            timed.append((number * 1024 / TONE.rate, 1, frame,
                          library.Sound(library.AudioEncode.AAC, TONE.rate, TONE.channels), False))
        return [entry[2:] for entry in sorted(timed, key=lambda entry: entry[:2])]

    def record(self, stream_type, output):
        """Records without a tailer; gives the last copy, the frames it knows and where the media data begins."""
        library = self.library
        sink = library.FileSink(output, stream_type)
        ahead = []

        def take(block):
            ends.append(block.offset + len(block.data))
            return sink(block)

        ends = []
        counts = [0, 0]
        copy = None
        packager = library.Packager(stream_type, take)
        packager.header()
        data_start = ends[-1]
        for data, attributes, key in self.frames():
            if key and counts[0]:
                copy = (packager.backup(), list(counts))
            packager.input(data, attributes)
            counts[isinstance(attributes, library.Sound)] += 1
        last = packager.backup()
        packager.close()
        sink.finish()
        return copy, data_start, last

    def test_both_tracks_of_every_type(self):
        types = self.library.StreamType
        pictures, _ = frame_hashes(CAMERA.path, "v")
        sounds, _ = frame_hashes(TONE.path, "a")
        for stream_type, header, length in ((types.MP4, 8, 4), (types.MOV, 8, 4), (types.MP4_64, 16, 8),
                                            (types.MOV_64, 16, 8), (types.MP4_NOSEEK, 0, 0)):
            with self.subTest(type=stream_type):
                output = self.directory / f"{stream_type}.mp4"
                (copy, counts), data_start, _ = self.record(stream_type, output)
                size = copy.offset - data_start + header
                data = bytearray(output.read_bytes()[:copy.offset] + copy.data)
                at = data_start - header + (8 if length == 8 else 0)
                data[at:at + length] = size.to_bytes(length, "big") if length else b""
                output.write_bytes(data)
                self.assert_reads_clean(output)
                self.assertEqual(frame_hashes(output, "v"), (pictures[:counts[0]], ""))
                self.assertEqual(frame_hashes(output, "a"), (sounds[:counts[1]], ""))
                self.assertEqual(counts, [75, 24])  # 3 s: 23.4 frames of 128 ms have begun

    def test_check_tells_how_large_the_copy_gets(self):
        formats = json.loads(wrapton("check", "--json", CAMERA.path, TONE.path).stdout)["formats"]
        told = {entry["name"]: entry["index_bytes"] for entry in formats}
        types = self.library.StreamType
        for name, stream_type in (("mp4", types.MP4), ("mov", types.MOV), ("mp464", types.MP4_64),
                                  ("mov64", types.MOV_64), ("mp4noseek", types.MP4_NOSEEK)):
            _, _, last = self.record(stream_type, self.directory / name)
            self.assertEqual(len(last.data), told[name], name)


class WithoutCopy(MediaTest):
    """Containers that have none, as a recording that was killed leaves them."""

    def killed(self, container, source, enough):
        """A recording that did not live to its end, of that many bytes at least."""
        pipe = self.directory / f"{container}{source.suffix}"
        os.mkfifo(pipe)
        output = self.directory / f"killed.{container}"
        with subprocess.Popen([WRAPTON, "pack", "--to", container, str(pipe), str(output)], stdin=subprocess.DEVNULL,
                              stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL) as process:
            self.addCleanup(process.kill)
            with open(pipe, "wb", buffering=0) as feed:
                while not output.exists() or output.stat().st_size < enough:
                    feed.write(source.read_bytes())
                    time.sleep(0.005)
                process.kill()
                process.wait()
        return output

    def test_most_are_whole_up_to_the_last_frame(self):
        pictures, _ = frame_hashes(CAMERA.path, "v")
        for container in ("ps", "qvps", "gaysps", "ts", "flv", "flvstream", "asf", "asfstream"):
            with self.subTest(container=container):
                output = self.killed(container, CAMERA.path, 300000)
                hashes, _ = frame_hashes(output, "v")
                self.assertGreater(len(hashes), 140)  # of 1860 bytes on the average
                again = pictures * (len(hashes) // len(pictures) + 1)
                # The last ones may be there in part.
                self.assertEqual(hashes[:-2], again[:len(hashes) - 2])

    def test_recordings_and_packets_are_told_to_the_last(self):
        for container in ("omf", "rtp"):
            output = self.killed(container, CAMERA.path, 300000)
            result = json.loads(wrapton("info", "--json", output).stdout)
            self.assertEqual(result["bytes"], output.stat().st_size)
            self.assertLess(result["bytes_skipped"], 20000, "one frame at the most")
            stream = result["streams"][0]["frames"] if container == "omf" else result["sources"][0]["timestamps"]
            self.assertGreater(stream, 140)
        found = self.packed(self.directory / "killed.omf", self.directory / "mended.mp4")
        self.assertGreater(found["streams"][0]["frames_stored"], 140)

    def test_samples_are_read_to_the_end_of_the_file(self):
        samples = MEDIA / "tone_8000_mono.s16le"
        output = self.killed("wav", samples, 60000)
        done = subprocess.run(["ffmpeg", "-v", "error", "-i", str(output), "-f", "s16le", "-"],
                              stdin=subprocess.DEVNULL, capture_output=True, check=True)
        self.assertGreater(len(done.stdout), 55000)
        again = samples.read_bytes() * (len(done.stdout) // samples.stat().st_size + 1)
        self.assertEqual(done.stdout, again[:len(done.stdout)])

    def test_two_containers_describe_their_streams_at_the_end(self):
        for container in ("avi", "mkv"):
            output = self.killed(container, CAMERA.path, 300000)
            hashes, complaints = frame_hashes(output, "v")
            self.assertEqual(hashes, [], container)
            self.assertNotEqual(complaints, "")

    def test_nothing_is_given_for_them(self):
        if "WRAPTON_LIBRARY" not in os.environ:
            self.skipTest("this library does not load into Python")
        types = python_package().StreamType
        for stream_type in types:
            has_one = stream_type in (types.MP4, types.MOV, types.MP4_64, types.MOV_64, types.MP4_NOSEEK)
            with python_package().Packager(stream_type, lambda block: None) as packager:
                packager.header()
                self.assertEqual(packager.backup() is not None, has_one, stream_type)


if __name__ == "__main__":
    main()
