"""The multiplexer's remote procedures: how the ports stand, their devices, their speeds."""

import time

from harness.mux import PortClient
from harness.muxed import Muxed, pattern, socket_path
from harness.scenario import best_of_three
from harness.waiting import wait_until

DRAIN_SECONDS = 1.0
KERNEL_HOLDS = 80_000  # bytes, at most, that a pseudo-terminal takes before its far end reads


class Looking(Muxed):
    def test_the_dump_has_a_list_for_each_port(self) -> None:
        line, absent = self.line(), self.absent_line("absent")
        receiver = self.far_end(line)
        mux = self.mux(f"--port=52={absent.device}@9600", f"--port=50={line.device}",
                       f"--port=60={self.folder}/none@38400")
        line.wait_until_open()
        client = self.client(mux)
        client.write(b"four")
        receiver.wait_for_bytes(4)
        line.say(b"thirteen byte")
        self.assertEqual(client.read(13), b"thirteen byte")
        self.assertEqual(self.rpc(mux).call("GetPortDump"), [
            [50, "gps_main_boot", str(line.device), 460800, 1, 1, 13, 4],
            [52, "gps_main_diagnostic", str(absent.device), 9600, 0, 0, 0, 0],
            [60, "unknown", f"{self.folder}/none", 38400, 0, 0, 0, 0]])

    def test_mapping_and_speed_of_a_port(self) -> None:
        line = self.line()
        rpc = self.rpc(self.serve(line))
        self.assertEqual(rpc.call("GetPortMapping", 50), str(line.device))
        self.assertEqual(rpc.call("GetPortMapping", 51), "")
        self.assertEqual(rpc.call("GetPortConfig", 50), 460800)
        self.assertEqual(rpc.call("GetPortConfig", 51), 0)

    def test_wrong_arguments_are_errors(self) -> None:
        rpc = self.rpc(self.serve(self.line()))
        for call in (("GetPortMapping",), ("GetPortMapping", "50"), ("SetPortConfig", 50),
                     ("SetPortConfig", 50, "fast"), ("SetPortMapping", 50, 51),
                     ("GetPortConfig", 5.5)):
            self.assertEqual(rpc.answer(*call)["error"]["code"], -32602, call)
        self.assertEqual(rpc.answer("OpenPort", 50)["error"]["code"], -32601)
        self.assertEqual(rpc.call("GetPortConfig", 50.0), 460800)


class Speed(Muxed):
    def test_it_is_set_on_the_line(self) -> None:
        line = self.line()
        rpc = self.rpc(self.serve(line))
        for speed in (9600, 460800, 12345):
            self.assertEqual(rpc.call("SetPortConfig", 50, speed), 1)
            self.assertEqual(line.speed(), speed)
            self.assertEqual(rpc.call("GetPortConfig", 50), speed)

    def test_what_cannot_be_is_refused(self) -> None:
        line = self.line()
        rpc = self.rpc(self.serve(line))
        for port, speed in ((51, 9600), (50, 0), (50, -9600)):
            self.assertEqual(rpc.call("SetPortConfig", port, speed), 0)
        self.assertEqual(line.speed(), 460800)
        self.assertEqual(rpc.call("GetPortConfig", 50), 460800)

    def test_it_holds_when_the_device_comes_back(self) -> None:
        line = self.line()
        mux = self.serve(line)
        rpc = self.rpc(mux)
        self.assertEqual(rpc.call("SetPortConfig", 50, 19200), 1)
        line.unplug()
        mux.wait_for_line("device lost")
        line.plug_in()
        line.wait_until_open()
        self.assertEqual(line.speed(), 19200)
        line.unplug()
        wait_until("the loss", lambda: rpc.call("GetPortDump")[0][4] == 0)
        self.assertEqual(rpc.call("SetPortConfig", 50, 38400), 1)
        line.plug_in()
        line.wait_until_open()
        self.assertEqual(line.speed(), 38400)

    @best_of_three
    def test_what_was_written_before_leaves_before(self) -> None:
        line = self.line()
        receiver = self.far_end(line)
        receiver.read_slowly(1_000_000)
        mux = self.serve(line)
        rpc = self.rpc(mux)
        client = self.client(mux)
        data = pattern(150_000)
        receiver.hold()
        client.write(data)
        receiver.go_on()
        self.assertEqual(rpc.call("SetPortConfig", 50, 9600), 1)
        client.write(b"after")
        wait_until("all bytes", lambda: len(receiver.heard()) >= len(data) + 5)
        self.assertTrue(receiver.heard() == data + b"after")
        before = sum(len(each.data) for each in receiver.arrivals() if each.speed == 460800)
        self.assertGreater(before, len(data) - KERNEL_HOLDS)
        self.assertEqual(receiver.arrivals()[-1].speed, 9600)

    def test_what_a_client_wrote_before_it_was_let_in_leaves_before(self) -> None:
        line = self.line()
        receiver = self.far_end(line)
        mux = self.serve(line)
        rpc = self.rpc(mux)
        for number in range(20):
            client = PortClient(socket_path(50))
            client.write(b"a%02d" % number)
            self.assertEqual(rpc.call("SetPortConfig", 50, 9600 + number), 1)
            client.write(b"b%02d" % number)
            client.close()
            receiver.wait_for_bytes(6 * (number + 1))
        wanted = b"".join(b"a%02db%02d" % (number, number) for number in range(20))
        self.assertEqual(receiver.heard(), wanted)

    def test_a_line_that_takes_nothing_is_waited_for_one_second_and_the_loss_is_told(self) -> None:
        line, other = self.line("stuck"), self.line("other")
        mux = self.serve(line, other)
        rpc = self.rpc(mux)
        client = self.client(mux)
        client.write(b"x" * 150_000)
        began = time.monotonic()
        self.assertEqual(rpc.call("SetPortConfig", 50, 9600), 1)
        self.assertLess(time.monotonic() - began, DRAIN_SECONDS + 0.5)
        self.assertEqual(line.speed(), 9600)
        mux.wait_for_line("bytes of clients dropped.*what was written does not leave")

    def test_it_never_looks_for_the_services_meanwhile(self) -> None:
        collector = self.collector()
        line = self.line()
        receiver = self.far_end(line)
        receiver.read_slowly(300_000)
        mux = self.serve(line)
        client = self.client(mux)
        client.write(b"x" * 150_000)
        self.assertEqual(self.rpc(mux).call("SetPortConfig", 50, 9600), 1)
        receiver.wait_for_bytes(100_000)
        self.assertEqual(collector.connection_count(), 0)

    def test_a_tcp_peer_keeps_one_that_it_does_not_need(self) -> None:
        mux = self.mux("--port=60=tcp:127.0.0.1:4001@9600")
        rpc = self.rpc(mux)
        self.assertEqual(rpc.call("GetPortConfig", 60), 9600)
        self.assertEqual(rpc.call("SetPortConfig", 60, 115200), 1)
        self.assertEqual(rpc.call("GetPortConfig", 60), 115200)


