"""corvanectl config: reading and changing the configuration database in its file."""

import os
import stat

from harness.corvanectl import DONE, REFUSED, USAGE, Operated, about

STORED = """\
# kept by hand
[Corvane]
baud_rate = 9600
odd = 1

[region:here]
sbas = waas
"""


class Database(Operated):
    def setUp(self) -> None:
        super().setUp()
        self.settings_file.write_text(STORED)

    def config(self, *arguments: str) -> str:
        return self.done("config", *arguments)


class Reading(Database):
    def test_get_prints_the_value_alone(self) -> None:
        self.assertEqual(self.config("get", "baud_rate"), "9600\n")
        self.assertEqual(self.config("get", "odd"), "1\n")
        self.assertEqual(self.config("get", "--section", "region:here", "sbas"), "waas\n")
        self.assertEqual(self.config("--section", "region:here", "get", "sbas"), "waas\n")

    def test_get_of_what_is_not_set_prints_what_it_is_then_and_says_so(self) -> None:
        for key, value in (("io_type", "3"), ("position_update", "0.05"), ("dynamics_type", "air"),
                           ("configuration_file", ""), ("timeb_update", "0.05"),
                           ("reference_format_real", "VARN1")):
            outcome = self.ctl("config", "get", key)
            self.assertEqual((outcome.status, outcome.out), (DONE, f"{value}\n"), key)
            self.assertIn("is not set", outcome.err)
        self.config("set", "position_update", "0.2")
        self.assertEqual(self.ctl("config", "get", "timeb_update").out, "0.2\n")

    def test_get_for_programs(self) -> None:
        path = str(self.settings_file)
        self.assertEqual(self.document("config", "get", "baud_rate"), {
            "path": path, "section": "Corvane", "key": "baud_rate", "value": "9600",
            "isSet": True})
        unset = self.ctl("--json", "config", "get", "io_type").document
        self.assertEqual((unset["value"], unset["isSet"]), ("3", False))

    def test_get_of_what_nobody_knows_fails_with_a_suggestion(self) -> None:
        self.assertIn("is baud_rate meant?", self.fails(REFUSED, "config", "get", "baudrate"))
        self.assertIn("--section localisation", self.fails(REFUSED, "config", "get", "region"))
        self.fails(REFUSED, "config", "get", "--section", "nowhere", "nothing")

    def test_list_prints_what_is_set(self) -> None:
        listed = "[Corvane]\nbaud_rate = 9600\nodd = 1    (nothing reads it)\n"
        here = "[region:here]\nsbas = waas\n"
        self.assertEqual(self.config("list"), f"{listed}\n{here}")
        self.assertEqual(self.config("list", "--section", "region:here"), here)

    def test_list_of_all_holds_every_key_that_the_daemon_is_documented_to_read(self) -> None:
        listed = self.document("config", "list", "--all")["settings"]
        keys = {(entry["section"], entry["key"]): entry for entry in listed}
        for key in ("special_logs", "psr_diff_source", "rtk_extra_safe", "ionosphere_mode",
                    "reference_format", "reference_format_real", "position_update",
                    "timeb_update", "dynamics_type", "gps_logging_enabled", "reference_position",
                    "glonass_corrections", "sbas_prn", "bandwidth_limit",
                    "receiver_supports_glonass", "force_glonass_state", "force_glonass_on",
                    "force_sbas_state", "force_sbas_on", "current_channel_configuration",
                    "receiver_is_615", "input_filename", "io_type", "configuration_file",
                    "breakout_mode", "baud_rate", "pdp_filter_reset", "serial_port_timeout",
                    "idle_delay_threshold"):
            entry = keys["Corvane", key]
            self.assertTrue(entry["meaning"] and entry["inForce"] and entry["kind"], key)
        for place in (("glide", "obstruction_lockout"), ("localisation", "region"),
                      ("platform", "rpc_listen"), ("region:*", "sbas"), ("region:here", "sbas")):
            self.assertIn(place, keys)
        self.assertEqual(keys["Corvane", "baud_rate"]["isSet"], True)
        self.assertEqual(keys["Corvane", "odd"]["isKnown"], False)
        self.assertIn("baud_rate = 9600\n", self.config("list", "--all"))
        self.assertIn("io_type = 3    (not set)\n", self.config("list", "--all"))

    def test_a_missing_file_is_an_empty_database(self) -> None:
        self.settings_file.unlink()
        self.assertIn("nothing is set", self.config("list"))
        self.assertEqual(self.document("config", "list")["settings"], [])
        self.assertFalse(self.settings_file.exists())

    def test_a_file_that_cannot_be_read_is_a_failure(self) -> None:
        folder = self.folder / "folder.conf"
        folder.mkdir()
        if os.geteuid() != 0:
            folder.chmod(0)
        loop = self.folder / "loop.conf"
        loop.symlink_to(loop)
        for arguments in (("list",), ("get", "baud_rate"), ("set", "baud_rate", "1"),
                          ("unset", "baud_rate")):
            self.assertIn("cannot be read", self.fails(REFUSED, "config", "--file", str(loop),
                                                       *arguments))
            self.assertIn(str(folder), self.fails(REFUSED, "config", "--file", str(folder),
                                                  *arguments))

    def test_another_file_is_taken_when_it_is_named(self) -> None:
        other = self.folder / "other.conf"
        other.write_text("[Corvane]\nbaud_rate = 19200\n")
        self.assertEqual(self.config("get", "baud_rate", "--file", str(other)), "19200\n")
        self.config("--file", str(other), "unset", "baud_rate")
        self.assertEqual(other.read_text(), "[Corvane]\n")
        self.assertEqual(self.settings_file.read_text(), STORED)


