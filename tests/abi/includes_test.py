"""Includes point one way: tools, base class, packagers, factory, interfaces.

Each folder or file below has a layer and may include what stands in its own folder or in a lower
layer. Packagers share a layer, so none includes another. Within a packager only the driver, the class
that derives from CPackage, knows the base class and its callbacks.
"""

import re
import sys
import unittest
from pathlib import Path

SOURCE = Path(sys.argv.pop(1))
INCLUDE = Path(sys.argv.pop(1))

PUBLIC, TOOL, BASE, PACKAGER, FACTORY, INTERFACE = range(6)


def part_of(path):
    """The folder a file belongs to; the files directly in Src stand for themselves."""
    return path.parts[0] if len(path.parts) > 1 else path.stem


def layer_of(part):
    if part.endswith("packet"):
        return PACKAGER
    return {
        "tool": TOOL,
        "Package": BASE,
        "PackageImpl": FACTORY,
        "Wrapton": INTERFACE,
        "implement": INTERFACE,
    }.get(part)


def own_includes(file):
    return re.findall(r'^\s*#\s*include\s+"([^"]+)"', file.read_text(), re.MULTILINE)


def sources():
    return sorted(path for path in SOURCE.rglob("*") if path.suffix in (".h", ".cpp"))


def is_public(name):
    return (INCLUDE / name).is_file()


def is_driver(file):
    """A driver's own header derives from CPackage."""
    header = file.with_suffix(".h")
    return header.is_file() and re.search(r":\s*public\s+CPackage\b", header.read_text()) is not None


class Includes(unittest.TestCase):
    def test_every_file_has_a_layer(self):
        self.assertGreater(len(sources()), 20)
        for file in sources():
            part = part_of(file.relative_to(SOURCE))
            self.assertIsNotNone(layer_of(part), f"{file}: what may it include?")

    def test_every_include_is_written_from_the_root(self):
        for file in sources():
            for name in own_includes(file):
                self.assertTrue(is_public(name) or (SOURCE / name).is_file(), f'{file}: "{name}"')

    def test_layers_point_downwards(self):
        for file in sources():
            part = part_of(file.relative_to(SOURCE))
            for name in own_includes(file):
                if is_public(name):
                    continue
                other = part_of(Path(name))
                if other != part:
                    self.assertGreater(layer_of(part), layer_of(other), f'{file}: "{name}"')

    def test_only_drivers_know_the_base_class(self):
        drivers = 0
        for file in sources():
            if layer_of(part_of(file.relative_to(SOURCE))) != PACKAGER:
                continue
            if is_driver(file):
                drivers += 1
                continue
            self.assertNotIn("Package.h", own_includes(file), file)
            text = re.sub(r"//.*|/\*.*?\*/", "", file.read_text())
            self.assertNotRegex(text, r"\bSGDataCB|\bfunc_datacb\b|\bSGOutputData\b", file)
        self.assertGreater(drivers, 2)

    def test_public_headers_include_no_source(self):
        for file in sorted(INCLUDE.glob("*.h")):
            for name in own_includes(file):
                self.assertTrue(is_public(name), f'{file}: "{name}"')

    def test_layout_is_written_through_the_cursors(self):
        for file in sources():
            text = file.read_text()
            self.assertNotRegex(text, r"\b(htons|htonl|ntohs|ntohl|htobe\w+|htole\w+)\s*\(", file)


if __name__ == "__main__":
    unittest.main(verbosity=2)
