"""corvanectl tracking: what the receiver tracks, once and as it changes."""

import json
import os
import signal
import subprocess

from harness import logs
from harness.collector import Collector
from harness.corvanectl import UNREACHABLE, FakeDaemon, Operated, program, result
from harness.receiver import Receiver
from harness.waiting import wait_until

GONE = "the daemon at 127.0.0.1:5314 is gone"


class Tracking(Operated):
    def sky(self, collector: Collector, receiver: Receiver, *prns: int) -> None:
        """The receiver tracks these satellites, and the daemon has taken note."""
        before = len(collector.messages("position.sky"))
        receiver.say(logs.trackstat(*(logs.channel(prn) for prn in prns)))
        wait_until("the sky", lambda: len(collector.messages("position.sky")) > before)

    def watch(self, *options: str) -> "Watch":
        watch = Watch(self, *options)
        self.addCleanup(watch.end)
        return watch


class Watch:
    """A run of `tracking --watch` in the background."""

    def __init__(self, scenario: Tracking, *options: str) -> None:
        self._out, self._err = scenario.folder / "watch.out", scenario.folder / "watch.err"
        with open(self._out, "wb") as out, open(self._err, "wb") as err:
            self.process = subprocess.Popen([program(), *options, "tracking", "--watch"],
                                            stdin=subprocess.DEVNULL, stdout=out, stderr=err,
                                            env=scenario.environment())

    def lines(self) -> list[str]:
        return self._out.read_text().splitlines()

    @property
    def err(self) -> str:
        return self._err.read_text()

    def wait_for_lines(self, count: int) -> list[str]:
        wait_until(f"{count} lines", lambda: len(self.lines()) >= count,
                   state=lambda: (self.lines(), self.err))
        return self.lines()

    def end(self) -> None:
        if self.process.poll() is None:
            self.process.kill()
        self.process.wait()


class Once(Tracking):
    def test_is_told_to_people_and_to_programs(self) -> None:
        collector = self.collector()
        receiver, _ = self.operated()
        self.assertEqual(self.done("tracking"), "satellites  0\nGPS         L1 0, L2 0\n"
                         "GLONASS     L1 0, L2 0\nSBAS        none\nstatus      none\n")
        receiver.say(logs.rxstatus(0, status=0))
        self.sky(collector, receiver, 3, 7, 131)
        document = self.document("tracking")
        self.assertEqual(list(document), ["satellites", "gps", "glonass", "sbas", "status"])
        self.assertEqual(document["satellites"], 3)
        self.assertTrue(document["status"].startswith("0x00000000: "), document)
        shown = self.done("tracking")
        self.assertIn("satellites  3\n", shown)
        self.assertIn(f"status      {document['status']}\n", shown)

    def test_each_number_has_its_own_place(self) -> None:
        server = FakeDaemon(lambda request: result(request, [
            11, 12, 13, 14, 15, "122 (WAAS),131 (EGNOS),", "0x00000001: Error"]))
        self.addCleanup(server.kill)
        server.start()
        self.assertEqual(self.document("tracking"), {
            "satellites": 15, "gps": {"l1": 11, "l2": 12}, "glonass": {"l1": 13, "l2": 14},
            "sbas": "122 (WAAS),131 (EGNOS)", "status": "0x00000001: Error"})
        self.assertEqual(self.done("tracking"), (
            "satellites  15\nGPS         L1 11, L2 12\nGLONASS     L1 13, L2 14\n"
            "SBAS        122 (WAAS),131 (EGNOS)\nstatus      0x00000001: Error\n"))


class Watching(Tracking):
    def test_prints_a_line_at_each_change_and_none_without(self) -> None:
        collector = self.collector()
        receiver, _ = self.operated()
        watch = self.watch()
        self.assertRegex(watch.wait_for_lines(1)[0],
                         r"^\d{4}-\d\d-\d\d \d\d:\d\d:\d\d  0 satellites; GPS L1 0, L2 0; "
                         r"GLONASS L1 0, L2 0; SBAS none; status ")
        for count, prns in enumerate(((3,), (3, 7), (3, 7), (3, 7, 9)), start=1):
            self.sky(collector, receiver, *prns)
            watch.wait_for_lines(min(len(set(prns)) + 1, count + 1))
        lines = watch.wait_for_lines(4)
        self.assertEqual([line.split("  ")[1].split()[0] for line in lines], ["0", "1", "2", "3"])

    def test_for_programs_is_a_document_a_line_with_its_time(self) -> None:
        collector = self.collector()
        receiver, _ = self.operated()
        watch = self.watch("--json")
        watch.wait_for_lines(1)
        self.sky(collector, receiver, 3, 7)
        events = [json.loads(line) for line in watch.wait_for_lines(2)]
        self.assertEqual([event["satellites"] for event in events], [0, 2])
        self.assertLess(events[0]["time"], events[1]["time"])
        self.assertEqual(list(events[1]),
                         ["time", "satellites", "gps", "glonass", "sbas", "status"])

    def test_ends_when_the_daemon_goes(self) -> None:
        _, daemon = self.operated()
        watch = self.watch("--json")
        watch.wait_for_lines(1)
        daemon.end()
        self.assertEqual(watch.process.wait(timeout=10), UNREACHABLE)
        self.assertIn(GONE, watch.err)
        self.assertEqual(json.loads(watch.lines()[-1])["error"]["status"], UNREACHABLE)

    def test_ends_when_a_quiet_daemon_does_not_answer_any_more(self) -> None:
        _, daemon = self.operated()
        watch = self.watch("--timeout", "1")
        watch.wait_for_lines(1)
        daemon.send_signal(signal.SIGSTOP)
        self.assertEqual(watch.process.wait(timeout=15), UNREACHABLE)
        self.assertIn("has not answered DummyFunction", watch.err)

    def test_goes_on_while_a_quiet_daemon_answers(self) -> None:
        server = FakeDaemon(lambda request: result(
            request, [] if request["method"] == "DummyFunction" else [0, 0, 0, 0, 0, "", ""]))
        self.addCleanup(server.kill)
        server.start()
        watch = self.watch()
        wait_until("two questions", lambda: [request["method"] for request in server.requests[1:3]]
                   == ["DummyFunction"] * 2, 15.0)
        self.assertIsNone(watch.process.poll())
        self.assertEqual((len(watch.lines()), watch.err), (1, ""))

    def test_an_interruption_ends_it_by_the_signal(self) -> None:
        self.operated()
        for number in (signal.SIGINT, signal.SIGTERM):
            watch = self.watch()
            watch.wait_for_lines(1)
            watch.process.send_signal(number)
            self.assertEqual(watch.process.wait(timeout=5), -number)
            self.assertEqual(watch.err, "")

    def test_a_reader_that_goes_ends_it(self) -> None:
        collector = self.collector()
        receiver, _ = self.operated()
        reading, writing = os.pipe()
        process = subprocess.Popen([program(), "tracking", "--watch"], stdout=writing,
                                   env=self.environment())
        self.addCleanup(process.kill)
        os.close(writing)
        self.assertTrue(os.read(reading, 1))
        os.close(reading)
        self.sky(collector, receiver, 3)
        self.assertEqual(process.wait(timeout=5), -signal.SIGPIPE)
