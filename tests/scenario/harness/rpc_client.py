"""A client of the daemon's RPC service, as any program might have one."""

import json
import socket

PORT = 5314


class RPCClient:
    """One connection. What the daemon says comes in the order in which it was said."""

    def __init__(self, address: str = "127.0.0.1", seconds: float = 10.0) -> None:
        self.stream = socket.create_connection((address, PORT), seconds)
        self._lines = self.stream.makefile("rb")

    def send(self, *messages) -> None:
        """Each as a line of its own, in one write."""
        self.stream.sendall("".join(json.dumps(each) + "\n" for each in messages).encode())

    def receive(self):
        """The next message; None when the daemon has closed the connection."""
        line = self._lines.readline()
        return json.loads(line) if line else None

    def call(self, method: str, *params):
        """The result. Raises KeyError when it is an error instead."""
        self.send({"jsonrpc": "2.0", "id": method, "method": method, "params": params})
        answer = self.receive()
        while "id" not in answer:  # what others asked to be told comes in between
            answer = self.receive()
        return answer["result"]

    def close(self) -> None:
        self._lines.close()
        self.stream.close()
