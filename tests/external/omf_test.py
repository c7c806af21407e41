"""Native recordings: packaged, told about, and taken as input for other containers."""

import json
import os
import random

import omf
from boxes import MediaFile
from readers import AUDIO, MEDIA, VIDEO, MediaTest, decoded_hashes, main, wrapton

CAMERA = VIDEO["h264_baseline"]
AAC = AUDIO["aac_8000_mono"]
ENCODING = {"h264": 2, "mpeg4": 1, "mjpeg": 5}


def payloads(frames, stream):
    return b"".join(frame.payload for frame in frames if frame.stream == stream)


class OmfTest(MediaTest):
    def setUp(self):
        super().setUp()
        self.recording = self.directory / "camera.omf"

    def record(self, *inputs):
        return self.packed("--fps", CAMERA.rate, *inputs, self.recording)

    def put(self, *frames):
        self.recording.write_bytes(b"".join(frames))

    def info(self, *options, code=0):
        done = wrapton("info", *options, self.recording)
        self.assertEqual((done.returncode, done.stderr), (code, ""))
        return done.stdout

    def summary(self, code=0):
        return json.loads(self.info("--json", code=code))

    def frame_lines(self, code=0):
        return [json.loads(line) for line in self.info("--json", "--frames", code=code).splitlines()]


