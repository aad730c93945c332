"""The base of the scenarios with everything but a receiver of metal: simulator, multiplexer, daemon
without arguments of its own, and the command line."""

import contextlib
import subprocess
from pathlib import Path

from harness import places
from harness.collector import Collector
from harness.daemon import Daemon
from harness.messages import Message
from harness.mux import Mux
from harness.muxed import Muxed
from harness.simulator import Simulator
from harness.waiting import NotInTime, wait_until

INTEGER_START = "2370,302480"  # the RTK solution is an integer one for the next 200 s
INTEGER_FIX = 4  # the published fixQuality of a narrow-lane integer solution
TO_FIRST_POSITION = 15.0  # seconds, with the breakout
ATTEMPTS = 3


class WholeSystem(Muxed):
    def simulate(self, *options: str) -> Simulator:
        """Devices stay under their names over several runs."""
        simulator = Simulator(self.folder / "simulator", "--start", INTEGER_START, *options)
        self.addCleanup(simulator.kill)
        return simulator

    def multiplex(self, simulator: Simulator) -> Mux:
        """Served already: what the daemon writes to a port that is not there yet is lost."""
        mux = self.mux(f"--port=50={simulator.device('com1')}",
                       f"--port=52={simulator.device('usb2')}")
        mux.wait_for_line("^remote procedures: served")
        return mux

    def daemon(self, settings: str = "") -> Daemon:
        """As it is started without arguments, but for its priority."""
        self.settings_file = Path(self.file("settings.conf", f"[Corvane]\n{settings}".encode()))
        return self.bare_corvane("-p", environment={"CORVANE_CONFIG": str(self.settings_file)})

    def at_work(self, settings: str = "") -> tuple[Collector, Simulator, Mux, Daemon]:
        """Everything started, and the first position there.

        A pseudo-terminal does not keep bytes at the speed at which they were written: on a machine
        that is busy with other things the simulator may read the command for another speed after
        the speed has changed, and takes it for noise. That costs another attempt.
        """
        collector = self.collector()
        for _ in range(ATTEMPTS):
            simulator = self.simulate()
            mux = self.multiplex(simulator)
            daemon = self.daemon(settings)
            with contextlib.suppress(NotInTime):
                wait_until("the first position", lambda: self.positions(collector),
                           TO_FIRST_POSITION)
                return collector, simulator, mux, daemon
            for program in (daemon, mux, simulator):
                program.end()
        raise NotInTime(f"no position in {ATTEMPTS} attempts")

    def operate(self, *arguments: str, seconds: float = 30.0) -> str:
        """What `corvanectl` prints; it must do what it is told."""
        run = subprocess.run([places.binaries() / "corvanectl", *arguments], capture_output=True,
                             text=True, check=False, timeout=seconds)
        self.assertEqual(run.returncode, 0, run.stderr)
        return run.stdout

    def positions(self, collector: Collector) -> list[Message]:
        """All but the one that says that there is none yet."""
        return [each for each in collector.messages("position.ecef") if each["x"] != 0.0]

    def wait_for_more_positions(self, collector: Collector, seconds: float) -> Message:
        """The last of ten more than there are now."""
        wanted = len(self.positions(collector)) + 10
        return wait_until("more positions", lambda: self.positions(collector)[wanted - 1:],
                          seconds)[0]
