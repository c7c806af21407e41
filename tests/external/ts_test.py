"""Transport streams as the packager's class writes them, read by ffprobe and ffmpeg."""

import os
import subprocess

from readers import AUDIO, VIDEO, MediaTest, decoded_hashes, ffprobe, main

WRITER = os.environ.get("TS_WRITER", "ts_writer")


class TransportStream(MediaTest):
    def write(self, video, audio):
        output = self.directory / "program.ts"
        subprocess.run([WRITER, str(VIDEO[video].path),
                        str(AUDIO[audio].path) if audio else "-", str(output)], check=True)
        self.assertEqual(output.stat().st_size % 188, 0)
        return output

    def check(self, video, audio=None):
        output = self.write(video, audio)
        # At this level ffmpeg speaks of every packet lost or damaged.
        done = subprocess.run(["ffmpeg", "-v", "verbose", "-i", str(output), "-map", "0:v:0",
                               "-c", "copy", "-f", "null", "-"],
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, check=True)
        for complaint in ("ontinuity", "orrupt", "discontinu", "CRC"):
            self.assertNotIn(complaint, done.stderr)
        found, _ = ffprobe(output, "-show_streams", "-show_programs", "-count_packets")
        streams = {stream["codec_type"]: stream for stream in found["streams"]}
        self.assertEqual(streams["video"]["codec_name"], VIDEO[video].codec)
        self.assertEqual(streams["video"]["id"], "0x12")
        self.assertEqual(int(streams["video"]["nb_read_packets"]), VIDEO[video].frames)
        self.assertEqual(found["programs"][0]["program_id"], 1)
        self.assertEqual(found["programs"][0]["pmt_pid"], 0x10)
        self.assertEqual(found["programs"][0]["pcr_pid"], 0x12)
        self.assertEqual(decoded_hashes(output, "v", VIDEO[video].codec),
                         decoded_hashes(VIDEO[video].path, "v", VIDEO[video].codec))
        return output, streams

    def test_h264_alone(self):
        self.check("h264_baseline")

    def test_h264_with_b_pictures(self):
        self.check("h264_bframes")

    def test_mpeg4_alone(self):
        self.check("mpeg4")

    def test_layer2_sound_decodes_alike(self):
        for video in ("h264_baseline", "mpeg4"):
            with self.subTest(video=video):
                output, streams = self.check(video, "mp2_48000_stereo")
                self.assertEqual(streams["audio"]["id"], "0x13")
                self.assertEqual(streams["audio"]["sample_rate"], "48000")
                self.assertEqual(
                    decoded_hashes(output, "a", "mp2"),
                    decoded_hashes(AUDIO["mp2_48000_stereo"].path, "a", "mp2"))

    def test_aac_is_declared_as_mpeg_audio(self):
        """The map gives every sound the stream type of MPEG audio, which readers believe."""
        output = self.write("h264_baseline", "aac_44100_stereo")
        found, _ = ffprobe(output, "-show_streams")
        sound = next(one for one in found["streams"] if one["id"] == "0x13")
        self.assertEqual((sound["codec_tag"], sound["codec_name"]), ("0x0003", "mp3"))


if __name__ == "__main__":
    main()
