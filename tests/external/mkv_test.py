"""Every video stream in Matroska, read by ffprobe and ffmpeg and element by element by mkvinfo.
Argument: video (a key of readers.VIDEO)."""

import functools
import json
import re
import subprocess
import sys

from readers import FFMPEG, VIDEO, MediaTest, decoded_hashes, main

SEGMENT_DATA = 59  # positions in the SeekHead count from here
# A cue point has a zero byte behind its elements, which readers that look at it complain of.
ZERO_BYTE = "invalid as first byte of an EBML number"

ELEMENT = re.compile(r"^[| ]*\+ (.*?) at (\d+)$")
BLOCK = re.compile(r"Simple block: (key, )?track number 1, 1 frame\(s\), timestamp (\S+)")


def milliseconds(text):
    hours, minutes, seconds = text.split(":")
    whole, nanoseconds = seconds.split(".")
    return (int(hours) * 3600 + int(minutes) * 60 + int(whole)) * 1000 + int(nanoseconds) // 10**6


def elements(path):
    """Text and position of every element, in the order of the file, as mkvinfo tells them."""
    done = subprocess.run(["mkvinfo", "--ui-language", "en_US", "--all", "--verbose", "--positions",
                           str(path)], capture_output=True, text=True, check=True)
    return [(match[1], int(match[2]))
            for match in map(ELEMENT.match, done.stdout.splitlines()) if match]


def numbers(found, label):
    return [int(text.split(": ")[1]) for text, _ in found if text.startswith(label + ": ")]


@functools.cache
def picture_types(path):
    """I, P or B of every picture of an elementary stream, in decoding order."""
    done = subprocess.run(["ffprobe", "-v", "error", "-of", "json", "-show_entries",
                           "frame=pict_type,coded_picture_number", str(path)],
                          capture_output=True, text=True, check=True)
    frames = json.loads(done.stdout)["frames"]
    frames.sort(key=lambda frame: frame["coded_picture_number"])
    return [frame["pict_type"] for frame in frames]


class PackagedStream(MediaTest):
    def setUp(self):
        super().setUp()
        self.output = self.directory / "packaged.mkv"
        self.result = self.packed("--fps", self.video.rate, self.video.path, self.output)
        self.types = picture_types(self.video.path)
        self.assertEqual(len(self.types), self.video.frames)

    def times(self):
        """Those of the pictures' numbers, cut to milliseconds in each second."""
        return [number // self.video.rate * 1000 +
                number % self.video.rate * 1000 // self.video.rate
                for number in range(self.video.frames)]

    def test_every_frame_is_stored(self):
        self.assertEqual(self.result["bytes"], self.output.stat().st_size)
        stream = self.result["streams"][0]
        self.assertEqual((stream["frames_in"], stream["frames_stored"]), (self.video.frames,) * 2)

    def test_ffprobe_describes_it_without_complaint(self):
        found = self.assert_reads_clean(self.output)
        self.assertEqual(found["format"]["format_name"], "matroska,webm")
        self.assertEqual(len(found["streams"]), 1)
        video = found["streams"][0]
        self.assertEqual((video["codec_name"], video["width"], video["height"]),
                         (self.video.codec, self.video.width, self.video.height))
        self.assertEqual(video["avg_frame_rate"], f"{self.video.rate}/1")
        self.assertEqual(int(video["nb_read_packets"]), self.video.frames)
        self.assertGreater(video["extradata_size"], 0)

    def test_pictures_are_those_of_the_source(self):
        self.assertEqual(decoded_hashes(self.output, "v", self.video.codec),
                         decoded_hashes(self.video.path, "v", self.video.codec))

    def test_blocks_have_times_and_key_flags_of_their_pictures(self):
        blocks = [BLOCK.match(text) for text, _ in elements(self.output)
                  if text.startswith("Simple block")]
        self.assertEqual([milliseconds(block[2]) for block in blocks], self.times())
        # B pictures carry the flag, too.
        self.assertEqual([block[1] is not None for block in blocks],
                         [kind != "P" for kind in self.types])

    def test_a_cluster_begins_every_second(self):
        found = elements(self.output)
        times = [milliseconds(text.split(": ")[1]) for text, _ in found
                 if text.startswith("Cluster timestamp")]
        seconds = -(-self.video.frames // self.video.rate)
        self.assertEqual(times, [1000 * second for second in range(seconds)])
        positions = [position for text, position in found if text == "Cluster"]
        self.assertEqual((len(positions), positions[0]), (seconds, 1059))

    def test_seek_head_leads_to_info_tracks_and_cues(self):
        found = elements(self.output)
        places = dict((text, position) for text, position in found
                      if text in ("Segment information", "Tracks", "Cues"))
        self.assertEqual(numbers(found, "Seek position"),
                         [places[name] - SEGMENT_DATA
                          for name in ("Segment information", "Tracks", "Cues")])

    def test_every_i_picture_has_a_cue(self):
        found = elements(self.output)
        times = [milliseconds(text.split(": ")[1]) for text, _ in found
                 if text.startswith("Cue time")]
        keys = [number for number, kind in enumerate(self.types) if kind == "I"]
        self.assertEqual(times, [self.times()[number] for number in keys])
        # Positions are those in the file, not in the segment.
        clusters = [position for text, position in found if text == "Cluster"]
        self.assertEqual(numbers(found, "Cue cluster position"),
                         [clusters[number // self.video.rate] for number in keys])
        blocks = [position for text, position in found if text.startswith("Simple block")]
        for number, relative in zip(keys, numbers(found, "Cue relative position"), strict=True):
            # The first block of a cluster is 4 bytes behind the cluster's size, as it should be;
            # for the others the 12 bytes of ID and size are counted once more.
            place = blocks[number] - clusters[number // self.video.rate] - 12
            self.assertEqual(relative, place if place == 4 else place + 12)

    def test_ffmpeg_seeks_by_the_cues(self):
        """To the last I picture that begins a second, in spite of the positions."""
        starts = [number for number, kind in enumerate(self.types)
                  if kind == "I" and number % self.video.rate == 0]
        done = subprocess.run(["ffprobe", "-v", "warning", "-of", "json", "-read_intervals",
                               f"{starts[-1] // self.video.rate}%+#1", "-show_entries",
                               "packet=dts,flags,pos", str(self.output)],
                              capture_output=True, text=True, check=True)
        self.assertEqual(done.stderr.count("\n"), done.stderr.count(ZERO_BYTE), done.stderr)
        clusters = [position for text, position in elements(self.output) if text == "Cluster"]
        packet = json.loads(done.stdout)["packets"][0]
        self.assertTrue(packet["flags"].startswith("K"))
        place = clusters[starts[-1] // self.video.rate]
        self.assertIn(int(packet["pos"]) - place, range(16, 25))  # its data, in the first block


if __name__ == "__main__":
    PackagedStream.video = VIDEO[sys.argv.pop(1)]
    main(tools={**FFMPEG, "mkvinfo": "mkvtoolnix"})
