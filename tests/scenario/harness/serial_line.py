"""A serial line: a pty whose far end is the receiver, played by the test."""

import fcntl
import os
import select
import struct
import termios
from pathlib import Path

from harness.waiting import PATIENCE, wait_until

_TCGETS2 = 0x802C542A  # asm-generic/ioctls.h; termios2 knows speeds that have no constant


class SerialLine:
    """The device's name is stable over replacements, as udev would keep it."""

    def __init__(self, device: Path) -> None:
        self.device = device
        self._master = -1
        self.plug_in()

    def plug_in(self) -> None:
        """A new device under the same name."""
        self._master, slave = os.openpty()
        target = os.ttyname(slave)
        os.close(slave)  # from here on the master tells whether the daemon has it open
        self.device.unlink(missing_ok=True)
        self.device.symlink_to(target)

    def unplug(self) -> None:
        if self._master >= 0:
            os.close(self._master)
            self._master = -1

    def is_open(self) -> bool:
        """Whether somebody has the device open and has made it raw."""
        poll = select.poll()
        poll.register(self._master, 0)
        hung_up = any(events & select.POLLHUP for _, events in poll.poll(0))
        return not hung_up and self.is_raw()

    def is_raw(self) -> bool:
        input_flags, output_flags, _, local_flags, *_ = termios.tcgetattr(self._master)
        cooked = local_flags & (termios.ICANON | termios.ECHO | termios.ISIG | termios.IEXTEN)
        translating = input_flags & (termios.ICRNL | termios.INLCR | termios.IGNCR | termios.IXON
                                     | termios.ISTRIP)
        return not (cooked or translating or output_flags & termios.OPOST)

    def speed(self) -> int:
        settings = fcntl.ioctl(self._master, _TCGETS2, bytes(44))
        return struct.unpack_from("=I", settings, 40)[0]

    def wait_until_open(self, seconds: float = PATIENCE) -> None:
        wait_until("the device to be opened", self.is_open, seconds)

    def say(self, data: bytes) -> None:
        """The receiver sends; waits where the line is full."""
        while data:
            data = data[os.write(self._master, data):]
