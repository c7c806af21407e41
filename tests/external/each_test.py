"""Many inputs at once, each of which becomes an output of its own."""

import json
import os
import shutil
import signal
import subprocess
import time
from pathlib import Path

from boxes import MediaFile
from readers import AUDIO, MEDIA, VIDEO, WRAPTON, MediaTest, main, pack_json, wrapton

CAMERA = VIDEO["h264_baseline"]
FILM = VIDEO["h264_bframes"]
MPEG4 = VIDEO["mpeg4"]
TONE = AUDIO["aac_8000_mono"]


def pictures(path):
    return len(MediaFile(path).tracks["vide"].samples)


class EachTest(MediaTest):
    def setUp(self):
        super().setUp()
        self.out = self.directory / "out"

    def copied(self, source, name):
        path = self.directory / name
        path.parent.mkdir(exist_ok=True)
        shutil.copy(source.path, path)
        return path

    def written(self):
        return sorted(str(path.relative_to(self.out)) for path in self.out.rglob("*") if path.is_file())


class Names(EachTest):
    def test_a_directory_gets_a_file_of_the_container_for_every_input(self):
        for container, extension in (("mp4", "mp4"), ("mov64", "mov"), ("mp464", "mp4"), ("mp4noseek", "mp4"),
                                     ("3gp", "3gp"), ("asfstream", "asf"), ("flvstream", "flv"),
                                     ("qvps", "mpg"), ("gaysps", "mpg"), ("rtp", "rtp")):
            out = self.directory / container
            code, result = pack_json("--to", container, CAMERA.path, FILM.path, "-o", f"{out}/")
            self.assertEqual(code, 0, result)
            self.assertEqual([entry["output"] for entry in result["results"]],
                             [str(out / f"{source.path.stem}.{extension}") for source in (CAMERA, FILM)])
            for entry in result["results"]:
                self.assertEqual((entry["container"], Path(entry["output"]).stat().st_size),
                                 (container, entry["bytes"]))

    def test_a_directory_that_is_there_needs_no_slash(self):
        self.out.mkdir()
        self.assertEqual(wrapton("pack", "--to", "mp4", CAMERA.path, "-o", self.out).returncode, 0)
        self.assertEqual(self.written(), [f"{CAMERA.path.stem}.mp4"])

    def test_a_capture_file_has_its_own_extension(self):
        self.assertEqual(wrapton("pack", "--pcap", CAMERA.path, "-o", f"{self.out}/").returncode, 0)
        self.assertEqual(self.written(), [f"{CAMERA.path.stem}.pcap"])

    def test_a_pattern_is_filled_in_with_what_the_input_is_called(self):
        inputs = [self.copied(CAMERA, "a/one.h264"), self.copied(MPEG4, "b/one.m4v"), self.copied(FILM, "b/t.w.o")]
        wanted = {"{name}-{ext}.mp4": ["one-h264.mp4", "one-m4v.mp4", "t.w-o.mp4"],
                  "{number}.mov": ["1.mov", "2.mov", "3.mov"],
                  "{dir}/{name}.mp4": [f"{self.directory}/{name}"[1:] for name in
                                       ("a/one.mp4", "b/one.mp4", "b/t.w.mp4")]}
        for pattern, names in wanted.items():
            done = wrapton("pack", "--each", *inputs, "-o", f"{self.out}/{pattern}")
            self.assertEqual((done.returncode, done.stderr), (0, ""))
            self.assertEqual(self.written(), names)
            for source, name in zip((CAMERA, MPEG4, FILM), names):
                self.assertEqual(pictures(self.out / name), source.frames)
            shutil.rmtree(self.out)

    def test_the_directory_of_an_input_without_one_is_the_current_one(self):
        self.copied(CAMERA, "one.h264")
        done = wrapton("pack", "--each", "one.h264", "-o", "{dir}/x{name}.mp4", cwd=self.directory)
        self.assertEqual((done.returncode, pictures(self.directory / "xone.mp4")), (0, CAMERA.frames))

    def test_the_last_file_is_the_output_where_none_is_named(self):
        done = wrapton("pack", "--each", CAMERA.path, FILM.path, self.directory / "{name}.mp4")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        self.assertEqual(len(list(self.directory.iterdir())), 2)

    def test_output_names_the_file_of_one_recording_too(self):
        output = self.directory / "out.mp4"
        code, result = pack_json("-o", output, CAMERA.path, TONE.path)
        self.assertEqual((code, len(result["streams"]), result["output"]), (0, 2, str(output)))


