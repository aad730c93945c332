"""What the observers publish: positions, the sky, the reference, sentences and diagnostics."""

import time

from decoder.commands import CONFIGURATION
from harness import logs
from harness.collector import Collector
from harness.daemon import Daemon
from harness.messages import Message
from harness.scenario import MAIN, Scenario
from harness.sentences import binary, nmea
from harness.serial_line import SerialLine
from harness.waiting import wait_until

POSITION, RECEIVER = "NovatelPositionManager", "NovatelReceiverStatus"
GLIDE = {"name": "CPositionManager", "code": 79141, "sub": 2}
LOCKOUT = 1  # seconds
CLOCK_SLACK = 0.05  # seconds by which two clocks and the moments of reading them may differ
SINGLE, NARROW_INTEGER = 16, 50


class OfflineRun(Scenario):
    def run_over(self, content: bytes) -> Collector:
        """A run to its end, and all that it told."""
        collector = self.collector()
        self.run_corvane("-f", self.file("capture", content))
        collector.wait_for_the_end()
        return collector

    def test_the_start_is_told_in_its_order(self) -> None:
        told = [each for each in self.run_over(b"").messages()
                if each.method != "diagnostics.activity"]
        self.assertEqual([each["name"] for each in told[:5]], [
            POSITION, RECEIVER, "NovatelConstellationManager", "NovatelPortHandler2", MAIN])
        self.assertEqual([each.method for each in told[:14]], [
            *["logger.register"] * 5, *["logger.event"] * 2, "position.sky", "logger.status",
            "position.ecef", *["logger.status"] * 3, "logger.event"])
        self.assertEqual([each["key"] for each in told[:13] if "key" in each.params], [
            "desired_channel_configuration", "started", "started", "receiver_initialisations"])
        self.assertEqual({each["name"] for each in told[13:]}, {MAIN})
        self.assertEqual([each["text"] for each in told[13:]], [
            f"Sending buffered command: {command}" for command in CONFIGURATION])

    def test_without_a_position_a_placeholder_is_told(self) -> None:
        before = time.time()
        first, = self.run_over(b"").messages("position.ecef")
        self.assertEqual((first["name"], first["x"], first["sx"], first["week"]),
                         ("CPositionAPI", 0.0, 1e9, 0))
        self.assertEqual((first["solutionClass"], first["hdop"], first["vdop"]), (4, 100.0, 100.0))
        self.assertGreater(first["hostTime"], before - CLOCK_SLACK)
        self.assertLess(first["hostTime"], time.time() + CLOCK_SLACK)

    def test_a_fixed_position_leaves_whole(self) -> None:
        lists = logs.satellites(logs.RTKSATS, (0, 1), (0, 3), (1, 1))
        content = logs.pdpstat() + logs.psrdop(4, 3) + lists + logs.cartesian(
            logs.RTKXYZ, NARROW_INTEGER, milliseconds=2500)
        _, told = self.run_over(content).messages("position.ecef")
        x, y, z = logs.PLACE
        self.assertEqual({name: told[name] for name in told.params
                          if name not in ("time", "hostTime", "velocityLatency")}, {
            "name": "CPositionAPI", "x": x, "y": y, "z": z, "vx": 1.0, "vy": -2.0, "vz": 0.125,
            "sx": 0.5, "sy": 1.5, "sz": 2.5, "week": 1800, "seconds": 2.5, "positionQuality": 3,
            "fixQuality": 4, "differentialAge": 2.0, "satellites": [2, 1, 0], "hdop": 3.0,
            "vdop": 5.0, "solutionClass": 6})
        self.assertAlmostEqual(told["velocityLatency"], 0.15, places=6)

    def test_a_computed_pseudorange_position_goes_to_the_reference_manager(self) -> None:
        content = logs.satellites(logs.PSRSATS, (0, 1), (1, 1)) + logs.cartesian(
            logs.PSRXYZ, milliseconds=2500) + logs.cartesian(logs.PSRXYZ, status=1)
        told, = self.run_over(content).messages("reference.gps")
        x, y, z = logs.PLACE
        self.assertEqual({name: told[name] for name in told.params if name != "time"}, {
            "name": "ReferenceManagerAPI", "week": 1800, "seconds": 2.5, "x": x, "y": y, "z": z,
            "gps": 1, "glonass": 1, "other": 0})

    def test_a_view_of_the_satellites_is_forwarded_and_a_fix_sentence_is_not(self) -> None:
        content = logs.time(345_600_700) + nmea("GPGGA,1") + nmea("GPGSV,1,1,00")
        told, = self.run_over(content).messages("nmea.sentence")
        self.assertEqual((told["name"], told["id"], told["gpsTime"], told["sentence"]),
                         ("CNMEAHandlerAPI", "GPGSV", 345_600_000, "$GPGSV,1,1,00*79"))

    def test_a_sentence_before_any_time_is_forwarded_with_time_0(self) -> None:
        told, = self.run_over(nmea("GPZDA,1")).messages("nmea.sentence")
        self.assertEqual(told["gpsTime"], 0)

    def test_an_idle_time_of_5_raises_the_overload_and_one_of_6_clears_it(self) -> None:
        collector = self.run_over(binary(999, idle=5) + binary(999, idle=5) + binary(999, idle=6))
        told = [each.method for each in collector.messages(
            name="CReceiverStatusObserver", code=79195, sub=0)]
        self.assertEqual(told, ["diagnostics.raise", "diagnostics.clear"])
        self.assertEqual(collector.status(RECEIVER, "ReceiverCPUIdlePercentage"), "3.0")

    def test_tracking_is_told_by_counts_and_names(self) -> None:
        collector = self.run_over(logs.trackstat(
            logs.channel(122), logs.channel(131), logs.channel(3), logs.channel(3, signal=9),
            logs.channel(40), logs.channel(9, reject=99)))
        self.assertEqual(collector.status(RECEIVER, "sbas_tracking"), "122 (WAAS),131 (EGNOS),")
        self.assertEqual(collector.status(RECEIVER, "sats_tracked"), "4,2,1")

    def test_words_that_have_not_changed_cause_no_diagnostics(self) -> None:
        told = self.run_over(logs.rxstatus(1 << 1, 0) * 2).messages(name="CDiagnosticsObserver")
        self.assertEqual(len(told), 13)
        self.assertEqual([(each["code"], each["sub"]) for each in told
                          if each.method == "diagnostics.raise"], [(79202, 12)])


