"""A serial line: a pty whose far end is the receiver, played by the test."""

import contextlib
import fcntl
import os
import select
import struct
import termios
import threading
import time
from pathlib import Path

from harness.waiting import PATIENCE, wait_until

_TCGETS2 = 0x802C542A  # asm-generic/ioctls.h; termios2 knows speeds that have no constant
_SETTLING = 0.02  # seconds


class SerialLine:
    """The device's name is stable over replacements, as udev would keep it."""

    def __init__(self, device: Path) -> None:
        self.device = device
        self._master = -1
        self._lock = threading.RLock()  # a descriptor must not change its meaning while it is used
        self.plug_in()

    def plug_in(self) -> None:
        """A new device under the same name."""
        master, slave = os.openpty()
        target = os.ttyname(slave)
        os.close(slave)  # from here on the master tells whether the daemon has it open
        self.device.unlink(missing_ok=True)
        self.device.symlink_to(target)
        with self._lock:
            self._master = master

    def unplug(self) -> None:
        """The name goes first: the next line, of whichever test, may have the same terminal."""
        self.device.unlink(missing_ok=True)
        with self._lock:
            if self._master >= 0:
                os.close(self._master)
                self._master = -1

    def _events(self) -> int:
        poll = select.poll()
        poll.register(self._master, select.POLLIN)
        return sum(events for _, events in poll.poll(0))

    def is_open(self) -> bool:
        """Whether somebody has the device open and has made it raw."""
        with self._lock:
            is_there = self._master >= 0 and not self._events() & select.POLLHUP
            return is_there and self.is_raw()

    def is_raw(self) -> bool:
        input_flags, output_flags, _, local_flags, *_ = termios.tcgetattr(self._master)
        cooked = local_flags & (termios.ICANON | termios.ECHO | termios.ISIG | termios.IEXTEN)
        translating = input_flags & (termios.ICRNL | termios.INLCR | termios.IGNCR | termios.IXON
                                     | termios.ISTRIP)
        return not (cooked or translating or output_flags & termios.OPOST)

    def speed(self) -> int:
        with self._lock:
            settings = fcntl.ioctl(self._master, _TCGETS2, bytes(44))
        return struct.unpack_from("=I", settings, 40)[0]

    def open_speed(self) -> int | None:
        """The speed while somebody has the device open; else None."""
        with self._lock:
            return self.speed() if self.is_open() else None

    def wait_until_open(self, seconds: float = PATIENCE) -> None:
        wait_until("the device to be opened", self.is_open, seconds)
        # What was said earlier is dropped right after the line was made raw, which cannot be seen
        # from this end.
        time.sleep(_SETTLING)

    def receive(self, most: int) -> bytes:
        """What has been written to the device, at most so much; empty when there is nothing."""
        with self._lock, contextlib.suppress(OSError):  # one that is closed just now
            if self._master >= 0 and self._events() & select.POLLIN:
                return os.read(self._master, most)
        return b""

    def say(self, data: bytes) -> None:
        """The receiver sends; waits where the line is full."""
        while data:
            data = data[os.write(self._master, data):]