class Changing(Database):
    def test_set_changes_the_one_line_and_says_when_it_counts(self) -> None:
        self.assertEqual(self.config("set", "baud_rate", "115200"),
                         "[Corvane] baud_rate = 115200\nin force: when the daemon starts\n")
        self.assertEqual(self.settings_file.read_text(), STORED.replace("9600", "115200"))
        document = self.document("config", "set", "ionosphere_mode", "1")
        self.assertEqual((document["section"], document["key"], document["value"]),
                         ("Corvane", "ionosphere_mode", "1"))
        self.assertIn("region refresh", document["inForce"])

    def test_set_makes_a_file_with_its_folder(self) -> None:
        path = self.folder / "new" / "corvane.conf"
        self.config("--file", str(path), "set", "--section", "platform", "rpc_listen", "0.0.0.0")
        self.assertEqual(path.read_text(), "[platform]\nrpc_listen = 0.0.0.0\n")
        self.assertEqual(stat.S_IMODE(path.stat().st_mode), 0o644)

    def test_set_stores_switches_as_the_daemon_reads_them(self) -> None:
        for written, stored in (("on", "1"), ("no", "0"), ("True", "1"), ("0", "0")):
            self.config("set", "rtk_extra_safe", written)
            self.assertEqual(self.stored("rtk_extra_safe"), stored)

    def test_set_refuses_keys_that_nothing_reads(self) -> None:
        self.assertIn("is baud_rate meant?", self.fails(USAGE, "config", "set", "baudrate", "1"))
        self.assertIn("--force", self.fails(USAGE, "config", "set", "zebra", "1"))
        self.assertIn("--section localisation",
                      self.fails(USAGE, "config", "set", "region", "japan"))
        self.assertEqual(self.settings_file.read_text(), STORED)
        self.assertIn("nothing reads it", self.config("set", "--force", "zebra", "1"))
        self.assertEqual(self.stored("zebra"), "1")

    def test_set_refuses_values_of_another_kind(self) -> None:
        for key, value, kind in (("io_type", "4", "0 to 3"), ("baud_rate", "fast", "whole number"),
                                 ("position_update", "0", "0.001 or more"),
                                 ("special_logs", "maybe", "on or off"),
                                 ("reference_format", "RTCM4", "RTCM3"),
                                 ("reference_position", "47,8", "latitude,longitude,height"),
                                 ("sbas_prn", "-1", "0 to 158")):
            with about(key):
                self.assertIn(kind, self.fails(USAGE, "config", "set", key, value))
        self.fails(USAGE, "config", "set", "--section", "platform", "rpc_listen", "localhost")
        self.assertEqual(self.settings_file.read_text(), STORED)
        self.config("set", "--force", "reference_format", "RTCM4")
        self.assertEqual(self.stored("reference_format"), "RTCM4")

    def test_set_refuses_what_a_line_cannot_carry(self) -> None:
        for value in ("a\nb", " a", "a "):
            outcome = self.ctl("config", "set", "dynamics_type", value)
            self.assertEqual(outcome.status, REFUSED)
            self.assertIn("was not changed", outcome.err)
        self.assertEqual(self.settings_file.read_text(), STORED)

    def test_unset_removes_the_line(self) -> None:
        self.assertIn("no longer set", self.config("unset", "baud_rate"))
        self.assertEqual(self.settings_file.read_text(), STORED.replace("baud_rate = 9600\n", ""))
        self.assertEqual(self.config("unset", "baud_rate"), "[Corvane] baud_rate was not set\n")
        self.assertEqual(self.document("config", "unset", "odd")["wasSet"], True)
        self.assertEqual(self.document("config", "unset", "odd")["wasSet"], False)

    def test_what_cannot_be_written_is_told_as_a_failure(self) -> None:
        path = "/proc/version/corvane.conf"
        outcome = self.ctl("--json", "config", "--file", path, "set", "baud_rate", "1")
        self.assertEqual(outcome.status, REFUSED, outcome)
        self.assertEqual(outcome.document["error"]["message"], f"{path} was not changed")
        self.assertIn("sudo", outcome.err)

    def test_values_may_hold_what_the_command_line_gives_meaning(self) -> None:
        for value in ("[a,b]", "a = b", "", "{}"):
            self.config("set", "input_filename", value)
            self.assertEqual(self.config("get", "input_filename"), f"{value}\n")
        self.config("set", "input_filename", "--", "--x")
        self.assertEqual(self.stored("input_filename"), "--x")


class WithTheDaemon(Operated):
    def test_a_change_is_noticed_with_the_next_setting(self) -> None:
        receiver, _ = self.operated()
        self.done("config", "set", "position_update", "0.5")
        before = len(receiver.commands())
        self.done("sbas-prn", "131")
        self.assert_configured_anew(receiver, before, "log pdpxyzb ontime 0.5\r\n")
        self.assertEqual((self.stored("position_update"), self.stored("sbas_prn")),
                         ("0.5", "131"))

    def test_a_removal_is_noticed_as_well(self) -> None:
        receiver, _ = self.operated("dynamics_type = land\n")
        self.assertIn("dynamics land\r\n", receiver.commands())
        self.done("config", "unset", "dynamics_type")
        before = len(receiver.commands())
        self.done("region", "refresh")
        self.assert_configured_anew(receiver, before, "dynamics air\r\n")

    def test_a_change_of_what_is_read_at_the_start_waits_for_it(self) -> None:
        _, daemon = self.operated("force_sbas_on = 0\n")
        self.done("config", "set", "force_sbas_on", "1")
        self.done("region", "refresh")
        self.assertEqual(self.document("sbas"), {"sbas": False})
        settings = self.settings_file.read_text().removeprefix("[Corvane]\n")
        daemon.end()
        self.operated(settings)
        self.assertEqual(self.document("sbas"), {"sbas": True})
