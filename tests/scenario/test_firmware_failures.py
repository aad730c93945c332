"""Loading firmware when something is in its way: the file, the port, or what else is to be done."""

import os
import re

from harness.loading import (COMMIT, ENDED_BADLY, ENDED_WELL, FRESET, LINES_IN_BURST, LOGGER,
                             Loading, image, text)
from harness.scenario import best_of_three
from harness.sentences import numbered
from harness.waiting import wait_until

LONGEST_PASS = 0.05  # seconds
REOPENS = "SoftloadManager::Has to reopen port"


class Files(Loading):
    def assert_not_opened(self, path: str) -> None:
        before, told = len(self.target.lines), len(self.errors())
        self.assertEqual(self.rpc.call("novatel_StartFirmwareUpgrade", path), [0])
        wait_until("the errors", lambda: len(self.errors()) > told)
        self.assertEqual(self.errors()[told],
                         "SoftloadManager::StartUpgrade: failed to open file")
        self.assertEqual(self.hub.status(LOGGER, "firmware_file_used"), path)
        self.assert_nothing_follows(before)

    def test_one_that_is_missing_or_no_regular_file_starts_nothing(self) -> None:
        os.mkfifo(self.folder / "fifo")
        for path in ("missing", "fifo", "."):
            self.assert_not_opened(str(self.folder / path))
        self.assert_not_opened("/dev/null")
        self.assert_not_opened("")
        self.assertEqual(self.progress(), [1, 0, 0])

    def test_one_that_cannot_be_opened_stops_a_load_that_is_under_way(self) -> None:
        before = self.start(text(image(3000)))
        self.target.wait_for_data(30, before)
        self.assertEqual(self.rpc.call("novatel_StartFirmwareUpgrade", "/missing"), [0])
        self.daemon.wait_for_passes(1)
        self.assert_nothing_follows(len(self.target.lines))
        self.target.report("READY_FOR_DATA")
        self.assert_nothing_follows(len(self.target.lines))

    def test_another_one_takes_the_place_of_the_one_that_is_being_sent(self) -> None:
        before = self.start(text(image(3000)))
        self.target.wait_for_data(30, before)
        others = [record.replace("S3", "S7") for record in image(40)]
        self.start(text(others), "other.shex")
        self.target.wait_for_line(FRESET, before)
        sent = self.target.texts(before)
        self.assertEqual(sent[-len(self.whole(others)):], self.whole(others))
        first = sent[:-len(self.whole(others))]
        self.assert_same_lines(self.whole(image(3000))[:len(first)], first)

    def test_one_that_is_cut_while_it_is_sent_is_never_committed(self) -> None:
        for left in (0, 1500 * len(text(image(1)))):
            with self.subTest(left=left):
                before = self.start(text(image(3000)))
                self.target.wait_for_data(60, before)
                os.truncate(self.folder / "firmware.shex", left)
                wait_until("the end", lambda: self.progress()[:2] == ENDED_BADLY, 15.0)
                self.wait_for_error("SoftloadManager: the firmware file cannot be read to its end")
                self.target.report("READY_FOR_DATA")
                self.daemon.wait_for_passes(1)
                self.assert_nothing_follows(len(self.target.lines))
                self.assertNotIn(COMMIT, self.target.texts(before))
                self.target.report("RESET_ERROR")  # so that the next one begins from the beginning
                self.wait_for_end(ENDED_BADLY)


