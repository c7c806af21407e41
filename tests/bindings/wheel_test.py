"""Builds wheel and source archive of the Python package, and runs its tests from the wheel alone."""

import os
import shutil
import subprocess
import sys
import tarfile
import tempfile
import unittest
import zipfile
from pathlib import Path

SOURCE = Path(sys.argv.pop(1))
PACKAGE = SOURCE / "bindings" / "python"

SKIPPED = 77
BUILD = "import setuptools.build_meta as b, sys; out = sys.argv[1]; b.build_sdist(out); b.build_wheel(out)"


def builder():
    """A Python that has what pyproject.toml asks for: this one, or the system's."""
    for python in (sys.executable, "/usr/bin/python3"):
        asked = [python, "-c", "import setuptools, wheel; assert int(setuptools.__version__.split('.')[0]) >= 61"]
        if shutil.which(python) and subprocess.run(asked, capture_output=True, check=False).returncode == 0:
            return python
    return None


class Wheel(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        cls.scratch = Path(tempfile.mkdtemp(prefix="wrapton-wheel-"))
        cls.addClassCleanup(shutil.rmtree, cls.scratch)
        # Setuptools leaves its own files beside what it builds.
        copy = shutil.copytree(PACKAGE, cls.scratch / "source", ignore=shutil.ignore_patterns("build", "*.egg-info", ".*"))
        done = subprocess.run(
            [builder(), "-c", BUILD, cls.scratch], cwd=copy, capture_output=True, text=True, check=False
        )
        if done.returncode != 0:
            raise AssertionError(done.stdout + done.stderr)
        cls.wheel = cls.scratch / "wrapton-1.0.0-py3-none-any.whl"
        cls.archive = cls.scratch / "wrapton-1.0.0.tar.gz"

    def test_the_wheel_holds_the_package_its_types_and_the_license(self):
        names = set(zipfile.ZipFile(self.wheel).namelist())
        modules = {f"wrapton/{path.name}" for path in (PACKAGE / "wrapton").iterdir() if path.is_file()}
        self.assertIn("wrapton/py.typed", modules)
        self.assertEqual({name for name in names if ".dist-info/" not in name}, modules)
        self.assertIn("wrapton-1.0.0.dist-info/LICENSE", names)

    def test_the_archive_builds_and_shows_an_example(self):
        with tarfile.open(self.archive) as archive:
            names = {name.removeprefix("wrapton-1.0.0/") for name in archive.getnames()}
        self.assertLessEqual({"pyproject.toml", "README.md", "LICENSE", "examples/record.py", "wrapton/py.typed"}, names)

    def test_the_tests_pass_from_the_wheel(self):
        installed = self.scratch / "installed"
        zipfile.ZipFile(self.wheel).extractall(installed)
        environment = dict(os.environ, PYTHONPATH=str(installed), WRAPTON_SOURCE=str(SOURCE))
        program = self.scratch / "test_wrapton.py"  # not beside the package's sources
        shutil.copy(PACKAGE / "tests" / "test_wrapton.py", program)
        where = [sys.executable, "-c", "import wrapton; print(wrapton.__file__)"]
        found = subprocess.run(where, env=environment, capture_output=True, text=True, check=True).stdout
        self.assertEqual(Path(found.strip()).parent, installed / "wrapton")
        done = subprocess.run(
            [sys.executable, "-B", program], env=environment, capture_output=True, text=True, check=False
        )
        self.assertEqual(done.returncode, 0, done.stderr)


if __name__ == "__main__":
    if builder() is None:
        print("setuptools and wheel are not installed")
        sys.exit(SKIPPED)
    unittest.main(verbosity=2)
