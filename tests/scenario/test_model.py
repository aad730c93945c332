"""The decoder's account of what is published, against cases worked out by hand."""

import json
import math
import unittest

from decoder.geodesy import geodetic, position_text
from decoder.printf import leading_integer, number, real, signed, single, text
from decoder.receiver_status import firmware_number
from decoder.run import offline_run
from harness import logs
from harness.sentences import ascii_log, binary, nmea, response

RECEIVER, POSITION = "CReceiverStatusObserver", "CPositionManager"
GLIDE, NOTHING_TRACKED, OVERLOADED = [79141, 2], [79160, 1], [79195, 0]
NAN, INF = math.nan, math.inf


class Model(unittest.TestCase):
    """Looks at what sentences add to what a run publishes anyway."""

    def told(self, content: bytes, method: str) -> list[list]:
        """The fields of every message of a method, after those of the start."""
        begun = len(offline_run(b"").published)
        lines = offline_run(content).published[begun:]
        return [json.loads(fields) for each, _, fields in (line.partition(" ") for line in lines)
                if each == method]

    def values(self, content: bytes, key: str) -> list[str]:
        return [fields[3] for fields in self.told(content, "logger.status") if fields[2] == key]

    def events(self, content: bytes, name: str) -> list[str]:
        """Their texts, each with the first letter of its level in front."""
        return [f"{level[0].upper()} {text}" for each, level, text in
                self.told(content, "logger.event") if each == name]

    def qualities(self, content: bytes) -> list[list[int]]:
        """Position quality, fix quality and class of each solution."""
        return [[fields[13], fields[14], fields[19]] for fields in
                self.told(content, "position.ecef")]


class Texts(unittest.TestCase):
    def test_reals_are_written_as_c_writes_them(self) -> None:
        negative_nan = math.copysign(NAN, -1.0)
        cases = {("%f", NAN): "nan", ("%f", negative_nan): "-nan", ("%.1f", -INF): "-inf",
                 ("%5.2f", INF): "  inf", ("%5.2f", 0.5): " 0.50", ("%2.5f", -NAN): "-nan",
                 ("%f", -0.0): "-0.000000", ("%.3f", 2.0005): "2.001", ("%.3f", 0.0625): "0.062"}
        for (conversion, value), wanted in cases.items():
            self.assertEqual(real(conversion, value), wanted, (conversion, value))

    def test_unsigned_numbers_wrap(self) -> None:
        self.assertEqual([signed(each) for each in (0, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF)],
                         [0, 2147483647, -2147483648, -1])

    def test_json_has_no_infinities(self) -> None:
        self.assertEqual([number(NAN), number(-INF), number(2)], [None, None, 2.0])

    def test_singles_keep_24_bits(self) -> None:
        self.assertEqual([single(3), single(0xFFFFFFFF), single(16777217)],
                         [3.0, 4294967296.0, 16777216.0])

    def test_texts_end_at_a_zero_byte_and_odd_bytes_keep_their_number(self) -> None:
        cases = {b"ab\0c": "ab", b"\xc3\xa9": "é", b"\xe9": "é", b"\xe2\x82A": "\xe2\x82A",
                 b"\xed\xa0\x80": "\xed\xa0\x80", b"\xc0\xaf": "\xc0\xaf"}
        for data, wanted in cases.items():
            self.assertEqual(text(data), wanted)

    def test_a_leading_number_is_read_and_the_rest_ignored(self) -> None:
        cases = {b" \t-5x": -5, b"+7": 7, b"010201RN": 10201, b"": None, b"x1": None, b"- 1": None,
                 b"2147483647": 2147483647, b"2147483648": None, b"-2147483648": -2147483648}
        for data, wanted in cases.items():
            self.assertEqual(leading_integer(data), wanted, data)

    def test_only_a_version_of_a_known_family_has_a_number(self) -> None:
        cases = {b"OEM": -1, b"L6X": -1, b"OEM060600RN0000": 60600, b"L6X010201RN0000\0": 10201,
                 b"3.701": -1, b"OEMx": -1, b"oem12": -1, b"OEM\x0099": -1}
        for software, wanted in cases.items():
            self.assertEqual(firmware_number(software), wanted, software)


