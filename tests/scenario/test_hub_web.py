"""The hub's web server: who may read what, live streams, and clients that mean no good."""

import gzip
import json
import shutil
import socket
import subprocess
import threading
import time
import unittest

from harness.crowd import Crowd
from harness.hub import HTTP_PORT
from harness.hub_load import PLACE, HubLoad
from harness.hubbed import Hubbed
from harness.publisher import Publisher
from harness.scenario import best_of_three
from harness.waiting import wait_until
from harness.web_client import Stream, answers_in, connect, everything, get, request

TOKEN = "s3cret"
MOST_STREAMS = 128
PAGES = ("/", "/api/live", "/api/panel", "/metrics", "/healthz")


class Web(Hubbed):
    def stream(self, *headers: str) -> Stream:
        stream = Stream(*headers)
        self.addCleanup(stream.close)
        return stream


class Health(Web):
    def wait_for_health(self, status: int, text: str, state: str) -> None:
        def told() -> tuple:
            answer = get("/healthz")
            return answer.status, answer.body.decode()
        wait_until(f"{status} {text!r}", lambda: told()[0] == status and text in told()[1], 6.0,
                   state=told)
        live = json.loads(get("/api/live").body)
        self.assertEqual(live["health"]["state"], state)

    def test_is_told_from_the_first_moment(self) -> None:
        self.start()
        answer = get("/healthz")
        self.assertEqual((answer.status, answer.body),
                         (503, b"The daemon is not connected, and has never been\n"))
        self.assertEqual(json.loads(get("/api/live").body)["solution"], None)
        self.assertEqual(json.loads(get("/api/panel").body)["statuses"], [])

    def test_follows_the_daemon_and_its_receiver(self) -> None:
        self.start()
        publisher = self.publisher()
        self.wait_for_health(503, "No connected program tells positions", "gone")
        publisher.solution()
        self.wait_for_health(503, "The receiver has no position", "no position")
        publisher.position(*PLACE)
        self.wait_for_health(200, "ok", "live")
        publisher.activity(1, 1)
        self.wait_for_health(503, "The last solution is 2 s old", "old")
        publisher.activity(0, 0)
        self.wait_for_health(503, "The receiver is silent: no byte for 3 s", "silent")
        publisher.close()
        self.wait_for_health(503, "The daemon is gone; the last solution is", "gone")


