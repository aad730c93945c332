#!/usr/bin/env python3
"""Measures the hub with many clients while the whole system runs at 20 Hz.

Simulator, multiplexer, daemon and hub run as in scripts/demo. Dashboards (the live stream) and
clients of gpsd (JSON) are connected, first one of each, then many. Of each solution the time runs
from its publication by the daemon (which the live stream tells) to its arrival at every client: a
client of gpsd gets it at once, a dashboard with the next live view, made five times a second. Also
given: the hub's memory and processor time.

    bench/hub.py [--clients N] [--seconds N] [--programs FOLDER]

It takes the system's fixed ports: run it where nothing else does, such as in `unshare -rn`.
"""

import argparse
import json
import os
import pathlib
import selectors
import socket
import statistics
import subprocess
import tempfile
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
HTTP_PORT, GPSD_PORT, MULTIPLEXER_PORT = 8080, 2947, 5309
SETTLING = 3.0  # seconds


class Client:
    """Keeps the arrivals of what a line of its connection tells."""

    def __init__(self, port: int, greeting: bytes) -> None:
        self.socket = socket.create_connection(("127.0.0.1", port))
        self.socket.sendall(greeting)
        self.socket.setblocking(False)
        self.arrivals: list[tuple[float, float | None, float]] = []  # x, published, arrived
        self._rest = b""

    def take(self, measuring: bool) -> None:
        data = self.socket.recv(1 << 20)
        now = time.time()
        if not data:
            raise SystemExit("the hub has closed a connection")
        *lines, self._rest = (self._rest + self.plain(data)).split(b"\n")
        if measuring:
            for line in lines:
                self.look(line.strip(), now)

    def plain(self, data: bytes) -> bytes:
        return data

    def look(self, line: bytes, now: float) -> None:
        raise NotImplementedError


class Dashboard(Client):
    def __init__(self) -> None:
        super().__init__(HTTP_PORT, b"GET /api/stream HTTP/1.1\r\nHost: localhost\r\n\r\n")
        self._chunks: bytes | None = None  # what came of them and is not taken yet

    def plain(self, data: bytes) -> bytes:
        """Without the head of the answer and the lengths of its chunks (RFC 9112, section 7.1)."""
        if self._chunks is None:
            head, _, data = data.partition(b"\r\n\r\n")
            if b" 200 " not in head:
                raise SystemExit(f"no stream: {head!r}")
            self._chunks = b""
        self._chunks += data
        taken = b""
        while b"\r\n" in self._chunks:
            length, _, rest = self._chunks.partition(b"\r\n")
            size = int(length, 16)
            if len(rest) < size + 2:
                break
            taken, self._chunks = taken + rest[:size], rest[size + 2:]
        return taken

    def look(self, line: bytes, now: float) -> None:
        if line.startswith(b'data: {"base"'):  # the live view, which names its members in order
            solution = json.loads(line[6:])["solution"]
            if solution and solution["hasPosition"]:
                self.arrivals.append((solution["x"], solution["time"], now))


class GPSDClient(Client):
    def __init__(self) -> None:
        super().__init__(GPSD_PORT, b'?WATCH={"enable":true,"json":true}\n')

    def look(self, line: bytes, now: float) -> None:
        if line.startswith(b'{"class":"TPV"'):
            report = json.loads(line)
            if "ecefx" in report:
                self.arrivals.append((report["ecefx"], None, now))


def memory(pid: int) -> float:
    """Resident, MB."""
    for line in pathlib.Path(f"/proc/{pid}/status").read_text().splitlines():
        if line.startswith("VmRSS:"):
            return int(line.split()[1]) / 1024
    raise SystemExit("no memory figure")


def processor_seconds(pid: int) -> float:
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def shown(times: list[float]) -> str:
    ordered = sorted(times)
    return (f"median {statistics.median(ordered) * 1e3:7.2f} ms, 99th percentile "
            f"{ordered[int(0.99 * len(ordered))] * 1e3:7.2f} ms ({len(ordered)} arrivals)")


def measure(hub: subprocess.Popen, count: int, seconds: float) -> None:
    clients = [Dashboard() for _ in range(count)] + [GPSDClient() for _ in range(count)]
    selector = selectors.DefaultSelector()
    for client in clients:
        selector.register(client.socket, selectors.EVENT_READ, client)
    begin = time.time() + SETTLING
    measured_from = None
    while (now := time.time()) < begin + seconds:
        if measured_from is None and now >= begin:
            measured_from = processor_seconds(hub.pid)
        for key, _ in selector.select(0.1):
            key.data.take(now >= begin)
    share = (processor_seconds(hub.pid) - measured_from) / seconds
    published = {x: told for client in clients for x, told, _ in client.arrivals if told}
    dashboards = [arrived - told for client in clients for _, told, arrived in client.arrivals
                  if told is not None]
    gpsd = [arrived - published[x] for client in clients for x, told, arrived in client.arrivals
            if told is None and x in published]
    print(f"{count} dashboards and {count} clients of gpsd: memory {memory(hub.pid):.1f} MB, "
          f"{share * 100:.1f} % of a core")
    print(f"  to clients of gpsd: {shown(gpsd)}")
    print(f"  to dashboards:      {shown(dashboards)}")
    for client in clients:
        client.socket.close()


def wait_for_multiplexer() -> None:
    """What the daemon writes to a port that is not there yet is lost, and costs it half a minute."""
    for _ in range(500):
        with socket.socket() as probe:
            if probe.connect_ex(("127.0.0.1", MULTIPLEXER_PORT)) == 0:
                return
        time.sleep(0.02)
    raise SystemExit("no multiplexer within 10 s")


def wait_for_position() -> None:
    end = time.monotonic() + 40.0
    while time.monotonic() < end:
        try:
            with socket.create_connection(("127.0.0.1", HTTP_PORT)) as connection:
                connection.sendall(b"GET /healthz HTTP/1.0\r\nHost: localhost\r\n\r\n")
                if b" 200 " in connection.recv(100):
                    return
        except OSError:
            pass
        time.sleep(0.2)
    raise SystemExit("no position within 40 s")


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--clients", type=int, default=50)
    parser.add_argument("--seconds", type=float, default=30.0)
    parser.add_argument("--programs", type=pathlib.Path, default=ROOT / "build/release/bin")
    options = parser.parse_args()

    with tempfile.TemporaryDirectory() as name:
        folder = pathlib.Path(name)
        devices = folder / "receiver"
        environment = dict(os.environ, CORVANE_TRACE="off",
                           CORVANE_CONFIG=str(folder / "none.conf"))
        running = []
        try:
            for program, arguments in (
                    ("corvane-hub", ["--state-dir", folder / "hub"]),
                    ("corvane-sim", ["--dir", devices, "--start", "2370,302540"]),
                    ("corvane-mux", ["--port", f"50={devices}/com1",
                                     "--port", f"52={devices}/usb2"]),
                    ("corvane", ["-p"])):
                running.append(subprocess.Popen([options.programs / program, *arguments],
                                                env=environment, stdout=subprocess.DEVNULL,
                                                stderr=subprocess.DEVNULL))
                if program == "corvane-mux":
                    wait_for_multiplexer()
            wait_for_position()
            measure(running[0], 1, options.seconds)
            measure(running[0], options.clients, options.seconds)
        finally:
            for program in reversed(running):
                program.terminate()
            for program in running:
                program.wait()


if __name__ == "__main__":
    main()
