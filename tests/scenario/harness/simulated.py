"""The base of the scenarios in which the daemon works with the simulated receiver."""

from harness.collector import Collector
from harness.daemon import Daemon
from harness.scenario import MAIN
from harness.simulator import SINGLE_PORT, Simulator, Terminal
from harness.steered import Steered

INTEGER_START = "2370,302480"  # the RTK solution is an integer one for the next 200 s
PDPXYZ = "QRS_471"
FIRST_POSITION = 15.0  # seconds, with a breakout


class Simulated(Steered):
    """A simulator, its devices, and daemons on its first one."""

    def simulator(self, *options: str, start: str = INTEGER_START) -> Simulator:
        simulator = Simulator(self.folder / "simulator", "--start", start, *options)
        self.addCleanup(simulator.kill)
        return simulator

    def terminal(self, simulator: Simulator, port: str, speed: int | None = None) -> Terminal:
        terminal = Terminal(simulator.device(port), speed)
        self.addCleanup(terminal.close)
        return terminal

    def daemon(self, simulator: Simulator, *, breakout: str = "none", settings: str = "",
               commands: str = str(SINGLE_PORT)) -> Daemon:
        """At 115200 baud; without commands it has its own."""
        chosen = ("-c", commands) if commands else ()
        return self.bare_corvane("-p", "-u", breakout, "-b", "115200", "-s",
                                 simulator.device("com1"), *chosen,
                                 environment=self.settings(settings))

    def at_work(self, *options: str, start: str = INTEGER_START,
                **daemon) -> tuple[Simulator, Collector, Daemon]:
        """A receiver that has the daemon's speed, and positions."""
        collector = self.collector()
        simulator = self.simulator("--baud", "115200", *options, start=start)
        running = self.daemon(simulator, **daemon)
        self.wait_for_position(collector)
        return simulator, collector, running

    def wait_for_position(self, collector: Collector) -> None:
        collector.wait_for("logger.data", name=MAIN, key=PDPXYZ, seconds=FIRST_POSITION)

    def epochs(self, collector: Collector) -> list[int]:
        """The times of the PDPXYZ logs, in milliseconds of week."""
        lines = collector.messages("logger.data", name=MAIN, key=PDPXYZ)
        return [round(float(line["value"].split(",")[2]) * 1000) for line in lines]

    def steps(self, collector: Collector) -> list[int]:
        """The milliseconds between one PDPXYZ log and the next."""
        epochs = self.epochs(collector)
        return [after - before for before, after in zip(epochs, epochs[1:])]
