"""The daemon with nothing to do: how often it wakes and what it costs."""

from harness.daemon import Daemon
from harness.scenario import MAIN, Scenario, best_of_three

PERIOD = 3.0  # seconds measured
BREAKOUT_SECONDS = 12.0  # the breakout that is usual takes 7 and lets no pass begin
SHARE_PERIOD = 6.0  # seconds; the kernel counts hundredths, so 0.5 % is 3 of them
MOST_PASSES = 11  # a second
LEAST_PASSES = 9
MOST_SHARE = 0.005  # of one core


class NothingListening(Scenario):
    def looping(self) -> Daemon:
        """Started with no argument but -p, and at its first pass."""
        daemon = self.bare_corvane("-p")
        daemon.wait_for_passes(1, BREAKOUT_SECONDS)
        return daemon

    @best_of_three
    def test_with_no_argument_but_p_it_runs_on_with_a_pass_every_100_ms(self) -> None:
        daemon = self.looping()
        rate = daemon.passes_per_second(PERIOD)
        self.assertTrue(daemon.is_running())
        self.assertLessEqual(rate, MOST_PASSES)
        self.assertGreaterEqual(rate, LEAST_PASSES)

    def test_with_no_argument_but_p_it_says_little_on_standard_error(self) -> None:
        daemon = self.looping()
        daemon.wait_for_passes(25)
        self.assertLess(len(daemon.stderr.splitlines()), 12, daemon.stderr)

    def test_no_pass_fails_while_nothing_can_be_opened(self) -> None:
        daemon = self.looping()
        daemon.wait_for_passes(10)
        self.assertNotIn("portHandler.HandlePort failed", daemon.trace)


class SilentPort(Scenario):
    def silent(self, **settings):
        collector = self.collector()
        line = self.serial_line()
        daemon = self.corvane("-s", str(line.device), **settings)
        line.wait_until_open()
        collector.wait_for_status(MAIN, "started", "started")
        return daemon

    @best_of_three
    def test_it_wakes_at_most_11_times_a_second(self) -> None:
        rate = self.silent().passes_per_second(PERIOD)
        self.assertLessEqual(rate, MOST_PASSES)
        self.assertGreaterEqual(rate, LEAST_PASSES)

    @best_of_three
    def test_it_takes_less_than_half_a_percent_of_one_core(self) -> None:
        daemon = self.silent(environment={"CORVANE_TRACE": "off"})
        self.assertLess(daemon.processor_share(SHARE_PERIOD), MOST_SHARE)
