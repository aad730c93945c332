"""Where things are: the checkout, the built programs, the real captures, the golden files."""

import os
from pathlib import Path

SCENARIOS = Path(__file__).resolve().parent.parent
CHECKOUT = SCENARIOS.parent.parent
GOLDEN = CHECKOUT / "tests" / "data" / "golden"
SAMPLES = CHECKOUT / "tests" / "data"
SAMPLE_NAMES = ("sample.gps",)
CAPTURES = CHECKOUT.parent / "shared" / "data"
CAPTURE_NAMES = (
    *SAMPLE_NAMES,
    "gavlab-OneEach.GPS",
    "gavlab-ParsingData.GPS",
    "gavlab-test2_rcvr2.dat",
    "gpsd-isync.nmea",
    "rtklib-oemv.gps",
)


def binaries() -> Path:
    """The folder of the programs under test."""
    folder = os.environ.get("CORVANE_BIN")
    return Path(folder).resolve() if folder else CHECKOUT / "build" / "release" / "bin"


def capture(name: str) -> Path | None:
    """A made-up capture, or a real one; None on a machine that does not have it."""
    path = (SAMPLES if name in SAMPLE_NAMES else CAPTURES) / name
    return path if path.is_file() else None
