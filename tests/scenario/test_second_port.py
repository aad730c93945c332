"""The second port: it is no receiver's, so its silence is told and nobody is reset for it."""

from harness.controlled import Controlled
from harness.scenario import SECOND

TIMED_OUT = "CorvanePortTimeout resetting receiver"
START_SECONDS = 30.0  # of silence that a port has at first


class SecondPort(Controlled):
    def test_it_is_silent_after_30_s_when_no_multiplexer_is_there(self) -> None:
        collector, receiver = self.collector(), self.receiver()
        self.control(receiver, "-c", self.file("commands", b"log version"),
                     settings="serial_port_timeout = 100\n")
        started = collector.wait_for("logger.status", name=SECOND, key="started")
        timed_out = collector.wait_for("logger.event", name=SECOND, level="error", text=TIMED_OUT,
                                       seconds=START_SECONDS + 5.0)
        self.assertAlmostEqual(timed_out["time"] - started["time"], START_SECONDS, delta=0.5)
        self.assertEqual(receiver.commands(), ["log version\r\n"])
