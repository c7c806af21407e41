"""A-law and 16-bit samples in WAV. The container takes the place of the first frame for a second header, so the command
hands that frame over twice."""

import wave

from readers import MEDIA, MediaTest, ffprobe, main

HEADER = 44


class Wav(MediaTest):
    def pack(self, name, raw_format):
        """Packs a raw stream; gives the result and the source."""
        source = MEDIA / name
        self.output = self.directory / "sound.wav"
        result = self.packed(source, self.output)
        packets, _ = ffprobe(source, "-f", raw_format, "-sample_rate", "8000", "-show_packets")
        (stream,) = result["streams"]
        self.assertEqual(stream["frames_in"], len(packets["packets"]))
        self.assertEqual((stream["frames_stored"], stream["frames_dropped"]),
                         (stream["frames_in"], 0))
        return result, source.read_bytes()

    def test_sixteen_bit_samples_are_all_there(self):
        result, wanted = self.pack("tone_8000_mono.s16le", "s16le")
        found = self.assert_reads_clean(self.output)
        self.assertEqual(found["format"]["format_name"], "wav")
        self.assertEqual(found["streams"][0]["codec_name"], "pcm_s16le")
        self.assertEqual(result["notes"], [])
        with wave.open(str(self.output)) as reader:
            self.assertEqual(reader.getparams()[:4], (1, 2, 8000, len(wanted) // 2))
            self.assertEqual(reader.readframes(reader.getnframes()), wanted)

    def test_alaw_bytes_are_all_there(self):
        result, wanted = self.pack("tone_8000_mono.alaw", "alaw")
        self.assert_reads_clean(self.output)
        self.assertEqual(self.output.read_bytes()[HEADER:], wanted)
        self.assertIn("labelled as 8000 Hz", result["notes"][0])

    def test_a_stream_of_one_frame_is_there_too(self):
        source = self.directory / "short.s16le"
        source.write_bytes(bytes(range(100)))
        output = self.directory / "short.wav"
        result = self.packed(source, output)
        self.assertEqual(result["streams"][0]["frames_stored"], 1)
        self.assertEqual(output.read_bytes()[HEADER:], source.read_bytes())

    def test_rate_and_channels_describe_raw_samples(self):
        output = self.directory / "stereo.wav"
        result = self.packed("--rate", 16000, "--channels", 2, MEDIA / "tone_8000_mono.s16le",
                             output)
        stream = result["streams"][0]
        self.assertEqual((stream["sample_rate"], stream["channels"]), (16000, 2))
        self.assertIn("labelled as 8000 Hz", result["notes"][0])


if __name__ == "__main__":
    main()
