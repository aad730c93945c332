"""The daemon as its operator sees it: arguments, environment, output, status, resources."""

import os
import signal
import subprocess
import time
from pathlib import Path

from harness import places
from harness.waiting import PATIENCE, wait_until


REALTIME_PRIORITY = 49  # what the daemon asks for, round robin


def real_time_is_possible() -> bool:
    """Whether this machine lets a program of ours have the priority that the daemon asks for."""
    probe = subprocess.run(["chrt", "-r", str(REALTIME_PRIORITY), "true"], check=False,
                           capture_output=True)
    return probe.returncode == 0


class Daemon:
    """One run of `corvane`. Its output goes to files, so that nothing is ever lost in a pipe."""

    def __init__(self, folder: Path, arguments: tuple[str, ...], *, prefix: tuple[str, ...] = (),
                 environment: dict[str, str] | None = None) -> None:
        folder.mkdir(parents=True, exist_ok=True)
        self._stdout_path = folder / "stdout"
        self._stderr_path = folder / "stderr"
        self._trace_path = folder / "trace"
        self.program = str(places.binaries() / "corvane")
        settings = {**os.environ, "CORVANE_TRACE": str(self._trace_path),
                    "CORVANE_CONFIG": str(folder / "corvane.conf"), **(environment or {})}
        with open(self._stdout_path, "wb") as output, open(self._stderr_path, "wb") as errors:
            self._process = subprocess.Popen(
                [*prefix, self.program, *arguments], stdin=subprocess.DEVNULL, stdout=output,
                stderr=errors, env=settings)

    @property
    def pid(self) -> int:
        return self._process.pid

    @property
    def stdout(self) -> bytes:
        return self._stdout_path.read_bytes()

    @property
    def stderr(self) -> str:
        return self._stderr_path.read_text(errors="replace")

    @property
    def trace(self) -> str:
        """Everything that went to the debug trace so far."""
        return self._trace_path.read_text(errors="replace") if self._trace_path.exists() else ""

    def is_running(self) -> bool:
        return self._process.poll() is None

    def status(self, seconds: float = 20.0) -> int:
        """Waits for the end: the exit status, or minus the number of the fatal signal."""
        return self._process.wait(timeout=seconds)

    def send_signal(self, number: signal.Signals) -> None:
        self._process.send_signal(number)

    def end(self) -> None:
        """Ends the run, however it stands."""
        if self.is_running():
            self._process.kill()
        self._process.wait()

    def wait_for_error(self, text: str, seconds: float = PATIENCE) -> None:
        wait_until(f"standard error to hold {text!r}", lambda: text in self.stderr, seconds,
                   state=lambda: self.stderr)

    def passes(self) -> int:
        """How many passes of the main loop the trace tells of."""
        return self.trace.count(",novatel_main_loop,")

    def wait_for_passes(self, count: int, seconds: float = PATIENCE) -> None:
        """Waits until the loop has made so many passes more."""
        wanted = self.passes() + count
        wait_until(f"{count} more passes", lambda: self.passes() >= wanted, seconds)

    def passes_per_second(self, period: float) -> float:
        """Measured over a period, from one pass to another."""
        self.wait_for_passes(1)
        before, start = self.passes(), time.monotonic()
        time.sleep(period)
        return (self.passes() - before) / (time.monotonic() - start)

    def processor_share(self, period: float) -> float:
        """The part of one core it used over a period."""
        before, start = self._processor_seconds(), time.monotonic()
        time.sleep(period)
        return (self._processor_seconds() - before) / (time.monotonic() - start)

    def _processor_seconds(self) -> float:
        fields = Path(f"/proc/{self.pid}/stat").read_text().rpartition(")")[2].split()
        return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")

    def peak_kib(self) -> int:
        """The most memory it ever held at once."""
        lines = Path(f"/proc/{self.pid}/status").read_text().splitlines()
        return int(next(line for line in lines if line.startswith("VmHWM")).split()[1])

    def descriptors(self) -> dict[int, str]:
        """What it has open."""
        folder = Path(f"/proc/{self.pid}/fd")
        return {int(entry.name): os.readlink(entry) for entry in folder.iterdir()}
