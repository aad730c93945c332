"""An MQTT broker, and somebody who listens to it: mosquitto and mosquitto_sub."""

import contextlib
import json
import os
import signal
import socket
import subprocess
from dataclasses import dataclass
from pathlib import Path

from harness.waiting import PATIENCE, wait_until

PORT = 1883
PROGRAM = "/usr/sbin/mosquitto"


def is_there() -> bool:
    return os.access(PROGRAM, os.X_OK)


class Broker:
    """Keeps nothing over restarts. `settings` are further lines of its configuration."""

    def __init__(self, folder: Path, *settings: str) -> None:
        folder.mkdir(parents=True, exist_ok=True)
        self._log = folder / "broker.log"
        self._configuration = folder / "broker.conf"
        lines = [f"listener {PORT} 127.0.0.1", "user root", "persistence false", *settings]
        if not any(line.startswith("allow_anonymous") for line in lines):
            lines.append("allow_anonymous true")
        self._configuration.write_text("\n".join(lines) + "\n")
        self._process: subprocess.Popen | None = None

    def start(self) -> "Broker":
        """Returns when it takes connections."""
        with open(self._log, "ab") as log:
            self._process = subprocess.Popen([PROGRAM, "-v", "-c", self._configuration],
                                             stdin=subprocess.DEVNULL, stdout=log, stderr=log)
        wait_until("the broker", self._takes_connections, state=lambda: self.log)
        return self

    @staticmethod
    def _takes_connections() -> bool:
        with contextlib.suppress(OSError), socket.create_connection(("127.0.0.1", PORT), PATIENCE):
            return True
        return False

    @property
    def log(self) -> str:
        return self._log.read_text(errors="replace")

    def received(self, topic: str) -> int:
        """How many publications on a topic it has taken, whoever heard of them."""
        return sum("Received PUBLISH" in line and f"'{topic}'" in line
                   for line in self.log.splitlines())

    def hang(self) -> None:
        self._process.send_signal(signal.SIGSTOP)

    def kill(self) -> None:
        if self._process is not None:
            self._process.kill()
            self._process.wait()
            self._process = None


@dataclass(frozen=True)
class Publication:
    topic: str
    payload: str
    qos: int
    is_retained: bool  # told on subscribing, not when it was published

    def json(self):
        return json.loads(self.payload)


class Subscriber:
    """Hears everything below a topic. Returns when the broker has taken its subscription."""

    def __init__(self, folder: Path, name: str, *options: str, topic: str = "corvane/#") -> None:
        self._path = folder / f"{name}.heard"
        self._errors = folder / f"{name}.errors"
        with open(self._path, "wb") as heard, open(self._errors, "wb") as errors:
            self._process = subprocess.Popen(
                ["stdbuf", "-oL", "mosquitto_sub", "-d", "-h", "127.0.0.1", "-p", str(PORT),
                 "-q", "1", "-t", topic, "-F", "%q%r %t %p", *options],
                stdin=subprocess.DEVNULL, stdout=heard, stderr=errors)
        try:
            wait_until("the subscription", lambda: "Subscribed (" in self._path.read_text(),
                       state=lambda: self._path.read_text() + self._errors.read_text())
        except AssertionError:
            self.end()
            raise

    def end(self) -> None:
        self._process.kill()
        self._process.wait()

    def heard(self, topic: str) -> list[Publication]:
        """What was published on a topic, in order."""
        found = []
        for line in self._path.read_text().splitlines():
            flags, _, rest = line.partition(" ")
            told, _, payload = rest.partition(" ")
            if told == topic and len(flags) == 2 and flags.isdigit():
                found.append(Publication(told, payload, int(flags[0]), flags[1] == "1"))
        return found

    def wait_for(self, topic: str, count: int = 1, seconds: float = PATIENCE) -> Publication:
        """The last of so many publications on a topic."""
        return wait_until(f"{count} of {topic}", lambda: self.heard(topic)[count - 1:],
                          seconds, state=self._path.read_text)[0]