class Meanwhile(Loading):
    def test_commands_wait_until_it_has_ended(self) -> None:
        before = self.start(text(image(300)))
        self.target.wait_for_data(30, before)
        self.assertEqual(self.rpc.call("novatel_ResetRTKFilter"), [1])
        self.assertEqual(self.rpc.call("novatel_ResetPDPFilter"), [])
        self.target.wait_for_line("pdpfilter reset", before, 10.0)
        self.assert_same_lines([*self.whole(image(300)), "rtkcommand reset", "pdpfilter reset"],
                               self.target.texts(before))

    def test_what_the_receiver_says_is_read_as_ever(self) -> None:
        before = self.start(text(image(600)))
        numbers = []
        while COMMIT not in self.target.texts(before):
            numbers.append(len(numbers) + 1)
            self.target.say(numbered(numbers[-1]))
            self.hub.wait_for_numbers(numbers[-1:])
        self.assertGreater(len(numbers), 30)
        told = [number for number in self.hub.numbers() if number > 0]  # 0: its own reports
        self.assert_same_lines(numbers, told)
        self.target.wait_for_line(FRESET, before)
        self.assert_same_lines(self.whole(image(600)), self.target.texts(before))

    @best_of_three
    def test_the_loop_keeps_its_passes(self) -> None:
        before = self.start(text(image(600)))
        self.daemon.wait_for_passes(1)  # the one that has begun it
        begun = len(self.daemon.trace)
        rate = self.daemon.passes_per_second(1.0)
        self.assertNotIn(COMMIT, self.target.texts(before))
        found = re.findall(r",novatel_main_loop,([\d.]+),([\d.]+)", self.daemon.trace[begun:])
        self.assertGreaterEqual(rate, 9)
        self.assertLess(max(float(one) + float(other) for one, other in found), LONGEST_PASS)
        self.target.wait_for_line(FRESET, before)


class Port(Loading):
    def unplug_after_a_burst(self, before: int) -> None:
        """When nothing is under way."""
        wait_until("a whole burst", lambda: self.bursts(before) >= 3
                   and self.bursts(before).is_integer())
        self.target.line.unplug()

    def bursts(self, before: int) -> float:
        return len(self.target.data(before)) / LINES_IN_BURST

    @best_of_three
    def test_one_that_is_back_at_once_loses_nothing(self) -> None:
        before = self.start(text(image(600)))
        self.unplug_after_a_burst(before)
        self.target.line.plug_in()
        self.target.wait_for_line(FRESET, before, 10.0)
        self.assert_same_lines(self.whole(image(600)), self.target.texts(before))

    @best_of_three
    def test_one_that_is_away_is_tried_before_each_line_and_the_load_goes_on(self) -> None:
        records = image(900)
        before = self.start(text(records))
        self.unplug_after_a_burst(before)
        arrived = len(self.target.data(before))
        self.wait_for_error(REOPENS)
        self.target.line.plug_in()
        self.target.wait_for_line(FRESET, before, 10.0)
        self.wait_for_end(ENDED_WELL)
        told = [each.text for each in self.target.data(before)]
        lost = len(records) - len(told)
        self.assertGreater(lost, 0)
        self.assert_same_lines(records[:arrived] + records[arrived + lost:], told)
        # Told for each line that was not sent, and for one that found the port back.
        self.assertIn(len(self.errors(REOPENS)) - lost, (0, 1))
        self.assertEqual(self.target.texts(before)[-2:], [COMMIT, FRESET])

    def test_one_that_takes_nothing_gets_no_further_burst_and_nothing_is_lost(self) -> None:
        records = image(1500)
        before = self.start(text(records))
        self.target.wait_for_data(60, before)
        self.target.hold()

        def has_come_to_a_stop() -> bool:
            counted = self.bytes_sent()
            self.daemon.wait_for_passes(5)
            return self.bytes_sent() == counted

        wait_until("the bursts to stop", has_come_to_a_stop, 20.0)
        stopped, size = self.bytes_sent(), len(text(records))
        self.assertLess(stopped, size)
        self.target.say(numbered(1))
        self.hub.wait_for_numbers([1])
        self.daemon.wait_for_passes(5)
        self.assertEqual(self.bytes_sent(), stopped)
        self.target.go_on()
        self.target.wait_for_line(FRESET, before, 20.0)
        self.assert_same_lines(self.whole(records), self.target.texts(before))

    def bytes_sent(self) -> int:
        return [sent for sent, _, _ in self.sent()][-1]
