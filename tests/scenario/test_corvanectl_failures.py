"""corvanectl without a daemon, with one that does not answer, and with something else instead."""

import json
import signal
import socket
import subprocess
import threading
import time

from harness.corvanectl import (DONE, PORT, REFUSED, UNREACHABLE, USAGE, FakeDaemon, Operated,
                                about, program, result)
from harness.scenario import best_of_three

ANSWERED_COMMANDS = (("ping",), ("receiver",), ("channels",), ("tracking",),
                     ("tracking", "--watch"), ("sbas",), ("sbas", "on"), ("sbas-prn", "131"),
                     ("reference-format", "CMR"), ("reference-position",),
                     ("reference-position", "clear"), ("ionosphere", "grid"),
                     ("glonass-corrections",), ("gps-logging",), ("region", "refresh"),
                     ("refresh",), ("reset", "rtk"), ("reset", "pdp"),
                     ("reset", "factory", "--yes"), ("nmea", "GPGGA", "once"),
                     ("firmware", "status"))
EVERY_COMMAND = (*ANSWERED_COMMANDS, ("bandwidth", "1"), ("call", "DummyFunction"))


class WithoutADaemon(Operated):
    def test_every_command_that_needs_it_says_so(self) -> None:
        for arguments in EVERY_COMMAND:
            with about(arguments):
                told = self.fails(UNREACHABLE, *arguments)
                self.assertIn("cannot reach the daemon at 127.0.0.1:5314: Connection refused",
                              told)
                self.assertIn("systemctl status corvane", told)

    def test_an_upgrade_needs_it_too(self) -> None:
        self.file("new.shex", b"S0\r\n")
        self.assertIn("cannot reach", self.fails(UNREACHABLE, "firmware", "upgrade", "new.shex"))

    def test_another_machine_is_told_where_its_daemon_listens(self) -> None:
        subprocess.run(["ip", "address", "add", "10.9.8.7/32", "dev", "lo"], check=True)
        self.addCleanup(subprocess.run, ["ip", "address", "del", "10.9.8.7/32", "dev", "lo"],
                        check=True)
        told = self.fails(UNREACHABLE, "--host", "10.9.8.7", "ping")
        self.assertIn("rpc_listen", told)

    def test_a_host_that_does_not_exist_is_told(self) -> None:
        self.assertIn("cannot find the host nowhere.invalid",
                      self.fails(UNREACHABLE, "--host", "nowhere.invalid", "ping"))

    def test_a_host_that_takes_no_connection_is_given_up(self) -> None:
        with socket.socket() as listener:
            listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
            listener.bind(("127.0.0.1", PORT))
            listener.listen(0)
            waiting = [socket.socket() for _ in range(2)]
            for each in waiting:
                each.setblocking(False)
                each.connect_ex(("127.0.0.1", PORT))
            time.sleep(0.1)
            outcome = self.ctl("--timeout", "0.3", "ping")
            for each in waiting:
                each.close()
        self.assertEqual(outcome.status, UNREACHABLE, outcome)
        self.assertIn("Connection timed out", outcome.err)


class ADaemonThatWaits(Operated):
    @best_of_three
    def test_is_told_after_a_second_and_given_up_after_the_time(self) -> None:
        _, daemon = self.operated()
        daemon.send_signal(signal.SIGSTOP)
        started = time.monotonic()
        told = self.ctl("--timeout", "2", "sbas")
        self.assertAlmostEqual(time.monotonic() - started, 2.0, delta=0.4)
        self.assertEqual((told.status, told.out), (UNREACHABLE, ""), told)
        self.assertEqual(told.err.count("waiting for the daemon at 127.0.0.1:5314"), 1)
        self.assertIn("has not answered novatel_GetSBASEnabled within 2 s", told.err)
        self.assertIn("--timeout", told.err)

    def test_is_not_told_within_a_second(self) -> None:
        _, daemon = self.operated()
        daemon.send_signal(signal.SIGSTOP)
        self.assertNotIn("waiting", self.fails(UNREACHABLE, "--timeout", "0.3", "sbas"))

    def test_is_told_once_and_does_what_it_was_asked_when_it_goes_on(self) -> None:
        _, daemon = self.operated()
        daemon.send_signal(signal.SIGSTOP)
        threading.Timer(1.5, lambda: daemon.send_signal(signal.SIGCONT)).start()
        outcome = self.ctl("sbas", "on")
        self.assertEqual((outcome.status, outcome.out), (DONE, "SBAS: on\n"), outcome)
        self.assertEqual(outcome.err, "corvanectl: waiting for the daemon at 127.0.0.1:5314 ...\n")

    def test_is_waited_for_while_it_brings_its_port_to_talk(self) -> None:
        self.control(self.receiver(), breakout="softbreak")
        self.wait_until_served()
        outcome = self.ctl("ping")
        self.assertEqual(outcome.status, DONE, outcome)
        self.assertIn("waiting", outcome.err)