class Geodesy(unittest.TestCase):
    def test_points_whose_place_is_known(self) -> None:
        """One on an axis, and one taken the way back, for which there is an exact formula."""
        latitude, longitude, height = geodetic(0.0, 6378137.0 + 100.0, 0.0)
        self.assertEqual((latitude, math.degrees(longitude)), (0.0, 90.0))
        self.assertAlmostEqual(height, 100.0, places=6)
        latitude, longitude, height = geodetic(*self.ecef(math.radians(48.5), -2.0, 1234.5))
        self.assertAlmostEqual(math.degrees(latitude), 48.5, places=8)
        self.assertAlmostEqual(longitude, -2.0, places=12)
        self.assertAlmostEqual(height, 1234.5, places=3)

    def ecef(self, latitude: float, longitude: float, height: float) -> tuple[float, ...]:
        """The way back."""
        squared = (2.0 - 1.0 / 298.257223563) / 298.257223563
        normal = 6378137.0 / math.sqrt(1.0 - squared * math.sin(latitude) ** 2)
        return ((normal + height) * math.cos(latitude) * math.cos(longitude),
                (normal + height) * math.cos(latitude) * math.sin(longitude),
                (normal * (1.0 - squared) + height) * math.sin(latitude))

    def test_what_is_no_place_has_a_text_too(self) -> None:
        self.assertEqual(position_text(NAN, -INF, 0.0), "nan,-inf,0.0000,nan,nan,0.000")
        self.assertEqual(position_text(0.0, 0.0, 0.0),
                         "0.0000,0.0000,0.0000,180.000000000,0.000000000,-6378137.000")


class Headers(Model):
    def test_status_and_idle_time_are_told_when_they_change(self) -> None:
        content = b"".join(binary(999, status=status, idle=idle) for status, idle in (
            (0, 0), (0, 0), (0xE0000000, 5), (0xE0000000, 6), (1, 6)))
        self.assertEqual(self.values(content, "ReceiverStatus"), [
            "0x00000000: ", "0xE0000000: Auxiliary 3 status event,Auxiliary 2 status event,"
            "Auxiliary 1 status event,", "0x00000001: Error,"])
        self.assertEqual(self.values(content, "ReceiverCPUIdlePercentage"), ["2.5", "3.0"])
        self.assertEqual(self.told(content, "diagnostics.raise"), [[RECEIVER, *OVERLOADED, 1]])
        self.assertEqual(self.told(content, "diagnostics.clear"), [[RECEIVER, *OVERLOADED]])

    def test_a_first_status_of_all_ones_is_no_change(self) -> None:
        content = binary(999, status=0xFFFFFFFF, idle=0)
        self.assertEqual(self.told(content, "logger.status")[:-1], [])

    def test_responses_and_the_ascii_record_have_a_header_too(self) -> None:
        content = binary(999, status=1) + response(1, 1, b"OK")
        self.assertEqual(len(self.values(content, "ReceiverStatus")), 2)
        content = binary(999, status=1) + ascii_log("SOFTLOADSTATUSA", "COMPLETE")
        self.assertEqual(self.values(content, "ReceiverCPUIdlePercentage"), ["50.0", "0.0"])

    def test_a_response_to_a_log_is_not_that_log(self) -> None:
        self.assertEqual(self.told(response(42, 1, b"OK"), "nmea.geoid"), [])


class Receiver(Model):
    def test_every_component_is_told_and_the_card_is_warned_of(self) -> None:
        content = logs.version((2, b"OEM1"), (1, b"OEM10101RN"))
        self.assertEqual(self.values(content, "component_01.softwareVersion"), ["OEM10101RN"])
        self.assertEqual(self.values(content, "component_00.componentType"), ["2"])
        self.assertEqual(self.events(content, "NovatelReceiverStatus"), [
            f"W {RECEIVER}::TranslateReceiverVersion: got sw_version_int 10101 from version "
            "OEM10101RN"])

    def test_errors_are_named_in_order(self) -> None:
        content = logs.rxstatus(0x80000005) + logs.rxstatus(0) + logs.rxstatus(8)
        self.assertEqual(self.values(content, "ReceiverError"), [
            "0x80000005: DRAM Error,ROM error,Component hardware failure,",
            "0x00000000: No Errors", "0x00000008: "])

    def test_intervals_are_exact_from_the_beginning_of_gps_time_on(self) -> None:
        """One week is 604800 s; the second is 2.5 s before the first, the third in another week."""
        content = logs.trackstat(milliseconds=3000, week=2) + logs.trackstat(
            milliseconds=500, week=2) + logs.trackstat(milliseconds=501, week=3)
        self.assertEqual(self.values(content, "trackstat_messages"),
                         ["1,1209603.000000", "2,-2.500000", "3,604800.001000"])

    def test_ports_are_told_in_their_order_and_the_first_entry_counts(self) -> None:
        content = logs.comconfig((15, 9600, 11, 20), (1, 0xFFFFFFFF, 12, 0), (1, 1, 1, 1),
                                 (3, 1, 1, 1))
        told = [fields[2:] for fields in self.told(content, "logger.status")
                if fields[2].endswith("_Config")]
        self.assertEqual(told, [["COM1_Config", "-1,NONE,TCOM2"],
                                ["USB3_Config", "9600,MRTCA,UNKNOWN (11)"]])

    def test_channels_are_counted_by_system_and_signal(self) -> None:
        one = logs.channel
        content = logs.trackstat(
            one(1), one(1, signal=9), one(32, signal=17), one(33), one(38), one(61, signal=5),
            one(62), one(5, signal=14), one(6, reject=99), one(122), one(131), one(122), one(0),
            one(135, reject=99))
        self.assertEqual(self.values(content, "sats_tracked_gps"), ["1,2"])
        self.assertEqual(self.values(content, "sats_tracked_glonass"), ["1,1"])
        self.assertEqual(self.values(content, "sats_tracked"), ["10,2,3"])
        self.assertEqual(self.values(content, "sbas_tracking"), ["122 (WAAS),131 (EGNOS),"])

    def test_without_an_observation_there_is_still_a_sky(self) -> None:
        content = logs.trackstat(logs.channel(258, reject=99, cn0=-0.5), logs.channel(0, reject=99),
                                 logs.channel(7, reject=99, cn0=NAN))
        self.assertEqual(self.values(content, "sats_tracked"), ["0,0,0"])
        self.assertIn([RECEIVER, *NOTHING_TRACKED, 1], self.told(content, "diagnostics.raise"))
        self.assertEqual(self.told(content, "position.sky"), [["CPositionAPI", [
            {"prn": 2, "word1": 0, "word2": 0, "cn0": 0.0},
            {"prn": 7, "word1": 0, "word2": 0, "cn0": None}]]])


