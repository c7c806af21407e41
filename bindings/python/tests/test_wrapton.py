"""The package over the real library. WRAPTON_LIBRARY names the library, WRAPTON_SOURCE the source tree."""

import ctypes
import os
import re
import stat
import subprocess
import sys
import tempfile
import threading
import unittest
import unittest.mock
import wave
from pathlib import Path

import wrapton as w
from wrapton import _library as lib
from wrapton._errors import fail
from wrapton._file import flv_header_length

SOURCE = Path(os.environ.get("WRAPTON_SOURCE") or Path(__file__).resolve().parents[3])
MEDIA = SOURCE / "tests" / "media"
EXAMPLE = SOURCE / "bindings" / "python" / "examples" / "record.py"

# A key picture: sequence and picture parameter set and a slice, each behind a start code of 4 bytes.
KEY = bytes.fromhex("00000001 6742001F 00000001 68CE 00000001 658884")
KEY_PICTURE = w.Picture(w.VideoEncode.HI_H264, w.FrameSubType.I, 64, 48, 25)
PCM = w.Sound(w.AudioEncode.PCM16, 8000)


class Collector:
    def __init__(self):
        self.blocks = []

    def __call__(self, block):
        self.blocks.append(block)


class Scratch(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = Path(directory.name)


class Records(unittest.TestCase):
    def test_sizes_are_those_of_the_interface(self):
        sizes = {
            lib.SGCreateParam: 40,
            lib.SGVideoInfo: 20,
            lib.SGAudioInfo: 20,
            lib.SGHeaderInfo: 48,
            lib.SGBlockInfo: 16,
            lib.SGSplitInfo: 24,
            lib.SGFrameInfo: 112,
            lib.SGOutputData: 40,
            lib.SGRtpPackageParam: 64,
        }
        for record, size in sizes.items():
            self.assertEqual(ctypes.sizeof(record), size, record.__name__)

    def test_fields_and_numbers_are_those_of_the_header(self):
        header = (SOURCE / "Include" / "Wrapton.h").read_text()
        for record in (lib.SGFrameInfo, lib.SGOutputData, lib.SGRtpPackageParam, lib.SGHeaderInfo, lib.SGCreateParam):
            body = re.search(rf"typedef struct {record.__name__}\n{{(.*?)\n}}", header, re.DOTALL)[1]
            body = re.sub(r"/\*.*?\*/", "", body, flags=re.DOTALL)
            self.assertEqual(re.findall(r"(\w+);", body), [field[0] for field in record._fields_])
        numbers = dict(re.findall(r"(SG_\w+) = (\d+)", header))
        for enumeration, prefixes in (
            (lib.StreamType, ["SG_STREAM_TYPE_"]),
            (lib.FrameType, ["SG_FRAME_TYPE_"]),
            (lib.FrameSubType, ["SG_FRAME_SUB_TYPE_"]),
            (lib.VideoEncode, ["SG_ENCODE_VIDEO_"]),
            (lib.AudioEncode, ["SG_ENCODE_AUDIO_", "SG_ENCODE_"]),
        ):
            for member in enumeration:
                found = [numbers[prefix + member.name] for prefix in prefixes if prefix + member.name in numbers]
                self.assertEqual(found, [str(int(member))], member)

    def test_attributes_reach_their_fields(self):
        record = w.Picture(w.VideoEncode.MPEG4, w.FrameSubType.B, 352, 288, 30, 1234, 5678, True, 90, 7, 40).record()
        self.assertEqual((record.frame_type, record.frame_sub_type, record.frame_encode), (1, 2, 1))
        self.assertEqual((record.width, record.heigth, record.frame_rate), (352, 288, 30))
        self.assertEqual((record.frame_time, record.frame_data, record.deinter_lace), (1234, 5678, 1))
        self.assertEqual((record.rotation_angle, record.company_type, record._3rdstream_header_length), (90, 7, 40))
        record = w.Sound(w.AudioEncode.AAC, 48000, 2, 24, 10, 20, 64000).record()
        self.assertEqual((record.frame_type, record.frame_encode, record.sample_rate), (2, 26, 48000))
        self.assertEqual((record.channels, record.bit_per_sample, record.bit_rate), (2, 24, 64000))
        self.assertEqual(w.Extension(1, 2).record().frame_type, 3)

    def test_numbers_that_do_not_fit_are_not_cut(self):
        with self.assertRaises(ValueError):
            w.Picture(w.VideoEncode.MPEG4, w.FrameSubType.I, 1 << 32, 1, 1).record()
        with self.assertRaises(ValueError):
            w.Picture(w.VideoEncode.MPEG4, w.FrameSubType.I, 1, 1, 1, company=1 << 16).record()
        with self.assertRaises(ValueError):
            w.Sound(w.AudioEncode.AAC, -1).record()
        with w.Packager(w.StreamType.MP4) as packager, self.assertRaises(ValueError):
            packager.header(reserve=1 << 32)


class Recording(Scratch):
    def test_wav_is_what_pythons_own_reader_expects(self):
        samples = bytes(range(256)) * 5
        path = self.directory / "out.wav"
        with w.FileSink(path, w.StreamType.WAV) as sink, w.Packager(w.StreamType.WAV, sink) as packager:
            packager.header()
            packager.input(b"\0" * 320, PCM)  # the header takes its place
            packager.input(samples, PCM)
        with wave.open(str(path)) as reader:
            self.assertEqual(reader.getparams()[:3], (1, 2, 8000))
            self.assertEqual(reader.readframes(640), samples)

    def test_blocks_carry_place_bytes_and_the_end(self):
        taker = Collector()
        with w.Packager(w.StreamType.MP4_NOSEEK, taker) as packager:
            packager.header()
            packager.input(KEY, KEY_PICTURE)
            self.assertFalse(any(block.closing for block in taker.blocks))
            count = len(taker.blocks)
        self.assertTrue(all(block.closing for block in taker.blocks[count:]))
        self.assertEqual(taker.blocks[0].data[4:8], b"ftyp")
        self.assertEqual((taker.blocks[0].offset, taker.blocks[0].origin), (0, os.SEEK_SET))
        self.assertEqual((taker.blocks[-1].offset, taker.blocks[-1].origin), (0, os.SEEK_SET))

    def test_stored_counts_move_what_follows(self):
        offsets = []

        def short(block):
            offsets.append(block.offset)
            return len(block.data) - 1

        whole = Collector()
        with w.Packager(w.StreamType.MP4_NOSEEK, short) as packager:
            packager.header()
            packager.input(KEY, KEY_PICTURE)
        with w.Packager(w.StreamType.MP4_NOSEEK, whole) as packager:
            packager.header()
            packager.input(KEY, KEY_PICTURE)
        self.assertEqual(offsets[1], whole.blocks[1].offset - 1)

    def test_an_exception_writes_no_tailer(self):
        taker = Collector()
        with self.assertRaises(KeyError), w.Packager(w.StreamType.WAV, taker) as packager:
            packager.header()
            raise KeyError
        self.assertEqual(len(taker.blocks), 1)
        with self.assertRaises(w.NoPackagerError):
            packager.header()

    def test_a_tailer_is_not_written_twice(self):
        taker = Collector()
        with w.Packager(w.StreamType.WAV, taker) as packager:
            packager.header()
            packager.tailer()
            count = len(taker.blocks)
        self.assertEqual(len(taker.blocks), count)

    def test_header_records_reach_the_library(self):
        taker = Collector()
        with w.Packager(w.StreamType.ASF, taker) as packager:
            packager.header(
                w.VideoStream(w.VideoEncode.HI_H264, 640, 360, 25), w.AudioStream(w.AudioEncode.PCM16, 8000)
            )
            packager.input(KEY, KEY_PICTURE)
        self.assertTrue(any(b"H264" in block.data for block in taker.blocks))
        with w.Packager(w.StreamType.AVI, Collector()) as packager:
            packager.header_from_frames()

    def test_backup_is_the_movie_box(self):
        with w.Packager(w.StreamType.MP4) as packager:
            packager.header()
            packager.input(KEY, KEY_PICTURE)
            self.assertEqual(packager.backup().data[4:8], b"moov")
        with w.Packager(w.StreamType.WAV) as packager:
            self.assertIsNone(packager.backup())

    def test_rtp_parameters_go_in_and_come_back(self):
        with w.Packager(w.StreamType.RTP) as packager:
            self.assertEqual(packager.rtp.max_packet_length, 1000)
            packager.rtp = packager.rtp.replace(
                sequence_number=1000, ssrc=0x01020304, extension_data=b"\xbe\xde\0\0", custom_data=b"abc"
            )
            self.assertEqual(packager.rtp.sequence_number, 999)
            self.assertEqual(packager.rtp.ssrc, 0x01020304)
            self.assertEqual(packager.rtp.extension_data, b"\xbe\xde\0\0")
            self.assertEqual(packager.rtp.custom_data, b"abc")
        with w.Packager(w.StreamType.WAV) as packager:
            self.assertEqual(packager.rtp, w.RtpParameters())


class Frames(unittest.TestCase):
    def matroska(self, data, **options):
        with w.Packager(w.StreamType.MKV) as packager:
            packager.header()
            packager.input(data, KEY_PICTURE, **options)

    def test_frames_are_copied_by_default(self):
        frame = bytearray(KEY)
        self.matroska(frame)
        self.assertEqual(frame, KEY)

    def test_without_a_copy_matroska_changes_the_buffer(self):
        frame = bytearray(KEY)
        self.matroska(frame, copy=False)
        self.assertNotEqual(frame, KEY)
        with self.assertRaises(TypeError):
            self.matroska(KEY, copy=False)  # bytes do not change

    def test_any_buffer_is_a_frame(self):
        for data in (KEY, bytearray(KEY), memoryview(KEY)):
            taker = Collector()
            with w.Packager(w.StreamType.OMF, taker) as packager:
                packager.header()
                packager.input(data, KEY_PICTURE)
            self.assertTrue(any(KEY in block.data for block in taker.blocks))


class Errors(unittest.TestCase):
    def test_codes_have_types(self):
        for code, kind in {
            -1: w.TrackEncodingError,
            1: w.NoPackagerError,
            3: w.ParameterError,
            4: w.AllocationError,
            5: w.UnsupportedEncodingError,
            6: w.NullPointerError,
            77: w.WraptonError,
        }.items():
            with self.assertRaises(kind) as caught:
                fail("SG_InputFrame", code)
            self.assertIs(type(caught.exception), kind)
            self.assertEqual(caught.exception.code, code)
            self.assertIn(f"(code {code})", str(caught.exception))
        self.assertTrue(issubclass(w.AllocationError, MemoryError))

    def test_the_library_refuses_by_code(self):
        with w.Packager(w.StreamType.WAV) as packager, self.assertRaises(w.ParameterError) as caught:
            packager.input(b"\0\0", PCM)  # ahead of the header
        self.assertEqual(caught.exception.function, "SG_InputFrame")
        with w.Packager(w.StreamType.RTP) as packager:
            packager.header()
            with self.assertRaises(w.WraptonError):
                packager.input(b"\0\0", w.Picture(w.VideoEncode.VNC, w.FrameSubType.I, 1, 1, 1))

    def test_no_packager_for_what_the_interface_does_not_offer(self):
        for number in (7, 10, 19):
            with self.assertRaises(w.NoPackagerError):
                w.Packager(number)

    def test_what_the_output_raises_comes_out_of_the_call(self):
        def full(block):
            raise OSError("full")

        packager = w.Packager(w.StreamType.WAV, full)
        with self.assertRaisesRegex(OSError, "full"):
            packager.header()
        packager.close()

    def test_an_answer_of_true_is_no_count(self):
        with w.Packager(w.StreamType.WAV, lambda block: True) as packager:
            self.assertRaisesRegex(TypeError, "how many bytes", packager.header)

    def test_the_output_cannot_call_back(self):
        caught = []

        def recursive(block):
            for call in (packager.tailer, packager.close):
                try:
                    call()
                except RuntimeError as error:
                    caught.append(error)

        packager = w.Packager(w.StreamType.WAV, recursive)
        packager.header()
        self.assertEqual(len(caught), 2)
        packager.close()

    def test_packagers_run_in_threads_of_their_own(self):
        results = {}

        def record(name):
            taker = Collector()
            with w.Packager(w.StreamType.OMF, taker) as packager:
                packager.header()
                for number in range(50):
                    date, time = 1700000000, number * 40
                    packager.input(KEY, w.Picture(w.VideoEncode.HI_H264, w.FrameSubType.I, 64, 48, 25, time, date))
            results[name] = b"".join(block.data for block in taker.blocks)

        threads = [threading.Thread(target=record, args=(name,)) for name in range(4)]
        for thread in threads:
            thread.start()
        for thread in threads:
            thread.join()
        self.assertEqual(len(set(results.values())), 1)
        self.assertEqual(len(results), 4)


class Files(Scratch):
    def sink(self, stream_type, **options):
        return w.FileSink(self.directory / "out", stream_type, **options)

    def content(self):
        return (self.directory / "out").read_bytes()

    def test_blocks_go_where_their_origin_says(self):
        for sync in w.Sync:
            with self.sink(w.StreamType.MP4, sync=sync) as sink:
                sink(w.Block(0, os.SEEK_SET, b"0123456789"))
                sink(w.Block(2, os.SEEK_SET, b"ab"))
                sink(w.Block(0, os.SEEK_CUR, b"c"))
                sink(w.Block(0, os.SEEK_END, b"e"))
                sink(w.Block(-2, os.SEEK_END, b"f"))
                sink(w.Block(12, os.SEEK_SET, b"g"))
                self.assertEqual(sink.size, 13)
            self.assertEqual(self.content(), b"01abc5678fe\0g")

    def test_the_first_error_stays(self):
        sink = w.FileSink("/dev/full", w.StreamType.PS)
        for call in (lambda: sink.place(0, os.SEEK_CUR, b"x"), lambda: sink.place(-1, os.SEEK_SET, b"x"), sink.finish):
            with self.assertRaisesRegex(OSError, "No space left"):
                call()
        sink.close()
        sink = self.sink(w.StreamType.PS)
        with self.assertRaisesRegex(OSError, "Invalid argument"):
            sink.place(-1, os.SEEK_SET, b"x")
        sink.close()

    def test_an_error_of_the_file_comes_out_of_the_recording(self):
        with self.assertRaisesRegex(OSError, "No space left"):
            with w.FileSink("/dev/full", w.StreamType.OMF) as sink, w.Packager(w.StreamType.OMF, sink) as packager:
                packager.header()
                packager.input(KEY, KEY_PICTURE)

    def test_the_name_of_a_file_reaches_the_disk_with_it(self):
        synced = []
        with unittest.mock.patch("os.fsync", lambda file: synced.append(stat.S_ISDIR(os.fstat(file).st_mode))):
            for sync, names in ((w.Sync.NEVER, []), (w.Sync.AT_END, [False, True]), (w.Sync.EACH_BLOCK, [True, False])):
                synced.clear()
                with self.sink(w.StreamType.PS, sync=sync) as sink:
                    sink.place(0, os.SEEK_CUR, b"x")
                self.assertEqual(synced, names)

    def test_a_file_is_found_from_another_directory(self):
        before = os.getcwd()
        os.chdir(self.directory)
        try:
            sink = w.FileSink("out", w.StreamType.PS)
        finally:
            os.chdir(before)
        sink.place(0, os.SEEK_CUR, b"x")
        sink.finish()
        self.assertEqual(self.content(), b"x")

    def test_an_empty_block_is_none_wherever_it_would_belong(self):
        with self.sink(w.StreamType.PS) as sink:
            self.assertEqual(sink.place(-1, os.SEEK_SET, b""), 0)
            sink.place(0, os.SEEK_CUR, b"x")
        self.assertEqual(self.content(), b"x")

    def test_a_file_that_cannot_be_emptied_is_closed(self):
        opened = []
        real = os.open

        def note(*arguments, **options):
            opened.append(real(*arguments, **options))
            return opened[-1]

        with unittest.mock.patch("os.open", note), unittest.mock.patch("os.ftruncate", side_effect=OSError("full")):
            with self.assertRaisesRegex(OSError, "full"):
                self.sink(w.StreamType.PS)
        self.assertRaises(OSError, os.fstat, opened[0])

    def test_a_removed_file_is_an_error(self):
        with self.assertRaises(FileNotFoundError), self.sink(w.StreamType.PS) as sink:
            sink.place(0, os.SEEK_CUR, b"x")
            (self.directory / "out").unlink()
        with self.assertRaises(FileNotFoundError), self.sink(w.StreamType.PS) as sink:
            (self.directory / "out").rename(self.directory / "other")
            (self.directory / "out").write_bytes(b"")

    def test_the_closing_block_of_the_no_seek_variant_is_left_out(self):
        with self.sink(w.StreamType.MP4_NOSEEK) as sink:
            sink(w.Block(0, os.SEEK_SET, b"ftyp"))
            self.assertEqual(sink(w.Block(0, os.SEEK_SET, b"mdat", closing=True)), 4)
            sink(w.Block(4, os.SEEK_SET, b"moov", closing=True))
        self.assertEqual(self.content(), b"ftypmoov")

    def test_the_closing_header_of_flv_replaces_the_first(self):
        pictures = [KEY, bytes.fromhex("00000001 419A02")]
        blocks = Collector()
        for output in (self.sink(w.StreamType.FLV), blocks):
            with w.Packager(w.StreamType.FLV, output) as packager:
                packager.header()
                packager.input(pictures[0], KEY_PICTURE)
                packager.input(pictures[1], w.Picture(w.VideoEncode.HI_H264, w.FrameSubType.P, 64, 48, 25))
            if isinstance(output, w.FileSink):
                output.finish()
        data = [block.data for block in blocks.blocks]
        header = data[-1]
        self.assertEqual(flv_header_length(header), len(header))
        self.assertEqual(self.content(), header + b"".join(data[:-1])[len(header) :])

    def test_other_bytes_are_no_header_of_flv(self):
        header = bytes.fromhex("464C5601050000000900000000 120000030000000000000000 AABBCC 0000000E".replace(" ", ""))
        header = header[:24] + header[25:]  # a tag header has 11 bytes
        self.assertEqual(flv_header_length(header), len(header))
        for size in range(len(header)):
            self.assertEqual(flv_header_length(header[:size]), 0)
        for at in (0, 1, 2, 13):
            other = bytearray(header)
            other[at] += 1
            self.assertEqual(flv_header_length(bytes(other)), 0)


class Project(Scratch):
    def test_the_example_records_every_picture(self):
        stream = MEDIA / "qvga_320x240_12fps.mjpeg"
        output = self.directory / "out.mp4"
        result = subprocess.run(
            [sys.executable, "-B", EXAMPLE, "320", "240", "12", stream, output],
            capture_output=True,
            text=True,
            check=False,
            env=dict(os.environ, PYTHONPATH=str(Path(w.__file__).parent.parent)),
        )
        self.assertEqual(result.returncode, 0, result.stderr)
        pictures = stream.read_bytes().count(b"\xff\xd8\xff")
        self.assertEqual(result.stdout, f"{pictures} pictures\n")
        data = output.read_bytes()
        self.assertEqual(data.count(b"\xff\xd8\xff"), pictures)
        self.assertLess(data.index(b"moov"), data.index(b"mdat"))  # it went into the reserve


if __name__ == "__main__":
    unittest.main(verbosity=2)
