"""Parts of recordings, many files, pipes, forecasts and manual pages."""

import json
import os
import shutil
import subprocess
from pathlib import Path

import rtp
from readers import AUDIO, MEDIA, VIDEO, WRAPTON, MediaTest, ffprobe, main, pack_json, wrapton

CAMERA = VIDEO["h264_baseline"]
FILM = VIDEO["h264_bframes"]
TONE = AUDIO["aac_8000_mono"]
SAMPLES = MEDIA / "tone_8000_mono.s16le"


def frames(path, kind):
    """Frames of one kind that decode, as ffprobe counts them."""
    done = subprocess.run(
        ["ffprobe", "-v", "error", "-select_streams", kind[0], "-count_frames",
         "-show_entries", "stream=nb_read_frames", "-of", "csv=p=0", str(path)],
        capture_output=True, text=True, check=False)
    return int(done.stdout.strip() or 0)


class Segments(MediaTest):
    def segments(self, *arguments):
        code, result = pack_json(*arguments)
        self.assertEqual(code, 0, result)
        paths = [Path(segment["output"]) for segment in result["segments"]]
        for path, segment in zip(paths, result["segments"]):
            self.assertEqual(path.stat().st_size, segment["bytes"])
        self.assertEqual(sum(segment["bytes"] for segment in result["segments"]), result["bytes"])
        return paths, result

    def test_a_time_cuts_at_key_pictures_and_no_frame_is_lost(self):
        for container in ("mp4", "mov64", "mp4noseek", "mkv"):
            sound = [TONE.path] if container != "mkv" else []
            paths, result = self.segments("--segment", "1", "--to", container, CAMERA.path, *sound,
                                          self.directory / f"{container}.out")
            self.assertEqual([path.name for path in paths],
                             [f"{container}_{number:04}.out" for number in range(1, 5)])
            self.assertEqual([frames(path, "video") for path in paths], [25] * 4, container)
            for stream in result["streams"]:
                self.assertEqual(stream["frames_stored"], stream["frames_in"])
            if sound:
                self.assertEqual(sum(frames(path, "audio") for path in paths), TONE.frames)

    def test_a_size_cuts_too(self):
        for source in (CAMERA, VIDEO["mpeg4"], VIDEO["mjpeg"], FILM):
            output = self.directory / f"{source.codec}{source.frames}.mp4"
            paths, _ = self.segments("--segment", "50K", source.path, output)
            self.assertGreater(len(paths), 1)
            self.assertEqual(sum(frames(path, "video") for path in paths), source.frames)
            for path in paths[:-1]:
                self.assertGreaterEqual(path.stat().st_size, 50 * 1024)

    def test_files_that_begin_later_get_the_parameter_sets(self):
        bare = self.directory / "bare.h264"  # sent once only, as some encoders do
        stream = CAMERA.path.read_bytes()
        units = [unit for unit in stream.split(b"\0\0\1")[1:]]
        first = True
        with bare.open("wb") as file:
            for unit in units:
                is_set = unit[0] & 31 in (7, 8)
                if first or not is_set:
                    file.write(b"\0\0\0\1" + unit.rstrip(b"\0"))
                first = first and (is_set or unit[0] & 31 in (6, 9))
        paths, _ = self.segments("--segment", "1s", bare, self.directory / "out.mp4")
        self.assertEqual([frames(path, "video") for path in paths], [25] * 4)

    def test_sound_alone_is_cut_anywhere_and_wav_lacks_nothing(self):
        paths, result = self.segments("--segment", "1s", SAMPLES, self.directory / "out.wav")
        samples = b"".join(path.read_bytes()[44:] for path in paths)
        self.assertEqual(samples, SAMPLES.read_bytes())
        self.assertEqual(len(paths), 3)
        self.assertEqual(result["streams"][0]["frames_dropped"], 0)

    def test_a_limit_beyond_the_end_gives_one_file(self):
        paths, _ = self.segments("--segment", "1h", CAMERA.path, self.directory / "out.mp4")
        self.assertEqual([path.name for path in paths], ["out_0001.mp4"])

    def test_other_words_and_rtp_are_refused(self):
        for limit, output in (("0", "out.mp4"), ("x", "out.mp4"), ("10X", "out.mp4"), ("1", "out.rtp")):
            done = wrapton("pack", "--segment", limit, CAMERA.path, self.directory / output)
            self.assertEqual(done.returncode, 2)
            self.assertIn("--segment", done.stderr)
        self.assertEqual(list(self.directory.iterdir()), [])


