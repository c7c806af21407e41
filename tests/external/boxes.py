"""A small reader of ISO base media files, written from ISO/IEC 14496-12."""

import struct
from dataclasses import dataclass

CONTAINERS = {"moov", "trak", "mdia", "minf", "dinf", "stbl"}


@dataclass(frozen=True)
class Box:
    type: str
    offset: int  # of the header
    header: int  # bytes
    size: int    # with the header
    data: bytes  # payload

    def children(self, skip=0):
        return read_boxes(self.data[skip:], self.offset + self.header + skip)

    def child(self, *path):
        box = self
        for name in path:
            box = next(inner for inner in box.children() if inner.type == name)
        return box


def read_boxes(data, base=0):
    """The boxes that fill the data exactly; anything else is an error. 4.2: a size of 1 means that
    64 bits follow the type."""
    boxes = []
    at = 0
    while at < len(data):
        size, name = struct.unpack_from(">I4s", data, at)
        header = 8
        if size == 1:
            (size,) = struct.unpack_from(">Q", data, at + 8)
            header = 16
        if size < header or at + size > len(data):
            raise AssertionError(f"box {name} at {base + at} with size {size} leaves its parent")
        boxes.append(Box(name.decode("latin-1"), base + at, header, size,
                         data[at + header:at + size]))
        at += size
    return boxes


@dataclass(frozen=True)
class Track:
    handler: str
    timescale: int
    delta: int
    sync: list  # sample numbers from 1, or None without stss
    entry: Box  # the sample entry
    samples: list  # bytes of each
    offsets: list


def read_track(trak, file_bytes):
    mdhd = trak.child("mdia", "mdhd").data
    handler = trak.child("mdia", "hdlr").data[8:12].decode("latin-1")
    stbl = trak.child("mdia", "minf", "stbl")
    tables = {box.type: box for box in stbl.children()}

    _, _, count, delta = struct.unpack(">4I", tables["stts"].data)
    _, _, chunk, per_chunk, description = struct.unpack(">5I", tables["stsc"].data)
    if (chunk, per_chunk, description) != (1, 1, 1):
        raise AssertionError("every chunk should hold one sample")
    _, fixed_size, size_count = struct.unpack_from(">3I", tables["stsz"].data)
    sizes = struct.unpack_from(f">{size_count}I", tables["stsz"].data, 12)
    if fixed_size != 0 or size_count != count:
        raise AssertionError("stsz and stts count differently")

    offsets_box = tables.get("stco") or tables["co64"]
    (offset_count,) = struct.unpack_from(">I", offsets_box.data, 4)
    letter = "I" if offsets_box.type == "stco" else "Q"
    offsets = struct.unpack_from(f">{offset_count}{letter}", offsets_box.data, 8)
    if offset_count != count:
        raise AssertionError("stsz and the chunk offsets count differently")

    sync = None
    if "stss" in tables:
        (sync_count,) = struct.unpack_from(">I", tables["stss"].data, 4)
        sync = list(struct.unpack_from(f">{sync_count}I", tables["stss"].data, 8))
    return Track(handler, struct.unpack_from(">I", mdhd, 12)[0], delta, sync,
                 tables["stsd"].children(skip=8)[0],
                 [file_bytes[at:at + size] for at, size in zip(offsets, sizes)], list(offsets))


class MediaFile:
    """A whole file: its top-level boxes and its tracks by handler, "vide" and "soun"."""

    def __init__(self, path):
        self.bytes = path.read_bytes()
        self.boxes = read_boxes(self.bytes)
        moov = next(box for box in self.boxes if box.type == "moov")
        tracks = [read_track(box, self.bytes) for box in moov.children() if box.type == "trak"]
        self.tracks = {track.handler: track for track in tracks}

    def layout(self):
        """Types of the top-level boxes; several mdat boxes in a row count once."""
        types = [box.type for box in self.boxes]
        return [name for i, name in enumerate(types) if i == 0 or (name, types[i - 1]) !=
                ("mdat", "mdat")]
