"""Every method of the RPC service: its reply, what it stores, and what the receiver is told."""

import math
import time

from decoder.commands import CONFIGURATION
from harness import logs
from harness.rpc_client import RPCClient
from harness.scenario import MAIN, best_of_three
from harness.steered import Steered, notification, request
from harness.waiting import wait_until

from test_configuration import GPS_LOGGING, LISTS

CARD = 1  # the component type of the receiver itself
GPS_L1, SBAS_L1, GLONASS_L1 = 0, 4, 10  # signal types
GLONASS = 38  # the first slot
REJECTED = 99
PAUSE = 0.05  # seconds between the three requests for what the receiver knows of itself
JITTER = 0.01  # of the moments at which the receiver takes note
EQUATOR, FLATTENING = 6378137.0, 1 / 298.257223563  # WGS-84


def ecef(latitude: float, longitude: float, height: float) -> tuple[float, float, float]:
    """Of degrees and metres."""
    square = FLATTENING * (2 - FLATTENING)
    sine, cosine = math.sin(math.radians(latitude)), math.cos(math.radians(latitude))
    normal = EQUATOR / math.sqrt(1 - square * sine * sine)
    return ((normal + height) * cosine * math.cos(math.radians(longitude)),
            (normal + height) * cosine * math.sin(math.radians(longitude)),
            (normal * (1 - square) + height) * sine)