class Recorded(OmfTest):
    def test_real_streams_are_stored_byte_for_byte(self):
        for video in VIDEO.values():
            for audio in AUDIO.values():
                with self.subTest(video=video.name, audio=audio.name):
                    result = self.packed("--fps", video.rate, video.path, audio.path,
                                         self.recording)
                    counts = [stream["frames_stored"] for stream in result["streams"]]
                    self.assertEqual(counts, [video.frames, audio.frames])
                    frames = omf.read(self.recording.read_bytes())
                    self.assertEqual(payloads(frames, "video"), video.path.read_bytes())
                    self.assertEqual(payloads(frames, "audio"), audio.path.read_bytes())
                    self.check_description(frames, video)

    def check_description(self, frames, video):
        pictures = [frame for frame in frames if frame.stream == "video"]
        self.assertEqual([frame.number for frame in pictures], list(range(1, video.frames + 1)))
        for frame in pictures:
            self.assertEqual(frame.ex[0x80],
                             bytes([0x80, 2, video.width // 8, video.height // 8]))
            self.assertEqual(frame.ex[0x81],
                             bytes([0x81, 0, ENCODING[video.codec], video.rate]))

    def test_b_pictures_are_marked(self):
        self.record(VIDEO["h264_bframes"].path)
        kinds = {frame.type for frame in omf.read(self.recording.read_bytes())}
        self.assertEqual(kinds, {0xFD, 0xFC, 0xFE})

    def test_sound_alone_is_stored(self):
        for name, encoding in (("tone_8000_mono.alaw", 14), ("tone_8000_mono.s16le", 16)):
            self.packed(MEDIA / name, self.recording)
            frames = omf.read(self.recording.read_bytes())
            self.assertEqual(payloads(frames, "audio"), (MEDIA / name).read_bytes())
            # 64000 and 128000 bits per second have no code.
            self.assertEqual(frames[0].ex[0x8C], bytes([0x8C, 8, 1, encoding, 2, 0, 0, 0]))


class Exported(OmfTest):
    def test_decoded_pictures_and_sound_equal_the_source(self):
        for video in (CAMERA, VIDEO["h264_bframes"], VIDEO["mjpeg"]):
            for audio in AUDIO.values():
                for extension in ("mp4", "mov"):
                    with self.subTest(video=video.name, audio=audio.name, output=extension):
                        self.packed("--fps", video.rate, video.path, audio.path, self.recording)
                        output = self.directory / ("out." + extension)
                        result = self.packed(self.recording, output)
                        counts = [stream["frames_stored"] for stream in result["streams"]]
                        self.assertEqual(counts, [video.frames, audio.frames])
                        self.assertEqual(result["notes"], self.b_note(video, result))
                        self.assertEqual(result["left_out"], [])
                        self.assert_reads_clean(output)
                        self.assertEqual(MediaFile(output).tracks["vide"].delta,
                                         90000 // video.rate)
                        for kind, source in (("v", video), ("a", audio)):
                            self.assertEqual(decoded_hashes(output, kind, source.codec),
                                             decoded_hashes(source.path, kind, source.codec))

    def b_note(self, video, result):
        return [note for note in result["notes"] if "B pictures" in note] \
            if video is VIDEO["h264_bframes"] else []

    def test_export_is_the_same_as_without_the_detour(self):
        for video in VIDEO.values():
            direct = self.directory / "direct.mp4"
            self.packed("--fps", video.rate, video.path, AAC.path, direct)
            self.packed("--fps", video.rate, video.path, AAC.path, self.recording)
            output = self.directory / "out.mp4"
            self.packed(self.recording, output)
            for handler in ("vide", "soun"):
                wanted = MediaFile(direct).tracks[handler]
                found = MediaFile(output).tracks[handler]
                self.assertEqual(found.samples, wanted.samples)
                self.assertEqual((found.sync, found.delta), (wanted.sync, wanted.delta))

    def test_sound_alone_goes_into_wav(self):
        source = MEDIA / "tone_8000_mono.s16le"
        self.packed(source, self.recording)
        output = self.directory / "out.wav"
        result = self.packed(self.recording, output)
        self.assertEqual(result["notes"], [])
        self.assertEqual(output.read_bytes()[44:], source.read_bytes())

    def test_a_recording_is_known_by_its_first_bytes_too(self):
        self.record(CAMERA.path)
        renamed = self.directory / "camera.bin"
        self.recording.rename(renamed)
        self.packed(renamed, self.directory / "out.mp4")

    def test_streams_can_be_chosen(self):
        self.record(CAMERA.path, AAC.path)
        output = self.directory / "out.mp4"
        result = self.packed("--video", self.recording, "--audio",
                             AUDIO["mp2_48000_stereo"].path, output)
        self.assertEqual([stream["codec"] for stream in result["streams"]], ["h264", "mp2"])
        self.assertEqual(result["left_out"], [f"{self.recording}: its audio"])
        result = self.packed(CAMERA.path, "--audio", self.recording, output)
        self.assertEqual([stream["codec"] for stream in result["streams"]], ["h264", "aac"])
        self.assertEqual(result["left_out"], [f"{self.recording}: its video"])
        done = wrapton("pack", "--audio", self.recording, "--video", self.recording, output)
        self.assertEqual(done.returncode, 0)
        done = wrapton("pack", self.recording, self.recording, output)
        self.assertEqual(done.returncode, 2)
        self.assertIn("nothing to take from it", done.stderr)

    def test_another_rate_overrules_the_recording(self):
        self.record(CAMERA.path)
        output = self.directory / "out.mp4"
        result = self.packed("--fps", 50, self.recording, output)
        self.assertEqual(result["streams"][0]["frame_rate"], [50, 1])
        self.assertEqual(MediaFile(output).tracks["vide"].delta, 90000 // 50)

    def test_a_recording_without_a_rate_is_measured(self):
        pictures = [frame.payload for frame in self.recorded_frames()]
        self.put(*(omf.picture(payload, rate=0, stamp=40 * i, kind=0xFD if i == 0 else 0xFC)
                   for i, payload in enumerate(pictures)))
        result = self.packed(self.recording, self.directory / "out.mp4")
        num, den = result["streams"][0]["frame_rate"]
        self.assertEqual(num / den, 25)

    def recorded_frames(self):
        self.record(CAMERA.path)
        return omf.read(self.recording.read_bytes())

    def test_a_rate_that_the_format_lacks_comes_from_the_frames(self):
        block = bytes(20)
        header = bytes([0xFF, 0xF1, 0x64, 0x40, 0x03, 0x7F, 0xFC])  # 12000 Hz, 27 bytes
        self.put(*(frame_bytes for frame_bytes in (
            omf.picture(self.recorded_frames()[0].payload, stamp=40),
            omf.sound(header + block, rate_index=0, stamp=40))))
        result = self.packed(self.recording, self.directory / "out.mp4")
        self.assertEqual(result["streams"][1]["sample_rate"], 12000)

    def test_frames_of_an_unknown_encoding_are_refused_and_counted(self):
        first = self.recorded_frames()[0].payload
        self.put(omf.picture(first, stamp=40), omf.picture(first, encoding=11, stamp=80),
                 omf.picture(first, stamp=120))
        result = self.packed_with_losses(self.recording, self.directory / "out.mp4")
        stream = result["streams"][0]
        self.assertEqual((stream["frames_in"], stream["frames_stored"]), (3, 2))
        # The library answers 3 for a frame without bytes.
        self.assertEqual(stream["frames_refused"], {"3": 1})

    def test_a_stream_of_an_unknown_encoding_is_refused(self):
        self.put(omf.picture(b"x", encoding=11), omf.sound(b"y", encoding=48))
        done = wrapton("pack", self.recording, self.directory / "out.mp4")
        self.assertEqual(done.returncode, 1)
        self.assertIn("encoding 11 video cannot be stored", done.stderr)
        self.assertIn("encoding 48 audio cannot be stored", done.stderr)

    def test_extensions_and_damage_are_told(self):
        first = self.recorded_frames()[0].payload
        self.put(b"garbage", omf.picture(first, stamp=40), omf.extension(b"a"), omf.extension(b"b"))
        result = self.packed(self.recording, self.directory / "out.mp4")
        self.assertEqual(result["left_out"], [f"{self.recording}: 2 frames of extension data",
                                              f"{self.recording}: 7 damaged bytes"])

    def test_damaged_frames_go_in_and_are_counted(self):
        frames = self.recorded_frames()
        data = bytearray(self.recording.read_bytes())
        data[frames[10].offset + 60] ^= 1
        self.recording.write_bytes(data)
        result = self.packed(self.recording, self.directory / "out.mp4")
        stream = result["streams"][0]
        self.assertEqual((stream["frames_stored"], stream["frames_damaged"]), (CAMERA.frames, 1))

    def test_what_is_no_recording_is_a_failure(self):
        self.recording.write_bytes(b"no recording at all")
        done = wrapton("pack", self.recording, self.directory / "out.mp4")
        self.assertEqual(done.returncode, 2)
        self.assertIn("no frame of a native recording", done.stderr)
        os.remove(self.recording)
        os.mkfifo(self.recording)
        done = wrapton("pack", self.recording, self.directory / "out.mp4")
        self.assertEqual(done.returncode, 2)
        self.assertIn("seek", done.stderr)


class Told(OmfTest):
    def test_the_summary_tells_streams_counts_and_times(self):
        self.record(CAMERA.path, AAC.path)
        found = self.summary()
        self.assertEqual(found["bytes"], self.recording.stat().st_size)
        self.assertEqual(found["frames"], CAMERA.frames + AAC.frames)
        self.assertEqual(found["duration_ms"], 4096 - 40)
        self.assertEqual((found["frames_damaged"], found["bytes_skipped"], found["damage"]),
                         (0, 0, []))
        video, audio = found["streams"]
        frames = omf.read(self.recording.read_bytes())
        self.assertEqual((video["kind"], video["codecs"], video["width"], video["height"],
                          video["frame_rate"], video["interlaced"], video["frames"]),
                         ("video", ["h264"], 640, 360, 25, False, CAMERA.frames))
        self.assertEqual(video["frames_i"], sum(frame.type == 0xFD for frame in frames))
        self.assertEqual(video["frames_p"], sum(frame.type == 0xFC for frame in frames))
        self.assertEqual(video["frames_b"], 0)
        self.assertEqual(video["payload_bytes"], CAMERA.path.stat().st_size)
        self.assertEqual((video["start_ms"], video["end_ms"]), (40, 3960))
        self.assertEqual((audio["kind"], audio["codecs"], audio["sample_rate"], audio["channels"],
                          audio["frames"]), ("audio", ["aac"], 8000, 1, AAC.frames))
        self.assertEqual(audio["payload_bytes"], AAC.path.stat().st_size)

    def test_the_text_says_the_same(self):
        self.put(omf.picture(b"1", stamp=40, date=omf.date(2024, 5, 1, 12, 34, 56)),
                 omf.picture(b"2", stamp=80, kind=0xFC, date=omf.date(2024, 5, 1, 12, 34, 57)),
                 omf.sound(b"3", stamp=50, date=omf.date(2024, 5, 1, 12, 34, 57)),
                 omf.extension(b"4", stamp=60, date=omf.date(2024, 5, 1, 12, 34, 57)))
        self.assertEqual(self.info(), (
            f"{self.recording}: omf, 192 bytes, 0.040 s\n"
            "  video  h264, 640x360, 25/s, 2 frames (1 I, 1 P, 0 B), 0.040 s from first to last\n"
            "  audio  aac, 8000 Hz, 1 channel, 1 frame, 0.000 s from first to last\n"
            "  ext    1 frame, 0.000 s from first to last\n"
            "  dated 2024-05-01T12:34:56 to 2024-05-01T12:34:57\n"
            "  no damage\n"))

    def test_frames_are_told_one_by_one(self):
        self.record(CAMERA.path, AAC.path)
        lines = self.frame_lines()
        frames = omf.read(self.recording.read_bytes())
        self.assertEqual(len(lines), len(frames))
        for line, frame in zip(lines, frames, strict=True):
            self.assertEqual((line["offset"], line["bytes"], line["stream"], line["number"],
                              line["payload"], line["intact"]),
                             (frame.offset, frame.length, frame.stream, frame.number,
                              len(frame.payload), True))
            self.assertEqual(line["time_ms"], frame.stamp)
            if frame.stream == "video":
                self.assertEqual(line["kind"], omf.PICTURES[frame.type])
                self.assertEqual((line["codec"], line["width"], line["height"],
                                  line["frame_rate"]), ("h264", 640, 360, 25))
            else:
                self.assertIsNone(line["kind"])
                self.assertEqual((line["codec"], line["sample_rate"], line["channels"]),
                                 ("aac", 8000, 1))
        self.assertEqual(len(self.info("--frames").splitlines()), len(frames))

    def test_a_frame_line_of_text_has_all_columns(self):
        self.put(b"???", omf.extension(b"1", number=7, stamp=1500, sub_type=9,
                                       date=omf.date(2031, 12, 31, 23, 59, 58)), b"??")
        self.assertEqual([line.split() for line in self.info("--frames", code=1).splitlines()],
                         [["0", "3", "no", "frame"],
                          ["3", "41", "ext", "7", "9", "1.500", "2031-12-31T23:59:58", "-"],
                          ["44", "2", "no", "frame"]])

    def test_times_go_on_beyond_the_stamps(self):
        self.put(*(omf.picture(b"x", number=i, stamp=i * 1000 % 65536) for i in range(1, 200)))
        self.assertEqual([line["time_ms"] for line in self.frame_lines()],
                         [i * 1000 for i in range(1, 200)])

    def test_encodings_that_change_are_all_named(self):
        self.put(omf.picture(b"x"), omf.picture(b"x", encoding=12), omf.picture(b"x", encoding=9),
                 omf.sound(b"x", encoding=22), omf.sound(b"x", encoding=200))
        video, audio = self.summary()["streams"]
        self.assertEqual(video["codecs"], ["h264", "hevc", "unknown"])
        self.assertEqual(audio["codecs"], ["ulaw", "encoding 200"])

    def test_damage_is_told_where_it_is(self):
        self.record(CAMERA.path, AAC.path)
        frames = omf.read(self.recording.read_bytes())
        data = bytearray(self.recording.read_bytes())
        data[frames[20].offset + 8] ^= 1  # number, under the header's checksum
        data[frames[30].offset + frames[30].length - 9] ^= 1  # last byte of the payload
        data = data[:frames[100].offset + 50]
        self.recording.write_bytes(data)
        found = self.summary(code=1)
        kind = frames[30].stream
        self.assertEqual(found["damage"], [
            {"offset": frames[20].offset, "bytes": frames[20].length, "frame": None},
            {"offset": frames[30].offset, "bytes": frames[30].length,
             "frame": f"{kind} frame {frames[30].number}"},
            {"offset": frames[100].offset, "bytes": 50, "frame": None}])
        self.assertEqual((found["frames"], found["frames_damaged"], found["bytes_skipped"],
                          found["places_damaged"]), (99, 1, frames[20].length + 50, 3))
        text = self.info(code=1)
        self.assertIn("damage in 3 places: 1 frame with a wrong check, "
                      f"{frames[20].length + 50} bytes that are no frame\n", text)
        lines = self.frame_lines(code=1)
        self.assertEqual(len(lines), 101)
        self.assertEqual(lines[20], {"offset": frames[20].offset, "bytes": frames[20].length,
                                     "stream": None})
        self.assertEqual([line["offset"] for line in lines if line.get("intact") is False],
                         [frames[30].offset])
        self.assertEqual(lines[100], {"offset": frames[100].offset, "bytes": 50, "stream": None})

    def test_random_damage_costs_no_frame_that_it_does_not_hit(self):
        self.record(CAMERA.path, AAC.path)
        source = self.recording.read_bytes()
        frames = omf.read(source)
        for seed in range(20):
            chance = random.Random(seed)
            data = bytearray(source)
            for _ in range(1 + seed):
                data[chance.randrange(len(data))] = chance.randrange(256)
            self.recording.write_bytes(data)
            done = wrapton("info", "--json", "--frames", self.recording)
            lines = [json.loads(line) for line in done.stdout.splitlines()]
            whole = {line["offset"] for line in lines if line.get("intact")}
            for frame in frames:
                span = slice(frame.offset, frame.offset + frame.length)
                if data[span] == source[span]:
                    self.assertIn(frame.offset, whole, f"seed {seed}")

    def test_many_places_are_counted_and_some_told(self):
        self.put(*(b"?" + omf.extension(b"1") for _ in range(1500)))
        found = self.summary(code=1)
        self.assertEqual((found["places_damaged"], len(found["damage"])), (1500, 1000))
        self.assertIn("and 500 more\n", self.info(code=1))

    def test_what_is_no_recording_is_a_failure(self):
        for path, words in ((CAMERA.path, "no frame of a native recording"),
                            (self.directory / "none.omf", "No such file"),
                            (self.directory, "directory")):
            for options in ((), ("--json",), ("--frames",)):
                done = wrapton("info", *options, path)
                self.assertEqual((done.returncode, done.stdout), (2, ""))
                self.assertIn(words, done.stderr)

    def test_help_names_the_options(self):
        text = wrapton("info", "--help").stdout
        for word in ("FILE", "--json", "--frames", "Exit codes"):
            self.assertIn(word, text)


if __name__ == "__main__":
    main()
