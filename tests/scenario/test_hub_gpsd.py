"""The hub's gpsd server with the clients that people run: gpspipe, cgps and Python's gps module."""

import json
import os
import re
import shutil
import socket
import subprocess
import threading
import time
import unittest
from pathlib import Path

from harness.hub import GPSD_PORT, Hub
from harness.publisher import Publisher
from harness.scenario import Scenario
from harness.waiting import NotInTime, wait_until

PLACE = (52.25, 5.5, 48.5)
GEOID = 43.5
RATE = 0.1  # seconds between solutions
SYSTEM_PYTHON = "/usr/bin/python3"  # has Debian's gps module, which that of the tests may not


def needs(program: str):
    return unittest.skipUnless(shutil.which(program), f"there is no {program}")


class Feeder:
    """Publishes as the daemon does, beside the test, until it is stopped."""

    def __init__(self) -> None:
        self.publisher = Publisher()
        self._ended = threading.Event()
        self._thread = threading.Thread(target=self._run, daemon=True)
        self.publisher.register("CPositionManager")
        self.publisher.geoid(GEOID)
        self._thread.start()

    def _run(self) -> None:
        passes = 0
        while not self._ended.wait(RATE):
            if passes % 5 == 0:
                self.publisher.sentence("GPGSA,A,3,07,09,,,,,,,,,,,1.6,0.9,1.3")
                self.publisher.sentence("GPGSV,1,1,02,07,64,120,47,09,10,300,33")
                self.publisher.sky((7, 47), (38, 41))
                self.publisher.raw(b"\xaa\x44\x12\x1c" + bytes(20))
            self.publisher.position(*PLACE, velocity=(3.0, 4.0, 0.5))
            passes += 1

    def stop(self) -> None:
        """The connection stays, as of a daemon whose receiver has fallen silent."""
        self._ended.set()
        self._thread.join()

    def leave(self) -> None:
        self.stop()
        self.publisher.close()


class Client:
    """A client of the protocol in lines."""

    def __init__(self, *requests: str, receive_buffer: int | None = None) -> None:
        self.stream = socket.socket()
        if receive_buffer is not None:
            self.stream.setsockopt(socket.SOL_SOCKET, socket.SO_RCVBUF, receive_buffer)
        self.stream.settimeout(10.0)
        self.stream.connect(("127.0.0.1", GPSD_PORT))
        self._lines = self.stream.makefile("rb")
        for request in requests:
            self.ask(request)

    def close(self) -> None:
        self._lines.close()
        self.stream.close()

    def ask(self, request: str) -> None:
        self.stream.sendall(request.encode() + b"\n")

    def line(self) -> bytes:
        return self._lines.readline()

    def report(self, kind: str, **fields) -> dict:
        """The next report of a class, and with given members."""
        for _ in range(10000):
            report = json.loads(self.line())
            if report["class"] == kind and all(report.get(key) == value
                                               for key, value in fields.items()):
                return report
        raise NotInTime(f"no {kind} {fields} among many reports")


class Terminal:
    """A program in a terminal of its own, whose screen can be looked at."""

    def __init__(self, folder, command: str) -> None:
        self._tmux = ["tmux", "-S", str(folder / "tmux"), "-f", "/dev/null"]
        environment = {**os.environ, "TERM": "xterm", "LC_ALL": "C"}
        subprocess.run([*self._tmux, "new-session", "-d", "-x", "100", "-y", "40", command],
                       check=True, env=environment)

    def screen(self) -> str:
        run = subprocess.run([*self._tmux, "capture-pane", "-p"], capture_output=True, text=True,
                             check=False)
        return run.stdout

    def wait_for(self, pattern: str, seconds: float = 10.0) -> None:
        wait_until(f"a screen with {pattern!r}", lambda: re.search(pattern, self.screen()),
                   seconds, self.screen)

    def end(self) -> None:
        subprocess.run([*self._tmux, "kill-server"], check=False, capture_output=True)


