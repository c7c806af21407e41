"""Every video stream in ASF, alone and with sound, read by ffprobe and ffmpeg. Argument: video (a key
of readers.VIDEO)."""

import functools
import struct
import subprocess
import sys
import unittest

from readers import MEDIA, VIDEO, MediaTest, decoded_hashes, ffmpeg, ffprobe, main

DATA_START = 818
PACKET = 2076
INDEX = bytes.fromhex("90080033 B1E5 CF11 89F400A0C90349CB")
DEMUXER = {"h264": "h264", "mpeg4": "m4v", "mjpeg": "mjpeg"}
# name of the encoding here, ffmpeg's codec and muxer, bytes a second, factor of the audio clock
SOUND = {
    "s16le": ("pcm_s16le", "s16le", 16000, 1),
    "alaw": ("pcm_alaw", "alaw", 8000, 2),
    "ulaw": ("pcm_mulaw", "mulaw", 8000, 2),
}


@functools.cache
def source_hashes(path, decoder):
    return decoded_hashes(path, "v", decoder)


def packets(path, kind, *options):
    found, _ = ffprobe(path, "-select_streams", kind, "-show_packets", *options)
    return found["packets"]


def milliseconds(packet):
    return round(1000 * float(packet["dts_time"]))


class Asf(MediaTest):
    def __init__(self, video, sound):
        super().__init__("runTest")
        self.video = VIDEO[video]
        self.sound = sound

    def __str__(self):
        return f"{self.video.name} with {self.sound or 'no sound'}"

    def sound_source(self):
        samples = MEDIA / "tone_8000_mono.s16le"
        if self.sound == "s16le":
            return samples
        source = self.directory / f"tone.{self.sound}"
        ffmpeg("-f", "s16le", "-ar", 8000, "-ac", 1, "-i", samples, "-f", SOUND[self.sound][1],
               source)
        return source

    def runTest(self):
        self.output = self.directory / "packaged.asf"
        inputs = [self.video.path] + ([self.sound_source()] if self.sound else [])
        self.interval = 1000 // self.video.rate
        result = self.packed("--fps", self.video.rate, *inputs, self.output)
        self.assertEqual(result["bytes"], self.output.stat().st_size)
        for stream in result["streams"]:
            self.assertEqual((stream["frames_in"], stream["frames_refused"]),
                             (stream["frames_stored"], {}))
        self.check_notes(" ".join(result["notes"]))
        self.check_streams()
        self.check_pictures()
        self.check_seeking()
        if self.sound:
            self.check_sound(inputs[1])

    def check_notes(self, notes):
        self.assertEqual("whole milliseconds" in notes, 1000 % self.video.rate != 0)
        self.assertEqual("twice its time" in notes, self.sound in ("alaw", "ulaw"))
        self.assertNotIn("cuts an mpeg4", notes)

    def check_streams(self):
        found = self.assert_reads_clean(self.output)
        self.assertEqual(found["format"]["format_name"], "asf")
        streams = {stream["codec_type"]: stream for stream in found["streams"]}
        self.assertEqual(len(found["streams"]), 2 if self.sound else 1)
        video = streams["video"]
        self.assertEqual((video["codec_name"], video["width"], video["height"]),
                         (self.video.codec, self.video.width, self.video.height))
        self.assertEqual(int(video["nb_read_packets"]), self.video.frames)
        if self.sound:
            audio = streams["audio"]
            self.assertEqual((audio["codec_name"], audio["sample_rate"], audio["channels"]),
                             (SOUND[self.sound][0], "8000", 1))
        self.assertAlmostEqual(float(found["format"]["duration"]),
                               (self.video.frames - 1) * self.interval / 1000, places=3)

    def check_pictures(self):
        read = packets(self.output, "v")
        self.assertEqual([milliseconds(packet) for packet in read],
                         [self.interval * i for i in range(self.video.frames)])
        source = packets(self.video.path, "v", "-f", DEMUXER[self.video.codec])
        self.assertEqual(["K" in packet["flags"] for packet in read],
                         ["K" in packet["flags"] for packet in source])
        self.assertEqual(decoded_hashes(self.output, "v", self.video.codec),
                         source_hashes(self.video.path, self.video.codec))

    def check_sound(self, source):
        _, muxer, rate, factor = SOUND[self.sound]
        time = 0
        for packet in packets(self.output, "a"):
            self.assertEqual(milliseconds(packet), time)
            time += int(packet["size"]) * 1000 * factor // rate
        copied = subprocess.run(["ffmpeg", "-v", "error", "-i", str(self.output), "-map", "0:a",
                                 "-c", "copy", "-f", muxer, "-"],
                                stdin=subprocess.DEVNULL, capture_output=True, check=False).stdout
        self.assertEqual(copied, source.read_bytes())

    def check_seeking(self):
        """A reader goes where the index says, which is the last key picture of that second; with
        another index it goes elsewhere."""
        data = bytearray(self.output.read_bytes())
        at = data.rindex(INDEX)
        (count,) = struct.unpack_from("<I", data, at + 52)
        self.assertEqual(len(data), at + 56 + 6 * count)
        # An entry comes with the first picture beyond each whole second.
        self.assertEqual(count, (self.interval * (self.video.frames - 1) + 999) // 1000)
        entries = [struct.unpack_from("<IH", data, at + 56 + 6 * i) for i in range(count)]
        keys = [packet for packet in packets(self.output, "v") if "K" in packet["flags"]]
        for second, (number, _) in enumerate(entries):
            place = DATA_START + PACKET * number
            reached = [key for key in keys
                       if milliseconds(key) < 1000 * second + 1 + self.interval]
            self.assertEqual(place, int(reached[-1]["pos"]))
            self.assertEqual(self.place_of(self.output, second + 0.5), place)

        for i in range(count):
            struct.pack_into("<IH", data, at + 56 + 6 * i, 0, 1)
        other = self.directory / "other.asf"
        other.write_bytes(data)
        self.assertEqual(self.place_of(other, count - 0.5), DATA_START)

    def place_of(self, path, seconds):
        """Where the first picture packet stands that a reader gets after a seek."""
        found = packets(path, "v", "-read_intervals", f"{seconds}%+#1")
        return int(found[0]["pos"])


def suite(video):
    return unittest.TestSuite(Asf(video, sound) for sound in [None, *SOUND])


if __name__ == "__main__":
    main(suite(sys.argv[1]))
