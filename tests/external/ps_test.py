"""Program streams of the three flavours, read by ffprobe and ffmpeg and from their own structures.
Argument: the name of a test class."""

import functools
import re
import subprocess
import sys
import unittest

from program_stream import AUDIO as SOUND
from program_stream import VIDEO as PICTURES
from program_stream import read
from readers import (AUDIO, MEDIA, VIDEO, MediaTest, decoded_hashes, ffmpeg, ffprobe, main,
                     pack_json)

RAW_FORMAT = {"h264": "h264", "mpeg4": "m4v", "aac": "adts", "mp2": "mp2"}


@functools.cache
def source_hashes(path, kind, decoder):
    return decoded_hashes(path, kind, decoder)


class ProgramStreamTest(MediaTest):
    def pack(self, container, video, audio=None):
        output = self.directory / "program.mpg"
        inputs = [one.path for one in (video, audio) if one]
        rate = ["--fps", video.rate] if video else []
        result = self.packed("--to", container, *rate, *inputs, output)
        for stream, source in zip(result["streams"], [one for one in (video, audio) if one],
                                  strict=True):
            self.assertEqual((stream["frames_in"], stream["frames_stored"]),
                             (source.frames, source.frames))
        self.assertEqual(result["notes"] if video and "bframes" not in video.name else [], [])
        return output

    def check_foreign_readers(self, output, video, audio):
        found = self.assert_reads_clean(output)
        streams = {stream["codec_type"]: stream for stream in found["streams"]}
        self.assertEqual(len(streams), 2 if audio else 1)
        self.assertEqual((streams["video"]["codec_name"], streams["video"]["id"],
                          streams["video"]["width"], streams["video"]["height"]),
                         (video.codec, "0x1e0", video.width, video.height))
        self.assertEqual(int(streams["video"]["nb_read_packets"]), video.frames)
        self.check_extracted(output, "v", video)
        if audio:
            self.assertEqual((streams["audio"]["codec_name"], streams["audio"]["id"],
                              streams["audio"]["sample_rate"]),
                             (audio.codec, "0x1c0", str(audio.rate)))
            self.assertEqual(int(streams["audio"]["nb_read_packets"]), audio.frames)
            self.check_extracted(output, "a", audio)

    def check_extracted(self, output, kind, source):
        """The elementary stream comes out byte for byte, and decodes alike."""
        raw = self.directory / "extracted"
        # Sound of the standard flavour has the times of pictures, which repeat.
        ffmpeg("-v", "fatal", "-i", output, "-map", f"0:{kind}:0", "-c", "copy", "-f",
               RAW_FORMAT[source.codec], raw)
        self.assertEqual(raw.read_bytes(), source.path.read_bytes())
        self.assertEqual(decoded_hashes(output, kind, source.codec),
                         source_hashes(source.path, kind, source.codec))

    def check_structures(self, output, video, audio, first_clock):
        """Every structure ends where the next begins; clocks advance by a frame."""
        stream = read(output.read_bytes())
        self.assertEqual(stream.elementary(PICTURES), video.path.read_bytes())
        self.assertEqual(stream.elementary(SOUND), audio.path.read_bytes() if audio else b"")
        step = 90000 // video.rate
        wanted = [first_clock + step * (i + 1) for i in range(video.frames)]
        self.assertEqual(sorted(set(stream.stamps(PICTURES))), wanted)
        stamped = [one for one in stream.packets if one.dts is not None]
        self.assertEqual(stamped, stream.packets[:1])
        self.assertEqual(sorted(set(stream.clocks)),
                         [step * (i + 1) for i in range(video.frames)])
        return stream


class Standard(ProgramStreamTest):
    def check(self, video, audio):
        output = self.pack("ps", VIDEO[video], AUDIO.get(audio))
        self.check_foreign_readers(output, VIDEO[video], AUDIO.get(audio))
        stream = self.check_structures(output, VIDEO[video], AUDIO.get(audio), 60000)
        self.assertEqual(stream.systems, len(stream.maps))
        # Sound has no times of its own.
        self.assertLessEqual(set(stream.stamps(SOUND)), set(stream.stamps(PICTURES)))

    def test_every_video_alone_and_with_layer_2(self):
        for video in ("h264_baseline", "h264_bframes", "mpeg4"):
            for audio in (None, "mp2_16000_mono", "mp2_48000_stereo"):
                with self.subTest(video=video, audio=audio):
                    self.check(video, audio)


