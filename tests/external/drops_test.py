"""Frames that a container drops or refuses: each is counted, told, and makes the exit code 1."""

import json
import subprocess

import omf
from boxes import MediaFile
from readers import AUDIO, VIDEO, MediaTest, main, wrapton
from streams import adts_frames

CAMERA = VIDEO["h264_baseline"]
TONE = AUDIO["aac_8000_mono"]
MP4_FAMILY = ("mp4", "mov", "mp464", "mov64", "mp4noseek", "3gp")
OTHERS = ("avi", "mkv", "asf", "asfstream", "flv", "flvstream", "ps", "qvps", "gaysps", "ts")
FILLER = b"\0\0\1\x0C"  # of no meaning to a decoder, ISO/IEC 14496-10 7.4.1


def units(data):
    """Start code and bytes of each unit of an H.264 stream."""
    at = [place for place in range(len(data) - 3) if data[place:place + 3] == b"\0\0\1"]
    at = [place - 1 if place and data[place - 1] == 0 else place for place in at]
    return [data[begin:end] for begin, end in zip(at, at[1:] + [len(data)])]


def kind(unit):
    return unit[unit.index(b"\1") + 1] & 31


def is_picture(unit):
    return kind(unit) in (1, 5)


class DropsTest(MediaTest):
    def setUp(self):
        super().setUp()
        self.source = self.directory / "source.h264"
        self.units = units(CAMERA.path.read_bytes())

    def put(self, parts):
        self.source.write_bytes(b"".join(parts))

    def packed_into(self, container, source=None):
        """The exit code, the result of the only stream, and what is told of it."""
        self.output = self.directory / container
        done = wrapton("pack", "--json", "--to", container, source or self.source, self.output)
        result = json.loads(done.stdout)
        self.assertEqual(done.stderr, "".join(f"wrapton: {warning}\n" for warning in result["warnings"]))
        self.assertEqual((result["exit_code"], result["output_complete"]), (done.returncode, True))
        (stream,) = result["streams"]
        lost = stream["frames_dropped"] + sum(stream["frames_refused"].values())
        self.assertEqual(stream["frames_in"], stream["frames_stored"] + lost)
        self.assertEqual((done.returncode, result["state"]), (1, "warned") if lost else (0, "done"))
        return stream, result["warnings"]

    def check_dropped(self, container, count, of):
        stream, warnings = self.packed_into(container)
        self.assertEqual((stream["frames_in"], stream["frames_dropped"], stream["frames_refused"]), (of, count, {}),
                         container)
        self.assertEqual(warnings, [f"{count} of {of} frames of h264 video are not in the output: "
                                    f"dropped by {container}"])
        if container in MP4_FAMILY:
            self.assertEqual(len(MediaFile(self.output).tracks["vide"].samples), of - count)

    def check_stored(self, container, of):
        stream, warnings = self.packed_into(container)
        self.assertEqual((stream["frames_stored"], warnings), (of, []), container)


class Ahead(DropsTest):
    """A stream that begins with pictures which nothing can be decoded of."""

    def setUp(self):
        super().setUp()
        pictures = [kind(unit) for unit in self.units if is_picture(unit)]
        self.ahead = pictures.index(5, 1) - 1
        first = next(at for at, unit in enumerate(self.units) if is_picture(unit))
        self.put(self.units[:first] + self.units[first + 1:])

    def test_containers_drop_what_is_ahead_of_the_first_key_picture(self):
        self.assertGreater(self.ahead, 1)
        for container in MP4_FAMILY + OTHERS:
            self.check_dropped(container, self.ahead, CAMERA.frames - 1)

    def test_recordings_refuse_it_with_a_code(self):
        stream, warnings = self.packed_into("omf")
        self.assertEqual((stream["frames_dropped"], stream["frames_refused"]), (0, {"3": self.ahead}))
        self.assertEqual(warnings, [f"{self.ahead} of 99 frames of h264 video are not in the output: "
                                    "refused by omf with code 3"])

    def test_packets_need_no_key_picture(self):
        self.check_stored("rtp", CAMERA.frames - 1)

    def test_the_counts_are_told_in_every_form(self):
        for form, words in (([], f"99 frames in, {99 - self.ahead} stored, {self.ahead} dropped by the container"),
                            (["--progress"], f"state=warned\nexit_code=1\n"),
                            (["--progress"], f"video_frames_dropped={self.ahead}\n")):
            done = wrapton("pack", *form, self.source, self.directory / "out.mp4")
            self.assertEqual(done.returncode, 1)
            self.assertIn(words, done.stdout)
            self.assertIn(f"wrapton: {self.ahead} of 99 frames", done.stderr)

    def test_of_many_inputs_the_one_is_named(self):
        done = wrapton("pack", "--to", "mp4", CAMERA.path, self.source, "-o", f"{self.directory}/out/")
        self.assertEqual(done.returncode, 1)
        self.assertIn(f"wrapton: {self.source}: {self.ahead} of 99 frames", done.stderr)
        self.assertEqual(done.stdout.splitlines()[-1], "2 inputs: 1 done, 1 with warnings")

    def test_segments_lose_the_same(self):
        code = wrapton("pack", "--segment", "1", self.source, self.directory / "out.mp4").returncode
        self.assertEqual(code, 1)


