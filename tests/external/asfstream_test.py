"""The broadcast of ASF, with sound and without, read by ffprobe and ffmpeg."""

import subprocess

from readers import MEDIA, VIDEO, MediaTest, decoded_hashes, main

SAMPLES = MEDIA / "tone_8000_mono.s16le"
ALAW = MEDIA / "tone_8000_mono.alaw"
PACKET = 2076
DATA_START = 818


class Broadcast(MediaTest):
    def check(self, video, sound):
        output = self.directory / "packaged.asf"
        inputs = [VIDEO[video].path] + ([sound] if sound else [])
        result = self.packed("--to", "asfstream", "--fps", VIDEO[video].rate, *inputs, output)
        self.assertEqual((result["container"], result["type"]), ("asfstream", 5))
        self.assertEqual(result["bytes"], output.stat().st_size)
        # Header and packets, no index.
        self.assertEqual((output.stat().st_size - DATA_START) % PACKET, 0)
        for stream in result["streams"]:
            self.assertEqual((stream["frames_in"], stream["frames_refused"]),
                             (stream["frames_stored"], {}))
        found = self.assert_reads_clean(output)
        streams = {stream["codec_type"]: stream for stream in found["streams"]}
        self.assertEqual(int(streams["video"]["nb_read_packets"]), VIDEO[video].frames)
        self.assertEqual((streams["audio"]["sample_rate"], streams["audio"]["channels"]),
                         ("8000", 1))
        self.assertEqual(decoded_hashes(output, "v", VIDEO[video].codec),
                         decoded_hashes(VIDEO[video].path, "v", VIDEO[video].codec))
        return result, output, streams["audio"]

    def copied(self, output, muxer):
        return subprocess.run(["ffmpeg", "-v", "error", "-i", str(output), "-map", "0:a", "-c",
                               "copy", "-f", muxer, "-"],
                              stdin=subprocess.DEVNULL, capture_output=True, check=True).stdout

    def test_sound_is_declared_ahead_of_the_first_picture(self):
        for sound, codec, muxer in ((SAMPLES, "pcm_s16le", "s16le"), (ALAW, "pcm_alaw", "alaw")):
            with self.subTest(sound=codec):
                result, output, audio = self.check("h264_baseline", sound)
                self.assertEqual(audio["codec_name"], codec)
                self.assertEqual(self.copied(output, muxer), sound.read_bytes())
                self.assertEqual(float(audio["start_time"]), 0)
                self.assertNotIn("although", " ".join(result["notes"]))

    def test_pictures_alone_come_with_sound_that_is_declared_only(self):
        for video in VIDEO:
            with self.subTest(video=video):
                result, _, audio = self.check(video, None)
                self.assertNotIn("nb_read_packets", audio)
                self.assertIn("asfstream declares sound of 8000 Hz, although it holds none",
                              result["notes"])


if __name__ == "__main__":
    main()