class Rules(Web):
    def test_only_the_machines_own_names_are_served(self) -> None:
        self.start("--http-names=rover.example")
        for host in ("localhost", "LocalHost:8080", "127.0.0.1", "127.0.0.1:8080", "[::1]:8080",
                     socket.gethostname(), "rover.example"):
            self.assertEqual(get("/api/live", host=host).status, 200, host)
        for host in ("evil.example", "localhost.evil.example", "192.168.7.7", "", None,
                     "localhost, evil.example"):
            for page in PAGES:
                answer = get(page, host=host)
                self.assertEqual(answer.status, 421, (host, page))
                self.assertNotIn(b"health", answer.body)
        self.assertEqual(get("/api/live", "Host: localhost").status, 421)  # a second one

    def test_a_token_is_wanted_for_everything(self) -> None:
        self.start(f"--http-token={TOKEN}")
        for page in (*PAGES, "/api/stream", "/api/history/events", "/no.such"):
            answer = get(page)
            self.assertEqual(answer.status, 401, page)
            self.assertEqual(answer.headers["www-authenticate"], 'bearer realm="corvane"')
        for headers in ((f"Authorization: Bearer {TOKEN}",), (f"Cookie: corvane_token={TOKEN}",)):
            self.assertEqual(get("/api/live", *headers).status, 200)
        self.assertEqual(get("/api/live", "Authorization: Bearer wrong").status, 401)
        self.assertEqual(get("/api/live", f"Authorization: Bearer {TOKEN}",
                             host="evil.example").status, 421)

    def test_a_browser_keeps_the_token_of_its_address(self) -> None:
        self.start(f"--http-token={TOKEN}")
        answer = get(f"/?token={TOKEN}")
        self.assertEqual((answer.status, answer.headers["location"]), (303, "/"))
        cookie = answer.headers["set-cookie"].partition(";")[0]
        self.assertIn("httponly", answer.headers["set-cookie"])
        self.assertEqual(get("/", f"Cookie: {cookie}").status, 200)
        stream = self.stream(f"Cookie: {cookie}")
        self.assertIsNotNone(stream.next("live"))
        self.assertEqual(get("/?token=wrong").status, 401)

    def test_every_answer_has_the_headers_that_protect_a_browser(self) -> None:
        self.start()
        for answer in (*map(get, PAGES), get("/no.such"), get("/", host="evil.example"),
                       get("/", method="POST")):
            self.assertIn("default-src 'self'", answer.headers["content-security-policy"])
            self.assertEqual(answer.headers["x-content-type-options"], "nosniff")
            self.assertEqual(answer.headers["cache-control"], "no-store")

    def test_nothing_can_be_changed(self) -> None:
        self.start()
        for method in ("POST", "PUT", "DELETE", "PATCH", "OPTIONS"):
            answer = get("/api/live", method=method)
            self.assertEqual((answer.status, answer.headers["allow"]), (405, "get, head"), method)

    def test_a_head_is_a_get_without_its_body(self) -> None:
        self.start()
        for page in (*PAGES, "/no.such", "/api/stream"):
            head = get(page, method="HEAD")
            self.assertEqual(head.body, b"")
            if page != "/api/stream":
                whole = get(page)
                self.assertEqual(head.status, whole.status, page)
                self.assertEqual(head.headers["content-type"], whole.headers["content-type"])

    def test_what_there_is_not_is_told_so(self) -> None:
        self.start()
        for page in ("/no.such", "/api/", "/api/live/", "/../etc/passwd", "/%2e%2e/etc/passwd",
                     "//", "/api/history/no_such"):
            self.assertEqual(get(page).status, 404, page)

    def test_the_metrics_are_what_prometheus_reads(self) -> None:
        self.start()
        publisher = self.publisher()
        publisher.position(*PLACE)
        publisher.sky((7, 47), (7, 38), (45, None))
        publisher.status("checksum_stats", "5,1")
        publisher.data("QRS_42", "x", name='a "quoted" \\ name')
        publisher.activity(5, 5)
        publisher.raise_diagnostic(79141, 2)
        publisher.event("e")
        wait_until("all to be shown", lambda: b"corvane_events_total{level=\"warning\"} 1"
                   in get("/metrics").body)
        answer = get("/metrics")
        self.assertEqual(answer.headers["content-type"],
                         "text/plain; version=0.0.4; charset=utf-8")
        if shutil.which("promtool") is None:
            raise unittest.SkipTest("there is no promtool")
        checked = subprocess.run(["promtool", "check", "metrics"], input=answer.body,
                                 capture_output=True, timeout=20, check=False)
        self.assertEqual((checked.returncode, checked.stdout, checked.stderr), (0, b"", b""))


