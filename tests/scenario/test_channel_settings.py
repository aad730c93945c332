"""What the receiver tells of its channels and its model: published, and kept for the next run."""

from pathlib import Path

from harness import logs
from harness.collector import Collector
from harness.controlled import Controlled
from harness.daemon import Daemon
from harness.receiver import Receiver
from harness.waiting import wait_until

MANAGER = "NovatelConstellationManager"
CARD, OTHER = 1, 3  # component types
GPS_L1, SBAS_L1, GLONASS_L1, LBAND = 0, 4, 10, 9  # signal types
SETS = (((14, GPS_L1),), ((12, GPS_L1), (2, SBAS_L1)), ((8, GPS_L1), (6, GLONASS_L1), (1, LBAND)))
LOADED = "CConstellationManager::CConstellationManager: loaded last sent channel config as "


class ChannelSettings(Controlled):
    def running(self, settings: str = "") -> tuple[Collector, Receiver, Daemon]:
        collector, receiver = self.collector(), self.receiver()
        daemon = self.control(receiver, "-c", self.file("commands", b"log version"),
                              settings=settings)
        receiver.wait_for_commands(1)
        return collector, receiver, daemon

    def stored(self, key: str) -> str | None:
        """What a program that starts now would read."""
        lines = Path(self.folder / "settings.conf").read_text().splitlines()
        values = [line.partition("=")[2].strip() for line in lines
                  if line.partition("=")[0].strip() == key]
        return values[-1] if values else None

    def wait_for_stored(self, key: str, value: str) -> None:
        wait_until(f"{key} = {value} to be stored", lambda: self.stored(key) == value,
                   state=lambda: self.stored(key))

    def run_again(self, collector: Collector, receiver: Receiver, daemon: Daemon) -> Collector:
        """The next run over what the last one stored."""
        settings = (self.folder / "settings.conf").read_text().removeprefix("[Corvane]\n")
        daemon.end()
        collector.stop()
        again = self.collector()
        self.control(receiver, "-c", self.file("commands", b"log version"), settings=settings)
        return again


class Model(ChannelSettings):
    def test_one_with_a_g_supports_glonass_and_that_is_stored(self) -> None:
        collector, receiver, _ = self.running()
        collector.wait_for_status(MANAGER, "desired_channel_configuration", "1")
        receiver.say(logs.models((CARD, b"L12LGRV")))
        collector.wait_for_status(MANAGER, "desired_channel_configuration", "4")
        self.wait_for_stored("receiver_supports_glonass", "1")

    def test_one_without_a_g_does_not_and_that_is_stored(self) -> None:
        collector, receiver, _ = self.running("receiver_supports_glonass = 1\n")
        collector.wait_for_status(MANAGER, "desired_channel_configuration", "4")
        receiver.say(logs.models((CARD, b"L12LRVA")))
        collector.wait_for_status(MANAGER, "desired_channel_configuration", "1")
        self.wait_for_stored("receiver_supports_glonass", "0")

    def test_that_of_another_component_does_not_count(self) -> None:
        collector, receiver, daemon = self.running()
        receiver.say(logs.models((OTHER, b"G"), (CARD, b"L12RV")))
        collector.wait_for("diagnostics.raise", code=79188, sub=12)
        daemon.wait_for_passes(1)
        self.assertEqual(collector.status(MANAGER, "desired_channel_configuration"), "1")
        self.assertIsNone(self.stored("receiver_supports_glonass"))

    def test_it_is_known_to_the_next_run(self) -> None:
        collector, receiver, daemon = self.running()
        receiver.say(logs.models((CARD, b"LXGDMTS")))
        self.wait_for_stored("receiver_supports_glonass", "1")
        again = self.run_again(collector, receiver, daemon)
        again.wait_for_status(MANAGER, "desired_channel_configuration", "4")


class ChannelList(ChannelSettings):
    def test_the_sets_and_the_one_in_use_are_told_and_stored(self) -> None:
        collector, receiver, _ = self.running()
        receiver.say(logs.chanconfiglist(3, *SETS))
        collector.wait_for_status(MANAGER, "current_channel_configuration", "3")
        collector.wait_for_status(MANAGER, "number_channel_configs_available", "3")
        for number, text in ((1, "14 GPSL1, "), (2, "12 GPSL1,  2 SBASL1, "),
                             (3, " 8 GPSL1,  6 GLOL1,  1 UNKNOWN 9, ")):
            collector.wait_for_status(MANAGER, f"channel_config_{number}", text)
        self.wait_for_stored("current_channel_configuration", "3")

    def test_another_set_in_use_replaces_what_was_stored(self) -> None:
        collector, receiver, _ = self.running("current_channel_configuration = 5\n")
        for number in ("2", "1"):
            receiver.say(logs.chanconfiglist(int(number), *SETS))
            collector.wait_for_status(MANAGER, "current_channel_configuration", number)
            self.wait_for_stored("current_channel_configuration", number)

    def test_the_set_in_use_is_known_to_the_next_run(self) -> None:
        collector, receiver, daemon = self.running()
        collector.wait_for("logger.event", name=MANAGER, level="warning", text=f"{LOADED}0")
        receiver.say(logs.chanconfiglist(3, *SETS))
        self.wait_for_stored("current_channel_configuration", "3")
        again = self.run_again(collector, receiver, daemon)
        again.wait_for("logger.event", name=MANAGER, level="warning", text=f"{LOADED}3")

    def test_a_set_that_is_selected_by_a_command_counts_when_it_is_sent(self) -> None:
        collector, receiver = self.collector(), self.receiver()
        self.control(receiver, "-c", self.file("commands", b"log version\nselectchanconfig 3"))
        receiver.wait_for_command("selectchanconfig 3\r\n")
        collector.wait_for("logger.event", name=MANAGER, level="warning",
                           text="CConstellationManager::ChannelConfigSelected: currentChannel: 3 "
                                "m_lastSetChannelConfiguration: 0")
        self.wait_for_stored("current_channel_configuration", "3")

    def test_other_commands_select_nothing(self) -> None:
        collector, receiver = self.collector(), self.receiver()
        content = b"SELECTCHANCONFIG 3\nselectchanconfig x\nselectchanconfig"
        daemon = self.control(receiver, "-c", self.file("commands", content))
        receiver.wait_for_commands(3)
        daemon.wait_for_passes(2)
        self.assertFalse(any("ChannelConfigSelected" in event["text"] for event in
                             collector.messages("logger.event", name=MANAGER)))
        self.assertIsNone(self.stored("current_channel_configuration"))
