"""Each public header compiles alone, in every language version, with every compiler at hand."""

import itertools
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

INCLUDE = Path(sys.argv.pop(1))

WARNINGS = ["-Wall", "-Wextra", "-Wpedantic", "-Wconversion", "-Wsign-conversion", "-Wshadow", "-Werror"]
C_VERSIONS = ["c99", "c11", "c17"]
CXX_VERSIONS = ["c++11", "c++14", "c++17", "c++20"]
COMPILERS = [("gcc", "g++"), ("clang", "clang++")]

C_SOURCE = """\
#include "Wrapton.h"
#include "Wrapton.h"
SGFrameInfo g_frame;
SG_ERR_TYPE g_error = SG_ERR_NOERR;
"""

CXX_SOURCE = """\
#include "Wrapton.h"
#include "Wrapton.h"
Orbel::Wrapton::SGFrameInfo g_frame;
Orbel::Wrapton::SG_ERR_TYPE g_error = Orbel::Wrapton::SG_ERR_NOERR;
extern "C" void* MakeMp4()
{
    return SG_CreateHandle(Orbel::Wrapton::SG_STREAM_TYPE_MP4, nullptr);
}
static_assert(noexcept(SG_DestroyHandle(nullptr)), "nothing is thrown to a caller");
"""

FACE_VERSIONS = ["c++20", "c++2b"]
FACE_SOURCE = """\
#include "wrapton.hpp"
#include "wrapton_file.hpp"
using namespace Orbel::Wrapton;
bool Record();
bool Record()
{
    std::error_code error;
    FileSink file("camera.mp4", SG_STREAM_TYPE_MP4);
    Packager packager(SG_STREAM_TYPE_MP4, std::ref(file));
    packager.Header();
    packager.Input({}, VideoFrame(SG_ENCODE_VIDEO_HI_H264, SG_FRAME_SUB_TYPE_I, 640, 360, 25), error);
    packager.SetRtp(packager.Rtp(), error);
    packager.Tailer();
    file.Finish();
    return packager.Backup(error).has_value() && error == SG_ERR_NOERR;
}
"""

# The component interfaces are C++ alone.
COMPONENT_HEADERS = ["Platform.h", "IWrapton.h", "IFilePackage.h"]
COMPONENT_VERSIONS = ["c++17", "c++20"]
COMPONENT_SOURCE = """\
#include "{header}"
#include "{header}"
Orbel::Wrapton::PacketBuffer g_packet;
Orbel::Wrapton::LargeFile g_file;
"""


class Header(unittest.TestCase):
    def compile(self, compiler, version, suffix, source):
        if shutil.which(compiler) is None:
            self.skipTest(f"{compiler} is not installed")
        with tempfile.TemporaryDirectory() as directory:
            file = Path(directory, "alone" + suffix)
            file.write_text(source)
            result = subprocess.run(
                [compiler, f"-std={version}", *WARNINGS, f"-I{INCLUDE}", "-c", file, "-o", "/dev/null"],
                capture_output=True,
                text=True,
                check=False,
            )
        self.assertEqual(result.returncode, 0, result.stderr)
        self.assertEqual(result.stderr, "")


def add_tests():
    for (c_compiler, cxx_compiler), version in itertools.product(COMPILERS, C_VERSIONS):
        def as_c(self, compiler=c_compiler, version=version):
            self.compile(compiler, version, ".c", C_SOURCE)

        setattr(Header, f"test_{version}_by_{c_compiler}", as_c)
    for (c_compiler, cxx_compiler), version in itertools.product(COMPILERS, CXX_VERSIONS):
        def as_cxx(self, compiler=cxx_compiler, version=version):
            self.compile(compiler, version, ".cpp", CXX_SOURCE)

        setattr(Header, f"test_{version}_by_{cxx_compiler}", as_cxx)
    for (_, cxx_compiler), version in itertools.product(COMPILERS, FACE_VERSIONS):
        def as_face(self, compiler=cxx_compiler, version=version):
            self.compile(compiler, version, ".cpp", FACE_SOURCE)

        setattr(Header, f"test_the_face_as_{version}_by_{cxx_compiler}", as_face)
    for (_, compiler), version, header in itertools.product(COMPILERS, COMPONENT_VERSIONS, COMPONENT_HEADERS):
        def alone(self, compiler=compiler, version=version, header=header):
            self.compile(compiler, version, ".cpp", COMPONENT_SOURCE.format(header=header))

        setattr(Header, f"test_{Path(header).stem}_as_{version}_by_{compiler}", alone)


add_tests()

if __name__ == "__main__":
    unittest.main(verbosity=2)
