"""The tools of the scenario tests themselves: peers against each other, decoder against builder."""

import contextlib
import io
import json
import os
import socket
import struct
import tty
import unittest

from decoder import bodies, framers, records
from decoder.run import seconds_text
from harness import messages, recording, sentences
from harness.collector import PORT
from harness.multiplexer import RPC_PORT, socket_path
from harness.recording import Block
from harness.scenario import Scenario
from harness.waiting import NotInTime, wait_until
from run import LinePerTest

EVENT = {"name": "x", "level": "error", "text": "t", "time": 1}


def message(method: str, params: dict, **more) -> bytes:
    return json.dumps({"jsonrpc": "2.0", "method": method, "params": params, **more}).encode()


class TheCollector(Scenario):
    def client(self) -> socket.socket:
        client = socket.create_connection(("127.0.0.1", PORT), timeout=5)
        self.addCleanup(client.close)
        return client

    def test_records_whole_lines_however_they_are_cut(self) -> None:
        collector = self.collector()
        client = self.client()
        for byte in message("logger.event", EVENT) + b"\n":
            client.send(bytes([byte]))
        self.assertEqual(collector.wait_for("logger.event")["text"], "t")

    def test_tells_malformed_lines_from_messages(self) -> None:
        collector = self.collector()
        short = {name: value for name, value in EVENT.items() if name != "time"}
        bad = [b"nonsense", b"{}", message("logger.event", short), message("logger.other", EVENT),
               message("logger.event", {**EVENT, "more": 1}), message("logger.event", EVENT, id=1),
               message("logger.event", {**EVENT, "time": "now"})]
        self.client().sendall(b"".join(line + b"\n" for line in bad))
        wait_until("all lines", lambda: len(collector.malformed) == len(bad))
        collector.malformed.clear()
        self.assertEqual(collector.messages(), [])

    def test_answers_category_requests(self) -> None:
        self.collector()
        client = self.client()
        params = {"category": "x", "enabled": 1, "time": 1}
        client.sendall(message("logger.setCategory", params, id=7) + b"\n")
        self.assertEqual(json.loads(client.recv(1000)), {
            "jsonrpc": "2.0", "id": 7, "result": {"category": "x", "enabled": 1}})

    def test_closes_in_the_middle_of_a_line_when_told(self) -> None:
        collector = self.collector()
        collector.close_next_connection_after(10)
        client = self.client()
        client.sendall(message("logger.event", EVENT) + b"\n")
        with contextlib.suppress(ConnectionResetError):
            self.assertEqual(client.recv(1), b"")
        self.assertEqual(collector.pending(0), message("logger.event", EVENT)[:10])

    def test_lets_everything_wait_while_it_does_not_read(self) -> None:
        collector = self.collector(started=False)
        collector.start(reading=False, receive_buffer=4096)
        client = self.client()
        client.settimeout(0.2)
        with self.assertRaises(TimeoutError):
            client.sendall((message("logger.event", EVENT) + b"\n") * 20000)
        self.assertEqual(collector.messages(), [])
        collector.go_on_reading()
        collector.wait_for("logger.event")

    def test_a_wait_in_vain_fails(self) -> None:
        with self.assertRaises(NotInTime):
            self.collector().wait_for("logger.event", seconds=0.05)


class TheMultiplexer(Scenario):
    def client(self, port: int) -> socket.socket:
        client = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self.addCleanup(client.close)
        client.settimeout(5)
        client.connect(socket_path(port))
        return client

    def test_hands_bytes_to_the_clients_of_a_port_and_keeps_what_they_write(self) -> None:
        multiplexer = self.multiplexer()
        first, second = self.client(50), self.client(50)
        wait_until("both clients", lambda: multiplexer.clients(50) == 2)
        multiplexer.send(50, b"hello")
        self.assertEqual((first.recv(10), second.recv(10)), (b"hello", b"hello"))
        first.send(b"log")
        wait_until("what was written", lambda: multiplexer.written(50) == b"log")

    def test_killed_it_leaves_names_behind_that_refuse(self) -> None:
        multiplexer = self.multiplexer()
        client = self.client(50)
        multiplexer.wait_for_client(50)
        multiplexer.kill()
        self.assertEqual(client.recv(1), b"")
        self.assertTrue(os.path.exists(socket_path(50)))
        with self.assertRaises(ConnectionRefusedError):
            self.client(50)
        multiplexer.start()
        self.client(50)

    def test_records_the_speeds_that_are_asked_for(self) -> None:
        multiplexer = self.multiplexer()
        with socket.create_connection(("127.0.0.1", RPC_PORT), timeout=5) as client:
            call = {"jsonrpc": "2.0", "id": 1, "method": "SetPortConfig", "params": [50, 9600]}
            client.sendall(json.dumps(call).encode() + b"\n")
            self.assertEqual(json.loads(client.recv(1000))["result"], 1)
        self.assertEqual(multiplexer.speeds, [(50, 9600)])


