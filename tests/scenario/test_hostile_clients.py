"""Clients that mean no good, or are broken: neither the receiver nor other clients feel them."""

import json
import random
import resource
import socket
import time

from harness.crowd import ASKING, Crowd, connect, hang_up, line, vanish
from harness.scenario import best_of_three
from harness.steered import lasting_descriptors, request
from harness.under_load import UnderLoad

MOST_CLIENTS = 256
FEW_DESCRIPTORS, RESERVED = 64, 24  # of which so many are for everything else
LONGEST = 1024 * 1024  # bytes of a line
MOST_WAITING = 4 * 1024 * 1024  # bytes of answers that a client may leave
NOT_JSON, NO_REQUEST = -32700, -32600
BUSY = 400  # passes a second; what is to be done makes 130, a loop that spins makes thousands
SMALL_BUFFER = 2048  # bytes that a client takes unread
REST = 1.0  # seconds after the descriptors have run out
DUMMY = request("DummyFunction")
DONE = {"jsonrpc": "2.0", "id": 1, "result": []}


def codes(answers: list) -> list[int]:
    return [answer["error"]["code"] for answer in answers]


class Crowds(UnderLoad):
    def assert_room_for(self, crowd: Crowd, room: int) -> None:
        """So many of the crowd are served, some are turned away, and nobody else gets anything."""
        crowd.run_until(f"{room} to be answered", lambda: len(crowd.answered()) >= room, 15.0)
        crowd.run_until("some to be turned away", lambda: len(crowd.turned_away()) > 0, 15.0)
        self.assertEqual([each.answers() for each in crowd.answered()], [[DONE]] * room)

    @best_of_three
    def test_of_500_connections_at_once_256_are_served(self) -> None:
        with self.under_load(), Crowd() as crowd:
            crowd.join(500, ASKING)
            self.assert_room_for(crowd, MOST_CLIENTS - 1)
        self.assertEqual(self.client().call("DummyFunction"), [])

    @best_of_three
    def test_one_more_than_256_is_closed_at_once_and_no_other_notices(self) -> None:
        with self.under_load(), Crowd() as crowd:
            for count in range(1, MOST_CLIENTS):
                crowd.join(1, ASKING)
                crowd.run_until("it to be answered", lambda: len(crowd.answered()) == count, 5.0)
            for count in range(1, 6):
                crowd.join(1, b"")
                crowd.run_until("it to be closed", lambda: len(crowd.turned_away()) == count, 1.0)
            self.assertEqual(len(crowd.answered()), MOST_CLIENTS - 1)
            self.assertFalse(any(each.is_closed for each in crowd.answered()))

    @best_of_three
    def test_with_64_descriptors_100_connections_leave_enough_of_them(self) -> None:
        with self.under_load() as daemon, Crowd() as crowd:
            limits = (FEW_DESCRIPTORS, FEW_DESCRIPTORS)
            resource.prlimit(daemon.pid, resource.RLIMIT_NOFILE, limits)
            crowd.join(100, ASKING)
            self.assert_room_for(crowd, FEW_DESCRIPTORS - RESERVED - 1)
            self.assertLess(lasting_descriptors(daemon), FEW_DESCRIPTORS)
        self.assertEqual(self.client().call("DummyFunction"), [])

    @best_of_three
    def test_without_a_descriptor_the_listener_rests_and_serves_later(self) -> None:
        with self.under_load() as daemon, Crowd() as crowd:
            usual = resource.prlimit(daemon.pid, resource.RLIMIT_NOFILE)
            count = lasting_descriptors(daemon)
            resource.prlimit(daemon.pid, resource.RLIMIT_NOFILE, (count, usual[1]))
            waiting = crowd.join(3, ASKING)
            self.assertLess(daemon.passes_per_second(1.5 * REST), BUSY)
            self.assertEqual(crowd.answered(), [])
            resource.prlimit(daemon.pid, resource.RLIMIT_NOFILE, usual)
            crowd.run_until("them to be answered", lambda: crowd.answered() == waiting, 2 * REST)

    @best_of_three
    def test_those_that_vanish_without_a_word_are_let_go_when_they_are_answered(self) -> None:
        with self.under_load():
            for _ in range(100):
                stream = connect(SMALL_BUFFER)
                stream.sendall(line([DUMMY] * 200) + b'{"half')  # more answers than it takes
                vanish(stream)

    @best_of_three
    def test_those_that_vanish_without_asking_anything_cost_no_work(self) -> None:
        with self.under_load(left_over=60) as daemon:
            for number in range(60):
                stream = connect()
                stream.sendall(b'{"half' * (number % 2))
                vanish(stream)
            self.assertLess(daemon.passes_per_second(1.0), BUSY)

    @best_of_three
    def test_those_that_leave_in_the_middle(self) -> None:
        begun = (b"", b'{"jsonrpc":', ASKING[:-1], ASKING * 500, line([DUMMY] * 5000),
                 line([DUMMY] * 50)[:-30], b"x" * 100_000)
        with self.under_load():
            for number in range(30 * len(begun)):
                stream = connect()
                stream.sendall(begun[number % len(begun)])
                (hang_up if number % 2 else socket.socket.close)(stream)


