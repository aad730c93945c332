#!/usr/bin/env python3
"""Compares golden files with the independent decoder: `review_golden.py NAME|all [--records]`.

Prints the differences and fails when there is one. With --records it also prints every record with
all its fields, to be held against the receiver's manual by eye.
"""

import difflib
import sys

from decoder.run import offline_run
from harness import captures, places


def differences(name: str) -> list[str]:
    """A unified difference between the golden files and the decoder; none when they agree."""
    made = offline_run(places.capture(name).read_bytes())
    golden = captures.golden(name)
    pairs = (
        ("dump", golden.dump.decode("latin-1"), bytes(made.dump).decode("latin-1")),
        ("published", golden.published, "".join(line + "\n" for line in made.published)),
    )
    found = []
    for kind, left, right in pairs:
        found += difflib.unified_diff(left.splitlines(), right.splitlines(), f"{name}.{kind}",
                                      "decoder", lineterm="", n=1)
    return found


def print_records(name: str) -> None:
    for record in offline_run(places.capture(name).read_bytes()).records:
        print(f"{record.kind} {record.message_id}")
        print(f"    {record.header}\n    {record.content}")


def main() -> int:
    arguments = [each for each in sys.argv[1:] if each != "--records"]
    names = list(places.CAPTURE_NAMES) if arguments == ["all"] else arguments
    if not names or set(names) - set(places.CAPTURE_NAMES):
        print(__doc__, "Names:", *places.CAPTURE_NAMES, sep="\n", file=sys.stderr)
        return 2
    good = True
    for name in names:
        if places.capture(name) is None:
            print(f"skipped {name}: not in {places.CAPTURES}")
            continue
        found = differences(name)
        print("\n".join(found) if found else f"{name}: golden files and decoder agree")
        good = good and not found
        if "--records" in sys.argv:
            print_records(name)
    return 0 if good else 1


if __name__ == "__main__":
    sys.exit(main())
