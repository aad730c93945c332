#!/usr/bin/env python3
"""Makes the corpora that the fuzz targets start from.

usage: make_corpus.py FOLDER

Writes FOLDER/fuzz_framers and FOLDER/fuzz_records: sentences made here, one of each log that is
decoded, and real ones cut from the captures where those are there (beside the checkout, or in the
folder that the environment variable CORVANE_CAPTURES names); FOLDER/fuzz_rpc: what clients of the
RPC service send, a call of each method among it; FOLDER/fuzz_gpsd: what clients of gpsd send; and
FOLDER/fuzz_services: what programs publish.
"""

import json
import os
import pathlib
import re
import struct
import sys
import zlib

CAPTURES = pathlib.Path(os.environ.get(
    "CORVANE_CAPTURES", pathlib.Path(__file__).resolve().parents[2] / "shared" / "data"))

# Logs of a fixed size: identifier, size of the message.
FIXED_LOGS = {42: 72, 101: 44, 175: 44, 241: 112, 243: 112, 244: 112, 471: 112, 495: 72, 1085: 44,
              730: 40, 731: 48}
# Logs of equal blocks: identifier, offset of their number, size of a block. They follow the number.
LISTS = {37: (0, 108), 43: (0, 44), 83: (12, 40), 93: (4, 16), 174: (24, 4), 317: (0, 44),
         1162: (0, 16), 1174: (0, 16), 1234: (0, 16)}

ALL_AT_ONCE = bytes([255] * 8)
BYTE_BY_BYTE = bytes([1] * 8)
UNEVEN = bytes([0, 3, 17, 1, 200, 11, 64, 2])
DRAINS, REPAIRS = 1, 2


def crc32(data):
    # zlib's CRC starts with and ends in an inversion; undone, it is the receiver's.
    return zlib.crc32(data, 0xFFFFFFFF) ^ 0xFFFFFFFF


def with_crc(data):
    return data + struct.pack("<I", crc32(data))


def binary(log, message, message_type=0, header_length=28):
    header = struct.pack("<3sBHBBHHBBHIIHH", b"\xAA\x44\x12", header_length, log, message_type,
                         0x20, len(message), 0, 133, 180, 1800, 345600500, 0, 0, 3153)
    return with_crc(header.ljust(header_length, b"\0") + message)


def ascii_log(text):
    return b"#%s*%08x" % (text, crc32(text))


def nmea(text):
    checksum = 0
    for byte in text:
        checksum ^= byte
    return b"$%s*%02X" % (text, checksum)


def pattern(size):
    return bytes((7 * i + 1) & 0xFF for i in range(size))


def made_sentences():
    for log, size in FIXED_LOGS.items():
        yield f"log{log}", binary(log, pattern(size))
    yield "log731_slotted", binary(731, pattern(56))
    for log, (offset, block) in LISTS.items():
        for count in (0, 1, 3):
            message = pattern(offset) + struct.pack("<I", count) + pattern(block * count)
            yield f"log{log}_{count}", binary(log, message)
        yield f"log{log}_huge", binary(log, pattern(offset) + struct.pack("<I", 0xFFFFFFFF))
    sets = struct.pack("<II IIIII III", 1, 2, 2, 10, 0, 4, 1, 1, 14, 0)
    yield "log1148", binary(1148, sets)
    yield "response", binary(1, struct.pack("<I", 1) + b"OK", 0x80)
    yield "response_empty", binary(1, b"", 0x80)
    yield "unknown", binary(9999, pattern(20))
    yield "long_header", binary(42, pattern(72), header_length=60)
    yield "header_only", binary(42, b"")[:28]
    yield "ascii_softload", ascii_log(
        b"SOFTLOADSTATUSA,COM1,0,97.5,UNKNOWN,0,0.186,004c0001,2d64,3153;NOT_STARTED")
    yield "ascii_other", ascii_log(b"BESTPOSA,COM1,0,65.5,FINESTEERING,1687,419928.000;SINGLE")
    yield "nmea", nmea(b"GPGGA,123519,4807.038,N,01131.000,E,1,08,0.9,545.4,M,46.9,M,,")
    yield "nmea_short", b"$*2A"


def cut(stream):
    """Yields the sentences of a stream, none of them checked: damaged ones are seeds too."""
    at = 0
    while at < len(stream):
        byte = stream[at]
        end = at + 1
        if stream.startswith(b"\xAA\x44\x12", at) and at + 10 <= len(stream):
            end = at + stream[at + 3] + struct.unpack_from("<H", stream, at + 8)[0] + 4
            if stream[at + 3] == 28 and end <= len(stream):
                yield stream[at:end]
        elif byte in b"#$":
            ends = [i for i in (stream.find(b"\r", at), stream.find(b"\n", at)) if i >= 0]
            if ends and min(ends) - at < 1000:
                yield stream[at:min(ends)]
        at = end if end <= len(stream) else at + 1


