"""The multiplexer's sockets, its command line, and several of it on one machine."""

import contextlib
import os
import signal
import socket
import stat
import time
from pathlib import Path

from harness import places
from harness.mux import PortClient, PortRPC
from harness.muxed import Muxed, socket_path
from harness.servers import listen_on_path, listen_on_tcp
from harness.waiting import wait_until

RETRY_SECONDS = 10.0


class Names(Muxed):
    def mode(self, port: int = 50) -> int:
        return stat.S_IMODE(os.stat(socket_path(port)).st_mode)

    def test_owner_and_group_may_use_them_unless_told_otherwise(self) -> None:
        before = os.umask(0)
        self.addCleanup(os.umask, before)
        self.serve(self.line())
        self.assertEqual(self.mode(), 0o660)

    def test_mode_and_group_are_as_told(self) -> None:
        probe = self.folder / "probe"
        probe.touch()
        group = os.getgid()
        with contextlib.suppress(OSError):
            os.chown(probe, -1, 4711)
            group = 4711
        options = ("--mode=606",) + ((f"--group={group}",) if group else ())
        self.serve(self.line(), options=options)
        self.assertEqual(self.mode(), 0o606)
        self.assertEqual(os.stat(socket_path(50)).st_gid, group)

    def test_the_folder_is_as_told(self) -> None:
        folder = self.folder / "sockets"
        folder.mkdir()
        mux = self.mux(f"--port=50={self.line().device}", f"--socket-dir={folder}")
        mux.wait_for_line("served as")
        self.assertEqual([each.name for each in folder.iterdir()], ["tty_socket_50"])
        self.assertFalse(Path(socket_path(50)).exists())

    def test_they_are_removed_at_the_end_which_is_clean(self) -> None:
        for number in (signal.SIGTERM, signal.SIGINT, signal.SIGHUP):
            with self.subTest(signal=number):
                mux = self.serve(self.line())
                mux.wait_for_line("remote procedures")
                self.assertTrue(Path(socket_path(50)).is_socket())
                self.assertEqual(mux.terminate(number), 0, mux.stderr)
                self.assertFalse(Path(socket_path(50)).exists())

    def test_the_end_does_not_wait_for_a_client_or_a_device(self) -> None:
        line = self.line()
        mux = self.serve(line)
        client = self.client(mux)
        client.keep_writing(b"x" * 1_000_000)
        time.sleep(0.2)
        began = time.monotonic()
        self.assertEqual(mux.terminate(), 0)
        self.assertLess(time.monotonic() - began, 1.0)

    def test_those_of_one_that_was_killed_are_replaced(self) -> None:
        line = self.line()
        first = self.serve(line)
        client = self.client(first)
        first.kill()
        self.assertTrue(Path(socket_path(50)).is_socket())
        self.assertEqual(client.read(1), b"")
        second = self.serve(line)
        client = self.client(second)
        line.say(b"again")
        self.assertEqual(client.read(5), b"again")


class Taken(Muxed):
    def test_a_live_one_is_never_stolen(self) -> None:
        listener = listen_on_path(socket_path(50))
        self.addCleanup(os.unlink, socket_path(50))
        self.addCleanup(listener.close)
        mux = self.mux(f"--port=50={self.line().device}")
        self.assertEqual(mux.status(), 1)
        self.assertIn("port 50 (gps_main_boot): not served: /tmp/tty_socket_50: "
                      "another program serves it", mux.stderr)
        self.assertIn("not one port can be served", mux.stderr)
        with socket.socket(socket.AF_UNIX, socket.SOCK_STREAM) as stream:
            stream.connect(socket_path(50))

    def test_what_is_no_socket_is_left_alone(self) -> None:
        path = Path(socket_path(50))
        path.write_text("precious")
        self.addCleanup(path.unlink)
        mux = self.mux(f"--port=50={self.line().device}")
        self.assertEqual(mux.status(), 1)
        self.assertEqual(path.read_text(), "precious")

    def test_the_other_ports_are_served_and_it_is_taken_over_when_it_is_free(self) -> None:
        lines = self.line("a"), self.line("b")
        first = self.serve(lines[0])
        first.wait_for_line("remote procedures")
        second = self.mux(f"--port=50={self.line('c').device}", f"--port=51={lines[1].device}",
                          "--rpc-port=5310")
        second.wait_for_line(r"^port 50 .*another program serves it; trying again every 10 s")
        second.wait_for_line(r"^port 51 .*served as")
        self.assertEqual(first.terminate(), 0)
        second.wait_for_line(r"^port 50 .*served as", RETRY_SECONDS + 3.0)
        self.assertEqual(second.terminate(), 0)

    def test_of_several_that_start_at_once_one_serves(self) -> None:
        for attempt in range(3):
            with self.subTest(attempt=attempt):
                with contextlib.suppress(FileNotFoundError):
                    os.unlink(socket_path(50))
                stale = listen_on_path(socket_path(50))
                stale.close()
                line = self.line()
                muxes = [self.mux(f"--port=50={line.device}") for _ in range(6)]
                wait_until("all but one to end",
                           lambda all_=muxes: sum(not mux.is_running() for mux in all_) == 5, 10.0)
                (serving,) = [mux for mux in muxes if mux.is_running()]
                line.wait_until_open()
                client = self.client(serving)
                line.say(b"x")
                self.assertEqual(client.read(1), b"x")
                self.assertEqual({mux.status() for mux in muxes if mux is not serving}, {1})
                self.assertEqual(serving.terminate(), 0)

    def test_two_of_it_serve_side_by_side(self) -> None:
        lines = self.line("a"), self.line("b")
        first = self.serve(lines[0])
        second = self.serve(lines[1], first=52, options=("--rpc-port=5310",))
        second.wait_for_line("remote procedures: served on 127.0.0.1:5310")
        for port, line, rpc_port in ((50, lines[0], 5309), (52, lines[1], 5310)):
            client = PortClient(socket_path(port))
            self.addCleanup(client.close)
            rpc = PortRPC(rpc_port)
            self.addCleanup(rpc.close)
            wait_until("the client", lambda of=rpc, at=port: self.clients(of, at) == 1)
            line.say(b"%d" % port)
            self.assertEqual(client.read(2), b"%d" % port)
        self.assertEqual((first.terminate(), second.terminate()), (0, 0))

    def test_without_its_rpc_port_the_ports_are_served(self) -> None:
        listener = listen_on_tcp(5309)
        self.addCleanup(listener.close)
        line = self.line()
        mux = self.serve(line)
        mux.wait_for_line("remote procedures: cannot listen on 127.0.0.1:5309: Address already")
        client = PortClient(socket_path(50))
        self.addCleanup(client.close)
        line.say(b"x" * 100)
        self.assertTrue(mux.is_running())