class Settings(Steered):
    """Each change is stored, and the receiver is told its whole configuration anew."""

    def setUp(self) -> None:
        super().setUp()
        self.receiver_, self.daemon, self.rpc = self.configured()

    def assert_reconfigures(self, call: tuple, reply, changes: dict[str, str] | None = None,
                            whole: list[str] | None = None) -> None:
        before = len(self.receiver_.commands())
        self.assertEqual(self.rpc.call(*call), reply)
        self.assert_told_next(self.receiver_, self.daemon, before,
                              whole or self.configuration(changes))

    def assert_changes_nothing(self, call: tuple, reply) -> None:
        before = len(self.receiver_.commands())
        file = (self.folder / "settings.conf").read_bytes()
        self.assertEqual(self.rpc.call(*call), reply)
        self.assert_told_next(self.receiver_, self.daemon, before, [])
        self.assertEqual((self.folder / "settings.conf").read_bytes(), file)

    def test_sbas_is_forced_on_and_off(self) -> None:
        self.assertEqual(self.rpc.call("novatel_GetSBASEnabled"), [0])
        for value, wanted in ((1, 1), (0, 0), (-7, 1)):
            self.assert_reconfigures(("novatel_SetSBASEnabled", value), [])
            self.assertEqual(self.rpc.call("novatel_GetSBASEnabled"), [wanted])
            self.assertEqual((self.stored("force_sbas_state"), self.stored("force_sbas_on")),
                             ("1", str(wanted)))

    def test_the_sbas_prn_is_kept(self) -> None:
        self.assertEqual(self.rpc.call("novatel_GetSBASPRN"), [0])
        self.assert_reconfigures(("novatel_SetSBASPRN", 131), [])
        self.assertEqual(self.rpc.call("novatel_GetSBASPRN"), [131])
        self.assertEqual(self.stored("sbas_prn"), "131")
        self.assert_changes_nothing(("novatel_SetSBASPRN", 131), [])

    def test_the_reference_format_changes_the_mode_of_the_correction_port(self) -> None:
        self.assertEqual(self.rpc.call("novatel_GetReferenceFormat"), ["VARN1"])
        before = "interfacemode usb3 CMR none"
        for name, mode in (("RTCM3", "RTCMV3"), ("RTCM2", "RTCM"), ("CMR", "CMR")):
            self.assert_reconfigures(("novatel_SetReferenceFormat", name), [],
                                     {before: f"interfacemode usb3 {mode} none"})
            self.assertEqual(self.rpc.call("novatel_GetReferenceFormat"), [name])
            self.assertEqual(self.stored("reference_format_real"), name)
        for same_or_unknown in ("CMR", "NONE", "cmr", "", "RTCM3 "):
            self.assert_changes_nothing(("novatel_SetReferenceFormat", same_or_unknown), [])
        self.assertEqual(self.rpc.call("novatel_GetReferenceFormat"), ["CMR"])

    def test_the_reference_position_is_stored_as_degrees_and_read_as_metres(self) -> None:
        self.assertEqual(self.rpc.call("novatel_GetReferencePosition"), [0.0, 0.0, 0.0])
        place = (45.5, -7.25, 812.5)
        self.assert_reconfigures(("novatel_SetReferencePosition", *ecef(*place)), [1])
        stored = self.stored("reference_position")
        self.assertRegex(stored, r"^-?\d+\.\d{12},-?\d+\.\d{12},-?\d+\.\d{4}$")
        for found, wanted, within in zip(stored.split(","), place, (1e-10, 1e-10, 2e-4)):
            self.assertAlmostEqual(float(found), wanted, delta=within)
        for found, wanted in zip(self.rpc.call("novatel_GetReferencePosition"), ecef(*place)):
            self.assertAlmostEqual(found, wanted, delta=1e-3)

    def test_the_reference_position_is_cleared(self) -> None:
        self.rpc.call("novatel_SetReferencePosition", *ecef(-33.0, 151.0, 20.0))
        self.receiver_.wait_for_commands(2 * len(CONFIGURATION))
        self.assert_reconfigures(("novatel_UnsetReferencePosition",), [1])
        self.assertIsNone(self.stored("reference_position"))
        self.assertEqual(self.rpc.call("novatel_GetReferencePosition"), [0.0, 0.0, 0.0])

    def test_glonass_corrections_are_stored_and_the_receiver_is_left_alone(self) -> None:
        self.assertEqual(self.rpc.call("novatel_GetGlonassCorrectionsEnabled"), [1])
        before = len(self.receiver_.commands())
        for value in (0, 1):
            self.assertEqual(self.rpc.call("novatel_SetGlonassCorrectionsEnabled", value), [])
            self.assertEqual(self.rpc.call("novatel_GetGlonassCorrectionsEnabled"), [value])
            self.assertEqual(self.stored("glonass_corrections"), str(value))
        self.assert_told_next(self.receiver_, self.daemon, before, [])

    def test_the_ionosphere_mode_chooses_the_model(self) -> None:
        self.assertEqual(self.rpc.call("novatel_GetIonosphereMode"), [0])
        for mode, model in ((1, "klobuchar"), (2, "grid"), (3, "auto"), (0, "auto")):
            self.assert_reconfigures(("novatel_SetIonosphereMode", mode), [1],
                                     {"setionotype auto": f"setionotype {model}"})
            self.assertEqual(self.rpc.call("novatel_GetIonosphereMode"), [mode])
            self.assertEqual(self.stored("ionosphere_mode"), str(mode))

    def test_an_ionosphere_mode_that_does_not_exist_is_refused(self) -> None:
        self.assert_reconfigures(("novatel_SetIonosphereMode", 2), [1],
                                 {"setionotype auto": "setionotype grid"})
        self.assert_changes_nothing(("novatel_SetIonosphereMode", 2), [1])
        for refused in ((7,), (4,), (-1,), ()):
            self.assert_changes_nothing(("novatel_SetIonosphereMode", *refused), None)
        self.assertEqual(self.rpc.call("novatel_GetIonosphereMode"), [2])

    def test_gps_logging_asks_the_receiver_for_more_and_the_hub_to_record_it(self) -> None:
        collector = self.collector()
        collector.wait_for("logger.status", name=MAIN, key="started")
        self.assertEqual(self.rpc.call("novatel_GetGPSLoggingEnabled"), [0])
        with_logs = [*CONFIGURATION[:-LISTS], *GPS_LOGGING, *CONFIGURATION[-LISTS:]]
        for value, whole in ((1, with_logs), (0, None)):
            self.assert_reconfigures(("novatel_SetGPSLoggingEnabled", value), [], whole=whole)
            self.assertEqual(self.rpc.call("novatel_GetGPSLoggingEnabled"), [value])
            self.assertEqual(self.stored("gps_logging_enabled"), str(value))
            collector.wait_for("logger.setCategory", category=MAIN, enabled=value)
        asked = [each.method for each in collector.messages(category=MAIN)]
        self.assertEqual(asked, ["logger.getCategory", "logger.setCategory"] * 2)
        self.assert_changes_nothing(("novatel_SetGPSLoggingEnabled", 0), [])
        self.assertEqual(len(collector.messages(category=MAIN)), 4)

    def test_the_reference_output_bandwidth_has_no_effect(self) -> None:
        for params in ((), (1000,), ("fast", None, [1.5])):
            self.assert_changes_nothing(("novatel_SetReferenceOutputBandwidth", *params), None)

    def test_a_factory_reset_is_followed_by_the_configuration(self) -> None:
        """To which it belongs itself, for once."""
        freset, for_once = "FRESET STANDARD\r\n", "rtkcommand reset\r\n"
        whole = [freset, *(each for each in CONFIGURATION if each != for_once), freset]
        self.assert_reconfigures(("novatel_SendFReset",), [1], whole=whole)
        self.assert_reconfigures(("novatel_SendFReset",), [1], whole=whole)


