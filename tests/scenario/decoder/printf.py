"""Numbers and texts as they arrive at the collecting server: C's printf, then JSON."""

import codecs
import math
import re
import struct

_BY_NUMBER = "decoder.by_number"


def real(conversion: str, value: float) -> str:
    """A double, by a conversion such as "%5.2f"; of what is not finite C writes the sign too."""
    if math.isfinite(value):
        return conversion % value
    word = "nan" if math.isnan(value) else "inf"
    sign = "-" if math.copysign(1.0, value) < 0.0 else ""
    width = re.match(r"%(\d*)", conversion)[1]
    return (sign + word).rjust(int(width or 0))


def signed(value: int) -> int:
    """What "%d" shows of an unsigned 32-bit number."""
    return (value + 0x80000000) % 0x100000000 - 0x80000000


def number(value: float) -> float | None:
    """A double in JSON, which has no infinities and no NaN."""
    return float(value) if math.isfinite(value) else None


def single(value: int) -> float:
    """An unsigned 32-bit number by value in a 32-bit float."""
    return struct.unpack("<f", struct.pack("<f", value))[0]


def text(data: bytes) -> str:
    """A C string up to its zero byte; a byte that is no UTF-8 is the character of its number."""
    return c_string(data).decode("utf-8", errors=_BY_NUMBER)


def c_string(data: bytes) -> bytes:
    return data.split(b"\0")[0]


def leading_integer(data: bytes) -> int | None:
    """The decimal number that a text starts with; None without one, or past 32 bits."""
    found = re.match(rb"[ \t\n\v\f\r]*([+-]?[0-9]+)", data)
    if found is None or not -0x80000000 <= int(found[1]) <= 0x7FFFFFFF:
        return None
    return int(found[1])


def _by_number(error: UnicodeDecodeError) -> tuple[str, int]:
    return chr(error.object[error.start]), error.start + 1


codecs.register_error(_BY_NUMBER, _by_number)