def kind(sentence):
    if sentence[0] != 0xAA:
        return sentence[:10]
    return struct.unpack_from("<HB", sentence, 4)


def real_sentences():
    """A few of each kind and length from every capture."""
    seen = {}
    number = 0
    for path in sorted(CAPTURES.glob("*")):
        if path.suffix == ".md" or not path.is_file():
            continue
        for sentence in cut(path.read_bytes()):
            count = seen[kind(sentence)] = seen.get(kind(sentence), 0) + 1
            if count <= 3 and len(seen) < 400:
                number += 1
                yield f"{path.stem}_{number}", sentence


def streams(sentences):
    """Streams for the framers: what follows the stream says how it is cut."""
    everything = b"".join(sentence + b"\r\n" for _, sentence in sentences if len(sentence) < 600)
    for name, sentence in sentences:
        yield name, sentence + b"\r\n", UNEVEN, DRAINS
    for i in range(0, len(everything), 3000):
        yield f"mixed_{i}", everything[i:i + 3000], UNEVEN, 0
    hostile = {"hashes": b"#" * 200, "dollars": b"$" * 200, "sync": b"\xAA" * 200,
               "sync_pairs": b"\xAA\x44" * 100, "line_ends": b"#\r$\n" * 50,
               "empty_headers": (b"\xAA\x44\x12" + bytes(8)) * 20,
               "long_ascii": b"#" + b"x" * 4097 + b"\r", "long_nmea": b"$" + b"x" * 1025 + b"\r",
               "longest_ascii": ascii_log(b"x" * 4087) + b"\r",
               "longest_nmea": nmea(b"x" * 1021) + b"\r",
               "sync_again": b"\xAA" + binary(42, pattern(72)),
               "sync_lost": b"\xAA\x44" + binary(42, pattern(72))}
    for name, stream in hostile.items():
        yield name, stream, ALL_AT_ONCE, DRAINS
        yield name + "_bytes", stream, BYTE_BY_BYTE, DRAINS | REPAIRS


def rpc_methods():
    """The names in the service's own table, so that none is forgotten."""
    source = pathlib.Path(__file__).resolve().parents[1] / "src/corvane/src/RPC"
    table = (source / "NovatelMPIServer.cpp").read_text(encoding="utf-8")
    return re.findall(r'\{"(DummyFunction|RequestNMEA|novatel_\w+)"', table)


def rpc_lines():
    """What clients send: a call of each method, and what is no call."""
    def request(method, params, **members):
        return json.dumps({"jsonrpc": "2.0", "method": method, "params": params, **members})
    arguments = [[], [1], ["RTCM3"], [1.5, -2e6, 3.0], ["GPGGA", 200], ["/dev/null"], {"a": 1}]
    for method in rpc_methods():
        for i, params in enumerate(arguments):
            yield f"{method}_{i}", request(method, params, id=i) + "\n"
    batch = [json.loads(request(method, [1], id=method)) for method in rpc_methods()]
    yield "batch", json.dumps(batch) + "\n"
    yield "notifications", "".join(request(method, []) + "\n" for method in rpc_methods())
    yield "mixed_batch", '[1, {}, [], "x\\"]", {"a":"[{"}, null]\n[]\n[[[]]]\n'
    yield "deep", "[" * 40 + "]" * 40 + "\n" + '{"a":' * 40 + "1" + "}" * 40 + "\n"
    yield "numbers", '{"jsonrpc":"2.0","id":1e308,"method":"x"}\n{"id":-0.0}\n{"id":9e999}\n'
    yield "http", "GET / HTTP/1.1\r\nHost: x\r\n\r\n"
    yield "not_json", "hello\n\n{\n]\n\\u0000\n"
    yield "long", '{"jsonrpc":"2.0","id":"' + "x" * 4000 + '","method":"DummyFunction"}\n'


def gpsd_lines():
    """What clients of gpsd send: each command, policies, and what is neither."""
    for command in ("VERSION", "DEVICES", "DEVICE", "WATCH", "POLL", "FOO"):
        yield command, f"?{command};\n"
        yield command + "_bare", f"?{command}"
        yield command + "_argument", f"?{command}={{}};\r\n"
    policy = {"class": "WATCH", "enable": True, "json": True, "nmea": False, "raw": 2,
              "scaled": False, "timing": False, "split24": False, "pps": True, "device": "corvane"}
    yield "policy", f"?WATCH={json.dumps(policy)};?POLL;\n"
    for name, value in policy.items():
        yield f"policy_{name}", f"?WATCH={json.dumps({name: value})}"
        yield f"policy_{name}_wrong", f"?WATCH={json.dumps({name: [value]})};\n"
    yield "several", "?VERSION;?DEVICES; ?POLL;;?WATCH;\n?FOO;hello;\n"
    yield "strings", '?WATCH={"device":"}\\"{;"};?WATCH={"a":{"b":"\\u0000\\\\"}};\n'
    yield "cut", '?WATCH={"json":tr\n?WATCH={\n?WATCH=;?=;?\n'
    yield "deep", "?WATCH=" + '{"a":' * 500 + "1" + "}" * 500 + ";\n"
    yield "long", "?" + "x" * 5000 + "\n?VERSION;\n"
    yield "http", "GET / HTTP/1.1\r\nHost: x\r\n\r\n?POLL;\n"


