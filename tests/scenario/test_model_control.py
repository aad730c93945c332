"""The decoder's account of receiver control: the start, the channels, the firmware status."""

import json

from decoder.run import offline_run
from harness import logs
from harness.sentences import ascii_log, nmea
from test_model import Model

CONSTELLATION, MAIN = "NovatelConstellationManager", "NovatelPortHandler"


class Start(Model):
    """Of a run over nothing."""

    def test_names_leave_first_then_lines_then_state_in_the_order_of_their_making(self) -> None:
        told = [line.partition(" ") for line in offline_run(b"").published[:13]]
        self.assertEqual([(method, *json.loads(fields)[:1]) for method, _, fields in told], [
            *(("logger.register", name) for name in (
                "NovatelPositionManager", "NovatelReceiverStatus", CONSTELLATION,
                "NovatelPortHandler2", MAIN)),
            ("logger.event", CONSTELLATION), ("logger.event", CONSTELLATION),
            ("position.sky", "CPositionAPI"), ("logger.status", CONSTELLATION),
            ("position.ecef", "CPositionAPI"), ("logger.status", "NovatelPortHandler2"),
            ("logger.status", MAIN), ("logger.status", MAIN)])

    def test_without_glonass_or_sbas_the_first_configuration_is_desired(self) -> None:
        told = offline_run(b"").published
        self.assertEqual([json.loads(told[at].partition(" ")[2])[-1] for at in (5, 6, 8, 12)], [
            "CConstellationManager::CConstellationManager: loaded last sent channel config as 0",
            "CConstellationManager::UpdateChannelConfiguration(1) 1", "1", "1"])

    def test_61_commands_leave_in_the_order_of_the_table(self) -> None:
        """By their rows in it, of which the second and 60 to 82 need settings."""
        rows = {1: "unlogall thisport", 3: "sbascontrol disable", 4: "psrdiffsource none",
                10: "rtkcommand reset", 14: "interfacemode usb3 CMR none",
                15: "com com2 460800 n 8 1 n off on", 22: "pdpfilter enable",
                27: "log rtkxyzb ontime 0.05", 28: "log usb2 bestposb ontime 1",
                55: "log usb2 timeb ontime 0.05", 56: "log usb2 gpgsv ontime 1",
                59: "log usb2 gpgst ontime 1", 83: "LOG CHANCONFIGLISTB ONCE",
                85: "LOG RXCONFIGB ONCE"}
        lines = offline_run(b"").published[13:]
        self.assertEqual(len(lines), 61)
        for row, command in rows.items():
            at = row - 1 - (row > 2) - 23 * (row > 82)
            self.assertEqual(json.loads(lines[at].partition(" ")[2]), [
                MAIN, "warning", f"Sending buffered command: {command}\r\n"], row)


class Constellation(Model):
    NO_GLONASS = ["CConstellationManager", 79188, 12]
    ANSWER = "W CConstellationManager::DispatchNovatelLog: updating channel config"

    def update(self, desired: int) -> str:
        return f"W CConstellationManager::UpdateChannelConfiguration(0) {desired}"

    def change(self, current: int, last: int) -> str:
        return ("W CConstellationManager::DispatchNovatelLog_CHANCONFIGLIST: currentChannel: "
                f"{current} m_lastSetChannelConfiguration: {last}")

    def desired(self, content: bytes) -> list[str]:
        return self.values(content, "desired_channel_configuration")

    def diagnostics(self, content: bytes) -> list[str]:
        return [method for method, wanted in (("diagnostics.raise", [*self.NO_GLONASS, 1]),
                                              ("diagnostics.clear", self.NO_GLONASS))
                for each in self.told(content, method) if each == wanted]

    def test_a_model_with_a_g_has_glonass(self) -> None:
        cases = {b"L12LGRV": "4", b"G": "4", b"L12LRVA": "1", b"g": "1", b"": "1",
                 b"fifteen letters": "1", b"fifteen letterG": "4"}
        for model, wanted in cases.items():
            content = logs.models((1, model))
            self.assertEqual(self.desired(content), [wanted], model)
            self.assertEqual(self.diagnostics(content),
                             ["diagnostics.raise" if wanted == "1" else "diagnostics.clear"])
            self.assertEqual(self.events(content, CONSTELLATION),
                             [self.ANSWER, self.update(int(wanted))])

    def test_only_receiver_cards_count_and_the_last_of_them_decides(self) -> None:
        self.assertEqual(self.desired(logs.models((1, b"L1"), (1, b"L1G"), (3, b"L1"))), ["4"])
        self.assertEqual(self.desired(logs.models((1, b"L1G"), (1, b"L1"), (0, b"G"))), ["1"])

    def test_what_is_known_of_the_model_stays(self) -> None:
        content = logs.models((1, b"G")) + logs.models((2, b"L1")) + logs.models()
        self.assertEqual(self.desired(content), ["4", "4", "4"])
        self.assertEqual(self.diagnostics(logs.models()), ["diagnostics.raise"])

    def test_before_a_version_the_diagnostic_is_left_alone(self) -> None:
        self.assertEqual(self.diagnostics(logs.chanconfiglist(0)), [])

    def test_a_change_of_the_set_in_use_updates_twice(self) -> None:
        content = logs.chanconfiglist(0) + logs.chanconfiglist(2) * 2 + logs.chanconfiglist(
            0xFFFFFFFF)
        self.assertEqual(self.events(content, CONSTELLATION), [
            self.change(0, 0), self.ANSWER, self.update(1),
            self.change(2, 0), self.update(1), self.ANSWER, self.update(1),
            self.change(2, 2), self.ANSWER, self.update(1),
            self.change(-1, 2), self.update(1), self.ANSWER, self.update(1)])
        self.assertEqual(self.values(content, "current_channel_configuration"),
                         ["0", "2", "2", "-1"])

    def test_sets_are_numbered_from_1_and_shown_by_their_signals(self) -> None:
        content = logs.chanconfiglist(1, ((14, 0),), ((8, 0), (6, 10)), (), (
            (120, 9), (0xFFFFFFFF, 26), (0, 0xFFFFFFFF)))
        told = [fields[2:] for fields in self.told(content, "logger.status")
                if fields[0] == CONSTELLATION]
        self.assertEqual(told, [
            ["desired_channel_configuration", "1"], ["current_channel_configuration", "1"],
            ["number_channel_configs_available", "4"], ["channel_config_1", "14 GPSL1, "],
            ["channel_config_2", " 8 GPSL1,  6 GLOL1, "], ["channel_config_3", ""],
            ["channel_config_4", "120 UNKNOWN 9, -1 UNKNOWN 26,  0 UNKNOWN 4294967295, "],
            ["desired_channel_configuration", "1"]])


