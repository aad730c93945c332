"""Streams made to be difficult: what comes out is what the independent decoder says."""

import itertools
import random
import struct
from functools import reduce
from pathlib import Path

from decoder.records import SOFTLOAD_VALUES
from decoder.run import offline_run
from harness import logs
from harness.captures import run_over
from harness.scenario import Scenario
from harness.sentences import ascii_log, binary, nmea, response, u32

SIZE = 60_000  # bytes of a stream, some sixty reads
MOST = 0xFFFFFFFF
UNSIZED = (42, 101, 175, 241, 243, 244, 471, 495, 730, 731, 1085, 999)
COUNTED = {  # message identifier: bytes before the count, bytes of a block
    37: (0, 108), 43: (0, 44), 83: (12, 40), 93: (4, 16), 174: (24, 4), 317: (0, 44),
}
SATELLITES = (1162, 1174, 1234)

STATUS_WORDS = (0, 0, 0x20, 0x004C0000, 0x80000001, 0xFFFFFFFF)
IDLE_TIMES = (0, 4, 5, 6, 100, 100, 255)
SOLUTION_STATUSES = (0, 0, 0, 0, 0, 0, 1, 19, MOST)
POSITION_TYPES = (*range(71), *(16, 17, 18, 19, 20, 32, 33, 34, 48, 49, 50, 51, 64, 65, 66) * 5)
PRNS = (0, 1, 2, 2, 32, 33, 37, 38, 45, 61, 62, 119, 120, 121, 122, 124, 126, 129, 131, 134, 135,
        137, 138, 139, 256, 258, 65535)
REJECT_CODES = (0, 0, 0, 13, 98, 99, 99, 100, MOST)
SIGNALS = (0, 0, 5, 9, 17, 1, 6, 14, 31)
PORTS = (0, 1, 1, 2, 3, 13, 14, 15, 16, MOST)
SPEEDS = (9600, 115200, 0, 0x80000000, MOST)
COMPONENT_TYPES = (1, 1, 1, 0, 2, 3, 0x3A7A0001, MOST)
SOFTWARE = (b"3.701", b"OEM", b"L6X", b"OEM060600RN0000", b"L6X010201RN0000", b"L6X010100RN0000",
            b"OEM10101", b"OEM 77", b"OEM-5x", b"OEM+5", b"OEM2147483647", b"OEM2147483648",
            b"OEM-2147483649", b"OEMabc", b"oem1", b"XL6X1", b"OEM\0123", b"")
TEXTS = (b"L12LGRV", b"", b"sixteen  letters", b"caf\xc3\xa9 \xe9", b"\xe2\x82", b"\xff\0hidden",
         b"a\"b\\c\x01\x7f", b"\xf0\x9f\x9b\xb0", b"\xed\xa0\x80\xc0\xaf")
MODELS = (b"L12LGRV", b"L12LRVA", b"RT2G", b"rt2g", b"L1\0\0G", b"fifteen letterG", b"\xc7", b"")
CHANNEL_COUNTS = (0, 2, 8, 14, 120, 0x80000000, MOST)
SETS_IN_USE = (0, 1, 1, 1, 2, 2, 5, 0x80000000, MOST)
SIGNAL_TYPES = (*range(30), 0x80000000, MOST)
READ = 1024  # bytes of a capture that are read in one pass
KNOWN_STATUSES = tuple(each.decode() for each in SOFTLOAD_VALUES)
WAITING_STATUSES = ("READY_FOR_SETUP", "READY_FOR_DATA")
RESET_STATUSES = ("WROTE_FLASH", "COMPLETE")
UNKNOWN_STATUSES = ("", "odd", "ERROR", "WROTE_AUTHCODE", "complete", " COMPLETE", "COMPLETE*",
                    "COMPLETE;", "BAD_IMAGE", b"caf\xc3\xa9 \xe9", b"COMPLETE\0", b"COMP\0LETE",
                    "%s%d", "\"", "x" * 3000)
SENTENCES = (b"GPGSA,M,3", b"GPGSV,1,1,00", b"GPZDA,0", b"GPGST,0", b"GPGGA,0", b"GPGSV", b"GPGS",
             b"GPRMC,0", b"GNGSV,0", b"gpgsv,0", b"GPGSVX", b"GPGST,\xe9\xc3\xa9", b"GPGSA,\0,1")
