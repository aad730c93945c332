"""What a whole offline run must print and publish, worked out from the bytes of the capture."""

import hashlib
from collections import deque
from collections.abc import Iterator

from decoder.commands import CONFIGURATION
from decoder.constellation import Constellation
from decoder.framers import GOOD, framers
from decoder.nmea_diagnostics import Diagnostics, Nmea
from decoder.outcome import Outcome
from decoder.position import LOGGER as PROCESS_LOGGER
from decoder.position import Position
from decoder.printf import text
from decoder.receiver_status import ReceiverStatus
from decoder.records import NMEA_ID, Record, decode
from decoder.softload import Softload

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
        answer = record.content["text"].split(b"\0")[0]
        lines += (f"Response: Log={record.message_id}, ID={record.content['identifier']}: "
                  f'"').encode() + answer + b'"\n'
    return lines


def data_value(record: Record) -> str:
    if record.message_id == NMEA_ID:
        return "<received>,<week>,<seconds>"
    return f"<received>,{record.week},{record.milliseconds / 1000.0:.6f}"


class _Port:
    """The main port: commands to be sent, framers, counters and the bytes not yet handed on."""

    def __init__(self, outcome: Outcome, observers: tuple, softload: Softload) -> None:
        self._outcome = outcome
        self._observers = observers
        self._softload = softload
        self._upgrading = False
        self._commands: deque[str] = deque()
        self._framers = framers()
        self._good = 0
        self._rejected = 0
        self._captured = bytearray()

    def start(self) -> None:
        self._outcome.essential(MAIN, "receiver_initialisations", "1")
        self._commands.extend(CONFIGURATION)

    def handle(self, source: Iterator[bytes]) -> bool:
        """One pass; False when there was nothing left to read."""
        self._upgrading = self._softload.is_upgrading()
        if self._upgrading:
            self._softload.service()
        elif self._commands:
            self._outcome.warn(MAIN, f"Sending buffered command: {self._commands.popleft()}")
            return True
        chunk = next(source, b"")
        if chunk:
            self._take(chunk)
        return bool(chunk)

    def _take(self, chunk: bytes) -> None:
        for framer in self._framers:
            for result, sentence in framer.feed(chunk):
                self._count(result, sentence)
        self._captured += chunk
        if len(self._captured) >= RAW_BLOCK:
            self._hand_on()

    def _count(self, result: int, sentence: bytes) -> None:
        if result == GOOD:
            self._good += 1
            if self._upgrading and sentence[:1] == b"#":
                self._outcome.error(MAIN, f"sentence data during upgrade: {text(sentence)}")
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
        self._softload.take(record)
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
    """In the order in which each record passes them; three publish when they are made."""
    receiver = ReceiverStatus(outcome)
    constellation = Constellation(outcome)
    return (receiver, Position(outcome, receiver), Nmea(outcome, receiver), Diagnostics(outcome),
            constellation)


def offline_run(capture: bytes) -> Outcome:
    """`corvane -p -u none -d -f CAPTURE`: a collecting server, no multiplexer, no settings."""
    outcome = Outcome()
    outcome.register(PROCESS_LOGGER)
    observers = _observers(outcome)
    for name in (SECOND, MAIN):
        outcome.register(name)
        outcome.essential(name, "started", "started")
    port = _Port(outcome, observers, Softload(outcome))
    port.start()
    outcome.connect()
    source = _chunks(capture)
    while port.handle(source):
        pass
    return outcome
