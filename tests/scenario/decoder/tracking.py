"""What the channels of a TRACKSTAT amount to."""

import math
from dataclasses import dataclass

NO_OBSERVATION = 99
SBAS_SYSTEMS = {
    "WAAS": (122, 134, 135, 138), "EGNOS": (120, 124, 126, 131), "MSAS": (129, 137),
}
GPS, GLONASS = range(1, 33), range(38, 62)
L1_SIGNALS, L2_SIGNALS = (0,), (5, 9, 17)


@dataclass(frozen=True)
class Counts:
    gps_l1: int
    gps_l2: int
    glonass_l1: int
    glonass_l2: int
    distinct: int


def _observed(channels: list[dict]) -> list[dict]:
    return [channel for channel in channels if channel["reject_code"] != NO_OBSERVATION]


def _signal(channel: dict) -> int:
    return channel["tracking"] >> 21 & 0x1F


def count_channels(channels: list[dict]) -> Counts:
    observed = _observed(channels)

    def count(prns: range, signals: tuple[int, ...]) -> int:
        return sum(each["prn"] in prns and _signal(each) in signals for each in observed)

    return Counts(count(GPS, L1_SIGNALS), count(GPS, L2_SIGNALS), count(GLONASS, L1_SIGNALS),
                  count(GLONASS, L2_SIGNALS), len({each["prn"] for each in observed}))


def _system(prn: int) -> str:
    return next((name for name, prns in SBAS_SYSTEMS.items() if prn in prns), "")


def sbas_text(channels: list[dict]) -> str:
    """In the order of the channels, each satellite once."""
    prns = dict.fromkeys(each["prn"] for each in _observed(channels) if _system(each["prn"]))
    return "".join(f"{prn} ({_system(prn)})," for prn in prns)


def sky_view(channels: list[dict]) -> list[dict]:
    """Every channel with a satellite, also one without an observation."""
    return [{"prn": each["prn"] & 0xFF, "word1": 0, "word2": 0, "cn0": _whole(each["cn0"])}
            for each in channels if each["prn"] > 0]


def _whole(value: float) -> float | None:
    return float(math.trunc(value)) if math.isfinite(value) else None