SPECIAL_DOUBLES = tuple(bytes.fromhex(each)[::-1] for each in (
    "0000000000000000", "8000000000000000", "7ff0000000000000", "fff0000000000000",
    "7ff8000000000000", "fff8000000000000"))
SPECIAL_FLOATS = tuple(bytes.fromhex(each)[::-1] for each in (
    "00000000", "80000000", "7f800000", "ff800000", "7fc00000", "ffc00000", "bf000000"))


def any_nmea(text: bytes) -> bytes:
    """Also of bytes that no receiver would send."""
    checksum = reduce(lambda left, right: left ^ right, text, 0)
    return b"$" + text + f"*{checksum:02X}\r\n".encode()


class Values:
    """Numbers of every kind, in their bytes."""

    def __init__(self, chance: random.Random) -> None:
        self._chance = chance

    def one(self, *values):
        return self._chance.choice(values)

    def u32(self) -> int:
        return self.one(0, 1, 9, MOST, self._chance.getrandbits(32))

    def double(self) -> bytes:
        return self.one(struct.pack("<d", self._chance.gauss(0.0, 1e6)),
                        struct.pack("<d", float(self._chance.randrange(-10**18, 10**18))),
                        self._chance.randbytes(8), self.one(*SPECIAL_DOUBLES))

    def float(self) -> bytes:
        return self.one(struct.pack("<f", self._chance.gauss(0.0, 40.0)),
                        struct.pack("<f", self._chance.uniform(0.0, 60.0)),
                        self._chance.randbytes(4), self.one(*SPECIAL_FLOATS))

    def doubles(self, count: int) -> bytes:
        return b"".join(self.double() for _ in range(count))

    def floats(self, count: int) -> bytes:
        return b"".join(self.float() for _ in range(count))

    def place(self) -> bytes:
        """A point that is not further away than the satellites, or one that is none.

        Points in between are left out: what C prints of the height of such a one has hundreds of
        digits, of which the maths library decides all but sixteen.
        """
        if self._chance.random() < 0.3:
            return b"".join(self.one(*SPECIAL_DOUBLES) for _ in range(3))
        direction = [self._chance.gauss(0.0, 1.0) for _ in range(3)]
        length = sum(each * each for each in direction) ** 0.5
        distance = self._chance.uniform(6.3e6, 2.7e7)
        return struct.pack("<3d", *(each / length * distance for each in direction))


