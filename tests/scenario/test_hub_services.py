"""The hub's services: what programs tell is taken, whatever others do."""

import json
import signal
import socket
import subprocess
import time

from harness import places
from harness.crowd import Crowd, hang_up
from harness.hub import GPSD_PORT, HTTP_PORT, SERVICES_PORT, Hub
from harness.hub_load import HubLoad, peak_kib
from harness.hubbed import Hubbed
from harness.publisher import Publisher
from harness.scenario import best_of_three
from harness.waiting import wait_until
from harness.web import ask_json

LONGEST = 1024 * 1024  # bytes of a line
MOST_CLIENTS = 256
NAME = "NovatelPortHandler"


def say(method: str, **params) -> bytes:
    """A message as a line."""
    call = {"jsonrpc": "2.0", "method": method,
            "params": {"name": "Crowd", "time": time.time(), **params}}
    return json.dumps(call).encode() + b"\n"


def connect() -> socket.socket:
    return socket.create_connection(("127.0.0.1", SERVICES_PORT), 10.0)


class Keeping(Hubbed):
    def category(self, **params) -> int:
        publisher = Publisher()
        method = "logger.setCategory" if "enabled" in params else "logger.getCategory"
        result = publisher.request(method, category=NAME, **params)
        publisher.close()
        self.assertEqual(set(result), {"category", "enabled"})
        self.assertEqual(result["category"], NAME)
        return result["enabled"]

    def test_a_category_is_kept_over_a_regular_end_and_over_a_kill(self) -> None:
        hub = self.start()
        self.assertEqual(self.category(), 0)
        self.assertEqual(self.category(enabled=1), 1)
        hub.terminate()
        hub = self.start()
        self.assertEqual(self.category(), 1)
        self.assertEqual(self.category(enabled=0), 0)
        self.assertEqual(self.category(enabled=1), 1)
        hub.kill()
        self.start()
        self.assertEqual(self.category(), 1)

    def test_what_a_program_tells_is_shown_until_a_later_run_of_it_tells_else(self) -> None:
        self.start()
        first = self.stranger()
        first.register()
        first.status("old", "1")
        first.raise_diagnostic(79141, 2)
        wait_until("it to be shown", lambda: ask_json("/api/panel")["diagnostics"])
        first.close()
        wait_until("it to be gone",
                   lambda: not ask_json("/api/panel")["processes"][0]["isConnected"])
        self.assertEqual(len(ask_json("/api/panel")["statuses"]), 1)
        second = self.stranger()
        second.register()
        second.status("new", "1")

        def is_second_alone() -> bool:
            panel = ask_json("/api/panel")
            return ([each["key"] for each in panel["statuses"]] == ["new"]
                    and panel["diagnostics"] == []
                    and [each["isConnected"] for each in panel["processes"]] == [True])
        wait_until("the second run alone", is_second_alone)

    def test_a_wrong_message_is_counted_and_the_next_one_is_taken(self) -> None:
        self.start()
        publisher = self.stranger()
        publisher.send(b"nonsense\n" + say("nmea.geoid") + say("no.method") + b"[]\n")
        publisher.event("right")

        def is_counted() -> bool:
            panel = ask_json("/api/panel")
            return panel["link"]["refused"] == 4 and len(panel["events"]) == 1
        wait_until("four refused messages", is_counted,
                   state=lambda: ask_json("/api/panel")["link"])