class TooLarge(DropsTest):
    """A picture in the middle that no working buffer holds."""

    def setUp(self):
        super().setUp()
        place = [at for at, unit in enumerate(self.units) if is_picture(unit)][30]
        self.put(self.units[:place + 1] + [FILLER + b"\xFF" * 3200000 + b"\x80"] + self.units[place + 1:])

    def test_containers_with_a_bound_drop_it(self):
        for container in MP4_FAMILY + ("mkv", "asf", "asfstream", "flv", "flvstream", "ps", "qvps", "gaysps"):
            self.check_dropped(container, 1, CAMERA.frames)

    def test_others_store_it(self):
        for container in ("avi", "ts", "omf", "rtp"):
            self.check_stored(container, CAMERA.frames)
            self.assertGreater(self.output.stat().st_size, 3200000)


class NoLoss(DropsTest):
    """Calls that emit nothing, or less than they might, and lose nothing."""

    def test_a_picture_of_many_units_behind_short_start_codes_keeps_them(self):
        place = [at for at, unit in enumerate(self.units) if is_picture(unit)][30]
        self.put(self.units[:place + 1] + [FILLER + b"\xFF\x80"] * 150 + self.units[place + 1:])
        for container in ("flv", "flvstream", "mp4", "mkv"):
            self.check_stored(container, CAMERA.frames)
            copied = subprocess.run(["ffmpeg", "-v", "error", "-i", str(self.output), "-c", "copy", "-f", "h264", "-"],
                                    stdin=subprocess.DEVNULL, capture_output=True, check=True).stdout
            self.assertEqual(copied.count(FILLER), 150, container)

    def test_sound_without_data_has_its_place_in_the_index(self):
        frames = adts_frames(TONE.path.read_bytes())
        empty = bytes([*frames[0][:3], frames[0][3] & 0xFC, 0, 7 << 5 | 0x1F, 0xFC])
        source = self.directory / "tone.aac"
        source.write_bytes(b"".join(frames[:10] + [empty] + frames[10:]))
        for container in MP4_FAMILY:
            output = self.directory / container
            result = self.packed("--to", container, CAMERA.path, source, output)
            self.assertEqual(result["streams"][1]["frames_stored"], TONE.frames + 1)
            sizes = [len(sample) for sample in MediaFile(output).tracks["soun"].samples]
            self.assertEqual(sizes, [len(frame) - 7 for frame in frames[:10] + [empty] + frames[10:]])


class Passed(DropsTest):
    """A transport stream passes over pictures that are neither I nor P."""

    def test_such_a_picture_leaves_no_trace(self):
        recording = self.directory / "source.omf"
        self.packed(CAMERA.path, recording)
        pictures = [frame.payload for frame in omf.read(recording.read_bytes())]
        types = [0xFD, 0xFC, 0xFC]
        parts = [omf.picture(payload, kind=code, number=number, stamp=40 * number)
                 for number, (payload, code) in enumerate(zip(pictures, types), 1)]
        other = omf.picture(pictures[3], kind=0x00, number=4, stamp=160)
        recording.write_bytes(b"".join(parts))
        stream, _ = self.packed_into("ts", recording)
        self.assertEqual(stream["frames_stored"], 3)
        without = self.output.read_bytes()
        recording.write_bytes(b"".join(parts[:2] + [other] + parts[2:]))
        stream, _ = self.packed_into("ts", recording)
        self.assertEqual((stream["frames_stored"], stream["frames_dropped"]), (3, 1))
        self.assertEqual(self.output.read_bytes(), without)


if __name__ == "__main__":
    main()