class Receiver:
    """Says anything that a receiver might, by chance but the same every time."""

    def __init__(self, seed: int) -> None:
        self._chance = random.Random(seed)
        self._values = Values(self._chance)
        self._one = self._values.one
        self._milliseconds = 0

    def _bytes(self, most: int) -> bytes:
        return self._chance.randbytes(self._chance.randrange(most))

    def _log(self, message_id: int, body: bytes) -> bytes:
        self._milliseconds += self._chance.randrange(1, 5000)
        return binary(message_id, body,
                      milliseconds=self._one(*[self._milliseconds] * 9,
                                             self._chance.getrandbits(32)),
                      week=self._one(1800, 1801, self._chance.randrange(65536)),
                      padding=self._one(b"", b"", bytes(4), bytes(200)),
                      status=self._one(*STATUS_WORDS), idle=self._one(*IDLE_TIMES))

    # --- any bytes

    def unsized(self) -> bytes:
        return self._log(self._one(*UNSIZED), self._bytes(200))

    def counted(self) -> bytes:
        message_id, (before, size) = self._one(*COUNTED.items())
        count = self._chance.randrange(12)
        return self._log(message_id, bytes(before) + u32(count) +
                         self._chance.randbytes(size * count))

    # --- logs that mean something

    def _cartesian(self, place: bytes, status: int) -> bytes:
        values = self._values
        return (u32(status, self._one(*POSITION_TYPES)) + place + values.floats(3)
                + u32(self._one(*SOLUTION_STATUSES), self._chance.randrange(71))
                + values.doubles(3) + values.floats(3) + self._chance.randbytes(4)
                + values.floats(3) + self._chance.randbytes(8))

    def solution(self) -> bytes:
        """RTKXYZ and PDPXYZ, now and then without their end."""
        body = self._cartesian(self._values.doubles(3), self._one(*SOLUTION_STATUSES))
        length = self._one(*[len(body)] * 5, self._chance.randrange(len(body)))
        return self._log(self._one(244, 471), body[:length])

    def pseudorange_position(self) -> bytes:
        return self._log(243, self._cartesian(self._values.place(),
                                              self._one(*SOLUTION_STATUSES)))

    def pdpstat(self) -> bytes:
        counts = u32(self._values.u32(), self._values.u32(), self._one(0, 1, 1, MOST),
                     self._values.u32(), self._one(0, 0, 0, 9, MOST))
        return self._log(1085, counts + self._values.doubles(3))

    def psrdop(self) -> bytes:
        dops = u32(*(self._values.u32() for _ in range(6)))
        return self._log(174, dops + u32(2, 5, 7))

    def bestpos(self) -> bytes:
        return self._log(42, bytes(32) + self._values.float() + self._chance.randbytes(36))

    def refstation(self) -> bytes:
        return self._log(175, u32(0) + self._values.doubles(3) + self._chance.randbytes(16))

    def time(self) -> bytes:
        return self._log(101, self._chance.randbytes(44))

    def satellites(self) -> bytes:
        entries = b"".join(
            u32(self._one(0, 0, 0, 1, 1, 2, MOST)) + self._chance.randbytes(4)
            + u32(0, self._one(0, 1, 1, 3, 0x10, MOST)) for _ in range(3))
        return self._log(self._one(*SATELLITES), u32(self._chance.randrange(5)) + entries)

    def _channel(self, reject_codes: tuple[int, ...]) -> bytes:
        tracking = self._chance.getrandbits(32) & ~(0x1F << 21) | self._one(*SIGNALS) << 21
        return (struct.pack("<HHI", self._one(*PRNS), 7, tracking) + self._values.double()
                + self._values.floats(4) + u32(self._one(*reject_codes)) + self._values.float())

    def trackstat(self) -> bytes:
        """Once in a while of channels without an observation only."""
        codes = self._one(REJECT_CODES, REJECT_CODES, REJECT_CODES, (99,))
        channels = [self._channel(codes) for _ in range(self._chance.randrange(16))]
        return self._log(83, u32(0, 16, 0, len(channels)) + b"".join(channels))

    def rxstatus(self) -> bytes:
        words = [u32(self._one(*STATUS_WORDS, 1 << self._chance.randrange(32)), 0, 0, 0)
                 for _ in range(self._one(0, 1, 4))]
        error = self._one(0, 0, MOST, 1 << self._chance.randrange(32),
                          self._chance.getrandbits(32))
        return self._log(93, u32(error, len(words)) + b"".join(words))

    def comconfig(self) -> bytes:
        def mode() -> int:
            return self._one(*range(23), MOST)

        ports = [u32(self._one(*PORTS), self._one(*SPEEDS), 0, 8, 1, 0, 0, 1, mode(), mode(), 1)
                 for _ in range(self._chance.randrange(8))]
        return self._log(317, u32(len(ports)) + b"".join(ports))

    def version(self) -> bytes:
        """The model of a receiver card says whether it has GLONASS."""
        def text(texts: tuple[bytes, ...], width: int = 16) -> bytes:
            return self._one(*texts)[:width].ljust(width, b"\0")

        components = [u32(self._one(*COMPONENT_TYPES)) + text(MODELS + TEXTS) + text(TEXTS)
                      + text(TEXTS) + text(SOFTWARE + TEXTS) + text(TEXTS)
                      + text(TEXTS, 12) + text(TEXTS, 12)
                      for _ in range(self._one(0, 1, 1, 2, 12))]
        return self._log(37, u32(len(components)) + b"".join(components))

    def ranges(self) -> bytes:
        return self._log(43, u32(2) + self._chance.randbytes(2 * 44))

    def channels(self) -> bytes:
        """Sets of known and unknown signals; mostly another one is in use than before."""
        def pairs(count: int) -> bytes:
            return b"".join(u32(self._one(*CHANNEL_COUNTS), self._one(*SIGNAL_TYPES))
                            for _ in range(count))

        lengths = [self._chance.randrange(9) for _ in range(self._one(0, 1, 3, 6, 12))]
        sets = b"".join(u32(length) + pairs(length) for length in lengths)
        return self._log(1148, u32(self._one(*SETS_IN_USE), len(lengths)) + sets)

    def response(self) -> bytes:
        """Also to a log's identifier, which makes it no log."""
        text = self._one(b"OK", b"", b"Invalid \xe9\0rest", b"\0")
        message_id = self._one(self._chance.randrange(65536), *COUNTED, *UNSIZED, *SATELLITES)
        return response(message_id, self._chance.randrange(100), text)

    # --- texts

    def nmea(self) -> bytes:
        return any_nmea(self._one(*SENTENCES))

    def text(self) -> bytes:
        return self._one(
            nmea("GPGSV,1,1,00"), nmea(""), b"$*2A\r", b"$A*41 \n", nmea("x" * 1100),
            ascii_log("SOFTLOADSTATUSA", "COMPLETE"), ascii_log("SOFTLOADSTATUSA", "odd"),
            ascii_log("BESTPOSA", "SOL"), b"#" + b"y" * 4200 + b"\r\n", b"\r\n<OK\r\n[COM1]",
            b"#ab*00000000\r", b"##$#$*\n", b"$GP\r#\n")

    def softload(self) -> bytes:
        """A status of the firmware upgrade, the ones that do something more often than others."""
        statuses = self._one(KNOWN_STATUSES, KNOWN_STATUSES, WAITING_STATUSES, RESET_STATUSES,
                             UNKNOWN_STATUSES)
        return ascii_log("SOFTLOADSTATUSA", self._one(*statuses))

    def ascii(self) -> bytes:
        """Logs of which nothing is made, but which are told of during an upgrade."""
        return ascii_log(self._one("BESTPOSA", "SOFTLOADSTATUS", "SOFTLOADSTATUSAX"),
                         self._one("SOL", "COMPLETE", b"\xe9\0hidden", "y" * 3900))

    # --- what is damaged

    def chance(self) -> bytes:
        return self._bytes(100)

    def hostile(self) -> bytes:
        return self._one(
            b"\xaa" * 50, b"\xaa\x44" * 9, b"\xaa\x44\x12", b"\xaa\x44\x12\x00" + bytes(16),
            b"\xaa\x44\x12\x1c" + struct.pack("<HBBH", 42, 0, 0, 3000), b"#" * 30, b"$" * 30,
            b"#\r" * 30, b"$*" * 30, b"#*\n$*\r")

    def cut(self) -> bytes:
        return self.unsized()[:-self._chance.randrange(1, 30)]

    def damaged(self) -> bytes:
        sentence = bytearray(self.unsized())
        sentence[self._chance.randrange(len(sentence))] ^= 1 << self._chance.randrange(8)
        return bytes(sentence)

    def stream(self, *kinds) -> bytes:
        stream = bytearray()
        while len(stream) < SIZE:
            stream += self._one(*kinds)(self)
        return bytes(stream)