class Refused(EachTest):
    def expect_refusal(self, *arguments, words, **options):
        before = {path: path.read_bytes() for path in self.directory.rglob("*") if path.is_file()}
        for form in ([], ["--json"], ["--progress"], ["--dry-run"]):
            done = wrapton("pack", *form, *arguments, **options)
            self.assertEqual(done.returncode, 2, arguments)
            self.assertIn(words, done.stderr)
            if form == ["--json"]:
                result = json.loads(done.stdout)
                self.assertEqual((result["state"], result["results"]), ("failed", []))
                self.assertIn(words, result["error"])
        after = {path: path.read_bytes() for path in self.directory.rglob("*") if path.is_file()}
        self.assertEqual(before, after)
        self.assertFalse(self.out.exists())

    def test_the_same_input_twice(self):
        source = self.copied(CAMERA, "one.h264")
        (self.directory / "link.h264").symlink_to(source)
        for other in (source, f"{self.directory}/./one.h264", self.directory / "link.h264"):
            self.expect_refusal("--each", source, FILM.path, other, "-o", f"{self.out}/{{number}}.mp4",
                                words="the same input twice")

    def test_two_inputs_that_give_one_output(self):
        inputs = [self.copied(CAMERA, "a/one.h264"), self.copied(FILM, "b/one.h264")]
        self.expect_refusal("--to", "mp4", *inputs, "-o", f"{self.out}/",
                            words=f"{self.out}/one.mp4: the output of both {inputs[0]} and {inputs[1]}")

    def test_two_names_of_one_file_that_is_there(self):
        inputs = [self.copied(CAMERA, "one.h264"), self.copied(FILM, "two.h264")]
        (self.directory / "one.mp4").write_bytes(b"old")
        (self.directory / "two.mp4").symlink_to("one.mp4")
        self.expect_refusal("--each", *inputs, "-o", self.directory / "{name}.mp4", words="the output of both")
        (self.directory / "two.mp4").unlink()
        os.link(self.directory / "one.mp4", self.directory / "two.mp4")
        self.expect_refusal("--each", *inputs, "-o", self.directory / "{name}.mp4", words="the output of both")

    def test_an_output_that_is_one_of_the_inputs(self):
        between = self.directory / "two.mp4"
        self.packed(CAMERA.path, between)
        inputs = [self.copied(CAMERA, "two.h264"), between]
        self.expect_refusal("--each", *inputs, "-o", f"{self.directory}/{{name}}.mp4",
                            words=f"{between}: the output is one of the inputs")
        os.link(between, self.directory / "one.mp4")
        self.expect_refusal("--each", self.copied(FILM, "one.h264"), between, "-o",
                            f"{self.directory}/{{name}}.mp4", words="the output is one of the inputs")
        missing = self.directory / "missing.mp4"  # not there, and still not made
        self.expect_refusal("--each", missing, "-o", f"{self.directory}/{{name}}.mp4",
                            words="the output is one of the inputs")

    def test_a_forgotten_output_is_not_taken_for_one(self):
        inputs = [self.copied(CAMERA, "one.h264"), self.copied(FILM, "two.mp4")]
        self.expect_refusal("--each", *inputs, words="--each needs a directory, or a name with")

    def test_names_that_cannot_be(self):
        for output, words in (("{title}.mp4", "{title}: an output's name can have"),
                              ("{name.mp4", "a { without its }"),
                              ("{name}.xyz", "names no container"),
                              ("{name}", "names no container"),
                              (f"{self.out}/", "say --to, or a pattern such as"),
                              ("-", "not standard output")):
            self.expect_refusal("--each", CAMERA.path, "-o", output, words=words, cwd=self.directory)

    def test_options_that_are_wrong_for_all(self):
        pattern = f"{self.out}/{{name}}.mp4"
        for options, words in ((["--segment", "x"], "--segment"), (["--start", "x"], "--start"),
                               (["--duration", "x"], "--duration"), (["--to", "x"], "no container x"),
                               (["--rate", "8000"], "no input is raw"),
                               (["--video", FILM.path], "--video and --audio"),
                               (["--audio", TONE.path], "--video and --audio")):
            self.expect_refusal("--each", *options, CAMERA.path, "-o", pattern, words=words)
        self.expect_refusal("--each", "-o", pattern, words="needs inputs")


