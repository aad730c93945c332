"""A whole offline run over a capture, as the golden files keep it."""

from dataclasses import dataclass
from pathlib import Path

from harness import places
from harness.collector import Collector
from harness.daemon import Daemon
from harness.messages import canonical_text


@dataclass(frozen=True)
class Outcome:
    """What the screen showed and what the collecting server was told, in canonical form."""

    dump: bytes
    published: str


def golden_paths(name: str) -> tuple[Path, Path]:
    return places.GOLDEN / f"{name}.dump.txt", places.GOLDEN / f"{name}.published.txt"


def golden(name: str) -> Outcome:
    dump, published = golden_paths(name)
    return Outcome(dump.read_bytes(), published.read_text(encoding="utf-8"))


def write_golden(name: str, outcome: Outcome) -> None:
    dump, published = golden_paths(name)
    places.GOLDEN.mkdir(parents=True, exist_ok=True)
    dump.write_bytes(outcome.dump)
    published.write_text(outcome.published, encoding="utf-8")


def run_over(capture: Path, folder: Path, *options: str) -> Outcome:
    """Raises AssertionError unless the run ends well and all that came was well formed."""
    collector = Collector().start()
    daemon = Daemon(folder, ("-p", "-u", "none", *options, "-d", "-f", str(capture)))
    try:
        status = daemon.status()
        collector.wait_for_the_end()
    finally:
        daemon.end()
        collector.stop()
    if status != 0 or collector.malformed:
        raise AssertionError(f"status {status}, {collector.malformed}, {daemon.stderr}")
    return Outcome(daemon.stdout, canonical_text(collector.messages()))
