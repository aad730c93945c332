"""Loading firmware: what the receiver is told, how fast, how it ends, and what is told of it."""

import itertools
import os

from harness.loading import (BEGIN, BETWEEN_BURSTS, COMMIT, ENDED_BADLY, ENDED_WELL, FRESET,
                             LINES_IN_BURST, LOGGER, Loading, image, text)
from harness.scenario import best_of_three
from harness.under_load import Stream
from harness.waiting import wait_until

LONG = int(os.environ.get("CORVANE_LOAD_LINES", "3000"))  # 100000 take five minutes
START_PAUSE = 0.05  # seconds before each command that begins a load
TALK = 3200  # bytes a second
JITTER = 0.03  # of the moments at which the receiver takes note
ENDS_BADLY = {"RESET_ERROR": 13, "BAD_SRECORD": 14, "BAD_PLATFORM": 15, "BAD_MODULE": 16,
              "NO_MODULE": 18, "MODULE_MISMATCH": 19, "OUT_OF_MEMORY": 20, "DATA_OVERLAP": 21,
              "BAD_IMAGE_CRC": 22, "IMAGE_OVERSIZE": 23, "BAD_FLASH_ERASE": 25, "NO_PLATFORM": 26}


class WholeLoads(Loading):
    def load(self, content: bytes, records: list[str]) -> None:
        """The receiver is told just this, and then nothing more."""
        before = self.start(content)
        self.target.wait_for_line(FRESET, before)
        self.wait_for_end(ENDED_WELL)
        self.assert_same_lines(self.whole(records), self.target.texts(before))
        self.assert_nothing_follows(len(self.target.lines))

    def test_every_record_arrives_once_and_in_order_then_the_commit_and_the_reset(self) -> None:
        for count in (1, 29, 30, 31, 45, 60):
            with self.subTest(count=count):
                self.load(text(image(count)), image(count))
                self.assertEqual(self.progress(), [*ENDED_WELL, 100])

    def test_a_file_without_records_is_committed_as_it_is(self) -> None:
        self.load(b"", [])
        self.load(b"\r\n" * 100, [])

    def test_blank_lines_and_blanks_around_a_record_are_not_sent(self) -> None:
        records = image(45)
        lines = [part for at, record in enumerate(records)
                 for part in ([""] * (at % 4) + ["  \t"] * (at % 2) + [f" \t{record}  "])]
        self.load(text(lines, "\n"), records)
        self.assertEqual(self.progress(), [*ENDED_WELL, 100])

    def test_the_last_record_needs_no_line_end(self) -> None:
        self.load(text(image(45)).rstrip(), image(45))
        self.assertEqual(self.progress(), [*ENDED_WELL, 100])

    def test_a_flash_that_is_written_is_enough(self) -> None:
        self.target.at_the_end = ("DATA_VERIFIED", "WROTE_FLASH")
        self.load(text(image(3)), image(3))


class Pace(Loading):
    @best_of_three
    def test_it_begins_with_three_commands_sent_three_times_with_pauses(self) -> None:
        before = self.start(text(image(1)))
        lines = self.target.lines[before:before + len(BEGIN)]
        self.assertEqual([each.text for each in lines], BEGIN)
        for at, (earlier, later) in enumerate(itertools.pairwise(lines)):
            pauses = 2 if at % 3 == 2 else 1
            self.assertGreaterEqual(later.moment - earlier.moment, pauses * START_PAUSE - JITTER)
        self.assertGreaterEqual(lines[-1].moment - lines[0].moment, 10 * START_PAUSE - JITTER)

    @best_of_three
    def test_a_long_file_arrives_whole_in_bursts_of_30_lines_80_ms_apart(self) -> None:
        """From a daemon whose passes are many, since the receiver talks all the while."""
        talk = Stream(self.target.line, TALK)
        self.addCleanup(talk.stop)
        records = image(LONG)
        seconds = LONG / LINES_IN_BURST * BETWEEN_BURSTS
        before = self.start(text(records))
        self.target.wait_for_line(FRESET, before, 10.0 + 2 * seconds)
        self.assert_same_lines(self.whole(records), self.target.texts(before))
        firsts = [each.moment for each in self.target.data(before)][::LINES_IN_BURST]
        for burst, moment in enumerate(firsts):
            self.assertGreaterEqual(moment - firsts[0], burst * BETWEEN_BURSTS - JITTER)
        self.assertLess(firsts[-1] - firsts[0], 1.5 * seconds)

    def test_lines_are_sent_only_while_the_receiver_is_ready(self) -> None:
        before = self.start(text(image(300)))
        self.target.wait_for_data(60, before)
        self.target.report("VERIFYING_DATA")
        self.wait_for_error("SoftloadManager::DispatchLog status is 8")
        self.daemon.wait_for_passes(2)
        held = len(self.target.lines)
        self.assertLess(held, before + len(BEGIN) + 300)
        self.assert_nothing_follows(held)
        self.target.report("READY_FOR_DATA")
        self.target.wait_for_line(FRESET, before)
        self.assert_same_lines(self.whole(image(300)), self.target.texts(before))


