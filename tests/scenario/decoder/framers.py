"""The three framers: cut a byte stream into whole sentences with right checksums."""

from collections.abc import Iterator

GOOD, REJECTED = 1, -1
HEX_DIGITS = b"0123456789abcdefABCDEF"


def crc32(data: bytes) -> int:
    """The receiver's CRC: reflected 0xEDB88320, starting from 0, not inverted at the end."""
    value = 0
    for byte in data:
        value ^= byte
        for _ in range(8):
            value = (value >> 1) ^ (0xEDB88320 if value & 1 else 0)
    return value


def leading_hex(text: bytes) -> int:
    """What C's strtoul makes of a text in base 16, kept to 32 bits; 0 when it starts otherwise."""
    text = text.split(b"\0")[0].lstrip(b" \t\n\v\f\r")
    negative = text[:1] == b"-"
    if text[:1] in (b"-", b"+"):
        text = text[1:]
    if text[:2].lower() == b"0x" and text[2:3] and text[2:3] in HEX_DIGITS:
        text = text[2:]
    length = next((at for at, byte in enumerate(text) if byte not in HEX_DIGITS), len(text))
    value = int(text[:length] or b"0", 16)
    return (-value if negative else value) & 0xFFFFFFFF


class BinaryFramer:
    """AA 44 12, the header length, ..., the body length at 8, ..., and the CRC at the end."""

    def __init__(self) -> None:
        self._sentence = bytearray()
        self._state = self._hunting
        self._total = 0

    def feed(self, chunk: bytes) -> Iterator[tuple[int, bytes]]:
        """Yields (GOOD, sentence) and (REJECTED, b"") in the order in which they are found."""
        for byte in chunk:
            before = self._state
            result = before(byte)
            if before == self._second and self._state == self._hunting:
                self._hunting(byte)  # only here is the byte that did not fit looked at again
            if result is not None:
                yield result

    def _go_on(self, byte: int, state) -> None:
        self._sentence.append(byte)
        self._state = state

    def _give_up(self) -> None:
        self._sentence.clear()
        self._state = self._hunting

    def _hunting(self, byte: int) -> None:
        if byte == 0xAA:
            self._sentence.clear()
            self._go_on(byte, self._second)

    def _second(self, byte: int) -> None:
        self._go_on(byte, self._third) if byte == 0x44 else self._give_up()

    def _third(self, byte: int) -> None:
        self._go_on(byte, self._header_length) if byte == 0x12 else self._give_up()

    def _header_length(self, byte: int) -> None:
        self._go_on(byte, self._up_to_body_length)

    def _up_to_body_length(self, byte: int) -> None:
        self._go_on(byte, self._up_to_body_length)
        if len(self._sentence) == 10:
            self._total = self._sentence[3] + int.from_bytes(self._sentence[8:10], "little") + 4
            self._state = self._up_to_the_end

    def _up_to_the_end(self, byte: int) -> tuple[int, bytes] | None:
        self._sentence.append(byte)
        if len(self._sentence) < self._total:
            return None
        sentence = bytes(self._sentence)
        self._give_up()
        if crc32(sentence[:-4]) == int.from_bytes(sentence[-4:], "little"):
            return GOOD, sentence
        return REJECTED, b""


class TextFramer:
    """From a start character to a CR or LF; a start character inside starts again."""

    def __init__(self, start: bytes, limit: int, is_right) -> None:
        self._start = start[0]
        self._limit = limit
        self._is_right = is_right
        self._sentence: bytearray | None = None

    def feed(self, chunk: bytes) -> Iterator[tuple[int, bytes]]:
        for byte in chunk:
            if byte == self._start:
                self._sentence = bytearray([byte])
            elif self._sentence is not None:
                result = self._inside(byte)
                if result is not None:
                    yield result

    def _inside(self, byte: int) -> tuple[int, bytes] | None:
        if byte in b"\r\n":
            sentence = bytes(self._sentence)
            self._sentence = None
            return (GOOD, sentence) if self._is_right(sentence) else (REJECTED, b"")
        if len(self._sentence) > self._limit:
            self._sentence = None
            return REJECTED, b""
        self._sentence.append(byte)
        return None


def ascii_is_right(sentence: bytes) -> bool:
    star = sentence.rfind(b"*")
    if len(sentence) <= 9 or star < 2:
        return False
    text, checksum = sentence[1:star], sentence[star + 1:]
    if len(text) < 2 or len(checksum) < 8:
        return False
    return crc32(text) == leading_hex(checksum[:8])


def nmea_is_right(sentence: bytes) -> bool:
    star = sentence.find(b"*")
    checksum = sentence[star + 1:]
    if star < 0 or len(checksum) < 2:
        return False
    value = 0
    for byte in sentence[1:star] or b"*":  # an empty text counts as the star itself
        value ^= byte
    return value == leading_hex(checksum[:2]) & 0xFF


def framers() -> list:
    """One of each kind, in the order in which a port asks them."""
    return [BinaryFramer(), TextFramer(b"#", 4096, ascii_is_right),
            TextFramer(b"$", 1024, nmea_is_right)]
