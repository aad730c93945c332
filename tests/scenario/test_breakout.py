"""The breakout: how a receiver's port is brought back to commands and to the speed that is set."""

from decoder.commands import CONFIGURATION
from harness.controlled import Controlled
from harness.receiver import Receiver
from harness.scenario import MAIN, best_of_three
from harness.sentences import numbered
from harness.waiting import wait_until

FALLBACK = 9600  # baud
SLACK = 0.15  # seconds by which a measured pause may differ from the one that is kept
SOFTBREAK_SECONDS = 1.5 + 1.5 + 1.5 + 1.0 + 0.1 + 1.0 + 0.25
PASS_SECONDS = 0.1  # the first command leaves in a pass of its own
ZQ2_FRAME = bytes.fromhex("9C AE 0E 00 80 03 0A 00 02 02 0A 00 02 02 53 FF")
FIRST = CONFIGURATION[0].encode()


def softbreak(speed: int) -> list[bytes]:
    """What a soft breakout says, write by write."""
    return [b"+++", b"+++\r\n", b"log version\r\n", b"com thisport %d\r\n" % speed,
            b"log comconfig\r\n"]


class Measured(Controlled):
    def assert_heard_in_order(self, receiver: Receiver, pieces: list[bytes],
                              seconds: float) -> list[float]:
        """Waits for them; the moments at which each of them was complete."""
        text = b"".join(pieces)
        receiver.wait_for_bytes(len(text), seconds)
        self.assertEqual(receiver.heard()[:len(text)], text)
        lengths = [len(b"".join(pieces[:count])) for count in range(1, len(pieces) + 1)]
        return [receiver.arrival_of(length).moment for length in lengths]

    def assert_pauses(self, wanted: list[float], moments: list[float]) -> None:
        pauses = [after - before for before, after in zip(moments, moments[1:])]
        self.assertEqual(len(wanted), len(pauses))
        for number, (expected, pause) in enumerate(zip(wanted, pauses)):
            self.assertAlmostEqual(expected, pause, delta=SLACK, msg=f"{number} of {pauses}")


class Softbreak(Measured):
    @best_of_three
    def test_its_writes_keep_their_order_and_their_pauses(self) -> None:
        receiver = self.receiver()
        self.control(receiver, breakout="softbreak")
        moments = self.assert_heard_in_order(receiver, [*softbreak(460800), FIRST],
                                             SOFTBREAK_SECONDS + 3.0)
        opened = receiver.speeds[0][0]
        self.assert_pauses([1.5, 1.5, 1.5, 1.0, 1.1, 0.25 + PASS_SECONDS], [opened, *moments])
        speeds = [speed for _, speed in receiver.speeds]
        self.assertIn(speeds, ([460800, FALLBACK, 460800], [FALLBACK, 460800]))
        self.assertAlmostEqual(receiver.speeds[-1][0] - moments[3], 0.1, delta=SLACK / 2)

    def test_it_asks_at_9600_baud_for_the_speed_that_is_set(self) -> None:
        collector, receiver = self.collector(), self.receiver()
        self.control(receiver, "-b", "115200", breakout="softbreak")
        receiver.wait_for_bytes(len(b"+++"))
        self.assertEqual(collector.status(MAIN, "started"), "started",
                         "the server is told also while a breakout runs")
        pieces = [*softbreak(115200), FIRST]
        self.assert_heard_in_order(receiver, pieces, SOFTBREAK_SECONDS + 3.0)
        speeds = [receiver.arrival_of(len(b"".join(pieces[:count]))).speed
                  for count in range(1, len(pieces) + 1)]
        self.assertEqual(speeds, [FALLBACK] * 4 + [115200] * 2)


class Break(Measured):
    @best_of_three
    def test_after_two_breaks_the_speed_is_asked_for_at_9600_baud(self) -> None:
        receiver = self.receiver()
        self.control(receiver, breakout="break")
        command = b"com thisport 460800\r\n"
        moments = self.assert_heard_in_order(receiver, [command, FIRST], 8.0)
        self.assertEqual([receiver.arrival_of(len(command)).speed, receiver.arrivals()[-1].speed],
                         [FALLBACK, 460800])
        (opened, first), (_, second), (set_again, third) = receiver.speeds
        self.assertEqual((first, second, third), (460800, FALLBACK, 460800))
        self.assert_pauses([0.3 + 1.5 + 0.3 + 0.25, 1.0, 0.1 + PASS_SECONDS],
                           [opened, moments[0], set_again, moments[1]])


