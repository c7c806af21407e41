"""H.264 and 16-bit samples in both variants of FLV, read by ffprobe and ffmpeg. Arguments: container,
video (a key of readers.VIDEO)."""

import os
import subprocess
import sys
import threading
import unittest

from readers import MEDIA, VIDEO, WRAPTON, MediaTest, decoded_hashes, ffprobe, main, wrapton

SAMPLES = MEDIA / "tone_8000_mono.s16le"
HEADER = 13 + 11 + 251 + 4  # file header and onMetaData
END_OF_SEQUENCE = 11 + 5 + 4
# The sample size stands in onMetaData without a name, so readers lose the thread of the array.
KNOWN_COMPLAINT = "Missing AMF_END_OF_OBJECT"


def packets(path, kind, *options):
    found, _ = ffprobe(path, "-select_streams", kind, "-show_packets", *options)
    return found["packets"]


def milliseconds(packet):
    return round(1000 * float(packet["dts_time"]))


class Flv(MediaTest):
    def __init__(self, container, video, sound):
        super().__init__("runTest")
        self.container = container
        self.video = VIDEO[video]
        self.sound = sound

    def __str__(self):
        return f"{self.container}: {self.video.name} {'with' if self.sound else 'without'} sound"

    def runTest(self):
        self.output = self.directory / "packaged.flv"
        inputs = [self.video.path] + ([SAMPLES] if self.sound else [])
        result = self.packed("--to", self.container, "--fps", self.video.rate, *inputs, self.output)
        self.assertEqual(result["bytes"], self.output.stat().st_size)
        for stream in result["streams"]:
            self.assertEqual((stream["frames_in"], stream["frames_refused"]),
                             (stream["frames_stored"], {}))
        labelled = f"{self.container} labels sound of 8000 Hz as 5500 Hz"
        self.assertEqual(labelled in result["notes"], self.sound)
        self.check_streams()
        self.check_pictures()
        if self.sound:
            self.check_sound()
        self.check_header()

    def check_streams(self):
        found, complaints = ffprobe(self.output, "-show_format", "-show_streams")
        for line in complaints.splitlines():
            self.assertIn(KNOWN_COMPLAINT, line)
        self.assertEqual(found["format"]["format_name"], "flv")
        streams = {stream["codec_type"]: stream for stream in found["streams"]}
        video = streams["video"]
        self.assertEqual((video["codec_name"], video["width"], video["height"]),
                         ("h264", self.video.width, self.video.height))
        if self.sound:
            self.assertEqual((streams["audio"]["codec_name"], streams["audio"]["channels"]),
                             ("pcm_s16le", 1))
        if self.container == "flv":
            self.assertAlmostEqual(float(found["format"]["duration"]),
                                   self.video.frames / self.video.rate, places=3)

    def check_pictures(self):
        read = packets(self.output, "v")
        self.assertEqual([milliseconds(packet) for packet in read],
                         [1000 * i // self.video.rate for i in range(self.video.frames)])
        source = packets(self.video.path, "v", "-f", "h264")
        self.assertEqual(["K" in packet["flags"] for packet in read],
                         ["K" in packet["flags"] for packet in source])
        self.assertEqual(decoded_hashes(self.output, "v", "h264", KNOWN_COMPLAINT),
                         decoded_hashes(self.video.path, "v", "h264"))

    def check_sound(self):
        """Timed by its bytes as 16-bit mono from the last picture in the file on."""
        pictures = {int(packet["pos"]): milliseconds(packet)
                    for packet in packets(self.output, "v")}
        read = packets(self.output, "a")
        for number, packet in enumerate(read):
            at = int(packet["pos"])
            last = max(place for place in pictures if place < at)
            since = sum(int(earlier["size"]) for earlier in read[:number]
                        if int(earlier["pos"]) > last)
            self.assertEqual(milliseconds(packet), pictures[last] + since * 1000 // 16000)
        copied = subprocess.run(["ffmpeg", "-v", "error", "-i", str(self.output), "-map", "0:a",
                                 "-c", "copy", "-f", "s16le", "-"],
                                stdin=subprocess.DEVNULL, capture_output=True, check=False).stdout
        self.assertEqual(copied, SAMPLES.read_bytes())

    def check_header(self):
        """In a file the closing header took the first one's place: it tells of the sound, and
        nothing stands behind the end of the sequence."""
        data = self.output.read_bytes()
        self.assertEqual(data[:4], b"FLV\1")
        flags = 5 if self.sound or self.container == "flvstream" else 1
        self.assertEqual(data[4], flags)
        self.assertEqual(data.count(b"FLV\1"), 1)
        ends = data[-END_OF_SEQUENCE:].startswith(b"\x09\0\0\x05")
        self.assertEqual(ends, self.container == "flv")


class ClosingHeader(MediaTest):
    def test_goes_behind_the_end_of_the_sequence_where_nothing_can_go_back(self):
        video = VIDEO["h264_baseline"]
        inputs = [video.path, SAMPLES]
        output = self.directory / "packaged.flv"
        self.packed(*inputs, output)
        pipe = self.directory / "pipe"
        os.mkfifo(pipe)
        came = []
        reader = threading.Thread(target=lambda: came.append(pipe.read_bytes()))
        reader.start()
        done = subprocess.run([WRAPTON, "pack", "--to", "flv", *map(str, inputs), str(pipe)],
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
        reader.join()
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        file = output.read_bytes()
        self.assertEqual(came[0][HEADER:], file[HEADER:] + file[:HEADER])
        self.assertEqual((came[0][4], file[4]), (1, 5))

    def test_is_all_that_a_recording_without_pictures_would_have(self):
        done = wrapton("pack", SAMPLES, self.directory / "packaged.flv")
        self.assertEqual(done.returncode, 1)
        self.assertIn("s16le audio cannot be stored in flv without video", done.stderr)


def suite(container, video):
    tests = unittest.TestSuite(Flv(container, video, sound) for sound in (False, True))
    if container == "flv":
        tests.addTests(unittest.defaultTestLoader.loadTestsFromTestCase(ClosingHeader))
    return tests


if __name__ == "__main__":
    main(suite(sys.argv[1], sys.argv[2]))
