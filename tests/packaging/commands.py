"""Other programs, for tests that install what was packaged."""

import subprocess


def run(*command, **options):
    """What a command prints. One that fails fails the test, with all that it printed."""
    result = subprocess.run(
        [str(part) for part in command],
        stdin=subprocess.DEVNULL,
        stdout=subprocess.PIPE,
        stderr=subprocess.STDOUT,
        text=True,
        check=False,
        **options,
    )
    if result.returncode != 0:
        raise AssertionError(f"{' '.join(map(str, command))}\n{result.stdout}")
    return result.stdout
