"""Transport streams read by ffprobe and ffmpeg."""

import subprocess

from readers import AUDIO, VIDEO, MediaTest, decoded_hashes, ffprobe, main, wrapton


class TransportStream(MediaTest):
    def check(self, video, audio=None):
        output = self.directory / "program.ts"
        inputs = [VIDEO[video].path] + ([AUDIO[audio].path] if audio else [])
        result = self.packed("--fps", VIDEO[video].rate, *inputs, output)
        self.assertEqual((result["container"], result["type"]), ("ts", 10))
        self.assertEqual(result["bytes"], output.stat().st_size)
        self.assertEqual(output.stat().st_size % 188, 0)
        for stream in result["streams"]:
            self.assertEqual((stream["frames_in"], stream["frames_refused"]),
                             (stream["frames_stored"], {}))
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
        self.check_counters(output)
        return output, streams

    def check_counters(self, output):
        """Continuity counters of each PID that has a payload, ISO/IEC 13818-1 2.4.3.3."""
        data = output.read_bytes()
        last = {}
        for at in range(0, len(data), 188):
            self.assertEqual(data[at], 0x47)
            pid = (data[at + 1] & 0x1F) << 8 | data[at + 2]
            if not data[at + 3] & 0x10:
                continue
            counter = data[at + 3] & 15
            if pid in last and pid in (0x12, 0x13):
                self.assertEqual(counter, (last[pid] + 1) & 15, f"packet at {at}")
            last[pid] = counter
        self.assertIn(0x12, last)

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

    def test_aac_is_not_offered(self):
        """The library would call it MPEG audio, which readers believe."""
        done = wrapton("pack", VIDEO["h264_baseline"].path, AUDIO["aac_44100_stereo"].path,
                       self.directory / "program.ts")
        self.assertEqual(done.returncode, 1)
        self.assertIn("aac audio cannot be stored in ts", done.stderr)


if __name__ == "__main__":
    main()
