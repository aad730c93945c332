"""What the firmware upgrade makes of status records that nobody asked for."""

from decoder.outcome import Outcome
from decoder.printf import text
from decoder.records import Record

LOGGER = "NovatelPositionManager"
IDLE = 0
LOADING = (2, 3)  # the receiver waits for lines of the firmware file, of which there is none
WANTS_RESET = (6, 12)
COMPLETE = 12
FINAL = range(13, 27)
UNKNOWN = -1


class Softload:
    def __init__(self, outcome: Outcome) -> None:
        self._outcome = outcome
        self._status = IDLE
        self._reset_pending = False

    def is_upgrading(self) -> bool:
        if self._status == IDLE:
            return False
        return self._status < COMPLETE or self._reset_pending

    def service(self) -> None:
        """The step of a pass; the status of a file that is not open has neither bytes nor size."""
        if self._status in LOADING:
            self._outcome.essential(LOGGER, "softload_status", f"0,0,{self._status}")
        elif self._reset_pending:
            self._log("SoftloadManager sent command <FRESET>")
            self._reset_pending = False
            self._end()

    def take(self, record: Record) -> None:
        if record.kind != "softload":
            return
        value, status = record.content["value"], record.content["text"]
        self._log(f"SoftloadManager::DispatchLog status is {UNKNOWN if value is None else value}")
        if value is None:
            self._log(f'SoftloadManager: the receiver reports the unknown status "{text(status)}"')
        self._set(UNKNOWN if value is None else value)

    def _log(self, line: str) -> None:
        self._outcome.error(LOGGER, line)

    def _set(self, status: int) -> None:
        self._status = status
        self._log(f"SoftloadManager::updateSoftloadStatus set status to {status}")
        if status in FINAL:
            self._log(f"Ending upgrade because status is {status}")
            self._end()
        elif status in WANTS_RESET:
            self._log("SoftloadManager::updateSoftloadStatus triggering reset")
            self._reset_pending = True

    def _end(self) -> None:
        """A reset that is still pending stays so, for the next upgrade."""
        self._status = IDLE
        self._log("SoftloadManager::EndUpgrade: upgrade complete")
