"""A program that tells the hub things, as the daemon does: one connection to TCP 10001, one
JSON-RPC notification a line. Everything it says is what the test says, so it can also lie."""

import base64
import json
import math
import socket
import time

from harness.waiting import PATIENCE

PORT = 10001
GPS_EPOCH = 315964800  # 1980-01-06, seconds since the Unix epoch
LEAP_SECONDS = 18  # GPS time minus UTC, since 2017
WEEK_SECONDS = 604800
PORT_HANDLER = "NovatelPortHandler"

# WGS-84 (NGA.STND.0036)
_A, _F = 6378137.0, 1.0 / 298.257223563
_E2 = _F * (2.0 - _F)


def ecef(latitude: float, longitude: float, height: float) -> tuple[float, float, float]:
    """Earth-centred coordinates of a place given in degrees and metres."""
    phi, lam = math.radians(latitude), math.radians(longitude)
    normal = _A / math.sqrt(1.0 - _E2 * math.sin(phi) ** 2)
    p = (normal + height) * math.cos(phi)
    return (p * math.cos(lam), p * math.sin(lam), (normal * (1.0 - _E2) + height) * math.sin(phi))


def ecef_velocity(latitude: float, longitude: float, east: float, north: float,
                  up: float) -> tuple[float, float, float]:
    """A velocity at a place given in degrees, along the Earth-centred axes."""
    phi, lam = math.radians(latitude), math.radians(longitude)
    outwards = up * math.cos(phi) - north * math.sin(phi)
    return (outwards * math.cos(lam) - east * math.sin(lam),
            outwards * math.sin(lam) + east * math.cos(lam),
            north * math.cos(phi) + up * math.sin(phi))


def gps_time(utc: float) -> tuple[int, float]:
    """GPS week and seconds of week of a moment given in seconds since the Unix epoch."""
    week, seconds = divmod(utc - GPS_EPOCH + LEAP_SECONDS, WEEK_SECONDS)
    return int(week), seconds


def with_checksum(text: str) -> str:
    """An NMEA sentence of what stands between its "$" and its "*"."""
    checksum = 0
    for byte in text.encode():
        checksum ^= byte
    return f"${text}*{checksum:02X}"