class Positions(Model):
    STAT = logs.pdpstat(phases=9, third=1)

    def test_before_a_pdpstat_a_computed_solution_has_both_qualities_1(self) -> None:
        content = logs.cartesian(logs.PDPXYZ, 50)
        self.assertEqual(self.qualities(content), [[1, 1, 6]])
        self.assertEqual(self.values(content, "message18_info"), [])

    def test_qualities_go_by_the_type(self) -> None:
        wanted = {16: [1, 1, 4], 17: [1, 2, 4], 19: [0, 0, -1], 34: [2, 2, 6], 48: [1, 1, 5],
                  49: [2, 2, 6], 50: [3, 4, 6], 51: [1, 1, 6], 64: [3, 2, 2], 65: [2, 2, 2],
                  66: [1, 2, 5], 0: [0, 0, -1], 70: [0, 0, -1]}
        for kind, qualities in wanted.items():
            content = self.STAT + logs.cartesian(logs.RTKXYZ, kind)
            self.assertEqual(self.qualities(content), [qualities], kind)

    def test_a_solution_that_is_not_computed_has_no_quality(self) -> None:
        content = self.STAT + logs.cartesian(logs.RTKXYZ, 50, status=1)
        self.assertEqual(self.qualities(content), [[0, 0, 6]])
        self.assertEqual(self.values(content, "rtkxyz_quality_flag"), ["3"])

    def test_the_third_count_decides_what_the_lockout_leaves_open(self) -> None:
        position = logs.cartesian(logs.PDPXYZ, 16)
        content = self.STAT + position + logs.pdpstat(third=0) + position
        self.assertEqual([first for first, _, _ in self.qualities(content)], [2, 1])
        self.assertEqual(self.told(content, "diagnostics.clear")[-2:], [[POSITION, *GLIDE]] * 2)

    def test_a_lost_phase_is_warned_of_and_then_locks_out(self) -> None:
        position, lost = logs.cartesian(logs.PDPXYZ, 16), logs.pdpstat(phases=0, milliseconds=1500)
        content = self.STAT + position + lost + position + lost + position + self.STAT + position
        self.assertEqual(self.told(content, "logger.event"), [[
            "NovatelPositionManager", "warning",
            "Glide dropped zero phase measurements: 1800 1.500000"]])
        self.assertEqual([each for each in self.told(content, "diagnostics.raise")
                          if each[0] == POSITION], [[POSITION, *GLIDE, 1]])
        self.assertEqual([first for first, _, _ in self.qualities(content)], [2, 2, 1, 1])

    def test_firmware_above_10100_does_not_look_at_phases(self) -> None:
        lost = logs.pdpstat(phases=0) + logs.cartesian(logs.PDPXYZ, 16)
        for software, raised in ((b"OEM10100", 1), (b"OEM10101", 0)):
            content = logs.version((1, software)) + lost
            told = [each for each in self.told(content, "diagnostics.raise")
                    if each[0] == POSITION]
            self.assertEqual(len(told), raised, software)

    def test_lines_of_a_solution_and_its_statistics(self) -> None:
        content = self.STAT + logs.cartesian(logs.PDPXYZ, 16, extended=0x0B, mask=0x33)
        self.assertEqual(self.values(content, "message18_info"), [
            "0,16,0,8,0.150000,2.000000,3.000000,9,7,6,5,1,5,0,0x33"])
        self.assertEqual(self.values(content, "message18_pdpstat"),
                         ["1,2,1,4,9, 0.50,1.25000,100.00000"])

    def test_the_satellites_of_a_solution_are_those_of_its_own_list(self) -> None:
        lists = logs.satellites(logs.RTKSATS, (0, 1), (0, 3), (0, 2), (1, 1), (2, 1))
        lists += logs.satellites(logs.PDPSATS, (1, 1))
        content = lists + logs.cartesian(logs.RTKXYZ) + logs.cartesian(logs.PDPXYZ)
        self.assertEqual([fields[16] for fields in self.told(content, "position.ecef")],
                         [[2, 1, 0], [7, 0, 0]])

    def test_dilutions_are_added_as_squares(self) -> None:
        content = logs.cartesian(logs.RTKXYZ) + logs.psrdop(4, 3) + logs.cartesian(logs.RTKXYZ)
        self.assertEqual([fields[17:19] for fields in self.told(content, "position.ecef")],
                         [[100.0, 100.0], [3.0, 5.0]])

    def test_only_a_computed_pseudorange_position_is_a_reference(self) -> None:
        lists = logs.satellites(logs.PSRSATS, (0, 1), (0, 1), (1, 1))
        content = lists + logs.cartesian(logs.PSRXYZ, milliseconds=2500) + logs.cartesian(
            logs.PSRXYZ, status=1)
        self.assertEqual(self.told(content, "reference.gps"),
                         [["ReferenceManagerAPI", 1800, 2.5, *logs.PLACE, 2, 1, 0]])
        self.assertEqual(len(self.values(content, "psrxyz_info")), 2)
        self.assertEqual(self.told(content, "position.ecef"), [])

    def test_base_position_and_undulation_are_handed_on(self) -> None:
        content = logs.refstation(1.0, -2.5, INF) + logs.bestpos(-29.5, extended=0x0D, mask=3)
        self.assertEqual(self.values(content, "reference_position_ecef"), ["1.000,-2.500,inf"])
        self.assertEqual(self.told(content, "position.base"), [["CPositionAPI", 1.0, -2.5, None]])
        self.assertEqual(self.values(content, "novatel_undulation"), ["-29.500000"])
        self.assertEqual(self.values(content, "bestpos_extended_solution_info"), ["1,6,0x03"])
        self.assertEqual(self.told(content, "nmea.geoid"), [["CNMEAHandlerAPI", -29.5]])


