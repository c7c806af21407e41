"""Reads program streams structure by structure, written from ISO/IEC 13818-1 2.5."""

from dataclasses import dataclass, field

PACK, SYSTEM, MAP, AUDIO, VIDEO = 0xBA, 0xBB, 0xBC, 0xC0, 0xE0


@dataclass
class Packet:
    stream: int
    pts: int | None
    dts: int | None
    payload: bytes


@dataclass
class ProgramStream:
    clocks: list = field(default_factory=list)  # SCR base of each pack
    systems: int = 0
    maps: list = field(default_factory=list)  # contents behind the length field
    packets: list = field(default_factory=list)

    def elementary(self, stream):
        return b"".join(one.payload for one in self.packets if one.stream == stream)

    def stamps(self, stream):
        return [one.pts for one in self.packets if one.stream == stream]


def time_stamp(data, prefix):
    if data[0] >> 4 != prefix or not data[0] & data[2] & data[4] & 1:
        raise ValueError("a time stamp without prefix or markers")
    return (data[0] >> 1 & 7) << 30 | data[1] << 22 | data[2] >> 1 << 15 | data[3] << 7 | data[4] >> 1


def pack_clock(data):
    if data[0] >> 6 != 1 or not (data[0] & data[2] & data[4] & 4) or not data[5] & data[8] & 1:
        raise ValueError("no pack header of MPEG-2")
    if data[9] != 0xF8:
        raise ValueError("a pack header with stuffing")
    return ((data[0] >> 3 & 7) << 30 | (data[0] & 3) << 28 | data[1] << 20 | data[2] >> 3 << 15 |
            (data[2] & 3) << 13 | data[3] << 5 | data[4] >> 3)


def pes_packet(stream, body):
    if body[0] != 0x80:
        raise ValueError("PES flags that are never set")
    flags, length = body[1] >> 6, body[2]
    pts = time_stamp(body[3:8], flags) if flags else None
    dts = time_stamp(body[8:13], 1) if flags == 3 else None
    return Packet(stream, pts, dts, body[3 + length:])


def read(data):
    """The whole stream; ValueError where a structure does not begin at the end of the last."""
    found = ProgramStream()
    at = 0
    while at < len(data):
        if data[at:at + 3] != b"\x00\x00\x01":
            raise ValueError(f"no start code at {at}")
        code = data[at + 3]
        if code == PACK:
            found.clocks.append(pack_clock(data[at + 4:at + 14]))
            at += 14
            continue
        length = int.from_bytes(data[at + 4:at + 6], "big")
        body = data[at + 6:at + 6 + length]
        if len(body) != length:
            raise ValueError(f"a structure at {at} that is cut off")
        if code == SYSTEM:
            found.systems += 1
        elif code == MAP:
            found.maps.append(body)
        elif code in (AUDIO, VIDEO):
            found.packets.append(pes_packet(code, body))
        else:
            raise ValueError(f"start code {code:02x} at {at}")
        at += 6 + length
    return found
