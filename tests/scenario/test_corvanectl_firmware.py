"""corvanectl firmware: an upgrade of a receiver that plays its part, followed to its end."""

import fcntl
import json
import os
import pty
import signal
import struct
import subprocess
import termios
from pathlib import Path

from harness.corvanectl import (DONE, REFUSED, UNREACHABLE, USAGE, FakeDaemon, Operated, about,
                                firmware, program, result)
from harness.loading_receiver import COMMIT, RESET, WELL, LoadingReceiver
from harness.waiting import PATIENCE, wait_until

FRESET = "FRESET"
POSITION = "NovatelPositionManager"


class Upgrade(Operated):
    def loading(self, *at_the_end: str) -> LoadingReceiver:
        """A receiver that ends a load in this way; with none, when it is told to."""
        receiver = LoadingReceiver(self.serial_line(), at_the_end)
        self.addCleanup(receiver.stop)
        _, self.daemon = self.operated(receiver=receiver)
        return receiver

    def finish(self, receiver: LoadingReceiver) -> None:
        receiver.wait_for_line(COMMIT)
        receiver.report(*WELL)

    def begin(self, *arguments: str, out=None) -> subprocess.Popen:
        """An upgrade in the background; its output in files unless `out` takes it."""
        with open(self.folder / "out", "wb") as kept, open(self.folder / "err", "wb") as err:
            process = subprocess.Popen([program(), *arguments], stdin=subprocess.DEVNULL,
                                       stdout=out or kept, stderr=err, cwd=self.folder,
                                       env=self.environment())
        self.addCleanup(process.wait)
        self.addCleanup(process.kill)
        return process

    @property
    def out(self) -> str:
        return (self.folder / "out").read_text()

    @property
    def err(self) -> str:
        return (self.folder / "err").read_text()

    def wait_for_state(self, state: str) -> dict:
        return wait_until(state, lambda: (document := self.document("firmware", "status"))
                          ["state"] == state and document)


class ToItsEnd(Upgrade):
    def test_the_file_reaches_the_receiver_and_the_outcome_is_told(self) -> None:
        collector, receiver = self.collector(), self.loading()
        file = firmware(self.folder, 200)
        process = self.begin("firmware", "upgrade", file.name)
        wait_until("all of it to be sent", lambda: "100 %\n" in self.out, state=lambda: self.out)
        self.assertIsNone(process.poll())
        self.finish(receiver)
        self.assertEqual(process.wait(timeout=10), DONE, self.err)
        self.assertEqual(self.err, "")
        *progress, last = self.out.splitlines()
        percents = [int(line.removesuffix(" %")) for line in progress]
        self.assertEqual(percents, sorted(set(percents)))
        self.assertEqual(last, f"the upgrade is complete; the receiver starts again with {file}")
        self.assertEqual([each.text for each in receiver.data()], file.read_text().split())
        receiver.wait_for_line(FRESET)
        self.assertEqual(receiver.texts().count(COMMIT), 1)
        self.assertEqual(collector.status(POSITION, "firmware_file_used"), str(file))

    def test_programs_get_one_document_and_people_the_progress(self) -> None:
        self.loading(*WELL)
        file = firmware(self.folder, 100)
        outcome = self.ctl("--json", "firmware", "upgrade", str(file))
        self.assertEqual(outcome.status, DONE, outcome)
        self.assertEqual(outcome.document, {"file": str(file), "state": "completed"})
        self.assertRegex(outcome.err, r"^(\d+ %\n)+$")

    def test_an_image_that_the_receiver_refuses_is_a_failure(self) -> None:
        self.loading("VERIFYING_DATA", "BAD_IMAGE_CRC")
        file = firmware(self.folder, 100)
        outcome = self.ctl("--json", "firmware", "upgrade", str(file))
        self.assertEqual(outcome.status, REFUSED, outcome)
        self.assertIn("the upgrade failed with 100 % of the file sent",
                      outcome.document["error"]["message"])
        self.assertIn("NovatelPositionManager", outcome.err)
        self.assertEqual(self.document("firmware", "status"), {"state": "failed", "percent": 100})
        self.assertIn("failed", self.done("firmware", "status"))

    def test_a_terminal_gets_a_bar(self) -> None:
        receiver = self.loading()
        master, slave = pty.openpty()
        self.addCleanup(os.close, master)
        fcntl.ioctl(slave, termios.TIOCSWINSZ, struct.pack("HHHH", 24, 80, 0, 0))
        process = self.begin("firmware", "upgrade", str(firmware(self.folder, 100)), out=slave)
        os.close(slave)
        shown = b""
        while b"100 %" not in shown:
            shown += os.read(master, 4096)
        self.finish(receiver)
        while b"complete" not in shown:
            shown += os.read(master, 4096)
        self.assertEqual(process.wait(timeout=5), DONE)
        lines = shown.decode().split("\r\n")
        self.assertTrue(lines[0].endswith(f"\r[{'#' * 50}] 100 %"), lines)
        self.assertTrue(lines[1].startswith("the upgrade is complete"), lines)