class TheSerialLine(Scenario):
    def test_knows_whether_it_is_open_and_carries_bytes(self) -> None:
        line = self.serial_line()
        self.assertFalse(line.is_open())
        device = os.open(line.device, os.O_RDWR | os.O_NOCTTY)
        self.addCleanup(os.close, device)
        self.assertFalse(line.is_open(), "a device that is not raw is not ready")
        tty.setraw(device)
        line.wait_until_open()
        line.say(b"\x00\x0d\x0a\x11\xff")
        self.assertEqual(os.read(device, 10), b"\x00\x0d\x0a\x11\xff")


class TheRecordings(unittest.TestCase):
    BLOCKS = [Block(1.5, b"one"), Block(2.25, b""), Block(3.000001, b"three")]

    def test_what_is_written_is_read_back(self) -> None:
        for big_endian in (False, True):
            for nanoseconds in (False, True):
                data = recording.write(self.BLOCKS, big_endian=big_endian, nanoseconds=nanoseconds)
                self.assertEqual(recording.read(data), self.BLOCKS)

    def test_a_cut_block_is_left_out(self) -> None:
        self.assertEqual(recording.read(recording.write(self.BLOCKS)[:-1]), self.BLOCKS[:-1])

    def test_another_file_is_refused(self) -> None:
        with self.assertRaises(ValueError):
            recording.read(b"something else")


def framed(stream: bytes, step: int = 0) -> list[tuple[int, bytes]]:
    """What the three framers make of a stream, cut into chunks."""
    step = step or len(stream)
    found = []
    for framer in framers.framers():
        for at in range(0, len(stream), step):
            found += framer.feed(stream[at:at + step])
    return found


