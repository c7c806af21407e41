"""What is known of a frame beside its bytes."""

from __future__ import annotations

from dataclasses import dataclass

from ._library import AudioEncode, FrameSubType, FrameType, SGFrameInfo, VideoEncode

_MOST_32 = 0xFFFFFFFF


def checked(name: str, value: int, most: int = _MOST_32) -> int:
    """The value, if its field can hold it: ctypes would cut it without a word."""
    if not 0 <= value <= most:
        raise ValueError(f"{name} is {value}, not between 0 and {most}")
    return value


def _fill(record: SGFrameInfo, **fields: int) -> SGFrameInfo:
    for name, value in fields.items():
        most = 0xFFFF if name in ("company_type", "_3rdstream_header_length") else _MOST_32
        setattr(record, name, checked(name, value, most))
    return record


@dataclass(frozen=True)
class Picture:
    """The attributes of a picture. Times are milliseconds, dates seconds since 1970; 0 is none."""

    encode: VideoEncode
    kind: FrameSubType
    width: int
    height: int
    rate: int
    time: int = 0
    date: int = 0
    interlaced: bool = False
    rotation: int = 0
    company: int = 0
    foreign_header: int = 0

    def record(self) -> SGFrameInfo:
        return _fill(
            SGFrameInfo(),
            frame_type=FrameType.VIDEO,
            frame_sub_type=self.kind,
            frame_encode=self.encode,
            frame_time=self.time,
            frame_data=self.date,
            width=self.width,
            heigth=self.height,
            frame_rate=self.rate,
            deinter_lace=int(self.interlaced),
            rotation_angle=self.rotation,
            company_type=self.company,
            _3rdstream_header_length=self.foreign_header,
        )


@dataclass(frozen=True)
class Sound:
    """The attributes of a piece of sound."""

    encode: AudioEncode
    sample_rate: int
    channels: int = 1
    bits_per_sample: int = 16
    time: int = 0
    date: int = 0
    bit_rate: int = 0

    def record(self) -> SGFrameInfo:
        return _fill(
            SGFrameInfo(),
            frame_type=FrameType.AUDIO,
            frame_encode=self.encode,
            frame_time=self.time,
            frame_data=self.date,
            sample_rate=self.sample_rate,
            channels=self.channels,
            bit_per_sample=self.bits_per_sample,
            bit_rate=self.bit_rate,
        )


@dataclass(frozen=True)
class Extension:
    """Extension data of a native recording."""

    time: int = 0
    date: int = 0

    def record(self) -> SGFrameInfo:
        return _fill(SGFrameInfo(), frame_type=FrameType.EXT, frame_time=self.time, frame_data=self.date)


@dataclass(frozen=True)
class VideoStream:
    """A video stream as far as it is known ahead of its frames."""

    encode: VideoEncode
    width: int = 0
    height: int = 0
    rate: int = 0


@dataclass(frozen=True)
class AudioStream:
    """An audio stream as far as it is known ahead of its frames."""

    encode: AudioEncode
    sample_rate: int = 0
    channels: int = 1
    bits_per_sample: int = 16
