"""A file of more than 2 GiB, three RIFFs long, on disk: whole in its own indexes and for ffprobe.

Needs about 5 GiB in the temporary directory, so it is no part of the ordinary run:
ctest -C large -L large"""

import hashlib
import subprocess
import unittest

from readers import VIDEO, MediaTest, ffprobe, main
from riff import AviFile

SOI = b"\xff\xd8"
COMMENT = b"\xff\xfe\xff\xff" + b"wrapton" * 9361 + b"......"  # length 65535, its own 2 included
COMMENTS = 64  # about 4 MiB
PICTURES = 560
GIB = 1 << 30


def blown_up(picture, number):
    """The picture with comments ahead of everything else, told apart by a number."""
    tag = b"\xff\xfe\x00\x0a" + b"%08d" % number
    return SOI + tag + COMMENT * COMMENTS + picture[len(SOI):]


def picture_hashes(*arguments):
    done = subprocess.run(["ffmpeg", "-v", "error", *map(str, arguments), "-map", "0:v", "-f",
                           "framehash", "-hash", "md5", "-"],
                          stdin=subprocess.DEVNULL, capture_output=True, text=True, check=True)
    return [line.split(",")[5].strip() for line in done.stdout.splitlines()
            if not line.startswith("#")]


class LargeFile(MediaTest):
    def setUp(self):
        super().setUp()
        stream = VIDEO["mjpeg"].path.read_bytes()
        self.assertEqual(len(COMMENT), 65537)
        starts = [SOI + part for part in stream.split(SOI)[1:]]
        self.assertEqual(len(starts), VIDEO["mjpeg"].frames)
        self.hashes = []
        source = self.directory / "large.mjpeg"
        with open(source, "wb") as target:
            for number in range(PICTURES):
                picture = blown_up(starts[number % len(starts)], number)
                self.hashes.append(hashlib.md5(picture).digest())
                target.write(picture)
        self.output = self.directory / "large.avi"
        self.packed("--fps", 25, source, self.output)
        source.unlink()
        self.assertGreater(self.output.stat().st_size, 2 * GIB)

    def test_own_indexes_and_ffprobe_find_every_picture(self):
        with AviFile(self.output) as avi:
            riffs = list(avi.riffs())
            self.assertEqual([form for _, form, _ in riffs], [b"AVI ", b"AVIX", b"AVIX"])
            last, _, size = riffs[-1]
            self.assertEqual(last + size, self.output.stat().st_size)
            found = []
            for offset, length, chunks in avi.super_index(b"00dc"):
                entries = list(avi.standard_index(offset))
                self.assertEqual((len(entries), 32 + 8 * chunks), (chunks, length))
                for position, count, key in entries:
                    self.assertTrue(key)
                    self.assertEqual(avi.number_at(position - 4), count)
                    found.append(hashlib.md5(avi.bytes_at(position, count)).digest())
        self.assertEqual(found, self.hashes)

        described, complaints = ffprobe(self.output, "-show_streams", "-count_packets")
        self.assertEqual(complaints, "")
        self.assertEqual(int(described["streams"][0]["nb_read_packets"]), PICTURES)

        # A picture of the third RIFF, which only the super index leads to.
        number = PICTURES - 10
        sample = picture_hashes("-ss", number / 25, "-i", self.output, "-frames:v", 1)
        source = picture_hashes("-i", VIDEO["mjpeg"].path)
        self.assertEqual(sample, [source[number % len(source)]])


if __name__ == "__main__":
    main()
