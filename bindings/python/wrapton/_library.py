"""The records and functions of <wrapton/Wrapton.h>."""

from __future__ import annotations

import ctypes
import enum
import functools
import os
from ctypes import POINTER, c_int, c_int16, c_int32, c_int64, c_uint, c_uint16, c_uint32, c_void_p


class StreamType(enum.IntEnum):
    """Containers."""

    MP4 = 0
    ASF = 1
    AVI = 2
    OMF = 3
    FLV = 4
    STREAM_ASF = 5
    MOV = 6
    STREAM_FLV = 8
    RTP = 9
    PS = 11
    MP4_NOSEEK = 12
    MKV = 13
    MP4_64 = 14
    MOV_64 = 15
    WAV = 16
    QVPS = 17
    GAYSPS = 18


class FrameType(enum.IntEnum):
    VIDEO = 1
    AUDIO = 2
    EXT = 3


class FrameSubType(enum.IntEnum):
    I = 0  # noqa: E741
    P = 1
    B = 2
    JPEG_FRAME = 8


class VideoEncode(enum.IntEnum):
    UNKNOWN = 0
    MPEG4 = 1
    HI_H264 = 2
    JPEG = 3
    QV_H264 = 4
    JPEG2000 = 6
    AVS = 7
    STD_H264 = 8
    MPEG2 = 9
    VNC = 10
    SVAC = 11
    QV_H265 = 12
    H263 = 35
    PACKET = 36
    MSMPEG4V1 = 37
    MSMPEG4V2 = 38
    MSMPEG4V3 = 39
    WMV1 = 40
    WMV2 = 41
    HIK_H264 = 129
    HIK_HKH4 = 130


class AudioEncode(enum.IntEnum):
    UNKNOWN = 0
    PCM = 7
    G729 = 8
    IMA = 9
    PCM_MULAW = 10
    G721 = 11
    PCM8_VWIS = 12
    MS_ADPCM = 13
    G711A = 14
    AMR = 15
    PCM16 = 16
    G711U = 22
    G723 = 25
    AAC = 26
    G726_40 = 27
    G726_32 = 28
    G726_24 = 29
    G726_16 = 30
    MP2 = 31
    OGG = 32
    MP3 = 33
    G722_1 = 34
    TALK = 48


class SGOutputData(ctypes.Structure):
    _fields_ = [
        ("struct_size", c_uint32),
        ("data_pointer", c_void_p),
        ("data_size", c_int32),
        ("offset_type", c_int32),
        ("offset_pos", c_uint32),
        ("offset_pos64", c_int64),
    ]


DATA_CALLBACK = ctypes.CFUNCTYPE(None, POINTER(SGOutputData), c_void_p)


class SGCreateParam(ctypes.Structure):
    _fields_ = [
        ("struct_size", c_uint32),
        ("user", c_void_p),
        ("sg_malloc", c_void_p),
        ("sg_free", c_void_p),
        ("sg_datacb", DATA_CALLBACK),
    ]


class SGVideoInfo(ctypes.Structure):
    _fields_ = [(name, c_int32) for name in ("bVideo", "videoencode", "width", "height", "framerate")]


class SGAudioInfo(ctypes.Structure):
    _fields_ = [(name, c_int32) for name in ("bAudio", "audioencode", "channels", "sampledepth", "samplerate")]


class SGHeaderInfo(ctypes.Structure):
    _fields_ = [
        ("video", SGVideoInfo),
        ("audio", SGAudioInfo),
        ("pre_header_len", c_uint32),
        ("struct_size", c_uint32),
    ]


class SGBlockInfo(ctypes.Structure):
    _fields_ = [
        ("left", c_int16),
        ("top", c_int16),
        ("right", c_int16),
        ("bottom", c_int16),
        ("offset", c_int32),
        ("reserved", c_int32),
    ]


class SGSplitInfo(ctypes.Structure):
    _fields_ = [
        ("flag", c_int32),
        ("block_n", c_int32),
        ("block_m", c_int32),
        ("pblock", POINTER(SGBlockInfo)),
    ]


class SGFrameInfo(ctypes.Structure):
    _fields_ = [
        ("struct_size", c_uint32),
        ("frame_pointer", c_void_p),
        ("frame_size", c_uint32),
        ("frame_type", c_uint32),
        ("frame_sub_type", c_uint32),
        ("frame_encode", c_uint32),
        ("frame_time", c_uint32),
        ("frame_data", c_uint32),
        ("width", c_uint32),
        ("heigth", c_uint32),  # spelled so in the interface
        ("frame_rate", c_uint32),
        ("deinter_lace", c_uint32),
        ("sample_rate", c_uint32),
        ("bit_per_sample", c_uint32),
        ("channels", c_uint32),
        ("split_info", SGSplitInfo),
        ("rotation_angle", c_uint32),
        ("company_type", c_uint16),
        ("_3rdstream_header_length", c_uint16),
        ("bit_rate", c_uint32),
    ]


class SGRtpPackageParam(ctypes.Structure):
    _fields_ = [
        ("struct_size", c_uint32),
        ("max_packet_length", c_uint32),
        ("sequence_number", c_uint32),
        ("timestamp", c_uint32),
        ("ssrc", c_uint32),
        ("audio_sample", c_uint32),
        ("payload_type", c_uint32),
        ("extension_data", c_void_p),
        ("extension_data_length", c_uint32),
        ("custom_data", c_void_p),
        ("custom_data_length", c_uint32),
        ("rtp_output_all_flag", c_uint32),
    ]


_FUNCTIONS = {
    "SG_CreateHandle": (c_void_p, [c_uint, POINTER(SGCreateParam)]),
    "SG_CreateHeader": (c_int, [c_void_p, POINTER(SGHeaderInfo)]),
    "SG_InputFrame": (c_int, [c_void_p, POINTER(SGFrameInfo)]),
    "SG_CreateTailer": (c_int, [c_void_p, c_void_p]),
    "SG_GetBackup": (c_int, [c_void_p, POINTER(SGOutputData)]),
    "SG_SetParam": (c_int, [c_void_p, c_uint, c_void_p, c_uint]),
    "SG_GetParam": (c_int, [c_void_p, c_uint, c_void_p, POINTER(c_uint)]),
    "SG_DestroyHandle": (c_int, [c_void_p]),
}


@functools.lru_cache(maxsize=None)
def library() -> ctypes.CDLL:
    """The shared library, loaded when the first packager asks for it. Raises OSError without one."""
    # By its interface's number: another one would have other records.
    loaded = ctypes.CDLL(os.environ.get("WRAPTON_LIBRARY") or "libwrapton.so.1")
    for function, (result, arguments) in _FUNCTIONS.items():
        getattr(loaded, function).restype = result
        getattr(loaded, function).argtypes = arguments
    return loaded