class ZQ2(Measured):
    def test_one_frame_at_115200_baud_and_then_the_configuration(self) -> None:
        receiver = self.receiver()
        daemon = self.control(receiver, breakout="zq2")
        wanted = ZQ2_FRAME + "".join(CONFIGURATION).encode()
        receiver.wait_for_bytes(len(wanted))
        daemon.wait_for_passes(2)
        self.assertEqual(receiver.heard(), wanted)
        self.assertEqual(receiver.arrival_of(len(ZQ2_FRAME)).speed, 115200)

    @best_of_three
    def test_a_quarter_of_a_second_passes_before_the_first_command(self) -> None:
        receiver = self.receiver()
        self.control(receiver, breakout="zq2")
        moments = self.assert_heard_in_order(receiver, [ZQ2_FRAME, FIRST], 5.0)
        self.assert_pauses([0.25 + PASS_SECONDS], moments)

    def test_a_device_that_is_not_there_is_opened_at_its_speed_when_it_comes(self) -> None:
        receiver = self.receiver()
        line = receiver.line
        line.unplug()
        daemon = self.control(receiver, "-b", "9600", breakout="zq2")
        daemon.wait_for_passes(3)
        line.plug_in()
        line.wait_until_open()
        self.assertEqual(line.speed(), 115200)


class NoBreakout(Measured):
    def test_nothing_comes_before_the_configuration(self) -> None:
        receiver = self.receiver()
        self.control(receiver, "-b", "57600")
        self.assert_heard_in_order(receiver, [FIRST], 5.0)
        self.assertEqual(receiver.speeds[0][1], 57600)


class RawFile(Controlled):
    def test_a_file_is_read_after_a_breakout_that_leaves_its_lines_in_the_trace(self) -> None:
        collector = self.collector()
        daemon = self.bare_corvane("-p", "-u", "softbreak", "-f", self.file("raw", numbered(1)))
        self.assertEqual(daemon.status(SOFTBREAK_SECONDS + 5.0), 0, daemon.stderr)
        lines = ["Performing character-based breakout", "Sending +++", "Done"]
        self.assertEqual([line for line in daemon.trace.splitlines() if line in lines], lines)
        self.assertIn("\nSending +++ (repeated 1 time)\n", daemon.trace)
        collector.wait_for_numbers([1])

    @best_of_three
    def test_its_breakout_takes_its_time(self) -> None:
        collector = self.collector()
        self.bare_corvane("-p", "-u", "softbreak", "-f", self.file("raw", b"")).status()
        collector.wait_for_the_end()
        started = collector.wait_for("logger.status", name=MAIN, key="started")
        first = collector.wait_for("logger.status", key="receiver_initialisations")
        self.assertAlmostEqual(first["time"] - started["time"], SOFTBREAK_SECONDS, delta=SLACK)


class OverTheMultiplexer(Controlled):
    def test_softbreak_asks_for_both_speeds_between_its_writes(self) -> None:
        multiplexer = self.multiplexer(ports=(50,))
        self.bare_corvane("-p", "-u", "softbreak")
        slow, fast = (50, FALLBACK), (50, 460800)
        asking, asked = softbreak(460800)[:4], softbreak(460800)[4]
        wait_until("the low speed", lambda: slow in multiplexer.speeds)
        self.assertEqual(multiplexer.written(50), b"")
        wait_until("the speed that is set", lambda: multiplexer.speeds[1:] == [slow, fast],
                   SOFTBREAK_SECONDS + 3.0, lambda: multiplexer.speeds)
        self.assertEqual(multiplexer.written(50), b"".join(asking))
        wanted = b"".join(asking) + asked + FIRST
        wait_until("the first command", lambda: len(multiplexer.written(50)) >= len(wanted))
        self.assertEqual(multiplexer.written(50)[:len(wanted)], wanted)
        self.assertEqual(multiplexer.speeds, [fast, slow, fast])

    def test_break_asks_for_both_speeds_before_the_first_command(self) -> None:
        multiplexer = self.multiplexer(ports=(50,))
        self.bare_corvane("-p", "-u", "break")
        wanted = b"com thisport 460800\r\n" + FIRST
        wait_until("the first command", lambda: len(multiplexer.written(50)) >= len(wanted), 8.0)
        self.assertEqual(multiplexer.written(50)[:len(wanted)], wanted)
        self.assertEqual(multiplexer.speeds, [(50, 460800), (50, FALLBACK), (50, 460800)])

    def test_zq2_asks_for_its_own_speed_and_writes_its_frame(self) -> None:
        multiplexer = self.multiplexer(ports=(7,))
        self.bare_corvane("-p", "-u", "zq2", "-k", "7", "-b", "9600")
        wanted = ZQ2_FRAME + FIRST
        wait_until("the first command", lambda: len(multiplexer.written(7)) >= len(wanted))
        self.assertEqual(multiplexer.written(7)[:len(wanted)], wanted)
        self.assertEqual(multiplexer.speeds, [(7, 115200)])