class Told(Loading):
    """What whoever looks on is told."""

    def test_the_file_and_how_much_of_it_is_sent(self) -> None:
        content = text(["", *image(90)])
        before = self.start(content)
        self.assertEqual(self.hub.status(LOGGER, "firmware_file_used"),
                         str(self.folder / "firmware.shex"))
        self.target.wait_for_line(FRESET, before)
        lines = content.splitlines(keepends=True)
        sums = [sum(map(len, lines[:end])) for end in (30, 60, 90, 91)]
        self.assertEqual(list(dict.fromkeys(sent for sent, _, _ in self.sent())), sums)
        self.assertEqual({size for _, size, _ in self.sent()}, {len(content)})
        self.assertLessEqual({status for _, _, status in self.sent()}, {2, 3})
        self.wait_for_end(ENDED_WELL)

    def test_the_steps_are_told_as_errors(self) -> None:
        content = text(image(3))
        before = self.start(content)
        path = self.folder / "firmware.shex"
        self.target.wait_for_line(FRESET, before)
        self.wait_for_error("SoftloadManager::EndUpgrade: upgrade complete")
        steps = [each for each in self.errors()
                 if "status is" not in each and "set status" not in each]
        self.assertEqual(steps, [
            f"SoftloadManager::StartUpgrade openned file <{path}>  command <SOFTLOADRESET>, "
            f"FileSize:{len(content)}",
            "SoftloadManager sent command <SOFTLOADCOMMIT>",
            "SoftloadManager::updateSoftloadStatus triggering reset",
            "SoftloadManager sent command <FRESET>",
            "SoftloadManager::EndUpgrade: upgrade complete"])

    def test_the_progress_that_clients_see_grows_to_100_percent(self) -> None:
        self.assertEqual(self.progress(), [1, 0, 0])
        before = self.start(text(image(600)))
        seen = []
        while COMMIT not in self.target.texts(before):
            well, ended, percent = self.progress()
            self.assertEqual((well, ended), (1, 0))
            seen.append(percent)
        self.assertEqual(seen, sorted(seen))
        self.assertGreater(len(set(seen)), 10)
        self.wait_for_end(ENDED_WELL)
        self.assertEqual(self.progress(), [*ENDED_WELL, 100])

    def test_each_error_of_the_receiver_ends_it_at_once(self) -> None:
        for status, number in ENDS_BADLY.items():
            with self.subTest(status=status):
                before = self.start(text(image(3000)))
                self.assertEqual(self.progress()[:2], [1, 0])
                self.target.wait_for_data(30, before)
                self.target.report(status)
                self.wait_for_end(ENDED_BADLY)
                self.assertLess(self.progress()[2], 50)
                self.daemon.wait_for_passes(1)
                self.assert_nothing_follows(len(self.target.lines))
                told = self.target.texts(before)
                self.assert_same_lines(self.whole(image(3000))[:len(told)], told)
                self.assertEqual(self.errors()[-2:], [
                    f"Ending upgrade because status is {number}",
                    "SoftloadManager::EndUpgrade: upgrade complete"])
