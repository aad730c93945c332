"""Many connections at once, to the RPC service unless another port is named; none of them waits for
another."""

import fcntl
import json
import select
import socket
import struct
import termios
import time
from collections.abc import Callable

from harness.rpc_client import PORT
from harness.steered import request
from harness.waiting import wait_until

_REPAIR = 19  # TCP_REPAIR: a socket that is closed in this state says nothing to its peer
_CHUNK = 65536


class Member:
    """One connection, and what it has been told."""

    def __init__(self, data: bytes, *, reads: bool = True, port: int = PORT) -> None:
        self.received = bytearray()
        self.sent = 0
        self.is_closed = False  # by the daemon
        self._data = memoryview(data)
        self._reads = reads
        self.stream = socket.socket()
        self.stream.setblocking(False)
        self.stream.connect_ex(("127.0.0.1", port))

    def wanted(self) -> int:
        wants_to_send = select.POLLOUT if self.sent < len(self._data) else 0
        return wants_to_send | (select.POLLIN if self._reads else 0)

    def step(self, events: int) -> None:
        try:
            if events & select.POLLOUT:
                self.sent += self.stream.send(self._data[self.sent:self.sent + _CHUNK])
            if events & ~select.POLLOUT:
                chunk = self.stream.recv(_CHUNK)
                self.received += chunk
                self.is_closed = not chunk
        except BlockingIOError:
            pass
        except OSError:
            self.is_closed = True

    def answers(self) -> list:
        return [json.loads(line) for line in self.received.splitlines()]


class Crowd:
    """To be used in a with statement: all leave at its end."""

    def __init__(self, port: int = PORT) -> None:
        self.members: list[Member] = []
        self._port = port

    def __enter__(self) -> "Crowd":
        return self

    def __exit__(self, *_) -> None:
        for member in self.members:
            member.stream.close()

    def join(self, count: int, data: bytes, *, reads: bool = True) -> list[Member]:
        new = [Member(data, reads=reads, port=self._port) for _ in range(count)]
        self.members += new
        return new

    def run_until(self, what: str, condition: Callable[[], bool], seconds: float) -> None:
        """Each sends and reads as far as it goes."""
        deadline = time.monotonic() + seconds
        while not condition():
            if time.monotonic() > deadline:
                told = [(each.sent, len(each.received), each.is_closed) for each in self.members]
                raise AssertionError(f"waited {seconds} s in vain for {what}: {told[:20]}")
            self._step()

    def _step(self) -> None:
        poll, members = select.poll(), {}
        for member in self.members:
            if not member.is_closed:
                poll.register(member.stream, member.wanted())
                members[member.stream.fileno()] = member
        for descriptor, events in poll.poll(20):
            members[descriptor].step(events)

    def answered(self) -> list[Member]:
        return [each for each in self.members if each.received]

    def turned_away(self) -> list[Member]:
        return [each for each in self.members if each.is_closed and not each.received]


def connect(receive_buffer: int | None = None) -> socket.socket:
    stream = socket.socket()
    if receive_buffer is not None:
        stream.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, receive_buffer)
    stream.settimeout(10.0)
    stream.connect(("127.0.0.1", PORT))
    return stream


def line(*messages) -> bytes:
    return "".join(json.dumps(each) + "\n" for each in messages).encode()


def vanish(stream: socket.socket) -> None:
    """As when a cable is cut: the daemon has got everything so far, and is not told."""
    wait_until("all to be delivered", lambda: not _undelivered(stream))
    stream.setsockopt(socket.IPPROTO_TCP, _REPAIR, 1)
    stream.close()


def _undelivered(stream: socket.socket) -> int:
    return struct.unpack("=i", fcntl.ioctl(stream, termios.TIOCOUTQ, bytes(4)))[0]


def hang_up(stream: socket.socket) -> None:
    """With a reset instead of an end."""
    stream.setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, b"\1\0\0\0\0\0\0\0")
    stream.close()


ASKING = line(request("DummyFunction"))
