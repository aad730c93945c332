#!/usr/bin/env python3
"""Runs simulator, multiplexer, daemon and hub, and shows what the hub makes of them.

    scripts/demo_live.py --programs FOLDER [--seconds N]
"""

import argparse
import http.client
import json
import os
import pathlib
import signal
import socket
import subprocess
import sys
import tempfile
import time
from collections.abc import Iterator

ROOT = pathlib.Path(__file__).resolve().parent.parent
# The daemon and the multiplexer have no others; the hub's may be taken by somebody else.
SERVICES_PORT, RPC_PORT, MULTIPLEXER_PORT = 10001, 5314, 5309
HTTP_PORT, GPSD_PORT = 8080, 2947
PATIENCE = 10.0  # seconds


class View:
    """What is known now, and what was counted."""

    def __init__(self) -> None:
        self.live: dict = {}
        self.panel: dict = {}
        self.commands: set[int] = set()
        self.errors: set[int] = set()
        self.first_position: float | None = None
        self._start = time.monotonic()

    def take(self, event: str, frame: dict) -> None:
        if event == "live":
            self.live = frame
            if self.first_position is None and frame["health"]["state"] == "live":
                self.first_position = time.monotonic() - self._start
        elif event == "panel":
            self.panel = frame
            for each in frame["events"]:
                if each["text"].startswith("Sending buffered command"):
                    self.commands.add(each["number"])
                if each["level"] == "error":
                    self.errors.add(each["number"])

    def of(self, key: str) -> str:
        """A status, whoever has published it."""
        return next((each["value"] for each in self.panel.get("statuses", [])
                     if each["key"] == key), "-")

    def line(self) -> str:
        seconds = f"{time.monotonic() - self._start:5.1f} s  "
        now = self.live.get("solution") or {}
        if not now.get("hasPosition"):
            return seconds + "no position yet: the daemon brings the receiver's port to talk"
        return (f"{seconds}{now['latitude']:12.7f} {now['longitude']:12.7f} "
                f"{now['height']:8.2f} m  {now['qualityWords']}, {now['fix']}, sigma "
                f"{now['sigmaHorizontal']:.2f} m, {now['satellitesUsed']} satellites used, tracked "
                f"{self.of('sats_tracked').split(',')[0]}")

    def summary(self) -> str:
        receiver = self.panel.get("receiver", {})
        first = "none" if self.first_position is None else f"after {self.first_position:.1f} s"
        logs = {}
        for each in self.panel.get("logs", []):
            name = each["log"] or str(each["id"])
            logs[name] = logs.get(name, 0) + each["count"]
        most = sorted(logs.items(), key=lambda log: -log[1])
        checksums = [f"{each['name']}: {each['good']} good, {each['rejected']} rejected"
                     for each in self.panel.get("checksums", [])]
        rows = [
            ("first position", first),
            ("positions", self.of("pos_messages")),
            ("receiver", " ".join(str(receiver.get(key, "-"))
                                  for key in ("model", "serial", "firmware"))),
            ("commands sent", str(len(self.commands))),
            ("logs", ", ".join(f"{count} {name}" for name, count in most)),
            ("sentences", "; ".join(checksums)),
            ("", "(rejected: mostly bytes inside binary logs that look like a sentence)"),
            ("status values", f"{len(self.panel.get('statuses', []))} keys"),
            ("error events", str(len(self.errors))),
        ]
        return "\n".join(f"  {name + ':' if name else '':16} {value}" for name, value in rows)


class Programs:
    """Simulator, multiplexer, hub and daemon, with their output in a folder."""

    def __init__(self, programs: pathlib.Path, folder: pathlib.Path, ports: dict[str, int]) -> None:
        self._folder = folder
        self._running: dict[str, subprocess.Popen] = {}
        devices = folder / "receiver"
        environment = dict(os.environ, CORVANE_TRACE="off",
                           CORVANE_CONFIG=str(folder / "corvane.conf"))
        for name, arguments in (
                ("corvane-sim", ["--dir", devices]),
                ("corvane-mux", ["--port", f"50={devices}/com1", "--port", f"52={devices}/usb2"]),
                ("corvane-hub", ["--state-dir", folder / "hub", "--http-port", str(ports["http"]),
                                 "--gpsd-port", str(ports["gpsd"])]),
                ("corvane", ["-p"])):
            with open(folder / f"{name}.log", "wb") as log:
                self._running[name] = subprocess.Popen(
                    [programs / name, *arguments], env=environment, stdin=subprocess.DEVNULL,
                    stdout=log, stderr=log)
            if name == "corvane-mux":
                wait_for(MULTIPLEXER_PORT)

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


