#!/usr/bin/env python3
"""Makes sample.gps, a made-up capture: what a receiver might say in ten seconds, and some noise.

It is for trying the daemon without a receiver, and has something for nearly all that the daemon
publishes. First the receiver tells of itself: VERSION, RXSTATUS, COMCONFIG, CHANCONFIGLIST and the
REFSTATION of its corrections. Then each second: TIME, the satellites it tracks, measures and uses,
its positions, three NMEA sentences, and the PDPSTAT that closes the epoch. The RTK position goes
from single over float to a fixed one; in the seventh and eighth second the PDP filter has lost its
phase measurements. Between them a prompt, a command's response, a sentence with a wrong checksum,
and at the end a cut one.
"""

import struct
import sys
from pathlib import Path

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "scenario"))

from harness.sentences import binary, nmea, response, u32  # noqa: E402

START = 345_600_000  # milliseconds of week
SECONDS = 10
X, Y, Z = -2_694_045.1, -4_297_222.7, 3_854_482.3  # a point of WGS-84 in California
BASE = (-2_694_892.411, -4_296_520.036, 3_854_673.908)  # some 1.1 km away
BASE_NAME = b"0042"
ALMANAC_INVALID = 0x00040000  # a bit of the receiver status word
ALMANAC_SECONDS = 3  # after which the receiver has its almanac

GPS = (2, 5, 12, 25)
ACQUIRED_GPS = 29  # seen, and not yet measured
GLONASS = ((8, 6), (19, 3))  # slot and frequency channel
SBAS = (135, 138)
PHASES_LOST = (6, 7)  # seconds; the first is warned of, the second begins the lockout

SINGLE, DIFFERENTIAL, FLOAT, FIXED = 16, 17, 34, 50  # position types
RTK_TYPES = (SINGLE,) * 2 + (DIFFERENTIAL,) * 2 + (FLOAT,) * 3 + (FIXED,) * 3  # by the second
SIGMA = {SINGLE: 1.2, DIFFERENTIAL: 0.6, FLOAT: 0.25, FIXED: 0.012}  # metres
DOPPLER_VELOCITY = 8
GOOD, NO_L2_ALONE, NO_OBSERVATION = 0, 13, 99  # reject codes

# Channel tracking status words; the number of the channel is added at bit 5.
GPS_L1, GPS_L2, GPS_SEARCH = 0x08109C04, 0x01309C0B, 0x08008082
GLONASS_L1, GLONASS_L2 = 0x08119C04, 0x00B19C0B
SBAS_L1, IDLE = 0x08029C04, 0x080080C0
FIRST_GLONASS_CHANNEL = 16


def log(message_id: int, body: bytes, time: int) -> bytes:
    """With a header whose status word and idle time change now and then."""
    second = (time - START) // 1000
    return binary(message_id, body, milliseconds=time, idle=131 + second // 4,
                  status=ALMANAC_INVALID if second < ALMANAC_SECONDS else 0)


def text(value: str, width: int) -> bytes:
    return value.encode().ljust(width, b"\0")


# --- what the receiver is


def version() -> bytes:
    component = u32(1) + text("L12LGRV", 16) + text("DAB00000001", 16) + text("OEMV3G-1.00", 16) \
        + text("3.701", 16) + text("3.000", 16) + text("2010/Apr/29", 12) + text("16:11:14", 12)
    return log(37, u32(1) + component, START)


def rxstatus() -> bytes:
    words = u32(ALMANAC_INVALID, 0, 0, 0) + u32(0x87, 8, 0, 0) + u32(0x20D, 0, 0x289, 0x289) \
        + u32(0x10, 0x28, 0x6FF, 0x6FF)
    return log(93, u32(0, 4) + words, START)


def comconfig() -> bytes:
    """Commands on COM1 and USB1; on COM2 corrections come in and nothing goes out."""
    ports = ((1, 115200, 1, 1), (2, 38400, 4, 0), (3, 9600, 1, 1), (13, 9600, 1, 1))
    blocks = b"".join(u32(port, speed, 0, 8, 1, 0, 0, 1, receive, transmit, 1)
                      for port, speed, receive, transmit in ports)
    return log(317, u32(len(ports)) + blocks, START)


def chanconfiglist() -> bytes:
    gps_and_sbas = u32(2) + u32(14, 1) + u32(2, 4)  # number of channels, signal type
    with_glonass = u32(3) + u32(14, 1) + u32(2, 4) + u32(12, 8)
    return log(1148, u32(2, 2) + gps_and_sbas + with_glonass, START)


def refstation() -> bytes:
    return log(175, struct.pack("<I3dII8s", 0, *BASE, 0, 3, BASE_NAME), START)


# --- what it tracks and measures


def measurements(time: int) -> bytes:
    blocks = b"".join(
        struct.pack("<HHdfdffffI", prn, 0, 2.1e7 + 1e5 * prn, 0.05, -1.1e8 - 5e5 * prn, 0.01,
                    100.0 * prn - 1500.0, 44.0 + prn % 5, 60.0, GPS_L1)
        for prn in GPS)
    return log(43, u32(len(GPS)) + blocks, time)


def channel(prn: int, word: int, number: int, cn0: float, reject: int = GOOD,
            frequency: int = 0) -> bytes:
    measured = reject != NO_OBSERVATION
    return struct.pack("<HHIdffffIf", prn, frequency, word | number << 5,
                       2.1e7 + 1e5 * prn if measured else 0.0, 10.0 * prn - 300.0, cn0,
                       60.0 if measured else 0.0, 0.4 if reject == GOOD else 0.0, reject,
                       1.0 if reject == GOOD else 0.0)


