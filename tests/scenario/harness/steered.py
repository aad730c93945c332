"""The base of the scenarios in which other programs steer the daemon over its RPC service."""

import configparser
import contextlib
import os
import time

from decoder.commands import CONFIGURATION
from harness.controlled import Controlled
from harness.daemon import Daemon
from harness.receiver import Receiver
from harness.rpc_client import RPCClient
from harness.waiting import PATIENCE, wait_until


def request(method: str, *params, number=1) -> dict:
    return {"jsonrpc": "2.0", "id": number, "method": method, "params": params}


def notification(method: str, *params) -> dict:
    return {"jsonrpc": "2.0", "method": method, "params": params}


def descriptors(daemon: Daemon) -> int:
    """How many it has; one more now and then, while it looks for the multiplexer."""
    return len(os.listdir(f"/proc/{daemon.pid}/fd"))


def lasting_descriptors(daemon: Daemon) -> int:
    """How many it has all the time."""
    counts = []
    for _ in range(20):
        counts.append(descriptors(daemon))
        time.sleep(0.005)
    return min(counts)


class Steered(Controlled):
    """A daemon, its receiver and any number of clients."""

    def client(self, address: str = "127.0.0.1", seconds: float = PATIENCE) -> RPCClient:
        """Connects as soon as the daemon listens."""
        client = wait_until(f"the service on {address}", lambda: self.try_to_connect(address),
                            seconds)
        self.addCleanup(client.close)
        return client

    def try_to_connect(self, address: str = "127.0.0.1") -> RPCClient | None:
        with contextlib.suppress(ConnectionRefusedError):
            return RPCClient(address)
        return None

    def configured(self, settings: str = "") -> tuple[Receiver, Daemon, RPCClient]:
        """A receiver that has been told its whole configuration."""
        receiver = self.receiver()
        daemon = self.control(receiver, settings=settings)
        receiver.wait_for_commands(len(CONFIGURATION))
        return receiver, daemon, self.client()

    def brief(self, settings: str = "") -> tuple[Receiver, Daemon, RPCClient]:
        """A receiver whose whole configuration is one command."""
        receiver = self.receiver()
        daemon = self.control(receiver, "-c", self.file("commands", b"log version"),
                              settings=settings)
        receiver.wait_for_commands(1)
        return receiver, daemon, self.client()

    def stored(self, key: str) -> str | None:
        """What a program that starts now would read."""
        parser = configparser.ConfigParser(interpolation=None)
        parser.optionxform = str
        parser.read(self.folder / "settings.conf", encoding="utf-8")
        return parser.get("Corvane", key, fallback=None)

    def configuration(self, changes: dict[str, str] | None = None) -> list[str]:
        """The whole of what the receiver is told, with these commands changed."""
        wanted = list(CONFIGURATION)
        for before, after in (changes or {}).items():
            wanted[wanted.index(f"{before}\r\n")] = f"{after}\r\n"
        return wanted

    def wait_for_descriptors(self, daemon: Daemon, count: int, seconds: float = PATIENCE) -> None:
        """Until it has no more of them than that."""
        wait_until(f"no more than {count} descriptors", lambda: descriptors(daemon) <= count,
                   seconds, lambda: descriptors(daemon))

    def assert_told_next(self, receiver: Receiver, daemon: Daemon, before: int,
                         wanted: list[str]) -> None:
        """After the first so many commands the receiver is told just these."""
        receiver.wait_for_commands(before + len(wanted))
        daemon.wait_for_passes(3)
        self.assert_same_lines(wanted, receiver.commands()[before:])
