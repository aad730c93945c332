"""What the NMEA observer forwards, and which diagnostics the receiver's words raise."""

from decoder.outcome import Outcome
from decoder.printf import text
from decoder.receiver_status import ReceiverStatus
from decoder.records import Record
from decoder.words import bit_is_set

FORWARDED = (b"GPGSA", b"GPGSV", b"GPZDA", b"GPGST")
OWNER = "CDiagnosticsObserver"
DIAGNOSTICS = (  # the descriptor, the bits of the error word, the bits of the status word
    ((79151, 0), (9,), (1,)),
    ((79161, 4), (7,), (2,)),
    ((70950, 4), (), (3,)),
    ((70922, 5), (), (5,)),
    ((70922, 6), (), (6,)),
    ((79195, 0), (), (7,)),
    ((79203, 12), (), (8, 9, 10, 11)),
    ((73505, 17), (), (18,)),
    ((79200, 12), (0, 2, 4, 6, 10, 11, 12, 13, 14, 15, 31), (15, 17)),
    ((79202, 12), (1,), ()),
    ((79207, 12), (16,), (24,)),
    ((79201, 12), (17,), ()),
    ((79177, 12), (5,), ()),
)
ALL_ONES = 0xFFFFFFFF


class Nmea:
    def __init__(self, outcome: Outcome, receiver: ReceiverStatus) -> None:
        self._outcome = outcome
        self._receiver = receiver

    def take(self, record: Record) -> None:
        if record.kind != "NMEA":
            return
        sentence = record.content["sentence"]
        identifier = sentence[1:6]
        if identifier in FORWARDED:
            whole_seconds = self._receiver.milliseconds // 1000 * 1000
            self._outcome.publish("nmea.sentence", "CNMEAHandlerAPI", identifier.decode(),
                                  whole_seconds, text(sentence))


class Diagnostics:
    """Takes RXSTATUS; words that are those before change nothing."""

    def __init__(self, outcome: Outcome) -> None:
        self._outcome = outcome
        self._previous = (ALL_ONES, ALL_ONES)

    def take(self, record: Record) -> None:
        if record.kind != "RXSTATUS":
            return
        blocks = record.content["blocks"]
        status = blocks[0]["word"] if blocks else record.header["receiver_status"]
        words = (record.content["error"], status)
        if words == self._previous:
            return
        self._previous = words
        for descriptor, error_bits, status_bits in DIAGNOSTICS:
            raised = (any(bit_is_set(words[0], bit) for bit in error_bits)
                      or any(bit_is_set(words[1], bit) for bit in status_bits))
            self._outcome.diagnostic(OWNER, descriptor, raised)
