"""What goes wrong with the simulated receiver, as the daemon sees it."""

from harness.collector import Collector
from harness.scenario import MAIN
from harness.simulated import Simulated
from harness.waiting import wait_until

STATUS = "NovatelReceiverStatus"
OVERLOAD = 0x80  # of the status word
RESTART_SECONDS = 45.0  # 30 s after a reset the daemon sets the receiver up anew


class Silence(Simulated):
    def test_a_silent_receiver_is_reset_and_set_up_anew(self) -> None:
        simulator, collector, _ = self.at_work("--silent", "4,3",
                                               settings="serial_port_timeout = 1\n")
        collector.wait_for("logger.event", name=MAIN, level="error", seconds=10.0,
                           text="CorvanePortTimeout resetting receiver")
        simulator.wait_for_line("^com1 < RESET$")
        collector.wait_for_status(MAIN, "receiver_initialisations", "2", RESTART_SECONDS)
        before = len(self.epochs(collector))
        wait_until("positions again", lambda: len(self.epochs(collector)) > before + 20, 10.0)

    def test_a_port_at_a_speed_of_its_own_is_noise_until_that_is_over(self) -> None:
        _, collector, _ = self.at_work("--wrong-baud", "4,2")
        gaps = wait_until("a gap", lambda: [each for each in self.steps(collector) if each > 50],
                          15.0)
        self.assertEqual(gaps, [2050])

    def test_a_receiver_that_starts_so_is_never_understood(self) -> None:
        collector = self.collector()
        simulator = self.simulator("--baud", "115200", "--wrong-baud")
        self.daemon(simulator)
        simulator.wait_for_line(r"^com1 < \(noise\)")
        self.terminal(simulator, "usb1").ask("log com1 versionb ontime 1", b"<OK")
        wait_until("its noise", lambda: len(collector.raw_bytes(MAIN)) > 1023, 30.0)
        self.assertEqual(collector.messages("logger.data", name=MAIN), [])
        self.assertEqual(simulator.heard(), [])


class Words(Simulated):
    def status_words(self, collector: Collector) -> list[int]:
        told = collector.messages("logger.status", name=STATUS, key="ReceiverStatus")
        return [int(each["value"].split(":")[0], 16) for each in told]

    def test_an_overload_of_its_processor_is_told_and_passes(self) -> None:
        _, collector, _ = self.at_work("--cpu-overload", "4,2")
        wait_until("the overload and its end",
                   lambda: self.status_words(collector) == [0, OVERLOAD, 0], 15.0,
                   lambda: self.status_words(collector))
        told = collector.messages("logger.status", name=STATUS, key="ReceiverCPUIdlePercentage")
        self.assertEqual([float(each["value"]) for each in told], [65.0, 0.0, 65.0])

    def test_bits_of_the_status_word_are_there_from_the_start(self) -> None:
        _, collector, _ = self.at_work("--status-bits", "0x20")
        wait_until("the status", lambda: self.status_words(collector))
        self.assertEqual(self.status_words(collector), [0x20])

    def test_bits_of_the_error_word_come_when_they_are_to(self) -> None:
        _, collector, _ = self.at_work("--error-bits", "0x8000@4")
        errors = wait_until("both", lambda: self.both(collector), 15.0)
        self.assertEqual([int(each.split(":")[0], 16) for each in errors], [0, 0x8000])
        self.assertEqual(self.status_words(collector), [0, 1], "bit 0 tells that there is one")

    def both(self, collector: Collector) -> list[str] | None:
        told = [each["value"] for each in
                collector.messages("logger.status", name=STATUS, key="ReceiverError")]
        changes = [value for number, value in enumerate(told)
                   if number == 0 or told[number - 1] != value]
        return changes if len(changes) == 2 else None
