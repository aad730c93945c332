"""Recordings made of captures: what is in them, and that a replay publishes what the capture does."""

import json
import subprocess
from pathlib import Path

from harness import places
from harness.collector import Collector
from harness.scenario import MAIN, Scenario
from harness.simulator import write_capture

SECONDS = 8


class Recorded(Scenario):
    def operate(self, *arguments: str) -> subprocess.CompletedProcess:
        return subprocess.run([places.binaries() / "corvanectl", *arguments], capture_output=True,
                              text=True, check=False, timeout=30.0)

    def capture(self) -> Path:
        path = self.folder / "capture"
        write_capture(path, SECONDS)
        return path

    def converted(self, capture: Path) -> Path:
        recording = self.folder / "recording.pcap"
        run = self.operate("record", "convert", str(capture), str(recording))
        self.assertEqual(run.returncode, 0, run.stderr)
        return recording

    def published(self, *source: str) -> Collector:
        collector = self.collector()
        self.assertEqual(self.corvane(*source).status(SECONDS + 20.0), 0)
        collector.wait_for_the_end()
        collector.stop()
        return collector

    def told(self, collector: Collector) -> list[tuple]:
        """What does not depend on when it was read or how it came in pieces."""
        positions = [tuple(each[name] for name in (
            "week", "seconds", "x", "y", "z", "positionQuality", "fixQuality", "satellites"))
            for each in collector.messages("position.ecef")]
        sentences = [each["sentence"] for each in collector.messages("nmea.sentence")]
        return [*positions, *sentences]

    def test_a_replay_publishes_what_the_capture_does_in_its_own_pace(self) -> None:
        capture = self.capture()
        recording = self.converted(capture)
        once = self.published("-f", str(capture))
        again = self.published("-r", str(recording))
        self.assertEqual(self.told(again), self.told(once))
        self.assertGreater(len(self.told(once)), 2 * 20 * (SECONDS - 1))
        lines = again.messages("logger.data", name=MAIN, key="QRS_471")
        paces = [(float(line["value"].split(",")[2]), line.arrived) for line in lines]
        seconds = paces[-1][0] - paces[0][0]
        self.assertAlmostEqual(paces[-1][1] - paces[0][1], seconds, delta=0.3)

    def test_what_is_in_both_is_told_alike(self) -> None:
        capture = self.capture()
        recording = self.converted(capture)
        of_capture, of_recording = (json.loads(self.operate(
            "--json", "record", "info", str(path)).stdout) for path in (capture, recording))
        self.assertEqual(of_capture["logs"], of_recording["logs"])
        self.assertEqual(of_capture["bytes"], capture.stat().st_size)
        self.assertEqual(of_capture["logs"]["PDPXYZ"]["rate"], 20.0)
        self.assertEqual(of_capture["logs"]["PDPXYZ"]["gaps"], 0)
        self.assertEqual(of_capture["binary"]["rejected"], 0)
        self.assertGreater(of_recording["blocks"], 20 * (SECONDS - 1))
        shown = self.operate("record", "info", str(recording)).stdout
        self.assertIn("PDPXYZ", shown)
        self.assertIn("from week 2370, ", shown)

    def test_what_cannot_be_converted_is_refused_and_leaves_nothing(self) -> None:
        texts = self.file("texts", b"$GPGGA,1*00\r\n")
        wanted = self.folder / "new.pcap"
        for arguments, why in (
                ((texts, str(wanted)), "no binary log with a GPS time"),
                ((str(self.folder / "missing"), str(wanted)), "No such file"),
                ((str(self.capture()), "/nowhere/new.pcap"), "No such file"),
                ((str(self.capture()), texts), "exists already")):
            run = self.operate("record", "convert", *arguments)
            self.assertEqual(run.returncode, 1, run.stderr)
            self.assertIn(why, run.stderr)
        self.assertFalse(wanted.exists())
        recording = self.converted(self.capture())
        self.assertEqual(self.operate("record", "convert", str(recording), "x").returncode, 2)
        self.assertEqual(self.operate("record", "convert", "--force", str(self.capture()),
                                      str(recording)).returncode, 0)
