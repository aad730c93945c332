#!/usr/bin/env python3
"""Compares the daemon with rtklib's convbin on one large file of real receiver bytes.

Runs both in turn on the same file, a real capture repeated to --megabytes, and prints the median
throughput of each, their ratio, and the daemon's peak memory on this file and on one of a tenth of
its size. With --collector a server on TCP 10001 takes everything the daemon publishes meanwhile.

    bench/against_convbin.py [--capture FILE] [--megabytes N] [--runs N] [--collector]
"""

import argparse
import os
import pathlib
import shutil
import socket
import statistics
import subprocess
import sys
import tempfile
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
CAPTURE = ROOT.parent / "shared/data/rtklib-oemv.gps"
DAEMON = ROOT / "build/release/bin/corvane"


def timed(command: list[str], folder: str) -> tuple[float, int]:
    """Seconds, and the peak resident memory in bytes.

    The memory is measured by time(1): asked of the kernel here it would include this program's own,
    which the child has before it becomes the program.
    """
    environment = dict(os.environ, CORVANE_TRACE="off",
                       CORVANE_CONFIG=os.path.join(folder, "none.conf"))
    usage = os.path.join(folder, "usage")
    start = time.monotonic()
    status = subprocess.run(["time", "-f", "%M", "-o", usage, *command], env=environment,
                            stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                            stderr=subprocess.DEVNULL, check=False).returncode
    seconds = time.monotonic() - start
    if status != 0:
        sys.exit(f"{command[0]} ended with status {status}")
    return seconds, int(pathlib.Path(usage).read_text(encoding="ascii")) * 1024


class Collector:
    """Takes and counts whatever comes to TCP 10001."""

    def __init__(self) -> None:
        self.bytes = 0
        self._server = socket.create_server(("127.0.0.1", 10001))
        threading.Thread(target=self._serve, daemon=True).start()

    def _serve(self) -> None:
        while True:
            client, _ = self._server.accept()
            with client:
                buffer = bytearray(1 << 20)
                while (count := client.recv_into(buffer)) > 0:
                    self.bytes += count


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("--capture", type=pathlib.Path, default=CAPTURE)
    parser.add_argument("--megabytes", type=int, default=200)
    parser.add_argument("--runs", type=int, default=5)
    parser.add_argument("--collector", action="store_true")
    options = parser.parse_args()
    if not options.capture.exists():
        sys.exit(f"{options.capture} is missing; name a capture with --capture")
    if not DAEMON.exists():
        sys.exit(f"{DAEMON} is missing; build it with 'cmake --workflow --preset release'")
    if shutil.which("convbin") is None:
        sys.exit("convbin is missing; install it with scripts/bootstrap")

    with tempfile.TemporaryDirectory() as folder:
        capture = options.capture.read_bytes()
        repeats = max(1, options.megabytes * 1_000_000 // len(capture))
        big = os.path.join(folder, "big.gps")
        small = os.path.join(folder, "small.gps")
        for path, count in ((big, repeats), (small, max(1, repeats // 10))):
            with open(path, "wb") as file:
                for _ in range(count):
                    file.write(capture)
        size = os.path.getsize(big)
        collector = Collector() if options.collector else None

        daemon = [str(DAEMON), "-p", "-u", "none", "-z", "65536", "-f"]
        convbin = ["convbin", "-r", "nov", "-o", f"{folder}/o", "-n", f"{folder}/n",
                   "-s", f"{folder}/s", "-h", f"{folder}/h", "-q", f"{folder}/q",
                   "-l", f"{folder}/l", "-b", f"{folder}/b", big]
        daemon_seconds, convbin_seconds, peaks = [], [], []
        for run in range(options.runs):
            seconds, peak = timed(daemon + [big], folder)
            daemon_seconds.append(seconds)
            peaks.append(peak)
            convbin_seconds.append(timed(convbin, folder)[0])
            print(f"run {run + 1}: corvane {daemon_seconds[-1]:.3f} s, "
                  f"convbin {convbin_seconds[-1]:.3f} s", flush=True)
        small_peak = timed(daemon + [small], folder)[1]

    mine, theirs = statistics.median(daemon_seconds), statistics.median(convbin_seconds)
    print(f"file: {size / 1e6:.0f} MB, {options.capture.name} x {repeats}")
    print(f"corvane: {size / mine / 1e6:.0f} MB/s, convbin: {size / theirs / 1e6:.0f} MB/s "
          f"(medians of {options.runs})")
    print(f"ratio: {theirs / mine:.1f}")
    print(f"peak memory of corvane: {max(peaks) / 1e6:.2f} MB, "
          f"on a tenth of the file: {small_peak / 1e6:.2f} MB")
    if collector is not None:
        print(f"collected: {collector.bytes / 1e6:.0f} MB in {options.runs + 1} runs")
    return 0


if __name__ == "__main__":
    sys.exit(main())
