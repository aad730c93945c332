"""A poor place to run in: closed descriptors, full disks, readers that go away."""

import os
import re
import signal
from pathlib import Path

from harness import namespace
from harness.scenario import MAIN, Scenario
from harness.sentences import numbered, series

COUNT = 300


class ClosedDescriptors(Scenario):
    def closing(self, redirections: str) -> tuple[str, ...]:
        return ("sh", "-c", f'exec "$0" "$@" {redirections}')

    def test_with_standard_error_closed_a_run_is_whole(self) -> None:
        collector = self.collector()
        daemon = self.run_corvane("-d", "-f", self.file("capture", series(1, COUNT)),
                                  prefix=self.closing("2>&-"))
        collector.wait_for_the_end()
        self.assertEqual(collector.numbers(), list(range(1, COUNT + 1)))
        self.assertEqual(daemon.stdout.count(b"\n"), COUNT)
        self.assertEqual(daemon.stderr, "")

    def test_with_standard_error_closed_and_the_trace_on_it_a_run_is_whole(self) -> None:
        collector = self.collector()
        daemon = self.run_corvane("-d", "-f", self.file("capture", series(1, COUNT)),
                                  prefix=("env", "-u", "CORVANE_TRACE", *self.closing("2>&-")))
        collector.wait_for_the_end()
        self.assertEqual(daemon.stdout.count(b"\n"), COUNT)
        self.assertEqual(collector.raw_bytes(MAIN),
                         series(1, COUNT)[:len(collector.raw_bytes(MAIN))])

    def test_no_port_becomes_one_of_the_standard_descriptors(self) -> None:
        collector = self.collector()
        line = self.serial_line()
        daemon = self.corvane("-s", str(line.device), prefix=self.closing("<&- >&- 2>&-"))
        line.wait_until_open()
        collector.wait_for_status(MAIN, "started", "started")
        descriptors = daemon.descriptors()
        self.assertEqual([descriptors[number] for number in range(3)], ["/dev/null"] * 3)


class FullDisks(Scenario):
    def full_disk(self) -> Path:
        """A file system with room for some hundred lines."""
        folder = self.folder / "small"
        folder.mkdir()
        namespace.mount_tmpfs(folder, "16k")
        self.addCleanup(namespace.unmount, folder)
        return folder

    def test_a_full_disk_for_the_trace_stops_nothing(self) -> None:
        collector = self.collector()
        line = self.serial_line()
        trace = self.full_disk() / "trace"
        daemon = self.corvane("-d", "-s", str(line.device),
                              environment={"CORVANE_TRACE": str(trace)})
        line.wait_until_open()
        for number in range(1, 2 * COUNT + 1):  # a pass and a line each; half as many fill it
            line.say(numbered(number))
            collector.wait_for_numbers([number])
        self.assertEqual(os.statvfs(trace).f_bavail, 0)
        self.assertEqual(os.stat(trace).st_size, 16 * 1024, "there was room to the end")
        self.assertTrue(daemon.is_running())

    def test_a_full_disk_for_the_screen_stops_nothing(self) -> None:
        collector = self.collector()
        screen = self.full_disk() / "screen"
        self.run_corvane("-d", "-f", self.file("capture", series(1, 2000)),
                         prefix=("sh", "-c", f'exec "$0" "$@" >{screen}'))
        collector.wait_for_the_end()
        self.assertEqual(collector.numbers()[-1], 2000)

    def test_a_trace_that_cannot_be_opened_stops_nothing(self) -> None:
        daemon = self.run_corvane("-d", "-f", self.file("capture", series(1, 3)),
                                  environment={"CORVANE_TRACE": "/nowhere/trace"})
        self.assertEqual(daemon.stdout.count(b"\n"), 3)


class Trace(Scenario):
    def test_unset_the_trace_goes_to_standard_error(self) -> None:
        daemon = self.run_corvane("-f", self.file("empty", b""),
                                  prefix=("env", "-u", "CORVANE_TRACE"))
        self.assertIn("novatel_main_loop", daemon.stderr)

    def test_off_silences_it(self) -> None:
        daemon = self.run_corvane("-f", self.file("empty", b""),
                                  environment={"CORVANE_TRACE": "off"})
        self.assertNotIn("novatel_main_loop", daemon.stderr)
        self.assertEqual(daemon.trace, "")

    def test_errors_are_told_on_standard_error_also_when_it_is_off(self) -> None:
        daemon = self.corvane("-f", str(self.folder / "missing"),
                              environment={"CORVANE_TRACE": "off"})
        daemon.wait_for_error("CFileHandler:Open: No such file or directory\n")

    def test_a_path_is_appended_to(self) -> None:
        trace = self.folder / "trace"
        trace.write_text("what was there\n")
        self.run_corvane("-f", self.file("empty", b""), environment={"CORVANE_TRACE": str(trace)})
        self.assertTrue(trace.read_text().startswith("what was there\n"))
        self.assertIn("novatel_main_loop", trace.read_text())


class Crashes(Scenario):
    def test_a_fatal_signal_is_told_with_program_signal_and_backtrace(self) -> None:
        for number in (signal.SIGSEGV, signal.SIGFPE, signal.SIGABRT):
            daemon = self.corvane()
            daemon.wait_for_passes(1)
            daemon.send_signal(number)
            self.assertEqual(daemon.status(), -number)
            self.assertRegex(daemon.stderr, rf"corvane: .*signal {number.value}\b")
            self.assertGreaterEqual(len(re.findall(r"0x[0-9a-f]{6,}", daemon.stderr)), 3)

    def test_an_ordinary_termination_is_silent(self) -> None:
        daemon = self.corvane("-f", str(self.folder / "missing"))
        daemon.wait_for_passes(1)
        before = daemon.stderr
        daemon.send_signal(signal.SIGTERM)
        self.assertEqual(daemon.status(), -signal.SIGTERM)
        self.assertEqual(daemon.stderr, before)


class Readers(Scenario):
    def test_a_reader_of_the_screen_that_goes_away_does_not_end_the_daemon(self) -> None:
        collector = self.collector()
        reading, writing = os.pipe()
        line = self.serial_line()
        redirected = ("sh", "-c", f'exec "$0" "$@" >/proc/{os.getpid()}/fd/{writing}')
        daemon = self.corvane("-d", "-s", str(line.device), prefix=redirected)
        line.wait_until_open()
        os.close(writing)
        os.close(reading)
        line.say(series(1, 3))
        collector.wait_for_numbers([1, 2, 3])
        line.say(series(4, 6))
        collector.wait_for_numbers([4, 5, 6])
        self.assertTrue(daemon.is_running())

    def test_a_reader_of_the_trace_that_does_not_read_does_not_hold_it_up(self) -> None:
        reading, writing = os.pipe()
        redirected = ("env", "-u", "CORVANE_TRACE", "sh", "-c",
                      f'exec "$0" "$@" 2>/proc/{os.getpid()}/fd/{writing}')
        daemon = self.run_corvane("-d", "-z", "1", "-f", self.file("capture", series(1, 100)),
                                  prefix=redirected)
        os.close(writing)
        os.close(reading)
        self.assertEqual(daemon.stdout.count(b"\n"), 100)
