"""Logs that mean something: their bodies made of the few values that a test is about."""

import struct

from harness.sentences import binary, u32

PDPXYZ, RTKXYZ, PSRXYZ = 471, 244, 243
PSRSATS, RTKSATS, PDPSATS = 1162, 1174, 1234
PLACE = (4_000_000.5, 3_000_000.25, 3_900_000.125)  # metres; in the Near East


def cartesian(message_id: int, kind: int = 16, *, status: int = 0, milliseconds: int = 0,
              place: tuple[float, float, float] = PLACE, used: int = 7, extended: int = 0,
              mask: int = 0) -> bytes:
    body = struct.pack("<II3d3fII3d3f4s3f8B", status, kind, *place, 0.5, 1.5, 2.5, 0, 8,
                       1.0, -2.0, 0.125, 0.25, 0.25, 0.25, b"", 0.15, 2.0, 3.0, 9, used, 6, 5, 0,
                       extended, 0, mask)
    return binary(message_id, body, milliseconds=milliseconds)


def pdpstat(*, third: int = 1, phases: int = 9, milliseconds: int = 0) -> bytes:
    body = u32(1, 2, third, 4, phases) + struct.pack("<3d", 0.5, 1.25, 100.0)
    return binary(1085, body, milliseconds=milliseconds)


def psrdop(pdop: int, hdop: int) -> bytes:
    return binary(174, u32(0, pdop, hdop, 0, 0, 0, 0))


def satellites(message_id: int, *entries: tuple[int, int]) -> bytes:
    """Each by its system (0 GPS, 1 GLONASS) and its signal mask."""
    blocks = b"".join(u32(system, 1, 0, mask) for system, mask in entries)
    return binary(message_id, u32(len(entries)) + blocks)


def refstation(x: float, y: float, z: float) -> bytes:
    return binary(175, struct.pack("<I3dII8x", 0, x, y, z, 0, 0))


def bestpos(undulation: float, *, extended: int = 0, mask: int = 0) -> bytes:
    return binary(42, struct.pack("<32xf33xBxB", undulation, extended, mask))


def channel(prn: int, *, signal: int = 0, reject: int = 0, cn0: float = 44.5) -> bytes:
    return struct.pack("<HHIdffffIf", prn, 0, signal << 21, 0.0, 0.0, cn0, 0.0, 0.0, reject, 0.0)


def trackstat(*channels: bytes, milliseconds: int = 0, week: int = 1800) -> bytes:
    return binary(83, u32(0, 0, 0, len(channels)) + b"".join(channels), milliseconds=milliseconds,
                  week=week)


def rxstatus(error: int, *words: int, status: int = 0) -> bytes:
    """The status word of the header is not that of the body."""
    blocks = b"".join(u32(word, 0, 0, 0) for word in words)
    return binary(93, u32(error, len(words)) + blocks, status=status)


def comconfig(*ports: tuple[int, int, int, int]) -> bytes:
    """Each by its port, its speed, and its receive and transmit mode."""
    blocks = b"".join(u32(port, speed, 0, 8, 1, 0, 0, 1, receive, transmit, 1)
                      for port, speed, receive, transmit in ports)
    return binary(317, u32(len(ports)) + blocks)


def _component(kind: int, model: bytes, software: bytes) -> bytes:
    return struct.pack("<I16s16s16s16s16s12s12s", kind, model, b"serial", b"hardware", software,
                       b"", b"", b"")


def _version(*components: bytes) -> bytes:
    return binary(37, u32(len(components)) + b"".join(components))


def version(*components: tuple[int, bytes]) -> bytes:
    """Each by its type and its software version."""
    return _version(*(_component(kind, b"model", software) for kind, software in components))


def models(*components: tuple[int, bytes]) -> bytes:
    """A VERSION; each by its type and its model."""
    return _version(*(_component(kind, model, b"software") for kind, model in components))


def chanconfiglist(in_use: int, *sets: tuple[tuple[int, int], ...]) -> bytes:
    """Each set by its pairs of a channel count and a signal type."""
    blocks = b"".join(u32(len(pairs), *(value for pair in pairs for value in pair))
                      for pairs in sets)
    return binary(1148, u32(in_use, len(sets)) + blocks)


def time(milliseconds: int) -> bytes:
    return binary(101, bytes(44), milliseconds=milliseconds)
