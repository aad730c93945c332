"""The hub's recordings of raw blocks: switched by their category, played by the daemon."""

import subprocess
import time
from pathlib import Path

from harness import namespace, places, recording
from harness.collector import Collector
from harness.daemon import Daemon
from harness.hub import Hub
from harness.hubbed import Hubbed
from harness.publisher import PORT_HANDLER, Publisher
from harness.sentences import numbered
from harness.waiting import wait_until

MEGABYTE = 1_000_000


class HubRecording(Hubbed):
    def switch(self, publisher: Publisher, is_on: bool, category: str = PORT_HANDLER) -> None:
        """All that was told before has been taken when this returns."""
        publisher.request("logger.setCategory", category=category, enabled=is_on)

    def files(self, hub: Hub) -> list[Path]:
        """In the order in which they were begun."""
        return sorted((hub.state / "recordings").glob("*.pcap"), key=lambda path: path.name)

    def recorded(self, hub: Hub) -> list[bytes]:
        return [block.data for path in self.files(hub)
                for block in recording.read(path.read_bytes())]

    def wait_for(self, hub: Hub, blocks: int) -> list[bytes]:
        return wait_until(f"{blocks} blocks",
                          lambda: len(self.recorded(hub)) == blocks and self.recorded(hub),
                          state=lambda: len(self.recorded(hub)))

    def collect(self, path: Path) -> tuple[Collector, Daemon]:
        """A run of the daemon over a recording, and what was collected of it."""
        collector = self.collector()
        daemon = self.run_corvane("-d", "-r", str(path))
        collector.wait_for_the_end()
        collector.stop()
        return collector, daemon

    def test_blocks_are_recorded_while_their_category_is_on(self) -> None:
        hub = self.start()
        publisher = self.publisher()
        publisher.raw(b"before")
        self.switch(publisher, True)
        publisher.raw(b"first", time=1_700_000_000.25)
        publisher.raw(b"of another name", name="Other")
        publisher.raw(b"second", time=1_700_000_001.5)
        self.switch(publisher, False)
        publisher.raw(b"between")
        self.switch(publisher, True)
        publisher.raw(b"third", time=1_700_000_002.75)
        self.wait_for(hub, 3)
        files = self.files(hub)
        self.assertEqual([path.name for path in files],
                         ["NovatelPortHandler-20231114T221320Z.pcap",
                          "NovatelPortHandler-20231114T221322Z.pcap"])
        self.assertEqual(recording.read(files[0].read_bytes()),
                         [recording.Block(1_700_000_000.25, b"first"),
                          recording.Block(1_700_000_001.5, b"second")])
        self.assertEqual(recording.read(files[1].read_bytes()),
                         [recording.Block(1_700_000_002.75, b"third")])

    def test_categories_hold_over_restarts_and_files_are_never_written_to_again(self) -> None:
        hub = self.start()
        publisher = self.publisher()
        self.switch(publisher, True)
        publisher.raw(b"first", time=1_700_000_000.0)
        self.switch(publisher, True, "Other")
        self.assertEqual(hub.terminate(), 0)
        self.assertEqual(self.recorded(hub), [b"first"])
        hub = self.start()
        publisher = self.publisher()
        publisher.raw(b"second", time=1_700_000_000.5)
        self.wait_for(hub, 2)
        self.assertEqual([path.name for path in self.files(hub)],
                         ["NovatelPortHandler-20231114T221320Z-2.pcap",
                          "NovatelPortHandler-20231114T221320Z.pcap"])

    def test_a_recording_is_played_by_the_daemon(self) -> None:
        hub = self.start()
        publisher = self.publisher()
        self.switch(publisher, True)
        start = time.time()
        for at in range(10):
            publisher.raw(numbered(at + 1), time=start + at / 100)
        self.wait_for(hub, 10)
        self.assertEqual(hub.terminate(), 0)
        collector, _ = self.collect(self.files(hub)[0])
        self.assertEqual(collector.numbers(), list(range(1, 11)))

    def test_a_recording_is_played_to_its_last_block_after_the_hub_was_killed(self) -> None:
        hub = self.start()
        publisher = self.publisher()
        self.switch(publisher, True)
        for at in range(10):
            publisher.raw(numbered(at + 1))
        self.wait_for(hub, 10)
        hub.kill()
        collector, _ = self.collect(self.files(hub)[0])
        self.assertEqual(collector.numbers(), list(range(1, 11)))

    def test_a_damaged_tail_ends_a_recording_at_its_last_whole_block(self) -> None:
        hub = self.start()
        publisher = self.publisher()
        self.switch(publisher, True)
        for at in range(3):
            publisher.raw(numbered(at + 1))
        self.wait_for(hub, 3)
        hub.kill()
        path = self.files(hub)[0]
        path.write_bytes(path.read_bytes()[:-5])
        collector, daemon = self.collect(path)
        self.assertEqual(collector.numbers(), [1, 2])
        self.assertIn("the recording ends there", daemon.stderr)

    def test_files_end_at_their_size_and_the_oldest_go(self) -> None:
        hub = self.start("--recording-file-megabytes=1", "--recording-megabytes=3")
        publisher = self.publisher()
        self.switch(publisher, True)
        block = bytes(range(256)) * 200  # 51,200 bytes: 19 to a file
        start = 1_700_000_000
        for at in range(100):
            publisher.raw(at.to_bytes(4, "big") + block, time=start + at)
        self.switch(publisher, False)
        wait_until("the last block", lambda: self.files(hub) and [
            each for each in self.recorded(hub) if each.startswith((99).to_bytes(4, "big"))])
        sizes = [path.stat().st_size for path in self.files(hub)]
        self.assertLessEqual(max(sizes), MEGABYTE)
        self.assertLessEqual(sum(sizes), 3 * MEGABYTE)
        self.assertGreaterEqual(sum(sizes), 1.8 * MEGABYTE, "no more than needed has gone")
        numbers = [int.from_bytes(each[:4], "big") for each in self.recorded(hub)]
        self.assertEqual(numbers, list(range(numbers[0], 100)))

    def test_files_end_at_their_age(self) -> None:
        hub = self.start("--recording-file-minutes=1")
        publisher = self.publisher()
        self.switch(publisher, True)
        for seconds in (0, 30, 59, 60, 119, 120):
            publisher.raw(b"block", time=1_700_000_000 + seconds)
        self.wait_for(hub, 6)
        self.assertEqual([len(recording.read(path.read_bytes())) for path in self.files(hub)],
                         [3, 2, 1])

    def test_a_full_disk_is_told_once_and_recorded_to_when_there_is_room(self) -> None:
        state = self.folder / "hub" / "state"
        (state / "recordings").mkdir(parents=True)
        namespace.mount_tmpfs(state / "recordings", "64k")
        self.addCleanup(namespace.unmount, state / "recordings")
        hub = self.start()
        publisher = self.publisher()
        self.switch(publisher, True)
        for at in range(10):  # of which six have room
            publisher.raw(at.to_bytes(4, "big") + bytes(9996))
        hub.wait_for_error("The recordings: cannot write to")
        kept = self.recorded(hub)
        self.assertEqual([int.from_bytes(each[:4], "big") for each in kept],
                         list(range(len(kept))))
        self.assertEqual(hub.stderr.count("No space left on device"), 1, hub.stderr)
        self.files(hub)[0].unlink()
        publisher.raw(b"there is room")
        wait_until("the last block", lambda: self.recorded(hub)[-1:] == [b"there is room"])
        hub.wait_for_error("The recordings: they go on")

    def test_other_programs_read_a_recording(self) -> None:
        hub = self.start()
        publisher = self.publisher()
        self.switch(publisher, True)
        for at in range(5):
            publisher.raw(b"block", time=1_700_000_000 + at)
        self.wait_for(hub, 5)
        shown = subprocess.run(["capinfos", "-c", "-E", "-u", "-T", "-r", self.files(hub)[0]],
                               capture_output=True, text=True, check=True).stdout.split("\t")
        self.assertIn("user0", [each.strip() for each in shown])
        self.assertIn("5", [each.strip() for each in shown])
        self.assertIn("4.000000000", [each.strip() for each in shown])
        info = subprocess.run([places.binaries() / "corvanectl", "record", "info",
                               self.files(hub)[0]], capture_output=True, text=True, check=True)
        self.assertIn("5 recorded blocks", info.stdout)
