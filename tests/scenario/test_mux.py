"""The port multiplexer between devices and clients: every byte, in order, to and from everybody."""

import fcntl
import os
import socket
import threading
import time

from harness.mux import PortClient
from harness.muxed import Muxed, pattern, socket_path
from harness.scenario import best_of_three
from harness.servers import Connection, Server, listen_on_tcp
from harness.waiting import wait_until

REOPENING = 2.0  # seconds within which a device that is back is open again
MEBIBYTE = 1024 * 1024


def saying(line, data: bytes) -> threading.Thread:
    """The device says it, however long that takes."""
    thread = threading.Thread(target=line.say, args=(data,), daemon=True)
    thread.start()
    return thread


class FromTheDevice(Muxed):
    def test_every_client_gets_every_byte(self) -> None:
        line = self.line()
        mux = self.serve(line)
        clients = [self.client(mux) for _ in range(4)]
        data = pattern(300_000)
        saying(line, data)
        for client in clients:
            self.assertTrue(client.read(len(data)) == data)

    def test_a_client_gets_what_is_sent_from_its_coming_on(self) -> None:
        line = self.line()
        mux = self.serve(line)
        first = self.client(mux)
        line.say(b"early ")
        self.assertEqual(first.read(6), b"early ")
        second = self.client(mux)
        line.say(b"late")
        self.assertEqual(first.read(4), b"late")
        self.assertEqual(second.read(4), b"late")

    def test_nothing_is_kept_for_a_client_to_come(self) -> None:
        line = self.line()
        mux = self.serve(line)
        rpc = self.rpc(mux)
        line.say(b"old")
        wait_until("the bytes to be read", lambda: rpc.call("GetPortDump")[0][6] == 3)
        client = self.client(mux)
        line.say(b"new")
        self.assertEqual(client.read(3), b"new")

    def test_ports_are_apart(self) -> None:
        lines = self.line("a"), self.line("b")
        mux = self.serve(*lines)
        clients = [self.client(mux, port) for port in (50, 51)]
        for line, name in zip(lines, (b"a", b"b")):
            line.say(name * 5000)
        for client, name in zip(clients, (b"a", b"b")):
            self.assertEqual(client.read(5000), name * 5000)
            self.assertEqual(client.read_what_is_there(), b"")


class ToTheDevice(Muxed):
    def test_every_byte_arrives_in_order(self) -> None:
        line = self.line()
        receiver = self.far_end(line)
        client = self.client(self.serve(line))
        data = pattern(300_000)
        client.write(data)
        receiver.wait_for_bytes(len(data))
        self.assertTrue(receiver.heard() == data)

    def test_both_ways_at_once(self) -> None:
        line = self.line()
        receiver = self.far_end(line)
        mux = self.serve(line)
        client = self.client(mux)
        down, up = pattern(300_000), pattern(300_000, seed=2)
        saying(line, down)
        client.keep_writing(up)
        self.assertTrue(client.read(len(down)) == down)
        receiver.wait_for_bytes(len(up))
        self.assertTrue(receiver.heard() == up)

    def test_a_write_is_not_torn_by_those_of_others(self) -> None:
        line = self.line()
        receiver = self.far_end(line)
        mux = self.serve(line)
        pieces, size = 150, 2000
        writers = []
        for name in (b"a", b"b", b"c"):
            client = self.client(mux)
            piece = name * (size - 1) + b"\n"
            writers.append(threading.Thread(
                target=lambda to=client, what=piece: [to.write(what) for _ in range(pieces)]))
        for writer in writers:
            writer.start()
        receiver.wait_for_bytes(len(writers) * pieces * size, 15.0)
        written = receiver.heard().splitlines()
        self.assertEqual({bytes(set(piece)) for piece in written}, {b"a", b"b", b"c"})
        self.assertEqual({len(piece) for piece in written}, {size - 1})
        for name in b"abc":
            self.assertEqual(sum(piece[0] == name for piece in written), pieces)

    def test_one_that_writes_and_leaves_at_once_loses_nothing(self) -> None:
        line = self.line()
        receiver = self.far_end(line)
        self.serve(line)
        for number in range(20):
            client = PortClient(socket_path(50))
            client.write(b"command %2d\r\n" % number)
            client.close()
        receiver.wait_for_bytes(20 * 12)
        self.assertEqual(sorted(receiver.commands()),
                         sorted("command %2d\r\n" % number for number in range(20)))

    def test_a_slow_device_gets_all_and_its_clients_wait(self) -> None:
        line = self.line()
        receiver = self.far_end(line)
        receiver.read_slowly(400_000)
        mux = self.serve(line)
        client = self.client(mux)
        data = pattern(1_000_000)
        client.stream.settimeout(15.0)
        client.write(data)
        receiver.wait_for_bytes(len(data), 15.0)
        self.assertTrue(receiver.heard() == data)
        self.assertEqual(mux.lines("dropped"), [])

    def test_one_that_floods_a_slow_device_does_not_shut_out_another(self) -> None:
        line = self.line()
        receiver = self.far_end(line)
        receiver.read_slowly(400_000)
        mux = self.serve(line)
        flood, other = self.client(mux), self.client(mux)
        flood.keep_writing(b"x" * 3_000_000)
        receiver.wait_for_bytes(100_000)
        other.write(b"urgent")
        wait_until("the other's word", lambda: b"urgent" in receiver.heard(), 6.0)
        self.assertLess(len(receiver.heard()), 2_500_000)

    def test_a_device_that_takes_nothing_holds_up_neither_its_clients_nor_other_ports(self) -> None:
        stuck, other = self.line("stuck"), self.line("other")
        mux = self.serve(stuck, other)
        reader, bystander = self.client(mux, 50), self.client(mux, 51)
        writer = self.client(mux, 50)
        writer.keep_writing(b"x" * 2_000_000)
        time.sleep(0.2)  # so that all buffers are full
        stuck.say(b"still talking")
        other.say(b"and so am I")
        self.assertEqual(reader.read(13), b"still talking")
        self.assertEqual(bystander.read(11), b"and so am I")


