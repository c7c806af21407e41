"""What can go wrong, by the library's own codes."""

from __future__ import annotations

from typing import Dict, NoReturn, Type


class WraptonError(Exception):
    """A call of the library was refused."""

    meaning = "refused by the packager"

    def __init__(self, function: str, code: int) -> None:
        super().__init__(f"{function}: {self.meaning} (code {code})")
        self.function = function
        self.code = code


class NoPackagerError(WraptonError):
    """The packager is closed, or the library has none for this container."""

    meaning = "no packager"


class ParameterError(WraptonError, ValueError):
    """A bad argument, or a step that failed."""

    meaning = "a bad argument, or a step that failed"


class AllocationError(WraptonError, MemoryError):
    """An allocation failed."""

    meaning = "out of memory"


class UnsupportedEncodingError(WraptonError):
    """The container cannot hold this encoding."""

    meaning = "the container cannot hold this encoding"


class NullPointerError(WraptonError):
    """A pointer was null."""

    meaning = "a pointer was null"


class TrackEncodingError(WraptonError):
    """The frame's encoding is not that of its track."""

    meaning = "the frame's encoding is not that of its track"


_BY_CODE: Dict[int, Type[WraptonError]] = {
    -1: TrackEncodingError,
    1: NoPackagerError,
    3: ParameterError,
    4: AllocationError,
    5: UnsupportedEncodingError,
    6: NullPointerError,
}


def fail(function: str, code: int) -> NoReturn:
    raise _BY_CODE.get(code, WraptonError)(function, code)
