"""A stream of binary logs with wrong bits: which are whole, and which are lost with damaged ones.

Written apart from the framers of the decoder, so that one can be held against the other.
"""

import re
import zlib
from dataclasses import dataclass
from functools import reduce

from harness.simulator import SYNC

_NMEA = re.compile(rb"\$([^$*\r\n]*)\*([0-9A-F]{2})(?=[\r\n])")


@dataclass(frozen=True)
class Piece:
    """A part of a stream, from one byte up to another that does not belong to it."""

    begin: int
    end: int

    def overlaps(self, other: "Piece") -> bool:
        return self.begin < other.end and other.begin < self.end


def _log_at(stream: bytes, begin: int) -> Piece:
    """As long as its header says; up to the stream's end when that has not all come yet."""
    header = stream[begin:begin + 10]
    length = header[3] + int.from_bytes(header[8:], "little") + 4 if len(header) == 10 else 10
    return Piece(begin, begin + length)


def _is_right(stream: bytes, log: Piece) -> bool:
    if log.end > len(stream):
        return False
    # The receiver's CRC-32 starts from 0 and is not inverted at the end; zlib's does both.
    checksum = zlib.crc32(stream[log.begin:log.end - 4], 0xFFFFFFFF) ^ 0xFFFFFFFF
    return checksum == int.from_bytes(stream[log.end - 4:log.end], "little")


def whole_logs(stream: bytes) -> list[Piece]:
    """Every log without a wrong bit, wherever it stands; but those that others are about."""
    found, at = [], stream.find(SYNC)
    while at >= 0:
        log = _log_at(stream, at)
        if _is_right(stream, log):
            found.append(log)
            at = log.end - 1
        at = stream.find(SYNC, at + 1)
    return found


def damaged_pieces(stream: bytes) -> list[Piece]:
    """What a reader takes for a log that has wrong bits: with a wrong length it takes others in."""
    found, at = [], stream.find(SYNC)
    while at >= 0:
        piece = _log_at(stream, at)
        if not _is_right(stream, piece):
            found.append(piece)
        at = stream.find(SYNC, piece.end)
    return found


def whole_sentences(stream: bytes) -> list[str]:
    """Every NMEA sentence without a wrong bit."""
    return [match[0].decode("latin-1") for match in _NMEA.finditer(stream)
            if reduce(lambda left, right: left ^ right, match[1], 0) == int(match[2], 16)]
