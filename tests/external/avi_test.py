"""Every video stream in AVI, alone and with sound, read by ffprobe and ffmpeg. Argument: video (a
key of readers.VIDEO).

The entries of idx1 have their fields at other places than AVI 1.0 says, so readers that trust idx1
stumble; the files are read without it."""

import functools
import sys

from readers import MEDIA, VIDEO, MediaTest, decoded_hashes, ffmpeg, ffprobe, main
from riff import AviFile, without_idx1

SAMPLES = MEDIA / "tone_8000_mono.s16le"
# Both streams declare samples of 2 bytes, while G.711 has 1 in a block.
SAMPLE_SIZE = "sample size (2) != block align (1)"


@functools.cache
def source_hashes(path, decoder):
    return decoded_hashes(path, "v", decoder)


class Pictures(MediaTest):
    sound = None  # name of the encoding here, ffmpeg's codec and muxer

    def setUp(self):
        super().setUp()
        self.output = self.directory / "packaged.avi"
        inputs = [self.video.path]
        if self.sound:
            self.sound_source = self.directory / f"tone.{self.sound[0]}"
            ffmpeg("-f", "s16le", "-ar", 8000, "-ac", 1, "-i", SAMPLES, "-f", self.sound[2],
                   self.sound_source)
            inputs.append(self.sound_source)
        self.result = self.packed("--fps", self.video.rate, *inputs, self.output)
        self.plain = without_idx1(self.output, self.directory / "plain.avi")

    def test_every_frame_is_stored(self):
        self.assertEqual(self.result["bytes"], self.output.stat().st_size)
        self.assertEqual(self.result["streams"][0]["frames_stored"], self.video.frames)
        for stream in self.result["streams"]:
            self.assertEqual(stream["frames_in"], stream["frames_stored"])

    def test_ffprobe_describes_the_file_without_idx1(self):
        found, complaints = ffprobe(self.plain, "-show_format", "-show_streams", "-count_packets")
        g711 = self.sound is not None and self.sound[0] != "s16le"
        known = complaints.count(SAMPLE_SIZE) if g711 else 0
        self.assertEqual(complaints.count("\n"), known, complaints)
        self.assertEqual(found["format"]["format_name"], "avi")
        self.assertEqual(len(found["streams"]), 2 if self.sound else 1)
        video = found["streams"][0]
        self.assertEqual((video["codec_name"], video["width"], video["height"]),
                         (self.video.codec, self.video.width, self.video.height))
        self.assertEqual(video["avg_frame_rate"], f"{self.video.rate}/1")
        self.assertEqual(int(video["nb_read_packets"]), self.video.frames)
        if self.sound:
            audio = found["streams"][1]
            self.assertEqual((audio["codec_name"], audio["sample_rate"], audio["channels"]),
                             (self.sound[1], "8000", 1))

    def test_pictures_are_those_of_the_source(self):
        self.assertEqual(decoded_hashes(self.plain, "v", self.video.codec),
                         source_hashes(self.video.path, self.video.codec))

    def test_readers_that_trust_idx1_stumble_over_its_layout(self):
        """They take the flags for the offset and the offset for the length, and find less."""
        found, complaints = ffprobe(self.output, "-show_streams", "-count_packets")
        counts = [stream.get("nb_read_packets") for stream in found.get("streams", [])]
        self.assertTrue(complaints)
        self.assertNotIn(str(self.video.frames), counts[:1])


class WithPcm(Pictures):
    sound = ("s16le", "pcm_s16le", "s16le")

    def test_sound_is_stored_whole(self):
        with AviFile(self.output) as avi:
            stored = b"".join(data for code, data in avi.chunks() if code == b"01wb")
        self.assertEqual(stored, self.sound_source.read_bytes())


class WithALaw(WithPcm):
    sound = ("alaw", "pcm_alaw", "alaw")


class WithMuLaw(WithPcm):
    sound = ("ulaw", "pcm_mulaw", "mulaw")


if __name__ == "__main__":
    Pictures.video = VIDEO[sys.argv.pop(1)]
    main()
