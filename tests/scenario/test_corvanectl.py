"""corvanectl's settings, looks and actions: what is shown, stored, and sent to the receiver."""

import math
import socket

from harness import logs
from harness.corvanectl import DONE, LAST_COMMAND, REFUSED, USAGE, Operated, about
from harness.waiting import wait_until

WGS84_A, WGS84_F = 6378137.0, 1 / 298.257223563
CARD = 1
GPS_L1, LBAND = 0, 9


def cartesian(latitude: float, longitude: float, height: float) -> tuple[float, float, float]:
    """Degrees and metres to ECEF, by the textbook."""
    phi, lam = math.radians(latitude), math.radians(longitude)
    e2 = WGS84_F * (2 - WGS84_F)
    normal = WGS84_A / math.sqrt(1 - e2 * math.sin(phi) ** 2)
    return ((normal + height) * math.cos(phi) * math.cos(lam),
            (normal + height) * math.cos(phi) * math.sin(lam),
            (normal * (1 - e2) + height) * math.sin(phi))


class Switches(Operated):
    def assert_switch(self, command: str, label: str, key: str, before: bool) -> None:
        """Shown, changed and changed back, for people and for programs."""
        words = {True: "on", False: "off"}
        self.assertEqual(self.done(command), f"{label}: {words[before]}\n")
        self.assertEqual(self.done(command, words[not before]), f"{label}: {words[not before]}\n")
        self.assertEqual(self.stored(key), str(int(not before)))
        self.assertEqual(self.document(command), {command: not before})
        self.assertEqual(self.document(command, words[before]), {command: before})
        self.assertEqual(self.stored(key), str(int(before)))

    def test_sbas_is_forced_and_the_receiver_configured_anew(self) -> None:
        receiver, _ = self.operated()
        before = len(receiver.commands())
        self.assertEqual(self.done("sbas", "on"), "SBAS: on\n")
        self.assert_configured_anew(receiver, before)
        self.assertEqual((self.stored("force_sbas_state"), self.stored("force_sbas_on")),
                         ("1", "1"))
        self.done("sbas", "off")
        self.assert_switch("sbas", "SBAS", "force_sbas_on", False)

    def test_glonass_corrections_are_stored_and_the_receiver_is_left_alone(self) -> None:
        receiver, daemon = self.operated()
        before = receiver.commands()
        self.assert_switch("glonass-corrections", "GLONASS corrections", "glonass_corrections",
                           True)
        daemon.wait_for_passes(3)
        self.assertEqual(receiver.commands(), before)

    def test_gps_logging_asks_for_more_logs(self) -> None:
        receiver, _ = self.operated()
        before = len(receiver.commands())
        self.assertNotIn("LOG RAWEPHEMB ONCHANGED\r\n", receiver.commands())
        self.assertEqual(self.done("gps-logging", "on"), "GPS logging: on\n")
        self.assert_configured_anew(receiver, before, "LOG RAWEPHEMB ONCHANGED\r\n")
        self.done("gps-logging", "off")
        self.assert_switch("gps-logging", "GPS logging", "gps_logging_enabled", False)

    def test_other_words_are_wrong_usage(self) -> None:
        for command in ("sbas", "glonass-corrections", "gps-logging"):
            self.assertIn('"maybe" is neither on nor off', self.fails(USAGE, command, "maybe"))


