#!/usr/bin/env python3
"""Makes sample.gps, a made-up capture: what a receiver might say in ten seconds, and some noise.

It is for trying the daemon without a receiver. It has a VERSION, then each second a BESTPOS, a
BESTXYZ, a RANGE of four signals, two NMEA sentences and the PDPSTAT that closes the epoch; between
them a prompt, a command's response, a sentence with a wrong checksum, and at the end a cut one.
"""

import struct
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "scenario"))

from harness.sentences import binary, nmea, response, u32  # noqa: E402

START = 345_600_000  # milliseconds of week
X, Y, Z = -2_694_045.1, -4_297_222.7, 3_854_482.3  # a point of WGS-84 in California


def text(value: str, width: int) -> bytes:
    return value.encode().ljust(width, b"\0")


def version() -> bytes:
    component = u32(1) + text("L12LGRV", 16) + text("DAB00000001", 16) + text("OEMV3G-1.00", 16) \
        + text("3.701", 16) + text("3.000", 16) + text("2010/Apr/29", 12) + text("16:11:14", 12)
    return binary(37, u32(1) + component, milliseconds=START)


def bestpos(time: int) -> bytes:
    body = struct.pack("<IIdddfIfff4sff8B", 0, 16, 37.41905, -122.08413, 38.2, -32.3, 61,
                       1.1, 1.2, 2.4, b"", 0.0, 0.0, 12, 12, 0, 0, 0, 6, 0, 3)
    return binary(42, body, milliseconds=time)


def bestxyz(time: int) -> bytes:
    body = struct.pack("<IIdddfffIIdddfff4sfff8B", 0, 16, X, Y, Z, 1.1, 1.3, 1.2,
                       0, 8, 0.01, -0.02, 0.0, 0.16, 0.2, 0.18, b"", 0.15, 0.0, 0.0,
                       12, 12, 0, 0, 0, 6, 0, 3)
    return binary(241, body, milliseconds=time)


def measurements(time: int) -> bytes:
    blocks = b"".join(
        struct.pack("<HHdfdffffI", prn, 0, 2.1e7 + 1e5 * prn, 0.05, -1.1e8 - 5e5 * prn, 0.01,
                    100.0 * prn - 1500.0, 44.0 + prn % 5, 60.0, 0x08109C04)
        for prn in (2, 5, 12, 25))
    return binary(43, u32(4) + blocks, milliseconds=time)


def pdpstat(time: int) -> bytes:
    return binary(1085, u32(0, 0, 0, 0, 9) + struct.pack("<3d", 0.0, 0.0, 0.0), milliseconds=time)


def second(number: int) -> bytes:
    time = START + 1000 * number
    gsa = nmea("GPGSA,M,3,02,05,12,25,,,,,,,,,1.7,0.8,1.5")
    zda = nmea(f"GPZDA,0000{number:02d}.00,10,07,2014,,")
    return bestpos(time) + bestxyz(time) + measurements(time) + gsa + zda + pdpstat(time)


def sample() -> bytes:
    stream = [version(), b"\r\n<OK\r\n[COM1]", response(1, 1, b"OK")]
    stream += [second(number) for number in range(10)]
    stream.insert(7, nmea("GPZDA,1")[:-4] + b"00\r\n")
    return b"".join(stream) + bestpos(START + 10_000)[:60]


if __name__ == "__main__":
    (HERE / "sample.gps").write_bytes(sample())
