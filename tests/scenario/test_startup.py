"""Start-up: the usage text, the command line, the configuration, the priority."""

import os

from harness.daemon import REALTIME_PRIORITY, real_time_is_possible
from harness.scenario import Scenario
from harness.sentences import numbered

FAILURE = 255

USAGE = """\
Usage: 
{program} [options]

Command Line Options:

I/O Options
-f <NormalFile>     Raw file mode (raw file I/O)
-s <serialPort>     Serial port (allows serial port configuration)
-r <ReplayFile>     Replay mode (varn binary logs)
-k <quentaNumber>   Quenta (with quenta number)

Configuration options
-b <baudrate>       Serial Baud Rate
-c <config file>    Novatel Configuration file
-t <timeout>        Serial read timeout, in ms
-z <size>           Serial/File read size
-u <mode>           Breakout mode, parameter = {{none|break|zq2|softbreak}} [Note 1]
-p                  Do not elevate priority (e.g. no root access)
-h                  Displays this help menu
-d                  Display basic information on packets received to screen

If no parameters are given, the program will extract arguments from the config database

[Note 1] ZQ2 breakout only changes port 2 whilst port 1 remains undisturbed
"""  # noqa: W291 - the blank after "Usage:" is printed


class Help(Scenario):
    def assert_usage(self, option: str) -> None:
        daemon = self.bare_corvane(option)
        self.assertEqual(daemon.status(), 0)
        self.assertEqual(daemon.stdout.decode(), USAGE.format(program=daemon.program))
        self.assertEqual(daemon.stderr, "")

    def test_h_alone_prints_the_usage_text_byte_for_byte(self) -> None:
        self.assert_usage("-h")

    def test_help_alone_prints_the_usage_text_byte_for_byte(self) -> None:
        self.assert_usage("--help")


class CommandLine(Scenario):
    def assert_refused(self, message: str, *arguments: str) -> None:
        daemon = self.bare_corvane(*arguments)
        self.assertEqual(daemon.status(), FAILURE)
        self.assertEqual(daemon.stderr, message)
        self.assertEqual(daemon.stdout, b"")

    def test_an_unknown_option_is_refused_by_its_number(self) -> None:
        self.assert_refused('Unrecognised argument "120"\n\n', "-x")

    def test_h_with_company_is_an_unknown_option(self) -> None:
        self.assert_refused('Unrecognised argument "104"\n\n', "-d", "-h")

    def test_h_before_others_is_an_unknown_option(self) -> None:
        self.assert_refused('Unrecognised argument "104"\n\n', "-h", "-d")

    def test_an_option_without_its_argument_is_refused_by_its_number(self) -> None:
        self.assert_refused('Unrecognised argument "102"\n\n', "-p", "-f")

    def test_there_is_no_version_option(self) -> None:
        self.assert_refused('Unrecognised argument "45"\n\n', "--version")

    def test_a_truncated_breakout_mode_is_refused(self) -> None:
        self.assert_refused('Unrecognised argument "zq" for \'u\'\n\n', "-u", "zq")

    def test_a_breakout_mode_in_upper_case_is_refused(self) -> None:
        self.assert_refused('Unrecognised argument "ZQ2" for \'u\'\n\n', "-u", "ZQ2")

    def test_arguments_are_refused_before_the_priority_is_asked_for(self) -> None:
        self.assert_refused('Unrecognised argument "120"\n\n', "-d", "-x")

    def test_each_breakout_mode_is_taken(self) -> None:
        for mode in ("none", "zq2", "break", "softbreak"):
            daemon = self.bare_corvane("-p", "-u", mode, "-f", self.file("empty", b""))
            self.assertEqual(daemon.status(), 0, f"{mode}: {daemon.stderr}")

    def test_of_several_sources_the_last_one_is_taken(self) -> None:
        capture = self.file("capture", numbered(7))
        line = self.serial_line()
        daemon = self.run_corvane("-k", "7", "-s", str(line.device), "-d", "-f", capture)
        self.assertIn(b"seconds = 7\n", daemon.stdout)

    def test_a_later_serial_device_wins_over_a_multiplexer_port(self) -> None:
        line = self.serial_line()
        self.corvane("-k", "7", "-s", str(line.device), "-b", "9600")
        line.wait_until_open()
        self.assertEqual(line.speed(), 9600)

    def test_numbers_are_read_as_decimal_and_what_follows_them_is_ignored(self) -> None:
        line = self.serial_line()
        self.corvane("-s", str(line.device), "-b", "57600baud")
        line.wait_until_open()
        self.assertEqual(line.speed(), 57600)


class Configuration(Scenario):
    def configured(self, text: str) -> dict[str, str]:
        return {"CORVANE_CONFIG": self.file("settings.conf", text.encode())}

    def test_the_source_is_taken_from_the_configuration(self) -> None:
        capture = self.file("capture", numbered(7))
        settings = self.configured(f"[Corvane]\nio_type = 0\ninput_filename = {capture}\n")
        daemon = self.bare_corvane("-p", "-d", environment=settings)
        self.assertEqual(daemon.status(), 0, daemon.stderr)
        self.assertIn(b"seconds = 7\n", daemon.stdout)

    def test_an_option_wins_over_the_configuration(self) -> None:
        capture = self.file("capture", numbered(7))
        settings = self.configured("[Corvane]\nio_type = 0\ninput_filename = /nowhere\n")
        daemon = self.run_corvane("-d", "-f", capture, environment=settings)
        self.assertIn(b"seconds = 7\n", daemon.stdout)

    def test_the_baud_rate_is_taken_from_the_configuration(self) -> None:
        line = self.serial_line()
        self.corvane("-s", str(line.device),
                     environment=self.configured("[Corvane]\nbaud_rate = 38400\n"))
        line.wait_until_open()
        self.assertEqual(line.speed(), 38400)

    def test_an_unknown_io_type_ends_the_start(self) -> None:
        settings = self.configured("[Corvane]\nio_type = 9\n")
        daemon = self.bare_corvane("-p", environment=settings)
        self.assertEqual(daemon.status(), FAILURE)
        self.assertEqual(daemon.stderr, "Unrecognised I/O type. Exiting\n")


class Priority(Scenario):
    def test_without_the_right_to_raise_it_the_start_ends(self) -> None:
        without = ("prlimit", "--rtprio=0:0", "setpriv", "--bounding-set", "-sys_nice",
                   "--inh-caps", "-sys_nice")
        daemon = self.bare_corvane("-f", self.file("empty", b""), prefix=without)
        self.assertEqual(daemon.status(), FAILURE)
        self.assertEqual(daemon.stderr, "Unable to set process priority\n")

    def test_with_the_right_it_runs_round_robin_at_priority_49(self) -> None:
        if not real_time_is_possible():
            self.skipTest("this machine does not let us have a real-time priority")
        daemon = self.bare_corvane("-u", "none")
        daemon.wait_for_passes(1)
        self.assertEqual(os.sched_getscheduler(daemon.pid), os.SCHED_RR)
        self.assertEqual(os.sched_getparam(daemon.pid).sched_priority, REALTIME_PRIORITY)

    def test_with_p_the_priority_is_left_alone(self) -> None:
        daemon = self.corvane()
        daemon.wait_for_passes(1)
        self.assertEqual(os.sched_getscheduler(daemon.pid), os.SCHED_OTHER)
