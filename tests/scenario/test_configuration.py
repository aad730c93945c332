"""The receiver's configuration: which commands it is told, in which order, and how fast."""

from decoder.commands import CONFIGURATION
from harness.controlled import SENDING, Controlled
from harness.receiver import Receiver
from harness.scenario import MAIN
from harness.sentences import numbered

SILENT_SECONDS = 12.0  # a command a pass, ten passes a second, and some room
GPS_LOGGING = [f"{each}\r\n" for each in (
    "LOG VERSIONB ONCE", "LOG VERSIONA ONCE", "LOG TRACKSTATB ONTIME 1", "LOG PSRXYZB ONTIME 1",
    "LOG RAWEPHEMB ONCHANGED", "LOG RAWWAASFRAMEB ONNEW", "LOG IONUTCB ONCHANGED ",
    "LOG GLORAWEPHEMB ONCHANGED ", "LOG BASESTATIONOBSB ONNEW", "LOG PDPPOSB ONTIME 0.5",
    "LOG PSRPOSB ONTIME 0.5", "LOG BESTPOSB ONTIME 1", "LOG CBITHINTA ONCHANGED",
    "LOG ALMANACB ONCHANGED", "LOG GLORAWALMB ONCHANGED", "LOG GLOCLOCKB ONCHANGED",
    "LOG PSRSATS ONTIME 0.5", "LOG RTKSATSB ONTIME 0.5", "LOG RTKDATAB ONNEW",
    "LOG MATCHEDSATSB ONNEW", "LOG PORTSTATSB ONTIME 10", "LOG RXCONFIGA ONCE",
    "LOG PASSUSB3B ONCHANGED")]
LISTS = 3  # commands that stand last


class NothingConfigured(Controlled):
    def test_it_is_told_61_commands_in_their_order_and_each_once(self) -> None:
        receiver = self.receiver()
        daemon = self.control(receiver)
        receiver.wait_for_commands(61)
        daemon.wait_for_passes(3)
        self.assert_same_lines(list(CONFIGURATION), receiver.commands())

    def test_a_receiver_that_answers_nothing_is_told_all_of_them_too_one_a_pass(self) -> None:
        receiver = self.receiver(acknowledges=False)
        daemon = self.control(receiver)
        receiver.wait_for_commands(61, SILENT_SECONDS)
        self.assertGreaterEqual(daemon.passes(), 60)
        self.assert_same_lines(list(CONFIGURATION), receiver.commands())

    def test_each_is_told_as_a_warning_with_its_text(self) -> None:
        collector, receiver = self.collector(), self.receiver()
        self.control(receiver)
        collector.wait_for("logger.event", name=MAIN, level="warning",
                           text=SENDING + CONFIGURATION[-1])
        self.assert_same_lines(list(CONFIGURATION), self.told_commands(collector))

    def test_each_is_in_the_trace_as_it_is_queued(self) -> None:
        receiver = self.receiver()
        daemon = self.control(receiver)
        receiver.wait_for_commands(61)
        queued = "".join(f"Queueing Novatel Command '{each}'\n" for each in CONFIGURATION)
        self.assertIn(queued, daemon.trace.replace("\r\n", "\n").replace("\n'\n", "\r\n'\n"))


