"""The bodies of the known logs, one function a kind, and the ends that a damaged one orders."""

from decoder import layouts
from decoder.fields import Sentence


class OrderedEnd(Exception):
    """A log whose counts and length disagree ends the daemon; the text names the log."""


def _plain(table):
    return lambda sentence: sentence.block(table)


def _require(holds: bool, log: str) -> None:
    if not holds:
        raise OrderedEnd(log)


def _blocks(sentence: Sentence, table, start: int, size: int, count: int) -> list[dict]:
    return [sentence.block(table, start + size * i) for i in range(count)]


def _body_length(sentence: Sentence) -> int:
    """All that follows the header, the CRC with it."""
    return len(sentence.data) - sentence.body


def _counted(log: str, table, count_at: int, start: int, size: int):
    """A count, then so many blocks, and nothing else but the CRC."""

    def decode(sentence: Sentence) -> dict:
        count = sentence.read(count_at, "u32")
        _require(_body_length(sentence) == start + size * count + 4, log)
        return {"blocks": _blocks(sentence, table, start, size, count)}

    return decode


def _psrdop(sentence: Sentence) -> dict:
    count = sentence.read(24, "u32")
    _require(_body_length(sentence) == 28 + 4 * count + 4, "PSRDOP")
    prns = [sentence.read(28 + 4 * i, "u32") for i in range(count)]
    return {**sentence.block(layouts.PSRDOP), "prns": prns}


def _trackstat(sentence: Sentence) -> dict:
    channels = _counted("TRACKSTAT", layouts.TRACKSTAT_BLOCK, 12, 16, 40)(sentence)
    return {**sentence.block(layouts.TRACKSTAT_HEAD), **channels}


def _rxstatus(sentence: Sentence) -> dict:
    words = _counted("RXSTATUS", layouts.STATUS_WORD, 4, 8, 16)(sentence)
    return {"error": sentence.read(0, "u32"), **words}


def _satellites(sentence: Sentence) -> dict:
    count = sentence.read(0, "i32")
    if count <= 0 or 8 + 16 * count > _body_length(sentence):
        return {"blocks": []}
    blocks = _blocks(sentence, layouts.SATELLITE, 4, 16, count)
    for block in blocks:
        if block["system"] == 1 and block["frequency"] > 32767:
            block["frequency"] -= 65536
    return {"blocks": blocks}


def _comconfig(sentence: Sentence) -> dict:
    ports = _counted("COMCONFIG", layouts.SERIAL_PORT, 0, 4, 44)(sentence)
    for port in ports["blocks"]:
        for flag in ("echo", "break_detection", "responses"):
            port[flag] = port[flag] == 1
    return ports


def _chanconfiglist(sentence: Sentence) -> dict:
    sets, start = [], 8
    for _ in range(sentence.read(4, "u32")):
        signals = sentence.read(start, "u32")
        _require(_body_length(sentence) >= start + 8 * signals + 4, "CHANCONFIGLIST")
        sets.append([(sentence.read(start + 4 + 8 * k, "u32"),
                      sentence.read(start + 8 + 8 * k, "u32")) for k in range(signals)])
        start += 4 + 8 * signals
    return {"in_use": sentence.read(0, "u32"), "sets": sets}


def _refstation(sentence: Sentence) -> dict:
    fields = sentence.block(layouts.REFSTATION)
    return {**fields, "station": fields["station"].split(b"\0")[0]}


def _lbandstat(sentence: Sentence) -> dict:
    slotted = _body_length(sentence) - 4 >= 56
    return sentence.block(layouts.LBANDSTAT_SLOTTED if slotted else layouts.LBANDSTAT_PACKED)


LOGS = {
    37: ("VERSION", _counted("VERSION", layouts.COMPONENT, 0, 4, 108)),
    42: ("BESTPOS", _plain(layouts.BESTPOS)),
    43: ("RANGE", _counted("RANGE", layouts.RANGE_BLOCK, 0, 4, 44)),
    83: ("TRACKSTAT", _trackstat),
    93: ("RXSTATUS", _rxstatus),
    101: ("TIME", _plain(layouts.TIME)),
    174: ("PSRDOP", _psrdop),
    175: ("REFSTATION", _refstation),
    241: ("BESTXYZ", _plain(layouts.CARTESIAN)),
    243: ("PSRXYZ", _plain(layouts.CARTESIAN)),
    244: ("RTKXYZ", _plain(layouts.CARTESIAN)),
    317: ("COMCONFIG", _comconfig),
    471: ("PDPXYZ", _plain(layouts.CARTESIAN)),
    495: ("OMNIHPPOS", _plain(layouts.GEODETIC)),
    730: ("LBANDINFO", _plain(layouts.LBANDINFO)),
    731: ("LBANDSTAT", _lbandstat),
    1085: ("PDPSTAT", _plain(layouts.PDPSTAT)),
    1148: ("CHANCONFIGLIST", _chanconfiglist),
    1162: ("PSRSATS", _satellites),
    1174: ("RTKSATS", _satellites),
    1234: ("PDPSATS", _satellites),
}
