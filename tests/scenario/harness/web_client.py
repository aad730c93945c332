"""A web client that says what the test says, byte for byte, and reads what comes."""

import contextlib
import json
import socket
import time
from dataclasses import dataclass

from harness.hub import HTTP_PORT

PATIENCE = 10.0
HOST = "localhost"


@dataclass(frozen=True)
class Answer:
    status: int
    headers: dict[str, str]  # by their names in small letters
    body: bytes


def request(path: str, *headers: str, method: str = "GET", host: str | None = HOST,
            is_last: bool = True) -> bytes:
    lines = [f"{method} {path} HTTP/1.1"]
    lines += [] if host is None else [f"Host: {host}"]
    lines += [*headers, *(["Connection: close"] if is_last else [])]
    return "".join(line + "\r\n" for line in lines).encode() + b"\r\n"


def connect(receive_buffer: int | None = None) -> socket.socket:
    stream = socket.socket()
    if receive_buffer is not None:
        stream.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, receive_buffer)
    stream.settimeout(PATIENCE)
    stream.connect(("127.0.0.1", HTTP_PORT))
    return stream


def everything(data: bytes) -> bytes:
    """What comes until the server closes, also when it does that with a reset."""
    received = b""
    with connect() as stream, contextlib.suppress(ConnectionResetError, BrokenPipeError):
        stream.sendall(data)
        while chunk := stream.recv(65536):
            received += chunk
    return received


def answers_in(received: bytes, *, have_bodies: bool = True) -> list[Answer]:
    """Those with a length; what is left over is an error of the server."""
    answers = []
    while received:
        head, separator, rest = received.partition(b"\r\n\r\n")
        assert separator, f"no whole answer: {received[:200]!r}"
        first, *lines = head.decode().split("\r\n")
        headers = dict(line.lower().split(": ", 1) for line in lines)
        length = int(headers["content-length"]) if have_bodies else 0
        assert len(rest) >= length, f"a body of {length} bytes is cut: {received[:200]!r}"
        answers.append(Answer(int(first.split()[1]), headers, rest[:length]))
        received = rest[length:]
    return answers


def get(path: str, *headers: str, **how) -> Answer:
    """The only answer to one request."""
    received = everything(request(path, *headers, **how))
    [answer] = answers_in(received, have_bodies=how.get("method") != "HEAD")
    return answer


class Stream:
    """The server-sent events of the hub, as they come."""

    def __init__(self, *headers: str) -> None:
        self._stream = connect()
        self._stream.sendall(request("/api/stream", *headers, is_last=False))
        self._lines = self._stream.makefile("rb")
        self.head = []
        while line := self._lines.readline().strip():
            self.head.append(line.decode().lower())
        self._text = b""

    def close(self) -> None:
        self._lines.close()
        self._stream.close()

    def event(self) -> tuple[str, dict]:
        """The next one's name and content; comments between events are passed over."""
        while True:
            while b"\n\n" not in self._text:
                self._text += self._chunk()
            text, _, self._text = self._text.partition(b"\n\n")
            fields = dict(line.split(": ", 1) for line in text.decode().split("\n")
                          if not line.startswith(":"))
            if fields:
                return fields["event"], json.loads(fields["data"])

    def next(self, name: str) -> dict:
        while True:
            event, content = self.event()
            if event == name:
                return content

    def until(self, name: str, condition) -> dict:
        """The first event of the name for which the condition holds."""
        deadline = time.monotonic() + PATIENCE
        while time.monotonic() < deadline:
            content = self.next(name)
            if condition(content):
                return content
        raise AssertionError(f"no such event {name!r}; the last one was {content!r}")

    def _chunk(self) -> bytes:
        size = int(self._lines.readline(), 16)
        assert size > 0, "the stream has ended"
        content = self._lines.read(size)
        assert self._lines.read(2) == b"\r\n"
        return content
