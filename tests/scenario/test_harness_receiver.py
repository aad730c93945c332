"""The receiver that scenarios script: what it keeps, and how it behaves when it is told to."""

import os
import select
import termios
import time
import tty

from harness.controlled import Controlled
from harness.receiver import PROMPT, Receiver
from harness.scenario import best_of_three
from harness.waiting import PATIENCE, NotInTime


class TheReceiver(Controlled):
    def opened(self, receiver: Receiver) -> int:
        """The device's end of its line."""
        device = os.open(receiver.line.device, os.O_RDWR | os.O_NOCTTY | os.O_NONBLOCK)
        self.addCleanup(os.close, device)
        tty.setraw(device)
        receiver.line.wait_until_open()
        return device

    def set_speed(self, device: int, code: int) -> None:
        settings = termios.tcgetattr(device)
        settings[4] = settings[5] = code
        termios.tcsetattr(device, termios.TCSANOW, settings)

    @best_of_three
    def test_keeps_what_it_is_told_with_the_moment_and_the_speed(self) -> None:
        receiver = self.receiver(acknowledges=False)
        device = self.opened(receiver)
        moments = []
        for count, (code, speed) in enumerate(((termios.B9600, 9600), (termios.B115200, 115200))):
            self.set_speed(device, code)
            moments.append(time.monotonic())
            os.write(device, b"log version\r\n")
            arrival = receiver.wait_for_bytes(13 * (count + 1))
            self.assertEqual((arrival.speed, arrival.data), (speed, b"log version\r\n"))
            self.assertAlmostEqual(arrival.moment, moments[-1], delta=0.05)
        self.assertEqual([speed for _, speed in receiver.speeds][-2:], [9600, 115200])
        self.assertEqual(receiver.commands(), ["log version\r\n"] * 2)

    def test_tells_whole_commands_from_one_that_has_no_end_yet(self) -> None:
        receiver = self.receiver(acknowledges=False)
        os.write(self.opened(receiver), b"log version\r\n\r\nlog")
        receiver.wait_for_bytes(18)
        self.assertEqual(receiver.commands(), ["log version\r\n", "\r\n"])

    def test_acknowledges_each_whole_command(self) -> None:
        receiver = self.receiver()
        device = self.opened(receiver)
        os.write(device, b"log version\r\nlog ")
        self.assertEqual(self.answer(device, len(PROMPT)), PROMPT)
        os.write(device, b"time\r\nlog version\r\n")
        self.assertEqual(self.answer(device, 2 * len(PROMPT)), PROMPT * 2)

    def answer(self, device: int, length: int) -> bytes:
        answer = b""
        while len(answer) < length:
            self.assertTrue(select.select([device], [], [], PATIENCE)[0], answer)
            answer += os.read(device, 100)
        return answer

    def test_holding_it_leaves_everything_on_the_line_until_it_goes_on(self) -> None:
        receiver = self.receiver(acknowledges=False)
        device = self.opened(receiver)
        receiver.hold()
        written = 0
        while True:
            try:
                written += os.write(device, b"a" * 1000)
            except BlockingIOError:
                break
        self.assertEqual(receiver.heard(), b"")
        self.assertLess(written, 64 * 1024)
        receiver.go_on()
        receiver.wait_for_bytes(written)

    @best_of_three
    def test_reads_as_slowly_as_it_is_told(self) -> None:
        receiver = self.receiver(acknowledges=False)
        receiver.read_slowly(bytes_per_second=2000)
        started = time.monotonic()
        os.write(self.opened(receiver), b"a" * 1000)
        self.assertAlmostEqual(receiver.wait_for_bytes(1000).moment - started, 0.5, delta=0.25)

    def test_a_line_that_was_unplugged_and_is_back_is_read_on(self) -> None:
        receiver = self.receiver(acknowledges=False)
        os.write(self.opened(receiver), b"before")
        receiver.wait_for_bytes(6)
        receiver.line.unplug()
        self.assertFalse(receiver.line.device.is_symlink())
        receiver.line.plug_in()
        os.write(self.opened(receiver), b"after")
        receiver.wait_for_bytes(11)
        self.assertEqual(receiver.heard(), b"beforeafter")

    def test_a_wait_in_vain_fails(self) -> None:
        receiver = self.receiver()
        for wait in (lambda: receiver.wait_for_bytes(1, 0.05),
                     lambda: receiver.wait_for_commands(1, 0.05),
                     lambda: receiver.wait_for_command("RESET\r\n", 0.05)):
            with self.assertRaises(NotInTime):
                wait()
