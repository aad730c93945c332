"""The port multiplexer itself as its operator sees it, and a client of one of its ports."""

import contextlib
import json
import re
import signal
import socket
import subprocess
import threading
import time
from pathlib import Path

from harness import places
from harness.resources import sample
from harness.waiting import PATIENCE, wait_until

RPC_PORT = 5309


class Mux:
    """One run of `corvane-mux`; what it says goes to files."""

    def __init__(self, folder: Path, arguments: tuple[str, ...],
                 prefix: tuple[str, ...] = ()) -> None:
        folder.mkdir(parents=True, exist_ok=True)
        self._stdout_path = folder / "stdout"
        self._stderr_path = folder / "stderr"
        self.program = str(places.binaries() / "corvane-mux")
        with open(self._stdout_path, "wb") as output, open(self._stderr_path, "wb") as errors:
            self._process = subprocess.Popen([*prefix, self.program, *arguments],
                                             stdin=subprocess.DEVNULL, stdout=output, stderr=errors)

    @property
    def pid(self) -> int:
        return self._process.pid

    @property
    def stdout(self) -> str:
        return self._stdout_path.read_text(errors="replace")

    @property
    def stderr(self) -> str:
        return self._stderr_path.read_text(errors="replace")

    def lines(self, pattern: str) -> list[str]:
        return [line for line in self.stderr.splitlines() if re.search(pattern, line)]

    def wait_for_line(self, pattern: str, seconds: float = PATIENCE) -> str:
        return wait_until(f"a line {pattern!r}", lambda: self.lines(pattern), seconds,
                          lambda: self.stderr)[0]

    def wait_for_lines(self, pattern: str, count: int, seconds: float = PATIENCE) -> None:
        wait_until(f"{count} lines {pattern!r}", lambda: len(self.lines(pattern)) >= count, seconds,
                   lambda: self.stderr)

    def is_running(self) -> bool:
        return self._process.poll() is None

    def status(self, seconds: float = 10.0) -> int:
        return self._process.wait(timeout=seconds)

    def terminate(self, number: signal.Signals = signal.SIGTERM) -> int:
        self._process.send_signal(number)
        return self.status()

    def end(self) -> None:
        """Takes its sockets along."""
        if self.is_running():
            self.terminate()

    def kill(self) -> None:
        """However it stands; its sockets' names stay behind."""
        if self.is_running():
            self._process.kill()
        self._process.wait()

    def processor_seconds(self) -> float:
        return sample(self.pid).processor_seconds

    def memory_kib(self) -> int:
        return sample(self.pid).rss_kib

    def descriptors(self) -> int:
        return sample(self.pid).descriptors


class PortClient:
    """A program on a port."""

    def __init__(self, path: str) -> None:
        self.stream = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self.stream.settimeout(PATIENCE)
        self.stream.connect(path)

    def close(self) -> None:
        self.stream.close()

    def write(self, data: bytes) -> None:
        self.stream.sendall(data)

    def keep_writing(self, data: bytes) -> threading.Thread:
        """Beside the test, for as long as it takes and the connection lasts."""

        stream = self.stream.dup()  # the reader's deadlines are its own
        stream.settimeout(60.0)

        def write() -> None:
            with contextlib.suppress(OSError), stream:
                stream.sendall(data)

        thread = threading.Thread(target=write, daemon=True)
        thread.start()
        return thread

    def read(self, count: int, seconds: float = PATIENCE) -> bytes:
        """So many bytes; fewer when they do not come in time, or at the end."""
        data = b""
        deadline = time.monotonic() + seconds
        with contextlib.suppress(TimeoutError):
            while len(data) < count:
                self.stream.settimeout(max(0.001, deadline - time.monotonic()))
                chunk = self.stream.recv(min(65536, count - len(data)))
                if not chunk:
                    break
                data += chunk
        return data

    def read_what_is_there(self) -> bytes:
        data = b""
        self.stream.setblocking(False)
        with contextlib.suppress(BlockingIOError):
            while chunk := self.stream.recv(65536):
                data += chunk
        return data

    def has_ended(self) -> bool:
        """Reads and forgets what is there."""
        self.stream.setblocking(False)
        try:
            while self.stream.recv(65536):
                pass
        except BlockingIOError:
            return False
        except ConnectionError:
            return True
        return True


class PortRPC:
    """A client of the multiplexer's remote procedures."""

    def __init__(self, port: int = RPC_PORT) -> None:
        self.stream = socket.create_connection(("127.0.0.1", port), PATIENCE)
        self._lines = self.stream.makefile("rb")

    def close(self) -> None:
        self._lines.close()
        self.stream.close()

    def answer(self, method: str, *params) -> dict:
        call = {"jsonrpc": "2.0", "id": 1, "method": method, "params": params}
        self.stream.sendall(json.dumps(call).encode() + b"\n")
        return json.loads(self._lines.readline())

    def call(self, method: str, *params):
        """The result. Raises KeyError when it is an error instead."""
        return self.answer(method, *params)["result"]