SERVICES = {
    "logger.register": {"process": "corvane", "pid": 411, "version": "0.1.0"},
    "logger.status": {"level": "essential", "key": "checksum_stats", "value": "1204,3"},
    "logger.data": {"key": "QRS_42", "value": "1763834800.1,2393,583618.000"},
    "logger.event": {"level": "warning", "text": "Idle for 1.5 s"},
    "logger.raw": {"data": "qkQSHAAA"},
    "position.ecef": {
        "x": 3910057.7277, "y": 355843.1291, "z": 5009684.6374, "vx": -4.0, "vy": 2.6, "vz": 1.7,
        "sx": 0.01, "sy": 0.01, "sz": None, "week": 2393, "seconds": 583618.0, "hostTime": 1.5e9,
        "positionQuality": 3, "fixQuality": 4, "differentialAge": 1.0, "satellites": [9, 5, 0],
        "hdop": 100, "vdop": 100, "solutionClass": 6, "velocityLatency": 0.1},
    "position.sky": {"satellites": [{"prn": 7, "word1": 1, "word2": 4294967295, "cn0": 47},
                                    {"prn": 45, "word1": 0, "word2": 0, "cn0": None}]},
    "position.base": {"x": 3910000.0, "y": 355000.0, "z": 5009000.0},
    "reference.gps": {"week": 2393, "seconds": 1.5, "x": 1.0, "y": 2.0, "z": 3.0, "gps": 9,
                      "glonass": 5, "other": 0},
    "nmea.sentence": {"id": "GPGSV", "gpsTime": 583618000,
                      "sentence": nmea(b"GPGSV,1,1,02,07,64,120,47,22,,,").decode()},
    "nmea.geoid": {"separation": 43.75},
    "diagnostics.raise": {"code": 79141, "sub": 2, "value": 1.0},
    "diagnostics.clear": {"code": 79141, "sub": 2},
    "diagnostics.activity": {"received": 40, "sentences": 160},
    "logger.getCategory": {"category": "NovatelPortHandler"},
    "logger.setCategory": {"category": "NovatelPortHandler", "enabled": True},
}
STATUSES = {
    "ReceiverStatus": "0x00000028: Antenna not powered,Antenna open,",
    "ReceiverError": "0x00000000: ", "ReceiverCPUIdlePercentage": "43.5",
    "component_00.componentType": "1", "component_00.model": "G2S0", "COM1_Config": "9600,A,B",
    "current_channel_configuration": "1", "channel_config_1": " 8 GPSL1,  6 GLOL1, ",
}


def service_lines():
    """What programs publish: a message of each kind, alone and all together."""
    def message(method, params):
        common = {} if "Category" in method else {"name": "NovatelReceiverStatus", "time": 1.5}
        call = {"jsonrpc": "2.0", "method": method, "params": {**common, **params}}
        return json.dumps(call | ({"id": 1} if not common else {})) + "\n"
    for method, params in SERVICES.items():
        yield method, message(method, params)
    yield "all", "".join(message(*each) for each in SERVICES.items())
    statuses = [{"level": "info", "key": key, "value": value} for key, value in STATUSES.items()]
    yield "statuses", "".join(message("logger.status", each) for each in statuses)
    use = {"id": "GPGSA", "gpsTime": 0,
           "sentence": nmea(b"GPGSA,A,3,07,,,,,,,,,,,,1.6,0.9,1.3").decode()}
    yield "use", message("nmea.sentence", SERVICES["nmea.sentence"]) + message("nmea.sentence", use)
    yield "batch", "[" + ",".join(message(*each).strip() for each in SERVICES.items()) + "]\n"


def main():
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    folder = pathlib.Path(sys.argv[1])
    sentences = list(made_sentences()) + list(real_sentences())
    for name in ("fuzz_framers", "fuzz_records", "fuzz_rpc", "fuzz_gpsd", "fuzz_services"):
        (folder / name).mkdir(parents=True, exist_ok=True)
    for name, sentence in sentences:
        (folder / "fuzz_records" / name).write_bytes(sentence)
    for name, stream, lengths, flags in streams(sentences):
        (folder / "fuzz_framers" / name).write_bytes(stream + lengths + bytes([flags]))
    for name, lines in rpc_lines():
        (folder / "fuzz_rpc" / name).write_bytes(lines.encode())
    for name, lines in gpsd_lines():
        (folder / "fuzz_gpsd" / name).write_bytes(lines.encode())
    for name, lines in service_lines():
        (folder / "fuzz_services" / name).write_bytes(lines.encode())
    print(f"{folder}: {len(sentences)} sentences")


if __name__ == "__main__":
    main()
