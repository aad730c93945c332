"""The base of the scenarios in which the daemon loads firmware into its receiver."""

from collections.abc import Iterator

from harness.collector import Collector
from harness.daemon import Daemon
from harness.loading_receiver import LoadingReceiver
from harness.rpc_client import RPCClient
from harness.steered import Steered
from harness.waiting import wait_until

LOGGER = "NovatelPositionManager"
BEGIN = ["UNLOGALL", "LOG SOFTLOADSTATUSA ONCHANGED", "SOFTLOADRESET"] * 3
COMMIT, FRESET = "SOFTLOADCOMMIT", "FRESET"
LINES_IN_BURST, BETWEEN_BURSTS = 30, 0.08  # seconds
ENDED_WELL, ENDED_BADLY = [1, 1], [0, 1]


def image(count: int) -> list[str]:
    """So many records that differ."""
    return [f"S315{number:08X}{'5A' * 16}{number % 256:02X}" for number in range(count)]


def text(records: list[str], end: str = "\r\n") -> bytes:
    return "".join(record + end for record in records).encode()


class Loading(Steered):
    def setUp(self) -> None:
        super().setUp()
        self.hub = self.collector()
        self.target = LoadingReceiver(self.serial_line())
        self.addCleanup(self.target.stop)
        self.daemon: Daemon = self.control(self.target, "-c", self.file("commands", b"log version"))
        self.target.wait_for_line("log version")
        self.rpc: RPCClient = self.client()

    def start(self, content: bytes, name: str = "firmware.shex") -> int:
        """Begins the load; how many lines the receiver had been told before."""
        before = len(self.target.lines)
        self.assertEqual(self.rpc.call("novatel_StartFirmwareUpgrade", self.file(name, content)),
                         [1])
        return before

    def progress(self) -> list[int]:
        return self.rpc.call("novatel_GetFirmwareUpgradeStatus")

    def wait_for_end(self, outcome: list[int]) -> None:
        wait_until("the end of the load", lambda: self.progress()[:2] == outcome,
                   state=self.progress)

    def whole(self, records: list[str]) -> list[str]:
        """All that the receiver is told in a load that ends well."""
        return [*BEGIN, *(f'SOFTLOADSREC "{record}"' for record in records), COMMIT, FRESET]

    def assert_nothing_follows(self, count: int) -> None:
        """After the first so many lines."""
        self.daemon.wait_for_passes(5)
        self.assert_same_lines([], self.target.texts(count))

    def errors(self, start: str = "") -> list[str]:
        """What was told as an error, beginning so."""
        told: Collector = self.hub
        return [event["text"] for event in told.messages("logger.event", name=LOGGER, level="error")
                if event["text"].startswith(start)]

    def wait_for_error(self, start: str) -> None:
        wait_until(f"the error {start!r}", lambda: self.errors(start), state=self.errors)

    def sent(self) -> Iterator[tuple[int, int, int]]:
        """Each progress that was told: bytes sent, bytes in all, the receiver's status."""
        for each in self.hub.messages("logger.status", name=LOGGER, key="softload_status"):
            sent, size, status = map(int, each["value"].split(","))
            yield sent, size, status
