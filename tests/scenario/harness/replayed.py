"""What a replay is held against: the live run that was recorded, and the recording's own times."""

import base64
import statistics

from decoder.framers import GOOD, framers
from decoder.records import decode
from harness.controlled import SENDING
from harness.messages import NMEA_KEY, Message, canonical
from harness.recording import Block
from harness.scenario import MAIN

CUT_OFF = 10.0  # seconds; so long a gap and longer ones are not waited for


def recorded(messages: list[Message]) -> list[Block]:
    """The recording that a logging service makes of a run: its raw blocks with their times."""
    return [Block(each["time"], base64.b64decode(each["data"], validate=True))
            for each in messages if each.method == "logger.raw" and each["name"] == MAIN]


def decoded(blocks: list[Block]) -> tuple[list[int], str]:
    """How many records end in each block, and the port's counts of sentences at the end."""
    kinds, counts, results = framers(), [], []
    for block in blocks:
        found = [each for framer in kinds for each in framer.feed(block.data)]
        counts.append(sum(decode(sentence) is not None for result, sentence in found
                          if result == GOOD))
        results += [result for result, _ in found]
    good = results.count(GOOD)
    return counts, f"{good},{len(results) - good}"


def is_line_of_a_record(message: Message) -> bool:
    """Whether it is the last thing that is told of a record."""
    return message.method == "logger.data" and message["name"] == MAIN


def _goes_by_the_clock(message: Message) -> bool:
    return (message.method in ("logger.raw", "diagnostics.activity")
            or message.method == "logger.status" and message["key"] == "checksum_stats"
            or message.method == "logger.event" and message["text"].startswith(SENDING))


def told_of_records(messages: list[Message]) -> tuple[list[str], list[str]]:
    """All that is told up to the last record's line: of logs, and of NMEA sentences.

    Not the same in another run are
      * what the canonical text leaves out: times of reception and publication, the process;
      * raw blocks and the running counts of sentences, which go by how the bytes came in pieces;
      * the order of logs among NMEA sentences, for a port asks its framers one after the other for
        all that a piece holds: so each kind is a list of its own;
      * when a command leaves, and the activity once a second, which go by the clock.
    """
    logs, sentences, current = [], [], []
    for message in messages:
        if not _goes_by_the_clock(message):
            current.append(canonical(message))
        if is_line_of_a_record(message):
            (sentences if message["key"] == NMEA_KEY else logs).extend(current)
            current = []
    return logs, sentences


def played_at(counts: list[int], messages: list[Message]) -> list[float | None]:
    """When the daemon told of the first record of each block; None for a block without one."""
    times = [each["time"] for each in messages if is_line_of_a_record(each)]
    starts = [sum(counts[:index]) for index in range(len(counts))]
    return [times[start] if count else None for start, count in zip(starts, counts)]


def stretches(blocks: list[Block]) -> list[range]:
    """The blocks between gaps that are not waited for."""
    cuts = [index for index in range(1, len(blocks))
            if not 0.0 < blocks[index].time - blocks[index - 1].time < CUT_OFF]
    return [range(*each) for each in zip([0, *cuts], [*cuts, len(blocks)])]


def errors(blocks: list[Block], times: list[float | None]) -> list[float]:
    """By how many seconds each block misses its time within its stretch; 0 when it tells nothing.

    The stretch's own beginning is what fits most of its blocks.
    """
    missed = [0.0] * len(blocks)
    for stretch in stretches(blocks):
        shifts = {index: times[index] - blocks[index].time for index in stretch
                  if times[index] is not None}
        begin = statistics.median(shifts.values())
        for index, shift in shifts.items():
            missed[index] = abs(shift - begin)
    return missed
