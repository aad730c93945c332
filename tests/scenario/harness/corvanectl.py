"""The operator's command line as the operator sees it, and a daemon for it to operate."""

import contextlib
import json
import os
import re
import socket
import subprocess
from collections.abc import Callable, Iterator
from dataclasses import dataclass
from pathlib import Path

from harness import places
from harness.controlled import Controlled
from harness.daemon import Daemon
from harness.receiver import Receiver
from harness.servers import Connection, Server, listen_on_tcp
from harness.waiting import wait_until

PORT = 5314
DONE, REFUSED, USAGE, UNREACHABLE = 0, 1, 2, 3
CONTROL = re.compile(r"[\x00-\x09\x0b-\x1f\x7f]")  # what never reaches a terminal
FIRST_COMMAND, LAST_COMMAND = "unlogall thisport\r\n", "LOG RXCONFIGB ONCE\r\n"


def program() -> str:
    return str(places.binaries() / "corvanectl")


@contextlib.contextmanager
def about(what: object) -> Iterator[None]:
    """A failure inside tells what it was about; it ends the test, as any other does."""
    try:
        yield
    except AssertionError as failure:
        failure.add_note(f"about {what}")
        raise


@dataclass(frozen=True)
class Outcome:
    """What one run left behind."""

    status: int
    out: str
    err: str

    @property
    def document(self):
        """Standard output as the one JSON document on one line that it is to be."""
        assert self.out.count("\n") == 1 and self.out.endswith("\n"), self.out
        return json.loads(self.out)


class Operated(Controlled):
    """Runs of `corvanectl`; `self.settings_file` is the configuration that all share."""

    def setUp(self) -> None:
        super().setUp()
        self.settings_file = self.folder / "settings.conf"

    def environment(self) -> dict[str, str]:
        return {**os.environ, "CORVANE_CONFIG": str(self.settings_file), "TZ": "UTC"}

    def ctl(self, *arguments: str, seconds: float = 30.0) -> Outcome:
        """A run to its end."""
        run = subprocess.run([program(), *arguments], capture_output=True, text=True, check=False,
                             stdin=subprocess.DEVNULL, cwd=self.folder, env=self.environment(),
                             timeout=seconds)
        return Outcome(run.returncode, run.stdout, run.stderr)

    def done(self, *arguments: str) -> str:
        """What a run printed that went well and had nothing to remark."""
        outcome = self.ctl(*arguments)
        self.assertEqual((outcome.status, outcome.err), (DONE, ""), outcome)
        return outcome.out

    def document(self, *arguments: str):
        """The same for programs."""
        outcome = self.ctl("--json", *arguments)
        self.assertEqual((outcome.status, outcome.err), (DONE, ""), outcome)
        return outcome.document

    def fails(self, status: int, *arguments: str) -> str:
        """What a run told people that failed with the status: the same to programs."""
        plain, coded = self.ctl(*arguments), self.ctl("--json", *arguments)
        self.assertEqual((plain.status, plain.out), (status, ""), plain)
        self.assertEqual(coded.status, status, coded)
        error = coded.document["error"]
        self.assertEqual(error["status"], status)
        self.assertIn(CONTROL.sub("?", error["message"]), coded.err)
        self.assertTrue(plain.err.startswith("corvanectl: "), plain.err)
        return plain.err

    # --- what is operated

    def wait_until_served(self) -> None:
        def is_served() -> bool:
            with contextlib.suppress(OSError), socket.create_connection(("127.0.0.1", PORT)):
                return True
            return False

        wait_until("the daemon to listen", is_served)

    def operated(self, settings: str = "",
                 receiver: Receiver | None = None) -> tuple[Receiver, Daemon]:
        """A daemon that has configured its receiver."""
        receiver = receiver or self.receiver()
        daemon = self.control(receiver, settings=settings)
        receiver.wait_for_command(LAST_COMMAND)
        self.wait_until_served()
        return receiver, daemon

    def stored(self, key: str) -> str | None:
        """What a program that starts now would read, of whichever section."""
        lines = self.settings_file.read_text().splitlines()
        values = [line.partition("=")[2].strip() for line in lines
                  if line.partition("=")[0].strip() == key]
        return values[-1] if values else None

    def assert_configured_anew(self, receiver: Receiver, before: int, *wanted: str) -> None:
        """The whole configuration came once, with these commands in it."""
        wait_until("the whole configuration", lambda: LAST_COMMAND in receiver.commands()[before:],
                   state=lambda: receiver.commands()[before:])
        commands = receiver.commands()[before:]
        self.assertEqual(commands[0], FIRST_COMMAND)
        self.assertEqual(commands.count(FIRST_COMMAND), 1)
        for command in wanted:
            self.assertIn(command, commands)


class FakeDaemon(Server):
    """Listens where the daemon does and answers each line as it is told."""

    def __init__(self, answer: Callable[[dict], bytes | None]) -> None:
        super().__init__(lambda: listen_on_tcp(PORT), self._on_bytes)
        self._answer = answer
        self.requests: list[dict] = []

    def _on_bytes(self, connection: Connection, chunk: bytes) -> None:
        *lines, connection.pending = (connection.pending + chunk).split(b"\n")
        for line in lines:
            request = json.loads(line)
            self.requests.append(request)
            answer = self._answer(request)
            if answer is None:
                connection.stream.shutdown(socket.SHUT_RDWR)
            else:
                connection.send(answer)


def result(request: dict, value: object) -> bytes:
    return json.dumps({"jsonrpc": "2.0", "id": request["id"], "result": value}).encode() + b"\n"


def firmware(folder: Path, records: int, name: str = "new.shex") -> Path:
    """A file of so many S-records."""
    path = folder / name
    lines = ["S0~V~OEM060400RN0000"]
    lines += [f"S315{number:08X}{number % 256:02X}" for number in range(records - 1)]
    path.write_text("\r\n".join(lines) + "\r\n")
    return path
