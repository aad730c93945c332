"""The RPC service's wire: JSON-RPC 2.0, a line each, for whatever program is the client."""

import contextlib
import json
import socket
import subprocess

from harness.rpc_client import PORT, RPCClient
from harness.steered import Steered, lasting_descriptors, notification, request
from harness.waiting import PATIENCE, wait_until

NOT_JSON, NO_REQUEST, NO_METHOD, WRONG_ARGUMENTS, NOT_NOW = -32700, -32600, -32601, -32602, -32603
LONGEST = 1024 * 1024  # bytes of a line
MOST_COMMANDS = 10_000  # that may wait for the receiver
DUMMY = request("DummyFunction")
DONE = {"jsonrpc": "2.0", "id": 1, "result": []}


class Wire(Steered):
    def setUp(self) -> None:
        super().setUp()
        self.receiver_, self.daemon, self.rpc = self.brief()
        self.rpc.call("DummyFunction")  # from here on its descriptor is among the daemon's

    def answer(self, line: bytes):
        self.rpc.stream.sendall(line + b"\n")
        return self.rpc.receive()

    def assert_error(self, answer, code: int, number=None) -> None:
        text = answer["error"]["message"]
        self.assertEqual(answer, {"jsonrpc": "2.0", "id": number,
                                  "error": {"code": code, "message": text}})
        self.assertGreater(len(text), 5)

    def assert_refused(self, line: bytes, code: int, number=None) -> None:
        """With this code, and the connection stays."""
        with self.subTest(line=line[:100]):
            self.assert_error(self.answer(line), code, number)
            self.assert_nothing_waits()

    def assert_nothing_waits(self) -> None:
        """The next answer is that to the next request."""
        self.rpc.send(DUMMY)
        self.assertEqual(self.rpc.receive(), DONE)


class Requests(Wire):
    def test_an_id_comes_back_as_it_was(self) -> None:
        for number in (0, -5, 2**53, 1.5, "", "seven", "ö\u2028\"\\\n", None):
            self.rpc.send(request("DummyFunction", number=number))
            self.assertEqual(self.rpc.receive(), {"jsonrpc": "2.0", "id": number, "result": []})

    def test_a_notification_is_obeyed_and_not_answered(self) -> None:
        self.rpc.send(notification("novatel_SetSBASPRN", 133), notification("novatel_Nothing"),
                      notification("novatel_SetSBASPRN", "x"), request("novatel_GetSBASPRN"))
        self.assertEqual(self.rpc.receive(), DONE | {"result": [133]})
        self.assertEqual(self.stored("sbas_prn"), "133")

    def test_requests_may_come_in_any_pieces(self) -> None:
        line = json.dumps(request("novatel_SetSBASPRN", 120)).encode() + b"\r\n"
        self.rpc.stream.setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
        for at in range(len(line)):
            self.rpc.stream.sendall(line[at:at + 1])
        self.assertEqual(self.rpc.receive(), DONE)
        self.rpc.send(*[request("novatel_GetSBASPRN", number=number) for number in range(1000)])
        for number in range(1000):
            self.assertEqual(self.rpc.receive(), DONE | {"id": number, "result": [120]})

    def test_a_whole_number_may_be_written_with_a_fraction_of_zero(self) -> None:
        for text, value in ((b"131.0", 131), (b"1.2e2", 120), (b"-0.0", 0),
                            (b"2147483647", 2**31 - 1), (b"-2147483648.0", -2**31)):
            answer = self.answer(b'{"jsonrpc":"2.0","id":1,"method":"novatel_SetSBASPRN",'
                                 b'"params":[' + text + b"]}")
            self.assertEqual(answer, DONE)
            self.assertEqual(self.rpc.call("novatel_GetSBASPRN"), [value])

    def test_more_arguments_than_there_are_do_no_harm(self) -> None:
        self.assertEqual(self.rpc.call("novatel_SetSBASPRN", 137, "x", None, [[]]), [])
        self.assertEqual(self.rpc.call("novatel_GetSBASPRN", "anything"), [137])

    def test_a_line_of_just_1_mib_is_answered_and_one_byte_more_ends_the_connection(self) -> None:
        text = json.dumps(DUMMY).encode()
        self.assertEqual(self.answer(text.ljust(LONGEST)), DONE)
        self.assert_error(self.answer(text.ljust(LONGEST + 1)), NO_REQUEST)
        self.assertIsNone(self.rpc.receive())
        self.assertEqual(self.client().call("DummyFunction"), [])