class Region(Steered):
    def test_what_it_presets_is_taken_over_when_that_is_asked_for(self) -> None:
        receiver, daemon, rpc = self.configured("force_sbas_state = 0\n")
        self.assertEqual(rpc.call("novatel_GetSBASEnabled"), [0])
        with open(self.folder / "settings.conf", "a", encoding="utf-8") as settings:
            settings.write("[localisation]\nregion = japan\n")
        self.assertEqual(rpc.call("novatel_RefreshRegionSettings"), [1])
        self.assert_told_next(receiver, daemon, len(CONFIGURATION), list(CONFIGURATION))
        self.assertEqual(rpc.call("novatel_GetSBASEnabled"), [1])


class Commands(Steered):
    """What is asked of the receiver at once."""

    def setUp(self) -> None:
        super().setUp()
        self.receiver_, self.daemon, self.rpc = self.brief()

    def assert_sends(self, call: tuple, reply, *commands: str) -> None:
        before = len(self.receiver_.commands())
        self.assertEqual(self.rpc.call(*call), reply)
        self.assert_told_next(self.receiver_, self.daemon, before,
                              [f"{command}\r\n" for command in commands])

    def test_the_dummy_does_nothing(self) -> None:
        self.assert_sends(("DummyFunction",), [])

    def test_an_nmea_sentence_is_asked_for_by_its_period(self) -> None:
        for period, command in ((200, "log GPGGA ontime 0.200"), (1, "log GPGGA ontime 0.001"),
                                (5000.0, "log GPGGA ontime 5.000"), (-1, "log GPGGA"),
                                (0, "unlog GPGGA"),
                                (2_147_483_647, "log GPGGA ontime 2147483.647"),
                                (-2_147_483_648, "log GPGGA")):
            self.assert_sends(("RequestNMEA", "GPGGA", period), [1], command)
        self.assertIn("Sending command 'log GPGGA ontime 0.200\n'\n", self.daemon.trace)

    def test_a_name_of_another_length_is_not_sent(self) -> None:
        for name in ("GGA", "GPGGAX", ""):
            self.assert_sends(("RequestNMEA", name, 200), [0])
        self.assertIn("Invalid Sentence size\n", self.daemon.trace)

    def test_an_nmea_request_without_just_two_arguments_has_no_effect(self) -> None:
        for params in ((), ("GPGGA",), ("GPGGA", 200, 1)):
            self.assert_sends(("RequestNMEA", *params), [])

    def test_a_sentence_asked_for_belongs_to_the_configuration(self) -> None:
        self.assert_sends(("RequestNMEA", "GPZDA", 1000), [1], "log GPZDA ontime 1.000")
        self.assert_sends(("novatel_SendFReset",), [1], "FRESET STANDARD", "log version",
                          "log GPZDA ontime 1.000", "FRESET STANDARD")

    def test_the_filters_are_reset(self) -> None:
        self.assert_sends(("novatel_ResetRTKFilter",), [1], "rtkcommand reset")
        self.assert_sends(("novatel_ResetPDPFilter",), [], "pdpfilter reset")

    @best_of_three
    def test_what_the_receiver_knows_of_itself_is_asked_for_piece_by_piece(self) -> None:
        began = time.monotonic()
        self.assert_sends(("novatel_RefreshReceiverConfiguration",), [1],
                          "LOG CHANCONFIGLISTB ONCE", "LOG LOGLISTB ONCE", "LOG RXCONFIGB ONCE")
        self.assertGreaterEqual(time.monotonic() - began, 3 * PAUSE)
        lengths = [len(each) for each in self.receiver_.commands()]
        moments = [self.receiver_.arrival_of(sum(lengths[:count])).moment for count in (2, 3, 4)]
        for earlier, later in zip(moments, moments[1:]):
            self.assertGreaterEqual(later - earlier, PAUSE - JITTER)
            self.assertLess(later - earlier, PAUSE + 3 * JITTER)


