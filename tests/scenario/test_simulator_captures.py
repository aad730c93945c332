"""Captures that the simulator writes: the same for the same seed, and spoilt as it is told."""

import struct
import subprocess
from collections import Counter
from pathlib import Path

from decoder.run import offline_run
from harness.captures import run_over
from harness.scenario import MAIN, Scenario
from harness.simulator import SYNC, logs_of, simulator_program, write_capture

SECONDS = 10
EPOCHS = SECONDS * 20
POSITIONS = "log pdpxyzb ontime 0.05\npdpfilter enable\n"
WEEK, NOON_OF_WEDNESDAY = 2370, 302_400_000


def binary_logs(stream: bytes) -> list[tuple[int, int, int]]:
    """Identifier, week and millisecond of each log of a stream without damage."""
    found = []
    at = stream.find(SYNC)
    while at >= 0:
        identifier, _, _, length = struct.unpack_from("<HBBH", stream, at + 4)
        found.append((identifier, *struct.unpack_from("<HI", stream, at + 14)))
        at = stream.find(SYNC, at + 28 + length + 4)
    return found


class Written(Scenario):
    def capture(self, name: str, *options: str, commands: str | None = None) -> Path:
        asked = () if commands is None else ("--commands",
                                             self.file("commands", commands.encode()))
        write_capture(self.folder / name, SECONDS, *asked, *options)
        return self.folder / name

    def stream(self, *options: str, commands: str | None = None) -> bytes:
        return self.capture("stream", *options, commands=commands).read_bytes()


class Content(Written):
    def test_it_is_the_same_again_for_the_same_seed_and_start(self) -> None:
        faults = ("--seed", "7", "--noise", "0.1", "--bit-errors", "1e-4", "--drop", "0.1",
                  "--duplicate", "0.1", "--cut", "0.1")
        self.assertEqual(self.stream(*faults), self.stream(*faults))
        self.assertEqual(self.stream(), self.stream("--start", "2370,302400", "--seed", "1"))

    def test_another_seed_or_start_gives_another_one(self) -> None:
        usual = self.stream()
        self.assertNotEqual(usual, self.stream("--seed", "2"))
        self.assertNotEqual(usual, self.stream("--start", "2370,302401"))

    def test_it_holds_every_log_as_often_as_the_configuration_asks_for_it(self) -> None:
        logs = binary_logs(self.stream())
        counts = Counter(identifier for identifier, _, _ in logs)
        wanted = {471: EPOCHS, 1085: EPOCHS, 244: EPOCHS, 101: EPOCHS,  # at 20 Hz
                  43: 20, 1174: 20, 1234: 20, 1162: 20, 47: 20, 141: 20,  # at 2 Hz
                  42: 10, 83: 10, 174: 1, 317: 1, 175: 1,
                  37: 1, 93: 2, 1148: 1, 5: 1}
        self.assertEqual({each: counts[each] for each in wanted}, wanted)
        self.assertEqual(set(counts) - set(wanted), {128})  # RXCONFIG, a log for each setting

    def test_it_begins_at_a_fixed_moment_unless_it_is_told_another_one(self) -> None:
        times = [time for identifier, *time in binary_logs(self.stream()) if identifier == 471]
        self.assertEqual(times, [[WEEK, NOON_OF_WEDNESDAY + 50 * number]
                                 for number in range(1, EPOCHS + 1)])
        later = binary_logs(self.stream("--start", "2000,604799", commands=POSITIONS))
        self.assertEqual(later[0], (471, 2000, 604_799_050))
        self.assertEqual(later[19], (471, 2001, 0))

    def test_it_holds_what_the_commands_of_a_file_ask_for_and_their_answers(self) -> None:
        stream = self.stream(commands="log gpzda ontime 1\n\nlog nothing\n")
        ok, refused, *sentences = stream.decode().split("\r\n[COM1]")
        self.assertEqual(ok, "\r\n<OK")
        self.assertEqual(refused, "\r\n<ERROR:Requested log does not exist")
        self.assertEqual(sentences[0].count("\r\n"), SECONDS)
        # UTC is 18 s behind: the first second after noon is 11:59:43.
        self.assertEqual(sentences[0].count("$GPZDA,1159"), SECONDS)
        self.assertTrue(sentences[0].startswith("$GPZDA,115943.00,11,06,2025,"))

    def test_standard_output_takes_it_as_well(self) -> None:
        run = subprocess.run([simulator_program(), "--write", "-", "--duration", str(SECONDS)],
                             check=True, capture_output=True, timeout=20)
        self.assertEqual(run.stdout, self.stream())


class Read(Written):
    def test_the_daemon_reads_the_same_out_of_it_each_time(self) -> None:
        capture = self.capture("usual")
        self.assertEqual(run_over(capture, self.folder / "first"),
                         run_over(capture, self.folder / "second"))

    def assert_agreed(self, *options: str) -> None:
        """The independent decoder reads the same."""
        capture = self.capture("capture", *options)
        read, decoded = run_over(capture, self.folder), offline_run(capture.read_bytes())
        self.assert_same_lines(bytes(decoded.dump).splitlines(), read.dump.splitlines())
        self.assert_same_lines(decoded.published, read.published.splitlines())
        self.assertIn("position.ecef", read.published)

    def test_the_decoder_agrees_with_the_daemon_about_it(self) -> None:
        self.assert_agreed()

    def test_the_decoder_agrees_about_a_spoilt_one(self) -> None:
        self.assert_agreed("--noise", "0.2", "--bit-errors", "1e-4", "--drop", "0.1",
                           "--duplicate", "0.1", "--cut", "0.1", "--seed", "3")