class LiveLine(Scenario):
    """A receiver on a serial line, and somebody who listens."""

    def connected(self, settings: str = "") -> tuple[Collector, SerialLine, Daemon]:
        collector = self.collector()
        line = self.serial_line()
        path = self.file("settings.conf", settings.encode())
        daemon = self.corvane("-s", str(line.device), environment={"CORVANE_CONFIG": path})
        line.wait_until_open()
        collector.wait_for("logger.status", key="receiver_initialisations")
        return collector, line, daemon


class ToldAgain(LiveLine):
    """What is a state and no line is told to every server that comes, as it was the last time."""

    STATES = ("position.ecef", "position.sky", "position.base", "nmea.geoid")
    LINES_AND_STATE = (logs.cartesian(logs.PSRXYZ) + nmea("GPGSV,1,1,00")
                       + logs.refstation(1.0, 2.0, 3.0))

    def test_the_last_states_are_told_again_with_their_own_time(self) -> None:
        collector, line, _ = self.connected()
        for number in (1, 2):
            line.say(logs.cartesian(logs.PDPXYZ, milliseconds=number)
                     + logs.trackstat(logs.channel(number)) + logs.bestpos(float(number))
                     + logs.refstation(1.0, 2.0, float(number)))
        collector.wait_for("position.base", z=2.0)
        first = {method: collector.messages(method)[-1] for method in self.STATES}
        self.restart(collector)
        wait_until("all that there is", lambda: self.again(collector, "diagnostics.activity"))
        for method in self.STATES:
            again, = self.again(collector, method)
            self.assertEqual(again.params, first[method].params)
        self.assertEqual(first["position.ecef"]["seconds"], 0.002)
        self.assertEqual(first["nmea.geoid"]["separation"], 2.0)
        self.assertEqual([each["prn"] for each in first["position.sky"]["satellites"]], [2])

    def test_the_last_word_on_each_diagnostic_is_told_again_with_its_own_time(self) -> None:
        collector, line, _ = self.connected()
        line.say(logs.rxstatus(0, 0) + logs.rxstatus(1 << 1, 0))
        wait_until("the diagnostics", lambda: len(collector.messages(
            name="CDiagnosticsObserver")) == 26)
        last = collector.messages(name="CDiagnosticsObserver")[13:]
        self.restart(collector)
        again = wait_until("all of them", lambda: self.all_again(collector, len(last)))
        self.assertCountEqual([(each.method, sorted(each.params.items())) for each in again],
                              [(each.method, sorted(each.params.items())) for each in last])

    def test_lines_are_not_told_again(self) -> None:
        collector, line, _ = self.connected()
        line.say(self.LINES_AND_STATE)
        collector.wait_for("reference.gps")
        collector.wait_for("nmea.sentence")
        collector.wait_for("position.base")
        self.restart(collector)
        wait_until("the state", lambda: self.again(collector, "position.base"))
        self.assertEqual(self.again(collector, "reference.gps"), [])
        self.assertEqual(self.again(collector, "nmea.sentence"), [])

    def test_lines_wait_for_a_server_and_come_before_the_state(self) -> None:
        collector = self.collector(started=False)
        line = self.serial_line()
        daemon = self.corvane("-s", str(line.device))
        line.wait_until_open()
        line.say(self.LINES_AND_STATE)
        daemon.wait_for_passes(2)
        collector.start()
        collector.wait_for("position.base")
        methods = [each.method for each in collector.on_connection(0)]
        for of_line in ("reference.gps", "nmea.sentence"):
            self.assertLess(methods.index(of_line), methods.index("position.sky"))

    def restart(self, collector: Collector) -> None:
        collector.stop()
        collector.start()
        collector.wait_for_connection(2)

    def again(self, collector: Collector, method: str) -> list[Message]:
        return [each for each in collector.on_connection(1) if each.method == method]

    def all_again(self, collector: Collector, count: int) -> list[Message]:
        told = [each for each in collector.on_connection(1)
                if each["name"] == "CDiagnosticsObserver"]
        return told if len(told) == count else []