class Trimming(MediaTest):
    def test_the_part_begins_with_a_key_picture_and_ends_in_time(self):
        output = self.directory / "out.mp4"
        for options, wanted in ((["--start", "1.5"], 50), (["--start", "1"], 75),
                                (["--duration", "1"], 25), (["--start", "1", "--duration", "0:02"], 50),
                                (["--start", "0", "--duration", "1h"], 100)):
            self.packed(*options, CAMERA.path, TONE.path, output)
            self.assertEqual(frames(output, "video"), wanted, options)
            seconds = float(ffprobe(output, "-show_format")[0]["format"]["duration"])
            self.assertAlmostEqual(seconds, wanted / 25, delta=0.3)

    def test_sound_begins_with_the_picture(self):
        whole = self.directory / "whole.mp4"
        part = self.directory / "part.mp4"
        self.packed(CAMERA.path, TONE.path, whole)
        self.packed("--start", "2", CAMERA.path, TONE.path, part)
        self.assertEqual(frames(part, "video"), 50)
        # 128 ms a frame: the first that begins at 2 s or later is the 17th of 33.
        self.assertEqual(frames(part, "audio"), 33 - 16)

    def test_other_words_are_refused(self):
        for option in ("--start", "--duration"):
            done = wrapton("pack", option, "soon", CAMERA.path, self.directory / "out.mp4")
            self.assertEqual((done.returncode, list(self.directory.iterdir())), (2, []))
            self.assertIn(f"{option}: soon is no time", done.stderr)


class StandardOutput(MediaTest):
    def test_containers_that_only_append_go_to_a_pipe(self):
        for container in ("mp4noseek", "flvstream", "ps", "omf"):
            file = self.directory / container
            self.packed("--to", container, CAMERA.path, file)
            done = subprocess.run([WRAPTON, "pack", "--to", container, CAMERA.path, "-"],
                                  stdin=subprocess.DEVNULL, capture_output=True, check=False)
            self.assertEqual(done.returncode, 0, done.stderr)
            self.assertEqual(len(done.stdout), file.stat().st_size, container)
            self.assertIn(b"100 stored", done.stderr)

    def test_the_result_goes_to_standard_error(self):
        done = subprocess.run([WRAPTON, "pack", "--json", "--to", "mp4noseek", CAMERA.path, "-"],
                              stdin=subprocess.DEVNULL, capture_output=True, check=False)
        self.assertEqual(json.loads(done.stderr)["bytes"], len(done.stdout))
        self.assertEqual(done.stdout[4:8], b"ftyp")

    def test_others_are_refused(self):
        for container in ("mp4", "mov", "avi", "mkv", "asf"):
            done = wrapton("pack", "--to", container, CAMERA.path, "-")
            self.assertEqual((done.returncode, done.stdout), (2, ""))
            self.assertIn("standard output cannot", done.stderr)
        done = wrapton("pack", "--segment", "1", "--to", "ps", CAMERA.path, "-")
        self.assertEqual((done.returncode, done.stdout), (2, ""))

    def test_a_full_device_is_a_failure(self):
        with open("/dev/full", "wb") as full:
            done = subprocess.run([WRAPTON, "pack", "--to", "ps", CAMERA.path, "-"],
                                  stdin=subprocess.DEVNULL, stdout=full, stderr=subprocess.PIPE, check=False)
        self.assertEqual(done.returncode, 2)
        self.assertIn(b"No space left", done.stderr)


class DryRun(MediaTest):
    def test_counts_and_sizes_are_those_of_the_real_thing_and_nothing_is_written(self):
        output = self.directory / "out.mp4"
        code, dry = pack_json("--dry-run", CAMERA.path, TONE.path, output)
        self.assertEqual((code, dry["dry_run"], list(self.directory.iterdir())), (0, True, []))
        code, real = pack_json(CAMERA.path, TONE.path, output)
        self.assertEqual((real["dry_run"], real["bytes"]), (False, output.stat().st_size))
        self.assertEqual((dry["bytes"], dry["streams"]), (real["bytes"], real["streams"]))

    def test_an_existing_file_stays(self):
        output = self.directory / "out.mp4"
        output.write_bytes(b"precious")
        self.assertIn("not written", wrapton("pack", "--dry-run", CAMERA.path, output).stdout)
        self.assertEqual(output.read_bytes(), b"precious")


