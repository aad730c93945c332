"""What the position manager publishes: solutions, the base station, the geoid, the reference."""

import math

from decoder.geodesy import position_text
from decoder.outcome import Outcome
from decoder.printf import number, real, signed, single
from decoder.receiver_status import ReceiverStatus
from decoder.records import Record
from decoder.solution import (COMPUTED, fix_quality, is_usable, quality_by_type, rtk_quality_flag,
                              solution_class)

LOGGER = "NovatelPositionManager"
OWNER = "CPositionManager"
API = "CPositionAPI"
GLIDE = (79141, 2)
LAST_FIRMWARE_WITH_GLIDE_CHECK = 10100
NO_DOP = 100.0
FIRST_CLASS = 4  # of the record that stands for no solution yet
LISTS = {"RTKXYZ": "RTKSATS", "PDPXYZ": "PDPSATS"}
GPS, GLONASS = 0, 1
GOOD_THIRD_COUNT = 1  # of a PDPSTAT: with it a solution that is not locked out is better


def _satellites_used(record: Record, system: int) -> int:
    return sum(each["system"] == system and each["signal_mask"] & 1
               for each in record.content["blocks"])


def _extended(status: int) -> str:
    """Bit 0, and bits 1 to 3."""
    return f"{status & 1},{status >> 1 & 7}"


def _cartesian_line(content: dict) -> str:
    states = [str(signed(content[name])) for name in ("position_status", "position_type",
                                                      "velocity_status", "velocity_type")]
    ages = [real("%f", content[name]) for name in ("velocity_latency", "differential_age",
                                                   "solution_age")]
    counts = [str(content[name]) for name in ("tracked", "used", "used_l1", "used_multiple")]
    return ",".join([*states, *ages, *counts, _extended(content["extended_status"]), "0",
                     f"0x{content['gps_glonass_mask']:02X}"])


def _pdpstat_line(content: dict) -> str:
    counts = [str(signed(content[f"count_{at}"])) for at in range(5)]
    conversions = enumerate(("%5.2f", "%2.5f", "%2.5f"))
    return ",".join([*counts, *(real(each, content[f"value_{at}"]) for at, each in conversions)])


