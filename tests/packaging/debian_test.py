"""Makes the Debian packages, installs them into a scratch root and builds an example against them."""

import os
import re
import shutil
import sys
import tempfile
import unittest
from pathlib import Path

from commands import run

SOURCE = Path(sys.argv.pop(1))
BUILD = Path(sys.argv.pop(1))
CMAKE = sys.argv.pop(1)
CPACK = sys.argv.pop(1)
C_COMPILER = sys.argv.pop(1)
CXX_COMPILER = sys.argv.pop(1)
HAS_TOOLS = sys.argv.pop(1) == "1"

SKIPPED = 77
STREAM = SOURCE / "tests" / "media" / "camera_640x360_25fps_baseline.h264"

PROJECT = f"""\
cmake_minimum_required(VERSION 3.25)
project(stranger LANGUAGES C)
find_package(wrapton 1 REQUIRED CONFIG)
add_executable(record {SOURCE}/examples/record.c)
target_link_libraries(record PRIVATE wrapton::wrapton)
"""


def install(root, packages):
    """By dpkg itself where that is allowed, otherwise the files alone."""
    if os.geteuid() != 0:
        for package in packages:
            run("dpkg", "-x", package, root)
        return
    state = root / "var" / "lib" / "dpkg"
    for directory in ("info", "updates"):
        (state / directory).mkdir(parents=True)
    (state / "status").touch()
    # Not configured: the root holds no shell and no ldconfig for that.
    run("dpkg", f"--root={root}", "--force-depends", "--unpack", *packages)


class Debian(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = Path(tempfile.mkdtemp(prefix="wrapton-debian-"))
        cls.addClassCleanup(shutil.rmtree, cls.scratch)
        run(CPACK, "--config", BUILD / "CPackConfig.cmake", "-B", cls.scratch / "packages", cwd=cls.scratch)
        cls.packages = {path.name.split("_")[0]: path for path in (cls.scratch / "packages").glob("*.deb")}
        cls.root = cls.scratch / "root"
        cls.root.mkdir()
        install(cls.root, cls.packages.values())
        cls.libdir = next(cls.root.glob("usr/lib/**/libwrapton.so.1")).parent
        cls.environment = dict(os.environ, LD_LIBRARY_PATH=str(cls.libdir))

    def field(self, package, name):
        return run("dpkg-deb", "-f", self.packages[package], name).strip()

    def files(self, package):
        listing = run("dpkg-deb", "-c", self.packages[package])
        return {line.split()[5][1:] for line in listing.splitlines() if not line.startswith("d")}

    def test_makes_a_package_for_each_part(self):
        expected = {"libwrapton1", "libwrapton-dev"} | ({"wrapton-tools"} if HAS_TOOLS else set())
        self.assertEqual(set(self.packages), expected)
        for name in expected:
            self.assertEqual(self.field(name, "Package"), name)
            self.assertEqual(self.field(name, "Version"), "1.0.0")

    def test_packages_need_each_other_in_the_same_version(self):
        self.assertEqual(self.field("libwrapton-dev", "Depends"), "libwrapton1 (= 1.0.0)")
        if HAS_TOOLS:
            self.assertIn("libwrapton1 (= 1.0.0)", self.field("wrapton-tools", "Depends"))
        if shutil.which("dpkg-shlibdeps"):
            self.assertRegex(self.field("libwrapton1", "Depends"), r"libc6.*libstdc\+\+6")

    def test_the_library_is_all_of_its_package(self):
        names = {Path(file).name for file in self.files("libwrapton1")}
        self.assertEqual(names, {"libwrapton.so.1", "libwrapton.so.1.0.0", "copyright", "changelog.gz"})
        control = self.scratch / "control"
        run("dpkg-deb", "-e", self.packages["libwrapton1"], control)
        self.assertEqual((control / "triggers").read_text(), "activate-noawait ldconfig\n")
        self.assertRegex((control / "shlibs").read_text(), r"libwrapton 1 libwrapton1")

    def test_each_package_tells_its_license_and_what_it_is(self):
        summaries = set()
        for name in self.packages:
            self.assertLessEqual(
                {f"/usr/share/doc/{name}/copyright", f"/usr/share/doc/{name}/changelog.gz"}, self.files(name)
            )
            license_text = self.scratch / "root" / "usr" / "share" / "doc" / name / "copyright"
            self.assertIn("Permission is hereby granted", license_text.read_text())
            summaries.add(self.field(name, "Description").splitlines()[0])
        self.assertEqual(len(summaries), len(self.packages))

    def test_lintian_finds_no_error(self):
        if shutil.which("lintian") is None:
            self.skipTest("lintian is not installed")
        run("lintian", "--allow-root", "--fail-on", "error", *self.packages.values())

    def test_what_programs_are_built_with_is_in_the_development_package(self):
        files = self.files("libwrapton-dev")
        for pattern in (
            r"/usr/include/wrapton/Wrapton\.h",
            r"/usr/include/wrapton/wrapton\.hpp",
            r"/usr/lib/.*libwrapton\.so",
            r"/usr/lib/.*cmake/wrapton/wraptonConfig\.cmake",
            r"/usr/lib/.*pkgconfig/wrapton\.pc",
        ):
            self.assertTrue(any(re.fullmatch(pattern, file) for file in files), pattern)

    def record(self, program):
        output = self.scratch / "camera.mp4"
        run(program, "640", "360", "25", STREAM, output, env=self.environment)
        self.assertEqual(output.read_bytes()[4:8], b"ftyp")

    def test_pkg_config_builds_the_example(self):
        if shutil.which("pkg-config") is None:
            self.skipTest("pkg-config is not installed")
        environment = dict(self.environment, PKG_CONFIG_PATH=str(self.libdir / "pkgconfig"))
        flags = run("pkg-config", "--cflags", "--libs", "wrapton", env=environment).split()
        self.assertTrue(all(str(self.root) in flag for flag in flags if flag.startswith(("-I", "-L"))), flags)
        program = self.scratch / "record_by_pkg_config"
        run(C_COMPILER, "-std=c99", SOURCE / "examples" / "record.c", *flags, "-o", program)
        self.record(program)

    def test_find_package_builds_the_example(self):
        directory = self.scratch / "by_cmake"
        directory.mkdir()
        (directory / "CMakeLists.txt").write_text(PROJECT)
        run(
            CMAKE,
            "-S",
            directory,
            "-B",
            directory / "build",
            f"-DCMAKE_PREFIX_PATH={self.root}/usr",
            f"-DCMAKE_C_COMPILER={C_COMPILER}",
        )
        run(CMAKE, "--build", directory / "build")
        self.record(directory / "build" / "record")

    def test_the_command_runs(self):
        if not HAS_TOOLS:
            self.skipTest("the command is not built")
        printed = run(self.root / "usr" / "bin" / "wrapton", "--version", env=self.environment)
        self.assertEqual(printed, "wrapton 1.0.0\n")


if __name__ == "__main__":
    if shutil.which("dpkg-deb") is None or shutil.which("dpkg") is None:
        print("dpkg is not installed")
        sys.exit(SKIPPED)
    unittest.main(verbosity=2)
