"""The packager: an owner for a handle of the library."""

from __future__ import annotations

import ctypes
from contextlib import contextmanager
from dataclasses import dataclass, replace
from types import TracebackType
from typing import Any, Callable, Iterator, Optional, Type, Union

from ._errors import AllocationError, NoPackagerError, fail
from ._frames import AudioStream, Extension, Picture, Sound, VideoStream, checked
from ._library import (
    DATA_CALLBACK,
    SGAudioInfo,
    SGCreateParam,
    SGHeaderInfo,
    SGOutputData,
    SGRtpPackageParam,
    SGVideoInfo,
    library,
)

Readable = Union[bytes, bytearray, memoryview]

_MOST_INT32 = 0x7FFFFFFF


@dataclass(frozen=True)
class Block:
    """A piece of output: at `offset` from `origin`, os.SEEK_SET, SEEK_CUR or SEEK_END."""

    offset: int
    origin: int
    data: bytes
    closing: bool = False  # emitted by tailer()


Output = Callable[[Block], Optional[int]]


@dataclass(frozen=True)
class RtpParameters:
    """
    Parameters of RTP packets.

    `sequence_number` is set as that of the next packet and read back as that of the last one.
    """

    max_packet_length: int = 0
    sequence_number: int = 0
    timestamp: int = 0
    ssrc: int = 0
    audio_sample: int = 0
    payload_type: int = 0
    extension_data: bytes = b""
    custom_data: bytes = b""
    output_all: bool = False

    def replace(self, **changes: Any) -> "RtpParameters":
        return replace(self, **changes)


def _bytes_at(address: Optional[int], length: int) -> bytes:
    return ctypes.string_at(address, length) if address and length > 0 else b""


