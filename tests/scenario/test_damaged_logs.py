"""Logs whose counts and length disagree: the end they order, and what was told before it."""

import signal
import time

from harness.scenario import MAIN, Scenario
from harness.sentences import binary, numbered, series, u32
from harness.waiting import wait_until

MOST = 0xFFFFFFFF
FINISH_SECONDS = 2.0  # for which the end waits for what is left to leave
FOLDER = "src/corvane/src/Logs/NovatelOEMV/NovatelBinary"
VECTOR = "const std::vector<unsigned char, std::allocator<unsigned char> >&"
MEMORY = 512 * 1024 * 1024  # bytes of address space; a count of 4294967295 would need more


def parse_function(log: str) -> str:
    return f"void Novatel::CNovatel{log}B::ParseSentenceData({VECTOR})"


def assertion(log: str, line: int, expression: str) -> str:
    """The line as the C library's assert writes it."""
    return (f"corvane: {FOLDER}/Novatel{log}B:{line}: {parse_function(log)}: "
            f"Assertion `{expression}' failed.\n")


class DamagedLog(Scenario):
    def run_over(self, sentence: bytes):
        """A run over two good sentences, the damaged one and a good one that it never reaches."""
        collector = self.collector()
        content = series(1, 2) + sentence + numbered(3)
        started = time.monotonic()
        daemon = self.corvane("-d", "-f", self.file("capture", content),
                              prefix=("prlimit", f"--as={MEMORY}"))
        status = daemon.status()
        self.assertLess(time.monotonic() - started, 5.0)
        collector.wait_for_the_end()
        collector.stop()
        self.assert_told_before_the_end(collector, daemon)
        return daemon, status

    def assert_told_before_the_end(self, collector, daemon) -> None:
        self.assertEqual(collector.numbers(), [1, 2])
        self.assertEqual(collector.status(MAIN, "checksum_stats"), "2,0")
        self.assertEqual(daemon.stdout.count(b"\n"), 2)

    def assert_aborts(self, sentence: bytes, line: str) -> str:
        daemon, status = self.run_over(sentence)
        self.assertEqual(status, -signal.SIGABRT, daemon.stderr)
        self.assertIn(line, daemon.stderr)
        return daemon.trace + daemon.stderr


class Range(DamagedLog):
    LINE = assertion("RANGE", 35, "0")

    def test_one_byte_too_many_is_told_and_ends_in_an_assertion(self) -> None:
        told = self.assert_aborts(binary(43, u32(3) + bytes(3 * 44 + 1)), self.LINE)
        self.assertIn("CNovatelRANGEB sentenceData.size() is 169 but expected "
                      "(28 + 16 + (3 * 44) + 4)\n", told)

    def test_a_count_of_4294967295_ends_at_once(self) -> None:
        told = self.assert_aborts(binary(43, u32(MOST)), self.LINE)
        self.assertIn("expected (28 + 16 + (-1 * 44) + 4)\n", told)

    def test_a_count_that_fits_only_in_32_bit_arithmetic_ends_too(self) -> None:
        self.assert_aborts(binary(43, u32(0x40000000)), self.LINE)  # 44 * 2^30 is 0 modulo 2^32


class TrackStat(DamagedLog):
    LINE = assertion("TRACKSTAT", 38, "0")

    def test_a_missing_channel_is_told_and_ends_in_an_assertion(self) -> None:
        told = self.assert_aborts(binary(83, u32(0, 0, 0, 2) + bytes(40)), self.LINE)
        self.assertIn("CNovatelTRACKSTATB sentenceData.size() is 88 but expected "
                      "(28 + 16 + (2 * 40) + 4)\n", told)

    def test_a_count_of_4294967295_ends_at_once(self) -> None:
        self.assert_aborts(binary(83, u32(0, 0, 0, MOST)), self.LINE)


class Psrdop(DamagedLog):
    LINE = assertion("PSRDOP", 34, "sentenceData.size() == "
                                   "(m_header.m_headerLength + 28 + (numberPRNs * 4) + 4)")

    def test_a_missing_satellite_ends_in_an_assertion(self) -> None:
        self.assert_aborts(binary(174, u32(0, 0, 0, 0, 0, 0, 2, 17)), self.LINE)

    def test_a_count_of_4294967295_ends_at_once(self) -> None:
        self.assert_aborts(binary(174, u32(0, 0, 0, 0, 0, 0, MOST)), self.LINE)


class ComConfig(DamagedLog):
    LINE = assertion("COMCONFIG", 26, "sentenceData.size() == "
                                      "(m_header.m_headerLength + 4 + (m_numberOfPorts * 44) + 4)")

    def test_a_missing_port_ends_in_an_assertion(self) -> None:
        self.assert_aborts(binary(317, u32(2) + bytes(44)), self.LINE)

    def test_a_count_of_4294967295_ends_at_once(self) -> None:
        self.assert_aborts(binary(317, u32(MOST)), self.LINE)