class Choices(Operated):
    def test_sbas_prn(self) -> None:
        receiver, _ = self.operated()
        self.assertEqual(self.done("sbas-prn"), "SBAS PRN: 0 (none in particular)\n")
        before = len(receiver.commands())
        self.assertEqual(self.done("sbas-prn", "131"), "SBAS PRN: 131\n")
        self.assert_configured_anew(receiver, before)
        self.assertEqual(self.stored("sbas_prn"), "131")
        self.assertEqual(self.document("sbas-prn", "0"), {"sbas-prn": 0})
        for wrong in ("119", "159", "-1", "x", "120.5", ""):
            self.assertIn("is no SBAS satellite", self.fails(USAGE, "sbas-prn", wrong))
        self.assertEqual(self.stored("sbas_prn"), "0")

    def test_reference_format_in_any_case(self) -> None:
        receiver, _ = self.operated()
        self.assertEqual(self.done("reference-format"), "reference format: VARN1\n")
        before = len(receiver.commands())
        self.assertEqual(self.done("reference-format", "rtcm3"), "reference format: RTCM3\n")
        self.assert_configured_anew(receiver, before, "interfacemode usb3 RTCMV3 none\r\n")
        self.assertEqual(self.stored("reference_format_real"), "RTCM3")
        for name in ("VARN1", "CMR", "RTCM2", "RTCM3"):
            self.assertEqual(self.document("reference-format", name), {"reference-format": name})
        self.assertIn("RTCM9", self.fails(USAGE, "reference-format", "RTCM9"))
        self.assertEqual(self.document("reference-format"), {"reference-format": "RTCM3"})

    def test_ionosphere_by_name_and_by_number(self) -> None:
        receiver, _ = self.operated()
        self.assertEqual(self.done("ionosphere"), "ionosphere: auto (0)\n")
        before = len(receiver.commands())
        self.assertEqual(self.done("ionosphere", "klobuchar"), "ionosphere: klobuchar (1)\n")
        self.assert_configured_anew(receiver, before, "setionotype klobuchar\r\n")
        self.assertEqual(self.stored("ionosphere_mode"), "1")
        for argument, mode, name in (("grid", 2, "grid"), ("3", 3, "auto"), ("auto", 0, "auto"),
                                     ("2", 2, "grid")):
            self.assertEqual(self.document("ionosphere", argument),
                             {"ionosphere": {"mode": mode, "name": name}})
        for wrong in ("4", "-1", "sun", "1x"):
            self.fails(USAGE, "ionosphere", wrong)
        self.assertEqual(self.stored("ionosphere_mode"), "2")

    def test_bandwidth_is_told_to_be_ignored(self) -> None:
        receiver, daemon = self.operated()
        before = receiver.commands()
        self.assertIn("accepted and ignored", self.done("bandwidth", "2400"))
        self.assertEqual(self.document("bandwidth", "2400"), {"bandwidth": 2400, "ignored": True})
        for wrong in ("", "-4", "2.5", "many"):
            self.fails(USAGE, "bandwidth", wrong)
        daemon.wait_for_passes(3)
        self.assertEqual(receiver.commands(), before)
        self.assertIsNone(self.stored("bandwidth_limit"))