class Knowledge(Steered):
    """What the receiver has told is told on."""

    def setUp(self) -> None:
        super().setUp()
        self.receiver_, self.daemon, self.rpc = self.brief()

    def wait_for_reply(self, method: str, wanted: list) -> None:
        wait_until(f"{method} to tell {wanted}", lambda: self.rpc.call(method) == wanted,
                   state=lambda: self.rpc.call(method))

    def test_the_channel_configurations(self) -> None:
        self.assertEqual(self.rpc.call("novatel_GetCurrentChannelConfiguration"), [0])
        self.assertEqual(self.rpc.call("novatel_GetAllowableChannelConfigurations"), [])
        self.receiver_.say(logs.chanconfiglist(
            3, ((14, GPS_L1),), ((12, GPS_L1), (2, SBAS_L1)), ((8, GPS_L1), (6, GLONASS_L1))))
        self.wait_for_reply("novatel_GetCurrentChannelConfiguration", [3])
        self.assertEqual(self.rpc.call("novatel_GetAllowableChannelConfigurations"), [
            [1, 14, "GPSL1"], [2, 12, "GPSL1", 2, "SBASL1"], [3, 8, "GPSL1", 6, "GLOL1"]])

    def test_the_versions_of_the_receivers_card(self) -> None:
        self.assertEqual(self.rpc.call("novatel_GetVersionInformation"), [""] * 4)
        self.receiver_.say(logs.models((CARD, b"L12LGRV"), (3, b"other")))
        self.wait_for_reply("novatel_GetVersionInformation",
                            ["L12LGRV", "serial", "hardware", "software"])

    def test_what_is_tracked(self) -> None:
        self.assertEqual(self.rpc.call("novatel_GetReceiverTrackingStatus"), [0] * 5 + ["", ""])
        self.receiver_.say(logs.trackstat(
            logs.channel(1), logs.channel(1, signal=9), logs.channel(2, signal=5),
            logs.channel(GLONASS), logs.channel(GLONASS + 1), logs.channel(GLONASS, signal=5),
            logs.channel(122), logs.channel(7, reject=REJECTED)))
        self.wait_for_reply("novatel_GetReceiverTrackingStatus",
                            [1, 2, 2, 1, 5, "122 (WAAS),", "0x00000000: "])
        self.receiver_.say(logs.rxstatus(0, status=0x80000001))
        self.wait_for_reply("novatel_GetReceiverTrackingStatus",
                            [1, 2, 2, 1, 5, "122 (WAAS),",
                             "0x80000001: Error,Auxiliary 1 status event,"])

    def test_no_firmware_is_being_loaded(self) -> None:
        self.assertEqual(self.rpc.call("novatel_GetFirmwareUpgradeStatus"), [1, 0, 0])


class TrackingStatus(Steered):
    """Who has asked what is tracked is told when the number of satellites changes."""

    def setUp(self) -> None:
        super().setUp()
        self.receiver_, self.daemon, self.asker = self.brief()
        self.asker.call("novatel_GetReceiverTrackingStatus")

    def say_tracked(self, *prns: int) -> None:
        self.receiver_.say(logs.trackstat(*(logs.channel(prn) for prn in prns)))

    def assert_told(self, client: RPCClient, number: int) -> None:
        self.assertEqual(client.receive(), notification("cb_trackingStatus") | {"params": [number]})

    def assert_told_nothing(self, client: RPCClient) -> None:
        client.send(request("DummyFunction"))
        self.assertEqual(client.receive(), {"jsonrpc": "2.0", "id": 1, "result": []})

    def test_it_is_told_each_change_and_nothing_else(self) -> None:
        for prns in ((1, 2, 3), (4, 5, 6), (4, 4, 5), (), (), (9,)):
            self.say_tracked(*prns)
        self.receiver_.say(logs.trackstat(logs.channel(9), logs.channel(8, reject=REJECTED)))
        self.say_tracked(1, 2)
        for number in (3, 2, 0, 1, 2):
            self.assert_told(self.asker, number)
        self.assert_told_nothing(self.asker)

    def test_each_that_has_asked_is_told_and_nobody_else(self) -> None:
        other, silent, leaver = self.client(), self.client(), self.client()
        for client in (other, leaver):
            self.assertEqual(client.call("novatel_GetReceiverTrackingStatus")[4], 0)
        self.assertEqual(silent.call("novatel_GetIonosphereMode"), [0])
        leaver.close()
        for number in (3, 1):
            self.say_tracked(*range(1, number + 1))
            self.assert_told(self.asker, number)
            self.assert_told(other, number)
        self.assert_told_nothing(silent)

    def test_asking_twice_is_told_once(self) -> None:
        self.asker.call("novatel_GetReceiverTrackingStatus")
        self.say_tracked(1)
        self.assert_told(self.asker, 1)
        self.assert_told_nothing(self.asker)