class Lines(UnderLoad):
    @best_of_three
    def test_a_line_of_100_megabytes_without_an_end_is_refused_and_the_connection_closed(
            self) -> None:
        with self.under_load(), Crowd() as crowd:
            pourers = crowd.join(3, b"[" + b"1," * 50_000_000)
            crowd.run_until("them to be closed", lambda: all(each.is_closed for each in pourers),
                            15.0)
            for each in pourers:
                self.assertEqual(codes(each.answers()), [NO_REQUEST])

    @best_of_three
    def test_lines_that_are_nested_deeply_are_refused_and_the_connection_stays(self) -> None:
        half = LONGEST // 2
        deep = [b"[" * LONGEST, b"[" * half + b"]" * half, b'{"a":' * (LONGEST // 5),
                b'[{"a":' * 100_000 + b"1" + b"}]" * 100_000,
                b'{"jsonrpc":"2.0","id":1,"method":"DummyFunction","params":' + b"[" * 100_000
                + b"]" * 100_000 + b"}"]
        with self.under_load(), Crowd() as crowd:
            members = [*crowd.join(3, b"".join(each + b"\n" for each in deep) + ASKING)]
            crowd.run_until("the answers", lambda: all(
                each.received.count(b"\n") > len(deep) for each in members), 15.0)
            for each in members:
                *refused, last = each.answers()
                self.assertEqual(codes(refused), [NO_REQUEST] * len(deep))
                self.assertEqual(last, DONE)

    @best_of_three
    def test_lines_that_are_no_text_are_refused_and_the_connection_stays(self) -> None:
        chance = random.Random(5314)
        noise = [chance.randbytes(20_000).replace(b"\n", b"\xff") for _ in range(100)]
        named = line(request("novatel_SetReferenceFormat", "?"))
        noise += [named[:-1].replace(b"?", each) for each in (
            b"\xff", b"\xc3", b"\xc3(", b"\xed\xa0\x80", b"\xf8\x88\x80\x80\x80", b"\xc0\x80")]
        with self.under_load(), Crowd() as crowd:
            members = crowd.join(5, b"".join(each + b"\n" for each in noise) + ASKING)
            crowd.run_until("the answers", lambda: all(
                each.received.count(b"\n") > len(noise) for each in members), 15.0)
            for each in members:
                *refused, last = each.answers()
                self.assertEqual(codes(refused), [NOT_JSON] * len(noise))
                self.assertEqual(last, DONE)

    @best_of_three
    def test_web_browsers_are_not_spoken_to(self) -> None:
        call = line(request("novatel_SetSBASPRN", 138)).decode()
        head = "Host: localhost:5314\r\nContent-Type: text/plain\r\n"
        with self.under_load(), Crowd() as crowd:
            for start in ("GET / HTTP/1.1", "POST / HTTP/1.1", "OPTIONS * HTTP/1.1",
                          "PUT /rpc HTTP/1.0", "CONNECT 127.0.0.1:5314 HTTP/1.1",
                          "GET http://127.0.0.1:5314/ HTTP/1.1", "PRI * HTTP/2.0"):
                text = f"{start}\r\n{head}Content-Length: {len(call)}\r\n\r\n{call}"
                crowd.join(5, text.encode())
            began = time.monotonic()
            crowd.run_until("them to be closed",
                            lambda: len(crowd.turned_away()) == len(crowd.members), 15.0)
            self.assertLess(time.monotonic() - began, 5.0)
        self.assertEqual(self.client().call("novatel_GetSBASPRN"), [0])


class TooMuch(UnderLoad):
    @best_of_three
    def test_batches_of_valid_requests_as_long_as_a_line_are_answered(self) -> None:
        element = json.dumps(DUMMY)
        count = (LONGEST - 1) // (len(element) + 1)
        batch = ("[" + ",".join([element] * count) + "]\n").encode()
        with self.under_load(), Crowd() as crowd:
            members = crowd.join(2, batch + ASKING)
            crowd.run_until("the answers", lambda: all(
                each.received.count(b"\n") == 2 for each in members), 20.0)
            for each in members:
                self.assertEqual(each.answers(), [[DONE] * count, DONE])

    @best_of_three
    def test_batches_of_as_many_errors_as_a_line_holds_are_answered_or_cut_off(self) -> None:
        """Whoever reads more slowly than they are made has more waiting than may wait."""
        count = (LONGEST - 1) // len(b"{},")
        with self.under_load(), Crowd() as crowd:
            single, = crowd.join(1, b"[{}]\n")
            crowd.run_until("one error", lambda: single.received.endswith(b"\n"), 5.0)
            error = bytes(single.received[1:-2])
            self.assertEqual(codes([json.loads(error)]), [NO_REQUEST])
            whole = b"[" + b",".join([error] * count) + b"]\n"
            members = crowd.join(3, b"[" + b",".join([b"{}"] * count) + b"]\n")
            crowd.run_until("the ends", lambda: all(
                each.is_closed or len(each.received) == len(whole) for each in members), 30.0)
            for each in members:
                self.assertGreater(len(each.received), 0)
                self.assertTrue(whole.startswith(each.received), each.received[-200:])

    @best_of_three
    def test_100000_requests_in_one_go_are_answered_in_their_order(self) -> None:
        flood = line(*[request("DummyFunction", number=number) for number in range(100_000)])
        with self.under_load(), Crowd() as crowd:
            member, = crowd.join(1, flood)
            crowd.run_until("the answers", lambda: member.received.count(b"\n") == 100_000, 30.0)
            self.assert_same_lines(list(range(100_000)), [each["id"] for each in member.answers()])

    @best_of_three
    def test_those_that_ask_and_never_read_are_disconnected(self) -> None:
        """Each gets 38 bytes for every 52 that it sends."""
        with self.under_load(), Crowd() as crowd:
            members = crowd.join(8, ASKING * 1_000_000, reads=False)
            crowd.run_until("them to be closed", lambda: all(each.is_closed for each in members),
                            10.0)
            most = MOST_WAITING / len(line(DONE)) * len(ASKING)
            for each in members:
                self.assertLess(each.sent, 2 * most)

    @best_of_three
    def test_those_that_keep_whole_lines_back_hold_no_more_than_there_is_for_all(self) -> None:
        with self.under_load(), Crowd() as crowd:
            members = crowd.join(100, b"[" + b"1," * (LONGEST // 2 - 10))
            crowd.run_until("some to be closed", lambda: sum(
                each.is_closed for each in members) >= 100 - 16, 30.0)
