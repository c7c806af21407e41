"""Streams in RTP packets: put together again by a reader of our own, and dissected by tshark.
Argument: Packets or Capture."""

import json
import subprocess
import sys
import unittest

from readers import (AUDIO, FFMPEG, MEDIA, VIDEO, MediaTest, Video, decoded_hashes, main,
                     pack_json, wrapton)
from rtp import byte_stream_units, nal_units, plain_frames, read_packet, read_packets

SLICES = Video("slices_320x240_25fps.h264", "h264", 320, 240, 25, 12)
H264 = [VIDEO["h264_baseline"], VIDEO["h264_bframes"], SLICES]
ALAW = MEDIA / "tone_8000_mono.alaw"
LARGEST = 1000 - 2  # bytes of a packet


class Packets(MediaTest):
    def unpacked(self, source):
        """Packs a source; gives the result and the packets."""
        output = self.directory / "out.rtp"
        result = self.packed(source, output)
        self.assertEqual((result["container"], result["type"]), ("rtp", 9))
        self.assertEqual(result["bytes"], output.stat().st_size)
        packets = read_packets(output.read_bytes())
        self.assertEqual(len({packet.ssrc for packet in packets}), 1)
        self.assertEqual(packets[0].sequence, 1)
        for packet in packets:
            self.assertLessEqual(12 + len(packet.payload), LARGEST)
        return result, packets

    def assert_pictures_equal(self, video, stream):
        again = self.directory / ("again." + video.name.rsplit(".", 1)[1])
        again.write_bytes(stream)
        hashes = decoded_hashes(again, "v", video.codec)
        self.assertEqual(len(hashes), video.frames)
        self.assertEqual(hashes, decoded_hashes(video.path, "v", video.codec))

    def test_h264_comes_back_unit_for_unit_and_picture_for_picture(self):
        for video in H264:
            with self.subTest(video.name):
                result, packets = self.unpacked(video.path)
                self.assertEqual(result["streams"][0]["frames_stored"], video.frames)
                units = nal_units(packets)
                self.assertEqual([unit.rstrip(b"\x00") for unit in units],
                                 byte_stream_units(video.path.read_bytes()))
                self.assertTrue(any(len(unit) > LARGEST for unit in units))
                self.assert_pictures_equal(video, b"".join(b"\x00\x00\x01" + unit
                                                           for unit in units))

    def test_the_stream_of_slices_has_four_behind_three_byte_start_codes(self):
        data = SLICES.path.read_bytes()
        kinds = [unit[0] & 31 for unit in byte_stream_units(data)]
        slices = [kind for kind in kinds if kind in (1, 5)]
        self.assertEqual(len(slices), 4 * SLICES.frames)
        self.assertEqual(data.count(b"\x00\x00\x01") - data.count(b"\x00\x00\x00\x01"),
                         3 * SLICES.frames + kinds.count(7))  # first slice behind parameter sets

    def test_mpeg4_and_jpeg_come_back_byte_for_byte(self):
        for key in ("mpeg4", "mjpeg"):
            with self.subTest(key):
                video = VIDEO[key]
                _, packets = self.unpacked(video.path)
                frames = plain_frames(packets)
                self.assertEqual(len(frames), video.frames)
                self.assertEqual(b"".join(frames), video.path.read_bytes())
                self.assert_pictures_equal(video, b"".join(frames))

    def test_sound_comes_back_byte_for_byte(self):
        for source in (ALAW, MEDIA / "tone_8000_mono.s16le", AUDIO["aac_44100_stereo"].path,
                       AUDIO["mp2_48000_stereo"].path):
            with self.subTest(source.name):
                _, packets = self.unpacked(source)
                self.assertEqual(b"".join(plain_frames(packets)), source.read_bytes())

    def test_a_picture_has_one_stamp_of_a_90000_hz_clock(self):
        result, packets = self.unpacked(SLICES.path)
        stamps = sorted({packet.timestamp for packet in packets})
        self.assertEqual(stamps, [3600 * number for number in range(SLICES.frames)])
        self.assertEqual({packet.payload_type for packet in packets}, {96})
        self.assertIn("rtp carries h264 with payload type 96 and a clock of 90000 Hz",
                      result["notes"])

    def test_pcma_has_its_own_payload_type_and_clock(self):
        _, packets = self.unpacked(ALAW)
        self.assertEqual({packet.payload_type for packet in packets}, {8})
        samples = 0
        for packet in packets:
            self.assertEqual(packet.timestamp, samples)
            samples += len(packet.payload)
        self.assertEqual(samples, 24000)

    def test_aac_runs_at_its_sample_rate(self):
        result, packets = self.unpacked(AUDIO["aac_44100_stereo"].path)
        seconds = AUDIO["aac_44100_stereo"].frames * 1024 / 44100
        self.assertAlmostEqual(packets[-1].timestamp / 44100, seconds, delta=0.1)
        self.assertIn("without a payload format's headers", result["notes"][-1])

    def test_b_pictures_are_told_to_keep_decoding_times(self):
        result, _ = self.unpacked(VIDEO["h264_bframes"].path)
        self.assertTrue(any("B pictures" in note for note in result["notes"]), result["notes"])

    def test_sound_beside_pictures_is_refused_with_the_reason(self):
        output = self.directory / "out.rtp"
        code, result = pack_json(SLICES.path, ALAW, output)
        self.assertEqual((code, result["state"]), (1, "refused"))
        self.assertEqual(result["streams"][1]["refusal"],
                         "alaw audio cannot be stored in rtp beside another stream: "
                         "one session carries one")
        self.assertEqual(len(nal_units(read_packets(output.read_bytes()))), 4 * 12 + 4)

    def test_two_runs_have_two_sources(self):
        sources = {self.unpacked(ALAW)[1][0].ssrc for _ in range(2)}
        self.assertEqual(len(sources), 2)

    def test_pcap_is_for_rtp(self):
        output = self.directory / "out.mp4"
        done = wrapton("pack", "--pcap", "--to", "mp4", SLICES.path, output)
        self.assertEqual(done.returncode, 2)
        self.assertIn("--pcap is for rtp, not for mp4", done.stderr)
        self.assertFalse(output.exists())