class Errors(Wire):
    def test_what_is_not_json(self) -> None:
        for line in (b"novatel_GetSBASPRN", b"{", b'{"jsonrpc":"2.0","id":1', b"{'id':1}", b"\0",
                     b"[1,]", b'{"jsonrpc":"2.0"}{}', b'"\xc3"', b"\xef\xbb\xbf{}x", b"nul"):
            self.assert_refused(line, NOT_JSON)

    def test_what_is_no_request(self) -> None:
        for line in (b"5", b'"DummyFunction"', b"null", b"true", b"{}", b"[]", b" [ ] ",
                     b'{"id":1,"method":"DummyFunction"}',
                     b'{"jsonrpc":"1.0","id":1,"method":"DummyFunction"}',
                     b'{"jsonrpc":2.0,"id":1,"method":"DummyFunction"}',
                     b'{"jsonrpc":"2.0","id":1}', b'{"jsonrpc":"2.0","id":1,"method":5}',
                     b'{"jsonrpc":"2.0","id":1,"method":"DummyFunction","params":5}',
                     b'{"jsonrpc":"2.0","id":1,"method":"DummyFunction","params":"x"}',
                     b'{"jsonrpc":"2.0","id":{},"method":"DummyFunction"}',
                     b'{"jsonrpc":"2.0","id":[1],"method":"DummyFunction"}'):
            self.assert_refused(line, NO_REQUEST)

    def test_a_method_that_is_not_there(self) -> None:
        for name in ("novatel_Nothing", "", "novatel_getSBASPRN", "novatel_GetSBASPRN ", "x" * 5000,
                     "cb_trackingStatus"):
            self.assert_refused(json.dumps(request(name, number=7)).encode(), NO_METHOD, 7)

    def test_arguments_that_are_missing_or_of_the_wrong_type(self) -> None:
        wrong = [("novatel_SetSBASPRN", [each]) for each in (
            "131", 5.5, True, None, [131], {}, 2**31, -2**31 - 1, 1e300)]
        wrong += [("novatel_SetSBASPRN", []), ("novatel_SetSBASPRN", {"PRN": 131}),
                  ("novatel_SetSBASEnabled", [True]), ("novatel_SetReferenceFormat", []),
                  ("novatel_SetReferenceFormat", [3]), ("novatel_SetReferencePosition", [1, 2]),
                  ("novatel_SetReferencePosition", [1, 2, "3"]),
                  ("novatel_SetReferencePosition", [1, None, 3]),
                  ("novatel_SetGPSLoggingEnabled", ["1"]), ("novatel_SetIonosphereMode", ["1"]),
                  ("novatel_SetIonosphereMode", [0.5]), ("RequestNMEA", ["GPGGA", 0.5]),
                  ("RequestNMEA", [12345, 200]), ("novatel_StartFirmwareUpgrade", []),
                  ("novatel_StartFirmwareUpgrade", [7])]
        (self.folder / "settings.conf").write_text("[Corvane]\nnote = 1\n")
        for method, params in wrong:
            line = json.dumps(request(method, number="x") | {"params": params}).encode()
            self.assert_refused(line, WRONG_ARGUMENTS, "x")
        without = b'{"jsonrpc":"2.0","id":4,"method":"novatel_SetSBASPRN"}'
        self.assert_refused(without, WRONG_ARGUMENTS, 4)
        self.assertEqual((self.folder / "settings.conf").read_text(), "[Corvane]\nnote = 1\n")
        self.assert_told_next(self.receiver_, self.daemon, 1, [])

    def test_commands_beyond_what_may_wait_are_refused_and_all_others_are_sent(self) -> None:
        self.receiver_.hold()
        flood = MOST_COMMANDS + 5000  # the line itself takes some thousands
        answers = []
        for begin in range(0, flood, 500):
            self.rpc.send(*[request("novatel_ResetPDPFilter", number=number)
                            for number in range(begin, begin + 500)])
            answers += [self.rpc.receive() for _ in range(500)]
        accepted = sum("result" in each for each in answers)
        self.assertGreaterEqual(accepted, MOST_COMMANDS)
        self.assertLess(accepted, flood)
        self.assert_error(answers[-1], NOT_NOW, flood - 1)
        self.receiver_.go_on()
        self.receiver_.wait_for_commands(1 + accepted, 30.0)
        self.assertEqual(self.rpc.call("novatel_ResetPDPFilter"), [])
        self.assert_told_next(self.receiver_, self.daemon, 1,
                              ["pdpfilter reset\r\n"] * (accepted + 1))