class Hostile(HubLoad):
    @best_of_three
    def test_a_flood_of_messages_delays_nobody(self) -> None:
        with self.under_load(), Crowd(SERVICES_PORT) as crowd:
            flood = b"".join(say("logger.data", key="QRS_43", value="x") for _ in range(5000))
            floods = crowd.join(6, flood)
            crowd.run_until("the floods to be sent",
                            lambda: all(each.sent == len(flood) for each in floods), 30.0)
            wait_until("all of it to be taken", lambda: self.taken("QRS_43") == 30000, 20.0)

    def taken(self, key: str) -> int:
        logs = ask_json("/api/panel")["logs"]
        return sum(each["count"] for each in logs if f"QRS_{each['id']}" == key)

    @best_of_three
    def test_a_flood_of_statuses_events_and_names_takes_bounded_memory(self) -> None:
        with self.under_load() as hub, Crowd(SERVICES_PORT) as crowd:
            before = peak_kib(hub)
            lines = []
            for i in range(400):
                lines += [
                    say("logger.status", level="info", key=f"key{i}", value="\u00e9" * 30000),
                    say("logger.event", level="error", text="\u0001" * 60000),
                    say("logger.register", name=f"n{i}", process=f"p{i}" * 50, pid=1, version="1"),
                    say("diagnostics.activity", name=f"n{i}", received=1, sentences=1),
                    say("diagnostics.raise", name=f"n{i}", code=i, sub=i, value=1),
                    say("logger.data", name=f"n{i}", key=f"QRS_{i}", value="x"),
                    say("nmea.sentence", id="GPGSV", gpsTime=0, sentence="x" * 8000),
                    say("logger.raw", data="AAAA" * 10000),
                ]
            data = b"".join(lines)
            floods = crowd.join(2, data)
            crowd.run_until("the floods to be sent",
                            lambda: all(each.sent == len(data) for each in floods), 60.0)
            self.assertLess(peak_kib(hub) - before, 48 * 1024)

    @best_of_three
    def test_300_connections_leave_the_others_alone(self) -> None:
        with self.under_load(), Crowd(SERVICES_PORT) as crowd:
            crowd.join(300, say("logger.data", key="QRS_43", value="x"))
            crowd.run_until("some to be turned away",
                            lambda: any(each.is_closed for each in crowd.members), 15.0)
            wait_until("the others to be taken",
                       lambda: self.taken("QRS_43") == MOST_CLIENTS - 1, 15.0,
                       state=lambda: self.taken("QRS_43"))

    @best_of_three
    def test_connections_that_come_and_go_leave_nothing(self) -> None:
        with self.under_load():
            for i in range(400):
                stream = connect()
                stream.sendall(say("logger.register", process=f"visitor{i}", pid=i, version="1"))
                (hang_up if i % 2 else socket.socket.close)(stream)
            publisher = Publisher()
            publisher.register("Late", "late")
            wait_until("the last one to be seen",
                       lambda: any(each["process"] == "late" and each["isConnected"]
                                   for each in ask_json("/api/panel")["processes"]))
            publisher.close()

    @best_of_three
    def test_lines_that_never_end_and_answers_that_nobody_reads_harm_nobody(self) -> None:
        asking = json.dumps({"jsonrpc": "2.0", "id": "x" * 1000, "method": "none"}).encode() + b"\n"
        with self.under_load(), Crowd(SERVICES_PORT) as crowd:
            endless = crowd.join(20, b"x" * (2 * LONGEST))
            deaf = crowd.join(4, asking * 20000, reads=False)
            crowd.run_until("the endless to be closed",
                            lambda: all(each.is_closed for each in endless), 30.0)
            crowd.run_until("the deaf to be closed",
                            lambda: all(each.is_closed for each in deaf), 30.0)

    @best_of_three
    def test_broken_messages_harm_nobody(self) -> None:
        broken = [b"\0" * 1000 + b"\n", b"[" * 5000 + b"\n", b"[" + b"{}," * 9000 + b"{}]\n",
                  b'{"jsonrpc":"2.0","method":"logger.raw","params":{"data":"' + b"A" * 999999
                  + b'"}}\n', b"\xff\xfe\n", b'"' + b"\\u0000" * 1000 + b'"\n',
                  say("position.sky", satellites=[{}] * 9000), say("position.ecef", x=1e308),
                  say("logger.status", key="k", value="v", level="fatal")]
        with self.under_load(), Crowd(SERVICES_PORT) as crowd:
            crowd.join(20, b"".join(broken))
            crowd.run_until("it to be sent",
                            lambda: all(each.sent == sum(map(len, broken)) or each.is_closed
                                        for each in crowd.members), 30.0)

    def test_a_web_page_cannot_publish(self) -> None:
        self.start()
        stream = connect()
        self.addCleanup(stream.close)
        body = say("logger.event", level="error", text="forged")
        stream.sendall(b"POST / HTTP/1.1\r\nHost: localhost:10001\r\nContent-Type: text/plain\r\n"
                       b"Content-Length: %d\r\n\r\n%s" % (len(body), body))
        with self.subTest("is closed"):
            try:
                self.assertEqual(stream.recv(1000), b"")
            except ConnectionResetError:
                pass
        time.sleep(1.2)  # until the panel would show it
        self.assertEqual(ask_json("/api/panel")["events"], [])