class ReferencePosition(Operated):
    PLACE = (47.123456789, -8.56789, 431.25)

    def assert_shown(self, document: dict, latitude: float, longitude: float,
                     height: float) -> None:
        place = document["reference-position"]
        self.assertAlmostEqual(place["geodetic"]["latitude"], latitude, delta=1e-9)
        self.assertAlmostEqual(place["geodetic"]["longitude"], longitude, delta=1e-9)
        self.assertAlmostEqual(place["geodetic"]["height"], height, delta=0.001)
        for name, value in zip("xyz", cartesian(latitude, longitude, height)):
            self.assertAlmostEqual(place["ecef"][name], value, delta=0.001)

    def assert_stored(self, latitude: float, longitude: float, height: float) -> None:
        values = [float(value) for value in self.stored("reference_position").split(",")]
        self.assertAlmostEqual(values[0], latitude, delta=1e-9)
        self.assertAlmostEqual(values[1], longitude, delta=1e-9)
        self.assertAlmostEqual(values[2], height, delta=0.001)

    def test_is_set_in_degrees(self) -> None:
        receiver, _ = self.operated()
        before = len(receiver.commands())
        self.assert_shown(self.document("reference-position", "set", "--geodetic",
                                        *map(str, self.PLACE)), *self.PLACE)
        self.assert_stored(*self.PLACE)
        self.assert_configured_anew(receiver, before)
        self.assert_shown(self.document("reference-position"), *self.PLACE)

    def test_is_set_in_metres(self) -> None:
        self.operated()
        place = (-33.5, 151.25, 12.5)
        arguments = [f"{value:.6f}" for value in cartesian(*place)]
        self.assertTrue(arguments[0].startswith("-"))
        self.assert_shown(self.document("reference-position", "set", *arguments), *place)
        self.assert_stored(*place)

    def test_is_shown_to_people_both_ways(self) -> None:
        self.operated()
        x, y, z = cartesian(*self.PLACE)
        shown = (f"ECEF      X {x:.4f} m, Y {y:.4f} m, Z {z:.4f} m\n"
                 "geodetic  latitude 47.123456789 deg, longitude -8.567890000 deg, "
                 "height 431.2500 m\n")
        self.assertEqual(self.done("reference-position", "set", "--geodetic",
                                   *map(str, self.PLACE)), shown)
        self.assertEqual(self.done("reference-position", "show"), shown)

    def test_is_cleared(self) -> None:
        receiver, _ = self.operated("reference_position = 47.5,8.5,100\n")
        self.assert_shown(self.document("reference-position"), 47.5, 8.5, 100)
        before = len(receiver.commands())
        self.assertEqual(self.done("reference-position", "clear"), "no reference position is set\n")
        self.assert_configured_anew(receiver, before)
        self.assertIsNone(self.stored("reference_position"))
        self.assertEqual(self.document("reference-position"), {"reference-position": None})

    def test_places_off_the_earth_are_wrong_usage(self) -> None:
        self.operated()
        self.assertIn("degrees need --geodetic",
                      self.fails(USAGE, "reference-position", "set", "47.1", "8.5", "431"))
        for wrong in (("90.1", "0", "0"), ("0", "-180.1", "0"), ("0", "361", "0"),
                      ("0", "0", "9e6"), ("x", "0", "0"), ("nan", "0", "0"), ("0", "0")):
            self.fails(USAGE, "reference-position", "set", "--geodetic", *wrong)
        self.assertIsNone(self.stored("reference_position"))


class Looking(Operated):
    def test_ping_tells_that_the_daemon_answers(self) -> None:
        self.operated()
        self.assertRegex(self.done("ping"), r"^the daemon at 127.0.0.1:5314 answers \(.* ms\)\n$")
        document = self.document("ping")
        self.assertTrue(document["answers"])
        self.assertGreater(document["milliseconds"], 0)

    def test_a_host_is_a_name_as_well(self) -> None:
        self.operated()
        for host in ("localhost", "127.0.0.1"):
            self.assertIn(host, self.done("ping", "--host", host, "--port", "5314"))

    def test_receiver_tells_its_versions(self) -> None:
        collector = self.collector()
        receiver, _ = self.operated()
        self.assertEqual(self.done("receiver"), "the receiver has not told its version yet\n")
        self.assertEqual(self.document("receiver"), {"receiver": {
            "model": None, "serialNumber": None, "hardwareVersion": None,
            "softwareVersion": None}})
        receiver.say(logs.models((CARD, b"L12LGRV")))
        collector.wait_for_status("NovatelReceiverStatus", "component_00.model", "L12LGRV")
        self.assertEqual(self.document("receiver"), {"receiver": {
            "model": "L12LGRV", "serialNumber": "serial", "hardwareVersion": "hardware",
            "softwareVersion": "software"}})
        self.assertEqual(self.done("receiver"), "model     L12LGRV\nserial    serial\n"
                                                "hardware  hardware\nsoftware  software\n")

    def test_channels_tells_the_one_in_use_and_those_that_are_allowed(self) -> None:
        collector = self.collector()
        receiver, _ = self.operated()
        self.assertIn("not known", self.done("channels"))
        self.assertEqual(self.document("channels"), {"current": 0, "allowable": []})
        receiver.say(logs.chanconfiglist(2, ((14, GPS_L1),), ((12, GPS_L1), (2, LBAND))))
        collector.wait_for_status("NovatelConstellationManager", "channel_config_2",
                                  "12 GPSL1,  2 UNKNOWN 9, ")
        self.assertEqual(self.done("channels"),
                         "channel configuration: 2\n  1  14 GPSL1\n* 2  12 GPSL1, 2 UNKNOWN 9\n")
        self.assertEqual(self.document("channels"), {"current": 2, "allowable": [
            {"configuration": 1, "signals": [{"channels": 14, "signal": "GPSL1"}]},
            {"configuration": 2, "signals": [{"channels": 12, "signal": "GPSL1"},
                                             {"channels": 2, "signal": "UNKNOWN 9"}]}]})

    def test_what_the_receiver_says_cannot_steer_the_terminal(self) -> None:
        collector = self.collector()
        receiver, _ = self.operated()
        receiver.say(logs.models((CARD, b"L1\x1b[2J")))
        collector.wait_for("logger.status", name="NovatelReceiverStatus", key="component_00.model")
        self.assertIn("model     L1?[2J\n", self.done("receiver"))


