#!/usr/bin/env python3
"""Compares the daemon's RPC service with a bare epoll server that sends back what comes.

For 1 and for 50 clients, each with one call under way, prints calls a second and the 99th
percentile of the answers' latency of both, in turn, as medians of --runs runs. Meanwhile a receiver
streams at the rate of 460800 baud over a pseudo-terminal, and a server on TCP 10001 takes what the
daemon publishes.

    bench/rpc.py [--capture FILE] [--runs N] [--seconds N]
"""

import argparse
import os
import pathlib
import socket
import statistics
import subprocess
import tempfile
import threading
import time
import tty

ROOT = pathlib.Path(__file__).resolve().parent.parent
CAPTURE = ROOT.parent / "shared/data/rtklib-oemv.gps"
PROGRAMS = ROOT / "build/release/bin"
RPC_PORT, ECHO_PORT, HUB_PORT = 5314, 5399, 10001
BYTES_PER_SECOND = 46_080
CLIENTS = (1, 50)


class Receiver:
    """Says a capture over and over at the rate of a real line; takes what it is told."""

    def __init__(self, capture: bytes) -> None:
        self._master, slave = os.openpty()
        tty.setraw(slave)
        self.device = os.ttyname(slave)
        os.close(slave)
        self._capture = capture
        threading.Thread(target=self._say, daemon=True).start()
        threading.Thread(target=self._listen, daemon=True).start()

    def _say(self) -> None:
        at, slice_ = 0, BYTES_PER_SECOND // 100
        while True:
            try:
                os.write(self._master, self._capture[at:at + slice_])
            except OSError:
                pass  # nobody has opened it yet
            at = (at + slice_) % len(self._capture)
            time.sleep(0.01)

    def _listen(self) -> None:
        while True:
            try:
                os.read(self._master, 65536)
            except OSError:
                time.sleep(0.01)


def collect() -> None:
    """Takes what is published and forgets it."""
    server = socket.create_server(("127.0.0.1", HUB_PORT))

    def serve() -> None:
        while True:
            client, _ = server.accept()
            with client:
                while client.recv(1 << 20):
                    pass

    threading.Thread(target=serve, daemon=True).start()


def wait_for(port: int) -> None:
    while True:
        try:
            socket.create_connection(("127.0.0.1", port)).close()
            return
        except ConnectionRefusedError:
            time.sleep(0.05)


def load(port: int, clients: int, seconds: float) -> list[float]:
    """Calls a second, median and 99th percentile in microseconds."""
    command = [PROGRAMS / "bench_rpc", "load", str(port), str(clients), str(seconds)]
    run = subprocess.run(command, capture_output=True, text=True, check=True)
    return [float(each) for each in run.stdout.split()]


def main() -> None:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--capture", type=pathlib.Path, default=CAPTURE)
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--seconds", type=float, default=2.0)
    options = parser.parse_args()

    collect()
    receiver = Receiver(options.capture.read_bytes())
    with tempfile.TemporaryDirectory() as folder:
        environment = dict(os.environ, CORVANE_TRACE="off",
                           CORVANE_CONFIG=os.path.join(folder, "corvane.conf"))
        servers = [subprocess.Popen([PROGRAMS / "corvane", "-p", "-u", "none", "-s",
                                     receiver.device], env=environment, stderr=subprocess.DEVNULL),
                   subprocess.Popen([PROGRAMS / "bench_rpc", "echo", str(ECHO_PORT)])]
        try:
            wait_for(RPC_PORT)
            wait_for(ECHO_PORT)
            for clients in CLIENTS:
                compare(clients, options.runs, options.seconds)
        finally:
            for server in servers:
                server.kill()


def compare(clients: int, runs: int, seconds: float) -> None:
    pairs = [(load(RPC_PORT, clients, seconds), load(ECHO_PORT, clients, seconds))
             for _ in range(runs)]
    for name, index in (("daemon", 0), ("echo", 1)):
        rate, middle, worst = (statistics.median(pair[index][i] for pair in pairs)
                               for i in range(3))
        print(f"{clients:3} clients, {name:6}: {rate:8.0f} calls/s, "
              f"latency median {middle:7.1f} us, 99th percentile {worst:7.1f} us")
    ratio = statistics.median(pair[0][0] / pair[1][0] for pair in pairs)
    print(f"{clients:3} clients: {ratio:.2f} of the bare server's rate")


if __name__ == "__main__":
    main()
