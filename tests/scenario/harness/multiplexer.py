"""A scripted port multiplexer: the logical ports' sockets and the RPC service on TCP 5309."""

import contextlib
import json
import os
import threading

from harness.servers import Connection, Server, listen_on_path, listen_on_tcp
from harness.waiting import PATIENCE, wait_until

RPC_PORT = 5309


def socket_path(port: int) -> str:
    return f"/tmp/tty_socket_{port}"


class Multiplexer:
    """Present from start() to kill(); can be started again."""

    def __init__(self, ports: tuple[int, ...] = (50, 52), *, answers_calls: bool = True) -> None:
        self.speeds: list[tuple[int, int]] = []  # (port, baud rate) of every SetPortConfig
        self._answers_calls = answers_calls
        self._written: dict[int, bytearray] = {port: bytearray() for port in ports}
        self._greetings: dict[int, bytes] = {}
        self._lock = threading.Lock()
        self._ports = {port: self._make_port(port) for port in ports}
        self._rpc = Server(lambda: listen_on_tcp(RPC_PORT), self._on_call)

    def _make_port(self, port: int) -> Server:
        def keep(connection: Connection, chunk: bytes) -> None:
            with self._lock:
                self._written[port] += chunk

        def greet(connection: Connection) -> None:
            connection.send(self._greetings.get(port, b""))

        return Server(lambda: listen_on_path(socket_path(port)), keep, greet)

    def start(self) -> "Multiplexer":
        self._rpc.start()
        for port, server in self._ports.items():
            with contextlib.suppress(FileNotFoundError):
                os.unlink(socket_path(port))
            server.start()
        return self

    def kill(self) -> None:
        """Dies without a word: its sockets' names stay behind."""
        for server in [*self._ports.values(), self._rpc]:
            server.kill()

    def greet(self, port: int, data: bytes) -> None:
        """What every new client of a port is sent at once."""
        self._greetings[port] = data

    def clients(self, port: int) -> int:
        return len(self._ports[port].open_connections())

    def wait_for_client(self, port: int, seconds: float = PATIENCE) -> None:
        wait_until(f"a client on port {port}", lambda: self.clients(port), seconds)

    def send(self, port: int, data: bytes) -> None:
        """The device says something: every client of the port gets it."""
        for connection in self._ports[port].open_connections():
            connection.send(data)

    def drop_clients(self, port: int) -> None:
        for connection in self._ports[port].open_connections():
            connection.close()

    def written(self, port: int) -> bytes:
        """What clients wrote to the device."""
        with self._lock:
            return bytes(self._written[port])

    def _on_call(self, connection: Connection, chunk: bytes) -> None:
        *lines, connection.pending = (connection.pending + chunk).split(b"\n")
        for line in lines:
            call = json.loads(line)
            if self._answers_calls:
                answer = {"jsonrpc": "2.0", "id": call["id"], **self._outcome(call)}
                connection.send(json.dumps(answer).encode() + b"\n")

    def _outcome(self, call: dict) -> dict:
        if call["method"] != "SetPortConfig":
            return {"error": {"code": -32601, "message": "unknown method"}}
        port, baud_rate = call["params"]
        self.speeds.append((port, baud_rate))
        return {"result": 1}
