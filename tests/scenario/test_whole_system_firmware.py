"""The whole system when the receiver gets other firmware: to completion, and back to work."""

from harness.firmware import firmware
from harness.scenario import MAIN
from harness.whole import WholeSystem

TO_RECOVERY = 1.0 + 30.0 + 7.0 + 20.0  # silence, reset, breakout, and what the machine takes


class Firmware(WholeSystem):
    def test_a_load_comes_to_its_end_and_the_receiver_back_to_work(self) -> None:
        collector, simulator, *_ = self.at_work("serial_port_timeout = 1\n")
        image = self.file("image", firmware("OEM060400RN0000", 300))
        self.operate("firmware", "upgrade", image)
        self.assertEqual([line for line in simulator.heard()
                          if line in ("SOFTLOADCOMMIT", "FRESET")], ["SOFTLOADCOMMIT", "FRESET"])
        self.wait_for_more_positions(collector, TO_RECOVERY)
        collector.wait_for_status(MAIN, "receiver_initialisations", "2")