class Starting(Hubbed):
    def run_hub(self, *arguments: str) -> subprocess.CompletedProcess:
        """To its end, which comes by itself."""
        return subprocess.run([places.binaries() / "corvane-hub", *arguments], text=True,
                              capture_output=True, timeout=10, check=False)

    def settings(self, text: str) -> str:
        return self.file("hub.conf", text.encode())

    def test_help_and_version_are_told_on_standard_output(self) -> None:
        for option in ("--help", "-h"):
            told = self.run_hub(option)
            self.assertEqual((told.returncode, told.stderr), (0, ""))
            for part in ("--state-dir", "--http-token", "Exit status", "Examples"):
                self.assertIn(part, told.stdout)
        told = self.run_hub("--version")
        self.assertEqual((told.returncode, told.stderr), (0, ""))
        self.assertRegex(told.stdout, r"^corvane-hub \d+\.\d+\.\d+\n$")

    def test_a_wrong_command_line_is_told_with_status_2(self) -> None:
        for arguments, why in (
                (("--no-such-option",), "--no-such-option"), (("extra",), "extra"),
                (("--http-port",), "--http-port"), (("--http-port", "x"), "'x' is no number"),
                (("--http-port", "65536"), "from 0 to 65535"),
                (("--http-port=-1",), "from 0 to 65535"),
                (("--history-days", "36501"), "from 0 to 36500"),
                (("--mqtt-port", "0"), "from 1 to 65535"), (("--config",), "--config")):
            told = self.run_hub(*arguments)
            self.assertEqual((told.returncode, told.stdout), (2, ""), arguments)
            self.assertIn(why, told.stderr)
            self.assertIn("Try: corvane-hub --help", told.stderr)

    def test_a_wrong_settings_file_is_told_with_status_2(self) -> None:
        for text, why in (("[http]\nprot = 80\n", "[http] prot: there is no such setting"),
                          ("[web]\nport = 80\n", "[web] port: there is no such setting"),
                          ("port = 80\n", "port: it stands before the first section"),
                          ("[http]\nport = many\n", "[http] port: 'many' is no number")):
            told = self.run_hub("--config", self.settings(text))
            self.assertEqual((told.returncode, told.stdout), (2, ""), text)
            self.assertIn(why, told.stderr)
        told = self.run_hub("-c", str(self.folder / "none"))
        self.assertEqual(told.returncode, 2)
        self.assertIn("No such file", told.stderr)
        told = self.run_hub("-c", str(self.folder))
        self.assertEqual(told.returncode, 2)
        self.assertIn("not a regular file", told.stderr)

    def test_the_command_line_wins_over_the_settings_file(self) -> None:
        path = self.settings("[http]\nport = 8090\n[services]\nport = 10090\n")
        hub = self.start("--config", path, "--http-port", "8091", ports=(8091, 10090))
        self.assertIn("http://127.0.0.1:8091/", hub.stderr)
        self.assertIn("127.0.0.1:10090", hub.stderr)

    def test_port_0_lets_the_system_choose_and_tells_which(self) -> None:
        hub = self.start("--http-port=0", "--services-port=0", "--gpsd-port=0", ports=())
        hub.wait_for_error("web: serving on http://127.0.0.1:")
        for port in (":0/", ":0\n"):
            self.assertNotIn(port, hub.stderr)

    def test_whoever_opens_it_to_others_is_told_what_that_means(self) -> None:
        hub = self.start("--services-listen=0.0.0.0", "--http-listen=0.0.0.0",
                         "--gpsd-listen=0.0.0.0")
        self.assertIn("services: whoever reaches 0.0.0.0:10001 can publish", hub.stderr)
        self.assertIn("web: whoever reaches 0.0.0.0:8080 can read everything", hub.stderr)
        self.assertIn("--http-token", hub.stderr)
        self.assertIn("gpsd: whoever reaches 0.0.0.0:2947 can read positions", hub.stderr)

    def test_whoever_opens_it_with_a_token_is_not_told_to_set_one(self) -> None:
        hub = self.start("--http-listen=0.0.0.0", "--http-token=s3cret")
        self.assertNotIn("whoever", hub.stderr)
        self.assertNotIn("s3cret", hub.stderr)

    def test_nobody_is_told_anything_of_the_kind_by_default(self) -> None:
        self.assertNotIn("whoever", self.start().stderr)

    def test_ports_that_are_in_use_are_tried_again(self) -> None:
        ports = (SERVICES_PORT, HTTP_PORT, GPSD_PORT)
        others = [socket.create_server(("127.0.0.1", port)) for port in ports]
        for other in others:
            self.addCleanup(other.close)
        hub = self.start(ports=())
        for port in ports:
            hub.wait_for_error(f"127.0.0.1:{port}: Address already in use; trying again every 10 s")
        for other in others:
            other.close()
        for port in ports:
            wait_until(f"it to listen on {port}",
                       lambda port=port: socket.socket().connect_ex(("127.0.0.1", port)) == 0, 12.0)
        self.assertEqual(hub.stderr.count("Address already in use"), len(ports))
        self.assertEqual(hub.terminate(), 0)

    def test_a_second_hub_takes_nothing_away_from_the_first(self) -> None:
        self.start()
        second = Hub(self.folder / "second", ports=())
        self.addCleanup(second.kill)
        for port in (SERVICES_PORT, HTTP_PORT, GPSD_PORT):
            second.wait_for_error(f"127.0.0.1:{port}: Address already in use")
        publisher = Publisher()
        self.addCleanup(publisher.close)
        publisher.event("here")
        wait_until("the event", lambda: ask_json("/api/panel")["events"])
        for _ in range(20):
            self.assertEqual(len(ask_json("/api/panel")["events"]), 1)

    @best_of_three
    def test_it_ends_at_once_with_status_0_when_it_is_asked_to(self) -> None:
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            hub = Hub(self.folder / number.name)
            self.addCleanup(hub.kill)
            publisher = Publisher()
            self.addCleanup(publisher.close)
            publisher.position(52.0, 5.0, 45.0)
            begin = time.monotonic()
            self.assertEqual(hub.terminate(number), 0)
            self.assertLess(time.monotonic() - begin, 1.0, number.name)

    def test_it_ends_also_when_it_has_only_begun(self) -> None:
        for i in range(40):
            hub = Hub(self.folder / "begun", ports=())
            self.addCleanup(hub.kill)
            wait_until("the first word", lambda hub=hub: hub.stderr)
            time.sleep(0.0002 * i)
            begin = time.monotonic()
            self.assertEqual(hub.terminate(), 0)
            self.assertLess(time.monotonic() - begin, 2.0)
