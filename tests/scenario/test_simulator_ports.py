"""The simulated receiver, talked to by hand over its ports."""

import os
import signal
import subprocess
import time

from harness.scenario import Scenario
from harness.simulator import PORTS, SYNC, Simulator, Terminal, simulator_program
from harness.waiting import wait_until

OK = b"\r\n<OK\r\n[%s]"
COM1_OK = OK % b"COM1"


class Simulated(Scenario):
    def simulator(self, *options: str, **settings) -> Simulator:
        simulator = Simulator(self.folder / "simulator", *options, **settings)
        self.addCleanup(simulator.kill)
        return simulator

    def terminal(self, device: str, speed: int | None = None) -> Terminal:
        terminal = Terminal(device, speed)
        self.addCleanup(terminal.close)
        return terminal

    def at_com1(self, *options: str) -> Terminal:
        return self.terminal(self.simulator(*options).device("com1"), 9600)


class Names(Simulated):
    def test_every_port_has_a_link_to_a_terminal_of_its_own(self) -> None:
        simulator = self.simulator()
        devices = {os.path.realpath(simulator.device(port)) for port in PORTS}
        self.assertEqual(len(devices), 6)
        self.assertTrue(all(device.startswith("/dev/pts/") for device in devices))

    def test_only_the_ports_that_are_asked_for_have_one(self) -> None:
        simulator = self.simulator("--ports", "com1,usb2", ports=("com1", "usb2"))
        self.assertEqual(sorted(os.listdir(simulator.ports)), ["com1", "usb2"])

    def test_a_signal_ends_it_well_and_takes_the_links_away(self) -> None:
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            simulator = self.simulator()
            self.assertEqual(simulator.end(number), 0, number)
            self.assertFalse(simulator.ports.exists(), number)

    def test_links_that_a_killed_one_left_behind_are_replaced(self) -> None:
        first = self.simulator()
        first.kill()
        self.assertTrue(os.path.islink(first.device("com1")))
        second = self.simulator()
        self.terminal(second.device("usb1")).ask("", b"[USB1]")

    def test_a_second_one_in_the_same_folder_is_refused(self) -> None:
        first = self.simulator()
        second = Simulator(self.folder / "simulator")
        self.addCleanup(second.kill)
        self.assertEqual(second.status(), 1)
        self.assertIn("another simulator is at work there", second.stderr)
        self.terminal(first.device("usb1")).ask("", b"[USB1]")

    def test_something_else_of_that_name_is_not_touched(self) -> None:
        folder = self.folder / "ports"
        folder.mkdir()
        (folder / "com2").write_text("mine")
        run = subprocess.run([simulator_program(), "--dir", str(folder)], check=False,
                             capture_output=True, text=True, timeout=10)
        self.assertEqual(run.returncode, 1)
        self.assertIn("com2: there is something else of that name", run.stderr)
        self.assertEqual((folder / "com2").read_text(), "mine")
        self.assertEqual(os.listdir(folder), ["com2"])

    def test_a_run_with_a_duration_ends_by_itself(self) -> None:
        started = time.monotonic()
        simulator = self.simulator("--duration", "2", "--speed", "4")
        self.assertEqual(simulator.status(3.0), 0)
        self.assertGreater(time.monotonic() - started, 0.4)


