"""The base of the scenarios in which the daemon controls a receiver on a serial line."""

from harness.collector import Collector
from harness.daemon import Daemon
from harness.receiver import Receiver
from harness.scenario import MAIN, Scenario

SENDING = "Sending buffered command: "


class Controlled(Scenario):
    """A receiver, and daemons that talk to it."""

    def receiver(self, *, acknowledges: bool = True) -> Receiver:
        receiver = Receiver(self.serial_line(), acknowledges=acknowledges)
        self.addCleanup(receiver.stop)
        return receiver

    def settings(self, text: str) -> dict[str, str]:
        """An environment with a configuration of these lines in the daemon's section."""
        path = self.file("settings.conf", f"[Corvane]\n{text}".encode())
        return {"CORVANE_CONFIG": path}

    def control(self, receiver: Receiver, *options: str, breakout: str = "none",
                settings: str = "") -> Daemon:
        return self.bare_corvane("-p", "-u", breakout, "-s", str(receiver.line.device), *options,
                                 environment=self.settings(settings))

    def told_commands(self, collector: Collector) -> list[str]:
        """The commands that were told as being sent."""
        events = collector.messages("logger.event", name=MAIN, level="warning")
        return [event["text"].removeprefix(SENDING) for event in events
                if event["text"].startswith(SENDING)]
