"""Makes the Debian packages as a user does, installs them into a new Debian and builds examples against them there."""

import os
import re
import shutil
import subprocess
import sys
import unittest
from pathlib import Path

from commands import run

SOURCE = Path(sys.argv.pop(1))
SCRATCH = Path(sys.argv.pop(1))
CMAKE = sys.argv.pop(1)
CPACK = sys.argv.pop(1)
LAUNCHER = sys.argv.pop(1)

SKIPPED = 77
PACKAGES = ("libwrapton1", "libwrapton-dev", "wrapton-tools")
CAMERA = SOURCE / "tests" / "media" / "camera_640x360_25fps_baseline.h264"
JPEGS = SOURCE / "tests" / "media" / "qvga_320x240_12fps.mjpeg"
EXAMPLES = ("record.c", "record_pictures.cpp", "mend.cpp", "file.cpp", "broadcast.cpp")

PROJECT = """\
cmake_minimum_required(VERSION 3.25)
project(stranger LANGUAGES C CXX)
find_package(wrapton 1 REQUIRED CONFIG)
foreach(source record.c record_pictures.cpp mend.cpp file.cpp broadcast.cpp)
  cmake_path(GET source STEM name)
  add_executable(${name} ${source})
  target_compile_features(${name} PRIVATE cxx_std_20)
  target_link_libraries(${name} PRIVATE wrapton::wrapton)
endforeach()
"""


def codename():
    return re.search(r"^VERSION_CODENAME=(\S+)", Path("/etc/os-release").read_text(), re.MULTILINE)[1]


def sources():
    """The files that say where this machine has its packages from, those of Debian itself only."""
    directory = Path("/etc/apt")
    files = [directory / "sources.list", *sorted((directory / "sources.list.d").glob("*"))]
    return [
        path
        for path in files
        if path.suffix in (".list", ".sources") and path.is_file() and re.search(r"/debian\b", path.read_text())
    ]


def mirror():
    for path in sources():
        found = re.search(r"^(?:URIs:|deb(?:\s+\[[^]]*\])?)\s*(\S+/debian)/?(?:\s|$)", path.read_text(), re.MULTILINE)
        if found:
            return found[1]
    return None


def why_not():
    if os.geteuid() != 0:
        return "only root can change its root"
    for program in ("debootstrap", "dpkg-shlibdeps", "chroot"):
        if shutil.which(program) is None:
            return f"{program} is not installed"
    if mirror() is None:
        return "the sources of apt name no mirror of Debian"
    return None


class Root:
    """A new Debian with what programs are built with, and nothing of ours."""

    def __init__(self, path):
        self.path = path
        shutil.rmtree(path, ignore_errors=True)
        run("debootstrap", "--variant=minbase", codename(), path, mirror())
        for source in sources():
            target = path / source.relative_to("/")
            target.parent.mkdir(parents=True, exist_ok=True)
            shutil.copy(source, target)
        shutil.copy("/etc/resolv.conf", path / "etc" / "resolv.conf")
        # Nothing that is installed may start.
        (path / "usr" / "sbin" / "policy-rc.d").write_text("#!/bin/sh\nexit 101\n")
        (path / "usr" / "sbin" / "policy-rc.d").chmod(0o755)
        self.run("apt-get", "update", "-q")
        self.install("g++", "cmake", "pkg-config", "make")

    def run(self, *command):
        environment = {"PATH": "/usr/sbin:/usr/bin:/sbin:/bin", "LC_ALL": "C", "DEBIAN_FRONTEND": "noninteractive"}
        environment.update({name: os.environ[name] for name in ("http_proxy", "https_proxy") if name in os.environ})
        return run("chroot", self.path, *command, env=environment)

    def install(self, *packages):
        self.run("apt-get", "install", "-q", "-y", "--no-install-recommends", *packages)

    def state(self, package):
        """What dpkg knows of a package; empty for one that it does not."""
        done = subprocess.run(
            ["chroot", self.path, "dpkg-query", "-W", "-f", "${db:Status-Status}", package],
            capture_output=True,
            text=True,
            check=False,
        )
        return done.stdout

    def left(self):
        """Whatever is called after us."""
        found = set()
        for directory, directories, files in os.walk(self.path):
            here = Path(directory)
            if here == self.path:
                directories[:] = [name for name in directories if name not in ("proc", "sys", "dev", "try")]
            found.update(str(here / name) for name in (*directories, *files) if "wrapton" in name)
        return found