class Batches(Wire):
    def test_each_request_is_answered_in_its_place_and_notifications_are_not(self) -> None:
        batch = [request("novatel_SetSBASPRN", 120, number=1),
                 notification("novatel_SetSBASPRN", 124), request("novatel_GetSBASPRN", number="2"),
                 5, request("novatel_Nothing", number=3), {},
                 request("novatel_SetSBASPRN", number=4), notification("novatel_Nothing"),
                 request("novatel_GetIonosphereMode", number=None)]
        self.rpc.send(batch)
        answers = self.rpc.receive()
        self.assertEqual(len(answers), 7)
        self.assertEqual(answers[0], DONE)
        self.assertEqual(answers[1], DONE | {"id": "2", "result": [124]})
        self.assert_error(answers[2], NO_REQUEST)
        self.assert_error(answers[3], NO_METHOD, 3)
        self.assert_error(answers[4], NO_REQUEST)
        self.assert_error(answers[5], WRONG_ARGUMENTS, 4)
        self.assertEqual(answers[6], DONE | {"id": None, "result": [0]})
        self.assert_nothing_waits()

    def test_one_of_notifications_alone_is_obeyed_and_not_answered(self) -> None:
        self.rpc.send([notification("novatel_ResetRTKFilter"), notification("DummyFunction")])
        self.assert_nothing_waits()
        self.assert_told_next(self.receiver_, self.daemon, 1, ["rtkcommand reset\r\n"])

    def test_calls_that_take_their_time_are_all_made_in_order(self) -> None:
        refresh = "novatel_RefreshReceiverConfiguration"
        calls = [(refresh,), ("novatel_SetIonosphereMode", 2), (refresh,),
                 ("novatel_SetIonosphereMode", 1), ("novatel_GetIonosphereMode",), (refresh,)]
        self.rpc.send([request(*call) for call in calls])
        self.assertEqual([each["result"] for each in self.rpc.receive()], [[1]] * len(calls))
        self.receiver_.wait_for_command("setionotype klobuchar\r\n")
        lists = [each for each in self.receiver_.commands() if each.startswith("LOG RXCONFIGB")]
        self.assertGreaterEqual(len(lists), 3)

    def test_between_the_answers_of_a_long_one_others_are_answered(self) -> None:
        other = self.client()
        batch = [request("novatel_SetSBASPRN", number, number=number) for number in range(500)]
        self.rpc.send(batch)
        wait_until("the batch to be at work", lambda: other.call("novatel_GetSBASPRN")[0] > 5)
        self.assertLess(other.call("novatel_GetSBASPRN")[0], 450)
        self.assertEqual([each["id"] for each in self.rpc.receive()], list(range(500)))
        self.assertEqual(other.call("novatel_GetSBASPRN"), [499])