class Going(EachTest):
    def setUp(self):
        super().setUp()
        self.garbage = self.directory / "garbage.h264"
        self.garbage.write_bytes(b"no stream " * 100)
        self.inputs = [CAMERA.path, self.garbage, self.directory / "missing.h264", TONE.path, FILM.path]
        self.call = ["--to", "mp4", *self.inputs, "-o", f"{self.out}/"]

    def check_files(self):
        self.assertEqual(self.written(), sorted(f"{source.path.stem}.mp4" for source in (CAMERA, FILM)))
        for source in (CAMERA, FILM):
            self.assertEqual(pictures(self.out / f"{source.path.stem}.mp4"), source.frames)

    def test_one_that_fails_does_not_stop_the_others(self):
        done = wrapton("pack", *self.call)
        self.assertEqual(done.returncode, 2)
        self.check_files()
        for words in (str(self.garbage), "missing.h264: No such file",
                      f"{TONE.path}: aac audio cannot be stored in mp4 without video"):
            self.assertIn(words, done.stderr)
        self.assertEqual(len(done.stderr.splitlines()), 3)
        self.assertEqual(done.stdout.splitlines()[-1], "5 inputs: 2 done, 1 with warnings, 2 failed")
        self.assertIn(f"{self.out / CAMERA.path.stem}.mp4: mp4, ", done.stdout)
        self.assertIn("100 frames in, 100 stored", done.stdout)

    def test_the_exit_code_is_the_worst_of_all(self):
        for inputs, code, state in (([CAMERA.path, FILM.path], 0, "done"), ([CAMERA.path, TONE.path], 1, "refused"),
                                    ([TONE.path, self.garbage, CAMERA.path], 2, "failed")):
            found, result = pack_json("--to", "mp4", *inputs, "-o", f"{self.out}/")
            self.assertEqual((found, result["exit_code"], result["state"]), (code, code, state))

    def test_json_has_a_result_for_every_input(self):
        code, result = pack_json(*self.call)
        self.assertEqual((code, result["inputs"], result["error"]), (2, 5, None))
        self.assertEqual([result[f"inputs_{end}"] for end in ("done", "warned", "failed", "interrupted", "not_begun")],
                         [2, 1, 2, 0, 0])
        self.assertEqual([entry["input"] for entry in result["results"]], [str(path) for path in self.inputs])
        self.assertEqual([entry["state"] for entry in result["results"]],
                         ["done", "failed", "failed", "refused", "done"])
        self.assertEqual(result["results"][0]["streams"][0]["frames_stored"], CAMERA.frames)
        self.assertIn("No such file", result["results"][2]["error"])

    def test_progress_tells_every_input_and_then_all(self):
        done = wrapton("pack", "--progress", *self.call)
        blocks = [dict(line.split("=", 1) for line in ("state=" + block).splitlines())
                  for block in done.stdout.split("state=")[1:]]
        running = [block for block in blocks if block["state"] == "running"]
        self.assertEqual({(block["input"], block["number"], block["inputs"]) for block in running},
                         {(str(CAMERA.path), "1", "5"), (str(FILM.path), "5", "5")})
        *results, last = [block for block in blocks if block["state"] != "running"]
        self.assertEqual([(block["input"], block["state"]) for block in results],
                         list(zip(map(str, self.inputs), ("done", "failed", "failed", "refused", "done"))))
        self.assertEqual(results[4]["video_frames_stored"], str(FILM.frames))
        self.assertEqual(last, {"state": "failed", "exit_code": "2", "inputs": "5", "inputs_done": "2",
                                "inputs_warned": "1", "inputs_failed": "2", "inputs_interrupted": "0",
                                "inputs_not_begun": "0"})

    def test_a_bar_says_which_of_them_it_is(self):
        primary, secondary = os.openpty()
        done = subprocess.run([WRAPTON, "pack", "--to", "mp4", str(CAMERA.path), str(FILM.path), "-o", f"{self.out}/"],
                              stdout=subprocess.DEVNULL, stderr=secondary, check=False)
        os.close(secondary)
        shown = os.read(primary, 65536).decode()
        os.close(primary)
        self.assertEqual(done.returncode, 0)
        self.assertIn("2/2 [", shown)
        self.assertTrue(shown.endswith("\r\x1b[K"))

    def test_nothing_is_written_on_a_dry_run(self):
        dry, result = pack_json("--dry-run", *self.call)
        self.assertFalse(self.out.exists())
        real, written = pack_json(*self.call)
        self.assertEqual(dry, real)
        self.assertEqual([entry["bytes"] for entry in result["results"]],
                         [entry["bytes"] for entry in written["results"]])

    def test_an_output_that_cannot_be_written_fails_alone(self):
        (self.directory / "film.mp4").mkdir()
        camera, film = self.copied(CAMERA, "camera.h264"), self.copied(FILM, "film.h264")
        code, result = pack_json("--each", film, camera, "-o", self.directory / "{name}.mp4")
        self.assertEqual((code, [entry["state"] for entry in result["results"]]), (2, ["failed", "done"]))
        self.assertIn("Is a directory", result["results"][0]["error"])
        (self.directory / "file").touch()
        code, result = pack_json("--each", camera, "-o", self.directory / "file" / "{name}.mp4")
        self.assertIn("Not a directory; nothing was written", result["results"][0]["error"])

    def test_segments_of_every_input(self):
        done = wrapton("pack", "--segment", "1", "--to", "mp4", CAMERA.path, MPEG4.path, "-o", f"{self.out}/")
        self.assertEqual((done.returncode, done.stderr), (0, ""))
        sums = [sum(pictures(self.out / name) for name in self.written() if name.startswith(source.path.stem))
                for source in (CAMERA, MPEG4)]
        self.assertEqual(sums, [CAMERA.frames, MPEG4.frames])
        self.assertIn(f"{CAMERA.path.stem}_0004.mp4", self.written())

    def test_a_segment_does_not_replace_an_input_either(self):
        first, second = self.copied(CAMERA, "a.h264"), self.directory / "x1_0001.mp4"
        self.packed(FILM.path, second)
        kept = second.read_bytes()
        code, result = pack_json("--each", "--segment", "1", first, second,
                                 "-o", self.directory / "x{number}.mp4")
        self.assertEqual((code, [entry["state"] for entry in result["results"]]), (2, ["failed", "done"]))
        self.assertIn("one of the inputs", result["results"][0]["error"])
        self.assertEqual(second.read_bytes(), kept)

    def test_raw_samples_are_described_for_those_that_are_raw(self):
        code, result = pack_json("--rate", 16000, "--to", "avi", CAMERA.path, MEDIA / "tone_8000_mono.s16le",
                                 "-o", f"{self.out}/")
        self.assertEqual(result["results"][0]["state"], "done")
        self.assertEqual(result["results"][1]["streams"][0]["sample_rate"], 16000)
        self.assertEqual(code, 1)

    def test_a_signal_completes_the_output_at_hand_and_begins_no_other(self):
        pipe = self.directory / "live.h264"
        os.mkfifo(pipe)
        process = subprocess.Popen([WRAPTON, "pack", "--json", "--to", "mp4", str(CAMERA.path), str(pipe),
                                    str(FILM.path), "-o", f"{self.out}/"],
                                   stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True)
        self.addCleanup(process.kill)
        live = self.out / "live.mp4"
        with open(pipe, "wb") as feed:
            while not live.exists():
                feed.write(CAMERA.path.read_bytes())
                time.sleep(0.01)
            process.send_signal(signal.SIGINT)
            out, err = process.communicate(timeout=60)
        result = json.loads(out)
        self.assertEqual((process.returncode, result["exit_code"], result["state"]), (130, 130, "interrupted"))
        self.assertEqual([entry["state"] for entry in result["results"]], ["done", "interrupted"])
        self.assertEqual(result["inputs_not_begun"], 1)
        self.assertIn("is complete up to here", err)
        self.assertEqual(pictures(live), result["results"][1]["streams"][0]["frames_stored"])


if __name__ == "__main__":
    main()
