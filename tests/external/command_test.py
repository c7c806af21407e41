"""The command itself: help, listings, results, refusals, failures and signals."""

import json
import os
import resource
import shutil
import signal
import subprocess
import threading
import time

from boxes import MediaFile
from readers import AUDIO, MEDIA, VIDEO, WRAPTON, MediaTest, ffmpeg, ffprobe, main, pack_json, wrapton

CAMERA = VIDEO["h264_baseline"].path
TONE = AUDIO["aac_8000_mono"].path
SAMPLES = MEDIA / "tone_8000_mono.s16le"


class Help(MediaTest):
    def test_every_level_has_help(self):
        for level, words in (([], ["pack", "info", "formats", "--version"]),
                             (["pack"], ["INPUT... OUTPUT", "--video", "--audio", "--to", "--fps",
                                         "--reserve", "--pcap", "--json", "--progress", "Exit codes"]),
                             (["formats"], ["--json"])):
            done = wrapton(*level, "--help")
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            for word in words:
                self.assertIn(word, done.stdout)

    def test_version_names_the_program(self):
        done = wrapton("--version")
        self.assertEqual(done.returncode, 0)
        self.assertRegex(done.stdout, r"^wrapton \d+\.\d+\.\d+\n$")

    def test_a_wrong_call_is_a_failure_on_standard_error(self):
        for call in ([], ["unpack"], ["pack"], ["pack", "--fps", "0", CAMERA, "x.mp4"],
                     ["pack", "--reserve", "67108865", CAMERA, "x.mp4"],
                     ["pack", self.directory / "x.mp4"],
                     ["pack", "--rate", "8000", CAMERA, self.directory / "x.mp4"]):
            done = wrapton(*call)
            self.assertEqual(done.returncode, 2, call)
            self.assertNotEqual(done.stderr, "")


class Formats(MediaTest):
    WANTED = {
        "mp4": (0, ["h264", "mpeg4", "mjpeg"], ["aac", "mp2"]),
        "mov": (6, ["h264", "mpeg4", "mjpeg"], ["aac", "mp2"]),
        "mp464": (14, ["h264", "mpeg4", "mjpeg"], ["aac", "mp2"]),
        "mov64": (15, ["h264", "mpeg4", "mjpeg"], ["aac", "mp2"]),
        "mp4noseek": (12, ["h264", "mpeg4", "mjpeg"], ["aac", "mp2"]),
        "avi": (2, ["h264", "mpeg4", "mjpeg"], ["alaw", "ulaw", "s16le"]),
        "mkv": (13, ["h264", "mpeg4"], []),
        "3gp": (7, ["h264", "mpeg4", "mjpeg"], ["aac", "mp2"]),
        "asfstream": (5, ["h264", "mpeg4", "mjpeg"], ["alaw", "ulaw", "s16le"]),
        "asf": (1, ["h264", "mpeg4", "mjpeg"], ["alaw", "ulaw", "s16le"]),
        "flv": (4, ["h264"], ["s16le"]),
        "flvstream": (8, ["h264"], ["s16le"]),
        "omf": (3, ["h264", "mpeg4", "mjpeg"], ["aac", "mp2", "alaw", "s16le"]),
        "rtp": (9, ["h264", "mpeg4", "mjpeg"], ["aac", "mp2", "alaw", "s16le"]),
        "ts": (10, ["h264", "mpeg4"], ["mp2"]),
        "ps": (11, ["h264", "mpeg4"], ["mp2"]),
        "qvps": (17, ["h264", "mpeg4"], ["aac", "mp2"]),
        "gaysps": (18, ["h264", "mpeg4"], ["alaw"]),
        "wav": (16, [], ["alaw", "s16le"]),
    }

    def test_json_lists_the_containers_and_what_they_take(self):
        done = wrapton("formats", "--json")
        self.assertEqual(done.returncode, 0)
        listed = {entry["name"]: (entry["type"], entry["video"], entry["audio"])
                  for entry in json.loads(done.stdout)["formats"]}
        self.assertEqual(listed, self.WANTED)
        self.assertEqual(sorted(entry[0] for entry in listed.values()), list(range(19)))

    def test_the_table_has_a_row_for_each(self):
        rows = wrapton("formats").stdout.splitlines()[1:]
        names = [entry["name"] for entry in json.loads(wrapton("formats", "--json").stdout)["formats"]]
        self.assertEqual([row.split()[0] for row in rows], names)