class Softload(Model):
    ASKED = "E SoftloadManager::updateSoftloadStatus triggering reset"
    ENDED = "E SoftloadManager::EndUpgrade: upgrade complete"
    RESET = ["E SoftloadManager sent command <FRESET>", ENDED]
    OTHER = ascii_log("BESTPOSA", "SOL")

    def passes(self, *contents: bytes | str) -> bytes:
        """Each is read in a pass of its own; a text is a status."""
        return b"".join((ascii_log("SOFTLOADSTATUSA", each) if isinstance(each, str) else each)
                        .ljust(1024, b"\n") for each in contents)

    def told_of(self, value: int) -> list[str]:
        return [f"E SoftloadManager::DispatchLog status is {value}",
                f"E SoftloadManager::updateSoftloadStatus set status to {value}"]

    def lines(self, *contents: bytes | str) -> list[str]:
        return self.events(self.passes(*contents), "NovatelPositionManager")

    def reported(self, *contents: bytes | str) -> list[str]:
        return self.events(self.passes(*contents), MAIN)

    def test_a_final_status_ends_at_once(self) -> None:
        for text, value in (("RESET_ERROR", 13), ("BAD_IMAGE_CRC", 22), ("NO_PLATFORM", 26)):
            self.assertEqual(self.lines(text, b""), [
                *self.told_of(value), f"E Ending upgrade because status is {value}", self.ENDED])
            self.assertEqual(self.reported(text, self.OTHER), [])

    def test_what_was_written_asks_for_a_reset_in_the_next_pass(self) -> None:
        for text, value in (("WROTE_FLASH", 6), ("COMPLETE", 12)):
            wanted = [*self.told_of(value), self.ASKED, *self.RESET]
            self.assertEqual(self.lines(text), wanted)
            self.assertEqual(self.lines(text, b"", b""), wanted)

    def test_a_receiver_that_waits_for_data_is_told_of_in_every_pass(self) -> None:
        for text, value in (("READY_FOR_SETUP", 2), ("READY_FOR_DATA", 3)):
            content = self.passes(text, b"", b"")
            self.assertEqual(self.values(content, "softload_status"), [f"0,0,{value}"] * 3)
        content = self.passes("READY_FOR_DATA", "DATA_VERIFIED", b"")
        self.assertEqual(self.values(content, "softload_status"), ["0,0,3"])

    def test_an_unknown_status_is_named_and_goes_on(self) -> None:
        first, second = self.told_of(-1)
        named = 'E SoftloadManager: the receiver reports the unknown status "{}"'
        for text, shown in (("WROTE_AUTHCODE", "WROTE_AUTHCODE"), ("complete", "complete"),
                            ("", ""), ("COMPLETE*", "COMPLETE*"), (" COMPLETE", " COMPLETE")):
            self.assertEqual(self.lines(text, b""), [first, named.format(shown), second])
        self.assertEqual(len(self.reported("odd", self.OTHER)), 1)

    def test_text_is_reported_in_passes_that_begin_in_an_upgrade(self) -> None:
        line = f"E sentence data during upgrade: {self.OTHER[:-2].decode()}"
        self.assertEqual(self.reported("NOT_STARTED", self.OTHER, nmea("GPZDA"), self.OTHER),
                         [line, line])
        self.assertEqual(self.reported(ascii_log("SOFTLOADSTATUSA", "COMPLETE") + self.OTHER), [])
        self.assertEqual(self.reported("COMPLETE", self.OTHER, self.OTHER), [line])

    def test_a_reset_that_a_final_status_overtook_waits_for_the_next_upgrade(self) -> None:
        overtaken = b"".join(ascii_log("SOFTLOADSTATUSA", each)
                             for each in ("WROTE_FLASH", "BAD_MODULE"))
        ended = [*self.told_of(6), self.ASKED, *self.told_of(16),
                 "E Ending upgrade because status is 16", self.ENDED]
        self.assertEqual(self.lines(overtaken, b""), ended)
        self.assertEqual(self.lines(overtaken, b"", "NOT_STARTED", b""),
                         [*ended, *self.told_of(1), *self.RESET])

    def test_its_lines_come_before_the_data_line_of_the_record(self) -> None:
        begun = len(offline_run(b"").published)
        told = offline_run(self.passes("NOT_STARTED")).published[begun:]
        self.assertIn("set status to 1", told[-4])
        self.assertIn('"QRS_1235"', told[-3])
        self.assertIn("checksum_stats", told[-2])
