"""Every video stream in AVI, alone and with sound, read by ffprobe and ffmpeg. Argument: video (a
key of readers.VIDEO).

The entries of idx1 have their fields at other places than AVI 1.0 says, so readers that trust idx1
stumble; the files are read without it."""

import sys
import unittest

from readers import MEDIA, VIDEO, MediaTest, decoded_hashes, ffprobe, main
from riff import AviFile, without_idx1

SOUND = {"alaw": "tone_8000_mono.alaw", "s16le": "tone_8000_mono.s16le"}
PROBED_SOUND = {"alaw": "pcm_alaw", "s16le": "pcm_s16le"}
# Both streams declare samples of 2 bytes, while A-law has 1 in a block.
SAMPLE_SIZE = "sample size (2) != block align (1)"


class PackagedStream(MediaTest):
    def __init__(self, video, sound):
        super().__init__("runTest")
        self.video = VIDEO[video]
        self.sound = sound
        self.name = f"avi: {video} with {sound or 'no sound'}"

    def __str__(self):
        return self.name

    def runTest(self):
        output = self.directory / "packaged.avi"
        inputs = [self.video.path] + ([MEDIA / SOUND[self.sound]] if self.sound else [])
        result = self.packed("--fps", self.video.rate, *inputs, output)
        self.assertEqual(result["bytes"], output.stat().st_size)
        self.assertEqual(result["streams"][0]["frames_stored"], self.video.frames)
        found = self.check_description(without_idx1(output, self.directory / "plain.avi"))
        self.assertEqual(decoded_hashes(self.directory / "plain.avi", "v", self.video.codec),
                         decoded_hashes(self.video.path, "v", self.video.codec))
        if self.sound:
            self.check_sound(output, found)
        self.check_readers_that_trust_idx1(output)

    def check_description(self, path):
        found, complaints = ffprobe(path, "-show_format", "-show_streams", "-count_packets")
        if self.sound == "alaw":
            self.assertEqual(complaints.count("\n"), complaints.count(SAMPLE_SIZE), complaints)
        else:
            self.assertEqual(complaints, "")
        self.assertEqual(found["format"]["format_name"], "avi")
        self.assertEqual(len(found["streams"]), 2 if self.sound else 1)
        video = found["streams"][0]
        self.assertEqual((video["codec_name"], video["width"], video["height"]),
                         (self.video.codec, self.video.width, self.video.height))
        self.assertEqual(video["avg_frame_rate"], f"{self.video.rate}/1")
        self.assertEqual(int(video["nb_read_packets"]), self.video.frames)
        return found

    def check_sound(self, output, found):
        audio = found["streams"][1]
        self.assertEqual((audio["codec_name"], audio["sample_rate"], audio["channels"]),
                         (PROBED_SOUND[self.sound], "8000", 1))
        with AviFile(output) as avi:
            stored = b"".join(data for code, data in avi.chunks() if code == b"01wb")
        self.assertEqual(stored, (MEDIA / SOUND[self.sound]).read_bytes())

    def check_readers_that_trust_idx1(self, output):
        """They take the flags for the offset and the offset for the length, and find less."""
        found, complaints = ffprobe(output, "-show_streams", "-count_packets")
        counts = [stream.get("nb_read_packets") for stream in found.get("streams", [])]
        self.assertTrue(complaints)
        self.assertNotIn(str(self.video.frames), counts[:1])


def suite(video):
    return unittest.TestSuite(PackagedStream(video, sound) for sound in [None, *SOUND])


if __name__ == "__main__":
    main(suite(sys.argv[1]))
