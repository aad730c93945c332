"""The collecting server on TCP 10001: what it is told, and how."""

import re
import signal
import time

from harness.scenario import MAIN, SECOND, Scenario
from harness.sentences import UNKNOWN_LOG, numbered, series
from harness.waiting import wait_until

HANDLERS = [SECOND, MAIN]
NAMES = ["NovatelPositionManager", "NovatelReceiverStatus", *HANDLERS]


class Telling(Scenario):
    """A collecting server that is well."""

    def test_names_are_told_first_and_with_this_process(self) -> None:
        collector = self.collector()
        line = self.serial_line()
        daemon = self.corvane("-s", str(line.device))
        collector.wait_for("logger.status", name=MAIN, key="started")
        first = [each for each in collector.messages() if each["name"] in NAMES][:4]
        self.assertEqual([each.method for each in first], ["logger.register"] * 4)
        self.assertEqual([each["name"] for each in first], NAMES)
        self.assertEqual({(each["process"], each["pid"]) for each in first},
                         {("corvane", daemon.pid)})
        self.assertRegex(first[0]["version"], r"^\d+\.\d+\.\d+")

    def test_all_names_come_over_one_connection(self) -> None:
        collector = self.collector()
        self.run_corvane("-f", self.file("capture", series(1, 3)))
        collector.wait_for_the_end()
        self.assertEqual(collector.connection_count(), 1)

    def test_both_handlers_are_told_as_started_and_only_the_main_one_as_initialised(self) -> None:
        collector = self.collector()
        self.run_corvane("-f", self.file("empty", b""))
        collector.wait_for_the_end()
        for name in HANDLERS:
            self.assertEqual(collector.status(name, "started"), "started")
        self.assertEqual(collector.status(MAIN, "receiver_initialisations"), "1")
        self.assertIsNone(collector.status(SECOND, "receiver_initialisations"))

    def test_each_record_gives_its_data_line_and_then_the_counts(self) -> None:
        collector = self.collector()
        self.run_corvane("-f", self.file("capture", series(1, 2)))
        collector.wait_for_the_end()
        told = [each for each in collector.messages(name=MAIN)
                if each.method == "logger.data" or each.params.get("key") == "checksum_stats"]
        self.assertEqual([each["key"] for each in told],
                         [f"QRS_{UNKNOWN_LOG}", "checksum_stats"] * 2)
        self.assertEqual([each["value"] for each in told[1::2]], ["1,0", "2,0"])
        self.assertRegex(told[0]["value"], r"^\d+\.\d{6},1800,1\.000000$")

    def test_a_rejected_sentence_changes_the_counts_and_gives_no_data_line(self) -> None:
        collector = self.collector()
        damaged = bytearray(numbered(1))
        damaged[20] ^= 1
        self.run_corvane("-f", self.file("capture", bytes(damaged) + numbered(2)))
        collector.wait_for_the_end()
        counts = collector.messages("logger.status", key="checksum_stats")
        self.assertEqual([each["value"] for each in counts], ["0,1", "1,1"])
        self.assertEqual(collector.numbers(), [2])

    def test_raw_bytes_leave_at_the_end_of_an_epoch_without_the_chunk_that_ends_it(self) -> None:
        for end_of_epoch in (471, 1085):
            collector = self.collector()
            last = numbered(2, end_of_epoch)
            content = numbered(1) + last + numbered(3)
            self.run_corvane("-z", str(len(last)), "-f", self.file("capture", content))
            collector.wait_for_the_end()
            collector.stop()
            self.assertEqual(collector.raw_bytes(MAIN), numbered(1))

    def test_a_pass_that_comes_too_late_is_warned_of_with_its_seconds(self) -> None:
        collector = self.collector()
        settings = self.file("conf", b"[Corvane]\nidle_delay_threshold = 0.4\n")
        daemon = self.corvane(environment={"CORVANE_CONFIG": settings})
        collector.wait_for("logger.status", name=MAIN, key="started")
        daemon.wait_for_passes(3)
        self.assertEqual(collector.messages("logger.event", name=NAMES[0]), [])
        daemon.send_signal(signal.SIGSTOP)
        time.sleep(0.7)
        daemon.send_signal(signal.SIGCONT)
        warning = collector.wait_for("logger.event", name=NAMES[0], level="warning")
        seconds = [float(number) for number in re.findall(r"\d+\.\d+", warning["text"])]
        self.assertTrue(any(0.6 < each < 1.5 for each in seconds), warning["text"])

    def test_activity_is_told_once_a_second_and_adds_up(self) -> None:
        collector = self.collector()
        line = self.serial_line()
        self.corvane("-s", str(line.device))
        line.wait_until_open()
        line.say(series(1, 20))
        collector.wait_for_numbers(list(range(1, 21)))

        def told() -> list:
            return collector.messages("diagnostics.activity", name=MAIN)

        collector.wait_for("diagnostics.activity", name=MAIN, sentences=0, received=0)
        self.assertEqual(sum(each["sentences"] for each in told()), 20)
        self.assertGreaterEqual(sum(each["received"] for each in told()), 1)
        before = len(told())
        collector.wait_for("diagnostics.activity", name=MAIN)
        first = told()[0]["time"]
        wait_until("two more", lambda: len(told()) >= before + 2)
        times = [each["time"] - first for each in told()[:before + 2]]
        for at, time in enumerate(times):
            self.assertAlmostEqual(time, at, delta=0.4)


