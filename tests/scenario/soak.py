#!/usr/bin/env python3
"""The whole system at work for long: simulator, multiplexer and daemon, with the full set of logs
at 20 Hz and 460800 baud, while an operator changes this and that. Ends with status 1 when memory or
descriptors grow, or when a command or a record is lost.

    tests/scenario/soak.py [--minutes N] [--speed X]
"""

import argparse
import contextlib
import os
import subprocess
import sys
import time
from collections import Counter
from collections.abc import Callable
from pathlib import Path

from decoder.framers import GOOD
from harness import namespace, places
from harness.changes import changes, configured
from harness.collector import Collector
from harness.controlled import SENDING
from harness.daemon import Daemon
from harness.matching import Port
from harness.messages import Message
from harness.resources import Watch
from harness.scenario import MAIN, SECOND
from harness.simulator import Simulator
from harness.waiting import NotInTime, wait_until
from harness.whole import WholeSystem

START_SECONDS = 15.0  # until the first position
LOOK_PERIOD = 1.0
CHANGE_PERIOD = 20.0
PROGRESS_PERIOD = 30.0
QUIET_SECONDS = 15.0  # at the end, without changes: time for a whole configuration
DRAIN_SECONDS = 8.0  # less than the silence after which the daemon resets its receiver
MOST_GROWTH = 64  # KiB of memory
LINE_BYTES = 46_080  # a second at 460800 baud


class CountingCollector(Collector):
    """Hands every message on and keeps none."""

    def __init__(self, take: Callable[[Message], None]) -> None:
        super().__init__()
        self._hand_on = take

    def _keep(self, message: Message) -> None:
        self._hand_on(message)


