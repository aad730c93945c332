"""Settings that outlive a daemon killed at any moment, and other programs that write them too."""

import fcntl
import os
import random
import re
import time
from collections.abc import Iterator
from concurrent.futures import ThreadPoolExecutor
from dataclasses import dataclass
from pathlib import Path

from harness import logs
from harness.daemon import Daemon
from harness.scenario import Scenario
from harness.waiting import wait_until

CARD = 1  # the component type of the receiver itself
CHANGES = 30_000  # of each setting; far more than a run comes to before it is killed
KILLS, SIDE_BY_SIDE = 200, 4
LONGEST_LIFE = 0.08  # seconds from the first write to the kill
MODE = 0o640
PAUSE = 0.002  # seconds; the daemon, which looks for the lock every millisecond, gets it as well

BEFORE, BETWEEN, BEHIND = """\
# kept by hand
[Corvane]
position_update = 0.2
current_channel_configuration = """, """
; found out from the receiver's model
receiver_supports_glonass   =   """, """

odd line without a meaning
[platform]
note = a = b # c
"""
STORED = re.compile(re.escape(BEFORE) + r"(\d+)" + re.escape(BETWEEN) + "([01])"
                    + re.escape(BEHIND))
CREATED = re.compile(r"\[Corvane\]\ncurrent_channel_configuration = (\d+)\n"
                     r"(receiver_supports_glonass = [01]\n)?")


def storm(changes: int) -> bytes:
    """Logs that change the set in use to 1, 2, 3..., and GLONASS each time to whether it is odd."""
    model = (logs.models((CARD, b"L12LRVA")), logs.models((CARD, b"L12LGRV")))
    return b"".join(logs.chanconfiglist(number) + model[number % 2]
                    for number in range(1, changes + 1))


@dataclass(frozen=True)
class Stored:
    """The two settings, as a whole file holds them."""

    in_use: int
    glonass: int

    def follows(self, former: "Stored") -> bool:
        """Whether a storm over the former settings comes through these."""
        first = Stored(1, former.glonass)
        return self in (former, first) or (self.in_use > 0 and self.glonass in (
            self.in_use % 2, (self.in_use - 1) % 2))


def stored(path: Path) -> Stored | None:
    """None when the file is not whole, or anything but the two settings has changed."""
    match = STORED.fullmatch(path.read_text())
    return Stored(int(match[1]), int(match[2])) if match else None


@dataclass
class Outcome:
    """How a run ended that was killed."""

    former: Stored
    found: Stored
    had_temporary: bool  # killed between the beginning of a write and its end


