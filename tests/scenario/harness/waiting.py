"""Waiting for an event with a deadline, never for a fixed time."""

import time
from collections.abc import Callable
from typing import TypeVar

T = TypeVar("T")
PATIENCE = 5.0  # seconds; ample for anything that is to happen at once, also on a busy machine


class NotInTime(AssertionError):
    """The event did not come before its deadline."""


def wait_until(what: str, condition: Callable[[], T], seconds: float = PATIENCE,
               state: Callable[[], object] = lambda: "") -> T:
    """Returns the condition's first true value; `state` tells what there is instead."""
    deadline = time.monotonic() + seconds
    while True:
        value = condition()
        if value:
            return value
        if time.monotonic() > deadline:
            raise NotInTime(f"waited {seconds} s in vain for {what}; there is: {state()!r}")
        time.sleep(0.005)
