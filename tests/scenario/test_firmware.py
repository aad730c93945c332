"""What the receiver tells of a firmware load, and how the daemon behaves meanwhile."""

from harness import logs
from harness.collector import Collector
from harness.controlled import Controlled
from harness.daemon import Daemon
from harness.receiver import Receiver
from harness.scenario import MAIN
from harness.sentences import ascii_log, numbered
from harness.waiting import wait_until

STATUS = "SOFTLOADSTATUSA"
FRESET = "FRESET\r\n"
POSITION = "NovatelPositionManager"
TIMED_OUT = "CorvanePortTimeout resetting receiver"
FLOAT = 34
FIRST_COMMAND = "log version\r\n"


class Loading(Controlled):
    def ready(self, settings: str = "") -> tuple[Collector, Receiver, Daemon]:
        """A receiver that has been told its one command and has said something."""
        collector, receiver = self.collector(), self.receiver()
        daemon = self.control(receiver, "-c", self.file("commands", b"log version"),
                              settings=settings)
        receiver.wait_for_commands(1)
        receiver.say(numbered(1))
        collector.wait_for_numbers([1])
        return collector, receiver, daemon

    def report(self, collector: Collector, receiver: Receiver, status: str) -> None:
        """The receiver reports a status, and the daemon has taken note."""
        before = len(self.noted(collector))
        receiver.say(ascii_log(STATUS, status))
        wait_until(f"the status {status}", lambda: len(self.noted(collector)) > before)

    def noted(self, collector: Collector) -> list[str]:
        """The statuses that were told, as their numbers."""
        start = "SoftloadManager::DispatchLog status is "
        return [text.removeprefix(start) for text in self.errors(collector, POSITION)
                if text.startswith(start)]

    def errors(self, collector: Collector, name: str) -> list[str]:
        return [event["text"] for event in
                collector.messages("logger.event", name=name, level="error")]


class Ends(Loading):
    def assert_reset_and_over(self, status: str, number: str) -> None:
        collector, receiver, daemon = self.ready()
        self.report(collector, receiver, status)
        receiver.wait_for_command(FRESET)
        daemon.wait_for_passes(3)
        self.assertEqual(receiver.commands(), [FIRST_COMMAND, FRESET])
        self.assertEqual(self.noted(collector), [number])
        told = self.errors(collector, POSITION)
        self.assertEqual(told[-2:], ["SoftloadManager sent command <FRESET>",
                                     "SoftloadManager::EndUpgrade: upgrade complete"])

    def test_a_load_that_is_complete_is_followed_by_a_reset(self) -> None:
        self.assert_reset_and_over("COMPLETE", "12")

    def test_a_flash_that_is_written_is_followed_by_a_reset(self) -> None:
        self.assert_reset_and_over("WROTE_FLASH", "6")

    def test_a_load_that_has_failed_is_over_without_a_reset(self) -> None:
        for status, number in (("RESET_ERROR", 13), ("BAD_PLATFORM", 15), ("NO_PLATFORM", 26)):
            with self.subTest(status=status):
                collector, receiver, daemon = self.ready()
                self.report(collector, receiver, status)
                self.assertIn(f"Ending upgrade because status is {number}",
                              self.errors(collector, POSITION))
                daemon.wait_for_passes(3)
                self.assertEqual(receiver.commands(), [FIRST_COMMAND])
                daemon.end()
                collector.stop()

    def test_an_unknown_status_is_told_by_its_text_and_changes_nothing_else(self) -> None:
        collector, receiver, daemon = self.ready()
        self.report(collector, receiver, "COPIED_SIGNATURE_AUTH")
        self.assertTrue(any("COPIED_SIGNATURE_AUTH" in text
                            for text in self.errors(collector, POSITION)))
        receiver.say(numbered(2))
        collector.wait_for_numbers([2])
        daemon.wait_for_passes(3)
        self.assertEqual(receiver.commands(), [FIRST_COMMAND])


class Meanwhile(Loading):
    """While the receiver waits for the data of a load, whoever loads it."""

    def float_solution(self, milliseconds: int) -> bytes:
        return logs.cartesian(logs.RTKXYZ, FLOAT, milliseconds=milliseconds)

    def test_commands_wait_until_it_is_over(self) -> None:
        collector, receiver, daemon = self.ready("pdp_filter_reset = 1\n")
        self.report(collector, receiver, "READY_FOR_DATA")
        receiver.say(self.float_solution(0) + self.float_solution(60_000) + numbered(2))
        collector.wait_for_numbers([2])
        daemon.wait_for_passes(5)
        self.assertEqual(receiver.commands(), [FIRST_COMMAND])
        self.report(collector, receiver, "BAD_SRECORD")
        receiver.wait_for_command("pdpfilter reset\r\n")
        self.assertEqual(receiver.commands(), [FIRST_COMMAND, "pdpfilter reset\r\n"])

    def test_a_silent_port_is_not_reset_before_it_is_over(self) -> None:
        collector, receiver, daemon = self.ready("serial_port_timeout = 1\n")
        self.report(collector, receiver, "READY_FOR_DATA")
        daemon.wait_for_passes(25)
        self.assertEqual(collector.messages("logger.event", text=TIMED_OUT), [])
        self.report(collector, receiver, "OUT_OF_MEMORY")
        collector.wait_for("logger.event", name=MAIN, level="error", text=TIMED_OUT)
        receiver.wait_for_command("RESET\r\n")

    def test_sentences_with_a_number_sign_are_told_as_errors_and_read_as_ever(self) -> None:
        collector, receiver, _ = self.ready()
        before = ascii_log("VERSIONA", "before")
        during = ascii_log("VERSIONA", "during")
        receiver.say(before)
        self.report(collector, receiver, "READY_FOR_SETUP")
        receiver.say(during + numbered(2))
        collector.wait_for_numbers([2])
        self.report(collector, receiver, "MODULE_MISMATCH")
        start = "sentence data during upgrade: "
        told = [text.removeprefix(start).rstrip() for text in self.errors(collector, MAIN)
                if text.startswith(start)]
        status = ascii_log(STATUS, "MODULE_MISMATCH")
        self.assertEqual(told, [during.decode().rstrip(), status.decode().rstrip()])

    def test_its_progress_is_told_as_it_is_known_without_a_file(self) -> None:
        collector, receiver, _ = self.ready()
        self.report(collector, receiver, "READY_FOR_DATA")
        collector.wait_for_status(POSITION, "softload_status", "0,0,3")
