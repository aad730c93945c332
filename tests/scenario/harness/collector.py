"""The collecting server on TCP 10001: records what the daemon tells, and misbehaves on demand."""

import base64
import contextlib
import json
import re
import threading
import time
from pathlib import Path

from harness.messages import Message, parse
from harness.servers import Connection, Server, listen_on_tcp
from harness.waiting import PATIENCE, wait_until

PORT = 10001


class Collector:
    """Start it late, stop it, start it again: the record goes on."""

    def __init__(self) -> None:
        self.malformed: list[str] = []  # whole lines that are no message of the agreed kind
        self._messages: list[Message] = []
        self._lock = threading.Lock()
        self._close_after: int | None = None
        self._taken = 0
        self._receive_buffer: int | None = None
        self._categories: dict[str, int] = {}
        self._server = Server(lambda: listen_on_tcp(PORT, self._receive_buffer), self._on_bytes,
                              lambda connection: self._limit_next())

    # --- how it behaves

    def start(self, *, reading: bool = True, receive_buffer: int | None = None) -> "Collector":
        """Not reading, it accepts and lets everything wait, from the first byte on."""
        self._receive_buffer = receive_buffer
        self._server.reading.set() if reading else self._server.reading.clear()
        self._server.start()
        return self

    def stop(self) -> None:
        self._server.kill()

    def go_on_reading(self) -> None:
        self._server.reading.set()

    def close_next_connection_after(self, count: int) -> None:
        """The next connection is closed when so many of its bytes have been read."""
        self._close_after = count

    def _limit_next(self) -> None:
        self._taken = 0

    def say(self, data: bytes) -> None:
        """Sends to everybody connected what nobody asked for; as much as is taken."""
        for connection in self._server.open_connections():
            with contextlib.suppress(OSError):
                connection.send(data)

    # --- what it takes

    def _on_bytes(self, connection: Connection, chunk: bytes) -> None:
        if self._close_after is not None:
            chunk = chunk[:self._close_after - self._taken]
            self._taken += len(chunk)
        *lines, connection.pending = (connection.pending + chunk).split(b"\n")
        for line in lines:
            self._take(connection, line)
        if self._close_after is not None and self._taken == self._close_after:
            self._close_after = None
            raise ConnectionAbortedError("closing in the middle, as told")

    def _take(self, connection: Connection, line: bytes) -> None:
        try:
            message = parse(line, connection.index, time.time())
        except (ValueError, AttributeError, TypeError) as error:
            self.malformed.append(str(error))
            return
        self._keep(message)
        if "Category" in message.method:
            connection.send(self._answer(json.loads(line)["id"], message))

    def _keep(self, message: Message) -> None:
        with self._lock:
            self._messages.append(message)

    def _answer(self, identifier, message: Message) -> bytes:
        category = message["category"]
        if message.method == "logger.setCategory":
            self._categories[category] = message["enabled"]
        result = {"category": category, "enabled": self._categories.get(category, 0)}
        answer = {"jsonrpc": "2.0", "id": identifier, "result": result}
        return json.dumps(answer).encode() + b"\n"

    # --- what it has

    def messages(self, method: str | None = None, **fields) -> list[Message]:
        """All messages so far, of a method and with given fields."""
        with self._lock:
            found = list(self._messages)
        return [each for each in found if method in (None, each.method)
                and all(each.params.get(name) == value for name, value in fields.items())]

    def on_connection(self, index: int) -> list[Message]:
        return [each for each in self.messages() if each.connection == index]

    def connection_count(self) -> int:
        return len(self._server.connections)

    def pending(self, index: int) -> bytes:
        """The beginning of a line whose end never came on that connection."""
        return self._server.connections[index].pending

    def status(self, name: str, key: str) -> str | None:
        """The last value told of a status."""
        values = self.messages("logger.status", name=name, key=key)
        return values[-1]["value"] if values else None

    def raw_bytes(self, name: str) -> bytes:
        blocks = self.messages("logger.raw", name=name)
        return b"".join(base64.b64decode(block["data"], validate=True) for block in blocks)

    def numbers(self, name: str = "NovatelPortHandler") -> list[int]:
        """The numbers of the numbered sentences (see sentences.py) told as received."""
        lines = self.messages("logger.data", name=name)
        return [int(float(line["value"].split(",")[2])) for line in lines]

    # --- waiting

    def wait_for(self, method: str, seconds: float = PATIENCE, **fields) -> Message:
        """The first such message."""
        return wait_until(f"{method} {fields}", lambda: self.messages(method, **fields),
                          seconds)[0]

    def wait_for_status(self, name: str, key: str, value: str, seconds: float = PATIENCE) -> None:
        wait_until(f"{name} to tell {key} {value}", lambda: self.status(name, key) == value,
                   seconds, state=lambda: self.status(name, key))

    def wait_for_good(self, count: int, name: str = "NovatelPortHandler",
                      seconds: float = PATIENCE) -> None:
        """Until so many good sentences have been counted, however many were rejected."""
        def counts() -> str:
            return self.status(name, "checksum_stats") or ""

        wait_until(f"{count} good sentences", lambda: counts().startswith(f"{count},"), seconds,
                   state=counts)

    def wait_for_numbers(self, numbers: list[int], name: str = "NovatelPortHandler",
                         seconds: float = PATIENCE) -> None:
        wanted = set(numbers)
        wait_until(f"the sentences {numbers[:10]} of {name}",
                   lambda: wanted <= set(self.numbers(name)), seconds,
                   state=lambda: self.numbers(name)[-10:])

    def wait_for_connection(self, count: int = 1, seconds: float = PATIENCE) -> None:
        """Until so many connections have come in all."""
        wait_until(f"connection {count}", lambda: self.connection_count() >= count, seconds)

    def wait_for_the_end(self, seconds: float = PATIENCE) -> None:
        """Until somebody was connected, and has closed, and all that was sent has been read."""
        wait_until("the end of the connections", lambda: self._server.connections
                   and not self._server.open_connections(), seconds)

    def wait_until_all_has_arrived(self, seconds: float = PATIENCE) -> None:
        """Until nothing is under way to it in the kernel. Only for a peer that is stopped."""
        wait_until("the kernel's buffers to empty", lambda: not _bytes_under_way(), seconds)


def _bytes_under_way() -> bool:
    """Whether any socket from or to the port has bytes not yet sent or not yet read."""
    table = Path("/proc/net/tcp").read_text().splitlines()[1:]
    port = f":{PORT:04X}"
    rows = [re.split(r"\s+", line.strip()) for line in table]
    established = [row for row in rows if port in row[1] + row[2] and row[3] == "01"]
    return any(row[4] != "00000000:00000000" for row in established)
