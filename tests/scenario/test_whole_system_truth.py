"""A minute of the whole system at 20 Hz: every position of the receiver is published, once."""

from decoder.commands import CONFIGURATION
from decoder.framers import GOOD, framers
from decoder.records import decode
from harness.simulator import write_capture
from harness.waiting import wait_until
from harness.whole import INTEGER_START, WholeSystem

SECONDS, RATE = 60, 20
LOGS = ("PDPXYZ", "RTKXYZ")
CONVERGED = (302480 + 30) * 1000  # from here on it does not matter when its filters were reset
LONGEST = 110.0  # seconds of the receiver's time that a run may take


class Truth(WholeSystem):
    def said(self) -> dict[tuple, int]:
        """How often the receiver says each solution, by moment and position."""
        told = "".join(CONFIGURATION).encode()
        capture = write_capture(self.folder / "capture", LONGEST, "--start", INTEGER_START,
                                "--commands", self.file("commands", told))
        solutions: dict[tuple, int] = {}
        binary, *_ = framers()
        for result, sentence in binary.feed(capture):
            record = decode(sentence) if result == GOOD else None
            if record is not None and record.kind in LOGS:
                solution = (record.milliseconds, *(record.content[axis] for axis in "xyz"))
                solutions[solution] = solutions.get(solution, 0) + 1
        return solutions

    def test_positions_are_equal_to_the_last_digit_none_lost_and_none_twice(self) -> None:
        collector, *_ = self.at_work()
        end = CONVERGED / 1000 + SECONDS + 0.1
        wait_until("a minute", lambda: collector.messages("position.ecef")[-1]["seconds"] > end,
                   SECONDS + 40.0)
        published: dict[tuple, int] = {}
        for each in self.positions(collector):
            solution = (round(each["seconds"] * 1000), each["x"], each["y"], each["z"])
            published[solution] = published.get(solution, 0) + 1
        minute = range(CONVERGED, CONVERGED + SECONDS * 1000, 1000 // RATE)
        said = {each: count for each, count in self.said().items() if each[0] in minute}
        self.assertEqual(sum(said.values()), len(LOGS) * SECONDS * RATE)
        self.assert_same_lines(sorted(said.items()), sorted(
            (each, count) for each, count in published.items() if each[0] in minute))