class HubGPSD(Scenario):
    def setUp(self) -> None:
        super().setUp()
        self.hub = Hub(self.folder / "hub")
        self.addCleanup(self.hub.kill)

    def feeder(self) -> Feeder:
        feeder = Feeder()
        self.addCleanup(feeder.leave)
        return feeder

    def client(self, *requests: str, **settings) -> Client:
        client = Client(*requests, **settings)
        self.addCleanup(client.close)
        return client

    def output_of(self, *command: str, seconds: float = 20.0) -> str:
        run = subprocess.run(command, capture_output=True, check=False, timeout=seconds)
        self.assertEqual(run.returncode, 0, run.stderr)
        return run.stdout.decode(errors="replace")

    def assert_here(self, report: dict) -> None:
        self.assertEqual(report["mode"], 3)
        self.assertEqual(report["status"], 3)
        self.assertAlmostEqual(report["lat"], PLACE[0], places=9)
        self.assertAlmostEqual(report["lon"], PLACE[1], places=9)
        self.assertAlmostEqual(report["altHAE"], PLACE[2], places=4)
        self.assertAlmostEqual(report["altMSL"], PLACE[2] - GEOID, places=4)
        self.assertAlmostEqual(report["speed"], 5.0, places=6)
        self.assertAlmostEqual(report["climb"], 0.5, places=6)
        self.assertAlmostEqual(report["track"], 36.869897646, places=6)

    # --- gpspipe

    @needs("gpspipe")
    def test_gpspipe_gets_reports(self) -> None:
        self.feeder()
        lines = self.output_of("gpspipe", "-w", "-n", "30").splitlines()
        reports = [json.loads(line) for line in lines]
        self.assertEqual([each["class"] for each in reports[:3]], ["VERSION", "DEVICES", "WATCH"])
        found = {each["class"]: each for each in reports if each.get("mode") != 1}
        self.assertEqual(set(found) - {"DEVICE"},
                         {"VERSION", "DEVICES", "WATCH", "TPV", "GST", "SKY"})
        self.assert_here(found["TPV"])
        self.assertEqual(found["SKY"]["hdop"], 0.9)
        self.assertEqual({each["PRN"]: each["used"] for each in found["SKY"]["satellites"]},
                         {7: True, 9: True, 65: False})

    @needs("gpspipe")
    def test_gpspipe_gets_sentences(self) -> None:
        self.feeder()
        wait_until("a position", self.has_position)
        text = self.output_of("gpspipe", "-r", "-n", "20")
        sentences = [line for line in text.splitlines() if line.startswith("$")]
        self.assertGreater(len(sentences), 10)
        for sentence in sentences:
            body, _, checksum = sentence[1:].partition("*")
            total = 0
            for byte in body.encode():
                total ^= byte
            self.assertEqual(f"{total:02X}", checksum, sentence)
        gga = next(each for each in sentences if each.startswith("$GPGGA"))
        self.assertRegex(gga, r"^\$GPGGA,\d{6}\.\d\d,5215\.0000000,N,00530\.0000000,E,4,14,0\.9,"
                              r"5\.000,M,43\.500,M,1\.0,\*")
        self.assertIn("GPGSV,1,1,02,07,64,120,47,09,10,300,33", text)

    @needs("gpspipe")
    def test_gpspipe_gets_raw_bytes(self) -> None:
        self.feeder()
        run = subprocess.run(["gpspipe", "-R", "-x", "2"], capture_output=True, check=False,
                             timeout=20)
        self.assertIn(b"\xaa\x44\x12\x1c" + bytes(20), run.stdout)

    def has_position(self) -> bool:
        client = Client("?POLL;")
        try:
            tpv = client.report("POLL")["tpv"]
        finally:
            client.close()
        return bool(tpv) and tpv[0]["mode"] == 3

    # --- cgps

    @needs("cgps")
    @needs("tmux")
    def test_cgps_shows_position_and_its_loss(self) -> None:
        feeder = self.feeder()
        terminal = Terminal(self.folder, "cgps")
        self.addCleanup(terminal.end)
        terminal.wait_for(r"Latitude: +52\.25000000 N")
        terminal.wait_for(r"Longitude: +5\.50000000 E")
        terminal.wait_for(r"Status: +3D RTK FIX")
        terminal.wait_for(r"GP +7 +7 +64\.0 +120\.0 +47\.0 +Y")
        terminal.wait_for(r"GL +1 +65 +n/a +n/a +41\.0 +N")
        feeder.stop()
        terminal.wait_for(r"Status: +NO FIX")
        self.assertNotRegex(terminal.screen(), r"Latitude: +52")

    # --- Python

    @unittest.skipIf(subprocess.run([SYSTEM_PYTHON, "-c", "import gps"], check=False,
                                    capture_output=True).returncode, "there is no gps module")
    def test_the_python_module_gets_positions(self) -> None:
        self.feeder()
        script = ("import gps\n"
                  "session = gps.gps(mode=gps.WATCH_ENABLE)\n"
                  "while not (session.valid & gps.LATLON_SET and session.satellites):\n"
                  "    assert session.read() == 0\n"
                  "print(session.fix.mode, session.fix.latitude, session.fix.longitude,\n"
                  "      session.fix.altHAE, session.fix.speed, session.satellites_used)\n")
        words = self.output_of(SYSTEM_PYTHON, "-c", script).split()
        mode, latitude, longitude, height, speed, used = map(float, words)
        self.assertEqual((mode, used), (3, 2))
        self.assertAlmostEqual(latitude, PLACE[0], places=9)
        self.assertAlmostEqual(longitude, PLACE[1], places=9)
        self.assertAlmostEqual(height, PLACE[2], places=4)
        self.assertAlmostEqual(speed, 5.0, places=6)

    # --- the daemon comes, falls silent, goes

    def test_the_device_comes_and_goes_with_the_daemon(self) -> None:
        client = self.client('?WATCH={"enable":true,"json":true};')
        self.assertEqual(client.report("DEVICES")["devices"], [])
        feeder = self.feeder()
        self.assertIn("Z", client.report("DEVICE")["activated"])
        self.assert_here(client.report("TPV", mode=3))
        feeder.leave()
        client.report("DEVICE", activated=0)
        client.report("TPV", mode=1)
        client.ask("?DEVICES;")
        self.assertEqual(client.report("DEVICES")["devices"], [])
        self.feeder()
        self.assertIn("Z", client.report("DEVICE")["activated"])
        client.report("TPV", mode=3)

    def test_silence_is_told_once_a_second(self) -> None:
        feeder = self.feeder()
        client = self.client('?WATCH={"enable":true,"json":true};')
        client.report("TPV", mode=3)
        feeder.stop()
        stopped = time.monotonic()
        client.report("TPV", mode=1)
        first = time.monotonic()
        client.report("TPV", mode=1)
        second = time.monotonic()
        self.assertLess(first - stopped, 3.0)
        self.assertGreater(first - stopped, 1.5)
        self.assertAlmostEqual(second - first, 1.0, delta=0.5)

    # --- hostile clients

    def test_hostile_clients_do_not_disturb_a_good_one(self) -> None:
        self.feeder()
        good = self.client('?WATCH={"enable":true,"json":true};')
        good.report("TPV", mode=3)
        hostile = [
            b"\0" * 100_000, b"?" * 5000 + b"\n", b"?WATCH={" * 1000, b'?WATCH={"a":' * 500 + b"\n",
            b"?POLL;" * 600 + b"\n", b"GET / HTTP/1.1\r\nHost: x\r\n\r\n", b"\xff\xfe;?\n" * 400,
            b"?POLL;\n" * 100_000,
        ]
        streams = [socket.create_connection(("127.0.0.1", GPSD_PORT), 10.0) for _ in hostile]
        for stream in streams:
            self.addCleanup(stream.close)
        senders = [threading.Thread(target=_send_quietly, args=pair, daemon=True)
                   for pair in zip(streams, hostile)]
        for sender in senders:
            sender.start()
        latest = 0.0
        for _ in range(30):
            before = time.monotonic()
            good.report("TPV", mode=3)
            latest = max(latest, time.monotonic() - before)
        self.assertLess(latest, 1.0)
        self.assertTrue(self.hub.is_running())

    def test_a_web_page_learns_nothing(self) -> None:
        self.feeder()
        wait_until("a position", self.has_position)
        with socket.create_connection(("127.0.0.1", GPSD_PORT), 10.0) as stream:
            stream.sendall(b'POST / HTTP/1.1\r\nHost: x\r\n\r\n?WATCH={"json":true};\n?POLL;\n')
            told = b""
            try:
                while chunk := stream.recv(65536):
                    told += chunk
            except ConnectionError:
                pass  # closed before it had read all
        self.assertEqual(told.count(b"\n"), told.count(b"VERSION"))

    def test_a_client_that_does_not_read_is_disconnected(self) -> None:
        feeder = self.feeder()
        slow = self.client('?WATCH={"enable":true,"raw":2};', receive_buffer=4096)
        good = self.client('?WATCH={"enable":true,"json":true};')
        slow.report("WATCH")
        self.assertTrue(_is_served(slow.stream))
        before = self.hub.memory_kib()

        def is_closed() -> bool:
            feeder.publisher.raw(bytes(300_000))
            return not _is_served(slow.stream)

        feeder.stop()
        wait_until("the slow client's end", is_closed, 20.0)
        feeder.publisher.position(*PLACE)
        good.report("TPV", mode=3)
        self.assertLess(self.hub.memory_kib() - before, 16 * 1024)


def _is_served(stream: socket.socket) -> bool:
    """Whether the hub's end of the connection is open."""
    end = f":{GPSD_PORT:04X} ", f":{stream.getsockname()[1]:04X} 01 "  # from, to, established
    table = Path("/proc/net/tcp").read_text().splitlines()
    return any(end[0] in row and end[1] in row for row in table)


def _send_quietly(stream: socket.socket, data: bytes) -> None:
    """Until it is shut out, or nobody reads on."""
    try:
        stream.sendall(data)
    except OSError:
        pass