class SomethingElse(Operated):
    """What listens on the daemon's port is not the daemon, or is broken."""

    def serve(self, answer) -> FakeDaemon:
        server = FakeDaemon(answer)
        self.addCleanup(server.kill)
        server.start()
        return server

    def assert_nonsense(self, answer, commands=ANSWERED_COMMANDS) -> None:
        server = self.serve(answer)
        for arguments in commands:
            with about(arguments):
                told = self.fails(UNREACHABLE, "--timeout", "5", *arguments)
                self.assertIn("no sensible answer", told)
        server.kill()

    def test_that_speaks_no_json_is_no_daemon(self) -> None:
        self.assert_nonsense(lambda request: b"220 welcome\r\n", EVERY_COMMAND)

    def test_that_answers_without_a_result_is_no_daemon(self) -> None:
        self.assert_nonsense(lambda request: b'{"id":%d}\n' % request["id"], EVERY_COMMAND)

    def test_that_closes_the_connection_is_told(self) -> None:
        self.serve(lambda request: None)
        self.assertIn("closed the connection", self.fails(UNREACHABLE, "ping"))

    def test_that_answers_texts_numbers_and_dictionaries_is_no_daemon(self) -> None:
        for value in ("x", 5, {"a": 1}):
            self.assert_nonsense(lambda request, value=value: result(request, value),
                                 (("ping",), ("sbas",), ("tracking",)))

    def test_that_answers_lists_of_other_things_is_no_daemon(self) -> None:
        listed = [command for command in ANSWERED_COMMANDS
                  if command not in (("ping",), ("reset", "pdp"), ("receiver",))]
        self.assert_nonsense(lambda request: result(request, [[], {}, None, [], {}, 5, [], 1]),
                             listed)

    def test_that_answers_too_little_is_no_daemon(self) -> None:
        listed = [command for command in ANSWERED_COMMANDS
                  if command not in (("ping",), ("reset", "pdp"))]
        self.assert_nonsense(lambda request: result(request, []), listed)

    def test_that_does_nothing_is_a_refusal(self) -> None:
        self.serve(lambda request: result(request, None))
        for arguments in ANSWERED_COMMANDS:
            with about(arguments):
                self.assertIn("refused", self.fails(REFUSED, *arguments))

    def test_that_answers_an_error_is_told_with_its_reason(self) -> None:
        self.serve(lambda request: json.dumps({
            "jsonrpc": "2.0", "id": request["id"],
            "error": {"code": -32603, "message": "full \x1b[2J"}}).encode() + b"\n")
        told = self.fails(REFUSED, "ping")
        self.assertIn("the daemon refused DummyFunction: error -32603: full ?[2J", told)

    def test_that_does_not_keep_what_is_set_is_a_refusal(self) -> None:
        def answer(request: dict) -> bytes:
            method = request["method"]
            if "ReferenceFormat" in method:
                return result(request, ["VARN1"] if "Get" in method else [])
            if "Position" in method:
                return result(request, [6378137.0, 0.0, 1.0] if "Get" in method else [1])
            return result(request, [0] if "Get" in method else [1])

        self.serve(answer)
        for arguments in (("sbas", "on"), ("glonass-corrections", "on"), ("gps-logging", "on"),
                          ("sbas-prn", "131"), ("ionosphere", "grid"),
                          ("reference-format", "CMR")):
            self.assertIn("still", self.fails(REFUSED, *arguments))
        self.assertIn("another place", self.fails(REFUSED, "reference-position", "set", "6378137",
                                                  "0", "0"))

    def test_that_could_not_do_it_is_a_refusal(self) -> None:
        self.serve(lambda request: result(request, [0]))
        for arguments in (("reference-position", "clear"), ("region", "refresh"), ("refresh",),
                          ("reset", "rtk"), ("reset", "factory", "--yes"),
                          ("nmea", "GPGGA", "once"), ("ionosphere", "grid")):
            self.assertIn("could not", self.fails(REFUSED, *arguments))

    def test_the_port_is_the_one_that_is_named(self) -> None:
        server = self.serve(lambda request: result(request, []))
        self.assertEqual(self.ctl("ping").status, DONE)
        self.assertEqual(self.ctl("--port", "5315", "ping").status, UNREACHABLE)
        self.assertEqual(server.requests, [{"jsonrpc": "2.0", "id": 1, "method": "DummyFunction",
                                            "params": []}])


class WrongUsage(Operated):
    def test_tells_what_is_wrong_and_where_the_help_is(self) -> None:
        for arguments, reason, command in (
                ((), "a command is missing", "corvanectl"),
                (("firmware",), "a command is missing; there are: status, upgrade",
                 "corvanectl firmware"),
                (("sabs", "on"), "is sbas meant?", "corvanectl"),
                (("config", "gett", "x"), "is get meant?", "corvanectl config"),
                (("--colour", "ping"), "--colour", "corvanectl ping"),
                (("--colour",), "there is no option --colour", "corvanectl"),
                (("ping", "twice"), "twice", "corvanectl ping"),
                (("sbas", "on", "off"), "off", "corvanectl sbas"),
                (("sbas", "on", "ping"), "ping", "corvanectl sbas"),
                (("--port", "0", "ping"), "is no port", "corvanectl ping"),
                (("--port", "65536", "ping"), "is no port", "corvanectl ping"),
                (("--timeout", "0", "ping"), "are no seconds", "corvanectl ping"),
                (("--timeout", "nan", "ping"), "are no seconds", "corvanectl ping"),
                (("--timeout",), "--timeout", "corvanectl"),
                (("reset", "all"), "all not in", "corvanectl reset"),
                (("call",), "METHOD is required", "corvanectl call")):
            with about(arguments):
                told = self.fails(USAGE, *arguments)
                self.assertIn(reason, told)
                self.assertIn(f"\nTry: {command} --help\n", told)

    def test_a_result_that_cannot_be_written_is_a_failure(self) -> None:
        with open("/dev/full", "wb") as full:
            run = subprocess.run([program(), "methods"], stdout=full, stderr=subprocess.PIPE,
                                 text=True, check=False)
        self.assertEqual(run.returncode, REFUSED)
        self.assertIn("No space left on device", run.stderr)
