"""The receiver at the far end of a serial line: keeps what it is told, answers when it is to."""

import threading
import time
from dataclasses import dataclass

from harness.serial_line import SerialLine
from harness.waiting import PATIENCE, wait_until

PROMPT = b"\r\n<OK\r\n[COM1]"
_CHUNK = 4096
_PERIOD = 0.002  # seconds between two looks at a line on which nothing happens
_SLOW_PERIOD = 0.01


@dataclass(frozen=True)
class Arrival:
    """Bytes that came together."""

    moment: float  # of the monotonic clock
    speed: int | None  # of the line when they were taken; None when it was closed again
    data: bytes


class Receiver:
    """Reads at once and for ever, unless it is told to hold or to read slowly.

    One that acknowledges says a prompt after each command, as a receiver does.
    """

    def __init__(self, line: SerialLine, *, acknowledges: bool) -> None:
        self.line = line
        self.speeds: list[tuple[float, int]] = []  # each change while the device was open
        self._acknowledges = acknowledges
        self._arrivals: list[Arrival] = []
        self._unanswered = b""
        self._bytes_per_second: int | None = None
        self._lock = threading.Lock()
        self._reading = threading.Event()
        self._reading.set()
        self._stopping = threading.Event()
        self._thread = threading.Thread(target=self._run, daemon=True)
        self._thread.start()

    def stop(self) -> None:
        self._stopping.set()
        self._thread.join()

    # --- how it behaves

    def hold(self) -> None:
        """Takes nothing more: what is written stays on the line."""
        self._reading.clear()

    def go_on(self) -> None:
        self._reading.set()

    def read_slowly(self, bytes_per_second: int) -> None:
        self._bytes_per_second = bytes_per_second

    def say(self, data: bytes) -> None:
        self.line.say(data)

    def _run(self) -> None:
        while not self._stopping.is_set():
            speed = self._note_speed()
            if not self._reading.is_set() or not self._take(speed):
                time.sleep(_PERIOD)

    def _note_speed(self) -> int | None:
        speed = self.line.open_speed()
        if speed is not None and (not self.speeds or self.speeds[-1][1] != speed):
            self.speeds.append((time.monotonic(), speed))
        return speed

    def _take(self, speed: int | None) -> bool:
        most = _CHUNK
        if self._bytes_per_second is not None:
            most = max(1, int(self._bytes_per_second * _SLOW_PERIOD))
            time.sleep(_SLOW_PERIOD)
        data = self.line.receive(most)
        if not data:
            return False
        with self._lock:
            self._arrivals.append(Arrival(time.monotonic(), speed, data))
        if self._acknowledges:
            *commands, self._unanswered = (self._unanswered + data).split(b"\r\n")
            self.say(PROMPT * len(commands))
        return True

    # --- what it has

    def arrivals(self) -> list[Arrival]:
        with self._lock:
            return list(self._arrivals)

    def heard(self) -> bytes:
        return b"".join(each.data for each in self.arrivals())

    def commands(self) -> list[str]:
        """The whole lines, with their ends; every byte as one character."""
        return [line + "\r\n" for line in self.heard().decode("latin-1").split("\r\n")[:-1]]

    def arrival_of(self, count: int) -> Arrival | None:
        """The arrival with which so many bytes were complete."""
        for each in self.arrivals():
            count -= len(each.data)
            if count <= 0:
                return each
        return None

    # --- waiting

    def wait_for_bytes(self, count: int, seconds: float = PATIENCE) -> Arrival:
        return wait_until(f"{count} bytes", lambda: self.arrival_of(count), seconds, self.heard)

    def wait_for_commands(self, count: int, seconds: float = PATIENCE) -> None:
        wait_until(f"{count} commands", lambda: len(self.commands()) >= count, seconds,
                   lambda: self.commands()[-5:])

    def wait_for_command(self, command: str, seconds: float = PATIENCE) -> None:
        wait_until(repr(command), lambda: command in self.commands(), seconds,
                   lambda: self.commands()[-5:])