class Absent(Scenario):
    def test_an_absent_server_costs_a_file_run_no_second(self) -> None:
        daemon = self.corvane("-d", "-f", self.file("capture", series(1, 3)))
        self.assertEqual(daemon.status(1.0), 0)
        self.assertEqual(daemon.stdout.count(b"\n"), 3)

    def test_a_late_server_is_told_the_names_the_lines_and_then_the_state(self) -> None:
        collector = self.collector(started=False)
        line = self.serial_line()
        daemon = self.corvane("-d", "-s", str(line.device))
        line.wait_until_open()
        line.say(series(1, 5))
        daemon.wait_for_passes(2)
        collector.start()
        collector.wait_for_status(MAIN, "checksum_stats", "5,0")
        told = collector.on_connection(0)
        methods = [each.method for each in told]
        names_end = methods.count("logger.register")
        self.assertEqual(set(methods[:names_end]), {"logger.register"})
        self.assertEqual(collector.numbers(), [1, 2, 3, 4, 5])
        last_line = max(at for at, each in enumerate(methods) if each == "logger.data")
        self.assertNotIn("logger.status", methods[:last_line])
        self.assertEqual(len(collector.messages("logger.status", key="checksum_stats")), 1)

    def test_what_waited_is_told_with_its_own_time(self) -> None:
        collector = self.collector(started=False)
        line = self.serial_line()
        daemon = self.corvane("-s", str(line.device))
        line.wait_until_open()
        line.say(series(1, 1))
        daemon.wait_for_passes(12)
        collector.start()
        line_told = collector.wait_for("logger.data", name=MAIN)
        started = collector.wait_for("logger.status", name=MAIN, key="started")
        self.assertLess(line_told["time"], line_told.arrived - 0.5)
        self.assertLess(started["time"], line_told["time"])

    def test_a_late_server_is_found_within_two_seconds(self) -> None:
        collector = self.collector(started=False)
        daemon = self.corvane()
        daemon.wait_for_passes(3)
        collector.start()
        collector.wait_for_connection(1, seconds=2.0)


class Restarted(Scenario):
    def test_nothing_that_happened_meanwhile_is_lost(self) -> None:
        collector = self.collector()
        line = self.serial_line()
        daemon = self.corvane("-s", str(line.device))
        line.wait_until_open()
        line.say(series(1, 5))
        collector.wait_for_status(MAIN, "checksum_stats", "5,0")
        collector.stop()
        daemon.wait_for_passes(2)
        line.say(series(6, 9))
        daemon.wait_for_passes(2)
        collector.start()
        collector.wait_for_status(MAIN, "checksum_stats", "9,0")
        self.assertEqual(collector.numbers(), list(range(1, 10)))

    def test_the_names_and_all_state_are_told_again_with_their_first_time(self) -> None:
        collector = self.collector()
        self.corvane()
        first = collector.wait_for("logger.status", name=MAIN, key="receiver_initialisations")
        collector.stop()
        collector.start()
        collector.wait_for_connection(2)
        collector.wait_for("diagnostics.activity", name=MAIN)
        again = self.told_again(collector, "receiver_initialisations")
        self.assertEqual(again.params, first.params)
        registered = [each["name"] for each in collector.on_connection(1)
                      if each.method == "logger.register"]
        self.assertEqual([name for name in registered if name in HANDLERS], HANDLERS)

    def told_again(self, collector, key: str):
        return wait_until(f"{key} on the second connection", lambda: [
            each for each in collector.on_connection(1)
            if each.method == "logger.status" and each["key"] == key])[0]


class Hostile(Scenario):
    def connected(self):
        collector = self.collector()
        line = self.serial_line()
        self.corvane("-s", str(line.device))
        line.wait_until_open()
        collector.wait_for_status(MAIN, "started", "started")
        return collector, line

    def test_nonsense_from_the_server_changes_nothing(self) -> None:
        collector, line = self.connected()
        for nonsense in (b"\n" * 1000, b"{}\n[]\n7\n", b'{"id":1}\n{"id":1,"result":null}\n',
                         b'{"jsonrpc":"2.0","id":"x","result":{"enabled":[]}}\n',
                         bytes(range(256)) * 10 + b"\n", b"[" * 100_000 + b"\n"):
            collector.say(nonsense)
        line.say(series(1, 3))
        collector.wait_for_numbers([1, 2, 3])
        self.assertEqual(collector.connection_count(), 1)

    def test_a_line_without_end_from_the_server_ends_that_connection_only(self) -> None:
        collector, line = self.connected()
        collector.say(b"x" * (2 * 1024 * 1024))
        collector.wait_for_connection(2)
        line.say(series(1, 3))
        collector.wait_for_numbers([1, 2, 3])

    def test_a_server_that_closes_at_once_is_tried_once_a_second(self) -> None:
        collector = self.collector(started=False)
        line = self.serial_line()
        daemon = self.corvane("-s", str(line.device))
        line.wait_until_open()
        daemon.wait_for_passes(1)
        for count in range(1, 4):
            collector.close_next_connection_after(1)
            if count == 1:
                collector.start()
                started = time.monotonic()
            collector.wait_for_connection(count)
            wait_until("it to be closed", lambda: collector.pending(count - 1))
        self.assertGreater(time.monotonic() - started, 1.5)


class ClosingInTheMiddleOfALine(Scenario):
    def test_the_run_goes_on_and_the_next_connection_starts_with_a_whole_line(self) -> None:
        collector = self.collector(started=False)
        collector.close_next_connection_after(250)
        collector.start()
        line = self.serial_line()
        daemon = self.corvane("-s", str(line.device))
        line.wait_until_open()
        collector.wait_for_connection(2)
        line.say(series(1, 3))
        collector.wait_for_status(MAIN, "checksum_stats", "3,0")
        self.assertEqual(collector.numbers(), [1, 2, 3])
        self.assertNotEqual(collector.pending(0), b"")
        self.assertEqual(collector.on_connection(1)[0].method, "logger.register")
        self.assertTrue(daemon.is_running())
