"""Builds and installs the bare library into a scratch prefix and uses it as a stranger would.

Once as a shared and once as a static library, and inside the build of another project: a small C program finds it by find_package and
by pkg-config, and runs. The bare library asks for a compiler and CMake only, so every other package is
hidden from it.
"""

import os
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(sys.argv.pop(1))
CMAKE = sys.argv.pop(1)
GENERATOR = sys.argv.pop(1)
C_COMPILER = sys.argv.pop(1)
CXX_COMPILER = sys.argv.pop(1)
LAUNCHER = sys.argv.pop(1) if len(sys.argv) > 1 else ""  # ccache and the like, if any

OPTIONS = ["TESTS", "TOOLS", "BENCHMARKS", "FUZZERS"]
HIDDEN = ["GTest", "benchmark", "CLI11", "nlohmann_json", "PkgConfig", "Python3"]

PROGRAM = """\
#include <stdio.h>
#include <wrapton/Wrapton.h>

int main(void)
{
    void* handle = SG_CreateHandle(SG_STREAM_TYPE_WAV, NULL);
    int error = SG_CreateHeader(handle, NULL);
    printf("%d %d\\n", handle != NULL, error);
    return SG_DestroyHandle(handle);
}
"""

COMPONENT_PROGRAM = """\
#include <cstdio>
#include <wrapton/IFilePackage.h>

using namespace Orbel::Wrapton;

int main()
{
    initWraptonComponentLibrary();
    auto* stream = static_cast<IWrapton*>(IComponentFactory::find(kWraptonClsid)->create("rtp"));
    auto* file = static_cast<IFilePackage*>(IComponentFactory::find(kFilePackageClsid)->create("wav"));
    SharedPtr<IWraptonData> block;
    const bool given = stream->getPacket(block);
    std::printf("%d %u %s\\n", given, getLastError(), file->getVersion().name);
    stream->release();
    file->release();
}
"""

PROJECT = """\
cmake_minimum_required(VERSION 3.25)
project(stranger LANGUAGES {languages})
{find}
add_executable(stranger {source})
target_link_libraries(stranger PRIVATE wrapton::wrapton)
"""


def run(*command, **options):
    result = subprocess.run(
        [str(part) for part in command],
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        text=True,
        check=False,
        **options,
    )
    if result.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))}\n{result.stdout}")
    return result.stdout


def configure(source, build, *definitions):
    arguments = [
        f"-DCMAKE_C_COMPILER={C_COMPILER}",
        f"-DCMAKE_CXX_COMPILER={CXX_COMPILER}",
        f"-DCMAKE_CXX_COMPILER_LAUNCHER={LAUNCHER}",
        "-DCMAKE_BUILD_TYPE=Debug",
        "-DCMAKE_CXX_FLAGS_DEBUG=",  # what is built here runs for a moment
        *definitions,
    ]
    return run(CMAKE, "-S", source, "-B", build, "-G", GENERATOR, *arguments)


def build(directory):
    return run(CMAKE, "--build", directory, "--parallel", "2")


def setUpModule():
    global LIBRARY_BUILD  # for both kinds, which are made of the same objects
    LIBRARY_BUILD = Path(tempfile.mkdtemp(prefix="wrapton-build-"))
    unittest.addModuleCleanup(shutil.rmtree, LIBRARY_BUILD)


