"""Which channel configuration is wanted, and which ones the receiver has."""

from decoder.outcome import Outcome
from decoder.printf import signed
from decoder.records import Record

LOGGER = "NovatelConstellationManager"
OWNER = "CConstellationManager"
NO_GLONASS = (79188, 12)
RECEIVER_CARD = 1
GPS_ONLY, WITH_GLONASS = 1, 4  # without a word from an operator SBAS is off
AT_REGION_DEFAULTS, AT_A_RECORD = 1, 0
SIGNALS = {
    0: "GPSL1", 1: "GPSL1L2", 4: "SBASL1", 5: "GPSL5", 6: "GPSL1L2C", 7: "GPSL2L2AUTO",
    8: "GLOL1L2", 10: "GLOL1", 11: "GALE1", 12: "GALE5A", 13: "GALE5B", 14: "GALALTBOC",
    16: "GPSL1L2PL2C", 17: "GPSL1L5", 18: "SBASL1L5", 19: "GPSL1L2PL2CL5", 20: "GPSL1L2PL5",
    21: "GALE1E5AE5B", 22: "GALE1E5AE5BALTBOC", 23: "GALE1E5A", 24: "GLOL1L2C", 25: "GLOL1L2PL2C",
}


def signal_name(signal: int) -> str:
    return SIGNALS.get(signal, f"UNKNOWN {signal}")


def configuration_text(pairs: list[tuple[int, int]]) -> str:
    """Of pairs of a channel count and a signal type."""
    return "".join(f"{signed(count):2d} {signal_name(signal)}, " for count, signal in pairs)


class Constellation:
    """Starts with nothing remembered: no GLONASS, and 0 as the configuration sent last."""

    def __init__(self, outcome: Outcome) -> None:
        self._outcome = outcome
        self._has_glonass = False
        self._model_is_known = False
        self._last_sent = 0
        outcome.register(LOGGER)
        self._warn(f"{OWNER}: loaded last sent channel config as {self._last_sent}")
        self._update(AT_REGION_DEFAULTS)

    def take(self, record: Record) -> None:
        handlers = {"VERSION": self._version, "CHANCONFIGLIST": self._list}
        if record.kind in handlers:
            handlers[record.kind](record.content)
            self._warn("DispatchNovatelLog: updating channel config")
            self._update(AT_A_RECORD)

    def _warn(self, text: str) -> None:
        self._outcome.warn(LOGGER, f"{OWNER}::{text}")

    def _essential(self, key: str, value: str) -> None:
        self._outcome.essential(LOGGER, key, value)

    def _update(self, trigger: int) -> None:
        desired = WITH_GLONASS if self._has_glonass else GPS_ONLY
        self._essential("desired_channel_configuration", str(desired))
        self._warn(f"UpdateChannelConfiguration({trigger}) {desired}")
        if self._model_is_known:
            self._outcome.diagnostic(OWNER, NO_GLONASS, not self._has_glonass)

    def _version(self, content: dict) -> None:
        self._model_is_known = True
        for component in content["blocks"]:
            if component["type"] == RECEIVER_CARD:
                self._has_glonass = b"G" in component["model"]

    def _list(self, content: dict) -> None:
        current, sets = signed(content["in_use"]), content["sets"]
        self._warn(f"DispatchNovatelLog_CHANCONFIGLIST: currentChannel: {current} "
                   f"m_lastSetChannelConfiguration: {self._last_sent}")
        if current != self._last_sent:
            self._last_sent = current
            self._update(AT_A_RECORD)
        self._essential("current_channel_configuration", str(current))
        self._essential("number_channel_configs_available", str(len(sets)))
        for number, pairs in enumerate(sets, 1):
            self._essential(f"channel_config_{number}", configuration_text(pairs))
