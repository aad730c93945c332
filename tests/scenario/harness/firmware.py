"""Firmware for a receiver that looks at it."""


def firmware(version: str, lines: int) -> bytes:
    """A file of S-records: the one that tells the version, and so many whole ones, each with its
    count, address, data and checksum."""
    records = [f"S0~V~{version}"]
    for number in range(lines):
        body = bytes([21, *(number * 16).to_bytes(4, "big"), *range(16)])
        records.append(f"S3{body.hex().upper()}{~sum(body) & 0xFF:02X}")
    return "".join(f"{each}\r\n" for each in records).encode()
