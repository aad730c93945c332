"""A collecting server that does not read, or is lost while something is under way to it."""

import signal
import time

from harness.collector import Collector
from harness.daemon import Daemon
from harness.scenario import MAIN, Scenario
from harness.sentences import series
from harness.serial_line import SerialLine
from harness.waiting import wait_until

BUFFER = 4096  # of the server's socket, so that it is full soon
GIVEN_UP_AFTER = 10.0  # seconds for which an offline run waits for a server that takes nothing
MANY = 8000  # sentences; about 2.5 MB of messages, more than may wait


class LivePort(Scenario):
    """The receiver is alive: its port is served whatever the server does."""

    def connected(self) -> tuple[Collector, SerialLine, Daemon]:
        """A daemon that is connected to a server which does not read."""
        collector = self.collector(started=False)
        collector.start(reading=False, receive_buffer=BUFFER)
        line = self.serial_line()
        daemon = self.corvane("-d", "-s", str(line.device))
        line.wait_until_open()
        collector.wait_for_connection()
        return collector, line, daemon

    def say_and_wait(self, line: SerialLine, daemon: Daemon, first: int, last: int) -> None:
        line.say(series(first, last))
        end = f"seconds = {last}\n".encode()
        wait_until(f"sentence {last} on the screen", lambda: daemon.stdout.endswith(end), 30.0)

    def test_the_port_is_served_while_the_server_does_not_read(self) -> None:
        _, line, daemon = self.connected()
        self.say_and_wait(line, daemon, 1, MANY)
        self.assertEqual(daemon.stdout.count(b"\n"), MANY)

    def test_what_waits_is_bounded(self) -> None:
        _, line, daemon = self.connected()
        before = daemon.peak_kib()
        self.say_and_wait(line, daemon, 1, 2 * MANY)
        self.assertLess(daemon.peak_kib() - before, 4096)

    def test_when_it_reads_again_the_last_state_is_told(self) -> None:
        collector, line, daemon = self.connected()
        self.say_and_wait(line, daemon, 1, MANY)
        collector.go_on_reading()
        collector.wait_for_good(MANY)

    def test_the_oldest_lines_are_dropped_and_their_number_is_told(self) -> None:
        collector, line, daemon = self.connected()
        self.say_and_wait(line, daemon, 1, MANY)
        collector.go_on_reading()
        collector.wait_for_numbers([MANY])
        collector.wait_for_good(MANY)
        numbers = collector.numbers()
        self.assertEqual(numbers, sorted(set(numbers)))
        self.assertEqual(numbers[-100:], list(range(MANY - 99, MANY + 1)))
        missing_lines = MANY - len(numbers)
        missing_bytes = len(series(1, MANY)) - len(collector.raw_bytes(MAIN))
        self.assertGreater(missing_lines, 0)
        dropped = collector.wait_for("logger.status", name="PlatformLink", level="info",
                                     key="dropped_messages")
        wait_until("the final number of dropped messages", lambda: int(collector.status(
            "PlatformLink", "dropped_messages")) >= missing_lines)
        most = missing_lines + missing_bytes // 1024 + 1
        self.assertLessEqual(int(dropped["value"]), most)
        self.assertLessEqual(int(collector.status("PlatformLink", "dropped_messages")), most)

    def test_a_message_cut_by_the_loss_is_sent_again_whole(self) -> None:
        collector, line, daemon = self.connected()
        self.say_and_wait(line, daemon, 1, 1000)  # more than the sockets hold
        daemon.send_signal(signal.SIGSTOP)  # so that reading makes no room for more
        collector.go_on_reading()
        collector.wait_until_all_has_arrived()
        collector.stop()
        cut = collector.pending(0)
        before = collector.numbers()
        daemon.send_signal(signal.SIGCONT)
        collector.start()
        collector.wait_for_good(1000)
        self.assertNotEqual(cut, b"", "the server was not lost in the middle of a message")
        self.assertNotEqual(before[-1:], [1000])
        self.assert_same_lines(list(range(1, 1001)), collector.numbers())
        if b'"logger.status"' not in cut:  # of a state only the last one matters
            again = [each for each in collector.on_connection(1) if each.line.startswith(cut)]
            self.assertNotEqual(again, [], cut)


class OfflineRun(Scenario):
    """The input is a file: nothing may be lost, so the run waits; but not for ever."""

    def test_nothing_is_lost_with_a_server_that_reads_late(self) -> None:
        collector = self.collector(started=False)
        collector.start(reading=False, receive_buffer=BUFFER)
        daemon = self.corvane("-f", self.file("capture", series(1, MANY)))
        collector.wait_for_connection()
        self.wait_until_it_waits(daemon)
        collector.go_on_reading()
        self.assertEqual(daemon.status(30.0), 0)
        collector.wait_for_the_end()
        self.assert_same_lines(list(range(1, MANY + 1)), collector.numbers())
        good = [int(each["value"].split(",")[0]) for each in
                collector.messages("logger.status", name=MAIN, key="checksum_stats")]
        self.assert_same_lines(list(range(1, MANY + 1)), sorted(set(good)))
        whole = series(1, MANY)
        told = collector.raw_bytes(MAIN)
        self.assertEqual(told, whole[:len(told)])
        self.assertLess(len(whole) - len(told), 1024)

    def wait_until_it_waits(self, daemon: Daemon) -> None:
        """Until the trace has stood still for a while."""
        wait_until("a first pass", lambda: daemon.passes() > 0)
        last = [daemon.passes(), time.monotonic()]

        def stands_still() -> bool:
            if daemon.passes() != last[0]:
                last[:] = [daemon.passes(), time.monotonic()]
            return time.monotonic() - last[1] > 0.3

        wait_until("the run to wait", stands_still)

    def test_a_server_that_takes_nothing_for_ten_seconds_is_treated_as_gone(self) -> None:
        collector = self.collector(started=False)
        collector.start(reading=False, receive_buffer=BUFFER)
        started = time.monotonic()
        daemon = self.corvane("-d", "-f", self.file("capture", series(1, MANY)))
        self.assertEqual(daemon.status(GIVEN_UP_AFTER + 10.0), 0)
        self.assertGreater(time.monotonic() - started, GIVEN_UP_AFTER - 1.0)
        self.assertEqual(daemon.stdout.count(b"\n"), MANY)
