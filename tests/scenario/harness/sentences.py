"""What a receiver says: sentences of the three kinds, with right checksums."""

import struct
import zlib
from functools import reduce

WEEK = 1800
UNKNOWN_LOG = 999  # an identifier that no log of the daemon has
HEADER_LENGTH = 28


def u32(*values: int) -> bytes:
    return struct.pack(f"<{len(values)}I", *values)


def _crc(data: bytes) -> int:
    # The receiver's CRC-32 starts from 0 and is not inverted at the end; zlib's does both.
    return zlib.crc32(data, 0xFFFFFFFF) ^ 0xFFFFFFFF


def binary(message_id: int, body: bytes = b"", *, milliseconds: int = 0, week: int = WEEK,
           message_type: int = 2, padding: bytes = b"", status: int = 0,
           idle: int = 100) -> bytes:
    """A binary log; `padding` lengthens the header, `idle` is in half percents."""
    header = struct.pack("<3sBHBBHHBBHIIHH", b"\xaa\x44\x12", HEADER_LENGTH + len(padding),
                         message_id, message_type, 0x20, len(body), 0, idle, 180, week,
                         milliseconds, status, 0, 3153)
    sentence = header + padding + body
    return sentence + u32(_crc(sentence))


def numbered(number: int, message_id: int = UNKNOWN_LOG) -> bytes:
    """A log whose time of week is the number, in seconds, so that it can be told from others."""
    return binary(message_id, milliseconds=number * 1000)


def series(first: int, last: int) -> bytes:
    """Numbered logs one after another."""
    return b"".join(numbered(number) for number in range(first, last + 1))


def response(message_id: int, identifier: int, text: bytes) -> bytes:
    return binary(message_id, u32(identifier) + text, message_type=0x80)


def ascii_log(name: str, body: str | bytes) -> bytes:
    text = f"{name},USB2,0,97.5,UNKNOWN,0,0.186,004c0001,2d64,3153;".encode()
    text += body if isinstance(body, bytes) else body.encode()
    return b"#" + text + f"*{_crc(text):08x}\r\n".encode()


def nmea(text: str) -> bytes:
    checksum = reduce(lambda left, right: left ^ right, text.encode(), 0)
    return f"${text}*{checksum:02X}\r\n".encode()
