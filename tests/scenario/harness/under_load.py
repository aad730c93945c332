"""A daemon at full work: what must hold for it whatever its other clients do, and the figures."""

import contextlib
import json
import os
import re
import statistics
import subprocess
import sys
import threading
import time
from collections.abc import Iterator
from dataclasses import dataclass
from pathlib import Path

from harness import places
from harness.collector import Collector
from harness.daemon import Daemon
from harness.sentences import numbered, series
from harness.serial_line import SerialLine
from harness.steered import Steered, lasting_descriptors
from harness.waiting import wait_until

BYTES_PER_SECOND = 46_080  # of a line at 460800 baud
_TICK = 0.01
_PASS = re.compile(r",novatel_main_loop,([\d.]+),([\d.]+)")

LEAST_SECONDS = 1.0  # measured
LEAST_ANSWERS = 8  # a second, of 19 that are possible
LONGEST_PASS = 0.05  # seconds of work
WORST_ANSWER, MEDIAN_ANSWER = 0.1, 0.02
MOST_MEMORY = 24 * 1024  # KiB more than before: 16 MiB of buffers, and what malloc keeps of them
IDLE_SHARE = 0.05  # of one core, when all is over


class Stream:
    """A receiver that says numbered logs at a steady rate until it is stopped."""

    def __init__(self, line: SerialLine, bytes_per_second: int = BYTES_PER_SECOND) -> None:
        self.count = 0
        self.longest_write = 0.0
        self._line = line
        self._logs_per_second = bytes_per_second / len(numbered(0))
        self._stopping = threading.Event()
        self._thread = threading.Thread(target=self._run, daemon=True)
        self._thread.start()

    def _run(self) -> None:
        began = time.monotonic()
        while not self._stopping.wait(_TICK):
            due = int((time.monotonic() - began) * self._logs_per_second) + 1
            logs = series(self.count + 1, due)
            before = time.monotonic()
            self._line.say(logs)
            self.longest_write = max(self.longest_write, time.monotonic() - before)
            self.count = due

    def stop(self) -> None:
        self._stopping.set()
        self._thread.join()


class SteadyClient:
    """A well-behaved client in a process of its own, so that its times are the daemon's."""

    def __init__(self) -> None:
        self._process = subprocess.Popen(
            [sys.executable, "-m", "harness.steady_client"], cwd=places.SCENARIOS, text=True,
            stdin=subprocess.PIPE, stdout=subprocess.PIPE)
        self._process.stdout.readline()

    def finish(self) -> list[float]:
        """The seconds that each of its calls took."""
        output, _ = self._process.communicate(timeout=10.0)
        return json.loads(output) if self._process.returncode == 0 else []

    def end(self) -> None:
        self._process.kill()
        self._process.communicate()


def memory(daemon: Daemon) -> dict[str, int]:
    """KiB by the kernel's names."""
    lines = Path(f"/proc/{daemon.pid}/status").read_text().splitlines()
    fields = dict(line.split(":", 1) for line in lines)
    return {name: int(fields[name].split()[0]) for name in ("VmHWM", "RssAnon")}


@dataclass(frozen=True)
class Figures:
    """What was measured, in seconds and KiB."""

    seconds: float
    logs: int
    longest_write: float  # of the receiver; how long its line was full
    passes: list[tuple[float, float]]  # the work of each for the requests and for the ports
    answers: list[float]  # how long the steady client waited for each
    before: dict[str, int]  # memory
    after: dict[str, int]
    share: float  # of one core, when all was over

    def __str__(self) -> str:
        return (f"{self.seconds:.1f} s, {self.logs} logs (longest write "
                f"{self.longest_write * 1000:.0f} ms), {len(self.passes)} passes, longest "
                f"{max(map(sum, self.passes)) * 1000:.0f} ms (requests "
                f"{max(each[0] for each in self.passes) * 1000:.0f}, ports "
                f"{max(each[1] for each in self.passes) * 1000:.0f}); {len(self.answers)} answers, "
                f"median {statistics.median(self.answers) * 1000:.2f} ms, worst "
                f"{max(self.answers) * 1000:.1f} ms; VmHWM {self.before['VmHWM']} -> "
                f"{self.after['VmHWM']} KiB, RssAnon {self.before['RssAnon']} -> "
                f"{self.after['RssAnon']} KiB; share afterwards {self.share:.3f}")


class UnderLoad(Steered):
    """A receiver that talks at full rate, a collector that hears it, and a steady client."""

    def at_work(self) -> tuple[Collector, SerialLine, Daemon]:
        collector, line = self.collector(), self.serial_line()
        daemon = self.corvane("-s", str(line.device), "-c", self.file("commands", b"log version"),
                              environment=self.settings(""))
        line.wait_until_open()
        collector.wait_for_connection()
        wait_until("the first command", lambda: line.receive(100))
        return collector, line, daemon

    @contextlib.contextmanager
    def under_load(self, *, left_over: int = 0) -> Iterator[Daemon]:
        """Whatever is done meanwhile, all promises are kept; and afterwards no more connections
        are open than those that are to be left over."""
        collector, line, daemon = self.at_work()
        descriptors = lasting_descriptors(daemon)
        steady, stream = SteadyClient(), Stream(line)
        self.addCleanup(steady.end)
        self.addCleanup(stream.stop)
        before, begun, start = memory(daemon), len(daemon.trace), time.monotonic()
        yield daemon
        time.sleep(max(0.0, start + LEAST_SECONDS - time.monotonic()))
        seconds, answers = time.monotonic() - start, steady.finish()
        self.assertGreater(len(answers), LEAST_ANSWERS * seconds, "the steady client was served")
        self.wait_for_descriptors(daemon, descriptors + left_over)
        stream.stop()
        collector.wait_for_good(stream.count)
        passes = [(float(requests), float(ports))
                  for requests, ports in _PASS.findall(daemon.trace[begun:])]
        figures = Figures(seconds, stream.count, stream.longest_write, passes, answers, before,
                          memory(daemon), daemon.processor_share(1.0))
        self.tell(figures)
        self.assert_same_lines(list(range(1, stream.count + 1)), collector.numbers())
        self.assert_within_bounds(figures)

    def assert_within_bounds(self, figures: Figures) -> None:
        self.assertLess(max(map(sum, figures.passes)), LONGEST_PASS)
        self.assertLess(max(figures.answers), WORST_ANSWER)
        self.assertLess(statistics.median(figures.answers), MEDIAN_ANSWER)
        self.assertLess(figures.after["VmHWM"] - figures.before["VmHWM"], MOST_MEMORY)
        self.assertLess(figures.share, IDLE_SHARE)

    def tell(self, figures: Figures) -> None:
        """To the file that CORVANE_FIGURES names, for whoever wants them."""
        path = os.environ.get("CORVANE_FIGURES")
        if path is not None:
            name = self.id().rpartition(".")[2].removeprefix("test_").replace("_", " ")
            with open(path, "a", encoding="utf-8") as file:
                file.write(f"{name}: {figures}\n")
