"""The messages that the daemon tells the collecting server: their fields and their canonical text.

This is the one place where what differs from run to run is normalised:
  * `time` of every message is left out (tests that care about it look at the message itself);
  * `pid` and `version` of a registration read <pid> and <version>;
  * the first value of a QRS_ line, the record's reception time, reads <received>;
  * the GPS week and seconds of a QRS_65535 line, which an NMEA sentence has from its reception
    time, read <week> and <seconds>;
  * the data of a raw block reads as its length and the SHA-256 of its bytes;
  * `hostTime` of a position.ecef, the time of its publication, reads <host time>;
  * latitude and longitude of a psrxyz_pos status are rounded to 9 decimals and its height to 3,
    since the digits after these may differ between maths libraries; a zero there has no sign, nor
    has a NaN; its X, Y and Z stay as they are;
  * a number that may have a fraction reads as one also when it was written without ("1" as 1.0),
    and a satellite of a position.sky has its fields in the order of SATELLITE_FIELDS;
  * `diagnostics.activity` goes by the clock and has no canonical text.
"""

import base64
import hashlib
import json
from dataclasses import dataclass
from decimal import Decimal, localcontext

FIELDS = {
    "logger.register": ("name", "process", "pid", "version"),
    "logger.status": ("name", "level", "key", "value"),
    "logger.data": ("name", "key", "value"),
    "logger.event": ("name", "level", "text"),
    "logger.raw": ("name", "data"),
    "logger.getCategory": ("category",),
    "logger.setCategory": ("category", "enabled"),
    "position.ecef": ("name", "x", "y", "z", "vx", "vy", "vz", "sx", "sy", "sz", "week", "seconds",
                      "hostTime", "positionQuality", "fixQuality", "differentialAge", "satellites",
                      "hdop", "vdop", "solutionClass", "velocityLatency"),
    "position.sky": ("name", "satellites"),
    "position.base": ("name", "x", "y", "z"),
    "reference.gps": ("name", "week", "seconds", "x", "y", "z", "gps", "glonass", "other"),
    "nmea.sentence": ("name", "id", "gpsTime", "sentence"),
    "nmea.geoid": ("name", "separation"),
    "diagnostics.raise": ("name", "code", "sub", "value"),
    "diagnostics.clear": ("name", "code", "sub"),
    "diagnostics.activity": ("name", "received", "sentences"),
}
SATELLITE_FIELDS = ("prn", "word1", "word2", "cn0")
FRACTIONS = {  # fields that are no whole numbers by their nature
    "x", "y", "z", "vx", "vy", "vz", "sx", "sy", "sz", "seconds", "differentialAge", "hdop", "vdop",
    "velocityLatency", "separation",
}
POSITION_KEY = "psrxyz_pos"
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
    if method == "position.sky" and any(set(each) != set(SATELLITE_FIELDS)
                                        for each in params["satellites"]):
        raise ValueError(f"not a sky view: {line[:200]!r}")
    if not isinstance(params["time"], (int, float)):
        raise ValueError(f"the time is not a number: {line[:200]!r}")
    return Message(method, params, connection, line, arrived)


def _data_value(key: str, value: str) -> str:
    if not key.startswith("QRS_"):
        return value
    if key == NMEA_KEY:
        return "<received>,<week>,<seconds>"
    return "<received>," + value.partition(",")[2]


def _shortened(text: str, decimals: int) -> str:
    """A printed number with fewer decimals."""
    value = Decimal(text)
    if not value.is_finite():
        return text.removeprefix("-") if value.is_nan() else text
    with localcontext() as context:
        context.prec = 400  # the largest double has 309 digits
        value = value.quantize(Decimal(1).scaleb(-decimals))
    return format(value if value else abs(value), "f")


def _status_value(key: str, value: str) -> str:
    if key != POSITION_KEY:
        return value
    *exact, latitude, longitude, height = value.split(",")
    return ",".join([*exact, _shortened(latitude, 9), _shortened(longitude, 9),
                     _shortened(height, 3)])


def _fraction(value: float | None) -> float | None:
    return None if value is None else float(value)


def _sky(satellites: list[dict]) -> list[dict]:
    return [{**{name: each[name] for name in SATELLITE_FIELDS}, "cn0": _fraction(each["cn0"])}
            for each in satellites]


def _raw(value: str) -> str:
    block = base64.b64decode(value, validate=True)
    return f"{len(block)} bytes, sha256 {hashlib.sha256(block).hexdigest()}"


def _field(message: Message, name: str):
    value = message[name]
    match message.method, name:
        case "logger.register", ("pid" | "version"):
            return f"<{name}>"
        case "logger.status", "value":
            return _status_value(message["key"], value)
        case "logger.data", "value":
            return _data_value(message["key"], value)
        case "logger.raw", "data":
            return _raw(value)
        case "position.ecef", "hostTime":
            return "<host time>"
        case "position.sky", "satellites":
            return _sky(value)
    return _fraction(value) if name in FRACTIONS else value


def canonical(message: Message) -> str:
    """One line: the method, then its fields in the table's order as a JSON array."""
    fields = [_field(message, name) for name in FIELDS[message.method]]
    return f"{message.method} {json.dumps(fields, ensure_ascii=False)}"


def canonical_text(messages: list[Message]) -> str:
    """All that has a canonical text, in its order, a message a line."""
    lines = [canonical(each) for each in messages if each.method != "diagnostics.activity"]
    return "".join(line + "\n" for line in lines)