class Packager:
    """
    Packages coded frames into one container.

    As a context manager it writes the tailer when its block ends well, and always releases the
    library's handle.
    """

    def __init__(self, stream_type: int, output: Optional[Output] = None) -> None:
        self._handle: Optional[int] = None
        self._output = output
        self._raised: Optional[BaseException] = None
        self._busy = False
        self._closing = False
        self._open = False
        self._library = library()
        # Referenced here, because the library calls it as long as the handle lives.
        self._callback = DATA_CALLBACK(self._take)
        create = SGCreateParam(struct_size=ctypes.sizeof(SGCreateParam), sg_datacb=self._callback)
        self._handle = self._library.SG_CreateHandle(checked("stream_type", stream_type), ctypes.byref(create))
        if not self._handle:
            raise NoPackagerError("SG_CreateHandle", 1)

    def header(
        self,
        video: Optional[VideoStream] = None,
        audio: Optional[AudioStream] = None,
        reserve: int = 0,
    ) -> None:
        """Begins the recording. `reserve` is room for the index ahead of the media, MP4 family only."""
        record = SGHeaderInfo(pre_header_len=checked("reserve", reserve), struct_size=ctypes.sizeof(SGHeaderInfo))
        if video is not None:
            numbers = (video.encode, video.width, video.height, video.rate)
            record.video = SGVideoInfo(1, *(checked("video", value, _MOST_INT32) for value in numbers))
        if audio is not None:
            values = (audio.encode, audio.channels, audio.bits_per_sample, audio.sample_rate)
            record.audio = SGAudioInfo(1, *(checked("audio", value, _MOST_INT32) for value in values))
        self._begin(ctypes.byref(record))

    def header_from_frames(self) -> None:
        """Begins the recording without a header record: the streams are those of the frames."""
        self._begin(None)

    def input(
        self,
        data: Readable,
        frame: Union[Picture, Sound, Extension],
        copy: bool = True,
    ) -> None:
        """
        Packages one coded frame. Video ahead of the first I picture may be dropped without an error.

        Without `copy` the library gets the writable buffer itself; Matroska then turns start codes
        into lengths in it.
        """
        record = frame.record()
        size = memoryview(data).nbytes
        kind = ctypes.c_ubyte * size
        if not copy and isinstance(data, bytes):
            raise TypeError("without a copy the frame has to be a writable buffer")
        try:
            buffer = kind.from_buffer_copy(data) if isinstance(data, bytes) or copy else kind.from_buffer(data)
        except MemoryError:
            raise AllocationError("SG_InputFrame", 4) from None
        record.struct_size = ctypes.sizeof(record)
        record.frame_pointer = ctypes.addressof(buffer)
        record.frame_size = checked("frame size", size)
        with self._call("SG_InputFrame") as (handle, judge):
            judge(self._library.SG_InputFrame(handle, ctypes.byref(record)))

    def tailer(self) -> None:
        """Ends the recording: indexes, and the sizes that are known only now."""
        with self._call("SG_CreateTailer", closing=True) as (handle, judge):
            judge(self._library.SG_CreateTailer(handle, None))
        self._open = False

    def backup(self) -> Optional[Block]:
        """The file's header as it would be written now, or nothing where there is none."""
        block = SGOutputData()
        with self._call("SG_GetBackup") as (handle, judge):
            result = self._library.SG_GetBackup(handle, ctypes.byref(block))
            has_one = bool(block.data_pointer) and block.data_size > 0
            judge(0 if has_one else result)  # a snapshot's result is its size
        if not has_one:
            return None
        return Block(block.offset_pos64, block.offset_type, ctypes.string_at(block.data_pointer, block.data_size))

    @property
    def rtp(self) -> RtpParameters:
        """Parameters of RTP; all zero for other containers."""
        record = SGRtpPackageParam()
        length = ctypes.c_uint(ctypes.sizeof(record))
        with self._call("SG_GetParam") as (handle, judge):
            judge(self._library.SG_GetParam(handle, 0, ctypes.byref(record), ctypes.byref(length)))
        return RtpParameters(
            record.max_packet_length,
            record.sequence_number,
            record.timestamp,
            record.ssrc,
            record.audio_sample,
            record.payload_type,
            _bytes_at(record.extension_data, record.extension_data_length),
            _bytes_at(record.custom_data, record.custom_data_length),
            record.rtp_output_all_flag == 1,
        )

    @rtp.setter
    def rtp(self, parameters: RtpParameters) -> None:
        extension = ctypes.create_string_buffer(parameters.extension_data, len(parameters.extension_data) or 1)
        custom = ctypes.create_string_buffer(parameters.custom_data, len(parameters.custom_data) or 1)
        record = SGRtpPackageParam(
            ctypes.sizeof(SGRtpPackageParam),
            checked("max_packet_length", parameters.max_packet_length),
            checked("sequence_number", parameters.sequence_number),
            checked("timestamp", parameters.timestamp),
            checked("ssrc", parameters.ssrc),
            checked("audio_sample", parameters.audio_sample),
            checked("payload_type", parameters.payload_type),
            ctypes.addressof(extension),
            len(parameters.extension_data),
            ctypes.addressof(custom),
            len(parameters.custom_data),
            int(parameters.output_all),
        )
        with self._call("SG_SetParam") as (handle, judge):
            judge(self._library.SG_SetParam(handle, 0, ctypes.byref(record), ctypes.sizeof(record)))

    def close(self) -> None:
        """Releases the handle and emits nothing: without a tailer the recording stays unfinished."""
        if self._busy:
            raise RuntimeError("a packager is not closed from inside its own calls")
        handle, self._handle = self._handle, None
        if handle:
            self._library.SG_DestroyHandle(handle)

    def __enter__(self) -> "Packager":
        return self

    def __exit__(
        self,
        kind: Optional[Type[BaseException]],
        value: Optional[BaseException],
        trace: Optional[TracebackType],
    ) -> None:
        try:
            if kind is None and self._open:
                self.tailer()
        finally:
            self.close()

    def __del__(self) -> None:
        if getattr(self, "_handle", None):
            self.close()

    def _begin(self, record: Any) -> None:
        with self._call("SG_CreateHeader") as (handle, judge):
            judge(self._library.SG_CreateHeader(handle, record))
        self._open = True

    @contextmanager
    def _call(self, function: str, closing: bool = False) -> Iterator[Any]:
        if self._handle is None:
            raise NoPackagerError(function, 1)
        if self._busy:
            raise RuntimeError("a packager is used by one thread at a time, and not from its own output")

        def judge(code: int) -> None:
            if self._raised is not None:
                raise self._raised
            if code != 0:
                fail(function, code)

        self._busy = True
        self._closing = closing
        self._raised = None
        try:
            yield self._handle, judge
        finally:
            self._busy = False
            self._raised = None

    def _take(self, pointer: Any, _user: Any) -> None:
        data = pointer.contents
        if self._output is None or not data.data_pointer or data.data_size <= 0:
            return
        if self._raised is not None:
            data.data_size = -1
            return
        try:
            content = ctypes.string_at(data.data_pointer, data.data_size)
            stored = self._output(Block(data.offset_pos64, data.offset_type, content, self._closing))
            if isinstance(stored, bool):
                raise TypeError("the output gives None, or how many bytes it stored")
            if stored is not None:
                data.data_size = max(-1, min(int(stored), data.data_size))
        except BaseException as error:  # pylint: disable=broad-except  # no exception may pass through C
            self._raised = error
            data.data_size = -1  # none of it is stored
