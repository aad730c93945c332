"""What the receiver status observer publishes: the receiver itself, and what it tracks."""

from decoder.outcome import Outcome
from decoder.printf import c_string, leading_integer, real, signed, text
from decoder.records import Record
from decoder.tracking import count_channels, sbas_text, sky_view
from decoder.words import error_value, status_value

LOGGER = "NovatelReceiverStatus"
OWNER = "CReceiverStatusObserver"
NOTHING_TRACKED = (79160, 1)
OVERLOADED = (79195, 0)
MOST_IDLE_OVERLOADED = 5  # half percents
RECEIVER_CARD = 1
WEEK = 604_800_000  # milliseconds
INTERFACE_MODES = {
    0: "NONE", 1: "NOVATEL", 2: "RTCM", 3: "RTCA", 4: "CMR", 5: "OMNISTAR", 6: "ZQ2", 7: "IMU",
    8: "RTCMNOCR", 9: "CDGPS", 10: "TCOM1", 12: "TCOM2", 13: "TAUX", 14: "RTCMV3",
    15: "NOVATELBINARY", 18: "GENERIC", 20: "MRTCA",
}
PORTS = {"COM1": 1, "COM2": 2, "USB1": 13, "USB2": 14, "USB3": 15}


def interface_mode(mode: int) -> str:
    return INTERFACE_MODES.get(mode, f"UNKNOWN ({signed(mode)})")


def firmware_number(software: bytes) -> int:
    """10201 of L6X010201RN0000; -1 of what has no such number."""
    version = c_string(software)
    if version[:3] not in (b"L6X", b"OEM") or len(version) <= 3:
        return -1
    value = leading_integer(version[3:])
    return -1 if value is None else value


class ReceiverStatus:
    """`firmware` and `milliseconds` (of the last TIME, in its week) are for other observers."""

    def __init__(self, outcome: Outcome) -> None:
        self.firmware = -1
        self.milliseconds = 0
        self._outcome = outcome
        self._word = 0xFFFFFFFF
        self._idle = 0
        self._counts: dict[str, int] = {}
        self._times: dict[str, int] = {}  # milliseconds since GPS time began
        outcome.register(LOGGER)
        outcome.publish("position.sky", "CPositionAPI", [])

    def take(self, record: Record) -> None:
        if record.kind == "NMEA":
            return
        self._header(record.header)
        handlers = {
            "VERSION": self._version, "RXSTATUS": self._rxstatus, "COMCONFIG": self._comconfig,
            "TRACKSTAT": self._trackstat, "RANGE": self._rate, "PDPSTAT": self._rate,
            "CHANCONFIGLIST": self._count, "TIME": self._time,
        }
        if record.kind in handlers:
            handlers[record.kind](record)

    def _essential(self, key: str, value: str) -> None:
        self._outcome.essential(LOGGER, key, value)

    def _info(self, key: str, value: str) -> None:
        self._outcome.info(LOGGER, key, value)

    def _header(self, header: dict) -> None:
        """An ASCII record has an empty header."""
        word, idle = header.get("receiver_status", 0), header.get("idle_time", 0)
        if word != self._word:
            self._word = word
            self._essential("ReceiverStatus", status_value(word))
        if idle != self._idle:
            self._idle = idle
            self._info("ReceiverCPUIdlePercentage", real("%.1f", idle * 0.5))
            self._outcome.diagnostic(OWNER, OVERLOADED, idle <= MOST_IDLE_OVERLOADED)

    def _counted(self, kind: str) -> int:
        self._counts[kind] = self._counts.get(kind, 0) + 1
        return self._counts[kind]

    def _count(self, record: Record) -> None:
        self._info(f"{record.kind.lower()}_messages", str(self._counted(record.kind)))

    def _rate(self, record: Record) -> None:
        """The count, and the seconds since the record of this kind before."""
        now = record.week * WEEK + record.milliseconds
        interval = (now - self._times.get(record.kind, 0)) / 1000
        self._times[record.kind] = now
        self._info(f"{record.kind.lower()}_messages",
                   f"{self._counted(record.kind)},{real('%f', interval)}")

    def _version(self, record: Record) -> None:
        self._count(record)
        for index, component in enumerate(record.content["blocks"]):
            prefix = f"component_{index:02d}"
            self._essential(f"{prefix}.componentType", str(signed(component["type"])))
            for key, part in (("model", "model"), ("psn", "serial"),
                              ("hardwareVersion", "hardware"), ("softwareVersion", "software")):
                self._essential(f"{prefix}.{key}", text(component[part]))
            if component["type"] == RECEIVER_CARD:
                self._translate(component["software"])

    def _translate(self, software: bytes) -> None:
        self.firmware = firmware_number(software)
        self._outcome.warn(LOGGER, f"{OWNER}::TranslateReceiverVersion: got sw_version_int "
                                   f"{self.firmware} from version {text(software)}")

    def _rxstatus(self, record: Record) -> None:
        self._rate(record)
        self._essential("ReceiverError", error_value(record.content["error"]))

    def _comconfig(self, record: Record) -> None:
        self._rate(record)
        entries = {}
        for entry in record.content["blocks"]:
            entries.setdefault(entry["port"], entry)
        for name, port in PORTS.items():
            if port in entries:
                entry = entries[port]
                self._info(f"{name}_Config", f"{signed(entry['baud_rate'])},"
                                             f"{interface_mode(entry['transmit_mode'])},"
                                             f"{interface_mode(entry['receive_mode'])}")

    def _trackstat(self, record: Record) -> None:
        self._rate(record)
        channels = record.content["blocks"]
        counts = count_channels(channels)
        self._essential("sbas_tracking", sbas_text(channels))
        self._essential("sats_tracked_gps", f"{counts.gps_l1},{counts.gps_l2}")
        self._essential("sats_tracked_glonass", f"{counts.glonass_l1},{counts.glonass_l2}")
        self._essential("sats_tracked", f"{counts.distinct},{counts.gps_l1 + counts.glonass_l1},"
                                        f"{counts.gps_l2 + counts.glonass_l2}")
        self._outcome.diagnostic(OWNER, NOTHING_TRACKED, counts.distinct == 0)
        self._outcome.publish("position.sky", "CPositionAPI", sky_view(channels))

    def _time(self, record: Record) -> None:
        self.milliseconds = record.milliseconds
        self._count(record)
        seconds = real("%.3f", record.milliseconds / 1000.0)
        self._essential("gps_time", f"{record.week},{seconds}")
