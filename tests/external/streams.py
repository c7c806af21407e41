"""Splits raw MPEG-4 Part 2 and ADTS streams into frames, written from ISO/IEC 14496-2 and -3."""

import re

START_CODE = re.compile(rb"\x00\x00\x01(.)", re.DOTALL)
VOP = 0xB6


def mpeg4_frames(data):
    """Frames of a raw stream: everything ahead of a picture belongs to it."""
    frames = []
    begin = 0
    in_picture = False
    for match in START_CODE.finditer(data):
        if in_picture:  # the picture ends where the next start code begins
            frames.append(data[begin:match.start()])
            begin = match.start()
        in_picture = match.group(1)[0] == VOP
    frames.append(data[begin:])
    return frames


def mpeg4_configuration(frame):
    """The headers of a frame from the first that configures a decoder (visual object sequence B0,
    user data B2, group B3, visual object B5, video object 00 and 01, video object layer 20) up to
    the picture; empty when there are none."""
    begin = None
    for match in START_CODE.finditer(frame):
        code = match.group(1)[0]
        if begin is None and (code in (0x20, 0xB0, 0xB2, 0xB3, 0xB5) or code < 2):
            begin = match.start()
        elif code == VOP:
            return b"" if begin is None else frame[begin:match.start()]
    return b""


def mpeg4_is_intra(frame):
    """vop_coding_type, the two bits behind the picture's start code, is 0."""
    at = frame.index(b"\x00\x00\x01\xB6")
    return frame[at + 4] >> 6 == 0


def adts_frames(data):
    """Frames of a raw stream with their headers: 13 bits of length, header included."""
    frames = []
    at = 0
    while at < len(data):
        length = (data[at + 3] & 3) << 11 | data[at + 4] << 3 | data[at + 5] >> 5
        frames.append(data[at:at + length])
        at += length
    return frames