class Actions(Operated):
    def test_region_refresh_puts_the_configuration_in_force(self) -> None:
        receiver, _ = self.operated("force_sbas_state = 0\n")
        self.assertEqual(self.document("sbas"), {"sbas": False})
        self.done("config", "set", "--section", "localisation", "region", "europe")
        self.done("config", "set", "position_update", "0.2")
        before = len(receiver.commands())
        self.assertIn("SBAS: on", self.done("region", "refresh"))
        self.assert_configured_anew(receiver, before, "log pdpxyzb ontime 0.2\r\n")
        self.assertEqual(self.document("region", "refresh"), {"refreshed": True, "sbas": True})

    def test_refresh_asks_the_receiver(self) -> None:
        receiver, _ = self.operated()
        before = len(receiver.commands())
        self.assertEqual(self.document("refresh"), {"asked": True})
        receiver.wait_for_commands(before + 3)
        self.assertEqual(receiver.commands()[before:],
                         ["LOG CHANCONFIGLISTB ONCE\r\n", "LOG LOGLISTB ONCE\r\n", LAST_COMMAND])
        self.assertIn("asked", self.done("refresh"))

    def test_reset_of_a_filter(self) -> None:
        receiver, _ = self.operated()
        for what, command in (("rtk", "rtkcommand reset\r\n"), ("pdp", "pdpfilter reset\r\n")):
            before = len(receiver.commands())
            self.assertEqual(self.document("reset", what), {"reset": what})
            self.assertIn(what, self.done("reset", what))
            receiver.wait_for_commands(before + 2)
            self.assertEqual(receiver.commands()[before:], [command] * 2)

    def test_reset_to_the_factorys_state_needs_a_yes(self) -> None:
        receiver, daemon = self.operated()
        before = len(receiver.commands())
        self.assertIn("--yes", self.fails(USAGE, "reset", "factory"))
        daemon.wait_for_passes(3)
        self.assertEqual(len(receiver.commands()), before)
        self.assertEqual(self.document("reset", "factory", "--yes"), {"reset": "factory"})
        receiver.wait_for_commands(before + 1)
        self.assertEqual(receiver.commands()[before], "FRESET STANDARD\r\n")
        self.assert_configured_anew(receiver, before + 1)
        self.fails(USAGE, "reset", "all")

    def test_nmea_sentences_are_asked_for_as_periods_or_rates(self) -> None:
        receiver, _ = self.operated()
        for arguments, command in (
                (("GPGGA", "5Hz"), "log GPGGA ontime 0.200"),
                (("GPGGA", "0.2s"), "log GPGGA ontime 0.200"),
                (("gpzda", "50ms"), "log GPZDA ontime 0.050"),
                (("GPGSV", "3Hz"), "log GPGSV ontime 0.333"),
                (("GPGSA", "10s"), "log GPGSA ontime 10.000"),
                (("GPRMC", "once"), "log GPRMC"), (("GPGGA", "off"), "unlog GPGGA")):
            with about(arguments):
                before = len(receiver.commands())
                self.done("nmea", *arguments)
                receiver.wait_for_commands(before + 1)
                self.assertEqual(receiver.commands()[before:], [command + "\r\n"])
        self.assertEqual(self.done("nmea", "GPGGA", "5Hz"),
                         "the receiver is asked for GPGGA: every 0.2 s\n")
        self.assertEqual(self.document("nmea", "GPGGA", "once"),
                         {"sentence": "GPGGA", "milliseconds": -1})

    def test_other_sentences_and_periods_are_wrong_usage(self) -> None:
        receiver, daemon = self.operated()
        before = receiver.commands()
        for arguments in (("GGA", "1s"), ("GPGGAX", "1s"), ("GPG A", "1s"), ("GPGG\n", "1s"),
                          ("GPGGA", "5"), ("GPGGA", "0s"), ("GPGGA", "0.1ms"), ("GPGGA",)):
            self.fails(USAGE, "nmea", *arguments)
        daemon.wait_for_passes(3)
        self.assertEqual(receiver.commands(), before)


