"""The whole system on lines that spoil one bit in a hundred thousand: what comes whole is
published, and what does not is counted."""

import base64
import struct
import time

from decoder.framers import GOOD, framers
from decoder.records import decode
from harness.collector import Collector
from harness.damage import Piece, damaged_pieces, whole_logs, whole_sentences
from harness.messages import NMEA_KEY, Message
from harness.scenario import MAIN, SECOND
from harness.simulator import Simulator
from harness.waiting import wait_until
from harness.whole import WholeSystem

PORTS = {"com1": MAIN, "usb2": SECOND}
SPEED = 3  # of the receiver's clock, and so of its rates: 60 epochs a second
SECONDS = 75.0  # of the receiver's clock; some twenty go by before it has its logs
LEAST_DAMAGED = 5  # logs on each port, where 30 are to be expected
RAW_BLOCK = 1024  # bytes; fewer may wait to be handed on
SOLUTIONS = ("PDPXYZ", "RTKXYZ")
FORWARDED = ("$GPGSV", "$GPGSA", "$GPZDA", "$GPGST")


class BitErrors(WholeSystem):
    def simulate(self, *options: str) -> Simulator:
        self.sent = self.folder / "sent"
        self.sent.mkdir(exist_ok=True)
        simulator = super().simulate("--bit-errors", "1e-5", "--capture", str(self.sent), "--speed",
                                     str(SPEED), "--silent", str(SECONDS), *options)
        self.silent_at = time.monotonic() + SECONDS / SPEED
        return simulator

    def stream(self, port: str) -> bytes:
        """What has gone out on it, wrong bits included."""
        return (self.sent / port).read_bytes()

    def sentences(self, port: str) -> tuple[list[bytes], str]:
        """The good ones as the decoder has them, and its counts in the words of the daemon."""
        results = [each for framer in framers() for each in framer.feed(self.stream(port))]
        good = [sentence for result, sentence in results if result == GOOD]
        return good, f"{len(good)},{len(results) - len(good)}"

    def run_until_silence(self) -> Collector:
        """All that the receiver has said has been counted, good and bad."""
        collector, *_ = self.at_work()
        wait_until("the silence", lambda: time.monotonic() > self.silent_at, SECONDS)
        for port, handler in PORTS.items():
            wait_until(f"the counts of {handler}", lambda: self.sentences(port)[1] ==
                       collector.status(handler, "checksum_stats"), 10.0,
                       lambda: (self.sentences(port)[1],
                                collector.status(handler, "checksum_stats")))
        collector.stop()
        return collector

    def told(self, collector: Collector, method: str, **fields) -> list[Message]:
        """Those of the run that came to work, if there were others before it."""
        last = collector.connection_count() - 1
        return [each for each in collector.messages(method, **fields) if each.connection == last]

    def lines(self, collector: Collector, handler: str) -> tuple[list[tuple], int]:
        """The logs that were told as received: message, week, milliseconds; and the number of NMEA
        sentences."""
        logs, sentences = [], 0
        for line in self.told(collector, "logger.data", name=handler):
            _, week, seconds = line["value"].split(",")
            if line["key"] == NMEA_KEY:
                sentences += 1
            else:
                logs.append((int(line["key"].removeprefix("QRS_")), int(week),
                             round(float(seconds) * 1000)))
        return logs, sentences

    def test_all_that_comes_whole_is_published_and_all_else_is_counted(self) -> None:
        collector = self.run_until_silence()
        for port, handler in PORTS.items():
            self.assert_every_byte_has_come(collector, port, handler)
            self.assert_as_decoded(collector, port, handler)
            self.assert_nothing_whole_is_missing(collector, port, handler)
        self.assert_positions_are_the_receivers(collector)

    def assert_every_byte_has_come(self, collector: Collector, port: str, handler: str) -> None:
        """And what the decoder is given is what the daemon was given."""
        stream = self.stream(port)
        taken = b"".join(base64.b64decode(each["data"], validate=True)
                         for each in self.told(collector, "logger.raw", name=handler))
        self.assertTrue(stream.startswith(taken), "bytes were lost, added or changed")
        self.assertLess(len(stream) - len(taken), RAW_BLOCK)

    def assert_as_decoded(self, collector: Collector, port: str, handler: str) -> None:
        records = [each for each in map(decode, self.sentences(port)[0]) if each is not None]
        logs, sentences = self.lines(collector, handler)
        self.assert_same_lines([(each.message_id, each.week, each.milliseconds)
                                for each in records if each.kind != "NMEA"], logs)
        self.assertEqual(sentences, len([each for each in records if each.kind == "NMEA"]))

    def assert_nothing_whole_is_missing(self, collector: Collector, port: str,
                                        handler: str) -> None:
        """But logs that a damaged length made a part of another, which was rejected."""
        stream = self.stream(port)
        damaged = damaged_pieces(stream)
        self.assertGreater(len(damaged), LEAST_DAMAGED)
        wanted = [header(stream, log) for log in whole_logs(stream)
                  if not any(log.overlaps(piece) for piece in damaged)]
        self.assert_same_lines(wanted, self.lines(collector, handler)[0])
        if port == "usb2":
            self.assert_same_lines(
                [each for each in whole_sentences(stream) if each.startswith(FORWARDED)],
                [each["sentence"] for each in self.told(collector, "nmea.sentence")])

    def assert_positions_are_the_receivers(self, collector: Collector) -> None:
        records = [decode(each) for each in self.sentences("com1")[0]]
        self.assert_same_lines(
            [(each.milliseconds, *(each.content[axis] for axis in "xyz")) for each in records
             if each is not None and each.kind in SOLUTIONS and each.content["x"] != 0.0],
            [(round(each["seconds"] * 1000), each["x"], each["y"], each["z"]) for each in
             self.told(collector, "position.ecef") if each["x"] != 0.0])


def header(stream: bytes, log: Piece) -> tuple[int, int, int]:
    """Message, week and milliseconds."""
    message, = struct.unpack_from("<H", stream, log.begin + 4)
    return message, *struct.unpack_from("<HI", stream, log.begin + 14)
