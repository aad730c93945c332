"""A serial device: a pty, with a writer that takes its time and a plug that comes out."""

import os
import time

from harness.scenario import MAIN, Scenario, best_of_three
from harness.sentences import numbered, series
from harness.waiting import wait_until

PAUSE = 0.4  # seconds; several passes of the loop
PROMPT = 0.05  # seconds within which a sentence is to be told, half a pass of an idle loop


class SerialDevice(Scenario):
    def opened(self, *options: str):
        """A collecting server, a serial line, and a daemon that has it open."""
        collector = self.collector()
        line = self.serial_line()
        daemon = self.corvane("-s", str(line.device), *options)
        line.wait_until_open()
        return collector, line, daemon

    def test_sentences_are_told_as_they_come(self) -> None:
        collector, line, _ = self.opened()
        line.say(series(1, 3))
        collector.wait_for_numbers([1, 2, 3])
        line.say(series(4, 6))
        collector.wait_for_numbers([4, 5, 6])
        self.assertEqual(collector.numbers(), [1, 2, 3, 4, 5, 6])

    def test_a_writer_that_pauses_in_a_sentence_delivers_it_once_and_whole(self) -> None:
        collector, line, daemon = self.opened()
        sentence = numbered(1)
        for part in (sentence[:2], sentence[2:15], sentence[15:-1]):
            line.say(part)
            time.sleep(PAUSE)
            self.assertEqual(collector.numbers(), [])
        line.say(sentence[-1:])
        collector.wait_for_numbers([1])
        collector.wait_for_status(MAIN, "checksum_stats", "1,0")
        daemon.wait_for_passes(2)
        self.assertEqual(collector.numbers(), [1])

    def test_every_byte_value_passes_unchanged(self) -> None:
        collector, line, _ = self.opened()
        every_byte = bytes(range(256)) * 8
        line.say(every_byte)
        line.say(bytes(1024))
        wait_until("the bytes", lambda: len(collector.raw_bytes(MAIN)) >= len(every_byte))
        self.assertEqual(collector.raw_bytes(MAIN)[:len(every_byte)], every_byte)

    @best_of_three
    def test_a_sentence_is_told_at_once_and_not_at_the_next_tick(self) -> None:
        collector, line, _ = self.opened()
        delays = []
        for number in range(1, 11):
            started = time.monotonic()
            line.say(numbered(number))
            collector.wait_for_numbers([number])
            delays.append(time.monotonic() - started)
        self.assertLess(sorted(delays)[5], PROMPT)

    def test_a_speed_without_a_constant_is_set(self) -> None:
        _, line, _ = self.opened("-b", "250000")
        self.assertEqual(line.speed(), 250000)

    def test_the_speed_is_460800_unless_it_is_set(self) -> None:
        _, line, _ = self.opened()
        self.assertEqual(line.speed(), 460800)

    def test_a_device_that_is_not_there_is_told_and_opened_when_it_comes(self) -> None:
        collector = self.collector()
        line = self.serial_line()
        line.unplug()
        daemon = self.corvane("-s", str(line.device))
        daemon.wait_for_error(str(line.device))
        event = collector.wait_for("logger.event", name=MAIN, level="error")
        self.assertIn("No such file or directory", event["text"])
        line.plug_in()
        line.wait_until_open(2.0)
        line.say(numbered(1))
        collector.wait_for_numbers([1])

    def test_an_absent_device_is_told_once_and_not_every_pass(self) -> None:
        daemon = self.corvane("-s", str(self.folder / "absent"))
        daemon.wait_for_error("absent")
        daemon.wait_for_passes(12)
        self.assertEqual(daemon.stderr.count(str(self.folder / "absent")), 1, daemon.stderr)

    def test_a_device_that_is_lost_is_told_and_opened_again_when_it_is_back(self) -> None:
        collector, line, daemon = self.opened()
        line.say(numbered(1))
        collector.wait_for_numbers([1])
        line.unplug()
        collector.wait_for("logger.event", name=MAIN, level="error")
        daemon.wait_for_error(str(line.device))
        line.plug_in()
        line.wait_until_open(2.0)
        line.say(numbered(2))
        collector.wait_for_numbers([2], seconds=2.0)

    def test_a_lost_device_leaves_no_descriptor_behind(self) -> None:
        collector, line, daemon = self.opened()
        collector.wait_for_status(MAIN, "started", "started")
        before = len(daemon.descriptors())
        for number in range(1, 4):
            line.unplug()
            line.plug_in()
            line.wait_until_open(2.0)
            line.say(numbered(number))
            collector.wait_for_numbers([number])
        self.assertEqual(len(daemon.descriptors()), before)
        self.assertIn(os.path.realpath(line.device), daemon.descriptors().values())
