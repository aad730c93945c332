"""The port multiplexer: absent, present, killed and back, on both of its ports."""

import time

from harness.multiplexer import Multiplexer
from harness.scenario import MAIN, SECOND, Scenario, best_of_three
from harness.sentences import numbered, series
from harness.waiting import wait_until

RETURN_SECONDS = 2.0  # within which bytes flow again
CALL_SECONDS = 1.0  # for which the daemon waits for the RPC service
HANDLER = {50: MAIN, 52: SECOND}


class Present(Scenario):
    def test_port_50_is_the_main_port_and_52_is_read_beside_it(self) -> None:
        collector, multiplexer = self.collector(), self.multiplexer()
        self.corvane()
        for port, handler in HANDLER.items():
            multiplexer.wait_for_client(port)
            multiplexer.send(port, numbered(port))
            collector.wait_for_numbers([port], handler)
            self.assertEqual(collector.numbers(handler), [port])

    def test_k_names_another_main_port_and_52_stays_the_second(self) -> None:
        collector, multiplexer = self.collector(), self.multiplexer(ports=(7, 52))
        self.corvane("-k", "7")
        for port, handler in ((7, MAIN), (52, SECOND)):
            multiplexer.wait_for_client(port)
            multiplexer.send(port, numbered(port))
            collector.wait_for_numbers([port], handler)

    def test_port_52_is_read_beside_a_serial_device(self) -> None:
        collector, multiplexer = self.collector(), self.multiplexer(ports=(52,))
        line = self.serial_line()
        self.corvane("-s", str(line.device))
        multiplexer.wait_for_client(52)
        line.wait_until_open()
        multiplexer.send(52, numbered(1))
        line.say(numbered(2))
        collector.wait_for_numbers([1], SECOND)
        collector.wait_for_numbers([2], MAIN)

    def test_raw_bytes_are_told_under_the_name_of_their_port(self) -> None:
        collector, multiplexer = self.collector(), self.multiplexer()
        self.corvane()
        for port, handler in HANDLER.items():
            multiplexer.wait_for_client(port)
            block = bytes([port]) * 2000
            multiplexer.send(port, block)
            wait_until("a raw block", lambda name=handler: collector.raw_bytes(name))
            self.assertTrue(block.startswith(collector.raw_bytes(handler)))

    def test_a_sentence_that_comes_in_pieces_is_told_once(self) -> None:
        collector, multiplexer = self.collector(), self.multiplexer()
        daemon = self.corvane()
        multiplexer.wait_for_client(50)
        sentence = numbered(1)
        for at in range(len(sentence)):
            multiplexer.send(50, sentence[at:at + 1])
            if at % 8 == 0:
                daemon.wait_for_passes(1)
        collector.wait_for_numbers([1])
        self.assertEqual(collector.status(MAIN, "checksum_stats"), "1,0")

    def test_a_device_text_that_is_no_number_opens_nothing(self) -> None:
        multiplexer = self.multiplexer()
        daemon = self.corvane("-k", "abc")
        daemon.wait_for_passes(5)
        multiplexer.wait_for_client(52)
        self.assertEqual(multiplexer.clients(50), 0)
        self.assertTrue(daemon.is_running())


class Speed(Scenario):
    def test_the_speed_of_the_main_port_is_asked_for(self) -> None:
        multiplexer = self.multiplexer()
        self.corvane()
        wait_until("a speed", lambda: multiplexer.speeds)
        self.assertEqual(multiplexer.speeds, [(50, 460800)])

    def test_b_sets_the_speed_of_the_port_that_k_names(self) -> None:
        multiplexer = self.multiplexer(ports=(7,))
        self.corvane("-b", "9600", "-k", "7")
        wait_until("a speed", lambda: multiplexer.speeds)
        self.assertEqual(multiplexer.speeds, [(7, 9600)])

    def test_the_speed_is_asked_for_when_the_multiplexer_comes_late(self) -> None:
        multiplexer = self.multiplexer(started=False)
        daemon = self.corvane()
        daemon.wait_for_passes(3)
        multiplexer.start()
        wait_until("a speed", lambda: multiplexer.speeds, RETURN_SECONDS)
        self.assertEqual(multiplexer.speeds, [(50, 460800)])

    def test_a_service_that_never_answers_holds_the_bytes_up_for_one_second_only(self) -> None:
        collector, multiplexer = self.collector(), self.multiplexer(answers_calls=False)
        multiplexer.greet(50, numbered(1))
        started = time.monotonic()
        self.corvane()
        collector.wait_for_numbers([1])
        self.assertLess(time.monotonic() - started, 2 * CALL_SECONDS)


