"""Packages coded audio and video frames into containers, over libwrapton."""

from ._errors import (
    AllocationError,
    NoPackagerError,
    NullPointerError,
    ParameterError,
    TrackEncodingError,
    UnsupportedEncodingError,
    WraptonError,
)
from ._file import FileSink, Sync
from ._frames import AudioStream, Extension, Picture, Sound, VideoStream
from ._library import AudioEncode, FrameSubType, StreamType, VideoEncode
from ._packager import Block, Packager, RtpParameters

__version__ = "1.0.0"

__all__ = [
    "AllocationError",
    "AudioEncode",
    "AudioStream",
    "Block",
    "Extension",
    "FileSink",
    "FrameSubType",
    "NoPackagerError",
    "NullPointerError",
    "Packager",
    "ParameterError",
    "Picture",
    "RtpParameters",
    "Sound",
    "StreamType",
    "Sync",
    "TrackEncodingError",
    "UnsupportedEncodingError",
    "VideoEncode",
    "VideoStream",
    "WraptonError",
]
