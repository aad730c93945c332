"""What a run has printed and published so far; everybody who publishes adds to it."""

import json
from dataclasses import dataclass, field

from decoder.records import Record

LEAVES_AFTER = {"logger.register": 0, "logger.event": 1}
STATE = 2


@dataclass
class Outcome:
    """The screen dump and the canonical lines of what is published."""

    dump: bytearray = field(default_factory=bytearray)
    published: list[str] = field(default_factory=list)
    records: list[Record] = field(default_factory=list)

    def publish(self, method: str, *fields) -> None:
        self.published.append(f"{method} {json.dumps(fields, ensure_ascii=False, allow_nan=False)}")

    def register(self, name: str) -> None:
        self.publish("logger.register", name, "corvane", "<pid>", "<version>")

    def essential(self, name: str, key: str, value: str) -> None:
        self.publish("logger.status", name, "essential", key, value)

    def info(self, name: str, key: str, value: str) -> None:
        self.publish("logger.status", name, "info", key, value)

    def warn(self, name: str, text: str) -> None:
        self.publish("logger.event", name, "warning", text)

    def error(self, name: str, text: str) -> None:
        self.publish("logger.event", name, "error", text)

    def diagnostic(self, name: str, descriptor: tuple[int, int], raised: bool) -> None:
        """Each call is told, whether or not it changes anything."""
        if raised:
            self.publish("diagnostics.raise", name, *descriptor, 1)
        else:
            self.publish("diagnostics.clear", name, *descriptor)

    def connect(self) -> None:
        """All so far was said to nobody: names leave first, then lines, then what is a state."""
        self.published.sort(key=lambda line: LEAVES_AFTER.get(line.partition(" ")[0], STATE))
