"""What a whole offline run must print and publish, worked out from the bytes of the capture."""

import hashlib
from collections.abc import Iterator

from decoder.framers import GOOD, framers
from decoder.nmea_diagnostics import Diagnostics, Nmea
from decoder.outcome import Outcome
from decoder.position import Position
from decoder.receiver_status import ReceiverStatus
from decoder.records import NMEA_ID, Record, decode

READ_SIZE = 1024
RAW_BLOCK = 1024  # so many bytes or more are handed on at once
MAIN, SECOND = "NovatelPortHandler", "NovatelPortHandler2"
END_OF_EPOCH = ("PDPXYZ", "PDPSTAT")  # what was read before one of these leaves at once


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

    def __init__(self, outcome: Outcome, observers: tuple) -> None:
        self._outcome = outcome
        self._observers = observers
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
        self._outcome.essential(MAIN, "checksum_stats", f"{self._good},{self._rejected}")

    def _dispatch(self, record: Record | None) -> None:
        if record is None:
            return
        for observer in self._observers:
            observer.take(record)
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


def _observers(outcome: Outcome) -> tuple:
    """In the order in which each record passes them; two publish when they are made."""
    receiver = ReceiverStatus(outcome)
    return (receiver, Position(outcome, receiver), Nmea(outcome, receiver), Diagnostics(outcome))


def offline_run(capture: bytes) -> Outcome:
    """`corvane -p -u none -d -f CAPTURE` with a collecting server and no multiplexer."""
    outcome = Outcome()
    for name in ("NovatelPositionManager", "NovatelReceiverStatus", SECOND, MAIN):
        outcome.publish("logger.register", name, "corvane", "<pid>", "<version>")
    port = _Port(outcome, _observers(outcome))
    for name in (SECOND, MAIN):
        outcome.essential(name, "started", "started")
    outcome.essential(MAIN, "receiver_initialisations", "1")
    for chunk in _chunks(capture):
        port.take(chunk)
    return outcome