class Choosing(MediaTest):
    def test_the_extension_names_the_container(self):
        for extension, container in ((".mp4", "mp4"), (".MOV", "mov"), (".m4v", "mp4"),
                                     (".flv", "flv"), (".asf", "asf"), (".avi", "avi"),
                                     (".mkv", "mkv"), (".3gp", "3gp"), (".ts", "ts")):
            result = self.packed(CAMERA, self.directory / ("out" + extension))
            self.assertEqual(result["container"], container)

    def test_to_overrules_the_extension(self):
        result = self.packed("--to", "mov64", CAMERA, self.directory / "out.mp4")
        self.assertEqual((result["container"], result["type"]), ("mov64", 15))

    def test_an_unknown_container_is_a_failure_that_names_the_known_ones(self):
        for call in ((CAMERA, self.directory / "out.xyz"),
                     ("--to", "xyz", CAMERA, self.directory / "out.mp4")):
            done = wrapton("pack", *call)
            self.assertEqual(done.returncode, 2)
            self.assertIn("mp4noseek", done.stderr)
        self.assertEqual(list(self.directory.iterdir()), [])

    def test_video_and_audio_choose_their_files(self):
        both = self.directory / "both.mp4"
        self.packed("--video", CAMERA, "--audio", TONE, both)
        result = self.packed("--audio", AUDIO["aac_44100_stereo"].path, both,
                             self.directory / "other.mp4")
        video, audio = result["streams"]
        self.assertEqual(video["file"], str(both))
        self.assertEqual(audio["file"], str(AUDIO["aac_44100_stereo"].path))
        self.assertEqual(len(result["left_out"]), 1)
        self.assertIn("stream 1 (audio, aac)", result["left_out"][0])

    def test_an_input_that_gives_nothing_is_a_failure(self):
        for call, words in (((CAMERA, VIDEO["mpeg4"].path), "nothing to take from it"),
                            (("--video", TONE), "no video in it"),
                            (("--audio", CAMERA), "no audio in it")):
            done = wrapton("pack", *call, self.directory / "out.mp4")
            self.assertEqual(done.returncode, 2)
            self.assertIn(words, done.stderr)
        self.assertEqual(list(self.directory.iterdir()), [])


class Refusals(MediaTest):
    def test_a_stream_the_container_cannot_hold_is_refused_with_the_reason(self):
        for source, container, reason in (
                (TONE, "wav", "aac audio cannot be stored in wav"),
                (CAMERA, "wav", "h264 video cannot be stored in wav"),
                (SAMPLES, "mp4", "s16le audio cannot be stored in mp4"),
                (TONE, "mp4noseek", "aac audio cannot be stored in mp4noseek without video")):
            output = self.directory / "out"
            done = wrapton("pack", "--to", container, source, output)
            self.assertEqual((done.returncode, done.stderr), (1, f"wrapton: {reason}\n"))
            self.assertFalse(output.exists())

    def test_the_other_stream_is_packaged_all_the_same(self):
        output = self.directory / "out.mp4"
        code, result = pack_json(CAMERA, SAMPLES, output)
        self.assertEqual((code, result["state"], result["output_complete"]), (1, "refused", True))
        video, audio = result["streams"]
        self.assertEqual((video["frames_stored"], video["refusal"]), (100, None))
        self.assertEqual((audio["frames_in"], audio["refusal"]),
                         (0, "s16le audio cannot be stored in mp4"))
        self.assertEqual(set(MediaFile(output).tracks), {"vide"})

    def test_an_encoding_the_command_does_not_know_goes_by_its_own_name(self):
        source = self.directory / "tone.wav"
        ffmpeg("-f", "lavfi", "-i", "sine=duration=1", "-c:a", "pcm_u8", source)
        done = wrapton("pack", source, self.directory / "out.mp4")
        self.assertEqual(done.returncode, 1)
        self.assertIn("pcm_u8 audio cannot be stored in mp4", done.stderr)

    def test_frames_ahead_of_the_first_key_picture_are_counted_as_dropped(self):
        data = CAMERA.read_bytes()
        # One slice a picture; NAL type 5 is a key picture, 1 another.
        slices = [(at, data[at + 3] & 31) for at in range(len(data) - 4)
                  if data[at:at + 3] == b"\0\0\1" and data[at + 3] & 31 in (1, 5)]
        self.assertEqual(len(slices), VIDEO["h264_baseline"].frames)
        types = [kind for _, kind in slices]
        source = self.directory / "cut.h264"
        source.write_bytes(data[:slices[0][0]] + data[slices[1][0]:])
        (video,) = self.packed_with_losses(source, self.directory / "out.mp4")["streams"]
        self.assertEqual(video["frames_in"], 99)
        self.assertEqual(video["frames_dropped"], types.index(5, 1) - 1)
        self.assertEqual(video["frames_stored"], 100 - types.index(5, 1))


