"""The hub as a client of an MQTT broker: what it tells, and what happens when the broker is away,
hangs, or does not let it in."""

import subprocess
import time
import unittest

from harness import broker as brokers
from harness.broker import Broker, Subscriber
from harness.certificates import Authority
from harness.hub import Hub
from harness.hubbed import Hubbed
from harness.waiting import wait_until
from harness.web import ask

PLACE = (52.1, 5.2, 48.9)
OURS = "corvane/roof"
MOST_QUEUED = 1000
RETRY = 10.0  # seconds; the hub's delay between attempts has grown to a few of them by then


@unittest.skipUnless(brokers.is_there(), "there is no mosquitto")
class HubMQTT(Hubbed):
    def broker(self, *settings: str, started: bool = True) -> Broker:
        broker = Broker(self.folder / "broker", *settings)
        self.addCleanup(broker.kill)
        return broker.start() if started else broker

    def subscriber(self, name: str = "subscriber", *options: str) -> Subscriber:
        subscriber = Subscriber(self.folder, name, *options)
        self.addCleanup(subscriber.end)
        return subscriber

    def hub(self, *arguments: str, host: str = "127.0.0.1") -> Hub:
        hub = Hub(self.folder / "hub", f"--mqtt-host={host}", "--mqtt-device=roof", *arguments)
        self.addCleanup(hub.kill)
        return hub

    def texts(self, subscriber: Subscriber) -> list[str]:
        return [each.json()["text"] for each in subscriber.heard(f"{OURS}/event")]

    def wait_for_texts(self, subscriber: Subscriber, texts: list[str],
                       seconds: float = RETRY) -> None:
        wait_until("the events", lambda: self.texts(subscriber) == texts, seconds,
                   state=lambda: self.texts(subscriber))

    def refusal(self, *arguments: str) -> str:
        """What a hub says that ends because of its settings."""
        hub = Hub(self.folder / "refused", "--mqtt-host=127.0.0.1", *arguments, ports=())
        self.addCleanup(hub.kill)
        self.assertEqual(hub.status(), 1, hub.stderr)
        return hub.stderr

    # --- what is told

    def test_all_topics_are_told_as_they_are_documented(self) -> None:
        self.broker()
        subscriber = self.subscriber()
        self.hub()
        publisher = self.publisher()
        now = time.time()
        publisher.geoid(43.5)
        publisher.position(*PLACE, time=now)
        publisher.sentence("GPGSV,1,1,01,07,64,120,47", time=now)
        publisher.base(52.0, 5.0, 40.0, time=now)
        publisher.status("checksum_stats", "1204,0", time=now)
        publisher.event("something", level="error", time=now)
        publisher.raise_diagnostic(79141, 2, value=5, time=now)

        position = subscriber.wait_for(f"{OURS}/position")
        self.assertEqual(position.qos, 0)
        self.assertAlmostEqual(position.json()["latitude"], PLACE[0], delta=1e-9)
        self.assertAlmostEqual(position.json()["heightAboveGeoid"], PLACE[2] - 43.5, delta=1e-6)
        self.assertEqual(position.json()["time"], now)
        self.assertNotIn("age", position.json())
        self.assertEqual(subscriber.wait_for(f"{OURS}/sky").json()["satellites"], [
            {"prn": 7, "elevation": 64, "azimuth": 120, "cn0": 47, "isUsed": False}])
        self.assertAlmostEqual(subscriber.wait_for(f"{OURS}/base").json()["latitude"], 52.0,
                               delta=1e-9)
        self.assertEqual(
            subscriber.wait_for(f"{OURS}/status/NovatelPortHandler/checksum_stats").json(),
            {"value": "1204,0", "time": now})
        event = subscriber.wait_for(f"{OURS}/event")
        self.assertEqual(event.json(), {"time": now, "level": "error", "text": "something",
                                        "name": "NovatelPortHandler"})
        self.assertEqual(event.qos, 1)
        diagnostic = subscriber.wait_for(f"{OURS}/diagnostic/79141/2/CPositionManager")
        self.assertEqual((diagnostic.json()["raised"], diagnostic.json()["value"], diagnostic.qos),
                         (True, 5, 1))
        wait_until("health", lambda: any(each.json()["state"] == "live" for each in
                                         subscriber.heard(f"{OURS}/health")))
        self.assertEqual(subscriber.wait_for(f"{OURS}/online").payload, "1")
        publisher.clear_diagnostic(79141, 2)
        # What was raised before the connect may be told twice: as a change, and as a state.
        wait_until("the clearing", lambda: not subscriber.heard(
            f"{OURS}/diagnostic/79141/2/CPositionManager")[-1].json()["raised"])

    def test_states_are_retained_and_events_are_not(self) -> None:
        self.broker()
        first = self.subscriber("first")
        self.hub()
        publisher = self.publisher()
        publisher.position(*PLACE)
        publisher.status("key", "value")
        publisher.raise_diagnostic(79141, 2)
        publisher.event("something")
        for topic in ("position", "status/NovatelPortHandler/key", "event",
                      "diagnostic/79141/2/CPositionManager", "health", "online"):
            first.wait_for(f"{OURS}/{topic}")
        second = self.subscriber("second")
        for topic in ("position", "status/NovatelPortHandler/key",
                      "diagnostic/79141/2/CPositionManager", "health", "online"):
            self.assertTrue(second.wait_for(f"{OURS}/{topic}").is_retained, topic)
        self.assertEqual(second.heard(f"{OURS}/event"), [])

    def test_positions_are_told_once_a_second(self) -> None:
        self.broker()
        subscriber = self.subscriber()
        self.hub()
        publisher = self.publisher()
        begin = time.monotonic()
        while time.monotonic() < begin + 3.5:
            publisher.position(*PLACE)
            time.sleep(0.05)
        self.assertIn(len(subscriber.heard(f"{OURS}/position")), (3, 4))

    def test_a_hub_without_a_broker_tells_nobody(self) -> None:
        broker = self.broker()
        hub = Hub(self.folder / "hub")
        self.addCleanup(hub.kill)
        self.publisher().event("something")
        ask("/api/live")
        self.assertNotIn("corvane-hub", broker.log)

    # --- online or not

    def test_a_hub_that_ends_says_so(self) -> None:
        self.broker()
        subscriber = self.subscriber()
        hub = self.hub()
        subscriber.wait_for(f"{OURS}/online")
        self.publisher().event("the last one")
        begin = time.monotonic()
        self.assertEqual(hub.terminate(), 0)
        self.assertLess(time.monotonic() - begin, 3.0)
        self.assertEqual(subscriber.wait_for(f"{OURS}/online", 2).payload, "0")
        self.assertEqual(self.texts(subscriber), ["the last one"])

    def test_a_hub_that_is_killed_is_told_by_its_last_will(self) -> None:
        self.broker()
        subscriber = self.subscriber()
        hub = self.hub()
        subscriber.wait_for(f"{OURS}/online")
        hub.kill()
        self.assertEqual(subscriber.wait_for(f"{OURS}/online", 2).payload, "0")
        late = self.subscriber("late").wait_for(f"{OURS}/online")
        self.assertEqual((late.payload, late.is_retained), ("0", True))

    # --- a broker that is away

    def test_a_broker_that_comes_late_gets_what_has_happened(self) -> None:
        broker = self.broker(started=False)
        hub = self.hub()
        publisher = self.publisher()
        publisher.event("first")
        publisher.status("key", "old")
        publisher.event("second")
        publisher.raise_diagnostic(79141, 2)
        publisher.clear_diagnostic(79141, 2)
        hub.wait_for_error("The MQTT broker 127.0.0.1:1883: ")
        time.sleep(2.0)  # another attempt or two
        self.assertEqual(hub.stderr.count("The MQTT broker"), 1, hub.stderr)
        broker.start()
        subscriber = self.subscriber()
        self.wait_for_texts(subscriber, ["first", "second"])
        topic = f"{OURS}/diagnostic/79141/2/CPositionManager"
        subscriber.wait_for(topic, 2)
        self.assertEqual([each.json()["raised"] for each in subscriber.heard(topic)[:2]],
                         [True, False])
        subscriber.wait_for(f"{OURS}/status/NovatelPortHandler/key")
        hub.wait_for_error("The MQTT broker 127.0.0.1:1883: connected")

    def test_a_broker_that_was_killed_gets_what_has_happened_meanwhile(self) -> None:
        broker = self.broker()
        subscriber = self.subscriber("first")
        hub = self.hub()
        publisher = self.publisher()
        publisher.status("key", "value")
        publisher.raise_diagnostic(79141, 2)
        publisher.event("before")
        self.wait_for_texts(subscriber, ["before"])
        subscriber.wait_for(f"{OURS}/status/NovatelPortHandler/key")
        broker.kill()
        hub.wait_for_error("The MQTT broker 127.0.0.1:1883: ")
        for at in range(30):
            publisher.event(f"meanwhile {at}")
        broker.start()
        subscriber = self.subscriber("second")
        self.wait_for_texts(subscriber, [f"meanwhile {at}" for at in range(30)])
        self.assertEqual(subscriber.wait_for(f"{OURS}/online").payload, "1")
        self.assertEqual(subscriber.wait_for(
            f"{OURS}/status/NovatelPortHandler/key").json()["value"], "value")
        subscriber.wait_for(f"{OURS}/diagnostic/79141/2/CPositionManager")

    def test_what_a_broker_has_not_confirmed_before_it_died_is_told_again(self) -> None:
        broker = self.broker()
        subscriber = self.subscriber("first")
        self.hub()
        subscriber.wait_for(f"{OURS}/online")
        publisher = self.publisher()
        broker.hang()
        events = [f"event {at}" for at in range(50)]
        for text in events:
            publisher.event(text)
        time.sleep(0.5)  # as much as goes into the connection has gone
        broker.kill()
        broker.start()
        subscriber = self.subscriber("second")
        wait_until("all events", lambda: set(self.texts(subscriber)) == set(events), RETRY,
                   state=lambda: self.texts(subscriber))

    def test_of_too_many_events_the_newest_are_kept_and_the_others_counted(self) -> None:
        broker = self.broker(started=False)
        hub = self.hub()
        publisher = self.publisher()
        events = [f"event {at}" for at in range(MOST_QUEUED + 200)]
        for text in events:
            publisher.event(text)
        publisher.request("logger.getCategory", category="x")  # all is taken
        broker.start()
        hub.wait_for_error("200 events were lost while it was away", RETRY)
        wait_until("all events", lambda: broker.received(f"{OURS}/event") == MOST_QUEUED, RETRY,
                   state=lambda: broker.received(f"{OURS}/event"))

    def test_a_broker_that_hangs_is_noticed_by_nobody_else(self) -> None:
        broker = self.broker()
        subscriber = self.subscriber()
        hub = self.hub()
        subscriber.wait_for(f"{OURS}/online")
        publisher = self.publisher()
        broker.hang()
        slowest, before = 0.0, hub.memory_kib()
        for at in range(100):
            for _ in range(20):
                publisher.event("x" * 1000)
                publisher.status(f"key {at % 10}", str(at))
            begin = time.monotonic()
            publisher.request("logger.getCategory", category="x")
            status, _ = ask("/api/live")
            slowest = max(slowest, time.monotonic() - begin)
            self.assertEqual(status, 200)
        self.assertLess(slowest, 1.0)
        self.assertLess(hub.memory_kib() - before, 30 * 1024)
        begin = time.monotonic()
        self.assertEqual(hub.terminate(), 0)
        self.assertLess(time.monotonic() - begin, 5.0)

    def test_a_broker_whose_name_means_nothing_is_told_once_and_stops_nothing(self) -> None:
        hub = self.hub(host="no.such.broker.invalid")
        hub.wait_for_error("The MQTT broker no.such.broker.invalid:1883: ", 30.0)
        self.publisher().request("logger.getCategory", category="x")
        self.assertEqual(hub.terminate(), 0)

    # --- who is let in

    def test_certificates_are_shown_and_looked_at(self) -> None:
        authority = Authority(self.folder, "authority")
        certificate, key = authority.vouch("broker", "IP:127.0.0.1")
        ours, our_key = authority.vouch("roof")
        self.broker(f"cafile {authority.certificate}", f"certfile {certificate}",
                    f"keyfile {key}", "require_certificate true", "use_identity_as_username true")
        shown = ("--cafile", str(authority.certificate), "--cert", str(ours), "--key",
                 str(our_key))
        subscriber = self.subscriber("subscriber", *shown)
        self.hub(f"--mqtt-ca-file={authority.certificate}", f"--mqtt-certificate={ours}",
                 f"--mqtt-key={our_key}")
        self.publisher().event("over TLS")
        self.wait_for_texts(subscriber, ["over TLS"])

    def test_a_broker_that_no_authority_of_ours_vouches_for_is_told_nothing(self) -> None:
        authority = Authority(self.folder, "authority")
        certificate, key = authority.vouch("broker", "IP:127.0.0.1")
        stranger = Authority(self.folder, "stranger")
        broker = self.broker(f"certfile {certificate}", f"keyfile {key}")
        hub = self.hub(f"--mqtt-ca-file={stranger.certificate}")
        hub.wait_for_error("certificate verify failed")
        self.publisher().event("secret")
        time.sleep(2.0)  # another attempt or two
        self.assertEqual(hub.stderr.count("certificate verify failed"), 1, hub.stderr)
        self.assertNotIn(OURS, broker.log)

    def test_a_broker_of_another_name_is_told_nothing(self) -> None:
        authority = Authority(self.folder, "authority")
        certificate, key = authority.vouch("elsewhere")
        broker = self.broker(f"certfile {certificate}", f"keyfile {key}")
        hub = self.hub(f"--mqtt-ca-file={authority.certificate}")
        hub.wait_for_error("The MQTT broker 127.0.0.1:1883: ")
        self.assertNotIn(OURS, broker.log)

    def test_a_user_comes_with_a_password(self) -> None:
        passwords = self.folder / "passwords"
        subprocess.run(["mosquitto_passwd", "-b", "-c", passwords, "hub", "secret"], check=True,
                       capture_output=True)
        self.broker("allow_anonymous false", f"password_file {passwords}")
        subscriber = self.subscriber("subscriber", "-u", "hub", "-P", "secret")
        right = self.file("right", b"secret\n")
        hub = self.hub("--mqtt-user=hub", f"--mqtt-password-file={right}")
        self.assertEqual(subscriber.wait_for(f"{OURS}/online").payload, "1")
        hub.terminate()
        wrong = self.file("wrong", b"guess\n")
        hub = self.hub("--mqtt-user=hub", f"--mqtt-password-file={wrong}")
        hub.wait_for_error("not authorised")
        time.sleep(2.0)  # another attempt or two
        self.assertEqual(hub.stderr.count("not authorised"), 1, hub.stderr)

    # --- settings

    def test_settings_that_are_wrong_end_the_hub_with_the_reason(self) -> None:
        self.assertIn("'a/b' is no device's name", self.refusal("--mqtt-device=a/b"))
        self.assertIn("/no/ca: No such file or directory",
                      self.refusal("--mqtt-device=roof", "--mqtt-ca-file=/no/ca"))
        text = self.file("text", b"no certificate\n")
        self.assertIn(f"{text}: no certificates: ",
                      self.refusal("--mqtt-device=roof", f"--mqtt-ca-file={text}"))
        self.assertIn("/no/password: No such file or directory",
                      self.refusal("--mqtt-user=hub", "--mqtt-password-file=/no/password"))
