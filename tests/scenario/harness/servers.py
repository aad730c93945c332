"""A scripted server on any stream socket: what the collector and the multiplexer are made of."""

import contextlib
import socket
import threading
from collections.abc import Callable


class Connection:
    """One client. Its bytes are handed on by a thread of its own."""

    def __init__(self, server: "Server", stream: socket.socket, index: int) -> None:
        self.index = index
        self.pending = b""  # for the owner: bytes of a line that has not ended yet
        self.ended = threading.Event()
        self._closing = False
        self._server = server
        self.stream = stream
        self._thread = threading.Thread(target=self._run, daemon=True)

    def start(self) -> None:
        self._thread.start()

    def _run(self) -> None:
        with contextlib.suppress(OSError):
            self._server.on_connect(self)
            while True:
                self._server.reading.wait()
                if self._closing:
                    break
                chunk = self.stream.recv(65536)
                if not chunk:
                    break
                self._server.on_bytes(self, chunk)
        self.ended.set()
        self.stream.close()

    def send(self, data: bytes) -> None:
        self.stream.sendall(data)

    def close(self) -> None:
        """Closes at once; what is not being read is lost, as when a process dies."""
        self._closing = True
        with contextlib.suppress(OSError):
            self.stream.shutdown(socket.SHUT_RDWR)
        self._server.reading.set()
        self._thread.join()


class Server:
    """Listens on the socket that `listen` makes. Can be killed and started again."""

    def __init__(self, listen: Callable[[], socket.socket],
                 on_bytes: Callable[[Connection, bytes], None],
                 on_connect: Callable[[Connection], None] = lambda connection: None) -> None:
        self._listen = listen
        self.on_bytes = on_bytes
        self.on_connect = on_connect
        self._listener: socket.socket | None = None
        self._thread: threading.Thread | None = None
        self.connections: list[Connection] = []
        self.reading = threading.Event()  # cleared, the connections are held and not read
        self.reading.set()

    def start(self) -> None:
        self._listener = self._listen()
        self._thread = threading.Thread(target=self._accept, args=(self._listener,), daemon=True)
        self._thread.start()

    def _accept(self, listener: socket.socket) -> None:
        with contextlib.suppress(OSError):
            while True:
                stream, _ = listener.accept()
                connection = Connection(self, stream, len(self.connections))
                self.connections.append(connection)
                connection.start()

    def open_connections(self) -> list[Connection]:
        return [each for each in self.connections if not each.ended.is_set()]

    def kill(self) -> None:
        """What the kernel does when the process dies: every socket is closed at once."""
        if self._listener is None:
            return
        with contextlib.suppress(OSError):
            self._listener.shutdown(socket.SHUT_RDWR)
        self._listener.close()
        self._listener = None
        self._thread.join()
        for connection in self.open_connections():
            connection.close()


def listen_on_tcp(port: int, receive_buffer: int | None = None) -> socket.socket:
    listener = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
    listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
    if receive_buffer is not None:
        listener.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, receive_buffer)
    listener.bind(("127.0.0.1", port))
    listener.listen()
    return listener


def listen_on_path(path: str) -> socket.socket:
    listener = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
    listener.bind(path)
    listener.listen()
    return listener
