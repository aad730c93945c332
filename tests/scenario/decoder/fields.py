"""Reading little-endian fields of a sentence; what lies outside it reads as zero."""

import struct
from dataclasses import dataclass

_FORMATS = {"u8": "<B", "u16": "<H", "u32": "<I", "i32": "<i", "float": "<f", "double": "<d"}


@dataclass(frozen=True)
class Sentence:
    """The bytes of a sentence and where its body begins."""

    data: bytes
    body: int = 0

    def read(self, offset: int, kind: str):
        """A number at a body offset."""
        layout = struct.Struct(_FORMATS[kind])
        start = self.body + offset
        if start + layout.size > len(self.data):
            return 0.0 if kind in ("float", "double") else 0
        return layout.unpack_from(self.data, start)[0]

    def text(self, offset: int, length: int) -> bytes:
        """So many bytes; none when they are not all there."""
        start = self.body + offset
        if length <= 0 or start + length > len(self.data):
            return b""
        return self.data[start:start + length]

    def block(self, table: tuple[tuple[int, str, str], ...], offset: int = 0) -> dict:
        """The fields of a table of (offset, kind, name)."""
        return {name: self._field(offset + at, kind) for at, kind, name in table}

    def _field(self, offset: int, kind: str):
        if kind.startswith("text"):
            return self.text(offset, int(kind[4:]))
        return self.read(offset, kind)