class OtherClients(Wire):
    """Those that say what they want, and that that was all."""

    def answers(self, data: bytes) -> list:
        """Everything up to the end that the daemon makes."""
        with socket.create_connection(("127.0.0.1", PORT), PATIENCE) as stream:
            stream.sendall(data)
            stream.shutdown(socket.SHUT_WR)
            with stream.makefile("rb") as lines:
                return [json.loads(line) for line in lines]

    def test_one_that_has_no_more_to_say_is_answered_before_the_end(self) -> None:
        before = lasting_descriptors(self.daemon)
        line = json.dumps(DUMMY).encode() + b"\n"
        self.assertEqual(self.answers(line), [DONE])
        self.assertEqual(self.answers(line * 20), [DONE] * 20)
        self.assertEqual(self.answers(b""), [])
        self.wait_for_descriptors(self.daemon, before)

    def test_also_when_the_answers_take_some_passes(self) -> None:
        calls = [request("novatel_SetSBASPRN", number) for number in range(120, 130)]
        calls += [request("novatel_RefreshReceiverConfiguration")] * 2
        calls += [[request("novatel_GetSBASPRN")] * 5000]
        lines = "".join(json.dumps(call) + "\n" for call in calls)
        *settings, first, second, batch = self.answers(lines.encode())
        self.assertEqual(settings, [DONE] * 10)
        self.assertEqual((first, second), (DONE | {"result": [1]},) * 2)
        self.assertEqual(batch, [DONE | {"result": [129]}] * 5000)

    def test_a_shell_is_a_client(self) -> None:
        script = ("exec 3<>/dev/tcp/127.0.0.1/5314; "
                  """printf '{"jsonrpc":"2.0","id":%d,"method":"novatel_GetSBASPRN"}\\n' 7 >&3; """
                  'read -r answer <&3; echo "$answer"')
        shell = subprocess.run(["bash", "-c", script], capture_output=True, check=True, timeout=10)
        self.assertEqual(json.loads(shell.stdout), DONE | {"id": 7, "result": [0]})


class ManyAtOnce(Wire):
    CLIENTS = 12

    def test_of_settings_that_many_make_at_once_all_are_made_and_the_last_one_holds(self) -> None:
        clients = [self.client() for _ in range(self.CLIENTS)]
        for number, client in enumerate(clients, 101):
            client.send(request("novatel_SetSBASPRN", number), request("novatel_GetSBASPRN"))
        seen = []
        for client in clients:
            self.assertEqual(client.receive(), DONE)
            seen += client.receive()["result"]
        last = self.rpc.call("novatel_GetSBASPRN")[0]
        self.assertEqual(self.stored("sbas_prn"), str(last))
        self.assertIn(last, range(101, 101 + self.CLIENTS))
        self.assertEqual(seen[last - 101], last, "nothing came after the last one")
        for client in clients:
            self.assertEqual(client.call("novatel_GetSBASPRN"), [last])

    def test_of_settings_that_one_makes_in_a_row_the_last_one_holds(self) -> None:
        others = [self.client() for _ in range(self.CLIENTS)]
        for other in others:
            other.send(*[request("novatel_SetReferenceFormat", name) for name in ("CMR", "RTCM2")])
        for other in others:
            self.assertEqual([other.receive(), other.receive()], [DONE] * 2)
        before = len(self.receiver_.commands())
        self.rpc.send(*[request("novatel_SetReferenceFormat", name)
                        for name in ("CMR", "RTCM2", "VARN1", "RTCM3")])
        self.assertEqual([self.rpc.receive() for _ in range(4)], [DONE] * 4)
        self.assertEqual(self.stored("reference_format_real"), "RTCM3")
        whole = self.configuration({"interfacemode usb3 CMR none":
                                    "interfacemode usb3 RTCMV3 none"})
        wait_until("the whole last configuration",
                   lambda: self.receiver_.commands()[before:][-len(whole):] == whole)


class Leaving(Wire):
    def test_one_that_is_gone_costs_nobody_anything(self) -> None:
        before = lasting_descriptors(self.daemon)
        for data in (b"", b"{", json.dumps([DUMMY] * 2000).encode() + b"\n", b"[" * 1000):
            for _ in range(5):
                with contextlib.closing(RPCClient()) as client:
                    client.stream.sendall(data)
        self.wait_for_descriptors(self.daemon, before)
        self.assert_nothing_waits()