class Failures(MediaTest):
    def expect_failure(self, done, *words):
        self.assertEqual(done.returncode, 2, done.stderr)
        self.assertEqual(done.stdout, "")  # no claim of success
        for word in words:
            self.assertIn(word, done.stderr)

    def test_a_full_device(self):
        for container, source in (("mp4", CAMERA), ("mp4noseek", CAMERA), ("wav", SAMPLES)):
            done = wrapton("pack", "--to", container, source, "/dev/full")
            self.expect_failure(done, "/dev/full: No space left on device", "nothing of it is left")

    def test_a_disk_that_fills_up_in_the_middle_of_a_frame(self):
        limit = 50001
        output = self.directory / "out.mp4"

        def limit_size():
            resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit))

        done = wrapton("pack", CAMERA, TONE, output, preexec_fn=limit_size)
        self.expect_failure(done, "File too large",
                            f"an unfinished file of {limit} bytes is left, it does not play")
        self.assertEqual(output.stat().st_size, limit)

    def test_json_says_so_too(self):
        code, result = pack_json("--to", "mp4", CAMERA, "/dev/full")
        self.assertEqual((code, result["state"], result["exit_code"]), (2, "failed", 2))
        self.assertFalse(result["output_complete"])
        self.assertIn("No space left", result["error"])

    def test_a_directory_that_does_not_exist(self):
        done = wrapton("pack", CAMERA, self.directory / "none" / "out.mp4")
        self.expect_failure(done, "No such file or directory", "nothing was written")

    def test_an_output_that_is_a_directory(self):
        done = wrapton("pack", "--to", "mp4", CAMERA, self.directory)
        self.expect_failure(done, "Is a directory")

    def test_inputs_that_cannot_be_read(self):
        empty = self.directory / "empty.h264"
        empty.touch()
        garbage = self.directory / "garbage.mp4"
        garbage.write_bytes(b"not a stream of any kind" * 50)
        unreadable = self.directory / "memory.h264"
        unreadable.symlink_to("/proc/self/mem")  # opens, and the first read fails
        for source in (self.directory / "none.h264", self.directory, empty, garbage, unreadable):
            output = self.directory / "out.mp4"
            done = wrapton("pack", source, output)
            self.expect_failure(done, str(source))
            self.assertFalse(output.exists())

    def test_an_input_that_breaks_off_leaves_what_was_read(self):
        whole = self.directory / "whole.mp4"
        self.packed("--reserve", 65536, CAMERA, whole)
        cut = self.directory / "cut.mp4"
        cut.write_bytes(whole.read_bytes()[:150000])
        output = self.directory / "out.mp4"
        done = wrapton("pack", "--json", cut, output)
        result = json.loads(done.stdout)
        (video,) = result["streams"]
        self.assertTrue(result["output_complete"])
        self.assertGreater(video["frames_stored"], 10)
        self.assertLess(video["frames_stored"], 100)
        damaged = video["frames_damaged"] > 0 or result["exit_code"] == 2
        self.assertTrue(damaged, "the missing end is reported")
        self.assertEqual(len(MediaFile(output).tracks["vide"].samples), video["frames_stored"])

    def test_the_output_is_none_of_the_inputs(self):
        source = self.directory / "in.h264"
        shutil.copy(CAMERA, source)
        (self.directory / "link.mp4").symlink_to(source)
        os.link(source, self.directory / "hard.mp4")
        for output in (source, self.directory / "link.mp4", self.directory / "hard.mp4"):
            done = wrapton("pack", "--to", "mp4", source, output)
            self.expect_failure(done, "the output is one of the inputs")
        self.assertEqual(source.read_bytes(), CAMERA.read_bytes())

    def test_an_existing_file_is_replaced_whole(self):
        output = self.directory / "out.mp4"
        output.write_bytes(bytes(1000000))
        result = self.packed(CAMERA, output)
        self.assertEqual(output.stat().st_size, result["bytes"])
        MediaFile(output)

    def test_standard_output_that_cannot_be_written(self):
        with open("/dev/full", "w", encoding="ascii") as full:
            done = subprocess.run([WRAPTON, "formats"], stdout=full, stderr=subprocess.PIPE,
                                  text=True, check=False)
        self.assertEqual(done.returncode, 2)
        self.assertIn("standard output", done.stderr)


