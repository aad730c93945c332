"""What a service manager is told: a program is ready when others can use it, and not before."""

import socket

from harness.hub import GPSD_PORT, SERVICES_PORT, Hub
from harness.mux import RPC_PORT, Mux
from harness.scenario import Scenario


def is_served(address: str | tuple[str, int]) -> bool:
    family = socket.AF_UNIX if isinstance(address, str) else socket.AF_INET
    with socket.socket(family) as probe:
        return probe.connect_ex(address) == 0


class Readiness(Scenario):
    def setUp(self) -> None:
        super().setUp()
        path = str(self.folder / "notify")
        self.manager = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self.addCleanup(self.manager.close)
        self.manager.bind(path)
        self.manager.settimeout(5.0)
        self.managed = ("env", f"NOTIFY_SOCKET={path}")

    def test_the_multiplexer_is_ready_when_its_ports_are_there(self) -> None:
        mux = Mux(self.folder / "mux", (f"--port=50={self.folder}/none",), self.managed)
        self.addCleanup(mux.kill)
        self.assertEqual(self.manager.recv(100), b"READY=1")
        self.assertTrue(is_served("/tmp/tty_socket_50"))
        self.assertTrue(is_served(("127.0.0.1", RPC_PORT)))

    def test_a_multiplexer_that_serves_nothing_is_never_ready(self) -> None:
        taken = self.folder / "sockets"
        taken.mkdir()
        (taken / "tty_socket_50").write_text("no socket")
        mux = Mux(self.folder / "mux", (f"--port=50={self.folder}/none", f"--socket-dir={taken}"),
                  self.managed)
        self.assertEqual(mux.status(), 1)
        self.manager.setblocking(False)
        self.assertRaises(BlockingIOError, self.manager.recv, 100)

    def test_the_hub_is_ready_when_it_takes_messages(self) -> None:
        hub = Hub(self.folder / "hub", prefix=self.managed, ports=())
        self.addCleanup(hub.kill)
        self.assertEqual(self.manager.recv(100), b"READY=1")
        self.assertTrue(is_served(("127.0.0.1", SERVICES_PORT)))
        self.assertTrue(is_served(("127.0.0.1", GPSD_PORT)))