class Calls(Operated):
    def test_a_call_sends_its_arguments_in_their_kinds_and_prints_the_answer(self) -> None:
        self.operated()
        self.assertEqual(self.done("call", "novatel_SetSBASPRN", "122"), "[]\n")
        self.assertEqual(self.done("call", "novatel_GetSBASPRN"), "[122]\n")
        self.assertEqual(self.done("call", "novatel_SetReferencePosition", "6378137", "0.5", "-1"),
                         "[1]\n")
        self.assertEqual(self.document("call", "novatel_SetReferenceFormat", "CMR"),
                         {"method": "novatel_SetReferenceFormat", "result": []})
        self.assertEqual(self.document("call", "novatel_GetReferenceFormat")["result"], ["CMR"])
        self.assertEqual(self.done("call", "novatel_SetIonosphereMode", "7"), "null\n")

    def test_a_text_can_be_forced(self) -> None:
        self.operated()
        self.assertEqual(self.ctl("call", "novatel_SetReferenceFormat", "5").status, REFUSED)
        self.assertEqual(self.ctl("call", "novatel_SetReferenceFormat", "text:5").status, DONE)

    def test_arguments_with_brackets_and_dashes_are_kept_whole(self) -> None:
        self.operated()
        collector = self.collector()
        for path in ("[a,b]", "--json", "-x", "a b"):
            self.assertEqual(self.done("call", "novatel_StartFirmwareUpgrade", "--", path),
                             "[0]\n")
            collector.wait_for_status("NovatelPositionManager", "firmware_file_used", path)

    def test_what_the_daemon_refuses_is_told_with_its_reason(self) -> None:
        self.operated()
        self.assertIn("-32602", self.fails(REFUSED, "call", "novatel_SetSBASPRN", "x"))
        unknown = self.fails(REFUSED, "call", "novatel_GetSBASPRM")
        self.assertIn("-32601", unknown)
        self.assertIn("is novatel_GetSBASPRN meant?", unknown)

    def test_options_stand_where_one_likes(self) -> None:
        self.operated()
        for arguments in (("--json", "sbas"), ("sbas", "--json"), ("sbas", "off", "--json"),
                          ("sbas", "--json", "--timeout", "5", "off")):
            self.assertEqual(self.ctl(*arguments).document, {"sbas": False}, arguments)


class ARun(Operated):
    def test_leaves_no_connection_behind(self) -> None:
        _, daemon = self.operated()
        self.done("ping")
        before = len(daemon.descriptors())
        for _ in range(10):
            self.done("sbas")
        wait_until("the connections to close", lambda: len(daemon.descriptors()) <= before)

    def test_goes_on_beside_others_that_call(self) -> None:
        self.operated()
        with socket.create_connection(("127.0.0.1", 5314)) as other:
            other.sendall(b'{"jsonrpc":"2.0","id":1,"method":"')
            self.assertEqual(self.done("sbas-prn"), "SBAS PRN: 0 (none in particular)\n")