class Publisher:
    """Connects at once. Every method sends one message; `time` is now unless given, and any further
    keyword adds a field or replaces one that the method has set.

    In a test: `publisher = Publisher()`, `self.addCleanup(publisher.close)`,
    `publisher.register()`, `publisher.position(52.0, 5.0, 45.0)`.
    """

    def __init__(self) -> None:
        self._stream = socket.create_connection(("127.0.0.1", PORT), PATIENCE)
        self._answers = self._stream.makefile("rb")

    def close(self) -> None:
        """As when the program ends."""
        self._answers.close()
        self._stream.close()

    def send(self, data: bytes) -> None:
        """Bytes as they are."""
        self._stream.sendall(data)

    def notify(self, method: str, name: str, **params) -> None:
        params = {"name": name, "time": time.time(), **params}
        self.send(json.dumps({"jsonrpc": "2.0", "method": method, "params": params}).encode()
                  + b"\n")

    def request(self, method: str, **params):
        """The result of a request (a category's). Raises KeyError when it is an error instead."""
        call = {"jsonrpc": "2.0", "id": 1, "method": method, "params": params}
        self.send(json.dumps(call).encode() + b"\n")
        return json.loads(self._answers.readline())["result"]

    # --- logging

    def register(self, name: str = PORT_HANDLER, process: str = "corvane", **params) -> None:
        self.notify("logger.register", name,
                    **{"process": process, "pid": 4711, "version": "0.1.0", **params})

    def status(self, key: str, value: str, name: str = PORT_HANDLER, **params) -> None:
        self.notify("logger.status", name,
                    **{"level": "essential", "key": key, "value": value, **params})

    def data(self, key: str, value: str, name: str = PORT_HANDLER, **params) -> None:
        self.notify("logger.data", name, **{"key": key, "value": value, **params})

    def event(self, text: str, level: str = "warning", name: str = PORT_HANDLER, **params) -> None:
        self.notify("logger.event", name, **{"level": level, "text": text, **params})

    def raw(self, data: bytes, name: str = PORT_HANDLER, **params) -> None:
        self.notify("logger.raw", name, **{"data": base64.b64encode(data).decode(), **params})

    # --- positions

    def solution(self, **params) -> None:
        """A solution without a position, but for the fields that are given."""
        week, seconds = gps_time(time.time())
        fields = dict.fromkeys(("x", "y", "z", "vx", "vy", "vz", "sx", "sy", "sz",
                                "differentialAge", "velocityLatency"), 0.0)
        fields |= {"week": week, "seconds": seconds, "hostTime": time.time(), "positionQuality": 0,
                   "fixQuality": 0, "satellites": [0, 0, 0], "hdop": 100.0, "vdop": 100.0,
                   "solutionClass": -1}
        self.notify("position.ecef", "CPositionAPI", **{**fields, **params})

    def position(self, latitude: float, longitude: float, height: float,
                 velocity: tuple[float, float, float] = (0.0, 0.0, 0.0), **params) -> None:
        """A narrow-lane integer (RTK fixed) solution; the velocity is east, north, up."""
        x, y, z = ecef(latitude, longitude, height)
        vx, vy, vz = ecef_velocity(latitude, longitude, *velocity)
        fields = {"x": x, "y": y, "z": z, "vx": vx, "vy": vy, "vz": vz, "sx": 0.01, "sy": 0.01,
                  "sz": 0.02, "positionQuality": 3, "fixQuality": 4, "differentialAge": 1.0,
                  "satellites": [9, 5, 0], "solutionClass": 6}
        self.solution(**{**fields, **params})

    def sky(self, *channels: tuple[int, float | None], **params) -> None:
        """Every channel that tracks: number of the satellite, carrier to noise density."""
        satellites = [{"prn": prn, "word1": 0, "word2": 0, "cn0": cn0} for prn, cn0 in channels]
        self.notify("position.sky", "CPositionAPI", **{"satellites": satellites, **params})

    def base(self, latitude: float, longitude: float, height: float, **params) -> None:
        x, y, z = ecef(latitude, longitude, height)
        self.notify("position.base", "CPositionAPI", **{"x": x, "y": y, "z": z, **params})

    def reference(self, latitude: float, longitude: float, height: float, **params) -> None:
        x, y, z = ecef(latitude, longitude, height)
        week, seconds = gps_time(time.time())
        self.notify("reference.gps", "ReferenceManagerAPI",
                    **{"week": week, "seconds": seconds, "x": x, "y": y, "z": z, "gps": 9,
                       "glonass": 5, "other": 0, **params})

    # --- NMEA

    def sentence(self, text: str, **params) -> None:
        """An NMEA sentence of what stands between its "$" and its "*"."""
        _, seconds = gps_time(time.time())
        self.notify("nmea.sentence", "CNMEAHandlerAPI",
                    **{"id": text.partition(",")[0], "gpsTime": int(seconds) * 1000,
                       "sentence": with_checksum(text), **params})

    def geoid(self, separation: float, **params) -> None:
        self.notify("nmea.geoid", "CNMEAHandlerAPI", **{"separation": separation, **params})

    # --- diagnostics

    def raise_diagnostic(self, code: int, sub: int = 0, value: float = 1,
                         name: str = "CPositionManager", **params) -> None:
        self.notify("diagnostics.raise", name,
                    **{"code": code, "sub": sub, "value": value, **params})

    def clear_diagnostic(self, code: int, sub: int = 0, name: str = "CPositionManager",
                         **params) -> None:
        self.notify("diagnostics.clear", name, **{"code": code, "sub": sub, **params})

    def activity(self, received: int, sentences: int, name: str = PORT_HANDLER, **params) -> None:
        self.notify("diagnostics.activity", name,
                    **{"received": received, "sentences": sentences, **params})