def trackstat(time: int) -> bytes:
    """L1 and L2 of every GPS and GLONASS satellite, SBAS, one being acquired, one idle channel."""
    second = (time - START) // 1000
    channels = []
    for number, prn in enumerate(GPS):
        channels += [channel(prn, GPS_L1, number, 44.0 + prn % 5 + 0.1 * second),
                     channel(prn, GPS_L2, number, 38.5 + prn % 5, NO_L2_ALONE)]
    for number, (slot, hop) in enumerate(GLONASS, FIRST_GLONASS_CHANNEL):
        channels += [channel(slot + 37, GLONASS_L1, number, 45.5, frequency=hop + 7),
                     channel(slot + 37, GLONASS_L2, number, 39.25, NO_L2_ALONE, hop + 7)]
    channels += [channel(prn, SBAS_L1, 28 + at, 41.75) for at, prn in enumerate(SBAS)]
    channels += [channel(ACQUIRED_GPS, GPS_SEARCH, 4, 31.5, NO_OBSERVATION),
                 channel(0, IDLE, 5, 0.0, NO_OBSERVATION)]
    return log(83, struct.pack("<IIfI", 0, SINGLE, 5.0, len(channels)) + b"".join(channels), time)


def satellites(message_id: int, gps_mask: int, glonass_mask: int, time: int) -> bytes:
    """Which satellites a solution uses, and which of their signals (bit 0 L1, bit 1 L2)."""
    entries = [struct.pack("<IHhII", 0, prn, 0, GOOD, gps_mask) for prn in GPS]
    entries += [struct.pack("<IHhII", 1, slot, hop, GOOD, glonass_mask) for slot, hop in GLONASS]
    return log(message_id, u32(len(entries)) + b"".join(entries), time)


def receiver_time(time: int) -> bytes:
    """Also in UTC, 16 leap seconds behind: just before midnight of 9 July 2014."""
    second = (time - START) // 1000
    body = struct.pack("<I3dI4BII", 0, 1.2e-9, 2.1e-8, -16.0, 2014, 7, 9, 23, 59,
                       44_000 + 1000 * second, 1)
    return log(101, body, time)


# --- where it is


def bestpos(time: int) -> bytes:
    body = struct.pack("<IIdddfIfff4sff8B", 0, SINGLE, 37.41905, -122.08413, 38.2, -32.3, 61,
                       1.1, 1.2, 2.4, b"", 0.0, 0.0, 12, 12, 0, 0, 0, 6, 0, 3)
    return log(42, body, time)


def cartesian(message_id: int, time: int, kind: int) -> bytes:
    """A solution of some position type; less exact ones are further off."""
    off = SIGMA[kind] * ((time - START) // 1000 % 5 - 2) / 2
    corrected = kind != SINGLE
    body = struct.pack("<IIdddfffIIdddfff4sfff8B", 0, kind, X + off, Y - off, Z + off,
                       SIGMA[kind], SIGMA[kind], SIGMA[kind] * 1.5, 0, DOPPLER_VELOCITY,
                       0.01, -0.02, 0.0, 0.16, 0.2, 0.18, BASE_NAME if corrected else b"", 0.15,
                       1.0 if corrected else 0.0, 0.0, 8, 6, 6, 6 if kind == FIXED else 0, 0,
                       7 if kind == FIXED else 6, 0, 0x33)
    return log(message_id, body, time)


def psrdop(time: int) -> bytes:
    return log(174, struct.pack("<6f", 1.73, 1.53, 0.8, 1.13, 0.81, 5.0) + u32(len(GPS), *GPS),
               time)


def pdpstat(time: int) -> bytes:
    second = (time - START) // 1000
    phases = 0 if second in PHASES_LOST else 9
    return log(1085, u32(0, 0, 1, 9, phases) + struct.pack("<3d", 0.85, 0.00125, 0.5), time)


def sentences(number: int) -> bytes:
    gsa = nmea("GPGSA,M,3,02,05,12,25,,,,,,,,,1.7,0.8,1.5")
    gsv = nmea("GPGSV,1,1,04,02,61,045,46,05,33,120,44,12,47,287,46,25,18,210,44")
    return gsa + gsv + nmea(f"GPZDA,2359{44 + number:02d}.00,09,07,2014,,")


def second(number: int) -> bytes:
    time = START + 1000 * number
    used = satellites(1162, 3, 1, time) + satellites(1174, 3, 3, time) + satellites(1234, 1, 0,
                                                                                    time)
    positions = bestpos(time) + cartesian(241, time, SINGLE) + cartesian(243, time, SINGLE) \
        + cartesian(244, time, RTK_TYPES[number]) + cartesian(471, time, SINGLE)
    return (receiver_time(time) + trackstat(time) + measurements(time) + used + psrdop(time)
            + positions + sentences(number) + pdpstat(time))


def sample() -> bytes:
    stream = [version(), b"\r\n<OK\r\n[COM1]", response(1, 1, b"OK")]
    stream += [rxstatus(), comconfig(), chanconfiglist(), refstation()]
    stream += [second(number) for number in range(SECONDS)]
    stream.insert(-6, nmea("GPZDA,1")[:-4] + b"00\r\n")
    return b"".join(stream) + bestpos(START + 1000 * SECONDS)[:60]


if __name__ == "__main__":
    (HERE / "sample.gps").write_bytes(sample())
