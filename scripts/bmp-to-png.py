#!/usr/bin/env python3
"""Converts an uncompressed 24- or 32-bit BMP file to an RGB PNG. Standard library only.

Usage: scripts/bmp-to-png.py INPUT.bmp OUTPUT.png
"""
import struct
import sys
import zlib


def read_bmp(path):
    """Width, height and rows of RGB bytes, top row first."""
    with open(path, "rb") as stream:
        data = stream.read()
    if data[:2] != b"BM" or len(data) < 54:
        raise ValueError(f"{path}: not a BMP file")
    offset = struct.unpack_from("<I", data, 10)[0]
    width, height, _, bits, compression = struct.unpack_from("<iiHHI", data, 18)
    if bits not in (24, 32) or compression != 0 or width <= 0 or height == 0:
        raise ValueError(f"{path}: only uncompressed 24- and 32-bit images are supported")
    pixel = bits // 8
    stride = (width * pixel + 3) & ~3
    rows = abs(height)
    if offset + stride * rows > len(data):
        raise ValueError(f"{path}: pixel data cut short")
    out = []
    for index in range(rows):
        start = offset + stride * index
        row = bytearray()
        for x in range(width):
            b, g, r = data[start + x * pixel:start + x * pixel + 3]
            row += bytes((r, g, b))
        out.append(bytes(row))
    if height > 0:  # stored bottom-up
        out.reverse()
    return width, rows, out


def write_png(path, width, height, rows):
    def chunk(kind, payload):
        body = kind + payload
        return struct.pack(">I", len(payload)) + body + struct.pack(">I", zlib.crc32(body))

    raw = b"".join(b"\x00" + row for row in rows)
    header = struct.pack(">IIBBBBB", width, height, 8, 2, 0, 0, 0)
    with open(path, "wb") as stream:
        stream.write(b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", header) +
                     chunk(b"IDAT", zlib.compress(raw, 9)) + chunk(b"IEND", b""))


def main():
    if len(sys.argv) != 3:
        sys.exit(__doc__.strip())
    width, height, rows = read_bmp(sys.argv[1])
    write_png(sys.argv[2], width, height, rows)


if __name__ == "__main__":
    main()
