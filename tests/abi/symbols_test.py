"""The library exports what its version script names, under its settled name, and nothing else."""

import re
import subprocess
import sys
import unittest
from pathlib import Path

LIBRARY = Path(sys.argv.pop(1))
VERSION_SCRIPT = Path(sys.argv.pop(1))
HEADER = Path(sys.argv.pop(1))
MAJOR = sys.argv.pop(1)


def output_of(*command):
    return subprocess.run(command, capture_output=True, text=True, check=True).stdout


def exported():
    """Names as the linker sees them, a symbol version included if there were one."""
    return sorted(line.split()[-1] for line in output_of("nm", "-D", "--defined-only", LIBRARY).splitlines())


def in_version_script():
    text = VERSION_SCRIPT.read_text()
    return sorted(re.findall(r"(\w+);", text[text.index("global:") : text.index("local:")]))


def dynamic_section(tag):
    return re.findall(rf"\({tag}\).*\[(.*)\]", output_of("readelf", "-d", "--wide", LIBRARY))


class Symbols(unittest.TestCase):
    def test_exports_are_those_of_the_version_script(self):
        self.assertEqual(exported(), in_version_script())

    def test_the_component_headers_need_these_and_no_others(self):
        beside_the_eight = [name for name in exported() if not name.startswith("SG_")]
        plain = sorted(output_of("c++filt", *beside_the_eight).splitlines())
        self.assertEqual(
            plain,
            [
                "Orbel::Wrapton::IComponentFactory::add(Orbel::Wrapton::IComponentFactory&)",
                "Orbel::Wrapton::IComponentFactory::find(char const*)",
                "Orbel::Wrapton::IComponentFactory::remove(Orbel::Wrapton::IComponentFactory&)",
                "Orbel::Wrapton::LargeFile::close()",
                "Orbel::Wrapton::LargeFile::open(char const*, unsigned int)",
                "Orbel::Wrapton::LargeFile::seek(long, int)",
                "Orbel::Wrapton::LargeFile::write(void const*, unsigned long)",
                "Orbel::Wrapton::getLastError()",
                "Orbel::Wrapton::rtpExtensionDataName()",
                "Orbel::Wrapton::setLastError(unsigned int)",
                "initWraptonComponentLibrary",
            ],
        )

    def test_functions_of_the_header_are_exported(self):
        declared = set(re.findall(r"^\s*WRAPTON_API [\w* ]+?\b(\w+)\(", HEADER.read_text(), re.MULTILINE))
        self.assertGreaterEqual(len(declared), 8)
        self.assertLessEqual(declared, set(exported()))

    def test_the_eight_functions_have_plain_names(self):
        eight = {
            "SG_CreateHandle",
            "SG_CreateHeader",
            "SG_InputFrame",
            "SG_CreateTailer",
            "SG_GetBackup",
            "SG_SetParam",
            "SG_GetParam",
            "SG_DestroyHandle",
        }
        self.assertLessEqual(eight, set(exported()))

    def test_name_for_the_loader_carries_the_major_version(self):
        self.assertEqual(dynamic_section("SONAME"), [f"libwrapton.so.{MAJOR}"])

    def test_needs_nothing_but_the_systems_own_libraries(self):
        system = re.compile(r"lib(stdc\+\+|gcc_s|m|c|pthread|asan|ubsan|tsan)\.so\.\d+|ld-linux-x86-64\.so\.2")
        for name in dynamic_section("NEEDED"):
            self.assertRegex(name, system)

    def test_links_to_the_file_of_the_full_version(self):
        directory = LIBRARY.parent
        self.assertTrue((directory / "libwrapton.so").is_symlink())
        self.assertTrue((directory / f"libwrapton.so.{MAJOR}").is_symlink())
        self.assertRegex((directory / "libwrapton.so").resolve().name, rf"^libwrapton\.so\.{MAJOR}\.\d+\.\d+$")


if __name__ == "__main__":
    unittest.main(verbosity=2)
