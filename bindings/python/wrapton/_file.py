"""A file that takes the blocks of one recording."""

from __future__ import annotations

import enum
import errno
import os
import stat
from types import TracebackType
from typing import Optional, Type, Union

from ._library import StreamType
from ._packager import Block


class Sync(enum.Enum):
    """When a recording is brought from the system's memory to the disk."""

    NEVER = 0
    AT_END = 1
    EACH_BLOCK = 2


def flv_header_length(data: bytes) -> int:
    """Length of an FLV file header with the script tag behind it; 0 for other bytes."""
    file_header, tag_header, tag_trail, script = 9 + 4, 11, 4, 18
    if len(data) < file_header + tag_header or data[:3] != b"FLV" or data[file_header] != script:
        return 0
    size = int.from_bytes(data[file_header + 1 : file_header + 4], "big")
    length = file_header + tag_header + size + tag_trail
    return length if length <= len(data) else 0


class FileSink:
    """
    Writes blocks where they belong.

    The first error stays: it is raised again by every later block and by finish(). Two containers
    close with a block whose place is the consumer's choice. That of no-seek MP4 would overwrite the
    beginning and is left out; the header of FLV, complete by then, replaces the first one in a
    file and is appended in a pipe.
    """

    def __init__(
        self,
        path: Union[str, "os.PathLike[str]"],
        stream_type: int,
        sync: Sync = Sync.AT_END,
    ) -> None:
        self.path = os.path.abspath(path)  # the process may go to another directory meanwhile
        self.size = 0
        self._type = stream_type
        self._sync = sync
        self._position = 0
        self._error: Optional[OSError] = None
        self._flv_header = 0
        self._file = os.open(self.path, os.O_WRONLY | os.O_CREAT | os.O_CLOEXEC, 0o666)
        try:
            self._regular = stat.S_ISREG(os.fstat(self._file).st_mode)
            if self._regular:
                os.ftruncate(self._file, 0)
            if sync is Sync.EACH_BLOCK:
                self._sync_directory()
        except OSError:
            self.close()
            raise

    def __call__(self, block: Block) -> int:
        if self._type == StreamType.FLV and self._flv_header == 0:
            self._flv_header = flv_header_length(block.data)
        at_start = block.origin == os.SEEK_SET and block.offset == 0
        if block.closing and at_start and self._type == StreamType.MP4_NOSEEK:
            return len(block.data)
        if block.closing and self._replaces_header(block.data):
            return self.place(0, os.SEEK_SET, block.data)
        return self.place(block.offset, block.origin, block.data)

    def place(self, offset: int, origin: int, data: bytes) -> int:
        """Writes bytes where they are said to belong, all of them or until the first error."""
        self._go_on()
        if not data:
            return 0
        try:
            self._move(offset, origin)
            left = memoryview(data)
            while left:
                count = os.write(self._file, left)
                left = left[count:]
                self._position += count
                self.size = max(self.size, self._position)
            if self._sync is Sync.EACH_BLOCK and self._regular:
                os.fdatasync(self._file)
        except OSError as error:
            self._error = error
            raise
        return len(data)

    def finish(self) -> None:
        """Brings everything to the disk, sees that the file is still there, and closes it."""
        self._go_on()
        try:
            if self._regular:
                if self._sync is not Sync.NEVER:
                    os.fsync(self._file)
                if self._sync is Sync.AT_END:
                    self._sync_directory()
                named = os.stat(self.path)
                if not os.path.samestat(named, os.fstat(self._file)):
                    raise FileNotFoundError(errno.ENOENT, "replaced while it was written", self.path)
        except OSError as error:
            self._error = error
            raise
        self.close()

    def close(self) -> None:
        """Closes the file as it is."""
        file, self._file = self._file, -1
        if file >= 0:
            os.close(file)

    def __enter__(self) -> "FileSink":
        return self

    def __exit__(
        self,
        kind: Optional[Type[BaseException]],
        value: Optional[BaseException],
        trace: Optional[TracebackType],
    ) -> None:
        try:
            if kind is None and self._file >= 0:
                self.finish()
        finally:
            self.close()

    def _go_on(self) -> None:
        if self._error is not None:
            raise self._error
        if self._file < 0:
            raise ValueError("the file is closed")

    def _sync_directory(self) -> None:
        """A file whose name is lost with the power is lost. A directory that may not be read is left out."""
        if not self._regular:
            return
        try:
            directory = os.open(os.path.dirname(self.path), os.O_RDONLY | os.O_DIRECTORY | os.O_CLOEXEC)
        except OSError:
            return
        try:
            os.fsync(directory)
        finally:
            os.close(directory)

    def _replaces_header(self, data: bytes) -> bool:
        return self._regular and 0 < self._flv_header == len(data) == flv_header_length(data)

    def _move(self, offset: int, origin: int) -> None:
        bases = {os.SEEK_SET: 0, os.SEEK_CUR: self._position, os.SEEK_END: self.size}
        target = bases[origin] + offset
        if target == self._position:
            return  # a pipe takes what continues it
        if target < 0:
            raise OSError(errno.EINVAL, os.strerror(errno.EINVAL), self.path)
        os.lseek(self._file, target, os.SEEK_SET)
        self._position = target