class TheDecoder(unittest.TestCase):
    """Built and taken apart by two pieces of code that share nothing."""

    def test_sentences_of_each_kind_are_framed(self) -> None:
        stream = (sentences.numbered(1) + sentences.nmea("GPGSV,1") +
                  sentences.ascii_log("SOFTLOADSTATUSA", "COMPLETE"))
        for step in (0, 1, 7):
            self.assertEqual([result for result, _ in framed(stream, step)], [1, 1, 1])

    def test_a_known_receivers_sentence_is_right(self) -> None:
        response = bytes.fromhex("aa44121c010080200600000 0ffb49706 1d3dfd1800000000 ffff0000"
                                 "01000000 4f4b ea247892".replace(" ", ""))
        self.assertEqual(framed(response), [(1, response)])
        record = records.decode(response)
        self.assertEqual((record.kind, record.content["text"]), ("response", b"OK"))

    def test_the_sync_bytes_are_hunted_for_with_their_quirks(self) -> None:
        sentence = sentences.numbered(1)
        self.assertEqual(framed(b"\xaa" + sentence), [(1, sentence)])
        self.assertEqual(framed(b"\xaa\x44" + sentence), [])

    def test_damaged_sentences_are_rejected(self) -> None:
        good = sentences.numbered(1)
        bad = good[:-1] + bytes([good[-1] ^ 1])
        self.assertEqual(framed(bad + good), [(-1, b""), (1, good)])
        self.assertEqual(framed(b"$GPGSV*00\r"), [(-1, b"")])
        self.assertEqual(framed(b"#" + b"a" * 4097 + b"\r"), [(-1, b"")])

    def test_checksum_texts_are_read_as_c_reads_them(self) -> None:
        values = {b"1aF": 0x1AF, b" \t2g": 2, b"": 0, b"xyz": 0, b"0x1F": 0x1F, b"0xg": 0,
                  b"-1": 0xFFFFFFFF, b"+2": 2, b"12\x0034": 0x12}
        for text, value in values.items():
            self.assertEqual(framers.leading_hex(text), value, text)
        self.assertEqual(framed(b"$*2A\r"), [(1, b"$*2A")])

    def test_a_longer_header_moves_the_body(self) -> None:
        body = struct.pack("<32xf", 1.5)
        for padding in (b"", bytes(4)):
            record = records.decode(sentences.binary(42, body, padding=padding))
            self.assertEqual(record.content["undulation"], 1.5)

    def test_damaged_logs_order_an_end(self) -> None:
        damaged = {43: sentences.u32(1), 83: sentences.u32(0, 0, 0, 1), 37: sentences.u32(1),
                   93: sentences.u32(0, 1), 174: sentences.u32(0, 0, 0, 0, 0, 0, 1),
                   317: sentences.u32(1), 1148: sentences.u32(0, 1, 5)}
        for message_id, body in damaged.items():
            with self.assertRaises(bodies.OrderedEnd):
                records.decode(sentences.binary(message_id, body))
            records.decode(sentences.binary(message_id, bytes(28 if message_id == 174 else
                                                              len(body) // 8 * 8 or 4)))

    def test_satellite_lists_are_lenient_and_glonass_frequencies_signed(self) -> None:
        entries = sentences.u32(2) + struct.pack("<IHHII", 1, 7, 65529, 0, 0) + struct.pack(
            "<IHHII", 0, 8, 65529, 0, 0)
        blocks = records.decode(sentences.binary(1162, entries)).content["blocks"]
        self.assertEqual([block["frequency"] for block in blocks], [-7, 65529])
        self.assertEqual(records.decode(sentences.binary(1162, entries[:-1])).content["blocks"], [])

    def test_seconds_are_written_shortest(self) -> None:
        texts = {0: "0", 500: "0.5", 345600500: "345600.5", 400000000: "400000", 1: "0.001"}
        for milliseconds, text in texts.items():
            self.assertEqual(seconds_text(milliseconds), text)


class TheCanonicalText(unittest.TestCase):
    def text(self, method: str, params: dict) -> str:
        return messages.canonical(messages.parse(message(method, {**params, "time": 1}), 0, 1.0))

    def test_leaves_out_what_differs_from_run_to_run(self) -> None:
        register = {"name": "x", "process": "corvane", "pid": 1, "version": "1"}
        self.assertEqual(self.text("logger.register", register),
                         'logger.register ["x", "corvane", "<pid>", "<version>"]')
        data = {"name": "x", "key": "QRS_42", "value": "1.5,1800,2.0"}
        self.assertEqual(self.text("logger.data", data),
                         'logger.data ["x", "QRS_42", "<received>,1800,2.0"]')
        data["key"] = messages.NMEA_KEY
        self.assertEqual(self.text("logger.data", data),
                         'logger.data ["x", "QRS_65535", "<received>,<week>,<seconds>"]')

    def test_shows_raw_bytes_by_length_and_hash(self) -> None:
        self.assertIn("2 bytes, sha256 ", self.text("logger.raw", {"name": "x", "data": "T0s="}))

    def test_shortens_the_digits_that_differ_between_maths_libraries(self) -> None:
        status = {"name": "x", "level": "essential", "key": messages.POSITION_KEY}
        texts = {"1.0000,-0.0000,nan,37.123456789499,-0.000000000001,41.7385":
                 "1.0000,-0.0000,nan,37.123456789,0.000000000,41.738",
                 "-nan,inf,1.0000,-nan,nan,-inf": "-nan,inf,1.0000,nan,nan,-inf"}
        for value, wanted in texts.items():
            self.assertEqual(self.text("logger.status", {**status, "value": value}),
                             f'logger.status ["x", "essential", "psrxyz_pos", "{wanted}"]')

    def test_shows_fractions_as_such_however_they_are_written(self) -> None:
        self.assertEqual(self.text("position.base", {"name": "x", "x": 1, "y": None, "z": -0.0}),
                         'position.base ["x", 1.0, null, -0.0]')
        self.assertEqual(self.text("nmea.geoid", {"name": "x", "separation": 1e23}),
                         'nmea.geoid ["x", 1e+23]')

    def test_shows_the_sky_in_the_order_of_its_fields(self) -> None:
        satellite = {"cn0": 44, "word2": 0, "prn": 3, "word1": 0}
        self.assertEqual(self.text("position.sky", {"name": "x", "satellites": [satellite]}),
                         'position.sky ["x", [{"prn": 3, "word1": 0, "word2": 0, "cn0": 44.0}]]')
        with self.assertRaises(ValueError):
            self.text("position.sky", {"name": "x", "satellites": [{"prn": 3}]})

    def test_leaves_out_when_a_position_was_published(self) -> None:
        position = dict.fromkeys(messages.FIELDS["position.ecef"], 1)
        text = self.text("position.ecef", {**position, "week": 1800, "hostTime": 123.5})
        self.assertIn('1800, 1.0, "<host time>", 1, 1, 1.0, 1', text)
        self.assertNotIn("123.5", text)
