"""The base of every scenario: starts daemons and peers, and takes them down whatever happens."""

import difflib
import functools
import itertools
import shutil
import tempfile
import unittest
from pathlib import Path

from harness.collector import Collector
from harness.daemon import Daemon, real_time_is_possible
from harness.multiplexer import Multiplexer
from harness.serial_line import SerialLine

MAIN, SECOND = "NovatelPortHandler", "NovatelPortHandler2"
ATTEMPTS = 3


def best_of_three(test):
    """For a promise about time: a machine busy with other things gets two more attempts."""

    @functools.wraps(test)
    def measured(self) -> None:
        for attempt in range(ATTEMPTS):
            try:
                return test(self)
            except AssertionError:
                if attempt == ATTEMPTS - 1:
                    raise
                self.doCleanups()
                self.setUp()

    return measured


class Scenario(unittest.TestCase):
    """One test, one folder, any number of programs."""

    def setUp(self) -> None:
        self.folder = Path(tempfile.mkdtemp(prefix="scenario."))
        self.addCleanup(shutil.rmtree, self.folder, ignore_errors=True)
        self._daemons = 0

    def bare_corvane(self, *arguments: str, prefix: tuple[str, ...] = (),
                     environment: dict[str, str] | None = None) -> Daemon:
        """The daemon with exactly these arguments."""
        self._daemons += 1
        daemon = Daemon(self.folder / f"corvane.{self._daemons}", arguments, prefix=prefix,
                        environment=environment)
        self.addCleanup(daemon.end)
        return daemon

    def corvane(self, *arguments: str, **settings) -> Daemon:
        """The daemon as tests want it: ordinary priority, no breakout."""
        return self.bare_corvane("-p", "-u", "none", *arguments, **settings)

    def run_corvane(self, *arguments: str, real_time: bool = False, **settings) -> Daemon:
        """A run from its start to its regular end; with its own priority where that is possible."""
        start = self.bare_corvane if real_time and real_time_is_possible() else self.corvane
        daemon = start(*arguments, **settings)
        status = daemon.status()
        self.assertEqual(status, 0, daemon.stderr)
        return daemon

    def collector(self, *, started: bool = True) -> Collector:
        """The collecting server; what it records is checked against the agreed form at the end."""
        collector = Collector()
        self.addCleanup(lambda: self.assertEqual(collector.malformed, []))
        self.addCleanup(collector.stop)
        return collector.start() if started else collector

    def multiplexer(self, *, started: bool = True, **settings) -> Multiplexer:
        multiplexer = Multiplexer(**settings)
        self.addCleanup(multiplexer.kill)
        return multiplexer.start() if started else multiplexer

    def serial_line(self) -> SerialLine:
        line = SerialLine(self.folder / "gps")
        self.addCleanup(line.unplug)
        return line

    def assert_same_lines(self, wanted: list, found: list) -> None:
        """Quick also when thousands of lines differ, unlike assertEqual."""
        if wanted == found:
            return
        lines = difflib.unified_diff([str(each) for each in wanted], [str(each) for each in found],
                                     "wanted", "found", lineterm="", n=1)
        self.fail("\n".join(itertools.islice(lines, 40)))

    def file(self, name: str, content: bytes) -> str:
        """A file to be read by the daemon; its path."""
        path = self.folder / name
        path.write_bytes(content)
        return str(path)