class Configured(Controlled):
    def assert_told(self, wanted: list[str], settings: str) -> None:
        receiver = self.receiver()
        daemon = self.control(receiver, settings=settings)
        receiver.wait_for_commands(len(wanted))
        daemon.wait_for_passes(2)
        self.assert_same_lines(wanted, receiver.commands())

    def assert_changes(self, settings: str, changes: dict[str, str | None]) -> None:
        """The settings change just these commands; None leaves one out."""
        wanted = list(CONFIGURATION)
        for before, after in changes.items():
            at = wanted.index(f"{before}\r\n")
            wanted[at:at + 1] = [] if after is None else [f"{after}\r\n"]
        self.assert_told(wanted, settings)

    def test_special_logs_take_any_differential_source_and_no_filter(self) -> None:
        self.assert_changes("special_logs = yes\n", {
            "psrdiffsource none": 'psrdiffsource AUTO "ANY"', "rtkcommand reset": None,
            "pdpfilter enable": "pdpfilter disable"})

    def test_the_ionosphere_mode_chooses_the_model(self) -> None:
        for mode, model in ((1, "klobuchar"), (2, "grid")):
            with self.subTest(mode=mode):
                self.assert_changes(f"ionosphere_mode = {mode}\n",
                                    {"setionotype auto": f"setionotype {model}"})

    def test_other_ionosphere_modes_leave_the_choice_to_the_receiver(self) -> None:
        for mode in (3, 7):
            with self.subTest(mode=mode):
                self.assert_told(list(CONFIGURATION), f"ionosphere_mode = {mode}\n")

    def test_the_real_reference_format_wins_over_the_other(self) -> None:
        self.assert_changes("reference_format = RTCM3\nreference_format_real = RTCM2\n",
                            {"interfacemode usb3 CMR none": "interfacemode usb3 RTCM none"})

    def test_the_reference_format_counts_where_there_is_no_real_one(self) -> None:
        self.assert_changes("reference_format = RTCM3\n",
                            {"interfacemode usb3 CMR none": "interfacemode usb3 RTCMV3 none"})

    def test_gps_logging_asks_for_its_logs_before_the_lists(self) -> None:
        self.assert_told([*CONFIGURATION[:-LISTS], *GPS_LOGGING, *CONFIGURATION[-LISTS:]],
                         "gps_logging_enabled = 1\n")

    def test_the_other_settings_reach_their_commands(self) -> None:
        positions = ("log pdpxyzb", "log pdpstatb", "log rtkxyzb", "log usb2 timeb")
        self.assert_changes(
            "psr_diff_source = auto\nrtk_extra_safe = 1\ndynamics_type = land\n"
            "position_update = 0.2\n",
            {"psrdiffsource none": 'psrdiffsource AUTO "ANY"',
             "rtkqualitylevel normal": "rtkqualitylevel extra_safe",
             "dynamics air": "dynamics land",
             **{f"{log} ontime 0.05": f"{log} ontime 0.2" for log in positions}})


class SlowReceiver(Controlled):
    """One that takes its commands slowly, or not at all for a while."""

    COMMANDS = [f"log com1 bestposb ontime {number}\r\n" for number in range(1, 5001)]

    def told_many(self, receiver: Receiver):
        """A daemon with far more commands than a line holds."""
        path = self.file("commands", "".join(self.COMMANDS).removesuffix("\r\n").encode())
        return self.control(receiver, "-c", path)

    def test_one_that_takes_nothing_gets_no_further_command_and_is_listened_to(self) -> None:
        collector, receiver = self.collector(), self.receiver()
        receiver.hold()
        daemon = self.told_many(receiver)
        receiver.line.wait_until_open()
        receiver.say(numbered(1))
        collector.wait_for_numbers([1])  # it is read only while no command can be sent
        told = len(self.told_commands(collector))
        self.assertGreater(told, 0)
        self.assertLess(told, len(self.COMMANDS))
        for number in range(2, 12):
            receiver.say(numbered(number))
            collector.wait_for_numbers([number])
            daemon.wait_for_passes(2)
        self.assertEqual(len(self.told_commands(collector)), told)
        self.assertEqual(receiver.heard(), b"")
        receiver.go_on()
        receiver.wait_for_commands(len(self.COMMANDS), 20.0)
        daemon.wait_for_passes(2)
        self.assert_same_lines(self.COMMANDS, receiver.commands())
        self.assert_same_lines(self.COMMANDS, self.told_commands(collector))

    def test_one_that_reads_slowly_gets_each_in_its_order_and_is_listened_to(self) -> None:
        collector, receiver = self.collector(), self.receiver()
        receiver.read_slowly(bytes_per_second=40_000)
        daemon = self.told_many(receiver)
        receiver.line.wait_until_open()
        number = 0
        while len(receiver.commands()) < len(self.COMMANDS) // 2:
            number += 1
            receiver.say(numbered(number))
            collector.wait_for_numbers([number])
        self.assertGreater(number, 5)
        receiver.wait_for_commands(len(self.COMMANDS), 20.0)
        daemon.wait_for_passes(2)
        self.assert_same_lines(self.COMMANDS, receiver.commands())
