"""Calls, inputs and surroundings that nobody wants and somebody has."""

import json
import os
import signal
import subprocess
import time
from pathlib import Path

from boxes import MediaFile
from readers import AUDIO, MEDIA, VIDEO, WRAPTON, MediaTest, main, pack_json, wrapton

CAMERA = VIDEO["h264_baseline"]
FILM = VIDEO["h264_bframes"]
TONE = AUDIO["aac_8000_mono"]
SAMPLES = MEDIA / "tone_8000_mono.s16le"


def pictures(path):
    return len(MediaFile(path).tracks["vide"].samples)


class Values(MediaTest):
    """What stands behind an option."""

    def expect_refusal(self, *arguments, words=""):
        for form in ([], ["--json"]):
            done = wrapton(*arguments[:1], *form, *arguments[1:])
            self.assertEqual(done.returncode, 2, arguments)
            self.assertIn(words, done.stderr, arguments)
            self.assertNotEqual(done.stderr, "")
        self.assertEqual([path.name for path in self.directory.iterdir()], [])

    def test_an_empty_value_is_not_taken_for_no_value(self):
        output = self.directory / "out.mp4"
        for option in ("--segment", "--start", "--duration", "--to", "--video", "--audio", "--output"):
            self.expect_refusal("pack", option, "", CAMERA.path, output, words="the value is empty")
        for option in ("--for", "--to", "--video", "--audio"):
            self.expect_refusal("check", option, "", CAMERA.path, words="the value is empty")
        self.expect_refusal("pack", CAMERA.path, "")
        self.expect_refusal("pack", "", output)

    def test_times_and_sizes_that_are_none(self):
        output = self.directory / "out.mp4"
        for value in ("0", "0s", "0:00", "-1", "1e3", "1.2.3", ".", ":", "1:", ":1", "1:2:3:4", "1 ", "nan", "inf",
                      "99999999999999999999999h", "0K", "-1K", "1KK", "1X", "K", "0x10", "99999999999999T", "1;2"):
            self.expect_refusal("pack", f"--segment={value}", CAMERA.path, output, words="--segment")
        for value in ("-1", "1e3", "x", "100M", "99999999999999999999999"):
            for option in ("--start", "--duration"):
                self.expect_refusal("pack", f"{option}={value}", CAMERA.path, output, words=option)
            self.expect_refusal("check", f"--for={value}", CAMERA.path, words="--for")
        self.expect_refusal("pack", "--duration", "0", CAMERA.path, output, words="--duration: 0 is no time at all")
        self.expect_refusal("check", "--for", "0", CAMERA.path, words="--for: 0 is no time")

    def test_numbers_that_are_none(self):
        output = self.directory / "out.wav"
        for option, values in (("--fps", ("0", "-1", "1001", "x", "", "99999999999999999999", "25.5")),
                               ("--reserve", ("-1", "x", "", "67108865", "99999999999999999999")),
                               ("--rate", ("0", "-1", "x", "768001")), ("--channels", ("0", "-1", "65", "x"))):
            for value in values:
                self.expect_refusal("pack", f"{option}={value}", SAMPLES, output, words=option)

    def test_the_ends_of_what_is_allowed(self):
        for value, files in (("0.000001", 4), ("87600h", 1), ("0.001K", 4), ("8000000T", 1)):
            code, result = pack_json("--segment", value, CAMERA.path, self.directory / "out.mp4")
            self.assertEqual((code, len(result["segments"])), (0, files), value)
            self.assertEqual(result["streams"][0]["frames_stored"], CAMERA.frames)
        for options in (["--fps", "1"], ["--fps", "1000"], ["--reserve", "0"], ["--duration", "87600h"]):
            self.packed(*options, CAMERA.path, self.directory / "out.mp4")

    def test_a_segment_shorter_than_a_group_of_pictures_holds_one(self):
        code, result = pack_json("--segment", "0.3", CAMERA.path, self.directory / "out.mp4")
        self.assertEqual((code, [pictures(Path(part["output"])) for part in result["segments"]]), (0, [25] * 4))


