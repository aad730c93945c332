"""A receiver that takes new firmware, and says how far it is."""

import contextlib
from dataclasses import dataclass

from harness.receiver import Receiver
from harness.sentences import ascii_log
from harness.serial_line import SerialLine
from harness.waiting import PATIENCE, wait_until

STATUS = "SOFTLOADSTATUSA"
RESET, COMMIT = "SOFTLOADRESET", "SOFTLOADCOMMIT"
_DATA, _DATA_END = 'SOFTLOADSREC "', '"'
WELL = ("VERIFYING_DATA", "DATA_VERIFIED", "WRITING_FLASH", "COMPLETE")


@dataclass(frozen=True)
class Line:
    """A whole line, without its end."""

    moment: float  # of the monotonic clock
    text: str


class LoadingReceiver(Receiver):
    """Ready when it is told to begin, and `at_the_end` says what it reports when it is told that
    this was all."""

    def __init__(self, line: SerialLine, at_the_end: tuple[str, ...] = WELL) -> None:
        self.lines: list[Line] = []
        self.at_the_end = at_the_end
        self._has_data = False
        self._rest = b""
        super().__init__(line, acknowledges=True)

    def say(self, data: bytes) -> None:
        with contextlib.suppress(OSError):  # a line that is unplugged just now
            super().say(data)

    def report(self, *statuses: str) -> None:
        for status in statuses:
            self.say(ascii_log(STATUS, status))

    def _take(self, speed: int | None) -> bool:
        if not super()._take(speed):
            return False
        arrival = self._arrivals[-1]
        *lines, self._rest = (self._rest + arrival.data).split(b"\r\n")
        for each in lines:
            self.lines.append(Line(arrival.moment, each.decode("latin-1")))
            self._answer(self.lines[-1].text)
        return True

    def _answer(self, text: str) -> None:
        if text == RESET:
            self._has_data = False
            self.report("READY_FOR_SETUP")
        elif text == COMMIT:
            self.report(*self.at_the_end)
        elif text.startswith(_DATA) and not self._has_data:
            self._has_data = True
            self.report("READY_FOR_DATA")

    # --- what it has

    def texts(self, since: int = 0) -> list[str]:
        return [each.text for each in self.lines[since:]]

    def data(self, since: int = 0) -> list[Line]:
        """The records of the image, as they stood between their quotes."""
        begin, end = len(_DATA), -len(_DATA_END)
        return [Line(each.moment, each.text[begin:end]) for each in self.lines[since:]
                if each.text.startswith(_DATA)]

    def wait_for_data(self, count: int, since: int = 0, seconds: float = PATIENCE) -> None:
        wait_until(f"{count} records of the image", lambda: len(self.data(since)) >= count, seconds,
                   lambda: len(self.data(since)))

    def wait_for_line(self, text: str, since: int = 0, seconds: float = PATIENCE) -> None:
        position = since

        def has_come() -> bool:
            nonlocal position
            while position < len(self.lines):
                position += 1
                if self.lines[position - 1].text == text:
                    return True
            return False

        wait_until(repr(text), has_come, seconds, lambda: self.texts(since)[-3:])