class SlowClients(Muxed):
    def test_one_that_never_reads_is_disconnected_told_and_counted(self) -> None:
        line = self.line()
        mux = self.serve(line)
        slow, quick = self.client(mux), self.client(mux)
        data = pattern(3 * MEBIBYTE)
        saying(line, data)
        self.assertTrue(quick.read(len(data), 20.0) == data)
        told = mux.wait_for_line("reads too slowly")
        self.assertIn(f"port 50 (gps_main_boot): client {os.getpid()} (", told)
        self.assertIn("slow clients so far: 1", told)
        self.assertTrue(slow.has_ended())
        self.assertEqual(self.clients(self.rpc(mux), 50), 1)

    def test_one_that_reads_late_but_soon_enough_gets_every_byte(self) -> None:
        line = self.line()
        mux = self.serve(line)
        late, quick = self.client(mux), self.client(mux)
        data = pattern(MEBIBYTE)
        saying(line, data)
        self.assertTrue(quick.read(len(data)) == data)
        self.assertTrue(late.read(len(data)) == data)
        self.assertEqual(mux.lines("slowly"), [])

    def test_many_that_never_read_cost_a_mebibyte_each(self) -> None:
        line = self.line()
        mux = self.serve(line)
        slow = [self.client(mux) for _ in range(8)]
        quick = self.client(mux)
        before = mux.memory_kib()
        size = 2 * MEBIBYTE
        saying(line, pattern(size))
        self.assertEqual(len(quick.read(size, 20.0)), size)
        mux.wait_for_lines("reads too slowly", len(slow))
        self.assertLess(mux.memory_kib() - before, 3 * 1024 * len(slow))


class HotPlug(Muxed):
    def test_a_device_may_come_later(self) -> None:
        line = self.absent_line()
        mux = self.mux(f"--port=50={line.device}")
        client = self.client(mux)
        mux.wait_for_line(r"^port 50 \(gps_main_boot\): no device: .*No such file or directory")
        time.sleep(1.2)  # two more attempts
        self.assertEqual(len(mux.lines("no device")), 1, mux.stderr)
        line.plug_in()
        line.wait_until_open(REOPENING)
        line.say(b"here")
        self.assertEqual(client.read(4), b"here")

    def test_clients_stay_while_a_device_goes_and_comes(self) -> None:
        line = self.line()
        mux = self.serve(line)
        client = self.client(mux)
        for number in range(3):
            line.unplug()
            mux.wait_for_line("device lost|lost.*repeated")
            line.plug_in()
            line.wait_until_open(REOPENING)
            line.say(b"%d" % number)
            self.assertEqual(client.read(1), b"%d" % number)
        self.assertEqual(mux.lines("no device"), [], "a loss is told once")

    def test_what_is_written_meanwhile_arrives_when_it_is_back(self) -> None:
        line = self.line()
        mux = self.serve(line)
        client = self.client(mux)
        line.unplug()
        mux.wait_for_line("device lost")
        client.write(b"log version\r\n")
        client.write(b"log rxstatus\r\n")
        time.sleep(0.3)
        receiver = self.far_end(line)
        line.plug_in()
        receiver.wait_for_bytes(27)
        self.assertEqual(receiver.heard(), b"log version\r\nlog rxstatus\r\n")

    def test_too_much_for_a_missing_device_is_dropped_told_and_counted(self) -> None:
        line = self.absent_line()
        mux = self.mux(f"--port=50={line.device}")
        client = self.client(mux)
        client.write(b"x" * MEBIBYTE)
        mux.wait_for_line("bytes of clients dropped")
        client.write(b"y" * 100)
        time.sleep(0.3)
        receiver = self.far_end(line)
        line.plug_in()
        rpc = self.rpc(mux)
        wait_until("all that was kept",
                   lambda: len(receiver.heard()) == rpc.call("GetPortDump")[0][7] > 0)
        mux.terminate()
        arrived = len(receiver.heard())
        self.assertLessEqual(arrived, 256 * 1024)
        self.assertEqual(mux.lines("bytes in"), [
            f"port 50 (gps_main_boot): 0 bytes in, {arrived} out, "
            f"{MEBIBYTE + 100 - arrived} dropped, 0 slow clients"])

    def test_a_device_that_another_program_owns_is_left_to_it(self) -> None:
        line = self.line()
        owner = os.open(line.device, os.O_RDWR | os.O_NOCTTY)
        fcntl.flock(owner, fcntl.LOCK_EX)
        mux = self.mux(f"--port=50={line.device}")
        mux.wait_for_line("in use by another program")
        self.assertFalse(line.is_raw())
        os.close(owner)
        line.wait_until_open(REOPENING)

    def test_no_two_ports_share_a_device_by_two_names(self) -> None:
        line = self.line()
        alias = self.folder / "alias"
        alias.symlink_to(line.device)
        mux = self.mux(f"--port=50={line.device}", f"--port=52={alias}")
        mux.wait_for_line(r"^port 52 .*in use by another program")


