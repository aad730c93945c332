#!/usr/bin/env python3
"""Measures how long the daemon takes from the last byte of a solution to its publication.

A receiver's whole output at 20 Hz, written beforehand by corvane-sim, goes over a pseudo-terminal
in its own time. For each RTKXYZ log the time runs from the end of the write of its last byte to the
arrival of its position.ecef at a server on TCP 10001. The trace is off. Also given: the part of a
core that the daemon takes, and the time that a line takes through a bare pseudo-terminal and a bare
connection of this program's own, which is what the figures are to be held against.

    bench/latency.py [--seconds N] [--programs FOLDER]
"""

import argparse
import json
import os
import pathlib
import socket
import statistics
import struct
import subprocess
import tempfile
import threading
import time
import tty

ROOT = pathlib.Path(__file__).resolve().parent.parent
HUB_PORT = 10001
RTKXYZ = 244
START = "2370,302540"


def logs_of(stream: bytes) -> list[tuple[int, int, bytes]]:
    """Identifier, milliseconds of week and bytes of each binary log; what is between goes along
    with the log behind it."""
    logs, begin, at = [], 0, stream.find(b"\xaaD\x12")
    while at >= 0 and at + 28 <= len(stream):
        identifier, length = struct.unpack_from("<H2xH", stream, at + 4)
        end = at + stream[at + 3] + length + 4
        milliseconds, = struct.unpack_from("<I", stream, at + 16)
        logs.append((identifier, milliseconds, stream[begin:end]))
        begin, at = end, stream.find(b"\xaaD\x12", end)
    return logs


class Server:
    """Notes when each position comes."""

    def __init__(self) -> None:
        self.arrivals: dict[tuple[float, float], float] = {}
        self._server = socket.create_server(("127.0.0.1", HUB_PORT))
        self.connected = threading.Event()
        threading.Thread(target=self._serve, daemon=True).start()

    def _serve(self) -> None:
        client, _ = self._server.accept()
        self.connected.set()
        rest = b""
        while data := client.recv(1 << 20):
            now = time.monotonic()
            *lines, rest = (rest + data).split(b"\n")
            for line in lines:
                if b'"position.ecef"' in line:
                    told = json.loads(line)["params"]
                    self.arrivals.setdefault((told["seconds"], told["x"]), now)


def processor_seconds(pid: int) -> float:
    fields = pathlib.Path(f"/proc/{pid}/stat").read_text().rpartition(")")[2].split()
    return (int(fields[11]) + int(fields[12])) / os.sysconf("SC_CLK_TCK")


def bare_times(count: int = 2000) -> list[float]:
    """From a write to a pseudo-terminal, through a copy by this program, to a connection's end."""
    master, slave = os.openpty()
    tty.setraw(slave)
    ours, theirs = socket.socketpair()
    times = []
    for _ in range(count):
        start = time.monotonic()
        os.write(master, b"x" * 144)
        ours.sendall(os.read(slave, 4096))
        theirs.recv(4096)
        times.append(time.monotonic() - start)
    return times


def shown(times: list[float]) -> str:
    ordered = sorted(times)
    return (f"median {statistics.median(ordered) * 1e3:.3f} ms, "
            f"99th percentile {ordered[int(0.99 * len(ordered))] * 1e3:.3f} ms")


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seconds", type=float, default=60.0)
    parser.add_argument("--programs", type=pathlib.Path, default=ROOT / "build/release/bin")
    options = parser.parse_args()

    with tempfile.TemporaryDirectory() as folder:
        capture = pathlib.Path(folder) / "capture"
        subprocess.run([options.programs / "corvane-sim", "--start", START, "--write", capture,
                        "--duration", str(options.seconds + 35), "--commands",
                        ROOT / "examples/single-port.conf"], check=True, capture_output=True)
        begin = int(START.split(",", maxsplit=1)[1]) * 1000 + 30_000
        logs = [log for log in logs_of(capture.read_bytes()) if log[1] >= begin]
        run(options, logs, folder)


def run(options: argparse.Namespace, logs: list[tuple[int, int, bytes]], folder: str) -> None:
    server = Server()
    master, slave = os.openpty()
    tty.setraw(slave)
    empty = pathlib.Path(folder) / "commands"
    empty.write_text("unlogall thisport")
    daemon = subprocess.Popen(
        [options.programs / "corvane", "-p", "-u", "none", "-c", empty, "-s", os.ttyname(slave)],
        env=dict(os.environ, CORVANE_TRACE="off", CORVANE_CONFIG=os.path.join(folder, "none")),
        stderr=subprocess.DEVNULL)
    os.close(slave)
    try:
        server.connected.wait(10.0)
        time.sleep(0.5)
        before, start = processor_seconds(daemon.pid), time.monotonic()
        sent = {}
        for identifier, milliseconds, data in logs:
            due = start + (milliseconds - logs[0][1]) / 1000.0
            time.sleep(max(0.0, due - time.monotonic()))
            os.write(master, data)
            if identifier == RTKXYZ:
                at = data.rfind(b"\xaaD\x12")
                x, = struct.unpack_from("<d", data, at + 28 + 8)
                sent[milliseconds / 1000.0, x] = time.monotonic()
        time.sleep(0.5)
        share = (processor_seconds(daemon.pid) - before) / (time.monotonic() - start)
    finally:
        daemon.kill()
    taken = [server.arrivals[key] - moment for key, moment in sent.items() if key in server.arrivals]
    size = sum(len(data) for *_, data in logs)
    print(f"{len(taken)} of {len(sent)} solutions, {size / options.seconds / 1000:.1f} kB/s")
    print(f"daemon: {shown(taken)}; {share * 100:.2f} % of a core")
    print(f"bare:   {shown(bare_times())}")


if __name__ == "__main__":
    main()