class SentencesAndDiagnostics(Model):
    def test_four_kinds_of_sentences_are_forwarded_at_whole_seconds(self) -> None:
        content = logs.time(345_600_700) + b"".join(map(nmea, (
            "GPGGA,1", "GPGSV,1", "GPGS", "GPGSA", "GPZDA,1", "GPGST,1", "GPRMC,1")))
        told = self.told(content, "nmea.sentence")
        self.assertEqual([fields[1] for fields in told], ["GPGSV", "GPGSA", "GPZDA", "GPGST"])
        self.assertEqual({fields[2] for fields in told}, {345_600_000})
        self.assertEqual(told[0][3].encode() + b"\r\n", nmea("GPGSV,1"))

    def diagnostics(self, content: bytes) -> tuple[list, list]:
        """What is raised and what is cleared."""
        return tuple([fields[1:3] for fields in self.told(content, method)
                      if fields[0] == "CDiagnosticsObserver"]
                     for method in ("diagnostics.raise", "diagnostics.clear"))

    def test_every_descriptor_is_told_at_a_change_and_none_without(self) -> None:
        raised, cleared = self.diagnostics(logs.rxstatus(1 << 9, 1 << 11) * 2)
        self.assertEqual(raised, [[79151, 0], [79203, 12]])
        self.assertEqual(len(cleared), 11)

    def test_without_a_block_the_header_has_the_status(self) -> None:
        self.assertEqual(self.diagnostics(logs.rxstatus(0, status=1 << 3))[0], [[70950, 4]])
        self.assertEqual(self.diagnostics(logs.rxstatus(0, 0, status=1 << 3))[0], [])

    def test_first_words_of_all_ones_are_no_change(self) -> None:
        self.assertEqual(self.diagnostics(logs.rxstatus(0xFFFFFFFF, 0xFFFFFFFF)), ([], []))