class Soak(WholeSystem):
    """One long run; `run_for` gives the promises with whether they were kept, and the figures."""

    def __init__(self, minutes: float, speed: float) -> None:
        super().__init__()
        self._seconds = minutes * 60.0 + START_SECONDS
        self._speed = speed
        self._first_connection = 0
        self._connection_count = lambda: 0
        self._first_positions: list[Message] = []
        self._queued: Counter = Counter()

    # --- how it is started

    def collector(self, *, started: bool = True) -> Collector:
        collector = CountingCollector(self._take)
        self._connection_count = collector.connection_count
        self.addCleanup(collector.stop)
        return collector.start() if started else collector

    def simulate(self, *options: str) -> Simulator:
        """Each attempt has its own records and its own time."""
        captures = self.folder / "captures"
        captures.mkdir(exist_ok=True)
        silence = self._seconds * self._speed
        simulator = super().simulate("--capture", str(captures), "--speed", str(self._speed),
                                     "--silent", str(silence), *options)
        self._end = time.monotonic() + self._seconds
        self._main = Port("com1", MAIN, captures / "com1")
        self._second = Port("usb2", SECOND, captures / "usb2")
        self._first_connection = self._connection_count()
        self._first_positions, self._queued = [], Counter()
        return simulator

    def daemon(self, settings: str = "") -> Daemon:
        self.settings_file = Path(self.file("settings.conf", f"[Corvane]\n{settings}".encode()))
        return self.bare_corvane("-p", environment={"CORVANE_TRACE": "off",
                                                    "CORVANE_CONFIG": str(self.settings_file)})

    def positions(self, collector: Collector) -> list[Message]:
        return self._first_positions

    # --- what is told

    def _take(self, message: Message) -> None:
        if message.connection < self._first_connection:
            return
        if message.method == "position.ecef" and message["week"] != 0:
            if not self._first_positions:
                self._first_positions = [message]
            self._main.take(message)
        elif message.method == "nmea.sentence":
            self._second.take(message)
        elif message.method == "logger.event" and message["text"].startswith(SENDING):
            self._queued[message["text"].removeprefix(SENDING).rstrip()] += 1
        elif message.method in ("logger.data", "logger.status"):
            for port in (self._main, self._second):
                if message["name"] == port.handler:
                    port.take(message)

    # --- what is done

    def run_for(self) -> list[tuple[bool, str]]:
        collector, simulator, _, daemon = self.at_work()
        watch, asked = Watch(daemon.pid), list(configured())
        begin = time.monotonic()
        upcoming, next_change, next_line = changes(), begin + CHANGE_PERIOD, begin
        while (now := time.monotonic()) < self._end:
            if not daemon.is_running():
                return [(False, f"the daemon runs: it has ended with status {daemon.status()}: "
                                f"{daemon.stderr[-500:]}")]
            watch.look()
            self._read_on()
            if next_change <= now < self._end - QUIET_SECONDS:
                next_change += CHANGE_PERIOD
                change = next(upcoming)
                change.ask()
                asked += change.commands
            if next_line <= now:
                next_line += PROGRESS_PERIOD
                self._tell_progress(now - begin, watch, simulator)
            time.sleep(max(0.0, now + LOOK_PERIOD - time.monotonic()))
        with contextlib.suppress(NotInTime):
            wait_until("all to be told", self._is_all_told, DRAIN_SECONDS)
        self._tell_progress(time.monotonic() - begin, watch, simulator)
        collector.stop()
        return [*self._resources(watch), *self._commands(simulator, asked),
                *self._records(simulator, time.monotonic() - begin),
                (not collector.malformed, f"every message has its agreed form: "
                                          f"{collector.malformed[:3] or 'all'}")]

    def _read_on(self) -> None:
        self._main.read_on()
        self._second.read_on()

    def _is_all_told(self) -> bool:
        self._read_on()
        return not self._main.differences() and not self._second.differences()

    def _tell_progress(self, seconds: float, watch: Watch, simulator: Simulator) -> None:
        last = watch.samples[-1]
        average = watch.shares()[0] * 100.0 if len(watch.samples) > 1 else 0.0
        print(f"{seconds / 60.0:6.1f} min  RSS {last.rss_kib} KiB  descriptors {last.descriptors}  "
              f"CPU {average:.1f} %  logs {self._main.logs.same} + {self._second.logs.same}  "
              f"positions {self._main.positions.same}  commands {len(simulator.heard())}",
              flush=True)

    # --- what was promised

    def _resources(self, watch: Watch) -> list[tuple[bool, str]]:
        before, after = watch.highest_rss(1 / 3, 2 / 3), watch.highest_rss(2 / 3, 1.0)
        first, last = watch.lasting_descriptors()
        average, busiest = watch.shares()
        return [
            (after - before < MOST_GROWTH,
             f"memory is flat: RSS at most {before} KiB in the middle third, {after} KiB in the "
             f"last ({watch.samples[0].rss_kib} KiB at the begin, {MOST_GROWTH} KiB may be added)"),
            (first == last, f"descriptors come back: {first} at the begin, {last} at the end, at "
                            f"most {watch.most_descriptors()}"),
            (True, f"processor: {average * 100.0:.2f} % of one core on average, "
                   f"{busiest * 100.0:.1f} % in the busiest second"),
        ]

    def _commands(self, simulator: Simulator, asked: list[str]) -> list[tuple[bool, str]]:
        heard = simulator.heard()
        heard = heard[heard.index(asked[0]):] if asked[0] in heard else []
        lost = self._queued - Counter(heard)
        same = len(os.path.commonprefix([heard, asked]))
        rows = [
            (heard == asked, f"each command that was asked for is heard, in its order: "
                             f"{len(asked)} asked for, {len(heard)} heard"),
            (not lost, f"each command that was queued is heard: {self._queued.total()} queued, "
                       f"{lost.total()} lost"),
        ]
        if heard != asked:
            rows.append((False, f"commands: after {same} that are the same "
                                f"{asked[same:same + 3]} asked, {heard[same:same + 3]} heard"))
        return rows

    def _records(self, simulator: Simulator, seconds: float) -> list[tuple[bool, str]]:
        overrun = [line for line in simulator.stderr.splitlines() if "has lost" in line]
        rows = [(not overrun, "the receiver's ports are read in time: "
                              f"{overrun or 'nothing lost there'}")]
        for port in (self._main, self._second):
            differences, rate = port.differences(), port.bytes / seconds
            rows.append((not differences, (
                f"{port.handler}: every record is told once, in its order: {port.logs.same} logs, "
                f"{port.positions.same} positions, {port.forwarded.same} forwarded sentences, "
                f"{port.said[GOOD]} good sentences in all; {rate:.0f} bytes a second "
                f"({rate / LINE_BYTES:.0%} of a line)")))
            rows += [(False, each) for each in differences]
        return rows


def run_inside(minutes: float, speed: float) -> int:
    """Already inside the namespaces."""
    namespace.settle_in()
    soak = Soak(minutes, speed)
    soak.setUp()
    try:
        promises = soak.run_for()
    finally:
        soak.doCleanups()
    print(f"soak: {minutes:g} minutes, the receiver's clock at {speed:g} times its speed")
    for kept, text in promises:
        print(f"  {'ok     ' if kept else 'BROKEN '} {text}", flush=True)
    return 0 if all(kept for kept, _ in promises) else 1


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--minutes", type=float, default=30.0, help="how long (30 unless given)")
    parser.add_argument("--speed", type=float, default=1.0,
                        help="of the receiver's clock, and so of all its rates")
    parser.add_argument("--inside", action="store_true", help=argparse.SUPPRESS)
    options = parser.parse_args()
    if options.inside:
        return run_inside(options.minutes, options.speed)
    if not os.access(places.binaries() / "corvane", os.X_OK):
        print(f"there is no daemon at {places.binaries()}/corvane", file=sys.stderr)
        return 2
    entering, reason = namespace.entering_command()
    if not entering:
        print(f"namespaces are impossible here: {reason}", file=sys.stderr)
        return 2
    return subprocess.run([*entering, sys.executable, __file__, *sys.argv[1:], "--inside"],
                          check=False).returncode


if __name__ == "__main__":
    sys.exit(main())
