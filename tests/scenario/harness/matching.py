"""What a receiver says, held against what is published of it, while both go on."""

import struct
from collections import deque
from pathlib import Path

from decoder.framers import GOOD, REJECTED, framers
from harness.messages import NMEA_KEY, Message
from harness.simulator import SYNC

SOLUTIONS = (471, 244)  # PDPXYZ, RTKXYZ
FORWARDED = (b"$GPGSV", b"$GPGSA", b"$GPZDA", b"$GPGST")
_SHOWN = 5


class Match:
    """Two rows of things that must be the same; of what has been found the same no more is kept
    than how much it was."""

    def __init__(self, name: str) -> None:
        self.name = name
        self.same = 0
        self.said: deque = deque()
        self.told: deque = deque()

    def settle(self) -> None:
        """Up to the first difference: there it stays."""
        while self.said and self.told and self.said[0] == self.told[0]:
            self.said.popleft()
            self.told.popleft()
            self.same += 1

    def is_complete(self) -> bool:
        self.settle()
        return not self.said and not self.told

    def difference(self) -> str:
        return (f"{self.name}: after {self.same} that are the same {len(self.said)} more were "
                f"said, {len(self.told)} more told; said {list(self.said)[:_SHOWN]}, "
                f"told {list(self.told)[:_SHOWN]}")


class Port:
    """One port of the receiver: what has gone out on it, as the decoder has it, and what the daemon
    has told of it."""

    def __init__(self, name: str, handler: str, capture: Path) -> None:
        self.handler = handler
        self.logs = Match(f"{name}: logs")
        self.positions = Match(f"{name}: positions")
        self.forwarded = Match(f"{name}: forwarded sentences")
        self.bytes = 0
        self.said = {GOOD: 0, REJECTED: 0}  # sentences of all kinds
        self._counts_told = "0,0"
        self._nmea_said = self._nmea_told = 0
        self._capture = capture
        self._framers = framers()

    def matches(self) -> tuple[Match, ...]:
        return self.logs, self.positions, self.forwarded

    def differences(self) -> list[str]:
        found = [each.difference() for each in self.matches() if not each.is_complete()]
        counts = f"{self.said[GOOD]},{self.said[REJECTED]}"
        for name, said, told in (("NMEA sentences", self._nmea_said, self._nmea_told),
                                 ("good and rejected", counts, self._counts_told)):
            if said != told:
                found.append(f"{self.handler}, {name}: {said} were said, {told} told")
        return found

    def read_on(self) -> None:
        """What has gone out since the last time."""
        with open(self._capture, "rb") as file:
            file.seek(self.bytes)
            chunk = file.read()
        self.bytes += len(chunk)
        for framer in self._framers:
            for result, sentence in framer.feed(chunk):
                self.said[result] += 1
                if sentence.startswith(SYNC):
                    self._say_log(sentence)
                elif sentence.startswith(b"$"):
                    self._say_nmea(sentence)
        for match in self.matches():
            match.settle()

    def _say_log(self, log: bytes) -> None:
        message, = struct.unpack_from("<H", log, 4)
        week, milliseconds = struct.unpack_from("<HI", log, 14)
        self.logs.said.append((message, week, milliseconds))
        if message in SOLUTIONS:
            self.positions.said.append((milliseconds, *struct.unpack_from("<3d", log, log[3] + 8)))

    def _say_nmea(self, sentence: bytes) -> None:
        """Also bytes of a log that are one by chance: a checksum of one byte is soon right."""
        self._nmea_said += 1
        if sentence.startswith(FORWARDED):
            self.forwarded.said.append(sentence.decode("latin-1"))

    def take(self, message: Message) -> None:
        """Told by this port's handler, or by an observer of what only this port carries."""
        match message.method:
            case "position.ecef":
                place = (message[axis] for axis in "xyz")
                self.positions.told.append((round(message["seconds"] * 1000), *place))
            case "nmea.sentence":
                self.forwarded.told.append(message["sentence"])
            case "logger.status" if message["key"] == "checksum_stats":
                self._counts_told = message["value"]
            case "logger.data" if message["key"] == NMEA_KEY:
                self._nmea_told += 1
            case "logger.data":
                _, week, seconds = message["value"].split(",")
                self.logs.told.append((int(message["key"].removeprefix("QRS_")), int(week),
                                       round(float(seconds) * 1000)))
