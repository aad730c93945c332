"""The daemon with the simulated receiver on its serial line: from the breakout to positions."""

from decoder.commands import CONFIGURATION
from harness.collector import Collector
from harness.scenario import MAIN, best_of_three
from harness.simulated import Simulated
from harness.simulator import SINGLE_PORT, Simulator, logs_of
from harness.waiting import wait_until

STATUS = "NovatelReceiverStatus"
RADIUS = 6_366_000  # metres, from the Earth's centre at 48 degrees north
FASTEST = 10.0  # metres a second: it is a vehicle on a field


class AtWork(Simulated):
    @best_of_three
    def test_positions_come_twenty_times_a_second_and_every_checksum_is_good(self) -> None:
        _, collector, daemon = self.at_work()
        wait_until("60 epochs", lambda: len(self.epochs(collector)) > 60, 10.0)
        daemon.end()
        self.assertEqual(set(self.steps(collector)), {50})
        whole, damaged = logs_of(collector.raw_bytes(MAIN))
        self.assertGreater(whole, 180)
        self.assertEqual(damaged, 0)

    def test_what_is_published_is_a_vehicle_on_its_field(self) -> None:
        _, collector, _ = self.at_work()
        wait_until("solutions", lambda: len(self.solutions(collector)) > 60, 10.0)
        solutions = self.solutions(collector)
        for each in solutions:
            self.assertAlmostEqual(self.length(each, "xyz"), RADIUS, delta=5000)
            self.assertLess(self.length(each, ("vx", "vy", "vz")), FASTEST)
        moved = [self.length({axis: after[axis] - before[axis] for axis in "xyz"}, "xyz")
                 for before, after in zip(solutions, solutions[1:])]
        self.assertLess(max(moved), 5.0)  # also from one kind of solution to another
        self.assertGreater(sum(moved), 1.0)

    def solutions(self, collector: Collector) -> list[dict]:
        """All but the one that says that there is none yet."""
        return [each.params for each in collector.messages("position.ecef") if each["x"] != 0.0]

    def length(self, vector: dict, axes) -> float:
        return sum(vector[axis] ** 2 for axis in axes) ** 0.5

    def test_what_it_is_and_how_it_does_is_published(self) -> None:
        _, collector, _ = self.at_work("--model", "L12GRV", "--firmware", "3.801")
        for key, value in (("component_00.model", "L12GRV"),
                           ("component_00.softwareVersion", "3.801"),
                           ("COM1_Config", "115200,NOVATEL,NOVATEL"),
                           ("ReceiverStatus", "0x00000000: ")):
            collector.wait_for_status(STATUS, key, value, 15.0)
        collector.wait_for_status("NovatelConstellationManager", "desired_channel_configuration",
                                  "4")  # with GLONASS, without SBAS
        for method in ("position.sky", "position.base", "nmea.sentence", "nmea.geoid"):
            collector.wait_for(method, seconds=15.0)

    def assert_all_accepted(self, commands: str, wanted: list[str]) -> None:
        simulator, _, _ = self.at_work(commands=commands)
        wait_until("all answers", lambda: len(simulator.answers()) >= len(wanted), 15.0,
                   lambda: len(simulator.answers()))
        self.assert_same_lines(wanted, simulator.heard())
        self.assertEqual(simulator.answers(), ["OK"] * len(wanted))

    def test_every_command_of_the_configuration_is_accepted(self) -> None:
        self.assert_all_accepted("", [each.rstrip() for each in CONFIGURATION])

    def test_every_command_for_a_single_port_is_accepted(self) -> None:
        self.assert_all_accepted(str(SINGLE_PORT), SINGLE_PORT.read_text().splitlines())

    def test_at_another_speed_nothing_is_understood_on_either_side(self) -> None:
        collector = self.collector()
        simulator = self.simulator()  # at 9600 baud
        daemon = self.daemon(simulator)
        simulator.wait_for_line(r"^com1 < \(noise\)")
        daemon.wait_for_passes(20)
        self.assertEqual(collector.messages("logger.data", name=MAIN), [])
        self.assertEqual(simulator.heard(), [])


class Breakouts(Simulated):
    def assert_brought_to_115200(self, simulator: Simulator, collector: Collector) -> None:
        self.wait_for_position(collector)
        self.assertIn("com thisport 115200", simulator.heard())
        wait_until("20 epochs", lambda: len(self.epochs(collector)) > 20)

    def test_softbreak_brings_it_from_9600_baud_to_the_speed_that_is_set(self) -> None:
        collector, simulator = self.collector(), self.simulator()
        self.daemon(simulator, breakout="softbreak")
        self.assert_brought_to_115200(simulator, collector)
        self.assertEqual(simulator.heard()[:5], ["+++", "+++", "log version",
                                                 "com thisport 115200", "log comconfig"])

    def test_softbreak_brings_back_a_port_that_understands_no_commands(self) -> None:
        collector, simulator = self.collector(), self.simulator()
        terminal = self.terminal(simulator, "com1", 9600)
        terminal.ask("interfacemode zq2 zq2", b"<OK\r\n[COM1]")
        terminal.close()
        self.daemon(simulator, breakout="softbreak")
        self.assert_brought_to_115200(simulator, collector)

    def test_break_works_where_the_speed_is_already_the_low_one(self) -> None:
        collector, simulator = self.collector(), self.simulator()
        self.daemon(simulator, breakout="break")
        self.assert_brought_to_115200(simulator, collector)