class Lockout(LiveLine):
    """After a loss of the phases single solutions count for less, for as long as is set."""

    SETTINGS = f"[glide]\nobstruction_lockout = {LOCKOUT}\n"

    def epoch(self, collector: Collector, line: SerialLine, phases: int) -> Message:
        """The receiver says a position after its phases; what is told of that position."""
        before = len(collector.messages("position.ecef"))
        line.say(logs.pdpstat(phases=phases) + logs.cartesian(logs.PDPXYZ, SINGLE))
        return wait_until("the position",
                          lambda: collector.messages("position.ecef")[before:])[0]

    def until_good(self, collector: Collector, line: SerialLine) -> Message:
        """Epochs one after another, with their phases, until one is good again."""
        return wait_until("a good position", lambda: self.good_epoch(collector, line),
                          10.0 * LOCKOUT)

    def good_epoch(self, collector: Collector, line: SerialLine) -> Message | None:
        told = self.epoch(collector, line, phases=9)
        return told if told["positionQuality"] == 2 else None

    def assert_over_after_the_lockout(self, begun: Message, good: Message) -> None:
        elapsed = good["time"] - begun["time"]
        self.assertGreater(elapsed, LOCKOUT - CLOCK_SLACK)
        self.assertLess(elapsed, 2.0 * LOCKOUT)

    def test_it_lasts_for_the_seconds_of_the_setting(self) -> None:
        collector, line, _ = self.connected(self.SETTINGS)
        self.assertEqual(self.epoch(collector, line, phases=0)["positionQuality"], 1)
        begun = collector.wait_for("diagnostics.raise", **GLIDE, value=1)
        self.assertEqual(collector.messages("diagnostics.clear", **GLIDE), [])
        good = self.until_good(collector, line)
        self.assert_over_after_the_lockout(begun, good)
        cleared, = collector.messages("diagnostics.clear", **GLIDE)
        order = collector.messages()
        self.assertLess(order.index(cleared), order.index(good))
        self.assertEqual(len(collector.messages("diagnostics.raise", **GLIDE)), 1)

    def test_it_runs_from_the_last_epoch_without_phases(self) -> None:
        collector, line, _ = self.connected(self.SETTINGS)
        self.epoch(collector, line, phases=0)
        first = collector.wait_for("diagnostics.raise", **GLIDE)
        wait_until("more than a lockout to pass", lambda: self.epoch(
            collector, line, phases=0)["time"] > first["time"] + 1.2 * LOCKOUT)
        last = collector.messages("diagnostics.raise", **GLIDE)[-1]
        self.assert_over_after_the_lockout(last, self.until_good(collector, line))
        qualities = {each["positionQuality"] for each in collector.messages("position.ecef")[:-1]}
        self.assertEqual(qualities - {0}, {1})

    def test_every_good_epoch_clears_again(self) -> None:
        collector, line, _ = self.connected(self.SETTINGS)
        for count in (1, 2, 3):
            self.assertEqual(self.epoch(collector, line, phases=9)["positionQuality"], 2)
            self.assertEqual(len(collector.messages("diagnostics.clear", **GLIDE)), count)

    def test_without_the_setting_it_lasts_longer_than_a_second(self) -> None:
        collector, line, _ = self.connected()
        self.epoch(collector, line, phases=0)
        begun = collector.wait_for("diagnostics.raise", **GLIDE)
        wait_until("a second to pass", lambda: self.epoch(
            collector, line, phases=9)["time"] > begun["time"] + 1.5)
        self.assertEqual(collector.messages("diagnostics.clear", **GLIDE), [])

    def test_with_firmware_above_10100_there_is_none(self) -> None:
        collector, line, _ = self.connected(self.SETTINGS)
        line.say(logs.version((1, b"OEM010101RN0000")))
        collector.wait_for("logger.status", key="component_00.componentType")
        self.assertEqual(self.epoch(collector, line, phases=0)["positionQuality"], 2)
        self.assertEqual(collector.messages("diagnostics.raise", **GLIDE), [])
