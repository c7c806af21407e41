"""Runs the code of the documents.

A block that is a whole program is built and run. Any other stands, line for line, in an example, which has tests of
its own; pieces of C++ that do not are compiled among the names that they use. Python is run where `pictures` holds one
key picture.
"""

import os
import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(sys.argv.pop(1))
LIBRARY = Path(sys.argv.pop(1))
C_COMPILER = sys.argv.pop(1)
CXX_COMPILER = sys.argv.pop(1)

DOCUMENTS = [ROOT / "README.md", ROOT / "bindings/python/README.md", *sorted((ROOT / "docs").rglob("*.md"))]
EXAMPLES = [path for path in sorted((ROOT / "examples").iterdir()) if path.suffix in (".c", ".cpp")]
PICTURES = 'pictures = [bytes.fromhex("00000001 6742001F 00000001 68CE 00000001 658884")]\n'


def blocks(language):
    for document in DOCUMENTS:
        for code in re.findall(rf"^```{language}\n(.*?)^```", document.read_text(), re.MULTILINE | re.DOTALL):
            yield document.name, code


def lines(text):
    return [line.strip() for line in text.splitlines() if line.strip()]


def stands_in_an_example(code):
    wanted = "\n".join(lines(code))
    return any(wanted in "\n".join(lines(path.read_text())) for path in EXAMPLES)

AROUND = """\
#include <fstream>
#include <wrapton/IFilePackage.h>
#include <wrapton/IWrapton.h>
#include <wrapton/wrapton.hpp>
using namespace Orbel::Wrapton;
void Piece(const unsigned char* bytes, unsigned int size, const FrameAttributes& attributes, std::ofstream& output);
void Piece([[maybe_unused]] const unsigned char* bytes,
           [[maybe_unused]] unsigned int size,
           [[maybe_unused]] const FrameAttributes& attributes,
           [[maybe_unused]] std::ofstream& output)
{
"""


class Code(unittest.TestCase):
    def setUp(self):
        directory = tempfile.TemporaryDirectory()
        self.addCleanup(directory.cleanup)
        self.directory = Path(directory.name)
        include = self.directory / "wrapton"
        include.symlink_to(ROOT / "Include")

    def run_program(self, command, **environment):
        environment = dict(os.environ, LD_LIBRARY_PATH=str(LIBRARY), **environment)
        done = subprocess.run(
            [str(part) for part in command],
            cwd=self.directory,
            env=environment,
            stdout=subprocess.PIPE,
            stderr=subprocess.STDOUT,
            text=True,
            check=False,
        )
        self.assertEqual(done.returncode, 0, done.stdout)

    def compile_and_run(self, language, suffix, compiler, *options):
        count = 0
        for name, code in blocks(language):
            with self.subTest(document=name, code=code[:60]):
                count += 1
                source = self.directory / f"program{suffix}"
                if "int main(" not in code:
                    if not stands_in_an_example(code):
                        self.assertEqual(suffix, ".cpp", code)
                        source.write_text(AROUND + code + "}\n")
                        self.run_program([compiler, *options, f"-I{self.directory}", "-c", source, "-o", "/dev/null"])
                    continue
                source.write_text(code)
                program = self.directory / "program"
                link = [f"-I{self.directory}", f"-L{LIBRARY}", "-lwrapton", "-o", program]
                self.run_program([compiler, *options, "-Wall", "-Werror", source, *link])
                self.run_program([program])
        self.assertGreater(count, 0)

    def test_c(self):
        self.compile_and_run("c", ".c", C_COMPILER, "-std=c99")

    def test_cpp(self):
        self.compile_and_run("cpp", ".cpp", CXX_COMPILER, "-std=c++20")

    def test_python(self):
        python = ROOT / "bindings" / "python"
        for name, code in blocks("python"):
            with self.subTest(document=name):
                source = self.directory / "program.py"
                source.write_text(PICTURES + code)
                self.run_program(
                    [sys.executable, "-B", source],
                    PYTHONPATH=str(python),
                    WRAPTON_LIBRARY=str(LIBRARY / "libwrapton.so"),
                )

    def test_links_lead_somewhere(self):
        for document in DOCUMENTS:
            for target in re.findall(r"\]\(([^)#:]+)[^):]*\)", document.read_text()):
                self.assertTrue((document.parent / target).exists(), f"{document.name}: {target}")


if __name__ == "__main__":
    unittest.main(verbosity=2)
