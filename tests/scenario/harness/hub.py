"""The hub as its operator sees it: arguments, output, status, and the ports that it listens on."""

import contextlib
import signal
import socket
import subprocess
from pathlib import Path

from harness import places
from harness.resources import sample
from harness.waiting import PATIENCE, wait_until

SERVICES_PORT, HTTP_PORT, GPSD_PORT = 10001, 8080, 2947


def _takes_connections(port: int) -> bool:
    with contextlib.suppress(OSError), socket.create_connection(("127.0.0.1", port), PATIENCE):
        return True
    return False


class Hub:
    """One run of `corvane-hub`. What it keeps and what it says is in the folder, so that a second
    run in the same folder finds what the first one has left.

    In a test: `hub = Hub(self.folder / "hub")`, `self.addCleanup(hub.kill)`.
    """

    def __init__(self, folder: Path, *arguments: str, prefix: tuple[str, ...] = (),
                 ports: tuple[int, ...] = (SERVICES_PORT, HTTP_PORT, GPSD_PORT)) -> None:
        """Returns when it takes connections on `ports`; with none, at once."""
        self.state = folder / "state"
        self.state.mkdir(parents=True, exist_ok=True)
        self._stdout_path = folder / "stdout"
        self._stderr_path = folder / "stderr"
        command = [*prefix, str(places.binaries() / "corvane-hub"),
                   f"--state-dir={self.state}", *arguments]
        with open(self._stdout_path, "wb") as output, open(self._stderr_path, "wb") as errors:
            self._process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=output,
                                             stderr=errors)
        try:
            for port in ports:
                wait_until(f"the hub to listen on {port}",
                           lambda port=port: _takes_connections(port) or not self.is_running(),
                           state=lambda: self.stderr)
            assert not ports or self.is_running(), f"the hub has ended: {self.stderr}"
        except AssertionError:
            self.kill()
            raise

    @property
    def pid(self) -> int:
        return self._process.pid

    @property
    def stdout(self) -> str:
        return self._stdout_path.read_text(errors="replace")

    @property
    def stderr(self) -> str:
        return self._stderr_path.read_text(errors="replace")

    def wait_for_error(self, text: str, seconds: float = PATIENCE) -> None:
        wait_until(f"standard error to hold {text!r}", lambda: text in self.stderr, seconds,
                   state=lambda: self.stderr)

    def is_running(self) -> bool:
        return self._process.poll() is None

    def status(self, seconds: float = 10.0) -> int:
        """Waits for the end: the exit status, or minus the number of the fatal signal."""
        return self._process.wait(timeout=seconds)

    def terminate(self, number: signal.Signals = signal.SIGTERM) -> int:
        """Asks it to end, waits until it has, and returns its status."""
        self._process.send_signal(number)
        return self.status()

    def kill(self) -> None:
        """Ends the run, however it stands."""
        if self.is_running():
            self._process.kill()
        self._process.wait()

    def memory_kib(self) -> int:
        return sample(self.pid).rss_kib

    def descriptors(self) -> int:
        return sample(self.pid).descriptors