class Capture(MediaTest):
    """The same packets in a capture file, in tshark's eyes."""

    def tshark(self, path, *options):
        done = subprocess.run(["tshark", "-r", str(path), "-o", "ip.check_checksum:TRUE", "-o",
                               "udp.check_checksum:TRUE", "-d", "udp.port==5004,rtp", *options],
                              stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
        self.assertEqual(done.returncode, 0, done.stderr)
        return done.stdout

    def captured(self, source, dissector=None):
        """Packs a source both ways; gives the capture, the options that name the dissector of its
        payload, and the packets of the other file."""
        plain = self.directory / "out.rtp"
        capture = self.directory / "out.pcap"
        self.packed(source, plain)
        self.packed("--pcap", source, capture)
        decode = ["-d", f"rtp.pt==96,{dissector}"] if dissector else []
        return capture, decode, read_packets(plain.read_bytes())

    def fields(self, capture, decode, *names):
        options = [option for name in names for option in ("-e", name)]
        lines = self.tshark(capture, *decode, "-T", "fields", *options).splitlines()
        return [line.split("\t") for line in lines]

    SOURCES = [(H264[0].path, "h264"), (H264[1].path, "h264"), (SLICES.path, "h264"),
               (VIDEO["mpeg4"].path, "mp4v-es"), (VIDEO["mjpeg"].path, None), (ALAW, None),
               (AUDIO["aac_8000_mono"].path, None)]

    def test_every_packet_is_there_and_none_is_malformed(self):
        for source, dissector in self.SOURCES:
            with self.subTest(source.name):
                capture, decode, packets = self.captured(source, dissector)
                rows = self.fields(capture, decode, "ip.checksum.status", "udp.checksum.status",
                                   "rtp.seq", "rtp.timestamp", "rtp.marker", "rtp.p_type")
                self.assertEqual(rows, [["1", "1", str(p.sequence), str(p.timestamp),
                                         str(int(p.marker)), str(p.payload_type)]
                                        for p in packets])
                self.assertEqual(self.tshark(capture, *decode, "-Y", "_ws.malformed"), "")
                self.assertEqual(self.tshark(capture, *decode, "-Y", "_ws.expert.severity == error"),
                                 "")

    def test_no_packet_is_lost(self):
        for source, dissector in self.SOURCES:
            with self.subTest(source.name):
                capture, decode, packets = self.captured(source, dissector)
                report = self.tshark(capture, *decode, "-q", "-z", "rtp,streams").splitlines()
                (row,) = [line for line in report if "192.0.2.1" in line]
                self.assertRegex(row, rf" {len(packets)} +0 \(0\.0%\) ")

    def test_h264_is_dissected_as_units_and_fragments(self):
        capture, decode, packets = self.captured(SLICES.path, "h264")
        rows = self.fields(capture, decode, "h264.nal_unit_hdr", "h264.start.bit", "h264.end.bit")
        wanted = []
        for packet in packets:
            kind = packet.payload[0] & 31
            bits = packet.payload[1]
            wanted.append([str(kind), *([str(bits >> 7), str(bits >> 6 & 1)] if kind == 28
                                        else ["", ""])])
        self.assertEqual(rows, wanted)
        self.assertIn(["28", "1", "0"], rows)
        self.assertIn(["28", "0", "1"], rows)

    def test_payloads_are_those_of_the_other_file(self):
        capture, _, packets = self.captured(SLICES.path)
        raw = json.loads(self.tshark(capture, "-T", "jsonraw", "-J", "udp"))
        payloads = [bytes.fromhex(entry["_source"]["layers"]["udp"]["udp.payload_raw"][0])
                    for entry in raw]
        self.assertEqual([read_packet(payload).payload for payload in payloads],
                         [packet.payload for packet in packets])

    def test_packets_were_seen_at_the_times_of_their_frames(self):
        capture, decode, packets = self.captured(SLICES.path, "h264")
        rows = self.fields(capture, decode, "frame.time_epoch")
        self.assertEqual([round(float(row[0]) * 90000) for row in rows],
                         [packet.timestamp for packet in packets])

    def test_a_capture_has_any_name(self):
        output = self.directory / "out.bin"
        for options in ((), ("--to", "rtp")):
            result = self.packed("--pcap", *options, SLICES.path, output)
            self.assertEqual(result["container"], "rtp")
            self.assertEqual(output.read_bytes()[:4], b"\xD4\xC3\xB2\xA1")
            self.assertEqual(result["bytes"], output.stat().st_size)


if __name__ == "__main__":
    main(unittest.defaultTestLoader.loadTestsFromName(sys.argv[1], sys.modules[__name__]),
         {**FFMPEG, "tshark": "tshark"} if sys.argv[1] == "Capture" else FFMPEG)
