"""Where the RPC service listens, and what happens when it cannot."""

import contextlib
import socket
import time

from harness.collector import Collector
from harness.daemon import Daemon
from harness.receiver import Receiver
from harness.rpc_client import PORT
from harness.scenario import best_of_three
from harness.sentences import numbered
from harness.servers import listen_on_tcp
from harness.steered import Steered

LOGGER = "NovatelPositionManager"
TRIES_AGAIN = 10.0  # seconds
ELSEWHERE = "[platform]\nrpc_listen = {}\n"
NOWHERE = ("300.1.1.1", "localhost", "10.20.30.40", "::1", "")


class Listening(Steered):
    def started(self, settings: str = "") -> tuple[Collector, Receiver, Daemon]:
        collector, receiver = self.collector(), self.receiver()
        daemon = self.control(receiver, "-c", self.file("commands", b"log version"),
                              settings=settings)
        receiver.wait_for_commands(1)
        return collector, receiver, daemon

    def assert_told(self, collector: Collector, daemon: Daemon, address: str) -> None:
        """Why it does not listen, once, to who looks at either."""
        start = f"RPC service: cannot listen on {address}:{PORT}: "
        daemon.wait_for_error(start)
        self.assertEqual(daemon.stderr.count(start), 1)
        collector.wait_for("logger.event", name=LOGGER, level="error")
        told = [event["text"] for event in collector.messages("logger.event", name=LOGGER)]
        self.assertEqual([text.startswith(start) for text in told], [True], told)

    def assert_works(self, collector: Collector, receiver: Receiver, daemon: Daemon) -> None:
        receiver.say(numbered(1))
        collector.wait_for_numbers([1])
        daemon.wait_for_passes(5)


class Addresses(Listening):
    def test_it_listens_on_this_machine_only_unless_told_otherwise(self) -> None:
        self.started()
        self.assertEqual(self.client().call("DummyFunction"), [])
        self.assertIsNone(self.try_to_connect("127.0.0.2"))

    def test_another_address_takes_its_place(self) -> None:
        self.started(ELSEWHERE.format("127.0.0.2"))
        self.assertEqual(self.client("127.0.0.2").call("DummyFunction"), [])
        self.assertIsNone(self.try_to_connect())

    def test_it_may_listen_on_every_address(self) -> None:
        self.started(ELSEWHERE.format("0.0.0.0"))
        for address in ("127.0.0.1", "127.0.0.2"):
            self.assertEqual(self.client(address).call("DummyFunction"), [])

    def test_an_address_that_is_none_or_not_here_is_told_and_the_daemon_works_on(self) -> None:
        for address in NOWHERE:
            with self.subTest(address=address):
                collector, receiver, daemon = self.started(ELSEWHERE.format(address))
                self.assert_told(collector, daemon, address)
                self.assert_works(collector, receiver, daemon)
                self.assertIsNone(self.try_to_connect())
                daemon.end()
                collector.stop()
                receiver.stop()


class TakenPort(Listening):
    @best_of_three
    def test_it_is_told_and_taken_when_it_is_free_while_the_daemon_works(self) -> None:
        with contextlib.closing(listen_on_tcp(PORT)) as other:
            collector, receiver, daemon = self.started()
            self.assert_told(collector, daemon, "127.0.0.1")
            self.assert_works(collector, receiver, daemon)
            other.shutdown(socket.SHUT_RDWR)
        freed = time.monotonic()
        client = self.client(seconds=TRIES_AGAIN + 2.0)
        self.assertLess(time.monotonic() - freed, TRIES_AGAIN + 0.5)
        self.assertEqual(client.call("DummyFunction"), [])
        self.assert_told(collector, daemon, "127.0.0.1")

    def test_connections_of_a_daemon_that_has_ended_do_not_hold_it(self) -> None:
        collector, receiver, daemon = self.started()
        client = self.client()
        client.call("DummyFunction")
        daemon.end()
        collector.stop()
        receiver.stop()
        self.assertIsNone(client.receive())
        self.started()
        self.assertEqual(self.client().call("DummyFunction"), [])
