"""The whole system without hardware: the daemon finds, configures and steers its receiver."""

from decoder.commands import CONFIGURATION
from harness.scenario import MAIN, SECOND
from harness.waiting import wait_until
from harness.whole import INTEGER_FIX, WholeSystem

TO_INTEGER = 30.0  # seconds: the daemon resets the receiver's RTK filter at the start


class FromTheStart(WholeSystem):
    def test_to_the_first_fixed_position_and_on_by_what_an_operator_wants(self) -> None:
        collector, simulator, *_ = self.at_work()
        first = wait_until("a fixed position", lambda: [
            each for each in self.positions(collector) if each["fixQuality"] == INTEGER_FIX],
            TO_INTEGER)[0]
        self.assertEqual((first["solutionClass"], first["positionQuality"]), (6, 3))
        heard = simulator.heard()
        begin = heard.index("unlogall thisport")
        self.assert_same_lines([each.rstrip() for each in CONFIGURATION],
                               heard[begin:begin + len(CONFIGURATION)])
        for handler in (MAIN, SECOND):
            collector.wait_for("logger.data", name=handler, seconds=5.0)

        self.operate("nmea", "GPGGA", "5Hz")
        wait_until("the sentence", lambda: b"$GPGGA," in collector.raw_bytes(MAIN), 5.0)
        self.assertEqual(simulator.heard()[-1], "log GPGGA ontime 0.200")
        self.assertIn("klobuchar", self.operate("ionosphere", "klobuchar").lower())
        simulator.wait_for_line("setionotype klobuchar")
        self.assertIn("ionosphere_mode = 1", self.settings_file.read_text())
        self.wait_for_more_positions(collector, 5.0)


class Interrupted(WholeSystem):
    def test_a_multiplexer_that_is_killed_and_comes_back_is_found_again(self) -> None:
        collector, simulator, mux, daemon = self.at_work()
        mux.end()
        collector.wait_for("logger.event", name=MAIN, level="error")
        self.multiplex(simulator)
        before = self.positions(collector)[-1]
        after = self.wait_for_more_positions(collector, 5.0)
        self.assertGreater(after["seconds"], before["seconds"])
        self.assertTrue(daemon.is_running())
        self.assertEqual(collector.status(MAIN, "receiver_initialisations"), "1")