class ChanConfigList(DamagedLog):
    EXPRESSION = ("Assertion `sentenceData.size() >= (set.number_signals * 8) + startIndex + 4'"
                  " failed.\n")

    def assert_aborts_in_a_set(self, sentence: bytes) -> None:
        told = self.assert_aborts(sentence, self.EXPRESSION)
        line = next(line for line in told.splitlines() if "Assertion" in line)
        self.assertRegex(line, rf"^corvane: {FOLDER}/NovatelCHANCONFIGLISTB:\d+: "
                               r"Novatel::CNovatelCHANCONFIGLIST::SChannelConfigSet "
                               r"Novatel::CNovatelCHANCONFIGLISTB::ParseConfigSet\(.*\) const: ")

    def test_a_set_longer_than_the_log_ends_in_an_assertion(self) -> None:
        self.assert_aborts_in_a_set(binary(1148, u32(1, 1, 3) + bytes(2 * 8)))

    def test_4294967295_sets_end_at_once(self) -> None:
        self.assert_aborts_in_a_set(binary(1148, u32(1, MOST)))

    def test_a_set_of_4294967295_signals_ends_at_once(self) -> None:
        self.assert_aborts_in_a_set(binary(1148, u32(1, 1, MOST)))


class Version(DamagedLog):
    LINE = assertion("VERSION", 41, "0")

    def test_a_missing_component_is_told_with_all_bytes_and_ends_in_an_assertion(self) -> None:
        sentence = binary(37, u32(3) + bytes(2 * 108))
        told = self.assert_aborts(sentence, self.LINE)
        self.assertIn("NovatelVERSIONB: Unexpected length. Got 252, expected 360 "
                      "from 3 components\nSentence Data is as follows:", told)
        self.assertIn(self.dump(sentence), told)

    def dump(self, sentence: bytes) -> str:
        """Sixteen bytes a line, each line begun by a line break, and one more at the end."""
        lines = [sentence[at:at + 16] for at in range(0, len(sentence), 16)]
        return "".join("\n" + "".join(f"0x{byte:02X} " for byte in line) for line in lines) + "\n"

    def test_a_count_of_4294967295_ends_at_once(self) -> None:
        self.assert_aborts(binary(37, u32(MOST)), self.LINE)


class RxStatus(DamagedLog):
    def assert_exits(self, sentence: bytes) -> str:
        daemon, status = self.run_over(sentence)
        self.assertEqual(status, 1, daemon.stderr)
        return daemon.trace

    def test_a_missing_status_code_is_told_and_ends_with_status_1(self) -> None:
        told = self.assert_exits(binary(93, u32(0, 2) + bytes(16)))
        self.assertIn("CNovatelRXSTATUSB sentenceData.size() is 56 but expected "
                      "(28 + 8 + (2 * 16) + 4)\n", told)

    def test_a_count_of_4294967295_ends_at_once(self) -> None:
        self.assert_exits(binary(93, u32(0, MOST)))


class OnALiveLine(Scenario):
    """The ordered end does not depend on where the bytes come from or on who listens."""

    DAMAGED = series(1, 2) + binary(93, u32(0, MOST))

    def test_what_came_before_is_told(self) -> None:
        collector = self.collector()
        line = self.serial_line()
        daemon = self.corvane("-s", str(line.device))
        line.wait_until_open()
        collector.wait_for_connection()
        line.say(self.DAMAGED)
        self.assertEqual(daemon.status(), 1)
        collector.wait_for_the_end()
        self.assertEqual(collector.numbers(), [1, 2])

    def test_with_nobody_listening_the_end_comes_at_once(self) -> None:
        line = self.serial_line()
        daemon = self.corvane("-s", str(line.device))
        line.wait_until_open()
        line.say(self.DAMAGED)
        self.assertEqual(daemon.status(1.0), 1)

    def test_a_server_that_does_not_read_delays_the_end_by_two_seconds_at_most(self) -> None:
        collector = self.collector(started=False)
        collector.start(reading=False, receive_buffer=4096)
        line = self.serial_line()
        daemon = self.corvane("-d", "-s", str(line.device))
        line.wait_until_open()
        collector.wait_for_connection()
        line.say(series(1, 2000))
        wait_until("the last sentence", lambda: b"seconds = 2000\n" in daemon.stdout)
        line.say(self.DAMAGED)
        started = time.monotonic()
        self.assertEqual(daemon.status(), 1)
        self.assertLess(time.monotonic() - started, FINISH_SECONDS + 1.0)


class Lenient(Scenario):
    """Logs that are short, or hold too little, and must not end anything."""

    def test_a_satellite_list_that_promises_too_much_is_only_a_record(self) -> None:
        for message_id in (1162, 1174, 1234):
            content = binary(message_id, u32(MOST)) + binary(message_id, u32(5) + bytes(64))
            daemon = self.run_corvane("-d", "-f", self.file("capture", content))
            self.assertEqual(daemon.stdout.count(f"ID = {message_id},".encode()), 2)

    def test_logs_without_a_size_rule_may_be_of_any_length(self) -> None:
        for message_id in (42, 101, 175, 241, 243, 244, 471, 495, 730, 731, 1085):
            content = b"".join(binary(message_id, bytes(length)) for length in range(0, 130, 13))
            daemon = self.run_corvane("-d", "-f", self.file("capture", content))
            self.assertEqual(daemon.stdout.count(b"\n"), 10)

    def test_a_header_that_promises_more_than_the_sentence_holds_is_only_a_record(self) -> None:
        content = binary(42, padding=bytes(200)) + numbered(2)
        daemon = self.run_corvane("-d", "-f", self.file("capture", content))
        self.assertEqual(daemon.stdout.count(b"\n"), 2)