class Check(MediaTest):
    def check(self, *arguments):
        done = wrapton("check", "--json", *arguments)
        result = json.loads(done.stdout)
        self.assertEqual(done.returncode, result["exit_code"])
        return result, {entry["name"]: entry for entry in result["formats"]}

    @staticmethod
    def met(entry):
        return {limit["name"]: limit["after_seconds"] for limit in entry["limits_met"]}

    def test_bytes_an_hour_are_counted(self):
        result, _ = self.check(CAMERA.path, TONE.path)
        video, audio = result["streams"]
        self.assertEqual((video["frames"], video["key_frames"]), (100, 4))
        self.assertAlmostEqual(video["bytes_per_hour"], video["bytes"] * 900, delta=1)  # 4 s
        self.assertAlmostEqual(audio["bytes_per_hour"], audio["bytes"] * 3600 / (33 * 0.128), delta=1)

    def test_the_reserve_holds_the_index(self):
        for video, audio in ((CAMERA, TONE), (FILM, AUDIO["aac_44100_stereo"]),
                             (VIDEO["mpeg4"], AUDIO["mp2_48000_stereo"])):
            _, formats = self.check(video.path, audio.path)
            for name in ("mp4", "mov", "mp464", "mov64"):
                reserve = formats[name]["reserve"]
                output = self.directory / name
                result = self.packed("--to", name, "--reserve", reserve, video.path, audio.path, output)
                self.assertFalse(result["index_at_end"], (video.name, name))
                without = self.packed("--to", name, video.path, audio.path, output)
                # What stands at the end is the index alone: the forecast told its length.
                at_end = output.read_bytes().rindex(b"moov") - 4
                self.assertEqual(without["bytes"] - at_end, formats[name]["index_bytes"])

    def test_limits_are_met_when_they_are_reached(self):
        _, formats = self.check("--for", "24h", FILM.path)
        per_second = FILM.path.stat().st_size / 2
        self.assertAlmostEqual(self.met(formats["mp4"])["offsets"] * per_second / 2**32, 1, delta=0.01)
        self.assertAlmostEqual(self.met(formats["mp464"])["durations"], 2**32 / 90000, places=3)
        self.assertNotIn("offsets", self.met(formats["mp464"]))
        self.assertEqual(self.met(formats["mkv"])["cluster times"], 66)
        self.assertAlmostEqual(self.met(formats["flv"])["time stamps"], 2**24 / 1000, places=3)
        self.assertEqual(self.met(formats["omf"]), {})
        self.assertAlmostEqual(self.met(formats["ps"])["clock"], 2**32 / 90000, places=3)
        self.assertAlmostEqual(self.met(formats["ts"])["time stamps"], 2**32 / 90000, places=3)
        self.assertNotIn("clock", self.met(formats["gaysps"]))
        _, formats = self.check("--for", "27h", FILM.path)
        self.assertAlmostEqual(self.met(formats["gaysps"])["clock"], 2**33 / 90000, places=3)
        _, formats = self.check("--for", "60", FILM.path)
        for name in ("mp4", "mp464", "mkv", "flv", "avi"):
            self.assertEqual(self.met(formats[name]), {}, name)

    def test_refused_encodings_are_told(self):
        result, formats = self.check(TONE.path)
        self.assertEqual(formats["wav"]["refusals"], ["no aac"])
        self.assertEqual(formats["mp4"]["refusals"], ["no aac without video"])
        self.assertEqual(result["recommended"]["name"], "qvps")

    def test_the_recommendation_changes_with_the_length(self):
        def recommended(length):
            return self.check("--for", length, FILM.path)[0]["recommended"]

        self.assertEqual(recommended("1m")["name"], "mp4")
        self.assertEqual(recommended("13h")["name"], "mp464")
        self.assertEqual(recommended("24h")["name"], "avi")
        both = self.check("--for", "24h", FILM.path, TONE.path)[0]["recommended"]
        self.assertEqual((both["name"], both["segment_seconds"] > 3600), ("mp4", True))
        call = recommended("1m")["call"].split()
        result = self.packed(*call, FILM.path, self.directory / "out")
        self.assertFalse(result["index_at_end"])

    def test_exit_codes_tell_whether_something_holds_it_all(self):
        for arguments, code in (([CAMERA.path], 0), (["--to", "mkv", "--for", "2m", CAMERA.path], 1),
                                (["--to", "mkv", CAMERA.path], 0), (["--to", "wav", CAMERA.path], 1),
                                (["--to", "xyz", CAMERA.path], 2), ([], 2), (["--for", "x", CAMERA.path], 2),
                                ([self.directory / "missing"], 2)):
            self.assertEqual(wrapton("check", *arguments).returncode, code, arguments)

    def test_text_has_the_same_findings(self):
        text = wrapton("check", "--for", "24h", CAMERA.path, TONE.path).stdout
        for words in ("bytes an hour", "refuses: no aac", "durations after 13:15:21.858",
                      "recommended: --to mp4 --segment"):
            self.assertIn(words, text)


