"""A receiver that falls silent is reset, and told everything again half a minute later."""

from decoder.commands import CONFIGURATION
from harness.controlled import Controlled
from harness.receiver import Receiver
from harness.scenario import MAIN
from harness.sentences import numbered

TIMED_OUT = "CorvanePortTimeout resetting receiver"
RESET_SECONDS = 30.0
SOFTBREAK_SECONDS = 7.0
BREAKOUT = b"+++" b"+++\r\n" b"log version\r\n" b"com thisport 460800\r\n" b"log comconfig\r\n"
SLACK = 0.5  # seconds; some passes


class Silence(Controlled):
    def moment_of(self, receiver: Receiver, heard: bytes, seconds: float) -> float:
        """When so much was heard; nothing else has been before."""
        moment = receiver.wait_for_bytes(len(heard), seconds).moment
        self.assertEqual(receiver.heard()[:len(heard)], heard)
        return moment

    def test_breakout_and_configuration_come_again_and_what_was_for_once_does_not(self) -> None:
        collector, receiver = self.collector(), self.receiver()
        daemon = self.control(receiver, breakout="softbreak",
                              settings="serial_port_timeout = 1\n")
        first = BREAKOUT + "".join(CONFIGURATION).encode()
        self.moment_of(receiver, first, SOFTBREAK_SECONDS + 3.0)
        self.assertEqual(collector.status(MAIN, "receiver_initialisations"), "1")
        reset = self.moment_of(receiver, first + b"RESET\r\n", 5.0)
        collector.wait_for("logger.event", name=MAIN, level="error", text=TIMED_OUT)
        begun = self.moment_of(receiver, first + b"RESET\r\n" + b"+", RESET_SECONDS + 5.0)
        self.assertAlmostEqual(begun - reset, RESET_SECONDS + 1.5, delta=SLACK)
        again = [each for each in CONFIGURATION if each != "rtkcommand reset\r\n"]
        self.assertEqual(len(again), 60)
        wanted = first + b"RESET\r\n" + BREAKOUT + "".join(again).encode()
        self.moment_of(receiver, wanted, SOFTBREAK_SECONDS + 3.0)
        collector.wait_for_status(MAIN, "receiver_initialisations", "2")
        receiver.say(numbered(1))
        collector.wait_for_numbers([1])
        self.assertEqual(receiver.heard(), wanted)
        self.assertTrue(daemon.is_running())
