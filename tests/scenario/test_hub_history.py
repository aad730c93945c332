"""The hub's history: what was published is answered, over restarts and whatever the disk does."""

import json
import sqlite3
import time
from pathlib import Path

from harness import namespace
from harness.hub import Hub
from harness.hubbed import Hubbed
from harness.publisher import gps_time
from harness.waiting import PATIENCE, wait_until
from harness.web import ask, ask_json

PLACE = (52.1, 5.2, 48.9)
MICROMETRE = 1e-6


def moment(seconds: float) -> dict:
    """What a solution of that moment tells of it."""
    week, of_week = gps_time(seconds)
    return {"time": seconds, "week": week, "seconds": of_week}


class HubHistory(Hubbed):
    def entries(self, what: str, **arguments) -> list[dict]:
        """A list, newest first; empty also while there is no history yet."""
        status, body = ask(f"/api/history/{what}", **arguments)
        return json.loads(body)[what] if status == 200 else []

    def positions(self, start: float, end: float, points: int = 1000) -> dict:
        status, body = ask("/api/history/positions", **{"from": start, "to": end,
                                                        "points": points})
        return json.loads(body) if status == 200 else {"time": []}

    def wait_for(self, what: str, count: int, seconds: float = PATIENCE, **arguments) -> list[dict]:
        return wait_until(f"{count} {what}", lambda: len(
            self.entries(what, **arguments)) == count and self.entries(what, **arguments),
                          seconds, state=lambda: self.entries(what, **arguments))

    def wait_for_positions(self, count: int, start: float, end: float) -> dict:
        return wait_until(f"{count} positions", lambda: len(
            self.positions(start, end)["time"]) == count and self.positions(start, end),
                          state=lambda: self.positions(start, end))

    def test_positions_are_answered_as_columns_one_a_second(self) -> None:
        self.start()
        publisher = self.publisher()
        start = int(time.time()) - 100
        publisher.sky((7, 40.0), (7, 30.0), (8, 0.0), time=start)
        for at in range(40):  # ten a second
            publisher.position(*PLACE[:2], PLACE[2] + at, **moment(start + at / 10))
        publisher.solution(**moment(start + 5))
        positions = self.wait_for_positions(5, start, start + 10)
        self.assertEqual(positions["time"], [*(start + at for at in range(4)), start + 5])
        self.assertEqual(positions["quality"], [3, 3, 3, 3, 0])
        self.assertEqual(positions["satellites"], [14, 14, 14, 14, 0])
        self.assertEqual(positions["cn0"], [35.0] * 5)
        self.assertEqual(positions["latitude"][4], None)
        for at in range(4):
            self.assertAlmostEqual(positions["latitude"][at], PLACE[0], delta=1e-9)
            self.assertAlmostEqual(positions["longitude"][at], PLACE[1], delta=1e-9)
            self.assertAlmostEqual(positions["height"][at], PLACE[2] + 10 * at, delta=MICROMETRE)
        self.assertEqual((positions["from"], positions["to"], positions["step"]),
                         (start, start + 10, 1))

    def test_long_spans_have_as_few_points_as_were_asked_for(self) -> None:
        self.start()
        publisher = self.publisher()
        start = int(time.time()) - 3000
        for at in range(3000):
            quality = 1 if at == 1500 else 3
            publisher.position(PLACE[0] + at * 1e-6, *PLACE[1:], positionQuality=quality,
                               **moment(start + at))
        self.wait_for_positions(1, start + 2999, start + 2999)
        positions = self.positions(start, start + 2999, 10)
        self.assertLessEqual(len(positions["time"]), 10)
        self.assertGreaterEqual(len(positions["time"]), 9)
        self.assertEqual(positions["quality"].count(1), 1)
        for at, latitude in zip(positions["time"], positions["latitude"], strict=True):
            self.assertAlmostEqual(latitude, PLACE[0] + (at - start) * 1e-6, delta=1e-9)

    def test_events_diagnostics_and_statuses_are_answered_newest_first(self) -> None:
        self.start()
        publisher = self.publisher()
        now = time.time()
        publisher.event("first", time=now - 3)
        publisher.event("second", level="error", time=now - 2)
        for at in range(5):
            publisher.raise_diagnostic(79141, 2, value=5, time=now - 10 + at)
        publisher.clear_diagnostic(79141, 2, time=now - 1)
        publisher.status("key", "old", time=now - 60)
        publisher.status("silent", "x", level="info")
        self.wait_for("statuses", 1)
        publisher.status("key", "new", time=now - 1)

        events = self.wait_for("events", 2)
        self.assertEqual(events, [
            {"time": now - 2, "level": "error", "name": "NovatelPortHandler", "text": "second"},
            {"time": now - 3, "level": "warning", "name": "NovatelPortHandler", "text": "first"}])
        diagnostics = self.wait_for("diagnostics", 2)
        self.assertEqual(diagnostics[0], {
            "time": now - 1, "name": "CPositionManager", "code": 79141, "sub": 2,
            "isRaised": False, "value": None})
        self.assertEqual((diagnostics[1]["time"], diagnostics[1]["isRaised"],
                          diagnostics[1]["value"]), (now - 10, True, 5))
        statuses = self.wait_for("statuses", 2, seconds=15.0)  # no more than one in ten
        self.assertEqual([each["value"] for each in statuses], ["new", "old"])
        self.assertEqual(self.entries("statuses", name="other"), [])
        self.assertEqual(self.entries("events", limit=1), events[:1])

    def test_all_is_there_after_a_restart_and_a_state_that_is_told_again_is_not_news(self) -> None:
        hub = self.start()
        publisher = self.publisher()
        now = time.time()

        def tell() -> None:
            publisher.status("key", "value", time=now)
            publisher.raise_diagnostic(79141, 2, time=now)
            publisher.position(*PLACE, time=now)

        tell()
        publisher.event("before the end")
        # Connected no more, it has read all that was told.
        publisher.request("logger.getCategory", category="x")
        self.assertEqual(hub.terminate(), 0, hub.stderr)
        self.assertEqual(list(hub.state.glob("history.db-*")), [], "all is in one file")

        self.start()
        publisher = self.publisher()
        tell()
        publisher.event("after it")
        self.wait_for("events", 2)
        self.assertEqual(len(self.entries("statuses")), 1)
        self.assertEqual(len(self.entries("diagnostics")), 1)
        self.assertEqual(len(ask_json("/api/history/positions")["time"]), 1)

    def test_no_more_than_a_second_is_lost_when_the_hub_is_killed(self) -> None:
        hub = self.start()
        self.publisher().event("told")
        self.wait_for("events", 1)
        hub.kill()
        self.start()
        self.assertEqual(self.wait_for("events", 1)[0]["text"], "told")

    def test_a_wrong_question_is_answered_with_what_is_wrong(self) -> None:
        self.start()
        self.publisher().event("told")
        self.wait_for("events", 1)
        self.assertEqual(ask("/api/history/events", limit=0), (
            400, "Wrong argument: 'limit' is no number from 1 to 1000: '0'.\n"))
        self.assertEqual(ask("/api/history/positions", **{"from": 2, "to": 1}), (
            400, "Wrong argument: 'from' is later than 'to'.\n"))
        self.assertEqual(ask("/api/history/weather")[0], 404)

    def test_a_history_that_is_turned_off_is_not_there(self) -> None:
        hub = self.start("--history-days=0")
        self.publisher().event("told")
        self.assertEqual(ask("/api/history/events")[0], 404)
        self.assertEqual(hub.terminate(), 0)
        self.assertEqual(list(hub.state.glob("history*")), [])

    def test_a_damaged_history_is_moved_aside_with_one_message(self) -> None:
        hub = self.start()
        publisher = self.publisher()
        for at in range(2000):
            publisher.event(f"event {at} " + 100 * "x")
        wait_until("the last event",
                   lambda: "event 1999" in str(self.entries("events", limit=1)))
        self.assertEqual(hub.terminate(), 0)
        path = hub.state / "history.db"
        with path.open("r+b") as file:
            file.seek(10 * 4096)
            file.write(20 * 4096 * b"x")
        hub = self.start()
        self.publisher().event("new")
        self.assertEqual(self.wait_for("events", 1)[0]["text"], "new")
        self.assertEqual(hub.stderr.count("The history: "), 1, hub.stderr)
        self.assertIn(f"it is now {path}.aside and a new one is begun", hub.stderr)
        self.assertTrue(Path(f"{path}.aside").exists())

    def test_a_history_of_another_version_is_moved_aside(self) -> None:
        state = self.folder / "hub" / "state"
        state.mkdir(parents=True)
        with sqlite3.connect(state / "history.db") as other:
            other.execute("CREATE TABLE event(what)")
        other.close()
        hub = self.start()
        self.publisher().event("new")
        self.wait_for("events", 1)
        self.assertIn("is no history of this version", hub.stderr)

    def test_a_full_disk_is_told_once_and_written_to_when_there_is_room(self) -> None:
        state = self.folder / "hub" / "state"
        state.mkdir(parents=True)
        namespace.mount_tmpfs(state, "1m")
        self.addCleanup(namespace.unmount, state)
        hub = self.start()
        publisher = self.publisher()
        publisher.event("before")
        self.wait_for("events", 1)
        filler = state / "filler"
        with filler.open("wb", buffering=0) as file:
            try:
                while True:
                    file.write(bytes(4096))
            except OSError:
                pass
        for at in range(100):
            publisher.event(f"event {at} " + 2000 * "x")
        hub.wait_for_error("The history: cannot write to")
        publisher.event("last")
        publisher.position(*PLACE)
        time.sleep(2.5)  # two more attempts
        self.assertEqual(hub.stderr.count("The history: cannot write to"), 1, hub.stderr)
        self.assertTrue(hub.is_running())
        filler.unlink()
        hub.wait_for_error("history.db is written again")
        self.assertEqual(self.wait_for("events", 102, limit=1000)[0]["text"], "last")

    def test_a_folder_that_is_missing_is_made(self) -> None:
        state = self.folder / "hub" / "state"
        hub = Hub(self.folder / "hub", prefix=("sh", "-c", f'rmdir {state} && exec "$0" "$@"'))
        self.addCleanup(hub.kill)
        self.publisher().event("told")
        self.wait_for("events", 1)
        self.assertEqual(state.stat().st_mode & 0o777, 0o755)
