"""The receiver simulator as its operator sees it, and a program that talks to one of its ports."""

import contextlib
import os
import re
import signal
import subprocess
import termios
import time
import tty
import zlib
from pathlib import Path

from harness import places
from harness.waiting import PATIENCE, wait_until

PORTS = ("com1", "com2", "com3", "usb1", "usb2", "usb3")
SYNC = b"\xaaD\x12"
SINGLE_PORT = places.CHECKOUT / "examples" / "single-port.conf"


def simulator_program() -> str:
    return str(places.binaries() / "corvane-sim")


def write_capture(path: Path, seconds: float, *options: str) -> bytes:
    """What the simulator writes; raises when it ends with a status other than 0."""
    subprocess.run([simulator_program(), "--write", str(path), "--duration", str(seconds),
                    *options], check=True, capture_output=True, timeout=60)
    return path.read_bytes()


def logs_of(stream: bytes) -> tuple[int, int]:
    """How many whole binary logs it holds, and how many of them are damaged."""
    whole = damaged = 0
    at = stream.find(SYNC)
    while at >= 0 and len(stream) >= at + 10:
        end = at + stream[at + 3] + int.from_bytes(stream[at + 8:at + 10], "little")
        if len(stream) < end + 4:
            break
        whole += 1
        # The receiver's CRC-32 starts from 0 and is not inverted at the end; zlib's does both.
        checksum = zlib.crc32(stream[at:end], 0xFFFFFFFF) ^ 0xFFFFFFFF
        damaged += checksum != int.from_bytes(stream[end:end + 4], "little")
        at = stream.find(SYNC, end + 4)
    return whole, damaged


class Simulator:
    """One run with ports. Verbose: what it hears and answers is on its standard error."""

    def __init__(self, folder: Path, *options: str, ports: tuple[str, ...] = PORTS) -> None:
        folder.mkdir(parents=True, exist_ok=True)
        self.ports = folder / "ports"
        self._stderr_path = folder / "stderr"
        command = [simulator_program(), "-v", "--dir", str(self.ports), *options]
        with open(self._stderr_path, "ab") as errors, open(folder / "stdout", "ab") as output:
            self._process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output,
                                             stderr=errors)
        wait_until("the simulator's ports",
                   lambda: not self.is_running() or all(map(self.has, ports)),
                   state=lambda: self.stderr)

    def device(self, port: str) -> str:
        return str(self.ports / port)

    def has(self, port: str) -> bool:
        return os.path.exists(self.device(port))

    @property
    def stderr(self) -> str:
        return self._stderr_path.read_text(errors="replace")

    def heard(self, port: str = "com1") -> list[str]:
        """The lines that have been understood."""
        return re.findall(rf"^{port} < (?!\(noise\))(.*)$", self.stderr, re.M)

    def answers(self, port: str = "com1") -> list[str]:
        return re.findall(rf"^{port} > <(.*)$", self.stderr, re.M)

    def wait_for_line(self, pattern: str, seconds: float = PATIENCE) -> None:
        wait_until(f"the simulator to tell {pattern!r}",
                   lambda: re.search(pattern, self.stderr, re.M), seconds,
                   lambda: self.stderr[-2000:])

    def is_running(self) -> bool:
        return self._process.poll() is None

    def status(self, seconds: float = 10.0) -> int:
        return self._process.wait(timeout=seconds)

    def send_signal(self, number: signal.Signals) -> None:
        self._process.send_signal(number)

    def end(self, number: signal.Signals = signal.SIGTERM) -> int:
        """Its exit status."""
        if self.is_running():
            self.send_signal(number)
        return self.status()

    def kill(self) -> None:
        """However it stands; its links stay behind."""
        if self.is_running():
            self._process.kill()
        self._process.wait()

    def processor_seconds(self) -> float:
        fields = Path(f"/proc/{self._process.pid}/stat").read_text().rpartition(")")[2].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


class Terminal:
    """Somebody at a port, who types and reads."""

    def __init__(self, device: str, speed: int | None = None) -> None:
        self._descriptor = os.open(device, os.O_RDWR | os.O_NOCTTY)
        tty.setraw(self._descriptor)
        os.set_blocking(self._descriptor, False)
        self.read = b""
        if speed is not None:
            self.set_speed(speed)

    def close(self) -> None:
        if self._descriptor >= 0:
            os.close(self._descriptor)
            self._descriptor = -1

    def set_speed(self, speed: int) -> None:
        settings = termios.tcgetattr(self._descriptor)
        settings[4] = settings[5] = getattr(termios, f"B{speed}")
        termios.tcsetattr(self._descriptor, termios.TCSANOW, settings)

    def type(self, text: str) -> None:
        os.write(self._descriptor, text.encode("latin-1"))

    def take(self) -> bytes:
        """All that has come so far, since the last question."""
        with contextlib.suppress(BlockingIOError):
            while chunk := os.read(self._descriptor, 65536):
                self.read += chunk
        return self.read

    def ask(self, command: str, wanted: bytes, seconds: float = PATIENCE) -> bytes:
        """Types a line, and reads on until the answer ends so; gives all of it."""
        self.take()
        self.read = b""
        self.type(command + "\r\n")
        self.wait_for(wanted, seconds)
        return self.read

    def wait_for(self, wanted: bytes, seconds: float = PATIENCE) -> None:
        wait_until(repr(wanted), lambda: wanted in self.take(), seconds, lambda: self.read[-500:])

    def silence(self, seconds: float) -> bytes:
        """What comes within a time, normally nothing."""
        self.take()
        self.read = b""
        time.sleep(seconds)
        return self.take()
