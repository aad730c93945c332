"""Changes that an operator asks for now and then, and what the receiver must be told of each."""

from collections.abc import Iterator
from dataclasses import dataclass

from decoder.commands import CONFIGURATION
from harness.rpc_client import RPCClient

_WHOLE = tuple(each.rstrip() for each in CONFIGURATION)


def configured(ionosphere: str = "auto") -> tuple[str, ...]:
    """All that it is told when a setting has changed."""
    return tuple(f"setionotype {ionosphere}" if each.startswith("setionotype") else each
                 for each in _WHOLE)


@dataclass(frozen=True)
class Change:
    method: str
    arguments: tuple
    commands: tuple[str, ...]

    def ask(self) -> None:
        """On a connection of its own, after a question."""
        client = RPCClient()
        client.call("novatel_GetReceiverTrackingStatus")
        client.call(self.method, *self.arguments)
        client.close()


CHANGES = (
    Change("novatel_SetIonosphereMode", (1,), configured("klobuchar")),
    Change("RequestNMEA", ("GPGGA", 200), ("log GPGGA ontime 0.200",)),
    Change("novatel_ResetPDPFilter", (), ("pdpfilter reset",)),
    Change("RequestNMEA", ("GPGGA", 0), ("unlog GPGGA",)),
    Change("novatel_SetIonosphereMode", (2,), configured("grid")),
    Change("novatel_ResetRTKFilter", (), ("rtkcommand reset",)),
    Change("novatel_RefreshReceiverConfiguration", (), (
        "LOG CHANCONFIGLISTB ONCE", "LOG LOGLISTB ONCE", "LOG RXCONFIGB ONCE")),
    Change("novatel_SetIonosphereMode", (0,), configured()),
)


def changes() -> Iterator[Change]:
    """Without end."""
    while True:
        yield from CHANGES
