"""A recording of a live run of the whole system: its replay publishes the same at the same pace."""

import itertools

from harness import recording
from harness.daemon import Daemon
from harness.messages import Message
from harness.recording import Block
from harness.replayed import (decoded, errors, is_line_of_a_record, played_at, recorded, stretches,
                              told_of_records)
from harness.scenario import MAIN
from harness.simulator import SINGLE_PORT
from harness.waiting import wait_until
from harness.whole import WholeSystem

SECONDS = 8.0  # of positions in the recording
RATE = 20  # blocks a second at least: each ends with an epoch's positions
PLAYS = 3
TOLERANCE = 0.005  # seconds by which a block may miss its time
AT_ONCE = 0.2  # seconds within which something is told after a gap that is not waited for
LONG_GAPS = (11.0, 60.0, 86400.0)
LONGEST_WAIT = 9.0  # seconds; a gap that is waited for
PUBLISHED = {"position.ecef", "position.sky", "position.base", "reference.gps", "nmea.sentence",
             "nmea.geoid", "logger.status", "logger.data", "diagnostics.clear"}


class Replays(WholeSystem):
    made: list[Message] = []  # what the live run has published; one run for all tests

    def setUp(self) -> None:
        super().setUp()
        commands = SINGLE_PORT.read_text().replace("refstationb ontime 10", "refstationb ontime 1")
        commands += "\nlog thisport psrxyzb ontime 0.5"
        self.options = ("-c", self.file("commands", commands.encode()))

    def daemon(self, settings: str = "") -> Daemon:
        """Everything that is published comes from one port: a recording is of one."""
        return self.bare_corvane("-p", *self.options)

    def live(self) -> list[Message]:
        if not Replays.made:
            collector, *_, daemon = self.at_work()
            end = self.positions(collector)[0]["seconds"] + SECONDS
            wait_until("enough positions", lambda: self.positions(collector)[-1]["seconds"] > end,
                       SECONDS + 5.0)
            daemon.end()
            collector.stop()
            Replays.made = collector.on_connection(collector.connection_count() - 1)
        return Replays.made

    def play(self, blocks: list[Block]) -> list[Message]:
        """What a run over the recording publishes."""
        collector = self.collector()
        path = self.file("recording.pcap", recording.write(blocks, nanoseconds=True))
        self.run_corvane("-u", "none", *self.options, "-r", path, real_time=True)
        collector.wait_for_the_end()
        collector.stop()
        return collector.messages()

    def assert_told_as_live(self, blocks: list[Block], played: list[Message]) -> None:
        """All that came from the recorded bytes; the last bytes of the run stayed unrecorded."""
        counts, sentences = decoded(blocks)
        lines = [each for each in played if is_line_of_a_record(each)]
        self.assertEqual(len(lines), sum(counts))
        totals = [each["value"] for each in played if each.method == "logger.status"
                  and (each["name"], each["key"]) == (MAIN, "checksum_stats")]
        self.assertEqual(totals[-1], sentences)
        self.assertLessEqual(PUBLISHED, {each.method for each in played})
        for live, again in zip(told_of_records(self.live()), told_of_records(played)):
            self.assertTrue(again)
            self.assert_same_lines(live[:len(again)], again)

    def assert_in_pace(self, blocks: list[Block], played: list[Message]) -> None:
        """Each block in its time, in one of some plays; later ones are made when they are needed.

        Other work on the machine makes this and that block late; what is late in every play is
        late by the daemon's own doing.
        """
        counts, _ = decoded(blocks)
        best = errors(blocks, played_at(counts, played))
        for _ in range(PLAYS - 1):
            if max(best) > TOLERANCE:
                again = errors(blocks, played_at(counts, self.play(blocks)))
                best = [min(pair) for pair in zip(best, again)]
        late = {index: error for index, error in enumerate(best) if error > TOLERANCE}
        self.assertEqual(late, {}, f"of {len(blocks)} blocks")

    def test_the_same_is_published_and_each_block_in_its_time(self) -> None:
        blocks = recorded(self.live())
        self.assertGreater(len(blocks), SECONDS * RATE)
        self.assertEqual(len(stretches(blocks)), 1)
        played = self.play(blocks)
        self.assert_told_as_live(blocks, played)
        self.assert_in_pace(blocks, played)

    def with_gaps(self, blocks: list[Block], gaps: tuple[float, ...]) -> list[Block]:
        """In parts of the same length, with these gaps between them."""
        size = len(blocks) // (len(gaps) + 1) + 1
        shifts = list(itertools.accumulate(gaps, initial=0.0))
        return [Block(each.time + shifts[index // size], each.data)
                for index, each in enumerate(blocks)]

    def test_long_gaps_are_not_waited_for_and_all_else_is_in_its_time(self) -> None:
        blocks = recorded(self.live())
        blocks = self.with_gaps(blocks[:len(blocks) // 2], (*LONG_GAPS[:2], LONGEST_WAIT,
                                                            *LONG_GAPS[2:]))
        played = self.play(blocks)
        self.assert_told_as_live(blocks, played)
        self.assert_in_pace(blocks, played)
        counts, _ = decoded(blocks)
        times = played_at(counts, played)
        parts = [[times[index] for index in part if times[index] is not None]
                 for part in stretches(blocks)]
        self.assertEqual(len(parts), len(LONG_GAPS) + 1)
        for before, after in itertools.pairwise(parts):
            self.assertLess(after[0] - before[-1], AT_ONCE)
