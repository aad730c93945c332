"""A hub at work: what must hold for it whatever its other clients do."""

import contextlib
import http.client
import statistics
import threading
import time
from collections.abc import Iterator
from pathlib import Path

from harness.hub import HTTP_PORT, Hub
from harness.hubbed import Hubbed
from harness.publisher import Publisher
from harness.waiting import wait_until
from harness.web import ask_json

PLACE = (52.25, 5.5, 48.5)
TICK = 0.02  # seconds between the steady publisher's logs
LEAST_SECONDS = 1.5
WORST_SAY, WORST_ANSWER, MEDIAN_ANSWER = 0.5, 1.0, 0.1  # seconds
MOST_MEMORY = 64 * 1024  # KiB more than before
STEADY = "Steady"
LASTING_SOCKETS = 4  # three that listen, and the steady publisher's


class SteadyPublisher:
    """Says a numbered log and a position fifty times a second until it is stopped."""

    def __init__(self) -> None:
        self.count = 0
        self.longest = 0.0  # seconds that the hub let it wait
        self._publisher = Publisher()
        self._publisher.register(STEADY)
        self._ended = threading.Event()
        self._thread = threading.Thread(target=self._run, daemon=True)
        self._thread.start()

    def _run(self) -> None:
        while not self._ended.wait(TICK):
            before = time.monotonic()
            self._publisher.data("QRS_42", str(self.count), STEADY)
            self._publisher.position(*PLACE)
            self.count += 1
            self.longest = max(self.longest, time.monotonic() - before)

    def stop(self) -> None:
        self._ended.set()
        self._thread.join()

    def close(self) -> None:
        self.stop()
        self._publisher.close()


class SteadyReader:
    """Asks whether positions are live, on one connection each, until it is stopped."""

    def __init__(self) -> None:
        self.answers: list[float] = []  # how long each has taken
        self.failures: list[str] = []
        self._ended = threading.Event()
        self._thread = threading.Thread(target=self._run, daemon=True)
        self._thread.start()

    def _run(self) -> None:
        while not self._ended.wait(0.05):
            before = time.monotonic()
            try:
                connection = http.client.HTTPConnection("127.0.0.1", HTTP_PORT, timeout=10)
                connection.request("GET", "/healthz")
                answer = connection.getresponse()
                if (answer.status, answer.read()) != (200, b"ok\n"):
                    self.failures.append(str(answer.status))
                connection.close()
            except OSError as error:
                self.failures.append(repr(error))
            self.answers.append(time.monotonic() - before)

    def stop(self) -> None:
        self._ended.set()
        self._thread.join()


def sockets(hub: Hub) -> int:
    """How many it has open."""
    count = 0
    for link in Path(f"/proc/{hub.pid}/fd").iterdir():
        with contextlib.suppress(FileNotFoundError):
            count += str(link.readlink()).startswith("socket:")
    return count


def peak_kib(hub: Hub) -> int:
    lines = Path(f"/proc/{hub.pid}/status").read_text().splitlines()
    return int(next(line for line in lines if line.startswith("VmHWM")).split()[1])


class HubLoad(Hubbed):
    """Tests under the eyes of a publisher and a reader that do nothing wrong."""

    @contextlib.contextmanager
    def under_load(self) -> Iterator[Hub]:
        """Whatever is done meanwhile, all that is published is taken and all questions answered;
        and afterwards no connection is left over."""
        hub = self.start()
        publisher = SteadyPublisher()
        self.addCleanup(publisher.close)
        wait_until("a position", lambda: ask_json("/api/live")["health"]["state"] == "live")
        reader = SteadyReader()
        self.addCleanup(reader.stop)
        memory, start = peak_kib(hub), time.monotonic()
        yield hub
        time.sleep(max(0.0, start + LEAST_SECONDS - time.monotonic()))
        publisher.stop()
        reader.stop()
        self.wait_for_count(publisher.count)
        self.assertEqual(reader.failures, [])
        self.assertGreater(len(reader.answers), 5)
        self.assertLess(publisher.longest, WORST_SAY)
        self.assertLess(max(reader.answers), WORST_ANSWER)
        self.assertLess(statistics.median(reader.answers), MEDIAN_ANSWER)
        self.assertLess(peak_kib(hub) - memory, MOST_MEMORY)
        wait_until("no connection to be left over", lambda: sockets(hub) == LASTING_SOCKETS, 10.0,
                   state=lambda: sockets(hub))

    def wait_for_count(self, count: int) -> None:
        """All logs of the steady publisher have been taken."""
        def taken() -> int:
            logs = ask_json("/api/panel")["logs"]
            return next(each["count"] for each in logs if each["name"] == STEADY)
        wait_until(f"{count} logs to be taken", lambda: taken() == count, 10.0, state=taken)