def is_busy(port: int) -> bool:
    with socket.socket() as probe:
        return probe.connect_ex(("127.0.0.1", port)) == 0


def wait_for(port: int) -> None:
    """What the daemon writes to a port that is not there yet is lost, and costs it half a minute."""
    end = time.monotonic() + PATIENCE
    while not is_busy(port) and time.monotonic() < end:
        time.sleep(0.02)


def free_port(wanted: int) -> int:
    """The wanted one, or another one when somebody has it."""
    if not is_busy(wanted):
        return wanted
    with socket.create_server(("127.0.0.1", 0)) as probe:
        return probe.getsockname()[1]


def stream(port: int) -> http.client.HTTPResponse:
    """The hub's live stream, once the hub is there."""
    end = time.monotonic() + PATIENCE
    while True:
        try:
            connection = http.client.HTTPConnection("127.0.0.1", port, timeout=PATIENCE)
            connection.request("GET", "/api/stream")
            return connection.getresponse()
        except OSError:
            if time.monotonic() > end:
                raise
            time.sleep(0.05)


def frames(response: http.client.HTTPResponse) -> Iterator[tuple[str, dict]]:
    """Server-sent events: a line with the event's name, one with its data, an empty one."""
    event = ""
    for line in response:
        name, _, value = line.decode().rstrip("\n").partition(": ")
        if name == "event":
            event = value
        elif name == "data":
            yield event, json.loads(value)


def watch(port: int, view: View, programs: Programs, seconds: float | None) -> str | None:
    """Shows a line a second until the time is over; why it ended early, if it did."""
    start = shown = time.monotonic()
    try:
        for event, frame in frames(stream(port)):
            view.take(event, frame)
            if time.monotonic() - shown >= 1.0:
                shown += 1.0
                print(view.line(), flush=True)
                if (why := programs.ended()) is not None:
                    return why
            if seconds is not None and time.monotonic() - start >= seconds:
                return None
    except (OSError, http.client.HTTPException) as error:
        return programs.ended() or f"the hub's live stream has ended: {error}"
    return programs.ended() or "the hub's live stream has ended"


def welcome(folder: pathlib.Path, ports: dict[str, int]) -> str:
    gpsd = "" if ports["gpsd"] == GPSD_PORT else f":{ports['gpsd']}"
    return ("demo: a simulated receiver, the multiplexer, the daemon and the hub are running\n"
            f"demo: open http://127.0.0.1:{ports['http']}/ in a browser\n"
            "demo: or, in another terminal,\n"
            f"        cgps localhost{gpsd}        (of the package gpsd-clients)\n"
            f"        curl http://127.0.0.1:{ports['http']}/metrics\n"
            f"        {folder}/corvanectl tracking\n"
            f"        {folder}/corvanectl ionosphere grid\n"
            "demo: the first position comes after the port's breakout, in about 7 s")


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--programs", type=pathlib.Path, required=True)
    parser.add_argument("--seconds", type=float)
    options = parser.parse_args()
    for port in (SERVICES_PORT, RPC_PORT, MULTIPLEXER_PORT):
        if is_busy(port):
            print(f"demo: TCP port {port} of this machine is in use: is the system running "
                  "already?", file=sys.stderr)
            return 1
    ports = {"http": free_port(HTTP_PORT), "gpsd": free_port(GPSD_PORT)}
    signal.signal(signal.SIGTERM, signal.default_int_handler)
    view = View()
    with tempfile.TemporaryDirectory(prefix="corvane-demo.") as folder:
        programs = Programs((ROOT / options.programs).resolve(), pathlib.Path(folder), ports)
        print(welcome(options.programs, ports), flush=True)
        try:
            failure = watch(ports["http"], view, programs, options.seconds)
        except KeyboardInterrupt:
            failure = None
        finally:
            programs.stop()
    if failure is not None:
        print(f"demo: {failure}", file=sys.stderr)
        return 1
    print("demo: what was published\n" + view.summary())
    return 0 if view.first_position is not None else 1


if __name__ == "__main__":
    sys.exit(main())
