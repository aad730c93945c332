"""What a process takes of the machine, looked at again and again."""

import os
import time
from dataclasses import dataclass
from pathlib import Path

_TICKS = os.sysconf("SC_CLK_TCK")
_EDGE = 10.0  # seconds at either end of a watch over which the lasting descriptors are counted


@dataclass(frozen=True)
class Sample:
    at: float  # seconds of the monotonic clock
    rss_kib: int
    descriptors: int
    processor_seconds: float


def sample(pid: int) -> Sample:
    """Raises FileNotFoundError when the process has gone."""
    process = Path(f"/proc/{pid}")
    status = (process / "status").read_text().splitlines()
    rss = next(line for line in status if line.startswith("VmRSS"))
    fields = (process / "stat").read_text().rpartition(")")[2].split()
    return Sample(time.monotonic(), int(rss.split()[1]), len(os.listdir(process / "fd")),
                  (int(fields[11]) + int(fields[12])) / _TICKS)


class Watch:
    """All samples of a process from one moment on."""

    def __init__(self, pid: int) -> None:
        self._pid = pid
        self.samples: list[Sample] = []

    def look(self) -> Sample:
        self.samples.append(sample(self._pid))
        return self.samples[-1]

    def highest_rss(self, begin: float, end: float) -> int:
        """KiB, within a part of the watch; 0.0 is its begin and 1.0 its end."""
        first, last = self.samples[0].at, self.samples[-1].at
        begin, end = first + begin * (last - first), first + end * (last - first)
        return max(each.rss_kib for each in self.samples if begin <= each.at <= end)

    def lasting_descriptors(self) -> tuple[int, int]:
        """Those that are open all the time, at the begin and at the end."""
        first, last = self.samples[0].at, self.samples[-1].at
        return (min(each.descriptors for each in self.samples if each.at <= first + _EDGE),
                min(each.descriptors for each in self.samples if each.at >= last - _EDGE))

    def most_descriptors(self) -> int:
        return max(each.descriptors for each in self.samples)

    def shares(self) -> tuple[float, float]:
        """The part of one core that it used: on average, and in its busiest time between looks."""
        used = [(after.processor_seconds - before.processor_seconds, after.at - before.at)
                for before, after in zip(self.samples, self.samples[1:])]
        return (sum(seconds for seconds, _ in used) / sum(span for _, span in used),
                max(seconds / span for seconds, span in used))
