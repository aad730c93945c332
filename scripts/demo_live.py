#!/usr/bin/env python3
"""Runs simulator, multiplexer and daemon, and shows what the daemon publishes.

    scripts/demo_live.py --programs FOLDER [--seconds N]
"""

import argparse
import collections
import json
import math
import os
import pathlib
import queue
import signal
import socket
import subprocess
import sys
import tempfile
import threading
import time

ROOT = pathlib.Path(__file__).resolve().parent.parent
HUB_PORT, RPC_PORT, MULTIPLEXER_PORT = 10001, 5314, 5309
QUALITY = {0: "no position", 1: "usable", 2: "good", 3: "best"}
FIX = {-1: "none", 2: "OmniSTAR", 4: "single or differential", 5: "float", 6: "RTK"}
WGS84_A, WGS84_F = 6378137.0, 1.0 / 298.257223563


def geodetic(x: float, y: float, z: float) -> tuple[float, float, float]:
    """Latitude and longitude in degrees, height in metres."""
    e2 = WGS84_F * (2.0 - WGS84_F)
    p, latitude, height = math.hypot(x, y), math.atan2(z, math.hypot(x, y)), 0.0
    for _ in range(8):
        n = WGS84_A / math.sqrt(1.0 - e2 * math.sin(latitude) ** 2)
        latitude = math.atan2(z + e2 * n * math.sin(latitude), p)
        height = p / math.cos(latitude) - WGS84_A / math.sqrt(1.0 - e2 * math.sin(latitude) ** 2)
    return math.degrees(latitude), math.degrees(math.atan2(y, x)), height


class Services:
    """Listens where the daemon expects the controller's services, and hands on what it is told."""

    def __init__(self) -> None:
        self.messages: queue.SimpleQueue = queue.SimpleQueue()
        self._server = socket.create_server(("127.0.0.1", HUB_PORT))
        threading.Thread(target=self._serve, daemon=True).start()

    def _serve(self) -> None:
        while True:
            client, _ = self._server.accept()
            with client, client.makefile("r", encoding="utf-8") as lines:
                for line in lines:
                    self.messages.put(json.loads(line))


class View:
    """What is known now, and what was counted."""

    def __init__(self) -> None:
        self.counts: collections.Counter = collections.Counter()
        self.events: collections.Counter = collections.Counter()
        self.status: dict[tuple[str, str], str] = {}
        self.qualities: collections.Counter = collections.Counter()
        self.commands = 0
        self.position: dict | None = None
        self.first_position: float | None = None
        self._start = time.monotonic()

    def take(self, message: dict) -> None:
        method, params = message["method"], message["params"]
        self.counts[method] += 1
        if method == "logger.status":
            self.status[params["name"], params["key"]] = params["value"]
        elif method == "logger.event":
            self.events[params["level"]] += 1
            self.commands += params["text"].startswith("Sending buffered command")
        elif method == "position.ecef" and params["positionQuality"] > 0:
            self.position = params
            self.qualities[params["positionQuality"]] += 1
            if self.first_position is None:
                self.first_position = time.monotonic() - self._start

    def of(self, key: str) -> str:
        """A status, whoever has published it."""
        return next((value for (_, name), value in self.status.items() if name == key), "-")

    def line(self) -> str:
        seconds = f"{time.monotonic() - self._start:5.1f} s  "
        now = self.position
        if now is None:
            return seconds + "no position yet: the daemon brings the receiver's port to talk"
        latitude, longitude, height = geodetic(now["x"], now["y"], now["z"])
        sigma = math.sqrt(now["sx"] ** 2 + now["sy"] ** 2 + now["sz"] ** 2)
        used = sum(now["satellites"])
        return (f"{seconds}{latitude:12.7f} {longitude:12.7f} {height:8.2f} m  "
                f"{QUALITY[now['positionQuality']]} ({FIX.get(now['solutionClass'], '?')}), "
                f"sigma {sigma:5.2f} m, {used:2} satellites used, tracked "
                f"{self.of('sats_tracked').split(',')[0]}")

    def summary(self) -> str:
        handlers = ("NovatelPortHandler", "NovatelPortHandler2")
        checks = [self.status.get((name, "checksum_stats"), "0,0").split(",") for name in handlers]
        first = "none" if self.first_position is None else f"after {self.first_position:.1f} s"
        qualities = ", ".join(f"{count} {QUALITY[quality]}"
                              for quality, count in sorted(self.qualities.items()))
        rows = [
            ("first position", first),
            ("positions", qualities or "none"),
            ("receiver", " ".join(self.of(f"component_00.{key}") for key in (
                "model", "psn", "softwareVersion"))),
            ("commands sent", str(self.commands)),
            ("sentences", "; ".join(f"{name}: {good} good" for name, (good, _) in zip(
                ("main port", "diagnostic port"), checks))),
            ("sky views, NMEA", f"{self.counts['position.sky']}, {self.counts['nmea.sentence']}"),
            ("status values", f"{len(self.status)} keys, {self.counts['logger.status']} updates"),
            ("events", f"{self.events['warning']} warnings, {self.events['error']} errors"),
        ]
        return "\n".join(f"  {name + ':':18} {value}" for name, value in rows)


