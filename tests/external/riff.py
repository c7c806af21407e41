"""Reads AVI files by the RIFF documentation of AVI 1.0 and the OpenDML AVI File Format Extensions
1.02, a piece at a time, so that files of any size can be read."""

import struct

FIRST_MOVI_CODE = 4124


class AviFile:
    def __init__(self, path):
        self.path = path
        self._file = open(path, "rb")  # closed by __exit__

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._file.close()

    def bytes_at(self, position, count):
        self._file.seek(position)
        return self._file.read(count)

    def number_at(self, position):
        return struct.unpack("<I", self.bytes_at(position, 4))[0]

    def end_of_movi(self):
        """Where the list ends that begins at a fixed place, behind the header list."""
        return FIRST_MOVI_CODE + self.number_at(FIRST_MOVI_CODE - 4)

    def chunks(self):
        """Code and data of every chunk of the first movi list."""
        position = FIRST_MOVI_CODE + 4
        end = self.end_of_movi()
        while position < end:
            code = self.bytes_at(position, 4)
            size = self.number_at(position + 4)
            yield code, self.bytes_at(position + 8, size)
            position += 8 + size + size % 2

    def riffs(self):
        """Position, form and size of every RIFF. The size field counts its own header, too."""
        position = 0
        while header := self.bytes_at(position, 12):
            _, size, form = struct.unpack("<4sI4s", header)
            yield position, form, size
            position += size

    def super_index(self, code):
        """Entries of the super index for chunks of that code: offset, size, chunks."""
        headers = self.bytes_at(0, FIRST_MOVI_CODE)
        at = headers.index(b"indx")
        while headers[at + 16:at + 20] != code:
            at = headers.index(b"indx", at + 4)
        count = struct.unpack_from("<I", headers, at + 12)[0]
        return [struct.unpack_from("<QII", headers, at + 32 + 16 * entry)
                for entry in range(count)]

    def standard_index(self, position):
        """Position and size in the file of every chunk's data, and whether it is a key frame."""
        count = self.number_at(position + 12)
        base, = struct.unpack("<Q", self.bytes_at(position + 20, 8))
        entries = self.bytes_at(position + 32, 8 * count)
        for offset, size in struct.iter_unpack("<II", entries):
            yield base + offset, size & 0x7FFFFFFF, size >> 31 == 0


def without_idx1(path, output):
    """The file without what follows its movi list, so that readers go through the list itself."""
    with AviFile(path) as avi:
        end = avi.end_of_movi()
        assert avi.bytes_at(end, 4) == b"idx1"
        output.write_bytes(avi.bytes_at(0, end))
    return output
