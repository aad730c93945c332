"""A receiver that falls silent: the port is reset, and set up again half a minute later."""

from harness.scenario import MAIN, Scenario
from harness.sentences import nmea, numbered

TIMED_OUT = "CorvanePortTimeout resetting receiver"
SET_UP = "CorvanePortTimeout reset sleep complete, setting up receiver"
RESET_SECONDS = 30.0


class SilentReceiver(Scenario):
    def quick(self) -> dict[str, str]:
        """A configuration with a port timeout of one second."""
        return {"CORVANE_CONFIG": self.file("conf", b"[Corvane]\nserial_port_timeout = 1\n")}

    def opened(self):
        """With a single command for the receiver: none is waiting when the silence is noticed."""
        collector = self.collector()
        line = self.serial_line()
        daemon = self.corvane("-s", str(line.device), "-c", self.file("commands", b"log version"),
                              environment=self.quick())
        line.wait_until_open()
        return collector, line, daemon

    def test_silence_is_told_and_raised_and_30_s_later_the_port_is_set_up_again(self) -> None:
        collector, line, daemon = self.opened()
        timed_out = collector.wait_for("logger.event", name=MAIN, level="error", text=TIMED_OUT)
        collector.wait_for("diagnostics.raise", name=MAIN, value=1)
        set_up = collector.wait_for("logger.event", name=MAIN, level="error", text=SET_UP,
                                    seconds=RESET_SECONDS + 5.0)
        self.assertAlmostEqual(set_up["time"] - timed_out["time"], RESET_SECONDS, delta=0.5)
        collector.wait_for_status(MAIN, "receiver_initialisations", "2")
        line.wait_until_open(2.0)
        line.say(numbered(1))
        collector.wait_for_numbers([1], seconds=2.0)
        self.assertTrue(daemon.is_running())

    def test_records_keep_the_port_from_timing_out(self) -> None:
        collector, line, daemon = self.opened()
        for number in range(1, 8):
            line.say(numbered(number))
            daemon.wait_for_passes(4)
        self.assertEqual(collector.messages("logger.event", text=TIMED_OUT), [])
        self.assertEqual(collector.numbers(), list(range(1, 8)))

    def test_nmea_sentences_count_as_records(self) -> None:
        collector, line, daemon = self.opened()
        for _ in range(7):
            line.say(nmea("GPGGA,1"))
            daemon.wait_for_passes(4)
        self.assertEqual(collector.messages("logger.event", text=TIMED_OUT), [])

    def test_bytes_without_a_record_do_not_keep_the_port_from_timing_out(self) -> None:
        collector, line, daemon = self.opened()
        for _ in range(5):
            line.say(b"#BESTPOSA,COM1*00000000\r\n[COM1]")
            daemon.wait_for_passes(4)
        collector.wait_for("logger.event", name=MAIN, text=TIMED_OUT)
