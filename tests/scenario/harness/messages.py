"""The messages that the daemon tells the collecting server: their fields and their canonical text.

This is the one place where what differs from run to run is normalised:
  * `time` of every message is left out (tests that care about it look at the message itself);
  * `pid` and `version` of a registration read <pid> and <version>;
  * the first value of a QRS_ line, the record's reception time, reads <received>;
  * the GPS week and seconds of a QRS_65535 line, which an NMEA sentence has from its reception
    time, read <week> and <seconds>;
  * the data of a raw block reads as its length and the SHA-256 of its bytes;
  * `diagnostics.activity` goes by the clock and has no canonical text.
"""

import base64
import hashlib
import json
from dataclasses import dataclass

FIELDS = {
    "logger.register": ("name", "process", "pid", "version"),
    "logger.status": ("name", "level", "key", "value"),
    "logger.data": ("name", "key", "value"),
    "logger.event": ("name", "level", "text"),
    "logger.raw": ("name", "data"),
    "logger.getCategory": ("category",),
    "logger.setCategory": ("category", "enabled"),
    "diagnostics.raise": ("name", "code", "sub", "value"),
    "diagnostics.clear": ("name", "code", "sub"),
    "diagnostics.activity": ("name", "received", "sentences"),
}
REQUESTS = ("logger.getCategory", "logger.setCategory")
NMEA_KEY = "QRS_65535"


@dataclass(frozen=True)
class Message:
    """One message, as it came."""

    method: str
    params: dict
    connection: int  # counted from 0 over the collecting server's life
    line: bytes
    arrived: float  # seconds since the Unix epoch

    def __getitem__(self, field: str):
        return self.params[field]


def parse(line: bytes, connection: int, arrived: float) -> Message:
    """Raises ValueError unless the line is a message exactly as the table above has it."""
    message = json.loads(line)
    method, params = message.get("method"), message.get("params")
    wanted = {"jsonrpc": "2.0", "method": method, "params": params}
    if method in REQUESTS:
        wanted["id"] = message.get("id")
    if message != wanted:
        raise ValueError(f"not a message: {line[:200]!r}")
    if method not in FIELDS:
        raise ValueError(f"unknown method: {line[:200]!r}")
    if set(params) != {*FIELDS[method], "time"}:
        raise ValueError(f"fields missing or too many: {line[:200]!r}")
    if not isinstance(params["time"], (int, float)):
        raise ValueError(f"the time is not a number: {line[:200]!r}")
    return Message(method, params, connection, line, arrived)


def _data_value(key: str, value: str) -> str:
    if not key.startswith("QRS_"):
        return value
    if key == NMEA_KEY:
        return "<received>,<week>,<seconds>"
    return "<received>," + value.partition(",")[2]


def _field(message: Message, name: str):
    value = message[name]
    if message.method == "logger.register" and name in ("pid", "version"):
        return f"<{name}>"
    if message.method == "logger.data" and name == "value":
        return _data_value(message["key"], value)
    if message.method == "logger.raw" and name == "data":
        block = base64.b64decode(value, validate=True)
        return f"{len(block)} bytes, sha256 {hashlib.sha256(block).hexdigest()}"
    return value


def canonical(message: Message) -> str:
    """One line: the method, then its fields in the table's order as a JSON array."""
    fields = [_field(message, name) for name in FIELDS[message.method]]
    return f"{message.method} {json.dumps(fields, ensure_ascii=False)}"


def canonical_text(messages: list[Message]) -> str:
    """All that has a canonical text, in its order, a message a line."""
    lines = [canonical(each) for each in messages if each.method != "diagnostics.activity"]
    return "".join(line + "\n" for line in lines)
