"""A port that vanishes and comes back: found at once, set up anew when it was away for long."""

from harness.controlled import Controlled
from harness.scenario import MAIN
from harness.sentences import numbered

TIMED_OUT = "CorvanePortTimeout resetting receiver"
SET_UP = "CorvanePortTimeout reset sleep complete, setting up receiver"
RESET_SECONDS = 30.0
COMMANDS = b"selectchanconfig 3\nlog versionb once\npdpfilter reset\nFRESET STANDARD\nunlogall"
ALL = COMMANDS.replace(b"\n", b"\r\n") + b"\r\n"
FOR_EVER = b"log versionb once\r\nunlogall\r\n"  # the others would undo what has been reached


class LostPort(Controlled):
    def running(self, settings: str):
        """Its receiver has been told its commands, and has said something."""
        collector, receiver = self.collector(), self.receiver()
        self.control(receiver, "-c", self.file("commands", COMMANDS), settings=settings)
        receiver.wait_for_bytes(len(ALL))
        receiver.say(numbered(1))
        collector.wait_for_numbers([1])
        return collector, receiver

    def test_one_that_is_away_for_long_is_set_up_again_after_the_reset_time(self) -> None:
        collector, receiver = self.running("serial_port_timeout = 1\n")
        receiver.line.unplug()
        timed_out = collector.wait_for("logger.event", name=MAIN, level="error", text=TIMED_OUT)
        receiver.line.plug_in()
        receiver.line.wait_until_open(2.0)
        set_up = collector.wait_for("logger.event", name=MAIN, level="error", text=SET_UP,
                                    seconds=RESET_SECONDS + 5.0)
        self.assertAlmostEqual(set_up["time"] - timed_out["time"], RESET_SECONDS, delta=0.5)
        receiver.wait_for_bytes(len(ALL + FOR_EVER))
        self.assertEqual(receiver.heard(), ALL + FOR_EVER)
        collector.wait_for_status(MAIN, "receiver_initialisations", "2")
        receiver.line.wait_until_open()
        receiver.say(numbered(2))
        collector.wait_for_numbers([2])

    def test_one_that_is_back_in_time_is_read_on_and_told_nothing_again(self) -> None:
        collector, receiver = self.running("")
        receiver.line.unplug()
        receiver.line.plug_in()
        receiver.line.wait_until_open(2.0)
        receiver.say(numbered(2))
        collector.wait_for_numbers([2])
        self.assertEqual(receiver.heard(), ALL)
        self.assertEqual(collector.messages("logger.event", text=TIMED_OUT), [])
