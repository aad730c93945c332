"""The reset of the PDP filter, for receivers that come to no fixed solution within a minute."""

from harness import logs
from harness.controlled import Controlled
from harness.receiver import Receiver
from harness.sentences import numbered

RESET = "pdpfilter reset\r\n"
ENABLED = "pdp_filter_reset = 1\n"
FLOAT, FIXED = 34, 50  # position types of narrow lane
NOT_COMPUTED = 1
LAST = 600_000  # seconds of the week, later than any solution here


class FilterReset(Controlled):
    def after(self, *solutions: bytes, settings: str = ENABLED) -> Receiver:
        """A receiver that has said these, and has been told whatever it was to be told."""
        collector, receiver = self.collector(), self.receiver()
        daemon = self.control(receiver, "-c", self.file("commands", b"log version"),
                              settings=settings)
        receiver.wait_for_commands(1)
        for solution in solutions:
            receiver.say(solution)
        receiver.say(numbered(LAST))
        collector.wait_for_numbers([LAST])
        daemon.wait_for_passes(3)
        self.assertEqual(receiver.commands()[0], "log version\r\n")
        return receiver

    def resets(self, *solutions: bytes, settings: str = ENABLED) -> int:
        commands = self.after(*solutions, settings=settings).commands()[1:]
        self.assertEqual(set(commands) - {RESET}, set())
        return len(commands)

    def test_a_minute_of_float_solutions_leads_to_one(self) -> None:
        self.assertEqual(self.resets(*self.series(range(0, 180_001, 500))), 1)

    def test_a_solution_just_before_the_minute_is_over_leads_to_none(self) -> None:
        self.assertEqual(self.resets(*self.series([0, 59_999])), 0)

    def test_a_solution_at_the_very_minute_leads_to_one(self) -> None:
        self.assertEqual(self.resets(*self.series([0, 60_000])), 1)

    def test_a_fixed_solution_in_between_forbids_it_for_ever(self) -> None:
        fixed = logs.cartesian(logs.RTKXYZ, FIXED, milliseconds=30_000)
        self.assertEqual(self.resets(*self.series([0]), fixed, *self.series([60_000, 200_000])), 0)

    def test_a_solution_that_is_not_computed_starts_no_minute(self) -> None:
        none = [logs.cartesian(logs.RTKXYZ, FLOAT, status=NOT_COMPUTED, milliseconds=time)
                for time in (0, 60_000)]
        self.assertEqual(self.resets(*none, *self.series([70_000, 129_999])), 0)

    def test_solutions_of_other_kinds_lead_to_none(self) -> None:
        other = [logs.cartesian(log, FLOAT, milliseconds=time)
                 for log in (logs.PDPXYZ, logs.PSRXYZ) for time in (0, 60_000)]
        self.assertEqual(self.resets(*other), 0)

    def test_without_the_setting_there_is_none(self) -> None:
        self.assertEqual(self.resets(*self.series([0, 60_000, 120_000]), settings=""), 0)

    def series(self, times) -> list[bytes]:
        """Float solutions at these milliseconds of the week."""
        return [logs.cartesian(logs.RTKXYZ, FLOAT, milliseconds=time) for time in times]