class Killed(Scenario):
    def runner(self, name: str) -> "Runner":
        return Runner(self, self.folder / name)

    def setUp(self) -> None:
        super().setUp()
        self.storm = self.file("storm", storm(CHANGES))

    def test_after_200_kills_the_settings_were_whole_each_time(self) -> None:
        runners = [self.runner(str(number)) for number in range(SIDE_BY_SIDE)]
        with ThreadPoolExecutor(SIDE_BY_SIDE) as pool:
            outcomes = [outcome for part in pool.map(
                lambda runner: list(runner.killed(KILLS // SIDE_BY_SIDE)), runners)
                for outcome in part]
        self.assertEqual(len(outcomes), KILLS)
        in_storm = [each for each in outcomes if 1 < each.found.in_use < CHANGES]
        self.assertGreater(len(in_storm), KILLS // 2)
        self.assertGreater(len({each.found.in_use for each in outcomes}), KILLS // 4)
        self.assertGreater(sum(each.had_temporary for each in outcomes), KILLS // 40)
        for runner in runners:
            runner.run_to_the_end()

    def test_a_file_that_is_made_anew_is_there_whole_or_not_at_all(self) -> None:
        found = []
        for number in range(40):
            path = self.folder / f"new.{number}" / "settings.conf"
            daemon = Runner(self, path.parent, exists=False).start()
            wait_until("the folder", path.parent.exists)
            time.sleep(random.Random(number).uniform(0.0, 0.002))
            daemon.end()
            if path.exists():
                self.assertRegex(path.read_text(), CREATED)
                self.assertTrue(CREATED.fullmatch(path.read_text()), path.read_text())
            found.append(path.exists())
        self.assertIn(True, found)


class Runner:
    """Runs of the daemon over one file of settings, one after another."""

    def __init__(self, test: Killed, folder: Path, *, exists: bool = True) -> None:
        self._test = test
        self._folder = folder
        self.path = folder / "settings.conf"
        self._runs = 0
        if exists:
            folder.mkdir()
            self.path.write_text(f"{BEFORE}0{BETWEEN}0{BEHIND}")
            self.path.chmod(MODE)

    def start(self, content: str | None = None) -> Daemon:
        self._runs += 1
        return Daemon(self._test.folder / f"runs.{self._folder.name}" / str(self._runs),
                      ("-p", "-u", "none", "-f", content or self._test.storm),
                      environment={"CORVANE_CONFIG": str(self.path), "CORVANE_TRACE": "off"})

    def killed(self, times: int) -> Iterator[Outcome]:
        for number in range(times):
            yield self._kill_one(random.Random(f"{self._folder.name} {number}"))

    def _kill_one(self, chance: random.Random) -> Outcome:
        former = self._whole()
        stamp = self._stamp()
        daemon = self.start()
        wait_until("the first write", lambda: self._stamp() != stamp)
        end = time.monotonic() + chance.uniform(0.0, LONGEST_LIFE)
        seen = self._whole()
        while time.monotonic() < end:
            seen = self._whole()  # a reader finds it whole at every moment
        self._test.assertTrue(daemon.is_running(), "the storm was over too early")
        daemon.end()
        found = self._whole()
        self._test.assertTrue(found.follows(former), f"{found} after {former}")
        self._test.assertGreaterEqual(found.in_use, seen.in_use)
        self._test.assertEqual(self.path.stat().st_mode & 0o7777, MODE)
        return Outcome(former, found, len(self.left_over()) > 0)

    def _stamp(self) -> tuple[int, int]:
        """Differs after every write, whether in place or not."""
        status = self.path.stat()
        return status.st_ino, status.st_mtime_ns

    def _whole(self) -> Stored:
        found = stored(self.path)
        self._test.assertIsNotNone(found, self.path.read_text())
        return found

    def left_over(self) -> list[str]:
        """What is in the folder beside the settings and their lock."""
        known = {self.path.name, f"{self.path.name}.lock"}
        return [name for name in os.listdir(self._folder) if name not in known]

    def run_to_the_end(self) -> None:
        """What killed runs have left hinders no later one, and is gone after it."""
        changes = 7
        content = self._test.file(f"short.{self._folder.name}", storm(changes))
        daemon = self.start(content)
        self._test.assertEqual(daemon.status(), 0, daemon.stderr)
        self._test.assertEqual(self._whole(), Stored(changes, changes % 2))
        self._test.assertEqual(self.left_over(), [])


class SeveralWriters(Scenario):
    ROUNDS = 200

    def test_what_another_program_writes_meanwhile_is_not_lost(self) -> None:
        self.storm = self.file("storm", storm(CHANGES))
        runner = Runner(self, self.folder / "shared")
        daemon = runner.start()
        wait_until("the storm", lambda: stored(runner.path) != Stored(0, 0))
        seen = set()
        for number in range(self.ROUNDS):
            seen.add(self.write_note(runner.path, number))
            time.sleep(PAUSE)
        self.assertTrue(daemon.is_running(), "the storm was over too early")
        daemon.end()
        self.assertIn(f"\nnote = {self.ROUNDS - 1}\n", runner.path.read_text())
        self.assertGreater(len(seen), self.ROUNDS // 4, "both have written by turns")
        self.assertEqual(daemon.stderr.count("another program"), 0, daemon.stderr)

    def write_note(self, path: Path, number: int) -> int:
        """Counts the note up as a well-behaved program does; the set in use that it saw."""
        with open(f"{path}.lock", "ab") as lock:
            fcntl.flock(lock, fcntl.LOCK_EX)
            text = path.read_text()
            former = "a = b # c" if number == 0 else str(number - 1)
            self.assertIn(f"\nnote = {former}\n", text)
            temporary = path.with_suffix(".other")
            temporary.write_text(text.replace(f"\nnote = {former}\n", f"\nnote = {number}\n"))
            temporary.rename(path)
            return int(re.search(r"current_channel_configuration = (\d+)", text)[1])
