#!/usr/bin/env python3
"""Runs scenario tests: `run.py MODULE...` or `run.py all`.

Each module runs in namespaces of its own (see harness/namespace.py); `all` runs two at a time.
"""

import argparse
import importlib
import os
import re
import subprocess
import sys
import threading
import time
import unittest
from concurrent.futures import ThreadPoolExecutor
from pathlib import Path

from harness import namespace, places

HERE = Path(__file__).resolve().parent
AT_A_TIME = 2
MODULE_SECONDS = 180
CLOSING_LINE = re.compile(r"(\d+) passed, (\d+) failed, (\d+) skipped")


def module_names() -> list[str]:
    return sorted(path.stem.removeprefix("test_") for path in HERE.glob("test_*.py"))


def readable(test: unittest.TestCase) -> str:
    name = test.id().rpartition(".")[2].removeprefix("test_").replace("_", " ")
    module = type(test).__module__.removeprefix("test_")
    return f"{module}, {type(test).__name__}: {name}"


class LinePerTest(unittest.TestResult):
    """Tells of each test as it ends."""

    def __init__(self) -> None:
        super().__init__()
        self.counts = {"ok": 0, "FAILED": 0, "skipped": 0}
        self._started = 0.0

    def startTest(self, test: unittest.TestCase) -> None:
        super().startTest(test)
        self._started = time.monotonic()

    def _tell(self, outcome: str, test, text: str = "") -> None:
        self.counts[outcome] += 1
        seconds = time.monotonic() - self._started
        name = readable(test) if isinstance(test, unittest.TestCase) else str(test)
        print(f"{outcome:8}{name} ({seconds:.1f} s)", flush=True)
        for line in text.splitlines():
            print(f"        {line}", flush=True)

    def addSuccess(self, test: unittest.TestCase) -> None:
        self._tell("ok", test)

    def addSkip(self, test: unittest.TestCase, reason: str) -> None:
        self._tell("skipped", test, reason)

    def addFailure(self, test, err) -> None:
        self._tell("FAILED", test, self._exc_info_to_string(err, test))

    def addError(self, test, err) -> None:
        self.addFailure(test, err)

    def addSubTest(self, test, subtest, err) -> None:
        """Only failures of parts are told so; a test with one of them has no success."""
        if err is not None:
            text = self._exc_info_to_string(err, subtest)
            self._tell("FAILED", test, f"{subtest}\n{text}")

    def addExpectedFailure(self, test, err) -> None:
        self.addFailure(test, err)

    def closing_line(self) -> str:
        passed, failed, skipped = self.counts.values()
        return f"{passed} passed, {failed} failed, {skipped} skipped"


def load(name: str) -> unittest.TestSuite:
    return unittest.defaultTestLoader.loadTestsFromModule(importlib.import_module(f"test_{name}"))


def tests_of(suite: unittest.TestSuite) -> list[unittest.TestCase]:
    return [test for part in suite
            for test in (tests_of(part) if isinstance(part, unittest.TestSuite) else [part])]


def run_inside(name: str, only: str | None) -> int:
    """Already inside the namespaces."""
    namespace.settle_in()
    result = LinePerTest()
    chosen = [test for test in tests_of(load(name)) if only is None or only in readable(test)]
    unittest.TestSuite(chosen).run(result)
    print(result.closing_line(), flush=True)
    return 1 if result.counts["FAILED"] else 0


def skip_all(name: str, reason: str) -> str:
    """Where namespaces are impossible; loudly, and every test by its name."""
    result = LinePerTest()
    for test in tests_of(load(name)):
        result.startTest(test)
        result.addSkip(test, f"namespaces are impossible here: {reason}")
    return result.closing_line()


def run_module(name: str, entering: list[str], only: str | None) -> tuple[str, bool]:
    """Passes the module's lines on as they come; its closing line and whether it went well."""
    command = [*entering, sys.executable, str(HERE / "run.py"), "--inside", name]
    if only is not None:
        command += ["--only", only]
    process = subprocess.Popen(command, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
    watchdog = threading.Timer(MODULE_SECONDS, process.kill)
    watchdog.start()
    closing = ""
    for line in process.stdout:
        if CLOSING_LINE.fullmatch(line.rstrip()):
            closing = line.rstrip()
        else:
            print(line, end="", flush=True)
    status = process.wait()
    watchdog.cancel()
    if not closing:
        print(f"FAILED  {name}: ended before its time (status {status})", flush=True)
        return "0 passed, 1 failed, 0 skipped", False
    return closing, status == 0


def run_all(names: list[str], only: str | None) -> int:
    entering, reason = namespace.entering_command()
    if not entering:
        print(f"namespaces are impossible here: {reason}", file=sys.stderr)
        closings = [(skip_all(name, reason), True) for name in names]
    else:
        with ThreadPoolExecutor(AT_A_TIME) as pool:
            closings = list(pool.map(lambda name: run_module(name, entering, only), names))
    counts = [map(int, CLOSING_LINE.fullmatch(closing).groups()) for closing, _ in closings]
    passed, failed, skipped = (sum(column) for column in zip(*counts))
    print(f"{passed} passed, {failed} failed, {skipped} skipped", flush=True)
    return 0 if all(good for _, good in closings) else 1


def main() -> int:
    parser = argparse.ArgumentParser(description=__doc__,
                                     formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("modules", nargs="*", help=f"all, or some of: {', '.join(module_names())}")
    parser.add_argument("--only", metavar="TEXT", help="only tests whose printed name holds it")
    parser.add_argument("--inside", metavar="MODULE", help=argparse.SUPPRESS)
    arguments = parser.parse_args()
    if arguments.inside:
        return run_inside(arguments.inside, arguments.only)
    names = module_names() if arguments.modules == ["all"] else arguments.modules
    unknown = set(names) - set(module_names())
    if not names or unknown:
        parser.error(f"name modules, or all; unknown: {', '.join(sorted(unknown)) or 'none'}")
    if not os.access(places.binaries() / "corvane", os.X_OK):
        print(f"there is no daemon at {places.binaries()}/corvane", file=sys.stderr)
        return 2
    return run_all(names, arguments.only)


if __name__ == "__main__":
    sys.exit(main())
