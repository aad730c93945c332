"""The example configurations that are installed with the programs."""

from decoder.commands import CONFIGURATION
from harness import places
from harness.controlled import Controlled

SINGLE_PORT = places.CHECKOUT / "examples" / "single-port.conf"
# What is asked of other ports or for the controller's own protocol on them.
OF_OTHER_PORTS = ("interfacemode ", "com com2 ")


def wanted() -> set[str]:
    """The daemon's own commands, with everything on the one port that there is."""
    commands = set()
    for command in CONFIGURATION:
        words = command.split()
        if words[0].lower() == "log":
            words = ["log", "thisport", *(words[2:] if words[1] == "usb2" else words[1:])]
        if not command.startswith(OF_OTHER_PORTS):
            commands.add(" ".join(words).lower())
    return commands


class SinglePort(Controlled):
    def test_it_asks_for_all_that_the_daemons_own_commands_ask_for(self) -> None:
        lines = SINGLE_PORT.read_text().split("\n")
        self.assertEqual(lines[0], "unlogall thisport")
        self.assertEqual(set(lines), wanted())
        self.assertEqual(len(lines), len(set(lines)))

    def test_it_is_sent_as_it_stands(self) -> None:
        receiver = self.receiver()
        self.control(receiver, "-c", str(SINGLE_PORT))
        lines = SINGLE_PORT.read_text().split("\n")
        receiver.wait_for_commands(len(lines), 30.0)
        self.assertEqual(receiver.commands(), [line + "\r\n" for line in lines])
