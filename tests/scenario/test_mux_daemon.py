"""The daemon as it is started on a controller: both receiver ports through the multiplexer."""

from decoder.commands import CONFIGURATION
from harness.muxed import Muxed
from harness.receiver import PROMPT, Receiver
from harness.scenario import MAIN, SECOND
from harness.sentences import numbered, series
from harness.waiting import wait_until
from test_breakout import FALLBACK, SOFTBREAK_SECONDS, softbreak

RETURN_SECONDS = 3.0  # within which bytes flow again


class Together(Muxed):
    """A receiver with its ports COM1 and USB2; the multiplexer's speeds are not the daemon's."""

    def setUp(self) -> None:
        super().setUp()
        self.com1 = self.receiver("com1")
        self.usb2 = self.receiver("usb2")
        self.arguments = [f"--port={number}={receiver.line.device}@115200"
                          for number, receiver in ((50, self.com1), (52, self.usb2))]

    def receiver(self, name: str) -> Receiver:
        receiver = Receiver(self.line(name), acknowledges=True)
        self.addCleanup(receiver.stop)
        return receiver

    def start(self):
        mux = self.mux(*self.arguments)
        for receiver in (self.com1, self.usb2):
            receiver.line.wait_until_open()
        return mux

    def wait_for_clients(self, mux) -> None:
        rpc = self.rpc(mux)
        wait_until("the daemon on both ports",
                   lambda: [each[5] for each in rpc.call("GetPortDump")] == [1, 1])


class Daemon(Together):
    def test_records_arrive_from_both_ports(self) -> None:
        collector = self.collector()
        mux = self.start()
        self.corvane()
        self.wait_for_clients(mux)
        self.com1.say(series(1, 200))
        self.usb2.say(series(300, 500))
        collector.wait_for_numbers(list(range(1, 201)), MAIN)
        collector.wait_for_numbers(list(range(300, 501)), SECOND)
        self.assertEqual(collector.numbers(MAIN), list(range(1, 201)))
        self.assertEqual(collector.numbers(SECOND), list(range(300, 501)))
        self.assertEqual(collector.connection_count(), 1)

    def test_the_whole_configuration_goes_to_port_50_and_nothing_to_52(self) -> None:
        self.start()
        self.corvane()
        self.com1.wait_for_commands(len(CONFIGURATION), 30.0)
        self.assertEqual(self.com1.commands()[:len(CONFIGURATION)], list(CONFIGURATION))
        self.assertEqual(self.usb2.heard(), b"")

    def test_the_speed_of_port_50_is_the_daemons_and_that_of_52_stays(self) -> None:
        self.start()
        self.corvane("-b", "57600")
        wait_until("the speed", lambda: self.com1.line.speed() == 57600)
        self.assertEqual(self.usb2.line.speed(), 115200)

    def test_a_soft_breakout_is_said_at_both_speeds(self) -> None:
        self.start()
        self.bare_corvane("-p", "-u", "softbreak")
        pieces = [*softbreak(460800), CONFIGURATION[0].encode()]
        wanted = b"".join(pieces)
        self.com1.wait_for_bytes(len(wanted), SOFTBREAK_SECONDS + 5.0)
        self.assertEqual(self.com1.heard()[:len(wanted)], wanted)
        speeds = [self.com1.arrival_of(len(b"".join(pieces[:count]))).speed
                  for count in range(1, len(pieces) + 1)]
        self.assertEqual(speeds, [FALLBACK] * 4 + [460800] * 2)
        self.assertEqual(self.com1.line.speed(), 460800)
        self.assertEqual(self.usb2.line.speed(), 115200)

    def test_bytes_flow_again_when_the_multiplexer_is_killed_and_comes_back(self) -> None:
        collector = self.collector()
        mux = self.start()
        self.corvane()
        for number in range(3):
            self.wait_for_clients(mux)
            self.com1.say(numbered(number))
            self.usb2.say(numbered(100 + number))
            collector.wait_for_numbers([number], MAIN, RETURN_SECONDS)
            collector.wait_for_numbers([100 + number], SECOND, RETURN_SECONDS)
            mux.kill()
            mux = self.start()

    def test_bytes_flow_again_when_a_device_goes_and_comes(self) -> None:
        collector = self.collector()
        mux = self.start()
        self.corvane()
        self.wait_for_clients(mux)
        line = self.usb2.line
        line.unplug()
        mux.wait_for_line(r"^port 52 .*device lost")
        self.com1.say(numbered(1))
        collector.wait_for_numbers([1], MAIN)
        line.plug_in()
        line.wait_until_open(RETURN_SECONDS)
        self.usb2.say(numbered(2))
        collector.wait_for_numbers([2], SECOND)
        self.assertEqual(collector.messages("logger.event", name=SECOND, level="error"), [])

    def test_others_may_listen_to_the_receiver_meanwhile(self) -> None:
        collector = self.collector()
        mux = self.start()
        self.corvane()
        self.wait_for_clients(mux)
        listener = self.client(mux, 50)
        said = series(1, 100)
        self.com1.say(said)
        collector.wait_for_numbers(list(range(1, 101)), MAIN)
        # Beside the prompts with which the receiver answers the daemon's commands.
        heard = b""
        while len(heard.replace(PROMPT, b"")) < len(said):
            chunk = listener.read(1)
            self.assertTrue(chunk, "the rest has not come")
            heard += chunk
        self.assertEqual(heard.replace(PROMPT, b""), said)
