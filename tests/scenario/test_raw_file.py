"""Raw capture files (-f): every kind of file there can be, and every read size."""

import os
import stat

from harness.messages import canonical
from harness.scenario import MAIN, Scenario
from harness.sentences import UNKNOWN_LOG, ascii_log, binary, nmea, numbered, response


def dump_line(number: int) -> bytes:
    return f"ID = {UNKNOWN_LOG}, size = 0, week = 1800, seconds = {number}\n".encode()


class RawFile(Scenario):
    def test_a_missing_file_is_told_with_the_reason(self) -> None:
        daemon = self.corvane("-f", str(self.folder / "missing"))
        daemon.wait_for_error("CFileHandler:Open: No such file or directory\n")

    def test_a_missing_file_is_waited_for_and_read_when_it_comes(self) -> None:
        daemon = self.corvane("-d", "-f", str(self.folder / "late"))
        daemon.wait_for_passes(3)
        prepared = self.file("prepared", numbered(7))
        os.rename(prepared, self.folder / "late")
        self.assertEqual(daemon.status(), 0)
        self.assertEqual(daemon.stdout, dump_line(7))

    def test_an_empty_file_ends_the_run_with_status_0_and_no_output(self) -> None:
        collector = self.collector()
        daemon = self.run_corvane("-d", "-f", self.file("empty", b""))
        self.assertEqual(daemon.stdout, b"")
        collector.wait_for_the_end()
        self.assertEqual(collector.messages("logger.data"), [])
        self.assertIsNone(collector.status(MAIN, "checksum_stats"))

    def test_a_directory_is_told_and_is_no_regular_end(self) -> None:
        daemon = self.corvane("-f", str(self.folder))
        daemon.wait_for_error("Is a directory")
        daemon.wait_for_passes(3)
        self.assertTrue(daemon.is_running())

    def test_the_end_of_the_file_shows_in_the_trace_before_the_last_pass(self) -> None:
        daemon = self.run_corvane("-f", self.file("capture", numbered(1)))
        last = [line for line in daemon.trace.splitlines() if line[0].isdigit()][-2:]
        self.assertRegex(last[0], r"^\d+\.\d{3},portHandler\.HandlePort failed$")
        self.assertRegex(last[1], r"^\d+\.\d{3},novatel_main_loop,\d+\.\d{3},\d+\.\d{3}$")

    def test_a_sentence_cut_by_the_end_of_the_file_is_not_counted(self) -> None:
        collector = self.collector()
        daemon = self.run_corvane("-d", "-f", self.file("cut", numbered(1) + numbered(2)[:-1]))
        self.assertEqual(daemon.stdout, dump_line(1))
        collector.wait_for_the_end()
        self.assertEqual(collector.status(MAIN, "checksum_stats"), "1,0")

    def test_a_named_pipe_is_read_like_a_file(self) -> None:
        pipe = self.folder / "pipe"
        os.mkfifo(pipe, stat.S_IRUSR | stat.S_IWUSR)
        daemon = self.corvane("-d", "-f", str(pipe))
        with open(pipe, "wb") as writer:
            writer.write(numbered(1) + numbered(2))
        self.assertEqual(daemon.status(), 0)
        self.assertEqual(daemon.stdout, dump_line(1) + dump_line(2))


class ReadSizes(Scenario):
    CAPTURE = b"".join(
        [*(numbered(number) for number in range(100)), nmea("GPGGA,1"), b"[COM1]<OK\r\n#bad*\r\n",
         ascii_log("SOFTLOADSTATUSA", "COMPLETE"), response(1, 1, b"OK"), bytes(3000),
         numbered(100)])

    def outcome(self, *options: str):
        """Every record on the screen and in the data lines, in any order, and the final counts.

        The order and the counts in between go by the chunks, since each framer sees a whole chunk
        before the next framer does.
        """
        collector = self.collector()
        daemon = self.run_corvane(*options, "-d", "-f", self.file("capture", self.CAPTURE))
        collector.wait_for_the_end()
        collector.stop()
        told = collector.messages("logger.data", name=MAIN)
        return (sorted(daemon.stdout.splitlines()), sorted(canonical(each) for each in told),
                collector.status(MAIN, "checksum_stats"))

    def test_the_records_of_a_mixed_stream_are_counted(self) -> None:
        lines, told, counts = self.outcome()
        self.assertEqual((len(lines), len(told), counts), (104, 104, "104,2"))

    def test_read_byte_by_byte_the_same_comes_out(self) -> None:
        self.assertEqual(self.outcome("-z", "1"), self.outcome())

    def test_read_in_one_piece_the_same_comes_out(self) -> None:
        self.assertEqual(self.outcome("-z", "2147483647"), self.outcome())

    def test_raw_blocks_hold_1024_bytes_when_read_byte_by_byte(self) -> None:
        collector = self.collector()
        self.run_corvane("-z", "1", "-f", self.file("zeros", bytes(5000)))
        collector.wait_for_the_end()
        self.assertEqual(len(collector.messages("logger.raw", name=MAIN)), 4)
        self.assertEqual(collector.raw_bytes(MAIN), bytes(4096))

    def test_a_very_large_read_size_takes_no_memory_of_that_size(self) -> None:
        limited = ("prlimit", f"--as={256 * 1024 * 1024}")
        self.run_corvane("-z", "2147483647", "-f", self.file("capture", self.CAPTURE),
                         prefix=limited)

    def test_a_read_size_of_0_reads_nothing(self) -> None:
        daemon = self.run_corvane("-d", "-z", "0", "-f", self.file("capture", self.CAPTURE))
        self.assertEqual(daemon.stdout, b"")


class Screen(Scenario):
    def dump(self, content: bytes) -> bytes:
        return self.run_corvane("-d", "-f", self.file("capture", content)).stdout

    def test_a_response_shows_its_text_up_to_the_first_zero_byte(self) -> None:
        self.assertEqual(
            self.dump(response(1, 6, b"Invalid message ID\0rest")),
            b"ID = 1, size = 0, week = 1800, seconds = 0\n"
            b'Response: Log=1, ID=6: "Invalid message ID"\n')

    def test_seconds_show_all_their_decimals_and_none_that_is_not_needed(self) -> None:
        times = {419928500: b"419928.5", 400000000: b"400000", 1: b"0.001",
                 604799999: b"604799.999"}
        for milliseconds, text in times.items():
            self.assertEqual(
                self.dump(binary(UNKNOWN_LOG, milliseconds=milliseconds)),
                b"ID = 999, size = 0, week = 1800, seconds = " + text + b"\n")

    def test_nmea_sentences_are_not_shown(self) -> None:
        self.assertEqual(self.dump(nmea("GPGSV,1,1,00") + numbered(1)), dump_line(1))

    def test_an_ascii_record_shows_with_an_empty_header(self) -> None:
        self.assertEqual(self.dump(ascii_log("SOFTLOADSTATUSA", "COMPLETE")),
                         b"ID = 1235, size = 0, week = 0, seconds = 0\n")

    def test_an_unknown_ascii_log_is_not_shown(self) -> None:
        self.assertEqual(self.dump(ascii_log("BESTPOSA", "SOL_COMPUTED")), b"")

    def test_without_d_nothing_is_shown(self) -> None:
        daemon = self.run_corvane("-f", self.file("capture", numbered(1)))
        self.assertEqual(daemon.stdout, b"")