class Peers(Muxed):
    def peer(self, port: int) -> Server:
        self.heard = b""

        def keep(connection: Connection, chunk: bytes) -> None:
            self.heard += chunk

        server = Server(lambda: listen_on_tcp(port), keep)
        self.addCleanup(server.kill)
        return server

    def test_a_tcp_peer_is_a_device_that_may_come_late_and_go(self) -> None:
        mux = self.mux("--port=50=tcp:localhost:4001")
        client = self.client(mux)
        mux.wait_for_line(r"no device: tcp:localhost:4001: Connection refused")
        peer = self.peer(4001)
        data = pattern(200_000)
        for _ in range(2):
            peer.start()
            wait_until("a connection", peer.open_connections, REOPENING)
            peer.open_connections()[0].send(data)
            self.assertTrue(client.read(len(data)) == data)
            self.heard = b""
            client.write(data)
            wait_until("all bytes", lambda: len(self.heard) >= len(data))
            self.assertTrue(self.heard == data)
            peer.kill()
            mux.wait_for_line("device lost: tcp:localhost:4001")

    def test_a_peer_that_does_not_answer_delays_nothing_and_is_told(self) -> None:
        line = self.line()
        listener = listen_on_tcp(4002)
        self.addCleanup(listener.close)
        listener.listen(0)
        for _ in range(4):  # the queue of those who wait to be let in is full then
            waiting = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
            self.addCleanup(waiting.close)
            waiting.setblocking(False)
            waiting.connect_ex(("127.0.0.1", 4002))
        mux = self.serve(line, options=("--port=60=tcp:127.0.0.1:4002",))
        client = self.client(mux)
        began = time.monotonic()
        line.say(b"hello")
        self.assertEqual(client.read(5), b"hello")
        self.assertLess(time.monotonic() - began, 1.0)
        mux.wait_for_line("tcp:127.0.0.1:4002: does not answer", 8.0)


class AtRest(Muxed):
    @best_of_three
    def test_it_costs_next_to_nothing(self) -> None:
        line = self.line()
        absent = self.absent_line("absent")
        mux = self.serve(line, options=(f"--port=60={absent.device}",))
        for _ in range(3):
            self.client(mux)
        before = mux.processor_seconds()
        time.sleep(2.0)
        self.assertLessEqual(mux.processor_seconds() - before, 0.06)

    def test_clients_that_come_and_go_leave_nothing_behind(self) -> None:
        line = self.line()
        mux = self.serve(line)
        rpc = self.rpc(mux)
        self.assertEqual(self.clients(rpc, 50), 0)
        before = mux.descriptors()
        for _ in range(100):
            PortClient(socket_path(50)).close()
        wait_until("all to be gone",
                   lambda: self.clients(rpc, 50) == 0 and mux.descriptors() == before)

    def test_65th_client_is_turned_away(self) -> None:
        line = self.line()
        mux = self.serve(line)
        rpc = self.rpc(mux)
        clients = [PortClient(socket_path(50)) for _ in range(64)]
        for client in clients:
            self.addCleanup(client.close)
        wait_until("64 clients", lambda: self.clients(rpc, 50) == 64)
        last = PortClient(socket_path(50))
        self.addCleanup(last.close)
        wait_until("its end", last.has_ended)
        mux.wait_for_line("turned away: there are 64 already")
        line.say(b"x")
        self.assertEqual({client.read(1) for client in clients}, {b"x"})