class CleanRoot(unittest.TestCase):
    """The tests go through one life of the packages, so they are run in this order."""

    @classmethod
    def setUpClass(cls):
        build = SCRATCH / "build"
        launcher = [f"-DCMAKE_CXX_COMPILER_LAUNCHER={LAUNCHER}"] if LAUNCHER else []
        run(CMAKE, "--preset", "package", "-B", build, "-DCMAKE_COLOR_DIAGNOSTICS=OFF", *launcher, cwd=SOURCE)
        run(CMAKE, "--build", build, "--parallel", "2")
        shutil.rmtree(SCRATCH / "packages", ignore_errors=True)
        run(CPACK, "--config", build / "CPackConfig.cmake", "-B", SCRATCH / "packages", cwd=SCRATCH)
        packages = {path.name.split("_")[0]: path for path in (SCRATCH / "packages").glob("*.deb")}
        if set(packages) != set(PACKAGES):
            raise AssertionError(f"packed were {sorted(packages)}")
        if shutil.which("lintian") is not None:
            run("lintian", "--allow-root", "--fail-on", "error", *packages.values())

        cls.addClassCleanup(shutil.rmtree, SCRATCH / "root", ignore_errors=True)
        cls.root = Root(SCRATCH / "root")
        cls.work = cls.root.path / "try"
        cls.work.mkdir()
        examples = [SOURCE / "examples" / name for name in (*EXAMPLES, "pictures.h")]
        for path in (*packages.values(), CAMERA, JPEGS, *examples):
            shutil.copy(path, cls.work)
        (cls.work / "CMakeLists.txt").write_text(PROJECT)
        cls.packages = {name: f"/try/{path.name}" for name, path in packages.items()}

    def record(self, program, *form, stream=CAMERA):
        """Runs a program on a stream of the given form, by default the H.264 one."""
        self.root.run(program, *(form or ("640", "360", "25")), f"/try/{stream.name}", "/try/camera.mp4")
        self.expect_recording(stream)

    def expect_recording(self, stream, part=0.9):
        recording = self.work / "camera.mp4"
        self.assertEqual(recording.read_bytes()[4:8], b"ftyp")
        self.assertIn(b"moov", recording.read_bytes())
        self.assertGreater(recording.stat().st_size, stream.stat().st_size * part)
        recording.unlink()

    def record_pictures(self, program):
        self.record(program, "320", "240", "12", stream=JPEGS)

    def test_1_the_library_is_found_by_the_loader(self):
        self.root.install(self.packages["libwrapton1"])
        self.assertRegex(self.root.run("ldconfig", "-p"), r"libwrapton\.so\.1 .* => (/usr)?/lib/x86_64-linux-gnu/")
        self.assertNotIn("not found", self.root.run("ldd", "-r", "/usr/lib/x86_64-linux-gnu/libwrapton.so.1"))

    def test_2_pkg_config_builds_in_c_and_cpp(self):
        self.root.install(self.packages["libwrapton-dev"])
        flags = "$(pkg-config --cflags --libs wrapton)"
        self.root.run("sh", "-ec", f"cd /try && gcc -std=c99 -Wall -Werror record.c {flags} -o by_pkg_config")
        self.record("/try/by_pkg_config")
        self.root.run("sh", "-ec", f"cd /try && g++ -std=c++20 -Wall -Werror record_pictures.cpp {flags} -o cpp")
        self.record_pictures("/try/cpp")

    def test_3_find_package_builds_in_c_and_cpp(self):
        self.root.run("cmake", "-S", "/try", "-B", "/try/build")
        self.root.run("cmake", "--build", "/try/build")
        self.record("/try/build/record")
        self.record_pictures("/try/build/record_pictures")
        self.root.run("/try/build/mend", "record", "mp4", "640", "360", "25", f"/try/{CAMERA.name}",
                      "/try/camera.mp4", "/try/camera.index")
        self.root.run("/try/build/mend", "repair", "/try/camera.mp4", "/try/camera.index")
        self.expect_recording(CAMERA, part=0.7)  # up to the index that was kept last
        self.record("/try/build/file")

    def test_4_the_command_packs(self):
        self.root.install(self.packages["wrapton-tools"])
        self.assertEqual(self.root.run("wrapton", "--version"), "wrapton 1.0.0\n")
        self.root.run("wrapton", "pack", f"/try/{CAMERA.name}", "/try/camera.omf")
        self.root.run("wrapton", "info", "/try/camera.omf")

    def test_5_what_was_installed_is_what_was_packed(self):
        self.assertEqual(self.root.run("dpkg", "--verify", *PACKAGES), "")
        self.assertEqual({name: self.root.state(name) for name in PACKAGES}, dict.fromkeys(PACKAGES, "installed"))

    def test_6_the_library_stays_while_it_is_needed(self):
        self.root.run("apt-get", "purge", "-q", "-y", "libwrapton-dev")
        self.record_pictures("/try/cpp")
        self.assertEqual(self.root.run("wrapton", "--version"), "wrapton 1.0.0\n")

    def test_7_nothing_is_left(self):
        self.root.run("apt-get", "purge", "-q", "-y", "libwrapton1")  # takes the command along
        self.assertEqual({name: self.root.state(name) for name in PACKAGES}, dict.fromkeys(PACKAGES, ""))
        self.assertEqual(self.root.left(), set())
        self.assertNotIn("wrapton", self.root.run("ldconfig", "-p"))
        self.root.run("apt-get", "check")


if __name__ == "__main__":
    reason = why_not()
    if reason is not None:
        print(f"skipped: {reason}")
        sys.exit(SKIPPED)
    SCRATCH.mkdir(parents=True, exist_ok=True)
    unittest.main(verbosity=2, failfast=True)