class CommandLine(Muxed):
    def refused(self, *arguments: str) -> str:
        """What is told with status 2."""
        mux = self.mux(*arguments)
        self.assertEqual(mux.status(), 2, mux.stderr)
        self.assertEqual(mux.stdout, "")
        self.assertIn("Try: corvane-mux --help", mux.stderr)
        return mux.stderr.splitlines()[0]

    def test_what_is_wrong_is_told_with_status_2(self) -> None:
        conf = self.configuration("[port 50]\ndevice=/dev/a\nspeed=1\n")
        for arguments, reason in (
                ((), "no port is named"),
                (("--port",), "--port"),
                (("--port", "50"), "must be NUMBER=DEVICE"),
                (("--port", "50=gps"), "neither an absolute path nor tcp:HOST:PORT"),
                (("--port", "50=/dev/a@x"), "'x' is no baud rate"),
                (("--port=50=/dev/a", "--port=50=/dev/b"), "given twice"),
                (("--port=50=/dev/a", "--port=52=/dev/a"), "the device of port 50 already"),
                (("--port=50=/dev/a", "--mode=8"), "is no mode"),
                (("--port=50=/dev/a", "--group=nobody at all"), "there is no group"),
                (("--port=50=/dev/a", "--rpc-listen=here"), "is no IPv4 address"),
                (("--port=50=/dev/a", "--rpc-port=0"), "is no TCP port"),
                (("--config=/nowhere/mux.conf",), "/nowhere/mux.conf: No such file or directory"),
                (("-c", conf), "[port 50]: there is no key 'speed'"),
                (("--port=50=/dev/a", "--colour"), "--colour"),
                (("--port=50=/dev/a", "stray"), "stray")):
            with self.subTest(arguments=arguments):
                told = self.refused(*arguments)
                self.assertTrue(told.startswith("corvane-mux: "), told)
                self.assertIn(reason, told)

    def test_help_and_version_are_printed_with_status_0(self) -> None:
        for argument, text in (("--help", "corvane-mux --port 50=/dev/ttyUSB0@460800"),
                               ("-h", "Exit status:"), ("--version", "corvane-mux ")):
            mux = self.mux(argument)
            self.assertEqual(mux.status(), 0)
            self.assertIn(text, mux.stdout)
            self.assertEqual(mux.stderr, "")

    def test_a_file_names_ports_and_the_command_line_wins(self) -> None:
        lines = {name: self.line(name) for name in "abc"}
        conf = self.configuration(
            f"[mux]\nrpc_port = 5311\nmode = 600\n"
            f"[port 50]\ndevice = {lines['a'].device}\nbaud = 9600\nname = mine\n"
            f"[port 70]\ndevice = {lines['b'].device}\n")
        mux = self.mux("-c", conf, f"--port=50={lines['c'].device}", "--mode=640")
        mux.wait_for_line("remote procedures: served on 127.0.0.1:5311")
        for name in "bc":
            lines[name].wait_until_open()
        rpc = PortRPC(5311)
        self.addCleanup(rpc.close)
        self.assertEqual([each[:5] for each in rpc.call("GetPortDump")],
                         [[50, "mine", str(lines["c"].device), 9600, 1],
                          [70, "unknown", str(lines["b"].device), 460800, 1]])
        self.assertEqual(lines["c"].speed(), 9600)
        self.assertEqual(lines["b"].speed(), 460800)
        self.assertEqual(stat.S_IMODE(os.stat(socket_path(70)).st_mode), 0o640)

    def test_any_speed_can_be_given(self) -> None:
        line = self.line()
        self.mux(f"--port=50={line.device}@250000")
        line.wait_until_open()
        self.assertEqual(line.speed(), 250000)

    def test_the_examples_are_understood(self) -> None:
        simulated = ["/tmp/corvane-sim/com1", "/tmp/corvane-sim/usb2"]
        for name, devices in (("simulator.conf", simulated),
                              ("mux.conf", None)):
            mux = self.mux("-c", str(places.CHECKOUT / "examples" / name))
            rpc = self.rpc(mux)
            dump = rpc.call("GetPortDump")
            self.assertEqual([each[0] for each in dump], [50, 52])
            if devices is not None:
                self.assertEqual([each[2] for each in dump], devices)
            rpc.close()
            self.assertEqual(mux.terminate(), 0)

    def test_clients_are_told_of_when_asked_for(self) -> None:
        line = self.line()
        mux = self.serve(line, options=("-v",))
        client = self.client(mux)
        mux.wait_for_line(rf"client {os.getpid()} \(.*\) has come")
        client.close()
        mux.wait_for_line(rf"client {os.getpid()} \(.*\) has gone")