class Prompts(Simulated):
    def test_an_answer_is_an_empty_line_the_word_and_the_prompt(self) -> None:
        terminal = self.at_com1()
        self.assertEqual(terminal.ask("unlogall", COM1_OK), COM1_OK)
        self.assertEqual(terminal.ask("log bestpo", b"[COM1]"),
                         b"\r\n<ERROR:Requested log does not exist\r\n[COM1]")

    def test_a_binary_log_follows_the_prompt_directly(self) -> None:
        terminal = self.at_com1()
        answer = terminal.ask("LOG BESTPOSB", SYNC)
        self.assertTrue(answer.startswith(COM1_OK + SYNC))

    def test_the_prompt_is_repeated_after_an_abbreviated_log(self) -> None:
        answer = self.at_com1().ask("log version", b']"10:22:20"\r\n[COM1]'[1:])
        lines = answer.split(b"\r\n")
        self.assertEqual(lines[:2], [b"", b"<OK"])
        self.assertTrue(lines[2].startswith(b"[COM1]<VERSION COM1 0 65.0 FINESTEERING "))
        self.assertTrue(lines[3].startswith(b"<     1 GPSCARD "))

    def test_each_port_has_a_prompt_of_its_own(self) -> None:
        simulator = self.simulator()
        for port in ("usb1", "usb2", "usb3"):
            self.terminal(simulator.device(port)).ask("", f"[{port.upper()}]".encode())

    def test_none_comes_on_a_port_without_responses(self) -> None:
        simulator = self.simulator()
        terminal = self.terminal(simulator.device("usb1"))
        terminal.ask("interfacemode novatel novatel off", OK % b"USB1")
        answer = terminal.ask("log versiona", b"\r\n")
        self.assertTrue(answer.startswith(b"#VERSIONA,USB1,"))

    def test_a_log_for_another_port_goes_out_there(self) -> None:
        simulator = self.simulator()
        other = self.terminal(simulator.device("usb2"))
        terminal = self.terminal(simulator.device("com1"), 9600)
        self.assertEqual(terminal.ask("log usb2 versiona", COM1_OK), COM1_OK)
        other.wait_for(b"\r\n")
        self.assertTrue(other.read.startswith(b"#VERSIONA,USB2,"))


class Speeds(Simulated):
    def test_the_answer_to_com_still_comes_at_the_old_speed(self) -> None:
        terminal = self.at_com1()
        self.assertEqual(terminal.ask("com thisport 115200", COM1_OK), COM1_OK)
        self.assertEqual(terminal.silence(0.1), b"")
        terminal.set_speed(115200)
        self.assertEqual(terminal.ask("unlogall", COM1_OK), COM1_OK)

    def test_what_is_typed_at_another_speed_is_not_understood(self) -> None:
        terminal = self.at_com1()
        terminal.set_speed(19200)
        terminal.type("unlogall\r\n")
        self.assertEqual(terminal.silence(0.3), b"")
        terminal.set_speed(9600)
        self.assertEqual(terminal.ask("unlogall", COM1_OK), COM1_OK)

    def test_what_is_read_at_another_speed_is_noise(self) -> None:
        terminal = self.at_com1()
        terminal.ask("log gpzda ontime 0.2", b"$GPZDA")
        terminal.set_speed(19200)
        noise = terminal.silence(1.0)
        self.assertNotIn(b"ZDA", noise)
        self.assertGreater(len(noise), 3 * 2 * 30)  # twice the bytes of three sentences
        terminal.set_speed(9600)
        terminal.silence(0.1)
        terminal.wait_for(b"$GPZDA")

    def test_usb_takes_no_notice_of_speeds(self) -> None:
        simulator = self.simulator()
        terminal = self.terminal(simulator.device("usb1"), 19200)
        terminal.ask("unlogall", OK % b"USB1")
        self.assertIn(b"ERROR:COM port not supported", terminal.ask("com 9600", b"[USB1]"))


class Resets(Simulated):
    def test_a_reset_answers_and_comes_back_as_it_left_the_factory(self) -> None:
        terminal = self.at_com1("--speed", "4")
        terminal.ask("com thisport 57600", COM1_OK)
        terminal.set_speed(57600)
        terminal.ask("log gpzda ontime 1", b"$GPZDA")
        terminal.ask("reset", COM1_OK)
        started = time.monotonic()
        terminal.set_speed(9600)
        terminal.read = b""
        terminal.wait_for(b"[COM1]")
        self.assertGreater(time.monotonic() - started, 0.5)  # three quarters of a second
        self.assertEqual(terminal.silence(0.6), b"")  # more than two seconds without a log

    def test_what_was_saved_survives_it_but_no_factory_reset(self) -> None:
        terminal = self.at_com1("--speed", "8")
        terminal.ask("log gpzda ontime 1", b"$GPZDA")
        terminal.ask("saveconfig", COM1_OK)
        terminal.ask("reset", COM1_OK)
        terminal.read = b""
        terminal.wait_for(b"[COM1]")
        terminal.wait_for(b"$GPZDA")
        terminal.ask("freset", COM1_OK)
        terminal.read = b""
        terminal.wait_for(b"\r\n[COM1]")
        self.assertNotIn(b"$GPZDA", terminal.silence(0.5))

    def test_another_channel_configuration_starts_it_anew(self) -> None:
        terminal = self.at_com1("--speed", "8")
        self.assertEqual(terminal.ask("selectchanconfig 1", COM1_OK), COM1_OK)
        terminal.ask("selectchanconfig 2", COM1_OK)
        terminal.read = b""
        terminal.wait_for(b"\r\n[COM1]")
        answer = terminal.ask("selectchanconfig 7", b"[COM1]")
        self.assertIn(b"ERROR:Parameter 1 is out of range", answer)


