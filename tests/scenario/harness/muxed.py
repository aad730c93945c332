"""The base of the scenarios with the real multiplexer: lines, ports, clients."""

from pathlib import Path

from harness.mux import Mux, PortClient, PortRPC
from harness.receiver import Receiver
from harness.scenario import Scenario
from harness.serial_line import SerialLine


def socket_path(port: int, folder: str = "/tmp") -> str:
    return f"{folder}/tty_socket_{port}"


def pattern(count: int, seed: int = 1) -> bytes:
    """Bytes of every value, without a short period."""
    data = bytearray()
    value = seed
    while len(data) < count:
        value = (value * 1103515245 + 12345) % 2**31
        data += value.to_bytes(4, "little")
    return bytes(data[:count])


class Muxed(Scenario):
    """Whatever is started is ended."""

    def setUp(self) -> None:
        super().setUp()
        self._muxes = 0

    def mux(self, *arguments: str, prefix: tuple[str, ...] = ()) -> Mux:
        self._muxes += 1
        mux = Mux(self.folder / f"mux.{self._muxes}", arguments, prefix)
        self.addCleanup(mux.end)
        return mux

    def line(self, name: str = "gps") -> SerialLine:
        line = SerialLine(self.folder / name)
        self.addCleanup(line.unplug)
        return line

    def absent_line(self, name: str = "gps") -> SerialLine:
        line = self.line(name)
        line.unplug()
        return line

    def far_end(self, line: SerialLine) -> Receiver:
        """Takes what is written to the line."""
        receiver = Receiver(line, acknowledges=False)
        self.addCleanup(receiver.stop)
        return receiver

    def serve(self, *lines: SerialLine, first: int = 50, options: tuple[str, ...] = ()) -> Mux:
        """Lines as the ports 50, 51, ..., once they are open."""
        ports = [f"--port={first + index}={line.device}" for index, line in enumerate(lines)]
        mux = self.mux(*ports, *options)
        for line in lines:
            line.wait_until_open()
        return mux

    def client(self, mux: Mux, port: int = 50) -> PortClient:
        """One that is let in already."""
        rpc = self.rpc(mux)
        before = self.clients(rpc, port)
        client = PortClient(socket_path(port))
        self.addCleanup(client.close)
        while self.clients(rpc, port) == before:
            pass
        return client

    def rpc(self, mux: Mux) -> PortRPC:
        mux.wait_for_line("remote procedures: served")
        rpc = PortRPC()
        self.addCleanup(rpc.close)
        return rpc

    def clients(self, rpc: PortRPC, port: int) -> int:
        return next(each[5] for each in rpc.call("GetPortDump") if each[0] == port)

    def configuration(self, text: str) -> str:
        path: Path = self.folder / "mux.conf"
        path.write_text(text)
        return str(path)
