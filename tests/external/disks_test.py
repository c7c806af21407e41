"""The command on disks that fill up, behind quotas, on closed descriptors and where it may not write.

Nothing of this is ever called a success: the code is 2, and standard error says what is left.
"""

import os
import resource
import shlex
import subprocess

from readers import MEDIA, VIDEO, WRAPTON, MediaTest, main, wrapton

CAMERA = VIDEO["h264_baseline"].path
SAMPLES = MEDIA / "tone_8000_mono.s16le"

# Those that go back in their file, and those that only append.
SEEKING = ("mp4", "mov64", "3gp", "avi", "mkv", "asf", "wav", "flv")
APPENDING = ("mp4noseek", "flvstream", "asfstream", "ps", "ts", "omf", "rtp")


def source_of(container):
    return SAMPLES if container == "wav" else CAMERA


def may_mount():
    done = subprocess.run(["unshare", "-rm", "mount", "-t", "tmpfs", "none", "/mnt"],
                          stdin=subprocess.DEVNULL, capture_output=True, check=False)
    return done.returncode == 0


class DiskTest(MediaTest):
    def expect_failure(self, done, *words):
        self.assertEqual(done.returncode, 2, done)
        self.assertEqual(done.stdout, "")  # no claim of success
        for word in words:
            self.assertIn(word, done.stderr)

    def pack(self, container, output, **options):
        return wrapton("pack", "--to", container, source_of(container), output, **options)


class Quota(DiskTest):
    def limited(self, container, output, limit):
        return self.pack(container, output,
                         preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))

    def test_a_file_that_does_not_fit_to_its_last_byte_is_a_failure(self):
        for container in SEEKING + APPENDING:
            whole = self.directory / "whole"
            done = self.pack(container, whole)
            self.assertIn(done.returncode, (0, 1), done.stderr)  # 1: a frame is not stored
            code, size = done.returncode, whole.stat().st_size
            for limit in (0, 1, size // 2, size - 1):
                with self.subTest(container=container, limit=limit):
                    output = self.directory / "cut"
                    done = self.limited(container, output, limit)
                    self.expect_failure(done, "File too large", "an unfinished file of ",
                                        " bytes is left, it does not play")
                    self.assertIn(f" {output.stat().st_size} bytes", done.stderr)
                    self.assertLessEqual(output.stat().st_size, limit)
            with self.subTest(container=container, limit=size):
                done = self.limited(container, self.directory / "fits", size)
                self.assertEqual(done.returncode, code, done.stderr)

    def test_a_capture_file_is_no_exception(self):
        output = self.directory / "out.pcap"
        done = wrapton("pack", "--to", "rtp", "--pcap", CAMERA, output)
        self.assertEqual(done.returncode, 0, done.stderr)
        limit = output.stat().st_size - 1
        done = wrapton("pack", "--to", "rtp", "--pcap", CAMERA, output,
                       preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_FSIZE, (limit, limit)))
        self.expect_failure(done, "File too large")


class FullDisk(DiskTest):
    def test_a_device_that_is_always_full(self):
        for container in SEEKING + APPENDING:
            with self.subTest(container=container):
                self.expect_failure(self.pack(container, "/dev/full"),
                                    "/dev/full: No space left on device", "nothing of it is left")

    def test_a_disk_of_64_kib(self):
        if not may_mount():
            self.skipTest("this user may not mount a file system")
        for container in SEEKING + APPENDING:
            if container == "wav":
                continue  # its stream fits
            with self.subTest(container=container):
                # The disk ends with the shell; the size that is left is told behind the error.
                place = shlex.quote(str(self.directory))
                call = shlex.join([WRAPTON, "pack", "--to", container, str(CAMERA), "out"])
                done = subprocess.run(
                    ["unshare", "-rm", "sh", "-c",
                     f"mount -t tmpfs -o size=64k none {place} && cd {place} && {call};"
                     " code=$?; stat -c 'left: %s' out >&2; exit $code"],
                    stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
                self.expect_failure(done, "No space left on device", "an unfinished file of ")
                left = int(done.stderr.rsplit("left: ", 1)[1])
                self.assertIn(f" {left} bytes is left", done.stderr)
                self.assertLessEqual(left, 65536)
                self.assertGreater(left, 16384)


class ReadOnly(DiskTest):
    def test_places_that_cannot_be_written(self):
        (self.directory / "file").write_text("x")
        for place in (self.directory / "file" / "below", self.directory / "none" / "out"):
            for container in ("mp4", "ps"):
                with self.subTest(place=place, container=container):
                    self.expect_failure(self.pack(container, place), "nothing was written")
        self.assertEqual((self.directory / "file").read_text(), "x")

    def test_a_file_without_permission(self):
        if os.geteuid() == 0:
            self.skipTest("root may write everywhere")
        output = self.directory / "out"
        output.write_text("x")
        output.chmod(0o444)
        self.expect_failure(self.pack("mp4", output), "Permission denied", "nothing was written")
        self.assertEqual(output.read_text(), "x")

    def test_a_disk_that_is_mounted_read_only(self):
        if not may_mount():
            self.skipTest("this user may not mount a file system")
        for container in ("mp4", "avi", "flv", "ps"):
            with self.subTest(container=container):
                place = shlex.quote(str(self.directory))
                call = shlex.join([WRAPTON, "pack", "--to", container, str(CAMERA),
                                   str(self.directory / "out")])
                done = subprocess.run(
                    ["unshare", "-rm", "sh", "-c",
                     f"mount -t tmpfs -o ro none {place} && {call}"],
                    stdin=subprocess.DEVNULL, capture_output=True, text=True, check=False)
                self.expect_failure(done, "Read-only file system", "nothing was written")


class ClosedDescriptors(DiskTest):
    """Of which one is what the shell writes as >&-."""

    def test_standard_output_is_not_there_to_be_written(self):
        for container in APPENDING:
            with self.subTest(container=container):
                done = subprocess.run(["sh", "-c", 'exec "$0" "$@" >&-', WRAPTON, "pack", "--to", container,
                                       str(CAMERA), "-"],
                                      capture_output=True, text=True, check=False)
                self.expect_failure(done, "Bad file descriptor")

    def test_standard_output_is_only_there_to_be_read(self):
        source = self.directory / "in"
        source.write_text("x")
        for container in APPENDING:
            with self.subTest(container=container), open(source, "rb") as readable:
                done = subprocess.run([WRAPTON, "pack", "--to", container, str(CAMERA), "-"],
                                      stdout=readable, stderr=subprocess.PIPE, text=True, check=False)
                self.assertEqual(done.returncode, 2)
                self.assertIn("Bad file descriptor", done.stderr)
        self.assertEqual(source.read_text(), "x")


if __name__ == "__main__":
    main(tools={})