class Streams(Web):
    def test_a_stream_tells_what_is_published(self) -> None:
        self.start()
        publisher = self.publisher()
        stream = self.stream()
        self.assertIn("http/1.1 200 ok", stream.head)
        self.assertIn("content-type: text/event-stream", stream.head)
        self.assertIsNone(stream.next("live")["solution"])
        publisher.position(*PLACE, velocity=(3.0, 4.0, 0.0))
        publisher.geoid(43.5)
        publisher.status("firmware", "3.800")
        solution = stream.until("live", lambda live: live["solution"] and
                                live["solution"]["heightAboveGeoid"])["solution"]
        self.assertAlmostEqual(solution["latitude"], PLACE[0], 8)
        self.assertAlmostEqual(solution["longitude"], PLACE[1], 8)
        self.assertAlmostEqual(solution["height"], PLACE[2], 4)
        self.assertAlmostEqual(solution["heightAboveGeoid"], PLACE[2] - 43.5, 4)
        self.assertAlmostEqual(solution["speed"], 5.0, 6)
        self.assertAlmostEqual(solution["course"], 36.8699, 3)
        self.assertLess(abs(solution["utc"] - time.time()), 5.0)
        panel = stream.until("panel", lambda panel: panel["statuses"])
        self.assertEqual([(each["key"], each["value"]) for each in panel["statuses"]],
                         [("firmware", "3.800")])

    @best_of_three
    def test_the_live_view_comes_five_times_and_the_panel_once_a_second(self) -> None:
        self.start()
        stream = self.stream()
        first = stream.next("panel")["now"]
        lives, panels = [], []
        while not panels or panels[-1] < first + 2.9:
            name, content = stream.event()
            (lives if name == "live" else panels).append(content["now"])
        self.assertEqual(len(panels), 3)
        self.assertIn(len(lives), (13, 14, 15, 16))

    @best_of_three
    def test_fifty_pages_are_served_at_once(self) -> None:
        hub = self.start()
        publisher = self.publisher()
        begin = time.monotonic()
        streams = [self.stream() for _ in range(50)]
        self.assertLess(time.monotonic() - begin, 1.0)
        publisher.position(*PLACE)
        found = []

        def read(stream: Stream) -> None:
            stream.until("live", lambda live: live["solution"])
            found.append(time.monotonic())
        readers = [threading.Thread(target=read, args=(stream,)) for stream in streams]
        before = time.monotonic()
        for each in readers:
            each.start()
        for each in readers:
            each.join()
        self.assertEqual(len(found), 50)
        self.assertLess(max(found) - before, 1.0)
        begin = time.monotonic()
        self.assertEqual(hub.terminate(), 0)
        self.assertLess(time.monotonic() - begin, 1.0)

    def test_one_page_too_many_is_told_to_come_later(self) -> None:
        self.start()
        streams = [self.stream() for _ in range(MOST_STREAMS)]
        answer = get("/api/stream")
        self.assertEqual((answer.status, answer.headers["retry-after"]), (503, "10"))
        for stream in streams[:3]:
            stream.close()
        wait_until("a place", lambda: self.stream().head[0].endswith("200 ok"))

    def test_a_page_that_closes_leaves_nothing(self) -> None:
        hub = self.start()
        get("/")
        before = hub.descriptors()
        for _ in range(30):
            stream = Stream()
            stream.next("live")
            stream.close()
        wait_until("no connection to be left", lambda: hub.descriptors() <= before + 3,
                   state=hub.descriptors)


class Requests(Web):
    def test_requests_that_come_together_are_answered_in_their_order(self) -> None:
        self.start()
        pages = ("/api/live", "/healthz", "/no.such", "/api/panel") * 10
        data = b"".join(request(page, is_last=False) for page in pages)
        answers = answers_in(everything(data + request("/healthz")))
        statuses = {"/api/live": 200, "/healthz": 503, "/no.such": 404, "/api/panel": 200}
        self.assertEqual([each.status for each in answers],
                         [statuses[page] for page in pages] + [503])

    def test_a_request_hidden_in_the_body_of_another_is_not_answered(self) -> None:
        self.start()
        hidden = request("/api/panel")
        for head in ("POST / HTTP/1.1\r\nHost: evil.example", "POST / HTTP/1.1\r\nHost: localhost",
                     "GET / HTTP/1.1\r\nHost: evil.example", "GET / HTTP/1.1\r\nHost: localhost"):
            for length in (f"Content-Length: {len(hidden)}", "Transfer-Encoding: chunked"):
                received = everything(f"{head}\r\n{length}\r\n\r\n".encode() + hidden)
                self.assertEqual(received.count(b"HTTP/1.1 "), 1, (head, length))
                self.assertNotIn(b'"statuses":[', received)

    def test_a_refused_body_does_not_take_the_answer_away(self) -> None:
        self.start()
        for size in (10, 1000, 200_000):
            body = request("/", f"Content-Length: {size}", method="POST") + b"x" * size
            with connect() as stream:
                stream.sendall(body)
                received = b""
                while chunk := stream.recv(65536):
                    received += chunk
            self.assertTrue(received.startswith(b"HTTP/1.1 405 "), size)

    def test_broken_requests_are_refused_once_and_closed(self) -> None:
        self.start()
        good = request("/api/panel", is_last=False)
        for broken in (b"\r\n", b"nonsense\r\n\r\n", b"GET\r\n\r\n", b"GET / HTTP/9.9\r\n\r\n",
                       b"GET / HTTP/1.1\r\nHost localhost\r\n" + b"x" * 9000 + b"\r\n\r\n",
                       b"\0\0\0\0\r\n\r\n", b"\x16\x03\x01\x02\0\x01\0\x01\xfc\x03\x03\r\n\r\n",
                       b"PRI * HTTP/2.0\r\n\r\nSM\r\n\r\n", b"get / http/1.1\r\n\r\n"):
            received = everything(broken + good * 3)
            self.assertIn(received.count(b"HTTP/1.1 "), (0, 1), broken[:50])
            self.assertNotIn(b'"statuses":[', received, broken[:50])

    def test_what_is_too_long_is_refused(self) -> None:
        hub = self.start()
        self.assertEqual(get("/" + "a" * 8000).status, 404)
        self.assertEqual(get("/api/history/" + "a" * 8000).status, 404)
        self.assertEqual(get("/" + "a" * 12000).status, 414)
        for data in (request("/" + "a" * 100_000), request("/", "X: " + "a" * 100_000),
                     request("/", *(f"X{i}: {i}" for i in range(10_000)))):
            self.assertNotIn(b"HTTP/1.1 200", everything(data))
        self.assertTrue(hub.is_running())

    def test_parts_of_a_page_cannot_be_asked_for(self) -> None:
        self.start()
        for page in PAGES:
            whole = get(page)
            ranged = get(page, "Range: bytes=" + ",".join(["0-"] * 2500))
            self.assertEqual(ranged.status, whole.status)
            self.assertLess(len(ranged.body), 2 * len(whole.body) + 1000)

    def test_an_answer_can_be_compressed_and_a_stream_is_not(self) -> None:
        self.start()
        answer = get("/api/panel", "Accept-Encoding: gzip")
        if answer.headers.get("content-encoding") == "gzip":
            self.assertIn("statuses", json.loads(gzip.decompress(answer.body)))
        else:
            self.assertIn("statuses", json.loads(answer.body))
        stream = self.stream("Accept-Encoding: gzip")
        self.assertIsNotNone(stream.next("live"))


