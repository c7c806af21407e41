"""Reads RTP packets and puts frames together again, written from RFC 3550, RFC 4571 and RFC 6184."""

import re
import struct
from dataclasses import dataclass

FU_A = 28


@dataclass(frozen=True)
class Packet:
    marker: bool
    payload_type: int
    sequence: int
    timestamp: int
    ssrc: int
    payload: bytes


def read_packet(data):
    first, second, sequence, timestamp, ssrc = struct.unpack_from(">BBHII", data)
    if first != 0x80:  # version 2 without padding, extension and contributing sources
        raise ValueError(f"first byte {first:#x}")
    return Packet(second >= 0x80, second & 0x7F, sequence, timestamp, ssrc, data[12:])


def read_packets(data):
    """Packets each behind its length in 2 bytes; their numbers run on."""
    packets = []
    at = 0
    while at < len(data):
        (length,) = struct.unpack_from(">H", data, at)
        packet = data[at + 2:at + 2 + length]
        if len(packet) != length:
            raise ValueError(f"a packet of {length} bytes at {at} is cut off")
        packets.append(read_packet(packet))
        at += 2 + length
    for before, packet in zip(packets, packets[1:]):
        if packet.sequence != (before.sequence + 1) % 65536:
            raise ValueError(f"packet {packet.sequence} behind {before.sequence}")
    return packets


def nal_units(packets):
    """NAL units from single packets and FU-A fragments."""
    units = []
    fragments = None
    for packet in packets:
        payload = packet.payload
        if payload[0] & 31 != FU_A:
            if fragments is not None or payload[0] & 31 > 23:
                raise ValueError(f"packet {packet.sequence} is no single unit")
            units.append(payload)
            continue
        header = bytes([payload[0] & 0xE0 | payload[1] & 31])
        start, end = payload[1] & 0x80, payload[1] & 0x40
        if bool(start) != (fragments is None) or (start and end):
            raise ValueError(f"packet {packet.sequence}: start and end bits out of order")
        fragments = header + payload[2:] if start else fragments + payload[2:]
        if fragments[:1] != header:
            raise ValueError(f"packet {packet.sequence}: the NAL header changes inside a unit")
        if end:
            units.append(fragments)
            fragments = None
    if fragments is not None:
        raise ValueError("the last unit does not end")
    return units


def plain_frames(packets):
    """Payloads put together up to each marker."""
    frames = []
    pieces = []
    for packet in packets:
        pieces.append(packet.payload)
        if packet.marker:
            frames.append(b"".join(pieces))
            pieces = []
    if pieces:
        raise ValueError("the last frame does not end")
    return frames


def byte_stream_units(data):
    """NAL units of a byte stream without the zero bytes that belong to it, ISO/IEC 14496-10 B.1."""
    return [unit.rstrip(b"\x00") for unit in re.split(rb"\x00\x00\x01", data)[1:]]