class Meanwhile(Upgrade):
    def test_status_tells_how_far_it_is(self) -> None:
        receiver = self.loading()
        self.assertEqual(self.document("firmware", "status"), {"state": "none", "percent": 0})
        self.assertIn("no upgrade", self.done("firmware", "status"))
        outcome = self.ctl("firmware", "upgrade", "--no-wait",
                           str(firmware(self.folder, 300)))
        self.assertEqual(outcome.status, DONE, outcome)
        self.assertIn("has begun", outcome.out)
        percent = self.wait_for_state("running")["percent"]
        self.assertGreater(percent, 0)
        self.assertLessEqual(percent, 100)
        wait_until("all of it", lambda: self.document("firmware", "status")["percent"] == 100)
        self.assertIn("checks and stores", self.done("firmware", "status"))
        self.finish(receiver)
        self.assertEqual(self.wait_for_state("completed")["percent"], 100)
        self.assertIn("was completed", self.done("firmware", "status"))

    def test_another_one_needs_restart(self) -> None:
        receiver = self.loading()
        file = str(firmware(self.folder, 100))
        self.assertEqual(self.document("firmware", "upgrade", "--no-wait", file),
                         {"file": file, "state": "running"})
        self.wait_for_state("running")
        before = receiver.texts().count(RESET)
        self.assertIn("--restart", self.fails(REFUSED, "firmware", "upgrade", file))
        self.assertEqual(receiver.texts().count(RESET), before)
        self.done("firmware", "upgrade", "--no-wait", "--restart", file)
        wait_until("the new beginning", lambda: receiver.texts().count(RESET) == before + 3)

    def test_one_that_has_ended_makes_room_for_the_next(self) -> None:
        receiver = self.loading("NO_PLATFORM")
        file = str(firmware(self.folder, 50))
        self.assertEqual(self.ctl("firmware", "upgrade", file).status, REFUSED)
        self.done("firmware", "upgrade", "--no-wait", file)
        wait_until("the new beginning", lambda: receiver.texts().count(RESET) == 6)

    def test_an_interruption_ends_the_program_and_not_the_upgrade(self) -> None:
        for number in (signal.SIGINT, signal.SIGTERM, signal.SIGHUP):
            with about(number):
                receiver = self.loading()
                process = self.begin("firmware", "upgrade", str(firmware(self.folder, 100)))
                wait_until("it to be under way", lambda: "100 %" in self.out)
                process.send_signal(number)
                self.assertEqual(process.wait(timeout=2), -number)
                self.assertIn("the upgrade goes on in the daemon", self.err)
                self.finish(receiver)
                self.wait_for_state("completed")
                receiver.wait_for_line(FRESET)
                self.doCleanups()
                self.setUp()

    def test_a_hangup_that_is_ignored_stays_so(self) -> None:
        receiver = self.loading()
        former = signal.signal(signal.SIGHUP, signal.SIG_IGN)
        try:
            process = self.begin("firmware", "upgrade", str(firmware(self.folder, 100)))
        finally:
            signal.signal(signal.SIGHUP, former)
        wait_until("it to be under way", lambda: "100 %" in self.out)
        process.send_signal(signal.SIGHUP)
        self.finish(receiver)
        self.assertEqual(process.wait(timeout=5), DONE, self.err)

    def test_a_daemon_that_goes_leaves_the_outcome_open(self) -> None:
        receiver = self.loading()
        process = self.begin("--json", "firmware", "upgrade", str(firmware(self.folder, 100)))
        wait_until("it to be under way", lambda: "100 %" in self.err)
        self.daemon.end()
        self.assertEqual(process.wait(timeout=PATIENCE), UNREACHABLE)
        self.assertIn("how the upgrade ends is not known", self.err)
        self.assertEqual(json.loads(self.out)["error"]["status"], UNREACHABLE)


class Files(Upgrade):
    def test_that_are_no_firmware_are_told_before_the_receiver_hears_of_them(self) -> None:
        receiver, daemon = self.operated()
        before = receiver.commands()
        self.file("text", b"hello\n")
        self.file("empty", b"")
        for name, why in (("missing", "no such file"), ("text", "S-records"),
                          ("empty", "S-records"), (".", "not a file")):
            self.assertIn(why, self.fails(USAGE, "firmware", "upgrade", name))
        daemon.wait_for_passes(3)
        self.assertEqual(receiver.commands(), before)

    def test_that_the_daemon_cannot_read_are_a_refusal(self) -> None:
        def answer(request: dict) -> bytes:
            return result(request, [1, 0, 0] if "Status" in request["method"] else [0])

        server = FakeDaemon(answer)
        self.addCleanup(server.kill)
        server.start()
        file = firmware(self.folder, 3)
        self.assertIn(f"the daemon cannot read {file}",
                      self.fails(REFUSED, "firmware", "upgrade", file.name))
        self.assertEqual(server.requests[-1]["params"], [str(file)])

    def test_of_another_machine_are_named_from_the_root_on(self) -> None:
        subprocess.run(["ip", "address", "add", "10.9.8.7/32", "dev", "lo"], check=True)
        self.addCleanup(subprocess.run, ["ip", "address", "del", "10.9.8.7/32", "dev", "lo"],
                        check=True)
        self.settings_file.write_text("[platform]\nrpc_listen = 0.0.0.0\n")
        receiver = self.receiver()
        self.bare_corvane("-p", "-u", "none", "-s", str(receiver.line.device),
                          environment=self.environment())
        self.wait_until_served()
        self.assertIn("from the root on", self.fails(USAGE, "--host", "10.9.8.7", "firmware",
                                                     "upgrade", "new.shex"))
        elsewhere = Path("/nowhere/new.shex")
        self.assertIn(f"cannot read {elsewhere}",
                      self.fails(REFUSED, "--host", "10.9.8.7", "firmware", "upgrade",
                                 str(elsewhere)))
