"""A file of commands for the receiver, named with -c: its lines are told, and nothing else."""

import os

from decoder.commands import CONFIGURATION
from harness.controlled import Controlled
from harness.sentences import numbered

POSITION = "NovatelPositionManager"
LONGEST = 1023  # characters that a line may have


class Lines(Controlled):
    def assert_told(self, wanted: list[str], content: bytes) -> None:
        receiver = self.receiver()
        daemon = self.control(receiver, "-c", self.file("commands", content))
        receiver.wait_for_commands(len(wanted), 20.0)
        daemon.wait_for_passes(2)
        self.assert_same_lines([f"{each}\r\n" for each in wanted], receiver.commands())

    def test_they_are_told_in_their_order_instead_of_the_usual_ones(self) -> None:
        self.assert_told(["unlogall", "log bestposb ontime 1", "unlogall"],
                         b"unlogall\nlog bestposb ontime 1\nunlogall")

    def test_behind_a_final_newline_there_is_one_more_that_is_blank(self) -> None:
        self.assert_told(["unlogall", ""], b"unlogall\n")

    def test_blank_ones_are_told_as_bare_ends(self) -> None:
        self.assert_told(["", "unlogall", "", "", "log version"],
                         b"\nunlogall\n\n  \t \nlog version")

    def test_an_empty_file_is_one_blank_line(self) -> None:
        self.assert_told([""], b"")

    def test_blanks_around_them_are_dropped_and_those_within_are_kept(self) -> None:
        self.assert_told(["unlogall  thisport", "log\tversion", "x"],
                         b" \t unlogall  thisport \t\r\nlog\tversion\v\f\n x")

    def test_bytes_that_are_no_ascii_pass_unchanged(self) -> None:
        self.assert_told(["\xe9\xff\x01"], b"\xe9\xff\x01")

    def test_one_of_full_length_is_one_command(self) -> None:
        self.assert_told(["a" * LONGEST, "b"], b"a" * LONGEST + b"\nb")

    def test_what_is_over_the_longest_is_the_next_command(self) -> None:
        self.assert_told(["a" * LONGEST, "b", "c"], b"a" * LONGEST + b"b\nc")
        self.assert_told(["a" * LONGEST, "a" * LONGEST, "a" * 4], b"a" * 2050)

    def test_five_thousand_are_told_in_their_order(self) -> None:
        lines = [f"log com1 bestposb ontime {number}" for number in range(1, 5001)]
        self.assert_told(lines, "\n".join(lines).encode())

    def test_the_configuration_names_a_file_as_well(self) -> None:
        receiver = self.receiver()
        path = self.file("commands", b"unlogall\nlog version")
        daemon = self.control(receiver, settings=f"configuration_file = {path}\n")
        receiver.wait_for_commands(2)
        daemon.wait_for_passes(2)
        self.assertEqual(receiver.heard(), b"unlogall\r\nlog version\r\n")

    def test_an_empty_name_is_none(self) -> None:
        receiver = self.receiver()
        self.control(receiver, "-c", "")
        receiver.wait_for_commands(len(CONFIGURATION))
        self.assert_same_lines(list(CONFIGURATION), receiver.commands())


class Unreadable(Controlled):
    def assert_told_and_no_command(self, path: str, reason: str) -> None:
        """The daemon goes on without a command, and says why."""
        collector, receiver = self.collector(), self.receiver()
        daemon = self.control(receiver, "-c", path)
        daemon.wait_for_error(f"{path}: {reason}\n")
        event = collector.wait_for("logger.event", level="error")
        self.assertEqual(event["name"], POSITION)
        self.assertIn(f"{path}: {reason}", event["text"])
        receiver.line.wait_until_open()
        receiver.say(numbered(1))
        collector.wait_for_numbers([1])
        daemon.wait_for_passes(12)
        self.assertEqual(receiver.heard(), b"")
        self.assertEqual(self.told_commands(collector), [])
        self.assertEqual(collector.status("NovatelPortHandler", "receiver_initialisations"), "1")

    def test_a_file_that_is_not_there(self) -> None:
        self.assert_told_and_no_command(str(self.folder / "absent"), "No such file or directory")

    def test_a_folder(self) -> None:
        self.assert_told_and_no_command(str(self.folder), "not a regular file")

    def test_a_pipe_into_which_nobody_writes(self) -> None:
        path = str(self.folder / "pipe")
        os.mkfifo(path)
        self.assert_told_and_no_command(path, "not a regular file")

    def test_a_device_that_never_ends(self) -> None:
        self.assert_told_and_no_command("/dev/zero", "not a regular file")