POSITIONS = (Receiver.solution, Receiver.solution, Receiver.pseudorange_position, Receiver.pdpstat,
             Receiver.psrdop, Receiver.bestpos, Receiver.refstation, Receiver.satellites)
RECEIVER = (Receiver.trackstat, Receiver.rxstatus, Receiver.comconfig, Receiver.version,
            Receiver.ranges, Receiver.channels, Receiver.time)
CONTROL = (Receiver.version, Receiver.channels, Receiver.softload, Receiver.softload,
           Receiver.ascii)


def status_in_a_read_of_its_own(text: str | bytes, *others: bytes) -> bytes:
    """Followed by others, each in a read of its own too; line ends fill the reads."""
    contents = (ascii_log("SOFTLOADSTATUSA", text), *others)
    return b"".join(each + b"\n" * (-len(each) % READ) for each in contents)


class SyntheticStreams(Scenario):
    def setUp(self) -> None:
        super().setUp()
        self._runs = itertools.count()

    def assert_agreement(self, stream: bytes) -> None:
        """In a folder of its own: a run keeps what it has learned of the receiver."""
        wanted = offline_run(stream)
        folder = self.folder / f"run.{next(self._runs)}"
        outcome = run_over(Path(self.file("capture", stream)), folder)
        self.assert_same_lines([*wanted.published, ""], outcome.published.split("\n"))
        self.assert_same_lines(bytes(wanted.dump).split(b"\n"), outcome.dump.split(b"\n"))
        begun = len(offline_run(b"").published)
        self.assertGreater(len(wanted.published), begun + 20)

    def test_every_known_log_and_response_comes_out_right(self) -> None:
        for seed in range(3):
            self.assert_agreement(Receiver(seed).stream(
                Receiver.unsized, Receiver.counted, Receiver.satellites, Receiver.channels,
                Receiver.response))

    def test_positions_of_every_kind_come_out_right(self) -> None:
        for seed in range(4):
            self.assert_agreement(Receiver(seed).stream(*POSITIONS))

    def test_positions_without_lost_phases_come_out_right(self) -> None:
        """Never two PDPSTATs: the lockout does not begin, and the clearing goes on."""
        for seed in range(2):
            receiver = Receiver(seed)
            pdpstat = binary(1085, u32(3, 0, 1, 0, 9) + bytes(24))
            rest = [each for each in POSITIONS if each is not Receiver.pdpstat]
            self.assert_agreement(pdpstat + receiver.stream(*rest))

    def test_what_the_receiver_tells_of_itself_comes_out_right(self) -> None:
        for seed in range(4):
            self.assert_agreement(Receiver(seed).stream(*RECEIVER, Receiver.response))

    def test_everything_together_comes_out_right(self) -> None:
        for seed in range(4):
            self.assert_agreement(Receiver(seed).stream(
                *POSITIONS, *RECEIVER, *CONTROL, Receiver.nmea, Receiver.text,
                Receiver.response))

    def test_receiver_control_comes_out_right(self) -> None:
        for seed in range(4):
            self.assert_agreement(Receiver(seed).stream(*CONTROL, Receiver.nmea))

    def test_every_firmware_status_comes_out_right(self) -> None:
        """From idle, each followed by a read of text and one of nothing, alone and overtaken."""
        text, final = ascii_log("BESTPOSA", "SOL"), "RESET_ERROR"
        for second in (b"", ascii_log("SOFTLOADSTATUSA", "NOT_STARTED")):
            self.assert_agreement(b"".join(
                status_in_a_read_of_its_own(each, second + text, b"\n" * READ)
                + status_in_a_read_of_its_own(final) for each in KNOWN_STATUSES + UNKNOWN_STATUSES))

    def test_a_capture_may_end_in_any_firmware_status(self) -> None:
        """The last pass has nothing to read, but its step of the upgrade is made."""
        padding = binary(999) * 9
        for each in (*WAITING_STATUSES, *RESET_STATUSES, "NOT_STARTED", "BAD_MODULE", "odd"):
            self.assert_agreement(padding + ascii_log("SOFTLOADSTATUSA", each))
            self.assert_agreement(padding[:READ] + status_in_a_read_of_its_own(each))

    def test_a_reset_that_is_pending_outlasts_other_statuses(self) -> None:
        for seed in range(2):
            chance = random.Random(seed)
            statuses = [status for _ in range(60) for status in (
                chance.choice(RESET_STATUSES), chance.choice(KNOWN_STATUSES + ("odd",)))]
            self.assert_agreement(b"".join(
                ascii_log("SOFTLOADSTATUSA", each) for each in statuses))

    def test_the_set_in_use_and_the_model_come_out_right_as_they_change(self) -> None:
        self.assert_agreement(b"".join((
            logs.chanconfiglist(0, ((14, 0),)), logs.models((1, b"L12LRVA")),
            logs.chanconfiglist(2, ((14, 0),), ((12, 1), (2, 4))), logs.models((1, b"L12LGRV")),
            logs.chanconfiglist(2), logs.models((2, b"L12LRVA")), logs.models(),
            logs.chanconfiglist(1, tuple((8, signal) for signal in range(30))),
            logs.models((1, b"G"), (1, b"L12")), logs.chanconfiglist(0, (), ((120, MOST),)),
        )))

    def test_sentences_are_forwarded_with_the_time_of_the_receiver(self) -> None:
        for seed in range(2):
            self.assert_agreement(Receiver(seed).stream(
                Receiver.nmea, Receiver.nmea, Receiver.time, Receiver.response, Receiver.text))

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
