"""The binary interface is that of the kept baseline, compared by abidiff: nothing gone, nothing changed.

What was added is told apart from that: it asks for a new baseline, by scripts/update-abi-baseline.sh.
"""

import shutil
import subprocess
import sys

SKIPPED = 77
# abidiff's exit code is a set of bits.
ERROR, CHANGE, INCOMPATIBLE = 1, 4, 8


def main(library, baseline, headers):
    if shutil.which("abidiff") is None:
        print("abidiff is not installed")
        return SKIPPED
    sections = subprocess.run(["readelf", "-S", "--wide", library], capture_output=True, text=True, check=True).stdout
    if ".debug_info" not in sections:
        print("the library was built without debug information")
        return SKIPPED
    command = ["abidiff", "--headers-dir2", headers, "--exported-interfaces-only", "--drop-private-types", baseline, library]
    result = subprocess.run(command, capture_output=True, text=True, check=False)
    print(result.stdout + result.stderr)
    if result.returncode & ERROR:
        return 1
    if result.returncode & INCOMPATIBLE:
        print("The binary interface has changed: programs built before would break.")
        return 1
    if result.returncode & CHANGE:
        print("The binary interface has grown or moved: run scripts/update-abi-baseline.sh if that is meant.")
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(*sys.argv[1:4]))