class RtpInfo(MediaTest):
    def setUp(self):
        super().setUp()
        self.path = self.directory / "out.rtp"
        self.packed(CAMERA.path, self.path)
        self.packets = rtp.read_packets(self.path.read_bytes())

    def test_the_summary_counts_packets_times_and_bytes(self):
        done = wrapton("info", "--json", self.path)
        (source,) = json.loads(done.stdout)["sources"]
        self.assertEqual(done.returncode, 0)
        self.assertEqual(source["packets"], len(self.packets))
        self.assertEqual(source["ssrc"], self.packets[0].ssrc)
        self.assertEqual(source["payload_bytes"], sum(len(packet.payload) for packet in self.packets))
        self.assertEqual(source["timestamps"], 100)
        self.assertEqual(source["markers"], sum(packet.marker for packet in self.packets))
        self.assertEqual(source["ticks"], self.packets[-1].timestamp - self.packets[0].timestamp)
        self.assertEqual(source["packets_missing"], 0)
        self.assertIn(f"{len(self.packets)} packets of payload type 96", wrapton("info", self.path).stdout)

    def test_frames_lists_every_packet(self):
        lines = wrapton("info", "--json", "--frames", self.path).stdout.splitlines()
        told = [json.loads(line) for line in lines]
        self.assertEqual([packet["sequence"] for packet in told], [packet.sequence for packet in self.packets])
        self.assertEqual(len(wrapton("info", "--frames", self.path).stdout.splitlines()), len(told))

    def test_missing_packets_and_cut_ends_are_damage(self):
        data = self.path.read_bytes()
        first = 2 + int.from_bytes(data[:2], "big")
        second = first + 2 + int.from_bytes(data[first:first + 2], "big")
        other = self.directory / "other"  # known by its bytes
        other.write_bytes(data[:first] + data[second:])
        done = wrapton("info", "--json", other)
        self.assertEqual((done.returncode, json.loads(done.stdout)["sources"][0]["packets_missing"]), (1, 1))
        other.write_bytes(data[:-1])
        done = wrapton("info", "--json", other)
        self.assertEqual(done.returncode, 1)
        self.assertGreater(json.loads(done.stdout)["bytes_skipped"], 0)

    def test_other_files_are_a_failure(self):
        path = self.directory / "none.rtp"
        for content in (b"", b"\0", b"\0\1x", b"\0\x0c" + b"\0" * 12):
            path.write_bytes(content)
            done = wrapton("info", path)
            self.assertEqual((done.returncode, done.stdout), (2, ""))
        self.assertEqual(wrapton("info", self.directory / "missing.rtp").returncode, 2)


class Manual(MediaTest):
    COMMANDS = ("pack", "info", "check", "formats")
    BUILT = Path(os.environ.get("WRAPTON_MANUAL", "."))

    def test_every_command_has_a_page_with_all_its_options(self):
        for command in self.COMMANDS:
            page = wrapton("man", command).stdout
            for option in wrapton(command, "--help").stdout.split():
                if option.startswith("--"):
                    self.assertIn(option.split(",")[0].replace("-", "\\-"), page, command)
            self.assertEqual((self.BUILT / "man" / f"wrapton-{command}.1").read_text(), page)
        page = wrapton("man").stdout
        for word in (*self.COMMANDS, "mp4noseek", "EXIT STATUS"):
            self.assertIn(word, page)
        self.assertEqual(wrapton("man", "unpack").returncode, 2)

    def test_man_finds_nothing_to_complain_of(self):
        if shutil.which("man") is None or shutil.which("groff") is None:
            self.skipTest("man is not installed")
        for page in (self.BUILT / "man").iterdir():
            done = subprocess.run(["man", "--warnings", "-E", "UTF-8", "-l", "-Tutf8", "-Z", str(page)],
                                  capture_output=True, text=True, check=False)
            self.assertEqual(done.stderr, "")

    def complete(self, *words):
        script = f"source '{self.BUILT}/completion/wrapton'; COMP_WORDS=(\"$@\"); COMP_CWORD=$(($# - 1)); " \
                 "_wrapton; printf '%s\\n' \"${COMPREPLY[@]}\""
        done = subprocess.run(["bash", "-c", script, "bash", *words], capture_output=True, text=True, check=True)
        return set(done.stdout.split())

    def test_bash_completes_commands_options_containers_and_files(self):
        self.assertEqual(self.complete("wrapton", "p"), {"pack"})
        self.assertLessEqual({"--segment", "--start", "--dry-run"}, self.complete("wrapton", "pack", "--"))
        self.assertEqual(self.complete("wrapton", "info", "--f"), {"--frames"})
        self.assertEqual(self.complete("wrapton", "pack", "--to", "mp4n"), {"mp4noseek"})
        self.assertIn(f"{self.BUILT}/completion", self.complete("wrapton", "pack", f"{self.BUILT}/comp"))


if __name__ == "__main__":
    main()
