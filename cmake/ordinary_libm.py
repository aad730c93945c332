#!/usr/bin/env python3
"""Copies the C library's PowerPC libm for an emulator that is stricter than the processors.

    cmake/ordinary_libm.py LIBM COPY

libm reads the floating-point status with instructions of newer processors (mffsl, mffscrn,
mffscrni), whose additional bits the older ones ignore: to them each is an mffs. QEMU 7.2 takes them
for illegal instead. In the copy each of them is the mffs that the controller's processor makes of
it.
"""

import struct
import sys
from pathlib import Path

OPCODE, MFFS = 0xFC0007FF, 0xFC00048E  # which instruction, whatever its operands
ADDITIONAL = 0x001FF800  # bits that an mffs does not look at


def ordinary(word: int) -> int:
    return word & ~ADDITIONAL if word & OPCODE == MFFS else word


def code_ranges(library: bytes) -> list[tuple[int, int]]:
    """The file ranges of the executable segments (ELF, 32-bit big-endian)."""
    if library[:6] != b"\x7fELF\x01\x02":
        sys.exit("not a 32-bit big-endian ELF file")
    start, = struct.unpack_from(">I", library, 28)
    size, count = struct.unpack_from(">2H", library, 42)
    headers = [struct.unpack_from(">8I", library, start + i * size) for i in range(count)]
    return [(offset, length) for kind, offset, _, _, length, _, flags, _ in headers
            if kind == 1 and flags & 1]


def main() -> int:
    if len(sys.argv) != 3:
        print(__doc__, file=sys.stderr)
        return 2
    library = bytearray(Path(sys.argv[1]).read_bytes())
    for offset, length in code_ranges(bytes(library)):
        layout = struct.Struct(f">{length // 4}I")
        words = layout.unpack_from(library, offset)
        layout.pack_into(library, offset, *map(ordinary, words))
    copy = Path(sys.argv[2])
    copy.parent.mkdir(parents=True, exist_ok=True)
    copy.write_bytes(library)
    return 0


if __name__ == "__main__":
    sys.exit(main())