class Qv(ProgramStreamTest):
    def test_every_video_alone_and_with_aac_and_layer_2(self):
        for video in ("h264_baseline", "h264_bframes", "mpeg4"):
            for audio in (None, "aac_8000_mono", "aac_44100_stereo", "mp2_16000_mono"):
                with self.subTest(video=video, audio=audio):
                    self.check(VIDEO[video], AUDIO.get(audio))

    def check(self, video, audio):
        output = self.pack("qvps", video, audio)
        self.check_foreign_readers(output, video, audio)
        stream = self.check_structures(output, video, audio, 60000)
        sounds = audio.frames if audio else 0
        # Each I picture has a map and a system header, each 25th frame of sound a map.
        self.assertEqual(len(stream.maps), stream.systems + (sounds + 24) // 25)
        if audio:
            samples = 1024 if audio.codec == "aac" else 1152
            step = samples * 90000 // (audio.rate * audio.channels)
            self.assertEqual(stream.stamps(SOUND),
                             [60000 + step * (i + 1) for i in range(sounds)])

    def test_layer_2_of_another_rate_is_refused(self):
        code, result = pack_json("--to", "qvps", "--fps", 25, VIDEO["h264_baseline"].path,
                                 AUDIO["mp2_48000_stereo"].path, self.directory / "out.mpg")
        self.assertEqual(code, 1)
        self.assertIn("it dropped all", result["streams"][1]["refusal"])


class Gays(ProgramStreamTest):
    def test_video_reads_in_spite_of_the_map(self):
        for name in ("h264_baseline", "h264_bframes", "mpeg4"):
            with self.subTest(video=name):
                output = self.pack("gaysps", VIDEO[name])
                self.check_extracted(output, "v", VIDEO[name])

    def test_the_length_of_the_map_leads_a_strict_reader_astray(self):
        output = self.pack("gaysps", VIDEO["h264_baseline"])
        data = output.read_bytes()
        with self.assertRaisesRegex(ValueError, "no start code at 70"):  # 14 + 18 + 36 + 2
            read(data)
        right = re.sub(b"\x00\x00\x01\xBC\x00\x20", b"\x00\x00\x01\xBC\x00\x1E", data)
        stream = read(right)
        self.assertEqual(stream.elementary(PICTURES),
                         VIDEO["h264_baseline"].path.read_bytes())
        self.assertEqual(stream.clocks, [3600 * i for i in range(100)])

    def test_a_law_comes_out_whole_but_is_taken_for_mpeg_audio(self):
        sound = MEDIA / "tone_8000_mono.alaw"
        output = self.directory / "program.mpg"
        self.packed("--to", "gaysps", "--fps", 25, VIDEO["h264_baseline"].path, sound, output)
        right = re.sub(b"\x00\x00\x01\xBC\x00\x20", b"\x00\x00\x01\xBC\x00\x1E",
                       output.read_bytes())
        self.assertEqual(read(right).elementary(SOUND), sound.read_bytes())
        _, complaints = ffprobe(output, "-show_streams")
        self.assertNotEqual(complaints, "")


class LongUnits(ProgramStreamTest):
    """Slices above 64 KiB behind start codes of four bytes."""

    def setUp(self):
        super().setUp()
        self.source = self.directory / "slices.h264"
        plain = self.directory / "plain.h264"
        done = subprocess.run(
            ["ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=1280x720:r=25,noise=alls=60",
             "-frames:v", "12", "-c:v", "libx264", "-preset", "ultrafast", "-qp", "30",
             "-x264-params", "slices=4:keyint=2", str(plain)], check=False, capture_output=True)
        if done.returncode != 0:
            self.skipTest("this ffmpeg has no libx264")
        # In front of each 00 00 01 exactly one zero byte more.
        self.source.write_bytes(re.sub(b"\x00*\x00\x00\x01", b"\x00\x00\x00\x01",
                                       plain.read_bytes()))

    def test_no_length_wraps_and_the_pictures_are_the_same(self):
        units = self.source.read_bytes().split(b"\x00\x00\x00\x01")
        self.assertGreater(sum(len(unit) > 65536 for unit in units), 12)
        for container in ("ps", "qvps"):
            with self.subTest(container=container):
                output = self.directory / "out.mpg"
                result = self.packed("--to", container, "--fps", 25, self.source, output)
                self.assertEqual(result["streams"][0]["frames_stored"], 12)
                self.assert_reads_clean(output)
                stream = read(output.read_bytes())
                # Only pictures with a slice that is too long have become one group.
                self.assertIn(stream.elementary(PICTURES).count(b"\x00\x00\x00\x01"),
                              range(12, len(units) - 1))
                self.assertEqual(stream.elementary(PICTURES).replace(b"\x00\x00\x00\x01",
                                                                     b"\x00\x00\x01"),
                                 self.source.read_bytes().replace(b"\x00\x00\x00\x01",
                                                                  b"\x00\x00\x01"))
                self.assertEqual(decoded_hashes(output, "v", "h264"),
                                 decoded_hashes(self.source, "v", "h264"))


if __name__ == "__main__":
    main(unittest.defaultTestLoader.loadTestsFromTestCase(globals()[sys.argv[1]]))
