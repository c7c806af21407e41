"""Records a file of JPEG pictures into an MP4 file: record.py WIDTH HEIGHT PER_SECOND INPUT.mjpeg OUTPUT.mp4"""

import sys
from pathlib import Path

import wrapton as w


def record(width, height, rate, source, target):
    start = b"\xff\xd8\xff"  # every picture begins so
    pictures = [start + rest for rest in Path(source).read_bytes().split(start)[1:]]
    with w.FileSink(target, w.StreamType.MP4) as sink, w.Packager(w.StreamType.MP4, sink) as mp4:
        mp4.header(reserve=65536)
        for picture in pictures:
            mp4.input(picture, w.Picture(w.VideoEncode.JPEG, w.FrameSubType.I, width, height, rate))
    return len(pictures)


if __name__ == "__main__":
    print(record(*map(int, sys.argv[1:4]), *sys.argv[4:6]), "pictures")