class Spoilt(Written):
    """Each fault, in what the daemon counts."""

    def counts(self, *options: str) -> tuple[int, int, int]:
        """Epochs that were read, good and rejected sentences."""
        collector = self.collector()
        self.run_corvane("-f", str(self.capture("spoilt", *options, commands=POSITIONS)))
        collector.wait_for_the_end()
        collector.stop()
        epochs = len(collector.messages("logger.data", name=MAIN, key="QRS_471"))
        good, rejected = collector.status(MAIN, "checksum_stats").split(",")
        return epochs, int(good), int(rejected)

    def test_nothing_is_missing_without_faults(self) -> None:
        epochs, good, _ = self.counts()
        self.assertEqual((epochs, good), (EPOCHS, EPOCHS))
        self.assertEqual(logs_of(self.stream(commands=POSITIONS)), (EPOCHS, 0))

    def test_logs_that_do_not_come_are_missing(self) -> None:
        epochs, good, _ = self.counts("--drop", "0.25")
        self.assertAlmostEqual(epochs, EPOCHS * 0.75, delta=EPOCHS * 0.1)
        self.assertEqual(good, epochs)
        self.assertEqual(self.stream("--drop", "1", commands=POSITIONS), b"\r\n<OK\r\n[COM1]" * 2)

    def test_logs_that_come_twice_are_counted_twice(self) -> None:
        epochs, _, _ = self.counts("--duplicate", "1")
        self.assertEqual(epochs, EPOCHS * 2)

    def test_logs_without_their_end_are_rejected(self) -> None:
        _, _, usual = self.counts()
        epochs, _, rejected = self.counts("--cut", "0.1")
        self.assertLess(epochs, EPOCHS * 0.95)
        self.assertGreater(epochs, EPOCHS * 0.6)  # a cut one takes the next one with it
        self.assertGreater(rejected, usual)

    def test_logs_with_wrong_bits_are_rejected(self) -> None:
        _, _, usual = self.counts()
        epochs, _, rejected = self.counts("--bit-errors", "2e-4")  # 1152 bits a log
        self.assertAlmostEqual(epochs, EPOCHS * (1 - 2e-4) ** 1152, delta=EPOCHS * 0.12)
        self.assertGreater(rejected, usual)

    def test_noise_between_logs_costs_none_of_them(self) -> None:
        clean, noisy = self.stream(commands=POSITIONS), self.stream("--noise", "0.5",
                                                                    commands=POSITIONS)
        bursts = EPOCHS * 0.5
        self.assertAlmostEqual(len(noisy) - len(clean), bursts * 16.5, delta=bursts * 5)
        epochs, _, _ = self.counts("--noise", "0.5")
        self.assertEqual(epochs, EPOCHS)


class CommandLine(Scenario):
    def run_with(self, *options: str) -> subprocess.CompletedProcess:
        return subprocess.run([simulator_program(), *options], check=False, capture_output=True,
                              text=True, timeout=20)

    def assert_refused(self, *options: str) -> None:
        run = self.run_with(*options)
        self.assertEqual((run.returncode, run.stdout), (2, ""), options)
        self.assertIn("Run with --help for more information.", run.stderr)

    def test_help_and_version_end_well(self) -> None:
        run = self.run_with("--help")
        self.assertEqual((run.returncode, run.stderr), (0, ""))
        for part in ("--write", "--bit-errors", "Examples:", "Exit status:"):
            self.assertIn(part, run.stdout)
        run = self.run_with("--version")
        self.assertEqual(run.returncode, 0)
        self.assertRegex(run.stdout, r"^corvane-sim \d+\.\d+\.\d+\n$")

    def test_what_is_not_understood_is_refused(self) -> None:
        self.assert_refused("--nonsense")
        self.assert_refused("--write", "capture.gps")  # how long?
        self.assert_refused("--start", "yesterday")
        self.assert_refused("--start", "2370,604800")
        self.assert_refused("--baud", "12345")
        self.assert_refused("--ports", "com1,lpt1")
        self.assert_refused("--noise", "1.5")
        self.assert_refused("--silent", "soon")
        self.assert_refused("--error-bits", "0x1FFFFFFFF")
        self.assert_refused("--status-bits", "-1")
        self.assert_refused("--firmware-error", "COMPLETE")
        self.assert_refused("--quiet", "--verbose")

    def test_a_file_that_cannot_be_written_or_read_is_told(self) -> None:
        run = self.run_with("--write", str(self.folder / "no" / "capture"), "--duration", "1")
        self.assertEqual(run.returncode, 1)
        self.assertIn("No such file or directory", run.stderr)
        run = self.run_with("--write", "/dev/full", "--duration", "1")
        self.assertEqual(run.returncode, 1)
        self.assertIn("No space left on device", run.stderr)
        run = self.run_with("--write", "-", "--duration", "1", "--commands", "/nowhere")
        self.assertEqual(run.returncode, 1)
        self.assertIn("/nowhere", run.stderr)
