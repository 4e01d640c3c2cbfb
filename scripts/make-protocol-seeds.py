#!/usr/bin/env python3
"""Writes the seed inputs of the radio protocol fuzz targets into fuzz/corpus/.

The frames carry a correct CRC-16 (reflected 0x1021, preset 0xFFFF,
complemented, little-endian on the wire) so that the fuzzers start from
inputs the parsers accept.
"""
import os
import struct

ROOT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "..", "fuzz", "corpus")


def crc16(data):
    crc = 0xFFFF
    for byte in data:
        crc ^= byte
        for _ in range(8):
            crc = (crc >> 1) ^ 0x8408 if crc & 1 else crc >> 1
    return crc ^ 0xFFFF


def framed(start, covered):
    return bytes([start]) + struct.pack("<H", crc16(covered)) + covered


def spp(pl_type, payload):
    return framed(0x24, bytes([pl_type, len(payload)]) + payload)


def pp(payload):
    return framed(0x23, bytes([len(payload)]) + payload)


def callsign(text, ssid):
    v = [(ord(c) - 0x20) & 63 for c in text[:7]] + [0] * (7 - len(text[:7])) + [ssid & 63]
    hi = v[0] << 18 | v[1] << 12 | v[2] << 6 | v[3]
    lo = v[4] << 18 | v[5] << 12 | v[6] << 6 | v[7]
    return hi.to_bytes(3, "big") + lo.to_bytes(3, "big")


def sub(pl_type, data):
    return bytes([pl_type, len(data)]) + data


EXT = (sub(1, callsign("LA1ABC", 5) + b"\x07")
       + sub(3, b"\xAD")
       + sub(5, struct.pack("<IB", 1234567, 1))
       + sub(8, b"pong"))
RXHDR = struct.pack("<IBBBB", 1234567, 60, 140, 0, 1)

SEEDS = {
    "fuzz_spp": {
        "reply": spp(3, b"ok"),
        "radio_packet": b"\x00noise" + spp(0, RXHDR + EXT),
        "local_and_transmit": spp(2, b"\x00" + EXT) + spp(1, b"\x01" + EXT),
        "zero_length": spp(3, b"") + b"x" * 255 + spp(3, b"after"),
        "largest": spp(0, bytes(range(255))),
    },
    "fuzz_pp": {
        "three_bytes": pp(b"\x01\x02\x03"),
        "spp_then_pp": spp(3, b"ok") + pp(b"#$#"),
        "zero_length": pp(b"") + b"y" * 256 + pp(b"z"),
    },
    "fuzz_ext_codec": {
        "packet": EXT,
        "bad_type": sub(1, callsign("N0CALL", 0) + b"\x01") + b"\x10\x00",
        "cut_short": sub(6, callsign("AB", 12)) + b"\x00\x05\x01",
    },
    "fuzz_callsign": {
        "encoded": callsign("LA1ABC", 5),
        "text_ssid": b"la1abc-15",
        "text_bad_ssid": b"AB-7x",
        "all_ones": b"\xFF" * 6,
    },
}

for target, seeds in SEEDS.items():
    folder = os.path.join(ROOT, target)
    os.makedirs(folder, exist_ok=True)
    for name, data in seeds.items():
        with open(os.path.join(folder, name), "wb") as f:
            f.write(data)
