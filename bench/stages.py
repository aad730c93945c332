#!/usr/bin/env python3
"""Runs the stage benchmarks and prints what they say: throughputs, and ratios to the literal model.

usage: stages.py [--check] PROGRAM [BENCHMARK OPTION...]

PROGRAM is build/release/bin/bench_stages. With --check the status is 1 when a wanted ratio is
missed. The captures are looked for beside the checkout, or where CORVANE_CAPTURES says.
"""

import json
import subprocess
import sys

# How many times faster than the model the three framers together must be.
WANTED_ON_A_CAPTURE = 14.0
WANTED_ON_A_HOSTILE_STREAM = 1.2

# Whatever else the machine does meets all benchmarks alike, and the median keeps it out.
OPTIONS = ["--benchmark_repetitions=5", "--benchmark_enable_random_interleaving=true",
           "--benchmark_min_time=0.1", "--benchmark_format=json"]


def run(program, options):
    """Bytes a second, the median by name."""
    output = subprocess.run([program] + OPTIONS + options, stdout=subprocess.PIPE, check=True)
    results = json.loads(output.stdout)["benchmarks"]
    return {result["run_name"]: result["bytes_per_second"]
            for result in sorted(results, key=lambda result: result["run_name"])
            if result.get("aggregate_name") == "median"}


def wanted(stream):
    if stream == "capture":
        return WANTED_ON_A_CAPTURE
    return WANTED_ON_A_HOSTILE_STREAM if stream.startswith("hostile:") else None


def megabytes(speed):
    return f"{speed / 1e6:,.0f}"


def print_streams(speeds):
    """Returns whether every wanted ratio is reached."""
    kinds = ["framer:binary", "framer:ASCII", "framer:NMEA"]
    print(f"{'MB/s':26}{'binary':>9}{'ASCII':>9}{'NMEA':>9}{'all':>9}{'model':>9}{'ratio':>8}"
          f"{'wanted':>8}")
    reached = True
    for name in speeds:
        group, _, stream = name.partition("/")
        if group != "framers" or f"model/{stream}" not in speeds:
            continue
        each = "".join(f"{megabytes(speeds.get(f'{kind}/{stream}', 0)):>9}" for kind in kinds)
        ratio = speeds[name] / speeds[f"model/{stream}"]
        limit = wanted(stream)
        reached = reached and (limit is None or ratio >= limit)
        print(f"{stream:26}{each}{megabytes(speeds[name]):>9}"
              f"{megabytes(speeds[f'model/{stream}']):>9}{ratio:8.1f}{limit or '':>8}")
    return reached


def print_others(speeds):
    print(f"\n{'MB/s':26}")
    for name, speed in speeds.items():
        if name.startswith(("crc", "record/")):
            print(f"{name:26}{megabytes(speed):>9}")


def main():
    arguments = sys.argv[1:]
    check = "--check" in arguments
    arguments = [argument for argument in arguments if argument != "--check"]
    if not arguments:
        sys.exit(__doc__)
    speeds = run(arguments[0], arguments[1:])
    if "framers/capture" not in speeds:
        print("No capture: the synthetic stream stands alone.")
    reached = print_streams(speeds)
    print_others(speeds)
    if check and not reached:
        sys.exit("A wanted ratio is missed.")


if __name__ == "__main__":
    main()
