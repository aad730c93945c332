"""The base of the scenarios with a hub and a program that tells it things."""

from harness.hub import Hub
from harness.publisher import Publisher
from harness.scenario import Scenario


class Hubbed(Scenario):
    def start(self, *arguments: str, **settings) -> Hub:
        """A hub whose folder is the same over several runs of a test."""
        hub = Hub(self.folder / "hub", *arguments, **settings)
        self.addCleanup(hub.kill)
        return hub

    def publisher(self) -> Publisher:
        """A program that has registered."""
        publisher = self.stranger()
        publisher.register()
        return publisher

    def stranger(self) -> Publisher:
        """One that has not."""
        publisher = Publisher()
        self.addCleanup(publisher.close)
        return publisher