class Modes(Simulated):
    def private(self, *options: str) -> Terminal:
        terminal = self.at_com1(*options)
        terminal.ask("interfacemode zq2 zq2", COM1_OK)
        terminal.type("unlogall\r\n")
        self.assertEqual(terminal.silence(0.3), b"")
        return terminal

    def test_a_port_in_another_mode_understands_no_commands(self) -> None:
        self.private()

    def test_two_escapes_with_silences_bring_it_back(self) -> None:
        terminal = self.private("--speed", "4")  # a second of silence is a quarter of one
        time.sleep(0.3)
        terminal.type("+++")
        time.sleep(0.3)
        terminal.type("+++\r\n")
        terminal.wait_for(b"[COM1]")
        self.assertEqual(terminal.ask("unlogall", COM1_OK), COM1_OK)

    def test_escapes_without_silences_do_not(self) -> None:
        terminal = self.private()
        time.sleep(1.1)
        terminal.type("+++")
        terminal.type("+++\r\n")
        self.assertEqual(terminal.silence(0.2), b"")
        terminal.type("unlogall\r\n")
        self.assertEqual(terminal.silence(0.2), b"")

    def test_where_commands_are_understood_an_escape_is_passed_over(self) -> None:
        terminal = self.at_com1("--speed", "4")
        terminal.type("+++")
        time.sleep(0.3)
        terminal.type("+++\r\n")
        self.assertEqual(terminal.silence(0.3), b"")
        self.assertEqual(terminal.ask("unlogall", COM1_OK), COM1_OK)


class Readers(Simulated):
    def test_one_that_does_not_read_loses_whole_logs_and_holds_nothing_up(self) -> None:
        simulator = self.simulator("--speed", "20")
        slow = self.terminal(simulator.device("usb1"))
        other = self.terminal(simulator.device("usb2"))
        slow.type("log rangeb ontime 0.05\r\n")
        simulator.wait_for_line(r"^usb1 has lost \d+ logs", 10.0)
        other.ask("unlogall usb1", OK % b"USB2")
        text = slow.take()[len(OK % b"USB1"):]
        self.assert_whole_logs(text)

    def assert_whole_logs(self, text: bytes) -> None:
        """One binary log behind the other, and nothing between them."""
        count = 0
        while text:
            self.assertEqual(text[:3], SYNC, f"after {count} logs")
            text = text[28 + int.from_bytes(text[8:10], "little") + 4:]
            count += 1
        self.assertGreater(count, 5)

    def test_nothing_is_kept_for_one_who_comes_later(self) -> None:
        simulator = self.simulator()
        terminal = self.terminal(simulator.device("usb1"))
        terminal.ask("log gpzda ontime 0.2", b"$GPZDA")
        terminal.close()
        time.sleep(1.0)
        later = self.terminal(simulator.device("usb1"))
        first = wait_until("a sentence", later.take)
        self.assertLess(first.count(b"$GPZDA"), 3)

    def test_full_logs_at_20_hz_take_little_of_the_processor(self) -> None:
        simulator = self.simulator()
        terminal = self.terminal(simulator.device("usb1"))
        for log in ("pdpxyzb", "pdpstatb", "rtkxyzb", "timeb", "rangeb", "trackstatb"):
            terminal.ask(f"log {log} ontime 0.05", OK % b"USB1")
        before, start = simulator.processor_seconds(), time.monotonic()
        while time.monotonic() - start < 2.0:
            terminal.take()
            time.sleep(0.02)
        share = (simulator.processor_seconds() - before) / (time.monotonic() - start)
        self.assertLess(share, 0.25)
