#!/usr/bin/env python3
"""Measures how long the hub takes to answer for a day of its history.

Starts corvane-hub with an empty history, lets it make its database, puts days of positions into
that (86,400 each, one a second, with what stands for each minute) and asks for them over HTTP, as
the dashboard does, 20 times each: a day with 1000 points, with the most that may be asked for, and
all days. Prints medians and the largest times; ends with status 1 when a day with 1000 points took
100 ms or more.

    bench/history.py [--days N] [--programs FOLDER] [--port N]
"""

import argparse
import json
import math
import pathlib
import socket
import sqlite3
import statistics
import subprocess
import sys
import tempfile
import time
import urllib.request

ROOT = pathlib.Path(__file__).resolve().parent.parent
DAY = 86_400
START = 1_763_683_200  # 2025-11-21, midnight
RUNS = 20
LIMIT = 0.1  # seconds


class Hub:
    """On two ports of its own, so that a hub that is at work here is not disturbed."""

    def __init__(self, program: pathlib.Path, folder: str, port: int) -> None:
        self._url = f"http://127.0.0.1:{port}"
        self._services = ("127.0.0.1", port + 1)
        self._process = subprocess.Popen(
            [program, f"--state-dir={folder}", f"--services-port={port + 1}", "--gpsd-port=0",
             f"--http-port={port}", "--history-days=36500", "--history-megabytes=100000"],
            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)

    def __enter__(self) -> "Hub":
        return self

    def __exit__(self, *_) -> None:
        self._process.terminate()
        self._process.wait()

    def ask(self, path: str) -> bytes:
        with urllib.request.urlopen(self._url + path, timeout=60) as answer:
            return answer.read()

    def tell(self, method: str, **params) -> None:
        line = json.dumps({"jsonrpc": "2.0", "method": method, "params": params}).encode() + b"\n"
        with socket.create_connection(self._services) as services:
            services.sendall(line)

    def wait_until_it_answers(self, path: str) -> None:
        deadline = time.monotonic() + 10.0
        while True:
            try:
                self.ask(path)
                return
            except OSError:
                if time.monotonic() > deadline or self._process.poll() is not None:
                    sys.exit("the hub does not answer")
                time.sleep(0.05)


def position(second: int) -> tuple:
    """A row as the hub keeps it: somewhere on a slow circle."""
    angle = second / 600
    return (second, second + 0.05, 3, 52.1 + 1e-4 * math.sin(angle), 5.2 + 1e-4 * math.cos(angle),
            48.9 + math.sin(second), 14, 0.014 + 0.002 * math.sin(second), 0.02, 1.0, 45.5)


def fill(database: pathlib.Path, days: int) -> None:
    with sqlite3.connect(database) as connection:
        for table, step in (("position", 1), ("position_minute", 60)):
            rows = (position(second) for second in range(START, START + days * DAY, step))
            connection.executemany(f"INSERT INTO {table} VALUES({','.join('?' * 11)})", rows)
    connection.close()


def make_database(program: pathlib.Path, folder: str, port: int) -> None:
    """With one event in it."""
    with Hub(program, folder, port) as hub:
        hub.wait_until_it_answers("/api/live")
        hub.tell("logger.event", name="bench", time=START, level="warning", text="begin")
        hub.wait_until_it_answers("/api/history/events")


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--days", type=int, default=1)
    parser.add_argument("--programs", type=pathlib.Path, default=ROOT / "build/release/bin")
    parser.add_argument("--port", type=int, default=18080, help="and the one above it")
    options = parser.parse_args()
    program = options.programs / "corvane-hub"
    if not program.exists():
        sys.exit(f"{program} is missing; build it with 'cmake --workflow --preset release'")

    worst = 0.0
    with tempfile.TemporaryDirectory() as folder:
        make_database(program, folder, options.port)
        fill(pathlib.Path(folder) / "history.db", options.days)
        with Hub(program, folder, options.port) as hub:
            hub.wait_until_it_answers("/api/live")
            for days, points in ((1, 1000), (1, 5000), (options.days, 1000)):
                path = (f"/api/history/positions?from={START}&to={START + days * DAY}"
                        f"&points={points}")
                times = []
                for _ in range(RUNS):
                    begin = time.monotonic()
                    size = len(hub.ask(path))
                    times.append(time.monotonic() - begin)
                median = statistics.median(times)
                worst = max(worst, median if (days, points) == (1, 1000) else 0.0)
                print(f"{days} days of {options.days}, {points} points: median "
                      f"{median * 1e3:.1f} ms, largest {max(times) * 1e3:.1f} ms, {size} bytes")
    return 0 if worst < LIMIT else 1


if __name__ == "__main__":
    sys.exit(main())
