"""Native recordings, read strictly and made by hand, without the library."""

import struct
from dataclasses import dataclass, field

HEADER = struct.Struct("<4sBBBBIIIHBB")
TRAILER = struct.Struct("<4sI")
PICTURES = {0xFD: "I", 0xFC: "P", 0xFE: "B", 0xFB: "I", 0x00: "-"}
EX_LENGTHS = {0x80: 4, 0x81: 4, 0x82: 8, 0x83: 4, 0x88: 8, 0x8B: 4, 0x8C: 8, 0x92: 8}


@dataclass
class Frame:
    offset: int
    length: int
    type: int
    number: int
    date: int
    stamp: int
    payload: bytes
    ex: dict = field(default_factory=dict)

    @property
    def stream(self):
        return {0xF0: "audio", 0xF1: "ext"}.get(self.type, "video")


def check_sum(payload):
    padded = payload + bytes(-len(payload) % 4)
    return sum(struct.unpack(f"<{len(padded) // 4}I", padded)) & 0xFFFFFFFF


def read(data):
    """All frames of a recording; raises at the first thing that is not as it must be."""
    frames = []
    at = 0
    while at < len(data):
        (tag, kind, _, channel, sub_number, number, length, date, stamp, ex_length,
         total) = HEADER.unpack_from(data, at)
        if (tag, channel, sub_number) != (b"OMFR", 1, 0):
            raise ValueError(f"no header at {at}")
        if sum(data[at:at + 23]) & 0xFF != total:
            raise ValueError(f"checksum of the header at {at}")
        if TRAILER.unpack_from(data, at + length - 8) != (b"omfr", length):
            raise ValueError(f"trailer of the frame at {at}")
        ex = {}
        place = at + 24
        while place < at + 24 + ex_length:
            ex_tag = data[place]
            ex[ex_tag] = data[place:place + EX_LENGTHS[ex_tag]]
            place += EX_LENGTHS[ex_tag]
        payload = data[place:at + length - 8]
        if struct.unpack_from("<I", ex[0x88], 1)[0] != check_sum(payload):
            raise ValueError(f"data check of the frame at {at}")
        frames.append(Frame(at, length, kind, number, date, stamp, payload, ex))
        at += length
    return frames


def make(kind, payload, ex=b"", number=1, stamp=0, date=0, sub_type=0):
    """One frame; its data check goes behind the given extension headers."""
    ex += struct.pack("<BIHB", 0x88, check_sum(payload), 0, 0)
    length = 24 + len(ex) + len(payload) + 8
    header = HEADER.pack(b"OMFR", kind, sub_type, 1, 0, number, length, date, stamp, len(ex), 0)
    return header[:-1] + bytes([sum(header) & 0xFF]) + ex + payload + TRAILER.pack(b"omfr", length)


def picture(payload, width=640, height=360, encoding=2, rate=25, kind=0xFD, **fields):
    ex = struct.pack("<BBHHH", 0x82, 2, 0, width, height) + bytes([0x81, 0, encoding, rate])
    return make(kind, payload, ex, **fields)


def sound(payload, encoding=26, rate_index=2, channels=1, **fields):
    return make(0xF0, payload, bytes([0x83, channels, encoding, rate_index]), **fields)


def extension(payload, **fields):
    return make(0xF1, payload, **fields)


def date(year, month, day, hour, minute, second):
    return ((year - 2000) << 26 | month << 22 | day << 17 | hour << 12 | minute << 6 | second)
