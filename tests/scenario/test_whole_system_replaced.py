"""The whole system when the receiver goes: unplugged, or with other firmware."""

from harness.scenario import MAIN
from harness.whole import WholeSystem

TO_RECOVERY = 1.0 + 30.0 + 7.0 + 15.0  # silence, reset, breakout, and what the machine takes


class Unplugged(WholeSystem):
    def test_a_receiver_that_comes_back_with_nothing_set_is_set_up_again(self) -> None:
        collector, simulator, *_ = self.at_work("serial_port_timeout = 1\n")
        simulator.kill()
        collector.wait_for("logger.event", name=MAIN, level="error",
                           text="CorvanePortTimeout resetting receiver", seconds=10.0)
        self.simulate()
        self.wait_for_more_positions(collector, TO_RECOVERY)
        collector.wait_for_status(MAIN, "receiver_initialisations", "2")