class Hostile(HubLoad):
    @best_of_three
    def test_300_idle_connections_do_not_keep_others_out(self) -> None:
        with self.under_load(), Crowd(HTTP_PORT) as crowd:
            crowd.join(300, b"", reads=False)
            began = time.monotonic()
            crowd.run_until("two seconds", lambda: time.monotonic() > began + 2.0, 3.0)
            before = time.monotonic()
            self.assertEqual(get("/healthz").status, 200)
            self.assertLess(time.monotonic() - before, 1.5)

    @best_of_three
    def test_slow_headers_do_not_keep_others_out(self) -> None:
        with self.under_load(), Crowd(HTTP_PORT) as crowd:
            slow = crowd.join(200, b"GET / HTTP/1.1\r\nHost: localhost\r\nX: ")
            crowd.run_until("the slow to be closed", lambda: all(each.is_closed for each in slow),
                            8.0)
            self.assertEqual({len(each.received) for each in slow}, {len(slow[0].received)})

    @best_of_three
    def test_headers_without_end_do_not_keep_others_out(self) -> None:
        data = b"GET / HTTP/1.1\r\nHost: localhost\r\n" + b"X: y\r\n" * 500_000
        with self.under_load(), Crowd(HTTP_PORT) as crowd:
            endless = crowd.join(50, data)
            crowd.run_until("the endless to be closed",
                            lambda: all(each.is_closed for each in endless), 15.0)

    @best_of_three
    def test_pages_that_never_read_do_not_keep_others_out(self) -> None:
        with self.under_load() as hub:
            publisher = Publisher()
            for i in range(15):
                publisher.status(f"key{i}", "x" * 60_000)
            deaf = [connect(2048) for _ in range(100)]
            for stream in deaf:
                stream.sendall(request("/api/stream", is_last=False))
            time.sleep(2.0)
            self.assertTrue(hub.is_running())
            for stream in deaf:
                stream.close()
            publisher.close()

    @best_of_three
    def test_it_ends_at_once_whatever_clients_do(self) -> None:
        hub = self.start()
        publisher = Publisher()
        self.addCleanup(publisher.close)
        for i in range(15):
            publisher.status(f"key{i}", "x" * 60_000)
        clients = []
        for data in (b"", b"GET / HTTP/1.1\r\n", request("/api/stream", is_last=False),
                     request("/api/panel", is_last=False) * 50, b"POST / HTTP/1.1\r\nHost: x\r\n"):
            for _ in range(10):
                stream = connect(2048)
                stream.sendall(data)
                clients.append(stream)
        time.sleep(1.5)
        begin = time.monotonic()
        self.assertEqual(hub.terminate(), 0)
        self.assertLess(time.monotonic() - begin, 1.0)
        for stream in clients:
            stream.close()
