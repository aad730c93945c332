"""A well-behaved client, as a program: calls the daemon steadily until its input ends, then tells
on its output how many seconds each answer took."""

import json
import select
import sys
import time

from harness.rpc_client import RPCClient

PERIOD = 0.05  # seconds between an answer and the next call


def main() -> None:
    client = RPCClient()
    client.call("DummyFunction")
    print("ready", flush=True)
    taken = []
    while not select.select([sys.stdin], [], [], PERIOD)[0]:
        began = time.monotonic()
        client.call("novatel_GetIonosphereMode")
        taken.append(time.monotonic() - began)
    print(json.dumps(taken))


if __name__ == "__main__":
    main()
