"""What a whole offline run must print and publish, worked out from the bytes of the capture."""

import hashlib
import json
from collections.abc import Iterator
from dataclasses import dataclass, field

from decoder.framers import GOOD, framers
from decoder.records import NMEA_ID, Record, decode

READ_SIZE = 1024
RAW_BLOCK = 1024  # so many bytes or more are handed on at once
MAIN, SECOND = "NovatelPortHandler", "NovatelPortHandler2"
END_OF_EPOCH = ("PDPXYZ", "PDPSTAT")  # what was read before one of these leaves at once


@dataclass
class Outcome:
    """The screen dump and the canonical lines of what is published."""

    dump: bytearray = field(default_factory=bytearray)
    published: list[str] = field(default_factory=list)
    records: list[Record] = field(default_factory=list)

    def publish(self, method: str, *fields) -> None:
        self.published.append(f"{method} {json.dumps(fields, ensure_ascii=False)}")


def seconds_text(milliseconds: int) -> str:
    """The shortest decimal text of the seconds."""
    whole, thousandths = divmod(milliseconds, 1000)
    return f"{whole}.{thousandths:03}".rstrip("0").rstrip(".")


def dump_lines(record: Record) -> bytes:
    """What the screen shows of a record; nothing of an NMEA sentence."""
    if record.kind == "NMEA":
        return b""
    seconds = seconds_text(record.milliseconds)
    lines = (f"ID = {record.message_id}, size = 0, week = {record.week}, "
             f"seconds = {seconds}\n").encode()
    if record.kind == "response":
        text = record.content["text"].split(b"\0")[0]
        lines += (f"Response: Log={record.message_id}, ID={record.content['identifier']}: "
                  f'"').encode() + text + b'"\n'
    return lines


def data_value(record: Record) -> str:
    if record.message_id == NMEA_ID:
        return "<received>,<week>,<seconds>"
    return f"<received>,{record.week},{record.milliseconds / 1000.0:.6f}"


class _Port:
    """The main port: framers, counters and the bytes not yet handed on."""

    def __init__(self, outcome: Outcome) -> None:
        self._outcome = outcome
        self._framers = framers()
        self._good = 0
        self._rejected = 0
        self._captured = bytearray()

    def take(self, chunk: bytes) -> None:
        for framer in self._framers:
            for result, sentence in framer.feed(chunk):
                self._count(result, sentence)
        self._captured += chunk
        if len(self._captured) >= RAW_BLOCK:
            self._hand_on()

    def _count(self, result: int, sentence: bytes) -> None:
        if result == GOOD:
            self._good += 1
            self._dispatch(decode(sentence))
        else:
            self._rejected += 1
        self._outcome.publish("logger.status", MAIN, "essential", "checksum_stats",
                              f"{self._good},{self._rejected}")

    def _dispatch(self, record: Record | None) -> None:
        if record is None:
            return
        if record.kind in END_OF_EPOCH:
            self._hand_on()
        self._outcome.records.append(record)
        self._outcome.dump += dump_lines(record)
        self._outcome.publish("logger.data", MAIN, f"QRS_{record.message_id}", data_value(record))

    def _hand_on(self) -> None:
        if self._captured:
            digest = hashlib.sha256(self._captured).hexdigest()
            self._outcome.publish("logger.raw", MAIN,
                                  f"{len(self._captured)} bytes, sha256 {digest}")
            self._captured.clear()


def _chunks(data: bytes) -> Iterator[bytes]:
    return (data[at:at + READ_SIZE] for at in range(0, len(data), READ_SIZE))


def offline_run(capture: bytes) -> Outcome:
    """`corvane -p -u none -d -f CAPTURE` with a collecting server and no multiplexer."""
    outcome = Outcome()
    for name in ("NovatelPositionManager", SECOND, MAIN):
        outcome.publish("logger.register", name, "corvane", "<pid>", "<version>")
    for name in (SECOND, MAIN):
        outcome.publish("logger.status", name, "essential", "started", "started")
    outcome.publish("logger.status", MAIN, "essential", "receiver_initialisations", "1")
    port = _Port(outcome)
    for chunk in _chunks(capture):
        port.take(chunk)
    return outcome