class Running(MediaTest):
    """Recordings from a pipe, which last as long as the test holds the pipe open."""

    def start(self, *arguments):
        """Starts packaging from a pipe and returns when frames have been stored."""
        self.pipe = self.directory / "live.h264"
        os.mkfifo(self.pipe)
        self.process = subprocess.Popen([WRAPTON, "pack", "--progress", "--to", "mp4", *arguments,
                                         str(self.pipe), str(self.output)],
                                        stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(self.process.stderr.close)
        self.addCleanup(self.process.stdout.close)
        self.addCleanup(self.process.kill)
        self.closed = threading.Event()
        threading.Thread(target=self.feed, daemon=True).start()
        for line in self.process.stdout:
            key, value = line.strip().split("=")
            if key == "frames_in" and int(value) > 100:
                return
        self.fail("the command ended early: " + self.process.stderr.read())

    def feed(self):
        with open(self.pipe, "wb") as pipe:
            try:
                while not self.closed.is_set():
                    pipe.write(CAMERA.read_bytes())
                    pipe.flush()
                    time.sleep(0.02)
            except BrokenPipeError:
                pass

    def end(self):
        """The result lines, and what was said on standard error."""
        out, err = self.process.communicate(timeout=60)
        self.closed.set()
        blocks = out.split("state=")
        return dict(line.split("=") for line in ("state=" + blocks[-1]).splitlines()), err

    def setUp(self):
        super().setUp()
        (self.directory / "place").mkdir()
        self.output = self.directory / "place" / "out.mp4"

    def test_a_signal_completes_the_file(self):
        for number in (signal.SIGINT, signal.SIGTERM):
            with self.subTest(signal=number):
                self.start("--reserve", "65536")
                self.process.send_signal(number)
                result, err = self.end()
                self.assertEqual(self.process.returncode, 128 + number)
                self.assertEqual(result["state"], "interrupted")
                self.assertIn("is complete up to here", err)
                stored = int(result["video_frames_stored"])
                self.assertGreater(stored, 100)
                self.assertEqual(len(MediaFile(self.output).tracks["vide"].samples), stored)
                self.assert_reads_clean(self.output)
                self.pipe.unlink()

    def test_a_signal_before_the_first_frame_writes_nothing(self):
        pipe = self.directory / "silent.h264"
        os.mkfifo(pipe)
        with subprocess.Popen([WRAPTON, "pack", str(pipe), str(self.output)],
                              stderr=subprocess.PIPE, text=True) as process:
            # The other end opens only when the command has opened its own; then it waits for data.
            with open(pipe, "wb"):
                time.sleep(0.1)
                process.send_signal(signal.SIGINT)
                _, err = process.communicate(timeout=60)
        self.assertEqual(process.returncode, 130)
        self.assertEqual(err, "wrapton: interrupted; nothing was written\n")
        self.assertFalse(self.output.exists())

    def test_a_directory_that_vanishes(self):
        self.start()
        shutil.rmtree(self.output.parent)
        self.closed.set()
        result, err = self.end()
        self.assertEqual((self.process.returncode, result["state"]), (2, "failed"))
        self.assertIn("was removed", err)
        self.assertIn("nothing of it is left", err)

    def test_a_pipe_is_read_to_its_end(self):
        self.start()
        self.closed.set()
        result, err = self.end()
        self.assertEqual((self.process.returncode, err), (0, ""))
        self.assertEqual(int(result["video_frames_in"]) % 100, 0)
        self.assertEqual(result["video_frames_in"], result["video_frames_stored"])


class Output(MediaTest):
    def test_progress_lines_end_with_the_result(self):
        done = wrapton("pack", "--progress", CAMERA, TONE, self.directory / "out.mp4")
        pairs = [line.split("=", 1) for line in done.stdout.splitlines()]
        self.assertEqual(done.returncode, 0)
        self.assertIn(["percent", "100"], pairs)
        last = dict(pairs)
        self.assertEqual((last["state"], last["exit_code"]), ("done", "0"))
        self.assertEqual((last["video_frames_stored"], last["audio_frames_stored"]), ("100", "33"))

    def test_progress_beside_json_goes_to_standard_error(self):
        done = wrapton("pack", "--progress", "--json", CAMERA, self.directory / "out.mp4")
        self.assertEqual(json.loads(done.stdout)["exit_code"], 0)
        self.assertIn("state=running\n", done.stderr)

    def test_the_text_result_counts_frames(self):
        output = self.directory / "out.mp4"
        done = wrapton("pack", CAMERA, TONE, output)
        self.assertEqual((done.returncode, done.stderr), (0, ""))  # no bar without a terminal
        self.assertIn(f"{output}: mp4, {output.stat().st_size} bytes", done.stdout)
        self.assertIn("100 frames in, 100 stored", done.stdout)
        self.assertIn("33 frames in, 33 stored", done.stdout)

    def test_a_terminal_gets_a_bar_that_is_taken_away_again(self):
        primary, secondary = os.openpty()
        done = subprocess.run([WRAPTON, "pack", str(CAMERA), str(self.directory / "out.mp4")],
                              stdout=subprocess.DEVNULL, stderr=secondary, check=False)
        os.close(secondary)
        shown = os.read(primary, 65536).decode()
        os.close(primary)
        self.assertEqual(done.returncode, 0)
        self.assertIn("100 %", shown)
        self.assertTrue(shown.endswith("\r\x1b[K"))

    def test_notes_say_what_the_container_cannot_keep(self):
        output = self.directory / "out.mp4"
        film = VIDEO["h264_bframes"].path
        frames, _ = ffprobe(film, "-show_entries", "frame=pict_type")
        b_pictures = sum(frame["pict_type"] == "B" for frame in frames["frames"])
        self.assertGreater(b_pictures, 0)
        for source, words in ((film, f"the times of {b_pictures} B pictures"),
                              (VIDEO["mpeg4"].path, "carries its headers"),
                              (VIDEO["mjpeg"].path, "taken as 25 pictures per second")):
            notes = "\n".join(self.packed(source, output)["notes"])
            self.assertIn(words, notes)

    def test_a_reserve_that_is_too_small_is_reported(self):
        result = self.packed("--reserve", 100, CAMERA, self.directory / "out.mp4")
        self.assertTrue(result["index_at_end"])
        self.assertIn("too small", "\n".join(result["notes"]))

    def test_the_largest_reserve_is_kept(self):
        output = self.directory / "out.mp4"
        result = self.packed("--reserve", 64 << 20, CAMERA, output)
        self.assertFalse(result["index_at_end"])
        self.assertEqual(MediaFile(output).layout(), ["ftyp", "free", "moov", "mdat"])

    def test_an_appending_file_can_be_a_pipe(self):
        done = subprocess.run([WRAPTON, "pack", "--json", "--to", "mp4noseek", str(CAMERA),
                               "/dev/stderr"], capture_output=True, check=False)
        self.assertEqual(done.returncode, 0)
        output = self.directory / "out.mp4"
        output.write_bytes(done.stderr)
        self.assertEqual(MediaFile(output).layout(), ["ftyp", "free", "mdat", "moov"])

    def test_a_file_that_needs_seeking_cannot_be_a_pipe(self):
        done = subprocess.run([WRAPTON, "pack", "--json", "--to", "mp4", str(CAMERA),
                               "/dev/stderr"], capture_output=True, check=False)
        self.assertEqual(done.returncode, 2)
        self.assertIn("Illegal seek", json.loads(done.stdout)["error"])


if __name__ == "__main__":
    main()