class Programs:
    """Simulator, multiplexer and daemon, with their output in a folder."""

    def __init__(self, programs: pathlib.Path, folder: pathlib.Path) -> None:
        self._folder = folder
        self._running: dict[str, subprocess.Popen] = {}
        devices = folder / "receiver"
        environment = dict(os.environ, CORVANE_TRACE="off",
                           CORVANE_CONFIG=str(folder / "corvane.conf"))
        for name, arguments in (
                ("corvane-sim", ["--dir", devices]),
                ("corvane-mux", ["--port", f"50={devices}/com1", "--port", f"52={devices}/usb2"]),
                ("corvane", ["-p"])):
            with open(folder / f"{name}.log", "wb") as log:
                self._running[name] = subprocess.Popen(
                    [programs / name, *arguments], env=environment, stdin=subprocess.DEVNULL,
                    stdout=log, stderr=log)

    def ended(self) -> str | None:
        """What one that has ended of itself said; nothing while all run."""
        for name, program in self._running.items():
            if program.poll() is not None:
                said = (self._folder / f"{name}.log").read_text(errors="replace")
                return f"{name} has ended with status {program.returncode}:\n{said}"
        return None

    def stop(self) -> None:
        for program in reversed(self._running.values()):
            program.terminate()
        for program in self._running.values():
            program.wait()


def busy_ports() -> list[int]:
    def is_busy(port: int) -> bool:
        with socket.socket() as probe:
            return probe.connect_ex(("127.0.0.1", port)) == 0
    return [port for port in (HUB_PORT, RPC_PORT, MULTIPLEXER_PORT) if is_busy(port)]


def watch(services: Services, view: View, programs: Programs, seconds: float | None) -> str | None:
    """Shows a line a second until the time is over; why it ended early, if it did."""
    start = shown = time.monotonic()
    while seconds is None or time.monotonic() - start < seconds:
        try:
            view.take(services.messages.get(timeout=0.1))
        except queue.Empty:
            if (why := programs.ended()) is not None:
                return why
        if time.monotonic() - shown >= 1.0:
            shown += 1.0
            print(view.line(), flush=True)
    return None


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--programs", type=pathlib.Path, required=True)
    parser.add_argument("--seconds", type=float)
    options = parser.parse_args()
    if busy := busy_ports():
        print(f"demo: TCP port {busy[0]} of this machine is in use: is the system running already?",
              file=sys.stderr)
        return 1
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    services, view = Services(), View()
    with tempfile.TemporaryDirectory(prefix="corvane-demo.") as folder:
        programs = Programs((ROOT / options.programs).resolve(), pathlib.Path(folder))
        print("demo: a simulated receiver, the multiplexer and the daemon are running; in another "
              "terminal try\n"
              f"        {options.programs}/corvanectl tracking\n"
              f"        {options.programs}/corvanectl ionosphere grid\n"
              "        nc -U /tmp/tty_socket_50\n"
              "demo: the first position comes after the port's breakout, in about 7 s", flush=True)
        try:
            failure = watch(services, view, programs, options.seconds)
        except KeyboardInterrupt:
            failure = None
        finally:
            programs.stop()
    if failure is not None:
        print(f"demo: {failure}", file=sys.stderr)
        return 1
    print("demo: what was published\n" + view.summary())
    return 0 if view.position is not None else 1


if __name__ == "__main__":
    sys.exit(main())