class Mapping(Muxed):
    def test_a_port_goes_over_to_another_device_and_its_clients_stay(self) -> None:
        old, new = self.line("old"), self.line("new")
        mux = self.serve(old)
        rpc = self.rpc(mux)
        client = self.client(mux)
        self.assertEqual(rpc.call("SetPortMapping", 50, str(new.device)), 1)
        new.wait_until_open()
        wait_until("the old one to be let go", lambda: not old.is_open())
        new.say(b"new")
        self.assertEqual(client.read(3), b"new")
        self.assertEqual(rpc.call("GetPortMapping", 50), str(new.device))
        self.assertEqual(new.speed(), 460800)

    def test_a_port_can_be_left_without_a_device_and_given_one_again(self) -> None:
        line = self.line()
        mux = self.serve(line)
        rpc = self.rpc(mux)
        self.assertEqual(rpc.call("SetPortMapping", 50, ""), 1)
        self.assertEqual(rpc.call("GetPortMapping", 50), "")
        wait_until("the device to be let go", lambda: not line.is_open())
        self.assertEqual(rpc.call("GetPortDump")[0][2:5], ["", 460800, 0])
        self.assertEqual(rpc.call("SetPortMapping", 50, str(line.device)), 1)
        line.wait_until_open()

    def test_the_device_that_it_has_already_is_left_as_it_is(self) -> None:
        line = self.line()
        mux = self.serve(line)
        rpc = self.rpc(mux)
        self.assertEqual(rpc.call("SetPortMapping", 50, str(line.device)), 1)
        self.assertEqual(len(mux.lines("is open")), 1)
        self.assertEqual(mux.lines("changed|lost"), [])

    def test_what_cannot_be_is_refused(self) -> None:
        lines = self.line("a"), self.line("b")
        mux = self.serve(*lines)
        rpc = self.rpc(mux)
        for port, device in ((53, "/dev/ttyS0"), (50, "ttyS0"), (50, "tcp:nobody"),
                             (50, str(lines[1].device)), (50, "/dev/tty\n")):
            self.assertEqual(rpc.call("SetPortMapping", port, device), 0, device)
        self.assertEqual(rpc.call("GetPortMapping", 50), str(lines[0].device))
        self.assertTrue(lines[0].is_open())

    def test_a_device_that_is_not_there_yet_is_accepted(self) -> None:
        line, later = self.line(), self.absent_line("later")
        mux = self.serve(line)
        self.assertEqual(self.rpc(mux).call("SetPortMapping", 50, str(later.device)), 1)
        mux.wait_for_line("no device: .*later: No such file or directory")
        later.plug_in()
        later.wait_until_open()
