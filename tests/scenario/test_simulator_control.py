"""What other programs have the daemon do to the simulated receiver."""

from harness.firmware import firmware
from harness.rpc_client import RPCClient
from harness.simulated import Simulated
from harness.waiting import wait_until

POSITION = "NovatelPositionManager"
VERSION = "OEM060400RN0000"
DONE, WELL = 1, 1


class Settings(Simulated):
    def test_a_change_reaches_it_and_is_accepted(self) -> None:
        simulator, _, _ = self.at_work(commands="")
        self.assertEqual(self.client().call("novatel_SetIonosphereMode", 2), [1])
        simulator.wait_for_line("^com1 < setionotype grid$")
        wait_until("as many answers as commands",
                   lambda: len(simulator.answers()) == len(simulator.heard()))
        self.assertEqual(set(simulator.answers()), {"OK"})

    def test_a_sentence_that_is_asked_for_comes(self) -> None:
        _, collector, _ = self.at_work(commands="")  # has its sentences on another port
        self.assertEqual(collector.messages("nmea.sentence"), [])
        self.assertEqual(self.client().call("RequestNMEA", "GPGST", 200), [1])
        wait_until("five of them", lambda: len([
            each for each in collector.messages("nmea.sentence")
            if each["sentence"].startswith("$GPGST,")]) >= 5)

    def test_a_reset_of_the_rtk_filter_shows_as_a_float_solution(self) -> None:
        _, collector, _ = self.at_work("--speed", "3")
        collector.wait_for_status(POSITION, "rtkxyz_quality_flag", "3", 15.0)
        self.client().call("novatel_ResetRTKFilter")
        collector.wait_for_status(POSITION, "rtkxyz_quality_flag", "2")
        collector.wait_for_status(POSITION, "rtkxyz_quality_flag", "3", 15.0)

    def test_a_factory_reset_leaves_it_silent_and_without_logs(self) -> None:
        simulator, _, daemon = self.at_work()
        elsewhere = self.terminal(simulator, "usb1")
        elsewhere.ask("", b"[USB1]")
        elsewhere.read = b""
        self.assertEqual(self.client().call("novatel_SendFReset"), [1])
        simulator.wait_for_line("^com1 < FRESET STANDARD$")
        daemon.end()  # before it sets the receiver up anew
        elsewhere.wait_for(b"[USB1]", 6.0)
        terminal = self.terminal(simulator, "com1", 115200)
        self.assertEqual(terminal.silence(0.5), b"")
        answer = terminal.ask("log loglist", b"\r\n[COM1]<LOGLIST")
        terminal.wait_for(b"<     0\r\n")
        self.assertTrue(answer.startswith(b"\r\n<OK\r\n[COM1]<LOGLIST COM1 "))


class Firmware(Simulated):
    def progress(self, client: RPCClient) -> list[int]:
        """Whether it goes well, whether it is over, and the per cent of the file sent."""
        return client.call("novatel_GetFirmwareUpgradeStatus")

    def test_a_load_goes_to_its_end_and_runs_after_the_reset(self) -> None:
        simulator, collector, _ = self.at_work()
        content = firmware(VERSION, 100)
        client = self.client()
        path = self.file("firmware", content)
        self.assertEqual(client.call("novatel_StartFirmwareUpgrade", path), [1])
        wait_until("its end", lambda: self.progress(client) == [WELL, DONE, 100], 20.0,
                   lambda: self.progress(client))
        told = collector.status(POSITION, "softload_status").split(",")
        self.assertEqual(told[:2], [str(len(content))] * 2)
        simulator.wait_for_line("^com1 < FRESET$")
        terminal = self.terminal(simulator, "usb1")
        terminal.wait_for(b"[USB1]", 6.0)
        self.assertIn(f'"{VERSION}"'.encode(), terminal.ask("log versiona", b"*"))

    def assert_fails(self, error: str) -> None:
        simulator, _, _ = self.at_work("--speed", "3", "--firmware-error", error)
        client = self.client()
        client.call("novatel_StartFirmwareUpgrade", self.file("firmware", firmware(VERSION, 40)))
        wait_until("its end", lambda: self.progress(client)[:2] == [0, DONE], 10.0,
                   lambda: self.progress(client))
        self.assertNotIn("FRESET", simulator.heard())
        terminal = self.terminal(simulator, "usb1")
        self.assertIn(b'"3.907"', terminal.ask("log versiona", b"*"))

    def test_one_that_fails_with_its_data_is_over_and_changes_nothing(self) -> None:
        self.assert_fails("BAD_PLATFORM")

    def test_one_that_fails_at_its_check_is_over_and_changes_nothing(self) -> None:
        self.assert_fails("BAD_IMAGE_CRC")
