"""Streams made to be difficult: what comes out is what the independent decoder says."""

import random
import struct
from pathlib import Path

from decoder.run import offline_run
from harness.captures import run_over
from harness.scenario import Scenario
from harness.sentences import ascii_log, binary, nmea, response, u32

SIZE = 60_000  # bytes of a stream, some sixty reads
UNSIZED = (42, 101, 175, 241, 243, 244, 471, 495, 730, 731, 1085, 999)
COUNTED = {  # message identifier: bytes before the count, bytes of a block
    37: (0, 108), 43: (0, 44), 83: (12, 40), 93: (4, 16), 174: (24, 4), 317: (0, 44),
}
SATELLITES = (1162, 1174, 1234)


class Receiver:
    """Says anything that a receiver might, by chance but the same every time."""

    def __init__(self, seed: int) -> None:
        self._chance = random.Random(seed)
        self._milliseconds = 0

    def _bytes(self, most: int) -> bytes:
        return self._chance.randbytes(self._chance.randrange(most))

    def _log(self, message_id: int, body: bytes) -> bytes:
        self._milliseconds += self._chance.randrange(1, 5000)
        return binary(message_id, body, milliseconds=self._milliseconds,
                      week=self._chance.randrange(65536),
                      padding=self._chance.choice((b"", b"", bytes(4), bytes(200))))

    def unsized(self) -> bytes:
        return self._log(self._chance.choice(UNSIZED), self._bytes(200))

    def counted(self) -> bytes:
        message_id, (before, size) = self._chance.choice(list(COUNTED.items()))
        count = self._chance.randrange(12)
        return self._log(message_id, bytes(before) + u32(count) +
                         self._chance.randbytes(size * count))

    def satellites(self) -> bytes:
        body = u32(self._chance.randrange(5)) + self._chance.randbytes(3 * 16)
        return self._log(self._chance.choice(SATELLITES), body)

    def channels(self) -> bytes:
        sets = [u32(length) + bytes(8 * length) for length in (0, 1, self._chance.randrange(9))]
        return self._log(1148, u32(1, len(sets)) + b"".join(sets))

    def response(self) -> bytes:
        text = self._chance.choice((b"OK", b"", b"Invalid \xe9\0rest", b"\0"))
        return response(self._chance.randrange(65536), self._chance.randrange(100), text)

    def text(self) -> bytes:
        return self._chance.choice((
            nmea("GPGSV,1,1,00"), nmea(""), b"$*2A\r", b"$A*41 \n", nmea("x" * 1100),
            ascii_log("SOFTLOADSTATUSA", "COMPLETE"), ascii_log("SOFTLOADSTATUSA", "odd"),
            ascii_log("BESTPOSA", "SOL"), b"#" + b"y" * 4200 + b"\r\n", b"\r\n<OK\r\n[COM1]",
            b"#ab*00000000\r", b"##$#$*\n", b"$GP\r#\n"))

    def chance(self) -> bytes:
        return self._bytes(100)

    def hostile(self) -> bytes:
        return self._chance.choice((
            b"\xaa" * 50, b"\xaa\x44" * 9, b"\xaa\x44\x12", b"\xaa\x44\x12\x00" + bytes(16),
            b"\xaa\x44\x12\x1c" + struct.pack("<HBBH", 42, 0, 0, 3000), b"#" * 30, b"$" * 30,
            b"#\r" * 30, b"$*" * 30, b"#*\n$*\r"))

    def cut(self) -> bytes:
        return self.unsized()[:-self._chance.randrange(1, 30)]

    def damaged(self) -> bytes:
        sentence = bytearray(self.unsized())
        sentence[self._chance.randrange(len(sentence))] ^= 1 << self._chance.randrange(8)
        return bytes(sentence)

    def stream(self, *kinds) -> bytes:
        stream = bytearray()
        while len(stream) < SIZE:
            stream += self._chance.choice(kinds)(self)
        return bytes(stream)


class SyntheticStreams(Scenario):
    def assert_agreement(self, stream: bytes) -> None:
        wanted = offline_run(stream)
        outcome = run_over(Path(self.file("capture", stream)), self.folder / "run")
        self.assert_same_lines(wanted.published, outcome.published.splitlines())
        self.assert_same_lines(bytes(wanted.dump).split(b"\n"), outcome.dump.split(b"\n"))
        self.assertGreater(len(wanted.published), 100)

    def test_every_known_log_and_response_comes_out_right(self) -> None:
        for seed in range(3):
            self.assert_agreement(Receiver(seed).stream(
                Receiver.unsized, Receiver.counted, Receiver.satellites, Receiver.channels,
                Receiver.response))

    def test_logs_between_texts_come_out_right(self) -> None:
        for seed in range(3):
            self.assert_agreement(Receiver(seed).stream(
                Receiver.unsized, Receiver.text, Receiver.response, Receiver.text))

    def test_logs_in_noise_come_out_right(self) -> None:
        for seed in range(3):
            self.assert_agreement(Receiver(seed).stream(
                Receiver.unsized, Receiver.chance, Receiver.cut, Receiver.damaged, Receiver.text))

    def test_hostile_bytes_come_out_right(self) -> None:
        for seed in range(3):
            self.assert_agreement(Receiver(seed).stream(
                Receiver.hostile, Receiver.text, Receiver.unsized))