class Inputs(MediaTest):
    def test_what_cannot_be_read_is_a_failure_of_every_command(self):
        empty = self.directory / "empty.h264"
        empty.touch()
        short = self.directory / "short.mp4"
        short.write_bytes(b"\0\0\0\x18ftypisom")
        zeros = self.directory / "zeros.h264"
        zeros.write_bytes(bytes(100000))
        for source in (empty, short, zeros, self.directory, self.directory / "missing", "/proc/self/mem"):
            for command in (["check"], ["check", "--json"], ["info"], ["info", "--json", "--frames"]):
                done = wrapton(*command, source)
                self.assertEqual((done.returncode, done.stdout), (2, ""), (command, source))
                self.assertIn(str(source), done.stderr)
            done = wrapton("pack", source, self.directory / "out.mp4")
            self.assertEqual((done.returncode, done.stdout), (2, ""), source)
            self.assertFalse((self.directory / "out.mp4").exists())

    def test_endless_input_of_nothing_ends(self):
        for command in (["info", "/dev/zero"], ["info", "/dev/null"]):
            done = wrapton(*command)
            self.assertEqual((done.returncode, done.stdout), (2, ""))

    def test_every_cut_of_a_file_is_packed_or_refused(self):
        whole = self.directory / "whole.mkv"
        self.packed(CAMERA.path, whole)
        data = whole.read_bytes()
        cut = self.directory / "cut.mkv"
        output = self.directory / "out.mp4"
        for length in (10, 100, 700, 1000, len(data) // 3, len(data) - 1):
            cut.write_bytes(data[:length])
            for call in (["pack", cut, output], ["check", cut], ["info", cut]):
                self.assertIn(wrapton(*call).returncode, (0, 1, 2), call)

    def test_a_recording_with_any_byte_changed_is_told_or_refused(self):
        recording = self.directory / "short.omf"
        self.packed("--duration", "0.2", CAMERA.path, recording)
        data = recording.read_bytes()
        broken = self.directory / "broken.omf"
        for at in [*range(0, 80), *range(80, len(data), len(data) // 40)]:
            changed = bytearray(data)
            changed[at] ^= 0xFF
            broken.write_bytes(changed)
            self.assertIn(wrapton("info", broken).returncode, (0, 1, 2))

    def test_a_stream_of_one_frame(self):
        single = self.directory / "one.mjpeg"
        data = VIDEO["mjpeg"].path.read_bytes()
        single.write_bytes(data[:data.index(b"\xFF\xD9") + 2])
        self.assertEqual(self.packed(single, self.directory / "one.mp4")["streams"][0]["frames_stored"], 1)
        result = json.loads(wrapton("check", "--json", single).stdout)
        mp4 = next(entry for entry in result["formats"] if entry["name"] == "mp4")
        self.assertGreaterEqual(mp4["bytes"], single.stat().st_size)
        hour = json.loads(wrapton("check", "--json", "--for", "1h", single).stdout)
        mp4 = next(entry for entry in hour["formats"] if entry["name"] == "mp4")
        self.assertGreaterEqual(mp4["bytes"], single.stat().st_size * 25 * 3600)  # at the rate assumed

    def test_a_stream_without_a_key_picture_is_told_ahead(self):
        data = CAMERA.path.read_bytes()
        codes = [at for at in range(len(data) - 3) if data[at:at + 3] == b"\0\0\1"]
        parts = [data[begin:end] for begin, end in zip(codes, codes[1:] + [len(data)])]
        source = self.directory / "bare.h264"
        source.write_bytes(b"".join(part for part in parts if part[3] & 31 != 5))
        done = wrapton("check", "--json", source)
        result = json.loads(done.stdout)
        self.assertEqual((done.returncode, result["streams"][0]["key_frames"]), (0, 0))  # rtp takes it
        for entry in result["formats"]:
            refusals = {"rtp": [], "wav": ["no h264"]}.get(entry["name"], ["no h264 without a key picture"])
            self.assertEqual(entry["refusals"], refusals, entry["name"])
        self.assertEqual(wrapton("pack", source, self.directory / "out.mp4").returncode, 1)

    def test_a_part_behind_the_end_is_a_failure(self):
        for command in (["--start", "1h"], ["--start", "87600h", "--duration", "1"]):
            code, result = pack_json(*command, CAMERA.path, self.directory / "out.mp4")
            self.assertEqual((code, result["state"]), (2, "failed"))
            self.assertIn("no frame was there to be stored", result["error"])


class Outputs(MediaTest):
    def test_a_dry_run_tells_the_size_of_every_container(self):
        names = [entry["name"] for entry in json.loads(wrapton("formats", "--json").stdout)["formats"]]
        for name in names:
            source = SAMPLES if name == "wav" else CAMERA.path
            output = self.directory / f"out.{name}"
            dry, rehearsed = pack_json("--dry-run", "--to", name, source, output)
            self.assertFalse(output.exists())
            real, written = pack_json("--to", name, source, output)
            self.assertEqual((dry, rehearsed["bytes"], rehearsed["streams"]),
                             (real, written["bytes"], written["streams"]), name)
            self.assertEqual(written["bytes"], output.stat().st_size)

    def test_a_dry_run_to_standard_output_tells_what_a_pipe_would_get(self):
        for name in ("flv", "mp4noseek", "ps", "rtp"):
            call = [WRAPTON, "pack", "--json", "--to", name, str(CAMERA.path), "-"]
            real = subprocess.run(call, stdin=subprocess.DEVNULL, capture_output=True, check=True)
            dry = subprocess.run([*call, "--dry-run"], stdin=subprocess.DEVNULL, capture_output=True, check=True)
            self.assertEqual(dry.stdout, b"")
            self.assertEqual(json.loads(dry.stderr)["bytes"], len(real.stdout), name)

    def test_a_dry_run_refuses_what_the_real_thing_would(self):
        source = self.directory / "in.h264"
        source.write_bytes(CAMERA.path.read_bytes())
        for form in ([], ["--dry-run"]):
            done = wrapton("pack", *form, "--to", "mp4", source, source)
            self.assertEqual(done.returncode, 2)
            self.assertIn("the output is one of the inputs", done.stderr)

    def test_standard_output_by_another_name_gets_the_bytes_alone(self):
        plain = self.directory / "plain"
        self.packed("--to", "ps", CAMERA.path, plain)
        for name in ("/dev/stdout", "/proc/self/fd/1"):
            done = subprocess.run([WRAPTON, "pack", "--to", "ps", str(CAMERA.path), name],
                                  stdin=subprocess.DEVNULL, capture_output=True, check=False)
            self.assertEqual((done.returncode, done.stdout == plain.read_bytes()), (0, True), name)
            self.assertIn(b"100 stored", done.stderr)
        output = self.directory / "redirected"
        for container in ("ps", "mp4"):  # a file can be gone back in
            with output.open("wb") as file:
                done = subprocess.run([WRAPTON, "pack", "--json", "--to", container, str(CAMERA.path), "/dev/stdout"],
                                      stdin=subprocess.DEVNULL, stdout=file, stderr=subprocess.PIPE, check=False)
            self.assertEqual(json.loads(done.stderr)["bytes"], output.stat().st_size)
        self.assertEqual(pictures(output), CAMERA.frames)

    def test_closed_standard_files_do_not_get_into_the_recording(self):
        plain = self.directory / "plain.mp4"
        self.packed(CAMERA.path, plain)
        output = self.directory / "out.mp4"
        for closed, code in (("<&-", 0), (">&-", 2), ("2>&-", 0), ("<&- >&- 2>&-", 2)):
            done = subprocess.run(["sh", "-c", f'"$1" pack --progress "$2" "$3" {closed}', "sh", WRAPTON,
                                   str(CAMERA.path), str(output)], capture_output=True, check=False)
            self.assertEqual(done.returncode, code, closed)
            self.assertEqual((output.stat().st_size, pictures(output)), (plain.stat().st_size, CAMERA.frames), closed)
        done = subprocess.run(["sh", "-c", '"$1" pack --to ps "$2" - >&-', "sh", WRAPTON, str(CAMERA.path)],
                              capture_output=True, check=False)
        self.assertEqual(done.returncode, 2)
        self.assertIn(b"Bad file descriptor", done.stderr)

    def test_a_reader_that_leaves_does_not_stop_a_recording_into_a_file(self):
        output = self.directory / "out.mp4"
        reading, writing = os.pipe()
        os.close(reading)
        for form in ("--progress", "--json"):
            done = subprocess.run([WRAPTON, "pack", form, str(CAMERA.path), str(output)], stdin=subprocess.DEVNULL,
                                  stdout=writing, stderr=subprocess.PIPE, text=True, check=False)
            self.assertEqual(done.returncode, 2)
            self.assertIn("standard output cannot be written", done.stderr)
            self.assertEqual(pictures(output), CAMERA.frames)
        done = subprocess.run([WRAPTON, "pack", "--to", "ps", str(CAMERA.path), "-"], stdin=subprocess.DEVNULL,
                              stdout=writing, stderr=subprocess.PIPE, text=True, check=False)
        os.close(writing)
        self.assertEqual(done.returncode, 2)
        self.assertIn("-: Broken pipe", done.stderr)

    def test_a_warning_and_a_lost_result_are_a_failure(self):
        with open("/dev/full", "w", encoding="ascii") as full:
            done = subprocess.run([WRAPTON, "pack", str(CAMERA.path), str(SAMPLES), str(self.directory / "out.mp4")],
                                  stdin=subprocess.DEVNULL, stdout=full, stderr=subprocess.PIPE, check=False)
        self.assertEqual(done.returncode, 2)

    def test_a_second_segment_that_is_an_input_fails_without_touching_it(self):
        source = self.directory / "a_0002.h264"
        source.write_bytes(CAMERA.path.read_bytes())
        (self.directory / "a_0002.mp4").symlink_to(source)
        code, result = pack_json("--segment", "1", source, self.directory / "a.mp4")
        self.assertEqual((code, len(result["segments"])), (2, 1))
        self.assertIn("a_0002.mp4: the output is one of the inputs", result["error"])
        self.assertEqual(source.read_bytes(), CAMERA.path.read_bytes())
        self.assertEqual(pictures(self.directory / "a_0001.mp4"), 25)

    def test_the_disk_is_full_in_a_later_segment(self):
        def limit():
            import resource  # pylint: disable=import-outside-toplevel
            resource.setrlimit(resource.RLIMIT_FSIZE, (60000, 60000))

        done = wrapton("pack", "--segment", "55K", FILM.path, self.directory / "film.mp4", preexec_fn=limit)
        self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertIn("File too large; an unfinished file of 60000 bytes is left", done.stderr)


class Signals(MediaTest):
    def start(self, *before):
        """A recording from a pipe, with frames in it."""
        pipe = self.directory / "live.h264"
        os.mkfifo(pipe)
        self.output = self.directory / "out.mp4"
        process = subprocess.Popen([*before, WRAPTON, "pack", "--json", str(pipe), str(self.output)],
                                   stdin=subprocess.DEVNULL, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(process.kill)
        feed = open(pipe, "wb", buffering=0)  # pylint: disable=consider-using-with
        self.addCleanup(feed.close)
        while not self.output.exists() or self.output.stat().st_size < 100000:
            feed.write(CAMERA.path.read_bytes())
            time.sleep(0.01)
        return process, feed

    def test_a_terminal_that_goes_away_completes_the_file(self):
        process, _ = self.start()
        process.send_signal(signal.SIGHUP)
        result = json.loads(process.communicate(timeout=60)[0])
        self.assertEqual((process.returncode, result["state"]), (129, "interrupted"))
        self.assertEqual(pictures(self.output), result["streams"][0]["frames_stored"])

    def test_a_signal_that_the_caller_ignores_is_ignored(self):
        process, feed = self.start("sh", "-c", "trap '' INT HUP; exec \"$@\"", "sh")
        for number in (signal.SIGINT, signal.SIGHUP):
            process.send_signal(number)
        feed.write(CAMERA.path.read_bytes())
        feed.close()
        result = json.loads(process.communicate(timeout=60)[0])
        self.assertEqual((process.returncode, result["state"]), (0, "done"))
        self.assertEqual(pictures(self.output), result["streams"][0]["frames_in"])

    def test_a_kill_leaves_a_file_that_is_clearly_partial(self):
        process, _ = self.start()
        process.kill()
        process.communicate(timeout=60)
        done = subprocess.run(["ffprobe", "-v", "error", str(self.output)], capture_output=True, text=True, check=False)
        self.assertIn("moov atom not found", done.stderr)


class Told(MediaTest):
    def test_formats_tell_every_limit_in_the_same_form(self):
        listed = json.loads(wrapton("formats", "--json").stdout)["formats"]
        for entry in listed:
            self.assertEqual(list(entry), ["name", "type", "extensions", "video", "audio", "reached_by",
                                           "standard_output", "reserve", "limits"])
            self.assertEqual(entry["reached_by"][0], f"--to {entry['name']}")
            for limit in entry["limits"]:
                self.assertEqual(list(limit), ["name", "file_bytes", "frame_bytes", "seconds", "outcome"])
                known = [limit[kind] for kind in ("file_bytes", "frame_bytes", "seconds") if limit[kind] is not None]
                self.assertEqual(len(known), 1, limit)
                self.assertGreater(known[0], 0)

    def test_standard_output_is_told_as_it_is_taken(self):
        for entry in json.loads(wrapton("formats", "--json").stdout)["formats"]:
            source = SAMPLES if entry["name"] == "wav" else CAMERA.path
            done = subprocess.run([WRAPTON, "pack", "--to", entry["name"], str(source), "-"],
                                  stdin=subprocess.DEVNULL, capture_output=True, check=False)
            self.assertEqual(done.returncode, 0 if entry["standard_output"] else 2, entry["name"])

    def test_a_name_of_several_lines_stays_in_its_line(self):
        output = Path(f"{self.directory}/one\nexit_code=0\\two.mp4")
        done = wrapton("pack", "--progress", CAMERA.path, output)
        self.assertEqual((done.returncode, output.exists()), (0, True))
        self.assertIn(f"output={self.directory}/one\\nexit_code=0\\\\two.mp4\n", done.stdout)
        self.assertEqual(done.stdout.count("\nexit_code="), 1)


if __name__ == "__main__":
    main()
