"""Every video stream in one container of the MP4 family, alone and with sound, read by ffprobe and
ffmpeg and from its own tables. Arguments: container, video (a key of readers.VIDEO)."""

import functools
import sys
import unittest

from boxes import MediaFile
from readers import AUDIO, VIDEO, MediaTest, decoded_hashes, main
from streams import mpeg4_configuration, mpeg4_frames, mpeg4_is_intra

LARGE_RESERVE = 65536  # the longest index here has about 10 kB

# major brand of the container as ffprobe gives it, and the box with the chunk offsets
BRAND = {"mp4": "isom", "mov": "qt  ", "mp464": "isom", "mov64": "qt  ", "mp4noseek": "isom",
         "3gp": "isom"}
# Object type 0x69 stands for MPEG audio of any layer; ffprobe gives all of them one name.
PROBED_AUDIO = {"aac": "aac", "mp2": "mp3"}
MDAT_HEADER = {"mp4": 8, "mov": 8, "mp464": 16, "mov64": 16, "mp4noseek": 8,
               "3gp": 8}


@functools.cache
def source_hashes(path, kind, decoder):
    return decoded_hashes(path, kind, decoder)


class PackagedStream(MediaTest):
    def __init__(self, container, video, audio, reserve):
        super().__init__("runTest")
        self.container = container
        self.video_key = video
        self.video = VIDEO[video]
        self.audio = AUDIO.get(audio)
        self.reserve = reserve
        self.name = f"{container}: {video} with {audio or 'no sound'}, reserve {reserve}"

    def __str__(self):
        return self.name

    def runTest(self):
        output = self.directory / "packaged"
        inputs = [self.video.path] + ([self.audio.path] if self.audio else [])
        result = self.packed("--to", self.container, "--fps", self.video.rate, "--reserve",
                             self.reserve, *inputs, output)
        self.check_counts(result, output)
        found = self.assert_reads_clean(output)
        self.check_description(found)
        media = MediaFile(output)
        self.check_layout(media)
        self.check_tables(media)
        if self.video_key == "mpeg4":
            self.check_mpeg4_samples(media)
        else:
            self.check_decoded(output, "v", self.video)
        if self.audio:
            self.check_decoded(output, "a", self.audio)

    def check_decoded(self, output, kind, source):
        """Both sides go through one decoder: ffmpeg has several for MPEG audio."""
        self.assertEqual(decoded_hashes(output, kind, source.codec),
                         source_hashes(source.path, kind, source.codec))

    def check_counts(self, result, output):
        self.assertEqual(result["bytes"], output.stat().st_size)
        self.assertEqual(result["index_at_end"], self.reserve == 0)
        wanted = [self.video.frames] + ([self.audio.frames] if self.audio else [])
        for stream, frames in zip(result["streams"], wanted, strict=True):
            self.assertEqual((stream["frames_in"], stream["frames_stored"]), (frames, frames))
            self.assertEqual((stream["frames_dropped"], stream["frames_refused"]), (0, {}))

    def check_description(self, found):
        self.assertEqual(found["format"]["tags"]["major_brand"], BRAND[self.container])
        streams = {stream["codec_type"]: stream for stream in found["streams"]}
        self.assertEqual(len(found["streams"]), 2 if self.audio else 1)
        video = streams["video"]
        self.assertEqual((video["codec_name"], video["width"], video["height"]),
                         (self.video.codec, self.video.width, self.video.height))
        self.assertEqual(video["avg_frame_rate"], f"{self.video.rate}/1")
        self.assertEqual(int(video["nb_read_packets"]), self.video.frames)
        if self.audio:
            audio = streams["audio"]
            self.assertEqual((audio["codec_name"], audio["sample_rate"], audio["channels"]),
                             (PROBED_AUDIO[self.audio.codec], str(self.audio.rate),
                              self.audio.channels))
            self.assertEqual(int(audio["nb_read_packets"]), self.audio.frames)

    def check_layout(self, media):
        """With room for the index it stands ahead of the media (a fast start), else behind it."""
        wanted = ["ftyp", "free", "mdat", "moov"]
        if self.reserve:
            wanted = ["ftyp", "free", "moov", "mdat"]
        self.assertEqual(media.layout(), wanted)
        frames = self.video.frames + (self.audio.frames if self.audio else 0)
        boxes = [box for box in media.boxes if box.type == "mdat"]
        self.assertEqual(len(boxes), frames if self.container == "mp4noseek" else 1)
        self.assertEqual({box.header for box in boxes}, {MDAT_HEADER[self.container]})

    def check_tables(self, media):
        video = media.tracks["vide"]
        self.assertEqual((video.timescale, video.delta), (90000, 90000 // self.video.rate))
        if self.audio:
            audio = media.tracks["soun"]
            samples = 1024 if self.audio.codec == "aac" else 1152
            self.assertEqual((audio.timescale, audio.delta), (self.audio.rate, samples))
            self.assertIsNone(audio.sync)
            # Interleaved: no second of sound stands behind the whole video.
            self.assertLess(audio.offsets[0], video.offsets[2])

    def check_mpeg4_samples(self, media):
        """Headers of an I picture go into the sample entry; they stay in the sample, which loses
        as many bytes at its end."""
        frames = mpeg4_frames(self.video.path.read_bytes())
        self.assertEqual(len(frames), self.video.frames)
        wanted = []
        intra = []
        configuration = b""
        for number, frame in enumerate(frames, 1):
            if mpeg4_is_intra(frame):
                intra.append(number)
                configuration = mpeg4_configuration(frame) or configuration
                wanted.append(frame[:len(frame) - len(mpeg4_configuration(frame))])
            else:
                wanted.append(frame)
        track = media.tracks["vide"]
        self.assertEqual(track.samples, wanted)
        self.assertEqual(track.sync, intra)
        # esds behind the 78 bytes of a visual sample entry: DecoderSpecificInfo (tag 5) ends
        # ahead of the SLConfigDescriptor 06 80 80 80 01 02, ISO/IEC 14496-1 7.2.6.
        esds = track.entry.children(skip=78)[0].data
        self.assertTrue(esds.endswith(b"\x05\x80\x80\x80" + bytes([len(configuration)]) +
                                      configuration + b"\x06\x80\x80\x80\x01\x02"))


def suite(container, video):
    reserves = (0,) if container == "3gp" else (0, LARGE_RESERVE)  # its component knows none
    return unittest.TestSuite(PackagedStream(container, video, audio, reserve)
                              for audio in [None, *AUDIO] for reserve in reserves)


if __name__ == "__main__":
    main(suite(sys.argv[1], sys.argv[2]))