class Position:
    """The lockout outlasts any run over a capture, so once it has begun it goes on."""

    def __init__(self, outcome: Outcome, receiver: ReceiverStatus) -> None:
        self._outcome = outcome
        self._receiver = receiver
        self._counts: dict[str, int] = {}
        self._pdpstat: Record | None = None
        self._psrdop: dict | None = None
        self._locked_out = False
        self._previous_phases = 0
        self._used = dict.fromkeys(("RTKSATS", "PDPSATS", "PSRSATS"), (0, 0))
        outcome.publish("position.ecef", API, *[0.0] * 6, *[1e9] * 3, 0, 0.0, "<host time>", 0, 0,
                        0.0, [0, 0, 0], NO_DOP, NO_DOP, FIRST_CLASS, 0.0)

    def take(self, record: Record) -> None:
        handlers = {
            "PDPXYZ": self._take_pdpxyz, "RTKXYZ": self._take_rtkxyz, "PSRXYZ": self._take_psrxyz,
            "PDPSTAT": self._take_pdpstat, "PSRDOP": self._take_psrdop,
            "RTKSATS": self._take_satellites, "PDPSATS": self._take_satellites,
            "PSRSATS": self._take_satellites, "REFSTATION": self._take_refstation,
            "BESTPOS": self._take_bestpos,
        }
        if record.kind in handlers:
            handlers[record.kind](record)

    def _essential(self, key: str, value: str) -> None:
        self._outcome.essential(LOGGER, key, value)

    def _count(self, key: str) -> str:
        self._counts[key] = self._counts.get(key, 0) + 1
        return str(self._counts[key])

    def _take_pdpstat(self, record: Record) -> None:
        self._pdpstat = record

    def _take_psrdop(self, record: Record) -> None:
        self._outcome.info(LOGGER, "psrdop_messages", self._count("psrdop_messages"))
        self._psrdop = record.content

    def _take_satellites(self, record: Record) -> None:
        self._used[record.kind] = (_satellites_used(record, GPS),
                                   _satellites_used(record, GLONASS))

    def _take_refstation(self, record: Record) -> None:
        coordinates = [record.content[axis] for axis in "xyz"]
        self._essential("reference_position_ecef",
                        ",".join(real("%.3f", each) for each in coordinates))
        self._outcome.publish("position.base", API, *map(number, coordinates))

    def _take_bestpos(self, record: Record) -> None:
        content = record.content
        self._essential("novatel_undulation", real("%f", content["undulation"]))
        self._essential("bestpos_extended_solution_info",
                        f"{_extended(content['extended_status'])},"
                        f"0x{content['gps_glonass_mask']:02X}")
        self._outcome.publish("nmea.geoid", "CNMEAHandlerAPI", number(content["undulation"]))

    def _take_psrxyz(self, record: Record) -> None:
        content = record.content
        self._essential("psrxyz_info", _cartesian_line(content))
        if content["position_status"] != COMPUTED:
            return
        coordinates = [content[axis] for axis in "xyz"]
        self._essential("psrxyz_pos", position_text(*coordinates))
        # A moment: milliseconds beyond the week belong to a later one.
        weeks, milliseconds = divmod(record.milliseconds, 604_800_000)
        self._outcome.publish("reference.gps", "ReferenceManagerAPI", record.week + weeks,
                              milliseconds / 1000.0, *map(number, coordinates),
                              *self._used["PSRSATS"], 0)

    def _take_rtkxyz(self, record: Record) -> None:
        self._essential("rtkxyz", self._count("rtkxyz"))
        self._essential("rtkxyz_info", _cartesian_line(record.content))
        self._essential("rtkxyz_quality_flag",
                        str(rtk_quality_flag(record.content["position_type"])))
        self._publish_solution(record)

    def _take_pdpxyz(self, record: Record) -> None:
        self._essential("message18", self._count("message18"))
        if self._pdpstat is not None:
            self._essential("message18_info", _cartesian_line(record.content))
            self._essential("message18_pdpstat", _pdpstat_line(self._pdpstat.content))
            if self._receiver.firmware <= LAST_FIRMWARE_WITH_GLIDE_CHECK:
                self._check_glide(self._pdpstat)
        self._publish_solution(record)

    def _check_glide(self, pdpstat: Record) -> None:
        phases = pdpstat.content["count_4"]
        if phases == 0 and self._previous_phases == 0:
            self._locked_out = True
            self._outcome.diagnostic(OWNER, GLIDE, True)
        elif phases == 0:
            seconds = real("%f", pdpstat.milliseconds / 1000.0)
            self._outcome.warn(LOGGER, "Glide dropped zero phase measurements: "
                                       f"{pdpstat.week} {seconds}")
        self._previous_phases = phases

    def _quality(self, record: Record) -> int:
        """May clear the diagnostic, each time that the lockout is asked and is over."""
        if not is_usable(record.content):
            return 0
        if self._pdpstat is None:
            return 1
        by_type = quality_by_type(record.content["position_type"])
        if by_type is not None:
            return by_type
        if record.kind == "RTKXYZ" or self._locked_out:
            return 1
        self._outcome.diagnostic(OWNER, GLIDE, False)
        return 2 if self._pdpstat.content["count_2"] == GOOD_THIRD_COUNT else 1

    def _dops(self) -> tuple[float, float]:
        """The second adds the squares where one would expect their difference."""
        if self._psrdop is None:
            return NO_DOP, NO_DOP
        position, horizontal = single(self._psrdop["pdop"]), single(self._psrdop["hdop"])
        return horizontal, math.sqrt(position * position + horizontal * horizontal)

    def _satellites(self, record: Record) -> list[int]:
        gps, glonass = self._used[LISTS[record.kind]]
        return [gps, glonass, 0] if gps > 0 else [record.content["used"], 0, 0]

    def _publish_solution(self, record: Record) -> None:
        content = record.content
        quality = self._quality(record)
        values = [number(content[name]) for name in (
            "x", "y", "z", "velocity_x", "velocity_y", "velocity_z", "sigma_x", "sigma_y",
            "sigma_z")]
        self._outcome.publish(
            "position.ecef", API, *values, record.week, record.milliseconds / 1000.0,
            "<host time>", quality, fix_quality(content, self._pdpstat is not None),
            number(content["differential_age"]), self._satellites(record), *self._dops(),
            solution_class(content["position_type"]), number(content["velocity_latency"]))
        self._essential("pos_messages", self._count("pos_messages"))