class Install:
    """What holds for both kinds of library."""

    shared = True

    @classmethod
    def setUpClass(cls):
        cls.scratch = Path(tempfile.mkdtemp(prefix="wrapton-install-"))
        cls.addClassCleanup(shutil.rmtree, cls.scratch)
        configure(
            ROOT,
            LIBRARY_BUILD,
            f"-DBUILD_SHARED_LIBS={'ON' if cls.shared else 'OFF'}",
            "-DCMAKE_INSTALL_LIBDIR=lib",
            *[f"-DWRAPTON_BUILD_{option}=OFF" for option in OPTIONS],
            *[f"-DCMAKE_DISABLE_FIND_PACKAGE_{name}=ON" for name in HIDDEN],
        )
        build(LIBRARY_BUILD)
        staged = cls.scratch / "staged"
        run(CMAKE, "--install", LIBRARY_BUILD, "--prefix", staged)
        # An installed tree may be moved.
        cls.prefix = cls.scratch / "moved" / "wrapton"
        cls.prefix.parent.mkdir()
        staged.rename(cls.prefix)

    def stranger(self, name, find, languages, *definitions, source="stranger.c", program=PROGRAM):
        directory = self.scratch / name
        directory.mkdir()
        (directory / source).write_text(program)
        (directory / "CMakeLists.txt").write_text(
            PROJECT.format(find=find, languages=languages, source=source))
        configure(directory, directory / "build", *definitions)
        build(directory / "build")
        return run(directory / "build" / "stranger")

    def test_find_package(self):
        # A static library is C++ inside, so its users link as C++.
        languages = "C" if self.shared else "C CXX"
        find = "find_package(wrapton 1.0 REQUIRED CONFIG)"
        printed = self.stranger("by_package", find, languages, f"-DCMAKE_PREFIX_PATH={self.prefix}")
        self.assertEqual(printed, "1 0\n")

    def test_components_by_find_package(self):
        printed = self.stranger(
            "components",
            "find_package(wrapton 1.0 REQUIRED CONFIG)",
            "CXX",
            f"-DCMAKE_PREFIX_PATH={self.prefix}",
            source="stranger.cpp",
            program=COMPONENT_PROGRAM,
        )
        self.assertEqual(printed, "0 10 Application\n")

    def test_find_package_refuses_another_major_version(self):
        find = "find_package(wrapton 2.0 REQUIRED CONFIG)"
        with self.assertRaisesRegex(AssertionError, "requested version"):
            self.stranger("by_other_version", find, "C CXX", f"-DCMAKE_PREFIX_PATH={self.prefix}")

    def test_pkg_config(self):
        if shutil.which("pkg-config") is None:
            self.skipTest("pkg-config is not installed")
        directory = self.scratch / "by_pkg_config"
        directory.mkdir()
        source = directory / "stranger.c"
        source.write_text(PROGRAM)
        environment = dict(
            os.environ,
            PKG_CONFIG_PATH=str(self.prefix / "lib" / "pkgconfig"),
            LD_LIBRARY_PATH=str(self.prefix / "lib"),
        )
        flags = run("pkg-config", "--cflags", "--libs", "wrapton", env=environment).split()
        program = directory / "stranger"
        run(C_COMPILER, "-std=c99", "-Werror", source, *flags, "-o", program)
        self.assertEqual(run(program, env=environment), "1 0\n")
        self.assertEqual(run("pkg-config", "--modversion", "wrapton", env=environment), "1.0.0\n")

    def test_pkg_config_knows_what_a_static_library_needs(self):
        if shutil.which("pkg-config") is None:
            self.skipTest("pkg-config is not installed")
        environment = dict(os.environ, PKG_CONFIG_PATH=str(self.prefix / "lib" / "pkgconfig"))
        flags = run("pkg-config", "--static", "--libs", "wrapton", env=environment).split()
        self.assertLessEqual({"-lwrapton", "-lstdc++", "-lm", "-pthread"}, set(flags))
        flags = run("pkg-config", "--libs", "wrapton", env=environment).split()
        self.assertEqual("-lstdc++" in flags, not self.shared)

    def test_installs_its_files_and_no_others(self):
        installed = {str(path.relative_to(self.prefix)) for path in self.prefix.rglob("*") if not path.is_dir()}
        libraries = {"lib/libwrapton.so", "lib/libwrapton.so.1", "lib/libwrapton.so.1.0.0"}
        self.assertEqual(
            installed,
            {
                "include/wrapton/IFilePackage.h",
                "include/wrapton/IWrapton.h",
                "include/wrapton/Platform.h",
                "include/wrapton/Wrapton.h",
                "include/wrapton/wrapton.hpp",
                "include/wrapton/wrapton_file.hpp",
                "lib/cmake/wrapton/wraptonConfig.cmake",
                "lib/cmake/wrapton/wraptonConfigVersion.cmake",
                "lib/cmake/wrapton/wraptonTargets.cmake",
                "lib/cmake/wrapton/wraptonTargets-debug.cmake",
                "lib/pkgconfig/wrapton.pc",
            }
            | (libraries if self.shared else {"lib/libwrapton.a"}),
        )


FACE = """\
#include <wrapton/wrapton.hpp>

int main()
{
    return Orbel::Wrapton::Packager(Orbel::Wrapton::SG_STREAM_TYPE_WAV) ? 0 : 1;
}
"""

PART_PROJECT = """\
cmake_minimum_required(VERSION 3.25)
project(stranger LANGUAGES CXX)
{find}
add_executable(stranger stranger.cpp)
target_compile_features(stranger PRIVATE cxx_std_20)
target_link_libraries(stranger PRIVATE wrapton::wrapton)
install(TARGETS stranger)
"""

FETCH = f"""\
include(FetchContent)
FetchContent_Declare(wrapton SOURCE_DIR {ROOT})
FetchContent_MakeAvailable(wrapton)
"""


class PartOfAnotherProject(unittest.TestCase):
    """The source tree inside the build of a stranger."""

    def setUp(self):
        scratch = tempfile.TemporaryDirectory(prefix="wrapton-part-")
        self.addCleanup(scratch.cleanup)
        self.scratch = Path(scratch.name)

    def configure(self, find, *definitions):
        (self.scratch / "stranger.cpp").write_text(FACE)
        (self.scratch / "CMakeLists.txt").write_text(PART_PROJECT.format(find=find))
        hidden = [f"-DCMAKE_DISABLE_FIND_PACKAGE_{name}=ON" for name in HIDDEN]
        configure(self.scratch, self.scratch / "build", *hidden, *definitions)

    def test_add_subdirectory(self):
        self.configure(f"add_subdirectory({ROOT} wrapton)")
        # The library itself is built by the next test.
        run(CMAKE, "--build", self.scratch / "build", "--target", "CMakeFiles/stranger.dir/stranger.cpp.o")

    def test_fetch_content_builds_and_installs_the_program_alone(self):
        self.configure(FETCH, "-DBUILD_SHARED_LIBS=OFF")
        build(self.scratch / "build")
        run(self.scratch / "build" / "stranger")
        run(CMAKE, "--install", self.scratch / "build", "--prefix", self.scratch / "prefix")
        installed = [path for path in (self.scratch / "prefix").rglob("*") if not path.is_dir()]
        self.assertEqual([path.name for path in installed], ["stranger"])


class SharedInstall(Install, unittest.TestCase):
    shared = True


class StaticInstall(Install, unittest.TestCase):
    shared = False


if __name__ == "__main__":
    unittest.main(verbosity=2)