class Absent(Scenario):
    def test_the_daemon_runs_on_and_finds_it_when_it_comes(self) -> None:
        collector, multiplexer = self.collector(), self.multiplexer(started=False)
        daemon = self.corvane()
        daemon.wait_for_passes(5)
        self.greet_and_start(multiplexer)
        for port, handler in HANDLER.items():
            collector.wait_for_numbers([port], handler, RETURN_SECONDS)

    def greet_and_start(self, multiplexer: Multiplexer) -> None:
        for port in HANDLER:
            multiplexer.greet(port, numbered(port))
        multiplexer.start()

    @best_of_three
    def test_its_absence_costs_the_loop_no_sleeping(self) -> None:
        daemon = self.corvane()
        self.assertGreater(daemon.passes_per_second(2.0), 9)

    def test_its_absence_is_told_with_the_reason_but_not_every_pass(self) -> None:
        collector = self.collector()
        daemon = self.corvane()
        daemon.wait_for_error("connect: No such file or directory\n")
        daemon.wait_for_passes(25)
        self.assertLess(len(daemon.stderr.splitlines()), 8, daemon.stderr)
        self.assertEqual(collector.messages("logger.event", level="error"), [])


class KilledAndRestarted(Scenario):
    def running(self):
        collector, multiplexer = self.collector(), self.multiplexer()
        daemon = self.corvane()
        for port, handler in HANDLER.items():
            multiplexer.wait_for_client(port)
            multiplexer.send(port, numbered(1))
            collector.wait_for_numbers([1], handler)
        return collector, multiplexer, daemon

    def test_the_loss_is_told_for_each_port(self) -> None:
        collector, multiplexer, daemon = self.running()
        multiplexer.kill()
        for handler in HANDLER.values():
            collector.wait_for("logger.event", name=handler, level="error")
        daemon.wait_for_passes(3)
        self.assertTrue(daemon.is_running())

    def test_bytes_flow_again_on_both_ports_within_two_seconds_of_its_return(self) -> None:
        collector, multiplexer, daemon = self.running()
        for number in range(2, 5):
            multiplexer.kill()
            daemon.wait_for_passes(3)
            for port in HANDLER:
                multiplexer.greet(port, numbered(number))
            multiplexer.start()
            for handler in HANDLER.values():
                collector.wait_for_numbers([number], handler, RETURN_SECONDS)

    def test_one_port_that_is_dropped_comes_back_and_the_other_is_not_disturbed(self) -> None:
        for port, other in ((50, 52), (52, 50)):
            with self.subTest(port=port):
                collector, multiplexer, daemon = self.running()
                multiplexer.drop_clients(port)
                multiplexer.send(other, numbered(2))
                collector.wait_for_numbers([2], HANDLER[other])
                multiplexer.wait_for_client(port, RETURN_SECONDS)
                multiplexer.send(port, numbered(3))
                collector.wait_for_numbers([3], HANDLER[port], RETURN_SECONDS)
                daemon.end()
                multiplexer.kill()
                collector.stop()

    def test_a_sentence_that_was_cut_by_the_loss_is_rejected_and_the_next_one_told(self) -> None:
        collector, multiplexer, _ = self.running()
        multiplexer.send(50, numbered(2)[:20])
        multiplexer.drop_clients(50)
        multiplexer.wait_for_client(50, RETURN_SECONDS)
        multiplexer.send(50, series(3, 6))
        collector.wait_for_numbers([6])
        self.assertNotIn(2, collector.numbers())

    def test_no_descriptor_is_left_behind(self) -> None:
        collector, multiplexer, daemon = self.running()
        before = len(daemon.descriptors())
        for _ in range(3):
            multiplexer.kill()
            daemon.wait_for_passes(2)
            multiplexer.start()
            for port in HANDLER:
                multiplexer.wait_for_client(port, RETURN_SECONDS)
        self.assertLessEqual(len(daemon.descriptors()), before)
        self.assertEqual(collector.connection_count(), 1)
