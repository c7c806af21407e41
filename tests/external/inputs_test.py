"""Streams that come out of other containers, or in another form than the library takes."""

import subprocess

from boxes import MediaFile
from readers import AUDIO, VIDEO, MediaTest, decoded_hashes, ffmpeg, main, wrapton
from streams import adts_frames, mpeg4_configuration, mpeg4_frames

CAMERA = VIDEO["h264_baseline"]
FILM = VIDEO["h264_bframes"]
AAC = AUDIO["aac_44100_stereo"]


class FromContainers(MediaTest):
    def remux(self, video, audio, name, *options):
        """Lets ffmpeg put raw streams into a container without touching the coded data."""
        path = self.directory / name
        ffmpeg("-fflags", "+genpts", "-r", video.rate, "-i", video.path, "-i", audio.path, "-map",
               "0:v", "-map", "1:a", "-c", "copy", *options, path)
        return path

    def check_same(self, output, kind, source):
        self.assertEqual(decoded_hashes(output, kind, source.codec),
                         decoded_hashes(source.path, kind, source.codec))

    def test_h264_becomes_annex_b_and_aac_gets_its_header(self):
        for extension in ("mp4", "mkv", "ts", "flv", "mov"):
            with self.subTest(container=extension):
                source = self.remux(CAMERA, AAC, "source." + extension)
                output = self.directory / "out.mp4"
                result = self.packed(source, output)
                for stream in result["streams"]:
                    self.assertEqual(stream["frames_in"], stream["frames_stored"])
                self.assert_reads_clean(output)
                self.check_same(output, "v", CAMERA)
                self.check_same(output, "a", AAC)

    def test_b_pictures_come_through_a_container_in_decoding_order(self):
        between = self.directory / "between.mp4"
        self.packed(FILM.path, AAC.path, between)
        output = self.directory / "out.mov"
        result = self.packed(between, output)
        self.assertEqual(result["streams"][0]["frames_stored"], FILM.frames)
        self.check_same(output, "v", FILM)
        self.check_same(output, "a", AAC)

    def test_mpeg4_headers_kept_aside_are_put_ahead_of_the_first_picture(self):
        video = VIDEO["mpeg4"]
        source = self.remux(video, AAC, "source.mp4", "-bsf:v", "remove_extra=freq=all")
        output = self.directory / "out.mp4"
        self.packed(source, output)
        first = mpeg4_frames(video.path.read_bytes())[0]
        configuration = mpeg4_configuration(first)
        self.assertNotEqual(configuration, b"")
        track = MediaFile(output).tracks["vide"]
        # The container cuts the picture by the headers' length; what is left begins like the source.
        self.assertEqual(track.samples[0], first[:len(first) - len(configuration)])
        # The headers up to the group of pictures are the same in every key picture.
        self.assertIn(configuration[:configuration.index(b"\x00\x00\x01\xB3")], track.entry.data)

    def test_a_fractional_rate_is_rounded_and_said(self):
        source = self.directory / "source.mkv"
        ffmpeg("-framerate", "30000/1001", "-f", "mjpeg", "-i", VIDEO["mjpeg"].path, "-c", "copy",
               source)
        output = self.directory / "out.mp4"
        result = self.packed(source, output)
        self.assertIn("whole rate: 30000/1001", "\n".join(result["notes"]))
        self.assertEqual(MediaFile(output).tracks["vide"].delta, 3000)

    def with_late_video(self, seconds):
        """Sound from 0, pictures from later on. Raw pictures have no times to shift, so they go
        through a file first."""
        between = self.directory / "between.mkv"
        ffmpeg("-fflags", "+genpts", "-r", CAMERA.rate, "-i", CAMERA.path, "-c", "copy", between)
        source = self.directory / "source.mkv"
        ffmpeg("-itsoffset", seconds, "-i", between, "-i", AAC.path, "-map", "0:v", "-map", "1:a",
               "-c", "copy", source)
        return source

    def test_sound_that_begins_a_frame_ahead_of_the_picture_is_kept(self):
        _, audio = self.packed(self.with_late_video(0.04), self.directory / "out.mp4")["streams"]
        self.assertEqual((audio["frames_stored"], audio["frames_dropped"]), (AAC.frames, 0))

    def test_sound_far_ahead_of_the_picture_is_dropped_and_counted(self):
        result = self.packed_with_losses(self.with_late_video(2), self.directory / "out.mp4")
        _, audio = result["streams"]
        self.assertEqual(audio["frames_stored"] + audio["frames_dropped"], AAC.frames)
        # 2 s less a tenth, of 44100 samples a second in frames of 1024
        self.assertAlmostEqual(audio["frames_dropped"], 1.9 * 44100 / 1024, delta=2)


class AdtsForms(MediaTest):
    """The library takes off a header FF F1 only; the other forms must arrive as that one."""

    def check(self, frames):
        source = self.directory / "tone.aac"
        source.write_bytes(b"".join(frames))
        output = self.directory / "out.mp4"
        self.packed(CAMERA.path, source, output)
        wanted = [frame[7:] for frame in adts_frames(AAC.path.read_bytes())]
        self.assertEqual(MediaFile(output).tracks["soun"].samples, wanted)

    def test_mpeg2_id(self):
        self.check([frame[:1] + b"\xF9" + frame[2:] for frame in adts_frames(AAC.path.read_bytes())])

    def test_crc(self):
        frames = []
        for frame in adts_frames(AAC.path.read_bytes()):
            length = len(frame) + 2
            header = bytearray(frame[:7])
            header[1] = 0xF0
            header[3] = header[3] & 0xFC | length >> 11
            header[4] = length >> 3 & 0xFF
            header[5] = length << 5 & 0xE0 | header[5] & 0x1F
            frames.append(bytes(header) + b"\0\0" + frame[7:])  # readers do not look at the CRC
        self.check(frames)


class Pipes(MediaTest):
    def test_a_pipe_with_two_streams_needs_a_choice(self):
        source = self.directory / "source.mkv"
        ffmpeg("-r", CAMERA.rate, "-fflags", "+genpts", "-i", CAMERA.path, "-i", AAC.path, "-c",
               "copy", source)
        output = self.directory / "out.mp4"
        with subprocess.Popen(["cat", str(source)], stdout=subprocess.PIPE) as cat:
            done = wrapton("pack", f"/proc/self/fd/{cat.stdout.fileno()}", output,
                           pass_fds=[cat.stdout.fileno()])
            cat.stdout.close()
        self.assertEqual(done.returncode, 2)
        self.assertIn("name it with --video or --audio", done.stderr)
        with subprocess.Popen(["cat", str(source)], stdout=subprocess.PIPE) as cat:
            done = wrapton("pack", "--video", f"/proc/self/fd/{cat.stdout.fileno()}", output,
                           pass_fds=[cat.stdout.fileno()])
            cat.stdout.close()
        self.assertEqual(done.returncode, 0, done.stderr)
        self.assertEqual(len(MediaFile(output).tracks["vide"].samples), CAMERA.frames)


if __name__ == "__main__":
    main()
