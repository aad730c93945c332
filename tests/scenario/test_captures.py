"""Captures: what the daemon prints and publishes is what the golden files keep."""

import runpy
import unittest

from harness import captures, places
from harness.scenario import Scenario
from review_golden import differences


def _capture(test: Scenario, name: str):
    path = places.capture(name)
    if path is None:
        test.skipTest(f"{name} is not in {places.CAPTURES}")
    return path


class Captures(Scenario):
    def assert_golden(self, name: str, *options: str) -> None:
        outcome = captures.run_over(_capture(self, name), self.folder, *options)
        golden = captures.golden(name)
        self.assert_same_lines(golden.dump.splitlines(keepends=True),
                               outcome.dump.splitlines(keepends=True))
        self.assert_same_lines(golden.published.splitlines(), outcome.published.splitlines())

    def assert_reviewed(self, name: str) -> None:
        _capture(self, name)
        self.assertEqual(differences(name), [])


    def test_the_sample_is_what_its_maker_makes(self) -> None:
        maker = runpy.run_path(str(places.SAMPLES / "make_sample.py"))
        self.assertEqual((places.SAMPLES / "sample.gps").read_bytes(), maker["sample"]())


def _add_tests() -> None:
    for name in places.CAPTURE_NAMES:
        plain = name.rpartition(".")[0].replace("-", "_")

        def comes_out(self, name=name) -> None:
            self.assert_golden(name)

        def agrees(self, name=name) -> None:
            self.assert_reviewed(name)

        setattr(Captures, f"test_{plain}_comes_out_as_its_golden_files_say", comes_out)
        setattr(Captures, f"test_the_decoder_agrees_with_the_golden_{plain}", agrees)


_add_tests()

if __name__ == "__main__":
    unittest.main()
