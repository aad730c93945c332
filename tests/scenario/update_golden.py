#!/usr/bin/env python3
"""Writes the golden files of captures from runs of the daemon: `update_golden.py NAME|all`.

Then look at what changed: review_golden.py compares them with the independent decoder, and the
difference in version control is for your eyes.
"""

import os
import sys
import tempfile
from pathlib import Path

from harness import captures, namespace, places


def write(name: str) -> None:
    path = places.capture(name)
    if path is None:
        print(f"skipped {name}: not in {places.CAPTURES}")
        return
    with tempfile.TemporaryDirectory() as folder:
        captures.write_golden(name, captures.run_over(path, Path(folder)))
    print(f"wrote   {name}")


def main() -> int:
    names = list(places.CAPTURE_NAMES) if sys.argv[1:2] == ["all"] else sys.argv[1:]
    if not names or set(names) - {*places.CAPTURE_NAMES, "--inside"}:
        print(__doc__, "Names:", *places.CAPTURE_NAMES, sep="\n", file=sys.stderr)
        return 2
    if names[0] != "--inside":
        entering, reason = namespace.entering_command()
        if not entering:
            print(f"namespaces are impossible here: {reason}", file=sys.stderr)
            return 1
        here = os.path.abspath(__file__)
        os.execvp(entering[0], [*entering, sys.executable, here, "--inside", *names])
    namespace.settle_in()
    for name in names[1:]:
        write(name)
    return 0


if __name__ == "__main__":
    sys.exit(main())
