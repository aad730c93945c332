"""Recordings: classic pcap files, one recorded block a packet, written and read."""

import struct
from dataclasses import dataclass

USER0 = 147
_MAGIC = {1_000_000: 0xA1B2C3D4, 1_000_000_000: 0xA1B23C4D}  # by units in a second


@dataclass(frozen=True)
class Block:
    """What was received at one moment, seconds since the Unix epoch."""

    time: float
    data: bytes


def write(blocks: list[Block], *, big_endian: bool = False, nanoseconds: bool = False,
          link_type: int = USER0) -> bytes:
    order, unit = ">" if big_endian else "<", 1_000_000_000 if nanoseconds else 1_000_000
    parts = [struct.pack(f"{order}IHHiIII", _MAGIC[unit], 2, 4, 0, 0, 65535, link_type)]
    for block in blocks:
        seconds, fraction = divmod(round(block.time * unit), unit)
        length = len(block.data)
        parts.append(struct.pack(f"{order}IIII", seconds, fraction, length, length) + block.data)
    return b"".join(parts)


def read(data: bytes) -> list[Block]:
    """Every whole block. Raises ValueError when it is no such file."""
    for order in "<>":
        for unit, magic in _MAGIC.items():
            if data[:4] == struct.pack(f"{order}I", magic):
                return _blocks(data[24:], order, unit)
    raise ValueError("not a classic pcap file")


def _blocks(data: bytes, order: str, unit: int) -> list[Block]:
    blocks, at = [], 0
    while at + 16 <= len(data):
        seconds, fraction, length, _ = struct.unpack_from(f"{order}IIII", data, at)
        if at + 16 + length > len(data):
            break
        blocks.append(Block(seconds + fraction / unit, data[at + 16:at + 16 + length]))
        at += 16 + length
    return blocks
