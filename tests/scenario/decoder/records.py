"""From a whole sentence to a record: what kind it is, its header, its body."""

from dataclasses import dataclass, field

from decoder.bodies import LOGS
from decoder.fields import Sentence

HEADER = ((3, "u8", "header_length"), (4, "u16", "message_id"), (6, "u8", "message_type"),
          (7, "u8", "port"), (8, "u16", "message_length"), (10, "u16", "sequence"),
          (12, "u8", "idle_time"), (13, "u8", "time_status"), (14, "u16", "week"),
          (16, "u32", "milliseconds"), (20, "u32", "receiver_status"), (24, "u16", "reserved"),
          (26, "u16", "software_version"))
NMEA_ID = 65535
SOFTLOAD_ID = 1235
SOFTLOAD_VALUES = {
    b"NOT_STARTED": 1, b"READY_FOR_SETUP": 2, b"READY_FOR_DATA": 3, b"DATA_VERIFIED": 4,
    b"WRITING_FLASH": 5, b"WROTE_FLASH": 6, b"VERIFYING_DATA": 8, b"WROTE_TRANSACTION_TABLE": 10,
    b"NOT_READY_FOR_SETUP": 11, b"COMPLETE": 12, b"RESET_ERROR": 13, b"BAD_SRECORD": 14,
    b"BAD_PLATFORM": 15, b"BAD_MODULE": 16, b"NO_MODULE": 18, b"MODULE_MISMATCH": 19,
    b"OUT_OF_MEMORY": 20, b"DATA_OVERLAP": 21, b"BAD_IMAGE_CRC": 22, b"IMAGE_OVERSIZE": 23,
    b"BAD_FLASH_ERASE": 25, b"NO_PLATFORM": 26,
}


@dataclass
class Record:
    """`kind` is the log's name, or response, NMEA, softload, unknown."""

    kind: str
    message_id: int
    week: int = 0
    milliseconds: int = 0
    header: dict = field(default_factory=dict)
    content: dict = field(default_factory=dict)


def decode(sentence: bytes) -> Record | None:
    """None for a sentence that becomes no record; OrderedEnd for one that ends the daemon."""
    if sentence[:1] == b"$":
        return Record("NMEA", NMEA_ID, content={"sentence": sentence})
    if sentence[:1] == b"#":
        return _ascii(sentence)
    return _binary(sentence)


def _ascii(sentence: bytes) -> Record | None:
    name, comma, _ = sentence[1:].partition(b",")
    if not comma or name != b"SOFTLOADSTATUSA":
        return None
    status = sentence.rpartition(b"*")[0].partition(b";")[2]
    return Record("softload", SOFTLOAD_ID,
                  content={"text": status, "value": SOFTLOAD_VALUES.get(status)})


def _binary(sentence: bytes) -> Record:
    header = Sentence(sentence).block(HEADER)
    body = Sentence(sentence, header["header_length"])
    message_id = header["message_id"]
    if header["message_type"] & 0x80:
        kind, content = "response", _response(body, header["message_length"])
    elif message_id in LOGS:
        kind, decode_body = LOGS[message_id]
        content = decode_body(body)
    else:
        kind, content = "unknown", {}
    return Record(kind, message_id, header["week"], header["milliseconds"], header, content)


def _response(body: Sentence, message_length: int) -> dict:
    return {"identifier": body.read(0, "u32"), "text": body.text(4, message_length - 4)}
